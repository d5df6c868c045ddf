// main of a group program (talmo-<group> in libexec): runs the group's commands for the
// `talmo` dispatcher, which execs it with its own arguments; --list-commands gives the
// dispatcher's table its rows.
#include "cli/command.h"

#include <cstdio>
#include <algorithm>
#include <string_view>

using namespace talmo::cli;

namespace {

// The longest registered name matching the leading words wins ("tpif export" over "tpif").
const Command* match(const std::vector<std::string>& args, size_t& words)
{
    const Command* best = nullptr;
    words = 0;
    for (const auto& c : registry()) {
        std::string_view name = c.name;
        size_t n = 0;
        for (; !name.empty() && n < args.size(); ++n) {
            const std::string_view word = name.substr(0, name.find(' '));
            if (args[n] != word)
                break;
            name.remove_prefix(std::min(name.size(), word.size() + 1));
        }
        if (name.empty() && n > words) {
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
    if (args.size() == 1 && args[0] == "--list-commands") {
        for (const auto& c : registry())
            std::printf("%s\t%s\n", c.name.c_str(), c.synopsis.c_str());
        return 0;
    }
    size_t words = 0;
    const Command* c = match(args, words);
    if (!c)
        return usage(args.empty() ? "no command given" : "unknown command '" + args[0] + "'");
    std::vector<std::string> rest(args.begin() + static_cast<long>(words) - 1, args.end());
    rest[0] = c->name;
    try {
        return c->run(rest);
    } catch (const std::exception& e) {
        return fail(std::string("internal error: ") + e.what(), 70);
    }
}
