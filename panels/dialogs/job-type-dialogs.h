// The job type's "Setup..." dialogs: the saved job and secure print settings, the note of the
// job types that carry nothing but their value, and (job type 9) the background forms dialog.
//
// "com.talmo.print.JobType" holds exactly what the TPIF writer reads for the type, so what a
// dialog shows is what the printer receives; see docs/dialog.md for the table.
#pragma once

#include "platform/platform.h" // Bundle, pl::DictPtr
#include "ticket/ticket.h"     // BackgroundFormsOptions

#include <cstdint>

class QWidget;

namespace talmo {

// Ticket values of the job type menu, in its order; 8 is no type.
inline constexpr int32_t kJobTypeNormal = 1;
inline constexpr int32_t kJobTypeHold = 2;
inline constexpr int32_t kJobTypeSaved = 3;
inline constexpr int32_t kJobTypeSecure = 4;
inline constexpr int32_t kJobTypeDelayed = 5;
inline constexpr int32_t kJobTypeSampleSet = 6;
inline constexpr int32_t kJobTypeFax = 7;
inline constexpr int32_t kJobTypeBackgroundForms = kBackgroundFormsJobType;

// Keys of the job type dictionary.
inline constexpr const char* kJobTypeField = "JobType";
inline constexpr const char* kSaveDispositionField = "SaveDisposition"; // _SavedJobSaveOptionRadioMap
inline constexpr const char* kUseJobNameField = "UseJobName";           // Boolean: the document's name
inline constexpr const char* kSavedJobNameField = "SavedJobName";
inline constexpr const char* kSavedJobLocationField = "SavedJobLocation"; // URI; absent: the printer's folder
inline constexpr const char* kSaveFormatField = "MediaType";              // _JobFormatMap; absent: printer default

// Name and folder lengths in UTF-16 units: escaped for XML (at most 6 bytes a unit), they
// always fit the writer's line, which would otherwise cut them.
inline constexpr int kJobTypeTextLimit = 127;

// Sets "JobType" and removes every field the writer does not read for that type, so a
// dictionary never carries settings of a type it no longer has. Nothing for a null dictionary.
void SetJobTypeInDictionary(const pl::DictPtr& jobTypeDict, int32_t jobType);

// Whether the Setup dialog of a job type exists (3-7 and 9); the panel's button follows it.
bool JobTypeHasSetup(int32_t jobType);

// Job type 9 runs the background forms dialog on `forms`, 3-7 the type's dialog on
// `jobTypeDict`; OK stores the edits and the type, and returns true. Cancel, another job type,
// a null dictionary or a description that does not load change nothing and return false.
bool RunModalJobTypeSetupDialog(QWidget* parent, const Bundle& bundle, int32_t jobType, pl::DictPtr jobTypeDict,
                                BackgroundFormsOptions& forms);

} // namespace talmo
