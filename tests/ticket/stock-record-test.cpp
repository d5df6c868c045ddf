#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace talmo;

TEST(StockSetters, ACustomDimensionMakesTheSizeCustomAndANamedSizeClearsThem)
{
    Stock s;
    s.setSize(1);
    s.setWidth(8500);
    EXPECT_EQ(s.size(), 75);
    s.setLength(11000);
    s.setSize(1);
    EXPECT_EQ(s.width(), kNotSet);
    EXPECT_EQ(s.length(), kNotSet);

    // Choosing the custom size keeps dimensions; unsetting a dimension leaves the size.
    s.setWidth(100);
    s.setLength(200);
    s.setSize(75);
    EXPECT_EQ(s.width(), 100);
    EXPECT_EQ(s.length(), 200);
    s.setSize(4);
    s.setWidth(kNotSet);
    s.setLength(kNotSet);
    EXPECT_EQ(s.size(), 4);
}

TEST(StockSetters, ATransparencyIsClearUntilTheColourIsChosenAgain)
{
    Stock s;
    s.setColor(3);
    s.setType(kStockTypeTransparency);
    EXPECT_EQ(s.color(), kStockColorClear);
    s.setColor(5);
    EXPECT_EQ(s.color(), 5);
    s.setType(1);
    EXPECT_EQ(s.color(), 5);
}

TEST(StockAssignment, CopiesThroughTheSettersInOrder)
{
    Stock transparency;
    transparency.setType(kStockTypeTransparency);
    transparency.setColor(5); // kept by the record, forced back by assignment
    Stock copied(transparency);
    EXPECT_EQ(copied.color(), 5); // the copy constructor copies fields as they stand

    Stock assigned;
    assigned = transparency;
    EXPECT_EQ(assigned.color(), kStockColorClear);
    EXPECT_EQ(assigned.type(), kStockTypeTransparency);

    // Size goes first, so a custom size's dimensions survive, and a named size clears the
    // target's old dimensions.
    Stock custom;
    custom.setWidth(1000);
    custom.setLength(2000);
    Stock target;
    target = custom;
    EXPECT_EQ(target.size(), 75);
    EXPECT_EQ(target.width(), 1000);
    EXPECT_EQ(target.length(), 2000);
    Stock letter;
    letter.setSize(1);
    target = letter;
    EXPECT_EQ(target.width(), kNotSet);

    // Everything else arrives unchanged.
    Stock full;
    full.setCustomName("Name");
    full.setCustomNameOnly(true);
    full.setComment("c");
    full.setSource(10);
    full.setCoatingType(4);
    full.setGrain(2);
    Stock other;
    other = full;
    EXPECT_TRUE(other == full);

    Stock& self = other;
    other = self;
    EXPECT_TRUE(other == full);
}

TEST(DefaultStock, ResetsUserChoicesForTheContext)
{
    Stock s;
    s.setWidth(100);
    s.setLength(200);
    s.setColor(3);
    s.setType(6);
    s.setCustomType("Set");
    s.setModulus(5);
    s.setWeight(90);
    s.setSidesCoated(2);
    s.setCustomColor("x");
    s.setDescription("d");
    s.setCustomName("n");
    s.setCustomNameOnly(true);
    s.setCoatingType(3);
    s.setFinish(2);
    s.setGrain(1);
    s.setComment("kept");
    s.setSource(10);

    Stock job = s;
    DefaultStock(job, kJobContextJob);
    Stock page = s;
    DefaultStock(page, kJobContextExceptions);

    for (const Stock* d : {&job, &page}) {
        EXPECT_EQ(d->size(), kNotSet);
        EXPECT_EQ(d->width(), kNotSet);
        EXPECT_EQ(d->length(), kNotSet);
        EXPECT_EQ(d->color(), kNotSet);
        EXPECT_EQ(d->type(), kNotSet);
        EXPECT_EQ(d->modulus(), kNotSet);
        EXPECT_EQ(d->weight(), kNotSet);
        EXPECT_EQ(d->sidesCoated(), kNotSet);
        EXPECT_EQ(d->customType(), "");
        EXPECT_EQ(d->customColor(), "");
        EXPECT_EQ(d->description(), "");
        EXPECT_EQ(d->customName(), "");
        EXPECT_FALSE(d->customNameOnly());
        // Left alone.
        EXPECT_EQ(d->coatingType(), 3);
        EXPECT_EQ(d->finish(), 2);
        EXPECT_EQ(d->grain(), 1);
        EXPECT_EQ(d->comment(), "kept");
        EXPECT_EQ(d->source(), 10);
    }
    EXPECT_EQ(job.punched(), kStockPunchedNo);
    EXPECT_EQ(page.punched(), kNotSet);
    for (JobContext c : {kJobContextCovers, kJobContextInserts, 1}) {
        Stock other = s;
        DefaultStock(other, c);
        EXPECT_EQ(other.punched(), kNotSet) << "context " << c;
    }
}

