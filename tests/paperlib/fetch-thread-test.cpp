// The paper list thread: its conversation with the main thread, the events it leads to, and
// how it ends.
#include "paperlib/paperlib.h"
#include "ipp-answers.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace talmo::test {
namespace {

using namespace std::chrono_literals;
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

// One conversation: the thread's own first fetch, a refetch, the outcome asked for after a
// success and after a failure (to the window named in the data), the progress tick, 205.
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
    const MessageData toOther = WindowRefData(otherWindow);
    ASSERT_EQ(spawn(printer.address()), noErr);
    EXPECT_EQ(gPrinterStockBiDiStatus, kBiDiStatusNone);
    EXPECT_EQ(SendMessageToThread(kMsgFetch), kMessagePortIsInvalid) << "dropped before the thread announced itself";
    ASSERT_TRUE(runUntil([&] { return recorder_.events.size() == 1; }));
    EXPECT_EQ(std::pair(gPrinterStockBiDiStatus.load(), PrinterStockList()->size()), std::pair(kBiDiStatusReady, 1ul));
    EXPECT_EQ(SendMessageToThread(999), kMessagePortSuccess) << "unknown ids are taken and ignored";
    const std::tuple<int32_t, MessageData, size_t, int32_t, size_t> steps[] = {
        // message, its data, events to both windows so far, state, papers
        {kMsgFetch, {}, 2, kBiDiStatusReady, 2},         {kMsgAskOutcome, toOther, 4, kBiDiStatusReady, 2},
        {kMsgFetch, {}, 5, kBiDiStatusFailed, 2},        {kMsgAskOutcome, {}, 7, kBiDiStatusFailed, 2},
        {kMsgProgressTick, {}, 8, kBiDiStatusFailed, 2}, {kMsgDelayedDone, {}, 9, kBiDiStatusReady, 2}};
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

TEST_F(FetchThread, QuitWhileAFetchIsBlockedReturnsWithinOneSecond)
{
    ScriptedServer tarpit(Tarpit);
    ASSERT_EQ(spawn(tarpit.address()), noErr);
    ASSERT_TRUE(runUntil([&] { return tarpit.connections() == 1; }));
    const auto t0 = std::chrono::steady_clock::now();
    MyRemoveThread();
    EXPECT_LT(std::chrono::steady_clock::now() - t0, 1s);
    runUntil([] { return false; }, 300ms);
    EXPECT_TRUE(recorder_.events.empty()) << "a cancelled fetch answers nothing";
    EXPECT_EQ(SendMessageToThread(kMsgFetch), kMessagePortIsInvalid);
}

TEST_F(FetchThread, OpenCloseCyclesLeaveNoThreadsOrDescriptors)
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
        MyRemoveThread();
    }
    // The tarpit's own connection threads end once they see their peer gone.
    runUntil([&] { return count("/proc/self/task") == threads && count("/proc/self/fd") == fds; }, 3s);
    EXPECT_EQ(count("/proc/self/task"), threads);
    EXPECT_EQ(count("/proc/self/fd"), fds);
}

} // namespace
} // namespace talmo::test
