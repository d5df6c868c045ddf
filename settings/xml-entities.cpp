#include "settings/settings.h"

namespace talmo {

namespace {
constexpr size_t kMaxEntityName = 64;
} // namespace

std::string XMLCreateStringByUnescapingEntities(std::string_view text, const pl::DictPtr& entities)
{
    if (!entities || entities->empty())
        return std::string(text);
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        size_t amp = text.find('&', pos);
        if (amp == std::string_view::npos)
            break;
        out.append(text, pos, amp - pos);
        // Names are short; bounding the look-ahead keeps a text full of "&" linear.
        size_t semi = text.substr(amp + 1, kMaxEntityName + 1).find(';');
        if (semi != std::string_view::npos) {
            semi += amp + 1;
            std::optional<std::string> replacement = entities->getString(text.substr(amp + 1, semi - amp - 1));
            if (replacement) {
                out += *replacement;
                pos = semi + 1;
                continue;
            }
        }
        out += '&';
        pos = amp + 1;
    }
    out.append(text, pos, std::string_view::npos);
    return out;
}

} // namespace talmo
