#include "panels/bookletwatermark/bookletwatermark-settings.h"

#include "ticket/ticket.h"

#include <cairo.h>

#include <algorithm>
#include <memory>

namespace talmo::bookletwatermark {

namespace {

constexpr int32_t kNoWatermarkReference = 1;
constexpr int32_t kOptionsReference = -6;

int32_t numberIn(const Ticket* ticket, const char* key, int32_t low, int32_t high, int32_t fallback)
{
    int32_t value = 0;
    return TicketGetInt32(ticket, key, &value) == noErr ? std::clamp(value, low, high) : fallback;
}

bool flag(const Ticket* ticket, const char* key)
{
    bool value = false;
    return TicketGetBool(ticket, key, &value) == noErr && value;
}

// The chosen record as the print path will draw it; false when none is chosen or found.
bool loadChosen(const BookletWatermarkSettings& settings, _WatermarkData& record)
{
    record.clear();
    if (settings.watermark.empty() || !loadWatermarkData(kWatermarksFile, settings.watermark, record))
        return false;
    record.isText = watermarkText(record.textString).empty() ? 0 : 1;
    return true;
}

double alphaOf(const _WatermarkData& record)
{
    return record.isText ? std::clamp(record.density, 0, 100) / 100.0 : 1.0;
}

} // namespace

BookletWatermarkSettings ReadBookletWatermarkSettings(const Ticket* ticket)
{
    BookletWatermarkSettings s;
    if (TicketGetString(ticket, kWatermarkKey, &s.watermark) != noErr)
        s.watermark.clear();
    // An unknown layering is no nearer to one neighbour than the other: it reads as the default.
    if (TicketGetInt32(ticket, kWatermarkOptionKey, &s.option) != noErr || s.option < kWatermarkBackground ||
        s.option > kWatermarkForeground)
        s.option = kWatermarkBackground;
    s.firstPageOnly = numberIn(ticket, kWatermarkFirstPageOnlyKey, 0, 1, 0) == 1;
    s.gutter = numberIn(ticket, kGutterKey, 0, kMaxGutter, 0);
    s.creep = numberIn(ticket, kCreepKey, 0, kMaxCreep, 0);
    s.drawOutlines = numberIn(ticket, kBookletDrawOutlinesKey, 0, 1, 0) == 1;
    s.forceNewSize = flag(ticket, kBookletForceNewSizeKey);
    return s;
}

OSStatus WriteBookletWatermarkSettings(const BookletWatermarkSettings& s, Ticket* ticket)
{
    if (!ticket)
        return paramErr;
    OSStatus status = noErr;
    auto keep = [&](OSStatus result) {
        if (status == noErr)
            status = result;
    };
    auto number = [&](const char* key, int32_t value, bool atDefault) {
        keep(atDefault ? TicketRemove(ticket, key) : TicketSetInt32(ticket, key, value, kTalmoPanelCreator));
    };
    const bool none = s.watermark.empty();
    keep(none ? TicketRemove(ticket, kWatermarkKey)
              : TicketSetString(ticket, kWatermarkKey, s.watermark, kTalmoPanelCreator));
    number(kWatermarkOptionKey, std::clamp(s.option, kWatermarkBackground, kWatermarkForeground), none);
    number(kWatermarkFirstPageOnlyKey, s.firstPageOnly ? 1 : 0, none);
    number(kGutterKey, std::clamp(s.gutter, 0, kMaxGutter), s.gutter <= 0);
    number(kCreepKey, std::clamp(s.creep, 0, kMaxCreep), s.creep <= 0);
    number(kBookletDrawOutlinesKey, 1, !s.drawOutlines);
    keep(s.forceNewSize ? TicketSetBool(ticket, kBookletForceNewSizeKey, true, kTalmoPanelCreator)
                        : TicketRemove(ticket, kBookletForceNewSizeKey));
    return status;
}

std::vector<std::pair<std::string, std::string>> BookletWatermarkSummary(const BookletWatermarkSettings& s,
                                                                         const SummaryLocalizer& localized)
{
    std::vector<std::pair<std::string, std::string>> lines;
    if (!s.watermark.empty()) {
        const char* layering = LocalizedKeyForTicketValue(_WatermarkOptionsMap, s.option);
        std::string value = s.watermark + (layering ? ", " + localized(layering) : std::string());
        value += ", " + localized(s.firstPageOnly ? "WatermarmPrintOnPage1Only" : "WatermarkPrintOnAllPages");
        lines.emplace_back(localized("BWSummaryWatermark"), value);
    }
    const std::string points = localized("BWPoints");
    if (s.gutter > 0)
        lines.emplace_back(localized("BWSummaryGutter"), std::to_string(s.gutter) + " " + points);
    if (s.creep > 0)
        lines.emplace_back(localized("BWSummaryCreep"), std::to_string(s.creep) + " " + points);
    if (s.drawOutlines)
        lines.emplace_back(localized("BWSummaryOutlines"), localized("BWOn"));
    if (s.forceNewSize)
        lines.emplace_back(localized("BWSummaryForceNewSize"), localized("BWOn"));
    return lines;
}

void LoadWatermarkListWithDefaults(const talmo::Localizer& localize)
{
    if (loadWatermarkList(kWatermarksFile) > 0)
        return;
    CreateDefaultWatermarks(localize);
    loadWatermarkList(kWatermarksFile);
}

WatermarkMenuMarks MarkWatermarkMenu(const WatermarkMenu& menu, const BookletWatermarkSettings& s)
{
    WatermarkMenuMarks marks;
    const auto& names = listOfWatermarks();
    for (const auto& item : menu.items) {
        bool checked = false;
        if (item.command == kWatermarkNameCommand)
            checked =
                item.reference >= 0 && size_t(item.reference) < names.size() && names[item.reference] == s.watermark;
        else if (!item.separator && item.reference == kNoWatermarkReference)
            checked = s.watermark.empty();
        marks.items.push_back(checked);
        if (item.reference == kOptionsReference && !item.separator)
            for (const auto& option : item.submenu)
                marks.options.push_back(
                    !option.separator &&
                    (option.reference == s.option ||
                     option.reference == (s.firstPageOnly ? kWatermarkFirstPage : kWatermarkAllPages)));
    }
    return marks;
}

bool ConvertChosenWatermarkFont(const BookletWatermarkSettings& settings, std::string* message)
{
    _WatermarkData record;
    if (!loadChosen(settings, record)) {
        if (message && !settings.watermark.empty())
            *message = "no watermark named \"" + settings.watermark + "\"";
        return false;
    }
    if (!record.isText)
        return true; // a picture has no font
    {
        // The file keeps only glyphCount bytes of the glyph ids, the first half, so a loaded
        // record lacks the rest of its text's glyphs and a subset of them would print holes.
        // Drawing records the whole list again; the surface size does not matter.
        std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
            cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1), &cairo_surface_destroy);
        std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr(cairo_create(surface.get()), &cairo_destroy);
        DrawWatermark(cr.get(), {0, 0, 612, 792}, &record, alphaOf(record));
    }
    const FontConvertResult result = convertFont(record);
    if (message && !result.ok())
        *message = result.message;
    return result.ok();
}

