// Menus and popups built from setting maps, with and without input history.
#include "bundle-fixture.h"

namespace talmo {
namespace {

using test::SettingsBundle;

const SettingMap kDestinations[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"Auto", 1, 0, nullptr, false},
    {"StackerTray1", 5, FourCC("Stk1"), "StackerTray1Key", true},
    {"TopTray", 2, 0, "StackerTray1Key", false},
    {nullptr, 0, 0, nullptr, false},
};

std::vector<std::string> Labels(const MenuModel& menu)
{
    std::vector<std::string> labels;
    for (const MenuItem& item : menu.items)
        labels.push_back(item.label);
    return labels;
}

std::vector<int32_t> References(const MenuModel& menu)
{
    std::vector<int32_t> refs;
    for (const MenuItem& item : menu.items)
        refs.push_back(item.reference);
    return refs;
}

class MenuFromMap : public SettingsBundle {
protected:
    void TearDown() override
    {
        SetInstalledFeatureHook(nullptr);
        SettingsBundle::TearDown();
    }
};

TEST_F(MenuFromMap, PrinterDefaultRowIsLabelledByContext)
{
    MenuModel job;
    PopulateMenuFromMap(bundle(), job, _AntialiasingMap, kJobContextJob, 0);
    EXPECT_EQ(Labels(job), (std::vector<std::string>{"Printer Default", "Off", "On"}));

    for (JobContext page : {kJobContextCovers, kJobContextInserts, kJobContextExceptions}) {
        MenuModel menu;
        PopulateMenuFromMap(bundle(), menu, _AntialiasingMap, page, 0);
        EXPECT_EQ(Labels(menu), (std::vector<std::string>{"Use Job Setting", "Off", "On"})) << page;
        EXPECT_EQ(References(menu), (std::vector<int32_t>{kNotSet, 1, 2}));
    }
}

TEST_F(MenuFromMap, HiddenRowsAreLeftOutButCounted)
{
    MenuModel menu;
    EXPECT_EQ(PopulateMenuFromMap(bundle(), menu, kDestinations, kJobContextJob, 0), 4);
    EXPECT_EQ(References(menu), (std::vector<int32_t>{kNotSet, 1, 2}));

    SetInstalledFeatureHook([](const std::string& f) { return f == "StackerTray1Key"; });
    MenuModel installed;
    EXPECT_EQ(PopulateMenuFromMap(bundle(), installed, kDestinations, kJobContextJob, 0), 4);
    EXPECT_EQ(References(installed), (std::vector<int32_t>{kNotSet, 1, 5}));
    EXPECT_EQ(Labels(installed)[2], "Stacker Tray 1");
}

TEST_F(MenuFromMap, CommandArgumentOverridesRowCommands)
{
    MenuModel own;
    PopulateMenuFromMap(bundle(), own, _WatermarkMap, kJobContextJob, 0);
    ASSERT_EQ(own.count(), 6);
    EXPECT_EQ(own.item(1)->command, FourCC("TWmX"));
    EXPECT_EQ(own.item(2)->command, 0u);
    EXPECT_TRUE(own.item(2)->separator);
    EXPECT_EQ(own.item(6)->command, FourCC("TWmD"));

    MenuModel forced;
    PopulateMenuFromMap(bundle(), forced, _WatermarkMap, kJobContextJob, FourCC("Cmnd"));
    for (const MenuItem& item : forced.items)
        EXPECT_EQ(item.command, FourCC("Cmnd")) << item.label;
}

TEST_F(MenuFromMap, PopupIsEmptiedAndItsMaximumIsTheRowCount)
{
    PopupButtonModel popup;
    PopulatePopupButtonFromMap(bundle(), popup, _HalftoneScreenMap, kJobContextJob, 0);
    EXPECT_EQ(PopulatePopupButtonFromMap(bundle(), popup, kDestinations, kJobContextJob, 0), 4);
    EXPECT_EQ(popup.menu.count(), 3);
    EXPECT_EQ(popup.maximum, 4);
    EXPECT_EQ(popup.menu.map, kDestinations);
}

TEST_F(MenuFromMap, PopupSelectionByTicketValue)
{
    PopupButtonModel popup;
    PopulatePopupButtonFromMap(bundle(), popup, _HalftoneScreenMap, kJobContextJob, 0);
    EXPECT_TRUE(SetPopupButtonToTicketValue(popup, 11));
    EXPECT_EQ(popup.value, 5);
    EXPECT_EQ(GetPopupButtonTicketValue(popup), 11);

    // An unknown value leaves the selection as it was.
    EXPECT_FALSE(SetPopupButtonToTicketValue(popup, 99));
    EXPECT_EQ(popup.value, 5);

    // Duplicate values select the first item.
    PopupButtonModel dest;
    PopulatePopupButtonFromMap(bundle(), dest, _OutputDestHCSS_BKMap, kJobContextJob, 0);
    EXPECT_TRUE(SetPopupButtonToTicketValue(dest, 1));
    EXPECT_EQ(dest.value, 1);

    PopupButtonModel none;
    EXPECT_EQ(GetPopupButtonTicketValue(none), kNotSet);
    none.value = 3;
    EXPECT_EQ(GetPopupButtonTicketValue(none), kNotSet);
}

TEST_F(MenuFromMap, HistoryStringsGoAfterTheInsertPositionInOrder)
{
    StoreHistory("TRCHistory", {pl::makeString("Curve B"), pl::makeInt(7), pl::makeString("Curve A")});
    PopupButtonModel popup;
    int32_t count = PopulatePopupButtonFromMapAndHistory(bundle(), popup, _JobFormatMap, kJobContextJob, "TRCHistory",
                                                         1, FourCC("Hist"), FourCC("Map "));
    EXPECT_EQ(count, 7);
    EXPECT_EQ(popup.maximum, 7);
    EXPECT_EQ(Labels(popup.menu),
              (std::vector<std::string>{"Printer Default", "Curve B", "Curve A", "Single-Page TIFF", "Multi-Page TIFF",
                                        "Fast Reprint", "Fast Reprint with DRI"}));
    EXPECT_EQ(popup.menu.item(2)->command, FourCC("Hist"));
    EXPECT_EQ(popup.menu.item(4)->command, FourCC("Map "));
}

TEST_F(MenuFromMap, HistoryPositionPastTheEndAppends)
{
    StoreHistory("TRCHistory", {pl::makeString("Curve A")});
    PopupButtonModel popup;
    EXPECT_EQ(PopulatePopupButtonFromMapAndHistory(bundle(), popup, _TRCMap, kJobContextJob, "TRCHistory", 9, 0, 0), 2);
    EXPECT_EQ(Labels(popup.menu), (std::vector<std::string>{"Printer Default", "Curve A"}));
}

TEST_F(MenuFromMap, EveryRowOfEveryMapHasAnEnglishLabel)
{
    // Read the fragment itself, so a key missing from it cannot hide behind another table.
    StringsParseResult result;
    pl::DictPtr table = readStringsFile(test::SettingsStringsPath(), &result);
    ASSERT_TRUE(table) << result.message << " at line " << result.line;
    for (const char* key : {"PrinterDefault", "UseJobSetting"})
        EXPECT_TRUE(table->getString(key)) << key;
    for (const test::NamedMap& m : test::SettingsModuleMaps()) {
        for (const SettingMap* row = m.map; row->key; ++row) {
            if (std::string_view(row->key) == "-")
                continue;
            std::optional<std::string> text = table->getString(row->key);
            EXPECT_TRUE(text && !text->empty()) << m.name << ": \"" << row->key << "\"";
            EXPECT_NE(bundle().localizedString(row->key), "STRING NOT FOUND") << row->key;
        }
    }
}

} // namespace
} // namespace talmo
