#include "ticket/ticket.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <tuple>

using namespace talmo;

namespace {

_IS_Options inchRecord(int32_t option, int32_t x1, int32_t y1 = 0, int32_t x2 = 0, int32_t y2 = 0)
{
    _IS_Options o;
    o.option = option;
    o.x1 = x1;
    o.y1 = y1;
    o.x2 = x2;
    o.y2 = y2;
    return o;
}

_IS_Options readBack(const pl::DictPtr& d)
{
    _IS_Options o;
    o.valid = 0;
    EXPECT_EQ(ImageShiftSetOptionsFromTicket(&o, d), noErr);
    return o;
}

TEST(ImageShiftTicket, NoDictionaryWithoutARecordAValidFlagOrAMode)
{
    EXPECT_FALSE(ImageShiftCreateTicketFromOptions(nullptr, 0));
    _IS_Options unset = inchRecord(kNotSet, 100);
    EXPECT_FALSE(ImageShiftCreateTicketFromOptions(&unset, 0));
    _IS_Options invalid = inchRecord(kImageShiftIndependent, 100);
    invalid.valid = 0;
    EXPECT_FALSE(ImageShiftCreateTicketFromOptions(&invalid, 0));
}

// Rounding on write and truncation on read are cases of the record transcript.
TEST(ImageShiftTicket, EveryMultipleOfFiveHundredthsOfAnInchSurvives)
{
    for (int32_t v = -1920; v <= 1920; v += 5) {
        _IS_Options o = inchRecord(kImageShiftIndependent, v);
        ASSERT_EQ(readBack(ImageShiftCreateTicketFromOptions(&o, 0)).x1, v) << v;
    }
}

TEST(ImageShiftInit, RevertKeepsOnlyTheJobsDuplex)
{
    _IS_Options o{0, 4, 1, 7, 0, 0, 10, 20, 30, 40};
    DefaultImageShift(o);
    EXPECT_EQ(o, (_IS_Options{1, kNotSet, 1, kNotSet, 0, 1, 0, 0, 0, 0}));
}

// The side 2 rule and the unit conversion are in the record transcript ("ShiftRule").
TEST(ImageShiftUnits, SwitchConvertsClampsAndReappliesTheRule)
{
    _IS_Options o = inchRecord(kImageShiftTandemBoth, 100, -1299, 0, 0);
    ImageShiftSwitchUnits(o, false);
    // Tandem: side 2 follows; the same unit again changes nothing.
    EXPECT_EQ(std::make_tuple(o.inches, o.x1, o.y1, o.x2, o.y2), std::make_tuple(0, 254, -3299, 254, -3299));
    ImageShiftSwitchUnits(o, false);
    EXPECT_EQ(o.x1, 254);
    o.option = kImageShiftIndependent;
    o.x1 = 4880;
    o.y1 = 3300;
    o.x2 = 20000; // beyond any range: held inside the new one
    ImageShiftSwitchUnits(o, true);
    EXPECT_EQ(std::make_tuple(o.x1, o.y1, o.x2), std::make_tuple(1921, 1299, 1921));
}

// The summary in English is a case of the record transcript; here the locale's separator.
TEST(ImageShiftSummary, NumbersFollowTheLocale)
{
    const std::optional<std::string> saved =
        std::getenv("LC_ALL") ? std::optional(std::string(std::getenv("LC_ALL"))) : std::nullopt;
    const auto label = [](std::string_view key) { return key == ":" ? std::string("=") : std::string(key); };
    _IS_Options o = inchRecord(kImageShiftIndependent, 4880, 0, -15, 7);
    o.inches = 0;
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_EQ(GenerateImageShiftSummary(o, 4, label),
              "Side 1: X=488,0 Millimeter abbreviation, Y=0,0 Millimeter abbreviation\n"
              "Side 2: X=-1,5 Millimeter abbreviation, Y=0,7 Millimeter abbreviation");
    // Without a usable locale the digits are still placed right.
    setenv("LC_ALL", ".UTF-8", 1);
    o.inches = 1;
    EXPECT_EQ(GenerateImageShiftSummary(o, 4, label), "Side 1: X=48.80 Inch abbreviation, Y=0.00 Inch abbreviation\n"
                                                      "Side 2: X=-0.15 Inch abbreviation, Y=0.07 Inch abbreviation");
    saved ? setenv("LC_ALL", saved->c_str(), 1) : unsetenv("LC_ALL");
}

TEST(ImageShiftSync, WritesAsTheImageOptionsPanelAndReadsTheJobSettings)
{
    Ticket ticket;
    _IS_Options o = inchRecord(kImageShiftTandemX, 100);
    ASSERT_EQ(ImageShiftSync(&o, kImageShiftSyncToTicket, &ticket), noErr);
    EXPECT_EQ(ticket.creatorOf(kImageShiftOptionsJobKey), "T");
    const auto written = pl::as<pl::Dictionary>(ticket.get(kImageShiftOptionsJobKey));
    ASSERT_TRUE(written);
    EXPECT_EQ(written->getInt("X1"), 2540);
    // An unset mode writes nothing and leaves the older value in place.
    _IS_Options unset;
    ASSERT_EQ(ImageShiftSync(&unset, kImageShiftSyncToTicket, &ticket), noErr);
    EXPECT_TRUE(pl::equal(ticket.get(kImageShiftOptionsJobKey), written));

    auto stock = pl::makeDict();
    stock->setInt("Size", 4);
    ASSERT_EQ(ticket.set(kJobLevelStockKey, stock, "P"), noErr);
    ASSERT_EQ(ticket.set(kFinishingDuplexKey, pl::makeInt(1), "P"), noErr);
    _IS_Options r;
    ASSERT_EQ(ImageShiftSync(&r, kImageShiftSyncFromTicket, &ticket), noErr);
    EXPECT_EQ(std::make_tuple(r.option, r.x1, r.stockSize, r.duplex), std::make_tuple(kImageShiftTandemX, 100, 4, 1));
    // A stock without a size is the default stock: size unset.
    ASSERT_EQ(ticket.set(kJobLevelStockKey, pl::makeDict(), "P"), noErr);
    ASSERT_EQ(ImageShiftSync(&r, kImageShiftSyncFromTicket, &ticket), noErr);
    EXPECT_EQ(r.stockSize, kNotSet);

    // A locked item stays as it was, and the caller hears why.
    Ticket locked;
    ASSERT_EQ(locked.set(kImageShiftOptionsJobKey, pl::makeDict(), "X", true), noErr);
    EXPECT_EQ(ImageShiftSync(&o, kImageShiftSyncToTicket, &locked), kPMTicketItemLocked);
    EXPECT_TRUE(pl::equal(locked.get(kImageShiftOptionsJobKey), pl::makeDict()));
    EXPECT_EQ(ImageShiftSync(&o, 2, &ticket), paramErr);
    EXPECT_EQ(ImageShiftSync(nullptr, kImageShiftSyncFromTicket, &ticket), paramErr);
    EXPECT_EQ(ImageShiftSync(&o, kImageShiftSyncFromTicket, nullptr), paramErr);
}

} // namespace
