// talmo type42 and talmo watermark: font conversion and watermarks, headless.
#include "cli/command.h"
#include "marking/marking.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

using namespace talmo;

bool readWholeFile(const std::string& path, std::vector<uint8_t>& out)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

std::string fileStem(const std::string& path)
{
    size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// Writes to OUT atomically, or to stdout when no -o was given.
int emit(const std::string& outPath, std::string_view bytes)
{
    if (outPath.empty()) {
        if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
            return cli::fail("writing standard output failed");
        return 0;
    }
    int error = 0;
    if (!WriteFileAtomically(outPath, bytes, 0644, &error))
        return cli::fail(outPath + ": " + std::strerror(error));
    return 0;
}

int type42(const std::vector<std::string>& args)
{
    std::vector<std::string> positional;
    std::string outPath;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "-o") {
            if (++i == args.size())
                return cli::usage("-o needs a file name");
            outPath = args[i];
        } else {
            positional.push_back(args[i]);
        }
    }
    if (positional.empty() || positional.size() > 2)
        return cli::usage("type42 takes FONT.ttf and an optional PSNAME");
    const std::string& fontPath = positional[0];
    std::string psName = positional.size() == 2 ? positional[1] : fileStem(fontPath);
    if (!sfnt::isPostScriptName(psName))
        return cli::usage("PSNAME \"" + psName + "\" is not a PostScript name (printable ASCII, no white space or ()<>[]{}/%)");

    std::vector<uint8_t> font;
    if (!readWholeFile(fontPath, font))
        return cli::fail(fontPath + ": cannot be read");
    std::string program;
    auto result = convertTTFtoPS42(font, psName, program);
    if (!result.complete()) {
        // A partial program would be a broken font: write nothing.
        const char* what = result.status == Type42Status::NoBreakPoint
                               ? "the sfnts strings cannot be split; Type 42 output incomplete, nothing written"
                               : "not converted";
        return cli::fail(fontPath + ": " + what + " (" + result.detail + ")");
    }
    return emit(outPath, program);
}

cli::Registration regType42("type42", "FONT.ttf [PSNAME] [-o OUT]  convert a TrueType font to a Type 42 program",
                            type42);

} // namespace
