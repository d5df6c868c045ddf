// Entity references in imported TPIF values.
#pragma once

#include "platform/platform.h"

#include <string>
#include <string_view>

namespace talmo {

// `text` with every "&name;" whose name is a key of `entities` (a dictionary of strings)
// replaced by that key's text. One pass from left to right: replacement text is not scanned
// again, so "&amp;lt;" becomes "&lt;" and no expansion can feed on itself. Unknown names,
// non-string values and a lone "&" are kept as they are.
std::string XMLCreateStringByUnescapingEntities(std::string_view text, const pl::DictPtr& entities);

} // namespace talmo
