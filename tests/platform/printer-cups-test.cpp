// CupsPrinter against a loopback server whose answers libcups itself encodes: the printer's
// attributes for every IPP request and its PPD for the one GET (the only request without a body).
#include "platform/platform.h"

#include "testing/loopback-servers/loopback-servers.h"

#include <cups/cups.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <sstream>

using namespace talmo;

TEST(CupsPrinter, ReadsTheDestinationAndFetchesItsPpd)
{
    const std::string name = "TalmoTest" + std::to_string(getpid());
    const std::string ppd = "*PPD-Adobe: \"4.3\"\n*Manufacturer: \"Talmo\"\n*ModelName: \"Talmo Test Press\"\n";
    std::string attributes;
    test::ScriptedServer server([&](int fd, const std::atomic<bool>& stopping) {
        std::string body;
        while (test::ReadHttpRequest(fd, stopping, &body))
            if (!test::WriteAll(fd, test::HttpResponse("200 OK", body.empty() ? ppd : attributes)))
                return;
    });
    ipp_t* answer = ippNew();
    const std::string uri = "ipp://" + server.address() + "/printers/" + name;
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_NAME, "printer-name", nullptr, name.c_str());
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_URI, "printer-uri-supported", nullptr, uri.c_str());
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_URI, "device-uri", nullptr, "socket://press.example:9100");
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_TEXT, "printer-make-and-model", nullptr, "Talmo Test Press");
    auto append = [](void* out, ipp_uchar_t* bytes, size_t n) -> ssize_t {
        static_cast<std::string*>(out)->append(reinterpret_cast<const char*>(bytes), n);
        return static_cast<ssize_t>(n);
    };
    ASSERT_EQ(ippWriteIO(&attributes, append, 1, nullptr, answer), IPP_STATE_DATA);
    ippDelete(answer);

    auto p = CupsPrinter(name, 5000, server.address());
    ASSERT_TRUE(p);
    EXPECT_EQ(p->name, name);
    EXPECT_EQ(p->deviceURI, "socket://press.example:9100");
    EXPECT_EQ(p->makeAndModel, "Talmo Test Press");
    EXPECT_FALSE(p->isDemo);
    ASSERT_FALSE(p->ppdPath.empty());
    std::stringstream text;
    text << std::ifstream(p->ppdPath).rdbuf();
    EXPECT_EQ(text.str(), ppd);

    PrintSession session;
    session.setPrinter(*p, true);
    session.setPrinter(DemoPrinter());
    EXPECT_FALSE(std::ifstream(p->ppdPath).good()); // the fetched copy went with its printer
}

TEST(CupsPrinter, AnUnreachableOrSilentServerGivesNoPrinterWithinTheDeadline)
{
    EXPECT_FALSE(CupsPrinter("Anything", 1000, "127.0.0.1:" + std::to_string(test::FreeLoopbackPort())));
    test::ScriptedServer silent(test::Tarpit);
    const auto t0 = std::chrono::steady_clock::now();
    EXPECT_FALSE(CupsPrinter("Anything", 300, silent.address()));
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(2));
}
