// talmo tpif export SETTINGS.plist [-o OUT]: writes the TPIF document of a settings ticket.
#include "cli/command.h"
#include "platform/atomic-file.h"
#include "platform/platform.h"
#include "tpif/tpif.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::string errnoText() { return std::strerror(errno); }

// The whole document, through the writer's stream sink, as bytes.
bool renderDocument(const talmo::pl::DictPtr& ticket, std::string& out)
{
    char* buf = nullptr;
    size_t len = 0;
    FILE* f = open_memstream(&buf, &len);
    if (!f)
        return false;
    talmo::WriteTPIF(f, ticket);
    talmo::tpif_ofp = nullptr;
    const bool ok = std::fflush(f) == 0 && !std::ferror(f);
    std::fclose(f);
    if (ok)
        out.assign(buf, len);
    std::free(buf);
    return ok;
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
    if (!out.empty()) {
        // A failed export never leaves a half-written document behind.
        std::string doc;
        if (!renderDocument(ticket, doc))
            return cli::fail("cannot build the document: " + errnoText());
        int error = 0;
        if (!WriteFileAtomically(out, doc, 0644, &error))
            return cli::fail("cannot write " + out + ": " + std::strerror(error));
        return 0;
    }
    WriteTPIF(stdout, ticket);
    tpif_ofp = nullptr;
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        return cli::fail("cannot write the document: " + errnoText());
    return 0;
}

talmo::cli::Registration reg("tpif export", "SETTINGS.plist [-o OUT]  write the TPIF document of a settings ticket",
                             tpifExport);

} // namespace
