#include "platform/platform.h"

#include <gtest/gtest.h>

#include "data-cases.h"

#include <cstdlib>

using namespace talmo;

TEST(SystemConfiguration, PrettyHostnameAndDefaultRouteFromTheSystemFiles)
{
    // An empty expectation: no name, or no default route (the first up route to 0.0.0.0).
    auto orNone = [](const std::string& s) { return s.empty() ? std::nullopt : std::optional<std::string>(s); };
    const auto names = test::ReadDataCases("machine-info.txt"), routes = test::ReadDataCases("proc-net-route.txt");
    ASSERT_EQ(names.size() + routes.size(), 11u);
    for (const auto& c : names)
        EXPECT_EQ(internal::prettyHostnameFrom(c.input), orNone(c.expect)) << c.input;
    for (const auto& c : routes)
        EXPECT_EQ(internal::defaultRouteInterfaceFrom(c.input), orNone(c.expect)) << c.input;
}

TEST(SystemVersion, ParsesTwoOrThreeNumbersAndAValidOverrideSelectsOlderPaths)
{
    const std::pair<const char*, const char*> cases[] = {
        {"10.5", "10.5.0"}, {"10.4.11", "10.4.11"}, {"11.0.1", "11.0.1"}, {"10", ""}, {"10.", ""},
        {"10.4.11.1", ""},  {"10.-4", ""},          {"10..4", ""},        {"", ""},   {"99999999999.1", ""}};
    for (const auto& [text, parsed] : cases) {
        auto v = internal::parseSystemVersion(text);
        EXPECT_EQ(v ? std::to_string(v->major) + "." + std::to_string(v->minor) + "." + std::to_string(v->bugfix) : "",
                  parsed)
            << text;
    }
    setenv("TALMO_SYSTEM_VERSION", "10.4.11", 1);
    EXPECT_EQ(GetSystemVersion().minor, 4);
    setenv("TALMO_SYSTEM_VERSION", "ten", 1);
    const SystemVersion newest = GetSystemVersion();
    unsetenv("TALMO_SYSTEM_VERSION");
    EXPECT_EQ(GetSystemVersion().minor, newest.minor);
    EXPECT_GT(newest.minor, 5);
}

TEST(Uuid, ParsesEitherCaseOnlyInTheCanonicalFormAndWritesUpperCase)
{
    auto upper = talmo::Uuid::fromString("7680F90E-ADCD-11D9-85C8-000A95BDF8C8");
    auto lower = talmo::Uuid::fromString("7680f90e-adcd-11d9-85c8-000a95bdf8c8");
    ASSERT_TRUE(upper && lower);
    EXPECT_EQ(*upper, *lower);
    EXPECT_EQ(lower->toString(), "7680F90E-ADCD-11D9-85C8-000A95BDF8C8");
    EXPECT_EQ(upper->bytes()[0], 0x76);
    EXPECT_EQ(upper->bytes()[15], 0xC8);
    EXPECT_EQ(talmo::Uuid::fromBytes(upper->bytes()), upper);
    EXPECT_FALSE(talmo::Uuid::fromBytes(std::span<const uint8_t>(upper->bytes().data(), 15)));
    for (const char* bad : {"", "7680F90E-ADCD-11D9-85C8-000A95BDF8C", "7680F90E-ADCD-11D9-85C8-000A95BDF8C8 ",
                            "7680F90EADCD-11D9-85C8-000A95BDF8C8-", "7680F90E-ADCD-11D9-85C8+000A95BDF8C8",
                            "G680F90E-ADCD-11D9-85C8-000A95BDF8C8", "{7680F90E-ADCD-11D9-85C8-000A95BDF8C}"})
        EXPECT_FALSE(talmo::Uuid::fromString(bad)) << bad;
}
