#include "platform/platform.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <cmath>

using namespace talmo::pl;

namespace {

const char* kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

std::string doc(const std::string& body) { return std::string(kHeader) + body + "</plist>\n"; }

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
    std::string expected;
    ASSERT_TRUE(talmo::ReadFileBytes(TALMO_SOURCE_DIR "/tests/platform/data/standard-layout.plist", expected, 1 << 16));
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
    auto d = as<Dictionary>(readPlist(doc("<dict><key>z</key><integer> 42 </integer><key>a</key><real>-1.5e3</real>"
                                          "<key>d</key><data>AAEC\n /w==</data>"
                                          "<key>t</key><date>2024-02-29T12:34:56Z</date></dict>\n")));
    ASSERT_TRUE(d);
    EXPECT_EQ(d->getInt("z"), 42);
    EXPECT_EQ(d->getReal("a"), -1500.0);
    EXPECT_EQ(as<Data>(d->get("d"))->bytes, (std::vector<uint8_t>{0, 1, 2, 255}));
    EXPECT_EQ(formatDateText(as<Date>(d->get("t"))->seconds), "2024-02-29T12:34:56Z");
}

struct BadCase {
    const char* name;
    std::string text;
    ParseResult::Status status;
    int line;
};

TEST(PlistReader, RejectsMalformedInputWithStatusLineAndMessage)
{
    std::string deep;
    for (int i = 0; i < 200; ++i)
        deep += "<array>";
    for (int i = 0; i < 200; ++i)
        deep += "</array>";
    const BadCase cases[] = {
        {"comma decimal", doc("<dict>\n<key>r</key>\n<real>0,75</real>\n</dict>\n"), ParseResult::Status::BadValue, 6},
        {"integer overflow", doc("<integer>9223372036854775808</integer>\n"), ParseResult::Status::BadValue, 4},
        {"integer with text", doc("<integer>12abc</integer>\n"), ParseResult::Status::BadValue, 4},
        {"empty integer", doc("<integer></integer>\n"), ParseResult::Status::BadValue, 4},
        {"key without value", doc("<dict>\n<key>a</key>\n</dict>\n"), ParseResult::Status::BadElement, 5},
        {"value without key", doc("<dict><string>a</string></dict>\n"), ParseResult::Status::BadElement, 4},
        {"unknown element", doc("<dict><key>a</key><float>1</float></dict>\n"), ParseResult::Status::BadElement, 4},
        {"bad date", doc("<date>2023-02-30T00:00:00Z</date>\n"), ParseResult::Status::BadValue, 4},
        {"bad base64", doc("<data>AA*A</data>\n"), ParseResult::Status::BadValue, 4},
        {"truncated", std::string(kHeader) + "<dict><key>a</key><string>b", ParseResult::Status::NotXml, 0},
        {"not xml", "hello", ParseResult::Status::NotXml, 1},
        {"empty plist", doc(""), ParseResult::Status::NotPlist, 3},
        {"two roots", doc("<true/><false/>\n"), ParseResult::Status::NotPlist, 4},
        {"too deep", doc(deep), ParseResult::Status::TooDeep, 4},
        {"entity declared",
         "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaa\">]><plist><string>&a;</string></plist>",
         ParseResult::Status::NotPlist, 0},
        {"text in dict", doc("<dict>stray<key>a</key><true/></dict>\n"), ParseResult::Status::BadElement, 4},
        // Year 10000 cannot be written back: refused, not clamped.
        {"past the last date", doc("<date>9999-12-31T23:59:60Z</date>\n"), ParseResult::Status::BadValue, 4},
        {"parameter entity", "<!DOCTYPE plist [<!ENTITY % p \"x\">]><plist><string>a</string></plist>",
         ParseResult::Status::NotPlist, 0},
        // libxml2 would report these on stderr.
        {"undecodable UCS-4", "<?xml version='1.0' encoding='UCS-4'?><plist><string>\xff\xfe</string></plist>",
         ParseResult::Status::NotXml, 0},
        {"undecodable SHIFT_JIS",
         std::string("<?xml version='1.0' encoding='SHIFT_JIS'?><plist><string>\xff\xfe\x00\x00\x00\xd8</string>"
                     "</plist>"),
         ParseResult::Status::NotXml, 0},
    };
    for (const auto& c : cases) {
        ParseResult r;
        testing::internal::CaptureStderr();
        EXPECT_EQ(readPlist(c.text, &r), nullptr) << c.name;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << c.name;
        EXPECT_EQ(r.status, c.status) << c.name << ": " << r.message;
        if (c.line) {
            EXPECT_EQ(r.line, c.line) << c.name << ": " << r.message;
        }
        EXPECT_FALSE(r.message.empty()) << c.name;
    }
}

