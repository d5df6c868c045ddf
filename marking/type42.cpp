#include "marking/type42.h"

#include "marking/byte-reader.h"
#include "marking/glyph-names.h"
#include "marking/sfnt.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unordered_set>
#include <vector>

namespace talmo {

namespace {

using namespace sfnt;

constexpr size_t kMaxFontNameBytes = 511;

void appendf(std::string& out, const char* format, auto... args)
{
    char buffer[160];
    int n = std::snprintf(buffer, sizeof buffer, format, args...);
    if (n > 0)
        out.append(buffer, std::min(size_t(n), sizeof buffer - 1));
}

// At most 511 bytes, never ending inside a UTF-8 sequence.
std::string_view clipFontName(std::string_view name)
{
    if (name.size() <= kMaxFontNameBytes)
        return name;
    size_t end = kMaxFontNameBytes;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

Type42Result stop(Type42Status status, std::string detail) { return {status, std::move(detail)}; }

// Encoding fill: codes whose standard name the font lacks take glyph 0's name; then each glyph
// name not yet encoded takes the first ".notdef" code from 32 up, while any is left.
std::array<std::string_view, 256> buildEncoding(const GlyphNames* glyphNames)
{
    std::array<std::string_view, 256> encoding = kStandardEncoding;
    if (!glyphNames)
        return encoding;
    const auto& names = glyphNames->names;
    std::unordered_set<std::string_view> fontNames(names.begin(), names.end());
    fontNames.erase(std::string_view());
    std::string_view glyph0 = names[0].empty() ? std::string_view(".notdef") : names[0];
    for (auto& name : encoding)
        if (!fontNames.contains(name))
            name = glyph0;

    std::unordered_set<std::string_view> encoded(encoding.begin(), encoding.end());
    size_t freeCode = 32;
    for (std::string_view name : names) {
        if (name.empty() || encoded.contains(name))
            continue;
        while (freeCode < 256 && encoding[freeCode] != ".notdef")
            ++freeCode;
        if (freeCode == 256)
            break;
        encoding[freeCode] = name;
        encoded.insert(name);
    }
    return encoding;
}

// Break points: every directory offset and every 4-aligned glyph start, sorted.
std::vector<uint64_t> breakPoints(const std::vector<TableRecord>& directory, uint32_t glyfOffset, const Loca& loca)
{
    std::vector<uint64_t> points;
    points.reserve(directory.size() + loca.offsets.size());
    for (const auto& record : directory)
        points.push_back(record.offset);
    for (size_t g = 0; g + 1 < loca.offsets.size(); ++g) {
        uint64_t start = uint64_t(glyfOffset) + loca.offsets[g];
        if (start % 4 == 0)
            points.push_back(start);
    }
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

// The sfnts array; false when a chunk finds no break point (the output stays as written).
bool writeSfnts(const ByteReader& font, const std::vector<uint64_t>& points, std::string& out, uint64_t& stoppedAt)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    auto bytes = font.bytes();
    const uint64_t size = bytes.size();
    out += "/sfnts [\n";
    out.reserve(out.size() + size * 2 + size / 15 + 64);
    uint64_t pos = 0;
    uint64_t chunks = 0;
    while (pos < size) {
        uint64_t end;
        if (size - pos < kType42MaxChunk) {
            end = size;
        } else {
            auto it = std::upper_bound(points.begin(), points.end(), pos + kType42MaxChunk);
            if (it == points.begin() || *std::prev(it) <= pos) {
                stoppedAt = pos;
                return false;
            }
            end = *std::prev(it);
        }
        out += '<';
        unsigned column = unsigned((pos + 2 * chunks) % 30);
        for (uint64_t i = pos; i < end; ++i) {
            auto b = std::to_integer<uint8_t>(bytes[i]);
            char pair[3] = {kHex[b >> 4], kHex[b & 15], '\n'};
            out.append(pair, column == 29 ? 3 : 2);
            column = column == 29 ? 0 : column + 1;
        }
        out += "00>";
        ++chunks;
        pos = end;
    }
    out += "] def\n";
    return true;
}

} // namespace

Type42Result convertTTFtoPS42(std::span<const uint8_t> fontData, std::string_view fontName, std::string& out)
{
    const ByteReader font(fontData);
    const auto directory = readDirectory(font);

    // Step 1: the vital tables. loca and glyf are as vital as the rest to a Type 42 font.
    auto maxpRecord = find_table(tag("maxp"), directory);
    auto headRecord = find_table(tag("head"), directory);
    auto postRecord = find_table(tag("post"), directory);
    auto nameRecord = find_table(tag("name"), directory);
    auto locaRecord = find_table(tag("loca"), directory);
    auto glyfRecord = find_table(tag("glyf"), directory);
    if (!maxpRecord || !headRecord || !postRecord || !nameRecord || !locaRecord || !glyfRecord) {
        std::fputs("DEBUG: Malformed TrueType file - missing vital table.\n", stderr);
        return stop(Type42Status::MissingTable, "missing one of maxp, head, post, name, loca, glyf");
    }
    auto headBytes = tableBytes(font, *headRecord, "head");
    if (!headBytes)
        return stop(Type42Status::Malformed, headBytes.error);
    auto head = Head::fromBytes(*headBytes);
    if (!head)
        return stop(Type42Status::Malformed, head.error);
    if (head->magicNumber != kHeadMagic) {
        std::fputs("DEBUG: Malformed TrueType file - Bad magic number\n", stderr);
        return stop(Type42Status::BadMagic, "head: magicNumber " + std::to_string(head->magicNumber));
    }
    if (auto why = head->checkLayout())
        return stop(Type42Status::Malformed, *why);

    auto maxpBytes = tableBytes(font, *maxpRecord, "maxp");
    if (!maxpBytes)
        return stop(Type42Status::Malformed, maxpBytes.error);
    auto maxp = Maxp::fromBytes(*maxpBytes);
    if (!maxp)
        return stop(Type42Status::Malformed, maxp.error);
    const uint16_t numGlyphs = maxp->numGlyphs;

    auto postBytes = tableBytes(font, *postRecord, "post");
    if (!postBytes)
        return stop(Type42Status::Malformed, postBytes.error);
    auto post = Post::fromBytes(*postBytes);
    if (!post)
        return stop(Type42Status::Malformed, post.error);

    // Step 2: glyph names of a format 2.0 post table.
    std::optional<GlyphNames> glyphNames;
    if (post->hasGlyphNames()) {
        auto names = GlyphNames::fromPost(*post, numGlyphs);
        if (!names) {
            if (names.error.empty())
                return stop(Type42Status::GlyphCountMismatch, "post: glyph count is not maxp's numGlyphs");
            return stop(Type42Status::Malformed, names.error);
        }
        glyphNames = std::move(*names.value);
    }

    // Step 3: the name table's format selector.
    auto nameBytes = tableBytes(font, *nameRecord, "name");
    if (!nameBytes)
        return stop(Type42Status::Malformed, nameBytes.error);
    auto name = NameTable::fromBytes(*nameBytes);
    if (!name)
        return stop(Type42Status::Malformed, name.error);
    if (name->format != 0)
        return stop(Type42Status::NameFormat, "name: format " + std::to_string(name->format));

    // The glyph starts that the sfnts strings may break at.
    auto glyfBytes = tableBytes(font, *glyfRecord, "glyf");
    if (!glyfBytes)
        return stop(Type42Status::Malformed, glyfBytes.error);
    auto locaBytes = tableBytes(font, *locaRecord, "loca");
    if (!locaBytes)
        return stop(Type42Status::Malformed, locaBytes.error);
    auto loca = Loca::fromBytes(*locaBytes, head->indexToLocFormat, numGlyphs, glyfRecord->length);
    if (!loca)
        return stop(Type42Status::Malformed, loca.error);

    // Step 4.
    const auto encoding = buildEncoding(glyphNames ? &*glyphNames : nullptr);

    // Step 5.
    appendf(out, "%%!PS-TrueTypeFont-%.4f-%.4f\n", head->version / 65536.0, head->fontRevision / 65536.0);
    if (post->maxMemType42 != 0)
        appendf(out, "%%%%VMUsage: %d %d\n", int32_t(post->minMemType42), int32_t(post->maxMemType42));
    appendf(out, "%d dict begin\n", 11);
    out += "/FontName /";
    out += clipFontName(fontName);
    out += " def\n";
    out += "/Encoding 256 array\n";
    for (int code = 0; code < 256; ++code) {
        appendf(out, "dup %d /", code);
        out += encoding[code];
        out += " put\n";
    }
    out += "readonly def";
    out += "/PaintType 0 def\n";
    out += "/FontMatrix [1 0 0 1 0 0] def\n";
    // Each bound over unitsPerEm as 16.16 fixed point, the quotient truncated.
    auto ratio = [&](int16_t v) { return double((int64_t(v) * 65536) / head->unitsPerEm) / 65536.0; };
    appendf(out, "/FontBBox [%f %f %f %f] def\n", ratio(head->xMin), ratio(head->yMin), ratio(head->xMax),
            ratio(head->yMax));
    out += "/FontType 42 def\n";
    out += "/FontInfo 8 dict dup begin\n";
    out += "end readonly def\n";

    uint64_t stoppedAt = 0;
    if (!writeSfnts(font, breakPoints(directory, glyfRecord->offset, *loca), out, stoppedAt))
        return stop(Type42Status::NoBreakPoint, "no table or 4-aligned glyph start within " +
                                                    std::to_string(kType42MaxChunk) + " bytes after offset " +
                                                    std::to_string(stoppedAt));

    appendf(out, "/CharStrings %d dict dup begin\n", int(numGlyphs));
    if (glyphNames) {
        out += "/.notdef 0 def\n";
        for (size_t g = 1; g < glyphNames->names.size(); ++g) {
            if (glyphNames->names[g].empty())
                continue;
            out += '/';
            out += glyphNames->names[g];
            appendf(out, " %d def\n", int(g));
        }
    }
    out += "end readonly def\n";
    out += "FontName currentdict end definefont pop\n";
    return {};
}

} // namespace talmo
