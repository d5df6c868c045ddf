#include "tests/settings/prefs-fixture.h"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <memory>
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

const char* kInputHistory = "com.talmo.print.inputhistory.plist";
const char* kWatermarks = "com.talmo.printing.watermarks.plist";

mode_t modeOf(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

class Prefs : public test::PrefsHome { };

// libplist's node, translated into our model by hand (never through our reader).
pl::ValuePtr fromLibplist(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t b = 0;
        plist_get_bool_val(node, &b);
        return pl::makeBool(b != 0);
    }
    case PLIST_UINT: { // libplist 2.2 keeps every integer as 64 bits, negative ones as two's complement
        uint64_t u = 0;
        plist_get_uint_val(node, &u);
        return pl::makeInt(static_cast<int64_t>(u));
    }
    case PLIST_REAL: {
        double d = 0;
        plist_get_real_val(node, &d);
        return pl::makeReal(d);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return pl::makeString(std::string(text, length));
    }
    case PLIST_DATE: {
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return pl::makeDate(sec + usec / 1e6);
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const auto* bytes = reinterpret_cast<const uint8_t*>(plist_get_data_ptr(node, &length));
        return pl::makeData(std::vector<uint8_t>(bytes, bytes + length));
    }
    case PLIST_ARRAY: {
        auto a = pl::makeArray();
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            a->append(fromLibplist(plist_array_get_item(node, i)));
        return a;
    }
    case PLIST_DICT: {
        auto d = pl::makeDict();
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        std::unique_ptr<void, void (*)(void*)> ownedIter(it, std::free);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            std::unique_ptr<char, void (*)(void*)> owned(key, std::free);
            if (!value)
                return d;
            d->set(key, fromLibplist(value));
        }
    }
    default:
        return pl::makeString("<unexpected node type>");
    }
}

// --- Folders ---

TEST_F(Prefs, FoldersFollowTheVariablesFallBackToHomeAndAreMadePrivate)
{
    EXPECT_EQ(CopyPreferenceFileURL(kWatermarks), dataHome() + "/Talmo/" + kWatermarks);
    EXPECT_EQ(modeOf(dataHome() + "/Talmo"), 0700u);
    EXPECT_FALSE(std::filesystem::exists(dataHome() + "/Talmo/" + kWatermarks)); // the folder only

    const std::string home = root_ + "/home";
    const struct {
        const char* configHome; // null: unset
        const char* dataHome;
        std::string userFile;
    } cases[] = {
        {nullptr, nullptr, home + "/.config/talmo/f.plist"},
        {"relative/cfg", "", home + "/.config/talmo/f.plist"},
        {"/abs/cfg", "rel", "/abs/cfg/talmo/f.plist"},
    };
    for (const auto& c : cases) {
        test::ScopedEnv config("XDG_CONFIG_HOME", c.configHome), data("XDG_DATA_HOME", c.dataHome);
        EXPECT_EQ(CopyUserPreferencesPath("f.plist"), c.userFile);
        EXPECT_EQ(CopyPreferenceFileURL("f.plist"), home + "/.local/share/Talmo/f.plist");
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
    testing::internal::CaptureStderr();
    EXPECT_EQ(CopyXMLData(name), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // The shipped file reads with the layout the stock library expects.
    std::filesystem::create_directories(root_ + "/bundle");
    std::filesystem::create_directory_symlink(std::string(TALMO_SOURCE_DIR) + "/resources",
                                              root_ + "/bundle/Resources");
    SetExtensionBundle(Bundle::open(root_ + "/bundle"));
    const auto shipped = pl::as<pl::Dictionary>(CopyXMLData(name));
    const auto widths = shipped ? shipped->getDict(kStockLibraryColumnWidthsKey) : nullptr;
    EXPECT_TRUE(widths && shipped->getDict(kStockLibraryStockListKey) &&
                shipped->getArray(kStockLibraryStockMenuListKey));
    EXPECT_EQ(widths ? widths->size() : 0, 13u); // one per column of the library table
    for (const auto& [column, width] : widths ? *widths : pl::Dictionary()) {
        const auto w = pl::as<pl::Integer>(width);
        EXPECT_TRUE(column.size() == 4 && w && w->value > 0 && w->value <= INT16_MAX) << column;
    }

    for (const auto& [folder, what] : {std::pair{root_ + "/sys2/talmo", "sys2"},
                                       {root_ + "/sys1/talmo", "sys1"},
                                       {dataHome() + "/Talmo", "maker"}}) {
        writeRaw(folder + "/" + name,
                 std::string("<plist><dict><key>from</key><string>") + what + "</string></dict></plist>");
        const auto d = pl::as<pl::Dictionary>(CopyXMLData(name));
        EXPECT_EQ(d ? d->getString("from") : std::nullopt, what);
    }
    SetExtensionBundle(std::nullopt);
}

// --- Reading ---

// A damaged user file reads silently as an empty dictionary; a damaged shared file as null,
// with the parser's complaint.
TEST_F(Prefs, DamagedFilesReadAsEmptyOrNull)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "line 1: Document is empty"},
        {"garbage\x01\x02", "line 1: Start tag expected, '<' not found"},
        {"<plist>\n<dict>\n<key>a</key>\n</dict>\n</plist>\n", "line 3: <key>a</key> has no value"},
        {"<plist><dict><key>a</key><real>0,75</real></dict></plist>", "line 1: <real> \"0,75\" is not a number"},
        {"<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><integer>1",
         "line 1: Premature end of data in tag integer line 1"},
        {"<plist><array><string>x</string></array></plist>", ""}, // well formed, but no dictionary
    };
    for (const auto& [content, error] : cases) {
        writeRaw(prefsFile(kInputHistory), content);
        writeRaw(dataHome() + "/Talmo/" + kWatermarks, content);
        testing::internal::CaptureStderr();
        auto d = CopyUserPreferences(kInputHistory);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << content;
        ASSERT_NE(d, nullptr) << content;
        EXPECT_TRUE(d->empty()) << content;
        testing::internal::CaptureStderr();
        EXPECT_EQ(CopyXMLData(kWatermarks) == nullptr, !error.empty()) << content;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  error.empty() ? "" : "CopyXMLData()::CFPropertyListCreateFromXMLData() error: " + error + "\n");
    }
}

