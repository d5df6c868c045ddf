#include "marking/marking.h"
#include "marking/glyph-names.h"

#include "test-util.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sys/wait.h>

using namespace talmo;
using namespace talmo::test;

namespace {

constexpr const char* kMissingTable = "DEBUG: Malformed TrueType file - missing vital table.\n";
constexpr const char* kBadMagic = "DEBUG: Malformed TrueType file - Bad magic number\n";
const std::string kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const std::string kTangut = "/usr/share/fonts/truetype/noto/NotoSerifTangut-Regular.ttf";

struct Conversion {
    Type42Result result;
    std::string output;
    std::string stderrText;
};

Conversion convert(const std::vector<uint8_t>& font, const std::string& name, std::string output = {})
{
    testing::internal::CaptureStderr();
    auto result = convertTTFtoPS42(font, name, output);
    return {result, output, testing::internal::GetCapturedStderr()};
}

// The codes of the program's Encoding, in order.
std::vector<std::string> encodingOf(const std::string& program)
{
    std::vector<std::string> names;
    std::regex line(R"(dup (\d+) /(\S*) put\n)");
    for (std::sregex_iterator it(program.begin(), program.end(), line), end; it != end; ++it) {
        EXPECT_EQ(std::stoi((*it)[1]), int(names.size()));
        names.push_back((*it)[2]);
    }
    return names;
}

// The sfnts strings decoded, each checked against the line-break rule: a line ends after the
// byte at file position i when (i + 2 * strings before) mod 30 is 29.
struct Sfnts {
    std::vector<std::vector<uint8_t>> strings;
    std::vector<uint64_t> starts;
    bool closed = false;
};

Sfnts parseSfnts(const std::string& program)
{
    Sfnts s;
    size_t at = program.find("/sfnts [\n");
    if (at == std::string::npos) {
        ADD_FAILURE() << "no sfnts array";
        return s;
    }
    at += 9;
    uint64_t filePos = 0;
    auto hex = [](char c) { return c <= '9' ? c - '0' : c - 'A' + 10; };
    while (at < program.size() && program[at] == '<') {
        ++at;
        s.starts.push_back(filePos);
        std::vector<uint8_t> bytes;
        const uint64_t k = s.strings.size();
        while (at + 1 < program.size() && program[at] != '>') {
            bytes.push_back(uint8_t(hex(program[at]) << 4 | hex(program[at + 1])));
            at += 2;
            bool lineEnd = program[at] == '\n';
            if (program.compare(at, 1, ">") == 0)
                break; // "00" then ">": the extra byte
            bool expected = (filePos + 2 * k) % 30 == 29;
            if (lineEnd != expected) {
                ADD_FAILURE() << "line break rule broken after file byte " << filePos << " of string " << k;
                return s;
            }
            if (lineEnd)
                ++at;
            ++filePos;
        }
        // The last decoded byte is the string's extra zero.
        EXPECT_FALSE(bytes.empty());
        EXPECT_EQ(bytes.back(), 0) << "string " << k << " does not end with the extra zero byte";
        bytes.pop_back();
        filePos = s.starts.back() + bytes.size();
        s.strings.push_back(std::move(bytes));
        ++at; // '>'
    }
    s.closed = program.compare(at, 6, "] def\n") == 0;
    return s;
}

TEST(Type42, TinyFontMatchesGoldenTextAppendedToTheOutput)
{
    auto c = convert(readBytes(dataPath("tiny-post2.ttf")), "TinyTest", "%prior\n");
    EXPECT_EQ(c.result.status, Type42Status::Complete) << c.result.detail;
    EXPECT_EQ(c.stderrText, "");
    EXPECT_EQ(c.output, "%prior\n" + readText(dataPath("tiny-post2.t42")));
    auto bad = convert(readBytes(dataPath("malformed/head-bad-magic.ttf")), "TinyTest", "%prior\n");
    EXPECT_EQ(bad.output, "%prior\n");
}

TEST(Type42, PostFormat3KeepsStandardEncodingAndEmptyCharStrings)
{
    auto c = convert(readBytes(dataPath("tiny-post3.ttf")), "TinyTest");
    ASSERT_EQ(c.result.status, Type42Status::Complete) << c.result.detail;
    auto encoding = encodingOf(c.output);
    ASSERT_EQ(encoding.size(), 256u);
    EXPECT_TRUE(std::equal(encoding.begin(), encoding.end(), kStandardEncoding.begin()));
    EXPECT_NE(c.output.find("] def\n/CharStrings 3 dict dup begin\nend readonly def\n"), std::string::npos);
    EXPECT_EQ(c.output.find("%%VMUsage"), std::string::npos) << "maxMemType42 0 writes no VMUsage";
}

// Defects, each expecting its stop, its message (if any) and no output.
TEST(Type42, MalformedFontsStopCleanly)
{
    struct Case {
        const char* file;
        Type42Status status;
        const char* message;
        const char* detail; // part of the result's detail
    };
    const Case cases[] = {
        {"../tiny-no-post", Type42Status::MissingTable, kMissingTable, "missing"},
        {"truncated-directory", Type42Status::MissingTable, kMissingTable, "missing"},
        {"missing-loca", Type42Status::MissingTable, kMissingTable, "missing"},
        {"missing-glyf", Type42Status::MissingTable, kMissingTable, "missing"},
        {"head-bad-magic", Type42Status::BadMagic, kBadMagic, "magicNumber"},
        {"head-too-short", Type42Status::Malformed, "", "head: 50 bytes"},
        {"head-units-per-em-zero", Type42Status::Malformed, "", "unitsPerEm = 0"},
        {"head-index-to-loc-format-2", Type42Status::Malformed, "", "indexToLocFormat = 2"},
        {"maxp-zero-glyphs", Type42Status::Malformed, "", "numGlyphs = 0"},
        {"maxp-too-short", Type42Status::Malformed, "", "maxp: 4 bytes"},
        {"post-too-short", Type42Status::Malformed, "", "post: 20 bytes"},
        {"post-glyph-count-mismatch", Type42Status::GlyphCountMismatch, "", "glyph count"},
        {"post-index-array-past-end", Type42Status::Malformed, "", "glyphNameIndex"},
        {"post-name-index-past-data", Type42Status::Malformed, "", "name index 259"},
        {"post-name-length-past-end", Type42Status::Malformed, "", "name index 258 past the 0 names"},
        {"name-format-1", Type42Status::NameFormat, "", "format 1"},
        {"name-empty", Type42Status::Malformed, "", "name: 0 bytes"},
        {"loca-too-short", Type42Status::Malformed, "", "loca: 6 bytes"},
        {"loca-decreasing", Type42Status::Malformed, "", "entry 2 = 6 below"},
        {"loca-past-glyf", Type42Status::Malformed, "", "entry 3 = 24 past"},
        {"glyf-offset-past-end", Type42Status::Malformed, "", "glyf: offset 2147483632"},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.file);
        auto font = readBytes(dataPath(std::string("malformed/") + k.file + ".ttf"));
        ASSERT_FALSE(font.empty());
        auto c = convert(font, "Bad");
        EXPECT_EQ(c.result.status, k.status);
        EXPECT_EQ(c.stderrText, k.message);
        EXPECT_NE(c.result.detail.find(k.detail), std::string::npos) << c.result.detail;
        EXPECT_EQ(c.output, "");
    }
}

