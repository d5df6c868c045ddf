// The printer's paper list over IPP (RFC 8011 Get-Printer-Attributes, PWG 5100.7
// "media-col-database"). The request goes out through libcups, but the answer is read in large
// blocks under our own deadline and size cap and parsed from memory: a silent, slow or
// babbling printer can never hold the fetch thread past the limits.
#include "paperlib/paperlib.h"

#include <cups/cups.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

namespace talmo {

namespace {

using Clock = std::chrono::steady_clock;

struct HttpCloser {
    void operator()(http_t* h) const { httpClose(h); }
};
struct IppDeleter {
    void operator()(ipp_t* i) const { ippDelete(i); }
};
using HttpPtr = std::unique_ptr<http_t, HttpCloser>;
using IppPtr = std::unique_ptr<ipp_t, IppDeleter>;

bool asciiEqual(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        unsigned char x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[i]);
        if (x >= 'A' && x <= 'Z')
            x = static_cast<unsigned char>(x + 32);
        if (y >= 'A' && y <= 'Z')
            y = static_cast<unsigned char>(y + 32);
        if (x != y)
            return false;
    }
    return true;
}

// "custom1" ... "custom7" give 15 ... 21; 0 for anything else.
int32_t customIndex(std::string_view keyword)
{
    static constexpr const char* kCustom[] = {"custom1", "custom2", "custom3", "custom4",
                                              "custom5", "custom6", "custom7"};
    for (int32_t i = 0; i < 7; ++i)
        if (asciiEqual(keyword, kCustom[i]))
            return 15 + i;
    return 0;
}

std::mutex gListMutex;
std::shared_ptr<const std::vector<Stock>> gPrinterStockList = std::make_shared<const std::vector<Stock>>();
std::string gListAddress, gListMoreInfo; // of the fetch that made the list

void publish(std::vector<Stock> stocks, std::string address = {}, std::string moreInfo = {})
{
    auto list = std::make_shared<const std::vector<Stock>>(std::move(stocks));
    std::lock_guard<std::mutex> lock(gListMutex);
    gPrinterStockList = std::move(list); // the old list goes with its last reader
    gListAddress = std::move(address);
    gListMoreInfo = std::move(moreInfo);
}

// --- reading one media collection ---

// Member values are read by name; a string is taken whatever its string tag (printers send
// "media-key" as keyword or as name), an integer only when the tag says integer (a range has
// no single value).
std::optional<std::string> memberText(ipp_attribute_t* a)
{
    const char* s = ippGetString(a, 0, nullptr);
    return s ? std::optional<std::string>(s) : std::nullopt;
}

int32_t memberInt(ipp_attribute_t* a)
{
    if (ippGetCount(a) < 1 || ippGetValueTag(a) != IPP_TAG_INTEGER)
        return kNotSet;
    return ippGetInteger(a, 0);
}

struct MediaCol {
    std::optional<std::string> key, description, color, type, prePrinted, recycled, frontCoating, backCoating, info;
    int32_t holeCount = kNotSet, orderCount = kNotSet, weight = kNotSet, x = kNotSet, y = kNotSet;
};

void readMediaSize(ipp_attribute_t* a, MediaCol& m)
{
    if (ippGetValueTag(a) != IPP_TAG_BEGIN_COLLECTION)
        return;
    ipp_t* size = ippGetCollection(a, 0);
    if (!size)
        return;
    for (ipp_attribute_t* d = ippFirstAttribute(size); d; d = ippNextAttribute(size)) {
        const char* name = ippGetName(d);
        if (!name)
            continue;
        const int32_t v = memberInt(d);
        if (v == kNotSet)
            continue;
        if (std::strcmp(name, "x-dimension") == 0)
            m.x = v;
        else
            m.y = v;
    }
}

