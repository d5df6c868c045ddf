#include "tests/settings/prefs-fixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

// Looking at a name and then opening it is a race: the file may be replaced in between. This
// stat() replaces the armed path by the FIFO beside it ("<path>.fifo") right after the look.
namespace {
std::string gSwapAfterLook;
}

extern "C" int stat(const char* __restrict path, struct stat* __restrict st) noexcept
{
    const int result = ::fstatat(AT_FDCWD, path, st, 0);
    if (!gSwapAfterLook.empty() && gSwapAfterLook == path) {
        gSwapAfterLook.clear();
        ::rename((std::string(path) + ".fifo").c_str(), path);
    }
    return result;
}

namespace talmo {
namespace {

using test::PrefsHome;

const char* kInputHistory = "com.talmo.print.inputhistory.plist";

mode_t modeOf(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

class Prefs : public PrefsHome { };

// --- Folder mapping ---

TEST_F(Prefs, MakerFolderIsCreatedPrivateOnFirstUse)
{
    // Neither the data home nor "Talmo" exist yet: both are made, owner-only.
    ASSERT_FALSE(std::filesystem::exists(dataHome()));
    auto url = CopyPreferenceFileURL("com.talmo.printing.watermarks.plist");
    ASSERT_TRUE(url);
    EXPECT_EQ(*url, dataHome() + "/Talmo/com.talmo.printing.watermarks.plist");
    EXPECT_TRUE(std::filesystem::is_directory(dataHome() + "/Talmo"));
    EXPECT_EQ(modeOf(dataHome() + "/Talmo"), 0700u);
    EXPECT_FALSE(std::filesystem::exists(*url)); // the folder only, never the file
}

TEST_F(Prefs, FoldersFallBackToHomeWhenVariablesAreUnsetOrRelative)
{
    const std::string home = root_ + "/home";
    struct Case {
        const char* configHome; // null: unset
        const char* dataHome;
        std::string userFile;
        std::string sharedFile;
    };
    const Case cases[] = {
        {nullptr, nullptr, home + "/.config/talmo/f.plist", home + "/.local/share/Talmo/f.plist"},
        {"relative/cfg", "", home + "/.config/talmo/f.plist", home + "/.local/share/Talmo/f.plist"},
        {"/abs/cfg", nullptr, "/abs/cfg/talmo/f.plist", home + "/.local/share/Talmo/f.plist"},
    };
    for (const auto& c : cases) {
        c.configHome ? ::setenv("XDG_CONFIG_HOME", c.configHome, 1) : ::unsetenv("XDG_CONFIG_HOME");
        c.dataHome ? ::setenv("XDG_DATA_HOME", c.dataHome, 1) : ::unsetenv("XDG_DATA_HOME");
        EXPECT_EQ(CopyUserPreferencesPath("f.plist"), c.userFile);
        EXPECT_EQ(CopyPreferenceFileURL("f.plist"), c.sharedFile);
    }
}

TEST_F(Prefs, FileNamesThatLeaveTheFolderAreRefused)
{
    for (const char* bad : {"", ".", "..", "../escape.plist", "sub/file.plist", "/etc/passwd"}) {
        EXPECT_FALSE(CopyPreferenceFileURL(bad)) << bad;
        EXPECT_FALSE(CopyUserPreferencesPath(bad)) << bad;
        EXPECT_FALSE(CopySharedDefaultsPath(bad)) << bad;
        EXPECT_EQ(CopyXMLData(bad), nullptr) << bad;
        EXPECT_EQ(CopyUserPreferences(bad), nullptr) << bad;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(WriteUserPreferences(bad, pl::makeDict())) << bad;
        testing::internal::GetCapturedStderr();
    }
}

// The user's copy, then the installed defaults in $XDG_DATA_DIRS order, then the bundle's.
TEST_F(Prefs, SharedDefaultsComeFromTheMakerFolderDataDirsOrTheBundleInThatOrder)
{
    const std::string name = "TalmoFeatures.plist";
    const auto from = [&] {
        auto d = pl::as<pl::Dictionary>(CopyXMLData(name));
        return d && d->getString("from") ? *d->getString("from") : "null";
    };
    const auto place = [&](const std::string& path, const std::string& what) {
        writeRaw(path, "<plist><dict><key>from</key><string>" + what + "</string></dict></plist>");
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(from(), "null");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    place(root_ + "/bundle/Resources/" + name, "bundle");
    SetExtensionBundle(Bundle::open(root_ + "/bundle"));
    EXPECT_EQ(from(), "bundle");
    place(root_ + "/sys2/talmo/" + name, "sys2");
    EXPECT_EQ(from(), "sys2");
    place(root_ + "/sys1/talmo/" + name, "sys1");
    EXPECT_EQ(from(), "sys1");
    place(dataHome() + "/Talmo/" + name, "maker");
    EXPECT_EQ(from(), "maker");
    EXPECT_EQ(CopySharedDefaultsPath(name), dataHome() + "/Talmo/" + name);
    SetExtensionBundle(std::nullopt);
}

TEST_F(Prefs, ShippedFeatureFileReadsWithTheLibraryLayout)
{
    std::filesystem::create_directories(root_ + "/bundle");
    std::filesystem::create_directory_symlink(std::string(TALMO_SOURCE_DIR) + "/resources",
                                              root_ + "/bundle/Resources");
    SetExtensionBundle(Bundle::open(root_ + "/bundle"));
    auto d = pl::as<pl::Dictionary>(CopyXMLData("TalmoFeatures.plist"));
    SetExtensionBundle(std::nullopt);
    ASSERT_TRUE(d);
    EXPECT_TRUE(d->getDict(kStockLibraryStockListKey));
    EXPECT_TRUE(d->getArray(kStockLibraryStockMenuListKey));
    const auto widths = d->getDict(kStockLibraryColumnWidthsKey);
    ASSERT_TRUE(widths);
    EXPECT_EQ(widths->size(), 13u); // one per column of the library table
    for (const auto& [column, width] : *widths) {
        const auto w = pl::as<pl::Integer>(width);
        EXPECT_TRUE(column.size() == 4 && w && w->value > 0 && w->value <= INT16_MAX) << column;
    }
}

// --- Reading ---

TEST_F(Prefs, MissingDamagedOrNonDictionaryUserFileReadsAsEmptyDictionary)
{
    struct Case {
        const char* what;
        std::optional<std::string> content; // nullopt: no file
    };
    const Case cases[] = {
        {"missing file", std::nullopt},
        {"empty file", ""},
        {"not a property list", "garbage\x01\x02"},
        {"truncated", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><integer>1"},
        {"bad number", "<plist><dict><key>a</key><real>0,75</real></dict></plist>"},
        {"array root", "<plist><array><string>x</string></array></plist>"},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(prefsFile(kInputHistory));
        if (c.content)
            writeRaw(prefsFile(kInputHistory), *c.content);
        testing::internal::CaptureStderr();
        auto d = CopyUserPreferences(kInputHistory);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << c.what; // read failures are silent
        ASSERT_NE(d, nullptr) << c.what;
        EXPECT_TRUE(d->empty()) << c.what;
        d->setInt("usable", 1); // mutable
    }
}

TEST_F(Prefs, FifoOrFolderInPlaceOfAFileReadsAsUnreadableWithoutBlocking)
{
    const std::string shared = "com.talmo.printing.watermarks.plist";
    std::filesystem::create_directories(prefsFolder());
    std::filesystem::create_directories(dataHome() + "/Talmo/" + shared);
    ASSERT_EQ(::mkfifo(prefsFile(kInputHistory).c_str(), 0600), 0);
    ::alarm(10); // opening a FIFO without a writer would wait forever
    auto d = CopyUserPreferences(kInputHistory);
    testing::internal::CaptureStderr();
    EXPECT_EQ(CopyXMLData(shared), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ::alarm(0);
    ASSERT_TRUE(d);
    EXPECT_TRUE(d->empty());
}

TEST_F(Prefs, AFileSwappedForAFifoAfterALookCannotBlockTheRead)
{
    const std::string target = prefsFile(kInputHistory);
    writeRaw(target, "<plist><dict/></plist>");
    ASSERT_EQ(::mkfifo((target + ".fifo").c_str(), 0600), 0);
    gSwapAfterLook = target;
    std::atomic<bool> done{false};
    std::thread reader([&] {
        CopyUserPreferences(kInputHistory);
        done = true;
    });
    for (int i = 0; i < 300 && !done; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const bool blocked = !done;
    while (!done) { // a writer on the FIFO releases a reader stuck in open()
        if (const int fd = ::open(target.c_str(), O_WRONLY | O_NONBLOCK); fd >= 0)
            ::close(fd);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    reader.join();
    gSwapAfterLook.clear();
    EXPECT_FALSE(blocked);
}

TEST_F(Prefs, SharedFileThatIsNotXmlPrintsTheParseErrorAndReadsAsNull)
{
    const std::string name = "com.talmo.printing.watermarks.plist";
    struct Case {
        const char* content;
        const char* expectedMessage;
    };
    const Case cases[] = {
        {"this is not XML",
         "CopyXMLData()::CFPropertyListCreateFromXMLData() error: line 1: Start tag expected, '<' not found\n"},
        {"<plist>\n<dict>\n<key>a</key>\n</dict>\n</plist>\n",
         "CopyXMLData()::CFPropertyListCreateFromXMLData() error: line 3: <key>a</key> has no value\n"},
        {"", "CopyXMLData()::CFPropertyListCreateFromXMLData() error: line 1: Document is empty\n"},
    };
    for (const auto& c : cases) {
        writeRaw(dataHome() + "/Talmo/" + name, c.content);
        testing::internal::CaptureStderr();
        EXPECT_EQ(CopyXMLData(name), nullptr) << c.content;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expectedMessage);
    }
}

// --- Writing ---

TEST_F(Prefs, WritesTheStandardXmlOwnerOnlyCreatingTheFolder)
{
    auto d = pl::makeDict();
    d->setString("JobName", "Q3 <draft> & notes");
    d->setInt("Copies", 2);
    ASSERT_TRUE(WriteUserPreferences(kInputHistory, d));
    EXPECT_EQ(
        readAll(prefsFile(kInputHistory)),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n"
        "<dict>\n"
        "\t<key>JobName</key>\n"
        "\t<string>Q3 &lt;draft&gt; &amp; notes</string>\n"
        "\t<key>Copies</key>\n"
        "\t<integer>2</integer>\n"
        "</dict>\n"
        "</plist>\n");
    EXPECT_EQ(modeOf(prefsFolder()), 0700u);
    EXPECT_EQ(modeOf(prefsFile(kInputHistory)), 0600u);
    EXPECT_TRUE(pl::equal(CopyUserPreferences(kInputHistory), d));
}

TEST_F(Prefs, NullPropertyListIsAFailedWriteThatKeepsTheOldFile)
{
    auto d = pl::makeDict();
    d->setBool("kept", true);
    ASSERT_TRUE(WriteUserPreferences(kInputHistory, d));
    const std::string before = readAll(prefsFile(kInputHistory));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WriteUserPreferences(kInputHistory, nullptr));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WriteUserPreferences() failed (22)\n");
    EXPECT_EQ(readAll(prefsFile(kInputHistory)), before);
}

TEST_F(Prefs, PreferencesFolderBlockedByAFileFailsWithNotADirectory)
{
    std::filesystem::create_directories(configHome());
    writeRaw(prefsFolder(), "a file where the folder should be");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WriteUserPreferences(kInputHistory, pl::makeDict()));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WriteUserPreferences() failed (20)\n");
}

} // namespace
} // namespace talmo
