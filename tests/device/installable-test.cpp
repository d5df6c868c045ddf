#include "device/device.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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

TEST_F(Installable, LoadsTheMarkedChoiceOfEveryInstallableOption)
{
    PPDHandle ppd = PPDOpenAsCurrent(shipped("talmo-studio-press.ppd"));
    ASSERT_NE(ppd, nullptr);
    ASSERT_TRUE(LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap));
    const std::pair<const char*, const char*> expected[] = {{"Option1", "ProfFinisher"},
                                                            {"TLInserter", "True"},
                                                            {"TLPostPrintInserter", "False"},
                                                            {"TLAutoSwitchTray", "True"}};
    for (const auto& [option, choice] : expected) {
        std::string got;
        EXPECT_TRUE(getInstallableOptionValue(option, &got)) << option;
        EXPECT_EQ(got, choice) << option;
    }
    EXPECT_FALSE(getInstallableOptionValue("PageSize", nullptr)); // not in the group
}

TEST_F(Installable, SecondLoadKeepsTheFirstTable)
{
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-studio-press.ppd")), kTalmoInstalledFeatureMap));
    PPDHandle office = PPDOpenAsCurrent(shipped("talmo-office-press.ppd"));
    EXPECT_FALSE(LoadInstallableOptions(office, kTalmoInstalledFeatureMap));
    std::string choice;
    ASSERT_TRUE(getInstallableOptionValue("Option1", &choice));
    EXPECT_EQ(choice, "ProfFinisher");
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

TEST_F(Installable, ShippedMapFollowsTheFinisherModel)
{
    const struct {
        const char* ppd;
        const char* feature;
        bool installed;
    } cases[] = {
        {"talmo-studio-press.ppd", "StackerTray1Key", true}, // ProfFinisher
        {"talmo-studio-press.ppd", "StackerTray2Key", false},
        {"talmo-studio-press.ppd", "OmbraInserter", true},
        {"talmo-studio-press.ppd", "PostPrintInserterKey", false},
        {"talmo-studio-press.ppd", "AutoSwitchTrayKey", true},
        {"talmo-studio-press.ppd", "SimpleCatchTrayKey", false},
        {"talmo-office-press.ppd", "SimpleCatchTrayKey", true}, // SCT
        {"talmo-office-press.ppd", "StackerTray1Key", false},
        {"talmo-office-press.ppd", "OmbraInserter", false},
    };
    for (const auto& c : cases) {
        UnloadInstallableOptions();
        ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(shipped(c.ppd)), kTalmoInstalledFeatureMap));
        EXPECT_EQ(getInstalledFeature(c.feature), c.installed) << c.ppd << " " << c.feature;
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

TEST_F(Installable, EveryFinisherHasItsPictureInBothSets)
{
    const struct {
        const char* option1;
        const char* studio;
        const char* office;
    } rows[] = {
        {"SCT", "Mimic_FF_FENN-PN_SingleCatchTray.gif", "Mimic_FF_FENN_SingleCatchTray.gif"},
        {"OCT", "Mimic_FF_FENN-PN_Standard.gif", "Mimic_FF_FENN_Standard.gif"},
        {"AdvFinisher", "Mimic_FF_FENN-PN_Advanced.gif", "Mimic_FF_FENN_Advanced.gif"},
        {"ProfFinisher", "Mimic_FF_FENN-PN_Professional.gif", "Mimic_FF_FENN_Professional.gif"},
        {"ProdFinisher", "Mimic_FF_FENN-PN_Production.gif", "Mimic_FF_FENN_Production.gif"},
        {"HCS", "Mimic_FF_FENN-PN_HCS.gif", "Mimic_FF_FENN_HCS.gif"},
        {"D3Finisher", "Mimic_FF_FENN-PN_LPCF.gif", "Mimic_FF_FENN_LPCF.gif"},
        {"HCSD3Finisher", "Mimic_FF_FENN-PN_LHCS+LPCF.gif", "Mimic_FF_FENN_HCS+LPCF.gif"},
        {"BFMBFM", nullptr, nullptr}, // a finisher without a picture
    };
    std::string src;
    {
        FILE* f = std::fopen(shipped("talmo-studio-press.ppd").c_str(), "rb");
        ASSERT_NE(f, nullptr);
        char buf[4096];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
            src.append(buf, n);
        std::fclose(f);
    }
    const std::string path = testing::TempDir() + "finisher.ppd";
    for (const auto& r : rows) {
        std::string text = src;
        const std::string from = "*DefaultOption1: ProfFinisher";
        text.replace(text.find(from), from.size(), std::string("*DefaultOption1: ") + r.option1);
        FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fwrite(text.data(), 1, text.size(), f);
        std::fclose(f);
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
