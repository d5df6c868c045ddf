// The setting map tables. Each ends with an all-zero row; "-" rows are menu separators and
// carry a value no ticket ever holds.
#include "settings/settings.h"

namespace talmo {

namespace {
constexpr int32_t kDefault = kNotSet;
constexpr SettingMap kEnd = {nullptr, 0, 0, nullptr, false};
} // namespace

// --- Special pages ---------------------------------------------------------------------------

const SettingMap _CoverOptionMap[] = {
    {"No Covers", 1, 0, nullptr, false},        {"Front Cover Only", 2, 0, nullptr, false},
    {"Back Cover Only", 3, 0, nullptr, false},  {"Same Covers", 4, 0, nullptr, false},
    {"Different Covers", 5, 0, nullptr, false}, kEnd,
};

const SettingMap _CoverSidesImagedMap[] = {
    {"CoverBlankorPreprinted", 1, 0, nullptr, false},
    {"CoverPrintSide1", 2, 0, nullptr, false},
    {"CoverPrintSide2", 3, 0, nullptr, false},
    {"CoverPrintSide1And2", 4, 0, nullptr, false},
    kEnd,
};

// Insert placement: after the typed pages, or before page 1.
const SettingMap _InsertOptionMap[] = {
    {"InsertAfterPages", 1, 0, nullptr, false},
    {"InsertBeforePage1", 2, 0, nullptr, false},
    kEnd,
};

// --- Job type --------------------------------------------------------------------------------

const SettingMap _JobTypeMap[] = {
    {"Normal", 1, 0, nullptr, false},
    {"SavedJob", 3, 0, nullptr, false},
    {"BackgroundForms", 9, 0, nullptr, false},
    kEnd,
};

const SettingMap _JobFormatMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false}, {"SinglePageTIFF", 1, 0, nullptr, false},
    {"MultiPageTIFF", 2, 0, nullptr, false},         {"FastReprint", 4, 0, nullptr, false},
    {"FastReprintDRI", 5, 0, nullptr, false},        kEnd,
};

// The saved job's "SaveDisposition": 2 prints as well as saving.
const SettingMap _SavedJobSaveOptionRadioMap[] = {
    {"SaveOnly", 1, 0, nullptr, false},
    {"SaveAndPrint", 2, 0, nullptr, false},
    kEnd,
};

// The background form menu of the Booklet and Watermark panel; values follow the record's
// useExistingForm (1 create, 2 merge) shifted past "none".
const SettingMap _BookletWatermarkBackgroundFormsMap[] = {
    {"NoBackgroundForm", 1, 0, nullptr, false},
    {"CreateBackgroundForm", 2, FourCC("BfCn"), nullptr, false},
    {"UseBackgroundForm", 3, FourCC("BfCs"), nullptr, false},
    kEnd,
};

// --- Two-sided printing ------------------------------------------------------------------------

const SettingMap _PlexMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Simplex", 1, 0, nullptr, false},
    {"Duplex", 2, 0, nullptr, false},
    {"DuplexShort", 3, 0, nullptr, false},
    kEnd,
};

const SettingMap _DuplexMap[] = {
    {"Simplex", 1, 0, nullptr, false},
    {"Duplex", 2, 0, nullptr, false},
    {"DuplexShort", 3, 0, nullptr, false},
    kEnd,
};

// --- Watermarks --------------------------------------------------------------------------------

const SettingMap _WatermarkMap[] = {
    {"NoWatermark", 1, FourCC("TWmX"), nullptr, false},
    {"-", -5, 0, nullptr, false},
    {"Options", -6, FourCC("TWmO"), nullptr, false},
    {"New...", -7, FourCC("TWmN"), nullptr, false},
    {"Edit...", -8, FourCC("TWmE"), nullptr, false},
    {"Delete", -9, FourCC("TWmD"), nullptr, false},
    kEnd,
};

