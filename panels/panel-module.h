// What every panel module shares: its context, the pane that shows the panel's interface
// description, and the record its CreatePanelInterface hands out. A module keeps its own ten
// entry points and calls these for the common steps.
#pragma once

#include "panels/panels.h"

#include <QPointer>
#include <QWidget>

namespace talmo::panels {

// A panel module's fixed facts.
struct PanelDescription {
    const char* name;     // interface description "<name>.Window.ui"; also the trace name
    const char* titleKey; // localization key of the panel's title
    const char* kind;     // user-option kind reported by Prologue
};

struct PanelContext {
    virtual ~PanelContext() = default; // modules keep their own context derived from this one
    const PanelDescription* panel = nullptr;
    std::string title;
    QPointer<QWidget> pane;    // the container pane the host made
    QPointer<QWidget> content; // the description's window, inside the pane
    PMPrintSession session = nullptr;
};

inline constexpr OSType kPanelCreator = FourCC("pde ");

// The record with slots 4-10 set from `operations` and 1-3 null; 0 also when allocation fails
// (then *intf is null).
OSStatus MakePanelInterface(PlugInIntf** intf, const PlugInIntfVTable& operations);

// The common steps. Prologue makes the context (with `make` when the module has its own, null
// for memory); Initialize loads the description into the pane; Terminate frees the context.
using MakePanelContext = PanelContext* (*)();
OSStatus PanelPrologue(const PanelDescription& panel, PMPDEContext* context, OSType* creator, std::string* kind,
                       std::string* title, uint32_t* maxH, uint32_t* maxV, MakePanelContext make = nullptr);
OSStatus PanelInitialize(PMPDEContext context, ControlRef pane, PMPrintSession session);
OSStatus PanelTerminate(PMPDEContext context);
PanelContext* AsPanelContext(PMPDEContext context);
// Open and Close of a panel that has nothing to do then but be traced.
OSStatus PanelOpen(PMPDEContext context);
OSStatus PanelClose(PMPDEContext context);
// The two arrays GetSummaryText receives, created when null, and one line appended to them.
void MakeSummaryArrays(pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray);
void AppendSummaryLine(pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray, std::string title, std::string text);

// The start of a panel's Sync: the trace, then the session's print settings ticket. kPMNoSession
// without a context or session, the session's error, or noErr with *ticket null when there is
// nothing to read or write.
OSStatus PanelSyncTicket(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn, Ticket** ticket);

// With TALMO_PANEL_TRACE naming a file, each panel operation appends "<panel> <operation>" to
// it (with the direction for Sync): the order of the host's fan-out, for tests.
void TracePanelCall(PMPDEContext context, const char* operation, int direction = -1);

} // namespace talmo::panels
