// PPD choices: the current printer's PPD opened with libcups, conversion between PPD option
// choices and the integer ticket values the panels use, and menus of the offered choices.
// The libcups PPD API itself is fenced in ppd.cpp; callers see only the opaque handle.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct _ppd_file_s;

namespace talmo {

using PPDHandle = _ppd_file_s*;

// One choice row of a PPD keyword map; a map ends with a row whose keyword is null.
struct PPDChoiceMap {
    const char* choice;
    int32_t ticketValue;
};
// One row of the main keyword map: PPD option keyword -> its choice map.
struct PPDKeywordMap {
    const char* option;
    const PPDChoiceMap* choices;
};

extern const PPDKeywordMap _MainKeywordMap[];
extern const PPDChoiceMap _BannerPageMap[], _RequestOffsetMap[], _JCLTrueGrayGraphicsMap[], _JCLTrueGrayImagesMap[],
    _LightenDarkenMap[], _MediaColorMap[], _MediaTypeMap[], _PPDDuplexMap[], _JCLPrintQualityMap[],
    _TLRGBColorSpaceMap[], _TLCMYKColorSpaceMap[], _JCLColorCorrectionMap[], _PageSizeMap[], _OutputBinMap[],
    _TLFoldMap[], _TLPunchMap[], _TLStapleMap[], _DraftModeMap[], _PPDOutputOptionMap[], _PPDResolutionMap[],
    _ColorModeMap[], _InputSlotMap[], _FeedEdgeMap[], _SlipSheetMap[];

// Text encodings a PPD may declare; kRoman is the platform default (value 0).
enum class PPDTextEncoding { kRoman = 0, kLatin1, kLatin2, kLatin5, kShiftJIS, kUTF8 };

// The current printer's PPD, opened on first use from the current print session's printer.
PPDHandle PPDGetCurrent();
void PPDCloseCurrent();
// Opens a PPD file as the current one (the command line and tests). Null when libcups
// refuses the file; any previously current PPD is closed first.
PPDHandle PPDOpenAsCurrent(const std::string& path);
// Why the last open failed, with the line where libcups stopped (0 when unknown).
std::string PPDLastErrorText(int* line);
// True only for the maker's exact manufacturer name ("Talmo", not "Talmo Inc.").
bool PPDManufacturerIsTalmo(PPDHandle ppd);

PPDTextEncoding PPDGetEncoding(PPDHandle ppd);
// Converts PPD text in the PPD's encoding to UTF-8.
std::string PPDTextToUTF8(PPDHandle ppd, std::string_view text);

// The page format ticket's PPD dictionary (option -> choice).
std::optional<std::string> PPDCopyCurrentChoice(const pl::DictPtr& ppdDict, std::string_view option);
void PPDSetCurrentChoice(const pl::DictPtr& ppdDict, std::string_view option, std::string_view choice);

std::optional<std::string> PPDCopyDefaultChoice(PPDHandle ppd, std::string_view option);
// -1 when the option or the choice has no row; first matching row wins.
int32_t PPDTicketValueForChoice(std::string_view option, std::string_view choice);
// The first choice keyword with that value, or null.
const char* PPDChoiceForTicketValue(std::string_view option, int32_t value);
int32_t PPDGetTicketValueForChoiceOrDefault(const pl::DictPtr& ppdDict, PPDHandle ppd, std::string_view option);
std::optional<std::string> PPDCopyChoiceText(PPDHandle ppd, std::string_view option, std::string_view choice);

// A choice the PPD offers, in PPD order, with its ticket value and text (UTF-8).
struct PPDMenuItem {
    std::string text;
    int32_t ticketValue;
};
// Fills `items` with the offered choices that have a map row; writes the two diagnostics
// ("Expected PPD option not found: ", "Skipped unrecognized choice in PPD: ") on stderr.
// Returns the item count.
int PPDPopulateMenuWithChoices(std::vector<PPDMenuItem>& items, PPDHandle ppd, std::string_view option);

// The PPD's manufacturer, nickname and custom page size limits (points).
std::optional<std::string> PPDGetManufacturer(PPDHandle ppd);
std::optional<std::string> PPDGetNickName(PPDHandle ppd);
bool PPDGetCustomSizeLimits(PPDHandle ppd, float* minWidth, float* minHeight, float* maxWidth, float* maxHeight);

// The options of the PPD group "InstallableOptions" with their marked choice, in PPD order.
std::vector<std::pair<std::string, std::string>> PPDInstallableOptionChoices(PPDHandle ppd);

} // namespace talmo

namespace talmo {

class Ticket;

// The page format ticket keeps the PPD choices the user made as one dictionary item
// (option -> choice) under this key.
inline constexpr char kPMPPDDictKey[] = "PMPPDDict";

// A copy of the ticket's PPD dictionary; empty when the ticket has none.
pl::DictPtr PMTicketGetPPDDict(const Ticket* pageFormat);
std::optional<std::string> PPDCopyCurrentChoice(const Ticket* pageFormat, std::string_view option);
// Stores the choice in the ticket's PPD dictionary (written back with the panels' creator).
OSStatus PPDSetCurrentChoice(Ticket* pageFormat, std::string_view option, std::string_view choice);

} // namespace talmo

namespace talmo {

struct MenuModel;
struct PopupButtonModel;

// The offered choices as menu items whose reference is the ticket value; the popup variant
// also sets the control maximum to the item count.
int PPDPopulateMenuWithChoices(MenuModel& menu, PPDHandle ppd, std::string_view option);
int PPDPopulatePopupWithChoices(PopupButtonModel& popup, PPDHandle ppd, std::string_view option);
// Makes GetMediaLimits answer the current PPD's custom page size limits (the defaults
// while no PPD can be opened).
void InstallPPDMediaLimits();

} // namespace talmo
