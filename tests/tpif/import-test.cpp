// TPIF import: round trips through the writer, the rules of the feature table, the node search,
// several files into one dictionary and the merge into the session's ticket.
#include "tpif-test-util.h"

#include "device/device.h"
#include "platform/plist.h"
#include "platform/session.h"
#include "settings/ticket-access.h"

#include <filesystem>
#include <map>
#include <set>

using namespace talmo;
using tpiftest::StringSink;

namespace {

class ProfileEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        TDPFinalize();
        ASSERT_TRUE(TDPInitializeFromFile(std::string(TALMO_SOURCE_DIR) + "/resources/Device Profile.plist"));
    }
};
const auto* const kProfile = ::testing::AddGlobalTestEnvironment(new ProfileEnvironment);

// Wide media limits for the round trips; the clamping has its own test.
class WideMediaLimits {
public:
    WideMediaLimits()
    {
        TPIFSetMediaLimitsProvider([] { return TPIFMediaLimits{1, 1, 100000, 100000}; });
    }
    ~WideMediaLimits() { TPIFSetMediaLimitsProvider(nullptr); }
};

pl::DictPtr plistDict(const std::string& body)
{
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body + "</dict></plist>";
    pl::ParseResult r;
    auto d = pl::as<pl::Dictionary>(pl::readPlist(xml, &r));
    EXPECT_TRUE(d) << r.message;
    return d;
}

std::string exportText(const pl::DictPtr& ticket)
{
    StringSink s;
    tpiftest::DiagCapture quiet;
    WriteTPIFToSink(s.get(), ticket);
    return s.text;
}

pl::DictPtr importText(const std::string& text, OSStatus expected = noErr)
{
    auto d = pl::makeDict();
    std::string why;
    TPIFDocument doc = TPIFReadDocumentFromMemory(text.data(), text.size(), &why);
    if (!doc) {
        EXPECT_EQ(expected, kImportFileFailed) << why;
        return d;
    }
    EXPECT_EQ(TPIFImportDocument(doc.get(), d), expected);
    return d;
}

// A document around job template attribute lines.
std::string jobDoc(const std::string& attributes, const std::string& operation = "")
{
    std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tpif version=\"1.0\">\n";
    if (!operation.empty())
        doc += "\t<tpif-operation-attributes>\n" + operation + "\t</tpif-operation-attributes>\n";
    return doc + "\t<job-template-attributes>\n" + attributes + "\t</job-template-attributes>\n</tpif>";
}

// Every path at which two values differ, for readable failures.
void differences(const pl::ValuePtr& a, const pl::ValuePtr& b, const std::string& path, std::vector<std::string>& out)
{
    auto da = pl::as<pl::Dictionary>(a), db = pl::as<pl::Dictionary>(b);
    if (da && db) {
        std::set<std::string> keys;
        for (const auto& [k, v] : *da)
            keys.insert(k);
        for (const auto& [k, v] : *db)
            keys.insert(k);
        for (const auto& k : keys)
            differences(da->get(k), db->get(k), path + "/" + k, out);
        return;
    }
    auto aa = pl::as<pl::Array>(a), ab = pl::as<pl::Array>(b);
    if (aa && ab && aa->size() == ab->size()) {
        for (size_t i = 0; i < aa->size(); ++i)
            differences(aa->at(i), ab->at(i), path + "[" + std::to_string(i) + "]", out);
        return;
    }
    if (!pl::equal(a, b))
        out.push_back(path + (!a ? ": missing in the import" : !b ? ": not expected" : ": differs"));
}

#define EXPECT_SAME_DICT(actual, expected)                                                                             \
    do {                                                                                                               \
        std::vector<std::string> diffs;                                                                                \
        differences((actual), (expected), "", diffs);                                                                  \
        std::string all;                                                                                               \
        for (const auto& d : diffs)                                                                                    \
            all += d + "\n";                                                                                           \
        EXPECT_TRUE(diffs.empty()) << all << pl::writePlist(actual);                                                   \
    } while (0)

// ---- round trips ----

// Export, import, export again: the second document must equal the first but for the elements
// no feature imports (listed per example, with the reason).
struct ExampleCase {
    const char* example;
    std::vector<std::string> notImported;
};

