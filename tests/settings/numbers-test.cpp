// Localized decimals, digit counts and entity unescaping.
#include "settings/settings.h"

#include "scoped-env.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace talmo {
namespace {

using test::ScopedEnv;

TEST(CountDigits, CountsDecimalDigitsOfTheMagnitude)
{
    struct Case {
        int32_t value;
        int32_t digits;
    };
    const Case cases[] = {{0, 1},          {1000, 4},       {-7, 1},          {9, 1},        {10, 2},
                          {99, 2},         {100, 3},        {999999, 6},      {1000000, 7},  {-1000, 4},
                          {INT32_MAX, 10}, {INT32_MIN, 10}, {1000000000, 10}, {999999999, 9}};
    for (const Case& c : cases)
        EXPECT_EQ(CountDigits(c.value), c.digits) << c.value;
}

TEST(LocalizedDecimals, ImpliedDecimalsInEnglishAndGerman)
{
    ScopedEnv numeric("LC_NUMERIC", nullptr);
    ScopedEnv lang("LANG", nullptr);
    struct Case {
        const char* locale;
        int64_t value;
        int32_t decimals;
        const char* text;
    };
    const Case cases[] = {
        {"en_US.UTF-8", 1250, 2, "12.50"},   {"en_US.UTF-8", 1, 2, "0.01"},         {"en_US.UTF-8", -1921, 2, "-19.21"},
        {"en_US.UTF-8", 4880, 1, "488.0"},   {"en_US.UTF-8", 1250, 0, "1,250"},     {"de_DE.UTF-8", 1250, 2, "12,50"},
        {"de_DE.UTF-8", -3300, 1, "-330,0"}, {"de_DE@euro", 125000, 2, "1.250,00"}, {"C", 1250, 2, "12.50"},
    };
    for (const Case& c : cases) {
        ScopedEnv all("LC_ALL", c.locale);
        EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(c.value, c.decimals),
                  std::optional<std::string>(c.text))
            << c.locale << " " << c.value << "/" << c.decimals;
    }
}

TEST(LocalizedDecimals, NumericCategoryPrecedesLang)
{
    ScopedEnv all("LC_ALL", nullptr);
    ScopedEnv numeric("LC_NUMERIC", "de_DE.UTF-8");
    ScopedEnv lang("LANG", "en_US.UTF-8");
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(1250, 2), "12,50");
    ScopedEnv all2("LC_ALL", "en_US.UTF-8");
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(1250, 2), "12.50");
}

TEST(LocalizedDecimals, RefusesDecimalsOutOfRangeAndUnusableLocales)
{
    ScopedEnv all("LC_ALL", "en_US.UTF-8");
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(1, -1), std::nullopt);
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(1, kMaxDecimals + 1), std::nullopt);
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(INT64_MIN, kMaxDecimals), "-9.223372036854775808");
    ScopedEnv codesetOnly("LC_ALL", ".UTF-8");
    EXPECT_EQ(CreateLocalizedCFStringFromNumberWithDecimals(1, 0), std::nullopt);
}

TEST(XMLEntities, NamedEntitiesAreReplacedOnce)
{
    pl::DictPtr entities = pl::makeDict();
    entities->setString("amp", "&");
    entities->setString("lt", "<");
    entities->setString("gt", ">");
    entities->setString("quot", "\"");
    entities->setInt("num", 5);
    struct Case {
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {"a &lt;b&gt; c", "a <b> c"},
        {"Tom &amp; Jerry", "Tom & Jerry"},
        {"&amp;lt;", "&lt;"}, // replacement text is not scanned again
        {"&unknown; & &;", "&unknown; & &;"},
        {"&num;", "&num;"}, // a non-string value is no entity
        {"&&amp;", "&&"},
        {"trailing &", "trailing &"},
        {"&quot;x&quot;", "\"x\""},
        {"", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(XMLCreateStringByUnescapingEntities(c.in, entities), c.out) << c.in;
    EXPECT_EQ(XMLCreateStringByUnescapingEntities("a &amp; b", nullptr), "a &amp; b");
}

TEST(XMLEntities, LongNamesAreNotLookedUp)
{
    pl::DictPtr entities = pl::makeDict();
    std::string longName(100, 'x');
    entities->setString(longName, "!");
    std::string text = "&" + longName + ";";
    EXPECT_EQ(XMLCreateStringByUnescapingEntities(text, entities), text);
}

} // namespace
} // namespace talmo