// "WatermarmPrintOnPage1Only" is spelled so in every string table; keep it.
const SettingMap _WatermarkOptionsMap[] = {
    {"WatermarkBackground", 1, 0, nullptr, false},
    {"WatermarkBlend", 2, 0, nullptr, false},
    {"WatermarkForeground", 3, 0, nullptr, false},
    {"-", -5, 0, nullptr, false},
    {"WatermarkPrintOnAllPages", 4, 0, nullptr, false},
    {"WatermarmPrintOnPage1Only", 5, 0, nullptr, false},
    kEnd,
};

const SettingMap _WatermarkStringMap[] = {
    {"NoWatermark", 1, 0, nullptr, false},
    {"DraftWatermark", -2, 0, nullptr, false},
    {"ConfidentialWatermark", -3, 0, nullptr, false},
    {"CopyWatermark", -4, 0, nullptr, false},
    kEnd,
};

const SettingMap _EnabledDisabledMap[] = {
    {"Enabled", 1, 0, nullptr, false},
    {"Disabled", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _PageBordersMap[] = {
    {"No Page Borders", 1, 0, nullptr, false},
    {"Draw Page Borders", 2, 0, nullptr, false},
    kEnd,
};

// --- Highlight colour --------------------------------------------------------------------------
// Colour numbers are shared by the printing and the mapping menus; 100 is a custom colour
// given by its RGB/HSV values.

const SettingMap _HighlightPrintingColorMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"HighlightRed", 1, 0, nullptr, false},
    {"HighlightBlue", 2, 0, nullptr, false},
    {"HighlightGreen", 3, 0, nullptr, false},
    {"HighlightYellow", 4, 0, nullptr, false},
    {"HighlightOrange", 5, 0, nullptr, false},
    {"HighlightViolet", 6, 0, nullptr, false},
    {"HighlightBrown", 7, 0, nullptr, false},
    {"HighlightCyan", 8, 0, nullptr, false},
    {"HighlightMagenta", 9, 0, nullptr, false},
    {"HighlightRuby", 10, 0, nullptr, false},
    {"HighlightRoyalBlue", 11, 0, nullptr, false},
    {"HighlightCardinal", 12, 0, nullptr, false},
    {"Custom...", 100, 0, nullptr, false},
    kEnd,
};

const SettingMap _HighlightMappingColorMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"HighlightNonBlack", 13, 0, nullptr, false},
    {"-", -5, 0, nullptr, false},
    {"HighlightRed", 1, 0, nullptr, false},
    {"HighlightBlue", 2, 0, nullptr, false},
    {"HighlightGreen", 3, 0, nullptr, false},
    {"HighlightYellow", 4, 0, nullptr, false},
    {"HighlightOrange", 5, 0, nullptr, false},
    {"HighlightViolet", 6, 0, nullptr, false},
    {"HighlightBrown", 7, 0, nullptr, false},
    {"HighlightCyan", 8, 0, nullptr, false},
    {"HighlightMagenta", 9, 0, nullptr, false},
    {"HighlightRuby", 10, 0, nullptr, false},
    {"HighlightRoyalBlue", 11, 0, nullptr, false},
    {"HighlightCardinal", 12, 0, nullptr, false},
    {"Custom...", 100, 0, nullptr, false},
    kEnd,
};

const SettingMap _HighlightMappingAlgorithmMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"HighlightMapBestMatch", 1, 0, nullptr, false},
    {"HighlightMapContrast", 2, 0, nullptr, false},
    {"HighlightMapMonochrome", 3, 0, nullptr, false},
    {"HighlightMapHue", 4, 0, nullptr, false},
    {"HighlightMapPreserveBlack", 5, 0, nullptr, false},
    kEnd,
};

// What the printer does when the loaded highlight colour is not the one asked for.
const SettingMap _HighlightMismatchColorMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"HighlightMismatchPrint", 1, 0, nullptr, false},
    {"HighlightMismatchHold", 2, 0, nullptr, false},
    {"HighlightMismatchCancel", 3, 0, nullptr, false},
    kEnd,
};

// --- Image shift -------------------------------------------------------------------------------

const SettingMap _ImageShiftOptions1SidedMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Independent", 1, 0, nullptr, false},
    kEnd,
};

