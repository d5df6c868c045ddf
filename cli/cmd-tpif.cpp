// talmo tpif export SETTINGS.plist [-o OUT]: writes the TPIF document of a settings ticket.
#include "cli/command.h"
#include "platform/platform.h"
#include "tpif/tpif.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string errnoText()
{
    return std::strerror(errno);
}

// Writes the document to a temporary file beside `out`, syncs it and renames it into place,
// so a failed export never leaves a half-written document behind.
int exportAtomically(const talmo::pl::DictPtr& ticket, const std::string& out)
{
    using namespace talmo;
    const auto slash = out.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : (slash == 0 ? "/" : out.substr(0, slash));
    std::string tmpl = dir + "/.tpif-export-XXXXXX";
    int fd = mkstemp(tmpl.data());
    if (fd < 0)
        return cli::fail("cannot create a file in " + dir + ": " + errnoText());
    FILE* f = fdopen(fd, "wb");
    if (!f) {
        close(fd);
        unlink(tmpl.c_str());
        return cli::fail("cannot write " + out + ": " + errnoText());
    }
    WriteTPIF(f, ticket);
    tpif_ofp = nullptr;
    bool ok = std::fflush(f) == 0 && !std::ferror(f) && fsync(fileno(f)) == 0;
    const int savedErrno = errno;
    ok = std::fclose(f) == 0 && ok;
    if (ok) {
        // mkstemp makes the file private; an export is an ordinary document.
        const mode_t mask = umask(0);
        umask(mask);
        chmod(tmpl.c_str(), 0666 & ~mask);
        ok = std::rename(tmpl.c_str(), out.c_str()) == 0;
    } else {
        errno = savedErrno;
    }
    if (!ok) {
        const std::string why = errnoText();
        unlink(tmpl.c_str());
        return cli::fail("cannot write " + out + ": " + why);
    }
    return 0;
}

int tpifExport(const std::vector<std::string>& args)
{
    using namespace talmo;
    std::string in;
    std::string out;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "-o") {
            if (i + 1 >= args.size())
                return cli::usage("-o needs a file name");
            out = args[++i];
        } else if (!args[i].empty() && args[i][0] == '-' && args[i] != "-") {
            return cli::usage("unknown option '" + args[i] + "'");
        } else if (in.empty()) {
            in = args[i];
        } else {
            return cli::usage("tpif export takes one SETTINGS file");
        }
    }
    if (in.empty())
        return cli::usage("tpif export takes one SETTINGS file");
    pl::ParseResult r;
    auto root = pl::readPlistFile(in, &r);
    if (!root)
        return cli::fail(in + ":" + std::to_string(r.line) + ": " + r.message);
    auto ticket = pl::as<pl::Dictionary>(root);
    if (!ticket)
        return cli::fail(in + ": the settings must be a dictionary");
    if (!out.empty())
        return exportAtomically(ticket, out);
    WriteTPIF(stdout, ticket);
    tpif_ofp = nullptr;
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        return cli::fail("cannot write the document: " + errnoText());
    return 0;
}

talmo::cli::Registration reg("tpif export", "SETTINGS.plist [-o OUT]  write the TPIF document of a settings ticket",
                             tpifExport);

} // namespace
