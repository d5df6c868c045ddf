#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <vector>

using namespace talmo;

namespace {

// An insert tagged through its quantity, so that equal start pages can be told apart.
std::unique_ptr<Insert> insert(int32_t start, int32_t tag)
{
    auto p = std::make_unique<Insert>();
    p->setStartPage(start);
    p->setQuantity(tag);
    return p;
}

struct Entry {
    int32_t start;
    int32_t tag;
    friend bool operator==(const Entry&, const Entry&) = default;
};

std::ostream& operator<<(std::ostream& os, const Entry& e) { return os << e.start << "#" << e.tag; }

std::vector<Entry> entries(const InsertList& list)
{
    std::vector<Entry> out;
    for (long i = 0; i < list.count(); ++i)
        out.push_back({list.pageAtIndex(i)->startPage(), list.pageAtIndex(i)->quantity()});
    return out;
}

OSStatus add(InsertList& list, const std::vector<Entry>& batch)
{
    std::vector<std::unique_ptr<Insert>> records;
    for (const Entry& e : batch)
        records.push_back(insert(e.start, e.tag));
    return list.add(records);
}

TEST(InsertList, PromotesAndDemotesOnlyAmongEqualStartPages)
{
    InsertList list;
    ASSERT_EQ(add(list, {{4, 1}, {4, 2}, {2, 3}}), noErr);
    const Insert* two = list.pageAtIndex(0);
    const Insert* fourFirst = list.pageAtIndex(1);
    const Insert* fourSecond = list.pageAtIndex(2);

    EXPECT_FALSE(list.canPromote(two));
    EXPECT_FALSE(list.canDemote(two));
    EXPECT_FALSE(list.canPromote(fourFirst));
    EXPECT_TRUE(list.canDemote(fourFirst));
    EXPECT_TRUE(list.canPromote(fourSecond));
    EXPECT_FALSE(list.canDemote(fourSecond));

    list.promote(fourSecond);
    EXPECT_EQ(entries(list), (std::vector<Entry>{{2, 3}, {4, 2}, {4, 1}}));
    EXPECT_EQ(list.indexOfPage(fourSecond), 1); // the object itself moved
    list.demote(fourSecond);
    EXPECT_EQ(entries(list), (std::vector<Entry>{{2, 3}, {4, 1}, {4, 2}}));

    // Not allowed: nothing changes.
    list.promote(two);
    list.demote(fourSecond);
    list.promote(fourFirst);
    EXPECT_EQ(entries(list), (std::vector<Entry>{{2, 3}, {4, 1}, {4, 2}}));

    Insert stranger;
    EXPECT_FALSE(list.canPromote(&stranger));
    EXPECT_FALSE(list.canDemote(&stranger));
    EXPECT_FALSE(list.canPromote(nullptr));
}

TEST(InsertList, RefusesOtherKindsWithoutChangingAnything)
{
    InsertList list;
    ASSERT_EQ(add(list, {{3, 1}}), noErr);
    auto ok = insert(1, 2);
    Cover cover;
    EXPECT_EQ(list.add(std::vector<const SpecialPage*>{ok.get(), &cover}), paramErr);
    EXPECT_EQ(list.add(std::vector<const SpecialPage*>{nullptr}), paramErr);
    EXPECT_EQ(entries(list), (std::vector<Entry>{{3, 1}}));
}

TEST(SpecialPageList, UpdateReplacesOrRestores)
{
    // Success: the edited entry is gone and the new ones are placed by the list's rules.
    InsertList inserts;
    ASSERT_EQ(add(inserts, {{1, 1}, {5, 2}, {9, 3}}), noErr);
    std::vector<std::unique_ptr<Insert>> edit;
    edit.push_back(insert(10, 4));
    edit.push_back(insert(0, 5));
    EXPECT_EQ(inserts.update(inserts.pageAtIndex(1), edit), noErr);
    EXPECT_EQ(entries(inserts), (std::vector<Entry>{{0, 5}, {1, 1}, {9, 3}, {10, 4}}));

    // Not in the list: nothing happens, and that is not an error.
    Insert stranger;
    EXPECT_EQ(inserts.update(&stranger, edit), noErr);
    EXPECT_EQ(inserts.count(), 4);

    // Failure: add refuses, and the edited entry is back where it was, the same object.
    ExceptionPageList exceptions;
    std::vector<std::unique_ptr<ExceptionPage>> ranges;
    for (int32_t s : {1, 5, 9}) {
        ranges.push_back(std::make_unique<ExceptionPage>());
        ranges.back()->setStartPage(s);
        ranges.back()->setEndPage(s + 2);
    }
    ASSERT_EQ(exceptions.add(ranges), noErr);
    ExceptionPage* middle = exceptions.pageAtIndex(1);
    std::vector<std::unique_ptr<ExceptionPage>> bad;
    bad.push_back(std::make_unique<ExceptionPage>());
    bad.back()->setStartPage(8);
    bad.back()->setEndPage(2);
    EXPECT_EQ(exceptions.update(middle, bad), paramErr);
    ASSERT_EQ(exceptions.count(), 3);
    EXPECT_EQ(exceptions.pageAtIndex(1), middle);
    EXPECT_EQ(middle->startPage(), 5);
}

} // namespace
