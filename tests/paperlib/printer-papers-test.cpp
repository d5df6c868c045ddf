// The printer's paper list: keyword rules, media collections built with libcups, addresses,
// a real IPP printer (ippeveprinter, golden file), answers good and bad from scripted loopback
// servers, and the limits against printers that never answer.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace talmo::test {
namespace {

using namespace std::chrono_literals;
using O = std::optional<std::string_view>;

// Rows that the real printer's list (golden file below) does not reach.
TEST(PrinterPapersKeywords, FoldingPrecedenceAndFirstEdgeRules)
{
    for (const auto& [k, v] :
         {std::pair<const char*, int32_t>{"YELLOW", 3}, {"Custom7", 21}, {"custom8", 10}, {"", 10}})
        EXPECT_EQ(convertTPIFColorToIndex(k), v) << k;
    struct Type {
        O type, pre, rec;
        int32_t order, expected;
    };
    for (const Type& c : {Type{"bond", "pre-printed", {}, kNotSet, 13}, Type{"form", "pre-printed", "standard", 0, 3},
                          Type{"x", "blank", "standard", kNotSet, 10}, Type{"x", {}, "none", kNotSet, 10},
                          Type{"x", {}, "tinted", 5, 6}, Type{"x", {}, {}, kNotSet, 7}})
        EXPECT_EQ(convertTPIFTypeToIndex(c.type, c.pre, c.rec, c.order), c.expected) << *c.type << "/" << c.order;
    struct Coating {
        O front, back;
        int32_t sides, coating;
    };
    for (const Coating& c : {Coating{{}, {}, 77, 77}, Coating{"none", "none", 1, kNotSet},
                             Coating{"glossy", "matte", 3, 1}, Coating{"satin", {}, 2, 4}, Coating{{}, "matte", 2, 5},
                             Coating{"none", {}, 77, 77}, Coating{{}, "None", 77, 77}}) {
        int32_t sides = 77, coating = 77;
        convertTPIFSidesCoatedAndCoatingType(c.front, c.back, sides, coating);
        EXPECT_EQ(std::pair(sides, coating), std::pair(c.sides, c.coating))
            << c.front.value_or("-") << "/" << c.back.value_or("-");
    }
    for (const auto& [x, y, size] : {std::tuple{21600, 35600, 1},
                                     {42000, 29700, 5},
                                     {33000, 48800, 65},
                                     {21590, 27940, kNotSet},
                                     {33500, 48800, kNotSet}})
        EXPECT_EQ(GetSizeForStockDimensions(x, y), size) << x << " x " << y;
}

TEST(PrinterPapersMediaCol, RulesOfTheConversion)
{
    auto integer = [](const char* name, int v) {
        return [name, v](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, name, v); };
    };
    const std::tuple<const char*, std::function<void(ipp_t*)>, int32_t (Stock::*)() const, int32_t> cases[] = {
        {"colour as a name",
         [](ipp_t* c) { ippAddString(c, IPP_TAG_ZERO, IPP_TAG_NAME, "media-color", nullptr, "Blue"); }, &Stock::color,
         2},
        {"no type: no refinement", [](ipp_t* c) { AddKeyword(c, "media-recycled", "standard"); }, &Stock::type,
         kNotSet},
        {"hole count 4", integer("media-hole-count", 4), &Stock::punched, 2},
        {"hole count 5", integer("media-hole-count", 5), &Stock::punched, kNotSet},
        {"weight as text", [](ipp_t* c) { AddKeyword(c, "media-weight-metric", "90"); }, &Stock::weight, kNotSet},
        {"any other size member is the length", [](ipp_t* c) { AddSize(c, 12345, 21000, "height"); }, &Stock::size, 4},
        {"names compare exactly", [](ipp_t* c) { AddKeyword(c, "Media-Color", "red"); }, &Stock::color, kNotSet},
    };
    for (const auto& [what, fill, field, expected] : cases)
        EXPECT_EQ((StockFromMediaCollection(MediaCol(fill).get()).*field)(), expected) << what;
}

TEST(PrinterPapersMediaCol, EveryCollectionOfTheAnswerInOrderOrNone)
{
    std::vector<Stock> stocks;
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(3), stocks), noErr);
    ASSERT_EQ(stocks.size(), 3u);
    EXPECT_EQ(stocks[2].customName(), std::string("Paper 2"));
    EXPECT_EQ(stocks[2].weight(), 82);
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(0), stocks), noErr);
    EXPECT_TRUE(stocks.empty());
    const std::string good = PrinterAnswer(2);
    std::string unknownStatus = good;
    unknownStatus[2] = '\x62', unknownStatus[3] = '\x20'; // beyond libcups' status enumeration
    for (const std::string& bytes : {std::string(), std::string("garbage"), good.substr(0, good.size() / 2),
                                     PrinterAnswer(2, IPP_STATUS_ERROR_BAD_REQUEST), unknownStatus}) {
        std::vector<Stock> untouched(1);
        EXPECT_EQ(StocksFromIppAnswer(bytes, untouched), kPrinterStockBadAnswerErr) << bytes.size() << " bytes";
        EXPECT_EQ(untouched.size(), 1u);
    }
}

