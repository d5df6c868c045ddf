// The Advanced panel's values and how they travel in the print settings ticket, apart from any
// widget so that they can be read, written and summarised on their own.
#pragma once

#include "settings/settings.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace talmo::advanced {

extern const SettingMap _BookletLayoutOrderMap[];
extern const SettingMap _RotateImage180Map[];
extern const SettingMap _OutputOrderMap[];
extern const SettingMap _OPISubstitutionMap[];
extern const SettingMap _OPIPrescanMap[];
extern const SettingMap _PagesToPrintMap[];

inline constexpr int32_t kPagesAll = 0;
inline constexpr int32_t kPagesRange = 1;
inline constexpr int32_t kFirstPage = 1;
inline constexpr int32_t kLastPage = 9999;

struct AdvancedSettings {
    int32_t bookletOrder = kNotSet;
    int32_t rotation = kNotSet;
    int32_t outputOrder = kNotSet;
    int32_t opiSubstitution = kNotSet;
    int32_t opiPrescan = kNotSet;
    int32_t pagesToPrint = kPagesAll;
    int32_t fromPage = kFirstPage;
    int32_t toPage = kFirstPage;
    bool emitTPIF = false;

    bool operator==(const AdvancedSettings&) const = default;
};

// Absent keys read as the defaults above; a page range reads with from <= to within
// kFirstPage..kLastPage, whatever the ticket held.
AdvancedSettings ReadAdvancedSettings(const Ticket* ticket);
// Every value at its default removes its key; the others are written with the panels' client
// id. Pages "all" removes the range keys too.
OSStatus WriteAdvancedSettings(const AdvancedSettings& settings, Ticket* ticket);
// (title, value) pairs of what differs from the defaults, the labels through `localized`; a
// page range's value is "<from> - <to>".
using Localizer = std::function<std::string(const char* key)>;
std::vector<std::pair<std::string, std::string>> AdvancedSummary(const AdvancedSettings& settings,
                                                                 const Localizer& localized);

} // namespace talmo::advanced
