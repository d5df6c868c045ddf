#include "marking/watermark-render.h"

#include "marking/font-convert.h"

#include <cairo-pdf.h>
#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <fontconfig/fcfreetype.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace talmo {

namespace {

template <auto Fn> struct Deleter {
    template <class T> void operator()(T* p) const { Fn(p); }
};
using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, Deleter<cairo_surface_destroy>>;
using CairoPtr = std::unique_ptr<cairo_t, Deleter<cairo_destroy>>;
using LayoutPtr = std::unique_ptr<PangoLayout, Deleter<g_object_unref>>;
using FontDescriptionPtr = std::unique_ptr<PangoFontDescription, Deleter<pango_font_description_free>>;
using PixbufPtr = std::unique_ptr<GdkPixbuf, Deleter<g_object_unref>>;
using LoaderPtr = std::unique_ptr<GdkPixbufLoader, Deleter<g_object_unref>>;

// What a record from the file can ask of the drawing is brought into range before any
// conversion. The drawing point is 16.16 fixed point as designed, so it stays within the range
// that format holds; pango measures in 1/1024 points in 32-bit integers, so a line of 511 wide
// glyphs must stay below 2^31 units; a picture may grow a hundredfold.
constexpr double kMaxFixed = 32767.0;
constexpr int32_t kMaxFontSize = 2048;
constexpr int32_t kMaxScale = 10000;
// Pictures are decoded only when their header promises a size cairo can hold and memory allows.
constexpr int kMaxPictureSide = 32767;
constexpr int64_t kMaxPicturePixels = int64_t(1) << 26;
constexpr size_t kMaxPictureBytes = size_t(256) << 20;

double clampFixed(double v) { return std::isfinite(v) ? std::clamp(v, -kMaxFixed, kMaxFixed) : 0.0; }

bool reallocResize(MemoryConsumerInfo& info, size_t newSize)
{
    void* grown = std::realloc(info.block, newSize);
    if (!grown)
        return false;
    info.block = static_cast<uint8_t*>(grown);
    info.size = newSize;
    return true;
}

// 16.16 fixed point.
int64_t toFixed(double v) { return std::llround(v * 65536.0); }
double fromFixed(int64_t v) { return double(v) / 65536.0; }

// The font description of the face found by PostScript name, so pango draws from the same
// file that convertFont subsets; a name that finds nothing leaves pango's default family.
FontDescriptionPtr describeFont(std::string_view postScriptName, int32_t fontSize)
{
    FontDescriptionPtr description;
    if (auto font = findFontByPostScriptName(postScriptName)) {
        int count = 0;
        FcPattern* pattern =
            FcFreeTypeQuery(reinterpret_cast<const FcChar8*>(font->path.c_str()), font->index, nullptr, &count);
        if (pattern) {
            description.reset(pango_fc_font_description_from_pattern(pattern, FALSE));
            FcPatternDestroy(pattern);
        }
    }
    if (!description)
        description.reset(pango_font_description_from_string("Sans"));
    pango_font_description_set_absolute_size(description.get(),
                                             double(std::clamp(fontSize, 1, kMaxFontSize)) * PANGO_SCALE);
    return description;
}

// The gdk-pixbuf loader of the formats a user drops in, known by their leading bytes: gdk-pixbuf's
// own sniffing needs the shared MIME database, which a bare XDG_DATA_DIRS hides. Other formats
// are left to that sniffing.
const char* pictureType(std::string_view head)
{
    using namespace std::string_view_literals;
    if (head.starts_with("\x89PNG"sv))
        return "png";
    if (head.starts_with("\xFF\xD8\xFF"sv))
        return "jpeg";
    if (head.starts_with("GIF8"sv))
        return "gif";
    if (head.starts_with("II*\0"sv) || head.starts_with("MM\0*"sv))
        return "tiff";
    return nullptr;
}

// Called once the header is read, before any pixel memory is taken: a size of 0 x 0 asks the
// decoder to stop.
void refuseHugePictures(GdkPixbufLoader* loader, int width, int height, gpointer refused)
{
    if (width <= 0 || height <= 0 || width > kMaxPictureSide || height > kMaxPictureSide ||
        int64_t(width) * height > kMaxPicturePixels) {
        *static_cast<bool*>(refused) = true;
        gdk_pixbuf_loader_set_size(loader, 0, 0);
    }
}

// The picture as a cairo image through gdk-pixbuf (PNG, JPEG, TIFF, GIF and whatever loaders
// are installed), upright by its EXIF orientation. Only regular files of sane size are read, so
// a FIFO cannot hang the dialog nor a small file claim gigabytes of pixels.
CairoSurfacePtr loadPicture(const std::string& path)
{
    struct stat st;
    std::string bytes;
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || !ReadFileBytes(path, bytes, kMaxPictureBytes))
        return nullptr;
    GError* error = nullptr;
    const char* type = pictureType(bytes);
    LoaderPtr loader(type ? gdk_pixbuf_loader_new_with_type(type, &error) : gdk_pixbuf_loader_new());
    g_clear_error(&error);
    if (!loader)
        return nullptr;
    bool refused = false;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseHugePictures), &refused);
    bool loaded =
        gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), &error);
    g_clear_error(&error);
    loaded = gdk_pixbuf_loader_close(loader.get(), &error) && loaded && !refused;
    g_clear_error(&error);
    GdkPixbuf* decoded = loaded ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr; // the loader's
    if (!decoded)
        return nullptr;
    PixbufPtr pixbuf(gdk_pixbuf_apply_embedded_orientation(decoded));
    if (!pixbuf || gdk_pixbuf_get_bits_per_sample(pixbuf.get()) != 8 ||
        gdk_pixbuf_get_colorspace(pixbuf.get()) != GDK_COLORSPACE_RGB)
        return nullptr;
    const int width = gdk_pixbuf_get_width(pixbuf.get());
    const int height = gdk_pixbuf_get_height(pixbuf.get());
    const int channels = gdk_pixbuf_get_n_channels(pixbuf.get());
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf.get());
    if (width <= 0 || height <= 0 || width > kMaxPictureSide || height > kMaxPictureSide || channels != (alpha ? 4 : 3))
        return nullptr;
    CairoSurfacePtr image(cairo_image_surface_create(alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, width, height));
    if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    // Rows of RGB(A) bytes into native-endian 32-bit pixels, alpha premultiplied as cairo wants.
    cairo_surface_flush(image.get());
    const guchar* source = gdk_pixbuf_read_pixels(pixbuf.get());
    const size_t sourceStride = size_t(gdk_pixbuf_get_rowstride(pixbuf.get()));
    uint8_t* target = cairo_image_surface_get_data(image.get());
    const size_t targetStride = size_t(cairo_image_surface_get_stride(image.get()));
    for (int y = 0; y < height; ++y) {
        const guchar* in = source + size_t(y) * sourceStride;
        auto* out = reinterpret_cast<uint32_t*>(target + size_t(y) * targetStride);
        for (int x = 0; x < width; ++x, in += channels) {
            const uint32_t a = alpha ? in[3] : 255;
            auto premultiply = [a](uint32_t c) { return (c * a + 127) / 255; };
            out[x] = a << 24 | premultiply(in[0]) << 16 | premultiply(in[1]) << 8 | premultiply(in[2]);
        }
    }
    cairo_surface_mark_dirty(image.get());
    return image;
}

