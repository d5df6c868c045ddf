// Ticket layer: what each feature writer makes of ticket keys, the export rules of
// "TPIFOptions", the document order and the diagnostics.
#include "tpif-test-util.h"

#include "platform/plist.h"

using namespace talmo;
using tpiftest::StringSink;

namespace {

pl::DictPtr ticketFrom(const std::string& xmlDictBody)
{
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + xmlDictBody + "</dict></plist>";
    pl::ParseResult r;
    auto d = pl::as<pl::Dictionary>(pl::readPlist(xml, &r));
    EXPECT_TRUE(d) << r.message;
    return d;
}

std::string document(const pl::DictPtr& ticket)
{
    char* buf = nullptr;
    size_t len = 0;
    FILE* f = open_memstream(&buf, &len);
    {
        tpiftest::DiagCapture quiet;
        WriteTPIF(f, ticket);
    }
    std::fclose(f);
    std::string out(buf, len);
    std::free(buf);
    tpif_ofp = nullptr;
    return out;
}

template <class F> std::string feature(F writer, const pl::DictPtr& ticket)
{
    StringSink s;
    tpiftest::DiagCapture quiet;
    writer(s.get(), ticket);
    return s.text;
}

const std::string kHeader = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE tpif SYSTEM \"tpif-v02025.dtd\">\n"
                            "<tpif version=\"1.0\" xml:lang=\"en-US\" cpss-version=\"2.01\">\n";
const std::string kAll = "<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>";

TEST(TPifDocument, GoldenExamples)
{
    for (const char* name : {"tpif-plain-job", "tpif-special-pages", "tpif-finishing-colour", "tpif-saved-job-form"}) {
        pl::ParseResult r;
        auto ticket = pl::as<pl::Dictionary>(
            pl::readPlistFile(std::string(TALMO_SOURCE_DIR) + "/examples/" + name + ".plist", &r));
        ASSERT_TRUE(ticket) << name << ": " << r.message;
        const std::string doc = document(ticket);
        EXPECT_SAME_BYTES(doc, tpiftest::readFile(tpiftest::dataPath(std::string(name) + ".tpif"))) << name;
        tpiftest::ParsedDoc parsed;
        tpiftest::parse(tpiftest::mendAccounting(doc), parsed);
        EXPECT_EQ(parsed.errors, 0) << name;
    }
}

TEST(TPifDocument, NothingWithoutOptionsOrWithoutWhatTheyAskFor)
{
    EXPECT_EQ(document(ticketFrom("<key>com.talmo.print.Resolution</key><integer>2</integer>")), "");
    EXPECT_EQ(document(ticketFrom("<key>com.talmo.print.TPIFOptions</key><dict/>"
                                  "<key>com.talmo.print.Resolution</key><integer>2</integer>")),
              "");
    // Each subset option needs its own key in the ticket.
    const std::string cover = "<key>com.talmo.print.SpecialPages.FrontCover</key><dict><key>Stock</key><dict/></dict>";
    EXPECT_EQ(
        document(ticketFrom("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionCovers</key><true/></dict>")),
        "");
    EXPECT_EQ(document(ticketFrom("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionInserts</key><true/>"
                                  "<key>TPIFOptionExceptions</key><true/></dict>" +
                                  cover)),
              "");
    EXPECT_EQ(document(nullptr), "");
}

TEST(TPifDocument, CoversOnlySubset)
{
    // Option keys count by presence, whatever their value.
    auto t = ticketFrom("<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionCovers</key><false/></dict>"
                        "<key>com.talmo.print.JobNotesJobName</key><string>J</string>"
                        "<key>com.talmo.print.Resolution</key><integer>2</integer>"
                        "<key>com.talmo.print.SpecialPages.InsertList</key><array><dict/></array>"
                        "<key>com.talmo.print.SpecialPages.FrontCover</key><dict>"
                        "<key>Stock</key><dict><key>Color</key><integer>9</integer></dict></dict>");
    EXPECT_SAME_BYTES(document(t), kHeader + "\t<job-template-attributes>\n"
                                             "\t\t<cover-front syntax=\"collection\">\n"
                                             "\t\t\t<cover-type syntax=\"keyword\">print-none</cover-type>\n"
                                             "\t\t<media-col syntax=\"collection\">\n"
                                             "\t\t\t<media-color syntax=\"keyword\">red</media-color>\n"
                                             "\t\t</media-col>\n"
                                             "\t\t</cover-front>\n"
                                             "\t</job-template-attributes>\n"
                                             "</tpif>");
}

TEST(TPifDocument, HighlightWriterRunsTwice)
{
    auto t = ticketFrom(kAll + "<key>HiglightPrintingColor</key><integer>6</integer>"
                               "<key>com.talmo.print.HighlightColorOptionsJob</key><dict>"
                               "<key>HiglightPrintingColor</key><integer>4</integer></dict>");
    const std::string doc = document(t);
    const std::string whole = "\t\t<highlight-colorant syntax=\"keyword\">yellow</highlight-colorant>\n";
    const std::string job = "\t\t<highlight-colorant syntax=\"keyword\">cyan</highlight-colorant>\n";
    ASSERT_NE(doc.find(whole), std::string::npos);
    EXPECT_EQ(doc.find(whole) + whole.size(), doc.find(job)) << "the job options follow the whole ticket";
}

TEST(TPifDocument, DebugLinesOfAWholeDocument)
{
    auto t = ticketFrom(kAll + "<key>com.talmo.print.FinishingSlipSheet</key><integer>1</integer>"
                               "<key>com.talmo.print.JobType</key><dict><key>JobType</key><integer>9</integer></dict>"
                               "<key>com.talmo.print.BackgroundFormsOptions</key><dict/>"
                               "<key>com.talmo.Act.tpif.On</key><integer>1</integer>"
                               "<key>com.talmo.Act.tpif.UID</key><string>ann</string>"
                               "<key>com.talmo.Act.tpif.AID</key><string>42</string>");
    tpiftest::DiagCapture diag;
    StringSink s;
    WriteTPIFToSink(s.get(), t);
    EXPECT_EQ(diag.text(), "DEBUG: ******* finishingOptions = 0, foldOptions = 0, stapleValue = 0, holePunchValue = 0, "
                           "simpleFoldValue = 0, bindValue = 0, bookletValue = 0\n"
                           "DEBUG: ************ SLIPSHEET ************\n"
                           "DEBUG: in WriteTPifCommands funcion \n" // duplex
                           "DEBUG: in WriteTPifCommands funcion \n" // output destination (empty write)
                           "DEBUG: ******* WriteTPIFBackgroundForms\n"
                           "DEBUG: ******* WriteTPIFBackgroundForms: valid ticket\n"
                           "DEBUG: ******* WriteTPIFBackgroundForms: valid bg options ticket\n"
                           "DEBUG: ******** jobType = 9\n"
                           "DEBUG: Ticket is valid\n"
                           "DEBUG: Found accounting key: 1\n"
                           "DEBUG: Accounting is enabled\n"
                           "DEBUG: user id ann, acct id 42\n");
}

TEST(TPifAccounting, OffAndMissing)
{
    {
        tpiftest::DiagCapture diag;
        StringSink s;
        WriteTPIFAccounting(s.get(), ticketFrom("<key>com.talmo.Act.tpif.On</key><integer>0</integer>"));
        EXPECT_EQ(s.text, "");
        EXPECT_EQ(diag.text(), "DEBUG: Ticket is valid\nDEBUG: Found accounting key: 0\n");
    }
    {
        tpiftest::DiagCapture diag;
        StringSink s;
        WriteTPIFAccounting(s.get(), ticketFrom(""));
        EXPECT_EQ(s.text, "");
        EXPECT_EQ(diag.text(), "DEBUG: Ticket is valid\nDEBUG: No accounting ticket present\n");
    }
}

std::string finishingOf(const std::string& keys) { return feature(WriteTPIFFinishing, ticketFrom(keys)); }

std::string k(const char* name, int v)
{
    return std::string("<key>com.talmo.print.") + name + "</key><integer>" + std::to_string(v) + "</integer>";
}

const std::string kOpen = "\t\t<finishings syntax=\"1setOf\">\n";
const std::string kClose = "\t\t</finishings>\n";
std::string vals(std::initializer_list<int> values)
{
    std::string out = kOpen;
    for (int v : values)
        out += "\t\t\t<value syntax=\"enum\">" + std::to_string(v) + "</value>\n";
    return out + kClose;
}

TEST(TPifFinishingChoice, ChoiceToRecord)
{
    struct Case {
        std::string keys;
        std::string expected;
    };
    const int c36 = 91; // hole count for the default options value 4
    const std::vector<Case> cases = {
        {k("FinishingOptions", 0) + k("BookletFoldStaple", 7), vals({111})},
        {k("FinishingOptions", 24) + k("BookletFoldStaple", 8), vals({110})},
        {k("FinishingOptions", 1), vals({3})},
        {k("FinishingOptions", 3), vals({13})},
        {k("FinishingOptions", 4) + k("FinishingStaple1Value", 5), vals({20})},
        {k("FinishingOptions", 9) + k("FinishingStaple2Value", 7), vals({22})},
        {k("FinishingOptions", 25) + k("FinishingStapleCenterValue", 29), vals({34})},
        {k("FinishingOptions", 4) + k("FinishingStaple2Value", 10) + k("FinishingStapleCenterValue", 12), vals({28})},
        {k("FinishingOptions", 14) + k("FinishingBindValue", 15), vals({50})},
        {k("FinishingOptions", 14) + k("FinishingBindValue", 16), vals({52})},
        {k("FinishingOptions", 18) + k("FinishingFoldValue", 19), vals({1000})},
        {k("FinishingOptions", 18) + k("FinishingFoldValue", 20), vals({1001})},
        {k("FinishingOptions", 30) + k("FinishingHolePunchValue", 33), vals({94, c36})},
        {k("FinishingOptions", 30) + k("FinishingHolePunchValue", 32), vals({93, c36})},
        {k("FinishingOptions", 30) + k("FinishingHolePunchValue", 34) + k("FinishingHolePunchOptions", 3),
         vals({96, 90})},
        {k("FinishingOptions", 30) + k("FinishingHolePunchValue", 35) + k("FinishingHolePunchOptions", 5),
         vals({95, 92})},
        {k("FinishingOptions", 32), vals({93, c36})},
        {k("FinishingOptions", 33), vals({94, c36})},
        {k("FinishingOptions", 34), vals({96, c36})},
        {k("FinishingOptions", 35) + k("FinishingHolePunchOptions", 9), vals({95})},
        {k("FinishingOptions", 36) + k("FinishingZFoldValue", 38), vals({1011})},
        {k("FinishingOptions", 36) + k("FinishingZFoldValue", 39), vals({1008})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 41), vals({1003})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 42), vals({1004})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 43), vals({111})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 44), vals({110})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 45), vals({1000})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 46), vals({1005})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 47), vals({1001})},
        {k("FinishingOptions", 40) + k("FinishingFoldValue", 48), vals({1012})},
        // Hole value 49 gives hole punch 38, outside the list: the staple line goes out again.
        {k("FinishingOptions", 49) + k("FinishingHolePunchValue", 49) + k("FinishingStaple1Value", 6),
         vals({21, 21, c36})},
        {k("FinishingOptions", 50) + k("FinishingZFoldValue", 39) + k("FinishingHolePunchValue", 35) +
             k("FinishingStaple1Value", 26),
         vals({32, 1008, 95, c36})},
        {k("FinishingOptions", 51) + k("FinishingZFoldValue", 38) + k("FinishingStaple1Value", 13), vals({30, 1011})},
        {k("FinishingOptions", 52) + k("FinishingZFoldValue", 38) + k("FinishingHolePunchValue", 32),
         vals({1011, 93, c36})},
        // Staple value 9 is not in the staple mapping: no staple, so nothing at all.
        {k("FinishingOptions", 4) + k("FinishingStaple1Value", 9), ""},
        {k("FinishingOptions", 2), ""},
        {k("FinishingOptions", 22), ""},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_SAME_BYTES(finishingOf(c.keys), c.expected) << c.keys;
}

