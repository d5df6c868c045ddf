#include "ticket/full-color.h"

#include "ticket/record-read_p.h"

#include <unicode/ustring.h>

#include <initializer_list>
#include <vector>

namespace talmo {

using internal::getInt32;

namespace {

bool inAdjustmentRange(int32_t v) { return v == kNotSet || (v >= -100 && v <= 100); }

// Compared unsigned, as the trap size controls do: every negative value but kNotSet is refused.
bool inTrapRange(int32_t v) { return v == kNotSet || uint32_t(v) <= 20u; }

OSStatus setChecked(int32_t& field, int32_t value)
{
    if (!inAdjustmentRange(value))
        return paramErr;
    field = value;
    return noErr;
}

OSStatus get(int32_t field, int32_t* out)
{
    if (!out)
        return paramErr;
    *out = field;
    return noErr;
}

OSStatus getName(const std::optional<std::string>& field, std::optional<std::string>* out)
{
    if (!out)
        return paramErr;
    *out = field;
    return noErr;
}

} // namespace

bool IsValidProfileName(std::string_view name)
{
    // Every UTF-16 unit takes at least one and at most three UTF-8 bytes (a four-byte sequence
    // makes two units), so a longer text cannot fit and a shorter one cannot overflow ICU's
    // 32-bit lengths.
    if (name.size() > size_t(kMaxProfileNameLength) * 3)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    int32_t units = 0;
    u_strFromUTF8(nullptr, 0, &units, name.data(), int32_t(name.size()), &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status))
        return false; // malformed UTF-8
    return units <= kMaxProfileNameLength;
}

FullColorOptions::FullColorOptions(const pl::DictPtr& dict) { fromTicket(dict); }

OSStatus FullColorOptions::lightness(int32_t* value) const { return get(lightness_, value); }
OSStatus FullColorOptions::setLightness(int32_t value) { return setChecked(lightness_, value); }
OSStatus FullColorOptions::contrast(int32_t* value) const { return get(contrast_, value); }
OSStatus FullColorOptions::setContrast(int32_t value) { return setChecked(contrast_, value); }
OSStatus FullColorOptions::saturation(int32_t* value) const { return get(saturation_, value); }
OSStatus FullColorOptions::setSaturation(int32_t value) { return setChecked(saturation_, value); }

OSStatus FullColorOptions::colorCast(int32_t* cyanRed, int32_t* magentaGreen, int32_t* yellowBlue) const
{
    if (!cyanRed && !magentaGreen && !yellowBlue)
        return paramErr;
    if (cyanRed)
        *cyanRed = cyanRed_;
    if (magentaGreen)
        *magentaGreen = magentaGreen_;
    if (yellowBlue)
        *yellowBlue = yellowBlue_;
    return noErr;
}

OSStatus FullColorOptions::setColorCast(int32_t cyanRed, int32_t magentaGreen, int32_t yellowBlue)
{
    if (!inAdjustmentRange(cyanRed) || !inAdjustmentRange(magentaGreen) || !inAdjustmentRange(yellowBlue))
        return paramErr;
    cyanRed_ = cyanRed;
    magentaGreen_ = magentaGreen;
    yellowBlue_ = yellowBlue;
    return noErr;
}

OSStatus FullColorOptions::trapping(int32_t* value) const { return get(trapping_, value); }

OSStatus FullColorOptions::setTrapping(int32_t value)
{
    trapping_ = value;
    return noErr;
}

OSStatus FullColorOptions::trappingAdjustment(int32_t* slow, int32_t* fast) const
{
    if (!slow || !fast)
        return paramErr;
    *slow = trappingSlow_;
    *fast = trappingFast_;
    return noErr;
}

OSStatus FullColorOptions::setTrappingAdjustment(int32_t slow, int32_t fast)
{
    if (!inTrapRange(slow) || !inTrapRange(fast))
        return paramErr;
    trappingSlow_ = slow;
    trappingFast_ = fast;
    return noErr;
}

OSStatus FullColorOptions::blackOverprint(int32_t* value) const { return get(blackOverprint_, value); }

OSStatus FullColorOptions::setBlackOverprint(int32_t value)
{
    blackOverprint_ = value;
    return noErr;
}

OSStatus FullColorOptions::trc(Name* name) const { return getName(trc_, name); }

OSStatus FullColorOptions::setTRC(Name name)
{
    trc_ = std::move(name);
    return noErr;
}

OSStatus FullColorOptions::getProfile(const Profile& p, int32_t custom, int32_t* kind, Name* name)
{
    if (!kind || (p.kind == custom && !name))
        return paramErr;
    *kind = p.kind;
    if (p.kind == custom)
        *name = p.name;
    return noErr;
}

