#include "marking/font-convert.h"

#include "marking/sfnt.h"
#include "marking/type42.h"

#include <fontconfig/fontconfig.h>
#include <hb-subset.h>
#include <hb.h>

#include <array>
#include <memory>

namespace talmo {

namespace {

struct FcDeleter {
    void operator()(FcPattern* p) const { FcPatternDestroy(p); }
    void operator()(FcObjectSet* o) const { FcObjectSetDestroy(o); }
    void operator()(FcFontSet* s) const { FcFontSetDestroy(s); }
};
struct HbDeleter {
    void operator()(hb_blob_t* b) const { hb_blob_destroy(b); }
    void operator()(hb_face_t* f) const { hb_face_destroy(f); }
    void operator()(hb_subset_input_t* i) const { hb_subset_input_destroy(i); }
};
template <class T> using FcPtr = std::unique_ptr<T, FcDeleter>;
template <class T> using HbPtr = std::unique_ptr<T, HbDeleter>;

std::string patternString(FcPattern* p, const char* object)
{
    FcChar8* s = nullptr;
    return FcPatternGetString(p, object, 0, &s) == FcResultMatch && s ? reinterpret_cast<const char*>(s) : "";
}

// The installed sfnt face whose PostScript name is exactly `name`, TrueType outlines first;
// Type 1 files of the same name are not sfnt data and are passed over.
std::optional<FontFile> listExact(std::string_view name)
{
    if (!FcInit())
        return std::nullopt;
    FcPtr<FcPattern> pattern(FcPatternCreate());
    std::string n(name);
    FcPatternAddString(pattern.get(), FC_POSTSCRIPT_NAME, reinterpret_cast<const FcChar8*>(n.c_str()));
    FcPtr<FcObjectSet> objects(
        FcObjectSetBuild(FC_FILE, FC_INDEX, FC_POSTSCRIPT_NAME, FC_FAMILY, FC_STYLE, FC_FONTFORMAT, nullptr));
    FcPtr<FcFontSet> set(FcFontList(nullptr, pattern.get(), objects.get()));
    if (!set)
        return std::nullopt;
    std::optional<FontFile> found;
    for (int i = 0; i < set->nfont; ++i) {
        FcPattern* p = set->fonts[i];
        if (patternString(p, FC_POSTSCRIPT_NAME) != name)
            continue;
        int index = 0;
        FcPatternGetInteger(p, FC_INDEX, 0, &index);
        FontFile f{patternString(p, FC_FILE), index, std::string(name), patternString(p, FC_FAMILY),
                   patternString(p, FC_STYLE)};
        if (f.path.empty())
            continue;
        const std::string format = patternString(p, FC_FONTFORMAT);
        if (format == "TrueType")
            return f;
        if (format == "CFF" && !found) // kept to be refused with a clear message
            found = std::move(f);
    }
    return found;
}

bool isCff(std::string_view bytes) { return bytes.substr(0, 4) == "OTTO"; }

} // namespace

std::optional<std::string_view> metricCompatibleSubstitute(std::string_view name)
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 18> kSubstitutes = {{
        {"ArialMT", "LiberationSans"},
        {"Arial-BoldMT", "LiberationSans-Bold"},
        {"Arial-ItalicMT", "LiberationSans-Italic"},
        {"Arial-BoldItalicMT", "LiberationSans-BoldItalic"},
        {"Helvetica", "LiberationSans"},
        {"Helvetica-Bold", "LiberationSans-Bold"},
        {"Helvetica-Oblique", "LiberationSans-Italic"},
        {"Helvetica-BoldOblique", "LiberationSans-BoldItalic"},
        {"TimesNewRomanPSMT", "LiberationSerif"},
        {"TimesNewRomanPS-BoldMT", "LiberationSerif-Bold"},
        {"TimesNewRomanPS-ItalicMT", "LiberationSerif-Italic"},
        {"TimesNewRomanPS-BoldItalicMT", "LiberationSerif-BoldItalic"},
        {"Times-Roman", "LiberationSerif"},
        {"Times-Bold", "LiberationSerif-Bold"},
        {"CourierNewPSMT", "LiberationMono"},
        {"CourierNewPS-BoldMT", "LiberationMono-Bold"},
        {"Courier", "LiberationMono"},
        {"Courier-Bold", "LiberationMono-Bold"},
    }};
    for (const auto& [core, substitute] : kSubstitutes)
        if (core == name)
            return substitute;
    return std::nullopt;
}