TEST(PlistNumbers, StrictSyntax)
{
    const struct {
        const char* text;
        bool ok;
        double value;
    } reals[] = {{"0.75", true, 0.75},     {"-3", true, -3},         {"1e3", true, 1000}, {".5", true, 0.5},
                 {"5.", true, 5},          {"0,75", false, 0},       {"", false, 0},      {"1e", false, 0},
                 {"e3", false, 0},         {"1.2.3", false, 0},      {"0x10", false, 0},  {" 1", false, 0},
                 {"+inf", true, HUGE_VAL}, {"1e999", true, HUGE_VAL}};
    for (const auto& c : reals) {
        double v = 0;
        EXPECT_EQ(parseRealText(c.text, v), c.ok) << c.text;
        if (c.ok) {
            EXPECT_EQ(v, c.value) << c.text;
        }
    }
    int64_t i = 0;
    EXPECT_TRUE(parseIntegerText("-9223372036854775808", i));
    EXPECT_EQ(i, INT64_MIN);
    EXPECT_TRUE(parseIntegerText("9223372036854775807", i));
    EXPECT_EQ(i, INT64_MAX);
    EXPECT_FALSE(parseIntegerText("-", i));
    EXPECT_FALSE(parseIntegerText("1 2", i));
}

TEST(PlistRoundTrip, WriteThenReadIsTheSameModel)
{
    auto d = makeDict();
    for (int i = 0; i < 40; ++i) // past the size where the dictionary starts indexing
        d->setInt("k" + std::to_string(i), i);
    d->setReal("pi", 3.141592653589793);
    d->setReal("tiny", 5e-324);
    d->set("date", makeDate(-978307200.0 + 86400 * 365.0));
    d->setString("cr", "a\rb");
    for (const char* text : {"9999-12-31T23:59:59Z", "0000-01-01T00:00:00Z"}) {
        double seconds = 0;
        ASSERT_TRUE(parseDateText(text, seconds)) << text;
        d->set(text, makeDate(seconds));
    }
    d->remove("k3");
    auto back = readPlist(writePlist(d));
    EXPECT_TRUE(equal(d, back));
    EXPECT_EQ(as<Dictionary>(back)->entries()[3].first, "k4");
    double leap = 0;
    ASSERT_TRUE(parseDateText("2016-12-31T23:59:60Z", leap));
    EXPECT_EQ(formatDateText(leap), "2017-01-01T00:00:00Z") << "a leap second reads as the next second";
}

TEST(Values, DictionaryKeepsPositionOnReplaceAndSharesNested)
{
    auto d = makeDict();
    d->setInt("a", 1);
    d->setInt("b", 2);
    d->setInt("a", 3);
    EXPECT_EQ(d->entries()[0].first, "a");
    EXPECT_EQ(d->getInt("a"), 3);
    auto inner = makeDict();
    d->set("inner", inner);
    inner->setBool("x", true); // changed in place, seen by the parent
    EXPECT_EQ(d->getDict("inner")->getBool("x"), true);
    auto copy = deepCopy(d);
    inner->setBool("x", false);
    EXPECT_EQ(copy->getDict("inner")->getBool("x"), true);
    EXPECT_FALSE(equal(makeInt(1), makeReal(1)));
}

} // namespace