const ExampleCase kExamples[] = {
    // A custom highlight colour has no profile feature.
    {"tpif-finishing-colour", {"highlight-map-color", "color-srgb", "</color-srgb-col>"}},
    // "none" has no row in the job type map; pages to print have no feature.
    {"tpif-plain-job",
     {"job-save-disposition", "save-disposition", "page-ranges", "<value syntax=\"rangeOfInteger\">", "lower-bound",
      "upper-bound", "</value>"}},
    // The post-fuser inserter source and accounting have no features.
    {"tpif-saved-job-form", {"<media syntax=\"keyword\">", "job-accounting-user-id", "job-account-id"}},
    // A named paper (media-key) and the inserter source have no features: the covers come back
    // with an empty media collection.
    {"tpif-special-pages", {"media-key", "<media syntax=\"keyword\">", "media-col"}},
};

std::multiset<std::string> lines(const std::string& text)
{
    std::multiset<std::string> out;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        out.insert(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    return out;
}

TEST(TpifImport, ExamplesSurviveExportImportExport)
{
    WideMediaLimits wide;
    for (const auto& c : kExamples) {
        SCOPED_TRACE(c.example);
        pl::ParseResult r;
        auto ticket = pl::as<pl::Dictionary>(
            pl::readPlistFile(std::string(TALMO_SOURCE_DIR) + "/examples/" + c.example + ".plist", &r));
        ASSERT_TRUE(ticket) << r.message;
        const std::string first = exportText(ticket);
        auto imported = importText(first);
        imported->set("com.talmo.print.TPIFOptions", ticket->get("com.talmo.print.TPIFOptions"));
        const std::string second = exportText(imported);

        auto a = lines(first), b = lines(second);
        std::vector<std::string> lost, gained;
        std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(lost));
        std::set_difference(b.begin(), b.end(), a.begin(), a.end(), std::back_inserter(gained));
        auto listed = [&](const std::string& line) {
            for (const auto& n : c.notImported)
                if (line.find(n) != std::string::npos)
                    return true;
            return false;
        };
        for (const auto& l : lost)
            EXPECT_TRUE(listed(l)) << "lost on import: " << l;
        for (const auto& l : gained)
            EXPECT_TRUE(listed(l)) << "appeared on import: " << l;
    }
}

TEST(TpifImport, EveryImportableFeatureRoundTrips)
{
    WideMediaLimits wide;
    pl::ParseResult r;
    auto ticket = pl::as<pl::Dictionary>(pl::readPlistFile(tpiftest::dataPath("import-everything.plist"), &r));
    ASSERT_TRUE(ticket) << r.message;
    auto imported = importText(exportText(ticket));
    auto expected = pl::as<pl::Dictionary>(pl::deepCopy(ticket));
    expected->set("com.talmo.print.TPIFOptions", nullptr);
    EXPECT_SAME_DICT(imported, expected);
}

TEST(TpifImport, FormSaveHeldJobAndCustomFinishingRoundTrip)
{
    auto ticket = plistDict(R"(
<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>
<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>2</integer></dict>
<key>com.talmo.print.BackgroundFormsOptions</key><dict><key>NewFormString</key><string>New form</string></dict>
<key>com.talmo.print.FinishingOptions</key><integer>22</integer>
<key>com.talmo.print.FinishingCustom</key><string>Template &amp; 2</string>)");
    auto imported = importText(exportText(ticket));
    // The writer always states the duplex; one-sided imports as simplex (1).
    auto expected = plistDict(R"(
<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>2</integer></dict>
<key>com.talmo.print.BackgroundFormsOptions</key><dict><key>NewFormString</key><string>New form</string></dict>
<key>com.talmo.print.FinishingOptions</key><integer>22</integer>
<key>com.talmo.print.FinishingCustom</key><string>Template &amp; 2</string>
<key>com.talmo.print.FinishingDuplex</key><integer>1</integer>
<key>com.talmo.print.JobNotesJobName</key><string></string>
<key>com.talmo.print.JobNotesSenderName</key><string></string>)");
    EXPECT_SAME_DICT(imported, expected);
}

// Finishing choices written by the writer come back through the detail keys.
struct FinishingCase {
    int32_t choice;
    std::vector<std::pair<const char*, int32_t>> details;
};