TEST(Type42, EveryTruncationOfAFontStopsCleanly)
{
    // The last 2 bytes pad glyf (22 bytes) to 4; every shorter cut loses table data.
    auto font = readBytes(dataPath("tiny-post2.ttf"));
    for (size_t n = 0; n < font.size() - 2; ++n) {
        std::vector<uint8_t> cut(font.begin(), font.begin() + n);
        auto c = convert(cut, "Cut");
        EXPECT_NE(c.result.status, Type42Status::Complete) << n << " bytes";
        EXPECT_EQ(c.output, "") << n << " bytes";
    }
}

TEST(Type42, UnsplittableDataStopsWithTheOutputIncomplete)
{
    // Bytes past the last table give no break point within 65534 bytes.
    auto font = readBytes(dataPath("tiny-post2.ttf"));
    font.resize(font.size() + 70000, 0xAB);
    auto c = convert(font, "TinyTest");
    EXPECT_EQ(c.result.status, Type42Status::NoBreakPoint);
    EXPECT_EQ(c.stderrText, "");
    ASSERT_GE(c.output.size(), 3u);
    EXPECT_EQ(c.output.substr(c.output.size() - 3), "00>");
    EXPECT_EQ(c.output.find("/CharStrings"), std::string::npos);
}

TEST(Type42, FontNameIsClippedTo511BytesOnACharacterBoundary)
{
    std::string name(510, 'N');
    name += "\xC3\xA9"; // 512 bytes, the last character two bytes long
    auto c = convert(readBytes(dataPath("tiny-post2.ttf")), name);
    EXPECT_NE(c.output.find("/FontName /" + std::string(510, 'N') + " def\n"), std::string::npos);
}

// Large real fonts: several strings, each break at a table or 4-aligned glyph start, together
// the whole file.
TEST(Type42, LargeFontsSplitIntoStringsAtBreakPoints)
{
    for (const auto& path : {kDejaVu, kTangut}) {
        SCOPED_TRACE(path);
        if (!fileExists(path))
            GTEST_SKIP() << path << " missing (fonts-dejavu-core, fonts-noto-core)";
        auto font = readBytes(path);
        auto c = convert(font, "Probe");
        ASSERT_EQ(c.result.status, Type42Status::Complete) << c.result.detail;
        auto s = parseSfnts(c.output);
        ASSERT_GT(s.strings.size(), 1u);
        EXPECT_TRUE(s.closed);
        std::vector<uint8_t> joined;
        for (size_t k = 0; k < s.strings.size(); ++k) {
            EXPECT_LE(s.strings[k].size(), kType42MaxChunk);
            if (k > 0) {
                EXPECT_EQ(s.starts[k] % 4, 0u) << "string " << k;
            }
            joined.insert(joined.end(), s.strings[k].begin(), s.strings[k].end());
        }
        EXPECT_TRUE(joined == font);
    }
}

