// The panel host ("PDE Shell"): the one pane the print dialog sees, holding the six built-in
// panels behind a chooser. Every dialog operation fans out to the panels; saves also stamp the
// client information into the print settings ticket; opening starts the printer paper list
// fetch. Qt-free face: the context itself is private to plugin/.
#pragma once

#include "panels/panel-interface.h"

#include <cstdint>
#include <string>

namespace talmo {

class Bundle;
struct PDEShellContext;

inline constexpr char kPDEShellBundleIdentifier[] = "com.talmo.print.pde.talmofeatures.pressline";
inline constexpr char kPDEShellKind[] = "com.talmo.print.pde.talmofeatureskind";
inline constexpr OSType kPDEShellCreator = FourCC("pde ");
inline constexpr uint32_t kPDEShellMaxWidth = 540;
inline constexpr uint32_t kPDEShellMaxHeight = 491;

// The built-in panels in load order, which is also the chooser order and gives their ids.
inline constexpr const char* kBuiltInPanelEntryPoints[] = {
    "GetPaperOutputPanelInterface", "GetSpecialPagesPanelInterface",     "GetImageOptionsPanelInterface",
    "GetJobNotesPanelInterface",    "GetBookletWatermarkPanelInterface", "GetAdvancedPanelInterface",
};

// The dialog operations of the host (slots 4-10 of the extension's record).
OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* userOptionKind, std::string* title,
                  uint32_t* maxH, uint32_t* maxV);
OSStatus Initialize(PMPDEContext context, PMPDEFlags* flags, PMPDERef ref, ControlRef parentUserPane,
                    PMPrintSession printSession);
OSStatus Sync(PMPDEContext context, PMPrintSession printSession, bool reinitializePlugIn);
OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray);
OSStatus Open(PMPDEContext context);
OSStatus Close(PMPDEContext context);
OSStatus Terminate(PMPDEContext context, OSStatus status);

// A new zero-filled context with the bundle found; -9530 when there is no bundle.
OSStatus InitContext(PDEShellContext** context);
// Loads the panels named in kBuiltInPanelEntryPoints from the bundle's own library. The next
// name is taken by the panel count; a name that does not resolve (or whose Prologue fails)
// ends the loading, so a bundle must carry all six.
void LoadBuiltInPanels(PDEShellContext* context);
// Shows the panel with this id: the panel left writes its controls to the ticket, the others
// reload from it.
void selectPanel(int16_t panelID, PDEShellContext* context);
// The host's Sync with the remembered context and the current print session.
OSStatus PDESync(PMPrintSession session, bool reinitializePlugIn);
// The plug-in bundle (null before Prologue found it).
Bundle* GetPDEBundle();
OSStatus RegisterMyHelpBook(PDEShellContext* context);
// An XML property list read from a file path or "file://" URL; null when unreadable.
pl::ValuePtr CreatePropertiesFromXMLFile(const std::string& url);

// Writes the job-level client and controller information into the ticket (client "T").
void WriteClientInformation(Ticket& ticket);

// Panel shown and panel last selected; both survive a Close and the next Open of the process.
extern int16_t gCurrentPanel;
extern int16_t lastTabIndex;

} // namespace talmo
