#include "panels/dialogs/background-forms-dialog.h"

#include "toolkit/toolkit.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>

#include <algorithm>
#include <array>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("BFrm");
constexpr int32_t kNewFormID = 1;
constexpr int32_t kExistingFormID = 2;
constexpr int32_t kUseDocumentNameID = 3;
constexpr int32_t kFormNameID = 4;
constexpr int32_t kApplyPagesID = 5;
constexpr int32_t kFromFormPageID = 6;
constexpr int32_t kRangeID = 7;
constexpr int32_t kXShiftID = 8;
constexpr int32_t kYShiftID = 9;
constexpr int32_t kUnitsID = 10;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;
constexpr int32_t kInchUnits = 1;
constexpr int32_t kMillimeterUnits = 2;
constexpr int32_t kCreateNewForm = 1;
constexpr int32_t kMergeWithExistingForm = 2;
// Form names travel as TPIF names, cut by the writer beyond its line: the same limit as the
// saved job's name keeps them whole.
constexpr int kFormNameLimit = 127;

enum FormKind { kNew, kExisting };

struct FormsDialog {
    QDialog* dialog = nullptr;
    QRadioButton* newForm = nullptr;
    QRadioButton* existingForm = nullptr;
    QCheckBox* useDocumentName = nullptr;
    QComboBox* name = nullptr;
    QComboBox* applyPages = nullptr;
    QLineEdit* fromFormPage = nullptr;
    QLabel* range = nullptr;
    SpinControl* x = nullptr;
    SpinControl* y = nullptr;
    QComboBox* units = nullptr;

    BackgroundFormsOptions edited; // shares the history arrays with the caller's record
    FormKind shown = kNew;
    std::array<QString, 2> names; // the text of each kind, kept while the other one shows
    bool inches = true;
};

bool findControls(FormsDialog& d)
{
    QDialog* w = d.dialog;
    d.newForm = GetControlByID<QRadioButton>(w, {kSignature, kNewFormID});
    d.existingForm = GetControlByID<QRadioButton>(w, {kSignature, kExistingFormID});
    d.useDocumentName = GetControlByID<QCheckBox>(w, {kSignature, kUseDocumentNameID});
    d.name = GetControlByID<QComboBox>(w, {kSignature, kFormNameID});
    d.applyPages = GetControlByID<QComboBox>(w, {kSignature, kApplyPagesID});
    d.fromFormPage = GetControlByID<QLineEdit>(w, {kSignature, kFromFormPageID});
    d.range = GetControlByID<QLabel>(w, {kSignature, kRangeID});
    d.units = GetControlByID<QComboBox>(w, {kSignature, kUnitsID});
    if (!d.newForm || !d.existingForm || !d.useDocumentName || !d.name || !d.name->isEditable() || !d.applyPages ||
        !d.fromFormPage || !d.range || !d.units)
        return false;
    d.x = AdoptControl<SpinControl>(w, {kSignature, kXShiftID});
    d.y = AdoptControl<SpinControl>(w, {kSignature, kYShiftID});
    return d.x && d.y;
}

pl::ArrayPtr history(const BackgroundFormsOptions& forms, FormKind kind)
{
    pl::ArrayPtr array;
    if (kind == kExisting)
        forms.existingFormsArray(&array);
    else
        forms.newFormsArray(&array);
    return array;
}

// The name box offers the history of the kind shown and keeps what was typed for the other.
void showFormKind(FormsDialog& d, FormKind kind)
{
    d.names[d.shown] = d.name->currentText();
    d.shown = kind;
    const QSignalBlocker blocker(d.name);
    d.name->clear();
    if (const pl::ArrayPtr names = history(d.edited, kind))
        for (const pl::ValuePtr& v : *names)
            if (auto s = pl::as<pl::String>(v))
                d.name->addItem(QString::fromStdString(s->text));
    d.name->setEditText(d.names[kind]);
    d.useDocumentName->setEnabled(kind == kNew);
    d.name->setEnabled(kind == kExisting || !d.useDocumentName->isChecked());
}

