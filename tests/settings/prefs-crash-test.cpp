// Writes that are killed half-way: the per-user file is always either the old or the new
// version, whole, and our temporary files do not pile up.
#include "tests/settings/prefs-fixture.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>

namespace talmo {
namespace {

const char* kJobNotes = "com.talmo.print.jobnotes.plist";

size_t tempFileCount(const std::string& folder)
{
    size_t count = 0;
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(folder, ec)) {
        pid_t pid = 0;
        count += ParseTempFileName(e.path().filename().string(), pid);
    }
    return count;
}

// Puts `folder` on a tmpfs visible only to this process (entering a user namespace first when
// not root), so a flush costs nothing. False when the system does not allow it.
bool mountPrivateTmpfs(const std::string& folder)
{
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (::unshare(uid == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    if (uid != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << gid << " 1";
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 && MakeFolders(folder, 0700) &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=16m,mode=0700") == 0;
}

pl::DictPtr notesOfSize(int version, size_t bytes)
{
    auto d = pl::makeDict();
    d->setInt("Version", version);
    d->setString("Notes", std::string(bytes, static_cast<char>('a' + version)));
    return d;
}

// Kills writers at random moments and checks after each kill; returns what went wrong.
std::string killWritersRepeatedly(const std::string& folder, const std::string& file, int kills)
{
    // Versions of very different sizes, so kills land while writing, syncing and renaming. The
    // writers get them serialised, as WriteUserPreferences hands them to WriteFileAtomically:
    // otherwise nearly every kill falls into the serialisation, long before the file is touched.
    const pl::DictPtr versions[] = {notesOfSize(0, 300), notesOfSize(1, 100000), notesOfSize(2, 800000)};
    std::vector<std::string> texts;
    for (const auto& v : versions)
        texts.push_back(pl::writePlist(v));

    // Kill moments spread over one round of the three writes, timed here, so that kills fall
    // into every phase of a write; capped so that a loaded machine does not stretch the test
    // (each writer starts with another version, so the cap still reaches every phase).
    if (!MakeFolders(folder, 0700))
        return "cannot create the preferences folder";
    const auto start = std::chrono::steady_clock::now();
    for (const auto& text : texts)
        if (!WriteFileAtomically(file, text, 0600))
            return "a plain write failed";
    const auto roundUs =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::mt19937 rng(20261122);
    std::uniform_int_distribution<long> delayUs(0, std::clamp<long>(roundUs.count(), 100, 8000));

    std::string problems;
    for (int i = 0; i < kills && problems.size() < 2000; ++i) {
        int ready[2];
        if (::pipe2(ready, O_CLOEXEC) != 0)
            return "pipe2 failed";
        const pid_t writer = ::fork();
        if (writer == 0) {
            const char go = 1;
            (void)!::write(ready[1], &go, 1);
            for (unsigned j = static_cast<unsigned>(i);; ++j)
                WriteFileAtomically(file, texts[j % 3], 0600);
        }
        ::close(ready[1]);
        char go = 0;
        const bool started = writer > 0 && ::read(ready[0], &go, 1) == 1;
        ::close(ready[0]);
        if (started)
            ::usleep(static_cast<useconds_t>(delayUs(rng)));
        int status = 0;
        if (writer > 0) {
            ::kill(writer, SIGKILL);
            ::waitpid(writer, &status, 0);
        }
        if (!started || !WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL)
            return "writer " + std::to_string(i) + " did not run until killed";

        const std::string kill = "kill " + std::to_string(i) + ": ";
        if (const size_t temps = tempFileCount(folder); temps > 1)
            problems += kill + std::to_string(temps) + " temporary files; ";
        const std::string now = test::PrefsHome::readAll(file);
        if (std::find(texts.begin(), texts.end(), now) == texts.end())
            problems += kill + std::to_string(now.size()) + " bytes that are no whole version; ";
        // The next write replaces the file and clears what the killed writer left.
        if (!WriteUserPreferences(kJobNotes, versions[0]))
            problems += kill + "the next write failed; ";
        if (tempFileCount(folder) != 0)
            problems += kill + "temporary file left after the next write; ";
    }
    return problems;
}

class PrefsCrash : public test::PrefsHome { };

TEST_F(PrefsCrash, WriterKilledAtRandomMomentsNeverLeavesATornFile)
{
    // In a child, so that the namespace and the tmpfs die with it: 220 kills then take a few
    // seconds instead of half a minute of disk flushes. A kill tests the process dying, not the
    // machine, so the page cache is the same either way.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        mountPrivateTmpfs(configHome()); // else on the test folder's disk, only slower
        const std::string problems = killWritersRepeatedly(prefsFolder(), prefsFile(kJobNotes), 220);
        if (!problems.empty())
            std::fprintf(stderr, "%s\n", problems.c_str());
        ::_exit(problems.empty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
}

} // namespace
} // namespace talmo
