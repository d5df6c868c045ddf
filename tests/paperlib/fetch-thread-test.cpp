// The paper list thread: its conversation with the main thread, the events it leads to, and
// how it ends against printers that never answer.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <filesystem>

namespace talmo::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class Recorder : public PaperListEventTarget {
public:
    void postUserEvent(uint32_t eventClass, uint32_t eventKind) override
    {
        EXPECT_EQ(eventClass, kEventClassTPDE);
        events.push_back(eventKind);
    }
    std::vector<uint32_t> events;
};

ScriptedServer::Script Answer(std::string response)
{
    return [response](int fd, const std::atomic<bool>& stopping) {
        if (ReadHttpRequest(fd, stopping))
            WriteAll(fd, response);
    };
}

void HoldOpen(int fd, const std::atomic<bool>& stopping)
{
    ReadHttpRequest(fd, stopping);
    while (!stopping) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 50) > 0) {
            char buf[4096];
            if (::recv(fd, buf, sizeof buf, 0) <= 0)
                return;
        }
    }
}

size_t CountEntries(const char* folder)
{
    size_t n = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(folder))
        ++n;
    return n;
}

class FetchThread : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResetPrinterStockList();
        window_ = RegisterEventTarget(&recorder_);
        SetPaperListFetchLimits({});
    }
    void TearDown() override
    {
        MyRemoveThread();
        UnregisterEventTarget(window_);
        ResetPrinterStockList();
    }
    // Runs the main run loop until `done` or the time limit; true when done.
    template <class F> bool runUntil(F done, std::chrono::milliseconds limit = 10s)
    {
        const auto end = Clock::now() + limit;
        while (!done()) {
            if (Clock::now() > end)
                return false;
            RunLoop::current()->runFor(10ms);
        }
        return true;
    }
    void runFor(std::chrono::milliseconds d)
    {
        runUntil([] { return false; }, d);
    }
    OSStatus spawn(const std::string& address) { return MySpawnThread("com.talmo.print.pde", address, window_); }

    Recorder recorder_;
    WindowRef window_ = 0;
};

constexpr uint32_t kList = kEventKindPaperList;
constexpr uint32_t kProgress = kEventKindProgress;

TEST_F(FetchThread, FirstFetchStartsByItselfAndFillsTheList)
{
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(3))));
    ASSERT_EQ(spawn(printer.address()), noErr);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusNone);
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    EXPECT_EQ(recorder_.events, std::vector<uint32_t>{kList});
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusReady);
    EXPECT_EQ(PrinterStockList()->size(), 3u);
}

TEST_F(FetchThread, FetchBeforeTheThreadAnnouncedItselfIsDropped)
{
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(1))));
    ASSERT_EQ(spawn(printer.address()), noErr);
    EXPECT_EQ(SendMessageToThread(kMsgFetch, WindowRefData(window_)), kMessagePortIsInvalid);
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    EXPECT_EQ(SendMessageToThread(999), kMessagePortSuccess) << "unknown ids are taken and ignored";
    runFor(500ms);
    EXPECT_EQ(recorder_.events.size(), 1u) << "only the thread's own first fetch";
    EXPECT_EQ(printer.connections(), 1);
}

TEST_F(FetchThread, AskingForTheOutcomeRepeatsTheLastResult)
{
    Recorder other;
    const WindowRef otherWindow = RegisterEventTarget(&other);

    // After a failure: 203 again, after the progress event of the state request.
    ASSERT_EQ(spawn("127.0.0.1:" + std::to_string(FreeLoopbackPort())), noErr);
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusFailed);
    ASSERT_EQ(SendMessageToThread(kMsgAskOutcome, WindowRefData(otherWindow)), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return other.events.size() == 2; }));
    EXPECT_EQ(other.events, (std::vector<uint32_t>{kProgress, kList})) << "to the window named in the data";
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusFailed);
    EXPECT_EQ(recorder_.events.size(), 1u);
    MyRemoveThread();

    // After a success: 204.
    ScriptedServer printer(Answer(HttpResponse("200 OK", PrinterAnswer(2))));
    recorder_.events.clear();
    ASSERT_EQ(spawn(printer.address()), noErr);
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    ASSERT_EQ(SendMessageToThread(kMsgAskOutcome, {}), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 3; }));
    EXPECT_EQ(recorder_.events, (std::vector<uint32_t>{kList, kProgress, kList}));
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusReady);
    UnregisterEventTarget(otherWindow);
}

TEST_F(FetchThread, RefetchReplacesTheListAndFailureKeepsIt)
{
    std::atomic<int> answers{0};
    ScriptedServer printer([&answers](int fd, const std::atomic<bool>& stopping) {
        if (!ReadHttpRequest(fd, stopping))
            return;
        const int n = ++answers;
        WriteAll(fd, n == 3 ? HttpResponse("500 Internal Server Error", "") : HttpResponse("200 OK", PrinterAnswer(n)));
    });
    ASSERT_EQ(spawn(printer.address()), noErr);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 1; }));
    EXPECT_EQ(PrinterStockList()->size(), 1u);
    ASSERT_EQ(SendMessageToThread(kMsgFetch, WindowRefData(window_)), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 2; }));
    EXPECT_EQ(PrinterStockList()->size(), 2u);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusReady);
    ASSERT_EQ(SendMessageToThread(kMsgFetch, WindowRefData(window_)), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 3; }));
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusFailed);
    EXPECT_EQ(PrinterStockList()->size(), 2u) << "a failed fetch keeps the list";
}

