// Deliberate oddities of the element layer that the printers rely on. The transcripts cover
// every line; these are spelled out so that a careless transcript update cannot drop them.
#include "tpif-test-util.h"

#include <functional>

using namespace talmo;
using tpiftest::StringSink;

namespace {

TEST(TPifOddities, KeptByteForByte)
{
    FinishingData staple8;
    staple8.staple = 8;
    FinishingData unknownFold;
    unknownFold.staple = 0, unknownFold.fold = 16;
    const std::string open = "\t\t<finishings syntax=\"1setOf\">\n";
    const std::string val20 = "\t\t\t<value syntax=\"enum\">20</value>\n";
    const struct {
        const char* what;
        std::function<void(const writeData*)> write;
        std::string expected;
    } cases[] = {
        {"a value outside the list repeats the previous line", [&](auto s) { WriteTPifFinishing(s, staple8); },
         open + open + "\t\t</finishings>\n"},
        {"an unknown fold repeats the staple line", [&](auto s) { WriteTPifFinishing(s, unknownFold); },
         open + val20 + val20 + "\t\t</finishings>\n"},
        {"colour adjustments carry a blank before '='", [](auto s) { WriteTPifCommands(s, 16, -100); },
         "\t\t<adjust-lightness syntax =\"integer\">-100</adjust-lightness>\n"},
        {"a keyword destination line has no newline",
         [](auto s) { WriteTPifColorDestination(s, 1, "color-destination-profile-front", std::nullopt); },
         "\t\t<color-destination-profile-front syntax=\"keyword\">system-specified</color-destination-profile-front>"},
        {"the account closes with another tag", [](auto s) { WriteTPifAccounting(s, "u", "a"); },
         "\t\t<job-accounting-user-id syntax=\"name\" xml:space=\"preserve\">u</job-accounting-user-id>\n"
         "\t\t<job-account-id syntax=\"name\" xml:space=\"preserve\">a</job-accounting-id>\n"},
        {"the trailer has no final newline", [](auto s) { WriteTPifTrailer(s); }, "</tpif>"},
    };
    for (const auto& c : cases) {
        StringSink s;
        tpiftest::DiagCapture diag;
        c.write(s.get());
        EXPECT_SAME_BYTES(s.text, c.expected) << c.what;
    }
    tpiftest::DiagCapture diag;
    StringSink s;
    WriteTPifCommands(s.get(), 4, 42);
    EXPECT_EQ(s.calls, 1) << "an unknown value still sends an (empty) text";
    EXPECT_EQ(diag.text(), "DEBUG: in WriteTPifCommands funcion \n");
}

} // namespace
