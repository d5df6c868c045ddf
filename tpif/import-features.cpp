// TPIF import: what each profile feature reads and where its value goes.
#include "tpif/tpif.h"

#include "device/device.h"
#include "tpif/import_p.h"

#include <cmath>
#include <optional>
#include <string>
#include <unordered_map>

namespace talmo {

namespace {

constexpr int kJob = 0, kCover = 2, kInsert = 3, kException = 4;

// The sub-dictionary under `key`, created when missing; null when the key holds another type.
pl::DictPtr subDict(const pl::DictPtr& d, const char* key)
{
    if (!d || !key)
        return nullptr;
    if (auto v = d->get(key))
        return pl::as<pl::Dictionary>(v);
    auto created = pl::makeDict();
    d->set(key, created);
    return created;
}

pl::ValuePtr defaultValue(const pl::DictPtr& feature, const _TPIFKeywordMap* map)
{
    std::string kind;
    pl::ValuePtr value;
    if (!TDPGetFeatureDefaultValue(feature, &kind, &value))
        return nullptr;
    if (kind == kTPIFSyntaxKeyword) {
        pl::ValuePtr out;
        return map && TPIFConvertKeyword(map, kTPIFKeywordToValue, value, &out) ? out : nullptr;
    }
    return value;
}

// The value of `node` for `feature`: a keyword through `map` (the keyword name itself when
// there is no map), a number, a name; the feature's default when nothing valid results, and
// null when there is no default either. `syntaxOut` receives the node's syntax kind.
pl::ValuePtr resolve(const pl::DictPtr& feature, xmlNodePtr node, const _TPIFKeywordMap* map,
                     std::string_view* syntaxOut = nullptr)
{
    const std::string_view syntax = TPIFImportGetNodeSyntax(node);
    if (syntaxOut)
        *syntaxOut = syntax;
    pl::ValuePtr value;
    if (syntax != kTPIFSyntaxUnknown && TDPGetFeatureSyntax(feature, syntax))
        value = TPIFImportNodeValue(node, syntax, feature);
    if (value && syntax == kTPIFSyntaxKeyword && map) {
        pl::ValuePtr converted;
        value = TPIFConvertKeyword(map, kTPIFKeywordToValue, value, &converted) ? converted : nullptr;
    }
    return value ? value : defaultValue(feature, map);
}

// Where a feature's value goes at each level.
enum class Dest { Top, Stock, JobType, Highlight, FullColor, ColorCast, Forms };

struct OneToOne {
    const char* path;
    const char* jobKey;  // key in the job ticket (Top) or in the destination sub-dictionary
    const char* pageKey; // key in an exception page entry; null when not imported there
    const _TPIFKeywordMap* map;
    Dest dest;
};

const std::unordered_map<std::string_view, OneToOne>& oneToOneTable()
{
    static const std::unordered_map<std::string_view, OneToOne> table = {
        {"OutputColor",
         {".color-effects-type", "com.talmo.print.FinishingOutputColor", "OutputColor", _TPIFColorEffectsMap,
          Dest::Top}},
        {"Duplex", {".sides", "com.talmo.print.FinishingDuplex", "SidesImaged", _TPIFSidesMap, Dest::Top}},
        {"OutputDestination",
         {".output-bin", "com.talmo.print.FinishingOutputDestination", nullptr, _TPIFOutputDestinationMap, Dest::Top}},
        {"SlipSheets",
         {".separator-sheets.separator-sheets-type", "com.talmo.print.FinishingSlipSheet", nullptr, _TPIFSlipSheetMap,
          Dest::Top}},
        {"HalftoneScreen",
         {".halftone-graphics", "com.talmo.print.HalftoneScreen", "HalftoneScreen", _TPIFHalftoneScreenMap, Dest::Top}},
        {"LightenDarken",
         {".adjust-bw-darkness-value", "com.talmo.print.LightenDarken", "LightenDarken", _TPIFLightenDarkenMap,
          Dest::Top}},
        {"Antialiasing",
         {".anti-aliasing", "com.talmo.print.Antialiasing", "Antialiasing", _TPIFAntialiasingMap, Dest::Top}},
        {"Rotation",
         {".page-rotation", "com.talmo.print.AdvancedRotateImage180", nullptr, _TPIFRotationMap, Dest::Top}},
        {"DravikEmulation",
         {".adjust-bw-darkness-mode", "com.talmo.print.DravikEmulation", nullptr, _TPIFDravikEmulationMap, Dest::Top}},
        {"OutputOrder", {".page-delivery", "com.talmo.print.OutputOrder", nullptr, _TPIFOutputOrderMap, Dest::Top}},
        {"OPISubstitution",
         {".opi-image-insertion", "com.talmo.print.OPISubsitution", nullptr, _TPIFOPISubstitutionMap, Dest::Top}},
        {"OPIPrescan", {".opi-image-pre-scan", "com.talmo.print.OPIPrescan", nullptr, _TPIFOPIPrescanMap, Dest::Top}},
        {"BannerMessage", {".job-sheet-message", "com.talmo.print.JobNotesSheetMessage", nullptr, nullptr, Dest::Top}},
        {"RecipientName", {".job-recipient-name", "com.talmo.print.JobNotesRecipient", nullptr, nullptr, Dest::Top}},
        {"JobStartMessage",
         {".job-message-to-operator", "com.talmo.print.JobNotesMessage", nullptr, nullptr, Dest::Top}},
        {"AdditionalNotes",
         {".job-accounting-data", "com.talmo.print.JobNotesAdditionalInfo", nullptr, nullptr, Dest::Top}},
        {"JobName", {".job-name", "com.talmo.print.JobNotesJobName", nullptr, nullptr, Dest::Top}},
        {"SenderName", {".requesting-user-name", "com.talmo.print.JobNotesSenderName", nullptr, nullptr, Dest::Top}},

        {"StockWeight", {".media-col.media-weight-metric", "Weight", "Weight", _TPIFMediaWeightMetricMap, Dest::Stock}},
        {"StockDescription", {".media-col.media-description", "Description", "Description", nullptr, Dest::Stock}},
        {"StockGrain", {".media-col.media-grain", "kGrain", "kGrain", _TPIFMediaGrainMap, Dest::Stock}},
        {"StockFinish", {".media-col.media-tooth", "Finish", "Finish", _TPIFMediaFinishMap, Dest::Stock}},

        {"SaveJob", {".job-save-disposition.save-disposition", "JobType", nullptr, _TPIFJobTypeMap, Dest::JobType}},
        {"SaveJobFormat",
         {".job-save-disposition.save-info.value.save-document-format", "MediaType", nullptr, _TPIFSaveFormatMap,
          Dest::JobType}},
        {"SaveJobLocation",
         {".job-save-disposition.save-info.value.save-location", "SavedJobLocation", nullptr, nullptr, Dest::JobType}},
        {"SaveJobName",
         {".job-save-disposition.save-info.value.save-name", "SavedJobName", nullptr, nullptr, Dest::JobType}},

        {"HighlightPrintingColor",
         {".highlight-colorant", "HiglightPrintingColor", nullptr, _TPIFHighlightColorMap, Dest::Highlight}},
        {"HighlightMappingColor",
         {".highlight-map-color", "HighlightMappingColor", nullptr, _TPIFHighlightColorMap, Dest::Highlight}},
        {"HighlightMappingAlgorithm",
         {".highlight-map", "HighlightMappingAlgorithm", nullptr, _TPIFHighlightMapMap, Dest::Highlight}},
        {"HighlightMismatchAction",
         {".highlight-colorant-mismatch", "HighlightMismatchAction", nullptr, _TPIFHighlightMismatchMap,
          Dest::Highlight}},

        {"ColorTRC", {".trc.trc-name", "FCTRC", "FCTRC", nullptr, Dest::FullColor}},
        {"ColorOutputGraphicRendering",
         {".rendering-intent-graphics", "GraphicRendering", "GraphicRendering", _TPIFRenderingIntentMap,
          Dest::FullColor}},
        {"ColorOutputTextRendering",
         {".rendering-intent-text", "TextRendering", "TextRendering", _TPIFRenderingIntentMap, Dest::FullColor}},
        {"ColorOutputImageRendering",
         {".rendering-intent-images", "ImageRendering", "ImageRendering", _TPIFRenderingIntentMap, Dest::FullColor}},
        {"ColorOutputProfile",
         {".color-destination-profile-front", "DestinationProfile", "DestinationProfile", _TPIFDestinationProfileMap,
          Dest::FullColor}},
        {"ColorLightness", {".adjust-lightness", "FCLightness", "FCLightness", nullptr, Dest::FullColor}},
        {"ColorSaturation", {".adjust-saturation", "FCSaturation", "FCSaturation", nullptr, Dest::FullColor}},
        {"ColorContrast", {".adjust-contrast", "FCContrast", "FCContrast", nullptr, Dest::FullColor}},
        {"ColorCastCyanRed", {".adjust-cyan-red", "FCCyanRed", "FCCyanRed", nullptr, Dest::ColorCast}},
        {"ColorCastMagentaGreen",
         {".adjust-magenta-green", "FCMagentaGreen", "FCMagentaGreen", nullptr, Dest::ColorCast}},
        {"ColorCastYellowBlue", {".adjust-yellow-blue", "FCYellowBlue", "FCYellowBlue", nullptr, Dest::ColorCast}},
        {"ColorRGBSourceProfileImages",
         {".undefined-source-rgb-images", "RGBImagesProfile", "RGBImagesProfile", _TPIFRGBSourceMap, Dest::FullColor}},
        {"ColorRGBSourceProfileTextAndGraphics",
         {".undefined-source-rgb-text", "RGBTextAndGraphicsProfile", "RGBTextAndGraphicsProfile", _TPIFRGBSourceMap,
          Dest::FullColor}},
        {"ColorCMYKSourceProfileImages",
         {".undefined-source-cmyk-images", "CMYKImagesProfile", "CMYKImagesProfile", _TPIFCMYKSourceMap,
          Dest::FullColor}},
        {"ColorCMYKSourceProfileTextAndGraphics",
         {".undefined-source-cmyk-text", "CMYKTextAndGraphicsProfile", "CMYKTextAndGraphicsProfile", _TPIFCMYKSourceMap,
          Dest::FullColor}},
        {"ColorGraySourceProfileImages",
         {".undefined-source-gray-images", "GrayImagesProfile", "GrayImagesProfile", nullptr, Dest::FullColor}},
        {"ColorGraySourceProfileTextAndGraphics",
         {".undefined-source-gray-text", "GrayTextAndGraphicsProfile", "GrayTextAndGraphicsProfile", nullptr,
          Dest::FullColor}},
        {"ColorTrapping", {".trapping", "FCTrapping", "FCTrapping", _TPIFTrappingMap, Dest::FullColor}},
        {"ColorTrappingLength",
         {".trap-width-fast", "FCTrappingFastDirection", "FCTrappingFastDirection", nullptr, Dest::FullColor}},
        {"ColorTrappingWidth",
         {".trap-width-slow", "FCTrappingSlowDirection", "FCTrappingSlowDirection", nullptr, Dest::FullColor}},
        {"ColorBlackOverprint",
         {".black-overprint", "FCBlackOverprint", "FCBlackOverprint", _TPIFBlackOverprintMap, Dest::FullColor}},

        {"FormCreateName",
         {".form-save.form-save-info.value.form-save-name", "NewFormString", nullptr, nullptr, Dest::Forms}},
        {"FormMergeName", {".forms-col.value.form-name", "MergeWithString", nullptr, nullptr, Dest::Forms}},
        {"FormMergeCycle", {".forms-col.value.form-cycle-start", "CyclePages", nullptr, nullptr, Dest::Forms}},
        {"FormMergeShiftX", {".forms-col.value.forms-x-image-shift", "X1", nullptr, nullptr, Dest::Forms}},
        {"FormMergeShiftY", {".forms-col.value.forms-y-image-shift", "Y1", nullptr, nullptr, Dest::Forms}},
    };
    return table;
}

// The dictionary a destination names at the context's level; null where the feature is not
// imported at that level.
pl::DictPtr destination(_TPIFImportFeatureContext& c, Dest dest)
{
    const bool job = c.jobContext == kJob;
    switch (dest) {
    case Dest::Top:
        return c.dictionary;
    case Dest::Stock:
        return subDict(c.dictionary, job ? "com.talmo.print.JobLevelStock" : "Stock");
    case Dest::JobType:
        return job ? subDict(c.dictionary, "com.talmo.print.JobType") : nullptr;
    case Dest::Highlight:
        return subDict(c.dictionary, job ? "com.talmo.print.HighlightColorOptionsJob" : "HighlightColorOptionsPage");
    case Dest::FullColor:
        return subDict(c.dictionary, job ? "com.talmo.print.FullColorOptions" : "FullColorOptionsPage");
    case Dest::ColorCast:
        return subDict(destination(c, Dest::FullColor), "FCColorCast");
    case Dest::Forms:
        return job ? subDict(c.dictionary, "com.talmo.print.BackgroundFormsOptions") : nullptr;
    }
    return nullptr;
}

// Which features an entry imports: exception pages their page-level settings and media, covers
// and inserts their media only.
bool importedAtLevel(std::string_view id, Dest dest, int jobContext)
{
    if (jobContext == kJob)
        return true;
    if (id.rfind("Stock", 0) == 0)
        return true;
    if (jobContext != kException)
        return false;
    if (dest == Dest::Top)
        return true; // only where the row names a page key
    if (id.rfind("ImageShift", 0) == 0)
        return true;
    return dest == Dest::FullColor || dest == Dest::ColorCast || dest == Dest::Highlight;
}

pl::ValuePtr storeIn(const pl::DictPtr& d, const char* key, const pl::ValuePtr& v)
{
    if (d && key && v)
        d->set(key, v);
    return v;
}

// Numbers of a node, validated by the feature's Number syntax.
std::optional<int64_t> numberOf(const pl::DictPtr& feature, xmlNodePtr node)
{
    if (!node || TPIFImportGetNodeSyntax(node) != kTPIFSyntaxNumber)
        return std::nullopt;
    auto v = pl::as<pl::Integer>(TPIFImportNodeValue(node, kTPIFSyntaxNumber, feature));
    return v ? std::optional<int64_t>(v->value) : std::nullopt;
}

// The profile keyword of a node for the feature (its own name), or empty.
std::string keywordOf(const pl::DictPtr& feature, xmlNodePtr node)
{
    if (!node || TPIFImportGetNodeSyntax(node) != kTPIFSyntaxKeyword)
        return {};
    auto v = pl::as<pl::String>(TPIFImportNodeValue(node, kTPIFSyntaxKeyword, feature));
    return v ? v->text : std::string();
}

std::optional<int32_t> mapped(const _TPIFKeywordMap* map, const std::string& keyword)
{
    pl::ValuePtr out;
    if (keyword.empty() || !TPIFConvertKeyword(map, kTPIFKeywordToValue, pl::makeString(keyword), &out))
        return std::nullopt;
    return static_cast<int32_t>(pl::as<pl::Integer>(out)->value);
}

// ---- stock ----

void importStockSize(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    auto x = numberOf(feature, TPIFImportGetNode(c.start, ".media-col.media-size.x-dimension"));
    auto y = numberOf(feature, TPIFImportGetNode(c.start, ".media-col.media-size.y-dimension"));
    if (!x || !y)
        return;
    // Held within the printer's custom size limits (points -> hundredths of a millimetre).
    const TPIFMediaLimits limits = TPIFCurrentMediaLimits();
    auto hmm = [](double pt) { return static_cast<int64_t>(std::llround(pt * 2540.0 / 72.0)); };
    const int64_t width = std::clamp(*x, hmm(limits.minWidth), std::max(hmm(limits.minWidth), hmm(limits.maxWidth)));
    const int64_t length =
        std::clamp(*y, hmm(limits.minHeight), std::max(hmm(limits.minHeight), hmm(limits.maxHeight)));
    auto stock = destination(c, Dest::Stock);
    // A standard size whose dimensions match is stored by its code (the lowest code when
    // several share them), anything else as a custom size (75).
    int32_t size = 75;
    for (int32_t code = 1; code < 200; ++code) {
        uint32_t w = 0, l = 0;
        if (code != 75 && TPifStockSizeDimensions(code, w, l) && w == width && l == length) {
            size = code;
            break;
        }
    }
    stock->setInt("Size", size);
    stock->setInt("Width", width);
    stock->setInt("Length", length);
}

void importStockType(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    std::optional<int32_t> type;
    std::optional<std::string> customType;
    xmlNodePtr node = TPIFImportGetNode(c.start, ".media-col.media-type");
    if (node) {
        std::string_view syntax;
        auto v = resolve(feature, node, _TPIFMediaTypeMap, &syntax);
        if (auto n = pl::as<pl::Integer>(v))
            type = static_cast<int32_t>(n->value);
        else if (auto s = pl::as<pl::String>(v); s && syntax == kTPIFSyntaxName)
            customType = s->text;
        else if (keywordOf(feature, node) == "Bond")
            type = 13; // a type of the printer's own list, which the keyword map does not name
    }
    if (keywordOf(feature, TPIFImportGetNode(c.start, ".media-col.media-recycled")) == "Recycled")
        type = 10;
    const std::string prePrinted = keywordOf(feature, TPIFImportGetNode(c.start, ".media-col.media-pre-printed"));
    if (prePrinted == "PrePrinted")
        type = 3;
    else if (prePrinted == "LetterHead")
        type = 14;
    auto modulus = numberOf(feature, TPIFImportGetNode(c.start, ".media-col.media-order-count"));
    if (customType)
        type = modulus ? 6 : 7; // an ordered stock, or a custom type, both carried by name
    if (!type)
        return;
    auto stock = destination(c, Dest::Stock);
    stock->setInt("Type", *type);
    if (customType)
        stock->setString("CustomType", *customType);
    if (modulus && (*type == 4 || *type == 6))
        stock->setInt("Modulus", *modulus);
}

void importStockColor(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    xmlNodePtr node = TPIFImportGetNode(c.start, ".media-col.media-color");
    if (!node)
        return;
    std::string_view syntax;
    auto v = resolve(feature, node, _TPIFMediaColorMap, &syntax);
    if (auto n = pl::as<pl::Integer>(v)) {
        destination(c, Dest::Stock)->setInt("Color", n->value);
    } else if (auto s = pl::as<pl::String>(v); s && syntax == kTPIFSyntaxName) {
        auto stock = destination(c, Dest::Stock);
        stock->setInt("Color", 10);
        stock->setString("CustomColor", s->text);
    }
}

void importStockCoating(const pl::DictPtr& feature, _TPIFImportFeatureContext& c, bool typeOnly)
{
    const std::string front = keywordOf(feature, TPIFImportGetNode(c.start, ".media-col.media-front-coating"));
    const std::string back = keywordOf(feature, TPIFImportGetNode(c.start, ".media-col.media-back-coating"));
    if (front.empty() || back.empty())
        return;
    const bool f = front != "None", b = back != "None";
    auto stock = destination(c, Dest::Stock);
    if (typeOnly) {
        if (auto type = mapped(_TPIFMediaCoatingTypeMap, f ? front : back))
            stock->setInt("kCoatingType", *type);
        return;
    }
    stock->setInt("SidesCoated", f && b ? 3 : f ? 2 : b ? 4 : 1);
}

void importStockPunch(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    if (auto holes = numberOf(feature, TPIFImportGetNode(c.start, ".media-col.media-hole-count")))
        destination(c, Dest::Stock)->setInt("Punched", *holes == 0 ? 1 : 2);
}

// ---- finishing ----

// Every ".finishings.value" member whose text is one of this feature's keywords; the members
// of other finishing features are passed over.
template <class F> void forEachFinishing(const pl::DictPtr& feature, _TPIFImportFeatureContext& c, F f)
{
    for (xmlNodePtr v = TPIFImportGetNode(c.start, ".finishings.value"); v; v = v->next) {
        if (v->type != XML_ELEMENT_NODE || xmlStrcmp(v->name, BAD_CAST "value") != 0)
            continue;
        const std::string keyword = keywordOf(feature, v);
        if (!keyword.empty())
            f(keyword);
    }
}

void importFinishing(std::string_view id, const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    auto& d = c.dictionary;
    if (id == "FinishingStaple") {
        forEachFinishing(feature, c, [&](const std::string& k) {
            if (auto v = mapped(_TPIFStapleMap, k))
                d->setInt(*v <= 8    ? "com.talmo.print.FinishingStaple1Value"
                          : *v <= 13 ? "com.talmo.print.FinishingStaple2Value"
                                     : "com.talmo.print.FinishingStapleCenterValue",
                          *v);
        });
    } else if (id == "FinishingFold") {
        forEachFinishing(feature, c, [&](const std::string& k) {
            auto v = mapped(_TPIFFoldMap, k);
            if (!v)
                return;
            if (*v == 38 || *v == 39) {
                d->setInt("com.talmo.print.FinishingZFoldValue", *v);
            } else if (*v == 8) {
                // Booklet fold with staple: the choice the booklet values belong to.
                d->setInt("com.talmo.print.BookletFoldStaple", *v);
                if (d->getInt("com.talmo.print.FinishingOptions").value_or(kNotSet) == kNotSet)
                    d->setInt("com.talmo.print.FinishingOptions", 24);
            } else {
                d->setInt("com.talmo.print.FinishingFoldValue", *v);
            }
        });
    } else if (id == "FinishingPunchLocation") {
        forEachFinishing(feature, c, [&](const std::string& k) {
            if (auto v = mapped(_TPIFPunchLocationMap, k))
                d->setInt("com.talmo.print.FinishingHolePunchValue", *v);
        });
    } else if (id == "FinishingPunchCount") {
        forEachFinishing(feature, c, [&](const std::string& k) {
            if (auto v = mapped(_TPIFPunchCountMap, k))
                d->setInt("com.talmo.print.FinishingHolePunchOptions", *v);
        });
    } else if (id == "FinishingBind") {
        forEachFinishing(feature, c, [&](const std::string& k) {
            if (auto v = mapped(_TPIFBindMap, k))
                d->setInt("com.talmo.print.FinishingBindValue", *v);
        });
    } else if (id == "FinishingNone" || id == "FinishingSBM") {
        const auto* map = id == "FinishingNone" ? _TPIFFinishingNoneMap : _TPIFFinishingSBMMap;
        forEachFinishing(feature, c, [&](const std::string& k) {
            if (auto v = mapped(map, k))
                d->setInt("com.talmo.print.FinishingOptions", *v);
        });
    } else if (id == "FinishingCustom") {
        xmlNodePtr node = TPIFImportGetNode(c.start, ".finishings-col.finishing-template");
        if (auto s = pl::as<pl::String>(node ? resolve(feature, node, nullptr) : nullptr)) {
            d->setString("com.talmo.print.FinishingCustom", s->text);
            d->setInt("com.talmo.print.FinishingOptions", 22);
        }
    }
}

// ---- job-level specials ----

void importResolution(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    xmlNodePtr cross = TPIFImportGetNode(c.start, ".printer-resolution.cross-feed");
    xmlNodePtr feed = TPIFImportGetNode(c.start, ".printer-resolution.feed-direction");
    if (!cross || !feed)
        return;
    pl::ValuePtr value;
    if (TPIFImportGetNodeSyntax(cross) == kTPIFSyntaxNumber && TPIFImportGetNodeSyntax(feed) == kTPIFSyntaxNumber) {
        const std::string text = std::string(internal::TPIFNodeText(cross)) + "x" + internal::TPIFNodeText(feed);
        auto keywords = TDPGetKeywordsWithPropertyAndValue(feature, "TPIFValue", pl::makeString(text));
        if (keywords->size() > 0)
            TPIFConvertKeyword(_TPIFResolutionMap, kTPIFKeywordToValue, keywords->at(0), &value);
    }
    storeIn(c.dictionary, "com.talmo.print.Resolution", value ? value : defaultValue(feature, _TPIFResolutionMap));
}

void importOffset(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    bool set = false, subset = false;
    std::optional<int32_t> value;
    for (xmlNodePtr v = TPIFImportGetNode(c.start, ".job-offset.value"); v; v = v->next) {
        if (v->type != XML_ELEMENT_NODE || xmlStrcmp(v->name, BAD_CAST "value") != 0)
            continue;
        const std::string k = keywordOf(feature, v);
        set = set || k == "Set";
        subset = subset || k == "Subset";
        if (!value)
            value = mapped(_TPIFOffsetMap, k);
    }
    if (set && subset)
        value = 5;
    if (value)
        c.dictionary->setInt("com.talmo.print.FinishingOffset", *value);
}

void importPagesPerSubset(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    xmlNodePtr node = TPIFImportGetNode(c.start, ".pages-per-subset.value");
    if (!node)
        node = TPIFImportGetNode(c.start, ".pages-per-subset");
    if (auto pages = numberOf(feature, node)) {
        c.dictionary->setInt("com.talmo.print.FinishingOffsetPagesPerSubset", *pages);
        c.dictionary->setInt("com.talmo.print.FinishingOffsetEnableSubset", 1);
    }
}

void importTonerSaver(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    xmlNodePtr node = TPIFImportGetNode(c.start, ".toner-saver");
    if (auto v = pl::as<pl::Integer>(node ? resolve(feature, node, _TPIFTonerSaverMap) : nullptr))
        c.dictionary->setBool("com.talmo.print.TonerSaver", v->value != 0);
}

void importHoldJob(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    // The writer puts a held job's element outside the job-save-disposition collection.
    xmlNodePtr node = TPIFImportGetNode(c.start, ".job-save-disposition.job-hold-until");
    if (!node)
        node = TPIFImportGetNode(c.start, ".job-hold-until");
    if (auto v = node ? resolve(feature, node, _TPIFJobTypeMap) : nullptr)
        subDict(c.dictionary, "com.talmo.print.JobType")->set("JobType", v);
}

void importImageShift(std::string_view id, const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    static const std::unordered_map<std::string_view, std::pair<const char*, const char*>> paths = {
        {"ImageShiftSide1X", {".x-side1-image-shift", "X1"}},
        {"ImageShiftSide1Y", {".y-side1-image-shift", "Y1"}},
        {"ImageShiftSide2X", {".x-side2-image-shift", "X2"}},
        {"ImageShiftSide2Y", {".y-side2-image-shift", "Y2"}},
    };
    auto it = paths.find(id);
    if (it == paths.end())
        return;
    auto v = numberOf(feature, TPIFImportGetNode(c.start, it->second.first));
    if (!v)
        return;
    // Values are hundredths of a millimetre; each side is stated, so the sides are independent.
    auto shift = subDict(c.dictionary, c.jobContext == kJob ? "com.talmo.print.ImageShiftOptionsJob"
                                                            : "com.talmo.print.ImageShiftOptionsPage");
    shift->setInt(it->second.second, *v);
    shift->setBool("FullPrecision", true);
    shift->setInt("Inches", 0);
    if (!shift->contains("Option"))
        shift->setInt("Option", 1);
}

// ---- special pages ----

// Runs the feature list over an entry's members at `jobContext`, into `entry`.
void importEntry(_TPIFImportFeatureContext& c, xmlNodePtr value, const pl::DictPtr& entry, int jobContext)
{
    if (!c.features)
        return;
    _TPIFImportFeatureContext inner = c;
    inner.start = value->children;
    inner.dictionary = entry;
    inner.jobContext = jobContext;
    if (!inner.start)
        return;
    for (size_t i = 0; i < c.features->size(); ++i) {
        inner.index = static_cast<int64_t>(i);
        if (auto f = pl::as<pl::Dictionary>(c.features->at(i)))
            TPIFImportFeature(f, inner);
    }
}

template <class F> void forEachValue(xmlNodePtr first, F f)
{
    for (xmlNodePtr v = first; v; v = v->next)
        if (v->type == XML_ELEMENT_NODE && xmlStrcmp(v->name, BAD_CAST "value") == 0)
            f(v);
}

void importExceptions(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    auto list = pl::makeArray();
    forEachValue(TPIFImportGetNode(c.start, ".page-overrides.value"), [&](xmlNodePtr value) {
        auto lower = numberOf(feature, TPIFImportGetNode(value->children, ".pages.value.lower-bound"));
        auto upper = numberOf(feature, TPIFImportGetNode(value->children, ".pages.value.upper-bound"));
        if (!lower || !upper)
            return;
        auto entry = pl::makeDict();
        entry->setInt("StartPage", *lower);
        entry->set("Stock", pl::makeDict());
        entry->setInt("EndPage", *upper);
        importEntry(c, value, entry, kException);
        list->append(entry);
    });
    if (list->size() > 0)
        c.dictionary->set("com.talmo.print.SpecialPages.ExceptionList", list);
}

void importInserts(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    auto list = pl::makeArray();
    forEachValue(TPIFImportGetNode(c.start, ".insert-sheet.value"), [&](xmlNodePtr value) {
        auto after = numberOf(feature, TPIFImportGetNode(value->children, ".insert-after-page-number"));
        auto count = numberOf(feature, TPIFImportGetNode(value->children, ".insert-count"));
        auto entry = pl::makeDict();
        entry->setInt("StartPage", after.value_or(1));
        entry->set("Stock", pl::makeDict());
        entry->setInt("Quantity", count && *count > 0 ? *count : 1);
        importEntry(c, value, entry, kInsert);
        list->append(entry);
    });
    if (list->size() > 0)
        c.dictionary->set("com.talmo.print.SpecialPages.InsertList", list);
}

void importCover(std::string_view id, const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    const bool front = id == "CoverFront";
    xmlNodePtr cover = TPIFImportGetNode(c.start, front ? ".cover-front" : ".cover-back");
    if (!cover)
        return;
    auto entry = pl::makeDict();
    entry->setInt("StartPage", 0);
    entry->set("Stock", pl::makeDict());
    xmlNodePtr type = TPIFImportGetNode(cover->children, ".cover-type");
    auto sides = pl::as<pl::Integer>(type ? resolve(feature, type, _TPIFCoverTypeMap) : nullptr);
    entry->setInt("SidesImaged", sides ? sides->value : 1);
    importEntry(c, cover, entry, kCover);
    c.dictionary->set(front ? "com.talmo.print.SpecialPages.FrontCover" : "com.talmo.print.SpecialPages.BackCover",
                      entry);
}

// ---- background forms ----

// Form offsets arrive in hundredths of a millimetre, but the forms record keeps them in its own
// unit ("Inches" 1: hundredths of an inch, 0: tenths of a millimetre) and reads nothing else, so
// they are stored in that unit. Both offsets share one unit: an offset stored before is taken
// back to hundredths of a millimetre and both are stored again, in inches when both are whole
// hundredths of an inch as the writer rounds them, else in tenths of a millimetre (exact for
// every offset the writer makes from millimetres; others round to nearest). So a document
// written from the record comes back to the same numbers.
void storeFormOffset(const pl::DictPtr& forms, const char* key, int64_t hmm)
{
    const char* other = std::string_view(key) == "X1" ? "Y1" : "X1";
    std::optional<int64_t> otherHmm;
    if (auto stored = forms->getInt(other)) {
        const bool inches = forms->getInt("Inches").value_or(1) != 0;
        otherHmm = TPifShiftToHundredthsMm(*stored, inches, forms->getBool("FullPrecision").value_or(false));
    }
    auto inInches = [](int64_t h) { return std::llround(static_cast<double>(h) / 25.4); };
    auto exactInInches = [&](int64_t h) { return TPifShiftToHundredthsMm(inInches(h), true, false) == h; };
    const bool inches = exactInInches(hmm) && (!otherHmm || exactInInches(*otherHmm));
    auto unit = [&](int64_t h) { return inches ? inInches(h) : std::llround(static_cast<double>(h) / 10.0); };
    forms->setInt(key, unit(hmm));
    if (otherHmm)
        forms->setInt(other, unit(*otherHmm));
    forms->setInt("Inches", inches ? 1 : 0);
    forms->remove("FullPrecision");
}

// What happens after a one-to-one value was stored.
void afterOneToOne(std::string_view id, _TPIFImportFeatureContext& c, const pl::DictPtr& dest, const pl::ValuePtr& v)
{
    if (!dest || !v)
        return;
    if (id == "SaveJobName") {
        dest->setBool("UseJobName", false);
    } else if (id == "FormCreateName") {
        // The forms record names a new form after the document unless told otherwise; the
        // name came from the document, so it must stay the form's name.
        dest->setInt("UseDocumentName", 0);
    } else if (id == "FormMergeName") {
        dest->setInt("UseExistingForm", 2);
    } else if (id == "FormMergeCycle") {
        // The forms dialog shows the apply-pages row, not the cycle: without the row that goes
        // with the cycle it shows "Throughout Job" and its OK would turn the cycle into 1.
        if (auto n = pl::as<pl::Integer>(v))
            dest->setInt("ApplyPagesFrom", n->value == 1   ? kApplyThroughoutJob
                                           : n->value == 0 ? kApplyOnce
                                                           : kApplyOnceThenRepeat);
    } else if (id == "FormMergeShiftX" || id == "FormMergeShiftY") {
        if (auto n = pl::as<pl::Integer>(v))
            storeFormOffset(dest, id == "FormMergeShiftX" ? "X1" : "Y1", n->value);
    } else if (id == "ColorRGBSourceProfileImages" || id == "ColorRGBSourceProfileTextAndGraphics") {
        // "Adobe RGB" is a kind of its own that the writer can only write as a name.
        auto s = pl::as<pl::String>(v);
        const char* key = id == "ColorRGBSourceProfileImages" ? "RGBImagesProfile" : "RGBTextAndGraphicsProfile";
        if (s && s->text == "Adobe RGB")
            dest->setInt(key, 6);
    }
    (void)c;
}

} // namespace

bool TPIFImportFeatureOneToOne(const pl::DictPtr& feature, _TPIFImportFeatureContext& context, std::string_view path,
                               const char* ticketKey, const _TPIFKeywordMap* keywordMap, const char* dictionaryKey,
                               const char* subKey)
{
    if (!feature || !context.dictionary)
        return false;
    xmlNodePtr node = TPIFImportGetNode(context.start, path);
    if (!node)
        return false;
    auto value = resolve(feature, node, keywordMap);
    if (!value)
        return false;
    if (dictionaryKey) {
        auto sub = subDict(context.dictionary, dictionaryKey);
        if (!sub || !subKey)
            return false;
        sub->set(subKey, value);
    } else {
        if (!ticketKey)
            return false;
        context.dictionary->set(ticketKey, value);
    }
    return true;
}

void TPIFImportFeature(const pl::DictPtr& feature, _TPIFImportFeatureContext& c)
{
    auto idValue = pl::as<pl::String>(TDPGetFeatureProperty(feature, "ID"));
    if (!idValue || !c.dictionary || !c.start)
        return;
    const std::string_view id = idValue->text;
    const bool job = c.jobContext == kJob;

    if (auto it = oneToOneTable().find(id); it != oneToOneTable().end()) {
        const OneToOne& row = it->second;
        if (!importedAtLevel(id, row.dest, c.jobContext))
            return;
        const char* key = job ? row.jobKey : row.pageKey;
        if (row.dest == Dest::Top && !job && !key)
            return;
        xmlNodePtr node = TPIFImportGetNode(c.start, row.path);
        if (!node)
            return;
        auto value = resolve(feature, node, row.map);
        if (!value)
            return;
        auto dest = destination(c, row.dest);
        if (!dest || !key)
            return;
        dest->set(key, value);
        afterOneToOne(id, c, dest, value);
        return;
    }
    // Media of the job or of an entry.
    if (id == "StockSize")
        return importStockSize(feature, c);
    if (id == "StockType")
        return importStockType(feature, c);
    if (id == "StockColor")
        return importStockColor(feature, c);
    if (id == "StockCoating" || id == "StockCoatingType")
        return importStockCoating(feature, c, id == "StockCoatingType");
    if (id == "StockPunch")
        return importStockPunch(feature, c);
    if (id.rfind("ImageShift", 0) == 0) {
        if (job || c.jobContext == kException)
            importImageShift(id, feature, c);
        return;
    }
    if (!job)
        return;

    if (id.rfind("Finishing", 0) == 0)
        return importFinishing(id, feature, c);
    if (id == "Resolution")
        return importResolution(feature, c);
    if (id == "Offset")
        return importOffset(feature, c);
    if (id == "PagesPerSubset")
        return importPagesPerSubset(feature, c);
    if (id == "TonerSaver")
        return importTonerSaver(feature, c);
    if (id == "HoldJob")
        return importHoldJob(feature, c);
    if (id == "PageExceptions")
        return importExceptions(feature, c);
    if (id == "PageInserts")
        return importInserts(feature, c);
    if (id == "CoverFront" || id == "CoverBack")
        return importCover(id, feature, c);
}

} // namespace talmo