TEST(TpifImport, FinishingChoiceIsRecomputedFromTheDetails)
{
    const FinishingCase cases[] = {
        {4, {{"com.talmo.print.FinishingStaple1Value", 5}}},
        {4, {{"com.talmo.print.FinishingStaple1Value", 8}}},
        {9, {{"com.talmo.print.FinishingStaple2Value", 13}}},
        {25, {{"com.talmo.print.FinishingStapleCenterValue", 27}}},
        {14, {{"com.talmo.print.FinishingBindValue", 16}}},
        {30, {{"com.talmo.print.FinishingHolePunchValue", 35}, {"com.talmo.print.FinishingHolePunchOptions", 5}}},
        {36, {{"com.talmo.print.FinishingZFoldValue", 39}}},
        {40, {{"com.talmo.print.FinishingFoldValue", 41}}},
        {40, {{"com.talmo.print.FinishingFoldValue", 48}}},
        {49,
         {{"com.talmo.print.FinishingStaple1Value", 5},
          {"com.talmo.print.FinishingHolePunchValue", 32},
          {"com.talmo.print.FinishingHolePunchOptions", 4}}},
        {50,
         {{"com.talmo.print.FinishingStaple2Value", 10},
          {"com.talmo.print.FinishingHolePunchValue", 34},
          {"com.talmo.print.FinishingHolePunchOptions", 3},
          {"com.talmo.print.FinishingZFoldValue", 38}}},
        {51, {{"com.talmo.print.FinishingStapleCenterValue", 29}, {"com.talmo.print.FinishingZFoldValue", 39}}},
        {52,
         {{"com.talmo.print.FinishingHolePunchValue", 33},
          {"com.talmo.print.FinishingHolePunchOptions", 4},
          {"com.talmo.print.FinishingZFoldValue", 38}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.choice);
        auto ticket = plistDict("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>");
        ticket->setInt("com.talmo.print.FinishingOptions", c.choice);
        for (const auto& [k, v] : c.details)
            ticket->setInt(k, v);
        auto imported = importText(exportText(ticket));
        EXPECT_EQ(imported->getInt("com.talmo.print.FinishingOptions"), c.choice);
        for (const auto& [k, v] : c.details)
            EXPECT_EQ(imported->getInt(k), v) << k;
    }
}

// What the writer emits but the import maps deliberately read otherwise.
struct DeliberateCase {
    const char* why;
    const char* ticketBody;
    const char* key;
    int64_t imported; // kNotSet: printer default
};

TEST(TpifImport, DeliberateDifferencesOfTheMaps)
{
    const DeliberateCase cases[] = {
        {"bins without a map row import as printer default",
         "<key>com.talmo.print.FinishingOutputDestination</key><integer>5</integer>",
         "com.talmo.print.FinishingOutputDestination", kNotSet},
        {"both top trays write \"top\", which maps to 3",
         "<key>com.talmo.print.FinishingOutputDestination</key><integer>2</integer>",
         "com.talmo.print.FinishingOutputDestination", 3},
        {"the 54 lpi screen imports as printer default",
         "<key>com.talmo.print.HalftoneScreen</key><integer>32</integer>", "com.talmo.print.HalftoneScreen", kNotSet},
        {"85-lpi is written for 1 and 16 and reads as 16",
         "<key>com.talmo.print.HalftoneScreen</key><integer>1</integer>", "com.talmo.print.HalftoneScreen", 16},
        {"screens without a map row import as printer default",
         "<key>com.talmo.print.HalftoneScreen</key><integer>51</integer>", "com.talmo.print.HalftoneScreen", kNotSet},
        {"a missing duplex is written one-sided", "", "com.talmo.print.FinishingDuplex", 1},
        {"the C fold of choice 18 reads as the advanced C fold (40/45)",
         "<key>com.talmo.print.FinishingOptions</key><integer>18</integer>"
         "<key>com.talmo.print.FinishingFoldValue</key><integer>19</integer>",
         "com.talmo.print.FinishingFoldValue", 45},
        {"a booklet fold without staple reads as the multiple bi-fold (43)",
         "<key>com.talmo.print.FinishingOptions</key><integer>24</integer>"
         "<key>com.talmo.print.BookletFoldStaple</key><integer>7</integer>",
         "com.talmo.print.FinishingFoldValue", 43},
        {"a booklet fold with staple keeps choice 24",
         "<key>com.talmo.print.FinishingOptions</key><integer>24</integer>"
         "<key>com.talmo.print.BookletFoldStaple</key><integer>8</integer>",
         "com.talmo.print.FinishingOptions", 24},
        {"\"none\" finishing reads as choice 1", "<key>com.talmo.print.FinishingOptions</key><integer>1</integer>",
         "com.talmo.print.FinishingOptions", 1},
        {"signature booklet reads as choice 3", "<key>com.talmo.print.FinishingOptions</key><integer>3</integer>",
         "com.talmo.print.FinishingOptions", 3},
        {"a save with print disposition reads as save and print",
         "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>3</integer>"
         "<key>SaveDisposition</key><integer>2</integer></dict>",
         "com.talmo.print.JobType/JobType", 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        auto ticket = plistDict(std::string("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key>"
                                            "<true/></dict>") +
                                c.ticketBody);
        auto imported = importText(exportText(ticket));
        std::string key = c.key;
        pl::DictPtr d = imported;
        if (auto slash = key.find('/'); slash != std::string::npos) {
            d = imported->getDict(key.substr(0, slash));
            key = key.substr(slash + 1);
        }
        ASSERT_TRUE(d);
        EXPECT_EQ(d->getInt(key), c.imported);
    }
}

// ---- rules of the feature table ----

TEST(TpifImport, StapleAndPunchGive49AndPunchThenZFoldGives52)
{
    auto d = importText(jobDoc("\t\t<finishings syntax=\"1setOf\">\n"
                               "\t\t\t<value syntax=\"enum\">20</value>\n"
                               "\t\t\t<value syntax=\"enum\">93</value>\n"
                               "\t\t</finishings>\n"));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), 49);
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingStaple1Value"), 5);
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingHolePunchValue"), 32);

    d = importText(jobDoc("\t\t<finishings syntax=\"1setOf\">\n"
                          "\t\t\t<value syntax=\"enum\">96</value>\n"
                          "\t\t\t<value syntax=\"enum\">1008</value>\n"
                          "\t\t</finishings>\n"));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), 52);
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingHolePunchValue"), 34);
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingZFoldValue"), 39);
}

