// Localized decimals, digit counts, entity unescaping and the system version.
#include "tests/settings/prefs-fixture.h"

namespace talmo {
namespace {

using test::ScopedEnv;

TEST(CountDigits, CountsDecimalDigitsOfTheMagnitude)
{
    const std::pair<int32_t, int32_t> cases[] = {{0, 1},     {-7, 1},        {9, 1},           {10, 2},
                                                 {-1000, 4}, {999999999, 9}, {1000000000, 10}, {INT32_MIN, 10}};
    for (const auto& [value, digits] : cases)
        EXPECT_EQ(CountDigits(value), digits) << value;
}

TEST(LocalizedDecimals, ImpliedDecimalsFollowTheNumericLocale)
{
    const struct {
        const char* all; // LC_ALL, LC_NUMERIC, LANG; null: unset
        const char* numeric;
        const char* lang;
        int64_t value;
        int32_t decimals;
        std::optional<std::string> text;
    } cases[] = {
        {"en_US.UTF-8", nullptr, nullptr, 1250, 2, "12.50"},
        {"en_US.UTF-8", nullptr, nullptr, 1, 2, "0.01"},
        {"en_US.UTF-8", nullptr, nullptr, 1250, 0, "1,250"},
        {"en_US.UTF-8", nullptr, nullptr, INT64_MIN, kMaxDecimals, "-9.223372036854775808"},
        {"en_US.UTF-8", nullptr, nullptr, 1, -1, std::nullopt},
        {"en_US.UTF-8", nullptr, nullptr, 1, kMaxDecimals + 1, std::nullopt},
        {"de_DE.UTF-8", nullptr, nullptr, -3300, 1, "-330,0"},
        {"de_DE@euro", nullptr, nullptr, 125000, 2, "1.250,00"},
        {"C", nullptr, nullptr, 1250, 2, "12.50"},
        {".UTF-8", nullptr, nullptr, 1, 0, std::nullopt}, // a codeset alone is no usable locale
        {nullptr, "de_DE.UTF-8", "en_US.UTF-8", 1250, 2, "12,50"},
        {"en_US.UTF-8", "de_DE.UTF-8", nullptr, 1250, 2, "12.50"},
    };
    for (const auto& c : cases) {
        ScopedEnv all("LC_ALL", c.all), numeric("LC_NUMERIC", c.numeric), lang("LANG", c.lang);
        EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(c.value, c.decimals), c.text)
            << (c.all ? c.all : c.numeric) << " " << c.value << "/" << c.decimals;
    }
}

TEST(XMLEntities, NamedStringEntitiesAreReplacedOnce)
{
    pl::DictPtr entities = pl::makeDict();
    entities->setString("amp", "&");
    entities->setString("lt", "<");
    entities->setString("quot", "\"");
    entities->setInt("num", 5);
    const std::string longName(100, 'x');
    entities->setString(longName, "!");
    const std::pair<std::string, std::string> cases[] = {
        {"a &lt;b&gt; c", "a <b&gt; c"},
        {"&amp;lt;", "&lt;"}, // replacement text is not scanned again
        {"&unknown; & &;", "&unknown; & &;"},
        {"&num;", "&num;"}, // a non-string value is no entity
        {"&&amp;", "&&"},
        {"&quot;x&quot;", "\"x\""},
        {"&" + longName + ";", "&" + longName + ";"}, // too long to be looked up
    };
    for (const auto& [in, out] : cases)
        EXPECT_EQ(XMLCreateStringByUnescapingEntities(in, entities), out) << in;
    EXPECT_EQ(XMLCreateStringByUnescapingEntities("a &amp; b", nullptr), "a &amp; b");
}

TEST(SystemVersion, ThresholdsAndCaching)
{
    const std::tuple<const char*, bool, bool> cases[] = {
        {"10.3.9", false, false}, {"10.4", true, false}, {"10.4.11", true, false},
        {"10.5", true, true},     {"11.0", true, true},  {"9.9", false, false},
    };
    for (const auto& [version, on104, on105] : cases) {
        ScopedEnv set("TALMO_SYSTEM_VERSION", version);
        ResetSystemVersionCacheForTesting();
        EXPECT_EQ(std::pair(RunningOn104OrLater(), RunningOn105OrLater()), std::pair(on104, on105)) << version;
        ScopedEnv newer("TALMO_SYSTEM_VERSION", "10.6"); // read once: unchanged until the reset
        EXPECT_EQ(RunningOn104OrLater(), on104) << version;
    }
    ResetSystemVersionCacheForTesting();
    EXPECT_TRUE(RunningOn105OrLater()); // the platform reports a modern system by default
}

} // namespace
} // namespace talmo
