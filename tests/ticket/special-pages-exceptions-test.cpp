#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

using namespace talmo;

namespace {

// A range and a tag that says which record its settings came from (kept in the halftone
// screen, which the walk must carry over to trimmed and split pieces).
struct Span {
    int32_t start;
    int32_t end;
    int32_t tag;
    friend bool operator==(const Span&, const Span&) = default;
};

std::ostream& operator<<(std::ostream& os, const Span& s) { return os << s.start << "-" << s.end << "#" << s.tag; }

std::unique_ptr<ExceptionPage> range(int32_t start, int32_t end, int32_t tag)
{
    auto p = std::make_unique<ExceptionPage>();
    p->setStartPage(start);
    p->setEndPage(end);
    p->setHalftoneScreen(tag);
    return p;
}

std::vector<Span> spans(const ExceptionPageList& list)
{
    std::vector<Span> out;
    for (long i = 0; i < list.count(); ++i) {
        const ExceptionPage* p = list.pageAtIndex(i);
        out.push_back({p->startPage(), p->endPage(), p->halftoneScreen()});
    }
    return out;
}

void addSpans(ExceptionPageList& list, const std::vector<Span>& add)
{
    std::vector<std::unique_ptr<ExceptionPage>> batch;
    for (const Span& s : add)
        batch.push_back(range(s.start, s.end, s.tag));
    ASSERT_EQ(list.add(batch), noErr);
}

// The walk's cases are in the record transcript (data/record-cases.txt, "SpecialPages").
constexpr int32_t A = 7, B = 6, N = 11;

TEST(ExceptionPageList, PiecesKeepEveryOtherSetting)
{
    ExceptionPageList list;
    auto outer = range(1, 10, A);
    outer->setPlex(2);
    outer->setLightenDarken(-3);
    outer->stock().setSource(10);
    outer->colorOptions().setTRC(std::string("Curve 7"));
    outer->imageShift()->option = 5;
    outer->imageShift()->x1 = 40;
    ASSERT_EQ(list.add(std::vector<const SpecialPage*>{outer.get()}), noErr);
    auto inner = range(4, 6, N);
    ASSERT_EQ(list.add(std::vector<const SpecialPage*>{inner.get()}), noErr);

    ASSERT_EQ(list.count(), 3);
    for (long i : {0L, 2L}) {
        const ExceptionPage* piece = list.pageAtIndex(i);
        auto expected = outer->asTicket();
        expected->setInt("StartPage", piece->startPage());
        expected->setInt("EndPage", piece->endPage());
        EXPECT_TRUE(pl::equal(piece->asTicket(), expected)) << "piece " << i;
    }
    // The list holds clones: neither record given to add is in it.
    EXPECT_EQ(list.indexOfPage(outer.get()), -1);
    EXPECT_EQ(list.indexOfPage(inner.get()), -1);
}

TEST(ExceptionPageList, RefusesBadEntriesWithoutChangingAnything)
{
    ExceptionPageList list;
    addSpans(list, {{1, 10, A}});
    auto good = range(3, 4, N);
    auto reversed = range(9, 2, N); // would make the walk split forever
    Insert notAnException;
    EXPECT_EQ(list.add(std::vector<const SpecialPage*>{good.get(), reversed.get()}), paramErr);
    EXPECT_EQ(list.add(std::vector<const SpecialPage*>{good.get(), &notAnException}), paramErr);
    EXPECT_EQ(list.add(std::vector<const SpecialPage*>{nullptr}), paramErr);
    EXPECT_EQ(spans(list), (std::vector<Span>{{1, 10, A}}));
}

// Reference model: every page belongs to the range added last that covers it.
TEST(ExceptionPageList, RandomAddsAgreeWithPageByPageOwnership)
{
    std::mt19937 rng(20240611);
    std::uniform_int_distribution<int32_t> startDist(1, 300);
    std::uniform_int_distribution<int32_t> lengthDist(1, 40);
    std::uniform_int_distribution<int> smallBatch(1, 4);
    std::uniform_int_distribution<int> largeBatch(64, 100);
    for (int round = 0; round < 20; ++round) {
        // Odd rounds add batches large enough for the tree walk.
        auto& batchDist = round % 2 ? largeBatch : smallBatch;
        ExceptionPageList list;
        std::map<int32_t, int32_t> owner;
        int32_t tag = 1;
        for (int adds = 0; adds < 40; ++adds) {
            std::vector<Span> batch;
            for (int k = batchDist(rng); k > 0; --k) {
                const int32_t s = startDist(rng);
                const int32_t e = s + lengthDist(rng) - 1;
                batch.push_back({s, e, tag});
                for (int32_t p = s; p <= e; ++p)
                    owner[p] = tag;
                ++tag;
            }
            addSpans(list, batch);
        }
        std::vector<Span> expected;
        for (const auto& [page, t] : owner) {
            if (!expected.empty() && expected.back().end + 1 == page && expected.back().tag == t)
                expected.back().end = page;
            else
                expected.push_back({page, page, t});
        }
        ASSERT_EQ(spans(list), expected) << "round " << round;
    }
}

TEST(ExceptionPageList, AddingItsOwnEntriesClonesThemFirst)
{
    // The walk deletes the entry that the new range covers: here the very record given.
    ExceptionPageList list;
    addSpans(list, {{1, 10, A}, {12, 14, B}});
    ASSERT_EQ(list.add(std::vector<const SpecialPage*>{list.pageAtIndex(0), list.pageAtIndex(1)}), noErr);
    EXPECT_EQ(spans(list), (std::vector<Span>{{1, 10, A}, {12, 14, B}}));
    ExceptionPage* first = list.pageAtIndex(0);
    EXPECT_EQ(list.update(first, std::vector<const SpecialPage*>{first, list.pageAtIndex(1)}), noErr);
    EXPECT_EQ(spans(list), (std::vector<Span>{{1, 10, A}, {12, 14, B}}));
}

TEST(ExceptionPageList, CloneKeepsARangeEditedToEndBeforeItStarts)
{
    // add() refuses such a range, so the copy takes the entries as they stand rather than
    // losing them (the undo snapshot is such a copy).
    ExceptionPageList list;
    addSpans(list, {{1, 2, A}, {4, 9, B}});
    list.pageAtIndex(1)->setEndPage(3);
    std::unique_ptr<SpecialPageList> copy = list.clone();
    ASSERT_NE(dynamic_cast<ExceptionPageList*>(copy.get()), nullptr);
    EXPECT_EQ(spans(*static_cast<ExceptionPageList*>(copy.get())), (std::vector<Span>{{1, 2, A}, {4, 3, B}}));
    EXPECT_NE(copy->pageAtIndex(0), list.pageAtIndex(0));
}

} // namespace
