// The whole libcups PPD API lives in this file. libcups 2.4 marks it deprecated in favour of
// IPP Everywhere; the printers this extension drives still describe themselves with PPDs, so
// the warnings are silenced here and nowhere else.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

#include "device/ppd.h"

#include "settings/settings.h"

#include <cups/ppd.h>
#include <unicode/ucnv.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace talmo {

// --- keyword maps: first matching row wins, so duplicated rows are never reached ---

const PPDChoiceMap _BannerPageMap[] = {{"True", 1}, {"False", 0}, {nullptr, 0}};
const PPDChoiceMap _RequestOffsetMap[] = {{"EndOfSet", 1}, {"None", 0}, {nullptr, 0}};
const PPDChoiceMap _JCLTrueGrayGraphicsMap[] = {{"False", 1}, {"True", 2}, {nullptr, 0}};
const PPDChoiceMap _JCLTrueGrayImagesMap[] = {{"False", 1}, {"True", 2}, {nullptr, 0}};
const PPDChoiceMap _LightenDarkenMap[] = {{"Lighten5", -5}, {"Lighten4", -4}, {"Lighten3", -3}, {"Lighten2", -2},
                                          {"Lighten1", -1}, {"Normal", 0},    {"Darken1", 1},   {"Darken2", 2},
                                          {"Darken3", 3},   {"Darken4", 4},   {"Darken5", 5},   {nullptr, 0}};
const PPDChoiceMap _MediaColorMap[] = {
    {"Buff", 7},      {"Blue", 2},         {"Clear", 6},    {"Gray", 12},    {"Green", 4},    {"Ivory", 11},
    {"Orange", 13},   {"Other", 14},       {"Pink", 5},     {"Red", 9},      {"White", 1},    {"Yellow", 3},
    {"Goldenrod", 8}, {"Unspecified", 22}, {"Custom1", 15}, {"Custom2", 16}, {"Custom3", 17}, {"Custom4", 18},
    {"Custom5", 19},  {"Custom6", 20},     {"Custom7", 21}, {nullptr, 0}};
const PPDChoiceMap _MediaTypeMap[] = {{"SystemDefault", 23},
                                      {"Transparency", 2},
                                      {"Labels", 9},
                                      {"Punched", 11},
                                      {"Recycled", 10},
                                      {"PrePrinted", 3},
                                      {"Bond", 13},
                                      {"Letterhead", 14},
                                      {"TabStock", 24},
                                      {"Envelopes", 8},
                                      {"Other", 22},
                                      {"Custom1", 15},
                                      {"Custom2", 16},
                                      {"Custom3", 17},
                                      {"Custom4", 18},
                                      {"Custom5", 19},
                                      {"Custom6", 20},
                                      {"Custom7", 21},
                                      {"Standard", 1},
                                      {"CardStock", 12},
                                      {"Archive", 45},
                                      {"CardStock2", 26},
                                      {"CardStock", 43},
                                      {"CardStockF", 43},
                                      {"HeavyweightLabels", 25},
                                      {"ExtraHeavyweight", 27},
                                      {"ExtraHeavyweight2", 28},
                                      {"LightGlossy", 29},
                                      {"LightGlossy2", 30},
                                      {"LightGlossyF", 44},
                                      {"HeavyGlossy", 31},
                                      {"HeavyGlossy2", 32},
                                      {"HeavyTabStock", 33},
                                      {"Unspecified", 34},
                                      {"ExtraHeavyPlus", 35},
                                      {"ExtraHeavyPlus2", 36},
                                      {"ExtraHeavyGlossy", 37},
                                      {"ExtraHeavyGlossy2", 38},
                                      {"ExtraHeavyLabels", 39},
                                      {"Rough", 40},
                                      {"Standard2", 41},
                                      {"Light", 42},
                                      {"Postcard", 46},
                                      {nullptr, 0}};
const PPDChoiceMap _PPDDuplexMap[] = {{"None", 1}, {"DuplexNoTumble", 2}, {"DuplexTumble", 3}, {nullptr, 0}};
const PPDChoiceMap _JCLPrintQualityMap[] = {{"TonerSaver", 1}, {"Standard", 2},    {"Enhanced", 3},
                                            {"HighSpeed", 4},  {"HighQuality", 5}, {"HighResolution", 6},
                                            {nullptr, 0}};
