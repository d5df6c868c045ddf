#include "settings/settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <regex>
#include <set>
#include <string>

using namespace talmo;

namespace {

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

// Rows whose stored measures do not follow from their labels, kept as stored on purpose.
bool isTelling(int32_t code) { return code == 70 || code == 59 || code == 43 || code == 81 || code == 77; }

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

TEST(CompleteStockSizeMap, CodesAreUniqueAndTheFlagColumnIsZero)
{
    std::set<int32_t> codes;
    for (const auto* r = CompleteStockSizeMap; r->key; ++r) {
        EXPECT_TRUE(codes.insert(r->ticketValue).second) << "code " << r->ticketValue << " twice";
        EXPECT_EQ(r->reserved, 0) << r->key;
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