void drawPicture(cairo_t* cr, const PageRect& page, const _WatermarkData& r, double alpha)
{
    CairoSurfacePtr image = loadPicture(std::string(watermarkText(r.filePath)));
    if (!image || r.scale <= 0)
        return;
    const double imageWidth = cairo_image_surface_get_width(image.get());
    const double imageHeight = cairo_image_surface_get_height(image.get());
    const double scale = std::min(r.scale, kMaxScale) / 100.0;
    const double width = imageWidth * scale;
    const double height = imageHeight * scale;
    const double x = page.midX() - width / 2;
    const double y = page.midY() - height / 2;
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_scale(cr, scale, scale);
    cairo_set_source_surface(cr, image.get(), 0, 0);
    cairo_paint_with_alpha(cr, alpha);
    cairo_restore(cr);
}

void drawText(cairo_t* cr, const PageRect& page, _WatermarkData& r, double alpha)
{
    LayoutPtr layout(pango_cairo_create_layout(cr));
    pango_cairo_context_set_resolution(pango_layout_get_context(layout.get()), 72);
    pango_layout_context_changed(layout.get());
    auto font = describeFont(watermarkText(r.fontName), r.fontSize);
    pango_layout_set_font_description(layout.get(), font.get());
    const std::string text(watermarkText(r.textString));
    pango_layout_set_text(layout.get(), text.data(), int(text.size()));

    // The image rectangle of the rotated text around the drawing point (the first line's
    // baseline start), as drawn: the ink of a recording, widened to whole points.
    const double baseline = double(pango_layout_get_baseline(layout.get())) / PANGO_SCALE;
    const double theta = (r.angle % 360) * M_PI / 180.0;
    CairoSurfacePtr recording(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
    double inkLeft = 0, inkTop = 0, inkRight = 0, inkBottom = 0;
    {
        CairoPtr probe(cairo_create(recording.get()));
        cairo_rotate(probe.get(), -theta);
        cairo_move_to(probe.get(), 0, -baseline);
        pango_cairo_update_layout(probe.get(), layout.get());
        pango_cairo_layout_path(probe.get(), layout.get());
        cairo_identity_matrix(probe.get()); // extents of the rotated outlines, not of their box
        cairo_fill_extents(probe.get(), &inkLeft, &inkTop, &inkRight, &inkBottom);
    }
    const int64_t left = int64_t(std::floor(clampFixed(inkLeft))), right = int64_t(std::ceil(clampFixed(inkRight)));
    const int64_t top = int64_t(std::floor(clampFixed(inkTop))), bottom = int64_t(std::ceil(clampFixed(inkBottom)));

    // The drawing point in 16.16, y upwards from the page's bottom edge; the halves truncate.
    // Every term is within the fixed range, so the sums cannot overflow; the result is brought
    // back into it.
    const double midYUp = page.height / 2;
    const int64_t maxFixed = toFixed(kMaxFixed);
    const int64_t xFixed = std::clamp(
        toFixed(clampFixed(r.xOffset * 72.0 + page.midX())) - ((left + right) / 2) * 65536, -maxFixed, maxFixed);
    const int64_t yFixed =
        std::clamp(toFixed(clampFixed(r.yOffset * 72.0 + midYUp)) + ((top + bottom) / 2) * 65536, -maxFixed, maxFixed);
    const double x = fromFixed(xFixed), yUp = fromFixed(yFixed);
    const double yDown = page.y + page.height - yUp;

    cairo_save(cr);
    cairo_set_source_rgba(cr, r.wellColor.red, r.wellColor.green, r.wellColor.blue, r.wellColor.alpha * alpha);
    cairo_translate(cr, x, yDown);
    cairo_rotate(cr, -theta);
    cairo_move_to(cr, 0, -baseline);
    pango_cairo_update_layout(cr, layout.get());
    pango_cairo_show_layout(cr, layout.get());
    cairo_restore(cr);

    // Glyph records of the layout, in order; glyphs of no font (empty, unknown) count as 0.
    std::vector<uint16_t> ids;
    PangoLayoutIter* iter = pango_layout_get_iter(layout.get());
    do {
        PangoLayoutRun* run = pango_layout_iter_get_run_readonly(iter);
        if (!run)
            continue;
        for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
            PangoGlyph g = run->glyphs->glyphs[i].glyph;
            ids.push_back(g <= 0xFFFF ? uint16_t(g) : uint16_t(0));
        }
    } while (pango_layout_iter_next_run(iter));
    pango_layout_iter_free(iter);

    const bool changed = r.glyphs.empty() || ids.empty() || ids.front() != r.glyphs.front();
    r.glyphCount = int32_t(std::min<size_t>(ids.size(), INT32_MAX));
    r.glyphs = std::move(ids);
    r.xPos = x;
    r.yPos = yUp;
    if (changed)
        saveWatermarkData(kWatermarksFile, r);
}

