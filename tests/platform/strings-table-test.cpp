#include "platform/platform.h"

#include <gtest/gtest.h>

#include "data-cases.h"

#include <sstream>

using namespace talmo;

namespace {

std::string data(const char* name)
{
    std::string text;
    return ReadFileBytes(std::string(TALMO_SOURCE_DIR "/tests/platform/data/") + name, text, 1 << 16) ? text : "";
}

} // namespace

// Every escape, comment and bare token, a lone key and repeated keys (first place, last value),
// in UTF-8 and in UTF-16 of either byte order; each entry written back is compared with the
// canonical form written by hand.
TEST(StringsTable, ReadsEntriesInFileOrderAndWritesThemBackCanonically)
{
    for (const char* name : {"escapes.strings", "escapes-utf16le.strings", "escapes-utf16be.strings"}) {
        StringsParseResult r;
        auto d = parseStringsTable(data(name), &r);
        ASSERT_TRUE(d) << name << ":" << r.line << ": " << r.message;
        std::string written;
        for (const auto& [k, v] : *d)
            written += formatStringsEntry(k, pl::as<pl::String>(v)->text) + "\n";
        EXPECT_EQ(written, data("escapes-canonical.strings")) << name;
    }
    for (const char* text : {"", "  \n\t", "/* */", "// only\n", "\xEF\xBB\xBF"}) {
        auto d = parseStringsTable(text);
        ASSERT_TRUE(d) << text;
        EXPECT_TRUE(d->empty());
    }
}

TEST(StringsTable, ReportsStatusLineAndMessage)
{
    const char* names[] = {"Ok", "BadEncoding", "Syntax", "BadEscape", "Unterminated", "TooLarge", "NotFound"};
    const auto cases = test::ReadDataCases("strings-malformed.txt");
    ASSERT_EQ(cases.size(), 15u);
    for (const auto& c : cases) {
        std::istringstream expect(c.expect);
        std::string status, message;
        int line = 0;
        expect >> status >> line;
        std::getline(expect >> std::ws, message);
        StringsParseResult r;
        EXPECT_FALSE(parseStringsTable(c.input, &r)) << c.expect;
        EXPECT_EQ(names[int(r.status)], status) << c.expect;
        EXPECT_EQ(r.line, line) << c.expect;
        EXPECT_EQ(r.message, message) << c.expect;
    }
    StringsParseResult r;
    EXPECT_FALSE(parseStringsTable(std::string(kMaxStringsBytes + 1, ' '), &r));
    EXPECT_EQ(r.status, StringsParseResult::Status::TooLarge);
}
