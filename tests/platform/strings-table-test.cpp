#include "platform/platform.h"

#include <gtest/gtest.h>

using namespace talmo;
using Status = StringsParseResult::Status;

namespace {

std::vector<std::pair<std::string, std::string>> entries(const pl::DictPtr& d)
{
    std::vector<std::pair<std::string, std::string>> out;
    for (const auto& [k, v] : *d)
        out.emplace_back(k, pl::as<pl::String>(v)->text);
    return out;
}

using Entries = std::vector<std::pair<std::string, std::string>>;

} // namespace

TEST(StringsTable, ReadsEntriesInFileOrderWithCommentsAndEscapes)
{
    std::string text;
    ASSERT_TRUE(ReadFileBytes(TALMO_SOURCE_DIR "/tests/platform/data/escapes.strings", text, 1 << 16));
    StringsParseResult r;
    auto d = parseStringsTable(text, &r);
    ASSERT_TRUE(d) << r.message;
    EXPECT_EQ(entries(d), (Entries{{"PrinterDefault", "Printer Default"},
                                   {"Quote", "say \"hi\"\\ done"},
                                   {"Lines", "a\nb\tc"},
                                   {"Euro", "\xE2\x82\xAC \xC3\xA9"},
                                   {"Smile", "\xF0\x9F\x98\x80"},
                                   {"bare_key.1", "bare-value"},
                                   {"Self", "Self"},
                                   {"Grüße", "ß"}}));
}

TEST(StringsTable, DuplicatesReplaceInPlaceAndEmptyInputsAreEmptyTables)
{
    auto d = parseStringsTable("\"a\" = \"1\"; \"b\" = \"2\"; \"a\" = \"3\";");
    ASSERT_TRUE(d);
    EXPECT_EQ(entries(d), (Entries{{"a", "3"}, {"b", "2"}}));
    for (const char* text : {"", "  \n\t", "/* */", "// only\n", "\xEF\xBB\xBF"}) {
        d = parseStringsTable(text);
        ASSERT_TRUE(d) << text;
        EXPECT_TRUE(d->empty());
    }
}

TEST(StringsTable, ReportsStatusLineAndMessage)
{
    struct Case {
        std::string text;
        Status status;
        int line;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"\"a\" = \"1\";\n\"b\" = \"2\"\n\"c\" = \"3\";", Status::Syntax, 3,
         "expected ';' after the entry for \"b\" (line 2)"},
        {"\"a\" = ;", Status::Syntax, 1, "expected a value, found ';'"},
        {"\n\n\"a\" = \"1", Status::Unterminated, 3, "string not closed"},
        {"\"a\" = \"1\";\n/* open", Status::Unterminated, 2, "comment not closed"},
        {"\"a\" = \"\\q\";", Status::BadEscape, 1, "unknown escape \\q"},
        {"\"a\" = \"\\U12\";", Status::BadEscape, 1, "\\U needs four hex digits"},
        {"\"a\" = \"\\UDE00\";", Status::BadEscape, 1, "unpaired surrogate \\U escape"},
        {"\"a\" = \"\\UD83Dx\";", Status::BadEscape, 1, "unpaired surrogate \\U escape"},
        {"\"a\" = \"1\";\n\"b\" = \"\xC3\";", Status::BadEncoding, 2, "malformed UTF-8"},
        {"\"a\" = \"\xED\xA0\x80\";", Status::BadEncoding, 1, "malformed UTF-8"},
        {"\"a\" =", Status::Syntax, 1, "expected a value at the end of the table"},
        {"\"a\" = \"1\"; =", Status::Syntax, 1, "expected a key, found '='"},
        {"\"a\\", Status::Unterminated, 1, "string not closed"},
    };
    for (const auto& c : cases) {
        StringsParseResult r;
        EXPECT_FALSE(parseStringsTable(c.text, &r)) << c.text;
        EXPECT_EQ(r.status, c.status) << c.text;
        EXPECT_EQ(r.line, c.line) << c.text;
        EXPECT_EQ(r.message, c.message) << c.text;
    }
}

TEST(StringsTable, ReadsUtf16WithEitherByteOrderMark)
{
    std::u16string text = u"\"K\" = \"Gr\u00FC\u00DFe \U0001F600\";\n";
    std::string le = "\xFF\xFE", be = "\xFE\xFF";
    for (char16_t u : text) {
        le += char(u & 0xFF), le += char(u >> 8);
        be += char(u >> 8), be += char(u & 0xFF);
    }
    for (const auto& bytes : {le, be}) {
        auto d = parseStringsTable(bytes);
        ASSERT_TRUE(d);
        EXPECT_EQ(d->getString("K"), "Gr\xC3\xBC\xC3\x9F"
                                     "e \xF0\x9F\x98\x80");
    }
    StringsParseResult r;
    EXPECT_FALSE(parseStringsTable(std::string("\xFF\xFE\x22\x00\x00\xD8\x22\x00", 8), &r));
    EXPECT_EQ(r.status, Status::BadEncoding);
    EXPECT_FALSE(parseStringsTable(std::string("\xFF\xFE\x22", 3), &r));
    EXPECT_EQ(r.status, Status::BadEncoding);
    EXPECT_EQ(r.message, "UTF-16 table of odd length");
    EXPECT_FALSE(parseStringsTable(std::string(kMaxStringsBytes + 1, ' '), &r));
    EXPECT_EQ(r.status, Status::TooLarge);
}

TEST(StringsTable, FormattedEntriesReadBackToTheSameText)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"plain", "text"}, {"quote\"key", "back\\slash"}, {"nl", "a\nb\tc\rd"}, {"", ""}, {"utf8", "\xE2\x82\xAC"}};
    std::string table;
    for (const auto& [k, v] : cases)
        table += formatStringsEntry(k, v) + "\n";
    auto d = parseStringsTable(table);
    ASSERT_TRUE(d);
    ASSERT_EQ(d->size(), cases.size());
    for (const auto& [k, v] : cases)
        EXPECT_EQ(d->getString(k), v) << k;
    EXPECT_EQ(formatStringsEntry("a\"b", "c"), "\"a\\\"b\" = \"c\";");
}
