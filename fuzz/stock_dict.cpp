// Arbitrary property lists through the stock's dictionary constructor: whatever is read must
// write back to a dictionary that reads as the same stock, and the summary must be made
// without fault.
#include "ticket/ticket.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    auto dict = talmo::pl::as<talmo::pl::Dictionary>(talmo::pl::readPlist(text));
    if (!dict)
        return 0;

    const talmo::Stock stock(dict);
    const auto written = stock.asTicket();
    const talmo::Stock reread(written);
    if (!(reread == stock) || !talmo::pl::equal(reread.asTicket(), written))
        std::abort();

    talmo::StockTextSource texts;
    texts.localized = [](std::string_view key) { return std::string(key); };
    texts.mediaTypeText = [](int32_t) { return std::optional<std::string>("Tabs"); };
    for (talmo::JobContext context : {0, 4})
        (void)talmo::GenerateStockSummary(texts, context, stock, "\n");
    return 0;
}
