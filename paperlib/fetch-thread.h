// The background request thread: fetches the printer's paper list without ever blocking the
// dialog. The two threads talk only through two message ports (message-port.h); results reach
// the dialog's window as user events of class "TPDE".
#pragma once

#include "paperlib/message-port.h"
#include "paperlib/printer-papers.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace talmo {

// Messages between the threads.
inline constexpr int32_t kMsgThreadStarted = 100; // thread -> main: the thread port's name
inline constexpr int32_t kMsgFetch = 200;         // main -> thread: fetch now
inline constexpr int32_t kMsgQuit = 201;          // main -> thread
inline constexpr int32_t kMsgGetAddress = 202;    // thread -> main, reply: the address
inline constexpr int32_t kMsgFetchFailed = 203;   // thread -> main
inline constexpr int32_t kMsgFetchDone = 204;     // thread -> main
inline constexpr int32_t kMsgDelayedDone = 205;   // main -> thread: 204 after 2 s
inline constexpr int32_t kMsgAskOutcome = 206;    // main -> thread: 203 or 204 per the state
inline constexpr int32_t kMsgGetState = 207;      // thread -> main, reply: the state
inline constexpr int32_t kMsgProgressTick = 208;  // main -> thread: 209 after 1 s
inline constexpr int32_t kMsgProgress = 209;      // thread -> main

inline constexpr double kMessageSendTimeout = 0.1;  // seconds
inline constexpr double kMessageReplyTimeout = 2.0; // seconds
inline constexpr size_t kMaxAddressBytes = 1023;

// Fetch state.
inline constexpr int32_t kBiDiStatusNone = 0;
inline constexpr int32_t kBiDiStatusFailed = 1;
inline constexpr int32_t kBiDiStatusConnected = 2;
inline constexpr int32_t kBiDiStatusReady = 3;
// Written and read on the main thread only (atomic so tests may look from elsewhere).
extern std::atomic<int32_t> gPrinterStockBiDiStatus;

// User events posted to the dialog's window.
inline constexpr uint32_t kEventClassTPDE = FourCC("TPDE");
inline constexpr uint32_t kEventKindPaperList = FourCC("TbdC"); // after 203 and 204
inline constexpr uint32_t kEventKindProgress = FourCC("TBpC");  // after 207 and 209

// What the Qt host implements for a window that receives the events. Events are posted on the
// main thread.
class PaperListEventTarget {
public:
    virtual ~PaperListEventTarget() = default;
    virtual void postUserEvent(uint32_t eventClass, uint32_t eventKind) = 0;
};

// Window references: a message's data carries one in its first four bytes (native order).
using WindowRef = uint32_t;
WindowRef RegisterEventTarget(PaperListEventTarget* target); // never 0
void UnregisterEventTarget(WindowRef window);
MessageData WindowRefData(WindowRef window);

// Starts the thread: keeps `address` and `window`, makes the main port
// ("<bundleIdentifier>.MainThread-<pid>") on the calling thread's run loop and starts the
// thread. A thread already running is stopped first. noErr, or paramErr when the main port
// cannot be made.
OSStatus MySpawnThread(const std::string& bundleIdentifier, const std::string& address, WindowRef window);
// The thread's body.
void ServerThreadEntryPoint(const std::string& mainPortName);
// Sends to the thread once it has announced itself; otherwise does nothing. Returns the send
// result (kMessagePortIsInvalid when there is no thread port yet).
int32_t SendMessageToThread(int32_t msgid, const MessageData& data = {});
// Ends the thread: a fetch in progress is cancelled and 201 sent; returns within 1 s.
void MyRemoveThread();

// The two handlers.
std::optional<MessageData> ProcessClientRequest(LocalMessagePort& port, int32_t msgid, const MessageData& data,
                                                void* context);
std::optional<MessageData> MainThreadResponseHandler(LocalMessagePort& port, int32_t msgid, const MessageData& data,
                                                     void* context);

// Limits of the thread's fetches (tests shorten them).
void SetPaperListFetchLimits(const PrinterStockFetchLimits& limits);

} // namespace talmo