const PPDChoiceMap _TLRGBColorSpaceMap[] = {
    {"TalmoRGB", 1}, {"sRGB", 2}, {"AppleRGB", 3}, {"AdobeRGB", 4}, {nullptr, 0}};
const PPDChoiceMap _TLCMYKColorSpaceMap[] = {{"SNAP", 1},       {"SWOP", 2},       {"EuroScale", 3},
                                             {"Commercial", 4}, {"JapanColor", 5}, {nullptr, 0}};
const PPDChoiceMap _JCLColorCorrectionMap[] = {{"Auto", 1}, {"sRGB", 2},     {"BlackWhite", 3}, {"PressMatch", 4},
                                               {"None", 5}, {"Standard", 6}, {nullptr, 0}};
const PPDChoiceMap _PageSizeMap[] = {{"Letter", 1},
                                     {"Legal", 2},
                                     {"Tabloid", 3},
                                     {"A4", 4},
                                     {"A3", 5},
                                     {"FanFoldGermanLegal", 16},
                                     {"8.5x13", 12},
                                     {"3x5", 80},
                                     {"Officio", 78},
                                     {"Statement", 17},
                                     {"A5", 18},
                                     {"A6", 40},
                                     {"Executive", 21},
                                     {"B5", 6},
                                     {"A4Cover", 7},
                                     {"9x11", 8},
                                     {"9x11L", 82},
                                     {"B4", 14},
                                     {"5x7", 41},
                                     {"B6", 42},
                                     {"8x10", 10},
                                     {"4x6Pcard", 43},
                                     {"114x152Pcard", 81},
                                     {"EnvMonarch", 44},
                                     {"Env9", 77},
                                     {"Env10", 45},
                                     {"EnvDL", 46},
                                     {"EnvC5", 20},
                                     {"JISB5", 55},
                                     {"JISB4", 56},
                                     {"JISB6", 57},
                                     {"SpanishFolio", 22},
                                     {"EnvC4", 58},
                                     {"4x6", 59},
                                     {"100x148Postcard", 60},
                                     {"148x200Postcard", 61},
                                     {"TabloidExtra", 11},
                                     {"12x19", 71},
                                     {"13x19", 66},
                                     {"SRA3", 15},
                                     {"220x330", 24},
                                     {"815", 23},
                                     {"16K", 29},
                                     {"8K1", 67},
                                     {"16K1", 68},
                                     {"EnvB5", 73},
                                     {"Env6x9", 25},
                                     {"Env9x12", 26},
                                     {"EnvC6", 74},
                                     {"TL11x15", 63},
                                     {"EnvChou3", 69},
                                     {"5p5x7", 76},
                                     {"TL6x9", 62},
                                     {"3x5", 80},
                                     {"Custom", 75},
                                     {nullptr, 0}};
const PPDChoiceMap _OutputBinMap[] = {{"Auto", 1},
                                      {"Side", 3},
                                      {"Top", 2},
                                      {"TopTray", 18},
                                      {"Stacker", 4},
                                      {"TopTrayHCS", 16},
                                      {"StackerTrayHCS", 17},
                                      {"Upper", 5},
                                      {"Lower", 6},
                                      {"Booklet", 7},
                                      {"Middle", 11},
                                      {"Middle2", 15},
                                      {"PrinterDefault", INT32_MIN},
                                      {"Center", 5},
                                      {"Bottom", 5},
                                      {"EnvFolder", 13},
                                      {"SBM", 14},
                                      {nullptr, 0}};
const PPDChoiceMap _TLFoldMap[] = {{"None", 1},          {"C", 19},   {"Z", 20}, {"ZFoldHalfSheet", 36}, {"BiFold", 43},
                                   {"BiFoldStaple", 53}, {nullptr, 0}};
const PPDChoiceMap _TLPunchMap[] = {{"None", 1},       {"HolePunch", 2},  {"2HolePunch", 3},
                                    {"3HolePunch", 4}, {"4HolePunch", 5}, {nullptr, 0}};
const PPDChoiceMap _TLStapleMap[] = {
    {"None", 1}, {"SinglePortrait", 5}, {"DualLandscape", 10}, {"MultipleStaples", 54}, {nullptr, 0}};
