// Name tables of the Type 42 writer: the 258 standard Macintosh glyph names (post table
// formats 1.0 and 2.0) and Adobe StandardEncoding (PostScript Language Reference, E.6).
#pragma once

#include <array>
#include <string_view>

namespace talmo {

// Index 1 is ".null", 2 "CR" and 257 "dmacron", the names the printer's fonts use.
extern const std::array<std::string_view, 258> kMacStandardGlyphNames;
// 149 names; every other code is ".notdef".
extern const std::array<std::string_view, 256> kStandardEncoding;

} // namespace talmo