// Mode 2 is not offered (it still reads as a mirror of both axes).
const SettingMap _ImageShiftOptions2SidedMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Independent", 1, 0, nullptr, false},
    {"MirrorX", 3, 0, nullptr, false},
    {"MirrorY", 4, 0, nullptr, false},
    {"MirrorBoth", 5, 0, nullptr, false},
    {"MirrorXTandemY", 6, 0, nullptr, false},
    {"MirrorYTandemX", 7, 0, nullptr, false},
    {"TandemX", 8, 0, nullptr, false},
    {"TandemY", 9, 0, nullptr, false},
    {"TandemBoth", 10, 0, nullptr, false},
    kEnd,
};

// --- Colour ------------------------------------------------------------------------------------

const SettingMap _TrappingMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"On", 1, 0, nullptr, false},
    {"Off", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _BlackOverprintMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"On", 1, 0, nullptr, false},
    {"Off", 2, 0, nullptr, false},
    kEnd,
};

// The curve names come from the printer and are added from the input history.
const SettingMap _TRCMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    kEnd,
};

// "Mod" in the first key is the key's own spelling.
const SettingMap _RGBSourceProfileMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Talmo Evenhue Mod RGB", 1, 0, nullptr, false},
    {"Talmo Evenhue Mode RGB Gamma=1", 2, 0, nullptr, false},
    {"Adobe RGB", 6, 0, nullptr, false},
    {"sRGB", 4, 0, nullptr, false},
    {"Custom...", 5, 0, nullptr, false},
    kEnd,
};

const SettingMap _CMYKSourceProfileMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Native", 1, 0, nullptr, false},
    {"Swop CMYK", 2, 0, nullptr, false},
    {"Swop Plus CMYK", 15, 0, nullptr, false},
    {"Commercial CMYK", 14, 0, nullptr, false},
    {"FOGRA Gloss Coated CMYK", 4, 0, nullptr, false},
    {"FOGRA Matte Coated CMYK", 5, 0, nullptr, false},
    {"FOGRA Uncoated CMYK", 6, 0, nullptr, false},
    {"FOGRA Web Offset CMYK", 12, 0, nullptr, false},
    {"FOGRA Plus CMYK", 13, 0, nullptr, false},
    {"Japan Color 2001 Plus CMYK", 7, 0, nullptr, false},
    {"Japan Color 2001 (Type 1:Art) CMYK", 8, 0, nullptr, false},
    {"Japan Color 2001 (Type 2:Matte) CMYK", 9, 0, nullptr, false},
    {"Japan Color 2001 (Type 3:Coated) CMYK", 10, 0, nullptr, false},
    {"Japan Color 2001 (Type 4:Uncoated) CMYK", 11, 0, nullptr, false},
    {"Custom...", 3, 0, nullptr, false},
    kEnd,
};

const SettingMap _GraySourceProfileMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Custom...", 1, 0, nullptr, false},
    kEnd,
};

const SettingMap _DestinationProfileMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"System Specified", 1, 0, nullptr, false},
    {"Custom...", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _ObjectRenderingMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Saturation", 1, 0, nullptr, false},
    {"Relative Colorimetric", 2, 0, nullptr, false},
    {"Absolute Colorimetric", 3, 0, nullptr, false},
    {"Perceptual", 4, 0, nullptr, false},
    {"Pure", 5, 0, nullptr, false},
    {"Automatic", 6, 0, nullptr, false},
    kEnd,
};

// --- Image quality -----------------------------------------------------------------------------

const SettingMap _HalftoneScreenMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"150 Dot", 7, 0, nullptr, false},
    {"200 Dot", 6, 0, nullptr, false},
    {"200 Line", 8, 0, nullptr, false},
    {"300 Dot", 11, 0, nullptr, false},
    {"600 Dot", 12, 0, nullptr, false},
    {"Stochastic", 14, 0, nullptr, false},
    kEnd,
};

