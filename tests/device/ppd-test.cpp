#include "device/device.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

using namespace talmo;

namespace {

std::string shipped(const char* name) { return std::string(TALMO_SOURCE_DIR) + "/resources/ppd/" + name; }
std::string fixture(const char* name) { return std::string(TALMO_SOURCE_DIR) + "/tests/device/data/" + name; }

class CurrentPPD : public ::testing::Test {
protected:
    void TearDown() override
    {
        UnloadInstallableOptions();
        PPDCloseCurrent();
    }
};

TEST(PPDKeywordMaps, FirstMatchingRowWinsBothWays)
{
    const struct {
        const char* option;
        const char* choice;
        int32_t value;
    } rows[] = {
        {"MediaType", "CardStock", 12}, // the second "CardStock" = 43 is never reached
        {"MediaType", "CardStockF", 43},     {"OutputBin", "Upper", 5},
        {"OutputBin", "Center", 5},          {"OutputBin", "PrinterDefault", INT32_MIN},
        {"TLSlipSheetType", "TabStock", 24},                              // shares the media type map
        {"TLImageQuality", "Lighten5", -5},  {"MediaType", "Vellum", -1}, // no such choice
        {"NoSuchOption", "None", -1},                                     // no such option
    };
    for (const auto& r : rows)
        EXPECT_EQ(PPDTicketValueForChoice(r.option, r.choice), r.value) << r.option << "/" << r.choice;

    EXPECT_STREQ(PPDChoiceForTicketValue("OutputBin", 5), "Upper");
    EXPECT_STREQ(PPDChoiceForTicketValue("MediaType", 43), "CardStock");
    EXPECT_EQ(PPDChoiceForTicketValue("OutputBin", 99), nullptr);
    EXPECT_EQ(PPDChoiceForTicketValue("NoSuchOption", 1), nullptr);
}

TEST_F(CurrentPPD, AMissingOptionIsReported)
{
    std::vector<PPDMenuItem> items{{}};
    testing::internal::CaptureStderr();
    EXPECT_EQ(PPDPopulateMenuWithChoices(items, PPDOpenAsCurrent(fixture("for-tests-unmapped-choice.ppd")), "TLFold"),
              0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Expected PPD option not found: TLFold\n");
    EXPECT_TRUE(items.empty());
}

TEST_F(CurrentPPD, DefaultsTextsAndStoredChoices)
{
    PPDHandle ppd = PPDOpenAsCurrent(shipped("talmo-studio-press.ppd"));
    ASSERT_NE(ppd, nullptr);
    EXPECT_EQ(PPDCopyDefaultChoice(ppd, "Resolution"), "600x600dpi");
    EXPECT_EQ(PPDCopyDefaultChoice(ppd, "NoSuchOption"), std::nullopt);
    EXPECT_EQ(PPDCopyChoiceText(ppd, "Duplex", "DuplexTumble"), "Short-Edge Binding");
    EXPECT_EQ(PPDCopyChoiceText(ppd, "Duplex", "Sideways"), std::nullopt);
    EXPECT_EQ(PPDGetEncoding(ppd), PPDTextEncoding::kLatin1);

    auto ppdDict = pl::makeDict();
    EXPECT_EQ(PPDGetTicketValueForChoiceOrDefault(ppdDict, ppd, "Resolution"), 2); // PPD default
    PPDSetCurrentChoice(ppdDict, "Resolution", "1200x1200dpi");
    EXPECT_EQ(PPDCopyCurrentChoice(ppdDict, "Resolution"), "1200x1200dpi");
    EXPECT_EQ(PPDGetTicketValueForChoiceOrDefault(ppdDict, ppd, "Resolution"), 4);
    PPDSetCurrentChoice(ppdDict, "Resolution", "2400x2400dpi"); // offered, but has no row
    EXPECT_EQ(PPDGetTicketValueForChoiceOrDefault(ppdDict, ppd, "Resolution"), -1);
}

TEST_F(CurrentPPD, OpensWhatThePrintSystemReads)
{
    const std::pair<const char*, const char*> cases[] = {
        {"for-tests-raw-escape-in-jcl.ppd", "HCS"},
        {"for-tests-form-feed-in-comment.ppd", "HCS"},
        {"for-tests-group-never-closed.ppd", "HCS"},
        {"for-tests-truncated-in-a-string.ppd", "ProfFinisher"}, // the options read before the cut
    };
    for (const auto& [name, finisher] : cases) {
        PPDHandle ppd = PPDOpenAsCurrent(fixture(name));
        ASSERT_NE(ppd, nullptr) << name << ": " << PPDLastErrorText(nullptr);
        EXPECT_TRUE(PPDManufacturerIsTalmo(ppd)) << name;
        LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap);
        std::string option1 = "none";
        getInstallableOptionValue("Option1", &option1);
        EXPECT_EQ(option1, finisher) << name;
        UnloadInstallableOptions();
    }
}

TEST_F(CurrentPPD, RefusesWhatIsNotAPPDAndLoadsTheNextOne)
{
    const struct {
        const char* name;
        const char* why;
        int line;
    } cases[] = {{"malformed-not-a-ppd.ppd", "Missing asterisk in column 1", 1},
                 {"does-not-exist.ppd", "Unable to open PPD file", 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(PPDOpenAsCurrent(fixture(c.name)), nullptr) << c.name;
        int line = -1;
        EXPECT_EQ(PPDLastErrorText(&line), c.why) << c.name;
        EXPECT_EQ(line, c.line) << c.name;
        // The failed load leaves nothing behind that would refuse the printer's real PPD.
        EXPECT_FALSE(LoadInstallableOptions(nullptr, kTalmoInstalledFeatureMap)) << c.name;
        EXPECT_FALSE(getInstallableOptionValue("Option1", nullptr)) << c.name;
        EXPECT_TRUE(
            LoadInstallableOptions(PPDOpenAsCurrent(shipped("talmo-office-press.ppd")), kTalmoInstalledFeatureMap))
            << c.name;
        UnloadInstallableOptions();
    }
}

TEST_F(CurrentPPD, DeclaredLanguageEncodingChoosesTheTextEncoding)
{
    EXPECT_EQ(PPDGetEncoding(nullptr), PPDTextEncoding::kRoman);
    const struct {
        const char* declared;
        PPDTextEncoding expected;
    } cases[] = {{"ISOLatin2", PPDTextEncoding::kLatin2},
                 {"JIS83-RKSJ", PPDTextEncoding::kShiftJIS},
                 {"UTF8", PPDTextEncoding::kUTF8},
                 {"WindowsANSI", PPDTextEncoding::kRoman}};
    std::ostringstream read;
    read << std::ifstream(shipped("talmo-office-press.ppd")).rdbuf();
    const std::string src = read.str();
    const std::string path = testing::TempDir() + "encoding.ppd";
    for (const auto& c : cases) {
        std::string text = src;
        text.replace(text.find("ISOLatin1"), 9, c.declared);
        std::ofstream(path, std::ios::binary) << text;
        PPDHandle ppd = PPDOpenAsCurrent(path);
        ASSERT_NE(ppd, nullptr) << c.declared;
        EXPECT_EQ(PPDGetEncoding(ppd), c.expected) << c.declared;
    }
}

} // namespace

namespace {

TEST_F(CurrentPPD, ChoicesLiveInThePageFormatTicketAndMimicReadsThePrinterInfo)
{
    PrintSession session;
    Ticket& pageFormat = session.pageFormat();
    EXPECT_EQ(PPDCopyCurrentChoice(&pageFormat, "Duplex"), std::nullopt);
    ASSERT_EQ(PPDSetCurrentChoice(&pageFormat, "Duplex", "DuplexTumble"), noErr);
    ASSERT_EQ(PPDSetCurrentChoice(&pageFormat, "OutputBin", "Center"), noErr);
    EXPECT_EQ(PPDCopyCurrentChoice(&pageFormat, "Duplex"), "DuplexTumble");
    EXPECT_EQ(pageFormat.creatorOf(kPMPPDDictKey), "com.talmo.printingmanager");
    EXPECT_EQ(PPDSetCurrentChoice(nullptr, "Duplex", "None"), paramErr);

    // The current PPD opens from the session's printer (the demo printer by default).
    SetCurrentPrintSession(&session);
    PPDCloseCurrent();
    PPDHandle ppd = PPDGetCurrent();
    ASSERT_NE(ppd, nullptr);
    EXPECT_TRUE(PPDManufacturerIsTalmo(ppd));
    EXPECT_EQ(PPDGetTicketValueForChoiceOrDefault(PMTicketGetPPDDict(&pageFormat), ppd, "OutputBin"), 5);
    ASSERT_TRUE(LoadInstallableOptions(ppd, kTalmoInstalledFeatureMap));
    // Setting the printer wrote its make and model into the printer info ticket.
    EXPECT_STREQ(CopyDeviceMimicFilename(), "Mimic_FF_FENN-PN_Professional.gif");
    SetCurrentPrintSession(nullptr);
    EXPECT_EQ(CopyDeviceMimicFilename(), nullptr);
}

TEST_F(CurrentPPD, OnlyTheExactMakerNameIsTalmo)
{
    EXPECT_TRUE(PPDManufacturerIsTalmo(PPDOpenAsCurrent(shipped("talmo-office-press.ppd"))));
    EXPECT_FALSE(PPDManufacturerIsTalmo(PPDOpenAsCurrent(fixture("for-tests-maker-suffix.ppd"))));
    EXPECT_FALSE(PPDManufacturerIsTalmo(nullptr));
}

} // namespace

namespace {

TEST_F(CurrentPPD, MediaLimitsComeFromTheCurrentPPD)
{
    InstallPPDMediaLimits();
    PPDOpenAsCurrent(fixture("for-tests-no-installable.ppd"));
    MediaLimits limits = GetMediaLimits();
    EXPECT_EQ(limits.minWidth, 283);
    EXPECT_EQ(limits.maxHeight, 1368);
    PPDCloseCurrent(); // no session, so no PPD can be opened: the defaults
    limits = GetMediaLimits();
    EXPECT_EQ(limits.minWidth, 432);
    EXPECT_EQ(limits.maxHeight, 864);
    SetMediaLimitsHook(nullptr);
}

TEST_F(CurrentPPD, PopupCarriesTicketValuesAndTheItemCount)
{
    PPDHandle ppd = PPDOpenAsCurrent(fixture("for-tests-unmapped-choice.ppd"));
    PopupButtonModel popup;
    popup.menu.items.push_back({"stale", 0, 99, false});
    testing::internal::CaptureStderr();
    EXPECT_EQ(PPDPopulatePopupWithChoices(popup, ppd, "MediaType"), 13);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Skipped unrecognized choice in PPD: Vellum\n");
    EXPECT_EQ(popup.maximum, 13);
    ASSERT_NE(popup.menu.item(7), nullptr);
    EXPECT_EQ(popup.menu.item(7)->label, "Card Stock");
    EXPECT_EQ(popup.menu.item(7)->reference, 12);
}

} // namespace