TEST(StockEquality, TextsCompareWithFullCaseFolding)
{
    const struct {
        const char* a;
        const char* b;
        bool equal;
    } cases[] = {
        {"My Paper", "my paper", true},
        {"MY PAPER", "My Paper", true},
        {"STRASSE", "straße", true},  // full folding: ß is ss
        {"ΣΊΣΥΦΟΣ", "σίσυφος", true}, // final sigma folds like sigma
        {"Café", "Cafe\u0301", true}, // canonically equivalent spellings
        {"CAFÉ", "cafe\u0301", true},
        {"I", "ı", false}, // default folding, not the Turkish one
        {"Paper", "Paper ", false},
        {"Paper", "Papier", false},
        {"", "", true},
        {"a\xff", "A\xff", true}, // malformed bytes compare as replacement characters
    };
    for (const auto& c : cases) {
        Stock a, b;
        a.setCustomName(c.a);
        b.setCustomName(c.b);
        EXPECT_EQ(a == b, c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(EqualIgnoringCase(c.a, c.b), c.equal) << c.a << " vs " << c.b;
    }
}

TEST(StockEquality, EveryFieldCounts)
{
    const std::pair<const char*, std::function<void(Stock&)>> changes[] = {
        {"size", [](Stock& s) { s.setSize(4); }},
        {"width", [](Stock& s) { s.setWidth(1); }},
        {"length", [](Stock& s) { s.setLength(1); }},
        {"color", [](Stock& s) { s.setColor(2); }},
        {"type", [](Stock& s) { s.setType(1); }},
        {"modulus", [](Stock& s) { s.setModulus(3); }},
        {"weight", [](Stock& s) { s.setWeight(90); }},
        {"punched", [](Stock& s) { s.setPunched(1); }},
        {"sidesCoated", [](Stock& s) { s.setSidesCoated(2); }},
        {"coatingType of an uncoated stock", [](Stock& s) { s.setCoatingType(3); }},
        {"finish", [](Stock& s) { s.setFinish(1); }},
        {"grain", [](Stock& s) { s.setGrain(1); }},
        {"customNameOnly", [](Stock& s) { s.setCustomNameOnly(true); }},
        {"customColor", [](Stock& s) { s.setCustomColor("x"); }},
        {"customType", [](Stock& s) { s.setCustomType("x"); }},
        {"description", [](Stock& s) { s.setDescription("x"); }},
        {"customName", [](Stock& s) { s.setCustomName("x"); }},
        {"comment", [](Stock& s) { s.setComment("x"); }},
        {"source", [](Stock& s) { s.setSource(10); }},
    };
    for (const auto& [what, change] : changes) {
        Stock a, b;
        change(b);
        EXPECT_FALSE(a == b) << what;
        EXPECT_FALSE(b == a) << what;
        change(a);
        EXPECT_TRUE(a == b) << what;
    }
}

TEST(StockEquality, ANullTextMakesRecordsUnequalEvenToThemselves)
{
    const std::function<void(Stock&)> nulls[] = {
        [](Stock& s) { s.setCustomColor(std::nullopt); }, [](Stock& s) { s.setCustomType(std::nullopt); },
        [](Stock& s) { s.setDescription(std::nullopt); }, [](Stock& s) { s.setCustomName(std::nullopt); },
        [](Stock& s) { s.setComment(std::nullopt); },
    };
    for (size_t i = 0; i < std::size(nulls); ++i) {
        Stock withNull, plain;
        nulls[i](withNull);
        EXPECT_FALSE(withNull == plain) << i;
        EXPECT_FALSE(plain == withNull) << i;
        EXPECT_FALSE(withNull == withNull) << i;
        // The dictionary form has no null: the text is simply absent, and reads back empty.
        EXPECT_TRUE(Stock(withNull.asTicket()) == plain) << i;
    }
}
