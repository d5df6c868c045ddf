// What a record's summary needs from its bundle: the localized text of a label key. Panels
// pass the bundle's lookup; tests pass a table.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace talmo {

using LabelLookup = std::function<std::string(std::string_view key)>;

} // namespace talmo
