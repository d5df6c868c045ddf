// Stock size tables: the complete table that names and measures every size code a stock can
// hold, and the smaller table the size menu offers.
#pragma once

#include "settings/maps.h"

namespace talmo {

// 75 rows: "PrinterDefault" first (kNotSet in every size field), "Custom" (code 75, zero
// sizes) last, then the terminator. Widths and lengths are in hundredths of a millimetre and
// in points; each is the nominal size rounded to whole millimetres and to whole points.
extern const _PaperSizeSettingMap CompleteStockSizeMap[];

// The size menu: 41 rows ending with "Custom..." = 75.
extern const SettingMap _StockSizeMap[];

inline constexpr int32_t kStockSizeCustom = 75;

} // namespace talmo
