// One job through libcups' destination API: Create-Job with the ticket's attributes, then
// Send-Document with the PDF. A CUPS queue is reached through the scheduler, an ipp:// URI
// directly.
#include "host/print-job.h"

#include <cups/cups.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace talmo::host {

namespace {

struct DestDeleter {
    void operator()(cups_dest_t* d) const { cupsFreeDests(1, d); }
};
struct InfoDeleter {
    void operator()(cups_dinfo_t* i) const { cupsFreeDestInfo(i); }
};
struct HttpDeleter {
    void operator()(http_t* h) const { httpClose(h); }
};
struct FileDeleter {
    void operator()(FILE* f) const { std::fclose(f); }
};

std::string lastError(const char* what)
{
    const char* text = cupsLastErrorString();
    return std::string(what) + ": " + (text && *text ? text : ippErrorString(cupsLastError()));
}

bool isUri(const std::string& s) { return s.rfind("ipp://", 0) == 0 || s.rfind("ipps://", 0) == 0; }

} // namespace

SubmitResult SubmitPdfJob(const std::string& printer, const std::string& pdfPath, const JobRequest& request,
                          int timeoutMs)
{
    SubmitResult result;
    std::unique_ptr<FILE, FileDeleter> file(std::fopen(pdfPath.c_str(), "rb"));
    if (!file) {
        result.message = "cannot read " + pdfPath;
        return result;
    }
    std::unique_ptr<cups_dest_t, DestDeleter> dest(isUri(printer)
                                                       ? cupsGetDestWithURI(nullptr, printer.c_str())
                                                       : cupsGetNamedDest(CUPS_HTTP_DEFAULT, printer.c_str(), nullptr));
    if (!dest) {
        result.message = "no printer " + printer;
        return result;
    }
    char resource[1024];
    // A destination made from a URI names the printer itself (its "device-uri").
    const unsigned flags = isUri(printer) ? CUPS_DEST_FLAGS_DEVICE : CUPS_DEST_FLAGS_NONE;
    std::unique_ptr<http_t, HttpDeleter> http(
        cupsConnectDest(dest.get(), flags, timeoutMs, nullptr, resource, sizeof resource, nullptr, nullptr));
    if (!http) {
        result.message = lastError(("cannot reach " + printer).c_str());
        return result;
    }
    httpSetTimeout(http.get(), timeoutMs / 1000.0, nullptr, nullptr);
    std::unique_ptr<cups_dinfo_t, InfoDeleter> info(cupsCopyDestInfo(http.get(), dest.get()));
    if (!info) {
        result.message = lastError(("cannot reach " + printer).c_str());
        return result;
    }

    // requesting-user-name is libcups' user of this thread.
    if (!request.userName.empty())
        cupsSetUser(request.userName.c_str());
    cups_option_t* options = nullptr;
    int count = 0;
    for (const JobOption& o : request.options)
        count = cupsAddOption(o.name.c_str(), o.value.c_str(), count, &options);
    // A printer busy with another job says so; ask again until the time is up.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    int jobId = 0;
    ipp_status_t created;
    while ((created = cupsCreateDestJob(http.get(), dest.get(), info.get(), &jobId, request.jobName.c_str(), count,
                                        options)) == IPP_STATUS_ERROR_BUSY &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    if (created > IPP_STATUS_OK_CONFLICTING || jobId <= 0) {
        cupsFreeOptions(count, options);
        result.message = lastError("the printer refused the job");
        return result;
    }

    const bool started = cupsStartDestDocument(http.get(), dest.get(), info.get(), jobId, request.jobName.c_str(),
                                               CUPS_FORMAT_PDF, 0, nullptr, 1) == HTTP_STATUS_CONTINUE;
    cupsFreeOptions(count, options);
    if (!started) {
        result.message = lastError("the printer refused the document");
        cupsCancelDestJob(http.get(), dest.get(), jobId);
        return result;
    }
    bool sent = true;
    char buf[65536];
    size_t n;
    while (sent && (n = std::fread(buf, 1, sizeof buf, file.get())) > 0)
        sent = cupsWriteRequestData(http.get(), buf, n) == HTTP_STATUS_CONTINUE;
    // Finishing reads the printer's answer, also after a failed write.
    const ipp_status_t finished = cupsFinishDestDocument(http.get(), dest.get(), info.get());
    if (!sent || finished > IPP_STATUS_OK_CONFLICTING) {
        result.message = lastError("the printer refused the document");
        cupsCancelDestJob(http.get(), dest.get(), jobId);
        return result;
    }
    result.accepted = true;
    result.jobId = jobId;
    return result;
}

} // namespace talmo::host