TEST_F(FetchThread, ProgressTickAndDelayedAnswer)
{
    ASSERT_EQ(spawn("127.0.0.1:" + std::to_string(FreeLoopbackPort())), noErr);
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    ASSERT_EQ(SendMessageToThread(kMsgProgressTick, {}), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 2; }));
    EXPECT_EQ(recorder_.events.back(), kProgress);
    ASSERT_EQ(SendMessageToThread(kMsgDelayedDone, {}), kMessagePortSuccess);
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 3; }));
    EXPECT_EQ(recorder_.events.back(), kList);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusReady) << "205 answers 204 whatever the fetch did";
}

TEST_F(FetchThread, QuitWhileAFetchIsBlockedReturnsWithinOneSecond)
{
    ScriptedServer tarpit(HoldOpen);
    ASSERT_EQ(spawn(tarpit.address()), noErr);
    ASSERT_TRUE(runUntil([&] { return tarpit.connections() == 1; }));
    runFor(200ms);
    const auto t0 = Clock::now();
    MyRemoveThread();
    const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
    EXPECT_LT(seconds, 1.0);
    runFor(300ms);
    EXPECT_TRUE(recorder_.events.empty()) << "a cancelled fetch answers nothing";
    EXPECT_EQ(SendMessageToThread(kMsgFetch), kMessagePortIsInvalid);
}

// Printers that never answer end in the failed state within the limits, while the main loop
// keeps running: a ticker posts a task every 5 ms and the largest delay until it runs is the
// main loop's latency.
TEST_F(FetchThread, SilentPrintersEndInTheFailedStateWithTheMainLoopResponsive)
{
    ScriptedServer hole(nullptr, ScriptedServer::Kind::BlackHole);
    ScriptedServer tarpit(HoldOpen);
    ScriptedServer drip([](int fd, const std::atomic<bool>& stopping) {
        if (!ReadHttpRequest(fd, stopping))
            return;
        for (char c : HttpResponse("200 OK", PrinterAnswer(20))) {
            if (stopping || !WriteAll(fd, std::string(1, c)))
                return;
            for (int i = 0; i < 9 && !stopping; ++i)
                std::this_thread::sleep_for(100ms);
        }
    });
    SetPaperListFetchLimits({1000, 3000, 250});
    const std::pair<const char*, const ScriptedServer*> printers[] = {
        {"black hole", &hole}, {"tarpit", &tarpit}, {"drip", &drip}};
    for (const auto& [what, server] : printers) {
        recorder_.events.clear();
        const std::shared_ptr<RunLoop> mainLoop = RunLoop::current();
        std::atomic<bool> ticking{true};
        std::atomic<int64_t> worstUs{0};
        std::atomic<int> ticks{0};
        std::thread ticker([&] {
            while (ticking) {
                const auto posted = Clock::now();
                mainLoop->enqueue(
                    [posted, &worstUs, &ticks] {
                        const int64_t us =
                            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - posted).count();
                        if (us > worstUs)
                            worstUs = us;
                        ++ticks;
                    },
                    100ms);
                std::this_thread::sleep_for(5ms);
            }
        });
        const auto t0 = Clock::now();
        ASSERT_EQ(spawn(server->address()), noErr);
        const bool ended = runUntil([&] { return !recorder_.events.empty(); }, 8s);
        const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
        ticking = false;
        ticker.join();
        RunLoop::current()->runPending();
        EXPECT_TRUE(ended) << what;
        EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusFailed) << what;
        EXPECT_LE(seconds, 5.0) << what;
        EXPECT_GT(ticks, 100) << what << ": the main loop ran during the fetch";
        std::printf("%s: failed after %.2f s; main loop latency at most %.2f ms over %d ticks\n", what, seconds,
                    worstUs / 1000.0, ticks.load());
        RecordProperty(std::string(what) + " main loop latency us", std::to_string(worstUs.load()));
        MyRemoveThread();
    }
}

TEST_F(FetchThread, OpenCloseCyclesLeaveNoThreadsOrDescriptors)
{
    ScriptedServer tarpit(HoldOpen);
    SetPaperListFetchLimits({5000, 15000, 50});
    runFor(50ms);
    const size_t threads = CountEntries("/proc/self/task");
    const size_t fds = CountEntries("/proc/self/fd");
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(spawn(tarpit.address()), noErr);
        ASSERT_TRUE(runUntil([&] { return tarpit.connections() == i + 1; })) << "cycle " << i;
        MyRemoveThread();
    }
    // The tarpit's own connection threads end once they see their peer gone.
    runUntil([&] { return CountEntries("/proc/self/task") == threads && CountEntries("/proc/self/fd") == fds; }, 3s);
    EXPECT_EQ(CountEntries("/proc/self/task"), threads);
    EXPECT_EQ(CountEntries("/proc/self/fd"), fds);
}

} // namespace
} // namespace talmo::test