cairo_status_t writeToConsumer(void* closure, const unsigned char* data, unsigned int length)
{
    return MemoryConsumerPutBytes(closure, data, length) == length ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

} // namespace

void DrawWatermark(cairo_t* context, const PageRect& page, _WatermarkData* record, double alpha)
{
    if (!record || !context)
        return;
    if (record->textString[0] != '\0')
        drawText(context, page, *record, alpha);
    else if (record->filename[0] != '\0')
        drawPicture(context, page, *record, alpha);
}

MemoryConsumerInfo* CreateMemoryConsumer(size_t initialSize)
{
    auto* info = new MemoryConsumerInfo;
    info->resize = reallocResize;
    if (!reallocResize(*info, std::max<size_t>(initialSize, 1))) {
        delete info;
        return nullptr;
    }
    return info;
}

size_t MemoryConsumerPutBytes(void* opaque, const void* bytes, size_t count)
{
    auto* info = static_cast<MemoryConsumerInfo*>(opaque);
    if (!info || count == 0)
        return 0;
    auto room = [&](size_t size) { return size > info->written ? size - info->written - 1 : 0; };
    if (room(info->size) < count) {
        size_t size = std::max<size_t>(info->size, 1);
        while (room(size) < count) {
            if (size > std::numeric_limits<size_t>::max() / 2)
                return 0;
            size *= 2;
        }
        if (!info->resize || !info->resize(*info, size))
            return 0;
    }
    std::memcpy(info->block + info->written, bytes, count);
    info->written += count;
    return count;
}

