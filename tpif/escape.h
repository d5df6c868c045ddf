// Escaping of user texts for the TPIF document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace talmo {

// Returns `string` with &, <, >, " replaced by entities and CR written as "&#xD;"; C0 controls
// other than TAB/LF/CR, U+FFFE/U+FFFF, surrogates and malformed UTF-8 are dropped, since XML
// 1.0 forbids them even as character references. The result is valid UTF-8.
std::string XMLCreateStringByEscapingEntities(std::string_view string);

// The longest prefix of an escaped text that fits in `room` bytes without splitting a UTF-8
// sequence or an entity.
size_t TPifFitEscapedText(std::string_view escaped, size_t room);

} // namespace talmo
