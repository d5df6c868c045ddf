// Typed reads of the records' dictionaries that refuse what a 32-bit field cannot hold, so a
// hostile ticket value reads as absent instead of being cut down to another value.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace talmo::internal {

inline std::optional<int32_t> getInt32(const pl::Dictionary& d, std::string_view key)
{
    auto v = d.getInt(key);
    if (!v || *v < INT32_MIN || *v > INT32_MAX)
        return std::nullopt;
    return static_cast<int32_t>(*v);
}

inline int32_t saturateInt32(int64_t v)
{
    return v < INT32_MIN ? INT32_MIN : v > INT32_MAX ? INT32_MAX : static_cast<int32_t>(v);
}

} // namespace talmo::internal
