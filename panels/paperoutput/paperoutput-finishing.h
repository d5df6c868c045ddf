// The Paper/Output panel's values, how they travel in the print settings ticket, the finishing
// summary and menu marks, the output destination menu and the pairing rules of the multiple
// finishing dialog, apart from any widget.
#pragma once

#include "settings/settings.h"
#include "ticket/summary-labels.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talmo::paperoutput {

// Finishing option values ("com.talmo.print.FinishingOptions").
enum FinishingOption : int32_t {
    kFinishingPrinterDefault = 0,
    kFinishingNone = 1,
    kFinishingSignatureBooklet = 3,
    kFinishingOneStaple = 4,
    kFinishingTwoStaples = 9,
    kFinishingBind = 14,
    kFinishingFold = 18,
    kFinishingCustom = 22,
    kFinishingBookletFold = 24,
    kFinishingCenterStaple = 25,
    kFinishingHolePunch = 30,
    kFinishingZFold = 36,
    kFinishingAdvancedFold = 40,
    kFinishingStaplePunch = 49,
    kFinishingStaplePunchZFold = 50,
    kFinishingMultipleStaple = 51,
    kFinishingMultiplePunch = 52,
};

inline constexpr int32_t kFoldNone = 1;
inline constexpr int32_t kSlipSheetOff = 1;
inline constexpr int32_t kSlipSheetOn = 2;
inline constexpr int32_t kOffsetPrinterDefault = 1;
inline constexpr int32_t kOffsetEachSet = 3;
inline constexpr int32_t kBookletOn = 1;
inline constexpr int32_t kBookletOff = 2;
inline constexpr int32_t kDuplexLongEdge = 2;

// Commands of the finishing menu button.
inline constexpr uint32_t kCmdPrinterDefault = FourCC("Pdef");
inline constexpr uint32_t kCmdNone = FourCC("None");
inline constexpr uint32_t kCmdSignatureBooklet = FourCC("FSBM");
inline constexpr uint32_t kCmdOneStaple = FourCC("Stp1");
inline constexpr uint32_t kCmdTwoStaples = FourCC("Stp2");
inline constexpr uint32_t kCmdCenterStaple = FourCC("CStp");
inline constexpr uint32_t kCmdBind = FourCC("Bind");
inline constexpr uint32_t kCmdCustom = FourCC("Cust");
inline constexpr uint32_t kCmdZFold = FourCC("Zfol");
inline constexpr uint32_t kCmdFold = FourCC("Fold");
inline constexpr uint32_t kCmdHolePunch2 = FourCC("Hpn2");
inline constexpr uint32_t kCmdHolePunch3 = FourCC("Hpn3");
inline constexpr uint32_t kCmdHolePunch4 = FourCC("Hpn4");
inline constexpr uint32_t kCmdMultiple = FourCC("FMul");
inline constexpr uint32_t kCmdBookletCreation = FourCC("Bkcr");
inline constexpr uint32_t kCmdSlipSheet = FourCC("Spsh");
inline constexpr uint32_t kCmdOffset = FourCC("Ofsb");

// The panel context's values. Every number is kNotSet while its key is absent from the ticket,
// so a save writes back only what was read or changed.
struct PaperOutputSettings {
    int32_t finishingOption = kNotSet;
    int32_t staple1 = kNotSet;
    int32_t staple2 = kNotSet;
    int32_t stapleCenter = kNotSet;
    int32_t fold = kNotSet;
    int32_t bind = kNotSet;
    int32_t holePunch = kNotSet;
    int32_t holePunchOptions = kNotSet;
    int32_t zFold = kNotSet;
    int32_t offset = kNotSet;
    int32_t offsetEnableSubset = kNotSet;
    int32_t offsetPagesPerSubset = kNotSet;
    int32_t slipSheet = kNotSet;
    int32_t duplex = kNotSet;
    int32_t outputColor = kNotSet;
    int32_t outputDestination = kNotSet; // printer default: the key is removed
    int32_t bookletLayout = kNotSet;     // kBookletOn / kBookletOff, a Boolean in the ticket
    std::optional<std::string> custom;
    // Kept for the pages and dialogs that edit them; written back as they are.
    pl::ValuePtr bookletDrawOutlines, bookletForceNewSize, gutter, creep;
    pl::DictPtr jobLevelStock, jobType, backgroundForms;

