// Bundles shipped inside the extension's bundle.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string_view>

namespace talmo {

// The bundle `name` among the resources of `bundle` (Resources/<name>, then
// Resources/en.lproj/<name>). -50 for a null output or a name that is empty, absolute or
// climbs out with ".."; -43 (file not found) when there is no such bundle. `out` changes
// only on success.
OSStatus LoadPrivateBundle(const Bundle& bundle, std::string_view name, std::optional<Bundle>* out);
inline constexpr OSStatus fnfErr = -43;

} // namespace talmo
