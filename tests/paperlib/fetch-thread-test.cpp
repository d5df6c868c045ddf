// The paper list thread: its conversation with the main thread, the events it leads to, and
// how it ends against printers that never answer.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(SendMessageToThread(kMsgFetch, WindowRefData(window_)), kMessagePortIsInvalid)
        << "dropped before the thread announced itself";
    ASSERT_TRUE(runUntil([&] { return !recorder_.events.empty(); }));
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusReady);
    EXPECT_EQ(PrinterStockList()->size(), 3u);
    EXPECT_EQ(SendMessageToThread(999), kMessagePortSuccess) << "unknown ids are taken and ignored";
    runFor(500ms);
    EXPECT_EQ(recorder_.events, std::vector<uint32_t>{kList}) << "only the thread's own first fetch";
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
    ScriptedServer tarpit(Tarpit);
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

// A printer that never answers ends in the failed state while the main loop keeps running: a
// ticker posts a task every 5 ms and the largest delay until it runs is the loop's latency.
TEST_F(FetchThread, SilentPrinterEndsInTheFailedStateWithTheMainLoopResponsive)
{
    ScriptedServer tarpit(Tarpit);
    SetPaperListFetchLimits({1000, 3000, 100});
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
                    worstUs = std::max<int64_t>(worstUs, us);
                    ++ticks;
                },
                100ms);
            std::this_thread::sleep_for(5ms);
        }
    });
    const auto t0 = Clock::now();
    ASSERT_EQ(spawn(tarpit.address()), noErr);
    const bool ended = runUntil([&] { return !recorder_.events.empty(); }, 8s);
    const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
    ticking = false;
    ticker.join();
    RunLoop::current()->runPending();
    EXPECT_TRUE(ended);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusFailed);
    EXPECT_LE(seconds, 5.0);
    EXPECT_GT(ticks, 50) << "the main loop ran during the fetch";
    EXPECT_LT(worstUs, 1000000) << "a main loop held by the fetch waits as long as the fetch";
    RecordProperty("main loop latency us", std::to_string(worstUs.load()));
}

TEST_F(FetchThread, OpenCloseCyclesLeaveNoThreadsOrDescriptors)
{
    ScriptedServer tarpit(Tarpit);
    SetPaperListFetchLimits({5000, 15000, 50});
    runFor(50ms);
    const size_t threads = CountEntries("/proc/self/task");
    const size_t fds = CountEntries("/proc/self/fd");
    for (int i = 0; i < 20; ++i) {
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
