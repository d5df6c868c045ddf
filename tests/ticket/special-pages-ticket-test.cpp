#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace talmo;

namespace {

constexpr const char* kBooklet = "com.talmo.print.BookletLayout";
constexpr const char* kOtherCreator = "com.talmo.printingmanager";

std::unique_ptr<Cover> cover(int32_t sides, int32_t source = kNotSet)
{
    auto c = std::make_unique<Cover>();
    c->setSidesImaged(sides);
    c->stock().setSource(source);
    return c;
}

TEST(SpecialPagesTicket, WritesEveryItemOrRemovesItsKey)
{
    const char* keys[] = {kSpecialPagesFrontCoverKey, kSpecialPagesBackCoverKey, kSpecialPagesInsertListKey,
                          kSpecialPagesExceptionListKey};
    Ticket ticket;
    for (const char* key : keys)
        ticket.set(key, pl::makeString("stale"), kOtherCreator);
    ticket.set("com.talmo.print.Other", pl::makeString("kept"), kOtherCreator);
    SpecialPagesState state;
    ASSERT_EQ(WriteSpecialPagesToTicket(&state, &ticket), noErr);
    EXPECT_EQ(ticket.keys(), std::vector<std::string>{"com.talmo.print.Other"});

    state.frontCover = cover(kCoverPrintSide1);
    state.backCover = cover(kCoverPrintSide2);
    std::vector<std::unique_ptr<Insert>> inserts;
    inserts.push_back(std::make_unique<Insert>());
    ASSERT_EQ(state.inserts.add(inserts), noErr);
    ASSERT_EQ(state.exceptions.add(std::vector<const SpecialPage*>{std::make_unique<ExceptionPage>().get()}), noErr);
    ASSERT_EQ(WriteSpecialPagesToTicket(&state, &ticket), noErr);
    EXPECT_TRUE(pl::equal(ticket.get(kSpecialPagesFrontCoverKey), state.frontCover->asTicket()));
    EXPECT_TRUE(pl::equal(ticket.get(kSpecialPagesBackCoverKey), state.backCover->asTicket()));
    EXPECT_TRUE(pl::equal(ticket.get(kSpecialPagesInsertListKey), state.inserts.asTicket()));
    EXPECT_TRUE(pl::equal(ticket.get(kSpecialPagesExceptionListKey), state.exceptions.asTicket()));
    for (const char* key : keys)
        EXPECT_EQ(ticket.creatorOf(key), "com.talmo.print") << key;

    // One locked item stops the whole write.
    Ticket locked;
    locked.set(kSpecialPagesBackCoverKey, pl::makeDict(), kOtherCreator, true);
    EXPECT_EQ(WriteSpecialPagesToTicket(&state, &locked), kPMTicketItemLocked);
    EXPECT_EQ(locked.size(), 1u);
    EXPECT_EQ(WriteSpecialPagesToTicket(nullptr, &ticket), paramErr);
    EXPECT_EQ(WriteSpecialPagesToTicket(&state, nullptr), paramErr);
    EXPECT_EQ(ReadSpecialPagesFromTicket(nullptr, &ticket), paramErr);
    EXPECT_EQ(ReadSpecialPagesFromTicket(&state, nullptr), paramErr);
}

TEST(SpecialPagesTicket, BookletWithEqualCoversStoresOnlyTheFront)
{
    struct Case {
        bool booklet;
        int32_t backSides;
        bool backStored;
    };
    for (const Case c : {Case{true, kCoverPrintSide1, false}, Case{true, kCoverPrintSide2, true},
                         Case{false, kCoverPrintSide1, true}}) {
        SpecialPagesState state;
        state.frontCover = cover(kCoverPrintSide1);
        state.backCover = cover(c.backSides);
        state.backCover->setStartPage(40); // not compared
        Ticket ticket;
        ticket.set(kBooklet, pl::makeBool(c.booklet), kOtherCreator);
        ticket.set(kSpecialPagesBackCoverKey, pl::makeDict(), kOtherCreator);
        ASSERT_EQ(WriteSpecialPagesToTicket(&state, &ticket), noErr);
        EXPECT_TRUE(ticket.contains(kSpecialPagesFrontCoverKey));
        EXPECT_EQ(ticket.contains(kSpecialPagesBackCoverKey), c.backStored)
            << "booklet " << c.booklet << " back sides " << c.backSides;
    }
}

TEST(SpecialPagesUndo, RestoresThePreviousStateOnceOnly)
{
    SpecialPagesState state;
    EXPECT_FALSE(CanUndo(state));
    state.frontCover = cover(kCoverPrintSide1);
    std::vector<std::unique_ptr<Insert>> one;
    one.push_back(std::make_unique<Insert>());
    one.back()->setStartPage(4);
    ASSERT_EQ(state.inserts.add(one), noErr);

    ASSERT_EQ(SaveUndoState(&state), noErr);
    EXPECT_TRUE(CanUndo(state));
    Ticket before;
    ASSERT_EQ(WriteSpecialPagesToTicket(&state, &before), noErr);

    // Change everything, then undo.
    state.frontCover.reset();
    state.backCover = cover(kCoverPrintSide2);
    one.back()->setStartPage(1);
    ASSERT_EQ(state.inserts.add(one), noErr);
    auto range = std::make_unique<ExceptionPage>();
    range->setEndPage(3);
    ASSERT_EQ(state.exceptions.add(std::vector<const SpecialPage*>{range.get()}), noErr);

    ASSERT_EQ(PerformUndo(&state), noErr);
    Ticket after;
    ASSERT_EQ(WriteSpecialPagesToTicket(&state, &after), noErr);
    EXPECT_TRUE(pl::equal(after.asDictionary(), before.asDictionary()));
    EXPECT_EQ(state.backCover, nullptr);
    EXPECT_FALSE(CanUndo(state));

    // A second undo does nothing until the next change is saved.
    ASSERT_EQ(PerformUndo(&state), noErr);
    EXPECT_EQ(state.inserts.count(), 1);
    EXPECT_NE(state.frontCover, nullptr);
    EXPECT_EQ(SaveUndoState(nullptr), kPMNoContext);
    EXPECT_EQ(PerformUndo(nullptr), kPMNoContext);
}

TEST(SpecialPagesUndo, SnapshotIsACopyNotAnAlias)
{
    SpecialPagesState state;
    state.frontCover = cover(kCoverPrintSide1);
    ASSERT_EQ(SaveUndoState(&state), noErr);
    state.frontCover->setSidesImaged(kCoverPrintSide2); // edited in place after the save
    ASSERT_EQ(PerformUndo(&state), noErr);
    EXPECT_EQ(state.frontCover->sidesImaged(), kCoverPrintSide1);
}

} // namespace
