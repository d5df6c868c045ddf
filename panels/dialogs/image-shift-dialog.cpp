#include "panels/dialogs/image-shift-dialog.h"

#include "toolkit/toolkit.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <array>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("IShf");
constexpr int32_t kModeID = 1;
constexpr int32_t kInchesID = 2;
constexpr int32_t kMillimetersID = 3;
constexpr int32_t kFirstShiftID = 4; // x1, y1, x2, y2
constexpr int32_t kSummaryID = 8;
constexpr int32_t kRevertID = 90;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;
constexpr int32_t kOneSided = 1;

enum Field { kX1, kY1, kX2, kY2 };

// The dialog works on its own copy of the record: every control change goes into `edited`
// through the record's rules, and the controls then show `edited` again.
struct ImageShiftDialog {
    const Bundle* bundle = nullptr;
    JobContext context = kJobContextJob;
    QDialog* dialog = nullptr;
    QComboBox* mode = nullptr;
    QRadioButton* inches = nullptr;
    QRadioButton* millimeters = nullptr;
    std::array<SpinControl*, 4> fields{};
    QLabel* summary = nullptr; // the full dialog only
    _IS_Options edited;
};

int32_t* fieldValue(_IS_Options& o, int field)
{
    int32_t* values[] = {&o.x1, &o.y1, &o.x2, &o.y2};
    return values[field];
}

void showOptions(ImageShiftDialog& d)
{
    const _IS_Options& o = d.edited;
    const bool inches = o.inches != 0;
    const ImageShiftSide2 side2 = ImageShiftSide2Rule(o.option, o.duplex, o.x1, o.y1, o.x2, o.y2);
    const bool editable[] = {side2.x1Editable, side2.x1Editable, side2.x2Editable, side2.y2Editable};
    // A disabled field says why.
    const char* why = !side2.x1Editable                    ? "Shift No Mode Tooltip"
                      : o.option == kImageShiftIndependent ? "Shift One Sided Tooltip"
                                                           : "Shift Follows Side 1 Tooltip";
    for (int i = 0; i < 4; ++i) {
        SpinControl* field = d.fields[i];
        const ImageShiftRange range = (i == kX1 || i == kX2) ? ImageShiftXRange(inches) : ImageShiftYRange(inches);
        const QSignalBlocker blocker(field);
        field->setDecimals(range.decimals);
        field->setRange(range.min, range.max);
        field->setValue(*fieldValue(d.edited, i));
        field->setEnabled(editable[i]);
        field->setToolTip(editable[i] ? QString() : LocalizedText(*d.bundle, why));
    }
    {
        const QSignalBlocker blocker(d.mode);
        // Mode 2 is no longer offered; it shows as the mode it acts like.
        const int32_t shown = o.option == kImageShiftMirrorBothLegacy ? kImageShiftMirrorBoth : o.option;
        if (!SetPopupButtonToTicketValue(d.mode, shown))
            d.mode->setCurrentIndex(0);
    }
    {
        const QSignalBlocker inchBlocker(d.inches);
        const QSignalBlocker mmBlocker(d.millimeters);
        d.inches->setChecked(inches);
        d.millimeters->setChecked(!inches);
    }
    if (d.summary) {
        const LabelLookup lookup = [&d](std::string_view key) { return LocalizedText(*d.bundle, key).toStdString(); };
        d.summary->setText(QString::fromStdString(GenerateImageShiftSummary(d.edited, d.context, lookup)));
    }
}

void fieldEdited(ImageShiftDialog& d, int field, int32_t value)
{
    *fieldValue(d.edited, field) = value;
    ApplyImageShiftOption(d.edited);
    showOptions(d);
}

void modeChosen(ImageShiftDialog& d)
{
    d.edited.option = GetPopupButtonTicketValue(d.mode);
    ApplyImageShiftOption(d.edited);
    showOptions(d);
}

void unitChosen(ImageShiftDialog& d, bool inches)
{
    ImageShiftSwitchUnits(d.edited, inches);
    showOptions(d);
}

OSStatus runShiftDialog(const Bundle& bundle, const char* window, JobContext context, _IS_Options& options,
                        bool* accepted, QWidget* parent)
{
    if (context < kJobContextJob || context > kJobContextExceptions)
        return paramErr;
    OSStatus status = noErr;
    std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "ImageShift", window, parent, &status);
    ImageShiftDialog d;
    d.bundle = &bundle;
    d.context = context;
    d.dialog = qobject_cast<QDialog*>(made.get());
    if (!d.dialog)
        return kPMNoContext;
    QDialog* w = d.dialog;
    auto* ok = GetControlByID<QPushButton>(w, {kSignature, kOKID});
    auto* cancel = GetControlByID<QPushButton>(w, {kSignature, kCancelID});
    auto* revert = GetControlByID<QPushButton>(w, {kSignature, kRevertID});
    d.mode = GetControlByID<QComboBox>(w, {kSignature, kModeID});
    d.inches = GetControlByID<QRadioButton>(w, {kSignature, kInchesID});
    d.millimeters = GetControlByID<QRadioButton>(w, {kSignature, kMillimetersID});
    bool found = ok && cancel && revert && d.mode && d.inches && d.millimeters;
    for (int i = 0; i < 4; ++i)
        found &= (d.fields[i] = AdoptControl<SpinControl>(w, {kSignature, kFirstShiftID + i})) != nullptr;
    if (!found)
        return kPMNoContext;
    if (GetControlByID(w, {kSignature, kSummaryID}))
        d.summary = AdoptControl<StaticTextControl>(w, {kSignature, kSummaryID});
    LocalizeDescription(bundle, w);

    d.edited = options;
    // A one-sided job offers only the modes that make sense without a side 2.
    const SettingMap* modes = options.duplex == kOneSided ? _ImageShiftOptions1SidedMap : _ImageShiftOptions2SidedMap;
    PopulatePopupButtonFromMap(bundle, d.mode, modes, context, 0);
    showOptions(d);

    QObject::connect(d.mode, &QComboBox::currentIndexChanged, w, [&d] { modeChosen(d); });
    QObject::connect(d.inches, &QRadioButton::toggled, w, [&d](bool on) { unitChosen(d, on); });
    for (int i = 0; i < 4; ++i)
        QObject::connect(d.fields[i], &SpinControl::valueChanged, w, [&d, i](int32_t v) { fieldEdited(d, i, v); });
    QObject::connect(ok, &QPushButton::clicked, w, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, w, &QDialog::reject);
    QObject::connect(revert, &QPushButton::clicked, w, [&d] {
        DefaultImageShift(d.edited);
        showOptions(d);
    });
    if (w->exec() != QDialog::Accepted)
        return noErr;
    options = d.edited;
    if (accepted)
        *accepted = true;
    return noErr;
}

} // namespace

OSStatus RunModalImageShiftDialog(const Bundle& bundle, DialogMode, JobContext context, _IS_Options& options,
                                  bool* accepted, QWidget* parent)
{
    return runShiftDialog(bundle, "Window", context, options, accepted, parent);
}

OSStatus RunModalMiniImageShiftDialog(const Bundle& bundle, JobContext context, _IS_Options& options, bool* accepted,
                                      QWidget* parent)
{
    return runShiftDialog(bundle, "Mini", context, options, accepted, parent);
}

} // namespace talmo
