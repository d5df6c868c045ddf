#include "cli/command.h"

#include <cstdio>

namespace talmo::cli {

std::vector<Command>& registry()
{
    static std::vector<Command> commands;
    return commands;
}

Registration::Registration(std::string name, std::string synopsis, Handler run)
{
    registry().push_back({std::move(name), std::move(synopsis), std::move(run)});
}

int fail(const std::string& message, int status)
{
    std::fprintf(stderr, "talmo: %s\n", message.c_str());
    return status;
}

int usage(const std::string& message)
{
    std::fprintf(stderr, "talmo: %s\nTry 'talmo --help'.\n", message.c_str());
    return 2;
}

} // namespace talmo::cli
