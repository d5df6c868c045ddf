// The printer's paper list: keyword tables, media collections built with libcups, addresses,
// answers good and bad from scripted loopback servers, and the limits against printers that
// never answer.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <chrono>

namespace talmo::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// --- keyword tables ---

TEST(PrinterPapersKeywords, Colours)
{
    const std::pair<const char*, int32_t> cases[] = {
        {"white", 1},  {"Blue", 2},      {"YELLOW", 3},   {"green", 4},    {"pink", 5},    {"no-color", 6},
        {"buff", 7},   {"goldenrod", 8}, {"red", 9},      {"ivory", 11},   {"gray", 12},   {"orange", 13},
        {"other", 14}, {"custom1", 15},  {"Custom7", 21}, {"custom8", 10}, {"salmon", 10}, {"", 10},
    };
    for (const auto& [k, v] : cases)
        EXPECT_EQ(convertTPIFColorToIndex(k), v) << k;
}

TEST(PrinterPapersKeywords, TypesInTheirOrder)
{
    using O = std::optional<std::string_view>;
    struct Case {
        O type, pre, rec;
        int32_t order;
        int32_t expected;
    };
    const Case cases[] = {
        {"stationery", {}, {}, kNotSet, 1},
        {"Transparency", {}, {}, kNotSet, 2},
        {"tab-stock", {}, {}, kNotSet, 24},
        {"pre-cut-tabs", {}, {}, 5, 4},
        {"full-cut-tabs", {}, {}, kNotSet, 5},
        {"labels", {}, {}, kNotSet, 9},
        {"envelope", {}, {}, kNotSet, 8},
        {"other", {}, {}, kNotSet, 22},
        {"bond", "pre-printed", {}, kNotSet, 13}, // the type wins over the refinements
        {"custom3", {}, {}, kNotSet, 17},
        {"form", "pre-printed", "standard", kNotSet, 3},
        {"form", "letter-head", {}, kNotSet, 14},
        {"x", "blank", "standard", kNotSet, 10},
        {"x", {}, "none", kNotSet, 10}, // "none" counts as recycled on purpose
        {"x", {}, "tinted", 5, 6},
        {"x", {}, {}, kNotSet, 7},
    };
    for (const Case& c : cases)
        EXPECT_EQ(convertTPIFTypeToIndex(c.type, c.pre, c.rec, c.order), c.expected) << *c.type;
}

TEST(PrinterPapersKeywords, Coatings)
{
    using O = std::optional<std::string_view>;
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("Glossy"), 1);
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("high-gloss"), 2);
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("semi-gloss"), 3);
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("satin"), 4);
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("matte"), 5);
    EXPECT_EQ(convertTPIFCoatingTypeToIndex("none"), kNotSet);

    struct Case {
        O front, back;
        int32_t sides, coating;
    };
    const Case cases[] = {
        {{}, {}, 77, 77}, // untouched
        {"none", "none", 1, kNotSet},
        {"glossy", "matte", 3, 1},
        {"satin", "none", 2, 4},
        {"satin", {}, 2, 4},
        {"none", "matte", 2, 5},
        {{}, "matte", 2, 5},
        {"none", {}, 77, 77},
        {{}, "None", 77, 77},
    };
    for (const Case& c : cases) {
        int32_t sides = 77, coating = 77;
        convertTPIFSidesCoatedAndCoatingType(c.front, c.back, sides, coating);
        EXPECT_EQ(sides, c.sides) << (c.front ? *c.front : "-") << "/" << (c.back ? *c.back : "-");
        EXPECT_EQ(coating, c.coating) << (c.front ? *c.front : "-") << "/" << (c.back ? *c.back : "-");
    }
}