namespace {

void renderRecord(_WatermarkData& record, bool found, double paperWidth, double paperHeight, uint8_t* pixels, int width,
                  int height)
{
    if (!pixels || width <= 0 || height <= 0)
        return;
    std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_ARGB32, width, height, width * 4),
        &cairo_surface_destroy);
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr(cairo_create(surface.get()), &cairo_destroy);
    cairo_set_source_rgb(cr.get(), 1, 1, 1);
    cairo_paint(cr.get());
    if (paperWidth <= 0 || paperHeight <= 0 || !found)
        return;
    const double scale = std::min(width / paperWidth, height / paperHeight);
    cairo_translate(cr.get(), (width - paperWidth * scale) / 2, (height - paperHeight * scale) / 2);
    cairo_scale(cr.get(), scale, scale);
    record.paperWidth = paperWidth;
    record.paperHeight = paperHeight;
    DrawWatermark(cr.get(), {0, 0, paperWidth, paperHeight}, &record, alphaOf(record));
    cairo_surface_flush(surface.get());
}

} // namespace

void RenderWatermarkPreview(const BookletWatermarkSettings& settings, double paperWidth, double paperHeight,
                            uint8_t* pixels, int width, int height)
{
    _WatermarkData record;
    const bool found = loadChosen(settings, record);
    renderRecord(record, found, paperWidth, paperHeight, pixels, width, height);
}

void RenderWatermarkRecordPreview(const _WatermarkData& record, double paperWidth, double paperHeight, uint8_t* pixels,
                                  int width, int height)
{
    _WatermarkData drawn = record;
    const bool usable = !record.name().empty();
    // Drawing saves a text record whose glyphs changed; an edit in progress must not reach the
    // file, so the stored entry (or its absence) is put back.
    _WatermarkData stored;
    const bool wasStored = usable && record.isText && loadWatermarkData(kWatermarksFile, record.name(), stored);
    renderRecord(drawn, usable, paperWidth, paperHeight, pixels, width, height);
    const bool saved = usable && drawn.isText &&
                       (record.glyphs.empty() || drawn.glyphs.empty() || drawn.glyphs.front() != record.glyphs.front());
    if (!saved)
        return;
    if (wasStored) {
        stored.isText = 1;
        saveWatermarkData(kWatermarksFile, stored);
    } else {
        removeWatermarkData(kWatermarksFile, record.name());
    }
}

PaperSize PreviewPaperSize(const Ticket* ticket)
{
    pl::DictPtr dict;
    if (TicketGetDict(ticket, kJobLevelStockKey, &dict) != noErr || !dict)
        return {};
    const Stock stock(dict);
    constexpr double kPointsPerHmm = 72.0 / 2540.0;
    if (stock.size() == kStockSizeCustom) {
        if (stock.width() > 0 && stock.length() > 0)
            return {stock.width() * kPointsPerHmm, stock.length() * kPointsPerHmm};
        return {};
    }
    for (const _PaperSizeSettingMap* row = CompleteStockSizeMap; row->key; ++row)
        if (row->ticketValue == stock.size() && row->widthPt > 0 && row->heightPt > 0)
            return {double(row->widthPt), double(row->heightPt)};
    return {};
}

_WatermarkData NewWatermarkTemplate()
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
    return record;
}

} // namespace talmo::bookletwatermark
