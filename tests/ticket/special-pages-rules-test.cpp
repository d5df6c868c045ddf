#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <vector>

using namespace talmo;

namespace {

std::vector<int32_t> starts(const SpecialPageList& list)
{
    std::vector<int32_t> out;
    for (long i = 0; i < list.count(); ++i)
        out.push_back(list.pageAtIndex(i)->startPage());
    return out;
}

TEST(InsertsDialog, MakesOneInsertPerPage)
{
    InsertsDialogInput input = InsertsDialogDefaults();
    input.pageText = "1-3, 7";
    input.quantity = 2;
    input.stock.setSource(10);
    std::vector<std::unique_ptr<Insert>> made;
    ASSERT_EQ(MakeInsertsFromDialog(input, &made), noErr);
    ASSERT_EQ(made.size(), 4u);
    const int32_t expected[] = {1, 2, 3, 7};
    for (size_t i = 0; i < made.size(); ++i) {
        EXPECT_EQ(made[i]->startPage(), expected[i]);
        EXPECT_EQ(made[i]->quantity(), 2);
        EXPECT_TRUE(made[i]->stock() == input.stock);
    }
}

TEST(InsertsDialog, BeforePageOneIgnoresTheField)
{
    InsertsDialogInput input = InsertsDialogDefaults();
    input.placement = kInsertBeforePage1;
    input.pageText = "not read";
    EXPECT_TRUE(InsertsDialogCanAccept(input));
    std::vector<std::unique_ptr<Insert>> made;
    ASSERT_EQ(MakeInsertsFromDialog(input, &made), noErr);
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0]->startPage(), 0);
    EXPECT_EQ(made[0]->quantity(), 1);

    // "0" typed after pages means the same place.
    input.placement = kInsertAfterPages;
    input.pageText = "0";
    ASSERT_EQ(MakeInsertsFromDialog(input, &made), noErr);
    EXPECT_EQ(made[0]->startPage(), 0);
}

TEST(InsertsDialog, AcceptsOnlyANonEmptyFieldAfterPages)
{
    InsertsDialogInput input = InsertsDialogDefaults();
    EXPECT_EQ(input.placement, kInsertAfterPages);
    EXPECT_FALSE(InsertsDialogCanAccept(input));
    input.pageText = " ";
    EXPECT_TRUE(InsertsDialogCanAccept(input)); // enabled; the parser then reports 1001
    input.placement = 3;
    EXPECT_FALSE(InsertsDialogCanAccept(input));
}

TEST(InsertsDialog, RefusesBadInputWithItsCode)
{
    struct Case {
        int32_t placement;
        const char* text;
        int32_t quantity;
        OSStatus status;
    };
    // Page list errors pass through with their code (the list's own cases are in the record
    // transcript); single-page mode caps the expansion.
    for (const Case c : {Case{kInsertAfterPages, "5-3", 1, kInvalidRangeOrderErr},
                         Case{kInsertAfterPages, "1-,1-", 1, kPageNumberLimitErr},
                         Case{kInsertAfterPages, "4", 0, paramErr}, Case{7, "4", 1, paramErr}}) {
        InsertsDialogInput input = InsertsDialogDefaults();
        input.placement = c.placement;
        input.pageText = c.text;
        input.quantity = c.quantity;
        std::vector<std::unique_ptr<Insert>> made;
        made.push_back(std::make_unique<Insert>());
        EXPECT_EQ(MakeInsertsFromDialog(input, &made), c.status) << c.text;
        EXPECT_EQ(made.size(), 1u) << "output untouched for " << c.text;
    }
}

