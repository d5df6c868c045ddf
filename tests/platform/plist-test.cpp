#include "platform/platform.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include "data-cases.h"

#include <cstdlib>
#include <sstream>

using namespace talmo::pl;

namespace {

std::string data(const char* name)
{
    std::string text;
    return talmo::ReadFileBytes(std::string(TALMO_SOURCE_DIR "/tests/platform/data/") + name, text, 1 << 16) ? text
                                                                                                             : "";
}

TEST(PlistWriter, WritesAndReadsTheStandardLayoutByteForByte)
{
    auto d = makeDict();
    d->setString("name", "A & <B>");
    d->setInt("count", -2147483648LL);
    d->setReal("ratio", 0.75);
    d->setBool("on", true);
    d->setBool("off", false);
    d->set("empty", makeDict());
    auto a = makeArray();
    a->append(makeString(""));
    a->append(makeArray());
    d->set("list", a);
    d->set("bytes", makeData({0, 1, 2, 255}));
    d->set("when", makeDate(0));
    // The layout, written by hand: the writer must produce it and the reader must read it back.
    const std::string expected = data("standard-layout.plist");
    EXPECT_TRUE(equal(readPlist(expected), d));
    EXPECT_EQ(writePlist(d), expected);
}

TEST(PlistWriter, NeverWritesCharactersXmlForbids)
{
    auto d = makeDict();
    d->setString("k\x01", std::string("a\x00"
                                      "b\x1f\r\n\t\xef\xbf\xbe\xff"
                                      "c",
                                      12));
    std::string xml = writePlist(d);
    EXPECT_NE(xml.find("<key>k</key>"), std::string::npos);
    EXPECT_NE(xml.find("<string>ab&#xD;\n\tc</string>"), std::string::npos) << xml;
    // libxml2 accepts the document strictly, and the CR survives.
    auto back = as<Dictionary>(readPlist(xml));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->getString("k"), "ab\r\n\tc");
}

// What a hand-edited file may hold beyond the writer's own layout.
TEST(PlistReader, AcceptsBlanksAroundNumbersAndInsideData)
{
    auto d = as<Dictionary>(readPlist(data("hand-edited.plist")));
    ASSERT_TRUE(d);
    EXPECT_EQ(d->getInt("z"), 42);
    EXPECT_EQ(d->getReal("a"), -1500.0);
    EXPECT_EQ(as<Data>(d->get("d"))->bytes, (std::vector<uint8_t>{0, 1, 2, 255}));
    EXPECT_EQ(formatDateText(as<Date>(d->get("t"))->seconds), "2024-02-29T12:34:56Z");
}

TEST(PlistReader, RejectsMalformedInputWithStatusLineAndMessage)
{
    const char* names[] = {"Ok", "NotXml", "NotPlist", "BadElement", "BadValue", "TooDeep", "TooLarge"};
    const auto cases = talmo::test::ReadDataCases("plist-malformed.txt");
    ASSERT_EQ(cases.size(), 20u);
    for (const auto& c : cases) {
        std::istringstream expect(c.expect);
        std::string status;
        int line = 0;
        expect >> status >> line;
        ParseResult r;
        testing::internal::CaptureStderr(); // libxml2 must not write there either
        EXPECT_EQ(readPlist(c.input, &r), nullptr) << c.expect;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << c.expect;
        EXPECT_EQ(names[int(r.status)], status) << c.expect << ": " << r.message;
        if (line) {
            EXPECT_EQ(r.line, line) << c.expect << ": " << r.message;
        }
        EXPECT_FALSE(r.message.empty()) << c.expect;
    }
}

TEST(PlistNumbers, StrictSyntax)
{
    // Expected value or "error", then the text.
    const auto reals = talmo::test::ReadDataCases("plist-reals.txt");
    ASSERT_EQ(reals.size(), 14u);
    for (const auto& c : reals) {
        double v = 0;
        const bool ok = parseRealText(c.input, v);
        EXPECT_EQ(ok, c.expect != "error") << c.input;
        if (ok) {
            EXPECT_EQ(v, std::strtod(c.expect.c_str(), nullptr)) << c.input;
        }
    }
    int64_t i = 0;
    EXPECT_TRUE(parseIntegerText("-9223372036854775808", i));
    EXPECT_EQ(i, INT64_MIN);
    EXPECT_TRUE(parseIntegerText("9223372036854775807", i));
    EXPECT_EQ(i, INT64_MAX);
    EXPECT_FALSE(parseIntegerText("-", i));
    EXPECT_FALSE(parseIntegerText("1 2", i));
    double leap = 0;
    ASSERT_TRUE(parseDateText("2016-12-31T23:59:60Z", leap));
    EXPECT_EQ(formatDateText(leap), "2017-01-01T00:00:00Z") << "a leap second reads as the next second";
}

} // namespace
