// Media limits and the system version tests.
#include "settings/settings.h"

#include "scoped-env.h"

#include <gtest/gtest.h>

namespace talmo {
namespace {

using test::ScopedEnv;

TEST(MediaLimits, DefaultsWithoutAPrinterAndTheHookOtherwise)
{
    MediaLimits none = GetMediaLimits();
    EXPECT_EQ(none.minWidth, 432);
    EXPECT_EQ(none.minHeight, 432);
    EXPECT_EQ(none.maxWidth, 864);
    EXPECT_EQ(none.maxHeight, 864);

    SetMediaLimitsHook([] { return std::optional<MediaLimits>(MediaLimits{144, 216, 1332, 3600}); });
    EXPECT_EQ(GetMediaLimits().maxHeight, 3600);
    SetMediaLimitsHook([] { return std::optional<MediaLimits>(); }); // hook present, no PPD open
    EXPECT_EQ(GetMediaLimits().maxHeight, 864);
    SetMediaLimitsHook(nullptr);
    EXPECT_EQ(GetMediaLimits().minWidth, 432);
}

TEST(SystemVersion, ThresholdsAndCaching)
{
    struct Case {
        const char* version;
        bool on104;
        bool on105;
    };
    const Case cases[] = {
        {"10.3.9", false, false}, {"10.4", true, false}, {"10.4.11", true, false},
        {"10.5", true, true},     {"11.0", true, true},  {"9.9", false, false},
    };
    for (const Case& c : cases) {
        ScopedEnv version("TALMO_SYSTEM_VERSION", c.version);
        ResetSystemVersionCacheForTesting();
        EXPECT_EQ(RunningOn104OrLater(), c.on104) << c.version;
        EXPECT_EQ(RunningOn105OrLater(), c.on105) << c.version;
    }
    {
        ScopedEnv version("TALMO_SYSTEM_VERSION", "10.3");
        ResetSystemVersionCacheForTesting();
        ASSERT_FALSE(RunningOn104OrLater());
        ASSERT_FALSE(RunningOn105OrLater());
        // The answer is read once: a changed system does not change it until the reset.
        ScopedEnv newer("TALMO_SYSTEM_VERSION", "10.6");
        EXPECT_FALSE(RunningOn104OrLater());
        EXPECT_FALSE(RunningOn105OrLater());
    }
    ResetSystemVersionCacheForTesting();
    EXPECT_TRUE(RunningOn105OrLater()); // the platform reports a modern system by default
}

} // namespace
} // namespace talmo
