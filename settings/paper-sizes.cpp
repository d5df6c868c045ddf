#include "settings/settings.h"

namespace talmo {

namespace {

// Rounds a positive quotient half up (7.5" is 190.5 mm and becomes 191 mm).
constexpr int32_t roundedQuotient(int64_t num, int64_t den) { return static_cast<int32_t>((num + den / 2) / den); }

// A size whose nominal measure is in inches, given in thousandths of an inch so that
// fractional sizes (4.125", 12.6") stay exact integers.
constexpr _PaperSizeSettingMap inches(const char* key, int32_t code, int64_t widthMilliIn, int64_t lengthMilliIn)
{
    return {key,
            code,
            0,
            roundedQuotient(widthMilliIn * 254, 10000) * 100,
            roundedQuotient(lengthMilliIn * 254, 10000) * 100,
            roundedQuotient(widthMilliIn * 72, 1000),
            roundedQuotient(lengthMilliIn * 72, 1000)};
}

// A size whose nominal measure is in whole millimetres.
constexpr _PaperSizeSettingMap mm(const char* key, int32_t code, int64_t widthMm, int64_t lengthMm)
{
    return {key,
            code,
            0,
            static_cast<int32_t>(widthMm * 100),
            static_cast<int32_t>(lengthMm * 100),
            roundedQuotient(widthMm * 720, 254),
            roundedQuotient(lengthMm * 720, 254)};
}

// Rows whose stored measures do not follow from their labels; stored tickets and printers
// know them by these numbers, so they stay as they are.
constexpr _PaperSizeSettingMap asStored(const char* key, int32_t code, int32_t widthHmm, int32_t lengthHmm,
                                        int32_t widthPt, int32_t lengthPt)
{
    return {key, code, 0, widthHmm, lengthHmm, widthPt, lengthPt};
}

} // namespace

const _PaperSizeSettingMap CompleteStockSizeMap[] = {
    {"PrinterDefault", kNotSet, 0, kNotSet, kNotSet, kNotSet, kNotSet},
    inches("LetterStockSize", 1, 8500, 11000),
    inches("LegalStockSize", 2, 8500, 14000),
    inches("TabloidStockSize", 3, 11000, 17000),
    asStored("Postcard (4 x 6\")", 59, 10200, 15200, 288, 432),
    inches("Postcard (5 x 7\")", 41, 5000, 7000),
    inches("Statement (5.5 x 8.5\")", 17, 5500, 8500),
    inches("Postcard (6 x 9\")", 62, 6000, 9000),
    inches("7 x 10\"", 28, 7000, 10000),
    inches("Executive (7.25 x 10.5\")", 21, 7250, 10500),
    inches("StockSize8x10", 10, 8000, 10000),
    inches("StockSize8x13", 13, 8000, 13000),
    inches("StockSize8.5x13", 12, 8500, 13000),
    inches("StockSize8.5x13.5", 79, 8500, 13500),
    inches("StockSize9x11", 8, 9000, 11000),
    inches("StockSizeTab9x11", 82, 9000, 11000),
    inches("9 x 14\"", 36, 9000, 14000),
    inches("9.5 x 11\"", 48, 9500, 11000),
    inches("2 up 6 x 9", 54, 9000, 12000), // two 6 x 9" pages side by side on one 9 x 12" sheet
    inches("11 x 15\"", 63, 11000, 15000),
    inches("12x18StockSize", 11, 12000, 18000),
    inches("12 x 18.5\"", 38, 12000, 18500),
    inches("12.6 x 18.5\"", 49, 12600, 18500),
    inches("12 x 19\"", 71, 12000, 19000),
    inches("12.6 x 19.2\"", 64, 12600, 19200),
    inches("13 x 18\"", 65, 13000, 18000),
    inches("13 x 19\"", 66, 13000, 19000),
    mm("A4StockSize", 4, 210, 297),
    mm("A3StockSize", 5, 297, 420),
    mm("A5 (148 x 210 mm)", 18, 148, 210),
    mm("A6 (105 x 148 mm)", 40, 105, 148),
    asStored("B3 (105 x 148 mm)", 70, 35300, 50000, 1001, 1417), // B3 measures under A6 numbers
    mm("B4 (250 x 353 mm)", 14, 250, 353),
    mm("JIS B4 (257 x 364 mm)", 56, 257, 364),
    mm("JIS B5 (182 x 257 mm)", 55, 182, 257),
    mm("JIS B6 (128 x 182 mm)", 57, 128, 182),
    mm("StockSize223x297", 7, 223, 297),
    mm("Oversized A5 (161 x 210 mm)", 19, 161, 210),
    mm("Postcard (100 x 148 mm)", 60, 100, 148),
    mm("Postcard (148 x 200 mm)", 61, 148, 200),
    mm("SRA3 (320 x 450 mm)", 15, 320, 450),
    mm("SRA4", 47, 225, 320),
    mm("8K (267 x 388 mm)", 23, 267, 388),
    mm("8K (270 x 390 mm)", 67, 270, 390),
    mm("16K (194 x 267 mm)", 29, 194, 267),
    mm("16K (195 x 270 mm)", 68, 195, 270),
    mm("210 x 270 mm", 30, 210, 270),
    mm("210 x 330 mm", 31, 210, 330),
    mm("215 x 275 mm", 32, 215, 275),
    mm("215 x 315 mm", 22, 215, 315),
    mm("220 x 330 mm", 24, 220, 330),
    mm("226 x 310 mm", 35, 226, 310),
    mm("252 x 358 mm", 37, 252, 358),
    mm("310 x 432 mm", 39, 310, 432),
    mm("328 x 453 mm", 72, 328, 453),
    inches("Envelope (6 x 9\")", 25, 6000, 9000),
    inches("Envelope (9 x 12\")", 26, 9000, 12000),
    mm("Envelope (120 x 235 mm)", 69, 120, 235),
    mm("Envelope (220 x 312 mm)", 27, 220, 312),
    mm("Envelope C4 (229 x 324 mm)", 58, 229, 324),
    mm("Envelope C5 (162 x 229 mm)", 20, 162, 229),
    inches("Envelope Open Catalog (6 x 9\")", 50, 6000, 9000),
    inches("Envelope Open Catalog (7 x 10\")", 52, 7000, 10000),
    mm("Envelope Open Catalog (178 x 254 mm)", 53, 178, 254),
    mm("Envelope Open Catalog C5 (162 x 229 mm)", 51, 162, 229),
    asStored("Postcard (4 x 6\")", 43, 11400, 15200, 324, 432),     // a 4.5 x 6" card
    asStored("Postcard (114 x 152\")", 81, 11400, 15200, 324, 432), // the sheet of code 43
    inches("8.5 x 13\"", 16, 8500, 13000),
    inches("8.5 x 13.5\"", 78, 8500, 13500),
    inches("No. 10 Envelope (4.125 x 9.5\")", 45, 4125, 9500),
    asStored("No. 9 Envelope (4.125 x 9.5\")", 77, 9800, 22500, 297, 639),
    inches("Monarch Envelope (3.875 x 7.5\")", 44, 3875, 7500),
    mm("DL Envelope (110 x 220 mm)", 46, 110, 220),
    inches("5.5 x 7 Stock Size", 76, 5500, 7000),
    {"Custom", kStockSizeCustom, 0, 0, 0, 0, 0},
    {nullptr, 0, 0, 0, 0, 0, 0},
};

namespace {
constexpr SettingMap row(const char* key, int32_t value) { return {key, value, 0, nullptr, false}; }
} // namespace

// The menu spells codes 11 and 7 differently from the complete table; both spellings are
// localization keys.
const SettingMap _StockSizeMap[] = {
    row("PrinterDefault", kNotSet),
    row("LetterStockSize", 1),
    row("LegalStockSize", 2),
    row("TabloidStockSize", 3),
    row("Postcard (4 x 6\")", 59),
    row("Postcard (5 x 7\")", 41),
    row("Statement (5.5 x 8.5\")", 17),
    row("Postcard (6 x 9\")", 62),
    row("Executive (7.25 x 10.5\")", 21),
    row("StockSize8x10", 10),
    row("StockSize8.5x13", 12),
    row("StockSizeTab9x11", 82),
    row("11 x 15\"", 63),
    row("Oversize Tabloid (12 x 18\")", 11),
    row("12 x 19\"", 71),
    row("12.6 x 19.2\"", 64),
    row("13 x 18\"", 65),
    row("13 x 19\"", 66),
    row("A4StockSize", 4),
    row("A3StockSize", 5),
    row("A5 (148 x 210 mm)", 18),
    row("A6 (105 x 148 mm)", 40),
    row("JIS B4 (257 x 364 mm)", 56),
    row("JIS B5 (182 x 257 mm)", 55),
    row("JIS B6 (128 x 182 mm)", 57),
    row("223x297StockSize", 7),
    row("Postcard (100 x 148 mm)", 60),
    row("Postcard (148 x 200 mm)", 61),
    row("SRA3 (320 x 450 mm)", 15),
    row("8K (267 x 388 mm)", 23),
    row("8K (270 x 390 mm)", 67),
    row("16K (194 x 267 mm)", 29),
    row("16K (195 x 270 mm)", 68),
    row("215 x 315 mm", 22),
    row("226 x 310 mm", 35),
    row("310 x 432 mm", 39),
    row("328 x 453 mm", 72),
    row("Envelope (120 x 235 mm)", 69),
    row("Envelope C4 (229 x 324 mm)", 58),
    row("Envelope C5 (162 x 229 mm)", 20),
    row("Custom...", kStockSizeCustom),
    {nullptr, 0, 0, nullptr, false},
};

} // namespace talmo
