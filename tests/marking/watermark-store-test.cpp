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
        return r;
    }
    pl::DictPtr fileDictionary() const { return pl::as<pl::Dictionary>(pl::readPlistFile(watermarkFilePath())); }
};

TEST_F(WatermarkStore, RecordRoundTripsThroughTheFileWithTheDesignedKeysAndTypes)
{
    auto saved = sample();
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, saved));

    auto entry = fileDictionary()->getDict("Entwurf \xC3\xBC");
    ASSERT_TRUE(entry);
    const std::map<std::string, pl::Type> expected = {
        {"textString", pl::Type::String},   {"filename", pl::Type::String},     {"filePath", pl::Type::String},
        {"fontName", pl::Type::String},     {"xOffset", pl::Type::Real},        {"yOffset", pl::Type::Real},
        {"fontColorRed", pl::Type::Real},   {"fontColorGreen", pl::Type::Real}, {"fontColorBlue", pl::Type::Real},
        {"fontColorAlpha", pl::Type::Real}, {"wellColorRed", pl::Type::Real},   {"wellColorGreen", pl::Type::Real},
        {"wellColorBlue", pl::Type::Real},  {"wellColorAlpha", pl::Type::Real}, {"angle", pl::Type::Integer},
        {"density", pl::Type::Integer},     {"scale", pl::Type::Integer},       {"units", pl::Type::Integer},
        {"fontSize", pl::Type::Integer},    {"xPos", pl::Type::Real},           {"yPos", pl::Type::Real},
    };
    EXPECT_EQ(entry->size(), expected.size());
    for (const auto& [key, type] : expected) {
        ASSERT_TRUE(entry->get(key)) << key;
        EXPECT_EQ(entry->get(key)->type(), type) << key;
    }

    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Entwurf \xC3\xBC", loaded));
    EXPECT_EQ(watermarkText(loaded.textString), "Entwurf \xC3\xBC");
    EXPECT_EQ(watermarkText(loaded.filename), "logo.png");
    EXPECT_EQ(watermarkText(loaded.filePath), "/pictures/logo.png");
    EXPECT_EQ(watermarkText(loaded.fontName), "DejaVuSans");
    EXPECT_EQ(loaded.xOffset, 1.5f);
    EXPECT_EQ(loaded.yOffset, -0.25f);
    EXPECT_EQ(loaded.fontColor.green, 0.5f);
    EXPECT_EQ(loaded.wellColor.green, 0.25f);
    EXPECT_EQ(loaded.wellColor.alpha, 0.5f);
    EXPECT_EQ(loaded.angle, 45);
    EXPECT_EQ(loaded.density, 25);
    EXPECT_EQ(loaded.scale, 150);
    EXPECT_EQ(loaded.units, 1);
    EXPECT_EQ(loaded.fontSize, 72);
    EXPECT_EQ(loaded.xPos, 280.627441);
    EXPECT_EQ(loaded.yPos, 311.049927);
    EXPECT_EQ(loaded.isText, 0) << "isText is not stored";
    EXPECT_TRUE(loaded.glyphs.empty());
}

TEST_F(WatermarkStore, LoadingANameNotInTheFileClearsTheWholeRecord)
{
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, sample()));
    auto r = sample();
    r.glyphs = {1, 2};
    r.glyphCount = 2;
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "Absent", r));
    EXPECT_EQ(watermarkText(r.textString), "");
    EXPECT_EQ(watermarkText(r.fontName), "");
    EXPECT_EQ(r.angle, 0);
    EXPECT_EQ(r.xPos, 0.0);
    EXPECT_EQ(r.isText, 0);
    EXPECT_TRUE(r.glyphs.empty());
    EXPECT_EQ(r.glyphCount, 0);
}

TEST_F(WatermarkStore, MissingFileClearsTheRecordSilently)
{
    auto r = sample();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loadWatermarkData(kWatermarksFile, "Entwurf \xC3\xBC", r));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(watermarkText(r.textString), "");
}

TEST_F(WatermarkStore, EmptyGlyphBufferWritesNoGlyphKeys)
{
    auto r = sample();
    r.glyphCount = 7; // a count without a buffer is not written either
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    auto entry = fileDictionary()->getDict(r.name());
    EXPECT_FALSE(entry->contains("glyphs"));
    EXPECT_FALSE(entry->contains("glyphCount"));
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
    EXPECT_EQ(fileDictionary()->getDict(r.name())->get("glyphCount")->type(), pl::Type::Integer);

    _WatermarkData loaded;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, r.name(), loaded));
    EXPECT_EQ(loaded.glyphCount, 4);
    ASSERT_EQ(loaded.glyphs.size() * 2, 8u) << "twice the stored length";
    EXPECT_EQ(loaded.glyphs[0], 0x0102);
    EXPECT_EQ(loaded.glyphs[1], 0x0304);
    EXPECT_EQ(loaded.glyphs[2], 0);
    EXPECT_EQ(loaded.glyphs[3], 0);
}