MediaCol readMediaCol(ipp_t* col)
{
    MediaCol m;
    for (ipp_attribute_t* a = ippFirstAttribute(col); a; a = ippNextAttribute(col)) {
        const char* name = ippGetName(a);
        if (!name)
            continue;
        const std::string_view n(name);
        if (n == "media-key")
            m.key = memberText(a);
        else if (n == "media-description")
            m.description = memberText(a);
        else if (n == "media-color")
            m.color = memberText(a);
        else if (n == "media-type")
            m.type = memberText(a);
        else if (n == "media-pre-printed")
            m.prePrinted = memberText(a);
        else if (n == "media-front-coating")
            m.frontCoating = memberText(a);
        else if (n == "media-back-coating")
            m.backCoating = memberText(a);
        else if (n == "media-info")
            m.info = memberText(a);
        else if (n == "media-recycled")
            m.recycled = memberText(a);
        else if (n == "media-hole-count")
            m.holeCount = memberInt(a);
        else if (n == "media-order-count")
            m.orderCount = memberInt(a);
        else if (n == "media-weight-metric")
            m.weight = memberInt(a);
        else if (n == "media-size")
            readMediaSize(a, m);
    }
    return m;
}

std::optional<std::string_view> view(const std::optional<std::string>& s)
{
    return s ? std::optional<std::string_view>(*s) : std::nullopt;
}

} // namespace

// --- keyword tables ---

int32_t convertTPIFColorToIndex(std::string_view keyword)
{
    static constexpr std::pair<const char*, int32_t> kColors[] = {
        {"white", 1},     {"blue", 2}, {"yellow", 3}, {"green", 4}, {"pink", 5},    {"no-color", 6}, {"buff", 7},
        {"goldenrod", 8}, {"red", 9},  {"ivory", 11}, {"gray", 12}, {"orange", 13}, {"other", 14},
    };
    for (const auto& [k, v] : kColors)
        if (asciiEqual(keyword, k))
            return v;
    if (const int32_t c = customIndex(keyword))
        return c;
    return kStockColorCustom;
}

int32_t convertTPIFTypeToIndex(std::optional<std::string_view> mediaType, std::optional<std::string_view> prePrinted,
                               std::optional<std::string_view> recycled, int32_t orderCount)
{
    static constexpr std::pair<const char*, int32_t> kTypes[] = {
        {"stationery", 1}, {"transparency", 2}, {"tab-stock", 24}, {"pre-cut-tabs", 4}, {"full-cut-tabs", 5},
        {"labels", 9},     {"envelope", 8},     {"other", 22},     {"bond", 13},
    };
    if (mediaType) {
        for (const auto& [k, v] : kTypes)
            if (asciiEqual(*mediaType, k))
                return v;
        if (const int32_t c = customIndex(*mediaType))
            return c;
    }
    if (prePrinted && asciiEqual(*prePrinted, "pre-printed"))
        return 3;
    if (prePrinted && asciiEqual(*prePrinted, "letter-head"))
        return 14;
    // "none" counts as recycled, exactly like "standard".
    if (recycled && (asciiEqual(*recycled, "standard") || asciiEqual(*recycled, "none")))
        return 10;
    if (orderCount != kNotSet)
        return kStockTypeOrdered;
    return kStockTypeCustom;
}

int32_t convertTPIFCoatingTypeToIndex(std::string_view keyword)
{
    static constexpr std::pair<const char*, int32_t> kCoatings[] = {
        {"glossy", 1}, {"high-gloss", 2}, {"semi-gloss", 3}, {"satin", 4}, {"matte", 5}};
    for (const auto& [k, v] : kCoatings)
        if (asciiEqual(keyword, k))
            return v;
    return kNotSet;
}

void convertTPIFSidesCoatedAndCoatingType(std::optional<std::string_view> front, std::optional<std::string_view> back,
                                          int32_t& sidesCoated, int32_t& coatingType)
{
    enum class Side { Absent, Uncoated, Coated };
    auto classify = [](const std::optional<std::string_view>& s) {
        if (!s)
            return Side::Absent;
        return asciiEqual(*s, "none") ? Side::Uncoated : Side::Coated;
    };
    const Side f = classify(front), b = classify(back);
    if (f == Side::Absent && b == Side::Absent)
        return;
    if (f == Side::Uncoated && b == Side::Uncoated) {
        sidesCoated = 1;
        coatingType = kNotSet;
    } else if (f == Side::Coated && b == Side::Coated) {
        sidesCoated = 3;
        coatingType = convertTPIFCoatingTypeToIndex(*front);
    } else if (f == Side::Coated) {
        sidesCoated = 2;
        coatingType = convertTPIFCoatingTypeToIndex(*front);
    } else if (b == Side::Coated) {
        sidesCoated = 2;
        coatingType = convertTPIFCoatingTypeToIndex(*back);
    }
    // One side uncoated, the other absent: nothing is known about the pair.
}

