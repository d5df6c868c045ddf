// talmo-print: a print dialog that carries the Talmo extension and prints a PDF through CUPS.
// It loads the bundle exactly as a print dialog does and hands the extension a page of Qt's
// print dialog as its pane.
#include "host/extension.h"
#include "host/print-job.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSaveFile>
#include <QTabWidget>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

using namespace talmo;
using namespace talmo::host;

namespace {

constexpr const char* kCreator = "talmo-print";

struct Options {
    QString printer, file, ticket, saveTicket, screenshot;
    int panel = 0;
    uint32_t command = 0; // four characters, first in the high byte
    bool print = false, summary = false;
    bool automated() const { return print || summary || !saveTicket.isEmpty() || !screenshot.isEmpty(); }
};

int complain(const std::string& message, int code = 1)
{
    std::fprintf(stderr, "talmo-print: %s\n", message.c_str());
    return code;
}

// The printer the job goes to, and the demo printer when we run one.
struct Destination {
    std::string target; // a CUPS queue name or an IPP URI; empty when nothing can print
    std::string why;    // why nothing can print
    std::unique_ptr<LoopbackIppPrinter> demo;
};

// A CUPS destination, an IPP URI, or, with neither given nor configured, the demo printer:
// its PPD from the bundle, its paper catalog served by a loopback IPP printer when the run may
// print (the offline demo printer otherwise, so scripted runs stay fast and need no daemons).
Destination choosePrinter(PrintSession& session, const std::string& wanted, bool mayPrint)
{
    Destination d;
    if (wanted.rfind("ipp://", 0) == 0 || wanted.rfind("ipps://", 0) == 0) {
        Printer p;
        p.name = p.deviceURI = d.target = wanted;
        session.setPrinter(p);
        return d;
    }
    const bool demoAsked = wanted == "demo";
    if (auto p = demoAsked ? std::nullopt : CupsPrinter(wanted, wanted.empty() ? 1000 : 3000)) {
        d.target = p->name;
        session.setPrinter(std::move(*p), true);
        return d;
    }
    if (!wanted.empty() && !demoAsked) {
        d.why = "no CUPS printer named " + wanted;
        return d;
    }
    Printer p = DemoPrinter();
    p.name = "Talmo Studio Press (demo)";
    d.why = "the demo printer is not running";
    if (mayPrint) {
        auto attrs = ExtensionBundle() ? ExtensionBundle()->resourcePath("ppd/talmo-studio-press.conf") : std::nullopt;
        d.demo = std::make_unique<LoopbackIppPrinter>();
        d.why = attrs ? d.demo->start(*attrs, "Talmo Studio Press") : "the bundle has no demo printer attributes";
        if (d.why.empty()) {
            p.deviceURI = d.target = d.demo->uri();
        } else {
            d.demo.reset();
            complain("demo printer offline: " + d.why);
        }
    }
    session.setPrinter(p);
    return d;
}

void setNumber(Ticket& t, const char* key, int value) { t.set(key, pl::makeInt(value), kCreator); }

class DialogHost {
public:
    DialogHost(PrintSession& session, Extension& ext) : session_(session), ext_(ext) { }

    bool start(QPrinter& printer, std::string* error)
    {
        dialog_ = std::make_unique<QPrintDialog>(&printer);
        dialog_->setOption(QAbstractPrintDialog::PrintPageRange, true);
        pane_ = new QWidget;
        pane_->setObjectName("talmoExtensionPane");
        OSType creator = 0;
        std::string kind, title;
        uint32_t maxH = 0, maxV = 0;
        OSStatus st = table().Prologue(&context_, &creator, &kind, &title, &maxH, &maxV);
        if (st != noErr) {
            *error = "the extension's Prologue failed (" + std::to_string(st) + ")";
            return false;
        }
        pane_->setWindowTitle(QString::fromStdString(title.empty() ? "Talmo Features" : title));
        // The extension lays its panels out within the size it asked for.
        if (maxH > 0 && maxV > 0)
            pane_->setMinimumSize(int(maxH), int(maxV));
        dialog_->setOptionTabs({pane_});
        PMPDEFlags flags = 0;
        st = table().Initialize(context_, &flags, nullptr, pane_, &session_);
        if (st != noErr) {
            *error = "the extension's Initialize failed (" + std::to_string(st) + ")";
            table().Terminate(context_, st);
            return false;
        }
        initialized_ = true;
        return true;
    }

