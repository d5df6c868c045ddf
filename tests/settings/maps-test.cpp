// Setting map lookups, the invariants of the tables, and the menus and popups built from them.
#include "tests/settings/prefs-fixture.h"

#include "platform/bundle.h"
#include "platform/strings-table.h"

#include <regex>
#include <set>

namespace talmo {
namespace {

const std::string kStringsPath = std::string(TALMO_SOURCE_DIR) + "/resources/en.lproj/Localizable.d/settings.strings";

// A map shaped like the stock description menu: the "Custom..." row holds 0.
const SettingMap kDescriptionLike[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"Custom...", 0, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

const SettingMap kFirstRowZero[] = {
    {"My Paper List", 0, 0, nullptr, false},
    {"Other", 7, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

// Rows for an installable stacker: one offered only with it, one only without it, and a later
// row holding the stacker's value.
const SettingMap kTrays[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"Auto", 1, 0, nullptr, false},
    {"StackerTray1", 5, FourCC("Stk1"), "StackerTray1Key", true},
    {"TopTray", 2, 0, "StackerTray1Key", false},
    {"StackerTray", 5, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

TEST(SettingMapLookup, TicketToUIFindsTheOneBasedRowOrMinusOne)
{
    const struct {
        const SettingMap* map;
        int32_t value;
        int32_t item;
    } cases[] = {
        {_HalftoneScreenMap, 14, 7},
        {_AntialiasingMap, 5, -1},
        {_OutputDestHCSS_BKMap, 1, 1}, // "TopTray" shares 1 with "Auto": the first row wins
        {kDescriptionLike, 7, 2},      // unmatched value falls back to the row holding 0
        {kDescriptionLike, kNotSet, 1},
        {kFirstRowZero, 7, 1}, // a first 0 row answers for any value
        {kTrays, 5, 5},
        {kTrays, 2, 4}, // nothing installed: the stacker row is skipped
    };
    for (const auto& c : cases)
        EXPECT_EQ(TicketToUI(c.map, c.value), c.item) << c.map[0].key << " value " << c.value;
    const SettingMap empty[] = {{nullptr, 0, 0, nullptr, false}};
    EXPECT_EQ(TicketToUI(empty, 1), -1);
    for (int32_t item : {0, -1, 8, INT32_MAX})
        EXPECT_EQ(UIToTicket(_HalftoneScreenMap, item), kNotSet) << item;
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 7), 14);
    EXPECT_EQ(UIToTicket(nullptr, 1), kNotSet);

    SetInstalledFeatureHook([](const std::string& f) { return f == "StackerTray1Key"; });
    EXPECT_EQ(TicketToUI(kTrays, 5), 3);
    EXPECT_EQ(TicketToUI(kTrays, 2), -1);
    EXPECT_STREQ(LocalizedKeyForTicketValue(kTrays, 5), "StackerTray1");
    SetInstalledFeatureHook(nullptr);
}

TEST(SettingMapLookup, PaperSizeKeyStopsAtValueOrZero)
{
    const _PaperSizeSettingMap sizes[] = {
        {"PrinterDefault", kNotSet, 0, kNotSet, kNotSet, kNotSet, kNotSet},
        {"LetterStockSize", 1, 0, 21600, 27900, 612, 792},
        {"CustomStockSize", 0, 0, 0, 0, 0, 0},
        {"LegalStockSize", 2, 0, 21600, 35600, 612, 1008},
        {nullptr, 0, 0, 0, 0, 0, 0},
    };
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, 1), "LetterStockSize");
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, 2), "CustomStockSize"); // 0 row comes first
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes + 3, 9), nullptr);
    EXPECT_EQ(LocalizedKeyForPaperSizeTicketValue(nullptr, 1), nullptr);
}

