#include "platform/platform.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

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

TEST(SystemConfiguration, LiveValuesAreWellFormed)
{
    char host[256] = {};
    ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
    EXPECT_FALSE(ComputerName().empty());
    // Containers may run under a uid without a password entry; then LOGNAME answers.
    const passwd* pw = getpwuid(getuid());
    const char* login = std::getenv("LOGNAME");
    EXPECT_EQ(ConsoleUserName(), pw ? pw->pw_name : (login ? login : ""));
    std::string ip = PrimaryIPv4Address();
    if (!ip.empty()) {
        in_addr addr{};
        EXPECT_EQ(inet_pton(AF_INET, ip.c_str(), &addr), 1) << ip;
    }
}

TEST(SystemVersion, ReportsTheNewestUnlessOverridden)
{
    unsetenv("TALMO_SYSTEM_VERSION");
    SystemVersion v = GetSystemVersion();
    EXPECT_EQ(v.major, 10);
    EXPECT_EQ(v.minor, 15);
    setenv("TALMO_SYSTEM_VERSION", "10.4.11", 1);
    v = GetSystemVersion();
    EXPECT_EQ(v.major, 10);
    EXPECT_EQ(v.minor, 4);
    EXPECT_EQ(v.bugfix, 11);
    setenv("TALMO_SYSTEM_VERSION", "ten", 1);
    EXPECT_EQ(GetSystemVersion().minor, 15);
    unsetenv("TALMO_SYSTEM_VERSION");
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
