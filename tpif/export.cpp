// Export of the current settings to a TPIF file.
#include "tpif/summary.h"

#include "platform/atomic-file.h"
#include "platform/session.h"
#include "settings/ticket-access.h"
#include "tpif/import.h"
#include "tpif/writer.h"

#include <cstdio>
#include <cstdlib>

namespace talmo {

pl::DictPtr TPIFExportItems(const pl::DictPtr& ticket)
{
    auto items = pl::makeDict();
    if (!ticket)
        return items;
    // Only this system's own items: the platform's settings never reach the document.
    for (const auto& [key, value] : *ticket)
        if (key.rfind("com.talmo", 0) == 0)
            items->set(key, value);
    return items;
}

OSStatus TPIFExportSessionToFileAtPath(PrintSession* session, const std::string& path)
{
    if (path.empty())
        return paramErr;
    if (!session)
        return kPMNoSession;
    TPIFRunPDESync(session, 0);
    Ticket* ticket = nullptr;
    if (const OSStatus status = GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket); status != noErr)
        return status;
    auto items = TPIFExportItems(ticket ? ticket->asDictionary() : nullptr);

    // The document is built in memory and replaces the file in one step.
    char* buffer = nullptr;
    size_t length = 0;
    FILE* stream = open_memstream(&buffer, &length);
    if (!stream)
        return memFullErr;
    WriteTPIF(stream, items);
    tpif_ofp = nullptr;
    const bool ok = std::fflush(stream) == 0 && !std::ferror(stream);
    std::fclose(stream);
    const std::string document = ok ? std::string(buffer, length) : std::string();
    std::free(buffer);
    if (!ok)
        return memFullErr;
    return WriteFileAtomically(path, document, 0644) ? noErr : kTPIFExportIOErr;
}

OSStatus TPIFExportToFileAtPath(const std::string& path)
{
    return TPIFExportSessionToFileAtPath(GetCurrentPrintSession(), path);
}

} // namespace talmo
