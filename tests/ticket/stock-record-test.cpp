#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using namespace talmo;

TEST(StockSetters, CustomDimensionsAndTransparencyCoupleFields)
{
    Stock s;
    s.setSize(1);
    s.setWidth(8500);
    EXPECT_EQ(s.size(), 75);
    s.setLength(11000);
    s.setSize(1); // a named size clears the dimensions
    EXPECT_EQ(std::make_pair(s.width(), s.length()), std::make_pair(kNotSet, kNotSet));
    s.setWidth(kNotSet); // unsetting a dimension leaves the size
    EXPECT_EQ(s.size(), 1);

    s.setColor(3);
    s.setType(kStockTypeTransparency);
    EXPECT_EQ(s.color(), kStockColorClear);
    s.setColor(5); // chosen afterwards: kept
    EXPECT_EQ(s.color(), 5);
}

TEST(StockAssignment, CopiesThroughTheSettersInOrder)
{
    Stock transparency;
    transparency.setType(kStockTypeTransparency);
    transparency.setColor(5);
    EXPECT_EQ(Stock(transparency).color(), 5); // the copy constructor copies fields as they stand
    Stock assigned;
    assigned = transparency; // type after colour: forced back to clear
    EXPECT_EQ(assigned.color(), kStockColorClear);

    // Size goes first, so a custom size's dimensions survive and a named size clears old ones.
    Stock custom;
    custom.setWidth(1000);
    custom.setLength(2000);
    custom.setCustomName("Name");
    custom.setCustomNameOnly(true);
    custom.setSource(10);
    custom.setGrain(2);
    Stock target;
    target = custom;
    EXPECT_TRUE(target == custom);
    Stock letter;
    letter.setSize(1);
    target = letter;
    EXPECT_EQ(target.width(), kNotSet);
}

TEST(DefaultStock, ResetsUserChoicesForTheContext)
{
    Stock s(pl::as<pl::Dictionary>(pl::readPlist(
        "<plist><dict><key>Size</key><integer>75</integer><key>Width</key><integer>100</integer>"
        "<key>Length</key><integer>200</integer><key>Type</key><integer>6</integer><key>CustomType</key>"
        "<string>Set</string><key>Modulus</key><integer>5</integer><key>Color</key><integer>10</integer>"
        "<key>CustomColor</key><string>x</string><key>Weight</key><integer>90</integer><key>Punched</key>"
        "<integer>2</integer><key>Description</key><string>d</string><key>SidesCoated</key><integer>2</integer>"
        "<key>kCoatingType</key><integer>3</integer><key>Finish</key><integer>2</integer><key>kGrain</key>"
        "<integer>1</integer><key>CustomName</key><string>n</string><key>CustomNameOnly</key><true/>"
        "<key>CustomComment</key><string>kept</string><key>Source</key><integer>10</integer></dict></plist>")));
    Stock kept; // what DefaultStock leaves alone
    kept.setCoatingType(3);
    kept.setFinish(2);
    kept.setGrain(1);
    kept.setComment("kept");
    kept.setSource(10);
    for (JobContext c : {kJobContextJob, kJobContextCovers, kJobContextInserts, kJobContextExceptions, 1}) {
        Stock d = s;
        DefaultStock(d, c);
        kept.setPunched(c == kJobContextJob ? kStockPunchedNo : kNotSet);
        EXPECT_TRUE(d == kept) << "context " << c;
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
