// The image shift dialogs over _IS_Options: the full editor and the compact one, shared by the
// Image Options panel (job level) and the exception pages (page level).
#pragma once

#include "platform/platform.h" // Bundle, OSStatus
#include "ticket/ticket.h"     // FullColorOptions, _IS_Options, DialogMode

class QWidget;

namespace talmo {

// Edits a copy of `options`; on OK stores it back and sets *accepted (when given) to true.
// noErr on OK or Cancel, -50 for bad arguments, -9530 when the description does not load.
OSStatus RunModalImageShiftDialog(const Bundle& bundle, DialogMode mode, JobContext context, _IS_Options& options,
                                  bool* accepted = nullptr, QWidget* parent = nullptr);
OSStatus RunModalMiniImageShiftDialog(const Bundle& bundle, JobContext context, _IS_Options& options,
                                      bool* accepted = nullptr, QWidget* parent = nullptr);

} // namespace talmo
