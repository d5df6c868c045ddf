#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace talmo;

namespace {

struct Parsed {
    const char* text;
    bool rangesMode;
    std::vector<PageRange> ranges;
};

class PageRangesParses : public testing::TestWithParam<Parsed> { };

TEST_P(PageRangesParses, YieldsRanges)
{
    const Parsed& p = GetParam();
    const PageRangesResult r = ParsePageRanges(p.text, p.rangesMode);
    EXPECT_EQ(r.status, noErr);
    EXPECT_EQ(r.ranges, p.ranges);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PageRangesParses,
    testing::Values(Parsed{"1-3, 7", true, {{1, 3}, {7, 1}}}, Parsed{"1-3, 7", false, {{1, 1}, {2, 1}, {3, 1}, {7, 1}}},
                    Parsed{"-4", true, {{1, 4}}},       // leading dash: from page 1
                    Parsed{"10-", true, {{10, 99990}}}, // trailing dash: to 99999
                    Parsed{"99999-", true, {{99999, 1}}}, Parsed{"2 4", true, {{2, 1}, {4, 1}}}, // a blank separates
                    Parsed{"a3", true, {{3, 1}}},                                                // letters are skipped
                    Parsed{"0", true, {{0, 1}}}, Parsed{",,5,,", true, {{5, 1}}},                // empty items skipped
                    Parsed{"3-3", true, {{3, 1}}}, Parsed{"99999", true, {{99999, 1}}},
                    Parsed{"000000000000000000000000000000012", true, {{12, 1}}},
                    Parsed{"1 - 2 ,\t4", true, {{1, 2}, {4, 1}}},
                    Parsed{"5-,2", true, {{5, 99995}, {2, 1}}}, // order of items is kept
                    Parsed{"3\xC3\xA9"
                           "4",
                           true,
                           {{3, 1}, {4, 1}}}, // "3é4": a letter ends the digit run
                    Parsed{"7-9", false, {{7, 1}, {8, 1}, {9, 1}}}));

struct Refused {
    const char* text;
    bool rangesMode;
    OSStatus status;
    size_t position;
};

class PageRangesRefuses : public testing::TestWithParam<Refused> { };

TEST_P(PageRangesRefuses, WithCodeAndPosition)
{
    const Refused& p = GetParam();
    const PageRangesResult r = ParsePageRanges(p.text, p.rangesMode);
    EXPECT_EQ(r.status, p.status) << p.text;
    EXPECT_EQ(r.position, p.position) << p.text;
    EXPECT_TRUE(r.ranges.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PageRangesRefuses,
    testing::Values(Refused{"5-3", true, kInvalidRangeOrderErr, 2}, Refused{"1,9-8", true, kInvalidRangeOrderErr, 4},
                    Refused{"-0", true, kInvalidRangeOrderErr, 1}, // 1 to 0
                    Refused{"1--3", true, kInvalidPageRangesErr, 2}, Refused{"--3", true, kInvalidPageRangesErr, 1},
                    Refused{"-,2", true, kInvalidPageRangesErr, 1},
                    Refused{"-", true, kInvalidPageRangesErr, 1}, // the end reads as a comma
                    Refused{"4, -", false, kInvalidPageRangesErr, 4}, Refused{"", true, kInvalidPageRangesErr, 0},
                    Refused{",,,", true, kInvalidPageRangesErr, 3}, Refused{"abc", false, kInvalidPageRangesErr, 3},
                    Refused{"100000", true, kPageNumberLimitErr, 0},
                    Refused{"3,7-100000", true, kPageNumberLimitErr, 4},
                    Refused{"1--, 123456", true, kInvalidPageRangesErr, 2}, // stops at the first error
                    Refused{"5-3, 123456", true, kInvalidRangeOrderErr, 2},
                    Refused{"2 99999999999999999999999999999999999999", true, kPageNumberLimitErr, 2}));

TEST(PageRanges, SinglePageExpansionIsCappedAtOneHundredThousandPages)
{
    // "5-" is the required 99,995 pages; "0-" is the most one item can make.
    EXPECT_EQ(ParsePageRanges("5-", false).ranges.size(), 99995u);
    EXPECT_EQ(ParsePageRanges("0-", false).ranges.size(), 100000u);
    // One page more than the cap fails where the item that crosses it is closed.
    const PageRangesResult over = ParsePageRanges("0-,7", false);
    EXPECT_EQ(over.status, kPageNumberLimitErr);
    EXPECT_EQ(over.position, 4u);
    EXPECT_TRUE(over.ranges.empty());

    std::string repeated;
    for (int i = 0; i < 1000; ++i)
        repeated += "1-,";
    const PageRangesResult many = ParsePageRanges(repeated, false);
    EXPECT_EQ(many.status, kPageNumberLimitErr);
    EXPECT_EQ(many.position, 5u); // the second item's comma
    // Ranges mode does not expand, so the same text is a thousand ranges.
    EXPECT_EQ(ParsePageRanges(repeated, true).ranges.size(), 1000u);
}

TEST(PageRanges, EntryPointLeavesOutputAloneOnError)
{
    PageRangeArray out{{42, 1}};
    const std::string bad = "1--3";
    EXPECT_EQ(CreatePageRangesBySeparatingString(&bad, true, &out), kInvalidPageRangesErr);
    EXPECT_EQ(out, (PageRangeArray{{42, 1}}));
    const std::string good = "-4";
    EXPECT_EQ(CreatePageRangesBySeparatingString(&good, true, &out), noErr);
    EXPECT_EQ(out, (PageRangeArray{{1, 4}}));
    EXPECT_EQ(CreatePageRangesBySeparatingString(nullptr, true, &out), paramErr);
    EXPECT_EQ(CreatePageRangesBySeparatingString(&good, true, nullptr), paramErr);
}

} // namespace
