#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace talmo;

namespace {

Stock everythingSet()
{
    Stock s;
    s.setWidth(22000);
    s.setLength(31000);
    s.setType(kStockTypeOrdered);
    s.setCustomType("Ordered Set");
    s.setColor(kStockColorCustom);
    s.setCustomColor("Sea Green");
    s.setModulus(5);
    s.setPunched(kStockPunchedYes);
    s.setWeight(160);
    s.setDescription("Letterhead");
    s.setSidesCoated(3);
    s.setCoatingType(5);
    s.setFinish(2);
    s.setGrain(1);
    s.setCustomName("My Paper");
    s.setCustomNameOnly(true);
    s.setComment("for the annual report");
    s.setSource(kStockSourceInserter);
    return s;
}

} // namespace

TEST(StockDictionary, DefaultStockWritesAnEmptyDictionaryAndReadsBackEqual)
{
    auto d = Stock().asTicket();
    ASSERT_NE(d, nullptr);
    EXPECT_TRUE(d->empty());
    EXPECT_TRUE(Stock(pl::makeDict()) == Stock());
    EXPECT_TRUE(Stock(pl::DictPtr()) == Stock());
}

TEST(StockDictionary, RoundTripThroughAnXmlPropertyList)
{
    const Stock original = everythingSet();
    pl::ParseResult result;
    auto back = pl::as<pl::Dictionary>(pl::readPlist(pl::writePlist(original.asTicket()), &result));
    ASSERT_TRUE(result) << result.message;
    const Stock reread(back);
    EXPECT_TRUE(reread == original);
    EXPECT_TRUE(pl::equal(reread.asTicket(), original.asTicket()));
}

TEST(StockDictionary, ReadsAStoredTicket)
{
    const char* xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Size</key><integer>4</integer>
	<key>Type</key><integer>4</integer>
	<key>Modulus</key><integer>5</integer>
	<key>Color</key><integer>2</integer>
	<key>Weight</key><integer>90</integer>
	<key>SidesCoated</key><integer>2</integer>
	<key>kCoatingType</key><integer>4</integer>
	<key>kGrain</key><integer>2</integer>
	<key>CustomName</key><string>Blue Tabs</string>
</dict>
</plist>
)";
    const Stock s(pl::as<pl::Dictionary>(pl::readPlist(xml)));
    EXPECT_EQ(s.size(), 4);
    EXPECT_EQ(s.width(), kNotSet);
    EXPECT_EQ(s.type(), kStockTypePrecutTab);
    EXPECT_EQ(s.modulus(), 5);
    EXPECT_EQ(s.color(), 2);
    EXPECT_EQ(s.weight(), 90);
    EXPECT_EQ(s.sidesCoated(), 2);
    EXPECT_EQ(s.coatingType(), 4);
    EXPECT_EQ(s.grain(), 2);
    EXPECT_EQ(s.finish(), kNotSet);
    EXPECT_EQ(s.customName(), "Blue Tabs");
    EXPECT_EQ(s.customNameOnly(), false);
}

TEST(StockDictionary, CoatingTypeTravelsOnlyWithSidesCoated)
{
    Stock s;
    s.setCoatingType(3);
    auto d = s.asTicket();
    EXPECT_FALSE(d->contains("SidesCoated"));
    EXPECT_FALSE(d->contains("kCoatingType"));
    EXPECT_EQ(Stock(d).coatingType(), 1);

    // Read side: "kCoatingType" without "SidesCoated" is ignored.
    auto lone = pl::makeDict();
    lone->setInt("kCoatingType", 4);
    EXPECT_EQ(Stock(lone).coatingType(), 1);

    // Written together, whatever the coating type holds.
    s.setSidesCoated(1);
    d = s.asTicket();
    EXPECT_EQ(d->getInt("SidesCoated"), 1);
    EXPECT_EQ(d->getInt("kCoatingType"), 3);
}

TEST(StockDictionary, ModulusIsReadOnlyForPrecutTabsAndOrderedStock)
{
    const struct {
        int type;
        int32_t modulus;
    } cases[] = {{1, kNotSet}, {2, kNotSet}, {4, 7}, {5, kNotSet}, {6, 7}, {7, kNotSet}, {24, kNotSet}};
    for (const auto& c : cases) {
        auto d = pl::makeDict();
        d->setInt("Type", c.type);
        d->setInt("Modulus", 7);
        EXPECT_EQ(Stock(d).modulus(), c.modulus) << "type " << c.type;
    }
    auto noType = pl::makeDict();
    noType->setInt("Modulus", 7);
    EXPECT_EQ(Stock(noType).modulus(), kNotSet);
}