OSStatus FullColorOptions::setProfile(Profile& p, int32_t custom, int32_t kind, Name name)
{
    if (kind == custom && (!name || !IsValidProfileName(*name)))
        return paramErr;
    p.kind = kind;
    p.name = kind == custom ? std::move(name) : std::nullopt;
    return noErr;
}

OSStatus FullColorOptions::rgbImagesProfile(int32_t* kind, Name* name) const
{
    return getProfile(rgbImages_, kRGBProfileCustom, kind, name);
}
OSStatus FullColorOptions::setRGBImagesProfile(int32_t kind, Name name)
{
    return setProfile(rgbImages_, kRGBProfileCustom, kind, std::move(name));
}
OSStatus FullColorOptions::rgbTextAndGraphicsProfile(int32_t* kind, Name* name) const
{
    return getProfile(rgbTextAndGraphics_, kRGBProfileCustom, kind, name);
}
OSStatus FullColorOptions::setRGBTextAndGraphicsProfile(int32_t kind, Name name)
{
    return setProfile(rgbTextAndGraphics_, kRGBProfileCustom, kind, std::move(name));
}
OSStatus FullColorOptions::cmykImagesProfile(int32_t* kind, Name* name) const
{
    return getProfile(cmykImages_, kCMYKProfileCustom, kind, name);
}
OSStatus FullColorOptions::setCMYKImagesProfile(int32_t kind, Name name)
{
    return setProfile(cmykImages_, kCMYKProfileCustom, kind, std::move(name));
}
OSStatus FullColorOptions::cmykTextAndGraphicsProfile(int32_t* kind, Name* name) const
{
    return getProfile(cmykTextAndGraphics_, kCMYKProfileCustom, kind, name);
}
OSStatus FullColorOptions::setCMYKTextAndGraphicsProfile(int32_t kind, Name name)
{
    return setProfile(cmykTextAndGraphics_, kCMYKProfileCustom, kind, std::move(name));
}
OSStatus FullColorOptions::destinationProfile(int32_t* kind, Name* name) const
{
    return getProfile(destination_, kDestinationProfileCustom, kind, name);
}
OSStatus FullColorOptions::setDestinationProfile(int32_t kind, Name name)
{
    return setProfile(destination_, kDestinationProfileCustom, kind, std::move(name));
}

OSStatus FullColorOptions::grayImagesProfile(Name* name) const { return getName(grayImages_, name); }
OSStatus FullColorOptions::grayTextAndGraphicsProfile(Name* name) const { return getName(grayTextAndGraphics_, name); }

OSStatus FullColorOptions::setGrayImagesProfile(Name name)
{
    if (name && !IsValidProfileName(*name))
        return paramErr;
    grayImages_ = std::move(name);
    return noErr;
}

OSStatus FullColorOptions::setGrayTextAndGraphicsProfile(Name name)
{
    if (name && !IsValidProfileName(*name))
        return paramErr;
    grayTextAndGraphics_ = std::move(name);
    return noErr;
}

OSStatus FullColorOptions::imageObjectRendering(int32_t* value) const { return get(imageObjectRendering_, value); }
OSStatus FullColorOptions::textObjectRendering(int32_t* value) const { return get(textObjectRendering_, value); }
OSStatus FullColorOptions::graphicObjectRendering(int32_t* value) const { return get(graphicObjectRendering_, value); }

OSStatus FullColorOptions::setImageObjectRendering(int32_t value)
{
    imageObjectRendering_ = value;
    return noErr;
}
OSStatus FullColorOptions::setTextObjectRendering(int32_t value)
{
    textObjectRendering_ = value;
    return noErr;
}
OSStatus FullColorOptions::setGraphicObjectRendering(int32_t value)
{
    graphicObjectRendering_ = value;
    return noErr;
}