TEST(TPifFinishingChoice, Choice22WritesOnlyTheTemplate)
{
    EXPECT_SAME_BYTES(finishingOf(k("FinishingOptions", 22) + k("FinishingStaple1Value", 5) +
                                  "<key>com.talmo.print.FinishingCustom</key><string>Fold &amp; \"staple\"</string>"),
                      "\t\t<finishings-col syntax=\"collection\">\n"
                      "\t\t\t<finishing-template syntax=\"name\" xml:space=\"preserve\">Fold &amp; &quot;staple&quot;"
                      "</finishing-template>\n"
                      "\t\t</finishings-col>\n");
}

TEST(TPifFinishingChoice, SlipSheetBeforeFinishingThenOffset)
{
    const std::string slip = "\t\t<separator-sheets syntax=\"collection\">\n"
                             "\t\t\t<separator-sheets-type syntax=\"keyword\">slip-sheets</separator-sheets-type>\n"
                             "\t\t</separator-sheets>\n";
    EXPECT_SAME_BYTES(
        finishingOf(k("FinishingSlipSheet", 2) + k("FinishingOptions", 1) + k("FinishingOffset", 2)),
        slip + vals({3}) +
            "\t\t<job-offset syntax=\"1setOf\">\n\t\t\t<value syntax=\"keyword\">none</value>\n\t\t</job-offset>\n");
    EXPECT_EQ(finishingOf(k("FinishingSlipSheet", 1)), "");
}

