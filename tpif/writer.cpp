#include "tpif/writer.h"

#include "platform/status.h"
#include "settings/paper-sizes.h"
#include "settings/ticket-keys.h"
#include "tpif/escape.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdarg>
#include <cstring>

namespace talmo {

namespace {

// The writer reads the ticket and record dictionaries by their stored keys rather than through
// the record classes: it must write exactly what a stored ticket holds (including values a
// record's setters would refuse), and it never needs a record's behaviour beyond reading.
//
// Platform keys consulted as fallbacks, and the accounting keys, which are not ticket items of
// this system.
namespace key {
constexpr const char* JobName = "com.apple.print.JobInfo.PMJobName";
constexpr const char* PMDuplexing = "com.apple.print.PrintSettings.PMDuplexing";
constexpr const char* AccountingOn = "com.talmo.Act.tpif.On";
constexpr const char* AccountingUser = "com.talmo.Act.tpif.UID";
constexpr const char* AccountingAccount = "com.talmo.Act.tpif.AID";
} // namespace key

void diag(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void diag(const char* fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    std::vfprintf(TPifDiagStream(), fmt, ap);
    va_end(ap);
}

int32_t clamp32(int64_t v) { return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); }

// The value under `k`, borrowed: the ticket outlives the write, and the writer reads tens of
// thousands of entries, where copying a shared pointer per read (two atomic counts) and a
// string per text cost more than the reads. Record dictionaries are small and are searched
// directly; large ones through their index.
const pl::Value* valueOf(const pl::DictPtr& d, std::string_view k)
{
    if (!d)
        return nullptr;
    if (d->size() > 16)
        return d->get(k).get();
    for (const auto& [key, v] : d->entries())
        if (key.size() == k.size() && std::memcmp(key.data(), k.data(), k.size()) == 0)
            return v.get();
    return nullptr;
}

// A record dictionary read many times over (a stock, an exception page, its colour options):
// its entries are indexed once by key length, so each read compares the wanted key with the
// one or two entries of that length instead of scanning them all.
class View {
public:
    explicit View(const pl::Dictionary* d) : dict_(d)
    {
        if (!d || d->size() > 16)
            return;
        const auto& entries = d->entries();
        for (size_t i = 0; i < entries.size(); ++i)
            byLength_[std::min(entries[i].first.size(), kLongKeys)] |= static_cast<uint16_t>(1u << i);
    }
    explicit View(const pl::DictPtr& d) : View(d.get()) { }

