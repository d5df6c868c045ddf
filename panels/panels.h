// The six built-in panels. Each entry point returns the panel's interface record: the
// ten-slot record of the extension with slots 1-3 null.
#pragma once
