#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace talmo;

TEST(SystemConfiguration, PrettyHostnameIsTheLastNonEmptyAssignment)
{
    struct Case {
        const char* text;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {"PRETTY_HOSTNAME=\"Print Room Mac\"\nCHASSIS=desktop\n", "Print Room Mac"},
        {"CHASSIS=desktop\nPRETTY_HOSTNAME=Plain\n", "Plain"},
        {"PRETTY_HOSTNAME='Single \"q\"'\n", "Single \"q\""},
        {"PRETTY_HOSTNAME=\"Esc \\\"x\\\"\"", "Esc \"x\""},
        {"PRETTY_HOSTNAME=\"\"\n", std::nullopt},
        {"# PRETTY_HOSTNAME=commented\n", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(internal::prettyHostnameFrom(c.text), c.expected) << c.text;
}

TEST(SystemConfiguration, DefaultRouteInterfaceIsTheFirstUpZeroRoute)
{
    const char* header = "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
    std::string table = std::string(header) +
                        "eth1\t0000A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
                        "wlan0\t00000000\t0101A8C0\t0002\t0\t0\t600\t00000000\t0\t0\t0\n" // not up
                        "eth0\t00000000\t0100A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
                        "eth2\t00000000\t0102A8C0\t0003\t0\t0\t200\t00000000\t0\t0\t0\n";
    EXPECT_EQ(internal::defaultRouteInterfaceFrom(table), "eth0");
    EXPECT_EQ(internal::defaultRouteInterfaceFrom(std::string(header) +
                                                  "eth1\t0000A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"),
              std::nullopt);
    EXPECT_EQ(internal::defaultRouteInterfaceFrom(""), std::nullopt);
    EXPECT_EQ(internal::defaultRouteInterfaceFrom("garbage\nonly two\n"), std::nullopt);
}

TEST(SystemVersion, AValidOverrideSelectsOlderPaths)
{
    setenv("TALMO_SYSTEM_VERSION", "10.4.11", 1);
    EXPECT_EQ(GetSystemVersion().minor, 4);
    setenv("TALMO_SYSTEM_VERSION", "ten", 1);
    const SystemVersion newest = GetSystemVersion();
    unsetenv("TALMO_SYSTEM_VERSION");
    EXPECT_EQ(GetSystemVersion().minor, newest.minor);
    EXPECT_GT(newest.minor, 5);
}

TEST(SystemVersion, ParsesTwoOrThreeNumbers)
{
    struct Case {
        const char* text;
        bool ok;
        int major, minor, bugfix;
    };
    const Case cases[] = {{"10.5", true, 10, 5, 0},         {"10.4.11", true, 10, 4, 11}, {"11.0.1", true, 11, 0, 1},
                          {"10", false, 0, 0, 0},           {"10.", false, 0, 0, 0},      {"10.4.11.1", false, 0, 0, 0},
                          {"10.-4", false, 0, 0, 0},        {"10..4", false, 0, 0, 0},    {"", false, 0, 0, 0},
                          {"99999999999.1", false, 0, 0, 0}};
    for (const auto& c : cases) {
        auto v = internal::parseSystemVersion(c.text);
        ASSERT_EQ(bool(v), c.ok) << c.text;
        if (v) {
            EXPECT_EQ(v->major, c.major);
            EXPECT_EQ(v->minor, c.minor);
            EXPECT_EQ(v->bugfix, c.bugfix);
        }
    }
}
