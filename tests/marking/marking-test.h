// Helpers of the marking tests: fixtures, file reads, external programs, a private home per test.
#pragma once

#include <gtest/gtest.h>
#include <hb.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace talmo::test {

inline std::string dataPath(const std::string& name) { return TALMO_SOURCE_DIR "/tests/marking/data/" + name; }
inline std::string scratchPath(const std::string& name) { return TALMO_BINARY_DIR "/tests/marking/" + name; }

inline std::string readText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
inline std::vector<uint8_t> readBytes(const std::string& path)
{
    std::string text = readText(path);
    return {text.begin(), text.end()};
}
inline void writeText(const std::string& path, const std::string& s) { std::ofstream(path, std::ios::binary) << s; }

// Runs a shell command; its exit status.
inline int run(const std::string& command)
{
    int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// talmo as a user runs it: exit status, stdout and stderr.
struct Outcome {
    int status;
    std::string out, err;
};

inline Outcome runTalmo(const std::string& args, const std::string& environment = "")
{
    // ctest runs tests in parallel: scratch files per test.
    const std::string base =
        scratchPath(std::string("cli-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    int status =
        run(environment + " " + TALMO_BINARY_DIR + "/cli/talmo " + args + " > " + base + ".out 2> " + base + ".err");
    return {status, readText(base + ".out"), readText(base + ".err")};
}

// Glyph ids of the characters of `text` through HarfBuzz's own cmap reading.
inline std::vector<uint16_t> nominalGlyphs(const std::string& fontPath, const std::string& text)
{
    hb_blob_t* blob = hb_blob_create_from_file(fontPath.c_str());
    hb_face_t* face = hb_face_create(blob, 0);
    hb_font_t* font = hb_font_create(face); // holds the face, which holds the blob
    hb_face_destroy(face);
    hb_blob_destroy(blob);
    std::vector<uint16_t> ids;
    for (char c : text) {
        hb_codepoint_t g = 0;
        hb_font_get_nominal_glyph(font, hb_codepoint_t(c), &g);
        ids.push_back(uint16_t(g));
    }
    hb_font_destroy(font);
    return ids;
}

// Ghostscript draws `drawing` with `program`'s font and with the TrueType file: same, not blank.
inline testing::AssertionResult rendersLikeTrueType(const std::string& program, const std::string& programFont,
                                                    const std::string& ttf, const std::string& ttfFont,
                                                    const std::string& drawing)
{
    const std::string base = scratchPath(ttfFont + "-as-" + programFont), ours = base + ".pgm",
                      theirs = base + "-ttf.pgm";
    writeText(base + ".t42", program);
    const std::string gs = "gs -q -dBATCH -dNOPAUSE -sDEVICE=pgmraw -r72 -g600x120 ";
    const std::string show = " findfont 48 scalefont setfont 10 40 moveto " + drawing + " showpage\"";
    if (run(gs + "-dSAFER -sOutputFile=" + ours + " " + base + ".t42 -c \"/" + programFont + show) != 0 ||
        run(gs + "-dNOSAFER -sOutputFile=" + theirs + " -c \"(" + ttf + ") (r) file .loadfont /" + ttfFont + show) != 0)
        return testing::AssertionFailure() << "gs failed";
    auto a = readBytes(ours);
    if (a.size() < 600 * 120 || std::count_if(a.end() - 600 * 120, a.end(), [](uint8_t v) { return v < 128; }) < 500)
        return testing::AssertionFailure() << "nothing drawn";
    if (a != readBytes(theirs))
        return testing::AssertionFailure() << "pixels differ between the Type 42 and the TrueType rendering";
    return testing::AssertionSuccess();
}

// Every test that reads these folders sets them anew, so the environment is not restored.
class MarkingHome : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/talmo-marking-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root_ = pattern;
        for (const char* v : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
            ::setenv(v, (root_ + "/" + v).c_str(), 1);
    }
    void TearDown() override { std::filesystem::remove_all(root_); }
    std::string makerFolder() const { return root_ + "/XDG_DATA_HOME/Talmo"; }
    std::string watermarkFilePath() const { return makerFolder() + "/com.talmo.printing.watermarks.plist"; }

    std::string root_;
};

} // namespace talmo::test
