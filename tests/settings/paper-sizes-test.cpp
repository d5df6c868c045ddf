#include "settings/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <regex>
#include <set>
#include <string>

using namespace talmo;

namespace {

size_t rowCount(const _PaperSizeSettingMap* map)
{
    size_t n = 0;
    while (map[n].key)
        ++n;
    return n;
}

size_t rowCount(const SettingMap* map)
{
    size_t n = 0;
    while (map[n].key)
        ++n;
    return n;
}

const _PaperSizeSettingMap* rowOfCode(int32_t code)
{
    for (const auto* r = CompleteStockSizeMap; r->key; ++r)
        if (r->ticketValue == code)
            return r;
    return nullptr;
}

// Half-up rounding; the epsilon keeps 7.5" (190.5 mm) from falling to 190 through binary
// representation of 25.4.
int32_t roundHalfUp(double v) { return static_cast<int32_t>(std::floor(v + 0.5 + 1e-9)); }

struct Measures {
    int32_t widthHmm, lengthHmm, widthPt, lengthPt;
};

Measures fromInches(double w, double l)
{
    return {roundHalfUp(w * 25.4) * 100, roundHalfUp(l * 25.4) * 100, roundHalfUp(w * 72), roundHalfUp(l * 72)};
}

Measures fromMillimetres(double w, double l)
{
    return {static_cast<int32_t>(w * 100), static_cast<int32_t>(l * 100), roundHalfUp(w / 25.4 * 72),
            roundHalfUp(l / 25.4 * 72)};
}

// The rows whose stored measures do not follow from their labels, exactly as stored.
struct Telling {
    int32_t code;
    const char* key;
    Measures measures;
};
const Telling kTellingRows[] = {
    {70, "B3 (105 x 148 mm)", {35300, 50000, 1001, 1417}},
    {59, "Postcard (4 x 6\")", {10200, 15200, 288, 432}},
    {43, "Postcard (4 x 6\")", {11400, 15200, 324, 432}},
    {81, "Postcard (114 x 152\")", {11400, 15200, 324, 432}},
    {77, "No. 9 Envelope (4.125 x 9.5\")", {9800, 22500, 297, 639}},
};

bool isTelling(int32_t code)
{
    for (const auto& t : kTellingRows)
        if (t.code == code)
            return true;
    return false;
}

// Nominal sizes of the keys that do not spell their measure out.
const std::map<std::string, Measures>& unlabelledNominals()
{
    static const std::map<std::string, Measures> m = {
        {"LetterStockSize", fromInches(8.5, 11)},     {"LegalStockSize", fromInches(8.5, 14)},
        {"TabloidStockSize", fromInches(11, 17)},     {"StockSize8x10", fromInches(8, 10)},
        {"StockSize8x13", fromInches(8, 13)},         {"StockSize8.5x13", fromInches(8.5, 13)},
        {"StockSize8.5x13.5", fromInches(8.5, 13.5)}, {"StockSize9x11", fromInches(9, 11)},
        {"StockSizeTab9x11", fromInches(9, 11)},      {"2 up 6 x 9", fromInches(9, 12)},
        {"12x18StockSize", fromInches(12, 18)},       {"A4StockSize", fromMillimetres(210, 297)},
        {"A3StockSize", fromMillimetres(297, 420)},   {"StockSize223x297", fromMillimetres(223, 297)},
        {"SRA4", fromMillimetres(225, 320)},          {"5.5 x 7 Stock Size", fromInches(5.5, 7)},
    };
    return m;
}

void expectMeasures(const _PaperSizeSettingMap& row, const Measures& m)
{
    EXPECT_EQ(row.widthHmm, m.widthHmm) << row.key;
    EXPECT_EQ(row.heightHmm, m.lengthHmm) << row.key;
    EXPECT_EQ(row.widthPt, m.widthPt) << row.key;
    EXPECT_EQ(row.heightPt, m.lengthPt) << row.key;
}

} // namespace

