#include "device/device.h"

#include <gtest/gtest.h>

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
        {"MediaType", "CardStockF", 43},
        {"PageSize", "3x5", 80},
        {"PageSize", "Custom", 75},
        {"OutputBin", "Upper", 5},
        {"OutputBin", "Center", 5},
        {"OutputBin", "Bottom", 5},
        {"OutputBin", "PrinterDefault", INT32_MIN},
        {"TLSlipSheetType", "TabStock", 24}, // shares the media type map
        {"TLBackCoverSheet", "Bypass", 100},
        {"TLImageQuality", "Lighten5", -5},
        {"TLImageQuality", "Darken3", 3},
        {"MediaColor", "Custom7", 21},
        {"Duplex", "DuplexTumble", 3},
        {"JCLBanner", "False", 0},
        {"MediaType", "Vellum", -1},  // no such choice
        {"NoSuchOption", "None", -1}, // no such option
    };
    for (const auto& r : rows)
        EXPECT_EQ(PPDTicketValueForChoice(r.option, r.choice), r.value) << r.option << "/" << r.choice;

    EXPECT_STREQ(PPDChoiceForTicketValue("OutputBin", 5), "Upper");
    EXPECT_STREQ(PPDChoiceForTicketValue("MediaType", 43), "CardStock");
    EXPECT_STREQ(PPDChoiceForTicketValue("InputSlot", 0), "Auto");
    EXPECT_EQ(PPDChoiceForTicketValue("OutputBin", 99), nullptr);
    EXPECT_EQ(PPDChoiceForTicketValue("NoSuchOption", 1), nullptr);
}

TEST(PPDKeywordMaps, TablesHoldEveryListedRow)
{
    auto count = [](const PPDChoiceMap* m) {
        int n = 0;
        while (m[n].choice)
            ++n;
        return n;
    };
    // The listed rows; the terminator is not counted.
    EXPECT_EQ(count(_MediaTypeMap), 43);
    EXPECT_EQ(count(_PageSizeMap), 55);
    EXPECT_EQ(count(_OutputBinMap), 17);
    EXPECT_EQ(count(_MediaColorMap), 21);
    EXPECT_EQ(count(_LightenDarkenMap), 11);
    int options = 0;
    while (_MainKeywordMap[options].option)
        ++options;
    EXPECT_EQ(options, 28);
}

TEST_F(CurrentPPD, MenuListsOfferedChoicesWithTicketValuesInPPDOrder)
{
    PPDHandle ppd = PPDOpenAsCurrent(shipped("talmo-studio-press.ppd"));
    ASSERT_NE(ppd, nullptr);
    std::vector<PPDMenuItem> items;
    testing::internal::CaptureStderr();
    int n = PPDPopulateMenuWithChoices(items, ppd, "OutputBin");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(n, 7);
    EXPECT_EQ(items[0].text, "Automatically Select");
    EXPECT_EQ(items[0].ticketValue, 1);
    EXPECT_EQ(items[4].text, "Center Tray");
    EXPECT_EQ(items[4].ticketValue, 5);
    EXPECT_EQ(items[6].ticketValue, 7);
}

TEST_F(CurrentPPD, UnmappedChoiceAndMissingOptionAreReported)
{
    PPDHandle ppd = PPDOpenAsCurrent(fixture("for-tests-unmapped-choice.ppd"));
    ASSERT_NE(ppd, nullptr);
    std::vector<PPDMenuItem> items;
    testing::internal::CaptureStderr();
    int n = PPDPopulateMenuWithChoices(items, ppd, "MediaType");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Skipped unrecognized choice in PPD: Vellum\n");
    EXPECT_EQ(n, 13);
    for (const auto& item : items)
        EXPECT_NE(item.text, "Vellum");

    testing::internal::CaptureStderr();
    EXPECT_EQ(PPDPopulateMenuWithChoices(items, ppd, "TLFold"), 0);
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

    float minW, minH, maxW, maxH;
    ASSERT_TRUE(PPDGetCustomSizeLimits(ppd, &minW, &minH, &maxW, &maxH));
    EXPECT_EQ(minW, 283);
    EXPECT_EQ(minH, 420);
    EXPECT_EQ(maxW, 936);
    EXPECT_EQ(maxH, 1368);
}

TEST_F(CurrentPPD, DamagedFilesAreRefusedCleanly)
{
    for (const char* name : {"malformed-truncated.ppd", "malformed-not-a-ppd.ppd", "does-not-exist.ppd"}) {
        EXPECT_EQ(PPDOpenAsCurrent(fixture(name)), nullptr) << name;
        EXPECT_FALSE(LoadInstallableOptions(nullptr, kTalmoInstalledFeatureMap)) << name;
        EXPECT_FALSE(getInstallableOptionValue("Option1", nullptr)) << name;
        UnloadInstallableOptions();
    }
}

TEST_F(CurrentPPD, DeclaredLanguageEncodingChoosesTheTextEncoding)
{
    EXPECT_EQ(PPDGetEncoding(nullptr), PPDTextEncoding::kRoman);
    const struct {
        const char* declared;
        PPDTextEncoding expected;
    } cases[] = {{"ISOLatin1", PPDTextEncoding::kLatin1}, {"ISOLatin2", PPDTextEncoding::kLatin2},
                 {"ISOLatin5", PPDTextEncoding::kLatin5}, {"JIS83-RKSJ", PPDTextEncoding::kShiftJIS},
                 {"UTF-8", PPDTextEncoding::kUTF8},       {"UTF8", PPDTextEncoding::kUTF8},
                 {"WindowsANSI", PPDTextEncoding::kRoman}};
    std::string src;
    {
        FILE* f = std::fopen(shipped("talmo-office-press.ppd").c_str(), "rb");
        ASSERT_NE(f, nullptr);
        char buf[4096];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
            src.append(buf, n);
        std::fclose(f);
    }
    const std::string path = testing::TempDir() + "encoding.ppd";
    for (const auto& c : cases) {
        std::string text = src;
        text.replace(text.find("ISOLatin1"), 9, c.declared);
        FILE* f = std::fopen(path.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fwrite(text.data(), 1, text.size(), f);
        std::fclose(f);
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
    EXPECT_EQ(CopyDeviceMimicFilename(), nullptr); // no make and model in the printer info yet
    session.printerInfo().set("com.apple.print.PrinterInfo.PMMakeAndModelName", pl::makeString("Talmo Studio Press"),
                              "com.talmo.printingmanager");
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
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(popup.maximum, 13);
    ASSERT_NE(popup.menu.item(7), nullptr);
    EXPECT_EQ(popup.menu.item(7)->label, "Card Stock");
    EXPECT_EQ(popup.menu.item(7)->reference, 12);
}

} // namespace
