#include "settings/settings.h"

#include "platform/system.h"

#include <utility>

namespace talmo {

namespace {

MediaLimitsHook& mediaLimitsHook()
{
    static MediaLimitsHook hook;
    return hook;
}

// Main thread only, as every caller of these tests is.
std::optional<bool> cachedOn104;
std::optional<bool> cachedOn105;

bool LaterThan10(int minorFloor)
{
    SystemVersion v = GetSystemVersion();
    return v.major > 10 || (v.major == 10 && v.minor > minorFloor);
}

} // namespace

void SetMediaLimitsHook(MediaLimitsHook hook) { mediaLimitsHook() = std::move(hook); }

MediaLimits GetMediaLimits()
{
    const MediaLimitsHook& hook = mediaLimitsHook();
    if (hook)
        if (std::optional<MediaLimits> limits = hook())
            return *limits;
    return kDefaultMediaLimits;
}

bool RunningOn104OrLater()
{
    if (!cachedOn104)
        cachedOn104 = LaterThan10(3);
    return *cachedOn104;
}

bool RunningOn105OrLater()
{
    if (!cachedOn105)
        cachedOn105 = LaterThan10(4);
    return *cachedOn105;
}

void ResetSystemVersionCacheForTesting()
{
    cachedOn104.reset();
    cachedOn105.reset();
}

} // namespace talmo
