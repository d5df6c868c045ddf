// The printer's paper list: keyword rules, media collections built with libcups, addresses,
// answers good and bad from scripted loopback servers, and the limits against printers that
// never answer.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

namespace talmo::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using O = std::optional<std::string_view>;

// Rows that the real printer's list (ippeveprinter-test) does not reach.
TEST(PrinterPapersKeywords, FoldingPrecedenceAndFirstEdgeRules)
{
    for (const auto& [k, v] :
         {std::pair<const char*, int32_t>{"YELLOW", 3}, {"custom1", 15}, {"Custom7", 21}, {"custom8", 10}, {"", 10}})
        EXPECT_EQ(convertTPIFColorToIndex(k), v) << k;

    struct Type {
        O type, pre, rec;
        int32_t order, expected;
    };
    for (const Type& c :
         {Type{"bond", "pre-printed", {}, kNotSet, 13}, Type{"form", "pre-printed", "standard", kNotSet, 3},
          Type{"x", "blank", "standard", kNotSet, 10}, Type{"x", {}, "none", kNotSet, 10},
          Type{"x", {}, "tinted", 5, 6}, Type{"x", {}, {}, kNotSet, 7}})
        EXPECT_EQ(convertTPIFTypeToIndex(c.type, c.pre, c.rec, c.order), c.expected)
            << *c.type << "/" << c.pre.value_or("-") << "/" << c.rec.value_or("-");

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

    struct Size {
        int x, y;
        int32_t expected;
    };
    for (const Size& c : {Size{21600, 35600, 1}, Size{42000, 29700, 5}, Size{33000, 48800, 65},
                          Size{21590, 27940, kNotSet}, Size{33500, 48800, kNotSet}})
        EXPECT_EQ(GetSizeForStockDimensions(c.x, c.y), c.expected) << c.x << " x " << c.y;
}

TEST(PrinterPapersMediaCol, RulesOfTheConversion)
{
    auto integer = [](const char* name, int v) {
        return [name, v](ipp_t* c) { ippAddInteger(c, IPP_TAG_ZERO, IPP_TAG_INTEGER, name, v); };
    };
    struct Case {
        const char* what;
        std::function<void(ipp_t*)> fill;
        std::function<int32_t(const Stock&)> field;
        int32_t expected;
    };
    const Case cases[] = {
        {"colour as a name",
         [](ipp_t* c) { ippAddString(c, IPP_TAG_ZERO, IPP_TAG_NAME, "media-color", nullptr, "Blue"); }, &Stock::color,
         2},
        {"no type: no refinement", [](ipp_t* c) { AddKeyword(c, "media-recycled", "standard"); }, &Stock::type,
         kNotSet},
        {"hole count 4", integer("media-hole-count", 4), &Stock::punched, 2},
        {"hole count 5", integer("media-hole-count", 5), &Stock::punched, kNotSet},
        {"weight as text", [](ipp_t* c) { AddKeyword(c, "media-weight-metric", "90"); }, &Stock::weight, kNotSet},
        {"any other size member is the length",
         [](ipp_t* c) {
             Ipp size(ippNew());
             ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "x-dimension", 12345);
             ippAddInteger(size.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "height", 21000);
             ippAddCollection(c, IPP_TAG_ZERO, "media-size", size.get());
         },
         &Stock::size, 4},
        {"names compare exactly", [](ipp_t* c) { AddKeyword(c, "Media-Color", "red"); }, &Stock::color, kNotSet},
    };
    for (const Case& c : cases) {
        Ipp col = MediaCol(c.fill);
        EXPECT_EQ(c.field(StockFromMediaCollection(col.get())), c.expected) << c.what;
    }
}

TEST(PrinterPapersMediaCol, EveryCollectionOfTheAnswerInOrderOrNone)
{
    std::vector<Stock> stocks;
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(3), stocks), noErr);
    ASSERT_EQ(stocks.size(), 3u);
    EXPECT_EQ(stocks[2].customName(), std::string("Paper 2"));
    EXPECT_EQ(stocks[2].weight(), 82);
    stocks.clear();
    ASSERT_EQ(StocksFromIppAnswer(PrinterAnswer(0), stocks), noErr);
    EXPECT_TRUE(stocks.empty());

    const std::string good = PrinterAnswer(2);
    for (const std::string& bytes : {std::string(), std::string("garbage"), good.substr(0, good.size() / 2),
                                     PrinterAnswer(2, IPP_STATUS_ERROR_BAD_REQUEST)}) {
        std::vector<Stock> untouched(1);
        EXPECT_EQ(StocksFromIppAnswer(bytes, untouched), kPrinterStockBadAnswerErr) << bytes.size() << " bytes";
        EXPECT_EQ(untouched.size(), 1u);
    }
}

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
        ASSERT_EQ(bool(a), c.host != nullptr) << c.in;
        if (a) {
            EXPECT_EQ(a->host, c.host) << c.in;
            EXPECT_EQ(a->port, c.port) << c.in;
        }
    }
}

