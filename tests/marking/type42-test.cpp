// TrueType to Type 42, the watermark fonts, and talmo type42 as a user runs it.
#include "marking/marking.h"

#include "marking-test.h"

#include <regex>

using namespace talmo;
using namespace talmo::test;

namespace {

constexpr const char* kMissingTable = "DEBUG: Malformed TrueType file - missing vital table.\n";
constexpr const char* kBadMagic = "DEBUG: Malformed TrueType file - Bad magic number\n";
const std::string kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const std::string kTangut = "/usr/share/fonts/truetype/noto/NotoSerifTangut-Regular.ttf";
const std::string kLiberationSans = "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf";

struct Conversion {
    Type42Result result;
    std::string output, stderrText;
};

Conversion convert(const std::vector<uint8_t>& font, const std::string& name, std::string output = {})
{
    testing::internal::CaptureStderr();
    auto result = convertTTFtoPS42(font, name, output);
    return {result, output, testing::internal::GetCapturedStderr()};
}

TEST(Type42, TinyFontMatchesGoldenTextAppendedToTheOutput)
{
    auto c = convert(readBytes(dataPath("tiny-post2.ttf")), "TinyTest", "%prior\n");
    EXPECT_EQ(c.result.status, Type42Status::Complete) << c.result.detail;
    EXPECT_EQ(c.stderrText, "");
    EXPECT_EQ(c.output, "%prior\n" + readText(dataPath("tiny-post2.t42")));

    std::string name(510, 'N'); // 512 bytes, the last character two bytes long: clipped to 510
    c = convert(readBytes(dataPath("tiny-post2.ttf")), name + "\xC3\xA9");
    EXPECT_NE(c.output.find("/FontName /" + name + " def\n"), std::string::npos);
}

// Ghostscript's StandardEncoding is the oracle for a font without glyph names.
TEST(Type42, PostFormat3KeepsStandardEncodingAndEmptyCharStrings)
{
    auto c = convert(readBytes(dataPath("tiny-post3.ttf")), "TinyTest");
    ASSERT_EQ(c.result.status, Type42Status::Complete) << c.result.detail;
    std::string encoding;
    std::regex line(R"(dup (\d+) /(\S*) put\n)");
    for (std::sregex_iterator it(c.output.begin(), c.output.end(), line), end; it != end; ++it)
        encoding += (*it)[2].str() + "\n";
    EXPECT_NE(c.output.find("] def\n/CharStrings 3 dict dup begin\nend readonly def\n"), std::string::npos);
    EXPECT_EQ(c.output.find("%%VMUsage"), std::string::npos) << "maxMemType42 0 writes no VMUsage";
    const std::string out = scratchPath("stdenc.txt");
    const std::string list = "StandardEncoding { =string cvs print (\\n) print } forall";
    ASSERT_EQ(run("gs -q -dNODISPLAY -dBATCH -dNOPAUSE -dSAFER -c \"" + list + "\" > " + out), 0);
    EXPECT_EQ(encoding, readText(out));
}

// Defects, each with its stop, its message (the two designed ones) and no output; any cut font.
TEST(Type42, MalformedFontsStopCleanly)
{
    const std::tuple<const char*, Type42Status, const char*> cases[] = {
        {"../tiny-no-post", Type42Status::MissingTable, "missing"},
        {"truncated-directory", Type42Status::MissingTable, "missing"},
        {"missing-loca", Type42Status::MissingTable, "missing"},
        {"missing-glyf", Type42Status::MissingTable, "missing"},
        {"head-bad-magic", Type42Status::BadMagic, "magicNumber"},
        {"head-too-short", Type42Status::Malformed, "head: 50 bytes"},
        {"head-units-per-em-zero", Type42Status::Malformed, "unitsPerEm = 0"},
        {"head-index-to-loc-format-2", Type42Status::Malformed, "indexToLocFormat = 2"},
        {"maxp-zero-glyphs", Type42Status::Malformed, "numGlyphs = 0"},
        {"maxp-too-short", Type42Status::Malformed, "maxp: 4 bytes"},
        {"post-too-short", Type42Status::Malformed, "post: 20 bytes"},
        {"post-glyph-count-mismatch", Type42Status::GlyphCountMismatch, "glyph count"},
        {"post-index-array-past-end", Type42Status::Malformed, "glyphNameIndex"},
        {"post-name-index-past-data", Type42Status::Malformed, "name index 259"},
        {"post-name-length-past-end", Type42Status::Malformed, "name index 258 past the 0 names"},
        {"name-format-1", Type42Status::NameFormat, "format 1"},
        {"name-empty", Type42Status::Malformed, "name: 0 bytes"},
        {"loca-too-short", Type42Status::Malformed, "loca: 6 bytes"},
        {"loca-decreasing", Type42Status::Malformed, "entry 2 = 6 below"},
        {"loca-past-glyf", Type42Status::Malformed, "entry 3 = 24 past"},
        {"glyf-offset-past-end", Type42Status::Malformed, "glyf: offset 2147483632"},
    };
    for (auto [file, status, detail] : cases) {
        SCOPED_TRACE(file);
        auto font = readBytes(dataPath(std::string("malformed/") + file + ".ttf"));
        ASSERT_FALSE(font.empty());
        auto c = convert(font, "Bad");
        const char* message = status == Type42Status::MissingTable ? kMissingTable
                              : status == Type42Status::BadMagic   ? kBadMagic
                                                                   : "";
        EXPECT_EQ(std::tuple(c.result.status, c.stderrText, c.output), std::tuple(status, message, ""));
        EXPECT_NE(c.result.detail.find(detail), std::string::npos) << c.result.detail;
    }
    // The last 2 bytes pad glyf (22 bytes) to 4; every shorter cut loses table data.
    auto font = readBytes(dataPath("tiny-post2.ttf"));
    for (size_t n = 0; n < font.size() - 2; ++n) {
        auto c = convert({font.begin(), font.begin() + ptrdiff_t(n)}, "Cut");
        EXPECT_NE(c.result.status, Type42Status::Complete) << n << " bytes";
        EXPECT_EQ(c.output, "") << n << " bytes";
    }
}

// Ghostscript draws our program as the TrueType file: DejaVu's composites, Tangut's many strings.
TEST(Type42Ghostscript, RealFontsRenderLikeTheTrueTypeFont)
{
    const std::tuple<std::string, const char*, const char*> fonts[] = {
        {kDejaVu, "DejaVuSans", "(Watermark: Draft 42!) show"},
        {kTangut, "NotoSerifTangut-Regular", "/u17000 glyphshow /u17001 glyphshow /u17A3B glyphshow /u18AF2 glyphshow"},
    };
    for (const auto& [path, psName, drawing] : fonts) {
        SCOPED_TRACE(psName);
        auto font = readBytes(path);
        std::string program;
        ASSERT_TRUE(convertTTFtoPS42(font, "TalmoProbe", program).complete());
        EXPECT_TRUE(rendersLikeTrueType(program, "TalmoProbe", path, psName, drawing));
    }
}

// The exact PostScript name, or a metric-compatible face for a core name; never a nearest match.
TEST(FontLookup, ExactPostScriptNameOrAMetricCompatibleFontNeverTheFallback)
{
    for (auto [name, path] :
         {std::pair{"DejaVuSans", kDejaVu}, {"NoSuchFont-Talmo", ""}, {"ArialMT", kLiberationSans}}) {
        auto found = findFontByPostScriptName(name);
        EXPECT_EQ(found ? found->path : "", path) << name;
    }
}

using ConvertFont = MarkingHome;

// Ghostscript draws the stored subset, found by its name "TL-<fontName>-TL", as the whole font.
TEST_F(ConvertFont, StoresATypeFortyTwoSubsetNamedAfterTheFont)
{
    _WatermarkData r;
    r.isText = 1;
    setWatermarkText(r.textString, "Draft");
    setWatermarkText(r.fontName, "DejaVuSans");
    r.glyphs = nominalGlyphs(kDejaVu, "Draft");
    r.glyphCount = int32_t(r.glyphs.size());
    auto result = convertFont(r);
    ASSERT_TRUE(result.ok()) << result.message;
    std::string program;
    ASSERT_TRUE(loadFontData(kWatermarksFile, "DejaVuSans", program));
    EXPECT_TRUE(rendersLikeTrueType(program, "TL-DejaVuSans-TL", kDejaVu, "DejaVuSans", "(Draft) show"));
}

// Unsubsettable fonts go whole under their own name; names are checked; no CFF; failures add nothing.
TEST(FontProgram, SubsetOrWholeFontUnderACheckedName)
{
    const std::string tiny = dataPath("tiny-post2.ttf"), whole = dataPath("name-records-past-end.ttf");
    for (auto [path, ownName, fontName, status, fontNameLine] :
         {std::tuple{whole, "TinyWhole", "Tiny", FontConvertStatus::Stored, "/FontName /TinyWhole def\n"},
          {whole, "Tiny)Whole", "Tiny", FontConvertStatus::BadName, ""},
          {tiny, "Tiny", "Tiny Bold", FontConvertStatus::BadName, ""},
          {dataPath("cff-outlines.otf"), "Tiny", "Tiny", FontConvertStatus::NotTrueType, ""},
          {dataPath("malformed/head-bad-magic.ttf"), "Tiny", "Tiny", FontConvertStatus::ConversionFailed, ""}}) {
        SCOPED_TRACE(path + " " + ownName + " " + fontName);
        std::string program = "%prior\n";
        EXPECT_EQ(makeFontProgram({path, 0, ownName, "", ""}, fontName, {1}, program).status, status);
        const size_t at = program.find("/FontName");
        EXPECT_EQ(at == std::string::npos ? "" : program.substr(at, program.find('\n', at) + 1 - at), fontNameLine);
        EXPECT_EQ(program.rfind("%prior\n", 0), 0u);
    }
}

// A stop writes nothing (a partial program would be a broken font) and the old file stays.
TEST(Type42Command, WritesTheProgramOrNothingWithTheExitStatus)
{
    const std::string out = scratchPath("cli-tiny.t42");
    std::filesystem::remove(out);
    auto o = runTalmo("type42 " + dataPath("tiny-post2.ttf") + " TinyTest -o " + out);
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(readText(out), readText(dataPath("tiny-post2.t42")));
    for (auto [args, status, stderrPart] :
         {std::tuple{dataPath("malformed/loca-decreasing.ttf") + " P", 1, "not converted (loca: entry 2 = 6 below"},
          {"/usr/share/fonts/truetype/dejavu/DejaVuSans-ExtraLight.ttf P", 1, "incomplete, nothing written"},
          {dataPath("tiny-post2.ttf") + " 'Bad Name'", 2, "not a PostScript name"}}) {
        SCOPED_TRACE(args);
        writeText(out, "previous");
        o = runTalmo("type42 " + args + " -o " + out);
        EXPECT_EQ(o.status, status);
        EXPECT_NE(o.err.find(stderrPart), std::string::npos) << o.err;
        EXPECT_EQ(readText(out), "previous");
    }
}

} // namespace