TEST(TPifOffset, Values)
{
    auto offset = [](const char* v) {
        return std::string("\t\t<job-offset syntax=\"1setOf\">\n") + v + "\t\t</job-offset>\n";
    };
    const std::vector<std::pair<std::string, std::string>> cases = {
        {k("FinishingOffset", 1), ""},
        {k("FinishingOffset", 2), offset("\t\t\t<value syntax=\"keyword\">none</value>\n")},
        {k("FinishingOffset", 3), offset("\t\t\t<value syntax=\"keyword\">offset-set</value>\n")},
        {k("FinishingOffset", 4), offset("\t\t\t<value syntax=\"keyword\">offset-subset</value>\n")},
        {k("FinishingOffset", 5), offset("\t\t\t<value syntax=\"keyword\">offset-set</value>\n"
                                         "\t\t\t<value syntax=\"keyword\">offset-subset</value>\n")},
        {k("FinishingOffset", 6), ""},
        {k("FinishingOffsetEnableSubset", 1) + k("FinishingOffsetPagesPerSubset", 4),
         "\t\t<pages-per-subset syntax=\"1setOf\">\n\t\t\t<value "
         "syntax=\"integer\">4</value>\n\t\t</pages-per-subset>\n"},
        {k("FinishingOffsetEnableSubset", 0) + k("FinishingOffsetPagesPerSubset", 4), ""},
    };
    for (const auto& [keys, expected] : cases)
        EXPECT_SAME_BYTES(feature(WriteTPIFOffset, ticketFrom(keys)), expected) << keys;
}

