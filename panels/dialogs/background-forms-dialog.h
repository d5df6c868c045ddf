// The background forms dialog, opened by the job type's "Setup..." for a background form job:
// a new form (named after the document or by a name) or an existing form to merge with, how
// the form pages apply, and the form's image shift with its unit.
#pragma once

#include "platform/platform.h" // Bundle, pl::Array
#include "ticket/ticket.h"     // BackgroundFormsOptions

#include <string>

class QWidget;

namespace talmo {

// Names a history keeps; the oldest goes first.
inline constexpr size_t kFormHistoryLimit = 10;

// The name moves to the front of the history (an equal entry is removed, so no name shows
// twice) and the history is cut to kFormHistoryLimit. An empty name changes nothing.
void AddFormNameToHistory(pl::Array& history, const std::string& name);

// Edits a copy of `forms`; OK stores it back, puts the name used at the front of its history
// (new or existing forms) and saves both histories. True on OK; Cancel, or a description that
// does not load, changes nothing and returns false.
bool RunModalBackgroundFormsDialog(QWidget* parent, const Bundle& bundle, BackgroundFormsOptions& forms);

} // namespace talmo
