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
#include <regex>

using namespace talmo;

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

pl::DictPtr importText(const std::string& text)
{
    auto d = pl::makeDict();
    std::string why;
    TPIFDocument doc = TPIFReadDocumentFromMemory(text.data(), text.size(), &why);
    EXPECT_TRUE(doc) << why;
    if (doc) {
        EXPECT_EQ(TPIFImportDocument(doc.get(), d), noErr);
    }
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

// ---- round trips ----

TEST(TpifImport, EveryImportableFeatureRoundTrips)
{
    WideMediaLimits wide;
    pl::ParseResult r;
    auto ticket = pl::as<pl::Dictionary>(pl::readPlistFile(tpiftest::dataPath("import-everything.plist"), &r));
    ASSERT_TRUE(ticket) << r.message;
    auto imported = importText(tpiftest::render(ticket));
    auto expected = pl::as<pl::Dictionary>(pl::deepCopy(ticket));
    expected->set("com.talmo.print.TPIFOptions", nullptr);
    EXPECT_TRUE(pl::equal(imported, expected)) << pl::writePlist(imported);
}

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

// ---- the building blocks ----

TEST(TpifImport, ConvertKeywordBothDirectionsFirstRowWins)
{
    pl::ValuePtr out;
    auto convert = [&](const _TPIFKeywordMap* map, int direction, const pl::ValuePtr& in) {
        out = nullptr;
        return TPIFConvertKeyword(map, direction, in, &out) ? show(out) : "no row";
    };
    EXPECT_EQ(convert(_TPIFHalftoneScreenMap, kTPIFKeywordToValue, pl::makeString("54lpi")), std::to_string(kNotSet));
    EXPECT_EQ(convert(_TPIFHalftoneScreenMap, kTPIFValueToKeyword, pl::makeInt(kNotSet)), "\"PrinterDefault\"");
    EXPECT_EQ(convert(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeString("180")), "2");
    EXPECT_EQ(convert(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeString("90")), "no row");
    EXPECT_EQ(convert(_TPIFRotationMap, kTPIFKeywordToValue, pl::makeInt(1)), "no row");
    EXPECT_EQ(convert(_TPIFRotationMap, 3, pl::makeInt(1)), "no row");
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
    EXPECT_EQ(text(TPIFImportGetNode(root->children->children->next, ".b.c")), "2"); // from the second b
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.c"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.b.c.x"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ".tpif.a.bb"), nullptr);
    EXPECT_EQ(TPIFImportGetNode(root, ""), nullptr);
}

// ---- the rules, against a reviewed transcript ----

// data/import-cases.txt: whole documents (Document), job template lines (Job, or JobWide with
// wide media limits), operation lines (Operation), a settings ticket (Export) or a shipped
// example (Example) exported then imported, or a ticket whose finishing choice is computed from
// its detail keys (Compute). TALMO_UPDATE_GOLDEN=1 rewrites
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
        } else if (kind == "Export" || kind == "Example") {
            WideMediaLimits wide;
            const std::string example = std::string(TALMO_SOURCE_DIR) + "/examples/" + payload + ".plist";
            d = importText(tpiftest::render(kind == "Export" ? tpiftest::plistDict(kAll + payload)
                                                             : pl::as<pl::Dictionary>(pl::readPlistFile(example))));
        } else if (kind == "Compute") {
            d = tpiftest::plistDict(payload);
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
        auto ticket = tpiftest::plistDict(kAll + "<key>com.talmo.print.JobLevelStock</key><dict><key>" + key +
                                          "</key><integer>" + code +
                                          "</integer><key>CustomType</key><string>Mine</string><key>CustomColor</key>"
                                          "<string>Mine</string><key>Modulus</key><integer>4</integer></dict>");
        const std::string doc = tpiftest::render(ticket);
        std::string lines; // the media collection's inner lines, without tabs, one blank after each
        static const std::regex line(R"(\t\t\t(<[^\n]*)\n)");
        for (auto it = std::sregex_iterator(doc.begin(), doc.end(), line); it != std::sregex_iterator(); ++it)
            lines += (*it)[1].str() + " ";
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
        {1, 1921, -1299, "48793 -32995"},
        {0, 4880, -3300, "48800 -33000"},
        {1, 100, 0, "2540 0"},
        {0, -1, 7, "-10 70"},
        {1, -1, 1, "-25 25"},
    };
    auto shifts = [](const std::string& doc) {
        static const std::regex shift(R"(<forms-x-image-shift syntax="integer">(-?\d+)<[^]*<forms-y-image-shift )"
                                      R"(syntax="integer">(-?\d+)<)");
        std::smatch m;
        return std::regex_search(doc, m, shift) ? m.str(1) + " " + m.str(2) : "none";
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.written);
        auto ticket =
            tpiftest::plistDict(kAll + "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>9</integer>"
                                       "</dict><key>com.talmo.print.BackgroundFormsOptions</key><dict>"
                                       "<key>UseExistingForm</key><integer>2</integer><key>MergeWithString</key>"
                                       "<string>F</string></dict>");
        auto forms = ticket->getDict("com.talmo.print.BackgroundFormsOptions");
        forms->setInt("Inches", c.inches), forms->setInt("X1", c.x), forms->setInt("Y1", c.y);
        const std::string first = tpiftest::render(ticket);
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
        EXPECT_EQ(shifts(tpiftest::render(again)), c.written);
    }
}

