// The shipped device profile against the writer: every value element the writer can produce
// for an importable feature must be accepted by that feature's profile entry (a keyword whose
// "TPIFValue" is the text, a number within "Minimum".."Maximum", a name within "Length").
// The writer is driven through its ticket layer over the values the records and panels can
// hold, and through its element layer over every index its tables know.
#include "tpif-test-util.h"

#include "platform/plist.h"

#include <map>
#include <set>
#include <vector>

using namespace talmo;
using tpiftest::StringSink;

namespace {

pl::DictPtr loadProfileFeatures()
{
    pl::ParseResult r;
    auto top = pl::as<pl::Dictionary>(
        pl::readPlistFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist", &r));
    EXPECT_TRUE(top) << r.message;
    return top ? top->getDict("Features") : nullptr;
}

// Where each importable feature's values sit: the element name, qualified by its parent for
// the members of collections and sets.
const std::map<std::string, std::vector<std::string>> kElementFeatures = {
    {"job-name", {"JobName"}},
    {"requesting-user-name", {"SenderName"}},
    {"color-effects-type", {"OutputColor"}},
    {"sides", {"Duplex"}},
    {"output-bin", {"OutputDestination"}},
    {"media-size.x-dimension", {"StockSize"}},
    {"media-size.y-dimension", {"StockSize"}},
    {"media-col.media-type", {"StockType"}},
    {"media-col.media-order-count", {"StockType"}},
    {"media-col.media-recycled", {"StockType"}},
    {"media-col.media-pre-printed", {"StockType"}},
    {"media-col.media-weight-metric", {"StockWeight"}},
    {"media-col.media-color", {"StockColor"}},
    {"media-col.media-description", {"StockDescription"}},
    {"media-col.media-grain", {"StockGrain"}},
    {"media-col.media-tooth", {"StockFinish"}},
    {"media-col.media-front-coating", {"StockCoating", "StockCoatingType"}},
    {"media-col.media-back-coating", {"StockCoating", "StockCoatingType"}},
    {"media-col.media-hole-count", {"StockPunch"}},
    {"job-save-disposition.save-disposition", {"SaveJob"}},
    {"value.save-document-format", {"SaveJobFormat"}},
    {"value.save-location", {"SaveJobLocation"}},
    {"value.save-name", {"SaveJobName"}},
    {"job-hold-until", {"HoldJob"}},
    {"finishings.value",
     {"FinishingStaple", "FinishingFold", "FinishingPunchLocation", "FinishingPunchCount", "FinishingBind",
      "FinishingNone", "FinishingSBM"}},
    {"finishings-col.finishing-template", {"FinishingCustom"}},
    {"separator-sheets.separator-sheets-type", {"SlipSheets"}},
    {"printer-resolution.cross-feed", {}}, // checked as pairs below
    {"printer-resolution.feed-direction", {}},
    {"printer-resolution.units", {}},
    {"halftone-graphics", {"HalftoneScreen"}},
    {"halftone-images", {"HalftoneScreen"}},
    {"halftone-text", {"HalftoneScreen"}},
    {"adjust-bw-darkness-value", {"LightenDarken"}},
    {"toner-saver", {"TonerSaver"}},
    {"anti-aliasing", {"Antialiasing"}},
    {"job-offset.value", {"Offset"}},
    {"pages-per-subset.value", {"PagesPerSubset"}},
    {"page-rotation", {"Rotation"}},
    {"x-side1-image-shift", {"ImageShiftSide1X"}},
    {"y-side1-image-shift", {"ImageShiftSide1Y"}},
    {"x-side2-image-shift", {"ImageShiftSide2X"}},
    {"y-side2-image-shift", {"ImageShiftSide2Y"}},
    {"adjust-bw-darkness-mode", {"DravikEmulation"}},
    {"page-delivery", {"OutputOrder"}},
    {"opi-image-insertion", {"OPISubstitution"}},
    {"opi-image-pre-scan", {"OPIPrescan"}},
    {"job-sheet-message", {"BannerMessage"}},
    {"job-recipient-name", {"RecipientName"}},
    {"job-message-to-operator", {"JobStartMessage"}},
    {"job-accounting-data", {"AdditionalNotes"}},
    {"highlight-colorant", {"HighlightPrintingColor"}},
    {"highlight-map-color", {"HighlightMappingColor"}},
    {"highlight-map", {"HighlightMappingAlgorithm"}},
    {"highlight-colorant-mismatch", {"HighlightMismatchAction"}},
    {"trc.trc-name", {"ColorTRC"}},
    {"rendering-intent-graphics", {"ColorOutputGraphicRendering"}},
    {"rendering-intent-text", {"ColorOutputTextRendering"}},
    {"rendering-intent-images", {"ColorOutputImageRendering"}},
    {"color-destination-profile-front", {"ColorOutputProfile"}},
    {"color-destination-profile-back", {"ColorOutputProfile"}},
    {"adjust-lightness", {"ColorLightness"}},
    {"adjust-saturation", {"ColorSaturation"}},
    {"adjust-contrast", {"ColorContrast"}},
    {"adjust-cyan-red", {"ColorCastCyanRed"}},
    {"adjust-magenta-green", {"ColorCastMagentaGreen"}},
    {"adjust-yellow-blue", {"ColorCastYellowBlue"}},
    {"undefined-source-rgb-images", {"ColorRGBSourceProfileImages"}},
    {"undefined-source-rgb-text", {"ColorRGBSourceProfileTextAndGraphics"}},
    {"undefined-source-rgb-graphics", {"ColorRGBSourceProfileTextAndGraphics"}},
    {"undefined-source-cmyk-images", {"ColorCMYKSourceProfileImages"}},
    {"undefined-source-cmyk-text", {"ColorCMYKSourceProfileTextAndGraphics"}},
    {"undefined-source-cmyk-graphics", {"ColorCMYKSourceProfileTextAndGraphics"}},
    {"undefined-source-gray-images", {"ColorGraySourceProfileImages"}},
    {"undefined-source-gray-text", {"ColorGraySourceProfileTextAndGraphics"}},
    {"undefined-source-gray-graphics", {"ColorGraySourceProfileTextAndGraphics"}},
    {"trapping", {"ColorTrapping"}},
    {"trap-width-fast", {"ColorTrappingLength"}},
    {"trap-width-slow", {"ColorTrappingWidth"}},
    {"black-overprint", {"ColorBlackOverprint"}},
    {"pages.value.lower-bound", {"PageExceptions"}},
    {"pages.value.upper-bound", {"PageExceptions"}},
    {"insert-after-page-number", {"PageInserts"}},
    {"insert-count", {"PageInserts"}},
    {"value.form-save-name", {"FormCreateName"}},
    {"value.form-name", {"FormMergeName"}},
    {"value.form-cycle-start", {"FormMergeCycle"}},
    {"value.forms-x-image-shift", {"FormMergeShiftX"}},
    {"value.forms-y-image-shift", {"FormMergeShiftY"}},
    {"cover-front.cover-type", {"CoverFront"}},
    {"cover-back.cover-type", {"CoverBack"}},
};

// Elements the writer produces that no feature imports (and why): members of sets and
// collections that only frame other values, and attributes the dialog does not keep.
const std::set<std::string> kNotImported = {
    "copies",
    "sheet-collate",
    "orientation-requested",
    "document-format",
    "page-ranges.value.lower-bound",
    "page-ranges.value.upper-bound",
    "input-documents.value.lower-bound",
    "input-documents.value.upper-bound",
    "job-accounting-user-id",
    "job-account-id",
    "media",
    "media-col.media-key",
    "highlight-colorant-color",
    "color-srgb-col.color-srgb-red",
    "color-srgb-col.color-srgb-green",
    "color-srgb-col.color-srgb-blue",
    "color-hsv-col.color-hsv-hue",
    "color-hsv-col.color-hsv-saturation",
    "color-hsv-col.color-hsv-value",
    "form-save.form-save-disposition",
    "value.form-save-location",
    "value.form-save-format",
};

std::string nodeText(xmlNodePtr n)
{
    std::string out;
    for (xmlNodePtr c = n->children; c; c = c->next)
        if (c->type == XML_TEXT_NODE && c->content)
            out += reinterpret_cast<const char*>(c->content);
    return out;
}

std::string attr(xmlNodePtr n, const char* name)
{
    xmlChar* v = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
    std::string out = v ? reinterpret_cast<const char*>(v) : "";
    xmlFree(v);
    return out;
}

size_t utf16Length(const std::string& s)
{
    size_t n = 0;
    for (unsigned char c : s) {
        if ((c & 0xC0) != 0x80)
            ++n;
        if ((c & 0xF8) == 0xF0)
            ++n; // a character outside the basic plane takes two units
    }
    return n;
}

class ProfileConsistency : public ::testing::Test {
protected:
    void SetUp() override { features_ = loadProfileFeatures(); }

    // Why the profile refuses `text` of `syntax` for `featureId`, or "" when it accepts it.
    std::string refusal(const std::string& featureId, const std::string& syntax, const std::string& text)
    {
        auto feature = features_ ? features_->getDict(featureId) : nullptr;
        if (!feature)
            return "no feature " + featureId;
        auto props = feature->getDict("Properties");
        if (!props || props->getBool("TPIF") != true || props->getString("ID") != featureId)
            return featureId + " is not marked importable under its own ID";
        auto syntaxes = feature->getDict("Syntax");
        if (syntax == "keyword" || syntax == "enum" || syntax == "mimeMediaType") {
            auto keywords = syntaxes ? syntaxes->getDict("Keyword") : nullptr;
            if (keywords)
                for (const auto& [name, v] : *keywords) {
                    auto kp = pl::as<pl::Dictionary>(v) ? pl::as<pl::Dictionary>(v)->getDict("Properties") : nullptr;
                    if (kp && kp->getString("TPIFValue") == text)
                        return "";
                }
            return featureId + " has no keyword with TPIFValue \"" + text + "\"";
        }
        if (syntax == "integer") {
            auto number = syntaxes ? syntaxes->getDict("Number") : nullptr;
            if (!number)
                return featureId + " has no Number syntax";
            const long long v = std::stoll(text);
            if (v < number->getInt("Minimum").value_or(INT64_MAX) || v > number->getInt("Maximum").value_or(INT64_MIN))
                return featureId + " range does not hold " + text;
            return "";
        }
        if (syntax == "name" || syntax == "text" || syntax == "uri") {
            auto name = syntaxes ? syntaxes->getDict("Name") : nullptr;
            if (!name)
                return featureId + " has no Name syntax";
            if (static_cast<long long>(utf16Length(text)) > name->getInt("Length").value_or(0))
                return featureId + " Length is shorter than " + std::to_string(utf16Length(text));
            auto set = name->getString("CharacterSet").value_or("");
            if (set == "URI" && text.find_first_of(" \t\n") != std::string::npos)
                return featureId + " refuses a URI with blanks";
            return "";
        }
        return featureId + ": unexpected syntax \"" + syntax + "\"";
    }

    // Checks every value element of a written document (or fragment of job attributes).
    void checkDocument(const std::string& written, const std::string& what)
    {
        std::string doc = written;
        if (doc.rfind("<?xml", 0) != 0)
            doc = "<tpif><job-template-attributes>\n" + doc + "</job-template-attributes></tpif>";
        tpiftest::ParsedDoc parsed;
        tpiftest::parse(tpiftest::mendAccounting(doc), parsed);
        ASSERT_TRUE(parsed.doc) << what << "\n" << doc;
        walk(xmlDocGetRootElement(parsed.doc), what);
        ++documents_;
    }

    void walk(xmlNodePtr n, const std::string& what)
    {
        for (; n; n = n->next) {
            if (n->type != XML_ELEMENT_NODE)
                continue;
            const std::string syntax = attr(n, "syntax");
            const std::string name = reinterpret_cast<const char*>(n->name);
            const std::string parent =
                n->parent && n->parent->type == XML_ELEMENT_NODE ? reinterpret_cast<const char*>(n->parent->name) : "";
            const std::string grand =
                parent.empty() || !n->parent->parent || n->parent->parent->type != XML_ELEMENT_NODE
                    ? ""
                    : reinterpret_cast<const char*>(n->parent->parent->name);
            const bool leaf = syntax != "collection" && syntax != "1setOf" && syntax != "rangeOfInteger" &&
                              syntax != "resolution" && !syntax.empty();
            if (leaf) {
                const std::string text = nodeText(n);
                const std::vector<std::string> keys = {grand + "." + parent + "." + name, parent + "." + name, name};
                bool known = false;
                for (const auto& key : keys) {
                    if (kNotImported.count(key)) {
                        known = true;
                        break;
                    }
                    auto it = kElementFeatures.find(key);
                    if (it == kElementFeatures.end())
                        continue;
                    known = true;
                    if (it->second.empty())
                        break;
                    std::string why;
                    bool accepted = false;
                    for (const auto& f : it->second) {
                        why = refusal(f, syntax, text);
                        if (why.empty()) {
                            accepted = true;
                            break;
                        }
                    }
                    EXPECT_TRUE(accepted)
                        << what << ": <" << key << " syntax=\"" << syntax << "\">" << text << ": " << why;
                    ++checked_;
                    break;
                }
                EXPECT_TRUE(known) << what << ": element " << parent << "." << name
                                   << " is neither imported nor listed as not imported";
            }
            if (name == "printer-resolution")
                checkResolution(n, what);
            walk(n->children, what);
        }
    }

    void checkResolution(xmlNodePtr n, const std::string& what)
    {
        std::string cross, feed;
        for (xmlNodePtr c = n->children; c; c = c->next) {
            if (c->type != XML_ELEMENT_NODE)
                continue;
            if (!xmlStrcmp(c->name, BAD_CAST "cross-feed"))
                cross = nodeText(c);
            if (!xmlStrcmp(c->name, BAD_CAST "feed-direction"))
                feed = nodeText(c);
        }
        EXPECT_EQ(refusal("Resolution", "keyword", cross + "x" + feed), "") << what;
        ++checked_;
    }

    template <class F> void sweep(const std::string& what, F write)
    {
        StringSink s;
        {
            tpiftest::DiagCapture quiet;
            write(s.get());
        }
        if (!s.text.empty())
            checkDocument(s.text, what);
    }

    pl::DictPtr features_;
    int documents_ = 0;
    int checked_ = 0;
};

TEST_F(ProfileConsistency, EveryFeatureOfTheImportTableIsInTheProfile)
{
    ASSERT_TRUE(features_);
    std::set<std::string> needed = {"JobName", "SenderName"};
    for (const auto& [element, ids] : kElementFeatures)
        needed.insert(ids.begin(), ids.end());
    needed.insert({"Resolution", "FinishingCustom", "StockSize"});
    for (const auto& id : needed) {
        auto f = features_->getDict(id);
        ASSERT_TRUE(f) << id;
        EXPECT_EQ(f->getDict("Properties")->getString("ID"), id);
        EXPECT_EQ(f->getDict("Properties")->getBool("TPIF"), true) << id;
        EXPECT_TRUE(f->getDict("Syntax") && f->getDict("Syntax")->size() > 0) << id;
    }
}

TEST_F(ProfileConsistency, EverySyntaxIsWellFormed)
{
    ASSERT_TRUE(features_);
    for (const auto& [id, v] : *features_) {
        auto f = pl::as<pl::Dictionary>(v);
        ASSERT_TRUE(f) << id;
        auto syntax = f->getDict("Syntax");
        ASSERT_TRUE(syntax) << id;
        int defaults = 0;
        if (auto keywords = syntax->getDict("Keyword"))
            for (const auto& [name, kv] : *keywords) {
                auto k = pl::as<pl::Dictionary>(kv);
                ASSERT_TRUE(k && k->getDict("Properties")) << id << " " << name;
                defaults += k->getBool("Default") == true;
            }
        EXPECT_LE(defaults, 1) << id;
        if (auto number = syntax->getDict("Number")) {
            ASSERT_TRUE(number->getInt("Minimum") && number->getInt("Maximum")) << id;
            EXPECT_LE(*number->getInt("Minimum"), *number->getInt("Maximum")) << id;
            if (auto def = number->getInt("Default")) {
                EXPECT_TRUE(*def >= *number->getInt("Minimum") && *def <= *number->getInt("Maximum")) << id;
            }
        }
        if (auto name = syntax->getDict("Name")) {
            EXPECT_GT(name->getInt("Length").value_or(0), 0) << id;
            auto set = name->getString("CharacterSet").value_or("");
            EXPECT_TRUE(set == "UTF-8" || set == "ASCII" || set == "URI") << id << " " << set;
        }
    }
}

TEST_F(ProfileConsistency, ElementLayerValuesAreAccepted)
{
    ASSERT_TRUE(features_);
    for (int command = 0; command <= 31; ++command)
        for (int32_t value = -1; value <= 6; ++value) {
            if (command == 0 || command == 3 || command == 5 || command == 8 || (command >= 16 && command <= 21) ||
                command == 23 || command == 24)
                continue; // integers: swept over the records' ranges below
            sweep("command " + std::to_string(command) + " value " + std::to_string(value),
                  [&](const writeData* s) { WriteTPifCommands(s, command, value); });
        }
    for (int32_t value : {-5, 0, 5})
        sweep("lighten/darken", [&](const writeData* s) { WriteTPifCommands(s, 5, value); });
    for (int32_t value : {-100, 0, 100})
        for (int command = 16; command <= 21; ++command)
            sweep("colour adjustment", [&](const writeData* s) { WriteTPifCommands(s, command, value); });
    for (int32_t value : {0, 20})
        for (int command : {23, 24})
            sweep("trap width", [&](const writeData* s) { WriteTPifCommands(s, command, value); });
    for (int32_t index = 0; index <= 60; ++index)
        sweep("halftone " + std::to_string(index), [&](const writeData* s) { WriteTPifHalfTone(s, index); });
    // Record values outside the element layer's lists deliberately repeat the previous line,
    // which leaves the document unreadable; those are refused as a whole on import.
    for (int32_t staple : {0, 1, 2, 3, 4, 5, 6, 7, 16, 17, 18, 19, 20}) {
        FinishingData f;
        f.staple = staple;
        sweep("staple record " + std::to_string(staple), [&](const writeData* s) { WriteTPifFinishing(s, f); });
    }
    for (int32_t fold : {9, 10, 11, 12, 13, 14, 15, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30}) {
        FinishingData f;
        f.fold = fold;
        sweep("fold record " + std::to_string(fold), [&](const writeData* s) { WriteTPifFinishing(s, f); });
    }
    for (int32_t punch : {31, 32, 33, 34})
        for (int32_t count : {35, 36, 37}) {
            FinishingData f;
            f.holePunch = punch;
            f.holeCount = count;
            sweep("punch record", [&](const writeData* s) { WriteTPifFinishing(s, f); });
        }
    for (int32_t i = -1; i <= 14; ++i) {
        MediaData m;
        m.type = i;
        m.color = i;
        m.customTypeName = "My Type";
        m.customColorName = "My Colour";
        m.orderCount = 5;
        m.prePrinted = i >= 0 && i <= 2 ? i : 0;
        m.tooth = i;
        m.grain = i;
        m.coatedSides = i;
        m.coatingType = i;
        m.holeCount = 3;
        sweep("media indexes " + std::to_string(i), [&](const writeData* s) { WriteTPifMedia(s, m); });
    }
    for (int32_t index = -1; index <= 16; ++index) {
        PageData p;
        p.rgbImages = p.rgbTextGraphics = p.cmykImages = p.cmykTextGraphics = p.destination = index;
        p.renderImages = p.renderText = p.renderGraphics = index;
        p.trapping = p.blackOverprint = p.antialiasing = p.colorEffects = index;
        p.halftone = index;
        sweep("colour indexes " + std::to_string(index), [&](const writeData* s) { WriteTPifFullColor(s, p); });
    }
    for (int32_t index = -1; index <= 13; ++index) {
        HighlightColorData h;
        h.colorant = h.mapColor = h.map = h.mismatch = index;
        sweep("highlight " + std::to_string(index), [&](const writeData* s) { WriteTPifHLC(s, h); });
    }
    for (int32_t disposition = 0; disposition <= 4; ++disposition)
        for (int32_t format = -1; format <= 5; ++format) {
            JobData j;
            j.disposition = disposition;
            j.saveFormat = format;
            j.saveName = "Quarterly &amp; more";
            j.saveLocation = "file:///job-repository/";
            sweep("job type", [&](const writeData* s) { WriteTPifJobTypes(s, j); });
        }
    for (int32_t type = -1; type <= 5; ++type)
        sweep("cover type", [&](const writeData* s) { WriteTPifCovers(s, type & 1, type, MediaData{}); });
    EXPECT_GT(checked_, 500);
}

pl::DictPtr ticketWith(std::initializer_list<std::pair<const char*, pl::ValuePtr>> items)
{
    auto t = pl::makeDict();
    auto options = pl::makeDict();
    options->setBool("TPIFOptionAll", true);
    t->set("com.talmo.print.TPIFOptions", options);
    for (const auto& [k, v] : items)
        t->set(k, v);
    return t;
}

pl::ValuePtr num(int64_t v) { return pl::makeInt(v); }

TEST_F(ProfileConsistency, TicketLayerValuesAreAccepted)
{
    ASSERT_TRUE(features_);
    const char* simpleKeys[] = {"com.talmo.print.FinishingDuplex",
                                "com.talmo.print.FinishingOutputDestination",
                                "com.talmo.print.OPISubsitution",
                                "com.talmo.print.OPIPrescan",
                                "com.talmo.print.Antialiasing",
                                "com.talmo.print.HalftoneScreen",
                                "com.talmo.print.OutputOrder",
                                "com.talmo.print.DravikEmulation",
                                "com.talmo.print.AdvancedRotateImage180",
                                "com.talmo.print.FinishingOutputColor",
                                "com.talmo.print.Resolution",
                                "com.talmo.print.FinishingOffset",
                                "com.talmo.print.FinishingSlipSheet",
                                "com.talmo.print.TonerSaver"};
    for (const char* k : simpleKeys)
        for (int64_t v = -1; v <= 60; ++v)
            sweep(std::string(k) + " = " + std::to_string(v), [&](const writeData* s) {
                WriteTPIFToSink(s, ticketWith({{k, num(v)}}));
            });

    // Finishing: every choice with every detail value the panels store.
    for (int64_t choice = 0; choice <= 55; ++choice)
        for (int64_t detail = 0; detail <= 60; ++detail) {
            if (detail == 49)
                continue; // hole value 49 repeats the previous line (see the record sweep)
            sweep("finishing " + std::to_string(choice) + "/" + std::to_string(detail), [&](const writeData* s) {
                auto t = ticketWith({{"com.talmo.print.FinishingOptions", num(choice)}});
                for (const char* k : {"com.talmo.print.FinishingZFoldValue", "com.talmo.print.FinishingStaple1Value",
                                      "com.talmo.print.FinishingHolePunchValue", "com.talmo.print.FinishingFoldValue",
                                      "com.talmo.print.FinishingBindValue", "com.talmo.print.BookletFoldStaple",
                                      "com.talmo.print.FinishingHolePunchOptions"})
                    t->set(k, num(detail));
                WriteTPIFFinishing(s, t);
            });
        }

    // Stocks: every type and colour code, the finishes, grains, coatings and hole counts.
    for (int64_t code = 0; code <= 40; ++code) {
        auto stock = pl::makeDict();
        stock->setInt("Size", code <= 83 ? code : 75);
        stock->setInt("Type", code);
        stock->setInt("Color", code);
        stock->setString("CustomType", "Heavy stock");
        stock->setString("CustomColor", "Sky");
        stock->setInt("Modulus", 5);
        stock->setInt("Weight", 1 + code * 40);
        stock->setInt("Punched", code % 3);
        stock->setInt("Finish", code % 5);
        stock->setInt("kGrain", code % 4);
        stock->setInt("SidesCoated", code % 6);
        stock->setInt("kCoatingType", code % 7);
        stock->setString("Description", "Desc <" + std::to_string(code) + ">");
        sweep("stock " + std::to_string(code), [&](const writeData* s) {
            WriteTPIFToSink(s, ticketWith({{"com.talmo.print.JobLevelStock", stock}}));
        });
    }
    auto custom = pl::makeDict();
    custom->setInt("Size", 75);
    custom->setInt("Width", 1);
    custom->setInt("Length", 1000000);
    sweep("custom size", [&](const writeData* s) {
        WriteTPIFToSink(s, ticketWith({{"com.talmo.print.JobLevelStock", custom}}));
    });

    // Job types with their formats and names; image shift and forms at the ends of their ranges.
    for (int64_t type = 0; type <= 10; ++type)
        for (int64_t format = 0; format <= 6; ++format) {
            auto job = pl::makeDict();
            job->setInt("JobType", type);
            job->setInt("MediaType", format);
            job->setInt("SaveDisposition", 2);
            job->setString("SavedJobName", std::string(900, 'n'));
            sweep("job type", [&](const writeData* s) {
                WriteTPIFToSink(s, ticketWith({{"com.talmo.print.JobType", job}}));
            });
        }
    for (bool inches : {true, false})
        for (int sign : {-1, 1}) {
            auto shift = pl::makeDict();
            shift->setInt("Inches", inches ? 1 : 0);
            shift->setInt("X1", sign * (inches ? 1921 : 4880));
            shift->setInt("X2", sign * (inches ? 1921 : 4880));
            shift->setInt("Y1", sign * (inches ? 1299 : 3300));
            shift->setInt("Y2", sign * (inches ? 1299 : 3300));
            auto forms = pl::deepCopy(shift);
            auto f = pl::as<pl::Dictionary>(forms);
            f->setInt("UseExistingForm", 2);
            f->setString("MergeWithString", std::string(200, 'f'));
            f->setInt("CyclePages", 999999);
            sweep("image shift and forms", [&](const writeData* s) {
                WriteTPIFToSink(s, ticketWith({{"com.talmo.print.ImageShiftOptionsJob", shift},
                                               {"com.talmo.print.BackgroundFormsOptions", forms}}));
            });
        }
    // Long user texts up to what a line can hold, in a script outside the basic plane.
    std::string longText;
    while (longText.size() < 1100)
        longText += "\xF0\x9F\x96\xA8 & <x> ";
    sweep("long texts", [&](const writeData* s) {
        WriteTPIFToSink(s, ticketWith({{"com.talmo.print.JobNotesJobName", pl::makeString(longText)},
                                       {"com.talmo.print.JobNotesSenderName", pl::makeString(longText)},
                                       {"com.talmo.print.JobNotesMessage", pl::makeString(longText)},
                                       {"com.talmo.print.JobNotesRecipient", pl::makeString(longText)},
                                       {"com.talmo.print.JobNotesSheetMessage", pl::makeString(longText)},
                                       {"com.talmo.print.JobNotesAdditionalInfo", pl::makeString(longText)},
                                       {"com.talmo.print.FinishingOptions", num(22)},
                                       {"com.talmo.print.FinishingCustom", pl::makeString(longText)}}));
    });
    // Special pages: covers of every sides value, inserts and exceptions at the page cap.
    auto cover = pl::makeDict();
    cover->setInt("SidesImaged", 4);
    cover->set("Stock", pl::makeDict());
    auto insert = pl::makeDict();
    insert->setInt("StartPage", 100000);
    insert->setInt("Quantity", 100000);
    auto exception = pl::makeDict();
    exception->setInt("StartPage", 1);
    exception->setInt("EndPage", 100000);
    exception->setInt("SidesImaged", 3);
    exception->setInt("LightenDarken", -5);
    exception->setInt("HalftoneScreen", 32);
    auto inserts = pl::makeArray();
    inserts->append(insert);
    auto exceptions = pl::makeArray();
    exceptions->append(exception);
    sweep("special pages", [&](const writeData* s) {
        WriteTPIFToSink(s, ticketWith({{"com.talmo.print.SpecialPages.FrontCover", cover},
                                       {"com.talmo.print.SpecialPages.BackCover", cover},
                                       {"com.talmo.print.SpecialPages.InsertList", inserts},
                                       {"com.talmo.print.SpecialPages.ExceptionList", exceptions}}));
    });
    EXPECT_GT(documents_, 1000);
}

} // namespace
