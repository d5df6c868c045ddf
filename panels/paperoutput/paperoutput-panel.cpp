// The PaperOutput panel: Paper/Output and finishing.
#include "panels/panel-module.h"

namespace talmo::paperoutput {

namespace {

const panels::PanelDescription kPanel{"PaperOutputPanel", "PaperOutputPanel", "com.talmo.print.pde.paperoutputkind"};

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    return panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV);
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    return panels::PanelInitialize(context, pane, session);
}

OSStatus Sync(PMPDEContext context, PMPrintSession, bool reinitializePlugIn)
{
    if (!context)
        return kPMNoContext;
    panels::TracePanelCall(context, "Sync", reinitializePlugIn);
    return noErr;
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr*, pl::ArrayPtr*) { return context ? noErr : kPMNoContext; }

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &panels::PanelOpen, &panels::PanelClose, &Terminate});
}

} // namespace talmo::paperoutput

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetPaperOutputPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::paperoutput::CreatePanelInterface(intf);
}