// A FIFO in place of a preference file, there from the start or swapped in after a look at the
// name, must not block the dialog: it reads as no file at all.
TEST_F(Prefs, FifoInPlaceOfAFileCannotBlockTheRead)
{
    const std::string target = prefsFile(kInputHistory);
    std::filesystem::create_directories(dataHome() + "/Talmo/" + kWatermarks); // a folder in place
    for (const bool swapped : {false, true}) {
        std::filesystem::remove(target);
        if (swapped) {
            writeRaw(target, "<plist><dict/></plist>");
            ASSERT_EQ(::mkfifo((target + ".fifo").c_str(), 0600), 0);
            gSwapAfterLook = target;
        } else {
            std::filesystem::create_directories(prefsFolder());
            ASSERT_EQ(::mkfifo(target.c_str(), 0600), 0);
        }
        std::atomic<bool> done{false};
        pl::DictPtr read;
        std::thread reader([&] {
            read = CopyUserPreferences(kInputHistory);
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
        EXPECT_FALSE(blocked) << (swapped ? "swapped after a look" : "FIFO from the start");
        EXPECT_TRUE(read && read->empty());
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(CopyXMLData(kWatermarks), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// --- Writing ---

// What WriteUserPreferences writes: the standard XML, byte for byte as the golden file, owner
// only, and a second, independent parser (libplist) sees every value exactly as we meant it.
TEST_F(Prefs, WritesTheStandardXmlOwnerOnlyThatAnIndependentParserReadsBack)
{
    std::vector<uint8_t> allBytes(256);
    for (size_t i = 0; i < allBytes.size(); ++i)
        allBytes[i] = static_cast<uint8_t>(i);
    auto list = pl::makeArray();
    list->append(pl::makeString(""));
    list->append(pl::makeBool(false));
    list->append(pl::makeArray());
    list->append(pl::makeDict());

    auto root = pl::makeDict();
    root->set("markup", pl::makeString("<tag attr=\"v\">&amp; ]]> 'q' & < ></tag>"));
    root->set("carriage returns and edge whitespace", pl::makeString("  line 1\r\nline 2\rend\r\t"));
    root->set("non-BMP text", pl::makeString("\xF0\x9D\x84\x9E clef, \xF0\x9F\x98\x80, \xE4\xB8\xAD\xE6\x96\x87"));
    root->set("key <&> markup", pl::makeBool(true));
    root->set("int64 max", pl::makeInt(std::numeric_limits<int64_t>::max()));
    root->set("int64 min", pl::makeInt(std::numeric_limits<int64_t>::min()));
    root->set("pi", pl::makeReal(3.141592653589793));
    root->set("small negative", pl::makeReal(-1.5e-7));
    root->set("unix epoch", pl::makeDate(-978307200));
    root->set("a 2023 date", pl::makeDate(721692000));
    root->set("all bytes", pl::makeData(allBytes));
    root->set("nested", list);
    ASSERT_TRUE(WriteUserPreferences("written.plist", root));
    const std::string xml = readAll(prefsFile("written.plist"));
    EXPECT_EQ(xml, readAll(std::string(TALMO_SOURCE_DIR) + "/tests/settings/data/written.plist"));
    EXPECT_EQ(modeOf(prefsFolder()), 0700u);
    EXPECT_EQ(modeOf(prefsFile("written.plist")), 0600u);

    plist_t parsed = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &parsed);
    ASSERT_NE(parsed, nullptr) << xml;
    EXPECT_TRUE(pl::equal(fromLibplist(parsed), root)) << xml;
    plist_free(parsed);
    EXPECT_TRUE(pl::equal(CopyUserPreferences("written.plist"), root));
}

TEST_F(Prefs, FailedWritesReportTheErrorAndKeepTheOldFile)
{
    ASSERT_TRUE(WriteUserPreferences(kInputHistory, pl::makeDict()));
    const std::string before = readAll(prefsFile(kInputHistory));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WriteUserPreferences(kInputHistory, nullptr));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WriteUserPreferences() failed (22)\n");
    EXPECT_EQ(readAll(prefsFile(kInputHistory)), before);

    std::filesystem::remove_all(prefsFolder());
    writeRaw(prefsFolder(), "a file where the folder should be");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WriteUserPreferences("other.plist", pl::makeDict()));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "WriteUserPreferences() failed (20)\n");
}

} // namespace
} // namespace talmo
