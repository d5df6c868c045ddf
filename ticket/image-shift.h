// Image shift options: where the printed image moves on the sheet, per side and axis, and
// how side 2 follows side 1. A plain record with free functions, kept in the print settings
// ticket at job level and inside each exception page at page level.
#pragma once

#include "settings/settings.h"
#include "ticket/summary-labels.h"

#include <cstdint>
#include <string>

namespace talmo {

// kImageShiftOptionsJobKey and kImageShiftOptionsPageKey come from settings/ticket-keys.h.
// The Image Options panel writes its ticket items with this creator.
inline constexpr const char* kImageShiftTicketCreator = "T";

// Shift modes, as stored under "Option". 2 is no longer offered but still honoured.
enum ImageShiftMode : int32_t {
    kImageShiftIndependent = 1,
    kImageShiftMirrorBothLegacy = 2,
    kImageShiftMirrorX = 3,
    kImageShiftMirrorY = 4,
    kImageShiftMirrorBoth = 5,
    kImageShiftMirrorXTandemY = 6,
    kImageShiftMirrorYTandemX = 7,
    kImageShiftTandemX = 8,
    kImageShiftTandemY = 9,
    kImageShiftTandemBoth = 10,
};

// Field order is the stored layout. Shifts are hundredths of an inch when inches is non-zero,
// else tenths of a millimetre.
struct _IS_Options {
    int32_t valid = 1;
    int32_t stockSize = 1;    // job-level stock size code, copied in on read, never written
    int32_t duplex = kNotSet; // the job's "com.talmo.print.FinishingDuplex"; 1 is one-sided
    int32_t option = kNotSet; // ImageShiftMode, or kNotSet for printer default / job setting
    int32_t reserved = 0;
    int32_t inches = 1;
    int32_t x1 = 0;
    int32_t x2 = 0;
    int32_t y1 = 0;
    int32_t y2 = 0;

    friend bool operator==(const _IS_Options&, const _IS_Options&) = default;
};

// Sets the initial values (valid 1, stockSize 1, duplex and option unset, inch mode, no
// shift). -50 when options is null.
OSStatus ImageShiftInitialize(_IS_Options* options);

// Reads a record from its dictionary form; a null dictionary reads as empty. Values are
// hundredths of a millimetre when "FullPrecision" is true (converted by truncation), else
// taken as stored. -50 when options is null.
OSStatus ImageShiftSetOptionsFromTicket(_IS_Options* options, const pl::DictPtr& dict);

// The dictionary form, values in hundredths of a millimetre (inch values rounded); null when
// options is null, not valid or the mode is unset. The context does not change the output.
pl::DictPtr ImageShiftCreateTicketFromOptions(const _IS_Options* options, int32_t context = 0);

// The dialog's "Revert": valid, stock size and mode unset, inch mode, no shift. The duplex
// setting, which comes from the job, stays.
void DefaultImageShift(_IS_Options& options);

// How side 2 follows side 1 in a mode, and which fields the dialog lets the user edit.
struct ImageShiftSide2 {
    int32_t x2 = 0;
    int32_t y2 = 0;
    bool x1Editable = false; // y1 is editable exactly when x1 is
    bool x2Editable = false;
    bool y2Editable = false;
};
// Applies the side 2 rule of `mode` to the given values. Modes outside the table behave as
// unset: nothing changes and nothing is editable. A mirrored minimum value saturates instead
// of overflowing.
ImageShiftSide2 ImageShiftSide2Rule(int32_t mode, int32_t duplex, int32_t x1, int32_t y1, int32_t x2, int32_t y2);
// The rule applied to a record's own side 2 fields (what the dialog does after every change).
void ApplyImageShiftOption(_IS_Options& options);

// Entry field limits of one axis in one unit, in stored units.
struct ImageShiftRange {
    int32_t min;
    int32_t max;
    int decimals; // implied decimals of the stored integer: 2 for inches, 1 for millimetres
};
ImageShiftRange ImageShiftXRange(bool inches);
ImageShiftRange ImageShiftYRange(bool inches);

// Unit switch of one field: to inches round(value / 2.54), to millimetres round(value * 2.54),
// both exact in integers and rounded half away from zero.
int32_t ImageShiftConvertUnit(int32_t value, bool toInches);
// Switches the record's unit: converts the four shifts, holds them inside the new unit's
// ranges and applies the side 2 rule again. Nothing happens when the unit does not change.
void ImageShiftSwitchUnits(_IS_Options& options, bool inches);

// The summary text: "PrinterDefault" (job level) or "UseJobSetting" (page level) when there is
// nothing to show, else the two-line side 1 / side 2 text with localized numbers and units.
std::string GenerateImageShiftSummary(const _IS_Options& options, int32_t context, const LabelLookup& localize);

// The ticket part of the panel's sync on the session's print settings ticket. Direction 0
// writes the job-level dictionary with the creator "T" (nothing, not even a removal, when the
// record yields none); direction 1 reads it (absent reads as empty) and copies the job stock's
// size and the duplex setting in. -50 for a null record or ticket or another direction; a
// locked item gives the ticket's status and is left as it was.
inline constexpr int kImageShiftSyncToTicket = 0;
inline constexpr int kImageShiftSyncFromTicket = 1;
OSStatus ImageShiftSync(_IS_Options* options, int direction, Ticket* ticket);

} // namespace talmo
