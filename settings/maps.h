// Setting maps: the static tables that bind each menu choice to the integer stored in the
// ticket and to the localization key of its label.
#pragma once

#include "platform/platform.h"

#include <cstdint>

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
    const char* key;          // localization key of the label; also the row's identifier
    int32_t ticketValue;      // stored in the ticket; kNotSet is printer default
    uint32_t command;         // menu command, 0 for none
    const char* installable;  // installable printer option the row depends on, or null
    bool requiredState;       // offered only while that option's installed state equals this
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

} // namespace talmo
