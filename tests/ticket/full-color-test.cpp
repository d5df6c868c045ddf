#include "ticket/ticket.h"

#include <gtest/gtest.h>

using namespace talmo;

namespace {

using Name = FullColorOptions::Name;

// A record with a value in every field, so refused setters can be seen to keep it.
FullColorOptions filled()
{
    FullColorOptions o;
    EXPECT_EQ(o.setLightness(10), noErr);
    EXPECT_EQ(o.setContrast(-20), noErr);
    EXPECT_EQ(o.setSaturation(30), noErr);
    EXPECT_EQ(o.setColorCast(1, 2, 3), noErr);
    EXPECT_EQ(o.setTrapping(1), noErr);
    EXPECT_EQ(o.setTrappingAdjustment(4, 5), noErr);
    EXPECT_EQ(o.setBlackOverprint(2), noErr);
    EXPECT_EQ(o.setTRC("Curve A"), noErr);
    EXPECT_EQ(o.setRGBImagesProfile(kRGBProfileCustom, "My RGB"), noErr);
    EXPECT_EQ(o.setRGBTextAndGraphicsProfile(4, std::nullopt), noErr);
    EXPECT_EQ(o.setCMYKImagesProfile(14, std::nullopt), noErr);
    EXPECT_EQ(o.setCMYKTextAndGraphicsProfile(kCMYKProfileCustom, "My CMYK"), noErr);
    EXPECT_EQ(o.setGrayImagesProfile("Gray A"), noErr);
    EXPECT_EQ(o.setGrayTextAndGraphicsProfile("Gray B"), noErr);
    EXPECT_EQ(o.setDestinationProfile(kDestinationProfileCustom, "Press"), noErr);
    EXPECT_EQ(o.setImageObjectRendering(4), noErr);
    EXPECT_EQ(o.setTextObjectRendering(1), noErr);
    EXPECT_EQ(o.setGraphicObjectRendering(6), noErr);
    return o;
}

// The accepted ranges are cases of the record transcript; a refused value changes nothing.
TEST(FullColorRanges, ARefusedValueLeavesTheRecordAsItWas)
{
    FullColorOptions o = filled();
    EXPECT_EQ(o.setLightness(101), paramErr);
    EXPECT_EQ(o.setContrast(-101), paramErr);
    EXPECT_EQ(o.setSaturation(INT32_MAX), paramErr);
    EXPECT_EQ(o.setColorCast(50, 50, INT32_MIN + 1), paramErr);
    EXPECT_EQ(o.setTrappingAdjustment(5, -1), paramErr);
    EXPECT_EQ(o, filled());
    int32_t v = 0;
    EXPECT_EQ(o.lightness(nullptr), paramErr);
    EXPECT_EQ(o.trappingAdjustment(&v, nullptr), paramErr);
}

// Lengths in UTF-16 units are cases of the record transcript; here a refused name keeps the
// old one, and malformed UTF-8 (which no property list can carry) is refused.
TEST(FullColorProfiles, ARefusedCustomNameKeepsTheOldOne)
{
    for (const std::string& bad : {std::string(256, 'a'), std::string("abc\xFF")}) {
        EXPECT_FALSE(IsValidProfileName(bad));
        FullColorOptions o = filled();
        EXPECT_EQ(o.setCMYKTextAndGraphicsProfile(kCMYKProfileCustom, bad), paramErr);
        int32_t kind = 0;
        Name name;
        ASSERT_EQ(o.cmykTextAndGraphicsProfile(&kind, &name), noErr);
        EXPECT_EQ(name, "My CMYK");
        EXPECT_EQ(o.setGrayImagesProfile(bad), paramErr);
        o.grayImagesProfile(&name);
        EXPECT_EQ(name, "Gray A");
    }
    EXPECT_TRUE(IsValidProfileName(""));
}

TEST(FullColorProfiles, CustomKindNeedsANameOtherKindsDropIt)
{
    FullColorOptions o = filled();
    EXPECT_EQ(o.setRGBImagesProfile(kRGBProfileCustom, std::nullopt), paramErr);
    int32_t kind = 0;
    Name name;
    ASSERT_EQ(o.rgbImagesProfile(&kind, &name), noErr);
    EXPECT_EQ(kind, kRGBProfileCustom);
    EXPECT_EQ(name, "My RGB");
    // A name given with another kind is not kept.
    EXPECT_EQ(o.setRGBImagesProfile(4, "ignored"), noErr);
    name = "untouched";
    ASSERT_EQ(o.rgbImagesProfile(&kind, &name), noErr);
    EXPECT_EQ(kind, 4);
    EXPECT_EQ(name, "untouched"); // the name output is written only for the custom kind
    EXPECT_EQ(o.asTicket()->getInt("RGBImagesProfile"), 4);
    // The custom kind needs the name output.
    ASSERT_EQ(o.setDestinationProfile(kDestinationProfileCustom, "X"), noErr);
    EXPECT_EQ(o.destinationProfile(&kind, nullptr), paramErr);
    EXPECT_EQ(o.setGrayImagesProfile(std::nullopt), noErr);
    o.grayImagesProfile(&name);
    EXPECT_EQ(name, std::nullopt);
}

TEST(FullColorTicket, FromTicketOverlaysOnlyWhatTheDictionaryHolds)
{
    FullColorOptions o = filled();
    o.fromTicket(nullptr);
    EXPECT_EQ(o, filled());

    auto d = pl::makeDict();
    d->setInt("FCLightness", -5);
    auto cast = pl::makeDict();
    cast->setInt("FCMagentaGreen", -7); // the other two keep the record's values
    d->set("FCColorCast", cast);
    o.fromTicket(d);
    int32_t v = 0, cr = 0, mg = 0, yb = 0;
    o.lightness(&v);
    o.colorCast(&cr, &mg, &yb);
    EXPECT_EQ(v, -5);
    EXPECT_EQ(std::make_tuple(cr, mg, yb), std::make_tuple(1, -7, 3));
    o.contrast(&v);
    EXPECT_EQ(v, -20);
}

std::string label(std::string_view key) { return "[" + std::string(key) + "]"; }

TEST(FullColorSummary, PartialCastAndTrappingOffShowNoDetail)
{
    FullColorOptions o;
    ASSERT_EQ(o.setColorCast(5, kNotSet, 5), noErr);
    ASSERT_EQ(o.setTrapping(2), noErr);
    ASSERT_EQ(o.setTrappingAdjustment(3, 3), noErr);
    EXPECT_EQ(GenerateFullColorSummary(o, 0, "\n", label), "[Trapping:] [Off]");
    ASSERT_EQ(o.setTrapping(1), noErr);
    ASSERT_EQ(o.setTrappingAdjustment(kNotSet, 3), noErr);
    EXPECT_EQ(GenerateFullColorSummary(o, 0, "\n", label), "[Trapping:] [On]\n[Trapping Height:] 3");
}

} // namespace
