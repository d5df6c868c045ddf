#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace talmo;

namespace {

std::vector<std::string> keys(const pl::DictPtr& d)
{
    std::vector<std::string> out;
    for (const auto& [k, v] : *d)
        out.push_back(k);
    return out;
}

pl::DictPtr plist(const std::string& body)
{
    pl::ParseResult r;
    auto v = pl::readPlist("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + body + "</plist>", &r);
    EXPECT_TRUE(r) << r.message;
    return pl::as<pl::Dictionary>(v);
}

TEST(Cover, DictionaryFormAndDefaults)
{
    Cover cover;
    cover.setStartPage(3);
    cover.setSidesImaged(kCoverPrintSide1And2);
    const pl::DictPtr d = cover.asTicket();
    EXPECT_EQ(keys(d), (std::vector<std::string>{"StartPage", "Stock", "SidesImaged"}));
    EXPECT_EQ(d->getInt("StartPage"), 3);
    EXPECT_EQ(d->getInt("SidesImaged"), 4);
    ASSERT_NE(d->getDict("Stock"), nullptr);
    EXPECT_TRUE(d->getDict("Stock")->empty()); // a default stock writes nothing

    const Cover empty(pl::makeDict());
    EXPECT_EQ(empty.startPage(), 0);
    EXPECT_EQ(empty.sidesImaged(), 1);
    EXPECT_TRUE(empty == Cover());
    const Cover fromNull(nullptr);
    EXPECT_EQ(fromNull.sidesImaged(), 1);
}

TEST(Cover, EqualityIgnoresStartPage)
{
    Cover a, b;
    a.setStartPage(1);
    b.setStartPage(9);
    EXPECT_TRUE(a == b);
    b.setSidesImaged(kCoverPrintSide2);
    EXPECT_FALSE(a == b);
    b.setSidesImaged(a.sidesImaged());
    b.stock().setSource(10);
    EXPECT_FALSE(a == b);
}

TEST(Insert, DictionaryFormAndDefaults)
{
    Insert insert;
    insert.setStartPage(0);
    insert.setQuantity(3);
    insert.stock().setSource(10);
    const pl::DictPtr d = insert.asTicket();
    EXPECT_EQ(keys(d), (std::vector<std::string>{"StartPage", "Stock", "Quantity"}));
    EXPECT_EQ(d->getInt("Quantity"), 3);

    const Insert back(d);
    EXPECT_EQ(back.quantity(), 3);
    EXPECT_TRUE(back.stock() == insert.stock());
    EXPECT_EQ(Insert(pl::makeDict()).quantity(), 1);
}

TEST(ExceptionPage, ReadsBackWhatItWrites)
{
    ExceptionPage e;
    e.setStartPage(2);
    e.setEndPage(5);
    e.setPlex(2);
    e.setHalftoneScreen(14);
    e.setAntialiasing(1);
    e.setOutputColor(2);
    e.setLightenDarken(-5);
    e.stock().setSource(10);
    e.colorOptions().setTRC(std::string("Curve"));
    e.imageShift()->option = 8;
    e.imageShift()->x1 = 100; // 1.00 in: survives the round trip exactly
    e.imageShift()->x2 = 100;

    const ExceptionPage back(e.asTicket());
    EXPECT_EQ(back.startPage(), 2);
    EXPECT_EQ(back.endPage(), 5);
    EXPECT_EQ(back.plex(), 2);
    EXPECT_EQ(back.halftoneScreen(), 14);
    EXPECT_EQ(back.antialiasing(), 1);
    EXPECT_EQ(back.outputColor(), 2);
    EXPECT_EQ(back.lightenDarken(), -5);
    EXPECT_TRUE(back.stock() == e.stock());
    EXPECT_TRUE(*back.imageShift() == *e.imageShift());
    EXPECT_TRUE(pl::equal(back.asTicket(), e.asTicket()));

    // The copy carries every field.
    auto copy = e.clone();
    EXPECT_TRUE(pl::equal(copy->asTicket(), e.asTicket()));
}

TEST(ExceptionPage, AbsentOrWrongTypedValuesLeaveDefaults)
{
    const ExceptionPage d(plist("<dict><key>StartPage</key><integer>5</integer></dict>"));
    EXPECT_EQ(d.startPage(), 5);
    EXPECT_EQ(d.endPage(), 0); // no "EndPage"
    EXPECT_EQ(d.plex(), kNotSet);
    EXPECT_EQ(d.imageShift()->option, kNotSet);
    EXPECT_EQ(d.lightenDarken(), kNotSet);

    const ExceptionPage bad(plist("<dict>"
                                  "<key>StartPage</key><string>3</string>"
                                  "<key>EndPage</key><integer>4294967296</integer>"
                                  "<key>Stock</key><array/>"
                                  "<key>SidesImaged</key><true/>"
                                  "<key>HalftoneScreen</key><real>6.5</real>"
                                  "<key>LightenDarken</key><real>2</real>"
                                  "<key>com.talmo.print.ImageShiftOptionsPage</key><string>x</string>"
                                  "<key>FullColorOptionsPage</key><integer>1</integer>"
                                  "</dict>"));
    EXPECT_EQ(bad.startPage(), 0);
    EXPECT_EQ(bad.endPage(), 0); // beyond 32 bits: not cut down to another value
    EXPECT_EQ(bad.plex(), kNotSet);
    EXPECT_EQ(bad.halftoneScreen(), kNotSet);
    EXPECT_EQ(bad.lightenDarken(), 2); // an integral real is a number
    EXPECT_TRUE(bad.stock() == Stock());
    EXPECT_TRUE(*bad.imageShift() == *ExceptionPage().imageShift());
    EXPECT_TRUE(pl::equal(bad.colorOptions().asTicket(), FullColorOptions().asTicket()));
}

TEST(SpecialPageList, TicketFormIsNullWhenEmptyAndInListOrder)
{
    InsertList list;
    EXPECT_EQ(list.asTicket(), nullptr);
    std::vector<std::unique_ptr<Insert>> batch;
    for (int32_t s : {6, 2}) {
        batch.push_back(std::make_unique<Insert>());
        batch.back()->setStartPage(s);
    }
    ASSERT_EQ(list.add(batch), noErr);
    const pl::ArrayPtr a = list.asTicket();
    ASSERT_NE(a, nullptr);
    ASSERT_EQ(a->size(), 2u);
    EXPECT_EQ(pl::as<pl::Dictionary>(a->at(0))->getInt("StartPage"), 2);
    EXPECT_EQ(pl::as<pl::Dictionary>(a->at(1))->getInt("StartPage"), 6);
}

} // namespace
