#include "settings/prefs.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace talmo {

namespace {

constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;

bool isPlainFileName(std::string_view name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

std::optional<std::string> homeFolder()
{
    if (const char* home = std::getenv("HOME"); home && home[0] == '/')
        return std::string(home);
    std::vector<char> buf(16384);
    passwd pw;
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &pw, buf.data(), buf.size(), &found) == 0 && found && found->pw_dir &&
        found->pw_dir[0] == '/')
        return std::string(found->pw_dir);
    return std::nullopt;
}

// An XDG base folder: the variable when it holds an absolute path (relative ones are invalid
// and ignored), else the home folder plus the fallback.
std::optional<std::string> xdgFolder(const char* variable, const char* fallbackUnderHome)
{
    if (const char* v = std::getenv(variable); v && v[0] == '/')
        return std::string(v);
    auto home = homeFolder();
    if (!home)
        return std::nullopt;
    return *home + "/" + fallbackUnderHome;
}

std::optional<std::string> preferencesFolder()
{
    auto base = xdgFolder("XDG_CONFIG_HOME", ".config");
    if (!base)
        return std::nullopt;
    return *base + "/talmo";
}

std::optional<std::string> makerFolder()
{
    auto base = xdgFolder("XDG_DATA_HOME", ".local/share");
    if (!base)
        return std::nullopt;
    return *base + "/Talmo";
}

std::vector<std::string> sharedDataFolders()
{
    std::string dirs = "/usr/local/share/:/usr/share/";
    if (const char* v = std::getenv("XDG_DATA_DIRS"); v && *v)
        dirs = v;
    std::vector<std::string> out;
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos)
            end = dirs.size();
        std::string dir = dirs.substr(start, end - start);
        if (!dir.empty() && dir[0] == '/') {
            if (dir.back() != '/')
                dir += '/';
            out.push_back(dir + "talmo");
        }
        start = end + 1;
    }
    return out;
}

bool isRegularFile(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// Preference files are regular files: anything else (a FIFO would block the dialog on open, a
// device would never end) is unreadable. The descriptor itself is checked, so a file swapped
// for a FIFO after a look at its name cannot block the open or the reads.
bool readPreferenceFile(const std::string& path, std::string& bytes, int* errorCode = nullptr)
{
    const auto fail = [errorCode](int code) {
        if (errorCode)
            *errorCode = code;
        return false;
    };
    bytes.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return fail(errno);
    struct FdCloser {
        int fd;
        ~FdCloser() { ::close(fd); }
    } closer{fd};
    struct stat st;
    if (::fstat(fd, &st) != 0)
        return fail(errno);
    if (!S_ISREG(st.st_mode))
        return fail(EINVAL);
    if (st.st_size > 0 && static_cast<unsigned long long>(st.st_size) > pl::kMaxPlistBytes)
        return fail(EFBIG);
    // The size is a hint only (a file may grow while it is read): read to the end, capped.
    std::string out;
    char buf[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return fail(errno);
        }
        if (n == 0)
            break;
        if (static_cast<size_t>(n) > pl::kMaxPlistBytes - out.size())
            return fail(EFBIG);
        out.append(buf, static_cast<size_t>(n));
    }
    bytes = std::move(out);
    return true;
}

} // namespace

std::optional<std::string> CopyPreferenceFileURL(std::string_view fileName)
{
    auto folder = makerFolder();
    if (!folder || !isPlainFileName(fileName) || !MakeFolders(*folder, kFolderMode))
        return std::nullopt;
    return *folder + "/" + std::string(fileName);
}

std::optional<std::string> CopySharedDefaultsPath(std::string_view fileName)
{
    if (!isPlainFileName(fileName))
        return std::nullopt;
    // The user's own copy first, then what the system installs, then what the extension's
    // bundle carries, so a site can replace the shipped defaults without touching the bundle.
    std::vector<std::string> folders;
    if (auto maker = makerFolder())
        folders.push_back(*maker);
    for (auto& dir : sharedDataFolders())
        folders.push_back(std::move(dir));
    if (const Bundle* bundle = ExtensionBundle())
        folders.push_back(bundle->path() + "/Resources");
    for (const auto& folder : folders) {
        std::string path = folder + "/" + std::string(fileName);
        if (isRegularFile(path))
            return path;
    }
    return std::nullopt;
}

pl::ValuePtr CopyXMLData(std::string_view fileName)
{
    auto path = CopyPreferenceFileURL(fileName);
    if (!path)
        return nullptr;
    std::string bytes;
    int err = 0;
    if (!readPreferenceFile(*path, bytes, &err)) {
        // Nothing of the user's yet: fall back to the shipped default of the same name.
        auto shipped = err == ENOENT ? CopySharedDefaultsPath(fileName) : std::nullopt;
        if (!shipped || !readPreferenceFile(*shipped, bytes))
            return nullptr;
    }
    pl::ParseResult result;
    auto value = pl::readPlist(bytes, &result);
    if (!value) {
        std::string text = result.message;
        if (result.line > 0)
            text = "line " + std::to_string(result.line) + ": " + text;
        std::fprintf(stderr, "CopyXMLData()::CFPropertyListCreateFromXMLData() error: %s\n", text.c_str());
    }
    return value;
}

std::optional<std::string> CopyUserPreferencesPath(std::string_view fileName)
{
    auto folder = preferencesFolder();
    if (!folder || !isPlainFileName(fileName))
        return std::nullopt;
    return *folder + "/" + std::string(fileName);
}

pl::DictPtr CopyUserPreferences(std::string_view fileName)
{
    auto path = CopyUserPreferencesPath(fileName);
    if (!path)
        return nullptr;
    std::string bytes;
    if (readPreferenceFile(*path, bytes)) {
        if (auto dict = pl::as<pl::Dictionary>(pl::readPlist(bytes)))
            return dict;
    }
    return pl::makeDict();
}

bool WriteUserPreferences(std::string_view fileName, const pl::ValuePtr& plist)
{
    auto path = CopyUserPreferencesPath(fileName);
    if (!path)
        return false;
    int err = EINVAL;
    const std::string folder = path->substr(0, path->rfind('/'));
    if (plist && MakeFolders(folder, kFolderMode, &err) &&
        WriteFileAtomically(*path, pl::writePlist(plist), kFileMode, &err))
        return true;
    std::fprintf(stderr, "WriteUserPreferences() failed (%d)\n", err);
    return false;
}

} // namespace talmo
