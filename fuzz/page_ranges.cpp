// Arbitrary text to the page-range parser, in both modes. Checks what the dialogs rely on:
// a success yields ranges of valid pages within the expansion cap, a failure yields a known
// code, a position inside the text and no ranges.
#include "ticket/ticket.h"

#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (bool rangesMode : {true, false}) {
        const PageRangesResult r = ParsePageRanges(text, rangesMode);
        if (r.status == noErr) {
            if (r.ranges.empty() || (!rangesMode && int64_t(r.ranges.size()) > kMaxExpandedPages))
                std::abort();
            for (const PageRange& p : r.ranges)
                if (p.first < 0 || p.count < 1 || int64_t(p.first) + p.count - 1 > kMaxPageNumber ||
                    (!rangesMode && p.count != 1))
                    std::abort();
        } else if ((r.status != kPageNumberLimitErr && r.status != kInvalidPageRangesErr &&
                    r.status != kInvalidRangeOrderErr) ||
                   r.position > size || !r.ranges.empty()) {
            std::abort();
        }
    }
    return 0;
}