TEST(TpifImport, AnElementTwiceIsImportedFromItsFirstOccurrence)
{
    auto d = importText(jobDoc("\t\t<sides syntax=\"keyword\">two-sided-short-edge</sides>\n"
                               "\t\t<sides syntax=\"keyword\">one-sided</sides>\n"
                               "\t\t<media-col syntax=\"collection\">\n"
                               "\t\t\t<media-weight-metric syntax=\"integer\">80</media-weight-metric>\n"
                               "\t\t</media-col>\n"
                               "\t\t<media-col syntax=\"collection\">\n"
                               "\t\t\t<media-weight-metric syntax=\"integer\">300</media-weight-metric>\n"
                               "\t\t</media-col>\n"));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingDuplex"), 3);
    EXPECT_EQ(d->getDict("com.talmo.print.JobLevelStock")->getInt("Weight"), 80);
}

TEST(TpifImport, MissingGroupsImportNothing)
{
    auto d = importText("<tpif><tpif-operation-attributes>\n"
                        "\t\t<job-name syntax=\"name\">Only a name</job-name>\n"
                        "</tpif-operation-attributes></tpif>");
    EXPECT_EQ(d->getString("com.talmo.print.JobNotesJobName"), "Only a name");
    // Nothing from the missing job template group; the finishing choice is always stated.
    EXPECT_EQ(d->size(), 2u);
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), kNotSet);

    d = importText("<tpif><job-template-attributes>\n"
                   "\t\t<sides syntax=\"keyword\">one-sided</sides>\n"
                   "</job-template-attributes></tpif>");
    EXPECT_FALSE(d->contains("com.talmo.print.JobNotesJobName"));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingDuplex"), 1);
}

// Invalid values: the profile's default where the feature has one, else nothing.
struct InvalidCase {
    const char* why;
    const char* element;
    const char* key;
    std::optional<int64_t> imported;
};

