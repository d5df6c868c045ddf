// The printer's own paper list: one IPP Get-Printer-Attributes request for
// "media-col-database" (PWG 5100.7 media collections), each collection turned into a Stock.
#pragma once

#include "ticket/ticket.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

typedef struct _ipp_s ipp_t;

namespace talmo {

// Status of a fetch.
inline constexpr OSStatus kPrinterStockNoConnectionErr = -3264; // "Unable to connect to server"
// The printer answered, but not with a usable list (no answer, HTTP or IPP error, an answer
// that does not parse or exceeds kPrinterStockMaxAnswerBytes). The previous list stays.
inline constexpr OSStatus kPrinterStockBadAnswerErr = -3265;

// 500 papers make about 130 KB; anything beyond this is not a paper list.
inline constexpr size_t kPrinterStockMaxAnswerBytes = 2u << 20;

// Limits of one fetch. A silent printer never holds the fetch thread longer than these.
struct PrinterStockFetchLimits {
    int connectTimeoutMs = 5000; // connect gives up after this
    int totalTimeoutMs = 15000;  // the whole fetch, connect included
    int waitSliceMs = 100;       // how often a blocked read looks at the deadline and the cancel flag
};

// Host and port of a printer address: "host", "host:port", "[v6]" or "[v6]:port", a bare IPv6
// literal, or a device URI ("ipp://host:port/...", split with httpSeparateURI). The port
// defaults to the IPP port. Nullopt (with the reason on stderr) for an empty address, a bad
// port, or a "dnssd://" URI, which names a service rather than a host.
struct PrinterAddress {
    std::string host;
    int port = 0;
};
std::optional<PrinterAddress> ParsePrinterAddress(std::string_view address);

// The address whose paper list is fetched for a printer with this device URI: the URI split at
// "/", element 2 (the host, with its port when the URI gives one, without user information).
// None when element 0 is "pap:" (any case: an AppleTalk printer has no IPP service), when the
// URI has no host, and for "dnssd:" (a service name that only a network browser resolves).
std::optional<std::string> PrinterHostFromDeviceURI(std::string_view deviceURI);

// Fetches the paper list of the printer at `address` and, on success, replaces the process-wide
// printer stock list. Returns noErr, memFullErr, kPrinterStockNoConnectionErr or
// kPrinterStockBadAnswerErr (the list then stays as it was). `cancel`, when given, ends a
// blocked fetch soon after it becomes non-zero.
OSStatus RetrievePrinterStockLibrary(std::string_view address, const PrinterStockFetchLimits& limits = {},
                                     const std::atomic<int>* cancel = nullptr);

// Parses a whole IPP answer (as received, after the HTTP headers) into stocks. noErr with the
// stocks when it parses and its status is successful; kPrinterStockBadAnswerErr otherwise
// (`out` untouched). `moreInfo`, when given, gets the printer's "printer-more-info" URI (empty
// when the answer has none).
OSStatus StocksFromIppAnswer(std::string_view bytes, std::vector<Stock>& out, std::string* moreInfo = nullptr);

// The printer stock list of the last successful fetch (empty before), in the printer's order.
// Safe to call from any thread; the list is shared, never changed once published.
std::shared_ptr<const std::vector<Stock>> PrinterStockList();
// Drops the list (tests; a new dialog session).
void ResetPrinterStockList();

// The web page ("printer-more-info") that the printer at `address` gave with its paper list, when
// the last successful fetch was from that address and the answer had one. The fetch asks for it
// in the same request, so knowing it never costs the dialog a wait.
std::optional<std::string> PrinterMoreInfoURI(std::string_view address);

// Every begin-collection value of `response` turned into a Stock, in order.
std::vector<Stock> StocksFromMediaCollections(ipp_t* response);
// One media collection ("media-key", "media-color", "media-size", ...) turned into a Stock.
Stock StockFromMediaCollection(ipp_t* mediaCol);

// Keyword tables of the IPP media attributes (ASCII case-insensitive).
int32_t convertTPIFColorToIndex(std::string_view keyword);
int32_t convertTPIFTypeToIndex(std::optional<std::string_view> mediaType, std::optional<std::string_view> prePrinted,
                               std::optional<std::string_view> recycled, int32_t orderCount);
int32_t convertTPIFCoatingTypeToIndex(std::string_view keyword);
// Leaves both outputs alone when neither side is given, or when one side is uncoated and the
// other absent.
void convertTPIFSidesCoatedAndCoatingType(std::optional<std::string_view> front, std::optional<std::string_view> back,
                                          int32_t& sidesCoated, int32_t& coatingType);
// Ticket value of the first size whose width (hundredths of a millimetre) equals either
// dimension; kNotSet when none does. Only one edge has to match: a 21600 x 35600 sheet is Letter.
int32_t GetSizeForStockDimensions(int32_t a, int32_t b);

} // namespace talmo
