#include "settings/settings.h"

namespace talmo {

namespace {
constexpr SettingMap row(const char* key, int32_t value) { return {key, value, 0, nullptr, false}; }
constexpr SettingMap kEnd{nullptr, 0, 0, nullptr, false};
} // namespace

// The menu and the complete colour tables are the same rows in the same order; the codes are
// not sorted because the menu order is the one users know.
const SettingMap _StockColorMap[] = {
    row("PrinterDefault", kNotSet),
    row("StockColorWhite", 1),
    row("StockColorBlue", 2),
    row("StockColorYellow", 3),
    row("StockColorGreen", 4),
    row("StockColorPink", 5),
    row("StockColorClear", 6),
    row("Ivory", 11),
    row("Gray", 12),
    row("StockColorBuff", 7),
    row("StockColorGoldenrod", 8),
    row("StockColorRed", 9),
    row("Orange", 13),
    row("StockColorCustom...", 10),
    kEnd,
};

const SettingMap _CompleteStockColorMap[] = {
    row("PrinterDefault", kNotSet),
    row("StockColorWhite", 1),
    row("StockColorBlue", 2),
    row("StockColorYellow", 3),
    row("StockColorGreen", 4),
    row("StockColorPink", 5),
    row("StockColorClear", 6),
    row("Ivory", 11),
    row("Gray", 12),
    row("StockColorBuff", 7),
    row("StockColorGoldenrod", 8),
    row("StockColorRed", 9),
    row("Orange", 13),
    row("StockColorCustom...", 10),
    kEnd,
};

// Envelopes are not offered in the menu, but a stored envelope type still gets a name.
const SettingMap _StockTypeMap[] = {
    row("PrinterDefault", kNotSet),
    row("StockTypePlain", 1),
    row("StockTypeTransparency", 2),
    row("Recycled", 10),
    row("Labels", 9),
    row("StockTypePrePrinted", 3),
    row("StockTypePrecutTab", 4),
    row("StockTypeFullCutTab", 5),
    row("StockTypeOrdered", 6),
    row("StockTypeCustom...", 7),
    kEnd,
};

const SettingMap _CompleteStockTypeMap[] = {
    row("PrinterDefault", kNotSet),
    row("StockTypePlain", 1),
    row("StockTypeTransparency", 2),
    row("Recycled", 10),
    row("Labels", 9),
    row("StockTypePrePrinted", 3),
    row("StockTypePrecutTab", 4),
    row("StockTypeFullCutTab", 5),
    row("Envelope", 8),
    row("StockTypeOrdered", 6),
    row("StockTypeCustom...", 7),
    kEnd,
};

const SettingMap _StockPunchedMap[] = {
    row("StockPunchedNo", 1),
    row("StockPunchedYes", 2),
    row("PrinterDefault", kNotSet),
    kEnd,
};

const SettingMap _SidesCoatedMap[] = {
    row("PrinterDefault", kNotSet), row("Uncoated", 1), row("One Sided", 2), row("Two Sided", 3), kEnd,
};

const SettingMap _CoatingTypeMap[] = {
    row("Gloss", 1), row("High Gloss", 2), row("Semi-Gloss", 3), row("Satin", 4), row("Matte", 5), kEnd,
};

const SettingMap _FinishMap[] = {
    row("PrinterDefault", kNotSet), row("Smooth", 1), row("Regular", 2), row("Rough", 3), kEnd,
};

const SettingMap _GrainMap[] = {
    row("PrinterDefault", kNotSet),
    row("Long", 1),
    row("Short", 2),
    kEnd,
};

const SettingMap _WeightMap[] = {
    row("PrinterDefault", kNotSet),
    row("70", 70),
    row("90", 90),
    row("120", 120),
    row("140", 140),
    row("210", 210),
    row("250", 250),
    row("Custom...", 1),
    kEnd,
};

// The value-0 row is what an unknown description value falls back to in the map search.
const SettingMap _StockDescriptionMap[] = {
    row("PrinterDefault", kNotSet),
    row("Custom...", 0),
    kEnd,
};

} // namespace talmo
