#include "panels/dialogs/full-color-dialog.h"

#include "toolkit/toolkit.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>

#include <array>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("FCol");
constexpr int32_t kTrappingID = 20;
constexpr int32_t kBlackOverprintID = 25;
constexpr int32_t kTRCID = 26;
constexpr int32_t kFirstProfileID = 30;
constexpr int32_t kFirstRenderingID = 40;
constexpr int32_t kLinkRenderingID = 43;
constexpr int32_t kRevertID = 90;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;
constexpr int32_t kTrappingOn = 1;
constexpr int32_t kTRCHistoryLimit = 10;
// The same history as the Image Options panel's tone curve box.
constexpr const char* kTRCHistoryKey = "TRCInputHistory";

// A value with a printer-default box: a slider with its spin field, or a spin field alone.
struct DefaultableValue {
    QCheckBox* box = nullptr;
    QSlider* slider = nullptr;
    QSpinBox* spin = nullptr;
};

// A profile pop-up; `custom` is its "Custom..." value, `name` the name that row stands for.
struct ProfilePopup {
    QComboBox* popup = nullptr;
    const SettingMap* map = nullptr;
    int32_t custom = 0;
    int32_t shown = kNotSet; // the selection before the last choice, for a cancelled name
    FullColorOptions::Name name;
};

enum Profile { kRGBImages, kRGBText, kCMYKImages, kCMYKText, kGrayImages, kGrayText, kDestination, kProfileCount };
constexpr int32_t kGrayCustom = 1; // the gray menu's only row besides printer default

struct FullColorDialog {
    const Bundle* bundle = nullptr;
    QDialog* dialog = nullptr;
    std::array<DefaultableValue, 3> adjustments; // lightness, contrast, saturation
    QCheckBox* castBox = nullptr;
    std::array<DefaultableValue, 3> cast; // their boxes are castBox
    QComboBox* trapping = nullptr;
    DefaultableValue trapWidth;  // slow direction
    DefaultableValue trapHeight; // fast direction
    QComboBox* blackOverprint = nullptr;
    HistoryComboBox* trc = nullptr;
    std::array<ProfilePopup, kProfileCount> profiles;
    std::array<QComboBox*, 3> rendering{};
    QCheckBox* linkRendering = nullptr;
};

bool findValue(QDialog* dialog, int32_t boxID, int32_t sliderID, int32_t spinID, DefaultableValue& value)
{
    value.box = boxID ? GetControlByID<QCheckBox>(dialog, {kSignature, boxID}) : nullptr;
    value.slider = sliderID ? GetControlByID<QSlider>(dialog, {kSignature, sliderID}) : nullptr;
    value.spin = GetControlByID<QSpinBox>(dialog, {kSignature, spinID});
    return (!boxID || value.box) && (!sliderID || value.slider) && value.spin;
}

void enableValue(const DefaultableValue& value, bool enabled)
{
    if (value.slider)
        value.slider->setEnabled(enabled);
    value.spin->setEnabled(enabled);
}

void showValue(const DefaultableValue& value, int32_t number) { value.spin->setValue(number == kNotSet ? 0 : number); }

int32_t valueOf(const DefaultableValue& value, const QCheckBox* box)
{
    return box->isChecked() ? kNotSet : value.spin->value();
}

void enableTrapping(FullColorDialog& d)
{
    const bool on = GetPopupButtonTicketValue(d.trapping) == kTrappingOn;
    const QString why = on ? QString() : LocalizedText(*d.bundle, "Trap Size Off Tooltip");
    for (const DefaultableValue* size : {&d.trapWidth, &d.trapHeight}) {
        size->box->setEnabled(on);
        size->box->setToolTip(why);
        size->spin->setToolTip(why);
        enableValue(*size, on && !size->box->isChecked());
    }
}

void showPopup(QComboBox* popup, int32_t value)
{
    if (!SetPopupButtonToTicketValue(popup, value))
        popup->setCurrentIndex(0);
}

// The menu row says only "Custom..."; the name shows as the pop-up's tool tip.
void showProfileName(const ProfilePopup& p)
{
    p.popup->setToolTip(p.name ? QString::fromStdString(*p.name) : QString());
}

void showProfile(ProfilePopup& p, int32_t kind, FullColorOptions::Name name)
{
    p.name = kind == p.custom ? std::move(name) : std::nullopt;
    showPopup(p.popup, kind);
    p.shown = GetPopupButtonTicketValue(p.popup);
    showProfileName(p);
}