TEST(CompleteStockSizeMap, HasSeventyFiveRowsFromPrinterDefaultToCustom)
{
    ASSERT_EQ(rowCount(CompleteStockSizeMap), 75u);
    const auto& first = CompleteStockSizeMap[0];
    EXPECT_STREQ(first.key, "PrinterDefault");
    EXPECT_EQ(first.ticketValue, kNotSet);
    EXPECT_EQ(first.widthHmm, kNotSet);
    EXPECT_EQ(first.heightHmm, kNotSet);
    EXPECT_EQ(first.widthPt, kNotSet);
    EXPECT_EQ(first.heightPt, kNotSet);
    const auto& last = CompleteStockSizeMap[74];
    EXPECT_STREQ(last.key, "Custom");
    EXPECT_EQ(last.ticketValue, 75);
    EXPECT_EQ(last.widthHmm, 0);
    EXPECT_EQ(last.heightHmm, 0);
    EXPECT_EQ(last.widthPt, 0);
    EXPECT_EQ(last.heightPt, 0);
    const auto& end = CompleteStockSizeMap[75];
    EXPECT_EQ(end.ticketValue, 0);
}

TEST(CompleteStockSizeMap, CodesAreUniqueAndTheFlagColumnIsZero)
{
    std::set<int32_t> codes;
    for (const auto* r = CompleteStockSizeMap; r->key; ++r) {
        EXPECT_TRUE(codes.insert(r->ticketValue).second) << "code " << r->ticketValue << " twice";
        EXPECT_EQ(r->reserved, 0) << r->key;
    }
}

TEST(CompleteStockSizeMap, ExamplesOfTheTableHoldExactly)
{
    const struct {
        const char* key;
        int32_t code;
        Measures m;
    } cases[] = {
        {"LetterStockSize", 1, {21600, 27900, 612, 792}},       {"LegalStockSize", 2, {21600, 35600, 612, 1008}},
        {"A4StockSize", 4, {21000, 29700, 595, 842}},           {"TabloidStockSize", 3, {27900, 43200, 792, 1224}},
        {"SRA3 (320 x 450 mm)", 15, {32000, 45000, 907, 1276}},
    };
    for (const auto& c : cases) {
        const auto* row = rowOfCode(c.code);
        ASSERT_NE(row, nullptr) << c.key;
        EXPECT_STREQ(row->key, c.key);
        expectMeasures(*row, c.m);
    }
}

TEST(CompleteStockSizeMap, TellingRowsStayAsStored)
{
    for (const auto& t : kTellingRows) {
        const auto* row = rowOfCode(t.code);
        ASSERT_NE(row, nullptr) << t.code;
        EXPECT_STREQ(row->key, t.key);
        expectMeasures(*row, t.measures);
    }
}

TEST(CompleteStockSizeMap, SizesThatShareDimensionsDifferOnlyInCode)
{
    const std::pair<int32_t, int32_t> twins[] = {{8, 82}, {16, 12}, {78, 79}, {43, 81}};
    for (auto [a, b] : twins) {
        const auto* ra = rowOfCode(a);
        const auto* rb = rowOfCode(b);
        ASSERT_TRUE(ra && rb);
        expectMeasures(*rb, {ra->widthHmm, ra->heightHmm, ra->widthPt, ra->heightPt});
    }
}

// Every other row follows from the measure its label states, rounded half up to whole
// millimetres and whole points.
TEST(CompleteStockSizeMap, MeasuresFollowFromTheLabels)
{
    const std::regex inchLabel(R"(([0-9.]+) x ([0-9.]+)\")");
    const std::regex mmLabel(R"(([0-9.]+) x ([0-9.]+) mm)");
    int checked = 0;
    for (const auto* r = CompleteStockSizeMap + 1; r->ticketValue != 75; ++r) {
        if (isTelling(r->ticketValue))
            continue;
        const std::string key = r->key;
        std::smatch m;
        if (auto it = unlabelledNominals().find(key); it != unlabelledNominals().end())
            expectMeasures(*r, it->second);
        else if (std::regex_search(key, m, mmLabel))
            expectMeasures(*r, fromMillimetres(std::stod(m[1]), std::stod(m[2])));
        else if (std::regex_search(key, m, inchLabel))
            expectMeasures(*r, fromInches(std::stod(m[1]), std::stod(m[2])));
        else
            ADD_FAILURE() << "no nominal size for " << key;
        ++checked;
    }
    EXPECT_EQ(checked, 73 - 5);
}

