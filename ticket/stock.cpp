#include "ticket/ticket.h"

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <climits>
#include <cstdio>
#include <vector>

namespace talmo {

namespace {
constexpr const char* kMissingText = "STRING NOT FOUND"; // the bundle's fallback text
} // namespace

// --- case-insensitive text equality ---

namespace {

// UTF-8 to canonically composed UTF-16; malformed sequences become U+FFFD. Empty on failure.
bool toComposedUtf16(std::string_view in, std::u16string& out)
{
    if (in.size() > static_cast<size_t>(INT32_MAX / 4))
        return false;
    UErrorCode err = U_ZERO_ERROR;
    std::u16string raw(in.size() + 1, u'\0');
    int32_t rawLength = 0;
    u_strFromUTF8WithSub(raw.data(), static_cast<int32_t>(raw.size()), &rawLength, in.data(),
                         static_cast<int32_t>(in.size()), 0xFFFD, nullptr, &err);
    if (U_FAILURE(err))
        return false;
    raw.resize(static_cast<size_t>(rawLength));

    const UNormalizer2* nfc = unorm2_getNFCInstance(&err);
    if (U_FAILURE(err))
        return false;
    int32_t needed = unorm2_normalize(nfc, raw.data(), rawLength, nullptr, 0, &err);
    if (err != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(err))
        return false;
    err = U_ZERO_ERROR;
    out.assign(static_cast<size_t>(needed) + 1, u'\0');
    needed = unorm2_normalize(nfc, raw.data(), rawLength, out.data(), static_cast<int32_t>(out.size()), &err);
    if (U_FAILURE(err))
        return false;
    out.resize(static_cast<size_t>(needed));
    return true;
}

} // namespace

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    if (a == b)
        return true;
    std::u16string ua, ub;
    if (!toComposedUtf16(a, ua) || !toComposedUtf16(b, ub))
        return false;
    UErrorCode err = U_ZERO_ERROR;
    const int32_t order = u_strCaseCompare(ua.data(), static_cast<int32_t>(ua.size()), ub.data(),
                                           static_cast<int32_t>(ub.size()), U_FOLD_CASE_DEFAULT, &err);
    return U_SUCCESS(err) && order == 0;
}

// --- the record ---

namespace {

// A number of the dictionary as a 32-bit value; anything else (absent, not a number, a
// fraction, out of range) is a failed read.
bool readInt32(const pl::Dictionary& d, const char* key, int32_t& out)
{
    const auto v = d.getInt(key);
    if (!v || *v < INT32_MIN || *v > INT32_MAX)
        return false;
    out = static_cast<int32_t>(*v);
    return true;
}

void readText(const pl::Dictionary& d, const char* key, Stock::Text& out)
{
    if (auto s = d.getString(key))
        out = std::move(*s);
}

bool hasText(const Stock::Text& t) { return t && !t->empty(); }

bool textsEqual(const Stock::Text& a, const Stock::Text& b) { return a && b && EqualIgnoringCase(*a, *b); }

} // namespace

Stock::Stock(const pl::DictPtr& dict)
{
    if (!dict)
        return;
    const pl::Dictionary& d = *dict;
    if (readInt32(d, kStockKeySize, size_) && size_ == kStockSizeCustom) {
        readInt32(d, kStockKeyWidth, width_);
        readInt32(d, kStockKeyLength, length_);
    }
    const bool typeRead = readInt32(d, kStockKeyType, type_);
    readText(d, kStockKeyCustomType, customType_);
    if (typeRead && (type_ == kStockTypePrecutTab || type_ == kStockTypeOrdered))
        readInt32(d, kStockKeyModulus, modulus_);
    readInt32(d, kStockKeyColor, color_);
    readText(d, kStockKeyCustomColor, customColor_);
    readInt32(d, kStockKeyWeight, weight_);
    readInt32(d, kStockKeyPunched, punched_);
    readText(d, kStockKeyDescription, description_);
    if (readInt32(d, kStockKeySidesCoated, sidesCoated_))
        readInt32(d, kStockKeyCoatingType, coatingType_);
    readInt32(d, kStockKeyFinish, finish_);
    readInt32(d, kStockKeyGrain, grain_);
    readText(d, kStockKeyCustomName, customName_);
    if (auto only = d.getBool(kStockKeyCustomNameOnly))
        customNameOnly_ = *only;
    readText(d, kStockKeyComment, comment_);
    readInt32(d, kStockKeySource, source_);
}

