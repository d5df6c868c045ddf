#include "marking/marking.h"

#include "marking-fixture.h"
#include "test-util.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

using namespace talmo;
using namespace talmo::test;

namespace {

const std::string kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const std::string kLiberationSans = "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf";

TEST(FontLookup, ExactPostScriptNameOrAMetricCompatibleFontNeverTheFallback)
{
    if (!fileExists(kDejaVu) || !fileExists(kLiberationSans))
        GTEST_SKIP() << "fonts-dejavu-core or fonts-liberation missing";
    auto found = findFontByPostScriptName("DejaVuSans");
    ASSERT_TRUE(found);
    EXPECT_EQ(std::pair(found->path, found->postScriptName), std::pair(kDejaVu, std::string("DejaVuSans")));
    std::string why;
    EXPECT_FALSE(findFontByPostScriptName("NoSuchFont-Talmo", &why)) << "a nearest match is not the font";
    EXPECT_EQ(why, "no font has the PostScript name \"NoSuchFont-Talmo\"");

    found = findFontByPostScriptName("ArialMT");
    ASSERT_TRUE(found);
    if (found->postScriptName != "ArialMT") { // else a font of that name is installed
        EXPECT_EQ(std::pair(found->path, found->postScriptName),
                  std::pair(kLiberationSans, std::string("LiberationSans")));
    }
}

using ConvertFont = MarkingHome;

TEST_F(ConvertFont, StoresATypeFortyTwoSubsetNamedAfterTheFont)
{
    if (!fileExists(kDejaVu))
        GTEST_SKIP() << "fonts-dejavu-core missing";
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
    EXPECT_EQ(program.rfind("%!PS-TrueTypeFont-", 0), 0u);
    EXPECT_NE(program.find("/FontName /TL-DejaVuSans-TL def\n"), std::string::npos);
    // .notdef and the five letters, by name (the subset may add glyphs its layout rules reach,
    // such as the ff ligature).
    auto cs = program.substr(program.find("/CharStrings"));
    EXPECT_TRUE(std::regex_search(cs, std::regex(R"(^/CharStrings \d+ dict dup begin\n/\.notdef 0 def\n)")));
    std::set<std::string> names;
    std::istringstream lines(cs);
    std::smatch m;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, m, std::regex(R"(/(\S+) \d+ def)")))
            names.insert(m[1]);
    for (const char* n : {"D", "r", "a", "f", "t"})
        EXPECT_TRUE(names.count(n)) << n;

    if (!haveProgram("gs"))
        return;
    // Ghostscript draws the stored subset exactly as the whole TrueType font.
    std::string t42 = root_ + "/subset.t42", ours = root_ + "/ours.pgm", theirs = root_ + "/theirs.pgm";
    writeText(t42, program);
    const std::string gs = "gs -q -dBATCH -dNOPAUSE -sDEVICE=pgmraw -r72 -g300x80 ";
    ASSERT_EQ(run(gs + "-dSAFER -sOutputFile=" + ours + " " + t42 +
                  " -c \"/TL-DejaVuSans-TL findfont 48 scalefont setfont 5 20 moveto (Draft) show showpage\""),
              0);
    ASSERT_EQ(run(gs + "-dNOSAFER -sOutputFile=" + theirs + " -c \"(" + kDejaVu +
                  ") (r) file .loadfont /DejaVuSans findfont 48 scalefont setfont 5 20 moveto (Draft) show "
                  "showpage\""),
              0);
    EXPECT_TRUE(readBytes(ours) == readBytes(theirs));
}

TEST_F(ConvertFont, UnknownAndCffFontsStoreNothing)
{
    _WatermarkData unknown;
    setWatermarkText(unknown.fontName, "NoSuchFont-Talmo");
    EXPECT_EQ(convertFont(unknown).status, FontConvertStatus::NotFound);
    std::string program;
    EXPECT_FALSE(loadFontData(kWatermarksFile, "NoSuchFont-Talmo", program));

    auto found = findFontByPostScriptName("NimbusSans-Regular");
    if (!found || found->path.find(".otf") == std::string::npos)
        GTEST_SKIP() << "no CFF font NimbusSans-Regular (fonts-urw-base35)";
    _WatermarkData r;
    setWatermarkText(r.fontName, "NimbusSans-Regular");
    auto result = convertFont(r);
    EXPECT_EQ(result.status, FontConvertStatus::NotTrueType);
    EXPECT_NE(result.message.find("CFF"), std::string::npos) << result.message;
    EXPECT_FALSE(loadFontData(kWatermarksFile, "NimbusSans-Regular", program));
}

} // namespace
