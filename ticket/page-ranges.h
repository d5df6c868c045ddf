// The page-range parser of the special pages dialogs: "1-3, 7" -> (1,3) (7,1) in ranges mode,
// or one range per page in single-page mode (the inserts dialog makes one insert per page).
#pragma once

#include "settings/settings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

// Error codes of the parser and the special pages dialogs; each has an alert (title and
// message keys, PageRangeErrorTitleKey / PageRangeErrorMessageKey).
inline constexpr OSStatus kPageNumberLimitErr = 1000;    // a page number above 99999
inline constexpr OSStatus kInvalidPageRangesErr = 1001;  // a syntax error, or no page at all
inline constexpr OSStatus kInvalidRangeOrderErr = 1002;  // first page above last page
inline constexpr OSStatus kInvalidPageNumbersErr = 1003; // an exception range starting at page 0
inline constexpr OSStatus kPageRangeConflictErr = 1234;  // a conflict of page ranges

inline constexpr int32_t kMaxPageNumber = 99999;
// A single-page expansion beyond this many pages in total fails with kPageNumberLimitErr:
// "1-," repeated expands a few kilobytes of text to ~10^8 pages. "0-" (100,000 pages) is the
// largest one item can make.
inline constexpr int64_t kMaxExpandedPages = 100000;

// A parsed range: first page (0 or more) and page count (1 or more).
struct PageRange {
    int32_t first = 0;
    int32_t count = 0;
    friend bool operator==(const PageRange&, const PageRange&) = default;
};
using PageRangeArray = std::vector<PageRange>;

// Full result of a parse: the status, the byte offset in the text where the parse stopped
// on an error (the first digit of the offending number, the offending '-' or ',', or the
// text's length when the end of the text closed a bad item), and the ranges on success.
struct PageRangesResult {
    OSStatus status = noErr;
    size_t position = 0;
    PageRangeArray ranges;
};

// Parses `text` (UTF-8; ASCII digits, '-' and ',' are significant, every other byte is
// skipped). rangesMode true: one range per item; false: one (page, 1) range per page.
PageRangesResult ParsePageRanges(std::string_view text, bool rangesMode);

// The dialogs' entry point: 0 and the ranges in *outArray, or an error code (1000, 1001,
// 1002) with *outArray untouched, or paramErr when text or outArray is null.
OSStatus CreatePageRangesBySeparatingString(const std::string* text, bool rangesMode, PageRangeArray* outArray);

// Localization keys of the alert for a parser or dialog error code; null for other codes.
const char* PageRangeErrorTitleKey(OSStatus code);
const char* PageRangeErrorMessageKey(OSStatus code);

} // namespace talmo