TEST(InsertsDialog, OKAddsOrReplacesAndSavesUndoFirst)
{
    SpecialPagesState state;
    InsertsDialogInput input = InsertsDialogDefaults();
    input.pageText = "8, 2";
    ASSERT_EQ(InsertsDialogOK(&state, DialogMode::Add, nullptr, input), noErr);
    EXPECT_EQ(starts(state.inserts), (std::vector<int32_t>{2, 8}));
    ASSERT_TRUE(state.undo.inserts);
    EXPECT_EQ(state.undo.inserts->count(), 0);

    input.pageText = "9-10";
    ASSERT_EQ(InsertsDialogOK(&state, DialogMode::Edit, state.inserts.pageAtIndex(0), input), noErr);
    EXPECT_EQ(starts(state.inserts), (std::vector<int32_t>{8, 9, 10}));
    EXPECT_EQ(starts(*state.undo.inserts), (std::vector<int32_t>{2, 8}));

    // A page-list error changes nothing, not even the snapshot.
    input.pageText = "1--2";
    EXPECT_EQ(InsertsDialogOK(&state, DialogMode::Add, nullptr, input), kInvalidPageRangesErr);
    EXPECT_EQ(starts(state.inserts), (std::vector<int32_t>{8, 9, 10}));
    EXPECT_EQ(starts(*state.undo.inserts), (std::vector<int32_t>{2, 8}));
    EXPECT_EQ(InsertsDialogOK(nullptr, DialogMode::Add, nullptr, input), kPMNoContext);
}

TEST(ExceptionsDialog, MakesOneCopyOfTheWorkingRecordPerRange)
{
    ExceptionsDialogInput input = ExceptionsDialogDefaults();
    input.pageText = "3-5, 9, 20-";
    input.working.setPlex(2);
    input.working.setHalftoneScreen(11);
    input.trcText = "Contrast curve";
    std::vector<std::unique_ptr<ExceptionPage>> made;
    ASSERT_EQ(MakeExceptionsFromDialog(&input, &made), noErr);
    struct Range {
        int32_t start, end;
    };
    const Range expected[] = {{3, 5}, {9, 9}, {20, 99999}};
    ASSERT_EQ(made.size(), 3u);
    for (size_t i = 0; i < made.size(); ++i) {
        EXPECT_EQ(made[i]->startPage(), expected[i].start);
        EXPECT_EQ(made[i]->endPage(), expected[i].end);
        EXPECT_EQ(made[i]->plex(), 2);
        EXPECT_EQ(made[i]->halftoneScreen(), 11);
        EXPECT_EQ(made[i]->colorOptions().asTicket()->getString("FCTRC"), "Contrast curve");
    }
}

TEST(ExceptionsDialog, PageZeroRefusesTheWholeList)
{
    ExceptionsDialogInput input = ExceptionsDialogDefaults();
    input.pageText = "2-4, 0, 9";
    std::vector<std::unique_ptr<ExceptionPage>> made;
    EXPECT_EQ(MakeExceptionsFromDialog(&input, &made), kInvalidPageNumbersErr);
    EXPECT_TRUE(made.empty());
    input.pageText = "0-3";
    EXPECT_EQ(MakeExceptionsFromDialog(&input, &made), kInvalidPageNumbersErr);
    input.pageText = "4-2";
    EXPECT_EQ(MakeExceptionsFromDialog(&input, &made), kInvalidRangeOrderErr);

    SpecialPagesState state;
    input.pageText = "0";
    EXPECT_EQ(ExceptionsDialogOK(&state, DialogMode::Add, nullptr, &input), kInvalidPageNumbersErr);
    EXPECT_EQ(state.exceptions.count(), 0);
    EXPECT_FALSE(CanUndo(state));
}

TEST(ExceptionsDialog, EditReplacesTheEditedRange)
{
    SpecialPagesState state;
    ExceptionsDialogInput input = ExceptionsDialogDefaults();
    input.pageText = "1-10";
    ASSERT_EQ(ExceptionsDialogOK(&state, DialogMode::Add, nullptr, &input), noErr);
    input.pageText = "4-6";
    input.working.setPlex(3);
    ASSERT_EQ(ExceptionsDialogOK(&state, DialogMode::Add, nullptr, &input), noErr);
    ASSERT_EQ(starts(state.exceptions), (std::vector<int32_t>{1, 4, 7}));

    // Editing the middle range to 5-12 removes it first, then the walk trims the tail.
    input.pageText = "5-12";
    ASSERT_EQ(ExceptionsDialogOK(&state, DialogMode::Edit, state.exceptions.pageAtIndex(1), &input), noErr);
    ASSERT_EQ(starts(state.exceptions), (std::vector<int32_t>{1, 5}));
    EXPECT_EQ(state.exceptions.pageAtIndex(0)->endPage(), 3);
    EXPECT_EQ(state.exceptions.pageAtIndex(1)->endPage(), 12);

    ASSERT_EQ(PerformUndo(&state), noErr);
    EXPECT_EQ(starts(state.exceptions), (std::vector<int32_t>{1, 4, 7}));
}