    bool valid() const { return dict_ != nullptr; }
    const pl::Value* get(std::string_view k) const
    {
        if (!dict_)
            return nullptr;
        if (dict_->size() > 16)
            return dict_->get(k).get();
        for (unsigned m = byLength_[std::min(k.size(), kLongKeys)]; m; m &= m - 1) {
            const auto& [key, v] = dict_->entries()[static_cast<size_t>(std::countr_zero(m))];
            if (key == k)
                return v.get();
        }
        return nullptr;
    }
    View view(std::string_view k) const
    {
        const pl::Value* v = get(k);
        return View(v && v->type() == pl::Type::Dictionary ? static_cast<const pl::Dictionary*>(v) : nullptr);
    }

private:
    static constexpr size_t kLongKeys = 47; // keys this long or longer share the last slot
    const pl::Dictionary* dict_;
    std::array<uint16_t, kLongKeys + 1> byLength_{};
};

const pl::Value* valueOf(const View& d, std::string_view k) { return d.get(k); }

template <class T, class D> const T* valueAs(const D& d, std::string_view k)
{
    const pl::Value* v = valueOf(d, k);
    return v && v->type() == pl::typeOf<T>() ? static_cast<const T*>(v) : nullptr;
}

template <class D> std::optional<int32_t> getI32(const D& d, std::string_view k)
{
    const pl::Value* v = valueOf(d, k);
    if (!v)
        return std::nullopt;
    switch (v->type()) {
    case pl::Type::Integer:
        return clamp32(static_cast<const pl::Integer*>(v)->value);
    case pl::Type::Boolean:
        return static_cast<const pl::Boolean*>(v)->value ? 1 : 0;
    case pl::Type::Real: {
        const double r = static_cast<const pl::Real*>(v)->value;
        if (std::trunc(r) == r && std::abs(r) < 9.0e18)
            return clamp32(static_cast<int64_t>(r));
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

template <class D> int32_t getI32Or(const D& d, std::string_view k, int32_t fallback)
{
    return getI32(d, k).value_or(fallback);
}

// A whole number as the dictionary's getInt reads it: an integer, or an integral real.
template <class D> std::optional<int64_t> getInt(const D& d, std::string_view k)
{
    if (auto i = valueAs<pl::Integer>(d, k))
        return i->value;
    if (auto r = valueAs<pl::Real>(d, k))
        if (std::isfinite(r->value) && r->value == std::trunc(r->value) && r->value >= -9.2e18 && r->value <= 9.2e18)
            return static_cast<int64_t>(r->value);
    return std::nullopt;
}

template <class D> std::optional<bool> getBool(const D& d, std::string_view k)
{
    auto b = valueAs<pl::Boolean>(d, k);
    return b ? std::optional<bool>(b->value) : std::nullopt;
}

// A flag "is set": boolean true or a non-zero number.
template <class D> bool isSet(const D& d, std::string_view k) { return getI32(d, k).value_or(0) != 0; }

template <class D> bool has(const D& d, std::string_view k) { return valueOf(d, k) != nullptr; }

template <class D> std::optional<std::string> escaped(const D& d, std::string_view k)
{
    if (auto s = valueAs<pl::String>(d, k))
        return XMLCreateStringByEscapingEntities(s->text);
    return std::nullopt;
}

// A large job's records lie scattered over the heap, and reading them one value at a time as
// the lines are written leaves the writer waiting on one cache miss after another. So the
// records ahead are fetched in stages, one layer per record written: the dictionary, its
// entries, its values, then the entries and values of the dictionaries inside it. Each stage
// reads only what the stage before asked for an entry earlier, so it never waits itself.
void prefetchLayer(const pl::Dictionary* d, int layer)
{
    if (layer == 0) {
        __builtin_prefetch(d);
        return;
    }
    const auto& entries = d->entries();
    if (layer == 1) {
        __builtin_prefetch(entries.data());
        return;
    }
    for (const auto& [key, v] : entries) {
        if (layer == 2) {
            __builtin_prefetch(key.data());
            __builtin_prefetch(v.get());
        } else if (v->type() == pl::Type::Dictionary) {
            prefetchLayer(static_cast<const pl::Dictionary*>(v.get()), layer - 2);
        }
    }
}

constexpr size_t kPrefetchLayers = 5;

void prefetchAhead(const std::vector<pl::DictPtr>& entries, size_t current)
{
    for (size_t layer = 0; layer < kPrefetchLayers; ++layer)
        if (size_t ahead = current + kPrefetchLayers - layer; ahead < entries.size())
            prefetchLayer(entries[ahead].get(), static_cast<int>(layer));
}

// Entries of a list that are dictionaries.
std::vector<pl::DictPtr> dictEntries(const pl::DictPtr& ticket, const char* k)
{
    std::vector<pl::DictPtr> out;
    if (auto a = ticket ? ticket->getArray(k) : nullptr)
        for (const auto& v : *a)
            if (auto d = pl::as<pl::Dictionary>(v))
                out.push_back(d);
    return out;
}

// Where a stock type code lands in the media record: the type index, the pre-printed kind of
// index 6 and, for the printer's custom slots, the name the slot is written with.
struct MediaTypeSlot {
    int32_t index;
    int32_t prePrinted = 0;
    const char* slotName = nullptr;
};

MediaTypeSlot mediaTypeIndex(int32_t stockType)
{
    static const char* const kCustomTypeSlots[] = {"Custom1", "Custom2", "Custom3", "Custom4",
                                                   "Custom5", "Custom6", "Custom7"};
    switch (stockType) {
    case 1:
        return {0}; // plain -> stationery
    case 2:
        return {1}; // transparency
    case 3:
        return {6, 1}; // pre-printed
    case 4:
        return {3}; // pre-cut tabs
    case 5:
        return {4}; // full-cut tabs
    case 6:
        return {10}; // ordered stock, by name
    case 7:
        return {9}; // custom type, by name
    case 8:
        return {8}; // envelope
    case 9:
        return {5}; // labels
    case 10:
        return {7}; // recycled
    case 13:
        return {12}; // bond
    case 14:
        return {6, 2}; // letterhead
    case 15:
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
        return {9, 0, kCustomTypeSlots[stockType - 15]};
    case 23: // the printer's own default type
    case 34: // unspecified
        return {13};
    case 24:
    case 33:
        return {2}; // tab stocks of the printer's own type list
    default:
        return {11}; // other
    }
}

struct MediaColorSlot {
    int32_t index;
    const char* slotName = nullptr;
};

MediaColorSlot mediaColorIndex(int32_t stockColor)
{
    static const char* const kCustomColorSlots[] = {"custom1", "custom2", "custom3", "custom4",
                                                    "custom5", "custom6", "custom7"};
    switch (stockColor) {
    case 1:
        return {1}; // white
    case 2:
        return {4}; // blue
    case 3:
        return {3}; // yellow
    case 4:
        return {5}; // green
    case 5:
        return {2}; // pink
    case 6:
        return {0}; // clear -> no-color
    case 7:
        return {6}; // buff
    case 8:
        return {7}; // goldenrod
    case 9:
        return {8}; // red
    case 10:
        return {12}; // custom, by the stock's own name
    case 11:
        return {9}; // ivory
    case 12:
        return {10}; // gray
    case 13:
        return {11}; // orange
    case 14:
        return {12, "other"}; // no keyword names it
    case 15:
    case 16:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
        return {12, kCustomColorSlots[stockColor - 15]};
    default:
        return {13}; // unspecified or unknown: no colour line
    }
}

void fillMedia(MediaData& m, const View& stock);
void fillImageShift(PageData& page, const View& shift);
void fillFullColor(PageData& p, const View& c);

void writeMediaFrom(const writeData* sink, const pl::DictPtr& stock)
{
    MediaData media;
    FillMediaData(media, stock);
    WriteTPifMedia(sink, media);
    FinalizeMediaData(media);
}

void writeCover(const writeData* sink, const pl::DictPtr& ticket, const char* k, int which)
{
    auto cover = ticket ? ticket->getDict(k) : nullptr;
    if (!cover)
        return;
    MediaData media;
    FillMediaData(media, cover->getDict("Stock"));
    WriteTPifCovers(sink, which, getI32Or(cover, "SidesImaged", 1), media);
    FinalizeMediaData(media);
}

} // namespace

long TPifShiftToHundredthsMm(int64_t value, bool inches, bool fullPrecision)
{
    double v = static_cast<double>(value);
    if (!fullPrecision)
        v = inches ? std::round(v * 25.4) : v * 10.0;
    return static_cast<long>(std::clamp(v, static_cast<double>(INT32_MIN), static_cast<double>(INT32_MAX)));
}

bool TPifStockSizeDimensions(int32_t size, uint32_t& width, uint32_t& length)
{
    // The stock record's complete size table is the one source of sheet dimensions.
    for (const _PaperSizeSettingMap* row = CompleteStockSizeMap; row->key; ++row)
        if (row->ticketValue == size && row->widthHmm > 0 && row->heightHmm > 0) {
            width = static_cast<uint32_t>(row->widthHmm);
            length = static_cast<uint32_t>(row->heightHmm);
            return true;
        }
    return false;
}

void FillMediaData(MediaData& m, const pl::DictPtr& stock) { fillMedia(m, View(stock)); }

namespace {

// A missing stock reads as an empty one.
void fillMedia(MediaData& m, const View& stock)
{
    if (has(stock, "Source")) {
        // Only the post-process inserter (10) has a media keyword; any other source is unknown.
        m.source = getI32Or(stock, "Source", 0) == 10 ? 0 : 1;
        return;
    }
    if (has(stock, "CustomNameOnly")) {
        if (!getBool(stock, "CustomNameOnly").value_or(false))
            return; // deliberately left unfilled
        if (auto name = escaped(stock, "CustomName"))
            m.mediaKey = std::move(name);
        return;
    }
    // Size: a standard code, or custom "Width" and "Length" (hundredths of a millimetre).
    auto size = getI32(stock, "Size");
    if (!size || *size == 75) {
        auto w = getI32(stock, "Width");
        auto l = getI32(stock, "Length");
        if (w && l && *w > 0 && *l > 0) {
            m.width = static_cast<uint32_t>(*w);
            m.length = static_cast<uint32_t>(*l);
        }
    } else {
        TPifStockSizeDimensions(*size, m.width, m.length);
    }
    if (auto color = getI32(stock, "Color"); color && *color != kNotSet) {
        const MediaColorSlot slot = mediaColorIndex(*color);
        m.color = slot.index;
        if (slot.slotName) {
            m.customColorName = slot.slotName;
        } else if (m.color == 12) {
            auto name = escaped(stock, "CustomColor");
            m.customColorName = name && !name->empty() ? *name : std::string("other");
        }
    }
    if (auto type = getI32(stock, "Type"); type && *type != kNotSet) {
        const MediaTypeSlot slot = mediaTypeIndex(*type);
        m.type = slot.index;
        m.prePrinted = slot.prePrinted;
        if (m.type == 7)
            m.recycled = 1;
        if (slot.slotName) {
            m.customTypeName = slot.slotName;
        } else if (m.type == 9 || m.type == 10) {
            auto name = escaped(stock, "CustomType");
            m.customTypeName = name && !name->empty() ? *name : std::string("other");
        }
        if (*type == 4 || *type == 6 || *type == 24 || *type == 33) {
            auto modulus = getI32(stock, "Modulus");
            if (modulus && *modulus > 0)
                m.orderCount = *modulus;
        }
    }
    if (auto weight = getI32(stock, "Weight"); weight && *weight != kNotSet)
        m.weight = *weight;
    if (auto punched = getI32(stock, "Punched")) {
        if (*punched == 1)
            m.holeCount = 0;
        else if (*punched == 2)
            m.holeCount = 3;
    }
    m.description = escaped(stock, "Description");
    if (auto finish = getI32(stock, "Finish"); finish && *finish >= 1 && *finish <= 3)
        m.tooth = *finish;
    if (auto grain = getI32(stock, "kGrain"); grain && (*grain == 1 || *grain == 2))
        m.grain = *grain;
    if (auto sides = getI32(stock, "SidesCoated"); sides && *sides != kNotSet) {
        m.coatedSides = *sides;
        m.coatingType = getI32Or(stock, "kCoatingType", 1);
    }
}

} // namespace

void FillJobTypeData(JobData& job, const pl::DictPtr& jobType, const pl::DictPtr& ticket)
{
    const int32_t type = getI32Or(jobType, "JobType", 1);
    switch (type) {
    case 2:
        job.disposition = 1;
        break;
    case 3:
        job.disposition = getI32(jobType, "SaveDisposition") == 2 ? 3 : 2;
        break;
    case 4:
        job.disposition = 3;
        break;
    case 9:
        job.disposition = 4;
        break;
    default:
        job.disposition = 0;
        break;
    }
    auto format = getI32(jobType, "MediaType");
    job.saveFormat = format && *format >= 1 && *format <= 5 ? *format - 1 : kTPifUnset;
    auto name = isSet(jobType, "UseJobName") ? escaped(ticket, key::JobName) : escaped(jobType, "SavedJobName");
    job.saveName = name.value_or("");
    job.saveLocation = escaped(jobType, "SavedJobLocation").value_or("file:///job-repository/");
}

void FillImageShift(PageData& page, const pl::DictPtr& shift) { fillImageShift(page, View(shift)); }

void FillFullColorOptions(PageData& p, const pl::DictPtr& c) { fillFullColor(p, View(c)); }

namespace {

void fillImageShift(PageData& page, const View& shift)
{
    if (!shift.valid())
        return;
    const bool inches = !has(shift, "Inches") || getI32Or(shift, "Inches", 1) > 0;
    const bool full = getBool(shift, "FullPrecision").value_or(false);
    auto conv = [&](const char* k) { return TPifShiftToHundredthsMm(getInt(shift, k).value_or(0), inches, full); };
    page.hasImageShift = true;
    page.xSide1 = conv("X1");
    page.xSide2 = conv("X2");
    page.ySide1 = conv("Y1");
    page.ySide2 = conv("Y2");
}

void fillFullColor(PageData& p, const View& c)
{
    if (!c.valid())
        return;
    auto num = [&](const View& d, const char* k) { return getI32Or(d, k, kTPifColorUnset); };
    p.lightness = num(c, "FCLightness");
    p.contrast = num(c, "FCContrast");
    p.saturation = num(c, "FCSaturation");
    if (const View cast = c.view("FCColorCast"); cast.valid()) {
        p.cyanRed = num(cast, "FCCyanRed");
        p.magentaGreen = num(cast, "FCMagentaGreen");
        p.yellowBlue = num(cast, "FCYellowBlue");
    }
    p.trapping = num(c, "FCTrapping");
    p.trapWidthFast = num(c, "FCTrappingFastDirection");
    p.trapWidthSlow = num(c, "FCTrappingSlowDirection");
    p.blackOverprint = num(c, "FCBlackOverprint");
    p.trc = escaped(c, "FCTRC");
    // A profile key holds the kind as a number, or the custom profile's name as a string.
    auto profile = [&](const char* k, int32_t& index, std::optional<std::string>& name) {
        index = num(c, k);
        name = escaped(c, k);
    };
    profile("RGBImagesProfile", p.rgbImages, p.rgbImagesName);
    profile("RGBTextAndGraphicsProfile", p.rgbTextGraphics, p.rgbTextGraphicsName);
    profile("CMYKImagesProfile", p.cmykImages, p.cmykImagesName);
    profile("CMYKTextAndGraphicsProfile", p.cmykTextGraphics, p.cmykTextGraphicsName);
    p.grayImagesName = escaped(c, "GrayImagesProfile");
    p.grayTextGraphicsName = escaped(c, "GrayTextAndGraphicsProfile");
    profile("DestinationProfile", p.destination, p.destinationName);
    p.renderImages = num(c, "ImageRendering");
    p.renderText = num(c, "TextRendering");
    p.renderGraphics = num(c, "GraphicRendering");
}

} // namespace

void FillHighlightColorData(HighlightColorData& h, const pl::DictPtr& d)
{
    if (!d)
        return;
    auto custom = [&](HighlightColorData::Custom& c, const char* slot, const char* rgb, const char* r, const char* g,
                      const char* b, const char* hue, const char* sat, const char* val) {
        if (!has(d, slot))
            return;
        c.present = true;
        c.slot = getI32Or(d, slot, 0);
        // "...RGB" chooses the colour model; without it both members are written.
        auto useRGB = d->contains(rgb) ? std::optional<bool>(isSet(d, rgb)) : std::nullopt;
        c.hasRGB = !useRGB || *useRGB;
        c.hasHSV = !useRGB || !*useRGB;
        c.r = getI32Or(d, r, 0), c.g = getI32Or(d, g, 0), c.b = getI32Or(d, b, 0);
        c.h = getI32Or(d, hue, 0), c.s = getI32Or(d, sat, 0), c.v = getI32Or(d, val, 0);
    };
    h.colorant = getI32Or(d, "HiglightPrintingColor", kTPifUnset);
    custom(h.colorantCustom, "HighlightTalmoPrintingColor", "HighlightColorPrintingRGB", "HighlightColorPrintingR",
           "HighlightColorPrintingG", "HighlightColorPrintingB", "HighlightColorPrintingH", "HighlightColorPrintingS",
           "HighlightColorPrintingV");
    h.mapColor = getI32Or(d, "HighlightMappingColor", kTPifUnset);
    custom(h.mapColorCustom, "HighlightTalmoMappingColor", "HighlightColorMappingRGB", "HighlightColorMappingR",
           "HighlightColorMappingG", "HighlightColorMappingB", "HighlightColorMappingH", "HighlightColorMappingS",
           "HighlightColorMappingV");
    h.map = getI32Or(d, "HighlightMappingAlgorithm", kTPifUnset);
    h.mismatch = getI32Or(d, "HighlightMismatchAction", kTPifUnset);
}

void WriteTPIFJobNameAndUser(const writeData* sink, const pl::DictPtr& t)
{
    auto name =
        t->getBool(kJobNotesUseJobNameKey).value_or(false) ? escaped(t, key::JobName) : escaped(t, kJobNotesJobNameKey);
    auto user = escaped(t, kJobNotesSenderNameKey);
    WriteTPifOpAttrib(sink, name.value_or(""), user.value_or(""));
}

void WriteTPIFJobLevelStock(const writeData* sink, const pl::DictPtr& t)
{
    if (auto stock = t->getDict(kJobLevelStockKey))
        writeMediaFrom(sink, stock);
}

void WriteTPIFFrontCover(const writeData* sink, const pl::DictPtr& t)
{
    writeCover(sink, t, kSpecialPagesFrontCoverKey, 0);
}

void WriteTPIFBackCover(const writeData* sink, const pl::DictPtr& t)
{
    writeCover(sink, t, kSpecialPagesBackCoverKey, 1);
}

void WriteTPIFInserts(const writeData* sink, const pl::DictPtr& t)
{
    auto entries = dictEntries(t, kSpecialPagesInsertListKey);
    if (entries.empty())
        return;
    WriteTPifSpecialPagesStart(sink, 1);
    for (size_t i = 0; i < entries.size(); ++i) {
        prefetchAhead(entries, i);
        const View e(entries[i]);
        MediaData media;
        fillMedia(media, e.view("Stock"));
        WriteTPifInserts(sink, getI32Or(e, "StartPage", 1), getI32Or(e, "Quantity", 1), media);
        FinalizeMediaData(media);
    }
    WriteTPifSpecialPagesEnd(sink, 1);
}

void WriteTPIFExceptions(const writeData* sink, const pl::DictPtr& t)
{
    auto entries = dictEntries(t, kSpecialPagesExceptionListKey);
    if (entries.empty())
        return;
    WriteTPifSpecialPagesStart(sink, 0);
    for (size_t i = 0; i < entries.size(); ++i) {
        prefetchAhead(entries, i);
        const View e(entries[i]);
        PageData page;
        page.lower = getI32Or(e, "StartPage", 1);
        page.upper = getI32Or(e, "EndPage", 1);
        // The plex (1 simplex, 2 duplex, 3 duplex short edge) becomes the sides value 0-2;
        // anything else is an unknown sides value (an empty text).
        if (auto plex = getI32(e, "SidesImaged"))
            page.sides = *plex >= 1 && *plex <= 3 ? *plex - 1 : 3;
        if (auto ld = getI32(e, "LightenDarken")) {
            page.hasLightenDarken = true;
            page.lightenDarken = *ld;
        }
        fillImageShift(page, e.view(kImageShiftOptionsPageKey));
        fillFullColor(page, e.view("FullColorOptionsPage"));
        page.antialiasing = getI32Or(e, "Antialiasing", kTPifColorUnset);
        page.halftone = getI32Or(e, "HalftoneScreen", kTPifColorUnset);
        page.colorEffects = getI32Or(e, "OutputColor", kTPifColorUnset);
        MediaData media;
        fillMedia(media, e.view("Stock"));
        WriteTPifPageExceptions(sink, page, media);
        FinalizeMediaData(media);
        FinalizePageData(page);
    }
    WriteTPifSpecialPagesEnd(sink, 0);
}

void WriteTPIFFinishing(const writeData* sink, const pl::DictPtr& t)
{
    auto num = [&](const char* k) { return getI32Or(t, k, 0); };
    const int32_t choice = num(kFinishingOptionsKey);
    const int32_t zfold = num(kFinishingZFoldValueKey);
    int32_t staple = num(kFinishingStaple1ValueKey);
    if (staple == 0)
        staple = num(kFinishingStaple2ValueKey);
    if (staple == 0)
        staple = num(kFinishingStapleCenterValueKey);
    const int32_t hole = num(kFinishingHolePunchValueKey);
    const int32_t fold = num(kFinishingFoldValueKey);
    const int32_t bind = num(kFinishingBindValueKey);
    const int32_t booklet = num(kBookletFoldStapleKey);
    diag("DEBUG: ******* finishingOptions = %ld, foldOptions = %ld, stapleValue = %ld, holePunchValue = %ld, "
         "simpleFoldValue = %ld, bindValue = %ld, bookletValue = %ld\n",
         static_cast<long>(choice), static_cast<long>(zfold), static_cast<long>(staple), static_cast<long>(hole),
         static_cast<long>(fold), static_cast<long>(bind), static_cast<long>(booklet));
    if (has(t, kFinishingSlipSheetKey)) {
        diag("DEBUG: ************ SLIPSHEET ************\n");
        if (num(kFinishingSlipSheetKey) == 2) {
            diag("DEBUG: ************** SLIPSHEET ON ****************\n");
            WriteTPifCommands(sink, 11, 0);
        }
    }

    auto S = [](int32_t v) -> int32_t {
        switch (v) {
        case 5:
            return 0;
        case 6:
            return 2;
        case 7:
            return 1;
        case 8:
            return 20;
        case 10:
            return 3;
        case 11:
            return 4;
        case 12:
            return 5;
        case 13:
            return 6;
        case 26:
            return 16;
        case 27:
            return 17;
        case 28:
            return 18;
        case 29:
            return 19;
        default:
            return kTPifUnset;
        }
    };
    auto H = [](int32_t v) -> int32_t {
        switch (v) {
        case 32:
            return 31;
        case 33:
            return 32;
        case 34:
            return 33;
        case 35:
            return 34;
        case 49:
            return 38;
        default:
            return kTPifUnset;
        }
    };
    auto Z = [](int32_t v) -> int32_t { return v == 38 ? 25 : v == 39 ? 26 : kTPifUnset; };

    FinishingData f;
    switch (choice) {
    case 0:
    case 24:
        if (booklet == 7)
            f.fold = 10;
        else if (booklet == 8)
            f.staple = 7;
        break;
    case 1:
        f.fold = 9;
        break;
    case 3:
        f.fold = 15;
        break;
    case 4:
    case 9:
    case 25:
        f.staple = S(staple);
        break;
    case 14:
        f.fold = bind == 15 ? 13 : bind == 16 ? 14 : kTPifUnset;
        break;
    case 18:
        f.fold = fold == 19 ? 11 : fold == 20 ? 12 : kTPifUnset;
        break;
    case 22:
        f.templateName = escaped(t, kFinishingCustomKey);
        break;
    case 30:
        switch (hole) {
        case 33:
            f.holePunch = 32;
            break;
        case 32:
            f.holePunch = 31;
            break;
        case 34:
            f.holePunch = 33;
            break;
        case 35:
            f.holePunch = 34;
            break;
        default:
            break;
        }
        break;
    case 32:
        f.holePunch = 31;
        break;
    case 33:
        f.holePunch = 32;
        break;
    case 34:
        f.holePunch = 33;
        break;
    case 35:
        f.holePunch = 34;
        break;
    case 36:
        f.fold = Z(zfold);
        break;
    case 40:
        switch (fold) {
        case 41:
            f.fold = 21;
            break;
        case 42:
            f.fold = 22;
            break;
        case 43:
            f.fold = 23;
            break;
        case 44:
            f.fold = 24;
            break;
        case 45:
            f.fold = 27;
            break;
        case 46:
            f.fold = 28;
            break;
        case 47:
            f.fold = 29;
            break;
        case 48:
            f.fold = 30;
            break;
        default:
            break;
        }
        break;
    case 49:
        f.holePunch = H(hole), f.staple = S(staple);
        break;
    case 50:
        f.fold = Z(zfold), f.holePunch = H(hole), f.staple = S(staple);
        break;
    case 51:
        f.fold = Z(zfold), f.staple = S(staple);
        break;
    case 52:
        f.fold = Z(zfold), f.holePunch = H(hole);
        break;
    default:
        break;
    }
    switch (choice) {
    case 30:
    case 32:
    case 33:
    case 34:
    case 35:
    case 49:
    case 50:
    case 52: {
        const int32_t options = getI32Or(t, kFinishingHolePunchOptionsKey, 4);
        f.holeCount = options == 3 ? 35 : options == 4 ? 36 : options == 5 ? 37 : kTPifUnset;
        break;
    }
    default:
        break;
    }
    WriteTPifFinishing(sink, f);
    f.templateName.reset();
    WriteTPIFOffset(sink, t);
}

void WriteTPIFOffset(const writeData* sink, const pl::DictPtr& t)
{
    switch (getI32Or(t, kFinishingOffsetKey, 0)) {
    case 2:
        WriteTPifCommands(sink, 7, 0);
        break;
    case 3:
        WriteTPifCommands(sink, 7, 1);
        break;
    case 4:
        WriteTPifCommands(sink, 7, 2);
        break;
    case 5:
        WriteTPifCommands(sink, 7, 3);
        break;
    default:
        break;
    }
    if (isSet(t, kFinishingOffsetEnableSubsetKey))
        if (auto pages = getI32(t, kFinishingOffsetPagesPerSubsetKey))
            WriteTPifCommands(sink, 8, *pages);
}

void WriteTPIFJobNotes(const writeData* sink, const pl::DictPtr& t)
{
    WriteTPifJobNotes(sink, escaped(t, kJobNotesMessageKey), escaped(t, kJobNotesRecipientKey),
                      escaped(t, kJobNotesSheetMessageKey), escaped(t, kJobNotesAdditionalInfoKey));
}

void WriteTPIFJobType(const writeData* sink, const pl::DictPtr& t)
{
    auto jobType = t->getDict(kJobTypeKey);
    if (!jobType)
        return;
    JobData job;
    FillJobTypeData(job, jobType, t);
    WriteTPifJobTypes(sink, job);
}

void WriteTPIFDuplex(const writeData* sink, const pl::DictPtr& t)
{
    auto v = getI32(t, kFinishingDuplexKey);
    if (!v)
        v = getI32(t, key::PMDuplexing);
    WriteTPifCommands(sink, 2, v == 3 ? 2 : v == 2 ? 1 : 0);
}

void WriteTPIFOutputDestination(const writeData* sink, const pl::DictPtr& t)
{
    int32_t bin = -1;
    switch (getI32Or(t, kFinishingOutputDestinationKey, -1)) {
    case 1:
        bin = 0;
        break;
    case 2:
    case 3:
        bin = 1;
        break;
    case 4:
    case 12:
        bin = 2;
        break;
    case 5:
        bin = 6;
        break;
    case 6:
        bin = 7;
        break;
    case 8:
        bin = 4;
        break;
    case 9:
        bin = 5;
        break;
    case 16:
        bin = 8;
        break;
    case 17:
        bin = 9;
        break;
    default:
        break; // an empty write
    }
    WriteTPifCommands(sink, 4, bin);
}

void WriteTPIFResolution(const writeData* sink, const pl::DictPtr& t)
{
    ResolutionData r;
    switch (getI32Or(t, kResolutionKey, 0)) {
    case 1:
        r.crossFeed = r.feedDirection = 300;
        break;
    case 2:
        r.crossFeed = r.feedDirection = 600;
        break;
    case 3:
        r.crossFeed = 1200, r.feedDirection = 600;
        break;
    case 4:
        r.crossFeed = r.feedDirection = 1200;
        break;
    default:
        return;
    }
    WriteTPifResolution(sink, r);
}

void WriteTPIFHighlightColor(const writeData* sink, const pl::DictPtr& options)
{
    HighlightColorData h;
    FillHighlightColorData(h, options);
    WriteTPifHLC(sink, h);
}

void WriteTPIFImageShift(const writeData* sink, const pl::DictPtr& shift)
{
    if (!shift)
        return;
    PageData page;
    FillImageShift(page, shift);
    WriteTPifImageShift(sink, page.xSide1, page.xSide2, page.ySide1, page.ySide2);
}

void WriteTPIFFullColor(const writeData* sink, const pl::DictPtr& options)
{
    if (!options)
        return;
    PageData page;
    FillFullColorOptions(page, options);
    WriteTPifFullColor(sink, page);
    FinalizePageData(page);
}

namespace {

// One ticket number -> one command; `convert` returns false to write nothing.
template <class F> void simple(const writeData* sink, const pl::DictPtr& t, const char* k, int command, F convert)
{
    auto v = getI32(t, k);
    if (!v)
        return;
    int32_t out = 0;
    if (convert(static_cast<int64_t>(*v), out))
        WriteTPifCommands(sink, command, out);
}

bool asIs(int64_t v, int32_t& out)
{
    out = static_cast<int32_t>(v);
    return true;
}

bool minusTwo(int64_t v, int32_t& out)
{
    out = clamp32(v - 2);
    return true;
}

} // namespace

void WriteTPIFOPISubsitution(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kOPISubsitutionKey, 12, minusTwo);
}

void WriteTPIFOPIPreScan(const writeData* sink, const pl::DictPtr& t) { simple(sink, t, kOPIPrescanKey, 13, minusTwo); }

void WriteTPIFAntiAliasing(const writeData* sink, const pl::DictPtr& t) { simple(sink, t, kAntialiasingKey, 14, asIs); }

void WriteTPIFHalftone(const writeData* sink, const pl::DictPtr& t)
{
    if (auto v = getI32(t, kHalftoneScreenKey))
        WriteTPifHalfTone(sink, *v);
}

void WriteTPIFLightenDarken(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kLightenDarkenKey, 5, asIs);
}

void WriteTPIFTonerSaver(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kTonerSaverKey, 6, [](int64_t v, int32_t& out) {
        out = v != 0 ? 1 : 0;
        return true;
    });
}

void WriteTPIFOutputOrder(const writeData* sink, const pl::DictPtr& t) { simple(sink, t, kOutputOrderKey, 29, asIs); }

void WriteTPIFPrinterEmulation(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kDravikEmulationKey, 9, asIs);
}

