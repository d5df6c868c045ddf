// The IPP attributes a ticket determines, one row per rule of the mapping.
#include "host/print-job.h"

#include <gtest/gtest.h>

using namespace talmo;
using namespace talmo::host;

namespace {

pl::DictPtr ticket(const std::string& items)
{
    auto d = pl::as<pl::Dictionary>(pl::readPlist("<plist version=\"1.0\"><dict>" + items + "</dict></plist>"));
    EXPECT_TRUE(d) << items;
    return d ? d : pl::makeDict();
}

std::string n(const char* key, int v)
{
    return std::string("<key>") + key + "</key><integer>" + std::to_string(v) + "</integer>";
}

std::string opts(const JobRequest& r)
{
    std::string s;
    for (const auto& o : r.options)
        s += (s.empty() ? "" : " | ") + o.name + "=" + o.value;
    return s;
}

TEST(JobAttributes, TicketValuesBecomeIppAttributes)
{
    const std::string stock = "<key>com.talmo.print.JobLevelStock</key><dict>";
    struct Row {
        std::string items;
        std::string expected;
    } rows[] = {
        {"", ""},
        {n("com.apple.print.PrintSettings.PMCopies", 0) + n("com.talmo.print.FinishingDuplex", -2147483648), ""},
        {n("com.apple.print.PrintSettings.PMCopies", 4) + n("com.talmo.print.FinishingDuplex", 3),
         "copies=4 | sides=two-sided-short-edge"},
        // The dialog's range wins over the Advanced panel's, which counts only when selected.
        {n("com.apple.print.PrintSettings.PMFirstPage", 2) + n("com.apple.print.PrintSettings.PMLastPage", 5) +
             n("com.talmo.print.PagesToPrintSelected", 1) + n("com.talmo.print.PagesToPrintFrom", 7),
         "page-ranges=2-5"},
        {n("com.talmo.print.PagesToPrintSelected", 1) + n("com.talmo.print.PagesToPrintFrom", 3) +
             n("com.talmo.print.PagesToPrintTo", 9),
         "page-ranges=3-9"},
        {n("com.talmo.print.PagesToPrintSelected", 0) + n("com.talmo.print.PagesToPrintFrom", 3), ""},
        {n("com.apple.print.PrintSettings.PMFirstPage", 5) + n("com.apple.print.PrintSettings.PMLastPage", 2), ""},
        {n("com.talmo.print.FinishingOutputColor", 1) + n("com.talmo.print.FinishingOutputDestination", 5),
         "output-bin=stacker-1 | print-color-mode=monochrome"},
        {n("com.talmo.print.FinishingOutputDestination", 99), ""},
        // Finishing: option and sub-values together; offset adds jog-offset.
        {n("com.talmo.print.FinishingOptions", 4) + n("com.talmo.print.FinishingStaple1Value", 7), "finishings=22"},
        {n("com.talmo.print.FinishingOptions", 9) + n("com.talmo.print.FinishingStaple2Value", 14), ""},
        {n("com.talmo.print.FinishingOptions", 49) + n("com.talmo.print.FinishingStaple2Value", 12) +
             n("com.talmo.print.FinishingHolePunchValue", 35) + n("com.talmo.print.FinishingHolePunchOptions", 5),
         "finishings=31,84"},
        {n("com.talmo.print.FinishingOptions", 50) + n("com.talmo.print.FinishingStapleCenterValue", 26) +
             n("com.talmo.print.FinishingHolePunchValue", 33),
         "finishings=8,79,100"},
        {n("com.talmo.print.FinishingOptions", 30) + n("com.talmo.print.FinishingHolePunchValue", 34) +
             n("com.talmo.print.FinishingOffset", 3),
         "finishings=81,14"},
        {n("com.talmo.print.FinishingOptions", 14) + n("com.talmo.print.FinishingBindValue", 16), "finishings=52"},
        {n("com.talmo.print.FinishingOptions", 40) + n("com.talmo.print.FinishingFoldValue", 46), "finishings=96"},
        {n("com.talmo.print.FinishingOptions", 24) + n("com.talmo.print.FinishingFoldValue", 53), "finishings=13"},
        {n("com.talmo.print.FinishingOptions", 1) + n("com.talmo.print.FinishingOffset", 2), "finishings=3"},
        {n("com.talmo.print.FinishingOptions", 22), ""},
        // The job stock: a size code measured by the size table, custom dimensions, custom texts.
        {stock + n("Size", 5) + n("Type", 24) + n("Color", 6) + n("Weight", 200) + "</dict>",
         "media-col={media-size={x-dimension=29700 y-dimension=42000} media-type=tab-stock "
         "media-weight-metric=200 media-color=no-color}"},
        {stock + n("Size", 75) + n("Width", 33000) + n("Length", 48800) + n("Type", 7) +
             "<key>CustomType</key><string>Kraft \"brown\", 2</string>" + n("Color", 10) +
             "<key>CustomColor</key><string>sand</string></dict>",
         "media-col={media-size={x-dimension=33000 y-dimension=48800} media-type=\"Kraft \\\"brown\\\", 2\" "
         "media-color=\"sand\"}"},
        {stock + n("Size", -2147483648) + "</dict>", ""},
        {"<key>com.talmo.print.JobNotesMessage</key><string>Use, the \"blue\" cover</string>",
         "job-message-to-operator=Use, the \"blue\" cover"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(opts(JobRequestFromTicket(ticket(row.items), "login")), row.expected) << row.items;
}

TEST(JobAttributes, JobNotesNameTheJobAndItsSender)
{
    const std::string doc = "<key>com.apple.print.JobInfo.PMJobName</key><string>report.pdf</string>";
    const std::string notes = "<key>com.talmo.print.JobNotesJobName</key><string>Notes name</string>"
                              "<key>com.talmo.print.JobNotesSenderName</key><string>dana</string>";
    struct Row {
        std::string items;
        const char* job;
        const char* user;
    } rows[] = {
        {doc + notes, "report.pdf", "login"}, // missing flags mean "use the document and login names"
        {doc + notes +
             "<key>com.talmo.print.JobNotesUseJobName</key><false/>"
             "<key>com.talmo.print.JobNotesSenderUseLoginName</key><false/>",
         "Notes name", "dana"},
        {doc + "<key>com.talmo.print.JobNotesUseJobName</key><false/>"
               "<key>com.talmo.print.JobNotesSenderUseLoginName</key><false/>",
         "report.pdf", "login"},
        {"", "Untitled", "login"},
    };
    for (const Row& row : rows) {
        const JobRequest r = JobRequestFromTicket(ticket(row.items), "login");
        EXPECT_EQ(r.jobName, row.job) << row.items;
        EXPECT_EQ(r.userName, row.user) << row.items;
    }
}

TEST(JobAttributes, TheTpifTicketTravelsWhenAskedFor)
{
    const std::string options = "<key>com.talmo.print.TPIFOptions</key><dict><key>TPIFOptionAll</key><true/></dict>";
    struct Row {
        std::string items;
        bool wanted;
    } rows[] = {
        {"", false},
        {n("com.talmo.print.EmitTPIF", 1), false},
        {options, true},
        {options + n("com.talmo.print.EmitTPIF", 1), true},
        {options + n("com.talmo.print.EmitTPIF", 0), false},
        {options + n("com.talmo.print.EmitTPIF", 2), false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(WantsTPIF(ticket(row.items)), row.wanted) << row.items;
}

} // namespace
