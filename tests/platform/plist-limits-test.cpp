// Inputs at the edges of what the text forms can hold: each is refused with a status, or read
// into a model that writes back to the same model.
#include "platform/platform.h"

#include <gtest/gtest.h>

namespace talmo::pl {
namespace {

TEST(PlistLimits, DatesOutsideTheWritableRangeAreRefusedNotClamped)
{
    const struct {
        const char* text;
        bool ok;
    } cases[] = {
        {"9999-12-31T23:59:59Z", true},
        {"9999-12-31T23:59:60Z", false}, // would be year 10000, which the text form cannot hold
        {"2016-12-31T23:59:60Z", true},  // a leap second inside the range reads as the next second
        {"0000-01-01T00:00:00Z", true},
    };
    for (const auto& c : cases) {
        ParseResult r;
        auto v = readPlist(std::string("<plist><date>") + c.text + "</date></plist>", &r);
        EXPECT_EQ(v != nullptr, c.ok) << c.text;
        if (!v) {
            EXPECT_EQ(r.status, ParseResult::Status::BadValue) << c.text;
            continue;
        }
        EXPECT_TRUE(equal(readPlist(writePlist(v)), v)) << c.text;
    }
    double seconds = 0;
    ASSERT_TRUE(parseDateText("2016-12-31T23:59:60Z", seconds));
    EXPECT_EQ(formatDateText(seconds), "2017-01-01T00:00:00Z");
}

TEST(PlistLimits, ParameterEntityDeclarationsAreRefusedLikeGeneralOnes)
{
    for (const char* doc : {"<!DOCTYPE plist [<!ENTITY % p \"x\">]><plist><string>a</string></plist>",
                            "<!DOCTYPE plist [<!ENTITY g \"x\">]><plist><string>a</string></plist>"}) {
        ParseResult r;
        EXPECT_EQ(readPlist(doc, &r), nullptr) << doc;
        EXPECT_EQ(r.status, ParseResult::Status::NotPlist) << doc;
        EXPECT_EQ(r.message, "document declares entities") << doc;
    }
}

TEST(PlistLimits, UndecodableTextIsRefusedWithoutPrintingAnything)
{
    // Bytes that the declared encoding cannot convert: libxml2 would report them on stderr.
    for (const char* encoding : {"UCS-4", "SHIFT_JIS", "UTF-32"}) {
        const std::string doc = std::string("<?xml version='1.0' encoding='") + encoding +
                                "'?><plist><string>\xff\xfe\x00\x00\x00\xd8</string></plist>";
        ParseResult r;
        testing::internal::CaptureStderr();
        EXPECT_EQ(readPlist(doc, &r), nullptr) << encoding;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << encoding;
        EXPECT_EQ(r.status, ParseResult::Status::NotXml) << encoding;
        EXPECT_FALSE(r.message.empty()) << encoding;
    }
}

} // namespace
} // namespace talmo::pl