std::optional<FontFile> findFontByPostScriptName(std::string_view name, std::string* why)
{
    if (auto exact = listExact(name))
        return exact;
    if (auto substitute = metricCompatibleSubstitute(name)) {
        if (auto found = listExact(*substitute))
            return found;
        if (why)
            *why = "no font has the PostScript name \"" + std::string(name) + "\", nor its substitute \"" +
                   std::string(*substitute) + "\" (fonts-liberation)";
        return std::nullopt;
    }
    if (why)
        *why = "no font has the PostScript name \"" + std::string(name) + "\"";
    return std::nullopt;
}

std::string subsetFont(const FontFile& font, const std::vector<uint16_t>& glyphIds, std::string* why)
{
    HbPtr<hb_blob_t> blob(hb_blob_create_from_file_or_fail(font.path.c_str()));
    if (!blob) {
        if (why)
            *why = font.path + ": cannot be read";
        return {};
    }
    HbPtr<hb_face_t> face(hb_face_create(blob.get(), unsigned(font.index)));
    HbPtr<hb_subset_input_t> input(hb_subset_input_create_or_fail());
    if (!input) {
        if (why)
            *why = "out of memory";
        return {};
    }
    hb_set_t* glyphs = hb_subset_input_glyph_set(input.get());
    hb_set_add(glyphs, 0);
    for (uint16_t id : glyphIds)
        hb_set_add(glyphs, id);
    // Keep the glyph names: without them hb-subset writes a format 3.0 post table and the
    // Type 42 CharStrings would be empty.
    hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_GLYPH_NAMES);
    HbPtr<hb_face_t> subset(hb_subset_or_fail(face.get(), input.get()));
    if (!subset) {
        if (why)
            *why = font.path + ": hb-subset failed";
        return {};
    }
    HbPtr<hb_blob_t> bytes(hb_face_reference_blob(subset.get()));
    unsigned length = 0;
    const char* data = hb_blob_get_data(bytes.get(), &length);
    return std::string(data ? data : "", data ? length : 0);
}

FontConvertResult makeFontProgram(const FontFile& font, std::string_view fontName,
                                  const std::vector<uint16_t>& glyphIds, std::string& program)
{
    HbPtr<hb_blob_t> blob(hb_blob_create_from_file_or_fail(font.path.c_str()));
    unsigned length = 0;
    const char* bytes = blob ? hb_blob_get_data(blob.get(), &length) : nullptr;
    if (!bytes)
        return {FontConvertStatus::Unreadable, font.path + ": cannot be read"};
    const std::string_view file(bytes, length);
    if (isCff(file))
        return {FontConvertStatus::NotTrueType, font.path + ": PostScript (CFF) outlines; only TrueType outlines "
                                                            "convert to Type 42"};

    // Both names are written into the program, so both must be plain PostScript names.
    std::string why;
    std::string data = subsetFont(font, glyphIds, &why);
    std::string name = "TL-" + std::string(fontName) + "-TL";
    if (data.empty()) {
        // Where the font cannot be subset, the whole font under its own name.
        if (file.substr(0, 4) == "ttcf")
            return {FontConvertStatus::SubsetFailed, why + "; a font collection cannot be embedded whole"};
        data.assign(file);
        name = font.postScriptName;
    }
    if (!sfnt::isPostScriptName(name))
        return {FontConvertStatus::BadName, font.path + ": \"" + name + "\" is not a PostScript name"};

    std::string out;
    auto result = convertTTFtoPS42({reinterpret_cast<const uint8_t*>(data.data()), data.size()}, name, out);
    if (!result.complete())
        return {FontConvertStatus::ConversionFailed, font.path + ": " + result.detail};
    program += out;
    return {};
}

FontConvertResult convertFont(const _WatermarkData& record)
{
    const std::string fontName(watermarkText(record.fontName));
    std::string why;
    auto font = findFontByPostScriptName(fontName, &why);
    if (!font)
        return {FontConvertStatus::NotFound, why};

    size_t count = std::min<size_t>(record.glyphCount < 0 ? 0 : size_t(record.glyphCount), record.glyphs.size());
    std::vector<uint16_t> ids(record.glyphs.begin(), record.glyphs.begin() + ptrdiff_t(count));
    std::string program;
    if (auto made = makeFontProgram(*font, fontName, ids, program); !made.ok())
        return made;
    if (!storeFontData(kWatermarksFile, fontName, program))
        return {FontConvertStatus::WriteFailed, "the watermark file could not be written"};
    return {};
}

} // namespace talmo