TEST(PrinterPapersKeywords, SizeByFirstMatchingEdge)
{
    EXPECT_EQ(GetSizeForStockDimensions(29700, 42000), 5);       // A3
    EXPECT_EQ(GetSizeForStockDimensions(21000, 29700), 4);       // A4
    EXPECT_EQ(GetSizeForStockDimensions(21600, 27900), 1);       // Letter
    EXPECT_EQ(GetSizeForStockDimensions(21600, 35600), 1);       // Legal found as Letter: one edge is enough
    EXPECT_EQ(GetSizeForStockDimensions(42000, 29700), 5);       // only widths are compared: A3 by its width
    EXPECT_EQ(GetSizeForStockDimensions(33000, 48800), 65);      // 13 x 18" by its 330 mm edge
    EXPECT_EQ(GetSizeForStockDimensions(21590, 27940), kNotSet); // no tolerance
    EXPECT_EQ(GetSizeForStockDimensions(33500, 48800), kNotSet);
}

// --- media collections ---

TEST(PrinterPapersMediaCol, MembersByNameWhateverTheStringTag)
{
    Ipp col = MediaCol([](ipp_t* c) {
        ippAddString(c, IPP_TAG_ZERO, IPP_TAG_NAME, "media-key", nullptr, "Gray 160");
        ippAddString(c, IPP_TAG_ZERO, IPP_TAG_TEXT, "media-description", nullptr, "Gray card");
        ippAddString(c, IPP_TAG_ZERO, IPP_TAG_NAME, "media-color", nullptr, "Blue");
        AddKeyword(c, "media-type", "velvet");
        ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-order-count", 5);
        ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-hole-count", 3);
        ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-weight-metric", 160);
        AddKeyword(c, "media-front-coating", "none");
        ippAddString(c, IPP_TAG_ZERO, IPP_TAG_TEXT, "media-info", nullptr, "Keep dry");
        AddSize(c, 29700, 42000);
    });
    const Stock s = StockFromMediaCollection(col.get());
    EXPECT_EQ(s.customName(), std::string("Gray 160"));
    EXPECT_EQ(s.description(), std::string("Gray card"));
    EXPECT_EQ(s.color(), 2);
    EXPECT_EQ(s.customColor(), std::string());
    EXPECT_EQ(s.type(), 6);
    EXPECT_EQ(s.modulus(), 5);
    EXPECT_EQ(s.punched(), 2);
    EXPECT_EQ(s.weight(), 160);
    EXPECT_EQ(s.size(), 5);
    EXPECT_EQ(s.sidesCoated(), kNotSet) << "front uncoated, back absent";
    EXPECT_EQ(s.coatingType(), kNotSet);
    EXPECT_EQ(s.comment(), std::string("Keep dry"));
}

