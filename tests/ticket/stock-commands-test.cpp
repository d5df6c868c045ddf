#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <tuple>

using namespace talmo;

namespace {

// A stock picked from the paper library: named, and (for the source rules) fed from the
// inserter.
Stock namedPaper()
{
    Stock s;
    s.setSize(1);
    s.setColor(2);
    s.setType(1);
    s.setWeight(90);
    s.setCustomName("Library Blue");
    s.setCustomNameOnly(true);
    s.setSource(kStockSourceInserter);
    return s;
}

bool detached(const Stock& s) { return s.customName() == "" && !s.customNameOnly(); }

} // namespace

TEST(StockCommands, SimpleChoicesSetTheirFieldAndDetachTheNamedPaper)
{
    const struct {
        const char* what;
        uint32_t command;
        int32_t value;
        std::function<int32_t(const Stock&)> field;
        bool resetsSource;
        bool detaches;
    } cases[] = {
        {"size", kStockCommandSize, 4, [](const Stock& s) { return s.size(); }, true, true},
        {"colour", kStockCommandColor, 5, [](const Stock& s) { return s.color(); }, true, true},
        {"type", kStockCommandType, 9, [](const Stock& s) { return s.type(); }, true, true},
        {"punched", kStockCommandPunched, 2, [](const Stock& s) { return s.punched(); }, false, true},
        {"sides coated", kStockCommandSidesCoated, 3, [](const Stock& s) { return s.sidesCoated(); }, false, true},
        {"coating type", kStockCommandCoatingType, 4, [](const Stock& s) { return s.coatingType(); }, false, true},
        {"weight", kStockCommandWeight, 120, [](const Stock& s) { return s.weight(); }, false, false},
        {"source", kStockCommandSource, 3, [](const Stock& s) { return s.source(); }, false, false},
    };
    for (const auto& c : cases) {
        Stock s = namedPaper();
        EXPECT_EQ(ApplyStockCommand(s, c.command, c.value, kJobContextJob), StockCommandResult::Applied) << c.what;
        EXPECT_EQ(c.field(s), c.value) << c.what;
        if (c.command != kStockCommandSource) {
            EXPECT_EQ(s.source(), c.resetsSource ? kNotSet : kStockSourceInserter) << c.what;
        }
        EXPECT_EQ(detached(s), c.detaches) << c.what;
    }
}

TEST(StockCommands, CustomSizeComesFromItsDialog)
{
    StockCommandDialogs dialogs;
    dialogs.customSize = [](const Stock&) { return std::optional<StockDimensions>({{20000, 30000}}); };
    Stock s = namedPaper();
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandSize, 75, kJobContextJob, dialogs), StockCommandResult::Applied);
    EXPECT_EQ(s.size(), 75);
    EXPECT_EQ(s.width(), 20000);
    EXPECT_EQ(s.length(), 30000);
    EXPECT_TRUE(detached(s));
    EXPECT_EQ(s.source(), kNotSet);

    // Cancel keeps the size; the command's own resets still happen.
    Stock c = namedPaper();
    EXPECT_EQ(ApplyStockCommand(c, kStockCommandSize, 75, kJobContextJob), StockCommandResult::Cancelled);
    EXPECT_EQ(c.size(), 1);
    EXPECT_EQ(c.width(), kNotSet);
    EXPECT_EQ(c.source(), kNotSet);
    EXPECT_TRUE(detached(c));
}

TEST(StockCommands, CustomColourClearsItsTextBeforeTheDialog)
{
    std::string seen = "not called";
    StockCommandDialogs ok;
    ok.customColor = [&](const Stock& s) {
        seen = s.customColor().value_or("null");
        return std::optional<std::string>("Teal");
    };
    Stock s = namedPaper();
    s.setCustomColor("Old");
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandColor, 10, kJobContextCovers, ok), StockCommandResult::Applied);
    EXPECT_EQ(seen, "");
    EXPECT_EQ(s.color(), 10);
    EXPECT_EQ(s.customColor(), "Teal");

    Stock c = namedPaper();
    c.setColor(10);
    c.setCustomColor("Old");
    EXPECT_EQ(ApplyStockCommand(c, kStockCommandColor, 10, kJobContextCovers), StockCommandResult::Cancelled);
    EXPECT_EQ(c.color(), 10);
    EXPECT_EQ(c.customColor(), "");
    EXPECT_TRUE(detached(c));
}

