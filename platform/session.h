// The print session: its tickets (print settings, page format, printer info) and the current
// printer, plus the process-wide current session that all settings code reads.
#pragma once

#include "platform/status.h"
#include "platform/values.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

// Statuses of ticket operations (the platform's error range for tickets).
inline constexpr OSStatus kPMTicketItemLocked = -30890;    // the item is locked; nothing changed
inline constexpr OSStatus kPMTicketItemNotFound = -30891;  // no item under that key
inline constexpr OSStatus kPMTicketItemWrongType = -30892; // the item is of another type or range
inline constexpr OSStatus kPMInvalidTicket = -30893;       // a ticket handle names no ticket

// Names under which a session keeps its tickets.
inline constexpr char kPMPrintSettingsTicket[] = "PMPrintSettingsTicket";
inline constexpr char kPMPageFormatTicket[] = "PMPageFormatTicket";
inline constexpr char kPMPrinterInfoTicket[] = "PMPrinterInfoTicket";

// A ticket: items in insertion order, each a value written by a creator, possibly locked.
// Values are snapshots: set() stores a deep copy and get() returns one, so a value changed
// after it was read must be set again to reach the ticket.
class Ticket {
public:
    struct Item {
        pl::ValuePtr value;
        std::string creator;
        bool locked = false;
    };

    // A copy of the value, or null when absent.
    pl::ValuePtr get(std::string_view key) const;
    // Stores a copy of `value` written by `creator`; a null value removes the item.
    // paramErr for an empty key or an empty creator; kPMTicketItemLocked when the item is
    // locked (nothing changes). Setting keeps the item's position.
    OSStatus set(std::string_view key, const pl::ValuePtr& value, std::string_view creator, bool locked = false);
    // noErr also when absent; kPMTicketItemLocked for a locked item.
    OSStatus remove(std::string_view key);
    bool contains(std::string_view key) const;
    std::optional<std::string> creatorOf(std::string_view key) const;
    bool isLocked(std::string_view key) const;
    std::vector<std::string> keys() const;
    size_t size() const { return items_.size(); }

    // Deep copy, key -> value, in item order.
    pl::DictPtr asDictionary() const;
    // Sets every entry of `dict` with `creator`, unlocked. Checked first: when any key is
    // locked (kPMTicketItemLocked), or `dict` is null or the creator empty (paramErr), nothing
    // changes.
    OSStatus loadDictionary(const pl::DictPtr& dict, std::string_view creator);

private:
    friend class PrintSession; // writes the print system's own items, locked ones included
    const Item* find(std::string_view key) const;
    void replace(std::string_view key, const pl::ValuePtr& value, std::string_view creator, bool locked);
    std::vector<std::pair<std::string, Item>> items_;
};

// The printer a session prints to.
struct Printer {
    std::string name;
    std::string deviceURI;
    std::string makeAndModel;
    std::string ppdPath; // empty when the printer has no PPD
    bool isDemo = false;
    std::string moreInfoURI; // the printer's own web page ("printer-more-info"); empty when unknown
};

// The built-in demo printer, whose PPD is the bundle's "ppd/talmo-studio-press.ppd" resource (or the
// source tree's resources/ppd/talmo-studio-press.ppd, found through TALMO_SOURCE_DIR). Its device
// URI is "file:///dev/null": no host, so nothing ever contacts a network.
Printer DemoPrinter();

// A CUPS destination: name, device URI, make and model, web page, and its PPD fetched with
// cupsGetPPD2 into a temporary file that the caller owns (remove it when done). Every
// request shares one deadline of `timeoutMs`; nullopt when the server is unreachable, the
// destination unknown or the deadline passed. An empty name asks for the default
// destination; an empty server means the configured one (cupsServer(): CUPS_SERVER,
// client.conf, the local socket); otherwise "host[:port]" or a socket path.
std::optional<Printer> CupsPrinter(const std::string& name, int timeoutMs = 3000, const std::string& server = "");

class PrintSession {
public:
    // A session with empty print settings and page format tickets and the demo printer.
    PrintSession();
    ~PrintSession();
    PrintSession(const PrintSession&) = delete;
    PrintSession& operator=(const PrintSession&) = delete;

    // The session's own dictionary. Each ticket is kept in it as a number (a handle) under
    // its name; other entries may be stored freely.
    pl::DictPtr dictionary() const { return dict_; }
    // The ticket a handle names in this session, or null.
    Ticket* ticketForHandle(int64_t handle) const;
    // The ticket kept under `name`, resolved through its handle; null when none.
    Ticket* ticket(std::string_view name) const;
    Ticket& printSettings() { return *tickets_[0].second; }
    Ticket& pageFormat() { return *tickets_[1].second; }
    Ticket& printerInfo() { return *tickets_[2].second; }

    const Printer& printer() const { return printer_; }
    // Replaces the printer and writes its make and model, locked, into the printer info
    // ticket ("com.apple.print.PrinterInfo.PMMakeAndModelName"; removed when it has none). A
    // PPD given with ownsPpd is removed when the printer is replaced or the session ends
    // (CupsPrinter's temporary files).
    void setPrinter(Printer printer, bool ownsPpd = false);

private:
    pl::DictPtr dict_;
    std::vector<std::pair<int32_t, std::unique_ptr<Ticket>>> tickets_;
    Printer printer_;
    bool ownsPpd_ = false;
};

// The current print session: set by the plug-in's Initialize, cleared by its Terminate; null
// outside that span. A plain process-wide value: all callers are on the dialog's main thread.
PrintSession* GetCurrentPrintSession();
void SetCurrentPrintSession(PrintSession* session);

} // namespace talmo