TEST(PrinterPapersMediaCol, RulesOfTheConversion)
{
    struct Case {
        const char* what;
        std::function<void(ipp_t*)> fill;
        std::function<void(const Stock&)> check;
    };
    const Case cases[] = {
        {"unknown colour kept as custom text", [](ipp_t* c) { AddKeyword(c, "media-color", "salmon"); },
         [](const Stock& s) {
             EXPECT_EQ(s.color(), 10);
             EXPECT_EQ(s.customColor(), std::string("salmon"));
         }},
        {"unknown type kept as custom text", [](ipp_t* c) { AddKeyword(c, "media-type", "kraft"); },
         [](const Stock& s) {
             EXPECT_EQ(s.type(), 7);
             EXPECT_EQ(s.customType(), std::string("kraft"));
         }},
        {"pre-cut tabs take the order count",
         [](ipp_t* c) {
             AddKeyword(c, "media-type", "pre-cut-tabs");
             ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-order-count", 8);
         },
         [](const Stock& s) {
             EXPECT_EQ(s.type(), 4);
             EXPECT_EQ(s.modulus(), 8);
         }},
        {"transparency forces clear",
         [](ipp_t* c) { AddKeyword(c, "media-color", "red"), AddKeyword(c, "media-type", "transparency"); },
         [](const Stock& s) { EXPECT_EQ(s.color(), 6); }},
        {"no type: no refinement", [](ipp_t* c) { AddKeyword(c, "media-recycled", "standard"); },
         [](const Stock& s) { EXPECT_EQ(s.type(), kNotSet); }},
        {"hole count 0", [](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-hole-count", 0); },
         [](const Stock& s) { EXPECT_EQ(s.punched(), 1); }},
        {"hole count 1", [](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-hole-count", 1); },
         [](const Stock& s) { EXPECT_EQ(s.punched(), kNotSet); }},
        {"hole count 4", [](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-hole-count", 4); },
         [](const Stock& s) { EXPECT_EQ(s.punched(), 2); }},
        {"hole count 5", [](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-hole-count", 5); },
         [](const Stock& s) { EXPECT_EQ(s.punched(), kNotSet); }},
        {"weight 0 ignored",
         [](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-weight-metric", 0); },
         [](const Stock& s) { EXPECT_EQ(s.weight(), kNotSet); }},
        {"weight as text ignored", [](ipp_t* c) { AddKeyword(c, "media-weight-metric", "90"); },
         [](const Stock& s) { EXPECT_EQ(s.weight(), kNotSet); }},
        {"range x-dimension: no size",
         [](ipp_t* c) {
             Ipp size(ippNew());
             ippAddRange(size.get(), IPP_TAG_ZERO, "x-dimension", 21000, 33000);
             ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "y-dimension", 29700);
             ippAddCollection(c, IPP_TAG_ZERO, "media-size", size.get());
         },
         [](const Stock& s) { EXPECT_EQ(s.size(), kNotSet); }},
        {"any other size member is the length",
         [](ipp_t* c) {
             Ipp size(ippNew());
             ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "x-dimension", 12345);
             ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "height", 21000);
             ippAddCollection(c, IPP_TAG_ZERO, "media-size", size.get());
         },
         [](const Stock& s) { EXPECT_EQ(s.size(), 4); }},
        {"C5 envelope found as 9 x 11\" by its 229 mm edge",
         [](ipp_t* c) { AddKeyword(c, "media-type", "envelope"), AddSize(c, 16200, 22900); },
         [](const Stock& s) {
             EXPECT_EQ(s.size(), 8);
             EXPECT_EQ(s.type(), 8);
         }},
        {"no coatings: sides and coating written unset", [](ipp_t*) {},
         [](const Stock& s) {
             EXPECT_EQ(s.sidesCoated(), kNotSet);
             EXPECT_EQ(s.coatingType(), kNotSet);
         }},
        {"names compare exactly", [](ipp_t* c) { AddKeyword(c, "Media-Color", "red"); },
         [](const Stock& s) { EXPECT_EQ(s.color(), kNotSet); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Ipp col = MediaCol(c.fill);
        c.check(StockFromMediaCollection(col.get()));
    }
}

TEST(PrinterPapersMediaCol, EveryCollectionOfTheAnswerInOrder)
{
    std::vector<Stock> stocks;
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(3), stocks), noErr);
    ASSERT_EQ(stocks.size(), 3u);
    EXPECT_EQ(stocks[2].customName(), std::string("Paper 2"));
    EXPECT_EQ(stocks[2].weight(), 82);

    stocks.clear();
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(0), stocks), noErr);
    EXPECT_TRUE(stocks.empty()) << "an answer without collections gives an empty list";

    const std::string good = PrinterAnswer(2);
    const std::pair<std::string, const char*> bad[] = {
        {"", "empty"},
        {"garbage", "garbage"},
        {good.substr(0, good.size() / 2), "truncated"},
        {PrinterAnswer(2, IPP_STATUS_ERROR_BAD_REQUEST), "bad request"},
    };
    for (const auto& [bytes, what] : bad) {
        std::vector<Stock> untouched(1);
        EXPECT_EQ(StocksFromIppAnswer(bytes, untouched), kPrinterStockBadAnswerErr) << what;
        EXPECT_EQ(untouched.size(), 1u) << what;
    }
}

// --- addresses ---

