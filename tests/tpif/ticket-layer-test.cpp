// Whole documents of the shipped examples against their golden files, re-parsed with libxml2,
// and the shift unit conversion at its rounding and overflow edges.
#include "tpif-test-util.h"

#include "platform/plist.h"

using namespace talmo;

namespace {

std::string document(const pl::DictPtr& ticket)
{
    char* buf = nullptr;
    size_t len = 0;
    FILE* f = open_memstream(&buf, &len);
    {
        tpiftest::DiagCapture quiet;
        WriteTPIF(f, ticket);
    }
    std::fclose(f);
    std::string out(buf, len);
    std::free(buf);
    tpif_ofp = nullptr;
    return out;
}

TEST(TPifDocument, GoldenExamples)
{
    for (const char* name : {"tpif-plain-job", "tpif-special-pages", "tpif-finishing-colour", "tpif-saved-job-form"}) {
        pl::ParseResult r;
        auto ticket = pl::as<pl::Dictionary>(
            pl::readPlistFile(std::string(TALMO_SOURCE_DIR) + "/examples/" + name + ".plist", &r));
        ASSERT_TRUE(ticket) << name << ": " << r.message;
        const std::string doc = document(ticket);
        EXPECT_SAME_BYTES(doc, tpiftest::readFile(tpiftest::dataPath(std::string(name) + ".tpif"))) << name;
        tpiftest::ParsedDoc parsed;
        tpiftest::parse(tpiftest::mendAccounting(doc), parsed);
        EXPECT_EQ(parsed.errors, 0) << name;
    }
    EXPECT_EQ(document(nullptr), "");
}

TEST(TPifShift, UnitConversion)
{
    const struct {
        int64_t value;
        bool inches, full;
        long expected;
    } cases[] = {
        {100, true, false, 2540},
        {1, true, false, 25},
        {2, true, false, 51},
        {3, true, false, 76},
        {-1, true, false, -25},
        {-3, true, false, -76},
        {25, false, false, 250},
        {-12, false, false, -120},
        {2540, true, true, 2540},
        {-7, false, true, -7},
        {int64_t(1) << 40, true, false, INT32_MAX},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TPifShiftToHundredthsMm(c.value, c.inches, c.full), c.expected)
            << c.value << " " << c.inches << " " << c.full;
}

} // namespace
