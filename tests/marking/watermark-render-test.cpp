#include "marking/marking.h"

#include "marking-fixture.h"
#include "test-util.h"

#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <memory>
#include <sstream>

using namespace talmo;
using namespace talmo::test;

namespace {

// --- Memory consumer and provider --------------------------------------------------------

bool failingResize(MemoryConsumerInfo&, size_t) { return false; }

TEST(MemoryConsumer, DoublesUntilTheCountFitsWithOneByteSpare)
{
    std::unique_ptr<MemoryConsumerInfo, void (*)(void*)> c(CreateMemoryConsumer(8), MemoryConsumerReleaseInfo);
    const std::string bytes(64, 'x');
    struct Step {
        size_t count, written, size;
    };
    // Room is size - written - 1.
    for (const auto& s :
         {Step{5, 5, 8}, Step{2, 7, 8}, Step{1, 8, 16}, Step{40, 48, 64}, Step{15, 63, 64}, Step{1, 64, 128}}) {
        SCOPED_TRACE(s.count);
        EXPECT_EQ(MemoryConsumerPutBytes(c.get(), bytes.data(), s.count), s.count);
        EXPECT_EQ(c->written, s.written);
        EXPECT_EQ(c->size, s.size);
    }
    EXPECT_EQ(std::string(reinterpret_cast<char*>(c->block), c->written), std::string(64, 'x'));
}

TEST(MemoryConsumer, FailedResizeWritesNothing)
{
    std::unique_ptr<MemoryConsumerInfo, void (*)(void*)> c(CreateMemoryConsumer(8), MemoryConsumerReleaseInfo);
    ASSERT_EQ(MemoryConsumerPutBytes(c.get(), "abcdef", 6), 6u);
    c->resize = failingResize;
    EXPECT_EQ(MemoryConsumerPutBytes(c.get(), "ghijkl", 6), 0u);
    EXPECT_EQ(c->written, 6u);
    EXPECT_EQ(c->size, 8u);
    EXPECT_EQ(MemoryConsumerPutBytes(c.get(), "g", 1), 1u) << "what fits is still written";
    EXPECT_EQ(std::string(reinterpret_cast<char*>(c->block), c->written), "abcdefg");
}

TEST(MemoryProvider, GetSkipAndRewindStayInsideTheBytes)
{
    const std::string data = "0123456789";
    auto* p = new MemoryProviderInfo{reinterpret_cast<const uint8_t*>(data.data()), data.size(), 0};
    char buffer[16] = {};
    EXPECT_EQ(MemoryProviderGetBytes(p, buffer, 4), 4u);
    EXPECT_EQ(std::string(buffer, 4), "0123");
    EXPECT_EQ(MemoryProviderSkipBytes(p, 3), 3u);
    EXPECT_EQ(MemoryProviderGetBytes(p, buffer, 16), 3u);
    EXPECT_EQ(std::string(buffer, 3), "789");
    EXPECT_EQ(MemoryProviderGetBytes(p, buffer, 16), 0u);
    EXPECT_EQ(MemoryProviderSkipBytes(p, 5), 0u);
    MemoryProviderRewind(p);
    EXPECT_EQ(MemoryProviderGetBytes(p, buffer, 2), 2u);
    EXPECT_EQ(std::string(buffer, 2), "01");
    MemoryProviderReleaseInfo(p);
}

// --- The preview, read back with poppler -----------------------------------------------

struct Raster {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb;
    const uint8_t* at(int x, int y) const { return &rgb[(size_t(y) * width + x) * 3]; }
};

// pdftoppm at 72 dpi: one pixel per point.
Raster rasterize(const std::string& pdf)
{
    Raster r;
    std::string base = pdf + ".raster";
    if (run("pdftoppm -r 72 -singlefile " + pdf + " " + base) != 0)
        return r;
    std::string ppm = readText(base + ".ppm");
    std::istringstream in(ppm);
    std::string magic;
    int maxValue = 0;
    in >> magic >> r.width >> r.height >> maxValue;
    in.get();
    if (magic != "P6" || maxValue != 255)
        return {};
    size_t offset = size_t(in.tellg());
    r.rgb.assign(ppm.begin() + ptrdiff_t(offset), ppm.end());
    if (r.rgb.size() != size_t(r.width) * r.height * 3)
        return {};
    return r;
}

struct Box {
    int left = INT32_MAX, top = INT32_MAX, right = -1, bottom = -1;
    double midX() const { return (left + right + 1) / 2.0; }
    double midY() const { return (top + bottom + 1) / 2.0; }
};

Box inkBox(const Raster& r, int below = 250)
{
    Box b;
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) {
            const uint8_t* p = r.at(x, y);
            if (p[0] < below || p[1] < below || p[2] < below) {
                b.left = std::min(b.left, x);
                b.right = std::max(b.right, x);
                b.top = std::min(b.top, y);
                b.bottom = std::max(b.bottom, y);
            }
        }
    return b;
}

