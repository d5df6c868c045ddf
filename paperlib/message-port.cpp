// Message ports and run loops (see message-port.h for the model).
#include "paperlib/message-port.h"

#include <map>

namespace talmo {

namespace {

std::chrono::milliseconds toMs(double seconds)
{
    return std::chrono::milliseconds(seconds > 0 ? static_cast<int64_t>(seconds * 1000.0 + 0.5) : 0);
}

// Port names are process-wide.
std::mutex gRegistryMutex;
std::map<std::string, std::weak_ptr<LocalMessagePort>>& registry()
{
    static std::map<std::string, std::weak_ptr<LocalMessagePort>> ports;
    return ports;
}

struct ReplySlot {
    std::mutex mutex;
    std::condition_variable ready;
    bool done = false;
    std::optional<MessageData> data;
};

} // namespace

// --- RunLoop ---

std::shared_ptr<RunLoop> RunLoop::current()
{
    thread_local std::shared_ptr<RunLoop> loop = std::make_shared<RunLoop>();
    return loop;
}

bool RunLoop::enqueue(std::function<void()> task, std::chrono::milliseconds timeout)
{
    std::function<void()> wake;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, timeout, [this] { return stopped_ || tasks_.size() < kCapacity; }) || stopped_)
            return false;
        tasks_.push_back(std::move(task));
        wake = wake_;
    }
    changed_.notify_all();
    if (wake)
        wake();
    return true;
}

bool RunLoop::runOne(std::unique_lock<std::mutex>& lock)
{
    if (tasks_.empty())
        return false;
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    changed_.notify_all(); // room for a waiting sender
    task();
    lock.lock();
    return true;
}

void RunLoop::run()
{
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopped_) {
        changed_.wait(lock, [this] { return stopped_ || !tasks_.empty(); });
        if (!stopped_)
            runOne(lock);
    }
}

bool RunLoop::runFor(std::chrono::milliseconds duration)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopped_) {
        if (!changed_.wait_until(lock, end, [this] { return stopped_ || !tasks_.empty(); }))
            break;
        if (!stopped_)
            runOne(lock);
    }
    return !stopped_;
}

size_t RunLoop::runPending()
{
    std::unique_lock<std::mutex> lock(mutex_);
    size_t n = tasks_.size(), ran = 0;
    while (n-- > 0 && !stopped_ && runOne(lock))
        ++ran;
    return ran;
}

void RunLoop::stop()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopped_ = true;
        tasks_.clear();
    }
    changed_.notify_all();
}

bool RunLoop::stopped() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return stopped_;
}

void RunLoop::setWakeCallback(std::function<void()> wake)
{
    std::lock_guard<std::mutex> lock(mutex_);
    wake_ = std::move(wake);
}

// --- LocalMessagePort ---

std::shared_ptr<LocalMessagePort> LocalMessagePort::create(const std::string& name, MessageHandler handler)
{
    if (name.empty() || !handler)
        return nullptr;
    std::lock_guard<std::mutex> lock(gRegistryMutex);
    auto& ports = registry();
    if (auto it = ports.find(name); it != ports.end()) {
        if (auto existing = it->second.lock(); existing && existing->valid())
            return nullptr;
    }
    std::shared_ptr<LocalMessagePort> port(new LocalMessagePort(name, std::move(handler)));
    ports[name] = port;
    return port;
}

LocalMessagePort::~LocalMessagePort()
{
    std::lock_guard<std::mutex> lock(gRegistryMutex);
    auto& ports = registry();
    if (auto it = ports.find(name_); it != ports.end() && it->second.expired())
        ports.erase(it);
}

void LocalMessagePort::addToRunLoop(const std::shared_ptr<RunLoop>& loop)
{
    std::lock_guard<std::mutex> lock(mutex_);
    loop_ = loop;
}

void LocalMessagePort::invalidate()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        valid_ = false;
        loop_.reset();
    }
    std::lock_guard<std::mutex> lock(gRegistryMutex);
    auto& ports = registry();
    if (auto it = ports.find(name_); it != ports.end()) {
        auto p = it->second.lock();
        if (!p || p.get() == this)
            ports.erase(it);
    }
}

bool LocalMessagePort::valid() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return valid_;
}

// --- RemoteMessagePort ---

std::shared_ptr<RemoteMessagePort> RemoteMessagePort::open(const std::string& name)
{
    std::lock_guard<std::mutex> lock(gRegistryMutex);
    auto& ports = registry();
    const auto it = ports.find(name);
    if (it == ports.end())
        return nullptr;
    auto port = it->second.lock();
    if (!port)
        return nullptr;
    {
        std::lock_guard<std::mutex> portLock(port->mutex_);
        if (!port->valid_)
            return nullptr;
    }
    return std::shared_ptr<RemoteMessagePort>(new RemoteMessagePort(port));
}

bool RemoteMessagePort::valid() const
{
    const auto port = port_.lock();
    return port && port->valid();
}

int32_t RemoteMessagePort::send(int32_t msgid, const MessageData& data, double sendTimeoutSeconds,
                                double replyTimeoutSeconds, std::optional<MessageData>* reply)
{
    const std::shared_ptr<LocalMessagePort> port = port_.lock();
    if (!port)
        return kMessagePortIsInvalid;
    std::shared_ptr<RunLoop> loop;
    {
        std::lock_guard<std::mutex> lock(port->mutex_);
        if (!port->valid_ || !port->loop_)
            return kMessagePortIsInvalid;
        loop = port->loop_;
    }
    const bool wantsReply = replyTimeoutSeconds > 0;
    auto slot = wantsReply ? std::make_shared<ReplySlot>() : nullptr;
    // The task holds the port weakly: a port released before its message runs drops it.
    std::weak_ptr<LocalMessagePort> weak = port;
    auto task = [weak, msgid, data, slot] {
        std::optional<MessageData> answer;
        if (auto p = weak.lock(); p && p->valid())
            answer = p->handler_(*p, msgid, data);
        if (slot) {
            {
                std::lock_guard<std::mutex> lock(slot->mutex);
                slot->data = std::move(answer);
                slot->done = true;
            }
            slot->ready.notify_all();
        }
    };
    if (!loop->enqueue(std::move(task), toMs(sendTimeoutSeconds)))
        return kMessagePortSendTimeout;
    if (!wantsReply)
        return kMessagePortSuccess;
    std::unique_lock<std::mutex> lock(slot->mutex);
    if (!slot->ready.wait_for(lock, toMs(replyTimeoutSeconds), [&slot] { return slot->done; }))
        return kMessagePortReceiveTimeout;
    if (reply)
        *reply = std::move(slot->data);
    return kMessagePortSuccess;
}

} // namespace talmo
