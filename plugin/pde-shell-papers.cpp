// The library dialog's printer list through the host's paper list thread: the outcome its last
// list event brought, and the fetches the dialog asks for, answered to the dialog's own window.
#include "plugin/pde-shell_p.h"

namespace talmo {

namespace {

// Process-wide, as the thread and its fetch state are; main thread only.
std::optional<PrinterPaperOutcome> gThreadOutcome;

// The thread tells only whether the fetch worked; a failure is the printer not reached.
PrinterPaperOutcome threadOutcome()
{
    return {gPrinterStockBiDiStatus == kBiDiStatusFailed ? kPrinterStockNoConnectionErr : noErr, PrinterStockList()};
}

// One fetch asked for by a dialog: its window is the thread's event target until the list event
// arrives. A child of the window, so a dialog that closes first takes its target with it.
class DialogPaperFetch final : public QObject, public PaperListEventTarget {
public:
    DialogPaperFetch(QWidget* window, std::function<void(const PrinterPaperOutcome&)> done)
        : QObject(window), window_(window), done_(std::move(done)), ref_(RegisterEventTarget(this))
    {
        window->installEventFilter(this);
    }
    ~DialogPaperFetch() override { UnregisterEventTarget(ref_); }

    WindowRef ref() const { return ref_; }
    void postUserEvent(uint32_t eventClass, uint32_t eventKind) override
    {
        PostUserEvent(window_, eventClass, eventKind);
    }
    // Ends the wait; this object goes once the event being handled is through.
    void finish(const PrinterPaperOutcome& outcome)
    {
        window_->removeEventFilter(this);
        UnregisterEventTarget(ref_);
        ref_ = 0;
        deleteLater();
        if (auto done = std::move(done_))
            done(outcome);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != window_ || event->type() != UserEvent::eventType())
            return false;
        const auto* user = static_cast<UserEvent*>(event);
        if (user->eventClass() != kEventClassTPDE)
            return false;
        if (user->eventKind() == kEventKindPaperList && done_)
            finish(TakePaperListEvent());
        return true; // the progress event has nothing to show here
    }

private:
    QWidget* window_;
    std::function<void(const PrinterPaperOutcome&)> done_;
    WindowRef ref_;
};

void startDialogFetch(QObject* receiver, std::function<void(const PrinterPaperOutcome&)> done)
{
    auto* window = qobject_cast<QWidget*>(receiver);
    if (!window)
        return;
    auto* fetch = new DialogPaperFetch(window, std::move(done));
    // While the first fetch is under way the thread is asked for its outcome, which it answers
    // once that fetch has ended; otherwise it fetches again.
    const int32_t message = gPrinterStockBiDiStatus == kBiDiStatusConnected ? kMsgAskOutcome : kMsgFetch;
    if (SendMessageToThread(message, WindowRefData(fetch->ref())) != kMessagePortSuccess) {
        // No thread to ask (not announced yet, or gone): told as a failed fetch, never a wait.
        QMetaObject::invokeMethod(
            fetch,
            [fetch] {
                fetch->finish({kPrinterStockNoConnectionErr, PrinterStockList()});
            },
            Qt::QueuedConnection);
    }
}

} // namespace

PrinterPaperOutcome TakePaperListEvent()
{
    ReplacePrinterPaperListFromStocks();
    gThreadOutcome = threadOutcome();
    return *gThreadOutcome;
}

void ForgetPaperListOutcome() { gThreadOutcome.reset(); }

bool AttachThreadPrinterPapers(const PDEShellContext* c, NamedPaperDialogSources& sources)
{
    if (!c || !c->handler || c->handler->windowRef() == 0)
        return false; // no thread runs for this printer
    sources.lastOutcome = [] { return gThreadOutcome; };
    sources.refresh = startDialogFetch;
    return true;
}

} // namespace talmo
