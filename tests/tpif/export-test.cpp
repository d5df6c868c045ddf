// Export of the session's settings to a TPIF file, and the shift unit conversion at its
// rounding and overflow edges. (The shipped examples' documents are compared with their
// golden files by export-golden.sh.)
#include "tpif-test-util.h"

#include "platform/session.h"

#include <filesystem>

using namespace talmo;

namespace {

struct ExportFixture : ::testing::Test {
    void SetUp() override
    {
        dir = std::filesystem::temp_directory_path() / ("tpif-export-test-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
        SetCurrentPrintSession(&session);
    }
    void TearDown() override
    {
        SetCurrentPrintSession(nullptr);
        TPIFSetPDESyncHandler(nullptr);
        std::filesystem::permissions(dir, std::filesystem::perms::owner_all);
        std::filesystem::remove_all(dir);
    }
    std::string path(const char* name) const { return (dir / name).string(); }
    void set(const char* key, const pl::ValuePtr& v) { ASSERT_EQ(session.printSettings().set(key, v, "T"), noErr); }

    PrintSession session;
    std::filesystem::path dir;
    tpiftest::DiagCapture quiet;
};

TEST_F(ExportFixture, OnlyTheSystemsOwnItemsReachTheDocumentAfterASync)
{
    set("com.talmo.print.TPIFOptions", tpiftest::plistDict("<key>TPIFOptionAll</key><true/>"));
    set("com.apple.print.PrintSettings.PMDuplexing", pl::makeInt(3)); // consulted only when given
    std::vector<int> directions;
    TPIFSetPDESyncHandler([&](PrintSession* s, int direction) {
        directions.push_back(s == &session ? direction : -1);
        // The panels write their state during the sync: it must be in the document.
        s->printSettings().set("com.talmo.print.FinishingOutputColor", pl::makeInt(1), "com.talmo.printingmanager");
    });
    ASSERT_EQ(TPIFExportToFileAtPath(path("a.tpif")), noErr);
    EXPECT_EQ(directions, std::vector<int>{0});
    const std::string doc = tpiftest::readFile(path("a.tpif"));
    EXPECT_NE(doc.find("\t\t<sides syntax=\"keyword\">one-sided</sides>\n"), std::string::npos);
    EXPECT_NE(doc.find("<color-effects-type syntax=\"keyword\">monochrome-grayscale</color-effects-type>"),
              std::string::npos);
    EXPECT_EQ(doc.substr(doc.size() - 7), "</tpif>");
}

TEST_F(ExportFixture, WithoutOptionsTheFileIsEmpty)
{
    set("com.talmo.print.FinishingDuplex", pl::makeInt(2));
    ASSERT_EQ(TPIFExportToFileAtPath(path("empty.tpif")), noErr);
    EXPECT_EQ(std::filesystem::file_size(path("empty.tpif")), 0u); // throws (fails) when missing
}

TEST_F(ExportFixture, FailuresLeaveTheOldFileAndReportAStatus)
{
    EXPECT_EQ(TPIFExportToFileAtPath(""), paramErr);
    SetCurrentPrintSession(nullptr);
    EXPECT_EQ(TPIFExportToFileAtPath(path("x.tpif")), kPMNoSession);
    SetCurrentPrintSession(&session);

    std::ofstream(path("old.tpif")) << "old";
    if (::geteuid() != 0) { // root writes into read-only folders
        std::filesystem::permissions(dir, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
        EXPECT_EQ(TPIFExportToFileAtPath(path("old.tpif")), kTPIFExportIOErr);
        std::filesystem::permissions(dir, std::filesystem::perms::owner_all);
        EXPECT_EQ(tpiftest::readFile(path("old.tpif")), "old");
    }
    EXPECT_EQ(TPIFExportToFileAtPath(path("missing-folder/x.tpif")), kTPIFExportIOErr);
}

TEST(TPifShift, UnitConversion)
{
    const struct {
        int64_t value;
        bool inches, full;
        long expected;
    } cases[] = {
        // clang-format off
        {100, true, false, 2540}, {1, true, false, 25}, {2, true, false, 51}, {3, true, false, 76},
        {-1, true, false, -25}, {-3, true, false, -76}, {25, false, false, 250}, {-12, false, false, -120},
        {2540, true, true, 2540}, {-7, false, true, -7}, {int64_t(1) << 40, true, false, INT32_MAX},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(TPifShiftToHundredthsMm(c.value, c.inches, c.full), c.expected)
            << c.value << " " << c.inches << " " << c.full;
}

} // namespace
