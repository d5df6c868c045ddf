// Setting maps of the paper stock attributes: the menu tables of the stock pop-ups and the
// "complete" tables that summaries use to name a stored code.
#pragma once

#include "settings/maps.h"

namespace talmo {

// Each table ends with a row whose key is null.
extern const SettingMap _StockColorMap[];         // 14 rows
extern const SettingMap _CompleteStockColorMap[]; // 14 rows
extern const SettingMap _StockTypeMap[];          // 10 rows (no "Envelope")
extern const SettingMap _CompleteStockTypeMap[];  // 11 rows
extern const SettingMap _StockPunchedMap[];       // 3 rows
extern const SettingMap _SidesCoatedMap[];        // 4 rows
extern const SettingMap _CoatingTypeMap[];        // 5 rows, no printer-default row
extern const SettingMap _FinishMap[];             // 4 rows
extern const SettingMap _GrainMap[];              // 3 rows
extern const SettingMap _WeightMap[];             // 8 rows; "Custom..." = 1 opens the custom entry
extern const SettingMap _StockDescriptionMap[];   // 2 rows; "Custom..." = 0

} // namespace talmo