// Both measures come from one nominal size, so they agree within the two roundings
// (half a millimetre is 1.42 points, plus half a point). Only the No. 9 envelope does not.
TEST(CompleteStockSizeMap, MillimetresAndPointsAgreeExceptTheNo9Envelope)
{
    std::set<int32_t> disagreeing;
    for (const auto* r = CompleteStockSizeMap + 1; r->ticketValue != 75; ++r) {
        const double widthPt = r->widthHmm / 100.0 / 25.4 * 72;
        const double lengthPt = r->heightHmm / 100.0 / 25.4 * 72;
        if (std::fabs(widthPt - r->widthPt) > 1.92 || std::fabs(lengthPt - r->heightPt) > 1.92)
            disagreeing.insert(r->ticketValue);
        EXPECT_EQ(r->widthHmm % 100, 0) << r->key << ": not whole millimetres";
        EXPECT_LE(r->widthHmm, r->heightHmm) << r->key << ": sizes are portrait";
    }
    EXPECT_EQ(disagreeing, (std::set<int32_t>{77}));
}

TEST(StockSizeMap, OffersFortyOneSizesAllKnownToTheCompleteTable)
{
    ASSERT_EQ(rowCount(_StockSizeMap), 41u);
    EXPECT_STREQ(_StockSizeMap[0].key, "PrinterDefault");
    EXPECT_EQ(_StockSizeMap[0].ticketValue, kNotSet);
    EXPECT_STREQ(_StockSizeMap[40].key, "Custom...");
    EXPECT_EQ(_StockSizeMap[40].ticketValue, 75);
    // The menu spells two sizes differently; every other key matches the complete table's.
    const std::map<int32_t, std::string> respelled = {{11, "Oversize Tabloid (12 x 18\")"}, {7, "223x297StockSize"}};
    for (size_t i = 1; i < 40; ++i) {
        const auto& item = _StockSizeMap[i];
        const auto* row = rowOfCode(item.ticketValue);
        ASSERT_NE(row, nullptr) << item.key;
        if (auto it = respelled.find(item.ticketValue); it != respelled.end())
            EXPECT_EQ(item.key, it->second);
        else
            EXPECT_STREQ(item.key, row->key);
        EXPECT_EQ(item.command, 0u);
        EXPECT_EQ(item.installable, nullptr);
    }
}

TEST(StockMaps, RowCounts)
{
    const struct {
        const char* name;
        const SettingMap* map;
        size_t rows;
    } maps[] = {
        {"_StockColorMap", _StockColorMap, 14},
        {"_CompleteStockColorMap", _CompleteStockColorMap, 14},
        {"_StockTypeMap", _StockTypeMap, 10},
        {"_CompleteStockTypeMap", _CompleteStockTypeMap, 11},
        {"_StockPunchedMap", _StockPunchedMap, 3},
        {"_SidesCoatedMap", _SidesCoatedMap, 4},
        {"_CoatingTypeMap", _CoatingTypeMap, 5},
        {"_FinishMap", _FinishMap, 4},
        {"_GrainMap", _GrainMap, 3},
        {"_WeightMap", _WeightMap, 8},
        {"_StockDescriptionMap", _StockDescriptionMap, 2},
    };
    for (const auto& m : maps) {
        EXPECT_EQ(rowCount(m.map), m.rows) << m.name;
        const SettingMap& end = m.map[m.rows];
        EXPECT_EQ(end.ticketValue, 0) << m.name;
        EXPECT_EQ(end.command, 0u) << m.name;
    }
}

TEST(StockMaps, MenuTablesAreTheCompleteTablesWithoutEnvelopes)
{
    for (size_t i = 0; i < 14; ++i) {
        EXPECT_STREQ(_StockColorMap[i].key, _CompleteStockColorMap[i].key);
        EXPECT_EQ(_StockColorMap[i].ticketValue, _CompleteStockColorMap[i].ticketValue);
    }
    size_t menu = 0;
    for (size_t i = 0; i < 11; ++i) {
        if (_CompleteStockTypeMap[i].ticketValue == 8) {
            EXPECT_STREQ(_CompleteStockTypeMap[i].key, "Envelope");
            continue;
        }
        EXPECT_STREQ(_StockTypeMap[menu].key, _CompleteStockTypeMap[i].key);
        EXPECT_EQ(_StockTypeMap[menu].ticketValue, _CompleteStockTypeMap[i].ticketValue);
        ++menu;
    }
    EXPECT_EQ(menu, 10u);
}