TEST(PrinterPapersAddress, HostPortLiteralsAndDeviceUris)
{
    const std::tuple<const char*, const char*, int> cases[] = {
        {"printer.local", "printer.local", 631},
        {"10.0.0.5:8631", "10.0.0.5", 8631},
        {"[::1]:8000", "::1", 8000},
        {"[fe80::1]", "fe80::1", 631},
        {"fe80::1", "fe80::1", 631},
        {"ipp://press.example:8632/ipp/print", "press.example", 8632},
        {"ipps://[::1]:9000/printers/x", "::1", 9000},
        {"socket://10.1.1.1", "10.1.1.1", 9100},
        {"dnssd://Press._ipp._tcp.local./?uuid=1", nullptr, 0},
        {"", nullptr, 0},
        {"host:", nullptr, 0},
        {"host:70000", nullptr, 0},
        {"host:12a", nullptr, 0},
        {"[::1", nullptr, 0},
        {"[::1]x", nullptr, 0}};
    for (const auto& [in, host, port] : cases) {
        const auto a = ParsePrinterAddress(in);
        ASSERT_EQ(bool(a), host != nullptr) << in;
        if (a)
            EXPECT_EQ(std::pair(a->host, a->port), std::pair(std::string(host), port)) << in;
    }
}

// What the panel host's Open fetches for a printer's device URI.
TEST(PrinterPapersAddress, HostOfTheDeviceUri)
{
    const std::pair<const char*, const char*> cases[] = {{"ipp://press.example:631/ipp/print", "press.example:631"},
                                                         {"socket://10.1.1.1", "10.1.1.1"},
                                                         {"lpd://ops@[fe80::2]:515/queue", "[fe80::2]:515"},
                                                         {"usb://Talmo/Press?serial=1", "Talmo"},
                                                         {"pap://zone/Press/LaserWriter", nullptr},
                                                         {"PAP://zone/Press", nullptr},
                                                         {"pap:/x", nullptr},
                                                         {"dnssd://Press._ipp._tcp.local./?uuid=1", nullptr},
                                                         {"file:///dev/null", nullptr},
                                                         {"ipp:", nullptr},
                                                         {"", nullptr}};
    for (const auto& [uri, host] : cases)
        EXPECT_EQ(PrinterHostFromDeviceURI(uri), host ? std::optional<std::string>(host) : std::nullopt) << uri;
}

