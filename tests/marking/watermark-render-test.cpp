#include "marking/marking.h"

#include "marking-test.h"

#include <cmath>
#include <memory>
#include <sstream>

using namespace talmo;
using namespace talmo::test;

namespace {

using ConsumerPtr = std::unique_ptr<MemoryConsumerInfo, void (*)(void*)>;

// Room is size - written - 1, the size doubles until the count fits; a failed resize writes nothing.
TEST(MemoryConsumer, DoublesUntilTheCountFitsWithOneByteSpare)
{
    ConsumerPtr c(CreateMemoryConsumer(8), MemoryConsumerReleaseInfo);
    const std::string bytes(64, 'x');
    for (auto [count, written, size] :
         {std::tuple{5u, 5u, 8u}, {2u, 7u, 8u}, {1u, 8u, 16u}, {40u, 48u, 64u}, {15u, 63u, 64u}, {1u, 64u, 128u}}) {
        EXPECT_EQ(MemoryConsumerPutBytes(c.get(), bytes.data(), count), count);
        EXPECT_EQ(std::pair(c->written, c->size), std::pair(size_t(written), size_t(size))) << count;
    }
    c->resize = [](MemoryConsumerInfo&, size_t) { return false; };
    EXPECT_EQ(MemoryConsumerPutBytes(c.get(), "abc", 64), 0u);
    EXPECT_EQ(MemoryConsumerPutBytes(c.get(), "abc", 3), 3u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(c->block), c->written), bytes + "abc");
}

// The preview through poppler at one pixel per point: the box of pixels darker than `below`, the darkest.
struct Ink {
    int width = 0, height = 0, left = INT32_MAX, top = INT32_MAX, right = -1, bottom = -1;
    std::array<uint8_t, 3> darkest = {255, 255, 255};
    double midX() const { return (left + right + 1) / 2.0; }
    double midY() const { return (top + bottom + 1) / 2.0; }
};

Ink inkOf(const std::string& pdf, int below)
{
    Ink ink;
    if (run("pdftoppm -r 72 -singlefile " + pdf + " " + pdf) != 0)
        return ink;
    std::istringstream in(readText(pdf + ".ppm"));
    std::string magic;
    int maxValue = 0;
    in >> magic >> ink.width >> ink.height >> maxValue;
    in.get();
    for (int y = 0; y < ink.height; ++y)
        for (int x = 0; x < ink.width; ++x) {
            std::array<uint8_t, 3> p;
            in.read(reinterpret_cast<char*>(p.data()), 3);
            if (p[0] < below || p[1] < below || p[2] < below) {
                ink.left = std::min(ink.left, x), ink.right = std::max(ink.right, x);
                ink.top = std::min(ink.top, y), ink.bottom = std::max(ink.bottom, y);
            }
            if (p[0] + p[1] + p[2] < ink.darkest[0] + ink.darkest[1] + ink.darkest[2])
                ink.darkest = p;
        }
    EXPECT_TRUE(in && magic == "P6" && maxValue == 255) << pdf;
    return ink;
}

class WatermarkPreview : public MarkingHome {
protected:
    static _WatermarkData textRecord(const char* text)
    {
        _WatermarkData r;
        r.isText = 1;
        setWatermarkText(r.textString, text);
        setWatermarkText(r.fontName, "DejaVuSans");
        r.fontSize = 72;
        r.density = 25;
        r.wellColor = {0, 0, 1, 1};
        r.fontColor = {1, 0, 0, 1}; // never the ink
        return r;
    }
    std::string pdfOf(const MemoryConsumerInfo& c)
    {
        std::string pdf = root_ + "/preview" + std::to_string(++count_) + ".pdf";
        writeText(pdf, std::string(reinterpret_cast<char*>(c.block), c.written));
        return pdf;
    }
    std::string render(_WatermarkData* record)
    {
        ConsumerPtr c(CreateMemoryConsumer(), MemoryConsumerReleaseInfo);
        EXPECT_TRUE(RenderWatermarkPDF(record, 612, 792, *c));
        return pdfOf(*c);
    }
    int count_ = 0;
};

