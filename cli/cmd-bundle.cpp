// talmo strings check FILE...: reads .strings tables strictly.
// talmo bundle strings [--bundle DIR] KEY...: the localized text of each key, as the
// extension shows it (the bundle from --bundle, else $TALMO_BUNDLE_DIR).
#include "cli/command.h"
#include "platform/platform.h"

#include <cstdio>

namespace {

int stringsCheck(const std::vector<std::string>& args)
{
    using namespace talmo;
    if (args.size() < 2)
        return cli::usage("strings check takes one or more FILEs");
    int status = 0;
    for (size_t i = 1; i < args.size(); ++i) {
        StringsParseResult r;
        auto table = readStringsFile(args[i], &r);
        if (!table) {
            status = cli::fail(r.line ? args[i] + ":" + std::to_string(r.line) + ": " + r.message : r.message);
            continue;
        }
        std::printf("%s: %zu entries\n", args[i].c_str(), table->size());
    }
    return status;
}

int bundleStrings(const std::vector<std::string>& args)
{
    using namespace talmo;
    size_t first = 1;
    std::optional<Bundle> named;
    if (args.size() > 1 && args[1] == "--bundle") {
        if (args.size() < 3)
            return cli::usage("--bundle needs a DIR");
        named = Bundle::open(args[2]);
        if (!named)
            return cli::fail(args[2] + ": not a bundle");
        first = 3;
    }
    if (first >= args.size())
        return cli::usage("bundle strings takes one or more KEYs");
    const Bundle* bundle = named ? &*named : ExtensionBundle();
    if (!bundle)
        return cli::fail("no bundle: give --bundle DIR or set TALMO_BUNDLE_DIR");
    for (size_t i = first; i < args.size(); ++i)
        std::printf("%s\n", bundle->localizedString(args[i]).c_str());
    return 0;
}

talmo::cli::Registration regCheck("strings check", "FILE...   read .strings tables strictly, count their entries",
                                  stringsCheck);
talmo::cli::Registration regBundle("bundle strings", "[--bundle DIR] KEY...   localized texts of the extension bundle",
                                   bundleStrings);

} // namespace
