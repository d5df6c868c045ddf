#include "marking/watermark.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace talmo {

namespace {

constexpr const char* kRecordWriteFailure = "saveWatermarkData: Error %ld writing data to file\n";

size_t clipUtf8(std::string_view text, size_t limit)
{
    if (text.size() <= limit)
        return text.size();
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return end;
}

// Moves a damaged file to "<path>.damaged", or "<path>.damaged-2" and so on: an earlier
// set-aside file is never replaced. The name used, or nothing when the file could not be moved.
std::optional<std::string> setAside(const std::string& path)
{
    for (int n = 1; n <= 999; ++n) {
        std::string aside = path + ".damaged" + (n == 1 ? "" : "-" + std::to_string(n));
        if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0)
            return aside;
        if (errno == EINVAL || errno == ENOSYS) {
            // A file system without RENAME_NOREPLACE: a hard link cannot replace either.
            if (::link(path.c_str(), aside.c_str()) == 0) {
                ::unlink(path.c_str());
                return aside;
            }
        }
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

// The dictionary a writer updates: the file's, or a new one when there is no file yet. A file
// that exists but cannot be read as a dictionary would be lost by the next write, so it is set
// aside first (and said so); when that fails too, null, and nothing is written.
pl::DictPtr readWatermarkFile(std::string_view file)
{
    auto path = CopyPreferenceFileURL(file);
    struct stat st;
    const bool exists = path && ::stat(path->c_str(), &st) == 0;
    if (!path || (!exists && errno == ENOENT)) {
        if (auto dict = pl::as<pl::Dictionary>(CopyXMLData(file))) // the shipped default, if any
            return dict;
        return pl::makeDict();
    }
    if (auto dict = exists && S_ISREG(st.st_mode) ? pl::as<pl::Dictionary>(CopyXMLData(file)) : nullptr)
        return dict;
    auto aside = setAside(*path);
    if (!aside) {
        const int error = errno;
        std::fprintf(stderr, "%s cannot be read and could not be set aside (%s); nothing written\n", path->c_str(),
                     std::strerror(error));
        errno = error;
        return nullptr;
    }
    std::fprintf(stderr, "%s cannot be read; set aside as %s, a new one is written\n", path->c_str(), aside->c_str());
    return pl::makeDict();
}

bool writeWatermarkFile(std::string_view file, const pl::DictPtr& dict, int& error)
{
    auto path = CopyPreferenceFileURL(file);
    if (!path) {
        error = ENOENT;
        return false;
    }
    return WriteFileAtomically(*path, pl::writePlist(dict), 0600, &error);
}

void setReal(pl::Dictionary& d, const char* key, double v) { d.setReal(key, v); }

// Field loaders: a value of the wrong type, or one the field cannot hold, leaves the field.
void loadText(const pl::Dictionary& d, const char* key, char* field, size_t size)
{
    if (auto s = d.getString(key)) {
        size_t n = clipUtf8(*s, size - 1);
        std::memcpy(field, s->data(), n);
        std::memset(field + n, 0, size - n);
    }
}

void loadFloat(const pl::Dictionary& d, const char* key, float& field)
{
    if (auto v = d.getReal(key); v && std::isfinite(*v) && std::fabs(*v) <= std::numeric_limits<float>::max())
        field = float(*v);
}

void loadDouble(const pl::Dictionary& d, const char* key, double& field)
{
    if (auto v = d.getReal(key); v && std::isfinite(*v))
        field = *v;
}

void loadInt(const pl::Dictionary& d, const char* key, int32_t& field)
{
    if (auto v = d.getInt(key); v && *v >= INT32_MIN && *v <= INT32_MAX)
        field = int32_t(*v);
}

} // namespace

pl::DictPtr watermarkDictionary(const _WatermarkData& r)
{
    auto d = pl::makeDict();
    d->setString("textString", std::string(watermarkText(r.textString)));
    d->setString("filename", std::string(watermarkText(r.filename)));
    d->setString("filePath", std::string(watermarkText(r.filePath)));
    d->setString("fontName", std::string(watermarkText(r.fontName)));
    setReal(*d, "xOffset", r.xOffset);
    setReal(*d, "yOffset", r.yOffset);
    setReal(*d, "fontColorRed", r.fontColor.red);
    setReal(*d, "fontColorGreen", r.fontColor.green);
    setReal(*d, "fontColorBlue", r.fontColor.blue);
    setReal(*d, "fontColorAlpha", r.fontColor.alpha);
    setReal(*d, "wellColorRed", r.wellColor.red);
    setReal(*d, "wellColorGreen", r.wellColor.green);
    setReal(*d, "wellColorBlue", r.wellColor.blue);
    setReal(*d, "wellColorAlpha", r.wellColor.alpha);
    d->setInt("angle", r.angle);
    d->setInt("density", r.density);
    d->setInt("scale", r.scale);
    d->setInt("units", r.units);
    d->setInt("fontSize", r.fontSize);
    setReal(*d, "xPos", r.xPos);
    setReal(*d, "yPos", r.yPos);
    if (!r.glyphs.empty()) {
        // glyphCount bytes: the first half of the id array, as designed (loading allocates
        // twice the stored length). Never more than the buffer holds.
        size_t bytes = std::min<size_t>(r.glyphCount < 0 ? 0 : size_t(r.glyphCount), r.glyphs.size() * 2);
        const auto* raw = reinterpret_cast<const uint8_t*>(r.glyphs.data());
        d->setInt("glyphCount", r.glyphCount);
        d->set("glyphs", pl::makeData(std::vector<uint8_t>(raw, raw + bytes)));
    }
    return d;
}

std::string_view watermarkText(const char* field, size_t size) { return {field, strnlen(field, size)}; }

template <size_t N> void setWatermarkText(char (&field)[N], std::string_view text)
{
    size_t n = clipUtf8(text, N - 1);
    if (n) // an empty view may carry a null pointer, which memcpy must not see
        std::memcpy(field, text.data(), n);
    std::memset(field + n, 0, N - n);
}
template void setWatermarkText<512>(char (&)[512], std::string_view);
template void setWatermarkText<8192>(char (&)[8192], std::string_view);

std::string _WatermarkData::name() const
{
    return std::string(isText ? watermarkText(textString) : watermarkText(filename));
}

std::vector<std::string>& listOfWatermarks()
{
    static std::vector<std::string> list;
    return list;
}

void loadWatermarkFields(const pl::Dictionary& d, _WatermarkData& r)
{
    loadText(d, "textString", r.textString, sizeof r.textString);
    loadText(d, "filename", r.filename, sizeof r.filename);
    loadText(d, "filePath", r.filePath, sizeof r.filePath);
    loadText(d, "fontName", r.fontName, sizeof r.fontName);
    loadFloat(d, "xOffset", r.xOffset);
    loadFloat(d, "yOffset", r.yOffset);
    loadFloat(d, "fontColorRed", r.fontColor.red);
    loadFloat(d, "fontColorGreen", r.fontColor.green);
    loadFloat(d, "fontColorBlue", r.fontColor.blue);
    loadFloat(d, "fontColorAlpha", r.fontColor.alpha);
    loadFloat(d, "wellColorRed", r.wellColor.red);
    loadFloat(d, "wellColorGreen", r.wellColor.green);
    loadFloat(d, "wellColorBlue", r.wellColor.blue);
    loadFloat(d, "wellColorAlpha", r.wellColor.alpha);
    loadInt(d, "angle", r.angle);
    loadInt(d, "density", r.density);
    loadInt(d, "scale", r.scale);
    loadInt(d, "units", r.units);
    loadInt(d, "fontSize", r.fontSize);
    loadDouble(d, "xPos", r.xPos);
    loadDouble(d, "yPos", r.yPos);
    loadInt(d, "glyphCount", r.glyphCount);
    if (auto data = pl::as<pl::Data>(d.get("glyphs"))) {
        // Twice the stored length, deliberately generous: the bytes fill the first half.
        r.glyphs.assign(data->bytes.size(), 0);
        if (!data->bytes.empty())
            std::memcpy(r.glyphs.data(), data->bytes.data(), data->bytes.size());
    }
}

bool loadWatermarkData(std::string_view file, std::string_view name, _WatermarkData& r)
{
    auto root = pl::as<pl::Dictionary>(CopyXMLData(file));
    auto d = root ? root->getDict(name) : nullptr;
    if (!d) {
        r.clear();
        return false;
    }
    loadWatermarkFields(*d, r);
    return true;
}

bool saveWatermarkData(std::string_view file, const _WatermarkData& record)
{
    const std::string name = record.name();
    if (name == kWatermarkListEntriesKey)
        return false;
    auto root = readWatermarkFile(file);
    int error = root ? 0 : errno;
    if (root)
        root->set(name, watermarkDictionary(record));
    if (!root || !writeWatermarkFile(file, root, error)) {
        std::fprintf(stderr, kRecordWriteFailure, long(error));
        return false;
    }
    return true;
}

bool removeWatermarkData(std::string_view file, std::string_view name)
{
    auto root = readWatermarkFile(file);
    if (!root)
        return false;
    root->remove(name);
    int error = 0;
    return writeWatermarkFile(file, root, error);
}

size_t loadWatermarkList(std::string_view file)
{
    auto& list = listOfWatermarks();
    list.clear();
    auto root = pl::as<pl::Dictionary>(CopyXMLData(file));
    if (auto names = root ? root->getArray(kWatermarkListEntriesKey) : nullptr)
        for (const auto& v : *names)
            if (auto s = pl::as<pl::String>(v))
                list.push_back(s->text);
    return list.size();
}

bool saveWatermarkList(std::string_view file, const std::vector<std::string>& names)
{
    auto root = readWatermarkFile(file);
    if (!root)
        return false;
    auto array = pl::makeArray();
    for (const auto& n : names)
        array->append(pl::makeString(n));
    root->set(kWatermarkListEntriesKey, array);
    int error = 0;
    return writeWatermarkFile(file, root, error);
}

bool storeFontData(std::string_view file, std::string_view fontName, std::string_view data)
{
    if (fontName == kWatermarkListEntriesKey)
        return false;
    auto root = readWatermarkFile(file);
    if (!root)
        return false;
    root->set(fontName, pl::makeData(std::vector<uint8_t>(data.begin(), data.end())));
    int error = 0;
    return writeWatermarkFile(file, root, error);
}

bool loadFontData(std::string_view file, std::string_view fontName, std::string& data)
{
    auto root = pl::as<pl::Dictionary>(CopyXMLData(file));
    auto stored = root ? pl::as<pl::Data>(root->get(fontName)) : nullptr;
    if (!stored)
        return false;
    data.append(stored->bytes.begin(), stored->bytes.end());
    return true;
}

void CreateDefaultWatermarks(const Localizer& localize)
{
    _WatermarkData record;
    record.isText = 1;
    record.angle = 45;
    record.density = 25;
    record.scale = 100;
    setWatermarkText(record.fontName, "ArialMT");
    record.fontSize = 72;
    record.fontColor = {0.75f, 0.75f, 1.0f, 1.0f};
    record.wellColor = {0.0f, 0.0f, 1.0f, 1.0f};
    record.units = 0;
    record.xOffset = record.yOffset = 0;

    struct Default {
        const char* key;
        double xPos, yPos;
    };
    static constexpr Default kDefaults[] = {
        {"DraftWatermark", 280.627441, 311.049927},
        {"ConfidentialWatermark", 201.350601, 231.773102},
        {"CopyWatermark", 276.36319, 306.785675},
    };
    std::vector<std::string> names;
    for (const auto& d : kDefaults) {
        std::string text = localize(d.key);
        names.push_back(text);
        setWatermarkText(record.textString, text);
        record.xPos = d.xPos;
        record.yPos = d.yPos;
        saveWatermarkData(kWatermarksFile, record);
    }
    saveWatermarkList(kWatermarksFile, names);
}

void CreateDefaultWatermarks(const Bundle& bundle)
{
    CreateDefaultWatermarks([&](std::string_view key) { return bundle.localizedString(key); });
}

} // namespace talmo
