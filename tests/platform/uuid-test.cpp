#include "platform/platform.h"

#include <gtest/gtest.h>

using talmo::Uuid;

TEST(Uuid, ParsesEitherCaseToTheSameBytesAndWritesUpperCase)
{
    auto upper = Uuid::fromString("7680F90E-ADCD-11D9-85C8-000A95BDF8C8");
    auto lower = Uuid::fromString("7680f90e-adcd-11d9-85c8-000a95bdf8c8");
    ASSERT_TRUE(upper && lower);
    EXPECT_EQ(*upper, *lower);
    EXPECT_EQ(lower->toString(), "7680F90E-ADCD-11D9-85C8-000A95BDF8C8");
    EXPECT_EQ(upper->bytes()[0], 0x76);
    EXPECT_EQ(upper->bytes()[15], 0xC8);
    EXPECT_EQ(Uuid::fromBytes(upper->bytes()), upper);
    EXPECT_FALSE(Uuid::fromBytes(std::span<const uint8_t>(upper->bytes().data(), 15)));
}

TEST(Uuid, RefusesMalformedText)
{
    for (const char* bad : {"", "7680F90E-ADCD-11D9-85C8-000A95BDF8C", "7680F90E-ADCD-11D9-85C8-000A95BDF8C8 ",
                            "7680F90EADCD-11D9-85C8-000A95BDF8C8-", "7680F90E-ADCD-11D9-85C8+000A95BDF8C8",
                            "G680F90E-ADCD-11D9-85C8-000A95BDF8C8", "{7680F90E-ADCD-11D9-85C8-000A95BDF8C}"})
        EXPECT_FALSE(Uuid::fromString(bad)) << bad;
}

TEST(Uuid, GeneratedValuesDifferAndRoundTrip)
{
    Uuid a = Uuid::generate(), b = Uuid::generate();
    EXPECT_NE(a, b);
    EXPECT_FALSE(a.isNil());
    EXPECT_EQ(Uuid::fromString(a.toString()), a);
}