class WatermarkPreview : public MarkingHome {
protected:
    void SetUp() override
    {
        MarkingHome::SetUp();
        if (!haveProgram("pdftoppm"))
            GTEST_SKIP() << "pdftoppm missing (poppler-utils)";
    }

    static _WatermarkData textRecord(const char* text)
    {
        _WatermarkData r;
        r.isText = 1;
        setWatermarkText(r.textString, text);
        setWatermarkText(r.fontName, "DejaVuSans");
        r.fontSize = 72;
        r.density = 100;
        r.scale = 100;
        r.wellColor = {0, 0, 1, 1};
        r.fontColor = {1, 0, 0, 1}; // never the ink
        return r;
    }

    std::string render(_WatermarkData* record, double width = 612, double height = 792)
    {
        std::unique_ptr<MemoryConsumerInfo, void (*)(void*)> c(CreateMemoryConsumer(), MemoryConsumerReleaseInfo);
        EXPECT_TRUE(RenderWatermarkPDF(record, width, height, *c));
        std::string pdf = root_ + "/preview" + std::to_string(++count_) + ".pdf";
        writeText(pdf, std::string(reinterpret_cast<char*>(c->block), c->written));
        return pdf;
    }

    int count_ = 0;
};

TEST_F(WatermarkPreview, TextIsCentredOnTheOffsetFromThePageCentre)
{
    struct Case {
        float xOffset, yOffset;
        int32_t angle;
    };
    for (const auto& k : {Case{0, 0, 0}, Case{1.0f, 0, 0}, Case{-0.5f, 1.0f, 0}, Case{1.0f, 0, 45}}) {
        SCOPED_TRACE(testing::Message() << k.xOffset << "," << k.yOffset << " angle " << k.angle);
        auto r = textRecord("Draft");
        r.xOffset = k.xOffset;
        r.yOffset = k.yOffset;
        r.angle = k.angle;
        auto raster = rasterize(render(&r, 612, 792));
        ASSERT_EQ(std::pair(raster.width, raster.height), std::pair(612, 792)) << "one page of the paper size";
        EXPECT_EQ(std::pair(r.paperWidth, r.paperHeight), std::pair(612.0, 792.0));
        auto box = inkBox(raster, 160);
        ASSERT_GE(box.right, 0) << "nothing drawn";
        // The image rectangle is widened to whole points (up to 0.5 off centre), its halves
        // truncate (0.5), and the raster measures whole pixels (0.5): within 2 points.
        EXPECT_NEAR(box.midX(), 306 + 72 * k.xOffset, 2.0);
        EXPECT_NEAR(box.midY(), 396 - 72 * k.yOffset, 2.0);
        if (k.angle == 45) {
            EXPECT_NEAR(box.right - box.left, box.bottom - box.top, 0.5 * (box.right - box.left))
                << "a 45 degree line is about as tall as wide";
        }
    }
}

TEST_F(WatermarkPreview, DensityIsTheTextAlphaWithTheWellColourAsInk)
{
    auto r = textRecord("HIM");
    r.density = 25;
    auto raster = rasterize(render(&r));
    // The most covered pixel: blue at alpha 0.25 over white.
    int best = 255 * 3;
    const uint8_t* darkest = nullptr;
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x) {
            const uint8_t* p = raster.at(x, y);
            if (p[0] + p[1] + p[2] < best) {
                best = p[0] + p[1] + p[2];
                darkest = p;
            }
        }
    ASSERT_NE(darkest, nullptr);
    EXPECT_NEAR(darkest[0], 191, 1);
    EXPECT_NEAR(darkest[1], 191, 1);
    EXPECT_EQ(darkest[2], 255);
}

