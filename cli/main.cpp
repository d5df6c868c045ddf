// talmo: the command line over the model folders, for headless and scripted work.
#include "cli/command.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

using namespace talmo::cli;

namespace {

void printHelp()
{
    auto cmds = registry();
    std::sort(cmds.begin(), cmds.end(), [](const Command& a, const Command& b) { return a.name < b.name; });
    std::printf("usage: talmo [--help] [--version] <command> [<args>]\n\n"
                "Job settings for Talmo production presses, from the command line.\n\n"
                "Commands:\n");
    for (const auto& c : cmds)
        std::printf("  talmo %s %s\n", c.name.c_str(), c.synopsis.c_str());
    std::printf("\nErrors are reported on stderr with a non-zero exit status.\n");
}

// The longest registered name matching the leading words wins ("tpif export" over "tpif").
const Command* match(const std::vector<std::string>& args, size_t& words)
{
    const Command* best = nullptr;
    words = 0;
    for (const auto& c : registry()) {
        std::istringstream in(c.name);
        std::string w;
        size_t n = 0;
        bool ok = true;
        while (in >> w) {
            if (n >= args.size() || args[n] != w) {
                ok = false;
                break;
            }
            ++n;
        }
        if (ok && n > words) {
            best = &c;
            words = n;
        }
    }
    return best;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty())
        return usage("no command given");
    if (args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        printHelp();
        return 0;
    }
    if (args[0] == "--version") {
        std::printf("talmo %s\n", TALMO_VERSION);
        return 0;
    }
    if (!args[0].empty() && args[0][0] == '-')
        return usage("unknown option '" + args[0] + "'");
    size_t words = 0;
    const Command* c = match(args, words);
    if (!c)
        return usage("unknown command '" + args[0] + "'");
    std::vector<std::string> rest(args.begin() + static_cast<long>(words) - 1, args.end());
    rest[0] = c->name;
    try {
        return c->run(rest);
    } catch (const std::exception& e) {
        return fail(std::string("internal error: ") + e.what(), 70);
    }
}