// A form read from a document is still the same form after the panel saves the record: a new
// form keeps the imported name (not the document's), a merge keeps its apply-pages row.
TEST_F(FormOffsets, ImportedFormSurvivesARecordSave)
{
    const struct {
        const char* element;
        int32_t applyPagesFrom;
        const char* written; // the form's name line in the second export
    } cases[] = {
        {"<form-save syntax=\"collection\"><form-save-info syntax=\"1setOf\"><value syntax=\"collection\">"
         "<form-save-name syntax=\"name\">Imported</form-save-name></value></form-save-info></form-save>",
         kApplyThroughoutJob, "<form-save-name syntax=\"name\" xml:space=\"preserve\">Imported</form-save-name>"},
        {"<forms-col syntax=\"1setOf\"><value syntax=\"collection\"><form-name syntax=\"name\">F</form-name>"
         "<form-cycle-start syntax=\"integer\">1</form-cycle-start></value></forms-col>",
         kApplyThroughoutJob, "<form-cycle-start syntax=\"integer\">1</form-cycle-start>"},
        {"<forms-col syntax=\"1setOf\"><value syntax=\"collection\"><form-name syntax=\"name\">F</form-name>"
         "<form-cycle-start syntax=\"integer\">0</form-cycle-start></value></forms-col>",
         kApplyOnce, "<form-cycle-start syntax=\"integer\">0</form-cycle-start>"},
        {"<forms-col syntax=\"1setOf\"><value syntax=\"collection\"><form-name syntax=\"name\">F</form-name>"
         "<form-cycle-start syntax=\"integer\">7</form-cycle-start></value></forms-col>",
         kApplyOnceThenRepeat, "<form-cycle-start syntax=\"integer\">7</form-cycle-start>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.element);
        Ticket saved;
        ASSERT_EQ(saved.loadDictionary(importText(jobDoc(c.element)), "TALMO"), noErr);
        pl::DictPtr stored;
        ASSERT_EQ(TicketGetDict(&saved, kBackgroundFormsOptionsKey, &stored), noErr);
        const BackgroundFormsOptions record(stored);
        int32_t row = 0;
        record.applyPagesFrom(&row);
        EXPECT_EQ(row, c.applyPagesFrom);
        ASSERT_EQ(WriteBackgroundFormsToTicket(record, 9, &saved), noErr);
        auto again = saved.asDictionary();
        again->set("com.talmo.print.TPIFOptions", tpiftest::plistDict(kAll)->get("com.talmo.print.TPIFOptions"));
        again->setString("com.apple.print.JobInfo.PMJobName", "document.pdf");
        EXPECT_NE(tpiftest::render(again).find(c.written), std::string::npos);
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
    std::vector<int> syncs;
    TPIFSetPDESyncHandler([&](PrintSession* s, int direction) { syncs.push_back(s == &session ? direction : -1); });
    EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, nullptr), paramErr);
    EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, pl::makeDict()), noErr); // does nothing, no sync
    Ticket& t = session.printSettings();
    t.set("com.talmo.print.FinishingDuplex", pl::makeInt(2), "com.talmo.printingmanager");
    t.set("com.talmo.print.Untouched", pl::makeInt(7), "com.talmo.printingmanager");
    auto d = tpiftest::plistDict("<key>com.talmo.print.FinishingDuplex</key><integer>3</integer>"
                                 "<key>com.talmo.print.TonerSaver</key><true/>"
                                 "<key>com.talmo.print.JobNotesJobName</key><string>N</string>"
                                 "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>2</integer></dict>"
                                 "<key>com.talmo.print.SpecialPages.InsertList</key><array><dict/></array>");
    tpiftest::DiagCapture quiet;
    EXPECT_EQ(TPIFImportMergeIntoJobTicket(&session, d), noErr);
    EXPECT_EQ(syncs, std::vector<int>{1});
    for (const auto& [k, v] : *d)
        EXPECT_TRUE(pl::equal(t.get(k), v) && t.creatorOf(k) == "TALMO") << k;
    EXPECT_EQ(t.creatorOf("com.talmo.print.Untouched"), "com.talmo.printingmanager");
    TPIFSetPDESyncHandler(nullptr);
}

} // namespace