TEST(PrinterPapersAddress, HostPortLiteralsAndDeviceUris)
{
    struct Case {
        const char* in;
        const char* host; // null: refused
        int port;
    };
    const Case cases[] = {
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
        {"[::1]x", nullptr, 0},
    };
    for (const Case& c : cases) {
        const auto a = ParsePrinterAddress(c.in);
        if (!c.host) {
            EXPECT_FALSE(a) << c.in;
            continue;
        }
        ASSERT_TRUE(a) << c.in;
        EXPECT_EQ(a->host, c.host) << c.in;
        EXPECT_EQ(a->port, c.port) << c.in;
    }
}

// --- scripted servers ---

ScriptedServer::Script Answer(std::string response)
{
    return [response](int fd, const std::atomic<bool>& stopping) {
        if (ReadHttpRequest(fd, stopping))
            WriteAll(fd, response);
    };
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

    // Parsed back with libcups: operation, id and the operation attributes in their order.
    Ipp sent(ippNew());
    struct Reader {
        const std::string* s;
        size_t at = 0;
    } reader{&request};
    auto readCb = [](void* ctx, ipp_uchar_t* buf, size_t len) -> ssize_t {
        auto* r = static_cast<Reader*>(ctx);
        const size_t n = std::min(len, r->s->size() - r->at);
        std::memcpy(buf, r->s->data() + r->at, n);
        r->at += n;
        return static_cast<ssize_t>(n);
    };
    ASSERT_EQ(ippReadIO(&reader, readCb, 1, nullptr, sent.get()), IPP_STATE_DATA);
    EXPECT_EQ(ippGetOperation(sent.get()), IPP_OP_GET_PRINTER_ATTRIBUTES);
    EXPECT_EQ(ippGetRequestId(sent.get()), 1);
    std::vector<std::string> attrs;
    for (ipp_attribute_t* a = ippFirstAttribute(sent.get()); a; a = ippNextAttribute(sent.get())) {
        char value[256];
        ippAttributeString(a, value, sizeof value);
        attrs.push_back(std::string(ippGetName(a)) + " (" + ippTagString(ippGetValueTag(a)) + ") " + value);
    }
    const std::vector<std::string> expected = {
        "attributes-charset (charset) utf-8",
        "attributes-natural-language (naturalLanguage) en",
        "printer-uri (uri) http://" + server.address(),
        "document-format (mimeMediaType) application/octet-stream",
        "requested-attributes (keyword) media-col-database",
    };
    EXPECT_EQ(attrs, expected);
}

TEST_F(PrinterPapersFetch, BadAnswersFailAndKeepThePreviousList)
{
    {
        ScriptedServer good(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
        ASSERT_EQ(RetrievePrinterStockLibrary(good.address()), noErr);
    }
    const auto before = PrinterStockList();
    ASSERT_EQ(before->size(), 3u);

    const std::string valid = PrinterAnswer(3);
    const std::string huge(4u << 20, '\x01');
    struct Case {
        const char* what;
        std::string response;
    };
    const Case cases[] = {
        {"garbage", HttpResponse("200 OK", "this is not IPP at all")},
        {"truncated IPP", HttpResponse("200 OK", valid).substr(0, HttpResponse("200 OK", valid).size() - 40)},
        {"truncated IPP, close-delimited", HttpResponse("200 OK", valid.substr(0, valid.size() / 2), false)},
        {"HTTP 500", HttpResponse("500 Internal Server Error", valid)},
        {"4 MiB announced", HttpResponse("200 OK", huge)},
        {"4 MiB close-delimited", HttpResponse("200 OK", huge, false)},
        {"bad-request", HttpResponse("200 OK", PrinterAnswer(3, IPP_STATUS_ERROR_BAD_REQUEST))},
        {"not HTTP", "SSH-2.0-OpenSSH\r\n"},
        {"closed at once", ""},
    };
    for (const Case& c : cases) {
        ScriptedServer server(Answer(c.response));
        EXPECT_EQ(RetrievePrinterStockLibrary(server.address(), {5000, 5000, 250}), kPrinterStockBadAnswerErr)
            << c.what;
        EXPECT_EQ(PrinterStockList(), before) << c.what << ": the previous list stays";
    }
}

// How long a fetch takes and what it answers.
std::pair<OSStatus, double> timedFetch(const std::string& address, const PrinterStockFetchLimits& limits = {},
                                       const std::atomic<int>* cancel = nullptr)
{
    const auto t0 = Clock::now();
    const OSStatus s = RetrievePrinterStockLibrary(address, limits, cancel);
    return {s, std::chrono::duration<double>(Clock::now() - t0).count()};
}

void holdOpen(int fd, const std::atomic<bool>& stopping)
{
    while (!stopping) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 50) > 0) {
            char buf[4096];
            if (::recv(fd, buf, sizeof buf, 0) <= 0)
                return;
        }
    }
}