    // Shows the dialog with the extension's page in front and opens the extension.
    void show(int panel)
    {
        dialog_->show();
        // Qt's dialog keeps its option pages folded away behind a button.
        for (QPushButton* b : dialog_->findChildren<QPushButton*>())
            if (b->text().contains("Options") && b->text().contains(">>"))
                b->click();
        for (QTabWidget* tabs : dialog_->findChildren<QTabWidget*>())
            if (int i = tabs->indexOf(pane_); i >= 0)
                tabs->setCurrentIndex(i);
        table().Open(context_);
        opened_ = true;
        if (panel > 0)
            if (auto* chooser = pane_->findChild<QComboBox*>("chooser"); chooser && panel <= chooser->count())
                chooser->setCurrentIndex(panel - 1);
        QApplication::processEvents();
    }

    OSStatus sync() { return table().Sync(context_, &session_, false); }

    // Qt's printer box shows the printer we print to; it is chosen on the command line.
    void showPrinter(const Printer& p)
    {
        const QString name = QString::fromStdString(p.name);
        dialog_->setWindowTitle("Print to " + name);
        if (auto* printers = dialog_->findChild<QComboBox*>("printers")) {
            if (printers->currentText() != name)
                printers->setItemText(printers->currentIndex(), name);
            printers->setEnabled(false);
            printers->setToolTip("Chosen with --printer when talmo-print starts");
        }
        for (const char* hidden : {"properties", "lOutput", "filename", "fileBrowser"})
            if (auto* w = dialog_->findChild<QWidget*>(hidden))
                w->setVisible(false);
        if (auto* location = dialog_->findChild<QLabel*>("location"))
            location->setText(p.deviceURI == "file:///dev/null" ? QString("Offline demo: nothing is sent")
                                                                : QString::fromStdString(p.deviceURI));
        if (auto* type = dialog_->findChild<QLabel*>("type"))
            type->setText(QString::fromStdString(p.makeAndModel.empty() ? "IPP printer" : p.makeAndModel));
    }

    std::vector<std::pair<std::string, std::string>> summary()
    {
        pl::ArrayPtr titles, values;
        table().GetSummaryText(context_, &titles, &values);
        std::vector<std::pair<std::string, std::string>> out;
        const size_t n = titles ? titles->size() : 0;
        for (size_t i = 0; i < n; ++i) {
            auto t = pl::as<pl::String>(titles->at(i));
            auto v = values && i < values->size() ? pl::as<pl::String>(values->at(i)) : nullptr;
            out.emplace_back(t ? t->text : "", v ? v->text : "");
        }
        return out;
    }

    bool screenshot(const QString& path, std::string* error) { return savePicture(dialog_.get(), path, error); }

    // Sends `command` as the control of the extension that carries it would: the button in
    // view is clicked, or the enabled menu item of a button in view is triggered (the bundle's
    // controls name their command in the dynamic property "command"). The first modal dialog
    // that comes up is saved to `picture` when one is given; with `closeModals` every modal
    // dialog is cancelled once it is up, so that a scripted run goes on.
    bool command(uint32_t command, const QString& picture, bool closeModals, std::string* error)
    {
        QObject* carrier = nullptr;
        for (QAbstractButton* b : pane_->findChildren<QAbstractButton*>())
            if (!carrier && b->property("command").toUInt() == command && b->isVisible() && b->isEnabled())
                carrier = b;
        for (QAction* a : pane_->findChildren<QAction*>()) {
            QWidget* owner = qobject_cast<QWidget*>(a->parent());
            while (qobject_cast<QMenu*>(owner))
                owner = owner->parentWidget();
            if (!carrier && a->property("command").toUInt() == command && a->isEnabled() && owner && owner->isVisible())
                carrier = a;
        }
        if (!carrier) {
            *error = "no control in view carries the command \"" + fourCharacters(command) + "\"";
            return false;
        }
        bool saved = picture.isEmpty(), failed = false;
        int seen = 0;
        QTimer watch;
        watch.setInterval(50);
        QObject::connect(&watch, &QTimer::timeout, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || modal == dialog_.get() || ++seen < 3) // laid out and painted first
                return;
            if (!saved)
                saved = true, failed = !savePicture(modal, picture, error);
            if (closeModals) {
                seen = 0;
                if (auto* d = qobject_cast<QDialog*>(modal))
                    d->reject();
                else
                    modal->close();
            }
        });
        watch.start();
        if (auto* button = qobject_cast<QAbstractButton*>(carrier))
            button->click();
        else
            static_cast<QAction*>(carrier)->trigger();
        watch.stop();
        if (!saved)
            *error = "the command \"" + fourCharacters(command) + "\" opened no dialog";
        return saved && !failed;
    }

    void finish(OSStatus status)
    {
        if (opened_)
            table().Close(context_);
        opened_ = false;
        if (initialized_)
            table().Terminate(context_, status);
        initialized_ = false;
    }

    ~DialogHost() { finish(noErr); }

    QPrintDialog& dialog() { return *dialog_; }

