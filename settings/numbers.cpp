#include "settings/settings.h"

#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include <cmath>
#include <cstdlib>
#include <string_view>

namespace talmo {

namespace {

// The POSIX rule for the numeric category; "de_DE.UTF-8@euro" becomes ICU's "de_DE".
std::optional<icu::Locale> CurrentNumberLocale()
{
    for (const char* var : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* env = std::getenv(var);
        if (!env || !*env)
            continue;
        std::string_view id(env);
        id = id.substr(0, id.find_first_of(".@"));
        if (id.empty())
            return std::nullopt;
        // ICU's own reading of "C"/"POSIX" (en_US_POSIX) formats as en_US does.
        icu::Locale locale = icu::Locale::createCanonical(std::string(id).c_str());
        if (locale.isBogus())
            return std::nullopt;
        return locale;
    }
    icu::Locale locale = icu::Locale::getDefault();
    if (locale.isBogus())
        return std::nullopt;
    return locale;
}

} // namespace

std::optional<std::string> CreateLocalizedCFStringFromNumberWithDecimals(int64_t value, int32_t decimals)
{
    if (decimals < 0 || decimals > kMaxDecimals)
        return std::nullopt;
    std::optional<icu::Locale> locale = CurrentNumberLocale();
    if (!locale)
        return std::nullopt;
    // Scaling by a power of ten is exact in ICU's decimal arithmetic, so no binary rounding
    // creeps in (1 / 100 stays 0.01).
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text = icu::number::NumberFormatter::withLocale(*locale)
                                  .precision(icu::number::Precision::fixedFraction(decimals))
                                  .scale(icu::number::Scale::powerOfTen(-decimals))
                                  .formatInt(value, status)
                                  .toString(status);
    if (U_FAILURE(status))
        return std::nullopt;
    std::string utf8;
    text.toUTF8String(utf8);
    return utf8;
}

int32_t CountDigits(int32_t value)
{
    if (value == 0)
        return 1;
    // The epsilon keeps exact powers of ten from landing just below their digit count.
    double magnitude = std::fabs(static_cast<double>(value));
    return static_cast<int32_t>(std::floor(std::log10(magnitude) + 1.0 + 2.220446049250313e-16));
}

} // namespace talmo
