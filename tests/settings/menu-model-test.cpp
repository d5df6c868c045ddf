// Menus and popups built from setting maps, with and without input history.
#include "tests/settings/prefs-fixture.h"

#include "platform/bundle.h"
#include "platform/strings-table.h"

namespace talmo {
namespace {

const std::string kStringsPath = std::string(TALMO_SOURCE_DIR) + "/resources/en.lproj/Localizable.d/settings.strings";

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

// A private home plus a bundle whose Localizable table is this module's English fragment.
class MenuFromMap : public test::PrefsHome {
protected:
    void SetUp() override
    {
        PrefsHome::SetUp();
        const std::filesystem::path lproj = root_ + "/Test.bundle/Resources/en.lproj";
        std::filesystem::create_directories(lproj);
        std::filesystem::copy_file(kStringsPath, lproj / "Localizable.strings");
        bundle_ = Bundle::open(root_ + "/Test.bundle");
        ASSERT_TRUE(bundle_);
    }
    void TearDown() override
    {
        SetInstalledFeatureHook(nullptr);
        PrefsHome::TearDown();
    }
    const Bundle& bundle() const { return *bundle_; }

private:
    std::optional<Bundle> bundle_;
};

TEST_F(MenuFromMap, PrinterDefaultRowIsLabelledByContext)
{
    for (JobContext context : {kJobContextJob, kJobContextCovers, kJobContextInserts, kJobContextExceptions}) {
        MenuModel menu;
        PopulateMenuFromMap(bundle(), menu, _AntialiasingMap, context, 0);
        const char* first = context == kJobContextJob ? "Printer Default" : "Use Job Setting";
        EXPECT_EQ(Labels(menu), (std::vector<std::string>{first, "Off", "On"})) << context;
        EXPECT_EQ(References(menu), (std::vector<int32_t>{kNotSet, 1, 2}));
    }
}

TEST_F(MenuFromMap, HiddenRowsAreLeftOutButCounted)
{
    MenuModel menu;
    EXPECT_EQ(PopulateMenuFromMap(bundle(), menu, kDestinations, kJobContextJob, 0), 4);
    EXPECT_EQ(References(menu), (std::vector<int32_t>{kNotSet, 1, 2}));

    SetInstalledFeatureHook([](const std::string& f) { return f == "StackerTray1Key"; });
    PopupButtonModel popup;
    PopulatePopupButtonFromMap(bundle(), popup, _HalftoneScreenMap, kJobContextJob, 0); // emptied by the next fill
    EXPECT_EQ(PopulatePopupButtonFromMap(bundle(), popup, kDestinations, kJobContextJob, 0), 4);
    EXPECT_EQ(References(popup.menu), (std::vector<int32_t>{kNotSet, 1, 5}));
    EXPECT_EQ(Labels(popup.menu)[2], "Stacker Tray 1");
    EXPECT_EQ(popup.maximum, 4);
    EXPECT_EQ(popup.menu.map, kDestinations);
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

TEST_F(MenuFromMap, PopupSelectionByTicketValue)
{
    PopupButtonModel popup;
    PopulatePopupButtonFromMap(bundle(), popup, _HalftoneScreenMap, kJobContextJob, 0);
    EXPECT_TRUE(SetPopupButtonToTicketValue(popup, 11));
    EXPECT_EQ(popup.value, 5);
    EXPECT_EQ(GetPopupButtonTicketValue(popup), 11);
    EXPECT_FALSE(SetPopupButtonToTicketValue(popup, 99)); // unknown: the selection stays
    EXPECT_EQ(popup.value, 5);

    PopupButtonModel dest; // duplicate values select the first item
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
    storeHistory("TRCHistory", {pl::makeString("Curve B"), pl::makeInt(7), pl::makeString("Curve A")});
    PopupButtonModel popup;
    EXPECT_EQ(PopulatePopupButtonFromMapAndHistory(bundle(), popup, _JobFormatMap, kJobContextJob, "TRCHistory", 1,
                                                   FourCC("Hist"), FourCC("Map ")),
              7);
    EXPECT_EQ(popup.maximum, 7);
    EXPECT_EQ(Labels(popup.menu),
              (std::vector<std::string>{"Printer Default", "Curve B", "Curve A", "Single-Page TIFF", "Multi-Page TIFF",
                                        "Fast Reprint", "Fast Reprint with DRI"}));
    EXPECT_EQ(popup.menu.item(2)->command, FourCC("Hist"));
    EXPECT_EQ(popup.menu.item(4)->command, FourCC("Map "));

    // A position past the end appends.
    EXPECT_EQ(PopulatePopupButtonFromMapAndHistory(bundle(), popup, _TRCMap, kJobContextJob, "TRCHistory", 9, 0, 0), 3);
    EXPECT_EQ(Labels(popup.menu), (std::vector<std::string>{"Printer Default", "Curve B", "Curve A"}));
}

TEST(SettingsStrings, EveryRowOfEveryMapHasAnEnglishLabel)
{
    StringsParseResult result;
    pl::DictPtr table = readStringsFile(kStringsPath, &result);
    ASSERT_TRUE(table) << result.message << " at line " << result.line;
    for (const char* key : {"PrinterDefault", "UseJobSetting"})
        EXPECT_TRUE(table->getString(key)) << key;
    // clang-format off
    const SettingMap* maps[] = {
        _CoverOptionMap, _InsertOptionMap, _SavedJobSaveOptionRadioMap, _WatermarkMap, _WatermarkOptionsMap,
        _EnabledDisabledMap, _PageBordersMap, _BookletWatermarkBackgroundFormsMap, _PlexMap, _DuplexMap,
        _HighlightPrintingColorMap, _HighlightMappingColorMap, _HighlightMappingAlgorithmMap,
        _HighlightMismatchColorMap, _ImageShiftOptions1SidedMap, _ImageShiftOptions2SidedMap, _CoverSidesImagedMap,
        _WatermarkStringMap, _TrappingMap, _BlackOverprintMap, _TRCMap, _RGBSourceProfileMap, _CMYKSourceProfileMap,
        _GraySourceProfileMap, _DestinationProfileMap, _ObjectRenderingMap, _HalftoneScreenMap, _AntialiasingMap,
        _JobTypeMap, _JobFormatMap, _OutputColorMap, _OutputStapleOCTMap, _OutputStapleLCSSMap, _OutputStapleHCSSMap,
        _PunchNoneMap, _PunchMap, _OutputDestOCTMap, _OutputDestLCSSMap, _OutputDestHCSSMap, _OutputDestHCSS_BKMap,
        _ResolutionMap, _StockLibraryMap, _ComplexFoldMap, _ComplexBookletFoldMap, _HolePunchOptionsMap, _ZFoldMap,
        _NamedPaperPaperListMap,
    };
    // clang-format on
    for (const SettingMap* map : maps)
        for (const SettingMap* row = map; row->key; ++row) {
            const std::optional<std::string> text = table->getString(row->key);
            EXPECT_TRUE(std::string_view(row->key) == "-" || (text && !text->empty())) << "\"" << row->key << "\"";
        }
}

} // namespace
} // namespace talmo
