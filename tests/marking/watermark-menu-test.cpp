#include "marking/marking.h"

#include <gtest/gtest.h>

using namespace talmo;

namespace {

std::string bracketed(std::string_view key) { return "[" + std::string(key) + "]"; }

TEST(WatermarkMenu, NamesFollowTheFirstRowAndOptionsCarriesItsSubmenu)
{
    listOfWatermarks() = {"DRAFT", "Logo.png"};
    WatermarkMenu menu;
    menu.items.push_back({"stale", 0, 0, false, {}});
    PopulateWatermarkMenuFromMapAndHistory(bracketed, menu, _WatermarkMap);

    struct Expected {
        const char* label;
        uint32_t command;
        int32_t reference;
        bool separator;
    };
    const Expected expected[] = {
        {"[NoWatermark]", FourCC("TWmX"), 1, false}, {"DRAFT", FourCC("TWmW"), 0, false},
        {"Logo.png", FourCC("TWmW"), 1, false},      {"-", 0, -5, true},
        {"[Options]", FourCC("TWmO"), -6, false},    {"[New...]", FourCC("TWmN"), -7, false},
        {"[Edit...]", FourCC("TWmE"), -8, false},    {"[Delete]", FourCC("TWmD"), -9, false},
    };
    ASSERT_EQ(menu.items.size(), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(menu.items[i].label, expected[i].label);
        EXPECT_EQ(menu.items[i].command, expected[i].command);
        EXPECT_EQ(menu.items[i].reference, expected[i].reference);
        EXPECT_EQ(menu.items[i].separator, expected[i].separator);
        EXPECT_EQ(menu.items[i].submenu.empty(), expected[i].reference != -6);
    }
    EXPECT_EQ(menu.map, _WatermarkMap);

    const auto& options = menu.items[4].submenu;
    const std::pair<const char*, int32_t> rows[] = {
        {"[WatermarkBackground]", 1},      {"[WatermarkBlend]", 2},           {"[WatermarkForeground]", 3}, {"-", -5},
        {"[WatermarkPrintOnAllPages]", 4}, {"[WatermarmPrintOnPage1Only]", 5}};
    ASSERT_EQ(options.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(options[i].label, rows[i].first);
        EXPECT_EQ(options[i].reference, rows[i].second);
    }
    listOfWatermarks().clear();
}

TEST(WatermarkMenu, WithoutWatermarksTheMapRowsStandAlone)
{
    listOfWatermarks().clear();
    WatermarkMenu menu;
    PopulateWatermarkMenuFromMapAndHistory(bracketed, menu, _WatermarkMap);
    ASSERT_EQ(menu.items.size(), 6u);
    EXPECT_EQ(menu.items[1].separator, true);
}

} // namespace
