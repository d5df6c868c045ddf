// Background forms options: merging the job with a form stored on the printer, or creating a
// new form from it, and the two name histories kept in the user's preferences.
#pragma once

#include "settings/settings.h"

#include <cstdint>
#include <optional>
#include <string>

namespace talmo {

// kBackgroundFormsOptionsKey and kBackgroundFormsFile (the per-user history) come from
// settings/ticket-keys.h.
inline constexpr const char* kBackgroundFormsTicketCreator = "com.talmo.print";
// The job type whose tickets carry the options.
inline constexpr int32_t kBackgroundFormsJobType = 9;
// The shared defaults read when the per-user history holds nothing.
inline constexpr const char* kTalmoFeaturesFile = "TalmoFeatures.plist";

// The cycle pages range of the checked setter: repeat from form page 2..999999.
inline constexpr int32_t kMinRepeatFormPage = 2;
inline constexpr int32_t kMaxRepeatFormPage = 999999;

// Apply-pages choices.
inline constexpr int32_t kApplyThroughoutJob = 1;
inline constexpr int32_t kApplyOnce = 2;
inline constexpr int32_t kApplyOnceThenRepeat = 3;

// Getters return paramErr for a null output. The record writes its history back to the
// preferences whenever it is destroyed: every copy made and dropped does so, on purpose, so
// that names added by a dialog survive however the dialog ends.
class BackgroundFormsOptions {
public:
    using Name = std::optional<std::string>;

    // Defaults, and the history loaded from the preferences.
    BackgroundFormsOptions();
    // Defaults, then fromTicket.
    explicit BackgroundFormsOptions(const pl::DictPtr& dict);
    // Copies share the history arrays: a name a dialog adds through one copy is seen by all.
    BackgroundFormsOptions(const BackgroundFormsOptions& other);
    BackgroundFormsOptions& operator=(const BackgroundFormsOptions& other);
    ~BackgroundFormsOptions();

    OSStatus useExistingForm(int32_t* value) const;
    OSStatus setUseExistingForm(int32_t value);
    // Checked (unchecked false): 2..999999 only. Unchecked stores any value (0 once, 1 throughout).
    OSStatus cyclePages(int32_t* value) const;
    OSStatus setCyclePages(int32_t value, bool unchecked);
    OSStatus inches(int32_t* value) const;
    OSStatus setInches(int32_t value);
    OSStatus xOffset(int32_t* value) const;
    OSStatus setXOffset(int32_t value);
    OSStatus yOffset(int32_t* value) const;
    OSStatus setYOffset(int32_t value);
    OSStatus useDocumentName(int32_t* value) const;
    OSStatus setUseDocumentName(int32_t value);
    OSStatus applyPagesFrom(int32_t* value) const;
    OSStatus setApplyPagesFrom(int32_t value);
    OSStatus mergeWithString(Name* value) const;
    OSStatus setMergeWithString(Name value);
    OSStatus newFormString(Name* value) const;
    OSStatus setNewFormString(Name value);
    // The history arrays are shared with the caller, as the dialogs add names in place. A null
    // array is replaced by an empty one.
    OSStatus existingFormsArray(pl::ArrayPtr* value) const;
    OSStatus setExistingFormsArray(pl::ArrayPtr value);
    OSStatus newFormsArray(pl::ArrayPtr* value) const;
    OSStatus setNewFormsArray(pl::ArrayPtr value);

    pl::DictPtr asTicket() const;
    // Null changes nothing; otherwise every field is reset to its default, then taken from the
    // keys present, and the history is loaded again.
    void fromTicket(const pl::DictPtr& dict);

    // History from the per-user file, or from the shared "TalmoFeatures.plist" when that file
    // holds no history (missing, damaged or without either array); an array missing from the
    // file used starts empty. Entries that are not strings are dropped.
    void loadHistory();
    // Writes both arrays into the per-user file, keeping its other entries. False when the file
    // could not be written.
    bool saveHistory() const;

    // Fields compare by value, history arrays by content.
    friend bool operator==(const BackgroundFormsOptions& a, const BackgroundFormsOptions& b);

private:
    void applyDefaults();

    int32_t useExistingForm_ = 1;
    int32_t cyclePages_ = 2;
    int32_t inches_ = 1;
    int32_t xOffset_ = 0;
    int32_t yOffset_ = 0;
    int32_t useDocumentName_ = 1;
    int32_t applyPagesFrom_ = kApplyThroughoutJob;
    pl::ArrayPtr existingFormsArray_;
    pl::ArrayPtr newFormsArray_;
    Name mergeWithString_;
    Name newFormString_;
};

// The save of the Paper/Output panel: the options' dictionary under kBackgroundFormsOptionsKey
// with the creator kBackgroundFormsTicketCreator when `jobType` is kBackgroundFormsJobType;
// for any other job type the item is removed, so the ticket never carries forms for a job
// that is not a background form job. paramErr for a null ticket; kPMTicketItemLocked when
// the item is locked (nothing changes).
OSStatus WriteBackgroundFormsToTicket(const BackgroundFormsOptions& options, int32_t jobType, Ticket* ticket);

// The background form dialog's OK, without the toolkit. Apply-pages row 1 "Throughout Job"
// stores cyclePages 1, row 2 "Once" 0, row 3 "Once, Then Repeat" the from-form-page value
// through the checked setter; the row goes to applyPagesFrom. paramErr for another row or a
// from-form-page value outside 2..999999 on row 3, and then nothing changes.
OSStatus ApplyBackgroundFormsPages(BackgroundFormsOptions& options, int32_t row, int32_t fromFormPage);
// What the from-form-page spin shows for a stored cyclePages: below 2 (throughout, once) the
// spin's default, 2.
int32_t BackgroundFormsRepeatSpinValue(int32_t cyclePages);

} // namespace talmo