Stock& Stock::operator=(const Stock& other)
{
    if (this == &other)
        return *this;
    setSize(other.size_);
    setWidth(other.width_);
    setLength(other.length_);
    setColor(other.color_);
    setCustomColor(other.customColor_);
    setType(other.type_);
    setCustomType(other.customType_);
    setModulus(other.modulus_);
    setWeight(other.weight_);
    setPunched(other.punched_);
    setDescription(other.description_);
    setSidesCoated(other.sidesCoated_);
    setCoatingType(other.coatingType_);
    setFinish(other.finish_);
    setGrain(other.grain_);
    setCustomName(other.customName_);
    setCustomNameOnly(other.customNameOnly_);
    setComment(other.comment_);
    setSource(other.source_);
    return *this;
}

bool Stock::operator==(const Stock& other) const
{
    return size_ == other.size_ && width_ == other.width_ && length_ == other.length_ && color_ == other.color_ &&
           type_ == other.type_ && modulus_ == other.modulus_ && weight_ == other.weight_ &&
           punched_ == other.punched_ && sidesCoated_ == other.sidesCoated_ && coatingType_ == other.coatingType_ &&
           finish_ == other.finish_ && grain_ == other.grain_ && customNameOnly_ == other.customNameOnly_ &&
           textsEqual(customColor_, other.customColor_) && textsEqual(customType_, other.customType_) &&
           textsEqual(description_, other.description_) && textsEqual(customName_, other.customName_) &&
           textsEqual(comment_, other.comment_) && source_ == other.source_;
}

void Stock::setSize(int32_t v)
{
    size_ = v;
    if (v != kStockSizeCustom) {
        width_ = kNotSet;
        length_ = kNotSet;
    }
}

void Stock::setWidth(int32_t v)
{
    width_ = v;
    if (v != kNotSet)
        size_ = kStockSizeCustom;
}

void Stock::setLength(int32_t v)
{
    length_ = v;
    if (v != kNotSet)
        size_ = kStockSizeCustom;
}

void Stock::setType(int32_t v)
{
    type_ = v;
    if (v == kStockTypeTransparency)
        color_ = kStockColorClear;
}

pl::DictPtr Stock::asTicket() const
{
    auto d = pl::makeDict();
    if (size_ != kNotSet)
        d->setInt(kStockKeySize, size_);
    if (size_ == kStockSizeCustom) {
        d->setInt(kStockKeyWidth, width_);
        d->setInt(kStockKeyLength, length_);
    }
    if (type_ != kNotSet)
        d->setInt(kStockKeyType, type_);
    if (hasText(customType_))
        d->setString(kStockKeyCustomType, *customType_);
    if (modulus_ != kNotSet)
        d->setInt(kStockKeyModulus, modulus_);
    if (color_ != kNotSet)
        d->setInt(kStockKeyColor, color_);
    if (hasText(customColor_))
        d->setString(kStockKeyCustomColor, *customColor_);
    if (weight_ != kNotSet)
        d->setInt(kStockKeyWeight, weight_);
    if (punched_ != kNotSet)
        d->setInt(kStockKeyPunched, punched_);
    if (hasText(description_))
        d->setString(kStockKeyDescription, *description_);
    if (sidesCoated_ != kNotSet) {
        d->setInt(kStockKeySidesCoated, sidesCoated_);
        d->setInt(kStockKeyCoatingType, coatingType_);
    }
    if (finish_ != kNotSet)
        d->setInt(kStockKeyFinish, finish_);
    if (grain_ != kNotSet)
        d->setInt(kStockKeyGrain, grain_);
    if (hasText(customName_))
        d->setString(kStockKeyCustomName, *customName_);
    if (customNameOnly_)
        d->setBool(kStockKeyCustomNameOnly, true);
    if (hasText(comment_))
        d->setString(kStockKeyComment, *comment_);
    if (source_ != kNotSet)
        d->setInt(kStockKeySource, source_);
    return d;
}

void DefaultStock(Stock& stock, JobContext context)
{
    stock.setSize(kNotSet);
    stock.setColor(kNotSet);
    stock.setType(kNotSet);
    stock.setWeight(kNotSet);
    stock.setModulus(kNotSet);
    stock.setSidesCoated(kNotSet);
    stock.setCustomType(std::string());
    stock.setCustomColor(std::string());
    stock.setDescription(std::string());
    stock.setCustomName(std::string());
    stock.setCustomNameOnly(false);
    stock.setPunched(context == kJobContextJob ? kStockPunchedNo : kNotSet);
}

