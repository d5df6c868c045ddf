// The current printer as a CUPS destination. The PPD file of a queue is only available through
// cupsGetPPD2, which libcups 2.4 marks deprecated (its replacement, the destination
// information API, gives no PPD); that one call is why this file silences the warning.
#include "platform/session.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <cups/cups.h>
#include <cups/ppd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>

namespace talmo {

std::optional<Printer> CupsPrinter(const std::string& name, int timeoutMs, const std::string& server)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(std::max(timeoutMs, 1));
    auto remaining = [&] {
        auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        return int(std::max<long long>(ms, 0));
    };

    // libcups' own defaults block for 30 s on connect and longer on reads: connect ourselves
    // with a time-out and bound every later read by what is left of the deadline.
    std::string host = server.empty() ? cupsServer() : server;
    int port = ippPort();
    if (!host.empty() && host[0] != '/') {
        if (auto colon = host.rfind(':'); colon != std::string::npos && host.find(']', colon) == std::string::npos) {
            port = std::atoi(host.c_str() + colon + 1);
            host.erase(colon);
        }
    }
    std::unique_ptr<http_t, decltype(&httpClose)> http(
        httpConnect2(host.c_str(), port, nullptr, AF_UNSPEC, cupsEncryption(), 1, remaining(), nullptr), &httpClose);
    if (!http || remaining() == 0)
        return std::nullopt;
    httpSetTimeout(http.get(), std::max(remaining(), 1) / 1000.0, nullptr, nullptr);

    cups_dest_t* dest = cupsGetNamedDest(http.get(), name.empty() ? nullptr : name.c_str(), nullptr);
    if (!dest)
        return std::nullopt;
    Printer p;
    p.name = dest->name;
    if (const char* uri = cupsGetOption("device-uri", dest->num_options, dest->options))
        p.deviceURI = uri;
    if (const char* mm = cupsGetOption("printer-make-and-model", dest->num_options, dest->options))
        p.makeAndModel = mm;
    if (const char* page = cupsGetOption("printer-more-info", dest->num_options, dest->options))
        p.moreInfoURI = page;
    cupsFreeDests(1, dest);
    if (remaining() == 0)
        return std::nullopt;

    httpSetTimeout(http.get(), std::max(remaining(), 1) / 1000.0, nullptr, nullptr);
    if (const char* ppd = cupsGetPPD2(http.get(), p.name.c_str()))
        p.ppdPath = ppd;
    return p;
}

} // namespace talmo
