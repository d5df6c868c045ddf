#include "marking/marking.h"

#include "marking-fixture.h"
#include "test-util.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>

using namespace talmo;
using namespace talmo::test;

namespace {

class WatermarkStore : public MarkingHome {
protected:
    static _WatermarkData sample()
    {
        _WatermarkData r;
        setWatermarkText(r.textString, "Entwurf \xC3\xBC");
        setWatermarkText(r.filename, "logo.png");
        setWatermarkText(r.filePath, "/pictures/logo.png");
        setWatermarkText(r.fontName, "DejaVuSans");
        r.xOffset = 1.5f;
        r.yOffset = -0.25f;
        r.fontColor = {0.75f, 0.5f, 1.0f, 1.0f};
        r.wellColor = {0.0f, 0.25f, 1.0f, 0.5f};
        r.angle = 45;
        r.density = 25;
        r.scale = 150;
        r.units = 1;
        r.fontSize = 72;
        r.isText = 1;
        r.xPos = 280.627441;
        r.yPos = 311.049927;
        r.glyphCount = 7; // a count without a buffer is not written
        return r;
    }
    pl::DictPtr fileDictionary() const { return pl::as<pl::Dictionary>(pl::readPlistFile(watermarkFilePath())); }
    // The file against a golden copy; on a difference the file is kept beside the scratch files.
    void expectFileIs(const std::string& golden)
    {
        const std::string actual = readText(watermarkFilePath());
        if (actual != readText(dataPath(golden))) {
            writeText(scratchPath(golden), actual);
            ADD_FAILURE() << "the watermark file differs from " << dataPath(golden) << "; see " << scratchPath(golden);
        }
    }
};

// Keys, types and number forms are fixed by the golden file; a record loaded and saved again
// writes the same bytes.
TEST_F(WatermarkStore, RecordRoundTripsThroughTheFile)
{
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, sample()));
    expectFileIs("watermark-sample.plist");

    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Entwurf \xC3\xBC", loaded));
    EXPECT_EQ(loaded.isText, 0) << "isText is not stored";
    loaded.isText = 1;
    std::filesystem::remove(watermarkFilePath());
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, loaded));
    expectFileIs("watermark-sample.plist");

    // A name not in the file, or no file at all, clears the whole record silently.
    loaded.glyphs = {1, 2};
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "Absent", loaded));
    EXPECT_EQ(watermarkText(loaded.fontName), "");
    EXPECT_EQ(loaded.xPos, 0.0);
    EXPECT_TRUE(loaded.glyphs.empty());
    std::filesystem::remove(watermarkFilePath());
    auto r = sample();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, r.name(), r));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(watermarkText(r.textString), "");
}

TEST_F(WatermarkStore, DefaultsAreThreeTextWatermarksFromTheTemplate)
{
    const std::map<std::string_view, std::string> texts = {
        {"DraftWatermark", "Draft"}, {"ConfidentialWatermark", "Confidential"}, {"CopyWatermark", "Copy"}};
    CreateDefaultWatermarks([&](std::string_view key) { return texts.at(key); });
    expectFileIs("default-watermarks.plist");
}

TEST_F(WatermarkStore, GlyphsAreStoredGlyphCountBytesLongAndLoadedIntoTwiceThat)
{
    auto r = sample();
    r.glyphs = {0x0102, 0x0304, 0x0506, 0x0708};
    r.glyphCount = 4;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    auto data = pl::as<pl::Data>(fileDictionary()->getDict(r.name())->get("glyphs"));
    ASSERT_TRUE(data);
    ASSERT_EQ(data->bytes.size(), 4u) << "glyphCount bytes: the first half of the id array";
    EXPECT_EQ(std::memcmp(data->bytes.data(), r.glyphs.data(), 4), 0);

    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, r.name(), loaded));
    EXPECT_EQ(loaded.glyphCount, 4);
    EXPECT_EQ(loaded.glyphs, (std::vector<uint16_t>{0x0102, 0x0304, 0, 0}));

    r.glyphs = {0x0102};
    r.glyphCount = 1000;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    data = pl::as<pl::Data>(fileDictionary()->getDict(r.name())->get("glyphs"));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->bytes.size(), 2u) << "never past the buffer";
}

TEST_F(WatermarkStore, EntriesAreKeyedByTextOrPictureNameAndReplaced)
{
    auto first = sample(), second = sample(), picture = sample();
    first.angle = 10;
    second.angle = 20;
    picture.isText = 0;
    for (const auto& r : {first, second, picture})
        ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    auto root = fileDictionary();
    EXPECT_EQ(root->size(), 2u);
    EXPECT_EQ(root->getDict(first.name())->getInt("angle"), 20);
    EXPECT_TRUE(root->getDict("logo.png"));
}

TEST_F(WatermarkStore, FieldsIgnoreValuesOfTheWrongTypeOrOutOfRange)
{
    auto root = pl::makeDict();
    auto entry = pl::makeDict();
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
    EXPECT_EQ(r.angle, 45);
    EXPECT_EQ(r.density, 25);
    EXPECT_EQ(r.xOffset, 1.5f);
    EXPECT_EQ(r.scale, 150);
    EXPECT_EQ(r.fontSize, 36);
    EXPECT_EQ(watermarkText(r.textString), std::string(511, 'x'));
}

TEST_F(WatermarkStore, WriteFailurePrintsTheMessageAndKeepsTheOldFile)
{
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, sample()));
    const std::string before = readText(watermarkFilePath());

    FileIo failing = SystemFileIo();
    failing.write = [](int, const void*, size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    auto other = sample();
    setWatermarkText(other.textString, "Other");
    testing::internal::CaptureStderr();
    {
        ScopedFileIo scope(failing);
        EXPECT_FALSE(saveWatermarkData(kWatermarksFile, other));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "saveWatermarkData: Error " + std::to_string(ENOSPC) + " writing data to file\n");
    EXPECT_EQ(readText(watermarkFilePath()), before);
}

TEST_F(WatermarkStore, ListRemoveAndTheListsOwnKey)
{
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"B", "A", "C"}));
    auto r = sample();
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u);
    EXPECT_EQ(listOfWatermarks(), (std::vector<std::string>{"B", "A", "C"}));

    ASSERT_TRUE(removeWatermarkData(kWatermarksFile, r.name()));
    EXPECT_FALSE(fileDictionary()->contains(r.name()));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u) << "removing an entry leaves the list alone";

    setWatermarkText(r.textString, kWatermarkListEntriesKey);
    EXPECT_FALSE(saveWatermarkData(kWatermarksFile, r)) << "a record named like the list";
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u);
}

TEST_F(WatermarkStore, FontDataIsAppendedOnLoad)
{
    ASSERT_TRUE(storeFontData(kWatermarksFile, "DejaVuSans", std::string("%!PS\0x", 6)));
    std::string data = "prior";
    ASSERT_TRUE(loadFontData(kWatermarksFile, "DejaVuSans", data));
    EXPECT_EQ(data, std::string("prior%!PS\0x", 11));
    EXPECT_FALSE(loadFontData(kWatermarksFile, "Absent", data));
    EXPECT_EQ(data.size(), 11u);
}

} // namespace