// Asks for a profile name in the custom value window; the field takes any text, and OK closes
// only with a name the record accepts.
std::optional<std::string> AskProfileName(const Bundle& bundle, const FullColorOptions::Name& start, QWidget* parent)
{
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window = CreateWindowFromDescription(bundle, "Utilities", "CustomValue", parent, &status);
    auto* dialog = qobject_cast<QDialog*>(window.get());
    auto* field = GetControlByID<QLineEdit>(dialog, {kCustomValueSignature, kCustomValueFieldID});
    auto* ok = GetControlByID<QPushButton>(dialog, {kCustomValueSignature, kCustomValueOKID});
    auto* cancel = GetControlByID<QPushButton>(dialog, {kCustomValueSignature, kCustomValueCancelID});
    if (!field || !ok || !cancel)
        return std::nullopt;
    SetLocalizedWindowTitle(bundle, "Profile Name Title", dialog);
    SetLocalizedStaticText(bundle, "Profile Name Prompt",
                           GetControlByID(dialog, {kCustomValueSignature, kCustomValuePromptID}));
    SetLocalizedStaticText(bundle, "Profile Name Range",
                           GetControlByID(dialog, {kCustomValueSignature, kCustomValueRangeID}),
                           {kMaxProfileNameLength});
    SetLocalizedControlTitle(bundle, "OK", ok);
    SetLocalizedControlTitle(bundle, "Cancel", cancel);
    field->setMinimumWidth(field->fontMetrics().averageCharWidth() * 32);
    field->setText(QString::fromStdString(start.value_or(std::string())));
    field->selectAll();
    ok->setDefault(true);
    QObject::connect(ok, &QPushButton::clicked, dialog, [dialog, field] {
        const std::string name = field->text().toStdString();
        if (!name.empty() && IsValidProfileName(name)) {
            dialog->accept();
            return;
        }
        QApplication::beep();
        field->selectAll();
        field->setFocus();
    });
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    if (dialog->exec() != QDialog::Accepted)
        return std::nullopt;
    return field->text().toStdString();
}

void chooseProfile(FullColorDialog& d, ProfilePopup& p)
{
    const int32_t kind = GetPopupButtonTicketValue(p.popup);
    if (kind != p.custom) {
        p.name.reset();
        p.shown = kind;
    } else if (auto name = AskProfileName(*d.bundle, p.name, d.dialog)) {
        p.name = std::move(name);
        p.shown = kind;
    } else {
        showPopup(p.popup, p.shown);
    }
    showProfileName(p);
}

void chooseRendering(FullColorDialog& d, QComboBox* chosen)
{
    if (!d.linkRendering->isChecked())
        return;
    const int32_t intent = GetPopupButtonTicketValue(chosen);
    for (QComboBox* popup : d.rendering)
        showPopup(popup, intent);
}

void showOptions(FullColorDialog& d, const FullColorOptions& o)
{
    int32_t values[3];
    o.lightness(&values[0]);
    o.contrast(&values[1]);
    o.saturation(&values[2]);
    for (int i = 0; i < 3; ++i) {
        showValue(d.adjustments[i], values[i]);
        d.adjustments[i].box->setChecked(values[i] == kNotSet);
    }
    o.colorCast(&values[0], &values[1], &values[2]);
    for (int i = 0; i < 3; ++i)
        showValue(d.cast[i], values[i]);
    // One box stands for all three: the cast is the default only when no value is set.
    d.castBox->setChecked(values[0] == kNotSet && values[1] == kNotSet && values[2] == kNotSet);

    int32_t value = kNotSet;
    o.trapping(&value);
    showPopup(d.trapping, value);
    int32_t slow = kNotSet;
    int32_t fast = kNotSet;
    o.trappingAdjustment(&slow, &fast);
    showValue(d.trapWidth, slow);
    d.trapWidth.box->setChecked(slow == kNotSet);
    showValue(d.trapHeight, fast);
    d.trapHeight.box->setChecked(fast == kNotSet);
    o.blackOverprint(&value);
    showPopup(d.blackOverprint, value);
    FullColorOptions::Name name;
    o.trc(&name);
    d.trc->setCurrentIndex(0);
    if (name)
        d.trc->setText(QString::fromStdString(*name));

    using Getter = OSStatus (FullColorOptions::*)(int32_t*, FullColorOptions::Name*) const;
    const std::array<std::pair<Profile, Getter>, 5> kinds{{
        {kRGBImages, &FullColorOptions::rgbImagesProfile},
        {kRGBText, &FullColorOptions::rgbTextAndGraphicsProfile},
        {kCMYKImages, &FullColorOptions::cmykImagesProfile},
        {kCMYKText, &FullColorOptions::cmykTextAndGraphicsProfile},
        {kDestination, &FullColorOptions::destinationProfile},
    }};
    for (const auto& [profile, get] : kinds) {
        name.reset();
        (o.*get)(&value, &name);
        showProfile(d.profiles[profile], value, name);
    }
    o.grayImagesProfile(&name);
    showProfile(d.profiles[kGrayImages], name ? kGrayCustom : kNotSet, name);
    o.grayTextAndGraphicsProfile(&name);
    showProfile(d.profiles[kGrayText], name ? kGrayCustom : kNotSet, name);

    int32_t intents[3];
    o.imageObjectRendering(&intents[0]);
    o.textObjectRendering(&intents[1]);
    o.graphicObjectRendering(&intents[2]);
    for (int i = 0; i < 3; ++i)
        showPopup(d.rendering[i], intents[i]);
    d.linkRendering->setChecked(intents[0] == intents[1] && intents[1] == intents[2]);

    for (int i = 0; i < 3; ++i)
        enableValue(d.adjustments[i], !d.adjustments[i].box->isChecked());
    for (const DefaultableValue& v : d.cast)
        enableValue(v, !d.castBox->isChecked());
    enableTrapping(d);
}

