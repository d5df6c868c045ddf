// The JobNotes panel: job name, sender, recipient and messages.
#include "panels/jobnotes/jobnotes-panel.h"

#include "panels/jobnotes/jobnotes-notes.h"
#include "panels/panel-module.h"
#include "toolkit/toolkit.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>

namespace talmo::jobnotes {

struct JobNotesContext : panels::PanelContext {
    JobNotesFields fields;
    QPointer<HistoryComboBox> jobName;
    QPointer<HistoryComboBox> sender;
    QPointer<HistoryComboBox> recipient;
    QPointer<QPlainTextEdit> message;
    QPointer<QLineEdit> sheetMessage;
    QPointer<QPushButton> preferences;

    bool built() const { return jobName && sender && recipient && message && sheetMessage; }
};

namespace {

const panels::PanelDescription kPanel{"JobNotesPanel", "JobNotesPanel", "com.talmo.print.pde.jobnoteskind"};

constexpr uint32_t kJobNotesSignature = FourCC("JNot");
constexpr uint32_t kPrefsSignature = FourCC("JNpr");
constexpr int32_t kHistoryLimit = 10;

// Each combo box keeps its own input history.
constexpr char kJobNameHistory[] = "com.talmo.print.JobNotesJobName";
constexpr char kSenderHistory[] = "com.talmo.print.JobNotesSenderName";
constexpr char kRecipientHistory[] = "com.talmo.print.JobNotesRecipient";

// The host holds the context as the PanelContext that Prologue handed out.
JobNotesContext* asContext(PMPDEContext context)
{
    return static_cast<JobNotesContext*>(static_cast<panels::PanelContext*>(context));
}

panels::PanelContext* makeContext() { return new (std::nothrow) JobNotesContext; }

std::optional<std::string> textOf(const HistoryComboBox* box)
{
    const HistoryComboBox::Value value = box->value();
    if (const QString* text = std::get_if<QString>(&value))
        return text->toStdString();
    return std::nullopt;
}

void showInBox(HistoryComboBox* box, const SettingMap* map, bool useFlag, const std::string& text)
{
    if (useFlag) {
        SetPopupButtonToTicketValue(box, map[0].ticketValue);
        box->setEditText(box->itemText(box->currentIndex()));
    } else {
        box->setText(QString::fromStdString(text));
    }
}

QString localized(const char* key)
{
    const Bundle* bundle = ExtensionBundle();
    return bundle ? QString::fromStdString(bundle->localizedString(key)) : QString::fromUtf8(key);
}

} // namespace

void InitContext(JobNotesContext* c)
{
    JobNotesPreferences defaults;
    RetrieveJobNotesPreferences(&defaults);
    c->fields.useJobName = defaults.useDocumentNameAsJobName;
    c->fields.senderUseLoginName = defaults.useLoginNameAsSenderName;
    c->fields.recipientUseLoginName = defaults.useLoginNameAsRecipientName;
}

void UpdateJobNotesContext(JobNotesContext* c)
{
    if (!c->built())
        return;
    c->fields.message = c->message->toPlainText().toStdString();
    c->fields.sheetMessage = c->sheetMessage->text().toStdString();
    ApplyComboValue(textOf(c->jobName), &c->fields.jobName, &c->fields.useJobName);
    ApplyComboValue(textOf(c->sender), &c->fields.senderName, &c->fields.senderUseLoginName);
    ApplyComboValue(textOf(c->recipient), &c->fields.recipient, &c->fields.recipientUseLoginName);
}

void UpdateJobNotesEditFields(JobNotesContext* c)
{
    if (!c->built())
        return;
    showInBox(c->jobName, _JobNameMap, c->fields.useJobName, c->fields.jobName);
    showInBox(c->sender, _LoginNameMap, c->fields.senderUseLoginName, c->fields.senderName);
    showInBox(c->recipient, _LoginNameMap, c->fields.recipientUseLoginName, c->fields.recipient);
    c->message->setPlainText(QString::fromStdString(c->fields.message));
    c->sheetMessage->setText(QString::fromStdString(c->fields.sheetMessage));
}

void LocalizePanel(const Bundle& bundle, JobNotesContext* c)
{
    if (!c->built())
        return;
    c->jobName->populate(bundle, _JobNameMap, kJobContextJob, kJobNameHistory, kHistoryLimit, 1);
    c->sender->populate(bundle, _LoginNameMap, kJobContextJob, kSenderHistory, kHistoryLimit, 1);
    c->recipient->populate(bundle, _LoginNameMap, kJobContextJob, kRecipientHistory, kHistoryLimit, 1);
}

OSStatus RunModalJobNotesPreferencesDialog(const Bundle& bundle, DialogMode, JobContext, JobNotesPreferences* options,
                                           QWidget* parent)
{
    if (!options)
        return paramErr;
    OSStatus status = noErr;
    std::unique_ptr<QWidget> window = CreateWindowFromDescription(bundle, "JobNotes", "JobNotesPrefs", parent, &status);
    auto* dialog = qobject_cast<QDialog*>(window.get());
    if (!dialog)
        return kPMNoContext;
    LocalizeDescription(bundle, dialog);
    SetLocalizedWindowTitle(bundle, "JobNotesPrefsTitle", dialog);
    QCheckBox* boxes[3];
    bool* values[3] = {&options->useDocumentNameAsJobName, &options->useLoginNameAsSenderName,
                       &options->useLoginNameAsRecipientName};
    for (int i = 0; i < 3; ++i)
        if (!(boxes[i] = GetControlByID<QCheckBox>(dialog, {kPrefsSignature, i + 1})))
            return kPMNoContext;
    auto* ok = GetControlByID<QPushButton>(dialog, {kPrefsSignature, 4});
    auto* cancel = GetControlByID<QPushButton>(dialog, {kPrefsSignature, 5});
    if (!ok || !cancel)
        return kPMNoContext;
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);