TEST(TpifImport, InvalidValuesFallBackToTheProfileDefault)
{
    const InvalidCase cases[] = {
        {"syntax that is not the feature's", "<sides syntax=\"integer\">2</sides>", "com.talmo.print.FinishingDuplex",
         kNotSet},
        {"no syntax at all", "<sides>one-sided</sides>", "com.talmo.print.FinishingDuplex", kNotSet},
        {"unknown keyword", "<sides syntax=\"keyword\">three-sided</sides>", "com.talmo.print.FinishingDuplex",
         kNotSet},
        {"number above the range", "<adjust-bw-darkness-value syntax=\"integer\">6</adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", kNotSet},
        {"number below the range", "<adjust-bw-darkness-value syntax=\"integer\">-6</adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", kNotSet},
        {"number at the range end", "<adjust-bw-darkness-value syntax=\"integer\">-5</adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", -5},
        {"decimals round half away from zero",
         "<adjust-bw-darkness-value syntax=\"integer\"> -2.5 </adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", -3},
        {"not a number", "<adjust-bw-darkness-value syntax=\"integer\">2x</adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", kNotSet},
        {"huge number", "<adjust-bw-darkness-value syntax=\"integer\">99999999999999999999</adjust-bw-darkness-value>",
         "com.talmo.print.LightenDarken", kNotSet},
        {"no default: not imported", "<color-effects-type syntax=\"keyword\">sepia</color-effects-type>",
         "com.talmo.print.FinishingOutputColor", std::nullopt},
        {"a valid keyword of a feature with a map of its own",
         "<opi-image-pre-scan syntax=\"keyword\">pre-scan</opi-image-pre-scan>", "com.talmo.print.OPIPrescan", 3},
        {"printer-default row of its own", "<page-rotation syntax=\"keyword\">rotate-90</page-rotation>",
         "com.talmo.print.AdvancedRotateImage180", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        auto d = importText(jobDoc(std::string("\t\t") + c.element + "\n"));
        if (c.imported)
            EXPECT_EQ(d->getInt(c.key), *c.imported);
        else
            EXPECT_FALSE(d->contains(c.key));
    }
}

TEST(TpifImport, NamesMustFitTheProfileLengthAndCharacterSet)
{
    const std::string fits(1024, 'a');
    auto d = importText(jobDoc("", "\t\t<job-name syntax=\"name\">" + fits + "</job-name>\n"));
    EXPECT_EQ(d->getString("com.talmo.print.JobNotesJobName"), fits);
    d = importText(jobDoc("", "\t\t<job-name syntax=\"name\">" + fits + "b</job-name>\n"));
    EXPECT_FALSE(d->contains("com.talmo.print.JobNotesJobName"));
    // A character outside the basic plane counts two UTF-16 units.
    std::string astral;
    for (int i = 0; i < 512; ++i)
        astral += "\xF0\x9F\x96\xA8";
    d = importText(jobDoc("", "\t\t<job-name syntax=\"name\">" + astral + "</job-name>\n"));
    EXPECT_TRUE(d->contains("com.talmo.print.JobNotesJobName"));
    d = importText(jobDoc("", "\t\t<job-name syntax=\"name\">" + astral + "a</job-name>\n"));
    EXPECT_FALSE(d->contains("com.talmo.print.JobNotesJobName"));
    // A URI keeps no blanks; a name keeps no control characters.
    d = importText(jobDoc("\t\t<job-save-disposition syntax=\"collection\"><save-info syntax=\"1setOf\">"
                          "<value syntax=\"collection\"><save-location syntax=\"uri\">file:///a b/</save-location>"
                          "</value></save-info></job-save-disposition>\n"));
    EXPECT_FALSE(d->contains("com.talmo.print.JobType"));
    d = importText(jobDoc("", "\t\t<job-name syntax=\"name\">a&#x7F;b</job-name>\n"));
    EXPECT_FALSE(d->contains("com.talmo.print.JobNotesJobName"));
}

TEST(TpifImport, StockSizeIsHeldWithinTheMediaLimits)
{
    // Without a printer: 432..864 points, that is 15240..30480 hundredths of a millimetre.
    auto d = importText(jobDoc("\t\t<media-col syntax=\"collection\"><media-size syntax=\"collection\">"
                               "<x-dimension syntax=\"integer\">10000</x-dimension>"
                               "<y-dimension syntax=\"integer\">42000</y-dimension></media-size></media-col>\n"));
    auto stock = d->getDict("com.talmo.print.JobLevelStock");
    ASSERT_TRUE(stock);
    EXPECT_EQ(stock->getInt("Width"), 15240);
    EXPECT_EQ(stock->getInt("Length"), 30480);
    EXPECT_EQ(stock->getInt("Size"), 75);

    WideMediaLimits wide;
    d = importText(jobDoc("\t\t<media-col syntax=\"collection\"><media-size syntax=\"collection\">"
                          "<x-dimension syntax=\"integer\">29700</x-dimension>"
                          "<y-dimension syntax=\"integer\">42000</y-dimension></media-size></media-col>\n"));
    EXPECT_EQ(d->getDict("com.talmo.print.JobLevelStock")->getInt("Size"), 5); // A3 by its code
}

// ---- the building blocks ----

TEST(TpifImport, ConvertKeywordBothDirectionsFirstRowWins)
{
    pl::ValuePtr out;
    ASSERT_TRUE(TPIFConvertKeyword(_TPIFHalftoneScreenMap, kTPIFKeywordToValue, pl::makeString("54lpi"), &out));
    EXPECT_EQ(pl::as<pl::Integer>(out)->value, kNotSet);
    ASSERT_TRUE(TPIFConvertKeyword(_TPIFHalftoneScreenMap, kTPIFValueToKeyword, pl::makeInt(kNotSet), &out));
    EXPECT_EQ(pl::as<pl::String>(out)->text, "PrinterDefault");
    ASSERT_TRUE(TPIFConvertKeyword(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeString("180"), &out));
    EXPECT_EQ(pl::as<pl::Integer>(out)->value, 2);
    out = nullptr;
    EXPECT_FALSE(TPIFConvertKeyword(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeString("90"), &out));
    EXPECT_FALSE(TPIFConvertKeyword(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeInt(1), &out));
    EXPECT_FALSE(TPIFConvertKeyword(_TPIFRotationMap, 3, pl::makeInt(1), &out));
    EXPECT_FALSE(out);
}

TEST(TpifImport, NodeSyntaxFoldsIntoThreeKinds)
{
    const std::pair<const char*, std::string_view> cases[] = {
        {"keyword", kTPIFSyntaxKeyword}, {"mimeMediaType", kTPIFSyntaxKeyword},
        {"enum", kTPIFSyntaxKeyword},    {"integer", kTPIFSyntaxNumber},
        {"name", kTPIFSyntaxName},       {"uri", kTPIFSyntaxName},
        {"text", kTPIFSyntaxName},       {"collection", kTPIFSyntaxUnknown},
        {"Keyword", kTPIFSyntaxUnknown},
    };
    for (const auto& [syntax, kind] : cases) {
        const std::string doc = std::string("<tpif><a syntax=\"") + syntax + "\"/></tpif>";
        TPIFDocument d = TPIFReadDocumentFromMemory(doc.data(), doc.size());
        ASSERT_TRUE(d);
        EXPECT_EQ(TPIFImportGetNodeSyntax(xmlDocGetRootElement(d.get())->children), kind) << syntax;
    }
}

TEST(TpifImport, GetNodeFindsTheFirstMatchOrALaterSibling)
{
    const std::string doc = "<tpif><a><b><c>1</c></b><b><c>2</c><d>3</d></b></a><a><b><d>4</d></b></a></tpif>";
    TPIFDocument d = TPIFReadDocumentFromMemory(doc.data(), doc.size());
    ASSERT_TRUE(d);
    xmlNodePtr root = xmlDocGetRootElement(d.get());
    auto text = [](xmlNodePtr n) {
        return n ? std::string(reinterpret_cast<const char*>(n->children->content)) : std::string("none");
    };
    EXPECT_EQ(text(TPIFImportGetNode(root, ".tpif.a.b.c")), "1");
    EXPECT_EQ(text(TPIFImportGetNode(root->children, ".a.b.d")), "3"); // the second b of the first a
    EXPECT_EQ(text(TPIFImportGetNode(root->children->next, ".a.b.d")), "4");
    xmlNodePtr firstB = root->children->children;
    EXPECT_EQ(text(TPIFImportGetNode(firstB->next, ".b.c")), "2");
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.c"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.b.c.x"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.bb"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ""), nullptr);
}

TEST(TpifImport, ComputeFinishingOptionKeyFollowsTheRuleOrder)
{
    struct Case {
        const char* body;
        int64_t choice;
    };
    const Case cases[] = {
        {"", kNotSet},
        {"<key>com.talmo.print.FinishingOptions</key><integer>22</integer>", 22},
        {"<key>com.talmo.print.FinishingStaple1Value</key><integer>-2147483648</integer>", kNotSet},
        {"<key>com.talmo.print.FinishingStaple1Value</key><integer>5</integer>"
         "<key>com.talmo.print.FinishingStaple2Value</key><integer>10</integer>",
         9},
        {"<key>com.talmo.print.FinishingHolePunchValue</key><integer>32</integer>", 30},
        {"<key>com.talmo.print.FinishingOptions</key><integer>25</integer>"
         "<key>com.talmo.print.FinishingHolePunchValue</key><integer>32</integer>",
         49},
        {"<key>com.talmo.print.FinishingStaple1Value</key><integer>5</integer>"
         "<key>com.talmo.print.FinishingHolePunchValue</key><integer>32</integer>"
         "<key>com.talmo.print.FinishingZFoldValue</key><integer>38</integer>",
         50},
        {"<key>com.talmo.print.FinishingZFoldValue</key><integer>38</integer>", 36},
        {"<key>com.talmo.print.FinishingZFoldValue</key><integer>38</integer>"
         "<key>com.talmo.print.FinishingBindValue</key><integer>15</integer>",
         14},
        {"<key>com.talmo.print.FinishingBindValue</key><integer>15</integer>"
         "<key>com.talmo.print.FinishingFoldValue</key><integer>41</integer>",
         40},
    };
    for (const auto& c : cases) {
        auto d = plistDict(c.body);
        ComputeFinishingOptionKey(d);
        EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), c.choice) << c.body;
    }
}