// Ghostscript as the oracle: Encoding of a font without glyph names is its StandardEncoding.
TEST(Type42Ghostscript, StandardEncodingMatchesGhostscripts)
{
    if (!haveProgram("gs"))
        GTEST_SKIP() << "gs missing (ghostscript)";
    std::string out = scratchPath("stdenc.txt");
    ASSERT_EQ(run("gs -q -dNODISPLAY -dBATCH -dNOPAUSE -dSAFER -c \"StandardEncoding { =string cvs print "
                  "(\\n) print } forall\" > " +
                  out),
              0);
    std::vector<std::string> gsNames;
    std::istringstream lines(readText(out));
    for (std::string line; std::getline(lines, line);)
        gsNames.push_back(line);
    ASSERT_EQ(gsNames.size(), 256u);
    for (size_t code = 0; code < 256; ++code)
        EXPECT_EQ(gsNames[code], kStandardEncoding[code]) << "code " << code;
}

// Renders a line with our Type 42 program and with the TrueType file itself; the pictures must
// be identical, and not blank.
void expectSameRendering(const std::string& fontPath, const std::string& psName, const std::string& drawing)
{
    auto font = readBytes(fontPath);
    std::string program;
    ASSERT_TRUE(convertTTFtoPS42(font, "TalmoProbe", program).complete());
    std::string t42 = scratchPath(psName + ".t42");
    writeText(t42, program);
    std::string ours = scratchPath(psName + "-t42.pgm"), theirs = scratchPath(psName + "-ttf.pgm");
    const std::string gs = "gs -q -dBATCH -dNOPAUSE -sDEVICE=pgmraw -r72 -g600x120 ";
    ASSERT_EQ(run(gs + "-dSAFER -sOutputFile=" + ours + " " + t42 +
                  " -c \"/TalmoProbe findfont 48 scalefont "
                  "setfont 10 40 moveto " +
                  drawing + " showpage\""),
              0);
    ASSERT_EQ(run(gs + "-dNOSAFER -sOutputFile=" + theirs + " -c \"(" + fontPath + ") (r) file .loadfont /" + psName +
                  " findfont 48 scalefont setfont 10 40 moveto " + drawing + " showpage\""),
              0);
    auto a = readBytes(ours), b = readBytes(theirs);
    ASSERT_EQ(a.size(), b.size());
    ASSERT_GT(a.size(), 600u * 120u);
    size_t ink = std::count_if(a.end() - 600 * 120, a.end(), [](uint8_t v) { return v < 128; });
    EXPECT_GT(ink, 500u) << "nothing drawn";
    size_t differing = 0;
    for (size_t i = 0; i < a.size(); ++i)
        differing += a[i] != b[i];
    EXPECT_EQ(differing, 0u) << "pixels differ between the Type 42 and the TrueType rendering";
}

// DejaVu has composite glyphs; Tangut is split into many strings.
TEST(Type42Ghostscript, RealFontsRenderLikeTheTrueTypeFont)
{
    if (!haveProgram("gs"))
        GTEST_SKIP() << "gs missing (ghostscript)";
    const std::tuple<std::string, const char*, const char*> fonts[] = {
        {kDejaVu, "DejaVuSans", "(Watermark: Draft 42!) show"},
        {kTangut, "NotoSerifTangut-Regular", "/u17000 glyphshow /u17001 glyphshow /u17A3B glyphshow /u18AF2 glyphshow"},
    };
    for (const auto& [path, psName, drawing] : fonts) {
        SCOPED_TRACE(psName);
        if (!fileExists(path))
            GTEST_SKIP() << path << " missing (fonts-dejavu-core, fonts-noto-core)";
        expectSameRendering(path, psName, drawing);
    }
}

// HarfBuzz's own table of the standard Macintosh names, read back from a post 1.0 font of 258
// glyphs (data/mac-names.ttf), is the oracle; the printer's spellings differ at 2 and 257 only.
TEST(Type42, MacintoshNamesMatchHarfBuzzExceptThePrintersSpellings)
{
    hb_blob_t* blob = hb_blob_create_from_file(dataPath("mac-names.ttf").c_str());
    hb_face_t* face = hb_face_create(blob, 0);
    hb_font_t* hbFont = hb_font_create(face);
    for (unsigned g = 0; g < 258; ++g) {
        char name[64] = {};
        ASSERT_TRUE(hb_font_get_glyph_name(hbFont, g, name, sizeof name)) << g;
        std::string expected = g == 2 ? "CR" : g == 257 ? "dmacron" : name;
        EXPECT_EQ(kMacStandardGlyphNames[g], expected) << "glyph " << g << " (HarfBuzz: " << name << ")";
    }
    hb_font_destroy(hbFont);
    hb_face_destroy(face);
    hb_blob_destroy(blob);
}

} // namespace