void MemoryConsumerReleaseInfo(void* opaque)
{
    auto* info = static_cast<MemoryConsumerInfo*>(opaque);
    if (!info)
        return;
    std::free(info->block);
    delete info;
}

size_t MemoryProviderGetBytes(void* opaque, void* buffer, size_t count)
{
    auto* info = static_cast<MemoryProviderInfo*>(opaque);
    if (!info || info->position >= info->size)
        return 0;
    size_t n = std::min(count, info->size - info->position);
    std::memcpy(buffer, info->bytes + info->position, n);
    info->position += n;
    return n;
}

size_t MemoryProviderSkipBytes(void* opaque, size_t count)
{
    auto* info = static_cast<MemoryProviderInfo*>(opaque);
    if (!info || info->position >= info->size)
        return 0;
    size_t n = std::min(count, info->size - info->position);
    info->position += n;
    return n;
}

void MemoryProviderRewind(void* opaque)
{
    if (auto* info = static_cast<MemoryProviderInfo*>(opaque))
        info->position = 0;
}

void MemoryProviderReleaseInfo(void* opaque) { delete static_cast<MemoryProviderInfo*>(opaque); }

bool RenderWatermarkPDF(_WatermarkData* record, double paperWidth, double paperHeight, MemoryConsumerInfo& consumer)
{
    if (!(paperWidth > 0 && paperWidth <= kMaxFixed) || !(paperHeight > 0 && paperHeight <= kMaxFixed))
        return false;
    if (record) {
        record->paperWidth = paperWidth;
        record->paperHeight = paperHeight;
    }
    CairoSurfacePtr surface(cairo_pdf_surface_create_for_stream(writeToConsumer, &consumer, paperWidth, paperHeight));
    CairoPtr cr(cairo_create(surface.get()));
    cairo_set_source_rgba(cr.get(), 1.0, 1.0, 1.0, 1.0);
    cairo_rectangle(cr.get(), 0, 0, paperWidth, paperHeight);
    cairo_fill(cr.get());
    const double alpha = record && record->isText ? record->density / 100.0 : 1.0;
    DrawWatermark(cr.get(), PageRect{0, 0, paperWidth, paperHeight}, record, std::clamp(alpha, 0.0, 1.0));
    cairo_show_page(cr.get());
    cr.reset();
    cairo_surface_finish(surface.get());
    return cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS;
}

bool renderWatermark(std::optional<int32_t> choice, double paperWidth, double paperHeight, MemoryConsumerInfo& consumer)
{
    _WatermarkData record;
    const auto& names = listOfWatermarks();
    if (choice && *choice >= 0 && size_t(*choice) < names.size()) {
        if (loadWatermarkData(kWatermarksFile, names[size_t(*choice)], record) && record.textString[0] != '\0')
            record.isText = 1;
    }
    bool ok = RenderWatermarkPDF(&record, paperWidth, paperHeight, consumer);
    record.glyphs.clear();
    return ok;
}

} // namespace talmo
