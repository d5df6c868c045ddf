// Device mimic: the picture of the printer as configured, chosen by make and model and by
// the installed finisher ("Option1").
#pragma once

#include <string_view>

namespace talmo {

// File name of the picture for the current session's printer, or null.
const char* CopyDeviceMimicFilename();
// The same choice for a given make-and-model name (the command line and tests).
const char* DeviceMimicFilenameForModel(std::string_view makeAndModel);

} // namespace talmo
