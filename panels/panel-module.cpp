#include "panels/panel-module.h"

#include "toolkit/toolkit.h"

#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <cstdio>
#include <cstdlib>

namespace talmo {

void FreePanelInterface(PlugInIntf* intf)
{
    if (!intf)
        return;
    std::free(intf->vtable);
    std::free(intf);
}

namespace panels {

namespace {
constexpr uint32_t kPanelMaxWidth = 540;
constexpr uint32_t kPanelMaxHeight = 440; // below the host's chooser
} // namespace

OSStatus MakePanelInterface(PlugInIntf** intf, const PlugInIntfVTable& operations)
{
    if (!intf)
        return paramErr;
    *intf = static_cast<PlugInIntf*>(std::malloc(sizeof(PlugInIntf)));
    if (!*intf)
        return noErr;
    (*intf)->refCount = 1;
    (*intf)->vtable = static_cast<PlugInIntfVTable*>(std::calloc(1, sizeof(PlugInIntfVTable)));
    if (!(*intf)->vtable) {
        std::free(*intf);
        *intf = nullptr;
        return noErr;
    }
    PlugInIntfVTable& t = *(*intf)->vtable;
    t.Prologue = operations.Prologue;
    t.Initialize = operations.Initialize;
    t.Sync = operations.Sync;
    t.GetSummaryText = operations.GetSummaryText;
    t.Open = operations.Open;
    t.Close = operations.Close;
    t.Terminate = operations.Terminate;
    return noErr;
}

PanelContext* AsPanelContext(PMPDEContext context) { return static_cast<PanelContext*>(context); }

OSStatus PanelPrologue(const PanelDescription& panel, PMPDEContext* context, OSType* creator, std::string* kind,
                       std::string* title, uint32_t* maxH, uint32_t* maxV, MakePanelContext make)
{
    if (!context)
        return paramErr;
    PanelContext* c = make ? make() : new (std::nothrow) PanelContext;
    if (!c)
        return memFullErr;
    c->panel = &panel;
    if (const Bundle* bundle = ExtensionBundle())
        c->title = bundle->localizedString(panel.titleKey);
    *context = c;
    if (creator)
        *creator = kPanelCreator;
    if (kind)
        *kind = panel.kind;
    if (title)
        *title = c->title;
    if (maxH)
        *maxH = kPanelMaxWidth;
    if (maxV)
        *maxV = kPanelMaxHeight;
    TracePanelCall(c, "Prologue");
    return noErr;
}

OSStatus PanelInitialize(PMPDEContext context, ControlRef pane, PMPrintSession session)
{
    PanelContext* c = AsPanelContext(context);
    if (!c)
        return kPMNoContext;
    TracePanelCall(c, "Initialize");
    c->session = session;
    c->pane = static_cast<QWidget*>(pane);
    const Bundle* bundle = ExtensionBundle();
    if (!c->pane || !bundle || !qobject_cast<QApplication*>(QCoreApplication::instance()))
        return noErr; // nothing to show the panel in
    OSStatus status = noErr;
    auto content = CreateWindowFromDescription(*bundle, c->panel->name, "Window", c->pane, &status);
    if (!content)
        return status;
    LocalizeDescription(*bundle, content.get());
    if (auto* title = content->findChild<QLabel*>("title"))
        title->setText(QString::fromStdString(c->title));
    auto* layout = new QVBoxLayout(c->pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content.get());
    c->content = content.release();
    return noErr;
}

OSStatus PanelTerminate(PMPDEContext context)
{
    PanelContext* c = AsPanelContext(context);
    if (!c)
        return kPMNoContext;
    TracePanelCall(c, "Terminate");
    delete c->content.data(); // the pane itself is the host's
    delete c;
    return noErr;
}

OSStatus PanelSyncTicket(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn, Ticket** ticket)
{
    *ticket = nullptr;
    if (!context || !session)
        return kPMNoSession;
    TracePanelCall(context, "Sync", reinitializePlugIn);
    return GetTicketFromSession(session, kPMPrintSettingsTicket, ticket);
}

OSStatus PanelOpen(PMPDEContext context)
{
    TracePanelCall(context, "Open");
    return context ? noErr : kPMNoContext;
}

OSStatus PanelClose(PMPDEContext context)
{
    TracePanelCall(context, "Close");
    return context ? noErr : kPMNoContext;
}

void MakeSummaryArrays(pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    if (!*titleArray)
        *titleArray = pl::makeArray();
    if (!*summaryArray)
        *summaryArray = pl::makeArray();
}

void AppendSummaryLine(pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray, std::string title, std::string text)
{
    MakeSummaryArrays(titleArray, summaryArray);
    (*titleArray)->append(pl::makeString(std::move(title)));
    (*summaryArray)->append(pl::makeString(std::move(text)));
}

void TracePanelCall(PMPDEContext context, const char* operation, int direction)
{
    const char* path = std::getenv("TALMO_PANEL_TRACE");
    const PanelContext* c = AsPanelContext(context);
    if (!path || !*path || !c)
        return;
    if (std::FILE* f = std::fopen(path, "a")) {
        if (direction < 0)
            std::fprintf(f, "%s %s\n", c->panel->name, operation);
        else
            std::fprintf(f, "%s %s %d\n", c->panel->name, operation, direction);
        std::fclose(f);
    }
}

} // namespace panels
} // namespace talmo
