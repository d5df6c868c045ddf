// The colour dialog over FullColorOptions, shared by the Image Options panel (job level) and the
// exception pages (page level).
#pragma once

#include "platform/platform.h" // Bundle, OSStatus
#include "ticket/ticket.h"     // FullColorOptions, _IS_Options, DialogMode

class QWidget;

namespace talmo {

// Edits a copy of `options`; on OK stores it back and sets *accepted (when given) to true.
// noErr on OK or Cancel, -50 for bad arguments, -9530 when the description does not load.
OSStatus RunModalFullColorSetup(const Bundle& bundle, DialogMode mode, JobContext context, FullColorOptions& options,
                                bool* accepted = nullptr, QWidget* parent = nullptr);

} // namespace talmo
