// Setting map lookups and the invariants of the tables.
#include "settings/settings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace talmo {
namespace {

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

const SettingMap kFirstRowZero[] = {
    {"My Paper List", 0, 0, nullptr, false},
    {"Other", 7, 0, nullptr, false},
    {nullptr, 0, 0, nullptr, false},
};

TEST(SettingMapLookup, TicketToUIFindsTheOneBasedRowOrMinusOne)
{
    const struct {
        const SettingMap* map;
        int32_t value;
        int32_t item;
    } cases[] = {
        {_AntialiasingMap, 2, 3},       {_AntialiasingMap, 5, -1},
        {_AntialiasingMap, kNotSet, 1}, {_HalftoneScreenMap, 14, 7},
        {_CMYKSourceProfileMap, 3, 16}, {_WatermarkMap, -9, 6},
        {_OutputDestHCSS_BKMap, 1, 1}, // "TopTray" shares 1 with "Auto": the first row wins
        {kDescriptionLike, 7, 2},      // unmatched value falls back to the row holding 0
        {kDescriptionLike, kNotSet, 1}, {kEmpty, 1, -1},
        {kFirstRowZero, 7, 1}, // a first row holding 0 answers for any value, even a later exact match
        {kFirstRowZero, kNotSet, 1},    {kInstallableMap, 5, 4}, // nothing installed: the stacker row is skipped
        {kInstallableMap, 2, 3},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TicketToUI(c.map, c.value), c.item) << c.map[0].key << " value " << c.value;
    EXPECT_STREQ(LocalizedKeyForTicketValue(_NamedPaperPaperListMap, 7), "My Paper List");
}

TEST(SettingMapLookup, UIToTicketReadsRowItemMinusOneAndNeverPastTheEnd)
{
    EXPECT_EQ(UIToTicket(_AntialiasingMap, 1), kNotSet);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 2), 7);
    EXPECT_EQ(UIToTicket(_HalftoneScreenMap, 7), 14);
    for (int32_t item : {0, -1, 8, INT32_MAX})
        EXPECT_EQ(UIToTicket(_HalftoneScreenMap, item), kNotSet) << item;
    EXPECT_EQ(UIToTicket(nullptr, 1), kNotSet);
}

TEST(SettingMapLookup, RowsOfInstalledOptionsMatchOnlyWhileInstalled)
{
    SetInstalledFeatureHook([](const std::string& f) { return f == "StackerTray1Key"; });
    EXPECT_EQ(TicketToUI(kInstallableMap, 5), 2);
    EXPECT_EQ(TicketToUI(kInstallableMap, 2), -1);
    EXPECT_STREQ(LocalizedKeyForTicketValue(kInstallableMap, 5), "StackerTray1");
    SetInstalledFeatureHook(nullptr);
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

} // namespace
} // namespace talmo
