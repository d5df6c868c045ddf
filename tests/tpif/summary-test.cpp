// The import/export summary: exact lines, sections and the "STRING NOT FOUND" fallback.
#include "tpif-test-util.h"

#include "platform/plist.h"

using namespace talmo;

namespace {

// Keys read as themselves, but for the two separators, so the lines show the format.
std::string labels(std::string_view key)
{
    if (key == ":")
        return ": ";
    if (key == ",")
        return ", ";
    return std::string(key);
}

pl::DictPtr ticketFrom(const std::string& body)
{
    pl::ParseResult r;
    auto d = pl::as<pl::Dictionary>(pl::readPlist(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body + "</dict></plist>", &r));
    EXPECT_TRUE(d) << r.message;
    return d;
}

std::vector<std::string> summary(const pl::DictPtr& ticket)
{
    std::vector<std::string> lines;
    buildSummaryText(ticket, lines, labels);
    return lines;
}

TEST(TpifSummary, LinesOfEverySection)
{
    auto t = ticketFrom(R"(
<key>com.talmo.print.JobNotesJobName</key><string>Report</string>
<key>com.talmo.print.JobNotesSenderName</key><string>Ann</string>
<key>com.talmo.print.JobNotesMessage</key><string>Handle with care</string>
<key>com.talmo.print.FinishingDuplex</key><integer>2</integer>
<key>com.talmo.print.JobLevelStock</key><dict><key>Color</key><integer>10</integer>
  <key>CustomColor</key><string>Sky</string><key>CustomName</key><string>Silk 120</string>
  <key>Weight</key><integer>120</integer><key>Description</key><string>Silk</string></dict>
<key>com.talmo.print.FinishingSlipSheet</key><integer>2</integer>
<key>com.talmo.print.FinishingOptions</key><integer>50</integer>
<key>com.talmo.print.FinishingStaple2Value</key><integer>10</integer>
<key>com.talmo.print.FinishingHolePunchValue</key><integer>33</integer>
<key>com.talmo.print.FinishingZFoldValue</key><integer>39</integer>
<key>com.talmo.print.FinishingOutputDestination</key><integer>5</integer>
<key>com.talmo.print.ImageShiftOptionsJob</key><dict><key>Option</key><integer>5</integer></dict>
<key>com.talmo.print.AdvancedRotateImage180</key><integer>2</integer>
<key>com.talmo.print.OPISubsitution</key><integer>3</integer>
<key>com.talmo.print.OPIPrescan</key><integer>4</integer>
<key>com.apple.print.PrintSettings.PMDuplexing</key><integer>3</integer>)");
    const std::vector<std::string> expected = {
        "JobNotes",
        "\t\tJob Name: Report",
        "\t\tSender Name: Ann",
        "\t\tSpecialInstructions: Handle with care",
        " ",
        "Job Setup",
        "\t\tDuplex: Duplex",
        "\t\tPaperStock: ",
        "\t\t\tStockColor = Sky",
        "\t\t\tStockName = Silk 120",
        "\t\t\tStockWeight = 120 gsm",
        "\t\t\tStockDescription = Silk",
        " ",
        "Output",
        "\t\tSlipSheet: On",
        "\t\tStapling/Finishing: ",
        "\t\t\t2 Staples, Portrait - Left, Landscape - Top",
        "\t\t\tHolePunch, Portrait - Top, Landscape - Right",
        "\t\t\tZFoldRightBind",
        "\t\tOutput Location: StackerTray1",
        " ",
        "Image Adjustment",
        "\t\tImageShift: MirrorBoth",
        "\t\tRotation: On",
        "\t\tOPI: False",
        "\t\tOPI Prescan: Gather",
        " ",
        " ",
        " ",
        " ",
        " ",
    };
    EXPECT_EQ(summary(t), expected);
}

TEST(TpifSummary, EmptyTicketGivesTheEightSectionsAndUnknownValuesShowTheFallback)
{
    const std::vector<std::string> empty = {"JobNotes",         " ", "Job Setup", " ", "Output", " ",
                                            "Image Adjustment", " ", " ",         " ", " ",      " "};
    EXPECT_EQ(summary(pl::makeDict()), empty);
    EXPECT_EQ(summary(nullptr), empty);

    auto lines = summary(ticketFrom("<key>com.talmo.print.FinishingOutputDestination</key><integer>99</integer>"
                                    "<key>com.talmo.print.FinishingOptions</key><integer>40</integer>"
                                    "<key>com.talmo.print.FinishingFoldValue</key><integer>44</integer>"
                                    "<key>com.talmo.print.OPIPrescan</key><integer>9</integer>"));
    EXPECT_NE(std::find(lines.begin(), lines.end(), "\t\tOutput Location: STRING NOT FOUND"), lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "\t\tStapling/Finishing: BiFoldMultipleOutside"), lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "\t\tOPI Prescan: STRING NOT FOUND"), lines.end());
}

TEST(TpifSummary, CustomFinishingShowsItsTemplateAndNamedChoicesTheirNames)
{
    struct Case {
        const char* body;
        const char* line;
    };
    const Case cases[] = {
        {"<key>com.talmo.print.FinishingOptions</key><integer>22</integer>"
         "<key>com.talmo.print.FinishingCustom</key><string>Saddle &amp; trim</string>",
         "\t\tStapling/Finishing: Saddle & trim"},
        {"<key>com.talmo.print.FinishingOptions</key><integer>24</integer>"
         "<key>com.talmo.print.BookletFoldStaple</key><integer>8</integer>",
         "\t\tStapling/Finishing: BookletFoldStaple"},
        {"<key>com.talmo.print.FinishingOptions</key><integer>18</integer>"
         "<key>com.talmo.print.FinishingFoldValue</key><integer>20</integer>",
         "\t\tStapling/Finishing: FoldZFold"},
        {"<key>com.talmo.print.FinishingOptions</key><integer>3</integer>",
         "\t\tStapling/Finishing: SignatureBookletMaker"},
        {"<key>com.talmo.print.FinishingOptions</key><integer>4</integer>"
         "<key>com.talmo.print.FinishingStaple1Value</key><integer>6</integer>",
         "\t\t\t1 Staple, Portrait - Bottom Left, Landscape - Top Left"},
        {"<key>com.talmo.print.FinishingSlipSheet</key><integer>1</integer>", "\t\tSlipSheet: Off"},
        {"<key>com.talmo.print.AdvancedRotateImage180</key><integer>0</integer>", "\t\tRotation: PrinterDefault"},
    };
    for (const auto& c : cases) {
        auto lines = summary(ticketFrom(c.body));
        EXPECT_NE(std::find(lines.begin(), lines.end(), c.line), lines.end()) << c.body;
    }
}

TEST(TpifSummary, DialogTextsOfTheTwoModes)
{
    EXPECT_STREQ(TPIFSummaryTitle(kTPIFExportMode), "Export Talmo Job Ticket");
    EXPECT_STREQ(TPIFSummaryTitle(kTPIFImportMode), "Import Talmo Job Ticket");
    EXPECT_STREQ(TPIFSummaryDefaultButton(kTPIFExportMode), "Export...");
    EXPECT_STREQ(TPIFSummaryDefaultButton(kTPIFImportMode), "Import");
}

} // namespace
