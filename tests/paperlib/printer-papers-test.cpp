// The printer's paper list: keyword rules, media collections built with libcups, addresses,
// a real IPP printer (ippeveprinter, golden file), answers good and bad from scripted loopback
// servers, the limits against printers that never answer, and the thread that fetches it.
#include "paperlib-fixture.h"

#include <filesystem>
#include <functional>
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
    using T = std::tuple<O, O, O, int32_t, int32_t>; // type, pre-printed, recycled, order count, result
    for (const auto& [type, pre, rec, order, expected] :
         {T{"bond", "pre-printed", {}, kNotSet, 13}, T{"form", "pre-printed", "standard", 0, 3},
          T{"x", "blank", "standard", kNotSet, 10}, T{"x", {}, "none", kNotSet, 10}, T{"x", {}, "tinted", 5, 6},
          T{"x", {}, {}, kNotSet, 7}})
        EXPECT_EQ(convertTPIFTypeToIndex(type, pre, rec, order), expected) << *type << "/" << order;
    using C = std::tuple<O, O, int32_t, int32_t>; // front, back, sides coated, coating type
    for (const auto& [front, back, sides, coating] :
         {C{{}, {}, 77, 77}, C{"none", "none", 1, kNotSet}, C{"glossy", "matte", 3, 1}, C{"satin", {}, 2, 4},
          C{{}, "matte", 2, 5}, C{"none", {}, 77, 77}, C{{}, "None", 77, 77}}) {
        int32_t s = 77, c = 77;
        convertTPIFSidesCoatedAndCoatingType(front, back, s, c);
        EXPECT_EQ(std::pair(s, c), std::pair(sides, coating)) << front.value_or("-") << "/" << back.value_or("-");
    }
    using S = std::tuple<int, int, int32_t>;
    for (const auto& [x, y, size] : {S{21600, 35600, 1}, S{42000, 29700, 5}, S{33000, 48800, 65},
                                     S{21590, 27940, kNotSet}, S{33500, 48800, kNotSet}})
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
    for (const auto& [what, fill, field, expected] : cases) {
        Ipp col(ippNew());
        fill(col.get());
        EXPECT_EQ((StockFromMediaCollection(col.get()).*field)(), expected) << what;
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
        {"dnssd://Press._ipp._tcp.local./?uuid=1", nullptr, 0},
        {"", nullptr, 0},
        {"host:70000", nullptr, 0},
        {"host:12a", nullptr, 0},
        {"[::1]x", nullptr, 0}};
    for (const auto& [in, host, port] : cases) {
        const auto a = ParsePrinterAddress(in).value_or(PrinterAddress{"refused", 0});
        EXPECT_EQ(std::pair(a.host, a.port), std::pair(std::string(host ? host : "refused"), port)) << in;
    }
    // What the panel host's Open fetches for a printer's device URI.
    const std::pair<const char*, const char*> uris[] = {{"ipp://press.example:631/ipp/print", "press.example:631"},
                                                        {"socket://10.1.1.1", "10.1.1.1"},
                                                        {"lpd://ops@[fe80::2]:515/queue", "[fe80::2]:515"},
                                                        {"usb://Talmo/Press?serial=1", "Talmo"},
                                                        {"pap://zone/Press/LaserWriter", nullptr},
                                                        {"PAP://zone/Press", nullptr},
                                                        {"dnssd://Press._ipp._tcp.local./?uuid=1", nullptr},
                                                        {"file:///dev/null", nullptr},
                                                        {"", nullptr}};
    for (const auto& [uri, host] : uris)
        EXPECT_EQ(PrinterHostFromDeviceURI(uri), host ? std::optional<std::string>(host) : std::nullopt) << uri;
}

