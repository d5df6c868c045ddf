// Three user walkthroughs through the loaded bundle's panels and dialogs (clicks, menu choices,
// typed text), then the sync of Print and a job to a loopback IPP printer that keeps what it
// receives: the job's attributes and the TPIF ticket inside the PDF hold what the user chose.
#include "device/device.h"
#include "host/print-job.h"
#include "marking/marking.h"
#include "tests/plugin/loaded-bundle.h"

#include <QTest>
#include <QtWidgets>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

using namespace talmo;

namespace {

const std::string kSource = TALMO_SOURCE_DIR;

std::string slurp(const std::string& path)
{
    std::string bytes;
    ReadFileBytes(path, bytes, 1 << 24);
    return bytes;
}
template <class T = QAbstractButton> T* ctl(QWidget* w, const char* sig, int id)
{
    return GetControlByID<T>(w, {FourCCFromText(sig), id});
}
void press(QWidget* w, const char* signature, int id = 92) { ctl(w, signature, id)->click(); }
void choose(QComboBox* popup, const QVariant& value) // by ticket value or text, as a click picks
{
    const int row = value.typeId() == QMetaType::QString ? popup->findText(value.toString()) : popup->findData(value);
    ASSERT_GE(row, 0) << value.toString().toStdString();
    popup->setCurrentIndex(row);
    emit popup->activated(row);
}
QAction* item(QMenu* menu, const QString& text)
{
    emit menu->aboutToShow(); // menus are built as they open
    for (QAction* a : menu->actions())
        if (a->text().remove('&') == text)
            return a;
    return nullptr;
}
// Runs `user` in the next modal window to come up (from a queued call, or over the current one).
void whenModal(std::function<void(QWidget*)> user, QPointer<QWidget> now = QApplication::activeModalWidget(),
               int tries = 2000)
{
    QTimer::singleShot(10, [=] {
        if (QWidget* w = QApplication::activeModalWidget(); w && w != now)
            return user(w);
        ASSERT_GT(tries, 0) << "the dialog did not come up";
        whenModal(user, now, tries - 1);
    });
}
// Clicks or triggers `what` and returns once the modal window it opened is answered and gone.
void inModal(QObject* what, std::function<void(QWidget*)> user)
{
    ASSERT_TRUE(what);
    bool done = false;
    QPointer<QWidget> shown;
    whenModal([&](QWidget* w) { shown = w, user(w), done = true; });
    if (auto* action = qobject_cast<QAction*>(what))
        action->trigger();
    else
        static_cast<QAbstractButton*>(what)->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return done && (!shown || !shown->isVisible()); }, 30000));
}
void chooseFile(QWidget* fileDialog, const std::string& path) // types the whole path, presses Open or Save
{
    fileDialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
    static_cast<QDialog*>(fileDialog)->accept();
}
void confirm(QWidget* summary) { summary->findChild<QPushButton*>("default")->click(); } // Import or Export
void expectIn(const std::string& text, std::initializer_list<std::string> parts)
{
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << " is not in\n" << text;
}

