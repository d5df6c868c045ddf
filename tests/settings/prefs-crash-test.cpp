// Writes that are killed half-way: the per-user file is always either the old or the new
// version, whole, and our temporary files do not pile up.
#include "tests/settings/prefs-fixture.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
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

pl::DictPtr notesOfSize(int version, size_t bytes)
{
    auto d = pl::makeDict();
    d->setInt("Version", version);
    d->setString("Notes", std::string(bytes, static_cast<char>('a' + version)));
    return d;
}

class PrefsCrash : public test::PrefsHome { };

TEST_F(PrefsCrash, WriterKilledAtRandomMomentsNeverLeavesATornFile)
{
    // Versions of very different sizes, so kills land while writing, syncing and renaming. The
    // writers get them serialised, as WriteUserPreferences hands them to WriteFileAtomically:
    // otherwise nearly every kill falls into the serialisation, long before the file is touched.
    const pl::DictPtr versions[] = {notesOfSize(0, 300), notesOfSize(1, 100000), notesOfSize(2, 800000)};
    std::vector<std::string> texts;
    for (const auto& v : versions)
        texts.push_back(pl::writePlist(v));
    const std::string file = prefsFile(kJobNotes);

    // Kill moments spread over one round of the three writes, timed here, so that kills fall
    // into every phase of a write; capped so that a loaded machine does not stretch the test
    // (each writer starts with another version, so the cap still reaches every phase).
    ASSERT_TRUE(MakeFolders(prefsFolder(), 0700));
    const auto start = std::chrono::steady_clock::now();
    for (const auto& text : texts)
        ASSERT_TRUE(WriteFileAtomically(file, text, 0600));
    const auto roundUs =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::mt19937 rng(20261122);
    std::uniform_int_distribution<long> delayUs(0, std::clamp<long>(roundUs.count(), 100, 8000));

    for (int i = 0; i < 220 && !HasFailure(); ++i) {
        int ready[2];
        ASSERT_EQ(::pipe2(ready, O_CLOEXEC), 0);
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
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
        int status = 0;
        ::kill(writer, SIGKILL);
        ::waitpid(writer, &status, 0);
        ASSERT_TRUE(started && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "writer " << i;

        EXPECT_LE(tempFileCount(prefsFolder()), 1u) << "kill " << i;
        const std::string now = readAll(file);
        EXPECT_NE(std::find(texts.begin(), texts.end(), now), texts.end())
            << "kill " << i << ": " << now.size() << " bytes that are no whole version";
        // The next write replaces the file and clears what the killed writer left.
        EXPECT_TRUE(WriteUserPreferences(kJobNotes, versions[0])) << "kill " << i;
        EXPECT_EQ(tempFileCount(prefsFolder()), 0u) << "kill " << i << ", after the next write";
    }
}

} // namespace
} // namespace talmo
