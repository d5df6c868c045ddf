#include "panels/dialogs/job-type-dialogs.h"

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
#include <QUrl>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace talmo {

namespace {

constexpr uint32_t kSignature = FourCC("JTyp");
constexpr int32_t kSaveOnlyID = 1;
constexpr int32_t kSaveAndPrintID = 2;
constexpr int32_t kUseDocumentNameID = 3;
constexpr int32_t kNameID = 4;
constexpr int32_t kLocationID = 5;
constexpr int32_t kFormatID = 6;
constexpr int32_t kSaveOptionLabelID = 7;
constexpr int32_t kSaveOptionBoxID = 8;
constexpr int32_t kNoteID = 1;
constexpr int32_t kCancelID = 91;
constexpr int32_t kOKID = 92;
constexpr int32_t kSaveAndPrint = 2; // _SavedJobSaveOptionRadioMap

// What the writer reads of each type besides "JobType": a saved job (3) chooses between saving
// and saving with printing; a secure job (4) is always saved and printed, so it has no choice.
constexpr std::array<std::string_view, 5> kSavedJobFields = {
    kSaveDispositionField, kUseJobNameField, kSavedJobNameField, kSavedJobLocationField, kSaveFormatField};
constexpr std::array<std::string_view, 4> kSecureFields = {kUseJobNameField, kSavedJobNameField, kSavedJobLocationField,
                                                           kSaveFormatField};

bool writerReads(int32_t jobType, std::string_view key)
{
    if (key == kJobTypeField)
        return true;
    if (jobType == kJobTypeSaved)
        return std::ranges::find(kSavedJobFields, key) != kSavedJobFields.end();
    if (jobType == kJobTypeSecure)
        return std::ranges::find(kSecureFields, key) != kSecureFields.end();
    return false;
}

const char* windowTitleKey(int32_t jobType)
{
    switch (jobType) {
    case kJobTypeSaved:
        return "Saved Job Setup";
    case kJobTypeSecure:
        return "Secure Print Setup";
    case kJobTypeDelayed:
        return "Delayed Print Setup";
    case kJobTypeSampleSet:
        return "Sample Set Setup";
    default:
        return "Fax Setup";
    }
}

struct SavedJobDialog {
    int32_t jobType = kJobTypeSaved;
    QDialog* dialog = nullptr;
    QRadioButton* saveOnly = nullptr;
    QRadioButton* saveAndPrint = nullptr;
    QCheckBox* useDocumentName = nullptr;
    QLineEdit* name = nullptr;
    QLineEdit* location = nullptr;
    QComboBox* format = nullptr;
};

bool findControls(SavedJobDialog& d)
{
    QDialog* w = d.dialog;
    d.saveOnly = GetControlByID<QRadioButton>(w, {kSignature, kSaveOnlyID});
    d.saveAndPrint = GetControlByID<QRadioButton>(w, {kSignature, kSaveAndPrintID});
    d.useDocumentName = GetControlByID<QCheckBox>(w, {kSignature, kUseDocumentNameID});
    d.name = GetControlByID<QLineEdit>(w, {kSignature, kNameID});
    d.location = GetControlByID<QLineEdit>(w, {kSignature, kLocationID});
    d.format = GetControlByID<QComboBox>(w, {kSignature, kFormatID});
    return d.saveOnly && d.saveAndPrint && d.useDocumentName && d.name && d.location && d.format;
}

// Names are texts of the job ticket: no control characters, which XML cannot carry. The folder
// is a URI, so only the characters a URI may hold.
void limitTextFields(SavedJobDialog& d)
{
    d.name->setMaxLength(kJobTypeTextLimit);
    d.name->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^\\x{0}-\\x{1F}\\x{7F}]*")), d.name));
    d.location->setMaxLength(kJobTypeTextLimit);
    d.location->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[A-Za-z0-9._~:/?#\\[\\]@!$&'()*+,;=%-]*")), d.location));
}

void showSettings(SavedJobDialog& d, const pl::Dictionary& dict)
{
    const bool saveAndPrint = dict.getInt(kSaveDispositionField).value_or(0) == kSaveAndPrint;
    d.saveAndPrint->setChecked(saveAndPrint);
    d.saveOnly->setChecked(!saveAndPrint);
    // The writer takes any non-zero number as well as true.
    const bool useName = dict.getBool(kUseJobNameField).value_or(dict.getInt(kUseJobNameField).value_or(0) != 0);
    d.useDocumentName->setChecked(useName);
    d.name->setText(QString::fromStdString(dict.getString(kSavedJobNameField).value_or("")));
    d.name->setEnabled(!d.useDocumentName->isChecked());
    d.location->setText(QString::fromStdString(dict.getString(kSavedJobLocationField).value_or("")));
    const int64_t format = dict.getInt(kSaveFormatField).value_or(kNotSet);
    if (format < INT32_MIN || format > INT32_MAX ||
        !SetPopupButtonToTicketValue(d.format, static_cast<int32_t>(format)))
        d.format->setCurrentIndex(0);
}

// OK closes only with a name to save the job under and a folder that is a URI (or none: the
// printer's own job folder).
bool acceptable(SavedJobDialog& d)
{
    QLineEdit* wrong = nullptr;
    if (!d.useDocumentName->isChecked() && d.name->text().trimmed().isEmpty())
        wrong = d.name;
    const QString location = d.location->text();
    if (!wrong && !location.isEmpty()) {
        const QUrl url(location, QUrl::StrictMode);
        if (!url.isValid() || url.scheme().isEmpty())
            wrong = d.location;
    }
    if (!wrong)
        return true;
    QApplication::beep();
    wrong->setFocus();
    wrong->selectAll();
    return false;
}

void storeSettings(const SavedJobDialog& d, pl::Dictionary& dict)
{
    if (d.jobType == kJobTypeSaved)
        dict.setInt(kSaveDispositionField, d.saveAndPrint->isChecked() ? kSaveAndPrint : 1);
    dict.setBool(kUseJobNameField, d.useDocumentName->isChecked());
    // The writer takes the document's name while the box is checked; a typed name would only
    // seem to be used.
    if (d.useDocumentName->isChecked() || d.name->text().isEmpty())
        dict.remove(kSavedJobNameField);
    else
        dict.setString(kSavedJobNameField, d.name->text().toStdString());
    if (d.location->text().isEmpty())
        dict.remove(kSavedJobLocationField);
    else
        dict.setString(kSavedJobLocationField, d.location->text().toStdString());
    const int32_t format = GetPopupButtonTicketValue(d.format);
    if (format == kNotSet)
        dict.remove(kSaveFormatField);
    else
        dict.setInt(kSaveFormatField, format);
}

std::unique_ptr<QWidget> createWindow(const Bundle& bundle, const char* window, QWidget* parent, QDialog*& dialog,
                                      QPushButton*& ok, QPushButton*& cancel)
{
    std::unique_ptr<QWidget> made = CreateWindowFromDescription(bundle, "JobTypeSetup", window, parent);
    dialog = qobject_cast<QDialog*>(made.get());
    ok = dialog ? GetControlByID<QPushButton>(dialog, {kSignature, kOKID}) : nullptr;
    cancel = dialog ? GetControlByID<QPushButton>(dialog, {kSignature, kCancelID}) : nullptr;
    if (!ok || !cancel)
        dialog = nullptr;
    return made;
}

bool runSavedJobDialog(QWidget* parent, const Bundle& bundle, int32_t jobType, const pl::DictPtr& dict)
{
    SavedJobDialog d;
    d.jobType = jobType;
    QPushButton* ok = nullptr;
    QPushButton* cancel = nullptr;
    const std::unique_ptr<QWidget> made = createWindow(bundle, "SavedJob", parent, d.dialog, ok, cancel);
    if (!d.dialog || !findControls(d))
        return false;
    LocalizeDescription(bundle, d.dialog);
    SetLocalizedWindowTitle(bundle, windowTitleKey(jobType), d.dialog);
    // A secure job is always saved and printed: the choice is not shown.
    if (jobType != kJobTypeSaved) {
        for (const int32_t id : {kSaveOptionLabelID, kSaveOptionBoxID})
            if (QWidget* w = GetControlByID(d.dialog, {kSignature, id}))
                w->hide();
    }
    PopulatePopupButtonFromMap(bundle, d.format, _JobFormatMap, kJobContextJob, 0);
    d.location->setPlaceholderText(LocalizedText(bundle, "Saved Job Location Default"));
    d.name->setToolTip(LocalizedText(bundle, "Saved Job Name Tooltip"));
    limitTextFields(d);
    showSettings(d, *dict);

    QObject::connect(d.useDocumentName, &QCheckBox::toggled, d.dialog, [&d](bool on) { d.name->setEnabled(!on); });
    QObject::connect(cancel, &QPushButton::clicked, d.dialog, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, d.dialog, [&d] {
        if (acceptable(d))
            d.dialog->accept();
    });
    if (d.dialog->exec() != QDialog::Accepted)
        return false;
    SetJobTypeInDictionary(dict, jobType);
    storeSettings(d, *dict);
    return true;
}

// Delayed print, sample set and fax: the writer sends the type alone, so the dialog says so and
// OK chooses the type.
bool runNoteDialog(QWidget* parent, const Bundle& bundle, int32_t jobType, const pl::DictPtr& dict)
{
    QDialog* dialog = nullptr;
    QPushButton* ok = nullptr;
    QPushButton* cancel = nullptr;
    const std::unique_ptr<QWidget> made = createWindow(bundle, "Note", parent, dialog, ok, cancel);
    QLabel* note = dialog ? GetControlByID<QLabel>(dialog, {kSignature, kNoteID}) : nullptr;
    if (!note)
        return false;
    LocalizeDescription(bundle, dialog);
    SetLocalizedWindowTitle(bundle, windowTitleKey(jobType), dialog);
    note->setText(LocalizedText(bundle, "Job Type Only Note"));
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    if (dialog->exec() != QDialog::Accepted)
        return false;
    SetJobTypeInDictionary(dict, jobType);
    return true;
}

} // namespace