// A real IPP printer declaring 31 production papers: each paper as `talmo papers fetch` writes
// it, against a golden file, and every form of the address reaching it.
TEST(PrinterPapersIppEvePrinter, EveryPaperConvertedInThePrinterOrder)
{
    IppEvePrinter printer;
    ASSERT_EQ(printer.start(TALMO_SOURCE_DIR "/tests/paperlib/data/papers-30.conf"), "") << "no test printer";
    const std::string port = std::to_string(printer.port());
    for (const std::string& address : {"[::1]:" + port, "ipp://localhost:" + port + "/ipp/print"}) {
        ResetPrinterStockList();
        ASSERT_EQ(RetrievePrinterStockLibrary(address), noErr) << address;
        EXPECT_EQ(PrinterStockList()->size(), 31u) << address;
    }
    EXPECT_TRUE(PrinterMoreInfoURI("localhost:" + port) && !PrinterMoreInfoURI("localhost:1")) << "for that one only";
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

// The request as sent, then every way a fetch fails (status, time, reason; the last list stays).
// Each limit once: a black hole (connect), a tarpit (a blocked read), a drip of a byte every 0.9 s
// (no read waits long; only the overall deadline ends it).
TEST(PrinterPapersFetch, TheRequestAndEveryWayAFetchFails)
{
    std::string request;
    {
        ScriptedServer good([&request](int fd, const std::atomic<bool>& stopping) {
            if (ReadHttpRequest(fd, stopping, &request))
                WriteAll(fd, HttpResponse("200 OK", PrinterAnswer(4)));
        });
        ASSERT_EQ(RetrievePrinterStockLibrary(good.address()), noErr);
        // The same request written by libcups: operation, id and the attributes in their order.
        Ipp expected(ippNew());
        ippSetOperation(expected.get(), IPP_OP_GET_PRINTER_ATTRIBUTES);
        ippSetRequestId(expected.get(), 1);
        const std::string uri = "http://" + good.address();
        for (const auto& [tag, name, value] : {std::tuple{IPP_TAG_CHARSET, "attributes-charset", "utf-8"},
                                               {IPP_TAG_LANGUAGE, "attributes-natural-language", "en"},
                                               {IPP_TAG_URI, "printer-uri", uri.c_str()},
                                               {IPP_TAG_MIMETYPE, "document-format", "application/octet-stream"}})
            ippAddString(expected.get(), IPP_TAG_OPERATION, tag, name, nullptr, value);
        const char* const requested[] = {"media-col-database", "printer-more-info"};
        ippAddStrings(expected.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", 2, nullptr,
                      requested);
        EXPECT_EQ(request, IppBytes(expected.get()));
    }
    const auto before = PrinterStockList();
    EXPECT_EQ(before->size(), 4u);
    const std::string valid = PrinterAnswer(3), whole = HttpResponse("200 OK", valid), huge(4u << 20, '\x01');
    std::string unknownStatus = valid;
    unknownStatus[2] = '\x62', unknownStatus[3] = '\x20'; // beyond libcups' status enumeration
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
        {"status 0x6220", serve(HttpResponse("200 OK", unknownStatus)), kBad, 0, 1, ""},
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
    ResetPrinterStockList();
}

constexpr uint32_t kList = kEventKindPaperList, kProgress = kEventKindProgress;

struct Recorder : PaperListEventTarget {
    void postUserEvent(uint32_t eventClass, uint32_t eventKind) override
    {
        EXPECT_EQ(eventClass, kEventClassTPDE);
        events.push_back(eventKind);
    }
    std::vector<uint32_t> events;
};

class FetchThread : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetPrinterStockList();
        window_ = RegisterEventTarget(&recorder_);
    }
    void TearDown() override
    {
        MyRemoveThread();
        UnregisterEventTarget(window_);
        ResetPrinterStockList();
    }
    template <class F> bool runUntil(F done, std::chrono::milliseconds limit = 10s)
    {
        for (const auto end = std::chrono::steady_clock::now() + limit; !done();) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            RunLoop::current()->runFor(10ms);
        }
        return true;
    }
    OSStatus spawn(const std::string& address) { return MySpawnThread("com.talmo.print.pde", address, window_); }

    Recorder recorder_;
    WindowRef window_ = 0;
};

