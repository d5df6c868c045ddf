// The covers, inserts and exceptions dialogs of the Special Pages panel, and its alert. Each
// dialog edits working values and changes the panel's special pages only on an OK that the
// rules accept (after saving the undo state); a refused page list shows the alert and the
// dialog stays open.
#pragma once

#include "panels/dialogs/named-paper-dialog.h"
#include "panels/specialpages/specialpages-summary.h"

class QWidget;

namespace talmo::specialpages {

// Controls of the three dialogs: signatures "SPcv", "SPin", "SPex"; Revert, Cancel and OK are
// ids 90, 91 and 92 in each.
inline constexpr uint32_t kCoversSignature = FourCC("SPcv");
inline constexpr uint32_t kInsertsSignature = FourCC("SPin");
inline constexpr uint32_t kExceptionsSignature = FourCC("SPex");
inline constexpr int32_t kDialogRevertID = 90;
inline constexpr int32_t kDialogCancelID = 91;
inline constexpr int32_t kDialogOKID = 92;

// The stop alert of a page-list or dialog error code (1000-1003, 1234), titled and worded by
// the code's keys.
void SpecialPagesUserNotification(OSStatus code, const Bundle& bundle, QWidget* parent = nullptr);

// Where the paper pop-ups' "Named Paper..." finds the printer's paper list (its lastOutcome and
// refresh); the job's and the special pages' papers are taken from the state.
using PrinterPaperSource = NamedPaperDialogSources;

// noErr after an accepted OK, userCanceledErr on Cancel, kPMNoContext for a null state or a
// description that does not load, paramErr for an edited record that is not in the list.
OSStatus RunModalCoversDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state,
                              QWidget* parent = nullptr, const PrinterPaperSource& printerPapers = {});
OSStatus RunModalInsertsDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state, const Insert* edited,
                               QWidget* parent = nullptr, const PrinterPaperSource& printerPapers = {});
OSStatus RunModalExceptionsDialog(const Bundle& bundle, DialogMode mode, SpecialPagesState* state,
                                  const ExceptionPage* edited, QWidget* parent = nullptr,
                                  const PrinterPaperSource& printerPapers = {});

// The details texts of the bundle: its strings and the installed options' labels.
StockTextSource SpecialPagesTexts(const Bundle* bundle);

} // namespace talmo::specialpages