void SetJobTypeInDictionary(const pl::DictPtr& jobTypeDict, int32_t jobType)
{
    if (!jobTypeDict)
        return;
    std::vector<std::string> unread;
    for (const auto& entry : *jobTypeDict)
        if (!writerReads(jobType, entry.first))
            unread.push_back(entry.first);
    for (const std::string& key : unread)
        jobTypeDict->remove(key);
    jobTypeDict->setInt(kJobTypeField, jobType);
}

bool JobTypeHasSetup(int32_t jobType)
{
    return (jobType >= kJobTypeSaved && jobType <= kJobTypeFax) || jobType == kJobTypeBackgroundForms;
}

bool RunModalJobTypeSetupDialog(QWidget* parent, const Bundle& bundle, int32_t jobType, pl::DictPtr jobTypeDict,
                                BackgroundFormsOptions& forms)
{
    if (!jobTypeDict || !JobTypeHasSetup(jobType))
        return false;
    switch (jobType) {
    case kJobTypeSaved:
    case kJobTypeSecure:
        return runSavedJobDialog(parent, bundle, jobType, jobTypeDict);
    case kJobTypeBackgroundForms:
        if (!RunModalBackgroundFormsDialog(parent, bundle, forms))
            return false;
        SetJobTypeInDictionary(jobTypeDict, jobType);
        return true;
    default:
        return runNoteDialog(parent, bundle, jobType, jobTypeDict);
    }
}

} // namespace talmo
