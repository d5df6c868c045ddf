// The Advanced panel's dialogs: TPIF import and export with their summary, and About.
#pragma once

#include "toolkit/toolkit.h"
#include "tpif/tpif.h"

#include <QStringList>

class QWidget;

namespace talmo::advanced {

// The job ticket summary of `ticket` in a read-only view, with "Copy All" (the whole text to
// the clipboard) and the mode's default button. noErr for the default button, userCanceledErr
// for Cancel.
OSStatus DisplayTPIFImportExportSummary(const Bundle& bundle, const pl::DictPtr& ticket, TPIFImportExportMode mode,
                                        QWidget* parent = nullptr);

// Imports `paths` (asked for with a file dialog when empty) into one dictionary, shows its
// summary and, when the user confirms, merges it into the session's ticket and has every panel
// show it. A file that does not import is named in a message and left out; the other files
// still apply. kImportFileFailed when no file imports; userCanceledErr when the user declines.
OSStatus RunModalTPIFImportDialog(const Bundle& bundle, PrintSession* session, QStringList paths,
                                  QWidget* parent = nullptr);

// Brings the panels' values into the ticket, shows the summary and, on "Export...", writes the
// document to `path` (asked for with a file dialog when empty). A failed write is reported in
// a message and leaves any earlier file as it was.
OSStatus RunModalTPIFExportDialog(const Bundle& bundle, PrintSession* session, QString path, QWidget* parent = nullptr);

// Version, printer model and the device picture; the picture opens the printer's web page when
// the printer has one.
OSStatus RunModalAboutDialog(const Bundle& bundle, PrintSession* session, QWidget* parent = nullptr);

} // namespace talmo::advanced
