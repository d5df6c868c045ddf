// The rules of the covers, inserts and exceptions dialogs, over plain inputs, so that the
// dialogs only move values between their controls and these functions.
#pragma once

#include "ticket/page-ranges.h"
#include "ticket/special-pages.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace talmo {

// How a dialog was opened: an edit replaces the edited entry, an add appends new ones.
enum class DialogMode { Add, Edit };

// --- Covers --------------------------------------------------------------------------------

// Values of the cover options pop-up.
inline constexpr int32_t kNoCovers = 1;
inline constexpr int32_t kFrontCoverOnly = 2;
inline constexpr int32_t kBackCoverOnly = 3;
inline constexpr int32_t kSameCovers = 4;
inline constexpr int32_t kDifferentCovers = 5;

inline constexpr const char* kCoversDialogTitleAddKey = "Covers Dialog Title Add";
inline constexpr const char* kCoversDialogTitleEditKey = "Covers Dialog Title Edit";

// A cover made anew: blank or pre-printed, the default stock of the covers context, and
// the inserter source pop-up's value as the stock's source when the dialog shows one.
std::unique_ptr<Cover> MakeNewCover(std::optional<int32_t> inserterSource = std::nullopt);

// The option pop-up's value for the covers as they stand (what the dialog shows at open).
int32_t CoverOptionForCovers(const Cover* front, const Cover* back);

struct CoversDialogResult {
    std::unique_ptr<Cover> front;
    std::unique_ptr<Cover> back;
};
// The covers that OK makes from the dialog's working covers (null: none yet, so a new one
// is made when the option needs it). "Same covers" gives the back the front's start page,
// stock and sides imaged. paramErr for an option outside 1..5 or a null result.
OSStatus MakeCoversFromDialog(int32_t option, const Cover* workingFront, const Cover* workingBack,
                              std::optional<int32_t> inserterSource, CoversDialogResult* result);

// OK of the covers dialog: saves the undo state and puts the covers in place.
OSStatus CoversDialogOK(SpecialPagesState* state, int32_t option, const Cover* workingFront, const Cover* workingBack,
                        std::optional<int32_t> inserterSource = std::nullopt);

// --- Inserts -------------------------------------------------------------------------------

inline constexpr int32_t kInsertAfterPages = 1;
inline constexpr int32_t kInsertBeforePage1 = 2;

inline constexpr const char* kInsertsDialogTitleAddKey = "InsertsDialogTitleAdd";
inline constexpr const char* kInsertsDialogTitleEditKey = "InsertsDialogTitleEdit";
// The fixed text the page field shows while "before page 1" is chosen.
inline constexpr const char* kInsertBeforePage1TextKey = "InsertBeforePage1FieldText";

struct InsertsDialogInput {
    int32_t placement = kInsertAfterPages;
    std::string pageText; // read only for kInsertAfterPages
    int32_t quantity = 1; // sheets per insert, 1 or more
    Stock stock;
};
// "Revert": the default stock of the inserts context, quantity 1, empty field, after pages.
InsertsDialogInput InsertsDialogDefaults();
// OK is enabled for "before page 1", and for "after pages" while the field is not empty.
bool InsertsDialogCanAccept(const InsertsDialogInput& input);
// One insert per page of the field (single-page mode), or one before page 1 (start page 0).
// A parser error code (1000, 1001, 1002) with nothing made, or paramErr for a placement
// outside 1..2, a quantity below 1 or a null output.
OSStatus MakeInsertsFromDialog(const InsertsDialogInput& input, std::vector<std::unique_ptr<Insert>>* out);
// OK of the inserts dialog: makes the inserts, then saves the undo state and adds them (add
// mode) or replaces `edited` by them (edit mode). On a page-list error nothing changes, the
// snapshot included, and the code is the one to show in the special pages alert.
OSStatus InsertsDialogOK(SpecialPagesState* state, DialogMode mode, const Insert* edited,
                         const InsertsDialogInput& input);

// --- Exceptions ----------------------------------------------------------------------------

inline constexpr const char* kExceptionsDialogTitleAddKey = "Add Exceptions Title";
inline constexpr const char* kExceptionsDialogTitleEditKey = "Edit Exceptions Title";

struct ExceptionsDialogInput {
    std::string pageText;
    ExceptionPage working;              // the settings every range gets
    std::optional<std::string> trcText; // the TRC combo box's text, when it holds a string
};
// "Revert": the default stock of the exceptions context, empty field, plex, screen,
// antialiasing, output colour and image shift mode unset (so the summaries read "use job
// setting").
ExceptionsDialogInput ExceptionsDialogDefaults();
// Stores the TRC text into the working record's colour options, then makes one copy of the
// working record per range of the field (ranges mode). A parser error code, 1003 when a range
// starts at page 0 (nothing is made then), or paramErr for a null argument.
OSStatus MakeExceptionsFromDialog(ExceptionsDialogInput* input, std::vector<std::unique_ptr<ExceptionPage>>* out);
// OK of the exceptions dialog, as InsertsDialogOK.
OSStatus ExceptionsDialogOK(SpecialPagesState* state, DialogMode mode, const ExceptionPage* edited,
                            ExceptionsDialogInput* input);

} // namespace talmo