// ---- files ----

std::string writeTemp(const std::string& name, const std::string& text)
{
    const auto path = std::filesystem::temp_directory_path() / ("tpif-import-test-" + name);
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

TEST(TpifImport, SeveralFilesGoIntoOneDictionaryAndAFailureSparesTheOthers)
{
    const auto a = writeTemp("a.tpif", jobDoc("\t\t<sides syntax=\"keyword\">two-sided-long-edge</sides>\n"
                                              "\t\t<finishings syntax=\"1setOf\"><value syntax=\"enum\">20</value>"
                                              "</finishings>\n"));
    const auto bad = writeTemp("bad.tpif", "<tpif><job-template-attributes>");
    const auto b =
        writeTemp("b.tpif", jobDoc("\t\t<sides syntax=\"keyword\">one-sided</sides>\n"
                                   "\t\t<page-delivery syntax=\"keyword\">same-order-face-up</page-delivery>\n"));
    std::vector<OSStatus> statuses;
    auto d = TPIFImportFilesIntoDictionary({a, bad, b, "/nonexistent/x.tpif"}, &statuses);
    EXPECT_EQ(statuses, (std::vector<OSStatus>{noErr, kImportFileFailed, noErr, kImportFileFailed}));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingDuplex"), 1); // the later file wins
    EXPECT_EQ(d->getInt("com.talmo.print.OutputOrder"), 4);
    // The first file's staple still decides the choice after the second file.
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), 4);
    EXPECT_EQ(TPIFImportFileAtPath(a, nullptr), paramErr);
    for (const auto& p : {a, bad, b})
        std::filesystem::remove(p);
}

