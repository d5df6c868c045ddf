#include "platform/platform.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>

namespace talmo {
namespace {

// Fails the k-th call of one operation with a chosen errno. Writes are cut to at most kChunk
// bytes, so every write goes through the short-write loop.
struct Injector {
    static constexpr size_t kChunk = 4096;
    static inline std::string op;
    static inline int calls = 0, failAt = 0, err = 0;

    static bool fails(const char* name) { return op == name && ++calls == failAt && (errno = err, true); }
    static const FileIo& io()
    {
        static const FileIo sys = SystemFileIo();
        static const FileIo seam = {
            [](char* t) { return fails("makeTemp") ? -1 : sys.makeTemp(t); },
            [](int fd, const void* b, size_t n) { return fails("write") ? -1 : sys.write(fd, b, std::min(n, kChunk)); },
            [](int fd, mode_t m) { return fails("fchmod") ? -1 : sys.fchmod(fd, m); },
            [](int fd) { return fails("fsync") ? -1 : sys.fsync(fd); },
            [](int fd) { // a failing close still releases the descriptor, as on Linux
                const bool fail = fails("close");
                const int saved = errno;
                sys.close(fd);
                errno = saved;
                return fail ? -1 : 0;
            },
            [](const char* a, const char* b) { return fails("rename") ? -1 : sys.rename(a, b); },
            [](const char* p) { return fails("unlink") ? -1 : sys.unlink(p); },
            [](const char* p) { return fails("openFolder") ? -1 : sys.openFolder(p); }};
        return seam;
    }
};

class AtomicFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string templ = (std::filesystem::temp_directory_path() / "talmo-atomic-XXXXXX").string();
        ASSERT_NE(::mkdtemp(templ.data()), nullptr);
        dir_ = templ;
        target_ = dir_ + "/notes.plist";
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string read(const std::string& path) const
    {
        std::string s;
        return ReadFileBytes(path, s, 1u << 24) ? s : "<unreadable>";
    }
    std::set<std::string> names() const
    {
        std::set<std::string> out;
        for (const auto& e : std::filesystem::directory_iterator(dir_))
            out.insert(e.path().filename().string());
        return out;
    }

    std::string dir_, target_;
};

TEST_F(AtomicFile, AFailureAtTheKthCallOfEveryOperationKeepsTheOldFile)
{
    const std::string oldBytes = "old content\n", newBytes(5 * Injector::kChunk - 100, 'x'); // five writes
    // Rows: operation, which call of it fails, errno, outcome. An interrupted write or flush is
    // retried. After the rename the new content is visible, so failing to make that durable is
    // reported; a filesystem that cannot flush folders (EINVAL) and a failing close of the
    // folder are not failures.
    std::ifstream rows(TALMO_SOURCE_DIR "/tests/platform/data/atomic-failures.txt");
    std::string op, errName, outcome;
    int k = 0, count = 0;
    while (rows >> op >> k >> errName >> outcome && ++count) {
        SCOPED_TRACE(op + " #" + std::to_string(k) + " " + errName);
        int err = 1;
        while (err < 200 && !(strerrorname_np(err) && errName == strerrorname_np(err)))
            ++err;
        ASSERT_TRUE(WriteFileAtomically(target_, oldBytes, 0600));
        Injector::op = op, Injector::calls = 0, Injector::failAt = k, Injector::err = err;
        int code = 0;
        bool ok;
        {
            ScopedFileIo seam(Injector::io());
            ok = WriteFileAtomically(target_, newBytes, 0600, &code);
        }
        EXPECT_EQ(ok, outcome == "Succeeds");
        EXPECT_EQ(code, outcome == "Succeeds" ? 0 : err);
        EXPECT_EQ(read(target_), outcome == "OldKept" ? oldBytes : newBytes);
        EXPECT_EQ(names(), std::set<std::string>{"notes.plist"}) << "temporary file left";
    }
    EXPECT_EQ(count, 14);
}

TEST_F(AtomicFile, TheNextSuccessfulWriteRemovesOnlyStaleTemporaryFiles)
{
    // A pid that surely belongs to no process any more: a child that has been reaped.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    auto temp = [](pid_t pid, const char* rest) { return ".talmo-tmp." + std::to_string(pid) + rest; };
    const std::string dead = temp(child, ".notes.plist.aaaaaa"), liveOld = temp(::getppid(), ".other.plist.dddddd");
    // Kept: this process's and a live writer's fresh files, and names that are not ours (no
    // target part, pid 0, a pid beyond pid_t, no leading dot).
    const std::set<std::string> kept = {temp(::getpid(), ".other.plist.bbbbbb"),
                                        temp(::getppid(), ".other.plist.cccccc"),
                                        ".talmo-tmp.notours",
                                        temp(child, ".Ab12Cd"),
                                        ".talmo-tmp.0.file.Ab12Cd",
                                        ".talmo-tmp.99999999999.file.Ab12Cd",
                                        "talmo-tmp.12.file.Ab12Cd"};
    for (const auto& n : kept)
        std::ofstream(dir_ + "/" + n) << "partial";
    for (const auto& n : {dead, liveOld})
        std::ofstream(dir_ + "/" + n) << "partial";
    // Two minutes old: past the age limit even though its writer lives.
    const timespec old[2] = {{::time(nullptr) - 120, 0}, {::time(nullptr) - 120, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (dir_ + "/" + liveOld).c_str(), old, 0), 0);

    ASSERT_TRUE(WriteFileAtomically(target_, "new", 0600));
    std::set<std::string> expected = kept;
    expected.insert("notes.plist");
    EXPECT_EQ(names(), expected);
}

TEST_F(AtomicFile, ReplacesContentAndModeUnderLongNamesAndFailuresReportErrno)
{
    const std::string longName = dir_ + "/" + std::string(250, 'n');
    ASSERT_TRUE(WriteFileAtomically(longName, "old", 0644));
    ::chmod(longName.c_str(), 0666);
    ASSERT_TRUE(WriteFileAtomically(longName, std::string(100000, 'n'), 0600));
    EXPECT_EQ(read(longName), std::string(100000, 'n'));
    EXPECT_EQ(names(), std::set<std::string>{std::string(250, 'n')}) << "temporary file left";
    ASSERT_TRUE(MakeFolders(dir_ + "/a/b/c", 0700));
    for (const std::string& path : {longName, dir_ + "/a/b"}) {
        struct stat st;
        ASSERT_EQ(::stat(path.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 07777, path == longName ? 0600u : 0700u) << path;
    }
    std::string out;
    int code = 0;
    const std::pair<std::function<bool(int*)>, int> failures[] = {
        {[&](int* c) { return WriteFileAtomically(dir_ + "/", "x", 0600, c); }, EINVAL},
        {[&](int* c) { return WriteFileAtomically(dir_ + "/missing/f", "x", 0600, c); }, ENOENT},
        {[&](int* c) { return ReadFileBytes(longName, out, 99999, c); }, EFBIG},
        {[&](int* c) { return ReadFileBytes(dir_ + "/missing", out, 10, c); }, ENOENT},
        {[&](int* c) { return ReadFileBytes(dir_, out, 10, c); }, EISDIR},
        {[&](int* c) { return MakeFolders(longName + "/sub", 0700, c); }, ENOTDIR},
    };
    for (size_t i = 0; i < std::size(failures); ++i) {
        code = 0;
        EXPECT_FALSE(failures[i].first(&code)) << "case " << i;
        EXPECT_EQ(code, failures[i].second) << "case " << i;
    }
}

} // namespace
} // namespace talmo
