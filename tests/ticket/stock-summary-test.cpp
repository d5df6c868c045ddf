#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace talmo;

TEST(StockSummary, ShowJoinsLinesWithNewlines)
{
    StockTextSource texts;
    texts.localized = [](std::string_view key) { return "[" + std::string(key) + "]"; };
    std::string view;
    Stock s;
    ASSERT_EQ(ShowStockSummary(&texts, &view, &s, kJobContextJob), noErr);
    EXPECT_EQ(view, "[StockColor]:[PrinterDefault]\n[StockType]:[PrinterDefault]\n[StockWeight]:[PrinterDefault]");

    // A stock whose summary is empty at job level (any other source) falls back to the
    // printer default.
    s.setSource(3);
    ASSERT_EQ(ShowStockSummary(&texts, &view, &s, kJobContextJob), noErr);
    EXPECT_EQ(view, "[PrinterDefault]");
}

TEST(StockMenus, FillFromTheMenuTablesWithTheStockCommands)
{
    char folder[] = "/tmp/talmo-stock-menus-XXXXXX";
    ASSERT_NE(::mkdtemp(folder), nullptr);
    const std::string lproj = std::string(folder) + "/Resources/en.lproj";
    std::filesystem::create_directories(lproj);
    std::ofstream(lproj + "/Localizable.strings") << "\"PrinterDefault\" = \"Printer default\";\n"
                                                     "\"UseJobSetting\" = \"Use job setting\";\n";
    const std::optional<Bundle> bundle = Bundle::open(folder);
    ASSERT_TRUE(bundle);
    const struct {
        int32_t (*fill)(const Bundle&, MenuModel&, JobContext);
        const SettingMap* map;
        uint32_t command;
    } cases[] = {
        {PopulateStockSizeMenu, _StockSizeMap, kStockCommandSize},
        {PopulateStockColorMenu, _StockColorMap, kStockCommandColor},
        {PopulateStockTypeMenu, _StockTypeMap, kStockCommandType},
    };
    for (const auto& c : cases) {
        for (JobContext context : {kJobContextJob, kJobContextExceptions}) {
            MenuModel menu;
            EXPECT_EQ(c.fill(*bundle, menu, context), CountMaps(c.map));
            ASSERT_EQ(menu.count(), CountMaps(c.map));
            EXPECT_EQ(menu.map, c.map);
            EXPECT_EQ(menu.items[0].label, context == kJobContextJob ? "Printer default" : "Use job setting");
            for (size_t i = 0; i < menu.items.size(); ++i) {
                EXPECT_EQ(menu.items[i].command, c.command) << i;
                EXPECT_EQ(menu.items[i].reference, c.map[i].ticketValue) << i;
            }
        }
    }
    std::filesystem::remove_all(folder);
}
