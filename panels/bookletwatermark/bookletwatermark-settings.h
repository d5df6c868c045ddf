// The Booklet and Watermark panel's values, how they travel in the print settings ticket, the
// check marks of the watermark menu and the preview, apart from any widget.
#pragma once

#include "marking/marking.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace talmo::bookletwatermark {

// Layering values of the "Options" submenu, and its two page choices.
inline constexpr int32_t kWatermarkBackground = 1;
inline constexpr int32_t kWatermarkBlend = 2;
inline constexpr int32_t kWatermarkForeground = 3;
inline constexpr int32_t kWatermarkAllPages = 4;
inline constexpr int32_t kWatermarkFirstPage = 5;
// Gutter and creep in points; an inch of either is already more than any binding needs.
inline constexpr int32_t kMaxGutter = 72;
inline constexpr int32_t kMaxCreep = 36;

struct BookletWatermarkSettings {
    std::string watermark; // the chosen name; empty for "NoWatermark"
    int32_t option = kWatermarkBackground;
    bool firstPageOnly = false;
    int32_t gutter = 0;
    int32_t creep = 0;
    bool drawOutlines = false;
    bool forceNewSize = false;

    bool operator==(const BookletWatermarkSettings&) const = default;
};

// Absent or unusable keys read as the defaults above; numbers are clamped to their ranges.
BookletWatermarkSettings ReadBookletWatermarkSettings(const Ticket* ticket);
// "NoWatermark" removes the three watermark keys; values at their defaults remove their keys.
OSStatus WriteBookletWatermarkSettings(const BookletWatermarkSettings& settings, Ticket* ticket);

using SummaryLocalizer = std::function<std::string(const char* key)>;
std::vector<std::pair<std::string, std::string>> BookletWatermarkSummary(const BookletWatermarkSettings& settings,
                                                                         const SummaryLocalizer& localized);

// Loads the list of watermarks, creating the three defaults when it is empty.
void LoadWatermarkListWithDefaults(const talmo::Localizer& localize);

// Which rows carry a check mark: the chosen name (or "NoWatermark") among the top rows, the
// layering and the page choice in the "Options" submenu.
struct WatermarkMenuMarks {
    std::vector<bool> items;
    std::vector<bool> options;
};
WatermarkMenuMarks MarkWatermarkMenu(const WatermarkMenu& menu, const BookletWatermarkSettings& settings);

// The chosen watermark's record with its glyphs (drawn once when the file has none), and its
// font stored in the watermark file. False when no watermark is chosen or it cannot be found;
// `message` then, or on a failed conversion, says why.
bool ConvertChosenWatermarkFont(const BookletWatermarkSettings& settings, std::string* message);

// The page (points) with the chosen watermark drawn as printed, into a 32-bit premultiplied
// ARGB buffer of width x height pixels (stride width * 4), white where nothing is drawn.
void RenderWatermarkPreview(const BookletWatermarkSettings& settings, double paperWidth, double paperHeight,
                            uint8_t* pixels, int width, int height);
// The same for a record that may not be stored yet: the file is left as it was.
void RenderWatermarkRecordPreview(const _WatermarkData& record, double paperWidth, double paperHeight, uint8_t* pixels,
                                  int width, int height);

// The page of the preview in points: the job stock's size (its size code's row, or its custom
// width and length), else US Letter.
struct PaperSize {
    double width = 612, height = 792;
};
PaperSize PreviewPaperSize(const Ticket* ticket);

// What "New..." starts from: a text watermark as the defaults are made.
_WatermarkData NewWatermarkTemplate();

} // namespace talmo::bookletwatermark