int32_t GetSizeForStockDimensions(int32_t a, int32_t b)
{
    for (const _PaperSizeSettingMap* row = CompleteStockSizeMap; row->key; ++row)
        if (row->widthHmm == a || row->widthHmm == b)
            return row->ticketValue;
    return kNotSet;
}

// --- media collections ---

Stock StockFromMediaCollection(ipp_t* mediaCol)
{
    Stock stock;
    if (!mediaCol)
        return stock;
    const MediaCol m = readMediaCol(mediaCol);
    if (m.key)
        stock.setCustomName(*m.key);
    if (m.description)
        stock.setDescription(*m.description);
    if (m.color) {
        const int32_t color = convertTPIFColorToIndex(*m.color);
        stock.setColor(color);
        if (color == kStockColorCustom)
            stock.setCustomColor(*m.color);
    }
    if (m.type) {
        const int32_t type = convertTPIFTypeToIndex(view(m.type), view(m.prePrinted), view(m.recycled), m.orderCount);
        stock.setType(type);
        if (type == kStockTypeCustom)
            stock.setCustomType(*m.type);
        if (type == kStockTypeOrdered || type == kStockTypePrecutTab)
            stock.setModulus(m.orderCount);
    }
    if (m.holeCount != kNotSet) {
        if (m.holeCount == 0)
            stock.setPunched(kStockPunchedNo);
        else if (m.holeCount >= 2 && m.holeCount <= 4)
            stock.setPunched(kStockPunchedYes);
        else
            stock.setPunched(kNotSet);
    }
    if (m.weight != kNotSet && m.weight != 0)
        stock.setWeight(m.weight);
    if (m.x != kNotSet && m.y != kNotSet) {
        int32_t size = GetSizeForStockDimensions(m.x, m.y);
        if (size == 6 && stock.type() == kStockTypeEnvelope)
            size = 73;
        stock.setSize(size);
    }
    int32_t sidesCoated = kNotSet, coatingType = kNotSet;
    convertTPIFSidesCoatedAndCoatingType(view(m.frontCoating), view(m.backCoating), sidesCoated, coatingType);
    stock.setSidesCoated(sidesCoated);
    stock.setCoatingType(coatingType);
    if (m.info)
        stock.setComment(*m.info);
    return stock;
}

std::vector<Stock> StocksFromMediaCollections(ipp_t* response)
{
    std::vector<Stock> out;
    if (!response)
        return out;
    for (ipp_attribute_t* a = ippFirstAttribute(response); a; a = ippNextAttribute(response)) {
        if (ippGetValueTag(a) != IPP_TAG_BEGIN_COLLECTION)
            continue;
        const int count = ippGetCount(a);
        for (int i = 0; i < count; ++i)
            out.push_back(StockFromMediaCollection(ippGetCollection(a, i)));
    }
    return out;
}

namespace {

struct MemoryReader {
    std::string_view bytes;
    size_t offset = 0;
};

ssize_t readFromMemory(void* context, ipp_uchar_t* buffer, size_t length)
{
    auto* r = static_cast<MemoryReader*>(context);
    const size_t n = std::min(length, r->bytes.size() - r->offset);
    std::memcpy(buffer, r->bytes.data() + r->offset, n);
    r->offset += n;
    return static_cast<ssize_t>(n);
}

} // namespace

