#include "platform/atomic-file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

namespace talmo {

namespace {

int systemMakeTemp(char* pathTemplate) { return ::mkostemp(pathTemplate, O_CLOEXEC); }
int systemOpenFolder(const char* path) { return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }

const FileIo kSystemFileIo = {
    systemMakeTemp, ::write, ::fchmod, ::fsync, ::close, ::rename, ::unlink, systemOpenFolder,
};

const FileIo* gFileIo = &kSystemFileIo;

struct DirCloser {
    void operator()(DIR* d) const { ::closedir(d); }
};

// Best effort: a temporary file that cannot be removed now is tried again next time.
void removeStaleTempFiles(const std::string& folder, const FileIo& io)
{
    std::unique_ptr<DIR, DirCloser> dir(::opendir(folder.c_str()));
    if (!dir)
        return;
    std::vector<std::string> stale;
    while (const dirent* e = ::readdir(dir.get())) {
        std::string_view name = e->d_name;
        if (name.starts_with(kTempFilePrefix) && IsStaleTempFile(folder, name))
            stale.emplace_back(name);
    }
    for (const auto& name : stale)
        io.unlink((folder + "/" + name).c_str());
}

} // namespace

const FileIo& SystemFileIo() { return kSystemFileIo; }
const FileIo& CurrentFileIo() { return *gFileIo; }

ScopedFileIo::ScopedFileIo(const FileIo& io) : previous_(gFileIo) { gFileIo = &io; }
ScopedFileIo::~ScopedFileIo() { gFileIo = previous_; }

bool ParseTempFileName(std::string_view name, pid_t& writerPid)
{
    if (!name.starts_with(kTempFilePrefix))
        return false;
    name.remove_prefix(kTempFilePrefix.size());
    long long pid = 0;
    size_t digits = 0;
    while (digits < name.size() && name[digits] >= '0' && name[digits] <= '9') {
        pid = pid * 10 + (name[digits] - '0');
        if (pid > INT_MAX)
            return false;
        ++digits;
    }
    // Then ".", the target's name (possibly empty) and the six characters mkstemp chose.
    if (digits == 0 || pid == 0 || name.size() < digits + 1 + 7 || name[digits] != '.')
        return false;
    if (name[name.size() - 7] != '.')
        return false;
    writerPid = static_cast<pid_t>(pid);
    return true;
}

bool IsStaleTempFile(const std::string& folder, std::string_view name)
{
    pid_t pid = 0;
    if (!ParseTempFileName(name, pid))
        return false;
    if (pid != ::getpid() && ::kill(pid, 0) != 0 && errno == ESRCH)
        return true;
    struct stat st;
    if (::lstat((folder + "/" + std::string(name)).c_str(), &st) != 0)
        return false;
    return std::time(nullptr) - st.st_mtime > kStaleTempAgeSeconds;
}

bool WriteFileAtomically(const std::string& path, std::string_view bytes, mode_t mode, int* errorCode)
{
    const FileIo& io = CurrentFileIo();
    auto fail = [&](int code) {
        if (errorCode)
            *errorCode = code;
        return false;
    };
    const size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (name.empty() || name == "." || name == "..")
        return fail(EINVAL);
    const std::string folderPrefix = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);

    // The target's name is cut so that the temporary name stays within NAME_MAX.
    std::string tempTemplate =
        folderPrefix + std::string(kTempFilePrefix) + std::to_string(::getpid()) + "." + name.substr(0, 64) + ".XXXXXX";
    std::vector<char> tempPath(tempTemplate.begin(), tempTemplate.end());
    tempPath.push_back('\0');
    const int fd = io.makeTemp(tempPath.data());
    if (fd < 0)
        return fail(errno);

    int err = 0;
    const char* p = bytes.data();
    size_t left = bytes.size();
    while (left > 0) {
        const ssize_t n = io.write(fd, p, left);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            err = errno;
            break;
        }
        if (n == 0) { // no progress and no error: give up rather than spin
            err = EIO;
            break;
        }
        p += n;
        left -= static_cast<size_t>(n);
    }
    if (!err && io.fchmod(fd, mode) != 0)
        err = errno;
    if (!err) {
        int r;
        while ((r = io.fsync(fd)) != 0 && errno == EINTR) { }
        if (r != 0)
            err = errno;
    }
    // A failing close can report a lost write (NFS); the descriptor is gone either way.
    if (io.close(fd) != 0 && !err)
        err = errno;
    if (!err && io.rename(tempPath.data(), path.c_str()) != 0)
        err = errno;
    if (err) {
        io.unlink(tempPath.data());
        return fail(err);
    }

    // Without this the rename itself may be lost in a crash. Filesystems that cannot flush a
    // folder answer EINVAL; that is not a failure of ours.
    const int dirFd = io.openFolder(folder.c_str());
    if (dirFd < 0)
        return fail(errno);
    int r;
    while ((r = io.fsync(dirFd)) != 0 && errno == EINTR) { }
    const int syncErr = r != 0 ? errno : 0;
    io.close(dirFd);
    removeStaleTempFiles(folder, io);
    if (syncErr && syncErr != EINVAL)
        return fail(syncErr);
    return true;
}

bool ReadFileBytes(const std::string& path, std::string& out, size_t maxBytes, int* errorCode)
{
    auto fail = [&](int code) {
        if (errorCode)
            *errorCode = code;
        return false;
    };
    out.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return fail(errno);
    struct FdCloser {
        int fd;
        ~FdCloser() { ::close(fd); }
    } closer{fd};
    struct stat st;
    if (::fstat(fd, &st) != 0)
        return fail(errno);
    if (S_ISDIR(st.st_mode))
        return fail(EISDIR);
    if (st.st_size > 0 && static_cast<unsigned long long>(st.st_size) > maxBytes)
        return fail(EFBIG);
    // The size is a hint only (files that report 0 or grow while read): read to the end, capped.
    std::string bytes;
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
        if (static_cast<size_t>(n) > maxBytes - bytes.size())
            return fail(EFBIG);
        bytes.append(buf, static_cast<size_t>(n));
    }
    out = std::move(bytes);
    return true;
}

bool MakeFolders(const std::string& path, mode_t mode, int* errorCode)
{
    auto fail = [&](int code) {
        if (errorCode)
            *errorCode = code;
        return false;
    };
    if (path.empty())
        return fail(ENOENT);
    struct stat st;
    if (::stat(path.c_str(), &st) == 0)
        return S_ISDIR(st.st_mode) ? true : fail(ENOTDIR);
    // Create each missing level from the top; a level made meanwhile by someone else is fine.
    for (size_t pos = path.find('/', 1);; pos = path.find('/', pos + 1)) {
        const std::string level = path.substr(0, pos);
        if (!level.empty() && level.back() != '/' && ::mkdir(level.c_str(), mode) != 0 && errno != EEXIST)
            return fail(errno);
        if (pos == std::string::npos)
            break;
    }
    if (::stat(path.c_str(), &st) != 0)
        return fail(errno);
    return S_ISDIR(st.st_mode) ? true : fail(ENOTDIR);
}

} // namespace talmo