    RetrieveJobNotesPreferences(options);
    for (int i = 0; i < 3; ++i)
        boxes[i]->setChecked(*values[i]);
    if (dialog->exec() != QDialog::Accepted)
        return userCanceledErr;
    for (int i = 0; i < 3; ++i)
        *values[i] = boxes[i]->isChecked();
    return StoreJobNotesPreferences(*options) ? noErr : ioErr;
}

bool pdeShellJobNotesEventHandler(JobNotesContext* c, uint32_t command)
{
    if (command != kJobNotesPreferencesCommand)
        return false;
    const Bundle* bundle = ExtensionBundle();
    if (!bundle)
        return true;
    JobNotesPreferences options;
    RunModalJobNotesPreferencesDialog(*bundle, DialogMode::Add, kJobContextJob, &options, c->content);
    return true;
}

namespace {

OSStatus Prologue(PMPDEContext* context, OSType* creator, std::string* kind, std::string* title, uint32_t* maxH,
                  uint32_t* maxV)
{
    const OSStatus status = panels::PanelPrologue(kPanel, context, creator, kind, title, maxH, maxV, &makeContext);
    if (status == noErr)
        InitContext(asContext(*context));
    return status;
}

OSStatus Initialize(PMPDEContext context, PMPDEFlags*, PMPDERef, ControlRef pane, PMPrintSession session)
{
    const OSStatus status = panels::PanelInitialize(context, pane, session);
    JobNotesContext* c = asContext(context);
    const Bundle* bundle = ExtensionBundle();
    if (status != noErr || !c->content || !bundle)
        return status;
    QWidget* root = c->content;
    c->jobName = AdoptControl<HistoryComboBox>(root, {kJobNotesSignature, 1});
    c->sender = AdoptControl<HistoryComboBox>(root, {kJobNotesSignature, 2});
    c->recipient = AdoptControl<HistoryComboBox>(root, {kJobNotesSignature, 3});
    c->message = GetControlByID<QPlainTextEdit>(root, {kJobNotesSignature, 4});
    c->sheetMessage = GetControlByID<QLineEdit>(root, {kJobNotesSignature, 5});
    c->preferences = GetControlByID<QPushButton>(root, {kJobNotesSignature, 6});
    if (!c->built())
        return kPMNoContext;
    if (c->preferences)
        QObject::connect(c->preferences, &QPushButton::clicked, c->preferences,
                         [c] { pdeShellJobNotesEventHandler(c, kJobNotesPreferencesCommand); });
    LocalizePanel(*bundle, c);
    UpdateJobNotesEditFields(c);
    return noErr;
}

OSStatus Sync(PMPDEContext context, PMPrintSession session, bool reinitializePlugIn)
{
    JobNotesContext* c = asContext(context);
    Ticket* ticket = nullptr;
    if (const OSStatus status = panels::PanelSyncTicket(context, session, reinitializePlugIn, &ticket); status != noErr)
        return status;
    if (!ticket)
        return noErr; // nothing to read or write
    if (reinitializePlugIn) {
        const OSStatus status = ReadJobNotesFromTicket(ticket, &c->fields);
        UpdateJobNotesEditFields(c);
        return status;
    }
    const std::string login = ConsoleUserName();
    UpdateJobNotesContext(c);
    if (c->built())
        for (HistoryComboBox* box : {c->jobName.data(), c->sender.data(), c->recipient.data()})
            box->commitHistory();
    return WriteJobNotesToTicket(c->fields, login, ticket);
}

OSStatus GetSummaryText(PMPDEContext context, pl::ArrayPtr* titleArray, pl::ArrayPtr* summaryArray)
{
    JobNotesContext* c = asContext(context);
    if (!c)
        return kPMNoContext;
    if (!titleArray || !summaryArray)
        return paramErr;
    UpdateJobNotesContext(c);
    panels::MakeSummaryArrays(titleArray, summaryArray);
    const std::string document = localized("JobNotesDocumentName").toStdString();
    for (auto& [title, text] : JobNotesSummary(c->fields, ConsoleUserName(), document))
        panels::AppendSummaryLine(titleArray, summaryArray, localized(title.c_str()).toStdString(), std::move(text));
    return noErr;
}

OSStatus Terminate(PMPDEContext context, OSStatus) { return panels::PanelTerminate(context); }

} // namespace

OSStatus CreatePanelInterface(PlugInIntf** intf)
{
    return panels::MakePanelInterface(intf, {nullptr, nullptr, nullptr, &Prologue, &Initialize, &Sync, &GetSummaryText,
                                             &panels::PanelOpen, &panels::PanelClose, &Terminate});
}

} // namespace talmo::jobnotes

TALMO_PANEL_ENTRY_POINT talmo::OSStatus GetJobNotesPanelInterface(talmo::PlugInIntf** intf)
{
    return talmo::jobnotes::CreatePanelInterface(intf);
}
