// TPIF import: round trips through the writer, the rules of the feature table, the node search,
// several files into one dictionary and the merge into the session's ticket.
#include "tpif-test-util.h"

#include "../settings/prefs-fixture.h"
#include "device/device.h"
#include "platform/plist.h"
#include "platform/session.h"
#include "settings/ticket-access.h"

#include <cstdlib>
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

// Wide media limits for the round trips; the clamping has cases of its own.
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

const std::string kAll = "<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>";

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
    // Detail keys without their "com.talmo.print." prefix.
    // clang-format off
    const FinishingCase cases[] = {
        {4, {{"FinishingStaple1Value", 5}}}, {4, {{"FinishingStaple1Value", 8}}},
        {9, {{"FinishingStaple2Value", 13}}}, {25, {{"FinishingStapleCenterValue", 27}}},
        {14, {{"FinishingBindValue", 16}}}, {30, {{"FinishingHolePunchValue", 35}, {"FinishingHolePunchOptions", 5}}},
        {36, {{"FinishingZFoldValue", 39}}}, {40, {{"FinishingFoldValue", 41}}}, {40, {{"FinishingFoldValue", 48}}},
        {49, {{"FinishingStaple1Value", 5}, {"FinishingHolePunchValue", 32}, {"FinishingHolePunchOptions", 4}}},
        {50, {{"FinishingStaple2Value", 10}, {"FinishingHolePunchValue", 34}, {"FinishingHolePunchOptions", 3}, {"FinishingZFoldValue", 38}}},
        {51, {{"FinishingStapleCenterValue", 29}, {"FinishingZFoldValue", 39}}},
        {52, {{"FinishingHolePunchValue", 33}, {"FinishingHolePunchOptions", 4}, {"FinishingZFoldValue", 38}}},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.choice);
        auto ticket = plistDict("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>");
        ticket->setInt("com.talmo.print.FinishingOptions", c.choice);
        for (const auto& [k, v] : c.details)
            ticket->setInt(std::string("com.talmo.print.") + k, v);
        auto imported = importText(exportText(ticket));
        EXPECT_EQ(imported->getInt("com.talmo.print.FinishingOptions"), c.choice);
        for (const auto& [k, v] : c.details)
            EXPECT_EQ(imported->getInt(std::string("com.talmo.print.") + k), v) << k;
    }
}

// ---- rules of the feature table ----

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

// ---- the rules, against a reviewed transcript ----

// One line per value, with its type: 3, true, "text", {Key=...}, [...].
std::string show(const pl::ValuePtr& v)
{
    if (auto i = pl::as<pl::Integer>(v))
        return std::to_string(i->value);
    if (auto b = pl::as<pl::Boolean>(v))
        return b->value ? "true" : "false";
    if (auto s = pl::as<pl::String>(v))
        return "\"" + s->text + "\"";
    std::string out;
    if (auto a = pl::as<pl::Array>(v)) {
        for (size_t i = 0; i < a->size(); ++i)
            out += (i ? ", " : "") + show(a->at(i));
        return "[" + out + "]";
    }
    if (auto d = pl::as<pl::Dictionary>(v)) {
        for (const auto& [k, item] : *d)
            out += (out.empty() ? "" : ", ") + k + "=" + show(item);
        return "{" + out + "}";
    }
    return v ? "<other>" : "null";
}

