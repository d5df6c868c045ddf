#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <map>
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

TEST(StockSummary, DefaultStockAtJobLevelShowsPrinterDefaults)
{
    EXPECT_EQ(summary(Stock(), kJobContextJob),
              "[StockColor]:[PrinterDefault]|[StockType]:[PrinterDefault]|[StockWeight]:[PrinterDefault]");
    Stock reset;
    DefaultStock(reset, kJobContextJob);
    EXPECT_EQ(summary(reset, kJobContextJob), summary(Stock(), kJobContextJob));
}

TEST(StockSummary, DefaultStockAtPageLevelIsEmptyAndShowsUseJobSetting)
{
    const auto texts = bracketTexts();
    for (JobContext c : {kJobContextCovers, kJobContextInserts, kJobContextExceptions}) {
        EXPECT_EQ(summary(Stock(), c), "");
        std::string view = "old";
        Stock s;
        EXPECT_EQ(ShowStockSummary(&texts, &view, &s, c), noErr);
        EXPECT_EQ(view, "[UseJobSetting]");
    }
}

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

TEST(StockSummary, NameOnlyStockShowsJustItsName)
{
    Stock s;
    s.setCustomName("Glossy 200");
    s.setCustomNameOnly(true);
    s.setColor(2);
    s.setSize(4);
    EXPECT_EQ(summary(s, kJobContextJob), "[StockName]:Glossy 200");
    EXPECT_EQ(summary(s, kJobContextCovers), "[StockName]:Glossy 200");
}

TEST(StockSummary, PageLevelShowsOnlySetAttributesAndTheSize)
{
    Stock s;
    s.setSize(4);
    s.setWeight(90);
    s.setCustomName("Report");
    EXPECT_EQ(summary(s, kJobContextInserts), "[StockName]:Report|[StockSize]:[A4StockSize]|[StockWeight]:[90] [gsm]");
    // The size line is a page-level line only.
    EXPECT_EQ(summary(s, kJobContextJob), "[StockName]:Report|[StockColor]:[PrinterDefault]|"
                                          "[StockType]:[PrinterDefault]|[StockWeight]:[90] [gsm]");
    // A type without a colour still shows at page level.
    Stock typed;
    typed.setType(9);
    EXPECT_EQ(summary(typed, kJobContextExceptions), "[StockType]:[Labels]");
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

TEST(StockSummary, SourceDecidesWhetherAttributesShow)
{
    auto texts = bracketTexts();
    texts.installedOptionText = [](std::string_view key) { return "Inserter (" + std::string(key) + ")"; };
    Stock s;
    s.setColor(2);
    s.setCustomName("Blue");
    s.setSource(kStockSourceInserter);
    EXPECT_EQ(summary(s, kJobContextInserts, texts), "- Inserter (PostPrintInserterKey)");
    EXPECT_EQ(summary(s, kJobContextJob, texts), "- Inserter (PostPrintInserterKey)");
    s.setSource(2);
    EXPECT_EQ(summary(s, kJobContextInserts, texts), "");
}

TEST(StockSummary, MissingTextsShowStringNotFound)
{
    StockTextSource none;
    Stock s;
    s.setColor(1);
    EXPECT_EQ(summary(s, kJobContextCovers, none), "STRING NOT FOUND:STRING NOT FOUND");
}
