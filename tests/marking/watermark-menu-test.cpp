#include "marking/marking.h"

#include <gtest/gtest.h>

using namespace talmo;

namespace {

std::string bracketed(std::string_view key) { return "[" + std::string(key) + "]"; }

// One line per item: label, command, reference, submenu size.
std::string layout(const std::vector<WatermarkMenuItem>& items)
{
    std::string out;
    for (const auto& i : items)
        out += i.label + " " + std::to_string(i.command) + " " + std::to_string(i.reference) + " " +
               std::to_string(i.submenu.size()) + (i.separator ? " sep" : "") + "\n";
    return out;
}

TEST(WatermarkMenu, HistoryFollowsTheFirstRowAndOptionsCarriesItsSubmenu)
{
    const std::string W = std::to_string(FourCC("TWmW"));
    const std::string tail = "- 0 -5 0 sep\n[Options] " + std::to_string(FourCC("TWmO")) + " -6 6\n[New...] " +
                             std::to_string(FourCC("TWmN")) + " -7 0\n[Edit...] " + std::to_string(FourCC("TWmE")) +
                             " -8 0\n[Delete] " + std::to_string(FourCC("TWmD")) + " -9 0\n";
    const std::string first = "[NoWatermark] " + std::to_string(FourCC("TWmX")) + " 1 0\n";
    for (const auto& [history, middle] : {std::pair<std::vector<std::string>, std::string>{{}, ""},
                                          {{"DRAFT", "Logo.png"}, "DRAFT " + W + " 0 0\nLogo.png " + W + " 1 0\n"}}) {
        listOfWatermarks() = history;
        WatermarkMenu menu;
        menu.items.push_back({"stale", 0, 0, false, {}});
        PopulateWatermarkMenuFromMapAndHistory(bracketed, menu, _WatermarkMap);
        EXPECT_EQ(layout(menu.items), first + middle + tail);
        EXPECT_EQ(menu.map, _WatermarkMap);
        ASSERT_EQ(menu.items.size(), 6 + history.size());
        EXPECT_EQ(layout(menu.items[history.size() + 2].submenu),
                  "[WatermarkBackground] 0 1 0\n[WatermarkBlend] 0 2 0\n[WatermarkForeground] 0 3 0\n- 0 -5 0 sep\n"
                  "[WatermarkPrintOnAllPages] 0 4 0\n[WatermarmPrintOnPage1Only] 0 5 0\n");
    }
    listOfWatermarks().clear();
}

} // namespace
