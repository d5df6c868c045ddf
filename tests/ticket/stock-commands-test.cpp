#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

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

TEST(StockCommands, TransparencyFromTheMenuForcesClear)
{
    Stock s = namedPaper();
    ApplyStockCommand(s, kStockCommandType, kStockTypeTransparency, kJobContextJob);
    EXPECT_EQ(s.color(), kStockColorClear);
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

    Stock ordered = namedPaper();
    EXPECT_EQ(ApplyStockCommand(ordered, kStockCommandType, 6, kJobContextInserts, d), StockCommandResult::Applied);
    EXPECT_EQ(ordered.type(), 6);
    EXPECT_EQ(ordered.customType(), "Set B");
    EXPECT_EQ(ordered.modulus(), 4);

    Stock custom = namedPaper();
    ApplyStockCommand(custom, kStockCommandType, 7, kJobContextInserts, d);
    EXPECT_EQ(custom.type(), 7);
    EXPECT_EQ(custom.customType(), "Card");

    Stock tabs = namedPaper();
    ApplyStockCommand(tabs, kStockCommandType, 4, kJobContextInserts, d);
    EXPECT_EQ(tabs.type(), 4);
    EXPECT_EQ(tabs.modulus(), 5);

    for (int32_t value : {4, 6, 7}) {
        Stock cancelled = namedPaper();
        EXPECT_EQ(ApplyStockCommand(cancelled, kStockCommandType, value, kJobContextInserts),
                  StockCommandResult::Cancelled);
        EXPECT_EQ(cancelled.type(), 1) << value;
        EXPECT_TRUE(detached(cancelled)) << value;
    }
}

TEST(StockCommands, CustomWeightRowOpensTheWeightDialog)
{
    StockCommandDialogs d;
    d.customWeight = [](const Stock&) { return std::optional<int32_t>(163); };
    Stock s = namedPaper();
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandWeight, kStockWeightCustomRow, 0, d), StockCommandResult::Applied);
    EXPECT_EQ(s.weight(), 163);
    EXPECT_FALSE(detached(s));
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandWeight, kStockWeightCustomRow, 0), StockCommandResult::Cancelled);
    EXPECT_EQ(s.weight(), 163);
}

TEST(StockCommands, DescriptionIsEmptiedAndDetachesOnlyOnOk)
{
    StockCommandDialogs d;
    d.description = [](const Stock&) { return std::optional<std::string>("Heavy"); };
    Stock s = namedPaper();
    s.setDescription("Old");
    ApplyStockCommand(s, kStockCommandDescription, 0, 0, d);
    EXPECT_EQ(s.description(), "Heavy");
    EXPECT_TRUE(detached(s));

    Stock c = namedPaper();
    c.setDescription("Old");
    EXPECT_EQ(ApplyStockCommand(c, kStockCommandDescription, 0, 0), StockCommandResult::Cancelled);
    EXPECT_EQ(c.description(), "");
    EXPECT_FALSE(detached(c));
}

TEST(StockCommands, AdvancedAndLibraryReplaceTheStockOnlyOnOk)
{
    StockCommandDialogs cancelling;
    cancelling.advanced = [](Stock& s) {
        s.setGrain(2);
        return false;
    };
    cancelling.library = [](Stock& s) {
        s.setCustomName("Other");
        return false;
    };
    Stock s = namedPaper();
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandAdvanced, 0, 0, cancelling), StockCommandResult::Cancelled);
    EXPECT_EQ(ApplyStockCommand(s, kStockCommandLibrary, 0, 0, cancelling), StockCommandResult::Cancelled);
    EXPECT_TRUE(s == namedPaper());

    StockCommandDialogs accepting;
    accepting.advanced = [](Stock& s) {
        s.setGrain(2);
        s.setFinish(1);
        return true;
    };
    accepting.library = [](Stock& s) {
        s = Stock();
        s.setCustomName("Library Red");
        s.setCustomNameOnly(true);
        s.setColor(9);
        return true;
    };
    ApplyStockCommand(s, kStockCommandAdvanced, 0, 0, accepting);
    EXPECT_EQ(s.grain(), 2);
    EXPECT_EQ(s.finish(), 1);
    EXPECT_TRUE(detached(s));
    ApplyStockCommand(s, kStockCommandLibrary, 0, 0, accepting);
    EXPECT_EQ(s.customName(), "Library Red");
    EXPECT_TRUE(s.customNameOnly());
    EXPECT_EQ(s.color(), 9);
    EXPECT_EQ(s.grain(), kNotSet);
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
