#include "marking/sfnt.h"

#include "marking/glyph-names.h"

namespace talmo::sfnt {

namespace {

constexpr size_t kOffsetTableSize = 12;
constexpr size_t kTableRecordSize = 16;

} // namespace

std::vector<TableRecord> readDirectory(const ByteReader& font)
{
    std::vector<TableRecord> directory;
    auto numTables = font.u16be(4);
    if (!numTables)
        return directory;
    directory.reserve(*numTables);
    for (size_t i = 0; i < *numTables; ++i) {
        auto record = font.sub(kOffsetTableSize + i * kTableRecordSize, kTableRecordSize);
        if (!record)
            break;
        directory.push_back({*record->u32be(0), *record->u32be(4), *record->u32be(8), *record->u32be(12)});
    }
    return directory;
}

std::optional<TableRecord> find_table(uint32_t wanted, const std::vector<TableRecord>& directory)
{
    for (const auto& record : directory)
        if (record.tag == wanted)
            return record;
    return std::nullopt;
}

Parsed<ByteReader> tableBytes(const ByteReader& font, const TableRecord& record, std::string_view name)
{
    auto bytes = font.sub(record.offset, record.length);
    if (!bytes)
        return Parsed<ByteReader>::fail(std::string(name) + ": offset " + std::to_string(record.offset) + " length " +
                                        std::to_string(record.length) + " outside the " + std::to_string(font.size()) +
                                        "-byte font");
    return {*bytes, {}};
}

Parsed<Head> Head::fromBytes(const ByteReader& t)
{
    if (!t.has(0, 54))
        return Parsed<Head>::fail("head: " + std::to_string(t.size()) + " bytes, 54 needed");
    Head h;
    h.version = *t.i32be(0);
    h.fontRevision = *t.i32be(4);
    h.magicNumber = *t.u32be(12);
    h.unitsPerEm = *t.u16be(18);
    h.xMin = *t.i16be(36);
    h.yMin = *t.i16be(38);
    h.xMax = *t.i16be(40);
    h.yMax = *t.i16be(42);
    h.indexToLocFormat = *t.i16be(50);
    return {h, {}};
}

std::optional<std::string> Head::checkLayout() const
{
    if (unitsPerEm == 0)
        return std::string("head: unitsPerEm = 0");
    if (indexToLocFormat != 0 && indexToLocFormat != 1)
        return "head: indexToLocFormat = " + std::to_string(indexToLocFormat) + " out of 0..1";
    return std::nullopt;
}

Parsed<Maxp> Maxp::fromBytes(const ByteReader& t)
{
    auto n = t.u16be(4);
    if (!n)
        return Parsed<Maxp>::fail("maxp: " + std::to_string(t.size()) + " bytes, 6 needed");
    if (*n == 0)
        return Parsed<Maxp>::fail("maxp: numGlyphs = 0");
    return {Maxp{*n}, {}};
}

Parsed<Post> Post::fromBytes(const ByteReader& t)
{
    if (!t.has(0, 32))
        return Parsed<Post>::fail("post: " + std::to_string(t.size()) + " bytes, 32 needed");
    return {Post{*t.i32be(0), *t.u32be(16), *t.u32be(20), t}, {}};
}

bool isPostScriptName(std::string_view name)
{
    if (name.empty())
        return false;
    for (char c : name) {
        auto u = static_cast<unsigned char>(c);
        if (u < 0x21 || u > 0x7E)
            return false;
        switch (c) {
        case '(':
        case ')':
        case '<':
        case '>':
        case '[':
        case ']':
        case '{':
        case '}':
        case '/':
        case '%':
            return false;
        default:
            break;
        }
    }
    return true;
}

Parsed<GlyphNames> GlyphNames::fromPost(const Post& post, uint16_t numGlyphs)
{
    constexpr size_t kIndexStart = 34;
    const ByteReader& t = post.table;
    auto count = t.u16be(32);
    if (!count)
        return Parsed<GlyphNames>::fail("post: format 2.0 without numberOfGlyphs");
    if (*count != numGlyphs)
        return Parsed<GlyphNames>::fail({}); // the designed silent stop
    if (!t.has(kIndexStart, size_t(numGlyphs) * 2))
        return Parsed<GlyphNames>::fail("post: glyphNameIndex of " + std::to_string(numGlyphs) +
                                        " entries runs past the table's " + std::to_string(t.size()) + " bytes");

    // The name data: length-prefixed strings up to the end of the table; a string cut short by
    // the end is not there.
    const size_t dataStart = kIndexStart + size_t(numGlyphs) * 2;
    std::vector<std::string_view> strings;
    auto raw = t.bytes();
    for (size_t at = dataStart; at < t.size();) {
        size_t len = *t.u8(at);
        if (!t.has(at + 1, len))
            break;
        strings.emplace_back(reinterpret_cast<const char*>(raw.data()) + at + 1, len);
        at += 1 + len;
    }

    GlyphNames result;
    result.names.reserve(numGlyphs);
    for (size_t g = 0; g < numGlyphs; ++g) {
        uint16_t index = *t.u16be(kIndexStart + g * 2);
        std::string_view name;
        if (index < kMacStandardGlyphNames.size()) {
            name = kMacStandardGlyphNames[index];
        } else {
            size_t k = index - kMacStandardGlyphNames.size();
            if (k >= strings.size())
                return Parsed<GlyphNames>::fail("post: glyph " + std::to_string(g) + " name index " +
                                                std::to_string(index) + " past the " + std::to_string(strings.size()) +
                                                " names stored");
            name = strings[k];
        }
        result.names.push_back(isPostScriptName(name) ? name : std::string_view());
    }
    return {std::move(result), {}};
}

Parsed<NameTable> NameTable::fromBytes(const ByteReader& t)
{
    auto format = t.u16be(0);
    if (!format)
        return Parsed<NameTable>::fail("name: " + std::to_string(t.size()) + " bytes, 2 needed");
    return {NameTable{*format}, {}};
}

Parsed<Loca> Loca::fromBytes(const ByteReader& t, int16_t indexToLocFormat, uint16_t numGlyphs, uint32_t glyfLength)
{
    const size_t entries = size_t(numGlyphs) + 1;
    const size_t entrySize = indexToLocFormat == 0 ? 2 : 4;
    if (!t.has(0, entries * entrySize))
        return Parsed<Loca>::fail("loca: " + std::to_string(t.size()) + " bytes, " +
                                  std::to_string(entries * entrySize) + " needed for " + std::to_string(entries) +
                                  " entries");
    Loca loca;
    loca.offsets.resize(entries);
    uint32_t previous = 0;
    for (size_t i = 0; i < entries; ++i) {
        uint32_t offset = entrySize == 2 ? uint32_t(*t.u16be(i * 2)) * 2 : *t.u32be(i * 4);
        if (offset < previous)
            return Parsed<Loca>::fail("loca: entry " + std::to_string(i) + " = " + std::to_string(offset) +
                                      " below entry " + std::to_string(i - 1) + " = " + std::to_string(previous));
        if (offset > glyfLength)
            return Parsed<Loca>::fail("loca: entry " + std::to_string(i) + " = " + std::to_string(offset) +
                                      " past the glyf table's " + std::to_string(glyfLength) + " bytes");
        loca.offsets[i] = previous = offset;
    }
    return {std::move(loca), {}};
}

} // namespace talmo::sfnt
