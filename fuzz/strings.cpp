// Fuzz target for the ".strings" table reader: any input yields a table or a located error,
// and a table written back entry by entry reads back to the same table.
#include "platform/platform.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    StringsParseResult r;
    pl::DictPtr table = parseStringsTable(input, &r);
    if (!table) {
        if (r.status == StringsParseResult::Status::Ok || r.message.empty())
            std::abort();
        return 0;
    }
    std::string written;
    for (const auto& [k, v] : *table)
        written += formatStringsEntry(k, pl::as<pl::String>(v)->text) + "\n";
    pl::DictPtr again = parseStringsTable(written, &r);
    if (!again || !pl::equal(table, again))
        std::abort();
    return 0;
}
