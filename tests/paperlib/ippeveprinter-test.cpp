// The paper list fetched from a real IPP printer: ippeveprinter on a loopback port, declaring
// 31 production papers in its media-col-database (data/papers-30.conf). What each paper becomes
// is checked against a golden file, written as `talmo papers fetch` writes it.
#include "paperlib/paperlib.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace talmo::test {
namespace {

class IppEvePrinterPapers : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        printer_ = new IppEvePrinter;
        why_ = printer_->start(std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/papers-30.conf");
    }
    static void TearDownTestSuite()
    {
        delete printer_;
        printer_ = nullptr;
    }
    void SetUp() override
    {
        ASSERT_EQ(why_, "") << "the test printer cannot run";
        ResetPrinterStockList();
    }

    static IppEvePrinter* printer_;
    static std::string why_;
};

IppEvePrinter* IppEvePrinterPapers::printer_ = nullptr;
std::string IppEvePrinterPapers::why_;

TEST_F(IppEvePrinterPapers, EveryPaperConvertedInThePrinterOrder)
{
    ASSERT_EQ(RetrievePrinterStockLibrary(printer_->address()), noErr);
    pl::ArrayPtr papers = pl::makeArray();
    for (const Stock& s : *PrinterStockList())
        papers->append(s.asTicket());
    const std::string golden = std::string(TALMO_SOURCE_DIR) + "/tests/paperlib/data/papers-30.expected.plist";
    std::ostringstream expected;
    expected << std::ifstream(golden).rdbuf();
    const std::string actual = pl::writePlist(papers);
    if (actual != expected.str()) {
        const std::string path = testing::TempDir() + "papers-30.actual.plist";
        std::ofstream(path) << actual;
        ADD_FAILURE() << "the papers differ from " << golden << "; compare " << path;
    }
}

TEST_F(IppEvePrinterPapers, EveryFormOfTheAddressReachesThePrinter)
{
    const std::string port = std::to_string(printer_->port());
    for (const std::string& address :
         {"[::1]:" + port, "localhost:" + port, "ipp://127.0.0.1:" + port + "/ipp/print"}) {
        ResetPrinterStockList();
        EXPECT_EQ(RetrievePrinterStockLibrary(address), noErr) << address;
        EXPECT_EQ(PrinterStockList()->size(), 31u) << address;
    }
    // The printer on another port: refused, and the list of the last fetch stays.
    const auto before = PrinterStockList();
    EXPECT_EQ(RetrievePrinterStockLibrary("127.0.0.1:" + std::to_string(FreeLoopbackPort())),
              kPrinterStockNoConnectionErr);
    EXPECT_EQ(PrinterStockList(), before);
}

} // namespace
} // namespace talmo::test
