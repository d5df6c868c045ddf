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
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>

namespace talmo {
namespace {

const char* kJobNotes = "com.talmo.print.jobnotes.plist";

std::string errnoText(const std::string& what) { return what + ": " + std::strerror(errno); }

// Runs `body` in a forked child, so that limits, signal dispositions and mounts it changes
// die with it. The child reports "" for success, "SKIP: why", or what went wrong.
std::string runInChild(const std::function<std::string()>& body)
{
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0)
        return errnoText("pipe2");
    const pid_t pid = ::fork();
    if (pid < 0)
        return errnoText("fork");
    if (pid == 0) {
        ::close(fds[0]);
        const std::string report = body();
        for (size_t done = 0; done < report.size();) {
            const ssize_t n = ::write(fds[1], report.data() + done, report.size() - done);
            if (n <= 0)
                break;
            done += static_cast<size_t>(n);
        }
        ::_exit(0);
    }
    ::close(fds[1]);
    std::string report;
    char buf[512];
    ssize_t n;
    while ((n = ::read(fds[0], buf, sizeof buf)) > 0 || (n < 0 && errno == EINTR))
        if (n > 0)
            report.append(buf, static_cast<size_t>(n));
    ::close(fds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        report += " (child ended abnormally, status " + std::to_string(status) + ")";
    return report;
}

void writeProcFile(const char* path, const std::string& text) { std::ofstream(path) << text; }

// Enters a mount namespace of its own (and a user namespace first when not root), with every
// mount private, so that what the caller mounts is invisible outside and gone when it exits.
// Returns "" or why it cannot.
std::string enterPrivateMountNamespace()
{
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (uid == 0) {
        if (::unshare(CLONE_NEWNS) != 0)
            return errnoText("unshare(CLONE_NEWNS)");
    } else {
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return errnoText("unshare(CLONE_NEWUSER | CLONE_NEWNS)");
        writeProcFile("/proc/self/setgroups", "deny");
        writeProcFile("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
        writeProcFile("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
    }
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return errnoText("making mounts private");
    return "";
}

pl::DictPtr notesOfSize(int version, size_t bytes)
{
    auto d = pl::makeDict();
    d->setInt("Version", version);
    d->setString("Notes", std::string(bytes, static_cast<char>('a' + version)));
    return d;
}

class PrefsCrash : public test::PrefsHome { };

// Kills writers at random moments and checks after each kill; returns what went wrong.
std::string killWritersRepeatedly(const std::string& folder, const std::string& file, int kills, int& tempLeftByKill)
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
        return errnoText("creating the preferences folder");
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
            return errnoText("pipe2");
        const pid_t writer = ::fork();
        if (writer < 0)
            return errnoText("fork");
        if (writer == 0) {
            ::close(ready[0]);
            const char go = 1;
            (void)!::write(ready[1], &go, 1);
            for (unsigned j = static_cast<unsigned>(i);; ++j)
                WriteFileAtomically(file, texts[j % 3], 0600);
        }
        ::close(ready[1]);
        char go = 0;
        const bool started = ::read(ready[0], &go, 1) == 1;
        ::close(ready[0]);
        if (started)
            ::usleep(static_cast<useconds_t>(delayUs(rng)));
        ::kill(writer, SIGKILL);
        int status = 0;
        ::waitpid(writer, &status, 0);
        if (!started || !WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL)
            return "writer " + std::to_string(i) + " did not run until killed";

        const std::string kill = "kill " + std::to_string(i) + ": ";
        const size_t temps = test::PrefsHome::tempFiles(folder).size();
        if (temps > 1)
            problems += kill + std::to_string(temps) + " temporary files; ";
        tempLeftByKill += temps > 0;
        const std::string now = test::PrefsHome::readAll(file);
        if (std::find(texts.begin(), texts.end(), now) == texts.end())
            problems += kill + std::to_string(now.size()) + " bytes that are no whole version; ";
        // The next write replaces the file and clears what the killed writer left.
        if (!WriteUserPreferences(kJobNotes, versions[0]))
            problems += kill + "the next write failed; ";
        if (!test::PrefsHome::tempFiles(folder).empty())
            problems += kill + "temporary file left after the next write; ";
    }
    return problems;
}

TEST_F(PrefsCrash, WriterKilledAtRandomMomentsNeverLeavesATornFile)
{
    // On a tmpfs of its own when possible: a flush there costs nothing, so the 220 kills take a
    // few seconds instead of half a minute of disk flushes. A kill tests the process dying, not
    // the machine, so the page cache is the same either way.
    constexpr int kKills = 220;
    const std::string report = runInChild([&]() -> std::string {
        std::string where = "tmpfs";
        if (!enterPrivateMountNamespace().empty() || !MakeFolders(configHome(), 0700) ||
            ::mount("tmpfs", configHome().c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=16m,mode=0700") != 0)
            where = "the test folder's disk";
        int tempLeftByKill = 0;
        std::string problems = killWritersRepeatedly(prefsFolder(), prefsFile(kJobNotes), kKills, tempLeftByKill);
        std::printf("[ kills    ] %d kills on %s: %d left a temporary file behind; %s\n", kKills, where.c_str(),
                    tempLeftByKill, problems.empty() ? "every file whole" : "FAILED");
        std::fflush(stdout);
        return problems;
    });
    EXPECT_EQ(report, "");
}

} // namespace
} // namespace talmo
