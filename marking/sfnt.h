// The few TrueType tables the Type 42 writer reads, each made by one factory that checks the
// table's size and the invariants the writer relies on. References: OpenType 1.9 ("head",
// "maxp", "post", "name", "loca"), Apple TrueType Reference Manual.
#pragma once

#include "marking/byte-reader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace talmo::sfnt {

// A table's value, or the reason it cannot be used (naming the table).
template <class T> struct [[nodiscard]] Parsed {
    std::optional<T> value;
    std::string error;

    static Parsed fail(std::string why) { return Parsed{std::nullopt, std::move(why)}; }
    explicit operator bool() const { return value.has_value(); }
    const T& operator*() const { return *value; }
    const T* operator->() const { return &*value; }
};

constexpr uint32_t tag(const char (&s)[5])
{
    return uint32_t(uint8_t(s[0])) << 24 | uint32_t(uint8_t(s[1])) << 16 | uint32_t(uint8_t(s[2])) << 8 |
           uint32_t(uint8_t(s[3]));
}

// One record of the table directory.
struct TableRecord {
    uint32_t tag = 0;
    uint32_t checksum = 0;
    uint32_t offset = 0;
    uint32_t length = 0;
};

// The directory records that lie inside the data, in file order: a directory cut short by the
// end of the data ends there.
std::vector<TableRecord> readDirectory(const ByteReader& font);

// The first record whose tag matches, as the directory walk finds it; nothing when absent.
std::optional<TableRecord> find_table(uint32_t tag, const std::vector<TableRecord>& directory);

// The table's bytes; fails when the record points outside the font.
Parsed<ByteReader> tableBytes(const ByteReader& font, const TableRecord& record, std::string_view name);

inline constexpr uint32_t kHeadMagic = 0x5F0F3CF5;

struct Head {
    int32_t version = 0;      // 16.16
    int32_t fontRevision = 0; // 16.16
    uint32_t magicNumber = 0;
    uint16_t unitsPerEm = 0;
    int16_t xMin = 0, yMin = 0, xMax = 0, yMax = 0;
    int16_t indexToLocFormat = 0;

    // Checks the size only; the magic number has its own message.
    static Parsed<Head> fromBytes(const ByteReader& table);
    // The invariants the writer divides and indexes by: unitsPerEm not 0,
    // indexToLocFormat 0 or 1.
    std::optional<std::string> checkLayout() const;
};

struct Maxp {
    uint16_t numGlyphs = 0;
    static Parsed<Maxp> fromBytes(const ByteReader& table);
};

struct Post {
    int32_t version = 0; // 16.16; 0x00020000 carries glyph names
    uint32_t minMemType42 = 0;
    uint32_t maxMemType42 = 0;
    ByteReader table;

    static Parsed<Post> fromBytes(const ByteReader& table);
    bool hasGlyphNames() const { return version == 0x00020000; }
};

// Glyph names of a format 2.0 post table, one per glyph, pointing into the font's bytes or the
// standard names. A name that is not a plain PostScript name (empty, or holding white space,
// a delimiter or a byte outside printable ASCII) is held as empty: such a glyph has no name,
// so a hostile font cannot write PostScript of its own into the program.
struct GlyphNames {
    std::vector<std::string_view> names;

    // Fails silently-by-design when the post table's glyph count is not numGlyphs (the
    // returned error is empty then), and with a message when an index has no name data.
    static Parsed<GlyphNames> fromPost(const Post& post, uint16_t numGlyphs);
};

struct NameTable {
    uint16_t format = 0;
    static Parsed<NameTable> fromBytes(const ByteReader& table);
};

// Glyph start offsets inside glyf: numGlyphs + 1 entries, non-decreasing, the last within glyf.
struct Loca {
    std::vector<uint32_t> offsets;
    static Parsed<Loca> fromBytes(const ByteReader& table, int16_t indexToLocFormat, uint16_t numGlyphs,
                                  uint32_t glyfLength);
};

bool isPostScriptName(std::string_view name);

} // namespace talmo::sfnt