// data/import-cases.txt: whole documents (Document), job template lines (Job, or JobWide with
// wide media limits), operation lines (Operation), a settings ticket exported then imported (Export), or a ticket whose
// finishing choice is computed from its detail keys (Compute). TALMO_UPDATE_GOLDEN=1 rewrites
// the transcript; review the diff before committing it.
TEST(TpifImport, RulesTranscript)
{
    std::istringstream cases(tpiftest::readFile(tpiftest::dataPath("import-cases.txt")));
    std::string transcript;
    for (std::string line; std::getline(cases, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t tab = line.find('\t');
        const std::string kind = line.substr(0, tab), payload = line.substr(tab + 1);
        pl::DictPtr d;
        if (kind == "Job" || kind == "JobWide") {
            std::optional<WideMediaLimits> wide;
            if (kind == "JobWide")
                wide.emplace();
            d = importText(jobDoc(payload));
        } else if (kind == "Document") {
            d = importText(payload);
        } else if (kind == "Operation") {
            d = importText(jobDoc("", payload));
        } else if (kind == "Export") {
            WideMediaLimits wide;
            d = importText(exportText(plistDict(kAll + payload)));
        } else if (kind == "Compute") {
            d = plistDict(payload);
            ComputeFinishingOptionKey(d);
        } else {
            ADD_FAILURE() << "unknown kind: " << line;
            continue;
        }
        transcript += "== " + line + "\n" + show(d) + "\n";
    }
    const std::string golden = tpiftest::dataPath("import-cases.golden");
    if (std::getenv("TALMO_UPDATE_GOLDEN"))
        std::ofstream(golden, std::ios::binary) << transcript;
    EXPECT_SAME_BYTES(transcript, tpiftest::readFile(golden));
}

// data/stock-codes.txt: every type and colour code of the printer's maps, exported in a job
// stock (with a text and a count of its own, which only types 6 and 7 and the tab stocks use),
// gives the media lines listed and imports back as listed.
TEST(TpifImport, StockCodesThroughExportAndImport)
{
    std::istringstream rows(tpiftest::readFile(tpiftest::dataPath("stock-codes.txt")));
    int count = 0;
    for (std::string row; std::getline(rows, row);) {
        if (row.empty() || row[0] == '#')
            continue;
        std::istringstream fields(row);
        std::string key, code, media, imported;
        std::getline(fields, key, '\t'), std::getline(fields, code, '\t');
        std::getline(fields, media, '\t'), std::getline(fields, imported, '\t');
        SCOPED_TRACE(row);
        auto ticket =
            plistDict(kAll + "<key>com.talmo.print.JobLevelStock</key><dict><key>" + key + "</key><integer>" + code +
                      "</integer><key>CustomType</key><string>Mine</string><key>CustomColor</key>"
                      "<string>Mine</string><key>Modulus</key><integer>4</integer></dict>");
        const std::string doc = exportText(ticket);
        const std::string open = "\t\t<media-col syntax=\"collection\">\n", close = "\t\t</media-col>\n";
        const size_t from = doc.find(open), to = doc.find(close);
        ASSERT_TRUE(from != std::string::npos && to != std::string::npos);
        std::string lines = doc.substr(from + open.size(), to - from - open.size());
        lines.erase(std::remove(lines.begin(), lines.end(), '\t'), lines.end());
        std::replace(lines.begin(), lines.end(), '\n', ' ');
        EXPECT_EQ(lines, media.empty() ? "" : media + " ");
        EXPECT_EQ(show(importText(doc)->get("com.talmo.print.JobLevelStock")), imported);
        ++count;
    }
    EXPECT_EQ(count, 46 + 22);
}

// Form offsets: written in hundredths of a millimetre, imported in the record's own unit, so a
// record saved from the import writes the same numbers again.
class FormOffsets : public talmo::test::PrefsHome { };

TEST_F(FormOffsets, ExportImportSaveExportKeepTheNumbers)
{
    const struct {
        int inches, x, y;
        const char* written; // x and y in hundredths of a millimetre
    } cases[] = {
        {1, 1921, -1299, "48793 -32995"}, {0, 4880, -3300, "48800 -33000"}, {1, 100, 0, "2540 0"}, {0, -1, 7, "-10 70"},
        {1, -1, 1, "-25 25"},
    };
    auto shifts = [](const std::string& doc) {
        auto number = [&](const std::string& tag) {
            const size_t at = doc.find("<" + tag + " syntax=\"integer\">");
            return at == std::string::npos
                       ? std::string("none")
                       : doc.substr(doc.find('>', at) + 1, doc.find("</", at) - doc.find('>', at) - 1);
        };
        return number("forms-x-image-shift") + " " + number("forms-y-image-shift");
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.written);
        auto ticket = plistDict(kAll + "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>9</integer>"
                                       "</dict><key>com.talmo.print.BackgroundFormsOptions</key><dict>"
                                       "<key>UseExistingForm</key><integer>2</integer><key>MergeWithString</key>"
                                       "<string>F</string></dict>");
        auto forms = ticket->getDict("com.talmo.print.BackgroundFormsOptions");
        forms->setInt("Inches", c.inches), forms->setInt("X1", c.x), forms->setInt("Y1", c.y);
        const std::string first = exportText(ticket);
        EXPECT_EQ(shifts(first), c.written);
        auto imported = importText(first);
        // The panel's save: the record read from the ticket and written back.
        Ticket saved;
        ASSERT_EQ(saved.loadDictionary(imported, "TALMO"), noErr);
        pl::DictPtr stored;
        ASSERT_EQ(TicketGetDict(&saved, kBackgroundFormsOptionsKey, &stored), noErr);
        ASSERT_EQ(WriteBackgroundFormsToTicket(BackgroundFormsOptions(stored), 9, &saved), noErr);
        auto again = saved.asDictionary();
        again->set("com.talmo.print.TPIFOptions", ticket->get("com.talmo.print.TPIFOptions"));
        EXPECT_EQ(shifts(exportText(again)), c.written);
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
                                              "</finishings>\n<media-col syntax=\"collection\">"
                                              "<media-weight-metric syntax=\"integer\">90</media-weight-metric>"
                                              "</media-col>\n"));
    const auto bad = writeTemp("bad.tpif", "<tpif><job-template-attributes>");
    const auto b =
        writeTemp("b.tpif", jobDoc("\t\t<sides syntax=\"keyword\">one-sided</sides>\n"
                                   "\t\t<page-delivery syntax=\"keyword\">same-order-face-up</page-delivery>\n"
                                   "<media-col syntax=\"collection\"><media-color syntax=\"keyword\">blue"
                                   "</media-color></media-col>\n"));
    std::vector<OSStatus> statuses;
    auto d = TPIFImportFilesIntoDictionary({a, bad, b, "/nonexistent/x.tpif"}, &statuses);
    EXPECT_EQ(statuses, (std::vector<OSStatus>{noErr, kImportFileFailed, noErr, kImportFileFailed}));
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingDuplex"), 1); // the later file wins
    EXPECT_EQ(d->getInt("com.talmo.print.OutputOrder"), 4);
    // The first file's staple still decides the choice after the second file.
    EXPECT_EQ(d->getInt("com.talmo.print.FinishingOptions"), 4);
    // A sub-dictionary an earlier file began is added to.
    EXPECT_EQ(show(d->get("com.talmo.print.JobLevelStock")), "{Weight=90, Color=2}");
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
