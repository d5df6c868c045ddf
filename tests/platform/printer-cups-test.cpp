// CupsPrinter against a small IPP/HTTP server on loopback whose answers libcups itself
// builds: the printer's attributes for Get-Printer-Attributes and its PPD for a GET.
#include "platform/platform.h"

#include <cups/cups.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

using namespace talmo;

namespace {

class FakeCupsServer {
public:
    FakeCupsServer(std::string printer, std::string ppd) : printer_(std::move(printer)), ppd_(std::move(ppd))
    {
        fd_ = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a);
        listen(fd_, 8);
        socklen_t len = sizeof a;
        getsockname(fd_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this] { run(); });
    }
    ~FakeCupsServer()
    {
        stop_ = true;
        thread_.join();
        close(fd_);
    }
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    void run()
    {
        while (!stop_) {
            pollfd p{fd_, POLLIN, 0};
            if (poll(&p, 1, 50) <= 0)
                continue;
            http_t* http = httpAcceptConnection(fd_, 1);
            if (!http)
                continue;
            while (!stop_ && serveOne(http)) { }
            httpClose(http);
        }
    }

    bool serveOne(http_t* http)
    {
        pollfd p{httpGetFd(http), POLLIN, 0};
        if (httpGetReady(http) == 0 && poll(&p, 1, 2000) <= 0)
            return false;
        char resource[1024];
        http_state_t state = httpReadRequest(http, resource, sizeof resource);
        if (state != HTTP_STATE_POST && state != HTTP_STATE_GET)
            return false;
        http_status_t status;
        while ((status = httpUpdate(http)) == HTTP_STATUS_CONTINUE) { }
        if (status != HTTP_STATUS_OK)
            return false;
        if (state == HTTP_STATE_GET)
            return answerGet(http, resource);
        if (httpGetExpect(http) == HTTP_STATUS_CONTINUE)
            httpWriteResponse(http, HTTP_STATUS_CONTINUE);
        ipp_t* request = ippNew();
        ipp_state_t ipp;
        while ((ipp = ippRead(http, request)) != IPP_STATE_DATA)
            if (ipp == IPP_STATE_ERROR) {
                ippDelete(request);
                return false;
            }
        ipp_t* response = ippNewResponse(request);
        ippDelete(request);
        std::string base = "ipp://" + address() + "/printers/" + printer_;
        ippAddString(response, IPP_TAG_PRINTER, IPP_TAG_NAME, "printer-name", nullptr, printer_.c_str());
        ippAddString(response, IPP_TAG_PRINTER, IPP_TAG_URI, "printer-uri-supported", nullptr, base.c_str());
        ippAddString(response, IPP_TAG_PRINTER, IPP_TAG_URI, "device-uri", nullptr, "socket://press.example:9100");
        ippAddString(response, IPP_TAG_PRINTER, IPP_TAG_TEXT, "printer-make-and-model", nullptr, "Talmo Test Press");
        ippAddInteger(response, IPP_TAG_PRINTER, IPP_TAG_ENUM, "printer-type", CUPS_PRINTER_LOCAL);
        ippAddInteger(response, IPP_TAG_PRINTER, IPP_TAG_ENUM, "printer-state", IPP_PSTATE_IDLE);
        ippAddBoolean(response, IPP_TAG_PRINTER, "printer-is-accepting-jobs", 1);
        httpClearFields(http);
        httpSetField(http, HTTP_FIELD_CONTENT_TYPE, "application/ipp");
        httpSetLength(http, ippLength(response));
        bool ok = httpWriteResponse(http, HTTP_STATUS_OK) == 0 && ippWrite(http, response) == IPP_STATE_DATA;
        ippDelete(response);
        return ok;
    }

    bool answerGet(http_t* http, const std::string& resource)
    {
        httpClearFields(http);
        if (resource != "/printers/" + printer_ + ".ppd") {
            httpSetLength(http, 0);
            httpWriteResponse(http, HTTP_STATUS_NOT_FOUND);
            return true;
        }
        httpSetField(http, HTTP_FIELD_CONTENT_TYPE, "application/vnd.cups-ppd");
        httpSetLength(http, ppd_.size());
        if (httpWriteResponse(http, HTTP_STATUS_OK) != 0)
            return false;
        return httpWrite2(http, ppd_.data(), ppd_.size()) == ssize_t(ppd_.size());
    }

    std::string printer_, ppd_;
    int fd_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace

TEST(CupsPrinter, ReadsTheDestinationAndFetchesItsPpd)
{
    const std::string name = "TalmoTest" + std::to_string(getpid());
    const std::string ppd = "*PPD-Adobe: \"4.3\"\n*Manufacturer: \"Talmo\"\n*ModelName: \"Talmo Test Press\"\n";
    FakeCupsServer server(name, ppd);
    auto p = CupsPrinter(name, 5000, server.address());
    ASSERT_TRUE(p);
    EXPECT_EQ(p->name, name);
    EXPECT_EQ(p->deviceURI, "socket://press.example:9100");
    EXPECT_EQ(p->makeAndModel, "Talmo Test Press");
    EXPECT_FALSE(p->isDemo);
    ASSERT_FALSE(p->ppdPath.empty());
    std::ifstream in(p->ppdPath);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ(text.str(), ppd);

    PrintSession session;
    session.setPrinter(*p, true);
    session.setPrinter(DemoPrinter());
    EXPECT_FALSE(std::ifstream(p->ppdPath).good()); // the fetched copy went with its printer
}