TEST_F(WatermarkStore, GlyphCountBeyondTheBufferNeverReadsPastIt)
{
    auto r = sample();
    r.glyphs = {0x0102};
    r.glyphCount = 1000;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    auto data = pl::as<pl::Data>(fileDictionary()->getDict(r.name())->get("glyphs"));
    ASSERT_TRUE(data);
    EXPECT_EQ(data->bytes.size(), 2u);
}

TEST_F(WatermarkStore, SameTextTwiceKeepsOnlyTheLaterEntry)
{
    auto first = sample();
    first.angle = 10;
    auto second = sample();
    second.angle = 20;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, first));
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, second));
    auto root = fileDictionary();
    EXPECT_EQ(root->size(), 1u);
    EXPECT_EQ(root->getDict(first.name())->getInt("angle"), 20);
}

TEST_F(WatermarkStore, PictureWatermarkIsKeyedByItsFileName)
{
    auto r = sample();
    r.isText = 0;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    EXPECT_TRUE(fileDictionary()->getDict("logo.png"));
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

TEST_F(WatermarkStore, ListAndRemove)
{
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"B", "A", "C"}));
    auto r = sample();
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u);
    EXPECT_EQ(listOfWatermarks(), (std::vector<std::string>{"B", "A", "C"}));

    ASSERT_TRUE(removeWatermarkData(kWatermarksFile, r.name()));
    EXPECT_FALSE(fileDictionary()->contains(r.name()));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 3u) << "removing an entry leaves the list alone";
}

TEST_F(WatermarkStore, ARecordNamedLikeTheListIsRefused)
{
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"A"}));
    auto r = sample();
    setWatermarkText(r.textString, kWatermarkListEntriesKey);
    EXPECT_FALSE(saveWatermarkData(kWatermarksFile, r));
    EXPECT_EQ(loadWatermarkList(kWatermarksFile), 1u);
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

TEST_F(WatermarkStore, DefaultsAreThreeTextWatermarksFromTheTemplate)
{
    const std::map<std::string_view, std::string> texts = {
        {"DraftWatermark", "Draft"}, {"ConfidentialWatermark", "Confidential"}, {"CopyWatermark", "Copy"}};
    CreateDefaultWatermarks([&](std::string_view key) { return texts.at(key); });
    ASSERT_EQ(loadWatermarkList(kWatermarksFile), 3u);
    EXPECT_EQ(listOfWatermarks(), (std::vector<std::string>{"Draft", "Confidential", "Copy"}));

    struct Expected {
        const char* name;
        double xPos, yPos;
    };
    for (const auto& e : {Expected{"Draft", 280.627441, 311.049927}, Expected{"Confidential", 201.350601, 231.773102},
                          Expected{"Copy", 276.36319, 306.785675}}) {
        SCOPED_TRACE(e.name);
        _WatermarkData r;
        ASSERT_TRUE(loadWatermarkData(kWatermarksFile, e.name, r));
        EXPECT_EQ(watermarkText(r.textString), e.name);
        EXPECT_EQ(watermarkText(r.fontName), "ArialMT");
        EXPECT_EQ(r.angle, 45);
        EXPECT_EQ(r.density, 25);
        EXPECT_EQ(r.scale, 100);
        EXPECT_EQ(r.fontSize, 72);
        EXPECT_EQ(r.units, 0);
        EXPECT_EQ(r.xOffset, 0.0f);
        EXPECT_EQ(r.yOffset, 0.0f);
        EXPECT_EQ(r.fontColor.red, 0.75f);
        EXPECT_EQ(r.fontColor.green, 0.75f);
        EXPECT_EQ(r.fontColor.blue, 1.0f);
        EXPECT_EQ(r.fontColor.alpha, 1.0f);
        EXPECT_EQ(r.wellColor.red, 0.0f);
        EXPECT_EQ(r.wellColor.green, 0.0f);
        EXPECT_EQ(r.wellColor.blue, 1.0f);
        EXPECT_EQ(r.wellColor.alpha, 1.0f);
        EXPECT_EQ(r.xPos, e.xPos);
        EXPECT_EQ(r.yPos, e.yPos);
        EXPECT_TRUE(r.glyphs.empty());
    }
}

} // namespace
