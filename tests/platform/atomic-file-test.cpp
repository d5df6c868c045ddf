#include "platform/platform.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>

namespace talmo {
namespace {

// Counts every call of the seam and fails the k-th call of one operation with a chosen errno.
// Writes are cut to at most kChunk bytes, so every write exercises the short-write loop.
struct Injector {
    static constexpr size_t kChunk = 4096;
    static inline std::map<std::string, int> calls;
    static inline std::string failOp;
    static inline int failAt = 0;
    static inline int failErrno = 0;

    static void reset(std::string op = "", int k = 0, int err = 0)
    {
        calls.clear();
        failOp = std::move(op);
        failAt = k;
        failErrno = err;
    }
    static bool fails(const char* op)
    {
        const int n = ++calls[op];
        if (failOp == op && n == failAt) {
            errno = failErrno;
            return true;
        }
        return false;
    }

    static int makeTemp(char* t) { return fails("makeTemp") ? -1 : SystemFileIo().makeTemp(t); }
    static ssize_t write(int fd, const void* b, size_t n)
    {
        return fails("write") ? -1 : SystemFileIo().write(fd, b, std::min(n, kChunk));
    }
    static int fchmod(int fd, mode_t m) { return fails("fchmod") ? -1 : SystemFileIo().fchmod(fd, m); }
    static int fsync(int fd) { return fails("fsync") ? -1 : SystemFileIo().fsync(fd); }
    static int close(int fd)
    {
        // A failing close still releases the descriptor, as on Linux.
        const bool fail = fails("close");
        const int saved = errno;
        SystemFileIo().close(fd);
        errno = saved;
        return fail ? -1 : 0;
    }
    static int rename(const char* a, const char* b) { return fails("rename") ? -1 : SystemFileIo().rename(a, b); }
    static int unlink(const char* p) { return fails("unlink") ? -1 : SystemFileIo().unlink(p); }
    static int openFolder(const char* p) { return fails("openFolder") ? -1 : SystemFileIo().openFolder(p); }

