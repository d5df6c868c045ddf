#include "panels/paperoutput/paperoutput-finishing.h"

#include "ticket/ticket.h"

#include <algorithm>
#include <utility>

namespace talmo::paperoutput {

namespace {

struct Label {
    int32_t value;
    const char* key;
};

constexpr Label kOneStaple[] = {{5, "1StapleTLTR"}, {6, "1StapleBLTL"}, {7, "1StapleTRBR"}, {8, "1StapleBRBL"}};
constexpr Label kTwoStaples[] = {{10, "2StaplesLT"}, {11, "2StaplesTR"}, {12, "2StaplesBL"}, {13, "2StaplesRB"}};
constexpr Label kBind[] = {{15, "BindLT"}, {16, "BindRB"}};
constexpr Label kFold[] = {{19, "FoldCFold"}, {20, "FoldZFold"}, {36, "Z Fold Half Sheet"}};
constexpr Label kBookletFold[] = {{43, "Booklet Fold"}, {53, "Booklet FoldStaple"}};
constexpr Label kCenterStaple[] = {
    {26, "CenterStapleLT"}, {27, "CenterStapleTR"}, {28, "CenterStapleBL"}, {29, "CenterStapleRB"}};
constexpr Label kHolePunch[] = {{32, "HolePunchLT"}, {33, "HolePunchTR"}, {34, "HolePunchBL"}, {35, "HolePunchRB"}};
constexpr Label kZFold[] = {{38, "ZFoldLeftBind"}, {39, "ZFoldRightBind"}};
constexpr Label kAdvancedFold[] = {{41, "BiFoldSingleInside"},   {42, "BiFoldSingleOutside"},
                                   {43, "BiFoldMultipleInside"}, {44, "BiFoldMultipleOutside"},
                                   {45, "CTriFoldInside"},       {46, "CTriFoldOutside"},
                                   {47, "ZTriFoldInside"},       {48, "ZTriFoldOutside"}};
constexpr Label kOffset[] = {
    {1, "PrinterDefault"}, {2, "None"}, {3, "OffsetEachSet"}, {4, "OffsetEachSubset"}, {5, "OffsetEachSetSubset"}};

template <size_t N> const char* keyOf(const Label (&labels)[N], int32_t value)
{
    for (const Label& l : labels)
        if (l.value == value)
            return l.key;
    return nullptr;
}

// The number members with their keys: read and written alike.
struct NumberField {
    const char* key;
    int32_t PaperOutputSettings::*member;
};
constexpr NumberField kNumbers[] = {
    {kFinishingOptionsKey, &PaperOutputSettings::finishingOption},
    {kFinishingStaple1ValueKey, &PaperOutputSettings::staple1},
    {kFinishingStaple2ValueKey, &PaperOutputSettings::staple2},
    {kFinishingStapleCenterValueKey, &PaperOutputSettings::stapleCenter},
    {kFinishingFoldValueKey, &PaperOutputSettings::fold},
    {kFinishingBindValueKey, &PaperOutputSettings::bind},
    {kFinishingHolePunchValueKey, &PaperOutputSettings::holePunch},
    {kFinishingHolePunchOptionsKey, &PaperOutputSettings::holePunchOptions},
    {kFinishingZFoldValueKey, &PaperOutputSettings::zFold},
    {kFinishingOffsetKey, &PaperOutputSettings::offset},
    {kFinishingOffsetEnableSubsetKey, &PaperOutputSettings::offsetEnableSubset},
    {kFinishingOffsetPagesPerSubsetKey, &PaperOutputSettings::offsetPagesPerSubset},
    {kFinishingSlipSheetKey, &PaperOutputSettings::slipSheet},
    {kFinishingDuplexKey, &PaperOutputSettings::duplex},
    {kFinishingOutputColorKey, &PaperOutputSettings::outputColor},
    {kFinishingOutputDestinationKey, &PaperOutputSettings::outputDestination},
};

struct ValueField {
    const char* key;
    pl::ValuePtr PaperOutputSettings::*member;
};
constexpr ValueField kPassedOn[] = {
    {kBookletDrawOutlinesKey, &PaperOutputSettings::bookletDrawOutlines},
    {kBookletForceNewSizeKey, &PaperOutputSettings::bookletForceNewSize},
    {kGutterKey, &PaperOutputSettings::gutter},
    {kCreepKey, &PaperOutputSettings::creep},
};

struct DictField {
    const char* key;
    pl::DictPtr PaperOutputSettings::*member;
};
constexpr DictField kDictionaries[] = {
    {kJobLevelStockKey, &PaperOutputSettings::jobLevelStock},
    {kJobTypeKey, &PaperOutputSettings::jobType},
    {kBackgroundFormsOptionsKey, &PaperOutputSettings::backgroundForms},
};

int32_t readNumber(const Ticket* ticket, const char* key)
{
    int32_t value = kNotSet;
    return TicketGetInt32(ticket, key, &value) == noErr ? value : kNotSet;
}

// Staple and punch on the same edge read as one group: "2 Staples," then the punch.
bool sameEdge(int32_t staple, int32_t punch)
{
    if (punch < 32 || punch > 35)
        return false;
    const int32_t edge = punch - 32;
    return (staple >= 10 && staple <= 13 && staple - 10 == edge) ||
           (staple >= 26 && staple <= 29 && staple - 26 == edge);
}

const char* stapleKey(int32_t staple)
{
    if (const char* k = keyOf(kOneStaple, staple))
        return k;
    if (const char* k = keyOf(kTwoStaples, staple))
        return k;
    return keyOf(kCenterStaple, staple);
}

// The finishing line's label key for the options that show one sub-value.
const char* singleLineKey(const PaperOutputSettings& s)
{
    switch (s.option()) {
    case kFinishingPrinterDefault:
        return "PrinterDefault";
    case kFinishingNone:
        return "None";
    case kFinishingSignatureBooklet:
        return "SignatureBooklet";
    case kFinishingOneStaple:
        return keyOf(kOneStaple, s.staple1);
    case kFinishingTwoStaples:
        return keyOf(kTwoStaples, s.staple2);
    case kFinishingBind:
        return keyOf(kBind, s.bind);
    case kFinishingFold:
        return keyOf(kFold, s.fold);
    case kFinishingBookletFold:
        return keyOf(kBookletFold, s.fold);
    case kFinishingCenterStaple:
        return keyOf(kCenterStaple, s.stapleCenter);
    case kFinishingHolePunch:
    case kFinishingMultiplePunch:
        return keyOf(kHolePunch, s.holePunch);
    case kFinishingZFold:
        return keyOf(kZFold, s.zFold);
    case kFinishingAdvancedFold:
        return keyOf(kAdvancedFold, s.fold);
    case kFinishingMultipleStaple:
        return stapleKey(MultipleFinishingStaple(s));
    default:
        return nullptr;
    }
}

} // namespace

PaperOutputSettings ReadPaperOutputSettings(const Ticket* ticket)
{
    PaperOutputSettings s;
    for (const NumberField& f : kNumbers)
        s.*f.member = readNumber(ticket, f.key);
    bool booklet = false;
    if (TicketGetBool(ticket, kBookletLayoutKey, &booklet) == noErr)
        s.bookletLayout = booklet ? kBookletOn : kBookletOff;
    std::string custom;
    if (TicketGetString(ticket, kFinishingCustomKey, &custom) == noErr)
        s.custom = std::move(custom);
    if (ticket) {
        for (const ValueField& f : kPassedOn)
            s.*f.member = ticket->get(f.key);
        for (const DictField& f : kDictionaries)
            s.*f.member = pl::as<pl::Dictionary>(ticket->get(f.key));
    }
    return s;
}

OSStatus WritePaperOutputSettings(const PaperOutputSettings& s, Ticket* ticket)
{
    if (!ticket)
        return paramErr;
    OSStatus status = noErr;
    auto keep = [&](OSStatus result) {
        if (status == noErr)
            status = result;
    };
    for (const NumberField& f : kNumbers) {
        const int32_t value = s.*f.member;
        if (readNumber(ticket, f.key) == value)
            continue; // also an unreadable item that the context could not hold
        keep(value == kNotSet ? TicketRemove(ticket, f.key) : TicketSetInt32(ticket, f.key, value, kTalmoPanelCreator));
    }
    bool booklet = false;
    const bool hasBooklet = TicketGetBool(ticket, kBookletLayoutKey, &booklet) == noErr;
    if (s.bookletLayout == kNotSet ? hasBooklet : (!hasBooklet || booklet != s.bookletOn()))
        keep(s.bookletLayout == kNotSet ? TicketRemove(ticket, kBookletLayoutKey)
                                        : TicketSetBool(ticket, kBookletLayoutKey, s.bookletOn(), kTalmoPanelCreator));
    std::string custom;
    const bool hasCustom = TicketGetString(ticket, kFinishingCustomKey, &custom) == noErr;
    if (s.custom ? (!hasCustom || custom != *s.custom) : hasCustom)
        keep(s.custom ? TicketSetString(ticket, kFinishingCustomKey, *s.custom, kTalmoPanelCreator)
                      : TicketRemove(ticket, kFinishingCustomKey));
    auto writeValue = [&](const char* key, const pl::ValuePtr& value) {
        if (!pl::equal(ticket->get(key), value))
            keep(value ? ticket->set(key, value, kTalmoPanelCreator) : TicketRemove(ticket, key));
    };
    for (const ValueField& f : kPassedOn)
        writeValue(f.key, s.*f.member);
    for (const DictField& f : kDictionaries)
        writeValue(f.key, s.*f.member);
    return status;
}

std::string CreateFinishingString(const PaperOutputSettings& s, const LabelLookup& localized)
{
    std::string text;
    const int32_t option = s.option();
    if (option == kFinishingStaplePunch || option == kFinishingStaplePunchZFold) {
        const int32_t staple = MultipleFinishingStaple(s);
        const char* punch = keyOf(kHolePunch, s.holePunch);
        if (sameEdge(staple, s.holePunch))
            text += localized(staple >= 26 ? "1 Center Staple" : "2 Staples") + ",";
        else
            text += localized(stapleKey(staple) ? stapleKey(staple) : "PrinterDefault");
        text += "\n" + localized(punch ? punch : "PrinterDefault") + "\n";
        if (option == kFinishingStaplePunchZFold) {
            const char* zFold = keyOf(kZFold, s.zFold);
            text += localized(zFold ? zFold : "PrinterDefault") + "\n";
        }
    } else if (option == kFinishingCustom) {
        text += localized("CustomFinishing") + s.custom.value_or("") + "\n";
    } else {
        const char* key = singleLineKey(s);
        text += localized(key ? key : "PrinterDefault") + "\n";
    }
    if (s.bookletOn())
        text += localized("Booklet Layout") + "\n";
    if (s.slipSheet == kSlipSheetOn)
        text += localized("SlipSheet") + "\n";
    const char* offset = keyOf(kOffset, s.offset);
    text += localized("Offset") + localized(offset ? offset : "PrinterDefault") + "\n";
    return text;
}

bool FinishingCommandChecked(const PaperOutputSettings& s, uint32_t command)
{
    const int32_t option = s.option();
    auto punchWith = [&](int32_t holes) { return option == kFinishingHolePunch && s.holePunchOptions == holes; };
    switch (command) {
    case kCmdPrinterDefault:
        return option == kFinishingPrinterDefault;
    case kCmdNone:
        return option == kFinishingNone;
    case kCmdSignatureBooklet:
        return option == kFinishingSignatureBooklet;
    case kCmdOneStaple:
        return option == kFinishingOneStaple;
    case kCmdTwoStaples:
        return option == kFinishingTwoStaples;
    case kCmdCenterStaple:
        return option == kFinishingCenterStaple;
    case kCmdBind:
        return option == kFinishingBind;
    case kCmdCustom:
        return option == kFinishingCustom;
    case kCmdZFold:
        return option == kFinishingZFold;
    case kCmdFold:
        return option == kFinishingFold || option == kFinishingAdvancedFold;
    case kCmdHolePunch2:
        return punchWith(3);
    case kCmdHolePunch3:
        return punchWith(4);
    case kCmdHolePunch4:
        return punchWith(5);
    case kCmdMultiple:
        return option >= kFinishingStaplePunch && option <= kFinishingMultiplePunch;
    case kCmdBookletCreation:
        return option == kFinishingBookletFold;
    case kCmdSlipSheet:
        return s.slipSheet == kSlipSheetOn;
    case kCmdOffset:
        return s.offset != kNotSet && s.offset != kOffsetPrinterDefault;
    default:
        return false;
    }
}

bool FinishingExcludesBooklet(int32_t option)
{
    switch (option) {
    case kFinishingOneStaple:
    case kFinishingTwoStaples:
    case kFinishingBind:
    case kFinishingFold:
    case kFinishingHolePunch:
    case kFinishingZFold:
    case kFinishingAdvancedFold:
    case kFinishingStaplePunch:
    case kFinishingStaplePunchZFold:
    case kFinishingMultipleStaple:
    case kFinishingMultiplePunch:
        return true;
    default:
        return false;
    }
}

void UnselectBooklet(PaperOutputSettings& s)
{
    if (s.bookletOn()) {
        s.bookletLayout = kBookletOff;
        s.duplex = kDuplexLongEdge;
    }
    if (s.option() == kFinishingBookletFold) {
        s.fold = kFoldNone;
        s.finishingOption = kFinishingPrinterDefault;
    }
}

void ChooseFinishing(PaperOutputSettings& s, int32_t option)
{
    if (FinishingExcludesBooklet(option))
        UnselectBooklet(s);
    s.finishingOption = option;
}

int32_t FoldOptionOf(int32_t foldValue)
{
    if (std::find(kSimpleFolds.begin(), kSimpleFolds.end(), foldValue) != kSimpleFolds.end())
        return kFinishingFold;
    return foldValue >= 41 && foldValue <= 48 ? kFinishingAdvancedFold : kNotSet;
}

std::vector<MenuEntry> BuildOutputDestinationMenu(const InstalledOptionsSource& p, const LabelLookup& localized)
{
    std::vector<MenuEntry> menu = {{localized("Printer Default"), kNotSet}, {localized("Auto"), 1}};
    const bool inserter = p.installed("OmbraInserter");
    auto add = [&](const char* feature, const char* inserterKey) {
        if (p.installed(feature))
            menu.push_back(
                {inserter && inserterKey ? localized(inserterKey) : p.pluginLabel(feature), p.ticketValue(feature)});
    };
    add("AutoSwitchTrayKey", nullptr);
    add("StackerTray1Key", "Finisher B: Main Stacker");
    add("StackerTray2Key", "Finisher C: Main Stacker");
    const std::string finisher = p.optionChoice("Option1");
    add("SimpleCatchTrayKey", finisher == "BFMBFM"      ? "Finisher C: Top Tray"
                              : finisher == "BFMBFMFTM" ? "Finisher D: Top Tray"
                                                        : "Finisher B: Top Tray");
    return menu;
}

// Hold (2) has nothing to set up, and 8 is no job type of the menu.
const std::array<JobTypeEntry, 8> kJobTypes = {{
    {1, "Normal", "JobType_NormalPrint.gif"},
    {2, "HoldJob", "JobType_HoldJob.gif"},
    {3, "SavedJob", "JobType_SavedJob.gif"},
    {4, "SecurePrint", "JobType_SecurePrint.gif"},
    {5, "DelayedPrint", "JobType_DelayPrint.gif"},
    {6, "SampleSet", "JobType_SampleSet.gif"},
    {7, "FaxJob", "JobType_Fax.gif"},
    {9, "BackgroundForms", "JobType_BackgroundForm.gif"},
}};

int32_t JobTypeOf(const pl::DictPtr& jobType)
{
    const auto value = jobType ? jobType->getInt("JobType") : std::nullopt;
    return value && *value >= INT32_MIN && *value <= INT32_MAX ? int32_t(*value) : 1;
}

namespace {

constexpr const char* kTL = "Portrait - Top Left or Landscape - Top Right";
constexpr const char* kBL = "Portrait - Bottom Left or Landscape - Top Left";
constexpr const char* kTR = "Portrait - Top Right or Landscape - Bottom Right";
constexpr const char* kBR = "Portrait - Bottom Right or Landscape - Bottom Left";
constexpr SecondaryPair kStaplePairs[4] = {
    {{5, 6}, {kTL, kBL}}, {{5, 7}, {kTL, kTR}}, {{7, 8}, {kTR, kBR}}, {{6, 8}, {kBL, kBR}}};
constexpr const char* kPL = "Portrait - Left or Landscape - Top";
constexpr const char* kPT = "Portrait - Top or Landscape - Right";
constexpr const char* kPB = "Portrait - Bottom or Landscape - Left";
constexpr const char* kPR = "Portrait - Right or Landscape - Bottom";
constexpr SecondaryPair kPunchPairs[4] = {
    {{32, 33}, {kPL, kPT}}, {{32, 34}, {kPL, kPB}}, {{33, 34}, {kPT, kPB}}, {{35, 34}, {kPR, kPB}}};

} // namespace

FinishingPairing::FinishingPairing(Kind kind) : kind_(kind), value_(pair(1).values[0]) { }

const SecondaryPair& FinishingPairing::pair(int edge) const
{
    const SecondaryPair* pairs = kind_ == Staple ? kStaplePairs : kPunchPairs;
    return pairs[std::clamp(edge, 1, 4) - 1];
}

void FinishingPairing::selectEdge(int edge)
{
    edge_ = std::clamp(edge, 1, 4);
    const auto& values = pair().values;
    if (std::find(values.begin(), values.end(), value_) == values.end())
        value_ = values[0];
}

void FinishingPairing::selectValue(int32_t value)
{
    for (int edge = 1; edge <= 4; ++edge) {
        const auto& values = pair(edge).values;
        if (std::find(values.begin(), values.end(), value) != values.end()) {
            edge_ = edge;
            value_ = value;
            return;
        }
    }
    edge_ = 1;
    value_ = pair().values[0];
}

bool ZFoldAvailable(int stapleEdge) { return stapleEdge == 1 || stapleEdge == 3; }

int32_t MultipleFinishingStaple(const PaperOutputSettings& s)
{
    if (keyOf(kOneStaple, s.staple1))
        return s.staple1;
    if (keyOf(kTwoStaples, s.staple2))
        return s.staple2;
    if (keyOf(kCenterStaple, s.stapleCenter))
        return s.stapleCenter;
    return kNotSet;
}

std::vector<std::pair<std::string, std::string>> PaperOutputSummary(const PaperOutputSettings& s,
                                                                    const LabelLookup& localized,
                                                                    const std::string& stockSummary,
                                                                    const std::string& destination)
{
    std::vector<std::pair<std::string, std::string>> lines;
    if (!stockSummary.empty())
        lines.emplace_back(localized("POSummaryPaper"), stockSummary);
    auto mapped = [&](const char* title, const SettingMap* map, int32_t value) {
        const char* key = LocalizedKeyForTicketValue(map, value);
        lines.emplace_back(localized(title), localized(key ? key : "PrinterDefault"));
    };
    mapped("POSummaryTwoSided", _PlexMap, s.duplex);
    // One line of text: the summary's lines joined, a line ending in "," running on.
    std::string finishing;
    const std::string text = CreateFinishingString(s, localized);
    for (size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        if (!finishing.empty())
            finishing += finishing.back() == ',' ? " " : "; ";
        finishing += text.substr(start, end - start);
    }
    lines.emplace_back(localized("POSummaryFinishing"), finishing);
    mapped("POSummaryOutputColor", _OutputColorMap, s.outputColor);
    if (!destination.empty())
        lines.emplace_back(localized("POSummaryDestination"), destination);
    const int32_t type = JobTypeOf(s.jobType);
    const auto entry = std::find_if(kJobTypes.begin(), kJobTypes.end(), [&](auto& e) { return e.value == type; });
    lines.emplace_back(localized("POSummaryJobType"), localized(entry != kJobTypes.end() ? entry->key : "Normal"));
    return lines;
}

} // namespace talmo::paperoutput