// --- summary ---

namespace {

std::string localized(const StockTextSource& texts, const char* key)
{
    if (!key || !texts.localized)
        return kMissingText;
    return texts.localized(key);
}

std::string withCount(const std::string& text, int32_t count) { return text + " (" + std::to_string(count) + ")"; }

std::string textOrEmpty(const Stock::Text& t) { return t ? *t : std::string(); }

} // namespace

std::string GenerateStockSummary(const StockTextSource& texts, JobContext context, const Stock& stock,
                                 std::string_view separator)
{
    std::vector<std::string> lines;
    auto line = [&](const char* label, const std::string& value) {
        lines.push_back(localized(texts, label) + ":" + value);
    };
    const bool pageLevel = context != kJobContextJob;

    if (stock.source() == kNotSet) {
        if (hasText(stock.customName()))
            line("StockName", *stock.customName());
        if (!stock.customNameOnly()) {
            if (stock.size() != kNotSet && pageLevel)
                line("StockSize",
                     localized(texts, LocalizedKeyForPaperSizeTicketValue(CompleteStockSizeMap, stock.size())));

            if (!(stock.color() == kNotSet && pageLevel)) {
                const bool custom = stock.color() == kStockColorCustom;
                line("StockColor",
                     custom ? textOrEmpty(stock.customColor())
                            : localized(texts, LocalizedKeyForTicketValue(_CompleteStockColorMap, stock.color())));
            }
            if (!(stock.type() == kNotSet && pageLevel)) {
                const int32_t type = stock.type();
                if (type == kStockTypeOrdered) {
                    line("StockType", withCount(textOrEmpty(stock.customType()), stock.modulus()));
                } else if (type == kStockTypePrecutTab) {
                    line("StockType", withCount(localized(texts, "StockTypePrecutTab"), stock.modulus()));
                } else if ((type == kStockTypeTabStock || type == kStockTypeTabStockAlt) && stock.modulus() > 0) {
                    if (texts.mediaTypeText)
                        if (auto text = texts.mediaTypeText(type))
                            line("StockType", withCount(*text, stock.modulus()));
                } else if (type == kStockTypeCustom) {
                    line("StockType", textOrEmpty(stock.customType()));
                } else {
                    line("StockType", localized(texts, LocalizedKeyForTicketValue(_CompleteStockTypeMap, type)));
                }
            }

            const int32_t weight = stock.weight();
            if (!(weight == kNotSet && pageLevel)) {
                if (weight == kNotSet)
                    line("StockWeight", localized(texts, "PrinterDefault"));
                else if (TicketToUI(_WeightMap, weight) > 0)
                    line("StockWeight", localized(texts, LocalizedKeyForTicketValue(_WeightMap, weight)) + " " +
                                            localized(texts, "gsm"));
                else
                    line("StockWeight", std::to_string(weight) + " " + localized(texts, "gsm"));
            }
        }
    } else if (stock.source() == kStockSourceInserter) {
        const char* key = "PostPrintInserterKey";
        lines.push_back("- " + (texts.installedOptionText ? texts.installedOptionText(key) : localized(texts, key)));
    }

    std::string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i)
            out += separator;
        out += lines[i];
    }
    return out;
}

OSStatus ShowStockSummary(const StockTextSource* texts, std::string* summaryView, const Stock* stock,
                          JobContext context)
{
    if (!texts || !summaryView)
        return paramErr;
    if (!stock) {
        summaryView->clear();
        return noErr;
    }
    std::string summary = GenerateStockSummary(*texts, context, *stock, "\n");
    if (summary.empty())
        summary = localized(*texts, context != kJobContextJob ? "UseJobSetting" : "PrinterDefault");
    *summaryView = std::move(summary);
    return noErr;
}

// --- menu commands ---

namespace {

// A stock that changes one attribute no longer is the named paper it came from.
void detachFromNamedPaper(Stock& stock)
{
    stock.setCustomName(std::string());
    stock.setCustomNameOnly(false);
}

template <class Fn, class Arg> auto runDialog(const Fn& dialog, Arg& stock) -> decltype(dialog(stock))
{
    if (!dialog)
        return {};
    return dialog(stock);
}

} // namespace