    static const FileIo& io()
    {
        static const FileIo seam = {makeTemp, write, fchmod, fsync, close, rename, unlink, openFolder};
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
        target_ = dir_ + "/com.talmo.print.jobnotes.plist";
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string read(const std::string& path) const
    {
        std::string s;
        return ReadFileBytes(path, s, 1u << 24) ? s : "<unreadable>";
    }
    // A file made without our writer, which would clean up on its own.
    void plant(const std::string& name) const { std::ofstream(dir_ + "/" + name) << "partial"; }
    std::set<std::string> names() const
    {
        std::set<std::string> out;
        for (const auto& e : std::filesystem::directory_iterator(dir_))
            out.insert(e.path().filename().string());
        return out;
    }

    std::string dir_;
    std::string target_;
};

TEST_F(AtomicFile, ReplacesContentAndModeAndLeavesNoTemporaryFile)
{
    ASSERT_TRUE(WriteFileAtomically(target_, "old", 0644));
    ::chmod(target_.c_str(), 0666);
    ASSERT_TRUE(WriteFileAtomically(target_, std::string(100000, 'n'), 0600));
    EXPECT_EQ(read(target_), std::string(100000, 'n'));
    struct stat st;
    ASSERT_EQ(::stat(target_.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0600u);
    EXPECT_EQ(names(), std::set<std::string>{"com.talmo.print.jobnotes.plist"});
}

TEST_F(AtomicFile, AFailureAtTheKthCallOfEveryOperationKeepsTheOldFile)
{
    const std::string oldBytes = "old content\n";
    const std::string newBytes(5 * Injector::kChunk - 100, 'x'); // five writes
    enum Outcome { OldKept, NewInPlaceButReported, Succeeds };
    struct Row {
        const char* op;
        int k;
        int err;
        Outcome outcome;
    };
    const Row rows[] = {
        {"makeTemp", 1, EMFILE, OldKept},
        {"write", 1, ENOSPC, OldKept},
        {"write", 2, ENOSPC, OldKept},
        {"write", 3, EIO, OldKept},
        {"write", 4, EFBIG, OldKept},
        {"write", 5, EDQUOT, OldKept},
        {"write", 3, EINTR, Succeeds}, // interrupted: retried
        {"fchmod", 1, EPERM, OldKept},
        {"fsync", 1, EIO, OldKept},
        {"fsync", 1, EINTR, Succeeds},
        {"close", 1, EIO, OldKept},
        {"rename", 1, EXDEV, OldKept},
        // After the rename the new content is visible; failing to make that durable is reported.
        {"openFolder", 1, EMFILE, NewInPlaceButReported},
        {"fsync", 2, EIO, NewInPlaceButReported},
        {"fsync", 2, EINVAL, Succeeds}, // a filesystem that cannot flush folders
        {"close", 2, EIO, Succeeds},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.op) + " #" + std::to_string(row.k) + " errno " + std::to_string(row.err));
        ASSERT_TRUE(WriteFileAtomically(target_, oldBytes, 0600));
        Injector::reset(row.op, row.k, row.err);
        int code = 0;
        bool ok;
        {
            ScopedFileIo seam(Injector::io());
            ok = WriteFileAtomically(target_, newBytes, 0600, &code);
        }
        EXPECT_EQ(ok, row.outcome == Succeeds);
        if (row.outcome != Succeeds) {
            EXPECT_EQ(code, row.err);
        }
        EXPECT_EQ(read(target_), row.outcome == OldKept ? oldBytes : newBytes);
        EXPECT_EQ(names(), std::set<std::string>{"com.talmo.print.jobnotes.plist"}) << "temporary file left";
    }
}

TEST_F(AtomicFile, TemporaryNamesAreRecognisedStrictly)
{
    const std::tuple<const char*, bool, pid_t> cases[] = {
        {".talmo-tmp.1234.com.talmo.print.jobnotes.plist.Ab12Cd", true, 1234},
        {".talmo-tmp.7..Ab12Cd", true, 7},
        {".talmo-tmp.1234.Ab12Cd", false, 0},             // no target part
        {".talmo-tmp.0.file.Ab12Cd", false, 0},           // pid 0 is never a writer
        {".talmo-tmp.99999999999.file.Ab12Cd", false, 0}, // beyond pid_t
        {"talmo-tmp.12.file.Ab12Cd", false, 0},
    };
    for (const auto& [name, ours, expectedPid] : cases) {
        pid_t pid = 0;
        EXPECT_EQ(ParseTempFileName(name, pid), ours) << name;
        EXPECT_EQ(pid, ours ? expectedPid : pid) << name;
    }
}

TEST_F(AtomicFile, TheNextSuccessfulWriteRemovesOnlyStaleTemporaryFiles)
{
    // A pid that surely belongs to no process any more: a child that has been reaped.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
        ::_exit(0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    const std::string dead = ".talmo-tmp." + std::to_string(child) + ".notes.plist.aaaaaa";
    const std::string mineFresh = ".talmo-tmp." + std::to_string(::getpid()) + ".other.plist.bbbbbb";
    const std::string liveFresh = ".talmo-tmp." + std::to_string(::getppid()) + ".other.plist.cccccc";
    const std::string liveOld = ".talmo-tmp." + std::to_string(::getppid()) + ".other.plist.dddddd";
    const std::string foreign = ".talmo-tmp.notours";
    for (const auto& n : {dead, mineFresh, liveFresh, liveOld, foreign})
        plant(n);
    // Two minutes old: past the age limit even though its writer lives.
    const timespec old[2] = {{::time(nullptr) - 120, 0}, {::time(nullptr) - 120, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (dir_ + "/" + liveOld).c_str(), old, 0), 0);

    ASSERT_TRUE(WriteFileAtomically(target_, "new", 0600));
    EXPECT_EQ(names(), (std::set<std::string>{"com.talmo.print.jobnotes.plist", mineFresh, liveFresh, foreign}));
}

TEST_F(AtomicFile, FailedWriteCleansNothingButItsOwnFile)
{
    const std::string dead = ".talmo-tmp.2147483646.notes.plist.aaaaaa";
    plant(dead);
    Injector::reset("rename", 1, EACCES);
    ScopedFileIo seam(Injector::io());
    EXPECT_FALSE(WriteFileAtomically(target_, "new", 0600));
    EXPECT_EQ(names(), std::set<std::string>{dead});
}

TEST_F(AtomicFile, LongNamesWorkAndFailuresReportErrno)
{
    const std::string longName = dir_ + "/" + std::string(250, 'n');
    int code = 0;
    ASSERT_TRUE(WriteFileAtomically(longName, std::string(1000, 'a'), 0600, &code)) << code;
    std::string out;
    EXPECT_TRUE(ReadFileBytes(longName, out, 1000, &code));
    ASSERT_TRUE(MakeFolders(dir_ + "/a/b/c", 0700));
    struct stat st;
    ASSERT_EQ(::stat((dir_ + "/a/b").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);

    const std::pair<std::function<bool(int*)>, int> failures[] = {
        {[&](int* c) { return WriteFileAtomically(dir_ + "/", "x", 0600, c); }, EINVAL},
        {[&](int* c) { return WriteFileAtomically(dir_ + "/missing/f", "x", 0600, c); }, ENOENT},
        {[&](int* c) { return ReadFileBytes(longName, out, 999, c); }, EFBIG},
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
