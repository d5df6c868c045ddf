#include "ticket/background-forms.h"

#include "ticket/record-read_p.h"

#include <cstdio>

namespace talmo {

using internal::getInt32;

namespace {

constexpr const char* kExistingFormsKey = "ExistingFormsArray";
constexpr const char* kNewFormsKey = "NewFormsArray";

// A copy of the strings of `v` (the menus only show strings), or null when it is no array.
pl::ArrayPtr stringsOf(const pl::ValuePtr& v)
{
    auto array = pl::as<pl::Array>(v);
    if (!array)
        return nullptr;
    auto out = pl::makeArray();
    for (const auto& item : *array)
        if (auto s = pl::as<pl::String>(item))
            out->append(pl::makeString(s->text));
    return out;
}

OSStatus get(int32_t field, int32_t* out)
{
    if (!out)
        return paramErr;
    *out = field;
    return noErr;
}

} // namespace

BackgroundFormsOptions::BackgroundFormsOptions() { loadHistory(); }

BackgroundFormsOptions::BackgroundFormsOptions(const pl::DictPtr& dict)
{
    fromTicket(dict);
    // fromTicket leaves a null dictionary alone; the record still needs its history, or the
    // destructor would write empty arrays over the user's.
    if (!dict)
        loadHistory();
}

BackgroundFormsOptions::BackgroundFormsOptions(const BackgroundFormsOptions& other)
    : useExistingForm_(other.useExistingForm_), cyclePages_(other.cyclePages_), inches_(other.inches_),
      xOffset_(other.xOffset_), yOffset_(other.yOffset_), useDocumentName_(other.useDocumentName_),
      applyPagesFrom_(other.applyPagesFrom_), existingFormsArray_(other.existingFormsArray_),
      newFormsArray_(other.newFormsArray_), mergeWithString_(other.mergeWithString_),
      newFormString_(other.newFormString_)
{
}

BackgroundFormsOptions& BackgroundFormsOptions::operator=(const BackgroundFormsOptions& other)
{
    // Field by field: a temporary record would save its history on the way out.
    useExistingForm_ = other.useExistingForm_;
    cyclePages_ = other.cyclePages_;
    inches_ = other.inches_;
    xOffset_ = other.xOffset_;
    yOffset_ = other.yOffset_;
    useDocumentName_ = other.useDocumentName_;
    applyPagesFrom_ = other.applyPagesFrom_;
    // The histories are shared, not copied: every copy saves them when it goes, and a name
    // added through one copy must survive whichever copy goes last.
    existingFormsArray_ = other.existingFormsArray_;
    newFormsArray_ = other.newFormsArray_;
    mergeWithString_ = other.mergeWithString_;
    newFormString_ = other.newFormString_;
    return *this;
}

BackgroundFormsOptions::~BackgroundFormsOptions()
{
    // Deliberate: destroying a record writes its history back.
    try {
        saveHistory();
    } catch (...) {
        std::fprintf(stderr, "DEBUG: BackgroundFormsOptions: history not saved\n");
    }
}

void BackgroundFormsOptions::applyDefaults()
{
    useExistingForm_ = 1;
    cyclePages_ = 2;
    inches_ = 1;
    xOffset_ = 0;
    yOffset_ = 0;
    useDocumentName_ = 1;
    applyPagesFrom_ = kApplyThroughoutJob;
    mergeWithString_.reset();
    newFormString_.reset();
}

OSStatus BackgroundFormsOptions::useExistingForm(int32_t* value) const { return get(useExistingForm_, value); }
OSStatus BackgroundFormsOptions::cyclePages(int32_t* value) const { return get(cyclePages_, value); }
OSStatus BackgroundFormsOptions::inches(int32_t* value) const { return get(inches_, value); }
OSStatus BackgroundFormsOptions::xOffset(int32_t* value) const { return get(xOffset_, value); }
OSStatus BackgroundFormsOptions::yOffset(int32_t* value) const { return get(yOffset_, value); }
OSStatus BackgroundFormsOptions::useDocumentName(int32_t* value) const { return get(useDocumentName_, value); }
OSStatus BackgroundFormsOptions::applyPagesFrom(int32_t* value) const { return get(applyPagesFrom_, value); }

OSStatus BackgroundFormsOptions::setUseExistingForm(int32_t value)
{
    useExistingForm_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setCyclePages(int32_t value, bool unchecked)
{
    if (!unchecked && (value < kMinRepeatFormPage || value > kMaxRepeatFormPage))
        return paramErr;
    cyclePages_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setInches(int32_t value)
{
    inches_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setXOffset(int32_t value)
{
    xOffset_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setYOffset(int32_t value)
{
    yOffset_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setUseDocumentName(int32_t value)
{
    useDocumentName_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::setApplyPagesFrom(int32_t value)
{
    applyPagesFrom_ = value;
    return noErr;
}

OSStatus BackgroundFormsOptions::mergeWithString(Name* value) const
{
    if (!value)
        return paramErr;
    *value = mergeWithString_;
    return noErr;
}

OSStatus BackgroundFormsOptions::setMergeWithString(Name value)
{
    mergeWithString_ = std::move(value);
    return noErr;
}

OSStatus BackgroundFormsOptions::newFormString(Name* value) const
{
    if (!value)
        return paramErr;
    *value = newFormString_;
    return noErr;
}

OSStatus BackgroundFormsOptions::setNewFormString(Name value)
{
    newFormString_ = std::move(value);
    return noErr;
}

OSStatus BackgroundFormsOptions::existingFormsArray(pl::ArrayPtr* value) const
{
    if (!value)
        return paramErr;
    *value = existingFormsArray_;
    return noErr;
}

OSStatus BackgroundFormsOptions::setExistingFormsArray(pl::ArrayPtr value)
{
    existingFormsArray_ = value ? std::move(value) : pl::makeArray();
    return noErr;
}

OSStatus BackgroundFormsOptions::newFormsArray(pl::ArrayPtr* value) const
{
    if (!value)
        return paramErr;
    *value = newFormsArray_;
    return noErr;
}

OSStatus BackgroundFormsOptions::setNewFormsArray(pl::ArrayPtr value)
{
    newFormsArray_ = value ? std::move(value) : pl::makeArray();
    return noErr;
}

pl::DictPtr BackgroundFormsOptions::asTicket() const
{
    auto d = pl::makeDict();
    d->setInt("UseExistingForm", useExistingForm_);
    if (useExistingForm_ == 2 && mergeWithString_)
        d->setString("MergeWithString", *mergeWithString_);
    d->setInt("CyclePages", cyclePages_);
    d->setInt("Inches", inches_);
    d->setInt("X1", xOffset_);
    d->setInt("Y1", yOffset_);
    d->setInt("UseDocumentName", useDocumentName_);
    d->setInt("ApplyPagesFrom", applyPagesFrom_);
    if (newFormString_)
        d->setString("NewFormString", *newFormString_);
    return d;
}

void BackgroundFormsOptions::fromTicket(const pl::DictPtr& dict)
{
    if (!dict)
        return;
    // Everything starts over: a key the dictionary lacks means its default, not the old value.
    applyDefaults();
    const pl::Dictionary& d = *dict;
    auto read = [&](const char* key, int32_t& field) {
        if (auto v = getInt32(d, key))
            field = *v;
    };
    read("UseExistingForm", useExistingForm_);
    read("CyclePages", cyclePages_);
    read("Inches", inches_);
    read("X1", xOffset_);
    read("Y1", yOffset_);
    read("UseDocumentName", useDocumentName_);
    read("ApplyPagesFrom", applyPagesFrom_);
    if (auto s = d.getString("NewFormString"))
        newFormString_ = std::move(*s);
    if (auto s = d.getString("MergeWithString"))
        mergeWithString_ = std::move(*s);
    loadHistory();
}

void BackgroundFormsOptions::loadHistory()
{
    existingFormsArray_.reset();
    newFormsArray_.reset();
    pl::DictPtr source = CopyUserPreferences(kBackgroundFormsFile);
    if (!source || (!source->contains(kExistingFormsKey) && !source->contains(kNewFormsKey)))
        source = pl::as<pl::Dictionary>(CopyXMLData(kTalmoFeaturesFile));
    if (source) {
        newFormsArray_ = stringsOf(source->get(kNewFormsKey));
        existingFormsArray_ = stringsOf(source->get(kExistingFormsKey));
    }
    if (!existingFormsArray_)
        existingFormsArray_ = pl::makeArray();
    if (!newFormsArray_)
        newFormsArray_ = pl::makeArray();
}

bool BackgroundFormsOptions::saveHistory() const
{
    pl::DictPtr prefs = CopyUserPreferences(kBackgroundFormsFile);
    if (!prefs)
        prefs = pl::makeDict();
    prefs->set(kExistingFormsKey, existingFormsArray_ ? existingFormsArray_ : pl::makeArray());
    prefs->set(kNewFormsKey, newFormsArray_ ? newFormsArray_ : pl::makeArray());
    return WriteUserPreferences(kBackgroundFormsFile, prefs);
}

OSStatus WriteBackgroundFormsToTicket(const BackgroundFormsOptions& options, int32_t jobType, Ticket* ticket)
{
    if (!ticket)
        return paramErr;
    // Only a background form job carries the options; for any other job type an item left
    // from an earlier save would put forms into the job ticket.
    if (jobType != kBackgroundFormsJobType)
        return TicketRemove(ticket, kBackgroundFormsOptionsKey);
    return TicketSetDict(ticket, kBackgroundFormsOptionsKey, options.asTicket(), kBackgroundFormsTicketCreator);
}

OSStatus ApplyBackgroundFormsPages(BackgroundFormsOptions& options, int32_t row, int32_t fromFormPage)
{
    int32_t cycle = 0;
    switch (row) {
    case kApplyThroughoutJob:
        cycle = 1;
        break;
    case kApplyOnce:
        cycle = 0;
        break;
    case kApplyOnceThenRepeat:
        if (fromFormPage < kMinRepeatFormPage || fromFormPage > kMaxRepeatFormPage)
            return paramErr;
        cycle = fromFormPage;
        break;
    default:
        return paramErr;
    }
    options.setApplyPagesFrom(row);
    return options.setCyclePages(cycle, row != kApplyOnceThenRepeat);
}

int32_t BackgroundFormsRepeatSpinValue(int32_t cyclePages)
{
    return cyclePages < kMinRepeatFormPage ? kMinRepeatFormPage : cyclePages;
}

bool operator==(const BackgroundFormsOptions& a, const BackgroundFormsOptions& b)
{
    return a.useExistingForm_ == b.useExistingForm_ && a.cyclePages_ == b.cyclePages_ && a.inches_ == b.inches_ &&
           a.xOffset_ == b.xOffset_ && a.yOffset_ == b.yOffset_ && a.useDocumentName_ == b.useDocumentName_ &&
           a.applyPagesFrom_ == b.applyPagesFrom_ && a.mergeWithString_ == b.mergeWithString_ &&
           a.newFormString_ == b.newFormString_ && pl::equal(a.existingFormsArray_, b.existingFormsArray_) &&
           pl::equal(a.newFormsArray_, b.newFormsArray_);
}

} // namespace talmo
