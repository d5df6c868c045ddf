// Generic entry points: the first stop of every dialog call. They keep the one process-wide
// value all settings code needs, the current print session.
#include "plugin/plugin.h"

namespace talmo {

OSStatus TalmoPDEProlog(PMPDEContext*, OSType*, std::string*, std::string*, uint32_t*, uint32_t*) { return noErr; }

OSStatus TalmoPDEInitialize(PMPDEContext, PMPDEFlags*, PMPDERef, ControlRef, PMPrintSession printSession)
{
    SetCurrentPrintSession(printSession);
    return noErr;
}

OSStatus TalmoPDESync(PMPDEContext, PMPrintSession, bool) { return noErr; }
OSStatus TalmoPDEGetSummaryText(PMPDEContext, pl::ArrayPtr*, pl::ArrayPtr*) { return noErr; }
OSStatus TalmoPDEOpen(PMPDEContext) { return noErr; }
OSStatus TalmoPDEClose(PMPDEContext) { return noErr; }

OSStatus TalmoPDETerminate(PMPDEContext, OSStatus)
{
    SetCurrentPrintSession(nullptr);
    return noErr;
}

} // namespace talmo