pl::DictPtr FullColorOptions::asTicket() const
{
    auto d = pl::makeDict();
    auto putNumber = [&](const char* key, int32_t v) {
        if (v != kNotSet)
            d->setInt(key, v);
    };
    auto putName = [&](const char* key, const Name& n) {
        if (n)
            d->setString(key, *n);
    };
    // The value's type carries the custom case: a string is the custom kind's name.
    auto putProfile = [&](const char* key, const Profile& p, int32_t custom) {
        if (p.kind == kNotSet)
            return;
        if (p.kind == custom)
            d->setString(key, p.name.value_or(std::string()));
        else
            d->setInt(key, p.kind);
    };

    putNumber("FCLightness", lightness_);
    putNumber("FCContrast", contrast_);
    putNumber("FCSaturation", saturation_);
    if (cyanRed_ != kNotSet && magentaGreen_ != kNotSet && yellowBlue_ != kNotSet) {
        auto cast = pl::makeDict();
        cast->setInt("FCCyanRed", cyanRed_);
        cast->setInt("FCMagentaGreen", magentaGreen_);
        cast->setInt("FCYellowBlue", yellowBlue_);
        d->set("FCColorCast", cast);
    }
    putNumber("FCTrapping", trapping_);
    if (trapping_ == 1) {
        putNumber("FCTrappingFastDirection", trappingFast_);
        putNumber("FCTrappingSlowDirection", trappingSlow_);
    }
    putNumber("FCBlackOverprint", blackOverprint_);
    putName("FCTRC", trc_);
    putProfile("RGBImagesProfile", rgbImages_, kRGBProfileCustom);
    putProfile("RGBTextAndGraphicsProfile", rgbTextAndGraphics_, kRGBProfileCustom);
    putProfile("CMYKImagesProfile", cmykImages_, kCMYKProfileCustom);
    putProfile("CMYKTextAndGraphicsProfile", cmykTextAndGraphics_, kCMYKProfileCustom);
    putName("GrayImagesProfile", grayImages_);
    putName("GrayTextAndGraphicsProfile", grayTextAndGraphics_);
    putProfile("DestinationProfile", destination_, kDestinationProfileCustom);
    putNumber("ImageRendering", imageObjectRendering_);
    putNumber("TextRendering", textObjectRendering_);
    putNumber("GraphicRendering", graphicObjectRendering_);
    return d;
}

void FullColorOptions::fromTicket(const pl::DictPtr& dict)
{
    if (!dict)
        return;
    const pl::Dictionary& d = *dict;
    auto readNumber = [&](const char* key, OSStatus (FullColorOptions::*setter)(int32_t)) {
        if (auto v = getInt32(d, key))
            (this->*setter)(*v);
    };
    auto readProfile = [&](const char* key, int32_t custom, OSStatus (FullColorOptions::*setter)(int32_t, Name)) {
        if (auto name = d.getString(key))
            (this->*setter)(custom, std::move(*name));
        else if (auto kind = getInt32(d, key))
            (this->*setter)(*kind, std::nullopt);
    };
    auto readName = [&](const char* key, OSStatus (FullColorOptions::*setter)(Name)) {
        if (auto name = d.getString(key))
            (this->*setter)(std::move(*name));
    };

    readNumber("FCLightness", &FullColorOptions::setLightness);
    readNumber("FCContrast", &FullColorOptions::setContrast);
    readNumber("FCSaturation", &FullColorOptions::setSaturation);
    // The cast is one setting: its values go in together, and a component that is missing or
    // of another type keeps the record's value.
    if (auto cast = d.getDict("FCColorCast")) {
        setColorCast(getInt32(*cast, "FCCyanRed").value_or(cyanRed_),
                     getInt32(*cast, "FCMagentaGreen").value_or(magentaGreen_),
                     getInt32(*cast, "FCYellowBlue").value_or(yellowBlue_));
    }
    if (auto trapping = getInt32(d, "FCTrapping")) {
        setTrapping(*trapping);
        setTrappingAdjustment(getInt32(d, "FCTrappingSlowDirection").value_or(trappingSlow_),
                              getInt32(d, "FCTrappingFastDirection").value_or(trappingFast_));
    }
    readNumber("FCBlackOverprint", &FullColorOptions::setBlackOverprint);
    readName("FCTRC", &FullColorOptions::setTRC);
    readProfile("RGBImagesProfile", kRGBProfileCustom, &FullColorOptions::setRGBImagesProfile);
    readProfile("RGBTextAndGraphicsProfile", kRGBProfileCustom, &FullColorOptions::setRGBTextAndGraphicsProfile);
    readProfile("CMYKImagesProfile", kCMYKProfileCustom, &FullColorOptions::setCMYKImagesProfile);
    readProfile("CMYKTextAndGraphicsProfile", kCMYKProfileCustom, &FullColorOptions::setCMYKTextAndGraphicsProfile);
    readName("GrayImagesProfile", &FullColorOptions::setGrayImagesProfile);
    readName("GrayTextAndGraphicsProfile", &FullColorOptions::setGrayTextAndGraphicsProfile);
    readProfile("DestinationProfile", kDestinationProfileCustom, &FullColorOptions::setDestinationProfile);
    readNumber("ImageRendering", &FullColorOptions::setImageObjectRendering);
    readNumber("TextRendering", &FullColorOptions::setTextObjectRendering);
    readNumber("GraphicRendering", &FullColorOptions::setGraphicObjectRendering);
}