// The controls into `o`; every value shown is one the setters accept.
void retrieveOptions(const FullColorDialog& d, FullColorOptions& o)
{
    o.setLightness(valueOf(d.adjustments[0], d.adjustments[0].box));
    o.setContrast(valueOf(d.adjustments[1], d.adjustments[1].box));
    o.setSaturation(valueOf(d.adjustments[2], d.adjustments[2].box));
    o.setColorCast(valueOf(d.cast[0], d.castBox), valueOf(d.cast[1], d.castBox), valueOf(d.cast[2], d.castBox));
    o.setTrapping(GetPopupButtonTicketValue(d.trapping));
    o.setTrappingAdjustment(valueOf(d.trapWidth, d.trapWidth.box), valueOf(d.trapHeight, d.trapHeight.box));
    o.setBlackOverprint(GetPopupButtonTicketValue(d.blackOverprint));
    const HistoryComboBox::Value trc = d.trc->value();
    if (const QString* text = std::get_if<QString>(&trc))
        o.setTRC(text->toStdString());
    else
        o.setTRC(std::nullopt);

    const auto kind = [&d](Profile p) { return GetPopupButtonTicketValue(d.profiles[p].popup); };
    o.setRGBImagesProfile(kind(kRGBImages), d.profiles[kRGBImages].name);
    o.setRGBTextAndGraphicsProfile(kind(kRGBText), d.profiles[kRGBText].name);
    o.setCMYKImagesProfile(kind(kCMYKImages), d.profiles[kCMYKImages].name);
    o.setCMYKTextAndGraphicsProfile(kind(kCMYKText), d.profiles[kCMYKText].name);
    o.setDestinationProfile(kind(kDestination), d.profiles[kDestination].name);
    // A gray name counts only while its pop-up shows "Custom...".
    const auto gray = [&](Profile p) { return kind(p) == kGrayCustom ? d.profiles[p].name : std::nullopt; };
    o.setGrayImagesProfile(gray(kGrayImages));
    o.setGrayTextAndGraphicsProfile(gray(kGrayText));

    o.setImageObjectRendering(GetPopupButtonTicketValue(d.rendering[0]));
    o.setTextObjectRendering(GetPopupButtonTicketValue(d.rendering[1]));
    o.setGraphicObjectRendering(GetPopupButtonTicketValue(d.rendering[2]));
}

bool findControls(FullColorDialog& d)
{
    QDialog* w = d.dialog;
    bool found = true;
    for (int i = 0; i < 3; ++i)
        found &= findValue(w, 1 + 3 * i, 2 + 3 * i, 3 + 3 * i, d.adjustments[i]);
    d.castBox = GetControlByID<QCheckBox>(w, {kSignature, 10});
    for (int i = 0; i < 3; ++i)
        found &= findValue(w, 0, 11 + 2 * i, 12 + 2 * i, d.cast[i]);
    found &= findValue(w, 21, 0, 22, d.trapWidth) && findValue(w, 23, 0, 24, d.trapHeight);
    d.trapping = GetControlByID<QComboBox>(w, {kSignature, kTrappingID});
    d.blackOverprint = GetControlByID<QComboBox>(w, {kSignature, kBlackOverprintID});
    d.trc = AdoptControl<HistoryComboBox>(w, {kSignature, kTRCID});
    d.linkRendering = GetControlByID<QCheckBox>(w, {kSignature, kLinkRenderingID});
    found &= d.castBox && d.trapping && d.blackOverprint && d.trc && d.linkRendering;
    for (int i = 0; i < kProfileCount; ++i)
        found &= (d.profiles[i].popup = GetControlByID<QComboBox>(w, {kSignature, kFirstProfileID + i})) != nullptr;
    for (int i = 0; i < 3; ++i)
        found &= (d.rendering[i] = GetControlByID<QComboBox>(w, {kSignature, kFirstRenderingID + i})) != nullptr;
    return found;
}

