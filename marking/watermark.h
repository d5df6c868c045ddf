// Watermark records and their file "com.talmo.printing.watermarks.plist" in the maker folder:
// one property-list dictionary holding "WatermarkListEntries" (the names in menu order), one
// dictionary per watermark keyed by its name, and one data entry per converted font keyed by
// the font's PostScript name.
#pragma once

#include "settings/settings.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talmo {

inline constexpr const char* kWatermarkListEntriesKey = "WatermarkListEntries";
// Command of the watermark names in the watermark menu.
inline constexpr uint32_t kWatermarkNameCommand = FourCC("TWmW");

struct WatermarkColor {
    float red = 0, green = 0, blue = 0, alpha = 0;
};

// One watermark. The text fields are zero-terminated UTF-8 of fixed size; set them with
// setWatermarkText so that they are clipped on a character boundary.
struct _WatermarkData {
    char textString[512] = {};
    char filename[512] = {};
    char filePath[8192] = {};
    char fontName[512] = {};
    float xOffset = 0, yOffset = 0; // inches from the page centre
    WatermarkColor fontColor;
    WatermarkColor wellColor; // the ink of a text watermark
    int32_t angle = 0;        // degrees
    int32_t density = 0;      // percent: the alpha of a text watermark
    int32_t scale = 0;        // percent: the size of a picture watermark
    int32_t units = 0;
    int32_t fontSize = 0;                   // points
    int32_t isText = 0;                     // not stored
    double xPos = 0, yPos = 0;              // drawing point of the text
    double paperHeight = 0, paperWidth = 0; // not stored; set before a preview
    // Glyph ids of the drawn text in host byte order; empty means no buffer.
    std::vector<uint16_t> glyphs;
    int32_t glyphCount = 0;

    void clear() { *this = _WatermarkData(); }
    // The record's name and key: its text for a text watermark, else its file name.
    std::string name() const;
};

// Copies `text` into a fixed field, clipped to the field on a UTF-8 character boundary.
template <size_t N> void setWatermarkText(char (&field)[N], std::string_view text);
std::string_view watermarkText(const char* field, size_t size);
template <size_t N> std::string_view watermarkText(const char (&field)[N]) { return watermarkText(field, N); }

// The record's file dictionary (every key; "glyphs" and "glyphCount" only with a buffer), and
// the field-by-field copy of such a dictionary into a record (absent or unusable keys leave
// their fields). loadWatermarkData and saveWatermarkData are these around the file.
pl::DictPtr watermarkDictionary(const _WatermarkData& record);
void loadWatermarkFields(const pl::Dictionary& entry, _WatermarkData& record);

// Fills the record from the entry `name` of the file. Absent keys (and values of the wrong
// type or out of the field's range) leave the field as it was; a missing file or entry clears
// the whole record and returns false.
bool loadWatermarkData(std::string_view file, std::string_view name, _WatermarkData& record);
// Stores the record under its name and rewrites the file atomically. On a write failure prints
// "saveWatermarkData: Error <errno> writing data to file" and returns false. A record named
// "WatermarkListEntries" is refused (it would replace the list).
bool saveWatermarkData(std::string_view file, const _WatermarkData& record);
// Deletes the entry and rewrites the file; failures are silent (false).
bool removeWatermarkData(std::string_view file, std::string_view name);

// The process-wide list of watermark names, in menu order.
std::vector<std::string>& listOfWatermarks();
// Reads "WatermarkListEntries" into listOfWatermarks() (non-text entries skipped); the count.
size_t loadWatermarkList(std::string_view file);
bool saveWatermarkList(std::string_view file, const std::vector<std::string>& names);

bool storeFontData(std::string_view file, std::string_view fontName, std::string_view data);
// Appends the stored font program to `data`; false (data untouched) when there is none.
bool loadFontData(std::string_view file, std::string_view fontName, std::string& data);

// Localized text of a key ("DraftWatermark" ...).
using Localizer = std::function<std::string(std::string_view key)>;

// The three default text watermarks and the list of their names, texts from the bundle's
// "Localizable" table (or the given localizer).
void CreateDefaultWatermarks(const Localizer& localize);
void CreateDefaultWatermarks(const Bundle& bundle);

} // namespace talmo
