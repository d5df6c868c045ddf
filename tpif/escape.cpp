#include "tpif/escape.h"

#include "platform/plist.h"

namespace talmo {

std::string XMLCreateStringByEscapingEntities(std::string_view string)
{
    // Runs of plain ASCII, by far the most common text, are copied whole here; from the first
    // byte outside ASCII on, the shared policy decodes and checks the UTF-8. An ASCII byte is
    // always a character of its own, so the result is the policy's, byte for byte.
    std::string out;
    out.reserve(string.size() + 16);
    size_t run = 0;
    for (size_t i = 0; i < string.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(string[i]);
        if (c >= 0x20 && c < 0x80 && c != '&' && c != '<' && c != '>' && c != '"')
            continue;
        out.append(string, run, i - run);
        run = i + 1;
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\r':
            out += "&#xD;";
            break;
        case '\t':
        case '\n':
            out += static_cast<char>(c);
            break;
        default:
            if (c >= 0x80)
                return out += pl::escapeXmlText(string.substr(i), /*escapeQuotes=*/true);
            break; // another C0 control: dropped
        }
    }
    out.append(string, run, string.size() - run);
    return out;
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