class Walkthrough : public LoadedBundle {
protected:
    static void SetUpTestSuite()
    {
        LoadedBundle::SetUpTestSuite();
        // Test programs share the daemons the first printer may start: one at a time.
        ::flock(::open("/tmp/talmo-ippeveprinter.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666), LOCK_EX);
        why_ = printer_.start(kSource + "/resources/ppd/talmo-studio-press.conf", "Talmo Walkthrough", true);
    }
    void SetUp() override
    {
        ASSERT_EQ(why_, "") << "the test printer cannot run";
        for (const char* v : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
            ::setenv(v, (home_ + "/" + v).c_str(), 1);
        instance_ = newInstance();
        ASSERT_EQ(instance_->vtablePtr->QueryInterface(instance_, bytesOf(kExtension), (void**)&intf_), 0);
        Printer p = DemoPrinter();
        p.deviceURI = printer_.uri();
        p.ppdPath = kSource + "/resources/ppd/talmo-studio-press.ppd"; // not found here: the bundle is not ours
        session_.setPrinter(p);
        session_.printSettings().set(host::kPMJobNameKey, pl::makeString("sample.pdf"), "talmo-print");
        ASSERT_EQ(t().Prologue(&context_, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
        ASSERT_EQ(t().Initialize(context_, nullptr, nullptr, &pane_, &session_), noErr);
        pane_.show();
        ASSERT_EQ(t().Open(context_), noErr);
    }
    void TearDown() override
    {
        if (context_) {
            t().Close(context_), t().Terminate(context_, noErr), t().Release(&intf_);
            instance_->vtablePtr->Release(instance_);
        }
        std::filesystem::remove_all(home_);
    }
    PlugInIntfVTable& t() { return *intf_->vtable; }
    template <class T = QAbstractButton> T* pane(const char* sig, int id) { return ctl<T>(&pane_, sig, id); }
    void panel(const char* title) { choose(pane<QComboBox>("Tshl", 1), title); }
    // Prints as the dialog does (sync, the TPIF ticket attached, the job sent) and keeps the
    // job's attributes as the printer lists them and the ticket inside the PDF it received.
    void print()
    {
        ASSERT_EQ(t().Sync(context_, &session_, false), noErr);
        const pl::DictPtr ticket = session_.printSettings().asDictionary();
        ASSERT_TRUE(host::WantsTPIF(ticket));
        ASSERT_TRUE(host::AttachFileToPdf(kSource + "/examples/sample.pdf", home_ + "/job.pdf",
                                          host::kJobTicketAttachmentName, host::RenderTPIF(ticket), nullptr));
        const auto r = host::SubmitPdfJob(printer_.uri(), home_ + "/job.pdf", host::JobRequestFromTicket(ticket, "me"));
        ASSERT_TRUE(r.accepted) << r.message;
        for (const auto& kept : std::filesystem::directory_iterator(printer_.spoolFolder()))
            if (kept.path().filename().string().starts_with(std::to_string(r.jobId) + "-") &&
                kept.path().extension() == ".pdf")
                run("pdfdetach -save 1 -o " + home_ + "/arrived.tpif " + kept.path().string());
        run("ipptool -tv " + printer_.uri() + "/" + std::to_string(r.jobId) + " get-job-attributes.test >" + home_ +
            "/job.txt");
        arrived_ = slurp(home_ + "/arrived.tpif"), job_ = slurp(home_ + "/job.txt");
    }
    static void run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }

    static inline host::LoopbackIppPrinter printer_;
    static inline std::string why_;
    const std::string home_ = ::testing::TempDir() + "walkthrough-" + std::to_string(::getpid());
    std::string arrived_, job_;
    IUnknownInstance* instance_ = nullptr;
    PlugInIntf* intf_ = nullptr;
    QWidget pane_;
    PrintSession session_;
    PMPDEContext context_ = nullptr;
};

TEST_F(Walkthrough, PaperOutputChoicesReachThePrinter)
{
    panel("Paper/Output");
    auto* paper = pane<QWidget>("POut", 1)->findChild<QToolButton*>();
    inModal(item(paper->menu(), "Named Paper..."), [](QWidget* d) {
        choose(ctl<QComboBox>(d, "NPap", 1), "Printer Paper List");
        QAbstractItemModel* papers = ctl<QTableView>(d, "NPap", 4)->model();
        // Opened before the host's paper list thread is up, it says the list could not be read:
        // Refresh, as a user would, until the list is there.
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                if (papers->rowCount() < 30 && ctl(d, "NPap", 2)->isEnabled())
                    press(d, "NPap", 2);
                return papers->rowCount() > 30;
            },
            20000));
        ctl<QTableView>(d, "NPap", 4)
            ->selectRow(papers->match(papers->index(0, 1), 0, "Green Divider 160").value(0).row());
        press(d, "NPap", 14); // Add To My Paper List, which shows it there, selected
        press(d, "NPap", 15); // Use In Job
    });
    EXPECT_EQ(paper->text(), "Named: Green Divider 160");
    inModal(item(pane<QPushButton>("POut", 5)->menu(), "Staple and Hole Punch..."), [](QWidget* d) {
        for (int id : {10, 14, 20, 92}) // staples on the left edge, at the top; holes on the left; OK
            press(d, "POMu", id);
    });
    choose(pane<QComboBox>("POut", 10), 4); // stacker
    choose(pane<QComboBox>("POut", 13), 3); // saved job
    inModal(pane("POut", 14),
            [](QWidget* d) { ctl<QLineEdit>(d, "JTyp", 4)->setText("Walkthrough proofs"), press(d, "JTyp"); });
    print();
    expectIn(job_, {"finishings (1setOf enum) = staple-top-left,punch-dual-left",
                    "media-col (collection) = {media-color=green media-size={x-dimension=21000 "
                    "y-dimension=29700} media-type=stationery media-weight-metric=160}",
                    "output-bin (keyword) = stacker"});
    expectIn(arrived_, {">sample.pdf<", ">160<", ">green<", "enum\">20<", "enum\">93<", "enum\">90<",
                        ">Walkthrough proofs<", ">stacker<"});
}

TEST_F(Walkthrough, SpecialPagesReachTheTicketInsideThePdf)
{
    panel("Special Pages");
    inModal(pane("SPgs", 2),
            [](QWidget* d) { choose(ctl<QComboBox>(d, "SPcv", 1), "Front Cover Only"), press(d, "SPcv"); });
    // Page lists typed, through the fields' filters.
    inModal(pane("SPgs", 3), [](QWidget* d) { ctl<QLineEdit>(d, "SPin", 3)->insert("3, 7"), press(d, "SPin"); });
    inModal(pane("SPgs", 4), [](QWidget* d) {
        ctl<QLineEdit>(d, "SPex", 1)->insert("10-12");
        choose(ctl<QComboBox>(d, "SPex", 3), 1); // grayscale
        inModal(ctl(d, "SPex", 10), [](QWidget* shift) {
            choose(ctl<QComboBox>(shift, "IShf", 1), 1);         // each side on its own
            ctl<QAbstractSpinBox>(shift, "IShf", 4)->stepBy(25); // side 1, a quarter inch right
            press(shift, "IShf");
        });
        press(d, "SPex");
    });
    auto* list = pane<QTableView>("SPgs", 1);
    ASSERT_EQ(list->model()->rowCount(), 4); // the front cover, the two inserts, the exception
    list->selectRow(2);
    inModal(pane("SPgs", 6), [](QWidget* box) { static_cast<QMessageBox*>(box)->buttons().front()->click(); }); // Yes
    EXPECT_EQ(list->model()->index(2, 1).data(), "10-12"); // the insert after page 7 went
    pane("SPgs", 10)->click();                             // Undo
    print();
    expectIn(arrived_, {"<cover-front", "<insert-sheet", "page-number syntax=\"integer\">3<",
                        "page-number syntax=\"integer\">7<", "<page-overrides", ">10<", ">12<",
                        "x-side1-image-shift syntax=\"integer\">635<", "monochrome-grayscale"});
}

TEST_F(Walkthrough, WatermarkTpifExportAndImport)
{
    panel("Booklet and Watermark");
    inModal(item(pane<QPushButton>("BWmk", 1)->menu(), "New..."), [](QWidget* d) {
        ctl<QLineEdit>(d, "WmEd", 3)->setText("WALKTHROUGH");
        choose(ctl<QComboBox>(d, "WmEd", 6), "DejaVuSans-Bold");
        press(d, "WmEd", 20);
    });
    panel("Advanced");
    pane("Advn", 9)->click(); // off, since a missing switch reads as on, and on again
    pane("Advn", 9)->click();
    const std::string exported = home_ + "/Job Ticket.tpif", saved = home_ + "/saved.plist";
    inModal(pane("Advn", 11), [&](QWidget* summary) {
        whenModal([&](QWidget* w) { chooseFile(w, exported); });
        confirm(summary);
    });
    ASSERT_TRUE(WriteFileAtomically(saved, pl::writePlist(session_.printSettings().asDictionary()), 0644));
    run(TALMO_CLI " tpif export " + saved + " -o " + home_ + "/cli.tpif");
    // The panel exports only the extension's own items: the document's name (a platform item) is not in the file.
    std::string want = slurp(home_ + "/cli.tpif");
    ASSERT_NE(want.find(">sample.pdf</job-name>"), std::string::npos);
    EXPECT_EQ(slurp(exported), want.erase(want.find(">sample.pdf<") + 1, 10));

    inModal(pane("Advn", 10), [](QWidget* w) {
        whenModal(confirm);
        chooseFile(w, kSource + "/tests/plugin/data/walkthrough-import.tpif");
    });
    EXPECT_EQ(pane<QPlainTextEdit>("JNot", 4)->toPlainText(), "Trim after printing");
    EXPECT_EQ(pane<QComboBox>("POut", 3)->currentData(), 3);  // two-sided, short edge
    EXPECT_EQ(pane<QComboBox>("POut", 10)->currentData(), 4); // stacker
    EXPECT_EQ(pane<QTableView>("SPgs", 1)->model()->index(0, 1).data(), "5");
    print();
    expectIn(arrived_, {"<insert-sheet", ">5<", ">Trim after printing<", ">two-sided-short-edge<"});
    EXPECT_TRUE(pl::equal(session_.printSettings().get(kWatermarkKey), pl::makeString("WALKTHROUGH")));
    _WatermarkData record;
    ASSERT_TRUE(loadWatermarkData(kWatermarksFile, "WALKTHROUGH", record));
    EXPECT_STREQ(record.fontName, "DejaVuSans-Bold");
}

} // namespace
