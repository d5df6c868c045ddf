// talmo type42: TrueType to Type 42, headless. A program of its own: it links the font
// conversion only, none of the drawing libraries of the watermark commands.
#include "cli/command.h"
#include "marking/marking.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>

namespace {

using namespace talmo;

// Fonts beyond this are refused rather than read whole (Type 42 strings cannot address them
// anyway: the largest TrueType fonts are a few tens of megabytes).
constexpr size_t kMaxFontBytes = 256u << 20;

std::string fileStem(const std::string& path)
{
    size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// The font's bytes. A regular file is read at once into a buffer of its size: growing a buffer
// as the font arrives would touch (and copy) twice its size, a good part of a conversion's
// time in a fresh process. Anything else (a pipe, a file that grows meanwhile) is read to
// its end.
struct FontBytes {
    std::unique_ptr<uint8_t[]> sized;
    size_t size = 0;
    std::string streamed;
    std::span<const uint8_t> bytes() const
    {
        return sized ? std::span<const uint8_t>(sized.get(), size)
                     : std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(streamed.data()), streamed.size());
    }
};

int readFont(const std::string& path, FontBytes& font)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno;
    struct stat st;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0 &&
        static_cast<unsigned long long>(st.st_size) <= kMaxFontBytes) {
        const size_t capacity = static_cast<size_t>(st.st_size) + 1; // one more byte tells growth
        font.sized.reset(new uint8_t[capacity]);
        ssize_t n = 0;
        while (font.size < capacity &&
               ((n = ::read(fd, font.sized.get() + font.size, capacity - font.size)) > 0 || (n < 0 && errno == EINTR)))
            font.size += n > 0 ? static_cast<size_t>(n) : 0;
        const int error = n < 0 ? errno : 0;
        ::close(fd);
        if (error)
            return error;
        if (font.size < capacity)
            return 0;
        font.sized.reset();
        font.size = 0;
    } else {
        ::close(fd);
    }
    int error = 0;
    return ReadFileBytes(path, font.streamed, kMaxFontBytes, &error) ? 0 : error;
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
        return cli::usage("PSNAME \"" + psName +
                          "\" is not a PostScript name (printable ASCII, no white space or ()<>[]{}/%)");

    FontBytes font;
    if (const int error = readFont(fontPath, font))
        return cli::fail(fontPath + ": " + std::strerror(error));
    std::string program;
    auto result = convertTTFtoPS42(font.bytes(), psName, program);
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