TEST(TpifImport, MergeWritesTypedItemsWithTheImportCreatorThenSyncs)
{
    PrintSession session;
    EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, nullptr), paramErr);
    int syncs = 0, direction = -1;
    TPIFSetPDESyncHandler([&](PrintSession* s, int dir) {
        EXPECT_EQ(s, &session);
        ++syncs;
        direction = dir;
    });
    EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, pl::makeDict()), noErr);
    EXPECT_EQ(syncs, 0); // an empty dictionary does nothing

    Ticket& t = session.printSettings();
    ASSERT_EQ(t.set("com.talmo.print.FinishingDuplex", pl::makeInt(2), "com.talmo.printingmanager"), noErr);
    ASSERT_EQ(t.set("com.talmo.print.Untouched", pl::makeInt(7), "com.talmo.printingmanager"), noErr);
    auto d = plistDict("<key>com.talmo.print.FinishingDuplex</key><integer>3</integer>"
                       "<key>com.talmo.print.TonerSaver</key><true/>"
                       "<key>com.talmo.print.JobNotesJobName</key><string>N</string>"
                       "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>2</integer></dict>"
                       "<key>com.talmo.print.SpecialPages.InsertList</key><array><dict/></array>");
    {
        tpiftest::DiagCapture quiet;
        EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, d), noErr);
    }
    EXPECT_EQ(syncs, 1);
    EXPECT_EQ(direction, 1);
    for (const auto& [k, v] : *d) {
        EXPECT_TRUE(pl::equal(t.get(k), v)) << k;
        EXPECT_EQ(t.creatorOf(k), "TALMO") << k;
    }
    EXPECT_EQ(t.creatorOf("com.talmo.print.Untouched"), "com.talmo.printingmanager");
    TPIFSetPDESyncHandler(nullptr);
}

} // namespace
