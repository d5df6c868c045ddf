// Watermark records, their file, the watermark menu, and talmo watermark as a user runs it.
#include "marking/marking.h"

#include "marking-test.h"

#include <cerrno>
#include <cstring>
#include <map>

using namespace talmo;
using namespace talmo::test;

namespace {

class WatermarkStore : public MarkingHome {
protected:
    // The golden record "Entwurf \xC3\xBC": every field set, glyphCount without a buffer.
    static _WatermarkData sample()
    {
        _WatermarkData r;
        auto golden = pl::as<pl::Dictionary>(pl::readPlistFile(dataPath("watermark-sample.plist")));
        loadWatermarkFields(*golden->getDict("Entwurf \xC3\xBC"), r);
        r.isText = 1;
        r.glyphCount = 7;
        return r;
    }
    pl::DictPtr fileDictionary() const { return pl::as<pl::Dictionary>(pl::readPlistFile(watermarkFilePath())); }
    void expectFileIs(const std::string& name) { EXPECT_EQ(readText(watermarkFilePath()), readText(dataPath(name))); }
};

// Golden files fix keys and number forms (isText and a count without buffer are not stored); a
// name not in the file clears the record silently; a failed write says so in the designed words.
TEST_F(WatermarkStore, RecordsAndDefaultsRoundTripThroughTheFile)
{
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, sample()));
    expectFileIs("watermark-sample.plist");
    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Entwurf \xC3\xBC", loaded));
    EXPECT_EQ(std::pair(loaded.isText, loaded.glyphCount), std::pair(0, 0));
    loaded.glyphs = {1, 2};
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "Absent", loaded));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(watermarkText(loaded.textString).empty() && loaded.glyphs.empty());
    FileIo failing = SystemFileIo();
    failing.write = [](int, const void*, size_t) -> ssize_t { return errno = ENOSPC, -1; };
    testing::internal::CaptureStderr();
    EXPECT_FALSE((ScopedFileIo(failing), saveWatermarkData(kWatermarksFile, sample()))); // for this call only
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "saveWatermarkData: Error " + std::to_string(ENOSPC) + " writing data to file\n");

    std::filesystem::remove(watermarkFilePath());
    const std::map<std::string_view, std::string> texts = {
        {"DraftWatermark", "Draft"}, {"ConfidentialWatermark", "Confidential"}, {"CopyWatermark", "Copy"}};
    CreateDefaultWatermarks([&](std::string_view key) { return texts.at(key); });
    expectFileIs("default-watermarks.plist");
}

TEST_F(WatermarkStore, GlyphsAreStoredGlyphCountBytesLongAndLoadedIntoTwiceThat)
{
    auto r = sample();
    r.glyphs = {0x0102, 0x0304, 0x0506, 0x0708};
    for (auto [count, stored] : {std::pair{1000, 8u}, {4, 4u}}) { // never past the buffer
        r.glyphCount = count;
        ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
        auto data = pl::as<pl::Data>(fileDictionary()->getDict(r.name())->get("glyphs"));
        ASSERT_TRUE(data && data->bytes.size() == stored);
        EXPECT_EQ(std::memcmp(data->bytes.data(), r.glyphs.data(), stored), 0);
    }
    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, r.name(), loaded));
    EXPECT_EQ(std::pair(loaded.glyphCount, loaded.glyphs), std::pair(4, std::vector<uint16_t>{0x0102, 0x0304, 0, 0}));
}

TEST_F(WatermarkStore, FieldsIgnoreValuesOfTheWrongTypeOrOutOfRange)
{
    auto root = pl::makeDict(), entry = pl::makeDict();
    entry->setString("angle", "45");     // wrong type
    entry->setInt("density", 1ll << 40); // beyond 32 bits
    entry->setReal("xOffset", 1e300);    // beyond a float
    entry->setReal("scale", 12.5);       // not integral
    entry->setInt("fontSize", 36);
    entry->setString("textString", std::string(600, 'x'));
    root->set("Odd", entry);
    std::filesystem::create_directories(makerFolder());
    writeText(watermarkFilePath(), pl::writePlist(root));

    auto r = sample();
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Odd", r));
    EXPECT_EQ(std::tuple(r.angle, r.density, r.xOffset, r.scale, r.fontSize), std::tuple(45, 25, 1.5f, 150, 36));
    EXPECT_EQ(watermarkText(r.textString), std::string(511, 'x'));
}

