// The import/export summary: fixed sections of indented lines, every label localized.
#include "tpif/summary.h"

#include "platform/bundle.h"
#include "settings/settings.h"

#include <cstdio>

#include "settings/paper-sizes.h"
#include "settings/stock-maps.h"

namespace talmo {

const char* TPIFSummaryTitle(TPIFImportExportMode mode)
{
    return mode == kTPIFImportMode ? "Import Talmo Job Ticket" : "Export Talmo Job Ticket";
}

const char* TPIFSummaryDefaultButton(TPIFImportExportMode mode)
{
    return mode == kTPIFImportMode ? "Import" : "Export...";
}

namespace {

class Summary {
public:
    Summary(std::vector<std::string>& lines, const LabelLookup& label) : lines_(lines), label_(label) { }

    std::string L(std::string_view key) const { return label_ ? label_(key) : std::string(kStringNotFound); }
    // A localized value for a key that may be missing (no row for the stored value).
    std::string L(const char* key) const { return key ? L(std::string_view(key)) : std::string(kStringNotFound); }

    void title(std::string_view key) { lines_.push_back(L(key)); }
    void item(std::string_view label, const std::string& value)
    {
        lines_.push_back("\t\t" + L(label) + L(":") + value);
    }
    void subHeading(std::string_view label) { lines_.push_back("\t\t" + L(label) + L(":")); }
    void subItem(std::string_view label, const std::string& value)
    {
        lines_.push_back("\t\t\t" + L(label) + " = " + value);
    }
    void listItem(const std::string& text) { lines_.push_back("\t\t\t" + text); }
    void end() { lines_.push_back(" "); }

private:
    std::vector<std::string>& lines_;
    const LabelLookup& label_;
};

std::optional<int64_t> num(const pl::DictPtr& d, const char* key)
{
    if (!d)
        return std::nullopt;
    if (auto v = d->getInt(key))
        return v;
    if (auto b = d->getBool(key))
        return *b ? 1 : 0;
    return std::nullopt;
}

const char* pick(std::initializer_list<std::pair<int64_t, const char*>> rows, std::optional<int64_t> v)
{
    if (!v)
        return nullptr;
    for (const auto& [value, key] : rows)
        if (value == *v)
            return key;
    return nullptr;
}

const char* mapKey(const SettingMap* map, std::optional<int64_t> v)
{
    if (!v || *v < INT32_MIN || *v > INT32_MAX)
        return nullptr;
    return LocalizedKeyForTicketValue(map, static_cast<int32_t>(*v));
}

void jobNotes(Summary& s, const pl::DictPtr& t)
{
    s.title("JobNotes");
    const std::pair<const char*, const char*> items[] = {
        {"Job Name", "com.talmo.print.JobNotesJobName"},
        {"Sender Name", "com.talmo.print.JobNotesSenderName"},
        {"Recipient Name", "com.talmo.print.JobNotesRecipient"},
        {"SpecialInstructions", "com.talmo.print.JobNotesMessage"},
        {"AdditionalInfo", "com.talmo.print.JobNotesAdditionalInfo"},
    };
    for (const auto& [label, key] : items)
        if (auto v = t->getString(key))
            s.item(label, *v);
    s.end();
}

enum class StockTable { Size, Color, Type, SidesCoated, CoatingType };

// The localized text of a stored stock attribute.
std::string stockLabel(const Summary& s, StockTable table, int64_t v)
{
    if (v < INT32_MIN || v > INT32_MAX)
        return s.L(nullptr);
    const auto value = static_cast<int32_t>(v);
    switch (table) {
    case StockTable::Size:
        return s.L(LocalizedKeyForPaperSizeTicketValue(CompleteStockSizeMap, value));
    case StockTable::Color:
        return s.L(LocalizedKeyForTicketValue(_CompleteStockColorMap, value));
    case StockTable::Type:
        return s.L(LocalizedKeyForTicketValue(_CompleteStockTypeMap, value));
    case StockTable::SidesCoated:
        return s.L(LocalizedKeyForTicketValue(_SidesCoatedMap, value));
    case StockTable::CoatingType:
        return s.L(LocalizedKeyForTicketValue(_CoatingTypeMap, value));
    }
    return s.L(nullptr);
}

void jobSetup(Summary& s, const pl::DictPtr& t)
{
    s.title("Job Setup");
    if (auto v = num(t, "com.talmo.print.FinishingDuplex"))
        s.item("Duplex", s.L(mapKey(_PlexMap, v)));
    if (auto stock = t->getDict("com.talmo.print.JobLevelStock")) {
        s.subHeading("PaperStock");
        if (auto size = num(stock, "Size"))
            s.subItem("StockSize", stockLabel(s, StockTable::Size, *size));
        if (auto color = num(stock, "Color"))
            s.subItem("StockColor", *color == 10 && stock->getString("CustomColor")
                                        ? *stock->getString("CustomColor")
                                        : stockLabel(s, StockTable::Color, *color));
        if (auto type = num(stock, "Type"))
            s.subItem("StockType", (*type == 6 || *type == 7) && stock->getString("CustomType")
                                       ? *stock->getString("CustomType")
                                       : stockLabel(s, StockTable::Type, *type));
        if (auto name = stock->getString("CustomName"))
            s.subItem("StockName", *name);
        if (auto weight = num(stock, "Weight"); weight && *weight != kNotSet)
            s.listItem(s.L("StockWeight") + " = " + std::to_string(*weight) + " " + s.L("gsm"));
        if (auto sides = num(stock, "SidesCoated")) {
            std::string value = stockLabel(s, StockTable::SidesCoated, *sides);
            if (*sides >= 2 && *sides <= 4)
                if (auto type = num(stock, "kCoatingType"))
                    value += s.L(",") + stockLabel(s, StockTable::CoatingType, *type);
            s.subItem("CoatingType", value);
        }
        if (auto description = stock->getString("Description"))
            s.subItem("StockDescription", *description);
    }
    s.end();
}

// Portrait and landscape positions of a staple or hole punch value (the panel's multiple
// finishing labels, split at " or ").
std::pair<const char*, const char*> positions(int64_t v)
{
    switch (v) {
    case 5:
        return {"Portrait - Top Left", "Landscape - Top Right"};
    case 6:
        return {"Portrait - Bottom Left", "Landscape - Top Left"};
    case 7:
        return {"Portrait - Top Right", "Landscape - Bottom Right"};
    case 8:
        return {"Portrait - Bottom Right", "Landscape - Bottom Left"};
    case 10:
    case 26:
    case 32:
        return {"Portrait - Left", "Landscape - Top"};
    case 11:
    case 27:
    case 33:
        return {"Portrait - Top", "Landscape - Right"};
    case 12:
    case 28:
    case 34:
        return {"Portrait - Bottom", "Landscape - Left"};
    case 13:
    case 29:
    case 35:
        return {"Portrait - Right", "Landscape - Bottom"};
    default:
        return {nullptr, nullptr};
    }
}

void output(Summary& s, const pl::DictPtr& t)
{
    s.title("Output");
    if (auto slip = num(t, "com.talmo.print.FinishingSlipSheet"))
        s.item("SlipSheet", s.L(*slip == 2 ? "On" : "Off"));

    const auto choice = num(t, "com.talmo.print.FinishingOptions");
    auto detail = [&](const char* key) { return num(t, key); };
    const auto fold = detail("com.talmo.print.FinishingFoldValue");
    const auto zfold = detail("com.talmo.print.FinishingZFoldValue");
    const char* zfoldName = pick({{38, "ZFoldLeftBind"}, {39, "ZFoldRightBind"}}, zfold);
    if (choice && *choice != kNotSet && *choice != 0) {
        const char* name = nullptr;
        switch (*choice) {
        case 1:
            name = "None";
            break;
        case 3:
            name = "SignatureBookletMaker";
            break;
        case 14:
            name = "Bind";
            break;
        case 18:
            name = pick({{19, "FoldCFold"}, {20, "FoldZFold"}}, fold);
            break;
        case 24:
            name = detail("com.talmo.print.BookletFoldStaple") == 8 ? "BookletFoldStaple" : "BookletFold";
            break;
        case 30:
        case 32:
        case 33:
        case 34:
        case 35:
            name = "HolePunch";
            break;
        case 36:
            name = zfoldName;
            break;
        case 40:
            name = pick({{41, "BiFoldSingleInside"},
                         {42, "BiFoldSingleOutside"},
                         {43, "BiFoldMultipleInside"},
                         {44, "BiFoldMultipleOutside"},
                         {45, "CTriFoldInside"},
                         {46, "CTriFoldOutside"},
                         {47, "ZTriFoldInside"},
                         {48, "ZTriFoldOutside"}},
                        fold);
            break;
        default:
            break;
        }
        if (*choice == 22) {
            s.item("Stapling/Finishing", t->getString("com.talmo.print.FinishingCustom").value_or(""));
        } else if (name || (*choice != 4 && *choice != 9 && *choice != 25 && (*choice < 49 || *choice > 52))) {
            s.item("Stapling/Finishing", s.L(name));
        } else {
            s.subHeading("Stapling/Finishing");
        }
        // Staples and hole punches with their positions, then the Z-fold of the combinations.
        const bool staples = *choice == 4 || *choice == 9 || *choice == 25 || (*choice >= 49 && *choice <= 51);
        const bool punch = *choice == 30 || *choice == 49 || *choice == 50 || *choice == 52;
        auto positioned = [&](const char* label, std::optional<int64_t> v) {
            auto [portrait, landscape] = positions(v.value_or(0));
            s.listItem(s.L(label) + s.L(",") + s.L(portrait) + s.L(",") + s.L(landscape));
        };
        if (staples) {
            if (auto v = detail("com.talmo.print.FinishingStaple1Value"); v && *v != 0 && *v != kNotSet)
                positioned("1 Staple", v);
            if (auto v = detail("com.talmo.print.FinishingStaple2Value"); v && *v != 0 && *v != kNotSet)
                positioned("2 Staples", v);
            if (auto v = detail("com.talmo.print.FinishingStapleCenterValue"); v && *v != 0 && *v != kNotSet)
                positioned("Center Staple", v);
        }
        if (punch)
            positioned("HolePunch", detail("com.talmo.print.FinishingHolePunchValue"));
        if (*choice >= 50 && *choice <= 52)
            s.listItem(s.L(zfoldName));
    }
    if (auto bin = num(t, "com.talmo.print.FinishingOutputDestination"))
        s.item("Output Location", s.L(pick({{1, "Auto"},
                                            {2, "TopTray"},
                                            {3, "TopTray"},
                                            {4, "StackerTray"},
                                            {12, "StackerTray"},
                                            {5, "StackerTray1"},
                                            {6, "StackerTray2"},
                                            {8, "Top Tray 1"},
                                            {9, "Top Tray 2"},
                                            {16, "Top Tray 1"},
                                            {17, "StackerTray1"}},
                                           bin)));
    s.end();
}

void imageAdjustment(Summary& s, const pl::DictPtr& t)
{
    s.title("Image Adjustment");
    if (auto shift = t->getDict("com.talmo.print.ImageShiftOptionsJob"))
        if (auto option = num(shift, "Option"))
            s.item("ImageShift", s.L(pick({{1, "Independent"},
                                           {2, "Mirror"},
                                           {3, "MirrorX"},
                                           {4, "MirrorY"},
                                           {5, "MirrorBoth"},
                                           {6, "MirrorXTandemY"},
                                           {7, "MirrorYTandemX"},
                                           {8, "TandemX"},
                                           {9, "TandemY"},
                                           {10, "TandemBoth"}},
                                          option)));
    if (auto v = num(t, "com.talmo.print.AdvancedRotateImage180"))
        s.item("Rotation", s.L(pick({{0, "PrinterDefault"}, {1, "Off"}, {2, "On"}}, v)));
    if (auto v = num(t, "com.talmo.print.OPISubsitution"))
        s.item("OPI", s.L(pick({{2, "True"}, {3, "False"}}, v)));
    if (auto v = num(t, "com.talmo.print.OPIPrescan"))
        s.item("OPI Prescan", s.L(pick({{2, "None"}, {3, "Scan"}, {4, "Gather"}}, v)));
    s.end();
}

} // namespace

void buildSummaryText(const pl::DictPtr& ticketIn, std::vector<std::string>& lines, const LabelLookup& label)
{
    const pl::DictPtr ticket = ticketIn ? ticketIn : pl::makeDict();
    Summary s(lines, label);
    jobNotes(s, ticket);
    jobSetup(s, ticket);
    output(s, ticket);
    imageAdjustment(s, ticket);
    // Image quality, colour, highlight colour and special pages: deliberately not summarised.
    for (int i = 0; i < 4; ++i)
        s.end();
}

void buildSummaryText(const pl::DictPtr& ticket, std::vector<std::string>& lines)
{
    const Bundle* bundle = ExtensionBundle();
    buildSummaryText(ticket, lines, [bundle](std::string_view key) {
        return bundle ? bundle->localizedString(key) : std::string(kStringNotFound);
    });
}

} // namespace talmo