void WriteTPIFImageRotation(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kAdvancedRotateImage180Key, 10, [](int64_t v, int32_t& out) {
        out = v == 1 ? 1 : 0;
        return v == 1 || v == 2;
    });
}

void WriteTPIFOutputColor(const writeData* sink, const pl::DictPtr& t)
{
    simple(sink, t, kFinishingOutputColorKey, 30, asIs);
}

void WriteTPIFBackgroundForms(const writeData* sink, const pl::DictPtr& t)
{
    diag("DEBUG: ******* WriteTPIFBackgroundForms\n");
    if (!t)
        return;
    diag("DEBUG: ******* WriteTPIFBackgroundForms: valid ticket\n");
    auto options = t->getDict(kBackgroundFormsOptionsKey);
    if (!options)
        return;
    diag("DEBUG: ******* WriteTPIFBackgroundForms: valid bg options ticket\n");
    const int32_t jobType = getI32Or(t->getDict(kJobTypeKey), "JobType", 0);
    diag("DEBUG: ******** jobType = %ld\n", static_cast<long>(jobType));
    BgFormsData forms;
    forms.useExisting = getI32Or(options, "UseExistingForm", 1) == 2;
    std::optional<std::string> name;
    if (forms.useExisting)
        name = escaped(options, "MergeWithString");
    else if (isSet(options, "UseDocumentName"))
        name = escaped(t, key::JobName);
    else
        name = escaped(options, "NewFormString");
    forms.formName = name.value_or("");
    forms.cycleStart = getI32Or(options, "CyclePages", 0);
    const bool inches = !options->contains("Inches") || getI32Or(options, "Inches", 1) > 0;
    const bool full = options->getBool("FullPrecision").value_or(false);
    forms.xShift = TPifShiftToHundredthsMm(options->getInt("X1").value_or(0), inches, full);
    forms.yShift = TPifShiftToHundredthsMm(options->getInt("Y1").value_or(0), inches, full);
    WriteTPifBackgroundForms(sink, forms);
}