TEST(SettingMapTables, EveryRowValueFindsARowAndStockCodesAreUnique)
{
    // A 0 row ends every search, so one hidden in the middle of an ordinary map would make
    // the rows after it unreachable.
    for (const SettingMap* map : {_CoverOptionMap, _InsertOptionMap, _SavedJobSaveOptionRadioMap, _WatermarkMap,
                                  _WatermarkOptionsMap, _BookletWatermarkBackgroundFormsMap, _HighlightPrintingColorMap,
                                  _HighlightMappingColorMap, _HighlightMappingAlgorithmMap, _HighlightMismatchColorMap,
                                  _ComplexFoldMap, _ComplexBookletFoldMap, _HolePunchOptionsMap, _StockLibraryMap})
        for (int32_t i = 1; i <= CountMaps(map); ++i)
            EXPECT_GT(TicketToUI(map, UIToTicket(map, i)), 0) << map[i - 1].key;
    std::set<int32_t> codes;
    for (const auto* r = CompleteStockSizeMap; r->key; ++r) {
        EXPECT_TRUE(codes.insert(r->ticketValue).second) << "code " << r->ticketValue << " twice";
        EXPECT_EQ(r->reserved, 0) << r->key;
    }
}

template <class T> std::vector<T> Column(const MenuModel& menu, T MenuItem::*field)
{
    std::vector<T> out;
    for (const MenuItem& item : menu.items)
        out.push_back(item.*field);
    return out;
}
std::vector<std::string> Labels(const MenuModel& menu) { return Column(menu, &MenuItem::label); }
std::vector<int32_t> References(const MenuModel& menu) { return Column(menu, &MenuItem::reference); }

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

TEST_F(MenuFromMap, RowsOfUninstalledOptionsAreLeftOutButCounted)
{
    MenuModel menu;
    EXPECT_EQ(PopulateMenuFromMap(bundle(), menu, kTrays, kJobContextJob, 0), 5);
    EXPECT_EQ(References(menu), (std::vector<int32_t>{kNotSet, 1, 2, 5}));

    SetInstalledFeatureHook([](const std::string& f) { return f == "StackerTray1Key"; });
    PopupButtonModel popup;
    PopulatePopupButtonFromMap(bundle(), popup, _HalftoneScreenMap, kJobContextJob, 0); // emptied by the next fill
    EXPECT_EQ(PopulatePopupButtonFromMap(bundle(), popup, kTrays, kJobContextJob, 0), 5);
    SetInstalledFeatureHook(nullptr);
    EXPECT_EQ(References(popup.menu), (std::vector<int32_t>{kNotSet, 1, 5, 5}));
    EXPECT_EQ(Labels(popup.menu)[2], "Stacker Tray 1");
    EXPECT_EQ(popup.menu.item(3)->command, FourCC("Stk1"));
    EXPECT_EQ(popup.maximum, 5);
    EXPECT_EQ(popup.menu.map, kTrays);
}

TEST_F(MenuFromMap, CommandArgumentOverridesRowCommandsSeparatorsHaveNone)
{
    MenuModel own, forced;
    PopulateMenuFromMap(bundle(), own, _WatermarkMap, kJobContextJob, 0);
    PopulateMenuFromMap(bundle(), forced, _WatermarkMap, kJobContextJob, FourCC("Cmnd"));
    ASSERT_EQ(own.count(), 6);
    EXPECT_EQ(own.item(1)->command, FourCC("TWmX"));
    EXPECT_TRUE(own.item(2)->separator && own.item(2)->command == 0u);
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
    PopupButtonModel none; // no map behind the selection
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
    // Every row of the tables' source, so that a map added later is checked too.
    const std::string source = test::PrefsHome::readAll(std::string(TALMO_SOURCE_DIR) + "/settings/maps-tables.cpp");
    const std::regex row("\\{\"([^\"]+)\", ");
    int rows = 0;
    for (auto it = std::sregex_iterator(source.begin(), source.end(), row); it != std::sregex_iterator();
         ++it, ++rows) {
        const std::string key = (*it)[1];
        const std::optional<std::string> text = table->getString(key);
        EXPECT_TRUE(key == "-" || (text && !text->empty())) << "\"" << key << "\"";
    }
    EXPECT_GT(rows, 150);
}

} // namespace
} // namespace talmo