std::string kwl(const char* name, const char* value)
{
    return std::string("\t\t<") + name + " syntax=\"keyword\">" + value + "</" + name + ">\n";
}

TEST(TPifSimpleFeatures, Conversions)
{
    using Writer = void (*)(const writeData*, const pl::DictPtr&);
    struct Case {
        Writer writer;
        std::string keys;
        std::string expected;
    };
    const std::string pm = "<key>com.apple.print.PrintSettings.PMDuplexing</key><integer>3</integer>";
    const std::vector<Case> cases = {
        {WriteTPIFDuplex, k("FinishingDuplex", 3), kwl("sides", "two-sided-short-edge")},
        {WriteTPIFDuplex, k("FinishingDuplex", 2), kwl("sides", "two-sided-long-edge")},
        {WriteTPIFDuplex, k("FinishingDuplex", 1), kwl("sides", "one-sided")},
        {WriteTPIFDuplex, "", kwl("sides", "one-sided")},
        {WriteTPIFDuplex, pm, kwl("sides", "two-sided-short-edge")},
        {WriteTPIFDuplex, pm + k("FinishingDuplex", 1), kwl("sides", "one-sided")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 1), kwl("output-bin", "automatic")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 2), kwl("output-bin", "top")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 3), kwl("output-bin", "top")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 4), kwl("output-bin", "stacker")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 12), kwl("output-bin", "stacker")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 5), kwl("output-bin", "stacker-1")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 6), kwl("output-bin", "stacker-2")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 8), kwl("output-bin", "top-1")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 9), kwl("output-bin", "top-2")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 16), kwl("output-bin", "top-1")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 17), kwl("output-bin", "stacker-1")},
        {WriteTPIFOutputDestination, k("FinishingOutputDestination", 7), ""},
        {WriteTPIFOPISubsitution, k("OPISubsitution", 3), kwl("opi-image-insertion", "do-not-insert")},
        {WriteTPIFOPISubsitution, k("OPISubsitution", 1), ""},
        {WriteTPIFOPIPreScan, k("OPIPrescan", 4), kwl("opi-image-pre-scan", "pre-scan-and-gather")},
        {WriteTPIFAntiAliasing, k("Antialiasing", 1), kwl("anti-aliasing", "none")},
        {WriteTPIFHalftone, k("HalftoneScreen", 12),
         kwl("halftone-graphics", "600-dpi") + kwl("halftone-images", "600-dpi") + kwl("halftone-text", "600-dpi")},
        {WriteTPIFLightenDarken, k("LightenDarken", 5),
         "\t\t<adjust-bw-darkness-value syntax=\"integer\">5</adjust-bw-darkness-value>\n"},
        {WriteTPIFTonerSaver, "<key>com.talmo.print.TonerSaver</key><false/>", kwl("toner-saver", "none")},
        {WriteTPIFTonerSaver, "<key>com.talmo.print.TonerSaver</key><true/>", kwl("toner-saver", "standard")},
        {WriteTPIFOutputOrder, k("OutputOrder", 5), kwl("page-delivery", "reverse-order-face-down")},
        {WriteTPIFPrinterEmulation, k("DravikEmulation", 3), kwl("adjust-bw-darkness-mode", "dravik180-adjustable")},
        {WriteTPIFImageRotation, k("AdvancedRotateImage180", 1), kwl("page-rotation", "rotate-0")},
        {WriteTPIFImageRotation, k("AdvancedRotateImage180", 2), kwl("page-rotation", "rotate-180")},
        {WriteTPIFImageRotation, k("AdvancedRotateImage180", 0), ""},
        {WriteTPIFOutputColor, k("FinishingOutputColor", 1), kwl("color-effects-type", "monochrome-grayscale")},
        {WriteTPIFResolution, k("Resolution", 1),
         "\t\t<printer-resolution syntax=\"resolution\">\n\t\t\t<cross-feed syntax=\"integer\">300</cross-feed>\n"
         "\t\t\t<feed-direction syntax=\"integer\">300</feed-direction>\n"
         "\t\t\t<units syntax=\"integer\">3</units>\n\t\t</printer-resolution>\n"},
        {WriteTPIFResolution, k("Resolution", 4),
         "\t\t<printer-resolution syntax=\"resolution\">\n\t\t\t<cross-feed syntax=\"integer\">1200</cross-feed>\n"
         "\t\t\t<feed-direction syntax=\"integer\">1200</feed-direction>\n"
         "\t\t\t<units syntax=\"integer\">3</units>\n\t\t</printer-resolution>\n"},
        {WriteTPIFResolution, k("Resolution", 5), ""},
        {WriteTPIFPagesToPrint, k("PagesToPrintSelected", 0) + k("PagesToPrintFrom", 2), ""},
    };
    for (const auto& c : cases)
        EXPECT_SAME_BYTES(feature(c.writer, ticketFrom(c.keys)), c.expected) << c.keys;
    // A missing key writes nothing for every simple feature but duplex and output destination.
    for (Writer w :
         {WriteTPIFOPISubsitution, WriteTPIFOPIPreScan, WriteTPIFAntiAliasing, WriteTPIFHalftone,
          WriteTPIFLightenDarken, WriteTPIFTonerSaver, WriteTPIFOutputOrder, WriteTPIFPrinterEmulation,
          WriteTPIFImageRotation, WriteTPIFOutputColor, WriteTPIFResolution, WriteTPIFPagesToPrint, WriteTPIFJobType,
          WriteTPIFJobLevelStock, WriteTPIFInserts, WriteTPIFExceptions, WriteTPIFJobNotes})
        EXPECT_EQ(feature(w, ticketFrom("")), "");
}