TEST(CoversDialog, OptionsMakeKeepOrRemoveCovers)
{
    Cover front;
    front.setStartPage(1);
    front.setSidesImaged(kCoverPrintSide1);
    Cover back;
    back.setSidesImaged(kCoverPrintSide2);

    struct Case {
        int32_t option;
        bool front, back;
    };
    for (const Case c :
         {Case{kNoCovers, false, false}, Case{kFrontCoverOnly, true, false}, Case{kBackCoverOnly, false, true},
          Case{kSameCovers, true, true}, Case{kDifferentCovers, true, true}}) {
        CoversDialogResult made;
        ASSERT_EQ(MakeCoversFromDialog(c.option, &front, &back, std::nullopt, &made), noErr);
        EXPECT_EQ(made.front != nullptr, c.front) << c.option;
        EXPECT_EQ(made.back != nullptr, c.back) << c.option;
        // Same covers: the back is a copy of the front, start page included.
        if (made.back) {
            EXPECT_EQ(std::make_pair(made.back->sidesImaged(), made.back->startPage()),
                      c.option == kSameCovers ? std::make_pair(kCoverPrintSide1, 1)
                                              : std::make_pair(kCoverPrintSide2, 0));
        }
    }

    CoversDialogResult unchanged;
    EXPECT_EQ(MakeCoversFromDialog(0, &front, &back, std::nullopt, &unchanged), paramErr);
    EXPECT_EQ(MakeCoversFromDialog(6, &front, &back, std::nullopt, &unchanged), paramErr);
    EXPECT_EQ(MakeCoversFromDialog(kNoCovers, &front, &back, std::nullopt, nullptr), paramErr);
}

TEST(CoversDialog, NewCoversAreBlankWithTheInserterSource)
{
    CoversDialogResult made;
    ASSERT_EQ(MakeCoversFromDialog(kDifferentCovers, nullptr, nullptr, 10, &made), noErr);
    for (const Cover* c : {made.front.get(), made.back.get()}) {
        EXPECT_EQ(c->sidesImaged(), kCoverBlankOrPreprinted);
        EXPECT_EQ(c->stock().source(), 10);
    }
    Stock coverDefault;
    DefaultStock(coverDefault, kJobContextCovers);
    EXPECT_TRUE(MakeNewCover()->stock() == coverDefault);
}

TEST(CoversDialog, OptionShownAtOpenAndOK)
{
    Cover a, b;
    b.setSidesImaged(kCoverPrintSide2);
    EXPECT_EQ(CoverOptionForCovers(nullptr, nullptr), kNoCovers);
    EXPECT_EQ(CoverOptionForCovers(&a, nullptr), kFrontCoverOnly);
    EXPECT_EQ(CoverOptionForCovers(nullptr, &b), kBackCoverOnly);
    EXPECT_EQ(CoverOptionForCovers(&a, &a), kSameCovers);
    EXPECT_EQ(CoverOptionForCovers(&a, &b), kDifferentCovers);

    SpecialPagesState state;
    ASSERT_EQ(CoversDialogOK(&state, kFrontCoverOnly, nullptr, nullptr), noErr);
    ASSERT_NE(state.frontCover, nullptr);
    EXPECT_EQ(state.backCover, nullptr);
    EXPECT_TRUE(CanUndo(state));
    EXPECT_EQ(CoversDialogOK(&state, 9, nullptr, nullptr), paramErr);
    EXPECT_NE(state.frontCover, nullptr);
    ASSERT_EQ(PerformUndo(&state), noErr);
    EXPECT_EQ(state.frontCover, nullptr);
}

} // namespace
