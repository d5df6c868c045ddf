#include "tpif/escape.h"

#include "platform/plist.h"

namespace talmo {

std::string XMLCreateStringByEscapingEntities(std::string_view string)
{
    return pl::escapeXmlText(string, /*escapeQuotes=*/true);
}

size_t TPifFitEscapedText(std::string_view escaped, size_t room)
{
    if (escaped.size() <= room)
        return escaped.size();
    size_t cut = 0;
    for (size_t i = 0; i < escaped.size();) {
        const unsigned char c = static_cast<unsigned char>(escaped[i]);
        size_t unit = 1;
        if (c == '&') {
            size_t semi = escaped.find(';', i);
            unit = semi == std::string_view::npos ? escaped.size() - i : semi - i + 1;
        } else if (c >= 0xF0) {
            unit = 4;
        } else if (c >= 0xE0) {
            unit = 3;
        } else if (c >= 0xC0) {
            unit = 2;
        }
        if (i + unit > room)
            break;
        i += unit;
        cut = i;
    }
    return cut;
}

} // namespace talmo