OSStatus StocksFromIppAnswer(std::string_view bytes, std::vector<Stock>& out, std::string* moreInfo)
{
    IppPtr response(ippNew());
    if (!response)
        return memFullErr;
    MemoryReader reader{bytes};
    ipp_state_t state;
    while ((state = ippReadIO(&reader, readFromMemory, 1, nullptr, response.get())) != IPP_STATE_DATA)
        if (state == IPP_STATE_ERROR)
            return kPrinterStockBadAnswerErr;
    // The status code as the two bytes it is: a printer may send any value, and one outside
    // libcups' enumeration must never be held in an ipp_status_t.
    if (bytes.size() < 8)
        return kPrinterStockBadAnswerErr;
    const int status = (static_cast<unsigned char>(bytes[2]) << 8) | static_cast<unsigned char>(bytes[3]);
    if (status > IPP_STATUS_OK_EVENTS_COMPLETE) {
        std::fprintf(stderr, "DEBUG: printer paper list: the printer answered status 0x%04X\n", status);
        return kPrinterStockBadAnswerErr;
    }
    out = StocksFromMediaCollections(response.get());
    if (moreInfo) {
        ipp_attribute_t* a = ippFindAttribute(response.get(), "printer-more-info", IPP_TAG_URI);
        const char* uri = a ? ippGetString(a, 0, nullptr) : nullptr;
        *moreInfo = uri ? uri : "";
    }
    return noErr;
}

// --- addresses ---

std::optional<PrinterAddress> ParsePrinterAddress(std::string_view address)
{
    PrinterAddress out;
    out.port = ippPort();
    auto parsePort = [](std::string_view s, int& port) {
        if (s.empty() || s.size() > 5)
            return false;
        int v = 0;
        for (char c : s) {
            if (c < '0' || c > '9')
                return false;
            v = v * 10 + (c - '0');
        }
        if (v < 1 || v > 65535)
            return false;
        port = v;
        return true;
    };
    if (address.empty()) {
        std::fprintf(stderr, "DEBUG: printer paper list: no printer address\n");
        return std::nullopt;
    }
    if (address.find("://") != std::string_view::npos) {
        const std::string uri(address);
        char scheme[32], user[256], host[256], resource[1024];
        int port = 0;
        if (httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme, sizeof scheme, user, sizeof user, host,
                            sizeof host, &port, resource, sizeof resource) < HTTP_URI_STATUS_OK ||
            !*host) {
            std::fprintf(stderr, "DEBUG: printer paper list: cannot read the device URI \"%s\"\n", uri.c_str());
            return std::nullopt;
        }
        if (std::strcmp(scheme, "dnssd") == 0) {
            // A service name, not a host: resolving it would block on the network browser.
            std::fprintf(stderr, "DEBUG: printer paper list: skipped, \"%s\" names a DNS-SD service\n", uri.c_str());
            return std::nullopt;
        }
        out.host = host;
        if (port > 0)
            out.port = port;
        return out;
    }
    if (address.front() == '[') {
        const size_t close = address.find(']');
        if (close == std::string_view::npos || close == 1)
            return std::nullopt;
        out.host = std::string(address.substr(1, close - 1));
        std::string_view rest = address.substr(close + 1);
        if (!rest.empty() && (rest.front() != ':' || !parsePort(rest.substr(1), out.port)))
            return std::nullopt;
        return out;
    }
    const size_t colon = address.find(':');
    if (colon != std::string_view::npos && address.find(':', colon + 1) == std::string_view::npos) {
        if (colon == 0 || !parsePort(address.substr(colon + 1), out.port)) {
            std::fprintf(stderr, "DEBUG: printer paper list: bad port in \"%.*s\"\n", int(address.size()),
                         address.data());
            return std::nullopt;
        }
        out.host = std::string(address.substr(0, colon));
        return out;
    }
    out.host = std::string(address); // a host name, IPv4 or bare IPv6 literal
    return out;
}

std::optional<std::string> PrinterHostFromDeviceURI(std::string_view deviceURI)
{
    std::vector<std::string_view> parts;
    for (size_t from = 0;;) {
        const size_t slash = deviceURI.find('/', from);
        parts.push_back(deviceURI.substr(from, slash - from));
        if (slash == std::string_view::npos)
            break;
        from = slash + 1;
    }
    if (parts.size() < 3 || asciiEqual(parts[0], "pap:") || asciiEqual(parts[0], "dnssd:"))
        return std::nullopt;
    std::string_view host = parts[2];
    if (const size_t at = host.rfind('@'); at != std::string_view::npos)
        host.remove_prefix(at + 1);
    if (host.empty())
        return std::nullopt;
    return std::string(host);
}

// --- the fetch ---

namespace {

struct FetchClock {
    Clock::time_point deadline;
    const std::atomic<int>* cancel;

