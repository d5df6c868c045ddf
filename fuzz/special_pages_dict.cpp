// Arbitrary property lists to every special-page record's dictionary constructor, and the
// same dictionary read as a print settings ticket into the lists and covers and written back.
// A record rebuilt from what it wrote must write the same dictionary again, the image shift
// aside: it rounds on writing and truncates on reading, so it may drift by design.
#include "ticket/ticket.h"

#include <cstdlib>
#include <string_view>

namespace {

template <class Record> void roundTrip(const talmo::pl::DictPtr& d)
{
    const Record first(d);
    const talmo::pl::DictPtr written = first.asTicket();
    const Record second(written);
    const talmo::pl::DictPtr rewritten = second.asTicket();
    for (const auto& d2 : {written, rewritten})
        d2->remove("com.talmo.print.ImageShiftOptionsPage");
    if (!talmo::pl::equal(rewritten, written))
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace talmo;
    const pl::DictPtr dict =
        pl::as<pl::Dictionary>(pl::readPlist(std::string_view(reinterpret_cast<const char*>(data), size)));
    if (!dict)
        return 0;
    roundTrip<Cover>(dict);
    roundTrip<Insert>(dict);
    roundTrip<ExceptionPage>(dict);

    Ticket ticket;
    if (ticket.loadDictionary(dict, "fuzz") != noErr)
        return 0;
    SpecialPagesState state;
    if (ReadSpecialPagesFromTicket(&state, &ticket) != noErr)
        std::abort();
    // The exception list keeps its invariant whatever the ticket held.
    for (long i = 0; i < state.exceptions.count(); ++i) {
        const ExceptionPage* p = state.exceptions.pageAtIndex(i);
        const ExceptionPage* next = state.exceptions.pageAtIndex(i + 1);
        if (p->startPage() > p->endPage() || (next && p->endPage() >= next->startPage()))
            std::abort();
    }
    SaveUndoState(&state);
    WriteSpecialPagesToTicket(&state, &ticket);
    PerformUndo(&state);
    return 0;
}
