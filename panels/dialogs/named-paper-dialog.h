// The named paper library dialog: the user's papers ("My Paper List") and the printer's
// ("Printer Paper List") in one table, and the custom name dialog of the paper pop-ups.
#pragma once

#include "paperlib/paperlib.h"
#include "platform/platform.h" // Bundle, OSStatus
#include "ticket/ticket.h"

#include <QPointer>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class QWidget;

namespace talmo {

// How a fetch of the printer's paper list ended: noErr with the papers, or the fetch's status
// (the papers then are those of an earlier fetch, or null).
struct PrinterPaperOutcome {
    OSStatus status = noErr;
    std::shared_ptr<const std::vector<Stock>> stocks;
};

struct NamedPaperDialogSources {
    // What the job uses, marked "in use" in the table: the job's paper and the special pages'
    // papers (inserts and exception ranges, then the covers). Null entries are skipped.
    const Stock* jobStock = nullptr;
    std::vector<const Stock*> pageStocks;
    // The outcome of the last fetch; nullopt when none has ended yet. Unset: no printer list.
    std::function<std::optional<PrinterPaperOutcome>()> lastOutcome;
    // Starts a fetch and returns at once; `done` runs on the main thread when it ends, unless
    // `receiver` has been destroyed by then. Unset: the list cannot be refreshed.
    std::function<void(QObject* receiver, std::function<void(const PrinterPaperOutcome&)> done)> refresh;
};

// Fetches one printer's paper list on a worker thread, with the fetch's own time-outs, and
// delivers the outcome to the main thread through a queued call. The fetcher must be made and
// destroyed on the main thread; destroying it cancels a fetch under way and waits for its
// thread (at most one wait slice, or a host name lookup).
class PrinterPaperFetcher {
public:
    // `address` as RetrievePrinterStockLibrary takes it; empty means the printer has none (every
    // fetch fails at once).
    explicit PrinterPaperFetcher(std::string address, PrinterStockFetchLimits limits = {});
    // For a printer's device URI: its host, or none for the URIs that name no IPP host.
    static std::shared_ptr<PrinterPaperFetcher> forDeviceURI(std::string_view deviceURI);
    ~PrinterPaperFetcher();
    PrinterPaperFetcher(const PrinterPaperFetcher&) = delete;
    PrinterPaperFetcher& operator=(const PrinterPaperFetcher&) = delete;

    std::optional<PrinterPaperOutcome> lastOutcome() const { return last_; }
    // A fetch already under way is not started again: its outcome goes to the latest `done`.
    void fetch(QObject* receiver, std::function<void(const PrinterPaperOutcome&)> done);

    // Sets both sources' callbacks to this fetcher, keeping it alive while they live.
    static void attach(const std::shared_ptr<PrinterPaperFetcher>& fetcher, NamedPaperDialogSources& sources);

private:
    struct Channel;
    void finish(const PrinterPaperOutcome& outcome);

    std::string address_;
    PrinterStockFetchLimits limits_;
    std::shared_ptr<Channel> channel_;
    std::thread worker_;
    bool running_ = false;
    std::optional<PrinterPaperOutcome> last_;
    std::function<void(const PrinterPaperOutcome&)> done_;
    QPointer<QObject> receiver_;
};

// The panel host's paper list thread as the printer's source. The host, which runs that thread
// for the session's printer, sets the provider (panels cannot call the host); it fills the
// sources' printer callbacks and returns true, or returns false when it runs no thread (a
// "pap:" or file URI, or before it opened). Unset without a host.
using HostPrinterPaperProvider = std::function<bool(NamedPaperDialogSources&)>;
void SetHostPrinterPaperProvider(HostPrinterPaperProvider provider);
// The sources' printer callbacks: the host's thread when it serves one, else `fallback` (which
// may be null: no printer list).
void AttachPrinterPapers(const std::shared_ptr<PrinterPaperFetcher>& fallback, NamedPaperDialogSources& sources);

// Runs the library dialog. Returns the paper chosen with "Use In Job", repaired for the current
// printer (validateAndFixStockEntry), or nullopt on Close. Every change to the user's list is
// stored at once; the table's column widths and selected row are stored when it closes.
std::optional<Stock> RunModalNamedPaperDialog(QWidget* parent, const Bundle& bundle,
                                              const NamedPaperDialogSources& sources);

// The library dialog as the stock pop-up's "Named Paper..." command runs it
// (StockCommandDialogs::library): `sources` is asked each time, so it sees the current papers;
// the bundle is copied.
std::function<bool(Stock&)> MakeNamedPaperLibraryCommand(QWidget* parent, const Bundle& bundle,
                                                         std::function<NamedPaperDialogSources()> sources);

// The custom name dialog: sets the paper's custom name and its request-by-name-only flag. True
// on OK (the stock changed), false on Cancel or when the description does not load.
bool RunModalCustomNameDialog(QWidget* parent, const Bundle& bundle, Stock& stock);

} // namespace talmo