    bool expired() const { return (cancel && cancel->load()) || Clock::now() >= deadline; }
    int remainingMs() const
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        return left > 0 ? static_cast<int>(left) : 0;
    }
};

// Called by libcups each time a wait slice passes without data: keep waiting until the overall
// deadline or a cancel.
int keepWaiting(http_t*, void* context) { return static_cast<FetchClock*>(context)->expired() ? 0 : 1; }

// libcups' connect leaves no usable errno (EBADF or EHOSTDOWN from its clean-up, whatever the
// cause), so a failure that was neither cancelled nor timed out is told apart by one more
// non-blocking connect to each address, bounded by `waitMs`.
int probeConnectError(const http_addrlist_t* list, int waitMs)
{
    int error = 0;
    for (const http_addrlist_t* a = list; a; a = a->next) {
        const int fd =
            ::socket(httpAddrFamily(const_cast<http_addr_t*>(&a->addr)), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (fd < 0) {
            error = errno;
            continue;
        }
        error = 0;
        if (::connect(fd, &a->addr.addr, static_cast<socklen_t>(httpAddrLength(&a->addr))) != 0) {
            error = errno;
            pollfd p{fd, POLLOUT, 0};
            if (error == EINPROGRESS) {
                socklen_t len = sizeof error;
                if (::poll(&p, 1, waitMs) != 1 || ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &len) != 0)
                    error = ETIMEDOUT;
            }
        }
        ::close(fd);
        if (error == 0)
            break;
    }
    return error;
}

void reportConnectFailure(const FetchClock& clock, Clock::time_point started, int connectTimeoutMs,
                          const http_addrlist_t* list)
{
    int reason = ECONNREFUSED;
    if (clock.cancel && clock.cancel->load())
        reason = ECANCELED;
    else if (Clock::now() - started >= std::chrono::milliseconds(connectTimeoutMs) || clock.expired())
        reason = ETIMEDOUT;
    else if (const int probed = probeConnectError(list, std::min(clock.remainingMs(), 250)); probed != 0)
        reason = probed;
    std::fprintf(stderr, "Unable to connect to server: %s\n", std::strerror(reason));
}

OSStatus badAnswer(const char* what)
{
    std::fprintf(stderr, "DEBUG: printer paper list: %s\n", what);
    return kPrinterStockBadAnswerErr;
}

} // namespace

