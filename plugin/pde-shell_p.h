// The panel host's context and its Qt side: the pane, the chooser, the event handler on the
// dialog window and the pump of the main thread's run loop.
#pragma once

#include "panels/dialogs/named-paper-dialog.h"
#include "paperlib/paperlib.h"
#include "plugin/plugin.h"
#include "toolkit/toolkit.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

class QComboBox;
class QPushButton;

namespace talmo {

struct PanelRecord {
    PlugInIntfVTable intf{}; // a private copy of the panel's ten slots
    PMPDEContext context = nullptr;
    std::string title;
    std::string kind;
    QPointer<QWidget> pane; // the panel's container pane
    int16_t id = 0;         // 1-based load position; -1: skipped by every fan-out
    void* reserved = nullptr;
};

class PDEShellEventHandler;

struct PDEShellContext {
    Bundle* bundle = nullptr;
    std::string title;
    PMPrintSession session = nullptr;
    std::vector<PanelRecord> panels;
    int16_t panelCount = 0;
    int16_t reservedCount = 0;
    QPointer<QWidget> dialogPane; // given to Initialize
    QPointer<QWidget> hostPane;   // the "PDE_Shell" window moved into it by the first Open
    QPointer<QComboBox> chooser;
    QPointer<QPushButton> defaultButton;
    QPointer<QPushButton> cancelButton;
    std::unique_ptr<PDEShellEventHandler> handler;
    bool paneBuilt = false;
};

// The host's handler: an event filter on the dialog window for commands and user events, the
// chooser's changes, and the pump that serves the paper list thread's replies.
class PDEShellEventHandler : public QObject, public PaperListEventTarget {
public:
    explicit PDEShellEventHandler(PDEShellContext* context);
    ~PDEShellEventHandler() override;

    void install(QWidget* window);
    void remove();
    // Serves the main thread's run loop from the Qt event loop while the fetch can answer.
    void startPaperListPump();
    void stopPaperListPump();
    WindowRef windowRef() const { return windowRef_; }

    void postUserEvent(uint32_t eventClass, uint32_t eventKind) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PDEShellContext* context_;
    QPointer<QWidget> window_;
    QTimer pump_;
    WindowRef windowRef_ = 0;
};

// What pdeShellEventHandler does with one event; true when handled.
bool pdeShellEventHandler(QEvent* event, PDEShellContext* context);
// Next and previous panel ids, wrapping around.
int16_t NextPanelID(int16_t current, int16_t count);
int16_t PreviousPanelID(int16_t current, int16_t count);
// Sets the chooser without reporting a control hit.
void SetChooserValue(PDEShellContext* context, int16_t panelID);
// Builds the printer paper list from the printer's last answer.
void ReplacePrinterPaperListFromStocks();

// The paper list thread's answer, as the library dialog sees it (pde-shell-papers.cpp).
// A list event arrived: the printer paper list is rebuilt and the outcome kept for the dialog.
PrinterPaperOutcome TakePaperListEvent();
// A new thread starts: no outcome until its first list event.
void ForgetPaperListOutcome();
// The dialog's printer callbacks through the host's thread; false when no thread runs.
bool AttachThreadPrinterPapers(const PDEShellContext* context, NamedPaperDialogSources& sources);

} // namespace talmo