    bool bookletOn() const { return bookletLayout == kBookletOn; }
    // kFinishingPrinterDefault while the key is absent.
    int32_t option() const { return finishingOption == kNotSet ? kFinishingPrinterDefault : finishingOption; }
};

PaperOutputSettings ReadPaperOutputSettings(const Ticket* ticket);
// Writes with the panel's client id; an item whose ticket value already reads as the setting
// is left as it is (its creator too), and kNotSet removes the key.
OSStatus WritePaperOutputSettings(const PaperOutputSettings& settings, Ticket* ticket);

// The finishing summary: lines each ended by "\n" (finishing, booklet layout, slip sheet,
// offset).
std::string CreateFinishingString(const PaperOutputSettings& settings, const LabelLookup& localized);

// Whether the finishing menu item with `command` carries a check mark.
bool FinishingCommandChecked(const PaperOutputSettings& settings, uint32_t command);

// Finishing choices that cannot go with a booklet.
bool FinishingExcludesBooklet(int32_t option);
// Turns booklet layout off (two-sided back to "Duplex") and drops a booklet fold.
void UnselectBooklet(PaperOutputSettings& settings);
// Makes `option` the finishing choice, first unselecting the booklet when the choice excludes it.
void ChooseFinishing(PaperOutputSettings& settings, int32_t option);

// Fold values of the fold dialog: C, Z and half-sheet Z folds (option 18) and the advanced
// folds (option 40), whose value is the kind's inside value, plus one for printing outside.
inline constexpr std::array<int32_t, 3> kSimpleFolds = {19, 20, 36};
inline constexpr std::array<int32_t, 4> kAdvancedFoldKinds = {41, 43, 45, 47};
int32_t FoldOptionOf(int32_t foldValue); // 18, 40, or kNotSet for another value

// --- output destination ---

// What the destination menu needs to know about the printer.
struct InstalledOptionsSource {
    std::function<bool(std::string_view feature)> installed;
    std::function<int32_t(std::string_view feature)> ticketValue;
    std::function<std::string(std::string_view feature)> pluginLabel;
    std::function<std::string(std::string_view option)> optionChoice; // "" when none
};

struct MenuEntry {
    std::string label;
    int32_t value;
    bool operator==(const MenuEntry&) const = default;
};

std::vector<MenuEntry> BuildOutputDestinationMenu(const InstalledOptionsSource& printer, const LabelLookup& localized);

// --- job types ---

struct JobTypeEntry {
    int32_t value;
    const char* key;
    const char* picture;
};
extern const std::array<JobTypeEntry, 8> kJobTypes;
// The dictionary's "JobType", Normal (1) without one.
int32_t JobTypeOf(const pl::DictPtr& jobType);

// --- multiple finishing ---

// One secondary pair of the multiple finishing dialog: the values and their label keys.
struct SecondaryPair {
    std::array<int32_t, 2> values;
    std::array<const char*, 2> labels;
};

// A primary group of four edges (1-4) and the secondary pair that follows from the chosen edge.
class FinishingPairing {
public:
    enum Kind { Staple, HolePunch };
    explicit FinishingPairing(Kind kind);

    int edge() const { return edge_; }
    int32_t value() const { return value_; }
    const SecondaryPair& pair() const { return pair(edge_); }
    const SecondaryPair& pair(int edge) const;

    // The secondary choice that holds the previous value stays, else the first of the pair.
    void selectEdge(int edge);
    // The first edge whose pair holds the value is selected, else edge 1.
    void selectValue(int32_t value);

private:
    Kind kind_;
    int edge_ = 1;
    int32_t value_;
};

// The Z-fold choice goes with staples on a side edge (left or right).
bool ZFoldAvailable(int stapleEdge);

// The staple value of a multiple finishing: the first of the one-staple, two-staple and
// centre-staple values that is one of its kind's positions; kNotSet when none is.
int32_t MultipleFinishingStaple(const PaperOutputSettings& settings);

// The Paper/Output lines of the dialog's summary: (title, text) pairs. The stock summary and
// the destination's label come from the panel; empty ones give no line.
std::vector<std::pair<std::string, std::string>> PaperOutputSummary(const PaperOutputSettings& settings,
                                                                    const LabelLookup& localized,
                                                                    const std::string& stockSummary,
                                                                    const std::string& destination);

} // namespace talmo::paperoutput