class PrinterPapersFetch : public ::testing::Test {
protected:
    void SetUp() override { ResetPrinterStockList(); }
    void TearDown() override { ResetPrinterStockList(); }

    // Status, seconds taken and what went to stderr.
    static std::tuple<OSStatus, double, std::string> timedFetch(const std::string& address,
                                                                const PrinterStockFetchLimits& limits)
    {
        testing::internal::CaptureStderr();
        const auto t0 = Clock::now();
        const OSStatus s = RetrievePrinterStockLibrary(address, limits);
        const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
        return {s, seconds, testing::internal::GetCapturedStderr()};
    }
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
    const std::string valid = PrinterAnswer(3);
    const std::string whole = HttpResponse("200 OK", valid);
    const std::string huge(4u << 20, '\x01');
    const std::pair<const char*, std::string> cases[] = {
        {"garbage", HttpResponse("200 OK", "this is not IPP at all")},
        {"truncated IPP", whole.substr(0, whole.size() - 40)},
        {"truncated IPP, close-delimited", HttpResponse("200 OK", valid.substr(0, valid.size() / 2), false)},
        {"HTTP 500", HttpResponse("500 Internal Server Error", valid)},
        {"4 MiB announced", HttpResponse("200 OK", huge)},
        {"4 MiB close-delimited", HttpResponse("200 OK", huge, false)},
        {"bad-request", HttpResponse("200 OK", PrinterAnswer(3, IPP_STATUS_ERROR_BAD_REQUEST))},
        {"not HTTP", "SSH-2.0-OpenSSH\r\n"},
        {"closed at once", ""},
    };
    for (const auto& [what, response] : cases) {
        ScriptedServer server(Answer(response));
        EXPECT_EQ(RetrievePrinterStockLibrary(server.address(), {5000, 5000, 250}), kPrinterStockBadAnswerErr) << what;
        EXPECT_EQ(PrinterStockList(), before) << what << ": the previous list stays";
    }
}

// Each limit once. The black hole never completes the handshake (connect limit); the tarpit
// takes the request and never answers (a blocked read meets the deadline); the drip sends a
// byte every 0.9 s, so no read ever waits long (only the overall deadline ends it).
TEST_F(PrinterPapersFetch, SilentPrintersEndAtTheirLimit)
{
    ScriptedServer hole(nullptr, ScriptedServer::Kind::BlackHole);
    ScriptedServer tarpit(Tarpit);
    ScriptedServer drip(Drip(HttpResponse("200 OK", PrinterAnswer(50)), 900ms));
    const std::string refused = "127.0.0.1:" + std::to_string(FreeLoopbackPort());
    struct Case {
        const char* what;
        std::string address;
        OSStatus status;
        double from, to;
        const char* message;
    };
    const Case cases[] = {
        {"refused", refused, kPrinterStockNoConnectionErr, 0, 1.0, "Unable to connect to server: Connection refused"},
        {"black hole", hole.address(), kPrinterStockNoConnectionErr, 0.9, 2.5,
         "Unable to connect to server: Connection timed out"},
        {"tarpit", tarpit.address(), kPrinterStockBadAnswerErr, 1.9, 3.5, ""},
        {"drip", drip.address(), kPrinterStockBadAnswerErr, 1.9, 3.5, ""},
    };
    for (const Case& c : cases) {
        const auto [status, seconds, err] = timedFetch(c.address, {1000, 2000, 100});
        EXPECT_EQ(status, c.status) << c.what;
        EXPECT_GE(seconds, c.from) << c.what;
        EXPECT_LE(seconds, c.to) << c.what;
        EXPECT_NE(err.find(c.message), std::string::npos) << c.what << ": " << err;
    }
    EXPECT_TRUE(PrinterStockList()->empty());
}

} // namespace
} // namespace talmo::test
