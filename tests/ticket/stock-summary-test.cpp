#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace talmo;

namespace {

// Shows which key every text came from: "[Key]".
StockTextSource bracketTexts()
{
    StockTextSource t;
    t.localized = [](std::string_view key) { return "[" + std::string(key) + "]"; };
    return t;
}

std::string summary(const Stock& s, JobContext context, const StockTextSource& texts = bracketTexts())
{
    return GenerateStockSummary(texts, context, s, "|");
}

} // namespace

TEST(StockSummary, ShowJoinsLinesWithNewlines)
{
    const auto texts = bracketTexts();
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

TEST(StockSummary, ShowNeedsTextsAndAView)
{
    const auto texts = bracketTexts();
    std::string view = "kept";
    Stock s;
    EXPECT_EQ(ShowStockSummary(nullptr, &view, &s, 0), paramErr);
    EXPECT_EQ(view, "kept");
    EXPECT_EQ(ShowStockSummary(&texts, nullptr, &s, 0), paramErr);
    EXPECT_EQ(ShowStockSummary(&texts, &view, nullptr, 0), noErr);
    EXPECT_EQ(view, "");
}

TEST(StockSummary, TabStocksShowThePrinterTextWithTheirCount)
{
    auto texts = bracketTexts();
    texts.mediaTypeText = [](int32_t type) -> std::optional<std::string> {
        if (type == 24)
            return "Tab Stock";
        return std::nullopt;
    };
    Stock s;
    s.setType(24);
    s.setModulus(5);
    EXPECT_EQ(summary(s, kJobContextCovers, texts), "[StockType]:Tab Stock (5)");
    // No text from the printer: no type line at all.
    s.setType(33);
    EXPECT_EQ(summary(s, kJobContextCovers, texts), "");
    EXPECT_EQ(summary(s, kJobContextCovers), "");
    // Without a count it is an ordinary (unnamed) type.
    s.setType(24);
    s.setModulus(0);
    EXPECT_EQ(summary(s, kJobContextCovers, texts), "[StockType]:STRING NOT FOUND");
}

TEST(StockSummary, MissingTextsShowStringNotFound)
{
    StockTextSource none;
    Stock s;
    s.setColor(1);
    EXPECT_EQ(summary(s, kJobContextCovers, none), "STRING NOT FOUND:STRING NOT FOUND");
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
