// The system configuration store (console user, computer name, primary IPv4 address) and the
// system version.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talmo {

// The login user: the password entry of the real user id, else $LOGNAME; "" when neither.
std::string ConsoleUserName();
// The environment variables TALMO_COMPUTER_NAME and TALMO_PRIMARY_IPV4, when set (empty means
// none), stand in for the two answers below, so tests can play any machine.
// The host's pretty name (PRETTY_HOSTNAME of /etc/machine-info), else its host name.
std::string ComputerName();
// Dotted IPv4 address of the interface that carries the default route (the first one in
// /proc/net/route); "" when there is no default route or that interface has no IPv4 address.
std::string PrimaryIPv4Address();

struct SystemVersion {
    int major = 0;
    int minor = 0;
    int bugfix = 0;
};
// The newest version the design knows (10.15.0), so the modern paths run. The environment
// variable TALMO_SYSTEM_VERSION ("10.4.11", "10.5") selects another for tests; a malformed
// value is ignored.
SystemVersion GetSystemVersion();

namespace internal {
// PRETTY_HOSTNAME from the text of a machine-info file (shell-style assignments, values
// optionally quoted); nullopt when absent or empty.
std::optional<std::string> prettyHostnameFrom(std::string_view machineInfo);
// Name of the interface of the first default route (destination 0, mask 0, flag UP) in the
// text of /proc/net/route; nullopt when none.
std::optional<std::string> defaultRouteInterfaceFrom(std::string_view procNetRoute);
// "10.4.11" -> {10,4,11}; "10.5" -> {10,5,0}; nullopt when malformed.
std::optional<SystemVersion> parseSystemVersion(std::string_view text);
} // namespace internal

} // namespace talmo
