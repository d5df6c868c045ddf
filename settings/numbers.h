// Numbers shown to the user: fixed-point integers with implied decimals in the user's locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace talmo {

// `value` / 10^decimals as a decimal number of the current locale with exactly `decimals`
// fraction digits (1250, 2 -> "12.50" in en_US, "12,50" in de_DE); the integer itself when
// decimals is 0. The current locale is the POSIX numeric locale of the environment (LC_ALL,
// then LC_NUMERIC, then LANG), else ICU's default. nullopt when no usable locale is found or
// decimals lies outside 0..kMaxDecimals.
std::optional<std::string> CreateLocalizedCFStringFromNumberWithDecimals(int64_t value, int32_t decimals);
inline constexpr int32_t kMaxDecimals = 18;

// Decimal digits of |value|; 1 for 0.
int32_t CountDigits(int32_t value);

} // namespace talmo
