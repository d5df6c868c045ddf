// talmo: finds the command and execs the program of its group, installed beside talmo in
// libexec. Only the C library is used here, so that the dispatch itself costs next to nothing;
// each group program loads only the libraries that its commands use.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

struct CommandRow {
    const char* name;     // the words the user types
    const char* program;  // file name of the group program
    const char* synopsis; // one line for --help, after the name
};

constexpr CommandRow kCommands[] = {
#include "commands.inc"
};

// Usage errors exit with 2 and point at --help, as the group programs' do.
int usage(const char* message, const char* word = nullptr)
{
    if (word)
        std::fprintf(stderr, "talmo: %s '%s'\nTry 'talmo --help'.\n", message, word);
    else
        std::fprintf(stderr, "talmo: %s\nTry 'talmo --help'.\n", message);
    return 2;
}

void printRow(FILE* out, const CommandRow& c) { std::fprintf(out, "  talmo %s %s\n", c.name, c.synopsis); }

// Number of leading arguments that spell the command's name, or 0 when they do not.
int wordsMatched(const char* name, char** args, int count)
{
    int n = 0;
    for (const char* w = name; *w;) {
        const size_t len = std::strcspn(w, " ");
        if (n >= count || std::strlen(args[n]) != len || std::strncmp(args[n], w, len) != 0)
            return 0;
        ++n;
        w += len;
        w += std::strspn(w, " ");
    }
    return n;
}

// True when the command's first word is `word` ("tpif" for "tpif export").
bool inGroup(const CommandRow& c, const char* word)
{
    const size_t len = std::strcspn(c.name, " ");
    return c.name[len] == ' ' && std::strlen(word) == len && std::strncmp(c.name, word, len) == 0;
}

// "talmo tpif" alone or with a sub-command that does not exist: the sub-commands it has.
int listSubcommands(char** args, int count)
{
    if (count == 1)
        std::fprintf(stderr, "talmo: %s needs a sub-command:\n", args[0]);
    else
        std::fprintf(stderr, "talmo: %s has no sub-command '%s'; it has:\n", args[0], args[1]);
    for (const CommandRow& c : kCommands)
        if (inGroup(c, args[0]))
            printRow(stderr, c);
    std::fprintf(stderr, "Try 'talmo --help'.\n");
    return 2;
}

int run(const CommandRow& c, char** argv)
{
    char path[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    char* slash = n > 0 ? static_cast<char*>(::memrchr(path, '/', static_cast<size_t>(n))) : nullptr;
    if (!slash) {
        std::fprintf(stderr, "talmo: cannot find where talmo is installed: %s\n", std::strerror(errno));
        return 70;
    }
    const size_t dir = static_cast<size_t>(slash - path) + 1;
    const int written = std::snprintf(path + dir, sizeof path - dir, "%s/%s", TALMO_LIBEXEC_RELATIVE, c.program);
    if (written < 0 || static_cast<size_t>(written) >= sizeof path - dir) {
        std::fprintf(stderr, "talmo: the path of %s is too long\n", c.program);
        return 70;
    }
    ::execv(path, argv);
    std::fprintf(stderr, "talmo: cannot run %s: %s\n", path, std::strerror(errno));
    return 70;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return usage("no command given");
    const char* first = argv[1];
    if (!std::strcmp(first, "--help") || !std::strcmp(first, "-h") || !std::strcmp(first, "help")) {
        std::printf("usage: talmo [--help] [--version] <command> [<args>]\n\n"
                    "Job settings for Talmo production presses, from the command line.\n\n"
                    "Commands:\n");
        for (const CommandRow& c : kCommands)
            printRow(stdout, c);
        std::printf("\nErrors are reported on stderr with a non-zero exit status.\n");
        return 0;
    }
    if (!std::strcmp(first, "--version")) {
        std::printf("talmo %s\n", TALMO_VERSION);
        return 0;
    }
    if (first[0] == '-')
        return usage("unknown option", first);

    // The longest name spelled by the leading arguments wins ("tpif export" over "tpif").
    const CommandRow* best = nullptr;
    int bestWords = 0;
    bool group = false;
    for (const CommandRow& c : kCommands) {
        const int words = wordsMatched(c.name, argv + 1, argc - 1);
        if (words > bestWords) {
            best = &c;
            bestWords = words;
        }
        group = group || inGroup(c, first);
    }
    if (best)
        return run(*best, argv);
    if (group)
        return listSubcommands(argv + 1, argc - 1);
    return usage("unknown command", first);
}
