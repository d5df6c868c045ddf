// Setting maps: the static tables that bind each menu choice to the integer stored in the
// ticket and to the localization key of its label.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <functional>
#include <string>

namespace talmo {

// Four-character menu command, as the platform's menus carry them ("Slib", "TWmX", ...).
constexpr uint32_t FourCC(const char (&s)[5])
{
    return (uint32_t(uint8_t(s[0])) << 24) | (uint32_t(uint8_t(s[1])) << 16) | (uint32_t(uint8_t(s[2])) << 8) |
           uint32_t(uint8_t(s[3]));
}

// One row of a setting map. A map ends with a row whose key is null; a row labelled "-" is
// a menu separator.
struct SettingMap {
    const char* key;         // localization key of the label; also the row's identifier
    int32_t ticketValue;     // stored in the ticket; kNotSet is printer default
    uint32_t command;        // menu command, 0 for none
    const char* installable; // installable printer option the row depends on, or null
    bool requiredState;      // offered only while that option's installed state equals this
};

// One row of a paper size map: sizes in hundredths of a millimetre and in points. The
// printer-default row holds kNotSet in all four size fields.
struct _PaperSizeSettingMap {
    const char* key;
    int32_t ticketValue;
    int32_t reserved;
    int32_t widthHmm;
    int32_t heightHmm;
    int32_t widthPt;
    int32_t heightPt;
};

// Where a setting is edited: the job as a whole, or a page range. It decides how the
// printer-default row is labelled ("PrinterDefault" versus "UseJobSetting").
using JobContext = int32_t;
inline constexpr JobContext kJobContextJob = 0;
inline constexpr JobContext kJobContextCovers = 2;
inline constexpr JobContext kJobContextInserts = 3;
inline constexpr JobContext kJobContextExceptions = 4;

// --- Map lookups ---------------------------------------------------------------------------

// Rows before the terminator.
int32_t CountMaps(const SettingMap* map);
// Ticket value of the 1-based menu item. An item outside the map yields kNotSet (printer
// default) rather than reading past the terminator.
int32_t UIToTicket(const SettingMap* map, int32_t item);
// 1-based menu item of a ticket value, or -1. A map whose first row holds 0 always answers
// row 1, and an unmatched value falls back to the first row holding 0 (a "Custom..." row).
int32_t TicketToUI(const SettingMap* map, int32_t value);
// Same search as TicketToUI; the row's localization key, or null.
const char* LocalizedKeyForTicketValue(const SettingMap* map, int32_t value);
// First row whose value equals `value` or is 0; null at the terminator.
const char* LocalizedKeyForPaperSizeTicketValue(const _PaperSizeSettingMap* map, int32_t value);

// Installed state of an installable printer option. The device module installs the hook once
// it has read the printer's options; until then (and after SetInstalledFeatureHook(nullptr))
// every option reads as not installed, so only rows requiring "not installed" are offered.
using InstalledFeatureHook = std::function<bool(const std::string& feature)>;
void SetInstalledFeatureHook(InstalledFeatureHook hook);
bool InstalledFeatureState(const char* feature);
// True when the row is offered under the current installed options.
bool RowIsOffered(const SettingMap& row);

// --- Tables ---------------------------------------------------------------------------------
// Paper stock tables live in settings/stock-maps.h.

extern const SettingMap _CoverOptionMap[];
extern const SettingMap _InsertOptionMap[];
extern const SettingMap _SavedJobSaveOptionRadioMap[];
extern const SettingMap _WatermarkMap[];
extern const SettingMap _WatermarkOptionsMap[];
extern const SettingMap _EnabledDisabledMap[];
extern const SettingMap _PageBordersMap[];
extern const SettingMap _BookletWatermarkBackgroundFormsMap[];
extern const SettingMap _PlexMap[];
extern const SettingMap _DuplexMap[];
extern const SettingMap _HighlightPrintingColorMap[];
extern const SettingMap _HighlightMappingColorMap[];
extern const SettingMap _HighlightMappingAlgorithmMap[];
extern const SettingMap _HighlightMismatchColorMap[];
extern const SettingMap _ImageShiftOptions1SidedMap[];
extern const SettingMap _ImageShiftOptions2SidedMap[];
extern const SettingMap _CoverSidesImagedMap[];
extern const SettingMap _WatermarkStringMap[];
extern const SettingMap _TrappingMap[];
extern const SettingMap _BlackOverprintMap[];
extern const SettingMap _TRCMap[];
extern const SettingMap _RGBSourceProfileMap[];
extern const SettingMap _CMYKSourceProfileMap[];
extern const SettingMap _GraySourceProfileMap[];
extern const SettingMap _DestinationProfileMap[];
extern const SettingMap _ObjectRenderingMap[];
extern const SettingMap _HalftoneScreenMap[];
extern const SettingMap _AntialiasingMap[];
extern const SettingMap _JobTypeMap[];
extern const SettingMap _JobFormatMap[];
extern const SettingMap _OutputColorMap[];
extern const SettingMap _OutputStapleOCTMap[];
extern const SettingMap _OutputStapleLCSSMap[];
extern const SettingMap _OutputStapleHCSSMap[];
extern const SettingMap _PunchNoneMap[];
extern const SettingMap _PunchMap[];
extern const SettingMap _OutputDestOCTMap[];
extern const SettingMap _OutputDestLCSSMap[];
extern const SettingMap _OutputDestHCSSMap[];
extern const SettingMap _OutputDestHCSS_BKMap[];
extern const SettingMap _ResolutionMap[];
extern const SettingMap _StockLibraryMap[];
extern const SettingMap _ComplexFoldMap[];
extern const SettingMap _ComplexBookletFoldMap[];
extern const SettingMap _HolePunchOptionsMap[];
extern const SettingMap _ZFoldMap[];
extern const SettingMap _NamedPaperPaperListMap[];

} // namespace talmo