private:
    static std::string fourCharacters(uint32_t c)
    {
        return {char(c >> 24), char(c >> 16 & 0xFF), char(c >> 8 & 0xFF), char(c & 0xFF)};
    }
    static bool savePicture(QWidget* window, const QString& path, std::string* error)
    {
        QApplication::processEvents();
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !window->grab().save(&file, "PNG") || !file.commit()) {
            *error = "cannot write " + path.toStdString() + ": " + file.errorString().toStdString();
            return false;
        }
        return true;
    }

    PlugInIntfVTable& table() { return ext_.table(); }
    PrintSession& session_;
    Extension& ext_;
    std::unique_ptr<QPrintDialog> dialog_;
    QWidget* pane_ = nullptr;
    PMPDEContext context_ = nullptr;
    bool initialized_ = false, opened_ = false;
};

bool saveTicket(PrintSession& session, const std::string& path, std::string* error)
{
    int err = 0;
    if (!WriteFileAtomically(path, pl::writePlist(session.printSettings().asDictionary()), 0644, &err)) {
        *error = "cannot write " + path + ": " + std::strerror(err);
        return false;
    }
    return true;
}

// Prints the document as the ticket says, the TPIF job ticket inside it when asked for.
SubmitResult printDocument(PrintSession& session, const Destination& dest, const std::string& file)
{
    SubmitResult r;
    if (file.empty()) {
        r.message = "no document to print (give a PDF file)";
        return r;
    }
    if (dest.target.empty()) {
        r.message = "cannot print: " + dest.why;
        return r;
    }
    const pl::DictPtr ticket = session.printSettings().asDictionary();
    const JobRequest request = JobRequestFromTicket(ticket, ConsoleUserName());
    std::string document = file;
    std::string attached;
    if (WantsTPIF(ticket)) {
        if (std::string tpif = RenderTPIF(ticket); !tpif.empty()) {
            const char* tmp = std::getenv("TMPDIR");
            std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/talmo-print-XXXXXX.pdf";
            const int fd = ::mkstemps(templ.data(), 4);
            if (fd < 0) {
                r.message = "no temporary file for the job";
                return r;
            }
            ::close(fd);
            attached = document = templ;
            std::string why;
            if (!AttachFileToPdf(file, attached, kJobTicketAttachmentName, tpif, &why)) {
                ::unlink(attached.c_str());
                r.message = "cannot attach the job ticket to " + file + ": " + why;
                return r;
            }
        }
    }
    r = SubmitPdfJob(dest.target, document, request);
    if (!attached.empty())
        ::unlink(attached.c_str());
    return r;
}

void loadDialogSettings(Ticket& t, QPrinter& printer)
{
    if (auto copies = pl::as<pl::Integer>(t.get(kPMCopiesKey)); copies && copies->value > 0 && copies->value < 10000)
        printer.setCopyCount(int(copies->value));
    auto first = pl::as<pl::Integer>(t.get(kPMFirstPageKey));
    auto last = pl::as<pl::Integer>(t.get(kPMLastPageKey));
    if (first && last && first->value >= 1 && last->value >= first->value && last->value < INT32_MAX) {
        printer.setPrintRange(QPrinter::PageRange);
        printer.setFromTo(int(first->value), int(last->value));
    }
}