TEST(StockDictionary, WidthAndLengthAreReadOnlyForTheCustomSize)
{
    auto d = pl::makeDict();
    d->setInt("Size", 1);
    d->setInt("Width", 100);
    d->setInt("Length", 200);
    Stock letter(d);
    EXPECT_EQ(letter.size(), 1);
    EXPECT_EQ(letter.width(), kNotSet);
    EXPECT_EQ(letter.length(), kNotSet);

    d->setInt("Size", 75);
    Stock custom(d);
    EXPECT_EQ(custom.width(), 100);
    EXPECT_EQ(custom.length(), 200);

    // Without "Size" the dimensions are not read either.
    d->remove("Size");
    EXPECT_EQ(Stock(d).width(), kNotSet);

    // A custom size is written with its dimensions even when they are unset.
    Stock bare;
    bare.setSize(75);
    auto written = bare.asTicket();
    EXPECT_EQ(written->getInt("Width"), int64_t(kNotSet));
    EXPECT_EQ(written->getInt("Length"), int64_t(kNotSet));
}

TEST(StockDictionary, ReadingSkipsTheSetterCouplings)
{
    // A transparency stored with a colour other than clear keeps that colour when read.
    auto d = pl::makeDict();
    d->setInt("Color", 3);
    d->setInt("Type", 2);
    Stock s(d);
    EXPECT_EQ(s.type(), 2);
    EXPECT_EQ(s.color(), 3);
}

TEST(StockDictionary, EmptyAndNullTextsAreNotWritten)
{
    Stock s;
    s.setCustomName(std::nullopt);
    s.setDescription(std::string());
    s.setComment(std::nullopt);
    auto d = s.asTicket();
    EXPECT_TRUE(d->empty());
    s.setCustomNameOnly(false);
    EXPECT_FALSE(s.asTicket()->contains("CustomNameOnly"));
}

// Every numeric key is tried with values of the wrong kind: each leaves its field at the
// default, and the other fields are still read.
TEST(StockDictionary, WrongTypedNumbersLeaveDefaults)
{
    const char* numericKeys[] = {"Size",        "Type",   "Color",  "Weight", "Punched",
                                 "SidesCoated", "Finish", "kGrain", "Source"};
    const std::vector<std::pair<std::string, pl::ValuePtr>> badValues = {
        {"string", pl::makeString("4")},
        {"boolean", pl::makeBool(true)},
        {"fraction", pl::makeReal(1.5)},
        {"beyond 32 bits", pl::makeInt(int64_t(1) << 40)},
        {"below 32 bits", pl::makeInt(-(int64_t(1) << 40))},
        {"dictionary", pl::makeDict()},
        {"array", pl::makeArray()},
        {"data", pl::makeData({1, 2})},
        {"date", pl::makeDate(0)},
    };
    for (const char* key : numericKeys) {
        for (const auto& [what, value] : badValues) {
            auto d = pl::makeDict();
            d->set(key, value);
            d->setString("CustomName", "still read");
            const Stock s(d);
            Stock expected;
            expected.setCustomName("still read");
            EXPECT_TRUE(s == expected) << key << " as " << what;
        }
    }
}

TEST(StockDictionary, WrongTypedTextsAndFlagLeaveDefaults)
{
    const char* textKeys[] = {"CustomType", "CustomColor", "Description", "CustomName", "CustomComment"};
    for (const char* key : textKeys) {
        auto d = pl::makeDict();
        d->setInt(key, 7);
        d->setInt("Weight", 90);
        const Stock s(d);
        EXPECT_EQ(s.weight(), 90) << key;
        EXPECT_EQ(s.asTicket()->size(), 1u) << key;
        EXPECT_TRUE(s.customType() && s.customColor() && s.description() && s.customName() && s.comment()) << key;
    }
    auto d = pl::makeDict();
    d->setInt("CustomNameOnly", 1);
    EXPECT_FALSE(Stock(d).customNameOnly());
    d->setString("CustomNameOnly", "true");
    EXPECT_FALSE(Stock(d).customNameOnly());
    d->setBool("CustomNameOnly", false);
    EXPECT_FALSE(Stock(d).customNameOnly());
}

TEST(StockDictionary, WrongTypedGateValuesDoNotOpenTheirDependents)
{
    auto d = pl::makeDict();
    d->setString("Size", "75");
    d->setInt("Width", 100);
    d->setString("Type", "4");
    d->setInt("Modulus", 3);
    d->setBool("SidesCoated", true);
    d->setInt("kCoatingType", 5);
    const Stock s(d);
    EXPECT_EQ(s.size(), kNotSet);
    EXPECT_EQ(s.width(), kNotSet);
    EXPECT_EQ(s.modulus(), kNotSet);
    EXPECT_EQ(s.coatingType(), 1);
}

TEST(StockDictionary, IntegralRealsReadAsNumbers)
{
    auto d = pl::makeDict();
    d->setReal("Size", 75.0);
    d->setReal("Width", 21000.0);
    const Stock s(d);
    EXPECT_EQ(s.size(), 75);
    EXPECT_EQ(s.width(), 21000);
}
