#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace talmo;

namespace {

// The parser's cases are in the record transcript (data/record-cases.txt, "PageList").

TEST(PageRanges, SinglePageExpansionIsCappedAtOneHundredThousandPages)
{
    // "5-" is the required 99,995 pages; "0-" is the most one item can make.
    EXPECT_EQ(ParsePageRanges("5-", false).ranges.size(), 99995u);
    EXPECT_EQ(ParsePageRanges("0-", false).ranges.size(), 100000u);
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