const PPDChoiceMap _DraftModeMap[] = {{"None", 2}, {"Draft", 1}, {nullptr, 0}};
const PPDChoiceMap _PPDOutputOptionMap[] = {{"True", 1}, {"False", 0}, {nullptr, 0}};
const PPDChoiceMap _PPDResolutionMap[] = {{"200x100dpi", 6},   {"200x200dpi", 5},  {"300x300dpi", 1},
                                          {"600x600dpi", 2},   {"1200x600dpi", 3}, {"1200x1200dpi", 4},
                                          {"1800x1800dpi", 7}, {nullptr, 0}};
const PPDChoiceMap _ColorModeMap[] = {{"Grayscale", 1}, {"Color", 2}, {nullptr, 0}};
const PPDChoiceMap _InputSlotMap[] = {{"Auto", 0},  {"Tray1", 1}, {"Tray2", 2},    {"Tray3", 3}, {"Tray4", 4},
                                      {"Tray5", 5}, {"Tray6", 6}, {"Bypass", 100}, {nullptr, 0}};
const PPDChoiceMap _FeedEdgeMap[] = {{"LongEdge", 1}, {"ShortEdge", 2}, {nullptr, 0}};
const PPDChoiceMap _SlipSheetMap[] = {{"None", 1}, {"Blank", 2}, {"Printed", 3}, {nullptr, 0}};

const PPDKeywordMap _MainKeywordMap[] = {{"JCLBanner", _BannerPageMap},
                                         {"Jog", _RequestOffsetMap},
                                         {"JCLTrueGrayGraphics", _JCLTrueGrayGraphicsMap},
                                         {"JCLTrueGrayImages", _JCLTrueGrayImagesMap},
                                         {"TLImageQuality", _LightenDarkenMap},
                                         {"MediaColor", _MediaColorMap},
                                         {"MediaType", _MediaTypeMap},
                                         {"Duplex", _PPDDuplexMap},
                                         {"JCLPrintQuality", _JCLPrintQualityMap},
                                         {"JCLRGBColorSpace", _TLRGBColorSpaceMap},
                                         {"JCLCMYKColorSpace", _TLCMYKColorSpaceMap},
                                         {"JCLColorCorrection", _JCLColorCorrectionMap},
                                         {"PageSize", _PageSizeMap},
                                         {"OutputBin", _OutputBinMap},
                                         {"TLFold", _TLFoldMap},
                                         {"TLPunch", _TLPunchMap},
                                         {"StapleLocation", _TLStapleMap},
                                         {"TLEconomode", _DraftModeMap},
                                         {"TLOutputOption", _PPDOutputOptionMap},
                                         {"Resolution", _PPDResolutionMap},
                                         {"TLColorMode", _ColorModeMap},
                                         {"InputSlot", _InputSlotMap},
                                         {"TLFrontCoverSheet", _InputSlotMap},
                                         {"TLBackCoverSheet", _InputSlotMap},
                                         {"TLSlipSheetSource", _InputSlotMap},
                                         {"TLFeedEdge", _FeedEdgeMap},
                                         {"TLSlipSheetPrint", _SlipSheetMap},
                                         {"TLSlipSheetType", _MediaTypeMap},
                                         {nullptr, nullptr}};

namespace {

ppd_file_t* ppd = nullptr;

const PPDChoiceMap* choiceMapFor(std::string_view option)
{
    for (const PPDKeywordMap* row = _MainKeywordMap; row->option; ++row)
        if (option == row->option)
            return row->choices;
    return nullptr;
}

// Option names are ASCII keywords in practice; a name that does not survive conversion to
// the PPD's encoding cannot be found in it either.
ppd_option_t* findOption(PPDHandle handle, std::string_view option)
{
    if (!handle)
        return nullptr;
    std::string name(option);
    return ppdFindOption(reinterpret_cast<ppd_file_t*>(handle), name.c_str());
}

const char* icuConverterName(PPDTextEncoding e)
{
    switch (e) {
    case PPDTextEncoding::kLatin1:
        return "ISO-8859-1";
    case PPDTextEncoding::kLatin2:
        return "ISO-8859-2";
    case PPDTextEncoding::kLatin5:
        return "ISO-8859-9";
    case PPDTextEncoding::kShiftJIS:
        return "Shift_JIS";
    case PPDTextEncoding::kUTF8:
        return "UTF-8";
    case PPDTextEncoding::kRoman:
        return "macintosh";
    }
    return "macintosh";
}

} // namespace

