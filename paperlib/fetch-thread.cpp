// The paper list thread and the main thread's side of its conversation. The main side's state
// (ports, address, window, fetch state) is touched only on the main thread, in the handlers
// its run loop runs; the thread shares with it only the cancel and quit flags below.
#include "paperlib/paperlib.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <thread>

namespace talmo {

std::atomic<int32_t> gPrinterStockBiDiStatus{kBiDiStatusNone};

namespace {

// What the main thread and the request thread share: a quit flag the thread's waits watch, the
// cancel flag of its fetch, and its run loop once made.
struct ThreadShared {
    std::atomic<int> cancel{0};
    std::mutex mutex;
    std::condition_variable changed;
    bool quit = false;
    bool finished = false;
    std::shared_ptr<RunLoop> loop;
    PrinterStockFetchLimits limits;

    // Sleeps for `duration` unless told to quit first; true when not quitting.
    bool pause(std::chrono::milliseconds duration)
    {
        std::unique_lock<std::mutex> lock(mutex);
        return !changed.wait_for(lock, duration, [this] { return quit; });
    }
    bool quitting()
    {
        std::lock_guard<std::mutex> lock(mutex);
        return quit;
    }
};

// The request thread's handler context.
struct ThreadContext {
    std::shared_ptr<RemoteMessagePort> mainPort;
    std::shared_ptr<ThreadShared> shared;
};

// Main thread state.
struct MainState {
    std::shared_ptr<LocalMessagePort> mainPort;
    std::shared_ptr<RemoteMessagePort> threadPort; // null until the thread announced itself
    std::string address;
    WindowRef window = 0;
    std::shared_ptr<ThreadShared> shared;
    std::thread thread;
    PrinterStockFetchLimits limits;
};
MainState& mainState()
{
    static MainState state;
    return state;
}

std::mutex gTargetsMutex;
std::map<WindowRef, PaperListEventTarget*>& targets()
{
    static std::map<WindowRef, PaperListEventTarget*> t;
    return t;
}
WindowRef gNextWindow = 0;

// The window named in the message's first four bytes, else the start window.
void postEvent(const MessageData& data, uint32_t kind)
{
    WindowRef window = mainState().window;
    if (data.size() >= sizeof(WindowRef))
        std::memcpy(&window, data.data(), sizeof window);
    std::lock_guard<std::mutex> lock(gTargetsMutex);
    if (auto it = targets().find(window); it != targets().end() && it->second)
        it->second->postUserEvent(kEventClassTPDE, kind);
}

long taskId() { return static_cast<long>(::syscall(SYS_gettid)); }

void serverThread(const std::string& mainPortName, std::shared_ptr<ThreadShared> shared)
{
    auto finish = [&shared] {
        {
            std::lock_guard<std::mutex> lock(shared->mutex);
            shared->finished = true;
        }
        shared->changed.notify_all();
    };
    ThreadContext context{RemoteMessagePort::open(mainPortName), shared};
    if (!context.mainPort)
        return finish();
    const std::string name = "com.talmo.print.pde.Thread-" + std::to_string(taskId());
    auto port = LocalMessagePort::create(name, [&context](LocalMessagePort& p, int32_t id, const MessageData& d) {
        return ProcessClientRequest(p, id, d, &context);
    });
    if (!port)
        return finish();
    const std::shared_ptr<RunLoop> loop = RunLoop::current();
    {
        std::lock_guard<std::mutex> lock(shared->mutex);
        if (shared->quit) {
            port->invalidate();
            return finish();
        }
        shared->loop = loop;
    }
    port->addToRunLoop(loop);
    context.mainPort->send(kMsgThreadStarted, MessageData(name.begin(), name.end()), kMessageSendTimeout);
    loop->run();
    port->invalidate();
    finish();
}

} // namespace

WindowRef RegisterEventTarget(PaperListEventTarget* target)
{
    std::lock_guard<std::mutex> lock(gTargetsMutex);
    if (++gNextWindow == 0)
        ++gNextWindow;
    targets()[gNextWindow] = target;
    return gNextWindow;
}

void UnregisterEventTarget(WindowRef window)
{
    std::lock_guard<std::mutex> lock(gTargetsMutex);
    targets().erase(window);
}

MessageData WindowRefData(WindowRef window)
{
    MessageData d(sizeof window);
    std::memcpy(d.data(), &window, sizeof window);
    return d;
}

void SetPaperListFetchLimits(const PrinterStockFetchLimits& limits) { mainState().limits = limits; }

// --- the request thread ---

std::optional<MessageData> ProcessClientRequest(LocalMessagePort&, int32_t msgid, const MessageData& data, void* info)
{
    auto* context = static_cast<ThreadContext*>(info);
    ThreadShared& shared = *context->shared;
    RemoteMessagePort& main = *context->mainPort;
    switch (msgid) {
    case kMsgFetch: {
        std::optional<MessageData> reply;
        if (main.send(kMsgGetAddress, {}, kMessageSendTimeout, kMessageReplyTimeout, &reply) != kMessagePortSuccess ||
            !reply)
            return std::nullopt; // no address, no fetch, no answer
        const std::string address(reply->begin(), reply->begin() + std::min(reply->size(), kMaxAddressBytes));
        const OSStatus status = RetrievePrinterStockLibrary(address, shared.limits, &shared.cancel);
        if (!shared.quitting())
            main.send(status == noErr ? kMsgFetchDone : kMsgFetchFailed, data, kMessageSendTimeout);
        break;
    }
    case kMsgQuit: {
        {
            std::lock_guard<std::mutex> lock(shared.mutex);
            shared.quit = true;
        }
        RunLoop::current()->stop();
        break;
    }
    case kMsgDelayedDone:
        if (shared.pause(std::chrono::seconds(2)))
            main.send(kMsgFetchDone, data, kMessageSendTimeout);
        break;
    case kMsgAskOutcome: {
        std::optional<MessageData> reply;
        if (main.send(kMsgGetState, data, kMessageSendTimeout, kMessageReplyTimeout, &reply) != kMessagePortSuccess ||
            !reply || reply->size() < sizeof(int32_t))
            return std::nullopt;
        int32_t state = 0;
        std::memcpy(&state, reply->data(), sizeof state);
        main.send(state == kBiDiStatusFailed ? kMsgFetchFailed : kMsgFetchDone, data, kMessageSendTimeout);
        break;
    }
    case kMsgProgressTick:
        if (shared.pause(std::chrono::seconds(1)))
            main.send(kMsgProgress, data, kMessageSendTimeout);
        break;
    default:
        break;
    }
    return std::nullopt;
}

void ServerThreadEntryPoint(const std::string& mainPortName)
{
    std::shared_ptr<ThreadShared> shared = mainState().shared;
    if (!shared)
        shared = std::make_shared<ThreadShared>();
    serverThread(mainPortName, shared);
}

// --- the main thread ---

std::optional<MessageData> MainThreadResponseHandler(LocalMessagePort&, int32_t msgid, const MessageData& data, void*)
{
    MainState& m = mainState();
    switch (msgid) {
    case kMsgThreadStarted: {
        auto remote = RemoteMessagePort::open(std::string(data.begin(), data.end()));
        if (!remote)
            return std::nullopt;
        m.threadPort = remote;
        remote->send(kMsgFetch, {}, kMessageSendTimeout);
        gPrinterStockBiDiStatus = kBiDiStatusConnected;
        break;
    }
    case kMsgGetAddress: {
        const size_t n = std::min(m.address.size(), kMaxAddressBytes);
        return MessageData(m.address.begin(), m.address.begin() + static_cast<std::ptrdiff_t>(n));
    }
    case kMsgFetchFailed:
        gPrinterStockBiDiStatus = kBiDiStatusFailed;
        postEvent(data, kEventKindPaperList);
        break;
    case kMsgFetchDone:
        gPrinterStockBiDiStatus = kBiDiStatusReady;
        postEvent(data, kEventKindPaperList);
        break;
    case kMsgGetState: {
        const int32_t state = gPrinterStockBiDiStatus;
        // The progress event follows the reply.
        RunLoop::current()->enqueue([data] { postEvent(data, kEventKindProgress); }, std::chrono::milliseconds(100));
        MessageData reply(sizeof state);
        std::memcpy(reply.data(), &state, sizeof state);
        return reply;
    }
    case kMsgProgress:
        postEvent(data, kEventKindProgress);
        break;
    default:
        break;
    }
    return std::nullopt;
}

OSStatus MySpawnThread(const std::string& bundleIdentifier, const std::string& address, WindowRef window)
{
    MainState& m = mainState();
    if (m.shared)
        MyRemoveThread();
    m.address = address;
    m.window = window;
    gPrinterStockBiDiStatus = kBiDiStatusNone;
    const std::string name = bundleIdentifier + ".MainThread-" + std::to_string(::getpid());
    m.mainPort = LocalMessagePort::create(name, [](LocalMessagePort& p, int32_t id, const MessageData& d) {
        return MainThreadResponseHandler(p, id, d, nullptr);
    });
    if (!m.mainPort)
        return paramErr;
    m.mainPort->addToRunLoop(RunLoop::current());
    m.shared = std::make_shared<ThreadShared>();
    m.shared->limits = m.limits;
    try {
        m.thread = std::thread(serverThread, name, m.shared);
    } catch (const std::system_error&) {
        m.mainPort->invalidate();
        m.mainPort.reset();
        m.shared.reset();
        return memFullErr;
    }
    return noErr;
}

int32_t SendMessageToThread(int32_t msgid, const MessageData& data)
{
    MainState& m = mainState();
    if (!m.threadPort)
        return kMessagePortIsInvalid;
    return m.threadPort->send(msgid, data, kMessageSendTimeout);
}

void MyRemoveThread()
{
    MainState& m = mainState();
    if (!m.shared)
        return;
    std::shared_ptr<ThreadShared> shared = m.shared;
    std::shared_ptr<RunLoop> loop;
    {
        std::lock_guard<std::mutex> lock(shared->mutex);
        shared->quit = true;
        loop = shared->loop;
    }
    shared->cancel = 1; // a blocked fetch gives up within one wait slice
    shared->changed.notify_all();
    if (m.threadPort)
        m.threadPort->send(kMsgQuit, {}, kMessageSendTimeout);
    if (loop)
        loop->stop();
    bool finished;
    {
        std::unique_lock<std::mutex> lock(shared->mutex);
        finished = shared->changed.wait_for(lock, std::chrono::seconds(1), [&shared] { return shared->finished; });
    }
    // A thread stuck where nothing can interrupt it (a host name lookup) is let go; it owns
    // what it uses and ends on its own.
    if (finished)
        m.thread.join();
    else
        m.thread.detach();
    if (m.mainPort)
        m.mainPort->invalidate();
    m.mainPort.reset();
    m.threadPort.reset();
    m.shared.reset();
}

} // namespace talmo