std::string GenerateFullColorSummary(const FullColorOptions& o, int32_t /*context*/, std::string_view separator,
                                     const LabelLookup& localize)
{
    auto L = [&](std::string_view key) { return localize ? localize(key) : std::string(key); };
    // A value missing from its table shows as its number rather than as nothing.
    auto mapped = [&](const SettingMap* map, int32_t value) {
        const char* key = LocalizedKeyForTicketValue(map, value);
        return key ? L(key) : std::to_string(value);
    };
    std::vector<std::string> lines;
    auto number = [&](const char* label, int32_t v) {
        if (v != kNotSet)
            lines.push_back(L(label) + " " + std::to_string(v));
    };
    auto text = [&](const char* label, const std::string& t) { lines.push_back(L(label) + " " + t); };
    auto profile = [&](const char* label, int32_t kind, const FullColorOptions::Name& name, int32_t custom,
                       const SettingMap* map) {
        if (kind == kNotSet)
            return;
        text(label, kind == custom ? name.value_or(std::string()) : mapped(map, kind));
    };

    int32_t v = kNotSet, cr = kNotSet, mg = kNotSet, yb = kNotSet, slow = kNotSet, fast = kNotSet;
    FullColorOptions::Name name;
    o.lightness(&v);
    number("Lightness:", v);
    o.contrast(&v);
    number("Contrast:", v);
    o.saturation(&v);
    number("Saturation:", v);
    o.colorCast(&cr, &mg, &yb);
    if (cr != kNotSet && mg != kNotSet && yb != kNotSet) {
        number("Cyan-Red Color Cast:", cr);
        number("Magenta-Green Color Cast:", mg);
        number("Yellow-Blue Color Cast:", yb);
    }
    int32_t trapping = kNotSet;
    o.trapping(&trapping);
    if (trapping != kNotSet) {
        text("Trapping:", mapped(_TrappingMap, trapping));
        if (trapping == 1) {
            o.trappingAdjustment(&slow, &fast);
            number("Trapping Height:", fast);
            number("Trapping Width:", slow);
        }
    }
    o.blackOverprint(&v);
    if (v != kNotSet)
        text("Black Overprint:", mapped(_BlackOverprintMap, v));

    struct ProfileLine {
        const char* label;
        OSStatus (FullColorOptions::*get)(int32_t*, FullColorOptions::Name*) const;
        int32_t custom;
        const SettingMap* map;
    };
    const ProfileLine sources[] = {
        {"RGB Color Space Images Profile:", &FullColorOptions::rgbImagesProfile, kRGBProfileCustom,
         _RGBSourceProfileMap},
        {"RGB Color Space Text and Graphics Profile:", &FullColorOptions::rgbTextAndGraphicsProfile, kRGBProfileCustom,
         _RGBSourceProfileMap},
        {"CMYK Color Space Images Profile:", &FullColorOptions::cmykImagesProfile, kCMYKProfileCustom,
         _CMYKSourceProfileMap},
        {"CMYK Color Space Text and Graphics Profile:", &FullColorOptions::cmykTextAndGraphicsProfile,
         kCMYKProfileCustom, _CMYKSourceProfileMap},
    };
    for (const auto& p : sources) {
        int32_t kind = kNotSet;
        name.reset();
        (o.*p.get)(&kind, &name);
        profile(p.label, kind, name, p.custom, p.map);
    }
    name.reset();
    o.grayImagesProfile(&name);
    if (name)
        text("Gray Color Space Images Profile:", *name);
    name.reset();
    o.grayTextAndGraphicsProfile(&name);
    if (name)
        text("Gray Color Space Text and Graphics Profile:", *name);
    {
        int32_t kind = kNotSet;
        name.reset();
        o.destinationProfile(&kind, &name);
        profile("Destination Profile:", kind, name, kDestinationProfileCustom, _DestinationProfileMap);
    }
    o.imageObjectRendering(&v);
    if (v != kNotSet)
        text("Rendering Images Label", mapped(_ObjectRenderingMap, v));
    o.textObjectRendering(&v);
    if (v != kNotSet)
        text("Rendering Text Label", mapped(_ObjectRenderingMap, v));
    o.graphicObjectRendering(&v);
    if (v != kNotSet)
        text("Rendering Graphics Label", mapped(_ObjectRenderingMap, v));

    std::string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i)
            out += separator;
        out += lines[i];
    }
    return out;
}

OSStatus ShowFullColorSummary(const FullColorOptions& options, int32_t context, const LabelLookup& localize,
                              std::string* shown)
{
    if (!shown)
        return paramErr;
    std::string summary = GenerateFullColorSummary(options, context, "\n", localize);
    if (summary.empty())
        summary = localize ? localize(context != 0 ? "UseJobSetting" : "PrinterDefault")
                           : std::string(context != 0 ? "UseJobSetting" : "PrinterDefault");
    *shown = std::move(summary);
    return noErr;
}

} // namespace talmo
