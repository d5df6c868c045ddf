// Full colour options: colour adjustments, trapping, black overprint and colour management of
// a job or of one exception page range, with their dictionary form and summary.
#pragma once

#include "settings/settings.h"
#include "ticket/summary-labels.h"

#include <cstdint>
#include <optional>
#include <string>

namespace talmo {

// The "Custom..." kinds of the profile tables: a profile of that kind carries a name.
inline constexpr int32_t kRGBProfileCustom = 5;
inline constexpr int32_t kCMYKProfileCustom = 3;
inline constexpr int32_t kDestinationProfileCustom = 2;
// Longest custom profile name, in UTF-16 code units.
inline constexpr int32_t kMaxProfileNameLength = 255;

// Every numeric field holds kNotSet for printer default. Getters return paramErr for a null
// output; setters return paramErr for a value they refuse and then leave the field as it was.
class FullColorOptions {
public:
    using Name = std::optional<std::string>;

    FullColorOptions() = default;
    // Defaults, then fromTicket.
    explicit FullColorOptions(const pl::DictPtr& dict);

    // -100..100 or kNotSet.
    OSStatus lightness(int32_t* value) const;
    OSStatus setLightness(int32_t value);
    OSStatus contrast(int32_t* value) const;
    OSStatus setContrast(int32_t value);
    OSStatus saturation(int32_t* value) const;
    OSStatus setSaturation(int32_t value);

    // Fills whichever outputs are given; paramErr only when none is. The setter stores all
    // three or, when any is outside -100..100 (kNotSet aside), none.
    OSStatus colorCast(int32_t* cyanRed, int32_t* magentaGreen, int32_t* yellowBlue) const;
    OSStatus setColorCast(int32_t cyanRed, int32_t magentaGreen, int32_t yellowBlue);

    OSStatus trapping(int32_t* value) const;
    OSStatus setTrapping(int32_t value);
    // Slow direction first (shown as width), then fast (shown as height); 0..20 or kNotSet,
    // both stored or neither.
    OSStatus trappingAdjustment(int32_t* slow, int32_t* fast) const;
    OSStatus setTrappingAdjustment(int32_t slow, int32_t fast);

    OSStatus blackOverprint(int32_t* value) const;
    OSStatus setBlackOverprint(int32_t value);

    OSStatus trc(Name* name) const;
    OSStatus setTRC(Name name);

    // A profile is a kind from its table; the custom kind needs a name of at most
    // kMaxProfileNameLength UTF-16 units, which is kept only for that kind. The name output is
    // written only when the kind is custom.
    OSStatus rgbImagesProfile(int32_t* kind, Name* name) const;
    OSStatus setRGBImagesProfile(int32_t kind, Name name);
    OSStatus rgbTextAndGraphicsProfile(int32_t* kind, Name* name) const;
    OSStatus setRGBTextAndGraphicsProfile(int32_t kind, Name name);
    OSStatus cmykImagesProfile(int32_t* kind, Name* name) const;
    OSStatus setCMYKImagesProfile(int32_t kind, Name name);
    OSStatus cmykTextAndGraphicsProfile(int32_t* kind, Name* name) const;
    OSStatus setCMYKTextAndGraphicsProfile(int32_t kind, Name name);
    OSStatus destinationProfile(int32_t* kind, Name* name) const;
    OSStatus setDestinationProfile(int32_t kind, Name name);

    // Gray profiles are only ever custom: a name, or none for printer default.
    OSStatus grayImagesProfile(Name* name) const;
    OSStatus setGrayImagesProfile(Name name);
    OSStatus grayTextAndGraphicsProfile(Name* name) const;
    OSStatus setGrayTextAndGraphicsProfile(Name name);

    OSStatus imageObjectRendering(int32_t* value) const;
    OSStatus setImageObjectRendering(int32_t value);
    OSStatus textObjectRendering(int32_t* value) const;
    OSStatus setTextObjectRendering(int32_t value);
    OSStatus graphicObjectRendering(int32_t* value) const;
    OSStatus setGraphicObjectRendering(int32_t value);

    // The dictionary form: only set values are written; a colour cast only when all three
    // values are set, the trap sizes only while trapping is on.
    pl::DictPtr asTicket() const;
    // Reads the same keys through the setters, so refused or wrong-typed values leave their
    // fields as they were. A null dictionary changes nothing.
    void fromTicket(const pl::DictPtr& dict);

    friend bool operator==(const FullColorOptions&, const FullColorOptions&) = default;

private:
    struct Profile {
        int32_t kind = kNotSet;
        Name name;
        friend bool operator==(const Profile&, const Profile&) = default;
    };
    static OSStatus getProfile(const Profile& p, int32_t custom, int32_t* kind, Name* name);
    static OSStatus setProfile(Profile& p, int32_t custom, int32_t kind, Name name);

    int32_t lightness_ = kNotSet;
    int32_t contrast_ = kNotSet;
    int32_t saturation_ = kNotSet;
    int32_t cyanRed_ = kNotSet;
    int32_t magentaGreen_ = kNotSet;
    int32_t yellowBlue_ = kNotSet;
    int32_t trapping_ = kNotSet;
    int32_t trappingFast_ = kNotSet;
    int32_t trappingSlow_ = kNotSet;
    int32_t blackOverprint_ = kNotSet;
    Name trc_;
    Profile rgbImages_;
    Profile rgbTextAndGraphics_;
    Profile cmykImages_;
    Profile cmykTextAndGraphics_;
    Name grayImages_;
    Name grayTextAndGraphics_;
    Profile destination_;
    int32_t imageObjectRendering_ = kNotSet;
    int32_t textObjectRendering_ = kNotSet;
    int32_t graphicObjectRendering_ = kNotSet;
};

// True when `name` is valid UTF-8 of at most kMaxProfileNameLength UTF-16 code units.
bool IsValidProfileName(std::string_view name);

// One line per set value, in the fixed order, joined with `separator`; empty when nothing is
// set. Labels go through `localize`.
std::string GenerateFullColorSummary(const FullColorOptions& options, int32_t context, std::string_view separator,
                                     const LabelLookup& localize);
// The text a summary view shows: the summary joined with line breaks, or "UseJobSetting"
// (page level) / "PrinterDefault" (job level) when it is empty. paramErr without an output.
OSStatus ShowFullColorSummary(const FullColorOptions& options, int32_t context, const LabelLookup& localize,
                              std::string* shown);

} // namespace talmo