const SettingMap _AntialiasingMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Off", 1, 0, nullptr, false},
    {"On", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _ResolutionMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"600 x 600 Resolution", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputColorMap[] = {
    {"PrinterDefault", kDefault, 0, nullptr, false},
    {"Output Grayscale", 1, 0, nullptr, false},
    {"Output Color", 2, 0, nullptr, false},
    kEnd,
};

// --- Output and finishing, by finisher model ---------------------------------------------------

const SettingMap _OutputStapleOCTMap[] = {
    {"Uncollated", 1, 0, nullptr, false},
    {"Collated", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputStapleLCSSMap[] = {
    {"Uncollated", 1, 0, nullptr, false},
    {"Collated", 2, 0, nullptr, false},
    {"Collated, 1 Staple", 3, 0, nullptr, false},
    {"Collated, 2 Staples", 4, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputStapleHCSSMap[] = {
    {"Uncollated", 1, 0, nullptr, false},          {"Collated", 2, 0, nullptr, false},
    {"Collated, 1 Staple", 3, 0, nullptr, false},  {"Collated, 2 Staples", 4, 0, nullptr, false},
    {"Collated, 4 Staples", 5, 0, nullptr, false}, kEnd,
};

const SettingMap _PunchNoneMap[] = {
    {"Off", 1, 0, nullptr, false},
    kEnd,
};

const SettingMap _PunchMap[] = {
    {"Off", 1, 0, nullptr, false},
    {"HolePunch", 2, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputDestOCTMap[] = {
    {"OCT", 3, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputDestLCSSMap[] = {
    {"Auto", 1, 0, nullptr, false},
    {"TopTray", 2, 0, nullptr, false},
    {"StackerTray", 4, 0, nullptr, false},
    kEnd,
};

const SettingMap _OutputDestHCSSMap[] = {
    {"Auto", 1, 0, nullptr, false},
    {"TopTray", 2, 0, nullptr, false},
    {"StackerTray1", 5, 0, nullptr, false},
    {"StackerTray2", 6, 0, nullptr, false},
    kEnd,
};

// "TopTray" shares 1 with "Auto" on this finisher; a stored 1 therefore shows as "Auto".
const SettingMap _OutputDestHCSS_BKMap[] = {
    {"Auto", 1, 0, nullptr, false},
    {"TopTray", 1, 0, nullptr, false},
    {"StackerTray", 4, 0, nullptr, false},
    {"BookletMakerBin", 7, 0, nullptr, false},
    kEnd,
};

// Hole counts as "com.talmo.print.FinishingHolePunchOptions" stores them (3, 4, 5 for two,
// three and four holes).
const SettingMap _HolePunchOptionsMap[] = {
    {"2HolePunch", 3, 0, nullptr, false},
    {"3HolePunch", 4, 0, nullptr, false},
    {"4HolePunch", 5, 0, nullptr, false},
    kEnd,
};

// Z-fold binding edge ("com.talmo.print.FinishingZFoldValue").
const SettingMap _ZFoldMap[] = {
    {"Left Bind", 38, 0, nullptr, false},
    {"Right Bind", 39, 0, nullptr, false},
    kEnd,
};

// Side printed on for an advanced fold; the fold dialog adds it to the fold kind.
const SettingMap _ComplexFoldMap[] = {
    {"Print Inside", 1, 0, nullptr, false},
    {"Print Outside", 2, 0, nullptr, false},
    kEnd,
};

// Fold values of the booklet fold finishing (option 24).
const SettingMap _ComplexBookletFoldMap[] = {
    {"BiFoldNoStaple", 43, 0, nullptr, false},
    {"BiFoldStaple", 53, 0, nullptr, false},
    kEnd,
};

// --- Paper library -----------------------------------------------------------------------------

const SettingMap _StockLibraryMap[] = {
    {"SetupStockLibrary", 1, FourCC("Slib"), nullptr, false},
    {"CustomName", 3, FourCC("SlCn"), nullptr, false},
    {"-", 4, 0, nullptr, false},
    {"StockLibraryClear", 5, FourCC("SlCl"), nullptr, false},
    kEnd,
};

// Command-only rows: the first-row-0 rule makes every value select "My Paper List".
const SettingMap _NamedPaperPaperListMap[] = {
    {"My Paper List", 0, FourCC("Tmpl"), nullptr, false},
    {"Printer Paper List", 0, FourCC("Tppl"), nullptr, false},
    kEnd,
};

} // namespace talmo
