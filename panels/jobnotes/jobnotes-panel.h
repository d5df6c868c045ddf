// The Job Notes panel's operations beside the panel record: moving values between the context
// and the controls, and the preferences dialog over the user's defaults.
#pragma once

#include "panels/jobnotes/jobnotes-notes.h"
#include "ticket/special-pages-rules.h"

class QWidget;

namespace talmo::jobnotes {

struct JobNotesContext;

inline constexpr OSStatus ioErr = -36; // the preferences file was not written

// The panel's button sends this to open the preferences dialog.
inline constexpr uint32_t kJobNotesPreferencesCommand = FourCC("JNpf");

// The three "use" flags start from the user's defaults.
void InitContext(JobNotesContext* context);
// Controls to context: the messages, and per combo box its text (flag off) or its map row.
void UpdateJobNotesContext(JobNotesContext* context);
// Context to controls.
void UpdateJobNotesEditFields(JobNotesContext* context);
// Fills the combo boxes' menus with their map row and input history.
void LocalizePanel(const Bundle& bundle, JobNotesContext* context);
// True when the command was the panel's.
bool pdeShellJobNotesEventHandler(JobNotesContext* context, uint32_t command);

// Shows the three defaults from the file; OK stores the boxes' states (the file written
// atomically) and returns them in `options`. userCanceledErr on Cancel, kPMNoContext when the
// description does not load, ioErr when the file could not be written.
OSStatus RunModalJobNotesPreferencesDialog(const Bundle& bundle, DialogMode mode, JobContext context,
                                           JobNotesPreferences* options, QWidget* parent = nullptr);

} // namespace talmo::jobnotes
