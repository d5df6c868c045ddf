// Named local message ports and run loops: the only way the paper list thread and the main
// thread talk.
//
// - A RunLoop belongs to one thread (RunLoop::current()); it runs the tasks queued to it, in
//   order, on that thread: run() until stop(), runFor() for a while, runPending() for what is
//   queued now. A wake callback lets a host event loop (Qt) learn that work is queued.
// - A LocalMessagePort has a process-wide unique name and a handler; once added to a run loop,
//   each message sent to it runs the handler on that loop's thread. The handler may return
//   reply data.
// - A RemoteMessagePort is opened by name and sends: the message is queued on the receiver's
//   run loop, waiting at most the send time-out for room (the queue holds 256 messages); with a
//   reply time-out the sender then waits that long for the handler's reply.
// Nothing here blocks longer than the time-outs it is given; a port whose thread has gone
// simply never answers.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace talmo {

using MessageData = std::vector<uint8_t>;

// Send results (the platform's message port codes).
inline constexpr int32_t kMessagePortSuccess = 0;
inline constexpr int32_t kMessagePortSendTimeout = -1;
inline constexpr int32_t kMessagePortReceiveTimeout = -2;
inline constexpr int32_t kMessagePortIsInvalid = -3;

class RunLoop {
public:
    // The calling thread's run loop (made on first use).
    static std::shared_ptr<RunLoop> current();

    // Queues a task; waits up to `timeout` for room. False when the queue stayed full or the
    // loop is stopped.
    bool enqueue(std::function<void()> task, std::chrono::milliseconds timeout);
    // Runs tasks until stop() (only on the owning thread).
    void run();
    // Runs tasks until `duration` has passed or stop() was called; false once stopped.
    bool runFor(std::chrono::milliseconds duration);
    // Runs the tasks queued now; how many ran.
    size_t runPending();
    void stop();
    bool stopped() const;
    // Called (on the sending thread) whenever a task is queued.
    void setWakeCallback(std::function<void()> wake);

    static constexpr size_t kCapacity = 256;

private:
    bool runOne(std::unique_lock<std::mutex>& lock);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    bool stopped_ = false;
    std::function<void()> wake_;
};

class LocalMessagePort;
using MessageHandler =
    std::function<std::optional<MessageData>(LocalMessagePort& port, int32_t msgid, const MessageData& data)>;

class LocalMessagePort : public std::enable_shared_from_this<LocalMessagePort> {
public:
    // Null when the name is empty or taken by a valid port.
    static std::shared_ptr<LocalMessagePort> create(const std::string& name, MessageHandler handler);
    ~LocalMessagePort();

    const std::string& name() const { return name_; }
    // Messages run on `loop`'s thread from now on.
    void addToRunLoop(const std::shared_ptr<RunLoop>& loop);
    // Frees the name; messages not yet handled are dropped.
    void invalidate();
    bool valid() const;

private:
    friend class RemoteMessagePort;
    LocalMessagePort(std::string name, MessageHandler handler)
        : name_(std::move(name)), handler_(std::move(handler)) { }

    const std::string name_;
    MessageHandler handler_;
    mutable std::mutex mutex_;
    std::shared_ptr<RunLoop> loop_;
    bool valid_ = true;
};

class RemoteMessagePort {
public:
    // Null when no valid port has the name.
    static std::shared_ptr<RemoteMessagePort> open(const std::string& name);

    // Sends; with a reply time-out above zero, waits for the reply and stores it in *reply.
    int32_t send(int32_t msgid, const MessageData& data, double sendTimeoutSeconds, double replyTimeoutSeconds = 0,
                 std::optional<MessageData>* reply = nullptr);
    bool valid() const;

private:
    explicit RemoteMessagePort(std::weak_ptr<LocalMessagePort> port) : port_(std::move(port)) { }
    std::weak_ptr<LocalMessagePort> port_;
};

} // namespace talmo
