// TPIF import: keyword maps, node search and validation, files into one dictionary.
#include "tpif/tpif.h"

#include "device/device.h"
#include "settings/settings.h"
#include "tpif/import_p.h"

#include <cmath>
#include <cstdio>

namespace talmo {

// ---- keyword maps ----

#define END                                                                                                            \
    {                                                                                                                  \
        nullptr, 0                                                                                                     \
    }
const _TPIFKeywordMap _TPIFColorEffectsMap[] = {{"Color", 2}, {"Grayscale", 1}, END};
const _TPIFKeywordMap _TPIFSidesMap[] = {
    {"PrinterDefault", kNotSet}, {"Simplex", 1}, {"DuplexLong", 2}, {"DuplexShort", 3}, END};
const _TPIFKeywordMap _TPIFOutputDestinationMap[] = {
    {"PrinterDefault", kNotSet}, {"Auto", 1}, {"Top", 3}, {"Main", 4}, END};
const _TPIFKeywordMap _TPIFMediaWeightMetricMap[] = {{"PrinterDefault", kNotSet}, END};
const _TPIFKeywordMap _TPIFMediaColorMap[] = {
    {"White", 1}, {"Blue", 2}, {"Yellow", 3},    {"Green", 4}, {"Pink", 5},    {"Clear", 6}, {"Ivory", 11},
    {"Gray", 12}, {"Buff", 7}, {"Goldenrod", 8}, {"Red", 9},   {"Orange", 13}, END};
const _TPIFKeywordMap _TPIFMediaTypeMap[] = {
    {"Plain", 1}, {"Transparency", 2}, {"Labels", 9}, {"PrecutTab", 4}, {"FullCutTab", 5}, {"Envelope", 8}, END};
const _TPIFKeywordMap _TPIFMediaGrainMap[] = {{"Long", 1}, {"Short", 2}, END};
const _TPIFKeywordMap _TPIFMediaFinishMap[] = {{"Smooth", 1}, {"Regular", 2}, {"Coarse", 3}, END};
const _TPIFKeywordMap _TPIFMediaCoatingTypeMap[] = {{"Gloss", 1}, {"HighGloss", 2}, {"SemiGloss", 3},
                                                    {"Satin", 4}, {"Matte", 5},     END};
const _TPIFKeywordMap _TPIFJobTypeMap[] = {{"Save", 3}, {"SaveAndPrint", 4}, {"Hold", 2}, END};
const _TPIFKeywordMap _TPIFSaveFormatMap[] = {{"FastReprint", 4},   {"FastReprintDRI", 5}, {"PDF", 3},
                                              {"TIFFMultiPage", 2}, {"TIFFSinglePage", 1}, END};
const _TPIFKeywordMap _TPIFSlipSheetMap[] = {{"PrinterDefault", kNotSet}, {"Enabled", 2}, END};
// "54lpi" deliberately imports as the printer default.
const _TPIFKeywordMap _TPIFHalftoneScreenMap[] = {{"PrinterDefault", kNotSet},
                                                  {"42lpi", 29},
                                                  {"53lpi", 15},
                                                  {"54lpi", kNotSet},
                                                  {"56lpi", 23},
                                                  {"60lpi", 24},
                                                  {"71lpi", 18},
                                                  {"85lpi", 16},
                                                  {"85lpi+", 19},
                                                  {"106lpi", 17},
                                                  {"106lpi+", 20},
                                                  {"120lpi", 21},
                                                  {"125lpi", 30},
                                                  {"134lpi", 4},
                                                  {"141lpi", 22},
                                                  {"156lpi", 31},
                                                  {"150dpi", 7},
                                                  {"175dpi", 13},
                                                  {"200dpi", 6},
                                                  {"300dpi", 11},
                                                  {"600dpi", 12},
                                                  {"200lpi", 8},
                                                  {"300lpi", 9},
                                                  {"600lpi", 10},
                                                  {"Stochastic", 14},
                                                  {"107lpiNormal", 25},
                                                  {"107lpiLight", 26},
                                                  {"107lpiDark", 27},
                                                  END};
const _TPIFKeywordMap _TPIFLightenDarkenMap[] = {{"PrinterDefault", kNotSet}, END};
const _TPIFKeywordMap _TPIFAntialiasingMap[] = {{"PrinterDefault", kNotSet}, {"Disabled", 1}, {"Enabled", 2}, END};
const _TPIFKeywordMap _TPIFRotationMap[] = {{"PrinterDefault", 0}, {"0", 1}, {"180", 2}, END};

const _TPIFKeywordMap _TPIFStapleMap[] = {{"1StapleTopLeft", 5},
                                          {"1StapleBottomLeft", 6},
                                          {"1StapleTopRight", 7},
                                          {"1StapleBottomRight", 8},
                                          {"2StaplesLeft", 10},
                                          {"2StaplesTop", 11},
                                          {"2StaplesBottom", 12},
                                          {"2StaplesRight", 13},
                                          {"1StapleLeft", 26},
                                          {"1StapleTop", 27},
                                          {"1StapleBottom", 28},
                                          {"1StapleRight", 29},
                                          END};
const _TPIFKeywordMap _TPIFFoldMap[] = {{"BiFoldSingleInside", 41},
                                        {"BiFoldSingleOutside", 42},
                                        {"BiFoldMultiple", 43},
                                        {"CFoldInside", 45},
                                        {"CFoldOutside", 46},
                                        {"ZFoldInside", 47},
                                        {"ZFoldOutside", 48},
                                        {"ZFoldHalfLeft", 38},
                                        {"ZFoldHalfRight", 39},
                                        {"BiFoldMultipleAndStaple", 8},
                                        END};
const _TPIFKeywordMap _TPIFPunchLocationMap[] = {{"Left", 32}, {"Top", 33}, {"Bottom", 34}, {"Right", 35}, END};
const _TPIFKeywordMap _TPIFPunchCountMap[] = {{"Two", 3}, {"Three", 4}, {"Four", 5}, END};
const _TPIFKeywordMap _TPIFBindMap[] = {{"Left", 15}, {"Right", 16}, END};
const _TPIFKeywordMap _TPIFFinishingNoneMap[] = {{"None", 1}, END};
const _TPIFKeywordMap _TPIFFinishingSBMMap[] = {{"SBM", 3}, END};
const _TPIFKeywordMap _TPIFResolutionMap[] = {{"300x300", 1}, {"600x600", 2}, {"1200x600", 3}, {"1200x1200", 4}, END};
const _TPIFKeywordMap _TPIFTonerSaverMap[] = {{"Off", 0}, {"On", 1}, END};
const _TPIFKeywordMap _TPIFOffsetMap[] = {{"None", 2}, {"Set", 3}, {"Subset", 4}, END};
const _TPIFKeywordMap _TPIFDravikEmulationMap[] = {{"Normal", 2}, {"Dravik180", 3}, END};
const _TPIFKeywordMap _TPIFOutputOrderMap[] = {
    {"SameOrderFaceDown", 2}, {"ReverseOrderFaceUp", 3}, {"SameOrderFaceUp", 4}, {"ReverseOrderFaceDown", 5}, END};
const _TPIFKeywordMap _TPIFOPISubstitutionMap[] = {{"Insert", 2}, {"DoNotInsert", 3}, END};
const _TPIFKeywordMap _TPIFOPIPrescanMap[] = {{"None", 2}, {"Scan", 3}, {"Gather", 4}, END};
const _TPIFKeywordMap _TPIFHighlightColorMap[] = {{"Red", 1},
                                                  {"Green", 2},
                                                  {"Blue", 3},
                                                  {"Cyan", 4},
                                                  {"Magenta", 5},
                                                  {"Yellow", 6},
                                                  {"Orange", 7},
                                                  {"Violet", 8},
                                                  {"Pink", 9},
                                                  {"Brown", 10},
                                                  {"Gray", 11},
                                                  {"Black", 12},
                                                  END};
const _TPIFKeywordMap _TPIFHighlightMapMap[] = {{"None", 1},      {"SingleColor", 2}, {"AllNonBlack", 3},
                                                {"AllColors", 4}, {"HueMatch", 5},    END};
const _TPIFKeywordMap _TPIFHighlightMismatchMap[] = {{"Ignore", 1}, {"HoldJob", 2}, {"CancelJob", 3}, END};
const _TPIFKeywordMap _TPIFRenderingIntentMap[] = {{"Saturation", 1},
                                                   {"RelativeColorimetric", 2},
                                                   {"AbsoluteColorimetric", 3},
                                                   {"Perceptual", 4},
                                                   {"PureText", 5},
                                                   {"Automatic", 6},
                                                   END};
const _TPIFKeywordMap _TPIFDestinationProfileMap[] = {{"SystemSpecified", 1}, END};
const _TPIFKeywordMap _TPIFRGBSourceMap[] = {
    {"TccModeRGB", 1}, {"TccModeRGBGamma1", 2}, {"Smpte240m", 3}, {"sRGB", 4}, END};
const _TPIFKeywordMap _TPIFCMYKSourceMap[] = {{"NativeCMYK", 1},
                                              {"SWOP", 2},
                                              {"FOGRAGlossCoated", 4},
                                              {"FOGRAMatteCoated", 5},
                                              {"FOGRAUncoated", 6},
                                              {"JapanColor2001Plus", 7},
                                              {"JapanColor2001Type1", 8},
                                              {"JapanColor2001Type2", 9},
                                              {"JapanColor2001Type3", 10},
                                              {"JapanColor2001Type4", 11},
                                              {"FOGRAWebOffset", 12},
                                              {"FOGRAPlus", 13},
                                              {"CommercialCMYK", 14},
                                              {"SWOPPlus", 15},
                                              END};
const _TPIFKeywordMap _TPIFTrappingMap[] = {{"All", 1}, {"Off", 2}, END};
const _TPIFKeywordMap _TPIFBlackOverprintMap[] = {{"On", 1}, {"Off", 2}, END};
const _TPIFKeywordMap _TPIFCoverTypeMap[] = {
    {"PrintNone", 1}, {"PrintFront", 2}, {"PrintBack", 3}, {"PrintBoth", 4}, END};
#undef END

bool TPIFConvertKeyword(const _TPIFKeywordMap* map, int direction, const pl::ValuePtr& in, pl::ValuePtr* out)
{
    if (!map || !in || !out)
        return false;
    if (direction == kTPIFKeywordToValue) {
        auto s = pl::as<pl::String>(in);
        if (!s)
            return false;
        for (const auto* row = map; row->keyword; ++row)
            if (s->text == row->keyword) {
                *out = pl::makeInt(row->value);
                return true;
            }
        return false;
    }
    if (direction == kTPIFValueToKeyword) {
        auto n = pl::as<pl::Integer>(in);
        if (!n)
            return false;
        for (const auto* row = map; row->keyword; ++row)
            if (n->value == row->value) {
                *out = pl::makeString(row->keyword);
                return true;
            }
    }
    return false;
}

// ---- nodes ----

namespace {

xmlNodePtr findFrom(xmlNodePtr node, std::string& path, std::string_view wanted)
{
    for (xmlNodePtr n = node; n; n = n->next) {
        if (n->type != XML_ELEMENT_NODE || !n->name)
            continue;
        const size_t mark = path.size();
        path += '.';
        path += reinterpret_cast<const char*>(n->name);
        xmlNodePtr found = nullptr;
        if (path == wanted)
            found = n;
        else if (wanted.size() > path.size() && wanted[path.size()] == '.' && wanted.substr(0, path.size()) == path)
            found = findFrom(n->children, path, wanted);
        path.resize(mark);
        if (found)
            return found;
    }
    return nullptr;
}

} // namespace

xmlNodePtr TPIFImportGetNode(xmlNodePtr node, std::string_view path)
{
    if (!node || path.empty())
        return nullptr;
    std::string walked;
    walked.reserve(path.size() + 64);
    return findFrom(node, walked, path);
}

std::string_view TPIFImportGetNodeSyntax(xmlNodePtr node)
{
    if (!node || node->type != XML_ELEMENT_NODE)
        return kTPIFSyntaxUnknown;
    xmlAttrPtr a = xmlHasProp(node, BAD_CAST "syntax");
    if (!a || !a->children || a->children->type != XML_TEXT_NODE || a->children->next || !a->children->content)
        return kTPIFSyntaxUnknown;
    const std::string_view v = reinterpret_cast<const char*>(a->children->content);
    if (v == "keyword" || v == "mimeMediaType" || v == "enum")
        return kTPIFSyntaxKeyword;
    if (v == "integer")
        return kTPIFSyntaxNumber;
    if (v == "name" || v == "uri" || v == "text")
        return kTPIFSyntaxName;
    return kTPIFSyntaxUnknown;
}

namespace internal {

std::string TPIFNodeText(xmlNodePtr node)
{
    std::string out;
    if (!node)
        return out;
    for (xmlNodePtr c = node->children; c; c = c->next)
        if ((c->type == XML_TEXT_NODE || c->type == XML_CDATA_SECTION_NODE) && c->content)
            out += reinterpret_cast<const char*>(c->content);
    return out;
}

} // namespace internal

namespace {

std::string_view trimmed(std::string_view s)
{
    const char* ws = " \t\r\n";
    const size_t b = s.find_first_not_of(ws);
    if (b == std::string_view::npos)
        return {};
    return s.substr(b, s.find_last_not_of(ws) - b + 1);
}

// An integer, or a decimal rounded half away from zero; at most 18 digits before the point.
std::optional<int64_t> parseNumber(std::string_view text)
{
    std::string_view s = trimmed(text);
    bool negative = false;
    if (!s.empty() && (s[0] == '-' || s[0] == '+')) {
        negative = s[0] == '-';
        s.remove_prefix(1);
    }
    int64_t whole = 0;
    size_t i = 0, digits = 0;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, ++digits) {
        if (digits >= 18)
            return std::nullopt;
        whole = whole * 10 + (s[i] - '0');
    }
    bool roundUp = false;
    if (i < s.size() && s[i] == '.') {
        ++i;
        size_t fraction = 0;
        for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i, ++fraction)
            if (fraction == 0)
                roundUp = s[i] >= '5';
        digits += fraction;
    }
    if (i != s.size() || digits == 0)
        return std::nullopt;
    if (roundUp)
        ++whole;
    return negative ? -whole : whole;
}