TEST_F(PrinterPapersFetch, RefusedConnectionFailsAtOnce)
{
    const int port = FreeLoopbackPort();
    testing::internal::CaptureStderr();
    const auto [status, seconds] = timedFetch("127.0.0.1:" + std::to_string(port));
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, kPrinterStockNoConnectionErr);
    EXPECT_LT(seconds, 1.0);
    EXPECT_NE(err.find("Unable to connect to server: Connection refused"), std::string::npos) << err;
}

TEST_F(PrinterPapersFetch, BlackHoleGivesUpWithinTheConnectLimit)
{
    ScriptedServer hole(nullptr, ScriptedServer::Kind::BlackHole);
    testing::internal::CaptureStderr();
    const auto [status, seconds] = timedFetch(hole.address());
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, kPrinterStockNoConnectionErr);
    EXPECT_GE(seconds, 4.5);
    EXPECT_LE(seconds, 6.0);
    EXPECT_NE(err.find("Unable to connect to server: Connection timed out"), std::string::npos) << err;
}

TEST_F(PrinterPapersFetch, TarpitAndDripEndAtTheDeadline)
{
    // A tarpit takes the request and never answers; a drip answers one byte every 0.9 s, so
    // no single read ever waits long enough to time out.
    ScriptedServer tarpit([](int fd, const std::atomic<bool>& stopping) {
        ReadHttpRequest(fd, stopping);
        holdOpen(fd, stopping);
    });
    ScriptedServer drip([](int fd, const std::atomic<bool>& stopping) {
        if (!ReadHttpRequest(fd, stopping))
            return;
        const std::string answer = HttpResponse("200 OK", PrinterAnswer(50));
        for (char c : answer) {
            if (stopping || !WriteAll(fd, std::string(1, c)))
                return;
            for (int i = 0; i < 9 && !stopping; ++i)
                std::this_thread::sleep_for(100ms);
        }
    });
    const PrinterStockFetchLimits limits{5000, 3000, 250};
    for (const ScriptedServer* s : {&tarpit, &drip}) {
        const auto [status, seconds] = timedFetch(s->address(), limits);
        EXPECT_EQ(status, kPrinterStockBadAnswerErr);
        EXPECT_GE(seconds, 2.9);
        EXPECT_LE(seconds, 4.5);
    }
    EXPECT_TRUE(PrinterStockList()->empty());
}

TEST_F(PrinterPapersFetch, CancelEndsABlockedFetch)
{
    ScriptedServer tarpit([](int fd, const std::atomic<bool>& stopping) {
        ReadHttpRequest(fd, stopping);
        holdOpen(fd, stopping);
    });
    ScriptedServer hole(nullptr, ScriptedServer::Kind::BlackHole);
    for (const ScriptedServer* s : {&tarpit, &hole}) {
        std::atomic<int> cancel{0};
        std::thread canceller([&cancel] {
            std::this_thread::sleep_for(300ms);
            cancel = 1;
        });
        const auto [status, seconds] = timedFetch(s->address(), {}, &cancel);
        canceller.join();
        EXPECT_NE(status, noErr);
        EXPECT_LT(seconds, 1.0);
    }
}

} // namespace
} // namespace talmo::test
