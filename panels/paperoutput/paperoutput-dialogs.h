// The finishing dialogs behind the commands of the finishing menu: staples, hole punch, folds,
// bind, Z-fold edge, custom text, booklet creation (one dialog description, filled per
// command) and the multiple finishing dialog.
#pragma once

#include "panels/paperoutput/paperoutput-finishing.h"

class QWidget;

namespace talmo::paperoutput {

// True when `command` opens a dialog here.
bool FinishingCommandHasDialog(uint32_t command);

// Runs the dialog of `command` on a copy of `settings`; on OK the choice goes into `settings`
// (booklet rules included) and *accepted is set. noErr on OK or Cancel, paramErr for a command
// without a dialog, kPMNoContext when the description does not load.
OSStatus RunModalFinishingDialog(const Bundle& bundle, uint32_t command, PaperOutputSettings& settings,
                                 bool* accepted = nullptr, QWidget* parent = nullptr);
OSStatus RunModalMultipleFinishingDialog(const Bundle& bundle, PaperOutputSettings& settings, bool* accepted = nullptr,
                                         QWidget* parent = nullptr);

} // namespace talmo::paperoutput
