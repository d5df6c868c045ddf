#include "ticket/ticket.h"

namespace talmo {

namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

// One parse: the state machine over the text, with the end of the text read as a comma so
// that the last item is closed like every other.
class PageRangeParser {
public:
    PageRangeParser(std::string_view text, bool rangesMode) : text_(text), rangesMode_(rangesMode) { }

    PageRangesResult run()
    {
        const size_t n = text_.size();
        for (size_t i = 0; i <= n;) {
            const char c = i < n ? text_[i] : ',';
            if (isDigit(c)) {
                const size_t start = i;
                int32_t value = 0;
                bool overLimit = false;
                // The whole run is the number; saturate once past the limit so that a run of
                // any length neither overflows nor hides the limit.
                for (; i < n && isDigit(text_[i]); ++i)
                    if (!overLimit) {
                        value = value * 10 + (text_[i] - '0');
                        overLimit = value > kMaxPageNumber;
                    }
                if (overLimit)
                    return fail(kPageNumberLimitErr, start);
                if (!number(value, start))
                    return result_;
                continue;
            }
            if (c == '-') {
                if (state_ == State::Start)
                    state_ = State::Dash;
                else if (state_ == State::First)
                    state_ = State::Open;
                else
                    return fail(kInvalidPageRangesErr, i);
            } else if (c == ',') {
                if (state_ == State::Dash)
                    return fail(kInvalidPageRangesErr, i);
                if (state_ == State::First)
                    last_ = first_;
                if (state_ != State::Start && !close(i))
                    return result_;
            }
            ++i;
        }
        if (!closedAny_)
            return fail(kInvalidPageRangesErr, n);
        return std::move(result_);
    }

private:
    enum class State { Start, Dash, First, Open };

    bool number(int32_t value, size_t pos)
    {
        switch (state_) {
        case State::Start:
            first_ = value;
            state_ = State::First;
            return true;
        case State::Dash:
        case State::Open:
            last_ = value;
            return close(pos);
        case State::First:
            // A second number without a separator: "3 7" reads as "3,7".
            last_ = first_;
            if (!close(pos))
                return false;
            first_ = value;
            state_ = State::First;
            return true;
        }
        return true;
    }

    bool close(size_t pos)
    {
        if (first_ > last_) {
            fail(kInvalidRangeOrderErr, pos);
            return false;
        }
        const int32_t count = last_ - first_ + 1;
        if (rangesMode_) {
            result_.ranges.push_back({first_, count});
        } else {
            if (expanded_ + count > kMaxExpandedPages) {
                fail(kPageNumberLimitErr, pos);
                return false;
            }
            expanded_ += count;
            for (int32_t p = first_; p <= last_; ++p)
                result_.ranges.push_back({p, 1});
        }
        closedAny_ = true;
        first_ = 1;
        last_ = kMaxPageNumber;
        state_ = State::Start;
        return true;
    }

    PageRangesResult fail(OSStatus status, size_t pos)
    {
        result_.status = status;
        result_.position = pos;
        PageRangeArray().swap(result_.ranges);
        return result_;
    }

    std::string_view text_;
    bool rangesMode_;
    State state_ = State::Start;
    int32_t first_ = 1;
    int32_t last_ = kMaxPageNumber;
    bool closedAny_ = false;
    int64_t expanded_ = 0;
    PageRangesResult result_;
};

} // namespace

PageRangesResult ParsePageRanges(std::string_view text, bool rangesMode)
{
    return PageRangeParser(text, rangesMode).run();
}

OSStatus CreatePageRangesBySeparatingString(const std::string* text, bool rangesMode, PageRangeArray* outArray)
{
    if (!text || !outArray)
        return paramErr;
    PageRangesResult r = ParsePageRanges(*text, rangesMode);
    if (r.status == noErr)
        *outArray = std::move(r.ranges);
    return r.status;
}

const char* PageRangeErrorTitleKey(OSStatus code)
{
    switch (code) {
    case kPageNumberLimitErr:
        return "Page Number Limit Title";
    case kInvalidPageRangesErr:
        return "Invalid Pages Title";
    case kInvalidRangeOrderErr:
        return "Invalid Ranges Title";
    case kInvalidPageNumbersErr:
        return "Invalid Page Numbers Title";
    case kPageRangeConflictErr:
        return "PageRangeConflictTitle";
    default:
        return nullptr;
    }
}

const char* PageRangeErrorMessageKey(OSStatus code)
{
    switch (code) {
    case kPageNumberLimitErr:
        return "Page Number Limit";
    case kInvalidPageRangesErr:
        return "Invalid Page Ranges";
    case kInvalidRangeOrderErr:
        return "Invalid Range Order";
    case kInvalidPageNumbersErr:
        return "Invalid Page Numbers Message";
    case kPageRangeConflictErr:
        return "PageRangeConflictMessage";
    default:
        return nullptr;
    }
}

} // namespace talmo
