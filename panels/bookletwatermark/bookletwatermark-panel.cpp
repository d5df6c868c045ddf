// The BookletWatermark panel: booklet layout and watermarks.
#include "panels/panel-module.h"

namespace talmo::bookletwatermark {

namespace {

const panels::PanelDescription kPanel{"BookletWatermarkPanel", "BookletWatermarkPanel",
                                      "com.talmo.print.pde.bookletwatermarkkind"};

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

OSStatus Open(PMPDEContext context)
{
    panels::TracePanelCall(context, "Open");
    return context ? noErr : kPMNoContext;
}

OSStatus Close(PMPDEContext context)
{
    panels::TracePanelCall(context, "Close");
    return context ? noErr : kPMNoContext;
}

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(
        intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText, &Open, &Close, &Terminate});
}

} // namespace talmo::bookletwatermark

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetBookletWatermarkPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::bookletwatermark::CreatePanelInterface(intf);
}
