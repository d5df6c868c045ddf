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

// Element -> features of which one must accept its value; an empty list for the resolution
// members (checked as a pair) and for the elements no feature imports.
struct ElementTable {
    std::map<std::string, std::vector<std::string>> features;
    std::set<std::string> notImported;
};

ElementTable loadElementTable()
{
    ElementTable t;
    std::istringstream in(tpiftest::readFile(tpiftest::dataPath("profile-elements.txt")));
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream words(line);
        std::string element, feature;
        words >> element;
        auto& ids = t.features[element];
        while (words >> feature) {
            if (feature == "-")
                t.notImported.insert(element);
            else if (feature != "pair")
                ids.push_back(feature);
        }
    }
    return t;
}

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
    void SetUp() override
    {
        features_ = loadProfileFeatures();
        table_ = loadElementTable();
        ASSERT_GT(table_.features.size(), 100u);
    }

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
                    auto it = table_.features.find(key);
                    if (it == table_.features.end())
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
    ElementTable table_;
    int documents_ = 0;
    int checked_ = 0;
};

TEST_F(ProfileConsistency, EveryFeatureOfTheElementTableIsImportable)
{
    ASSERT_TRUE(features_);
    std::set<std::string> needed = {"JobName", "SenderName", "Resolution", "FinishingCustom", "StockSize"};
    for (const auto& [element, ids] : table_.features)
        needed.insert(ids.begin(), ids.end());
    for (const auto& id : needed) {
        auto f = features_->getDict(id);
        ASSERT_TRUE(f && f->getDict("Properties")) << id;
        EXPECT_EQ(f->getDict("Properties")->getString("ID"), id);
        EXPECT_EQ(f->getDict("Properties")->getBool("TPIF"), true) << id;
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
    // Keyword commands over their indexes; integer commands over the ranges the records hold.
    const std::set<int> integers = {0, 3, 5, 8, 16, 17, 18, 19, 20, 21, 23, 24};
    for (int command = 0; command <= 31; ++command)
        for (int32_t value = -1; value <= 6; ++value)
            if (!integers.count(command))
                sweep("command " + std::to_string(command) + " value " + std::to_string(value),
                      [&](const writeData* s) { WriteTPifCommands(s, command, value); });
    const std::vector<std::pair<std::vector<int>, std::vector<int32_t>>> ranges = {
        {{5}, {-5, 0, 5}}, {{16, 17, 18, 19, 20, 21}, {-100, 0, 100}}, {{23, 24}, {0, 20}}};
    for (const auto& [commands, values] : ranges)
        for (int command : commands)
            for (int32_t value : values)
                sweep("integer command", [&](const writeData* s) { WriteTPifCommands(s, command, value); });
    for (int32_t index = 0; index <= 60; ++index)
        sweep("halftone " + std::to_string(index), [&](const writeData* s) { WriteTPifHalfTone(s, index); });
    // Record values outside the finishing lists deliberately repeat the previous line, which
    // leaves the document unreadable; those are refused as a whole on import.
    for (int32_t v : {0,  1,  2,  3,  4,  5,  6,  7,  16, 17, 18, 19, 20, 9,  10,
                      11, 12, 13, 14, 15, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30})
        for (int32_t count : {35, 36, 37}) {
            FinishingData f;
            (v <= 7 || (v >= 16 && v <= 20) ? f.staple : f.fold) = v;
            f.holePunch = 31 + (v + count) % 4, f.holeCount = count;
            sweep("finishing record " + std::to_string(v), [&](const writeData* s) { WriteTPifFinishing(s, f); });
        }
    for (int32_t i = -1; i <= 16; ++i) {
        MediaData m;
        m.type = m.color = m.tooth = m.grain = m.coatedSides = m.coatingType = i;
        m.customTypeName = "My Type", m.customColorName = "My Colour", m.orderCount = 5, m.holeCount = 3;
        m.prePrinted = i >= 0 && i <= 2 ? i : 0;
        sweep("media indexes " + std::to_string(i), [&](const writeData* s) { WriteTPifMedia(s, m); });
        PageData p;
        p.rgbImages = p.rgbTextGraphics = p.cmykImages = p.cmykTextGraphics = p.destination = i;
        p.renderImages = p.renderText = p.renderGraphics = p.halftone = i;
        p.trapping = p.blackOverprint = p.antialiasing = p.colorEffects = i;
        sweep("colour indexes " + std::to_string(i), [&](const writeData* s) { WriteTPifFullColor(s, p); });
        HighlightColorData h;
        h.colorant = h.mapColor = h.map = h.mismatch = i;
        sweep("highlight " + std::to_string(i), [&](const writeData* s) { WriteTPifHLC(s, h); });
        JobData j;
        j.disposition = i / 3, j.saveFormat = i % 6, j.saveName = "Q &amp; more", j.saveLocation = "file:///jobs/";
        sweep("job type", [&](const writeData* s) { WriteTPifJobTypes(s, j); });
        sweep("cover type", [&](const writeData* s) { WriteTPifCovers(s, i & 1, i % 7, MediaData{}); });
    }
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
    auto write = [&](const std::string& what, const pl::DictPtr& ticket) {
        sweep(what, [&](const writeData* s) { WriteTPIFToSink(s, ticket); });
    };
    for (const char* k : {"FinishingDuplex", "FinishingOutputDestination", "OPISubsitution", "OPIPrescan",
                          "Antialiasing", "HalftoneScreen", "OutputOrder", "DravikEmulation", "AdvancedRotateImage180",
                          "FinishingOutputColor", "Resolution", "FinishingOffset", "FinishingSlipSheet", "TonerSaver"})
        for (int64_t v = -1; v <= 60; ++v)
            write(std::string(k) + " = " + std::to_string(v),
                  ticketWith({{(std::string("com.talmo.print.") + k).c_str(), num(v)}}));

    // Finishing: every choice with every detail value the panels store; hole value 49 repeats
    // the previous line (see the record sweep).
    for (int64_t choice = 0; choice <= 55; ++choice)
        for (int64_t detail = 0; detail <= 60; ++detail)
            if (detail != 49)
                sweep("finishing " + std::to_string(choice) + "/" + std::to_string(detail), [&](const writeData* s) {
                    auto t = ticketWith({{"com.talmo.print.FinishingOptions", num(choice)}});
                    for (const char* k :
                         {"FinishingZFoldValue", "FinishingStaple1Value", "FinishingHolePunchValue",
                          "FinishingFoldValue", "FinishingBindValue", "BookletFoldStaple", "FinishingHolePunchOptions"})
                        t->set(std::string("com.talmo.print.") + k, num(detail));
                    WriteTPIFFinishing(s, t);
                });

    // Stocks: every type and colour code, finish, grain, coating and hole count.
    for (int64_t code = 0; code <= 40; ++code) {
        auto stock = pl::makeDict();
        for (const auto& [k, v] : std::initializer_list<std::pair<const char*, int64_t>>{{"Size", code},
                                                                                         {"Type", code},
                                                                                         {"Color", code},
                                                                                         {"Modulus", 5},
                                                                                         {"Weight", 1 + code * 40},
                                                                                         {"Punched", code % 3},
                                                                                         {"Finish", code % 5},
                                                                                         {"kGrain", code % 4},
                                                                                         {"SidesCoated", code % 6},
                                                                                         {"kCoatingType", code % 7}})
            stock->setInt(k, v);
        stock->setString("CustomType", "Heavy stock");
        stock->setString("CustomColor", "Sky");
        stock->setString("Description", "Desc <" + std::to_string(code) + ">");
        write("stock " + std::to_string(code), ticketWith({{"com.talmo.print.JobLevelStock", stock}}));
    }
    auto custom = pl::makeDict();
    custom->setInt("Size", 75);
    custom->setInt("Width", 1);
    custom->setInt("Length", 1000000);
    write("custom size", ticketWith({{"com.talmo.print.JobLevelStock", custom}}));

    // Job types with their formats and names; image shift and forms at the ends of their ranges.
    for (int64_t type = 0; type <= 10; ++type)
        for (int64_t format = 0; format <= 6; ++format) {
            auto job = pl::makeDict();
            job->setInt("JobType", type);
            job->setInt("MediaType", format);
            job->setInt("SaveDisposition", 2);
            job->setString("SavedJobName", std::string(900, 'n'));
            write("job type", ticketWith({{"com.talmo.print.JobType", job}}));
        }
    for (bool inches : {true, false})
        for (int sign : {-1, 1}) {
            auto shift = pl::makeDict();
            shift->setInt("Inches", inches ? 1 : 0);
            for (const char* k : {"X1", "X2"})
                shift->setInt(k, sign * (inches ? 1921 : 4880));
            for (const char* k : {"Y1", "Y2"})
                shift->setInt(k, sign * (inches ? 1299 : 3300));
            auto forms = pl::as<pl::Dictionary>(pl::deepCopy(shift));
            forms->setInt("UseExistingForm", 2);
            forms->setString("MergeWithString", std::string(200, 'f'));
            forms->setInt("CyclePages", 999999);
            write("image shift and forms", ticketWith({{"com.talmo.print.ImageShiftOptionsJob", shift},
                                                       {"com.talmo.print.BackgroundFormsOptions", forms}}));
        }
    // Long user texts up to what a line can hold, in a script outside the basic plane.
    std::string longText;
    while (longText.size() < 1100)
        longText += "\xF0\x9F\x96\xA8 & <x> ";
    auto texts = ticketWith({{"com.talmo.print.FinishingOptions", num(22)}});
    for (const char* k : {"JobNotesJobName", "JobNotesSenderName", "JobNotesMessage", "JobNotesRecipient",
                          "JobNotesSheetMessage", "JobNotesAdditionalInfo", "FinishingCustom"})
        texts->setString(std::string("com.talmo.print.") + k, longText);
    write("long texts", texts);
    // Special pages: covers, inserts and exceptions at the page cap.
    pl::ParseResult r;
    auto pages = pl::as<pl::Dictionary>(pl::readPlist(R"(<plist version="1.0"><dict>
<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>
<key>com.talmo.print.SpecialPages.FrontCover</key><dict><key>SidesImaged</key><integer>4</integer><key>Stock</key><dict/></dict>
<key>com.talmo.print.SpecialPages.BackCover</key><dict><key>SidesImaged</key><integer>2</integer><key>Stock</key><dict/></dict>
<key>com.talmo.print.SpecialPages.InsertList</key><array><dict><key>StartPage</key><integer>100000</integer>
  <key>Quantity</key><integer>100000</integer></dict></array>
<key>com.talmo.print.SpecialPages.ExceptionList</key><array><dict><key>StartPage</key><integer>1</integer>
  <key>EndPage</key><integer>100000</integer><key>SidesImaged</key><integer>3</integer>
  <key>LightenDarken</key><integer>-5</integer><key>HalftoneScreen</key><integer>32</integer></dict></array>
</dict></plist>)",
                                                      &r));
    ASSERT_TRUE(pages) << r.message;
    write("special pages", pages);
    EXPECT_GT(documents_, 1000);
}

} // namespace