void showShift(FormsDialog& d, int32_t x, int32_t y)
{
    const ImageShiftRange xRange = ImageShiftXRange(d.inches);
    const ImageShiftRange yRange = ImageShiftYRange(d.inches);
    for (auto [field, range, value] : {std::tuple{d.x, xRange, x}, std::tuple{d.y, yRange, y}}) {
        field->setDecimals(range.decimals);
        field->setRange(range.min, range.max);
        field->setValue(std::clamp(value, range.min, range.max));
    }
}

void unitChosen(FormsDialog& d)
{
    const bool inches = d.units->currentData().toInt() == kInchUnits;
    if (inches == d.inches)
        return;
    d.inches = inches;
    showShift(d, ImageShiftConvertUnit(d.x->value(), inches), ImageShiftConvertUnit(d.y->value(), inches));
}

void showOptions(FormsDialog& d, const Bundle& bundle)
{
    const BackgroundFormsOptions& o = d.edited;
    int32_t useExisting = kCreateNewForm, useDocumentName = 1, applyPages = kApplyThroughoutJob, cycle = 0;
    int32_t inches = 1, x = 0, y = 0;
    BackgroundFormsOptions::Name newName, mergeName;
    o.useExistingForm(&useExisting);
    o.useDocumentName(&useDocumentName);
    o.applyPagesFrom(&applyPages);
    o.cyclePages(&cycle);
    o.inches(&inches);
    o.xOffset(&x);
    o.yOffset(&y);
    o.newFormString(&newName);
    o.mergeWithString(&mergeName);

    d.names = {QString::fromStdString(newName.value_or("")), QString::fromStdString(mergeName.value_or(""))};
    d.useDocumentName->setChecked(useDocumentName != 0);
    const FormKind kind = useExisting == kMergeWithExistingForm ? kExisting : kNew;
    (kind == kExisting ? d.existingForm : d.newForm)->setChecked(true);
    d.shown = kind;
    d.name->setEditText(d.names[kind]);
    showFormKind(d, kind);

    const std::pair<const char*, int32_t> rows[] = {
        {"Throughout Job", kApplyThroughoutJob}, {"Once", kApplyOnce}, {"Once, Then Repeat", kApplyOnceThenRepeat}};
    for (const auto& [key, value] : rows)
        d.applyPages->addItem(LocalizedText(bundle, key), value);
    d.applyPages->setCurrentIndex(std::max(0, d.applyPages->findData(applyPages)));
    d.fromFormPage->setText(QString::number(BackgroundFormsRepeatSpinValue(cycle)));
    d.fromFormPage->setEnabled(applyPages == kApplyOnceThenRepeat);
    d.range->setText(LocalizedText(bundle, "CustomValue Range", {kMinRepeatFormPage, kMaxRepeatFormPage}));

    d.units->addItem(LocalizedText(bundle, "Inch Units"), kInchUnits);
    d.units->addItem(LocalizedText(bundle, "Millimeter Units"), kMillimeterUnits);
    d.inches = inches != 0;
    d.units->setCurrentIndex(d.inches ? 0 : 1);
    showShift(d, x, y);
}

void refuse(QWidget* field)
{
    QApplication::beep();
    field->setFocus();
    if (auto* line = qobject_cast<QLineEdit*>(field))
        line->selectAll();
}

