// The paper stock record: the paper of the whole job or of one special page, its dictionary
// form, the default stock, the stock summary and the rules of the stock menu commands.
#pragma once

#include "settings/settings.h"
#include "ticket/summary-labels.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// Codes with a rule attached to them. The full value tables are the setting maps of
// settings/stock-maps.h and settings/paper-sizes.h.
inline constexpr int32_t kStockColorClear = 6;
inline constexpr int32_t kStockColorCustom = 10;
inline constexpr int32_t kStockTypePlain = 1;
inline constexpr int32_t kStockTypeTransparency = 2;
inline constexpr int32_t kStockTypePrecutTab = 4;
inline constexpr int32_t kStockTypeOrdered = 6;
inline constexpr int32_t kStockTypeCustom = 7;
inline constexpr int32_t kStockTypeEnvelope = 8;
inline constexpr int32_t kStockTypeTabStock = 24;    // printer "MediaType" choices shown with
inline constexpr int32_t kStockTypeTabStockAlt = 33; // their tab count
inline constexpr int32_t kStockPunchedNo = 1;
inline constexpr int32_t kStockPunchedYes = 2;
inline constexpr int32_t kStockCoatingGloss = 1;
inline constexpr int32_t kStockWeightCustomRow = 1; // the weight menu's "Custom..." row
inline constexpr int32_t kStockSourceInserter = 10; // the post-process inserter

// Keys of the dictionary form, exactly as stored tickets and library files spell them
// ("kCoatingType" and "kGrain" carry their leading "k" on purpose).
inline constexpr const char* kStockKeySize = "Size";
inline constexpr const char* kStockKeyWidth = "Width";
inline constexpr const char* kStockKeyLength = "Length";
inline constexpr const char* kStockKeyType = "Type";
inline constexpr const char* kStockKeyCustomType = "CustomType";
inline constexpr const char* kStockKeyModulus = "Modulus";
inline constexpr const char* kStockKeyColor = "Color";
inline constexpr const char* kStockKeyCustomColor = "CustomColor";
inline constexpr const char* kStockKeyWeight = "Weight";
inline constexpr const char* kStockKeyPunched = "Punched";
inline constexpr const char* kStockKeyDescription = "Description";
inline constexpr const char* kStockKeySidesCoated = "SidesCoated";
inline constexpr const char* kStockKeyCoatingType = "kCoatingType";
inline constexpr const char* kStockKeyFinish = "Finish";
inline constexpr const char* kStockKeyGrain = "kGrain";
inline constexpr const char* kStockKeyCustomName = "CustomName";
inline constexpr const char* kStockKeyCustomNameOnly = "CustomNameOnly";
inline constexpr const char* kStockKeyComment = "CustomComment";
inline constexpr const char* kStockKeySource = "Source";

// Case-insensitive equality of user texts (paper names, custom colours): full Unicode case
// folding after canonical composition, so "STRASSE" equals "straße" and a precomposed "é"
// equals "e" with a combining accent. Malformed UTF-8 compares by its replacement characters.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// One paper stock. Numeric fields hold kNotSet for "printer default". String fields are
// nullable (a setter may be handed nullopt); the constructors never leave them null.
class Stock {
public:
    using Text = std::optional<std::string>;

    Stock() = default;
    // Reads the dictionary form; null gives the default record. Values of the wrong type
    // leave their field at its default. Reading assigns fields directly: no setter side
    // effects.
    explicit Stock(const pl::DictPtr& dict);
    Stock(const Stock&) = default;
    // Copies through the setters in a fixed order (size before width and length, colour
    // before type), so the copy obeys the same couplings as an edited record.
    Stock& operator=(const Stock& other);
    virtual ~Stock() = default;

    // Every field counts, relevant or not; the five texts compare ignoring case and a null
    // text on either side makes the records unequal.
    bool operator==(const Stock& other) const;

    int32_t size() const { return size_; }
    void setSize(int32_t v); // any size but custom clears width and length
    int32_t width() const { return width_; }
    void setWidth(int32_t v); // a set width makes the size custom
    int32_t length() const { return length_; }
    void setLength(int32_t v); // a set length makes the size custom
    int32_t type() const { return type_; }
    void setType(int32_t v); // a transparency is always clear
    const Text& customType() const { return customType_; }
    void setCustomType(Text v) { customType_ = std::move(v); }
    int32_t color() const { return color_; }
    void setColor(int32_t v) { color_ = v; }
    const Text& customColor() const { return customColor_; }
    void setCustomColor(Text v) { customColor_ = std::move(v); }
    int32_t modulus() const { return modulus_; }
    void setModulus(int32_t v) { modulus_ = v; }
    int32_t punched() const { return punched_; }
    void setPunched(int32_t v) { punched_ = v; }
    int32_t weight() const { return weight_; }
    void setWeight(int32_t v) { weight_ = v; }
    const Text& description() const { return description_; }
    void setDescription(Text v) { description_ = std::move(v); }
    int32_t sidesCoated() const { return sidesCoated_; }
    void setSidesCoated(int32_t v) { sidesCoated_ = v; }
    int32_t coatingType() const { return coatingType_; }
    void setCoatingType(int32_t v) { coatingType_ = v; }
    int32_t finish() const { return finish_; }
    void setFinish(int32_t v) { finish_ = v; }
    int32_t grain() const { return grain_; }
    void setGrain(int32_t v) { grain_ = v; }
    const Text& customName() const { return customName_; }
    void setCustomName(Text v) { customName_ = std::move(v); }
    bool customNameOnly() const { return customNameOnly_; }
    void setCustomNameOnly(bool v) { customNameOnly_ = v; }
    const Text& comment() const { return comment_; }
    void setComment(Text v) { comment_ = std::move(v); }
    int32_t source() const { return source_; }
    void setSource(int32_t v) { source_ = v; }