StockCommandResult ApplyStockCommand(Stock& stock, uint32_t command, int32_t value, JobContext context,
                                     const StockCommandDialogs& dialogs)
{
    bool ok = true;
    switch (command) {
    case kStockCommandSize:
        stock.setSource(kNotSet);
        if (value == kStockSizeCustom) {
            if (auto size = runDialog(dialogs.customSize, stock)) {
                stock.setSize(kStockSizeCustom);
                stock.setWidth(size->width);
                stock.setLength(size->length);
            } else {
                ok = false;
            }
        } else {
            stock.setSize(value);
        }
        detachFromNamedPaper(stock);
        break;

    case kStockCommandColor:
        stock.setSource(kNotSet);
        if (value == kStockColorCustom) {
            stock.setCustomColor(std::string());
            if (auto text = runDialog(dialogs.customColor, stock)) {
                stock.setColor(kStockColorCustom);
                stock.setCustomColor(std::move(*text));
            } else {
                ok = false;
            }
        } else {
            stock.setColor(value);
        }
        detachFromNamedPaper(stock);
        break;

    case kStockCommandType:
        stock.setSource(kNotSet);
        if (value == kStockTypeOrdered) {
            if (auto ordered = runDialog(dialogs.orderedStock, stock)) {
                stock.setType(kStockTypeOrdered);
                stock.setCustomType(std::move(ordered->name));
                stock.setModulus(ordered->count);
            } else {
                ok = false;
            }
        } else if (value == kStockTypeCustom) {
            if (auto text = runDialog(dialogs.customType, stock)) {
                stock.setType(kStockTypeCustom);
                stock.setCustomType(std::move(*text));
            } else {
                ok = false;
            }
        } else if (value == kStockTypePrecutTab) {
            if (auto tabs = runDialog(dialogs.precutTab, stock)) {
                stock.setType(kStockTypePrecutTab);
                stock.setModulus(*tabs);
            } else {
                ok = false;
            }
        } else {
            stock.setType(value);
        }
        detachFromNamedPaper(stock);
        break;

    case kStockCommandWeight:
        // Weight keeps the named paper; the command table gives it no detach.
        if (value == kStockWeightCustomRow) {
            if (auto weight = runDialog(dialogs.customWeight, stock))
                stock.setWeight(*weight);
            else
                ok = false;
        } else {
            stock.setWeight(value);
        }
        break;

    case kStockCommandPunched:
        stock.setPunched(value);
        detachFromNamedPaper(stock);
        break;

    case kStockCommandSidesCoated:
        stock.setSidesCoated(value);
        detachFromNamedPaper(stock);
        break;

    case kStockCommandCoatingType:
        stock.setCoatingType(value);
        detachFromNamedPaper(stock);
        break;

    case kStockCommandDescription:
        stock.setDescription(std::string());
        if (auto text = runDialog(dialogs.description, stock)) {
            stock.setDescription(std::move(*text));
            detachFromNamedPaper(stock);
        } else {
            ok = false;
        }
        break;

    case kStockCommandSource:
        stock.setSource(value);
        break;

    case kStockCommandAdvanced: {
        Stock edited(stock);
        if (runDialog(dialogs.advanced, edited)) {
            stock = edited;
            detachFromNamedPaper(stock);
        } else {
            ok = false;
        }
        break;
    }

    case kStockCommandLibrary: {
        Stock chosen(stock);
        if (runDialog(dialogs.library, chosen))
            stock = chosen;
        else
            ok = false;
        break;
    }

    case kStockCommandDefault:
        DefaultStock(stock, context);
        break;

    default:
        return StockCommandResult::Unknown;
    }
    return ok ? StockCommandResult::Applied : StockCommandResult::Cancelled;
}

int32_t PopulateStockSizeMenu(const Bundle& bundle, MenuModel& menu, JobContext context)
{
    return PopulateMenuFromMap(bundle, menu, _StockSizeMap, context, kStockCommandSize);
}

int32_t PopulateStockColorMenu(const Bundle& bundle, MenuModel& menu, JobContext context)
{
    return PopulateMenuFromMap(bundle, menu, _StockColorMap, context, kStockCommandColor);
}

int32_t PopulateStockTypeMenu(const Bundle& bundle, MenuModel& menu, JobContext context)
{
    return PopulateMenuFromMap(bundle, menu, _StockTypeMap, context, kStockCommandType);
}

} // namespace talmo
