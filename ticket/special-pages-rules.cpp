#include "ticket/ticket.h"

namespace talmo {

namespace {

std::unique_ptr<Cover> workingOrNew(const Cover* working, std::optional<int32_t> inserterSource)
{
    return working ? std::make_unique<Cover>(*working) : MakeNewCover(inserterSource);
}

// Saves the undo state and hands the records to the list: add in add mode, update of the
// edited entry in edit mode.
template <class T>
OSStatus commit(SpecialPagesState* state, SpecialPageList& list, DialogMode mode, const SpecialPage* edited,
                const std::vector<std::unique_ptr<T>>& records)
{
    SaveUndoState(state);
    return mode == DialogMode::Edit ? list.update(edited, records) : list.add(records);
}

} // namespace

// --- Covers --------------------------------------------------------------------------------

std::unique_ptr<Cover> MakeNewCover(std::optional<int32_t> inserterSource)
{
    auto cover = std::make_unique<Cover>();
    cover->setSidesImaged(kCoverBlankOrPreprinted);
    DefaultStock(cover->stock(), kJobContextCovers);
    if (inserterSource)
        cover->stock().setSource(*inserterSource);
    return cover;
}

int32_t CoverOptionForCovers(const Cover* front, const Cover* back)
{
    if (front && back)
        return *front == *back ? kSameCovers : kDifferentCovers;
    if (front)
        return kFrontCoverOnly;
    return back ? kBackCoverOnly : kNoCovers;
}

OSStatus MakeCoversFromDialog(int32_t option, const Cover* workingFront, const Cover* workingBack,
                              std::optional<int32_t> inserterSource, CoversDialogResult* result)
{
    if (!result || option < kNoCovers || option > kDifferentCovers)
        return paramErr;
    CoversDialogResult made;
    switch (option) {
    case kFrontCoverOnly:
        made.front = workingOrNew(workingFront, inserterSource);
        break;
    case kBackCoverOnly:
        made.back = workingOrNew(workingBack, inserterSource);
        break;
    case kSameCovers:
        made.front = workingOrNew(workingFront, inserterSource);
        made.back = std::make_unique<Cover>(*made.front);
        break;
    case kDifferentCovers:
        made.front = workingOrNew(workingFront, inserterSource);
        made.back = workingOrNew(workingBack, inserterSource);
        break;
    default:
        break;
    }
    *result = std::move(made);
    return noErr;
}

OSStatus CoversDialogOK(SpecialPagesState* state, int32_t option, const Cover* workingFront, const Cover* workingBack,
                        std::optional<int32_t> inserterSource)
{
    if (!state)
        return kPMNoContext;
    CoversDialogResult made;
    if (OSStatus status = MakeCoversFromDialog(option, workingFront, workingBack, inserterSource, &made))
        return status;
    SaveUndoState(state);
    state->frontCover = std::move(made.front);
    state->backCover = std::move(made.back);
    return noErr;
}

// --- Inserts -------------------------------------------------------------------------------

InsertsDialogInput InsertsDialogDefaults()
{
    InsertsDialogInput input;
    DefaultStock(input.stock, kJobContextInserts);
    return input;
}

bool InsertsDialogCanAccept(const InsertsDialogInput& input)
{
    return input.placement == kInsertBeforePage1 || (input.placement == kInsertAfterPages && !input.pageText.empty());
}

OSStatus MakeInsertsFromDialog(const InsertsDialogInput& input, std::vector<std::unique_ptr<Insert>>* out)
{
    if (!out || input.quantity < 1)
        return paramErr;
    PageRangeArray ranges;
    if (input.placement == kInsertBeforePage1) {
        ranges.push_back({0, 1});
    } else if (input.placement == kInsertAfterPages) {
        if (OSStatus status = CreatePageRangesBySeparatingString(&input.pageText, false, &ranges))
            return status;
    } else {
        return paramErr;
    }
    std::vector<std::unique_ptr<Insert>> made;
    made.reserve(ranges.size());
    for (const PageRange& r : ranges) {
        auto insert = std::make_unique<Insert>();
        insert->setStartPage(r.first);
        insert->setQuantity(input.quantity);
        insert->stock() = input.stock;
        made.push_back(std::move(insert));
    }
    *out = std::move(made);
    return noErr;
}

OSStatus InsertsDialogOK(SpecialPagesState* state, DialogMode mode, const Insert* edited,
                         const InsertsDialogInput& input)
{
    if (!state)
        return kPMNoContext;
    std::vector<std::unique_ptr<Insert>> made;
    if (OSStatus status = MakeInsertsFromDialog(input, &made))
        return status;
    return commit(state, state->inserts, mode, edited, made);
}

// --- Exceptions ----------------------------------------------------------------------------

ExceptionsDialogInput ExceptionsDialogDefaults()
{
    ExceptionsDialogInput input;
    ExceptionPage& w = input.working;
    DefaultStock(w.stock(), kJobContextExceptions);
    w.setPlex(kNotSet);
    w.setHalftoneScreen(kNotSet);
    w.setAntialiasing(kNotSet);
    w.setOutputColor(kNotSet);
    w.imageShift()->option = kNotSet;
    return input;
}

OSStatus MakeExceptionsFromDialog(ExceptionsDialogInput* input, std::vector<std::unique_ptr<ExceptionPage>>* out)
{
    if (!input || !out)
        return paramErr;
    if (input->trcText)
        input->working.colorOptions().setTRC(*input->trcText);
    PageRangeArray ranges;
    if (OSStatus status = CreatePageRangesBySeparatingString(&input->pageText, true, &ranges))
        return status;
    for (const PageRange& r : ranges)
        if (r.first <= 0)
            return kInvalidPageNumbersErr;
    std::vector<std::unique_ptr<ExceptionPage>> made;
    made.reserve(ranges.size());
    for (const PageRange& r : ranges) {
        auto page = std::make_unique<ExceptionPage>(input->working);
        page->setStartPage(r.first);
        page->setEndPage(r.first + r.count - 1);
        made.push_back(std::move(page));
    }
    *out = std::move(made);
    return noErr;
}

OSStatus ExceptionsDialogOK(SpecialPagesState* state, DialogMode mode, const ExceptionPage* edited,
                            ExceptionsDialogInput* input)
{
    if (!state)
        return kPMNoContext;
    std::vector<std::unique_ptr<ExceptionPage>> made;
    if (OSStatus status = MakeExceptionsFromDialog(input, &made))
        return status;
    return commit(state, state->exceptions, mode, edited, made);
}

} // namespace talmo