MediaData filled(const std::string& stockBody)
{
    MediaData m;
    FillMediaData(m, ticketFrom(stockBody));
    return m;
}

TEST(TPifMediaFill, CustomNameOnly)
{
    // Present but not true: the record stays empty (no key, no source, every field unset).
    for (const char* flag : {"<false/>", "<integer>1</integer>", "<string>yes</string>"}) {
        MediaData m = filled(std::string("<key>CustomNameOnly</key>") + flag +
                             "<key>CustomName</key><string>N</string><key>Type</key><integer>1</integer>"
                             "<key>Weight</key><integer>90</integer><key>Size</key><integer>4</integer>");
        EXPECT_FALSE(m.mediaKey);
        EXPECT_EQ(m.source, kTPifUnset);
        EXPECT_EQ(m.type, kTPifUnset);
        EXPECT_EQ(m.color, kTPifUnset);
        EXPECT_EQ(m.weight, kTPifUnset);
        EXPECT_EQ(m.width, 0u);
        StringSink s;
        WriteTPifMedia(s.get(), m);
        EXPECT_SAME_BYTES(s.text, "\t\t<media-col syntax=\"collection\">\n\t\t</media-col>\n") << flag;
    }
    MediaData key = filled("<key>CustomNameOnly</key><true/><key>CustomName</key><string>A&lt;B</string>"
                           "<key>Weight</key><integer>90</integer>");
    EXPECT_EQ(key.mediaKey.value_or("-"), "A&lt;B");
    EXPECT_EQ(key.weight, kTPifUnset);
    EXPECT_FALSE(filled("<key>CustomNameOnly</key><true/>").mediaKey);
}

