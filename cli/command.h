// Sub-command registry of the `talmo` command line. Each cmd-<name>.cpp registers its
// commands with a static Registration; main dispatches on the first argument.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace talmo::cli {

// argv[0] is the sub-command's name; returns the process exit status.
using Handler = std::function<int(const std::vector<std::string>& args)>;

struct Command {
    std::string name;     // "pages", "tpif export", ...: words the user types
    std::string synopsis; // one line for --help, after the name
    Handler run;
};

std::vector<Command>& registry();

struct Registration {
    Registration(std::string name, std::string synopsis, Handler run);
};

// Consistent errors: "talmo: <message>" on stderr; returns the exit status to use.
int fail(const std::string& message, int status = 1);
// Usage errors exit with 2 and point at --help.
int usage(const std::string& message);

} // namespace talmo::cli