// What the user chose in Qt's own part of the dialog goes into the ticket as the platform's
// items before the extension syncs.
void storeDialogSettings(Ticket& t, const QPrinter& printer)
{
    setNumber(t, kPMCopiesKey, printer.copyCount());
    if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
        setNumber(t, kPMFirstPageKey, printer.fromPage());
        setNumber(t, kPMLastPageKey, printer.toPage());
    } else {
        t.remove(kPMFirstPageKey);
        t.remove(kPMLastPageKey);
    }
}

// Installed, shipped defaults live in <prefix>/share/talmo; make them visible to the
// preferences layer also when the prefix is not a system one.
void addSharedDataFolder(const std::string& programFolder)
{
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path share = fs::weakly_canonical(fs::path(programFolder) / "../share", ec);
    if (ec || !fs::exists(share / "talmo", ec))
        return;
    const char* old = std::getenv("XDG_DATA_DIRS");
    std::string dirs = share.string() + ":" + (old && *old ? old : "/usr/local/share:/usr/share");
    ::setenv("XDG_DATA_DIRS", dirs.c_str(), 1);
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("talmo-print");
    QApplication::setApplicationDisplayName("Talmo Print");
    QApplication::setDesktopFileName("talmo-print");
    QApplication::setWindowIcon(QIcon::fromTheme("talmo-print"));

    QCommandLineParser parser;
    parser.setApplicationDescription("Print a PDF with the Talmo print dialog extension.");
    parser.addHelpOption();
    parser.addOptions({
        {"printer", "CUPS printer name, ipp:// URI or \"demo\" (default: the CUPS default, else the demo printer).",
         "NAME|URI"},
        {"ticket", "Load the print settings ticket from this property list.", "IN.plist"},
        {"panel", "Show panel N (1-6) of the extension.", "N"},
        {"save-ticket", "Sync as Print would, write the print settings ticket, exit without printing.", "OUT.plist"},
        {"print", "Press Print at once: sync and print, exit when the printer accepted the job."},
        {"summary", "Print the extension's summary, one TITLE<TAB>TEXT per line."},
        {"screenshot", "Save a picture of the dialog (of the modal dialog that --command opens).", "OUT.png"},
        {"command",
         "After the dialog is shown, send this four-character command (\"Abou\", \"TWmN\", ...) to the "
         "extension, as the button or menu item in view that carries it would.",
         "CODE"},
    });
    parser.addPositionalArgument("FILE.pdf", "The document to print.");
    parser.process(app);
    Options o;
    o.printer = parser.value("printer");
    o.ticket = parser.value("ticket");
    o.saveTicket = parser.value("save-ticket");
    o.screenshot = parser.value("screenshot");
    o.print = parser.isSet("print");
    o.summary = parser.isSet("summary");
    if (parser.isSet("panel")) {
        bool ok = false;
        o.panel = parser.value("panel").toInt(&ok);
        if (!ok || o.panel < 1 || o.panel > 6)
            return complain("--panel takes a number from 1 to 6", 2);
    }
    if (parser.isSet("command")) {
        const QByteArray code = parser.value("command").toLatin1();
        if (code.size() != 4 || parser.value("command").size() != 4)
            return complain("--command takes four characters", 2);
        for (char c : code)
            o.command = o.command << 8 | uint8_t(c);
    }
    if (parser.positionalArguments().size() > 1)
        return complain("give one PDF file", 2);
    if (!parser.positionalArguments().isEmpty())
        o.file = parser.positionalArguments().first();
    // Started from the desktop menu there is no document yet: ask for one.
    if (o.file.isEmpty() && !o.automated()) {
        o.file =
            QFileDialog::getOpenFileName(nullptr, "Choose a PDF to print", QDir::homePath(), "PDF documents (*.pdf)");
        if (o.file.isEmpty())
            return 0;
    }
    if (!o.file.isEmpty() && !QFileInfo(o.file).isReadable())
        return complain("cannot read " + o.file.toStdString());

    const std::string programFolder = QCoreApplication::applicationDirPath().toStdString();
    addSharedDataFolder(programFolder);
    const std::string bundleFolder = FindBundleFolder(programFolder);
    if (bundleFolder.empty())
        return complain("cannot find TalmoFeatures.plugin (set TALMO_BUNDLE_DIR)");
    if (!ExtensionBundle())
        SetExtensionBundle(Bundle::open(bundleFolder));

    PrintSession session;
    Destination dest = choosePrinter(session, o.printer.toStdString(), o.print || !o.automated());
    if (!o.printer.isEmpty() && o.printer != "demo" && dest.target.empty())
        return complain(dest.why);
    session.printerInfo().set(kPMMakeAndModelNameKey, pl::makeString(session.printer().makeAndModel), kCreator);
    if (!o.ticket.isEmpty()) {
        pl::ParseResult r;
        auto dict = pl::as<pl::Dictionary>(pl::readPlistFile(o.ticket.toStdString(), &r));
        if (!dict)
            return complain(o.ticket.toStdString() + ":" + std::to_string(r.line) + ": " +
                            (r ? "the ticket must be a dictionary" : r.message));
        if (OSStatus st = session.printSettings().loadDictionary(dict, kCreator); st != noErr)
            return complain("cannot load the ticket (" + std::to_string(st) + ")");
    }
    if (!o.file.isEmpty())
        session.printSettings().set(kPMJobNameKey, pl::makeString(QFileInfo(o.file).fileName().toStdString()),
                                    kCreator);

    std::string error;
    auto ext = Extension::load(bundleFolder, &error);
    if (!ext)
        return complain(error);
    QPrinter printer;
    if (!dest.target.empty() && dest.target == session.printer().name) {
        printer.setPrinterName(QString::fromStdString(dest.target));
    } else {
        // Qt's own part of the dialog sees no queue here and falls back to writing a file; give
        // it a name it accepts without asking. Nothing is written there: we print ourselves.
        printer.setOutputFileName(QDir::temp().filePath(QString("talmo-print-%1.pdf").arg(::getpid())));
    }
    loadDialogSettings(session.printSettings(), printer);
    DialogHost host(session, *ext);
    if (!host.start(printer, &error))
        return complain(error);
    host.show(o.panel);
    host.showPrinter(session.printer());

    if (o.command && !host.command(o.command, o.screenshot, o.automated(), &error))
        return complain(error);
    if (o.automated()) {
        if (!o.command && !o.screenshot.isEmpty() && !host.screenshot(o.screenshot, &error))
            return complain(error);
        if (o.summary)
            for (const auto& [title, text] : host.summary()) {
                QString flat = QString::fromStdString(text).split('\n', Qt::SkipEmptyParts).join("; ");
                std::printf("%s\t%s\n", title.c_str(), flat.toStdString().c_str());
            }
        if (!o.saveTicket.isEmpty() || o.print)
            host.sync();
        if (!o.saveTicket.isEmpty() && !saveTicket(session, o.saveTicket.toStdString(), &error))
            return complain(error);
        if (o.print) {
            const SubmitResult r = printDocument(session, dest, o.file.toStdString());
            if (!r.accepted)
                return complain(r.message);
            std::printf("Job %d accepted by %s\n", r.jobId, dest.target.c_str());
        }
        std::fflush(stdout);
        return 0;
    }

    int code = 0;
    QObject::connect(&host.dialog(), &QDialog::finished, [&](int result) {
        if (result == QDialog::Accepted) {
            storeDialogSettings(session.printSettings(), printer);
            host.sync();
            const SubmitResult r = printDocument(session, dest, o.file.toStdString());
            if (!r.accepted) {
                complain(r.message);
                QMessageBox::critical(nullptr, "Printing failed", QString::fromStdString(r.message));
                code = 1;
            } else {
                std::printf("Job %d accepted by %s\n", r.jobId, dest.target.c_str());
            }
        }
        QTimer::singleShot(0, &app, &QApplication::quit);
    });
    QApplication::exec();
    return code;
}
