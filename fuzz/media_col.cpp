// Arbitrary bytes as a printer's IPP answer to the paper list request. Checks what the dialog
// relies on: a refused answer leaves the output alone; an accepted one gives stocks whose
// attribute codes come from the keyword tables, and whose list writes as a property list that
// parses back with one dictionary per stock.
#include "paperlib/paperlib.h"

#include <cstdlib>
#include <string_view>

namespace {

bool oneOf(int32_t v, std::initializer_list<int32_t> allowed)
{
    for (int32_t a : allowed)
        if (v == a)
            return true;
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    std::vector<Stock> stocks(1);
    const OSStatus status = StocksFromIppAnswer(std::string_view(reinterpret_cast<const char*>(data), size), stocks);
    if (status != noErr) {
        if (status != kPrinterStockBadAnswerErr || stocks.size() != 1)
            std::abort();
        return 0;
    }
    pl::ArrayPtr list = pl::makeArray();
    for (const Stock& s : stocks) {
        if (!oneOf(s.punched(), {kNotSet, 1, 2}) || !oneOf(s.sidesCoated(), {kNotSet, 1, 2, 3}) ||
            !(s.color() == kNotSet || (s.color() >= 1 && s.color() <= 21)) ||
            !(s.coatingType() == kNotSet || (s.coatingType() >= 1 && s.coatingType() <= 5)))
            std::abort();
        list->append(s.asTicket());
    }
    const pl::ArrayPtr back = pl::as<pl::Array>(pl::readPlist(pl::writePlist(list)));
    if (!back || back->size() != stocks.size())
        std::abort();
    return 0;
}