TEST(TPifMediaFill, SourceAloneWins)
{
    MediaData m = filled("<key>Source</key><integer>10</integer><key>CustomNameOnly</key><true/>"
                         "<key>CustomName</key><string>N</string><key>Type</key><integer>1</integer>");
    EXPECT_EQ(m.source, 0);
    EXPECT_FALSE(m.mediaKey);
    EXPECT_EQ(m.type, kTPifUnset);
    EXPECT_EQ(filled("<key>Source</key><integer>3</integer>").source, 1);
}

TEST(TPifMediaFill, TypeAndColourCodes)
{
    const std::vector<std::pair<int, int>> types = {{1, 0}, {2, 1}, {3, 6},  {4, 3},  {5, 4},  {6, 10}, {7, 9},
                                                    {8, 8}, {9, 5}, {10, 7}, {24, 2}, {33, 2}, {11, 11}};
    for (auto [code, index] : types)
        EXPECT_EQ(filled("<key>Type</key><integer>" + std::to_string(code) + "</integer>").type, index) << code;
    const std::vector<std::pair<int, int>> colours = {{1, 1}, {2, 4}, {3, 3},   {4, 5},  {5, 2},   {6, 0},   {7, 6},
                                                      {8, 7}, {9, 8}, {10, 12}, {11, 9}, {12, 10}, {13, 11}, {14, 13}};
    for (auto [code, index] : colours)
        EXPECT_EQ(filled("<key>Color</key><integer>" + std::to_string(code) + "</integer>").color, index) << code;
    EXPECT_EQ(filled("<key>Color</key><integer>-2147483648</integer>").color, kTPifUnset);

    MediaData ordered = filled("<key>Type</key><integer>6</integer><key>CustomType</key><string>Set &amp; 1</string>"
                               "<key>Modulus</key><integer>4</integer>");
    EXPECT_EQ(ordered.customTypeName.value_or(""), "Set &amp; 1");
    EXPECT_EQ(ordered.orderCount, 4);
    EXPECT_EQ(filled("<key>Type</key><integer>1</integer><key>Modulus</key><integer>4</integer>").orderCount, 0);
    EXPECT_EQ(filled("<key>Type</key><integer>7</integer>").customTypeName.value_or(""), "other");
    EXPECT_EQ(filled("<key>Color</key><integer>10</integer><key>CustomColor</key><string></string>")
                  .customColorName.value_or(""),
              "other");
    EXPECT_EQ(filled("<key>Type</key><integer>3</integer>").prePrinted, 1);
    EXPECT_EQ(filled("<key>Type</key><integer>10</integer>").recycled, 1);
}

TEST(TPifMediaFill, OtherAttributes)
{
    MediaData m = filled("<key>Punched</key><integer>2</integer><key>Finish</key><integer>2</integer>"
                         "<key>kGrain</key><integer>1</integer><key>SidesCoated</key><integer>4</integer>");
    EXPECT_EQ(m.holeCount, 3);
    EXPECT_EQ(m.tooth, 2);
    EXPECT_EQ(m.grain, 1);
    EXPECT_EQ(m.coatedSides, 4);
    EXPECT_EQ(m.coatingType, 1) << "a stored coating without its type is gloss";
    EXPECT_EQ(filled("<key>Punched</key><integer>1</integer>").holeCount, 0);
    EXPECT_EQ(
        filled("<key>SidesCoated</key><integer>2</integer><key>kCoatingType</key><integer>4</integer>").coatingType, 4);
}

TEST(TPifMediaFill, Sizes)
{
    struct Case {
        std::string body;
        uint32_t w, l;
    };
    const std::vector<Case> cases = {
        {"<key>Size</key><integer>1</integer>", 21600, 27900},
        {"<key>Size</key><integer>4</integer>", 21000, 29700},
        {"<key>Size</key><integer>3</integer>", 27900, 43200},
        {"<key>Size</key><integer>15</integer>", 32000, 45000},
        {"<key>Size</key><integer>70</integer>", 35300, 50000},
        {"<key>Size</key><integer>59</integer>", 10200, 15200},
        {"<key>Size</key><integer>43</integer>", 11400, 15200},
        {"<key>Size</key><integer>77</integer>", 9800, 22500},
        {"<key>Size</key><integer>75</integer><key>Width</key><integer>20000</integer>"
         "<key>Length</key><integer>30000</integer>",
         20000, 30000},
        {"<key>Width</key><integer>20000</integer><key>Length</key><integer>30000</integer>", 20000, 30000},
        {"<key>Size</key><integer>4</integer><key>Width</key><integer>1</integer><key>Length</key><integer>1</integer>",
         21000, 29700},
        {"<key>Size</key><integer>75</integer><key>Width</key><integer>-5</integer>"
         "<key>Length</key><integer>30000</integer>",
         0, 0},
        {"<key>Size</key><integer>999</integer>", 0, 0},
    };
    for (const auto& c : cases) {
        MediaData m = filled(c.body);
        EXPECT_EQ(m.width, c.w) << c.body;
        EXPECT_EQ(m.length, c.l) << c.body;
    }
}