// UTF-16 units of valid UTF-8, or nullopt when the text breaks the character set.
std::optional<size_t> checkedLength(std::string_view text, std::string_view characterSet)
{
    size_t units = 0;
    for (size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (n == 0 || i + n > text.size())
            return std::nullopt;
        for (size_t k = 1; k < n; ++k)
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
                return std::nullopt;
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            return std::nullopt;
        if (c == 0x7F)
            return std::nullopt;
        if (characterSet == "ASCII" && (n > 1 || c < 0x20))
            return std::nullopt;
        if (characterSet == "URI" && (n > 1 || c <= 0x20))
            return std::nullopt;
        units += n == 4 ? 2 : 1;
        i += n;
    }
    return units;
}

} // namespace

pl::ValuePtr TPIFImportNodeValue(xmlNodePtr node, std::string_view syntax, const pl::DictPtr& feature)
{
    if (!node || !feature)
        return nullptr;
    const std::string text = internal::TPIFNodeText(node);
    if (syntax == kTPIFSyntaxKeyword) {
        auto keywords = TDPGetFeatureSyntax(feature, "Keyword");
        if (!keywords)
            return nullptr;
        const std::string word(trimmed(text));
        // Features whose keywords travel as names carry the keyword's own name.
        auto asName = [&](const char* property) {
            auto p = pl::as<pl::Boolean>(TDPGetFeatureProperty(feature, property));
            return p && p->value;
        };
        if (asName("KeywordsUseNameSyntax") || asName("NameSyntax"))
            return keywords->contains(word) ? pl::makeString(word) : nullptr;
        auto found = TDPGetKeywordsWithPropertyAndValue(feature, "TPIFValue", pl::makeString(word));
        if (!found || found->size() == 0)
            return nullptr;
        return found->at(0);
    }
    if (syntax == kTPIFSyntaxNumber) {
        auto number = TDPGetFeatureSyntax(feature, "Number");
        auto v = parseNumber(text);
        if (!number || !v)
            return nullptr;
        auto lo = number->getInt("Minimum"), hi = number->getInt("Maximum");
        if ((lo && *v < *lo) || (hi && *v > *hi))
            return nullptr;
        return pl::makeInt(*v);
    }
    if (syntax == kTPIFSyntaxName) {
        auto name = TDPGetFeatureSyntax(feature, "Name");
        if (!name)
            return nullptr;
        auto units = checkedLength(text, name->getString("CharacterSet").value_or("UTF-8"));
        auto limit = name->getInt("Length");
        if (!units || (limit && static_cast<int64_t>(*units) > *limit))
            return nullptr;
        return pl::makeString(text);
    }
    return nullptr;
}

