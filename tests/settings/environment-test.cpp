// Media limits and the system version tests.
#include "tests/settings/prefs-fixture.h"

namespace talmo {
namespace {

TEST(MediaLimits, TheHookAnswersWhileAPrinterIsOpenTheDefaultsOtherwise)
{
    const MediaLimits none = GetMediaLimits();
    SetMediaLimitsHook([] { return std::optional<MediaLimits>(MediaLimits{144, 216, 1332, 3600}); });
    EXPECT_EQ(GetMediaLimits().maxHeight, 3600);
    EXPECT_EQ(GetMediaLimits().minWidth, 144);
    SetMediaLimitsHook([] { return std::optional<MediaLimits>(); }); // hook present, no PPD open
    EXPECT_EQ(GetMediaLimits().maxHeight, none.maxHeight);
    SetMediaLimitsHook(nullptr);
    EXPECT_EQ(GetMediaLimits().minWidth, none.minWidth);
}

TEST(SystemVersion, ThresholdsAndCaching)
{
    const struct {
        const char* version;
        bool on104;
        bool on105;
    } cases[] = {
        {"10.3.9", false, false}, {"10.4", true, false}, {"10.4.11", true, false},
        {"10.5", true, true},     {"11.0", true, true},  {"9.9", false, false},
    };
    for (const auto& c : cases) {
        test::ScopedEnv version("TALMO_SYSTEM_VERSION", c.version);
        ResetSystemVersionCacheForTesting();
        EXPECT_EQ(RunningOn104OrLater(), c.on104) << c.version;
        EXPECT_EQ(RunningOn105OrLater(), c.on105) << c.version;
        // The answer is read once: a changed system does not change it until the reset.
        test::ScopedEnv newer("TALMO_SYSTEM_VERSION", "10.6");
        EXPECT_EQ(RunningOn104OrLater(), c.on104) << c.version;
    }
    ResetSystemVersionCacheForTesting();
    EXPECT_TRUE(RunningOn105OrLater()); // the platform reports a modern system by default
}

} // namespace
} // namespace talmo
