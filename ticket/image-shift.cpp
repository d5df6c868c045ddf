#include "ticket/image-shift.h"

#include "ticket/record-read_p.h"

namespace talmo {

using internal::getInt32;
using internal::saturateInt32;

namespace {

// Integer conversions between hundredths of an inch and hundredths of a millimetre (one inch
// is exactly 2540 of the latter). Doing them in integers keeps every multiple of 0.05 in
// exact; 25.4 as a double would turn 127 / 25.4 into 4.999... and lose a step on reading.
int32_t inchHundredthsToMmHundredthsRounded(int32_t v)
{
    const int64_t scaled = int64_t(v) * 254;
    return saturateInt32((scaled + (scaled < 0 ? -5 : 5)) / 10);
}

int32_t mmHundredthsToInchHundredthsTruncated(int32_t v) { return static_cast<int32_t>(int64_t(v) * 10 / 254); }

int32_t negate(int32_t v) { return v == INT32_MIN ? INT32_MAX : -v; }

// A localized decimal number showing `value` with `decimals` implied decimals; plain
// "-12.34" digits when no locale is usable.
std::string formatImpliedDecimals(int32_t value, int decimals)
{
    if (auto text = CreateLocalizedCFStringFromNumberWithDecimals(value, decimals))
        return *text;
    const int64_t magnitude = value < 0 ? -int64_t(value) : int64_t(value);
    int64_t scale = 1;
    for (int i = 0; i < decimals; ++i)
        scale *= 10;
    std::string fraction = std::to_string(magnitude % scale);
    fraction.insert(0, size_t(decimals) - fraction.size(), '0');
    return (value < 0 ? "-" : "") + std::to_string(magnitude / scale) + (decimals ? "." + fraction : "");
}

} // namespace

OSStatus ImageShiftInitialize(_IS_Options* options)
{
    if (!options)
        return paramErr;
    *options = _IS_Options{};
    return noErr;
}

OSStatus ImageShiftSetOptionsFromTicket(_IS_Options* options, const pl::DictPtr& dict)
{
    if (!options)
        return paramErr;
    static const pl::Dictionary kEmpty;
    const pl::Dictionary& d = dict ? *dict : kEmpty;

    options->option = getInt32(d, "Option").value_or(kNotSet);
    const auto inches = getInt32(d, "Inches");
    options->inches = !inches ? 1 : (*inches > 0 ? 1 : 0);
    options->x1 = getInt32(d, "X1").value_or(0);
    options->y1 = getInt32(d, "Y1").value_or(0);
    options->x2 = getInt32(d, "X2").value_or(0);
    options->y2 = getInt32(d, "Y2").value_or(0);

    // Older tickets stored the record's own units; only full-precision ones need converting.
    if (d.getBool("FullPrecision").value_or(false)) {
        for (int32_t* v : {&options->x1, &options->y1, &options->x2, &options->y2})
            *v = options->inches ? mmHundredthsToInchHundredthsTruncated(*v) : *v / 10;
    }
    options->valid = 1;
    return noErr;
}

pl::DictPtr ImageShiftCreateTicketFromOptions(const _IS_Options* options, int32_t /*context*/)
{
    if (!options || options->valid == 0 || options->option == kNotSet)
        return nullptr;
    // Rounds on the way out while reading truncates: stored tickets depend on this pairing.
    auto toStored = [&](int32_t v) {
        return options->inches ? inchHundredthsToMmHundredthsRounded(v) : saturateInt32(int64_t(v) * 10);
    };
    auto d = pl::makeDict();
    d->setInt("Option", options->option);
    d->setInt("Inches", options->inches ? 1 : 0);
    d->setBool("FullPrecision", true);
    d->setInt("X1", toStored(options->x1));
    d->setInt("Y1", toStored(options->y1));
    d->setInt("X2", toStored(options->x2));
    d->setInt("Y2", toStored(options->y2));
    return d;
}

void DefaultImageShift(_IS_Options& o)
{
    o.valid = 1;
    o.stockSize = kNotSet;
    o.option = kNotSet;
    o.inches = 1;
    o.x1 = o.x2 = o.y1 = o.y2 = 0;
}

ImageShiftSide2 ImageShiftSide2Rule(int32_t mode, int32_t duplex, int32_t x1, int32_t y1, int32_t x2, int32_t y2)
{
    ImageShiftSide2 r{x2, y2, true, false, false};
    switch (mode) {
    case kImageShiftIndependent:
        r.x2Editable = r.y2Editable = duplex != 1;
        break;
    case kImageShiftMirrorBothLegacy:
    case kImageShiftMirrorBoth:
        r.x2 = negate(x1);
        r.y2 = negate(y1);
        break;
    case kImageShiftMirrorX:
        r.x2 = negate(x1);
        r.y2Editable = true;
        break;
    case kImageShiftMirrorY:
        r.y2 = negate(y1);
        r.x2Editable = true;
        break;
    case kImageShiftMirrorXTandemY:
        r.x2 = negate(x1);
        r.y2 = y1;
        break;
    case kImageShiftMirrorYTandemX:
        r.x2 = x1;
        r.y2 = negate(y1);
        break;
    case kImageShiftTandemX:
        r.x2 = x1;
        r.y2Editable = true;
        break;
    case kImageShiftTandemY:
        r.y2 = y1;
        r.x2Editable = true;
        break;
    case kImageShiftTandemBoth:
        r.x2 = x1;
        r.y2 = y1;
        break;
    default: // unset, or a mode this version does not know
        r.x1Editable = false;
        break;
    }
    return r;
}

void ApplyImageShiftOption(_IS_Options& o)
{
    const ImageShiftSide2 r = ImageShiftSide2Rule(o.option, o.duplex, o.x1, o.y1, o.x2, o.y2);
    o.x2 = r.x2;
    o.y2 = r.y2;
}

ImageShiftRange ImageShiftXRange(bool inches)
{
    return inches ? ImageShiftRange{-1921, 1921, 2} : ImageShiftRange{-4880, 4880, 1};
}

ImageShiftRange ImageShiftYRange(bool inches)
{
    return inches ? ImageShiftRange{-1299, 1299, 2} : ImageShiftRange{-3300, 3300, 1};
}

int32_t ImageShiftConvertUnit(int32_t value, bool toInches)
{
    // value / 2.54 = value * 50 / 127; value * 2.54 = value * 127 / 50; half away from zero.
    const int64_t num = int64_t(value) * (toInches ? 50 : 127);
    const int64_t den = toInches ? 127 : 50;
    return saturateInt32(num >= 0 ? (num + den / 2) / den : -((-num + den / 2) / den));
}

void ImageShiftSwitchUnits(_IS_Options& o, bool inches)
{
    if ((o.inches != 0) == inches)
        return;
    const ImageShiftRange xr = ImageShiftXRange(inches), yr = ImageShiftYRange(inches);
    auto conv = [&](int32_t v, const ImageShiftRange& r) {
        const int32_t c = ImageShiftConvertUnit(v, inches);
        return c < r.min ? r.min : c > r.max ? r.max : c;
    };
    o.x1 = conv(o.x1, xr);
    o.x2 = conv(o.x2, xr);
    o.y1 = conv(o.y1, yr);
    o.y2 = conv(o.y2, yr);
    o.inches = inches ? 1 : 0;
    ApplyImageShiftOption(o);
}

std::string GenerateImageShiftSummary(const _IS_Options& o, int32_t context, const LabelLookup& localize)
{
    auto L = [&](std::string_view key) { return localize ? localize(key) : std::string(key); };
    if (o.valid == 0 || o.option == kNotSet)
        return L(context != 0 ? "UseJobSetting" : "PrinterDefault");

    const int decimals = o.inches ? 2 : 1;
    const std::string unit = L(o.inches ? "Inch abbreviation" : "Millimeter abbreviation");
    const std::string colon = L(":");
    auto side = [&](std::string_view label, int32_t x, int32_t y) {
        return L(label) + " X" + colon + formatImpliedDecimals(x, decimals) + " " + unit + ", Y" + colon +
               formatImpliedDecimals(y, decimals) + " " + unit;
    };
    return side("Side 1:", o.x1, o.y1) + "\n" + side("Side 2:", o.x2, o.y2);
}

OSStatus ImageShiftSync(_IS_Options* options, int direction, Ticket* ticket)
{
    if (!options || !ticket)
        return paramErr;
    if (direction == kImageShiftSyncToTicket) {
        if (auto d = ImageShiftCreateTicketFromOptions(options, 0))
            return ticket->set(kImageShiftOptionsJobKey, d, kImageShiftTicketCreator);
        return noErr;
    }
    if (direction != kImageShiftSyncFromTicket)
        return paramErr;

    ImageShiftSetOptionsFromTicket(options, pl::as<pl::Dictionary>(ticket->get(kImageShiftOptionsJobKey)));
    if (ticket->contains(kJobLevelStockKey)) {
        // A stock dictionary without a size (or not a dictionary at all) is the default stock,
        // whose size is unset.
        auto stock = pl::as<pl::Dictionary>(ticket->get(kJobLevelStockKey));
        options->stockSize = stock ? getInt32(*stock, "Size").value_or(kNotSet) : kNotSet;
    }
    if (auto duplex = ticket->get(kFinishingDuplexKey)) {
        pl::Dictionary item; // the record readers' typed, range-checked read
        item.set(kFinishingDuplexKey, duplex);
        if (auto value = getInt32(item, kFinishingDuplexKey))
            options->duplex = *value;
    }
    return noErr;
}

} // namespace talmo
