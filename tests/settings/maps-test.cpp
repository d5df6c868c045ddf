// Setting map lookups and the content of the tables.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace talmo {
namespace {

// Installs an installed-options hook for one test and removes it afterwards.
class InstalledOptions {
public:
    explicit InstalledOptions(std::set<std::string> installed)
    {
        SetInstalledFeatureHook(
            [installed = std::move(installed)](const std::string& f) { return installed.count(f) != 0; });
    }
    ~InstalledOptions() { SetInstalledFeatureHook(nullptr); }
};

// A map shaped like the stock description menu: the "Custom..." row holds 0.
const SettingMap kDescriptionLike[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"Custom...", 0, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

// Rows that depend on installable options, and a later row holding the same value.
const SettingMap kInstallableMap[] = {
    {"PrinterDefault", kNotSet, 0, nullptr, false},
    {"StackerTray1", 5, 0, "StackerTray1Key", true},
    {"TopTray", 2, 0, "StackerTray1Key", false},
    {"StackerTray", 5, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

const SettingMap kEmpty[] = {{nullptr, 0, 0, nullptr, false}};

const SettingMap kFirstRowZeroWithoutMatch[] = {
    {"My Paper List", 0, 0, nullptr, false},
    {"Other", 7, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

TEST(SettingMapLookup, TicketToUIFindsTheOneBasedRowOrMinusOne)
{
    struct Case {
        const SettingMap* map;
        int32_t value;
        int32_t item;
    };
    const Case cases[] = {
        {_AntialiasingMap, 2, 3},       {_AntialiasingMap, 5, -1},
        {_AntialiasingMap, kNotSet, 1}, {_HalftoneScreenMap, 14, 7},
        {_CMYKSourceProfileMap, 3, 16}, {_WatermarkMap, -9, 6},
        {_OutputDestHCSS_BKMap, 1, 1}, // "TopTray" shares 1 with "Auto": the first row wins
        {kDescriptionLike, 7, 2},      // unmatched value falls back to the row holding 0
        {kDescriptionLike, kNotSet, 1}, {kEmpty, 1, -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(TicketToUI(c.map, c.value), c.item) << "value " << c.value;
}

TEST(SettingMapLookup, FirstRowHoldingZeroAnswersRowOneForAnyValue)
{
    for (int32_t value : {0, 1, 2, -1, kNotSet, 7}) {
        EXPECT_EQ(TicketToUI(_NamedPaperPaperListMap, value), 1) << value;
        EXPECT_STREQ(LocalizedKeyForTicketValue(_NamedPaperPaperListMap, value), "My Paper List");
        // Even when a later row would match exactly.
        EXPECT_EQ(TicketToUI(kFirstRowZeroWithoutMatch, 7), 1);
    }
}

TEST(SettingMapLookup, UIToTicketReadsRowItemMinusOneAndNeverPastTheEnd)
{
    EXPECT_EQ(UIToTicket(_AntialiasingMap, 1), kNotSet);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 2), 7);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 7), 14);
    EXPECT_EQ(UIToTicket(_CoverOptionMap, 1), 1);
    for (int32_t item : {0, -1, 8, INT32_MAX})
        EXPECT_EQ(UIToTicket(_HalftoneScreenMap, item), kNotSet) << item;
    EXPECT_EQ(UIToTicket(nullptr, 1), kNotSet);
}

TEST(SettingMapLookup, RowsOfUninstalledOptionsDoNotMatch)
{
    // Nothing installed: the row requiring the stacker is skipped, the later 5 matches.
    EXPECT_EQ(TicketToUI(kInstallableMap, 5), 4);
    EXPECT_EQ(TicketToUI(kInstallableMap, 2), 3);
    {
        InstalledOptions options({"StackerTray1Key"});
        EXPECT_EQ(TicketToUI(kInstallableMap, 5), 2);
        EXPECT_EQ(TicketToUI(kInstallableMap, 2), -1);
        EXPECT_STREQ(LocalizedKeyForTicketValue(kInstallableMap, 5), "StackerTray1");
    }
    EXPECT_FALSE(InstalledFeatureState("StackerTray1Key"));
    EXPECT_FALSE(InstalledFeatureState(nullptr));
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
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, kNotSet), "PrinterDefault");
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes, 2), "CustomStockSize"); // 0 row comes first
    EXPECT_STREQ(LocalizedKeyForPaperSizeTicketValue(sizes + 3, 9), nullptr);
    EXPECT_EQ(LocalizedKeyForPaperSizeTicketValue(nullptr, 1), nullptr);
}

TEST(SettingMapTables, EveryRowValueFindsARow)
{
    // A 0 row ends every search, so one hidden in the middle of an ordinary map would make
    // the rows after it unreachable.
    const SettingMap* maps[] = {_CoverOptionMap,
                                _InsertOptionMap,
                                _SavedJobSaveOptionRadioMap,
                                _WatermarkMap,
                                _WatermarkOptionsMap,
                                _BookletWatermarkBackgroundFormsMap,
                                _HighlightPrintingColorMap,
                                _HighlightMappingColorMap,
                                _HighlightMappingAlgorithmMap,
                                _HighlightMismatchColorMap,
                                _ComplexFoldMap,
                                _ComplexBookletFoldMap,
                                _HolePunchOptionsMap,
                                _StockLibraryMap};
    for (const SettingMap* map : maps)
        for (int32_t i = 1; i <= CountMaps(map); ++i)
            EXPECT_EQ(TicketToUI(map, UIToTicket(map, i)) > 0, true) << map[i - 1].key;
}

} // namespace
} // namespace talmo

TEST(CompleteStockSizeMap, CodesAreUniqueAndTheFlagColumnIsZero)
{
    std::set<int32_t> codes;
    for (const auto* r = talmo::CompleteStockSizeMap; r->key; ++r) {
        EXPECT_TRUE(codes.insert(r->ticketValue).second) << "code " << r->ticketValue << " twice";
        EXPECT_EQ(r->reserved, 0) << r->key;
    }
}