// The offsets are inches from the page centre; the ink is the well colour at the density.
TEST_F(WatermarkPreview, TextIsCentredOnTheOffsetFromThePageCentre)
{
    for (auto [xOffset, yOffset, angle] :
         {std::tuple{0.0f, 0.0f, 0}, {1.0f, 0.0f, 0}, {-0.5f, 1.0f, 0}, {1.0f, 0.0f, 45}}) {
        SCOPED_TRACE(testing::Message() << xOffset << "," << yOffset << " angle " << angle);
        auto r = textRecord("HIM"); // no glyphs overlap: the darkest pixel is one layer of ink
        std::tie(r.xOffset, r.yOffset, r.angle) = std::tuple(xOffset, yOffset, angle);
        auto ink = inkOf(render(&r), 250);
        ASSERT_EQ(std::pair(ink.width, ink.height), std::pair(612, 792)) << "one page of the paper size";
        // Whole points, truncated halves and whole pixels: within 2 points.
        EXPECT_NEAR(ink.midX(), 306 + 72 * xOffset, 2.0);
        EXPECT_NEAR(ink.midY(), 396 - 72 * yOffset, 2.0);
        const int width = ink.right - ink.left, height = ink.bottom - ink.top;
        EXPECT_TRUE(angle == 0 || std::abs(width - height) < width / 2) << "turned 45 degrees: as tall as wide";
        EXPECT_EQ(ink.darkest, (std::array<uint8_t, 3>{191, 191, 255})) << "blue at alpha 0.25 over white";
    }
}

// Every format a user drops in, scaled, centred, opaque, never turned or moved; else nothing.
TEST_F(WatermarkPreview, PicturesOfEveryFormatAreScaledCentredAndOpaque)
{
    for (auto [file, drawn] : {std::pair{"pictures/red-400x300.png", true},
                               {"pictures/red-400x300.jpg", true},
                               {"pictures/red-400x300.tif", true},
                               {"pictures/red-400x300.gif", true},
                               {"tiny-post2.ttf", false},
                               {"gone.png", false}}) {
        SCOPED_TRACE(file);
        _WatermarkData r;
        setWatermarkText(r.filename, "picture");
        setWatermarkText(r.filePath, dataPath(file));
        std::tie(r.scale, r.density, r.angle, r.xOffset) = std::tuple(50, 25, 45, 2.0f);
        auto ink = inkOf(render(&r), 128);
        EXPECT_EQ(ink.right >= 0, drawn);
        if (!drawn)
            continue;
        // poppler may widen an image by one pixel at its far edges.
        EXPECT_NEAR(ink.right - ink.left + 1, 200, 1);
        EXPECT_NEAR(ink.bottom - ink.top + 1, 150, 1);
        EXPECT_EQ(std::pair(ink.left, ink.top), std::pair(206, 321));
        EXPECT_TRUE(ink.darkest[0] >= 250 && ink.darkest[1] + ink.darkest[2] <= 4) << "opaque red";
    }
}

// Hostile values are clamped before any conversion: the drawing point stays within 16.16.
TEST_F(WatermarkPreview, HostileValuesAreClampedBeforeDrawing)
{
    for (auto [xOffset, fontSize, angle] :
         {std::tuple{1e38f, 72, 0}, {-1e38f, INT32_MAX, INT32_MIN}, {0.0f, INT32_MAX, 45}}) {
        SCOPED_TRACE(testing::Message() << xOffset << " " << fontSize);
        auto r = textRecord("Draft");
        std::tie(r.xOffset, r.yOffset, r.fontSize, r.angle) = std::tuple(xOffset, -xOffset, fontSize, angle);
        testing::internal::CaptureStderr();
        render(&r);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "no complaint from the text layout";
        EXPECT_EQ(r.glyphCount, 5);
        EXPECT_TRUE(std::fabs(r.xPos) <= 32767 && std::fabs(r.yPos) <= 32767) << r.xPos << ", " << r.yPos;
    }
}

TEST_F(WatermarkPreview, DrawingRecordsTheGlyphsAndSavesOnlyWhenTheFirstGlyphChanges)
{
    auto r = textRecord("Draft");
    render(&r);
    EXPECT_EQ(r.glyphs, nominalGlyphs("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "Draft"));
    _WatermarkData stored;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Draft", stored)) << "first drawing saves";
    EXPECT_EQ(std::tuple(stored.glyphCount, stored.xPos, stored.yPos), std::tuple(5, r.xPos, r.yPos));
    for (auto [text, saved] : {std::pair{"Draft", false}, {"Copy", true}}) { // another first glyph
        std::filesystem::remove(watermarkFilePath());
        setWatermarkText(r.textString, text);
        render(&r);
        EXPECT_EQ(std::filesystem::exists(watermarkFilePath()), saved) << text;
    }
}

// The panel's choice is an index into the list; "NoWatermark" or an index past it draws nothing.
TEST_F(WatermarkPreview, PanelPreviewLoadsTheChosenWatermark)
{
    auto r = textRecord("Draft");
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"Other", "Draft"}));
    loadWatermarkList(kWatermarksFile);
    for (auto [choice, drawn] : {std::pair{std::optional<int32_t>(1), true}, {std::nullopt, false}, {7, false}}) {
        ConsumerPtr c(CreateMemoryConsumer(), MemoryConsumerReleaseInfo);
        ASSERT_TRUE(renderWatermark(choice, 612, 792, *c));
        EXPECT_EQ(inkOf(pdfOf(*c), 250).right >= 0, drawn) << (choice ? *choice : -1);
    }
}

} // namespace
