// What the panels ask of their surroundings: the custom paper size limits of the printer and
// the system version tests.
#pragma once

#include <functional>
#include <optional>

namespace talmo {

// Custom page size limits, in points.
struct MediaLimits {
    double minWidth = 0;
    double minHeight = 0;
    double maxWidth = 0;
    double maxHeight = 0;
};
// Limits used while no PPD is open.
inline constexpr MediaLimits kDefaultMediaLimits = {432, 432, 864, 864};

// The device module installs a hook that answers the current PPD's custom size limits, or
// nullopt when no PPD is open. Without a hook, or when it answers nullopt, GetMediaLimits
// gives kDefaultMediaLimits.
using MediaLimitsHook = std::function<std::optional<MediaLimits>()>;
void SetMediaLimitsHook(MediaLimitsHook hook);
MediaLimits GetMediaLimits();

// System version tests, read once per process and cached: 10.4 or later, 10.5 or later.
bool RunningOn104OrLater();
bool RunningOn105OrLater();
// Forgets the cached answers so a test can change the reported version.
void ResetSystemVersionCacheForTesting();

} // namespace talmo