// The thread's own first fetch, a refetch, the outcome after a success and a failure, 208, 205.
TEST_F(FetchThread, TheConversationAndTheEventsItLeadsTo)
{
    std::atomic<int> answers{0};
    ScriptedServer printer([&answers](int fd, const std::atomic<bool>& stopping) {
        if (!ReadHttpRequest(fd, stopping))
            return;
        const int n = ++answers;
        WriteAll(fd, n == 3 ? HttpResponse("500 Internal Server Error", "") : HttpResponse("200 OK", PrinterAnswer(n)));
    });
    Recorder other;
    const WindowRef otherWindow = RegisterEventTarget(&other);
    ASSERT_EQ(spawn(printer.address()), noErr);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusNone);
    EXPECT_EQ(SendMessageToThread(kMsgFetch), kMessagePortIsInvalid) << "dropped before the thread announced itself";
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 1; }));
    EXPECT_EQ(std::pair(gPrinterStockBiDiStatus.load(), PrinterStockList()->size()), std::pair(kBiDiStatusReady, 1ul));
    EXPECT_EQ(SendMessageToThread(999), kMessagePortSuccess) << "unknown ids are taken and ignored";
    const std::tuple<int32_t, MessageData, size_t, int32_t, size_t> steps[] = {
        // message, its data, events to both windows so far, state, papers
        {kMsgFetch, {}, 2, kBiDiStatusReady, 2},
        {kMsgAskOutcome, WindowRefData(otherWindow), 4, kBiDiStatusReady, 2},
        {kMsgFetch, {}, 5, kBiDiStatusFailed, 2},
        {kMsgAskOutcome, {}, 7, kBiDiStatusFailed, 2},
        {kMsgProgressTick, {}, 8, kBiDiStatusFailed, 2},
        {kMsgDelayedDone, {}, 9, kBiDiStatusReady, 2}};
    for (const auto& [message, data, count, state, papers] : steps) {
        ASSERT_EQ(SendMessageToThread(message, data), kMessagePortSuccess) << message;
        ASSERT_TRUE(runUntil([&] { return recorder_.events.size() + other.events.size() == count; })) << message;
        EXPECT_EQ(std::pair(gPrinterStockBiDiStatus.load(), PrinterStockList()->size()), std::pair(state, papers))
            << message;
    }
    EXPECT_EQ(other.events, (std::vector<uint32_t>{kProgress, kList}));
    EXPECT_EQ(recorder_.events, (std::vector<uint32_t>{kList, kList, kList, kProgress, kList, kProgress, kList}));
    EXPECT_EQ(printer.connections(), 3);
    UnregisterEventTarget(otherWindow);
}

// Each close ends a blocked fetch within 1 s, silently, leaving no thread or descriptor behind.
TEST_F(FetchThread, OpenCloseCyclesEndBlockedFetchesAndLeaveNothing)
{
    ScriptedServer tarpit(Tarpit);
    auto count = [](const char* folder) {
        auto it = std::filesystem::directory_iterator(folder);
        return std::distance(begin(it), end(it));
    };
    const auto threads = count("/proc/self/task"), fds = count("/proc/self/fd");
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(spawn(tarpit.address()), noErr);
        ASSERT_TRUE(runUntil([&] { return tarpit.connections() == i + 1; })) << "cycle " << i;
        const auto t0 = std::chrono::steady_clock::now();
        MyRemoveThread();
        EXPECT_LT(std::chrono::steady_clock::now() - t0, 1s) << "cycle " << i;
    }
    EXPECT_EQ(SendMessageToThread(kMsgFetch), kMessagePortIsInvalid);
    runUntil([&] { return count("/proc/self/task") == threads && count("/proc/self/fd") == fds; }, 3s);
    EXPECT_EQ(count("/proc/self/task"), threads);
    EXPECT_EQ(count("/proc/self/fd"), fds);
    EXPECT_TRUE(recorder_.events.empty()) << "a cancelled fetch answers nothing";
}

} // namespace
} // namespace talmo::test