TEST(TPifShift, UnitConversion)
{
    struct Case {
        int64_t value;
        bool inches, full;
        long expected;
    };
    const std::vector<Case> cases = {
        {100, true, false, 2540},
        {1, true, false, 25},
        {2, true, false, 51},
        {3, true, false, 76},
        {-1, true, false, -25},
        {-3, true, false, -76},
        {25, false, false, 250},
        {-12, false, false, -120},
        {2540, true, true, 2540},
        {-7, false, true, -7},
        {int64_t(1) << 40, true, false, INT32_MAX},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TPifShiftToHundredthsMm(c.value, c.inches, c.full), c.expected)
            << c.value << " " << c.inches << " " << c.full;

    // A dictionary without "Inches" is in inch mode.
    auto shift = ticketFrom("<key>X1</key><integer>10</integer><key>X2</key><integer>20</integer>"
                            "<key>Y1</key><integer>-10</integer>");
    EXPECT_SAME_BYTES(feature(WriteTPIFImageShift, shift),
                      "\t\t<x-side1-image-shift syntax=\"integer\">254</x-side1-image-shift>\n"
                      "\t\t<x-side2-image-shift syntax=\"integer\">508</x-side2-image-shift>\n"
                      "\t\t<y-side1-image-shift syntax=\"integer\">-254</y-side1-image-shift>\n"
                      "\t\t<y-side2-image-shift syntax=\"integer\">0</y-side2-image-shift>\n");
}

TEST(TPifBackgroundForms, SaveNamedAfterTheDocument)
{
    auto t = ticketFrom("<key>com.apple.print.JobInfo.PMJobName</key><string>doc&lt;1&gt;</string>"
                        "<key>com.talmo.print.BackgroundFormsOptions</key><dict>"
                        "<key>UseExistingForm</key><integer>1</integer><key>UseDocumentName</key><integer>1</integer>"
                        "<key>NewFormString</key><string>ignored</string></dict>");
    const std::string out = feature(WriteTPIFBackgroundForms, t);
    EXPECT_NE(
        out.find("\t\t\t\t\t<form-save-name syntax=\"name\" xml:space=\"preserve\">doc&lt;1&gt;</form-save-name>\n"),
        std::string::npos)
        << out;
    auto named = ticketFrom("<key>com.talmo.print.BackgroundFormsOptions</key><dict>"
                            "<key>UseDocumentName</key><integer>0</integer>"
                            "<key>NewFormString</key><string>Form B</string></dict>");
    EXPECT_NE(feature(WriteTPIFBackgroundForms, named).find(">Form B</form-save-name>"), std::string::npos);
    EXPECT_EQ(feature(WriteTPIFBackgroundForms, ticketFrom("")), "");
}

TEST(TPifJobType, Dispositions)
{
    const std::string open = "\t\t<job-save-disposition syntax=\"collection\">\n";
    auto jt = [](const std::string& body) {
        return feature(WriteTPIFJobType, ticketFrom("<key>com.apple.print.JobInfo.PMJobName</key><string>Doc</string>"
                                                    "<key>com.talmo.print.JobType</key><dict>" +
                                                    body + "</dict>"));
    };
    EXPECT_SAME_BYTES(jt(""), open + "\t\t\t<save-disposition syntax=\"keyword\">none</save-disposition>\n"
                                     "\t\t</job-save-disposition>\n");
    EXPECT_SAME_BYTES(jt("<key>JobType</key><integer>2</integer>"),
                      "\t\t\t<job-hold-until syntax=\"keyword\">indefinite</job-hold-until>\n");
    EXPECT_EQ(jt("<key>JobType</key><integer>9</integer>"), "");
    EXPECT_NE(jt("<key>JobType</key><integer>3</integer>").find(">save-only<"), std::string::npos);
    EXPECT_NE(
        jt("<key>JobType</key><integer>3</integer><key>SaveDisposition</key><integer>1</integer>").find(">save-only<"),
        std::string::npos);
    EXPECT_NE(
        jt("<key>JobType</key><integer>3</integer><key>SaveDisposition</key><integer>2</integer>").find(">print-save<"),
        std::string::npos);
    const std::string printSave = jt("<key>JobType</key><integer>4</integer><key>UseJobName</key><true/>"
                                     "<key>SavedJobName</key><string>X</string>"
                                     "<key>SavedJobLocation</key><string>file:///jobs/a&amp;b/</string>"
                                     "<key>MediaType</key><integer>9</integer>");
    EXPECT_SAME_BYTES(printSave, open +
                                     "\t\t\t<save-disposition syntax=\"keyword\">print-save</save-disposition>\n"
                                     "\t\t\t<save-info syntax=\"1setOf\">\n"
                                     "\t\t\t\t<value syntax=\"collection\">\n"
                                     "\t\t\t\t\t<save-location syntax=\"uri\">file:///jobs/a&amp;b/</save-location>\n"
                                     "\t\t\t\t\t<save-name syntax=\"name\" xml:space=\"preserve\">Doc</save-name>\n"
                                     "\t\t\t\t</value>\n"
                                     "\t\t\t</save-info>\n"
                                     "\t\t</job-save-disposition>\n");
}

