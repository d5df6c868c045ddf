// Whole-file reads and atomic replacement of files. Every writer of the project replaces its
// file through WriteFileAtomically, so an interrupted or failed write leaves the old file as it
// was: the bytes go to a temporary file beside the target, which is flushed to disk and renamed
// over the target, and the folder is flushed so that the rename itself survives a crash.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace talmo {

// The system calls of an atomic write, as a seam: tests replace one of them to fail at the k-th
// call. Each follows its POSIX namesake (a result of -1 sets errno).
struct FileIo {
    int (*makeTemp)(char* pathTemplate); // mkostemp(template, O_CLOEXEC)
    ssize_t (*write)(int fd, const void* bytes, size_t count);
    int (*fchmod)(int fd, mode_t mode);
    int (*fsync)(int fd);
    int (*close)(int fd);
    int (*rename)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*openFolder)(const char* path); // open(path, O_RDONLY | O_DIRECTORY)
};

// The real system calls.
const FileIo& SystemFileIo();

// The calls atomic writes use: SystemFileIo() unless a test installed others.
const FileIo& CurrentFileIo();

// Installs `io` for the lifetime of the object (tests only; not thread-safe).
class ScopedFileIo {
public:
    explicit ScopedFileIo(const FileIo& io);
    ~ScopedFileIo();
    ScopedFileIo(const ScopedFileIo&) = delete;
    ScopedFileIo& operator=(const ScopedFileIo&) = delete;

private:
    const FileIo* previous_;
};

// Temporary files are named ".talmo-tmp.<pid>.<target name, at most 64 bytes>.XXXXXX" in the
// target's folder, so they are hidden, recognisably ours, and name the process that wrote them.
inline constexpr std::string_view kTempFilePrefix = ".talmo-tmp.";

// True when `name` (a file name, no folder) has the form of one of our temporary files; fills
// the writer's pid.
bool ParseTempFileName(std::string_view name, pid_t& writerPid);

// Replaces `path` with `bytes` atomically and gives the file `mode`. On failure returns false,
// stores an errno value in *errorCode (when given), removes the temporary file and leaves the
// old file untouched; the one exception is a failure to flush the folder after the rename,
// which also returns false although the new content is already in place. After a successful
// write, stale temporary files of ours in the same folder are removed (see IsStaleTempFile).
bool WriteFileAtomically(const std::string& path, std::string_view bytes, mode_t mode, int* errorCode = nullptr);

// A temporary file of ours is stale when the process that wrote it no longer exists, or when it
// is older than kStaleTempAgeSeconds (which covers a reused pid and writers in another pid
// namespace; a live write takes milliseconds).
inline constexpr int kStaleTempAgeSeconds = 60;
bool IsStaleTempFile(const std::string& folder, std::string_view name);

// Reads the whole file. Fails (false, errno in *errorCode) when it cannot be read or holds more
// than `maxBytes` (EFBIG).
bool ReadFileBytes(const std::string& path, std::string& out, size_t maxBytes, int* errorCode = nullptr);

// Creates `path` and any missing parents with `mode`; true when the folder exists afterwards.
bool MakeFolders(const std::string& path, mode_t mode, int* errorCode = nullptr);

} // namespace talmo
