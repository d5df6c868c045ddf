#include "platform/uuid.h"

#include <uuid/uuid.h>

#include <algorithm>

namespace talmo {

namespace {

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::optional<Uuid> Uuid::fromString(std::string_view text)
{
    // libuuid's parser wants a NUL-terminated string and accepts the same grammar; parsing
    // here keeps string_views without a copy and makes the grammar explicit.
    if (text.size() != 36)
        return std::nullopt;
    Bytes out{};
    size_t byte = 0;
    for (size_t i = 0; i < text.size();) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != '-')
                return std::nullopt;
            ++i;
            continue;
        }
        int hi = hexValue(text[i]);
        int lo = hexValue(text[i + 1]);
        if (hi < 0 || lo < 0)
            return std::nullopt;
        out[byte++] = uint8_t(hi << 4 | lo);
        i += 2;
    }
    return Uuid(out);
}

std::optional<Uuid> Uuid::fromBytes(std::span<const uint8_t> bytes)
{
    if (bytes.size() != 16)
        return std::nullopt;
    Bytes out{};
    std::copy(bytes.begin(), bytes.end(), out.begin());
    return Uuid(out);
}

Uuid Uuid::generate()
{
    Bytes out{};
    uuid_generate(out.data());
    return Uuid(out);
}

bool Uuid::isNil() const
{
    return std::all_of(bytes_.begin(), bytes_.end(), [](uint8_t b) { return b == 0; });
}

std::string Uuid::toString() const
{
    char text[37];
    uuid_unparse_upper(bytes_.data(), text);
    return std::string(text, 36);
}

} // namespace talmo
