// Printing a document for the dialog host: the IPP job attributes a print settings ticket
// determines, the TPIF document carried inside the PDF, submission through libcups, and the
// loopback demo printer. No Qt here, so all of it is testable without a display.
#pragma once

#include "platform/platform.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace talmo::host {

// Platform items of the print settings ticket that the dialog's own controls own: the
// document's name, the copy count and the page range.
inline constexpr const char* kPMJobNameKey = "com.apple.print.JobInfo.PMJobName";
inline constexpr const char* kPMCopiesKey = "com.apple.print.PrintSettings.PMCopies";
inline constexpr const char* kPMFirstPageKey = "com.apple.print.PrintSettings.PMFirstPage";
inline constexpr const char* kPMLastPageKey = "com.apple.print.PrintSettings.PMLastPage";
// The printer's make and model in the printer info ticket (the device picture reads it).
inline constexpr const char* kPMMakeAndModelNameKey = "com.apple.print.PrinterInfo.PMMakeAndModelName";

// One job template attribute in the option syntax libcups encodes (RFC 8011 names;
// collections as "{member=value ...}", sets comma-separated).
struct JobOption {
    std::string name;
    std::string value;
    bool operator==(const JobOption&) const = default;
};

struct JobRequest {
    std::string jobName;  // job-name
    std::string userName; // requesting-user-name
    std::vector<JobOption> options;
};

// What the ticket determines for the job. `loginName` stands in for the sender when the job
// notes ask for the login name; the document's name comes from the ticket (kPMJobNameKey).
JobRequest JobRequestFromTicket(const pl::DictPtr& ticket, const std::string& loginName);

// True when the ticket asks for the TPIF job ticket to travel with the job: it holds TPIF
// options and the Advanced panel's switch is not off (0, or 2 as "Disabled").
bool WantsTPIF(const pl::DictPtr& ticket);
// The TPIF document of a ticket, exactly as `talmo tpif export` writes it ("" when the
// ticket holds no TPIF options).
std::string RenderTPIF(const pl::DictPtr& ticket);

// The name under which the TPIF document is attached to the PDF.
inline constexpr const char* kJobTicketAttachmentName = "job-ticket.tpif";
// Writes a copy of the PDF `in` to `out` with `bytes` attached as the embedded file `name`
// (replacing one of that name). False with the reason in `error`.
bool AttachFileToPdf(const std::string& in, const std::string& out, const std::string& name, std::string_view bytes,
                     std::string* error);

struct SubmitResult {
    bool accepted = false;
    int jobId = 0;
    std::string message; // the printer's (or libcups') words when not accepted
};
// Sends the PDF at `pdfPath` to `printer` (a CUPS destination name or an ipp:// or ipps://
// URI) as one job with the request's attributes. Accepted means the printer took the whole
// document.
SubmitResult SubmitPdfJob(const std::string& printer, const std::string& pdfPath, const JobRequest& request,
                          int timeoutMs = 30000);

// A child process in its own process group, stopped by its PID (SIGTERM, then SIGKILL).
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const std::vector<std::string>& argv, const std::string& logPath);
    ~ChildProcess() { stop(); }
    ChildProcess(ChildProcess&& o) noexcept : pid_(o.pid_) { o.pid_ = -1; }
    ChildProcess& operator=(ChildProcess&& o) noexcept;
    pid_t pid() const { return pid_; }
    bool running();
    void stop();

private:
    pid_t pid_ = -1;
};

// An IPP printer (ippeveprinter) on a loopback port, with the system bus and the
// service-discovery daemon it needs started when they are not running (root only). Everything
// started here is stopped by its PID when the object goes.
class LoopbackIppPrinter {
public:
    LoopbackIppPrinter() = default;
    ~LoopbackIppPrinter();
    LoopbackIppPrinter(const LoopbackIppPrinter&) = delete;
    LoopbackIppPrinter& operator=(const LoopbackIppPrinter&) = delete;

    // Starts the printer named `name` from an attributes file. With `keepFiles` the printer
    // keeps every document it receives in spoolFolder(). "" on success, else why not.
    std::string start(const std::string& attributesFile, const std::string& name, bool keepFiles = false);
    int port() const { return port_; }
    std::string uri() const { return "ipp://localhost:" + std::to_string(port_) + "/ipp/print"; }
    const std::string& spoolFolder() const { return folder_; }

private:
    std::string ensureDaemons();
    std::string folder_;
    int port_ = 0;
    ChildProcess dbus_, avahi_, printer_;
};

} // namespace talmo::host
