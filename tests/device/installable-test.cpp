#include "device/device.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace talmo;

namespace {

std::string shipped(const char* name) { return std::string(TALMO_SOURCE_DIR) + "/resources/ppd/" + name; }
std::string fixture(const char* name) { return std::string(TALMO_SOURCE_DIR) + "/tests/device/data/" + name; }

class Installable : public ::testing::Test {
protected:
    void TearDown() override
    {
        UnloadInstallableOptions();
        PPDCloseCurrent();
    }
};

TEST_F(Installable, LoadsTheMarkedChoicesOnceUntilUnloaded)
{
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-studio-press.ppd")), kTalmoInstalledFeatureMap));
    std::string choice;
    EXPECT_TRUE(getInstallableOptionValue("TLPostPrintInserter", &choice));
    EXPECT_EQ(choice, "False");
    EXPECT_FALSE(getInstallableOptionValue("PageSize", nullptr)) << "not in the group";
    PPDHandle office = PPDOpenAsCurrent(shipped("talmo-office-press.ppd"));
    EXPECT_FALSE(LoadInstallableOptions(office, kTalmoInstalledFeatureMap));
    ASSERT_TRUE(getInstallableOptionValue("Option1", &choice));
    EXPECT_EQ(choice, "ProfFinisher") << "the first table stays";
    UnloadInstallableOptions();
    EXPECT_TRUE(LoadInstallableOptions(office, kTalmoInstalledFeatureMap));
    ASSERT_TRUE(getInstallableOptionValue("Option1", &choice));
    EXPECT_EQ(choice, "SCT");
}

TEST_F(Installable, NoGroupLoadsNothingButKeepsTheMap)
{
    PPDHandle ppd = PPDOpenAsCurrent(fixture("for-tests-no-installable.ppd"));
    ASSERT_NE(ppd, nullptr);
    EXPECT_FALSE(LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap));
    EXPECT_FALSE(getInstalledFeature("StackerTray1Key"));
    // Loaded, even if empty: a second load is still refused.
    EXPECT_FALSE(LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap));
}

// A map for tests only, so the rules are checked apart from the shipped rows.
const InstalledFeatureMap kTestMap[] = {{"Always", nullptr, nullptr, "AlwaysKey", 1},
                                        {"Stacker", "Option1", "HCS", "StackerHCS", 17},
                                        {"Stacker", "Option1", "ProfFinisher", "StackerProf", 4},
                                        {"Inserter", "TLInserter", "True", "InserterKey", 9},
                                        {"Missing", "NoSuchOption", "True", "MissingA", 5},
                                        {"Missing", "Option1", "SCT", "MissingB", 6},
                                        {nullptr, nullptr, nullptr, nullptr, 0}};

TEST_F(Installable, FeatureIsInstalledWhenAnyRowHolds)
{
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-studio-press.ppd")), kTestMap));
    const struct {
        const char* name;
        bool installed;
        int32_t value;
    } cases[] = {{"Always", true, 1},
                 {"Stacker", true, 4},
                 {"Inserter", true, 9},
                 {"Missing", false, -1},
                 {"Unknown", false, -1}};
    for (const auto& c : cases) {
        EXPECT_EQ(getInstalledFeature(c.name), c.installed) << c.name;
        EXPECT_EQ(getInstallableOptionTicketValue(c.name), c.value) << c.name;
    }
}

TEST_F(Installable, DeviceMimicByModelAndFinisher)
{
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-studio-press.ppd")), kTalmoInstalledFeatureMap));
    testing::internal::CaptureStderr();
    EXPECT_STREQ(DeviceMimicFilenameForModel("Talmo Studio Press"), "Mimic_FF_FENN-PN_Professional.gif");
    EXPECT_EQ(DeviceMimicFilenameForModel("talmo studio press"), nullptr); // exact comparison
    EXPECT_EQ(DeviceMimicFilenameForModel("Other Press"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    UnloadInstallableOptions();
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-office-press.ppd")), kTalmoInstalledFeatureMap));
    testing::internal::CaptureStderr();
    EXPECT_STREQ(DeviceMimicFilenameForModel("Talmo Office Press"), "Mimic_FF_FENN_SingleCatchTray.gif");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "In position  --- 1\nIn position -- 2\nIn position -- 3\n");

    UnloadInstallableOptions(); // "Option1" missing
    testing::internal::CaptureStderr();
    EXPECT_EQ(DeviceMimicFilenameForModel("Talmo Office Press"), nullptr);
    EXPECT_EQ(DeviceMimicFilenameForModel("Talmo Studio Press"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "In position  --- 1\n");
}

} // namespace

namespace {

TEST_F(Installable, TheFinisherChoosesThePictureOfEachSet)
{
    const struct {
        const char* option1;
        const char* studio;
        const char* office;
    } rows[] = {
        {"HCSD3Finisher", "Mimic_FF_FENN-PN_LHCS+LPCF.gif", "Mimic_FF_FENN_HCS+LPCF.gif"},
        {"BFMBFM", nullptr, nullptr}, // a finisher without a picture
    };
    std::ostringstream read;
    read << std::ifstream(shipped("talmo-studio-press.ppd")).rdbuf();
    const std::string src = read.str();
    const std::string path = testing::TempDir() + "finisher.ppd";
    for (const auto& r : rows) {
        std::string text = src;
        const std::string from = "*DefaultOption1: ProfFinisher";
        text.replace(text.find(from), from.size(), std::string("*DefaultOption1: ") + r.option1);
        std::ofstream(path, std::ios::binary) << text;
        UnloadInstallableOptions();
        ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(path), kTalmoInstalledFeatureMap)) << r.option1;
        testing::internal::CaptureStderr();
        const char* studio = DeviceMimicFilenameForModel("Talmo Studio Press");
        const char* office = DeviceMimicFilenameForModel("Talmo Office Press");
        testing::internal::GetCapturedStderr();
        EXPECT_STREQ(studio, r.studio) << r.option1;
        EXPECT_STREQ(office, r.office) << r.option1;
    }
}

} // namespace

namespace {

TEST_F(Installable, FeatureLabelComesFromTheFirstHoldingRowOrTheLastRow)
{
    namespace fs = std::filesystem;
    const fs::path dir = fs::path(testing::TempDir()) / "labels.bundle";
    fs::create_directories(dir / "Resources/en.lproj");
    std::ofstream(dir / "Resources/en.lproj/Localizable.strings")
        << "\"StackerHCS\" = \"HCS stacker\";\n\"StackerProf\" = \"Finisher stacker\";\n"
           "\"MissingB\" = \"Last row\";\n\"AlwaysKey\" = \"Always there\";\n";
    auto bundle = Bundle::open(dir.string());
    ASSERT_TRUE(bundle);
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-studio-press.ppd")), kTestMap));
    const std::pair<const char*, const char*> cases[] = {
        {"Stacker", "Finisher stacker"}, // ProfFinisher holds the second row
        {"Always", "Always there"},      // a row without an option always holds
        {"Missing", "Last row"},         // nothing holds: the last row's key
        {"Inserter", "STRING NOT FOUND"}, {"Unknown", "STRING NOT FOUND"},
    };
    for (const auto& [name, label] : cases)
        EXPECT_EQ(CopyLocalizedStringForInstalledFeatureFromPlugin(name, &*bundle), label) << name;
}

} // namespace