TEST(StockCommands, TypeDialogsFillTypeNameAndCount)
{
    StockCommandDialogs d;
    d.orderedStock = [](const Stock&) { return std::optional<OrderedStockChoice>({"Set B", 4}); };
    d.customType = [](const Stock&) { return std::optional<std::string>("Card"); };
    d.precutTab = [](const Stock&) { return std::optional<int32_t>(5); };
    const struct {
        int32_t value;
        std::optional<std::string> name;
        int32_t modulus;
    } cases[] = {{6, "Set B", 4}, {7, "Card", kNotSet}, {4, "", 5}};
    for (const auto& c : cases) {
        Stock s = namedPaper();
        EXPECT_EQ(ApplyStockCommand(s, kStockCommandType, c.value, kJobContextInserts, d), StockCommandResult::Applied);
        EXPECT_EQ(std::make_tuple(s.type(), s.customType(), s.modulus()), std::make_tuple(c.value, c.name, c.modulus));
        Stock cancelled = namedPaper();
        EXPECT_EQ(ApplyStockCommand(cancelled, kStockCommandType, c.value, kJobContextInserts),
                  StockCommandResult::Cancelled);
        EXPECT_EQ(cancelled.type(), 1) << c.value;
        EXPECT_TRUE(detached(cancelled)) << c.value;
    }
}

TEST(StockCommands, AdvancedAndLibraryReplaceTheStockOnlyOnOk)
{
    for (const bool ok : {false, true}) {
        StockCommandDialogs d;
        d.advanced = [ok](Stock& s) {
            s.setGrain(2);
            return ok;
        };
        d.library = [ok](Stock& s) {
            s = Stock();
            s.setCustomName("Library Red");
            return ok;
        };
        const auto expected = ok ? StockCommandResult::Applied : StockCommandResult::Cancelled;
        Stock s = namedPaper();
        EXPECT_EQ(ApplyStockCommand(s, kStockCommandAdvanced, 0, 0, d), expected);
        EXPECT_EQ(s.grain(), ok ? 2 : kNotSet);
        EXPECT_EQ(detached(s), ok); // the advanced dialog detaches the named paper
        EXPECT_EQ(ApplyStockCommand(s, kStockCommandLibrary, 0, 0, d), expected);
        EXPECT_EQ(s.customName(), ok ? "Library Red" : "Library Blue"); // the library names it
    }
}

TEST(StockCommands, DefaultFollowsTheCallersContext)
{
    Stock job = namedPaper();
    EXPECT_EQ(ApplyStockCommand(job, kStockCommandDefault, 0, kJobContextJob), StockCommandResult::Applied);
    EXPECT_EQ(job.punched(), kStockPunchedNo);
    EXPECT_EQ(job.color(), kNotSet);
    EXPECT_TRUE(detached(job));
    Stock page = namedPaper();
    ApplyStockCommand(page, kStockCommandDefault, 0, kJobContextCovers);
    EXPECT_EQ(page.punched(), kNotSet);
}

TEST(StockCommands, UnknownCommandsLeaveTheStockAlone)
{
    Stock s = namedPaper();
    EXPECT_EQ(ApplyStockCommand(s, FourCC("Slcn"), 1, 0), StockCommandResult::Unknown);
    EXPECT_EQ(ApplyStockCommand(s, 0, 1, 0), StockCommandResult::Unknown);
    EXPECT_TRUE(s == namedPaper());
}