OSStatus RetrievePrinterStockLibrary(std::string_view address, const PrinterStockFetchLimits& limits,
                                     const std::atomic<int>* cancel)
{
    FetchClock clock{Clock::now() + std::chrono::milliseconds(limits.totalTimeoutMs), cancel};
    std::string printerUri;
    std::optional<PrinterAddress> where;
    try {
        where = ParsePrinterAddress(address);
        if (!where) {
            errno = EINVAL;
            std::perror("Unable to connect to server");
            return kPrinterStockNoConnectionErr;
        }
        // The printer URI is "http://" and the address (the design copies "http:///" with a
        // limit of 8, which drops the third slash); a device URI contributes its host and port.
        if (address.find("://") == std::string_view::npos) {
            printerUri = "http://" + std::string(address);
        } else {
            const bool v6 = where->host.find(':') != std::string::npos;
            printerUri = "http://" + (v6 ? "[" + where->host + "]" : where->host) + ":" + std::to_string(where->port);
        }
    } catch (const std::bad_alloc&) {
        std::perror("Unable to allocate memory for HTTP address");
        return memFullErr;
    }

    // libcups reads the cancel flag as a plain int while it polls the connect.
    static_assert(sizeof(std::atomic<int>) == sizeof(int));
    int* cancelFlag = cancel ? const_cast<int*>(reinterpret_cast<const int*>(cancel)) : nullptr;
    // The name is resolved here rather than inside the connect, so that a name that does not
    // resolve is reported as such.
    const std::unique_ptr<http_addrlist_t, void (*)(http_addrlist_t*)> addresses(
        httpAddrGetList(where->host.c_str(), AF_UNSPEC, std::to_string(where->port).c_str()), httpAddrFreeList);
    if (!addresses) {
        const char* why = cupsLastErrorString();
        std::fprintf(stderr, "Unable to connect to server: cannot resolve \"%s\" (%s)\n", where->host.c_str(),
                     why && *why ? why : "no address");
        return kPrinterStockNoConnectionErr;
    }
    const int connectMs = std::min(limits.connectTimeoutMs, clock.remainingMs());
    const Clock::time_point started = Clock::now();
    HttpPtr http(httpConnect2(where->host.c_str(), where->port, addresses.get(), AF_UNSPEC, cupsEncryption(), 1,
                              connectMs, cancelFlag));
    if (!http) {
        reportConnectFailure(clock, started, connectMs, addresses.get());
        return kPrinterStockNoConnectionErr;
    }
    httpSetTimeout(http.get(), limits.waitSliceMs / 1000.0, keepWaiting, &clock);

    IppPtr request(ippNew());
    if (!request)
        return memFullErr;
    ippSetOperation(request.get(), IPP_OP_GET_PRINTER_ATTRIBUTES);
    ippSetRequestId(request.get(), 1);
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_CHARSET, "attributes-charset", nullptr, "utf-8");
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_LANGUAGE, "attributes-natural-language", nullptr, "en");
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, printerUri.c_str());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
                 "application/octet-stream");
    // The printer's web page comes with the papers, for the About dialog's link.
    static constexpr const char* kRequested[] = {"media-col-database", "printer-more-info"};
    ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", 2, nullptr, kRequested);

    http_status_t status = cupsSendRequest(http.get(), request.get(), "/", ippLength(request.get()));
    if (status != HTTP_STATUS_CONTINUE && status != HTTP_STATUS_OK)
        return badAnswer(clock.expired() ? "the printer did not take the request in time" : "the request failed");
    if (status == HTTP_STATUS_CONTINUE) {
        do
            status = httpUpdate(http.get());
        while (status == HTTP_STATUS_CONTINUE && !clock.expired());
    }
    if (status != HTTP_STATUS_OK) {
        if (status == HTTP_STATUS_ERROR)
            return badAnswer(clock.expired() ? "no answer in time" : "no answer");
        std::fprintf(stderr, "DEBUG: printer paper list: HTTP status %d\n", int(status));
        return kPrinterStockBadAnswerErr;
    }
    const off_t announced = httpGetLength2(http.get());
    if (announced > static_cast<off_t>(kPrinterStockMaxAnswerBytes))
        return badAnswer("answer too large");

    // The answer in large blocks, then parsed from memory.
    std::string body;
    try {
        if (announced > 0)
            body.reserve(static_cast<size_t>(announced));
        char block[65536];
        for (;;) {
            const ssize_t n = httpRead2(http.get(), block, sizeof block);
            if (n == 0)
                break;
            if (n < 0)
                return badAnswer(clock.expired() ? "answer not complete in time" : "answer cut short");
            if (body.size() + static_cast<size_t>(n) > kPrinterStockMaxAnswerBytes)
                return badAnswer("answer too large");
            body.append(block, static_cast<size_t>(n));
            if (clock.expired())
                return badAnswer("answer not complete in time");
        }
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    std::vector<Stock> stocks;
    std::string moreInfo;
    const OSStatus parsed = StocksFromIppAnswer(body, stocks, &moreInfo);
    if (parsed != noErr)
        return parsed == kPrinterStockBadAnswerErr ? badAnswer("the answer is not a usable IPP response") : parsed;
    try {
        publish(std::move(stocks), where->host + ":" + std::to_string(where->port), std::move(moreInfo));
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    return noErr;
}

std::shared_ptr<const std::vector<Stock>> PrinterStockList()
{
    std::lock_guard<std::mutex> lock(gListMutex);
    return gPrinterStockList;
}

void ResetPrinterStockList() { publish({}); }

std::optional<std::string> PrinterMoreInfoURI(std::string_view address)
{
    // The same printer however its address is written ("host:631", "ipp://host/...").
    const auto where = address.empty() ? std::nullopt : ParsePrinterAddress(address);
    if (!where)
        return std::nullopt;
    std::lock_guard<std::mutex> lock(gListMutex);
    if (gListMoreInfo.empty() || where->host + ":" + std::to_string(where->port) != gListAddress)
        return std::nullopt;
    return gListMoreInfo;
}

} // namespace talmo