// OK: a form needs a name (a new one may take the document's), and the repeat page must be one
// the record accepts; otherwise the dialog stays open and the record is left as it was.
bool accept(FormsDialog& d)
{
    d.names[d.shown] = d.name->currentText();
    const QString name = d.names[d.shown].trimmed();
    const bool existing = d.shown == kExisting;
    const bool useDocumentName = d.useDocumentName->isChecked();
    if (name.isEmpty() && (existing || !useDocumentName)) {
        refuse(d.name);
        return false;
    }
    bool number = false;
    const int page = d.fromFormPage->text().toInt(&number);
    const int32_t row = d.applyPages->currentData().toInt();
    if (row == kApplyOnceThenRepeat && !number) {
        refuse(d.fromFormPage);
        return false;
    }
    if (ApplyBackgroundFormsPages(d.edited, row, number ? page : kMinRepeatFormPage) != noErr) {
        refuse(d.fromFormPage);
        return false;
    }
    const auto stored = [](const QString& text) {
        const QString t = text.trimmed();
        return t.isEmpty() ? BackgroundFormsOptions::Name() : BackgroundFormsOptions::Name(t.toStdString());
    };
    d.edited.setUseExistingForm(existing ? kMergeWithExistingForm : kCreateNewForm);
    d.edited.setUseDocumentName(useDocumentName ? 1 : 0);
    d.edited.setNewFormString(stored(d.names[kNew]));
    d.edited.setMergeWithString(stored(d.names[kExisting]));
    d.edited.setInches(d.inches ? 1 : 0);
    d.edited.setXOffset(d.x->value());
    d.edited.setYOffset(d.y->value());
    // Only a name the form is known by goes into its history: a new form named after the
    // document has no name of its own here.
    if (existing || !useDocumentName)
        if (const pl::ArrayPtr names = history(d.edited, d.shown))
            AddFormNameToHistory(*names, name.toStdString());
    return true;
}

} // namespace

void AddFormNameToHistory(pl::Array& history, const std::string& name)
{
    if (name.empty())
        return;
    for (size_t i = history.size(); i-- > 0;)
        if (auto s = pl::as<pl::String>(history.at(i)); !s || s->text == name)
            history.removeAt(i);
    history.insert(0, pl::makeString(name));
    while (history.size() > kFormHistoryLimit)
        history.removeAt(history.size() - 1);
}

bool RunModalBackgroundFormsDialog(QWidget* parent, const Bundle& bundle, BackgroundFormsOptions& forms)
{
    const std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "BackgroundForms", "Window", parent);
    FormsDialog d;
    d.dialog = qobject_cast<QDialog*>(made.get());
    auto* ok = d.dialog ? GetControlByID<QPushButton>(d.dialog, {kSignature, kOKID}) : nullptr;
    auto* cancel = d.dialog ? GetControlByID<QPushButton>(d.dialog, {kSignature, kCancelID}) : nullptr;
    if (!ok || !cancel || !findControls(d))
        return false;
    LocalizeDescription(bundle, d.dialog);
    d.name->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^\\x{0}-\\x{1F}\\x{7F}]*")), d.name));
    d.name->lineEdit()->setMaxLength(kFormNameLimit);
    LimitInputLengthAndCharacters(d.fromFormPage, kMinRepeatFormPage, kMaxRepeatFormPage, QStringLiteral("0123456789"));
    d.edited = forms;
    showOptions(d, bundle);

    QObject::connect(d.existingForm, &QRadioButton::toggled, d.dialog,
                     [&d](bool on) { showFormKind(d, on ? kExisting : kNew); });
    QObject::connect(d.useDocumentName, &QCheckBox::toggled, d.dialog,
                     [&d](bool on) { d.name->setEnabled(d.shown == kExisting || !on); });
    QObject::connect(d.applyPages, &QComboBox::currentIndexChanged, d.dialog,
                     [&d] { d.fromFormPage->setEnabled(d.applyPages->currentData().toInt() == kApplyOnceThenRepeat); });
    QObject::connect(d.units, &QComboBox::currentIndexChanged, d.dialog, [&d] { unitChosen(d); });
    QObject::connect(cancel, &QPushButton::clicked, d.dialog, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, d.dialog, [&d] {
        if (accept(d))
            d.dialog->accept();
    });
    if (d.dialog->exec() != QDialog::Accepted)
        return false;
    forms = d.edited;
    if (!forms.saveHistory())
        std::fprintf(stderr, "DEBUG: the background form names could not be saved\n");
    return true;
}

} // namespace talmo