// ---- finishing choice ----

void ComputeFinishingOptionKey(const pl::DictPtr& d)
{
    if (!d)
        return;
    auto present = [&](const char* key) {
        auto v = d->getInt(key);
        return v && *v != kNotSet;
    };
    int64_t choice = d->getInt("com.talmo.print.FinishingOptions").value_or(kNotSet);
    auto isStaple = [&] { return choice == 4 || choice == 9 || choice == 25; };
    if (present("com.talmo.print.FinishingStaple1Value"))
        choice = 4;
    if (present("com.talmo.print.FinishingStaple2Value"))
        choice = 9;
    if (present("com.talmo.print.FinishingStapleCenterValue"))
        choice = 25;
    if (present("com.talmo.print.FinishingHolePunchValue"))
        choice = isStaple() ? 49 : 30;
    if (present("com.talmo.print.FinishingZFoldValue"))
        choice = isStaple() ? 51 : choice == 49 ? 50 : choice == 30 ? 52 : 36;
    if (present("com.talmo.print.FinishingBindValue"))
        choice = 14;
    if (present("com.talmo.print.FinishingFoldValue"))
        choice = 40;
    d->setInt("com.talmo.print.FinishingOptions", choice);
}

// ---- files ----

namespace {

OSStatus importGroups(xmlDocPtr document, const pl::DictPtr& dictionary)
{
    if (!dictionary)
        return paramErr;
    xmlNodePtr root = document ? xmlDocGetRootElement(document) : nullptr;
    if (!root)
        return kImportFileFailed;
    TDPInitialize();
    auto features = TDPGetFeaturesWithPropertyAndValue("TPIF", pl::makeBool(true));

    _TPIFImportFeatureContext context;
    context.document = document;
    context.dictionary = dictionary;
    context.features = features;
    if (xmlNodePtr group = TPIFImportGetNode(root, ".tpif.job-template-attributes"); group && group->children) {
        context.start = group->children;
        context.count = static_cast<int64_t>(features->size());
        for (size_t i = 0; i < features->size(); ++i) {
            context.index = static_cast<int64_t>(i);
            if (auto f = pl::as<pl::Dictionary>(features->at(i)))
                TPIFImportFeature(f, context);
        }
    }

    auto operation = pl::makeArray();
    for (const char* name : {"JobName", "SenderName"})
        if (auto f = TDPGetFeature(name))
            operation->append(f);
    if (xmlNodePtr group = TPIFImportGetNode(root, ".tpif.tpif-operation-attributes"); group && group->children) {
        context.start = group->children;
        context.features = operation;
        context.count = static_cast<int64_t>(operation->size());
        for (size_t i = 0; i < operation->size(); ++i) {
            context.index = static_cast<int64_t>(i);
            TPIFImportFeature(pl::as<pl::Dictionary>(operation->at(i)), context);
        }
    }
    return noErr;
}

} // namespace