void populate(FullColorDialog& d, JobContext context)
{
    const Bundle& bundle = *d.bundle;
    PopulatePopupButtonFromMap(bundle, d.trapping, _TrappingMap, context, 0);
    PopulatePopupButtonFromMap(bundle, d.blackOverprint, _BlackOverprintMap, context, 0);
    d.trc->populate(bundle, _TRCMap, context, kTRCHistoryKey, kTRCHistoryLimit, 1);
    const std::array<std::pair<const SettingMap*, int32_t>, kProfileCount> profiles{{
        {_RGBSourceProfileMap, kRGBProfileCustom},
        {_RGBSourceProfileMap, kRGBProfileCustom},
        {_CMYKSourceProfileMap, kCMYKProfileCustom},
        {_CMYKSourceProfileMap, kCMYKProfileCustom},
        {_GraySourceProfileMap, kGrayCustom},
        {_GraySourceProfileMap, kGrayCustom},
        {_DestinationProfileMap, kDestinationProfileCustom},
    }};
    for (int i = 0; i < kProfileCount; ++i) {
        d.profiles[i].map = profiles[i].first;
        d.profiles[i].custom = profiles[i].second;
        PopulatePopupButtonFromMap(bundle, d.profiles[i].popup, profiles[i].first, context, 0);
    }
    for (QComboBox* popup : d.rendering)
        PopulatePopupButtonFromMap(bundle, popup, _ObjectRenderingMap, context, 0);
    // At page level the boxes leave the value to the job.
    if (context != kJobContextJob) {
        QCheckBox* boxes[] = {d.adjustments[0].box, d.adjustments[1].box, d.adjustments[2].box, d.castBox,
                              d.trapWidth.box,      d.trapHeight.box};
        for (QCheckBox* box : boxes)
            SetLocalizedControlTitle(bundle, "UseJobSetting", box);
    }
}

void connectValue(FullColorDialog& d, const DefaultableValue& v, QCheckBox* box)
{
    if (v.slider) {
        QObject::connect(v.slider, &QSlider::valueChanged, v.spin, &QSpinBox::setValue);
        QObject::connect(v.spin, &QSpinBox::valueChanged, v.slider, &QSlider::setValue);
    }
    QObject::connect(box, &QCheckBox::toggled, d.dialog, [&d, v](bool checked) {
        if (checked)
            v.spin->setValue(0);
        enableValue(v, !checked);
        enableTrapping(d);
    });
}

void connectControls(FullColorDialog& d)
{
    for (const DefaultableValue& v : d.adjustments)
        connectValue(d, v, v.box);
    for (const DefaultableValue& v : d.cast)
        connectValue(d, v, d.castBox);
    connectValue(d, d.trapWidth, d.trapWidth.box);
    connectValue(d, d.trapHeight, d.trapHeight.box);
    QObject::connect(d.trapping, &QComboBox::currentIndexChanged, d.dialog, [&d] { enableTrapping(d); });
    for (ProfilePopup& p : d.profiles)
        QObject::connect(p.popup, &QComboBox::activated, d.dialog, [&d, &p] { chooseProfile(d, p); });
    for (QComboBox* popup : d.rendering)
        QObject::connect(popup, &QComboBox::activated, d.dialog, [&d, popup] { chooseRendering(d, popup); });
}

} // namespace

OSStatus RunModalFullColorSetup(const Bundle& bundle, DialogMode, JobContext context, FullColorOptions& options,
                                bool* accepted, QWidget* parent)
{
    if (context < kJobContextJob || context > kJobContextExceptions)
        return paramErr;
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window = CreateWindowFromDescription(bundle, "FullColor", "Window", parent, &status);
    FullColorDialog d;
    d.bundle = &bundle;
    d.dialog = qobject_cast<QDialog*>(window.get());
    if (!d.dialog)
        return kPMNoContext;
    auto* ok = GetControlByID<QPushButton>(d.dialog, {kSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(d.dialog, {kSignature, kCancelID});
    auto* revert = GetControlByID<QPushButton>(d.dialog, {kSignature, kRevertID});
    if (!ok || !cancel || !revert || !findControls(d))
        return kPMNoContext;
    LocalizeDescription(bundle, d.dialog);
    populate(d, context);
    connectControls(d);
    showOptions(d, options);
    QObject::connect(ok, &QPushButton::clicked, d.dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, d.dialog, &QDialog::reject);
    QObject::connect(revert, &QPushButton::clicked, d.dialog, [&d] { showOptions(d, FullColorOptions()); });
    if (d.dialog->exec() != QDialog::Accepted)
        return noErr;
    FullColorOptions edited = options;
    retrieveOptions(d, edited);
    options = std::move(edited);
    if (accepted)
        *accepted = true;
    return noErr;
}

} // namespace talmo
