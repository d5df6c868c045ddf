// The panel host's event handler: commands sent to the dialog window, the paper list events the
// fetch thread has posted, and the pump that serves the main thread's message port.
#include "plugin/pde-shell_p.h"

#include <QKeySequence>

namespace talmo {

namespace {
// Often enough that a reply awaited by the fetch thread (up to 2 s) comes in time; the pump
// runs only while a fetch can answer.
constexpr int kRunLoopPumpIntervalMs = 20;
} // namespace

PDEShellEventHandler::PDEShellEventHandler(PDEShellContext* context) : context_(context)
{
    pump_.setInterval(kRunLoopPumpIntervalMs);
    QObject::connect(&pump_, &QTimer::timeout, this, [] { RunLoop::current()->runPending(); });
}

PDEShellEventHandler::~PDEShellEventHandler()
{
    stopPaperListPump();
    remove();
}

void PDEShellEventHandler::install(QWidget* window)
{
    if (!window || window_ == window)
        return;
    remove();
    window_ = window;
    window->installEventFilter(this);
    // The navigation commands from the keyboard, as the hidden arrow buttons would send them.
    struct {
        uint32_t command;
        QKeySequence keys;
    } const shortcuts[] = {{FourCC("TFup"), QKeySequence(Qt::CTRL | Qt::Key_PageDown)},
                           {FourCC("TFdn"), QKeySequence(Qt::CTRL | Qt::Key_PageUp)}};
    for (const auto& s : shortcuts) {
        QAction* action = CommandAction(QString(), s.command, window);
        action->setShortcut(s.keys);
        action->setParent(this); // removed with the handler
        window->addAction(action);
    }
}

void PDEShellEventHandler::remove()
{
    if (window_)
        window_->removeEventFilter(this);
    window_ = nullptr;
    qDeleteAll(findChildren<QAction*>(Qt::FindDirectChildrenOnly));
}

void PDEShellEventHandler::startPaperListPump()
{
    if (windowRef_ == 0)
        windowRef_ = RegisterEventTarget(this);
    pump_.start();
}

void PDEShellEventHandler::stopPaperListPump()
{
    // The thread is joined before the window reference goes, so no event can name it after.
    MyRemoveThread();
    pump_.stop();
    if (windowRef_ != 0)
        UnregisterEventTarget(windowRef_);
    windowRef_ = 0;
}

void PDEShellEventHandler::postUserEvent(uint32_t eventClass, uint32_t eventKind)
{
    PostUserEvent(window_, eventClass, eventKind);
}

bool PDEShellEventHandler::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window_ && pdeShellEventHandler(event, context_)) {
        event->accept();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

bool pdeShellEventHandler(QEvent* event, PDEShellContext* c)
{
    if (!c)
        return false;
    if (event->type() == CommandEvent::eventType()) {
        const uint32_t command = static_cast<CommandEvent*>(event)->command();
        int16_t next = 0;
        switch (command) {
        case FourCC("help"):
            DisplayHelp(*c->bundle, QString(), QString());
            return true;
        case FourCC("TFup"):
            next = NextPanelID(lastTabIndex, c->panelCount);
            break;
        case FourCC("TFdn"):
            next = PreviousPanelID(lastTabIndex, c->panelCount);
            break;
        default:
            return false; // "ok  " and the rest belong to the dialog
        }
        selectPanel(next, c);
        SetChooserValue(c, next);
        return true;
    }
    if (event->type() == UserEvent::eventType()) {
        const auto* user = static_cast<UserEvent*>(event);
        if (user->eventClass() != kEventClassTPDE || user->eventKind() != kEventKindPaperList)
            return false;
        TakePaperListEvent();
        return true;
    }
    return false;
}

void ReplacePrinterPaperListFromStocks()
{
    const auto stocks = PrinterStockList();
    SetPrinterPaperList(MakePrinterPaperList(stocks ? *stocks : std::vector<Stock>{}));
}

} // namespace talmo