PPDHandle PPDOpenAsCurrent(const std::string& path)
{
    PPDCloseCurrent();
    // Relaxed, as the print system and every other dialog read PPDs: strict conformance
    // refuses shipped files for a raw escape in a JCL string, a form feed in a comment or a
    // group never closed. A file without the PPD header is still refused.
    ppdSetConformance(PPD_CONFORM_RELAXED);
    ppd = ppdOpenFile(path.c_str());
    if (ppd)
        ppdLocalize(ppd); // stands in for the vendor localization step
    return reinterpret_cast<PPDHandle>(ppd);
}

PPDHandle PPDGetCurrent()
{
    if (ppd)
        return reinterpret_cast<PPDHandle>(ppd);
    PrintSession* session = GetCurrentPrintSession();
    if (!session)
        return nullptr;
    const Printer& printer = session->printer();
    if (printer.ppdPath.empty())
        return nullptr;
    return PPDOpenAsCurrent(printer.ppdPath);
}

std::string PPDLastErrorText(int* line)
{
    int l = 0;
    ppd_status_t status = ppdLastError(&l);
    if (line)
        *line = l;
    if (status == PPD_OK)
        return "no error";
    return ppdErrorString(status);
}

bool PPDManufacturerIsTalmo(PPDHandle handle)
{
    // Compared with the terminating zero: a name that only begins with "Talmo" is another maker.
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    return p && p->manufacturer && std::strcmp(p->manufacturer, "Talmo") == 0;
}

void PPDCloseCurrent()
{
    if (ppd)
        ppdClose(ppd);
    ppd = nullptr;
}

PPDTextEncoding PPDGetEncoding(PPDHandle handle)
{
    // libcups reports every PPD as UTF-8 in lang_encoding once it has converted the texts;
    // the file's own declaration is kept as its attribute.
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    ppd_attr_t* attr = p ? ppdFindAttr(p, "LanguageEncoding", nullptr) : nullptr;
    if (!attr || !attr->value)
        return PPDTextEncoding::kRoman;
    std::string_view e = attr->value;
    if (e == "ISOLatin1")
        return PPDTextEncoding::kLatin1;
    if (e == "ISOLatin2")
        return PPDTextEncoding::kLatin2;
    if (e == "ISOLatin5")
        return PPDTextEncoding::kLatin5;
    if (e == "JIS83-RKSJ")
        return PPDTextEncoding::kShiftJIS;
    if (e == "UTF-8" || e == "UTF8")
        return PPDTextEncoding::kUTF8;
    return PPDTextEncoding::kRoman;
}

std::string PPDTextToUTF8(PPDHandle handle, std::string_view text)
{
    // libcups already converts option and choice texts of a PPD to UTF-8 when it reads them
    // (ppd_decode + cupsCharsetToUTF8), except for files that declare UTF-8; both arrive
    // here as UTF-8, so only text that is not valid UTF-8 is converted from the declared
    // encoding.
    UErrorCode status = U_ZERO_ERROR;
    UConverter* utf8 = ucnv_open("UTF-8", &status);
    if (U_SUCCESS(status)) {
        ucnv_setToUCallBack(utf8, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        std::vector<UChar> probe(text.size() + 1);
        ucnv_toUChars(utf8, probe.data(), static_cast<int32_t>(probe.size()), text.data(),
                      static_cast<int32_t>(text.size()), &status);
        ucnv_close(utf8);
        if (U_SUCCESS(status))
            return std::string(text);
    }
    status = U_ZERO_ERROR;
    std::vector<char> out(text.size() * 4 + 4);
    int32_t n = ucnv_convert("UTF-8", icuConverterName(PPDGetEncoding(handle)), out.data(),
                             static_cast<int32_t>(out.size()), text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status))
        return std::string();
    return std::string(out.data(), static_cast<size_t>(n));
}

std::optional<std::string> PPDCopyCurrentChoice(const pl::DictPtr& ppdDict, std::string_view option)
{
    if (!ppdDict)
        return std::nullopt;
    return ppdDict->getString(option);
}

void PPDSetCurrentChoice(const pl::DictPtr& ppdDict, std::string_view option, std::string_view choice)
{
    if (ppdDict)
        ppdDict->setString(option, std::string(choice));
}

