// TrueType to PostScript Type 42 (Adobe Technical Note #5012, "The Type 42 Font Format").
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace talmo {

// How a conversion ended. Only Complete leaves a whole font program in the output.
enum class Type42Status {
    Complete,
    MissingTable,       // "DEBUG: Malformed TrueType file - missing vital table." printed
    BadMagic,           // "DEBUG: Malformed TrueType file - Bad magic number" printed
    GlyphCountMismatch, // post 2.0 glyph count differs from maxp: silent stop, no output
    NameFormat,         // name table format selector not 0: silent stop, no output
    Malformed,          // a table breaks an invariant the writer relies on: no output
    NoBreakPoint,       // sfnts could not be split into strings: output incomplete
};

struct Type42Result {
    Type42Status status = Type42Status::Complete;
    std::string detail; // what was wrong, naming the table or the file offset
    bool complete() const { return status == Type42Status::Complete; }
};

// Longest sfnts string before its extra zero byte.
inline constexpr size_t kType42MaxChunk = 65534;

// Appends the Type 42 font program of `fontData`, named `fontName`, to `output` (never
// cleared: on a stop, what was appended so far stays). The two missing-table/magic messages go
// to stderr as designed; every other stop is silent and explained by the result.
Type42Result convertTTFtoPS42(std::span<const uint8_t> fontData, std::string_view fontName, std::string& output);

} // namespace talmo
