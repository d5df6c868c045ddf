#include "panels/advanced/advanced-dialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>

namespace talmo::advanced {

namespace {

QString text(const Bundle& bundle, const char* key, FormatArgs args = {}) { return LocalizedText(bundle, key, args); }

void showMessage(QWidget* parent, QMessageBox::Icon icon, const QString& message)
{
    QMessageBox box(icon, QString(), message, QMessageBox::Ok, parent);
    box.exec();
}

QString summaryText(const pl::DictPtr& ticket)
{
    std::vector<std::string> lines;
    buildSummaryText(ticket, lines);
    QStringList joined;
    for (const std::string& line : lines)
        joined << QString::fromStdString(line);
    return joined.join('\n');
}

pl::DictPtr settingsOf(PrintSession* session)
{
    Ticket* ticket = nullptr;
    if (GetTicketFromSession(session, kPMPrintSettingsTicket, &ticket) != noErr || !ticket)
        return nullptr;
    return ticket->asDictionary();
}

} // namespace

OSStatus DisplayTPIFImportExportSummary(const Bundle& bundle, const pl::DictPtr& ticket, TPIFImportExportMode mode,
                                        QWidget* parent)
{
    QDialog dialog(parent);
    dialog.setObjectName("TPIFSummary");
    dialog.setWindowTitle(text(bundle, TPIFSummaryTitle(mode)));
    auto* layout = new QVBoxLayout(&dialog);
    auto* heading = new QLabel(text(bundle, kTPIFSummaryHeading));
    heading->setStyleSheet("font-weight: bold");
    layout->addWidget(heading);
    auto* view = new QPlainTextEdit(summaryText(ticket));
    view->setObjectName("summary");
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    // Indents of four blanks rather than Qt's 80 pixels, and as wide as the longest line within
    // the pane's width (a longer line scrolls).
    const QFontMetrics metrics(view->font());
    const int tab = metrics.horizontalAdvance(QStringLiteral("    "));
    view->setTabStopDistance(tab);
    int widest = 0;
    for (const QString& line : view->toPlainText().split('\n')) {
        qsizetype tabs = 0;
        while (tabs < line.size() && line[tabs] == '\t')
            ++tabs;
        widest = std::max(widest, int(tabs) * tab + metrics.horizontalAdvance(line.mid(tabs)));
    }
    const int chrome = 2 * view->frameWidth() + 2 * int(view->document()->documentMargin()) +
                       view->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    view->setMinimumSize(std::clamp(widest + chrome, 420, 500), 320);
    layout->addWidget(view);
    auto* buttons = new QDialogButtonBox;
    auto* copyAll = buttons->addButton(text(bundle, kTPIFSummaryCopyAllButton), QDialogButtonBox::ActionRole);
    copyAll->setObjectName("copyAll");
    auto* cancel = buttons->addButton(text(bundle, kTPIFSummaryCancelButton), QDialogButtonBox::RejectRole);
    cancel->setObjectName("cancel");
    auto* accept = buttons->addButton(text(bundle, TPIFSummaryDefaultButton(mode)), QDialogButtonBox::AcceptRole);
    accept->setObjectName("default");
    accept->setDefault(true);
    layout->addWidget(buttons);
    QObject::connect(copyAll, &QPushButton::clicked, view,
                     [view] { QGuiApplication::clipboard()->setText(view->toPlainText()); });
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return dialog.exec() == QDialog::Accepted ? noErr : userCanceledErr;
}

OSStatus RunModalTPIFImportDialog(const Bundle& bundle, PrintSession* session, QStringList paths, QWidget* parent)
{
    if (!session)
        return kPMNoSession;
    if (paths.isEmpty())
        paths = QFileDialog::getOpenFileNames(parent, text(bundle, "TPIFImportChooseTitle"), QString(),
                                              text(bundle, "TPIFFileFilter"));
    if (paths.isEmpty())
        return userCanceledErr;
    // Every file into one dictionary first; the ticket is touched only once the user confirms.
    // A file that does not import is named and left out, and the others still apply.
    auto imported = pl::makeDict();
    OSStatus failure = noErr;
    int good = 0;
    for (const QString& path : paths) {
        std::string why;
        if (const OSStatus status = TPIFImportFileAtPath(path.toStdString(), imported, &why); status != noErr) {
            failure = status;
            showMessage(parent, QMessageBox::Warning,
                        text(bundle, "TPIFImportFailedMessage", {QFileInfo(path).fileName(), why}));
        } else {
            ++good;
        }
    }
    if (good == 0)
        return failure;
    if (const OSStatus status = DisplayTPIFImportExportSummary(bundle, imported, kTPIFImportMode, parent);
        status != noErr)
        return status;
    // The panels' pending edits go into the ticket first, so that what the file leaves alone
    // survives the panels' reload after the merge.
    TPIFRunPDESync(session, 0);
    return TPIFImportMergeIntoJobTicket(session, imported);
}

OSStatus RunModalTPIFExportDialog(const Bundle& bundle, PrintSession* session, QString path, QWidget* parent)
{
    if (!session)
        return kPMNoSession;
    TPIFRunPDESync(session, 0);
    if (const OSStatus status =
            DisplayTPIFImportExportSummary(bundle, TPIFExportItems(settingsOf(session)), kTPIFExportMode, parent);
        status != noErr)
        return status;
    if (path.isEmpty())
        path = QFileDialog::getSaveFileName(parent, text(bundle, "TPIFExportChooseTitle"), "Job Ticket.tpif",
                                            text(bundle, "TPIFFileFilter"));
    if (path.isEmpty())
        return userCanceledErr;
    const OSStatus status = TPIFExportSessionToFileAtPath(session, path.toStdString());
    if (status != noErr)
        showMessage(parent, QMessageBox::Warning,
                    text(bundle, "TPIFExportFailedMessage", {QFileInfo(path).fileName(), status}));
    return status;
}

} // namespace talmo::advanced