TEST_F(WatermarkPreview, PictureIsScaledCentredAndOpaque)
{
    std::string png = root_ + "/red-400x300.png";
    {
        cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 400, 300);
        cairo_t* cr = cairo_create(s);
        cairo_set_source_rgb(cr, 1, 0, 0);
        cairo_paint(cr);
        cairo_destroy(cr);
        ASSERT_EQ(cairo_surface_write_to_png(s, png.c_str()), CAIRO_STATUS_SUCCESS);
        cairo_surface_destroy(s);
    }
    _WatermarkData r;
    setWatermarkText(r.filename, "red-400x300.png");
    setWatermarkText(r.filePath, png);
    r.scale = 50;
    r.density = 25; // not applied to pictures
    r.angle = 45;   // nor this
    r.xOffset = 2;  // nor this
    auto raster = rasterize(render(&r));
    auto box = inkBox(raster, 128); // edge pixels of the filtered image are half covered
    // poppler may widen an image by one pixel at its far edges.
    EXPECT_NEAR(box.right - box.left + 1, 200, 1);
    EXPECT_NEAR(box.bottom - box.top + 1, 150, 1);
    EXPECT_EQ(box.left, 206);
    EXPECT_EQ(box.top, 321);
    const uint8_t* centre = raster.at(306, 396);
    EXPECT_EQ(std::vector<uint8_t>(centre, centre + 3), (std::vector<uint8_t>{255, 0, 0}));

    setWatermarkText(r.filePath, root_ + "/gone.png");
    EXPECT_EQ(inkBox(rasterize(render(&r))).right, -1) << "a missing picture draws nothing";
}

TEST_F(WatermarkPreview, DrawingRecordsTheGlyphsAndSavesOnlyWhenTheFirstGlyphChanges)
{
    const std::string dejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
    if (!fileExists(dejaVu))
        GTEST_SKIP() << "fonts-dejavu-core missing";
    auto r = textRecord("Draft");
    render(&r);
    EXPECT_EQ(r.glyphCount, 5);
    EXPECT_EQ(r.glyphs, nominalGlyphs(dejaVu, "Draft"));
    ASSERT_TRUE(fileExists(watermarkFilePath())) << "first drawing saves";
    _WatermarkData stored;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "Draft", stored));
    EXPECT_EQ(stored.glyphCount, 5);
    EXPECT_EQ(stored.xPos, r.xPos);
    EXPECT_EQ(stored.yPos, r.yPos);

    std::filesystem::remove(watermarkFilePath());
    render(&r);
    EXPECT_FALSE(fileExists(watermarkFilePath())) << "the same text again is not saved";

    setWatermarkText(r.textString, "Copy");
    render(&r);
    EXPECT_TRUE(fileExists(watermarkFilePath())) << "another first glyph is saved";
}

TEST_F(WatermarkPreview, PanelPreviewLoadsTheChosenWatermark)
{
    auto r = textRecord("Draft");
    r.density = 50;
    ASSERT_TRUE(saveWatermarkData(kWatermarksFile, r));
    ASSERT_TRUE(saveWatermarkList(kWatermarksFile, {"Other", "Draft"}));
    loadWatermarkList(kWatermarksFile);

    for (auto [choice, drawn] : {std::pair{std::optional<int32_t>(1), true}, std::pair{std::optional<int32_t>(), false},
                                 std::pair{std::optional<int32_t>(7), false}}) {
        std::unique_ptr<MemoryConsumerInfo, void (*)(void*)> c(CreateMemoryConsumer(), MemoryConsumerReleaseInfo);
        ASSERT_TRUE(renderWatermark(choice, 612, 792, *c));
        std::string pdf = root_ + "/panel.pdf";
        writeText(pdf, std::string(reinterpret_cast<char*>(c->block), c->written));
        EXPECT_EQ(inkBox(rasterize(pdf)).right >= 0, drawn) << (choice ? *choice : -1);
    }
}

} // namespace
