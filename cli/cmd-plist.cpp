// talmo plist check FILE: reads a property list strictly and writes it back normalised.
#include "cli/command.h"
#include "platform/platform.h"

#include <cstdio>

namespace {

int plistCheck(const std::vector<std::string>& args)
{
    using namespace talmo;
    if (args.size() != 2)
        return cli::usage("plist check takes one FILE");
    pl::ParseResult r;
    auto v = pl::readPlistFile(args[1], &r);
    if (!v)
        return cli::fail(args[1] + ":" + std::to_string(r.line) + ": " + r.message);
    std::fputs(pl::writePlist(v).c_str(), stdout);
    return 0;
}

talmo::cli::Registration reg("plist check", "FILE   read a property list strictly and print it normalised", plistCheck);

} // namespace
