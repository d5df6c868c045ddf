// Arbitrary text through entity unescaping with the five XML entities. Checks that escaping
// any text and unescaping it gives the text back (one pass, no cascades), and that the output
// of raw input never grows, since every replacement is shorter than its reference.
#include "settings/settings.h"

#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    static const pl::DictPtr entities = [] {
        pl::DictPtr d = pl::makeDict();
        d->setString("amp", "&");
        d->setString("lt", "<");
        d->setString("gt", ">");
        d->setString("quot", "\"");
        d->setString("apos", "'");
        return d;
    }();
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    if (XMLCreateStringByUnescapingEntities(text, entities).size() > text.size())
        std::abort();

    std::string escaped;
    for (char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&apos;";
            break;
        default:
            escaped += c;
        }
    }
    if (XMLCreateStringByUnescapingEntities(escaped, entities) != text)
        std::abort();
    return 0;
}