// Entries are keyed by text or picture name (a second save replaces the first); nothing may take
// the list's own key; font data is appended on load.
TEST_F(WatermarkStore, EntriesListAndFontsShareTheFileByKey)
{
    auto first = sample(), second = sample(), picture = sample();
    second.angle = 20;
    picture.isText = 0;
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"B", "A", "C"}));
    for (const auto& r : {first, second, picture})
        ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    EXPECT_EQ(fileDictionary()->size(), 3u);
    EXPECT_EQ(fileDictionary()->getDict(first.name())->getInt("angle"), 20);
    ASSERT_TRUE(removeWatermarkData(kWatermarksFile, "logo.png"));
    EXPECT_FALSE(fileDictionary()->contains("logo.png"));

    setWatermarkText(first.textString, kWatermarkListEntriesKey);
    EXPECT_FALSE(saveWatermarkData(kWatermarksFile, first));
    EXPECT_FALSE(storeFontData(kWatermarksFile, kWatermarkListEntriesKey, "x"));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u);
    EXPECT_EQ(listOfWatermarks(), (std::vector<std::string>{"B", "A", "C"}));

    ASSERT_TRUE(storeFontData(kWatermarksFile, "DejaVuSans", std::string("%!PS\0x", 6)));
    std::string data = "prior";
    ASSERT_TRUE(loadFontData(kWatermarksFile, "DejaVuSans", data));
    EXPECT_EQ(data, std::string("prior%!PS\0x", 11));
    EXPECT_FALSE(loadFontData(kWatermarksFile, "Absent", data));
}

// A file that cannot be read is set aside before any writer replaces it, never over an earlier one.
TEST_F(WatermarkStore, UnreadableFileIsSetAsideBeforeTheNextWrite)
{
    const std::string damaged[] = {"<plist><dict><key>A</key>", "<plist><array/></plist>", "\x89PNG"};
    const std::function<bool()> writers[] = {[] { return saveWatermarkList(kWatermarksFile, {"A"}); },
                                             [] { return saveWatermarkData(kWatermarksFile, sample()); },
                                             [] { return storeFontData(kWatermarksFile, "F", "%!"); }};
    std::filesystem::create_directories(makerFolder());
    const std::string path = watermarkFilePath();
    const std::string asides[] = {path + ".damaged", path + ".damaged-2", path + ".damaged-3"};
    for (size_t i = 0; i < 3; ++i) {
        writeText(path, damaged[i]);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(writers[i]());
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_NE(err.find(path + " cannot be read; set aside as " + asides[i] + ","), std::string::npos) << err;
        EXPECT_TRUE(fileDictionary()) << "a new file";
        for (size_t j = 0; j <= i; ++j)
            EXPECT_EQ(readText(asides[j]), damaged[j]);
    }
}

using WatermarkCommand = MarkingHome;

// As the panel does, the defaults are made for an empty list only: a user's list stays.
TEST_F(WatermarkCommand, CreateDefaultsFillsOnlyAnEmptyList)
{
    const std::string bundle = root_ + "/Test.plugin";
    std::filesystem::create_directories(bundle + "/Resources/en.lproj");
    writeText(
        bundle + "/Resources/en.lproj/Localizable.strings",
        "\"DraftWatermark\" = \"Draft\";\n\"ConfidentialWatermark\" = \"Secret\";\n\"CopyWatermark\" = \"Copy\";\n");
    const std::string env = "TALMO_BUNDLE_DIR=" + bundle;
    auto o = runTalmo("watermark create-defaults", env);
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(runTalmo("watermark list").out, "Draft\nSecret\nCopy\n");

    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"Mine"}));
    o = runTalmo("watermark create-defaults", env);
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(runTalmo("watermark list").out, "Mine\n");
}

// Names follow the first row with command "TWmW" and their list index; "Options" has its submenu.
TEST(WatermarkMenu, HistoryFollowsTheFirstRowAndOptionsCarriesItsSubmenu)
{
    for (const std::vector<std::string>& history : {std::vector<std::string>{}, {"DRAFT", "Logo.png"}}) {
        listOfWatermarks() = history;
        WatermarkMenu menu;
        menu.items.push_back({"stale", 0, 0, false, {}});
        PopulateWatermarkMenuFromMapAndHistory([](std::string_view key) { return "[" + std::string(key) + "]"; }, menu,
                                               _WatermarkMap);
        std::string layout;
        for (const auto& i : menu.items)
            layout += i.label + " " + std::to_string(i.reference) + (i.command == FourCC("TWmW") ? " TWmW" : "") +
                      (i.submenu.empty() ? "" : " +" + std::to_string(i.submenu.size())) + "\n";
        const std::string names = history.empty() ? "" : "DRAFT 0 TWmW\nLogo.png 1 TWmW\n";
        EXPECT_EQ(layout,
                  "[NoWatermark] 1\n" + names + "- -5\n[Options] -6 +6\n[New...] -7\n[Edit...] -8\n[Delete] -9\n");
        EXPECT_EQ(menu.map, _WatermarkMap);
    }
    listOfWatermarks().clear();
}

} // namespace