std::optional<std::string> PPDCopyDefaultChoice(PPDHandle handle, std::string_view option)
{
    ppd_option_t* o = findOption(handle, option);
    if (!o)
        return std::nullopt;
    return std::string(o->defchoice);
}

int32_t PPDTicketValueForChoice(std::string_view option, std::string_view choice)
{
    const PPDChoiceMap* map = choiceMapFor(option);
    if (!map)
        return -1;
    for (const PPDChoiceMap* row = map; row->choice; ++row)
        if (choice == row->choice)
            return row->ticketValue;
    return -1;
}

const char* PPDChoiceForTicketValue(std::string_view option, int32_t value)
{
    const PPDChoiceMap* map = choiceMapFor(option);
    if (!map)
        return nullptr;
    for (const PPDChoiceMap* row = map; row->choice; ++row)
        if (row->ticketValue == value)
            return row->choice;
    return nullptr;
}

int32_t PPDGetTicketValueForChoiceOrDefault(const pl::DictPtr& ppdDict, PPDHandle handle, std::string_view option)
{
    auto choice = PPDCopyCurrentChoice(ppdDict, option);
    if (!choice)
        choice = PPDCopyDefaultChoice(handle, option);
    if (!choice)
        return -1;
    return PPDTicketValueForChoice(option, *choice);
}

std::optional<std::string> PPDCopyChoiceText(PPDHandle handle, std::string_view option, std::string_view choice)
{
    ppd_option_t* o = findOption(handle, option);
    if (!o)
        return std::nullopt;
    std::string c(choice);
    ppd_choice_t* ch = ppdFindChoice(o, c.c_str());
    if (!ch)
        return std::nullopt;
    return PPDTextToUTF8(handle, ch->text);
}

int PPDPopulateMenuWithChoices(std::vector<PPDMenuItem>& items, PPDHandle handle, std::string_view option)
{
    items.clear();
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    if (!p)
        return 0;
    ppdMarkDefaults(p);
    ppd_option_t* o = findOption(handle, option);
    if (!o) {
        std::fprintf(stderr, "Expected PPD option not found: %.*s\n", static_cast<int>(option.size()), option.data());
        return 0;
    }
    for (int i = 0; i < o->num_choices; ++i) {
        const ppd_choice_t& ch = o->choices[i];
        int32_t value = PPDTicketValueForChoice(option, ch.choice);
        if (value == -1) {
            std::fprintf(stderr, "Skipped unrecognized choice in PPD: %s\n", ch.choice);
            continue;
        }
        items.push_back({PPDTextToUTF8(handle, ch.text), value});
    }
    return static_cast<int>(items.size());
}

std::optional<std::string> PPDGetManufacturer(PPDHandle handle)
{
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    if (!p || !p->manufacturer)
        return std::nullopt;
    return std::string(p->manufacturer);
}

std::optional<std::string> PPDGetNickName(PPDHandle handle)
{
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    if (!p || !p->nickname)
        return std::nullopt;
    return std::string(p->nickname);
}

bool PPDGetCustomSizeLimits(PPDHandle handle, float* minWidth, float* minHeight, float* maxWidth, float* maxHeight)
{
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    if (!p || !p->variable_sizes)
        return false;
    *minWidth = p->custom_min[0];
    *minHeight = p->custom_min[1];
    *maxWidth = p->custom_max[0];
    *maxHeight = p->custom_max[1];
    return true;
}

std::vector<std::pair<std::string, std::string>> PPDInstallableOptionChoices(PPDHandle handle)
{
    std::vector<std::pair<std::string, std::string>> out;
    auto* p = reinterpret_cast<ppd_file_t*>(handle);
    if (!p)
        return out;
    ppdMarkDefaults(p);
    for (int g = 0; g < p->num_groups; ++g) {
        const ppd_group_t& group = p->groups[g];
        if (std::strcmp(group.name, "InstallableOptions") != 0)
            continue;
        for (int i = 0; i < group.num_options; ++i) {
            const ppd_option_t& o = group.options[i];
            for (int c = 0; c < o.num_choices; ++c) {
                if (o.choices[c].marked) {
                    out.emplace_back(o.keyword, o.choices[c].choice);
                    break;
                }
            }
        }
        break;
    }
    return out;
}

} // namespace talmo