// A real IPP printer declaring 31 production papers: each paper as `talmo papers fetch` writes
// it, against a golden file, and every form of the address reaching it.
TEST(PrinterPapersIppEvePrinter, EveryPaperConvertedInThePrinterOrder)
{
    IppEvePrinter printer;
    const std::string why = printer.start(std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/papers-30.conf");
    ASSERT_EQ(why, "") << "the test printer cannot run";
    const std::string port = std::to_string(printer.port());
    for (const std::string& address : {"[::1]:" + port, "ipp://localhost:" + port + "/ipp/print"}) {
        ResetPrinterStockList();
        ASSERT_EQ(RetrievePrinterStockLibrary(address), noErr) << address;
        EXPECT_EQ(PrinterStockList()->size(), 31u) << address;
    }
    pl::ArrayPtr papers = pl::makeArray();
    for (const Stock& s : *PrinterStockList())
        papers->append(s.asTicket());
    const std::string golden = std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/papers-30.expected.plist";
    std::ostringstream expected;
    expected << std::ifstream(golden).rdbuf();
    if (const std::string actual = pl::writePlist(papers); actual != expected.str()) {
        std::ofstream(testing::TempDir() + "papers-30.actual.plist") << actual;
        ADD_FAILURE() << "the papers differ from " << golden << "; see " << testing::TempDir();
    }
    ResetPrinterStockList();
}

class PrinterPapersFetch : public ::testing::Test {
protected:
    void SetUp() override { ResetPrinterStockList(); }
    void TearDown() override { ResetPrinterStockList(); }
};

TEST_F(PrinterPapersFetch, TheRequestAsSentAndTheAnswerTaken)
{
    std::string request;
    ScriptedServer server([&request](int fd, const std::atomic<bool>& stopping) {
        if (ReadHttpRequest(fd, stopping, &request))
            WriteAll(fd, HttpResponse("200 OK", PrinterAnswer(4)));
    });
    ASSERT_EQ(RetrievePrinterStockLibrary(server.address()), noErr);
    EXPECT_EQ(PrinterStockList()->size(), 4u);

    // The same request written by libcups: operation, id and the attributes in their order.
    Ipp expected(ippNew());
    ippSetOperation(expected.get(), IPP_OP_GET_PRINTER_ATTRIBUTES);
    ippSetRequestId(expected.get(), 1);
    const std::string uri = "http://" + server.address();
    for (const auto& [tag, name, value] : {std::tuple{IPP_TAG_CHARSET, "attributes-charset", "utf-8"},
                                           {IPP_TAG_LANGUAGE, "attributes-natural-language", "en"},
                                           {IPP_TAG_URI, "printer-uri", uri.c_str()},
                                           {IPP_TAG_MIMETYPE, "document-format", "application/octet-stream"},
                                           {IPP_TAG_KEYWORD, "requested-attributes", "media-col-database"}})
        ippAddString(expected.get(), IPP_TAG_OPERATION, tag, name, nullptr, value);
    EXPECT_EQ(request, IppBytes(expected.get()));
}

// Every way a fetch fails, with its status, its time and its reason; the list of the last
// fetch stays. Each limit is met once: the black hole never completes the handshake (connect
// limit); the tarpit takes the request and never answers (a blocked read meets the deadline);
// the drip sends a byte every 0.9 s, so no read waits long (only the overall deadline ends it).
TEST_F(PrinterPapersFetch, FailuresKeepThePreviousListAndSayWhy)
{
    {
        ScriptedServer good(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
        ASSERT_EQ(RetrievePrinterStockLibrary(good.address()), noErr);
    }
    const auto before = PrinterStockList();
    const std::string valid = PrinterAnswer(3), whole = HttpResponse("200 OK", valid), huge(4u << 20, '\x01');
    std::vector<std::unique_ptr<ScriptedServer>> servers;
    auto serve = [&servers](std::string response) {
        servers.push_back(std::make_unique<ScriptedServer>(Answer(std::move(response))));
        return servers.back()->address();
    };
    servers.push_back(std::make_unique<ScriptedServer>(nullptr, ScriptedServer::Kind::BlackHole));
    const std::string hole = servers.back()->address();
    ScriptedServer tarpit(Tarpit), drip(Drip(HttpResponse("200 OK", PrinterAnswer(50)), 900ms));
    const std::atomic<int> cancelled{1};
    constexpr OSStatus kBad = kPrinterStockBadAnswerErr, kNoConnection = kPrinterStockNoConnectionErr;
    const std::tuple<const char*, std::string, OSStatus, double, double, const char*> cases[] = {
        {"garbage", serve(HttpResponse("200 OK", "this is not IPP at all")), kBad, 0, 1, ""},
        {"truncated IPP", serve(whole.substr(0, whole.size() - 40)), kBad, 0, 1, ""},
        {"truncated, close-delimited", serve(HttpResponse("200 OK", valid.substr(0, 99), false)), kBad, 0, 1, ""},
        {"HTTP 500", serve(HttpResponse("500 Internal Server Error", valid)), kBad, 0, 1, ""},
        {"4 MiB announced", serve(HttpResponse("200 OK", huge)), kBad, 0, 1, ""},
        {"4 MiB close-delimited", serve(HttpResponse("200 OK", huge, false)), kBad, 0, 1, ""},
        {"bad-request", serve(HttpResponse("200 OK", PrinterAnswer(3, IPP_STATUS_ERROR_BAD_REQUEST))), kBad, 0, 1, ""},
        {"not HTTP", serve("SSH-2.0-OpenSSH\r\n"), kBad, 0, 1, ""},
        {"closed at once", serve(""), kBad, 0, 1, ""},
        {"refused", "127.0.0.1:" + std::to_string(FreeLoopbackPort()), kNoConnection, 0, 1,
         "Unable to connect to server: Connection refused\n"},
        {"no such name", "no-such-printer.invalid", kNoConnection, 0, 1,
         "Unable to connect to server: cannot resolve \"no-such-printer.invalid\""},
        {"cancelled", hole, kNoConnection, 0, 1, "Unable to connect to server: Operation canceled\n"},
        {"black hole", hole, kNoConnection, 0.9, 2.5, "Unable to connect to server: Connection timed out\n"},
        {"tarpit", tarpit.address(), kBad, 1.9, 3.5, ""},
        {"drip", drip.address(), kBad, 1.9, 3.5, ""},
    };
    for (const auto& [what, address, status, from, to, message] : cases) {
        testing::internal::CaptureStderr();
        const auto t0 = std::chrono::steady_clock::now();
        const bool cancel = std::string_view(what) == "cancelled";
        EXPECT_EQ(RetrievePrinterStockLibrary(address, {1000, 2000, 100}, cancel ? &cancelled : nullptr), status)
            << what;
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(seconds >= from && seconds <= to) << what << ": " << seconds << " s";
        EXPECT_NE(err.find(message), std::string::npos) << what << ": " << err;
        EXPECT_EQ(PrinterStockList(), before) << what;
    }
}

} // namespace
} // namespace talmo::test
