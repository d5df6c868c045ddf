// The paper list fetched from a real IPP printer: ippeveprinter on a loopback port, declaring
// 31 production papers in its media-col-database.
#include "paperlib/paperlib.h"
#include "testing/loopback-servers/loopback-servers.h"

#include <gtest/gtest.h>

namespace talmo::test {
namespace {

constexpr int32_t kAny = INT32_MAX; // not checked
constexpr int32_t U = kNotSet;

struct Expected {
    const char* name;
    int32_t size, color, type, weight, punched, sides, coating, modulus;
    const char* customText; // custom colour (colour 10) or custom type (type 7)
};

// What each paper of papers-30.conf must become, in the printer's order. Sizes are found by
// their first matching edge: SRA3 (320 mm) as 12.6 x 18.5" and C5 (229 mm) as 9 x 11".
const Expected kPapers[] = {
    {"Bright White 90", 4, 1, 1, 90, 1, 1, U, U, nullptr},
    {"Letter Bond 75", 1, 1, 13, 75, U, U, U, U, nullptr},
    {"Blue Cover 250", 4, 2, 1, 250, U, 3, 1, U, nullptr},
    {"Ivory Laid 120", 4, 11, 1, 120, U, U, U, U, nullptr},
    {"Tab Stock 163", kAny, 1, 24, 163, U, U, U, U, nullptr},
    {"Pre-cut Tabs 5", kAny, 1, 4, 163, U, U, U, 5, nullptr},
    {"Velvet Board", 4, 1, 6, U, U, U, U, 5, nullptr},
    {"Kraft Wrap", 4, 7, 7, U, U, U, U, U, "kraft"},
    {"Recycled Office 80", 4, 1, 10, 80, U, U, U, U, nullptr},
    {"Letterhead 100", 4, 1, 14, 100, U, U, U, U, nullptr},
    {"Pre-printed Invoice", 4, 1, 3, U, U, U, U, U, nullptr},
    {"Gloss Front 135", 49, 1, 1, 135, U, 2, 1, U, nullptr},
    {"Matte Back 135", 49, 1, 1, 135, U, 2, 5, U, nullptr},
    {"Satin Both 170", 49, 1, 1, 170, U, 3, 4, U, nullptr},
    {"Uncoated Both 100", 4, 1, 1, 100, U, 1, U, U, nullptr},
    {"Front None Only", 4, 1, 1, U, U, U, U, U, nullptr},
    {"Three Hole Letter", 1, 1, 1, 90, 2, U, U, U, nullptr},
    {"One Hole Letter", 1, 1, 1, U, U, U, U, U, nullptr},
    {"Goldenrod Memo", 1, 8, 1, 75, U, U, U, U, nullptr},
    {"Salmon Text", 4, 10, 1, 105, U, U, U, U, "salmon"},
    {"Clear Film", 4, 6, 2, U, U, U, U, U, nullptr},
    {"A3 Heavy 300", 5, 1, 1, 300, U, 3, 2, U, nullptr},
    {"Banner 335x488", U, 1, 1, 200, U, U, U, U, nullptr},
    {"Envelope C5", 8, 1, 8, 90, U, U, U, U, nullptr},
    {"Labels A4", 4, 1, 9, U, U, U, U, U, nullptr},
    {"Legal Pink", 1, 5, 1, 75, U, U, U, U, nullptr},
    {"Gray 160", 4, 12, 1, 160, U, U, U, U, nullptr},
    {"Zero Weight", 4, 1, 1, U, U, U, U, U, nullptr},
    {"Custom Range", U, 1, 1, U, U, U, U, U, nullptr},
    {"Custom3 Stock", 4, 16, 17, U, U, 2, 3, U, nullptr},
    {"US Letter Exact", U, 1, 1, 90, U, U, U, U, nullptr},
};

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
    const auto list = PrinterStockList();
    ASSERT_EQ(list->size(), std::size(kPapers));
    for (size_t i = 0; i < std::size(kPapers); ++i) {
        const Expected& e = kPapers[i];
        const Stock& s = (*list)[i];
        SCOPED_TRACE(e.name);
        EXPECT_EQ(s.customName(), std::string(e.name));
        auto check = [](const char* field, int32_t got, int32_t want) {
            if (want != kAny)
                EXPECT_EQ(got, want) << field;
        };
        check("size", s.size(), e.size);
        check("color", s.color(), e.color);
        check("type", s.type(), e.type);
        check("weight", s.weight(), e.weight);
        check("punched", s.punched(), e.punched);
        check("sidesCoated", s.sidesCoated(), e.sides);
        check("coatingType", s.coatingType(), e.coating);
        check("modulus", s.modulus(), e.modulus);
        if (e.color == 10)
            EXPECT_EQ(s.customColor(), std::string(e.customText));
        if (e.type == 7)
            EXPECT_EQ(s.customType(), std::string(e.customText));
    }
    EXPECT_EQ((*list)[26].comment(), std::string("Keep dry"));
    EXPECT_EQ((*list)[26].description(), std::string("Gray card stock"));
}

TEST_F(IppEvePrinterPapers, EveryFormOfTheAddressReachesThePrinter)
{
    const std::string port = std::to_string(printer_->port());
    for (const std::string& address :
         {"[::1]:" + port, "localhost:" + port, "ipp://127.0.0.1:" + port + "/ipp/print"}) {
        ResetPrinterStockList();
        EXPECT_EQ(RetrievePrinterStockLibrary(address), noErr) << address;
        EXPECT_EQ(PrinterStockList()->size(), std::size(kPapers)) << address;
    }
    // The printer on another port: refused, and the list of the last fetch stays.
    const auto before = PrinterStockList();
    EXPECT_EQ(RetrievePrinterStockLibrary("127.0.0.1:" + std::to_string(FreeLoopbackPort())),
              kPrinterStockNoConnectionErr);
    EXPECT_EQ(PrinterStockList(), before);
}

} // namespace
} // namespace talmo::test