void WriteTPIFAccounting(const writeData* sink, const pl::DictPtr& t)
{
    if (!t)
        return;
    diag("DEBUG: Ticket is valid\n");
    auto on = getI32(t, key::AccountingOn);
    if (!on) {
        diag("DEBUG: No accounting ticket present\n");
        return;
    }
    diag("DEBUG: Found accounting key: %ld\n", static_cast<long>(*on));
    if (*on == 0)
        return;
    diag("DEBUG: Accounting is enabled\n");
    const std::string uid = t->getString(key::AccountingUser).value_or("");
    const std::string aid = t->getString(key::AccountingAccount).value_or("");
    diag("DEBUG: user id %s, acct id %s\n", uid.c_str(), aid.c_str());
    WriteTPifAccounting(sink, XMLCreateStringByEscapingEntities(uid), XMLCreateStringByEscapingEntities(aid));
}

void WriteTPIFPagesToPrint(const writeData* sink, const pl::DictPtr& t)
{
    if (!isSet(t, kPagesToPrintSelectedKey))
        return;
    WriteTPifPageRanges(sink, getI32Or(t, kPagesToPrintFromKey, 1), getI32Or(t, kPagesToPrintToKey, 1));
}

void WriteTPIFToSink(const writeData* sink, const pl::DictPtr& t)
{
    auto options = t ? t->getDict(kTPIFOptionsKey) : nullptr;
    if (!options)
        return;
    if (options->contains("TPIFOptionAll")) {
        WriteTPifHeader(sink, 5);
        WriteTPIFJobNameAndUser(sink, t);
        WriteTPifJobAttribStart(sink);
        WriteTPIFJobLevelStock(sink, t);
        WriteTPIFFrontCover(sink, t);
        WriteTPIFBackCover(sink, t);
        WriteTPIFInserts(sink, t);
        WriteTPIFExceptions(sink, t);
        WriteTPIFFinishing(sink, t);
        WriteTPIFJobNotes(sink, t);
        WriteTPIFJobType(sink, t);
        WriteTPIFDuplex(sink, t);
        WriteTPIFOutputDestination(sink, t);
        WriteTPIFResolution(sink, t);
        WriteTPIFHighlightColor(sink, t); // deliberately twice: the whole ticket, then the job options
        if (auto shift = t->getDict(kImageShiftOptionsJobKey))
            WriteTPIFImageShift(sink, shift);
        if (auto hlc = t->getDict(kHighlightColorOptionsJobKey))
            WriteTPIFHighlightColor(sink, hlc);
        if (auto color = t->getDict(kFullColorOptionsKey))
            WriteTPIFFullColor(sink, color);
        WriteTPIFOPISubsitution(sink, t);
        WriteTPIFOPIPreScan(sink, t);
        WriteTPIFAntiAliasing(sink, t);
        WriteTPIFHalftone(sink, t);
        WriteTPIFLightenDarken(sink, t);
        WriteTPIFTonerSaver(sink, t);
        WriteTPIFOutputOrder(sink, t);
        WriteTPIFPrinterEmulation(sink, t);
        WriteTPIFImageRotation(sink, t);
        WriteTPIFOutputColor(sink, t);
        WriteTPIFBackgroundForms(sink, t);
        WriteTPIFAccounting(sink, t);
        WriteTPIFPagesToPrint(sink, t);
        WriteTPifJobAttribEnd(sink);
        WriteTPifTrailer(sink);
        return;
    }
    const bool covers = options->contains("TPIFOptionCovers");
    const bool inserts = options->contains("TPIFOptionInserts");
    const bool exceptions = options->contains("TPIFOptionExceptions");
    const bool any = (covers && (has(t, kSpecialPagesFrontCoverKey) || has(t, kSpecialPagesBackCoverKey))) ||
                     (inserts && has(t, kSpecialPagesInsertListKey)) ||
                     (exceptions && has(t, kSpecialPagesExceptionListKey));
    if (!any)
        return;
    WriteTPifHeader(sink, 5);
    WriteTPifJobAttribStart(sink);
    if (covers) {
        WriteTPIFFrontCover(sink, t);
        WriteTPIFBackCover(sink, t);
    }
    if (inserts)
        WriteTPIFInserts(sink, t);
    if (exceptions)
        WriteTPIFExceptions(sink, t);
    WriteTPifJobAttribEnd(sink);
    WriteTPifTrailer(sink);
}

void WriteTPIF(FILE* stream, const pl::DictPtr& settingsTicket)
{
    tpif_ofp = stream;
    static const writeData sink = {nullptr, DevWriteTpif};
    WriteTPIFToSink(&sink, settingsTicket);
}

} // namespace talmo
