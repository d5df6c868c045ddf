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

struct RangeCase {
    const char* what;
    int32_t value;
    OSStatus expected;
};

// Each single-value range check: the status, and on refusal the field unchanged.
TEST(FullColorRanges, AdjustmentSettersAcceptUnsetOrMinus100To100)
{
    using Setter = OSStatus (FullColorOptions::*)(int32_t);
    using Getter = OSStatus (FullColorOptions::*)(int32_t*) const;
    struct Field {
        const char* name;
        Setter set;
        Getter get;
        int32_t before;
    } fields[] = {
        {"lightness", &FullColorOptions::setLightness, &FullColorOptions::lightness, 10},
        {"contrast", &FullColorOptions::setContrast, &FullColorOptions::contrast, -20},
        {"saturation", &FullColorOptions::setSaturation, &FullColorOptions::saturation, 30},
    };
    const RangeCase values[] = {
        {"upper bound", 100, noErr},   {"lower bound", -100, noErr}, {"unset", kNotSet, noErr},
        {"above", 101, paramErr},      {"below", -101, paramErr},    {"least + 1", INT32_MIN + 1, paramErr},
        {"most", INT32_MAX, paramErr},
    };
    for (const auto& f : fields) {
        for (const auto& c : values) {
            SCOPED_TRACE(testing::Message() << f.name << " " << c.what);
            FullColorOptions o = filled();
            EXPECT_EQ((o.*f.set)(c.value), c.expected);
            int32_t now = 0;
            ASSERT_EQ((o.*f.get)(&now), noErr);
            EXPECT_EQ(now, c.expected == noErr ? c.value : f.before);
            EXPECT_EQ((o.*f.get)(nullptr), paramErr);
        }
    }
}

TEST(FullColorRanges, ColorCastStoresAllThreeOrNone)
{
    struct Case {
        int32_t cr, mg, yb;
        OSStatus expected;
    } cases[] = {
        {-100, 0, 100, noErr},  {kNotSet, 5, kNotSet, noErr}, {101, 0, 0, paramErr},
        {0, -101, 0, paramErr}, {0, 0, 1000, paramErr},       {50, 50, INT32_MIN + 1, paramErr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.cr << " " << c.mg << " " << c.yb);
        FullColorOptions o = filled();
        EXPECT_EQ(o.setColorCast(c.cr, c.mg, c.yb), c.expected);
        int32_t cr = 0, mg = 0, yb = 0;
        ASSERT_EQ(o.colorCast(&cr, &mg, &yb), noErr);
        if (c.expected == noErr)
            EXPECT_EQ(std::tie(cr, mg, yb), std::tie(c.cr, c.mg, c.yb));
        else
            EXPECT_EQ(std::make_tuple(cr, mg, yb), std::make_tuple(1, 2, 3));
    }
}

TEST(FullColorRanges, TrapSizesAre0To20ComparedUnsigned)
{
    struct Case {
        int32_t slow, fast;
        OSStatus expected;
    } cases[] = {
        {0, 20, noErr},    {kNotSet, 7, noErr}, {20, kNotSet, noErr}, {21, 0, paramErr},
        {0, 21, paramErr}, {-1, 5, paramErr},   {5, -1, paramErr},    {INT32_MAX, 0, paramErr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.slow << " " << c.fast);
        FullColorOptions o = filled();
        EXPECT_EQ(o.setTrappingAdjustment(c.slow, c.fast), c.expected);
        int32_t slow = 0, fast = 0;
        ASSERT_EQ(o.trappingAdjustment(&slow, &fast), noErr);
        EXPECT_EQ(slow, c.expected == noErr ? c.slow : 4);
        EXPECT_EQ(fast, c.expected == noErr ? c.fast : 5);
    }
    int32_t v = 0;
    FullColorOptions o;
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