    // The dictionary form: only set fields are written, so a default stock gives an empty
    // dictionary. The caller owns the result.
    pl::DictPtr asTicket() const;

private:
    int32_t size_ = kNotSet;
    int32_t width_ = kNotSet;
    int32_t length_ = kNotSet;
    int32_t type_ = kNotSet;
    Text customType_ = std::string();
    int32_t color_ = kNotSet;
    Text customColor_ = std::string();
    int32_t modulus_ = kNotSet;
    int32_t punched_ = kNotSet;
    int32_t weight_ = kNotSet;
    Text description_ = std::string();
    int32_t sidesCoated_ = kNotSet;
    int32_t coatingType_ = kStockCoatingGloss; // gloss, not unset: coating type is only
                                               // meaningful once sides are coated
    int32_t finish_ = kNotSet;
    int32_t grain_ = kNotSet;
    Text customName_ = std::string();
    bool customNameOnly_ = false;
    Text comment_ = std::string();
    int32_t source_ = kNotSet;
};

// Resets the attributes a user chooses to the default of `context`: not punched at job level,
// printer default everywhere at page level. Coating type, finish, grain, comment and source
// are left alone.
void DefaultStock(Stock& stock, JobContext context);

// Where the summary's texts come from. `localized` is the bundle's "Localizable" table (it
// answers "STRING NOT FOUND" for a missing key); the other two are what only the printer's
// description can say. A missing function counts as "no text".
struct StockTextSource {
    LabelLookup localized;
    // Display text of the printer's "MediaType" choice for a type code, if it has one.
    std::function<std::optional<std::string>(int32_t type)> mediaTypeText;
    // The installed-options layer's text for a key such as "PostPrintInserterKey".
    std::function<std::string(std::string_view key)> installedOptionText;
};

// The summary lines of a stock joined by `separator`.
std::string GenerateStockSummary(const StockTextSource& texts, JobContext context, const Stock& stock,
                                 std::string_view separator);

// What the stock summary view shows: the summary joined by "\n", or "UseJobSetting" /
// "PrinterDefault" when there is nothing to say; "" without a stock. paramErr without texts
// or view.
OSStatus ShowStockSummary(const StockTextSource* texts, std::string* summaryView, const Stock* stock,
                          JobContext context);

// Commands of the stock pop-ups; each menu item carries its ticket value.
inline constexpr uint32_t kStockCommandSize = FourCC("Ssiz");
inline constexpr uint32_t kStockCommandColor = FourCC("Sclr");
inline constexpr uint32_t kStockCommandType = FourCC("Styp");
inline constexpr uint32_t kStockCommandWeight = FourCC("Sgsm");
inline constexpr uint32_t kStockCommandPunched = FourCC("Spun");
inline constexpr uint32_t kStockCommandSidesCoated = FourCC("Scoa");
inline constexpr uint32_t kStockCommandCoatingType = FourCC("Scty");
inline constexpr uint32_t kStockCommandDescription = FourCC("Sdsc");
inline constexpr uint32_t kStockCommandSource = FourCC("Ssrc");
inline constexpr uint32_t kStockCommandAdvanced = FourCC("Sadv");
inline constexpr uint32_t kStockCommandLibrary = FourCC("Slib");
inline constexpr uint32_t kStockCommandDefault = FourCC("Sdef");

// The stock pop-up's size, colour and type menus: the menu tables through PopulateMenuFromMap,
// every item sending its attribute's command (kStockCommandSize, ...). The printer-default row
// reads "PrinterDefault" for the job and "UseJobSetting" for a page range. Returns the row
// count, as PopulateMenuFromMap does.
int32_t PopulateStockSizeMenu(const Bundle& bundle, MenuModel& menu, JobContext context);
int32_t PopulateStockColorMenu(const Bundle& bundle, MenuModel& menu, JobContext context);
int32_t PopulateStockTypeMenu(const Bundle& bundle, MenuModel& menu, JobContext context);

struct StockDimensions {
    int32_t width;
    int32_t length;
};

struct OrderedStockChoice {
    std::string name;
    int32_t count;
};

// The modal dialogs a stock command may open. Each answers nullopt (or false) for Cancel; a
// missing function behaves as Cancel. `advanced` and `library` edit a copy that replaces the
// stock only on OK.
struct StockCommandDialogs {
    std::function<std::optional<StockDimensions>(const Stock&)> customSize;
    std::function<std::optional<std::string>(const Stock&)> customColor;
    std::function<std::optional<std::string>(const Stock&)> customType;
    std::function<std::optional<OrderedStockChoice>(const Stock&)> orderedStock;
    std::function<std::optional<int32_t>(const Stock&)> precutTab; // tab count
    std::function<std::optional<int32_t>(const Stock&)> customWeight;
    std::function<std::optional<std::string>(const Stock&)> description;
    std::function<bool(Stock&)> advanced;
    std::function<bool(Stock&)> library;
};

enum class StockCommandResult {
    Applied,   // the stock took the choice (possibly through a dialog's OK)
    Cancelled, // a dialog was cancelled; whatever the command does before its dialog stays
    Unknown,   // not a stock command; the stock is untouched
};

// Applies one stock menu choice (`value` is the chosen item's ticket value) to the stock
// being edited in `context`. Changing a single attribute detaches the stock from the named
// paper it came from.
StockCommandResult ApplyStockCommand(Stock& stock, uint32_t command, int32_t value, JobContext context,
                                     const StockCommandDialogs& dialogs = {});

} // namespace talmo
