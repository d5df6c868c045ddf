// Merging an imported dictionary into the session's print settings ticket.
#include "tpif/tpif.h"

#include "platform/session.h"
#include "settings/ticket-access.h"

#include <cstdio>

namespace talmo {

namespace {

constexpr char kImportCreator[] = "TALMO";

std::string describe(const pl::ValuePtr& v)
{
    if (auto i = pl::as<pl::Integer>(v))
        return std::to_string(i->value);
    if (auto s = pl::as<pl::String>(v))
        return "\"" + s->text + "\"";
    if (auto b = pl::as<pl::Boolean>(v))
        return b->value ? "true" : "false";
    if (auto r = pl::as<pl::Real>(v))
        return std::to_string(r->value);
    if (auto d = pl::as<pl::Dictionary>(v))
        return "dictionary of " + std::to_string(d->size());
    if (auto a = pl::as<pl::Array>(v))
        return "array of " + std::to_string(a->size());
    return "value";
}

} // namespace

OSStatus TPIFImportMergeIntoJobTicket(PrintSession* session, const pl::DictPtr& dictionary)
{
    if (!dictionary)
        return paramErr;
    if (dictionary->size() == 0)
        return noErr;
    Ticket* ticket = nullptr;
    if (const OSStatus status = GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket); status != noErr)
        return status;
    if (!ticket)
        return kPMInvalidTicket;
    for (const auto& [key, value] : *dictionary) {
        std::fprintf(stderr, "DEBUG: TPIF import: %s = %s\n", key.c_str(), describe(value).c_str());
        // The setter of the value's type; numbers that do not fit 32 bits, reals, dates and
        // data go through the ticket's own setter unchanged.
        OSStatus status = noErr;
        if (auto d = pl::as<pl::Dictionary>(value)) {
            status = TicketSetDict(ticket, key, d, kImportCreator);
        } else if (auto a = pl::as<pl::Array>(value)) {
            status = TicketSetArray(ticket, key, a, kImportCreator);
        } else if (auto i = pl::as<pl::Integer>(value); i && i->value >= INT32_MIN && i->value <= INT32_MAX) {
            status = TicketSetInt32(ticket, key, static_cast<int32_t>(i->value), kImportCreator);
        } else if (auto s = pl::as<pl::String>(value)) {
            status = TicketSetString(ticket, key, s->text, kImportCreator);
        } else if (auto b = pl::as<pl::Boolean>(value)) {
            status = TicketSetBool(ticket, key, b->value, kImportCreator);
        } else if (value) {
            status = ticket->set(key, value, kImportCreator);
        }
        if (status != noErr)
            std::fprintf(stderr, "DEBUG: TPIF import: %s not merged (%d)\n", key.c_str(), static_cast<int>(status));
    }
    TPIFRunPDESync(session, 1);
    return noErr;
}

OSStatus TPIFImportFiles(const std::vector<std::string>& paths)
{
    std::vector<OSStatus> statuses;
    auto dictionary = TPIFImportFilesIntoDictionary(paths, &statuses);
    const OSStatus merged = TPIFImportMergeIntoJobTicket(GetCurrentPrintSession(), dictionary);
    for (OSStatus s : statuses)
        if (s != noErr)
            return kImportFileFailed;
    return merged;
}

} // namespace talmo
