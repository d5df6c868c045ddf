#include "platform/system.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <pwd.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

namespace talmo {

namespace {

std::string readSmallFile(const char* path)
{
    std::ifstream in(path);
    if (!in)
        return {};
    std::string text;
    char buf[4096];
    // machine-info and the route table are small; a cap keeps a strange file from growing us
    while (text.size() < (1u << 20) && in.read(buf, sizeof buf).gcount() > 0)
        text.append(buf, size_t(in.gcount()));
    return text;
}

std::vector<std::string_view> splitLines(std::string_view s)
{
    std::vector<std::string_view> lines;
    size_t start = 0;
    while (start < s.size()) {
        size_t end = s.find('\n', start);
        if (end == std::string_view::npos)
            end = s.size();
        lines.push_back(s.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::string_view trim(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.remove_suffix(1);
    return s;
}

} // namespace

namespace internal {

std::optional<std::string> prettyHostnameFrom(std::string_view machineInfo)
{
    std::optional<std::string> found;
    for (std::string_view line : splitLines(machineInfo)) {
        line = trim(line);
        constexpr std::string_view key = "PRETTY_HOSTNAME=";
        if (line.substr(0, key.size()) != key)
            continue;
        std::string_view v = line.substr(key.size());
        std::string value;
        if (!v.empty() && (v.front() == '"' || v.front() == '\'')) {
            char q = v.front();
            for (size_t i = 1; i < v.size() && v[i] != q; ++i) {
                if (q == '"' && v[i] == '\\' && i + 1 < v.size())
                    ++i;
                value += v[i];
            }
        } else {
            value = std::string(v);
        }
        found = value; // the last assignment wins, as in the shell
    }
    if (found && found->empty())
        return std::nullopt;
    return found;
}

std::optional<std::string> defaultRouteInterfaceFrom(std::string_view procNetRoute)
{
    auto lines = splitLines(procNetRoute);
    // Iface Destination Gateway Flags RefCnt Use Metric Mask ...
    for (size_t i = 1; i < lines.size(); ++i) {
        std::istringstream fields{std::string(lines[i])};
        std::string iface, dest, gateway, flags, refcnt, use, metric, mask;
        if (!(fields >> iface >> dest >> gateway >> flags >> refcnt >> use >> metric >> mask))
            continue;
        unsigned long flagBits = std::strtoul(flags.c_str(), nullptr, 16);
        if (dest == "00000000" && mask == "00000000" && (flagBits & 0x1 /* RTF_UP */))
            return iface;
    }
    return std::nullopt;
}

std::optional<SystemVersion> parseSystemVersion(std::string_view text)
{
    int parts[3] = {0, 0, 0};
    int count = 0;
    const char* p = text.data();
    const char* end = text.data() + text.size();
    while (p < end) {
        if (count == 3)
            return std::nullopt;
        int v = 0;
        auto [next, ec] = std::from_chars(p, end, v);
        if (ec != std::errc() || next == p || v < 0)
            return std::nullopt;
        parts[count++] = v;
        p = next;
        if (p < end) {
            if (*p != '.' || p + 1 == end)
                return std::nullopt;
            ++p;
        }
    }
    if (count < 2)
        return std::nullopt;
    return SystemVersion{parts[0], parts[1], parts[2]};
}

} // namespace internal

std::string ConsoleUserName()
{
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buf(size > 0 ? size_t(size) : 16384);
    passwd pw{};
    passwd* result = nullptr;
    if (getpwuid_r(getuid(), &pw, buf.data(), buf.size(), &result) == 0 && result && result->pw_name)
        return result->pw_name;
    if (const char* login = std::getenv("LOGNAME"); login && *login)
        return login;
    return {};
}

// Tests stand in for the machine's configuration with these; set but empty means "none".
static const char* configurationOverride(const char* name) { return std::getenv(name); }

std::string ComputerName()
{
    if (const char* name = configurationOverride("TALMO_COMPUTER_NAME"))
        return name;
    if (auto pretty = internal::prettyHostnameFrom(readSmallFile("/etc/machine-info")))
        return *pretty;
    char host[256] = {};
    if (gethostname(host, sizeof host - 1) == 0)
        return host;
    return {};
}

std::string PrimaryIPv4Address()
{
    if (const char* address = configurationOverride("TALMO_PRIMARY_IPV4"))
        return address;
    auto routeIface = internal::defaultRouteInterfaceFrom(readSmallFile("/proc/net/route"));
    if (!routeIface)
        return {};
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return {};
    std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> guard(list, &freeifaddrs);
    for (ifaddrs* ifa = list; ifa; ifa = ifa->ifa_next) {
        if (!ifa->ifa_addr || ifa->ifa_addr->sa_family != AF_INET || !ifa->ifa_name)
            continue;
        char text[INET_ADDRSTRLEN] = {};
        auto* sin = reinterpret_cast<const sockaddr_in*>(ifa->ifa_addr);
        if (!inet_ntop(AF_INET, &sin->sin_addr, text, sizeof text))
            continue;
        if (*routeIface == ifa->ifa_name)
            return text;
    }
    return {};
}

SystemVersion GetSystemVersion()
{
    if (const char* env = std::getenv("TALMO_SYSTEM_VERSION"); env && *env)
        if (auto v = internal::parseSystemVersion(env))
            return *v;
    return SystemVersion{10, 15, 0};
}

} // namespace talmo
