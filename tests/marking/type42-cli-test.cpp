// talmo type42 as a user runs it: exit status, stderr, and nothing written on a stop.
#include "test-util.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace talmo::test;

namespace {

const std::string kTalmo = std::string(TALMO_BINARY_DIR) + "/cli/talmo";

struct Outcome {
    int status;
    std::string err;
};

Outcome talmo(const std::string& args)
{
    // ctest runs tests in parallel: one scratch file per test.
    std::string err =
        scratchPath(std::string("cli-") + testing::UnitTest::GetInstance()->current_test_info()->name() + ".err");
    int status = run(kTalmo + " " + args + " 2> " + err);
    return {status, readText(err)};
}

TEST(Type42Command, WritesTheProgramOrNothingWithTheExitStatus)
{
    std::string out = scratchPath("cli-tiny.t42");
    std::filesystem::remove(out);
    auto o = talmo("type42 " + dataPath("tiny-post2.ttf") + " TinyTest -o " + out);
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(readText(out), readText(dataPath("tiny-post2.t42")));

    struct Case {
        std::string args;
        int status;
        const char* stderrPart;
    };
    const Case cases[] = {
        {dataPath("malformed/head-bad-magic.ttf") + " Probe", 1, "DEBUG: Malformed TrueType file - Bad magic number\n"},
        {dataPath("malformed/loca-decreasing.ttf") + " Probe", 1,
         "not converted (loca: entry 2 = 6 below entry 1 = 12)"},
        {"/usr/share/fonts/truetype/dejavu/DejaVuSans-ExtraLight.ttf Probe", 1,
         "Type 42 output incomplete, nothing written"},
        {dataPath("no-such-font.ttf") + " Probe", 1, "No such file or directory"},
        {dataPath("tiny-post2.ttf") + " 'Bad Name'", 2, "not a PostScript name"},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k.args);
        writeText(out, "previous");
        o = talmo("type42 " + k.args + " -o " + out);
        EXPECT_EQ(o.status, k.status);
        EXPECT_NE(o.err.find(k.stderrPart), std::string::npos) << o.err;
        EXPECT_EQ(readText(out), "previous") << "the old file stays";
    }
}

} // namespace
