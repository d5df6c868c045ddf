// talmo pages [--single] [--] TEXT: the special pages dialogs' page-list parser, one line
// "FIRST COUNT" per range.
#include "cli/command.h"
#include "ticket/ticket.h"

#include <cstdio>
#include <string>

namespace {

// "--word" or "-x"; a list may itself begin with "-" ("-4", "-,2", "- 3").
bool looksLikeOption(const std::string& a)
{
    const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return a.size() > 1 && a[0] == '-' && (letter(a[1]) || (a[1] == '-' && a.size() > 2));
}

int pages(const std::vector<std::string>& args)
{
    using namespace talmo;
    bool rangesMode = true;
    const std::string* text = nullptr;
    bool options = true;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (options && a == "--") {
            options = false;
        } else if (options && a == "--single") {
            rangesMode = false;
        } else if (options && looksLikeOption(a)) {
            return cli::usage("pages: unknown option '" + a + "'");
        } else if (text) {
            return cli::usage("pages takes one TEXT (quote a list with blanks)");
        } else {
            text = &a;
        }
    }
    if (!text)
        return cli::usage("pages takes one TEXT");

    const PageRangesResult r = ParsePageRanges(*text, rangesMode);
    if (r.status != noErr)
        return cli::fail("pages: error " + std::to_string(r.status) + " (" + PageRangeErrorMessageKey(r.status) +
                         ") at offset " + std::to_string(r.position));
    std::string out;
    out.reserve(r.ranges.size() * 10);
    for (const PageRange& range : r.ranges)
        out += std::to_string(range.first) + ' ' + std::to_string(range.count) + '\n';
    std::fwrite(out.data(), 1, out.size(), stdout);
    return 0;
}

talmo::cli::Registration reg("pages", "[--single] [--] TEXT   parse a page list, print \"FIRST COUNT\" per range",
                             pages);

} // namespace