TEST(TPifExceptions, DefaultsAndPageFields)
{
    auto t = ticketFrom("<key>com.talmo.print.SpecialPages.ExceptionList</key><array>"
                        "<string>not a page</string>"
                        "<dict><key>SidesImaged</key><integer>3</integer><key>Stock</key><dict/></dict>"
                        "<dict><key>StartPage</key><integer>4</integer><key>EndPage</key><integer>6</integer>"
                        "<key>SidesImaged</key><integer>7</integer></dict>"
                        "</array>");
    const std::string out = feature(WriteTPIFExceptions, t);
    auto range = [](int lo, int hi) {
        return "\t\t\t<pages syntax=\"1setOf\">\n\t\t\t\t<value syntax=\"rangeOfInteger\">\n"
               "\t\t\t\t\t<lower-bound syntax=\"integer\">" +
               std::to_string(lo) +
               "</lower-bound>\n"
               "\t\t\t\t\t<upper-bound syntax=\"integer\">" +
               std::to_string(hi) + "</upper-bound>\n\t\t\t\t</value>\n\t\t\t</pages>\n";
    };
    const std::string docs = "\t\t\t<input-documents syntax=\"1setOf\">\n\t\t\t\t<value syntax=\"rangeOfInteger\">\n"
                             "\t\t\t\t\t<lower-bound syntax=\"integer\">1</lower-bound>\n"
                             "\t\t\t\t\t<upper-bound syntax=\"integer\">1</upper-bound>\n\t\t\t\t</value>\n"
                             "\t\t\t</input-documents>\n";
    const std::string media = "\t\t<media-col syntax=\"collection\">\n\t\t</media-col>\n";
    EXPECT_SAME_BYTES(out, "\t\t<page-overrides syntax=\"1setOf\">\n"
                           "\t\t\t<value syntax=\"collection\">\n" +
                               docs + range(1, 1) + kwl("sides", "two-sided-short-edge") + media +
                               "\t\t\t</value>\n"
                               "\t\t\t<value syntax=\"collection\">\n" +
                               docs + range(4, 6) + media +
                               "\t\t\t</value>\n"
                               "\t\t</page-overrides>\n");
    EXPECT_EQ(feature(WriteTPIFExceptions, ticketFrom("<key>com.talmo.print.SpecialPages.ExceptionList</key><array/>")),
              "");
}

TEST(TPifOperationAttributes, NameSources)
{
    auto names = ticketFrom("<key>com.apple.print.JobInfo.PMJobName</key><string>Doc</string>"
                            "<key>com.talmo.print.JobNotesJobName</key><string>Notes name</string>"
                            "<key>com.talmo.print.JobNotesSenderName</key><string>Sam &amp; Co</string>");
    EXPECT_NE(feature(WriteTPIFJobNameAndUser, names).find(">Notes name</job-name>"), std::string::npos);
    names->setBool("com.talmo.print.JobNotesUseJobName", true);
    const std::string out = feature(WriteTPIFJobNameAndUser, names);
    EXPECT_NE(out.find(">Doc</job-name>"), std::string::npos);
    EXPECT_NE(out.find(">Sam &amp; Co</requesting-user-name>"), std::string::npos);
}

TEST(TPifJobNotesFeature, CarriageReturnSurvivesAsReference)
{
    auto t = pl::makeDict();
    t->setString("com.talmo.print.JobNotesMessage", "a\rb\x01<c>");
    EXPECT_SAME_BYTES(feature(WriteTPIFJobNotes, t),
                      "\t\t<job-message-to-operator syntax=\"text\" xml:space=\"preserve\">a&#xD;b&lt;c&gt;"
                      "</job-message-to-operator>\n");
}

} // namespace
