#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>

using namespace talmo;

namespace {

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