OSStatus TPIFImportDocument(xmlDocPtr document, const pl::DictPtr& dictionary)
{
    const OSStatus status = importGroups(document, dictionary);
    if (status == noErr)
        ComputeFinishingOptionKey(dictionary);
    return status;
}

OSStatus TPIFImportFileAtPath(const std::string& path, const pl::DictPtr& dictionary, std::string* why)
{
    if (!dictionary)
        return paramErr;
    TPIFDocument doc = TPIFReadDocument(path, why);
    if (!doc)
        return kImportFileFailed;
    // Imported into a copy of the caller's dictionary, so nothing reaches it unless the whole
    // file was read. The copy, not an empty one: the files of one import share a dictionary,
    // and a sub-dictionary an earlier file began (a stock, the job type) is added to, never
    // replaced.
    auto imported = pl::deepCopy(dictionary);
    const OSStatus status = importGroups(doc.get(), imported);
    if (status != noErr)
        return status;
    dictionary->clear();
    for (const auto& [key, value] : *imported)
        dictionary->set(key, value);
    // Over the whole dictionary: details imported from an earlier file still count.
    ComputeFinishingOptionKey(dictionary);
    return noErr;
}

pl::DictPtr TPIFImportFilesIntoDictionary(const std::vector<std::string>& paths, std::vector<OSStatus>* statuses)
{
    auto dictionary = pl::makeDict();
    if (statuses)
        statuses->clear();
    for (const auto& path : paths) {
        const OSStatus status = TPIFImportFileAtPath(path, dictionary);
        if (statuses)
            statuses->push_back(status);
    }
    return dictionary;
}

// ---- hooks ----

namespace {
TPIFPDESyncHandler& syncHandler()
{
    static TPIFPDESyncHandler handler;
    return handler;
}
TPIFMediaLimitsProvider& limitsProvider()
{
    static TPIFMediaLimitsProvider provider;
    return provider;
}
} // namespace

void TPIFSetPDESyncHandler(TPIFPDESyncHandler handler) { syncHandler() = std::move(handler); }

void TPIFRunPDESync(PrintSession* session, int direction)
{
    if (syncHandler())
        syncHandler()(session, direction);
}

void TPIFSetMediaLimitsProvider(TPIFMediaLimitsProvider provider) { limitsProvider() = std::move(provider); }

TPIFMediaLimits TPIFCurrentMediaLimits()
{
    if (limitsProvider())
        return limitsProvider()();
    const MediaLimits m = GetMediaLimits();
    return {m.minWidth, m.minHeight, m.maxWidth, m.maxHeight};
}

} // namespace talmo
