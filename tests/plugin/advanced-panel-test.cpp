// The Advanced panel of the loaded bundle through its record; TPIF import and export by path.
#include "device/device.h"
#include "panels/advanced/advanced-dialogs.h"
#include "paperlib/paperlib.h"
#include "testing/loopback-servers/loopback-servers.h"
#include "tests/plugin/loaded-bundle.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

#include <filesystem>
#include <fstream>

#include <unistd.h>

using namespace talmo;

namespace {

constexpr uint32_t kAdvn = FourCC("Advn");
const std::string kSource = TALMO_RESOURCES_DIR "/..";

// Every control with a value it can show that is not its default.
struct ControlRow {
    int id;
    const char* key;
    int32_t value;
} const kControls[] = {
    // clang-format off
    {1, kAdvancedBookletLayoutOrderStrKey, 2}, {2, kAdvancedRotateImage180Key, 2}, {3, kOutputOrderKey, 5},
    {4, kOPISubsitutionKey, 3}, {5, kOPIPrescanKey, 4}, {6, kPagesToPrintSelectedKey, 1},
    {7, kPagesToPrintFromKey, 3}, {8, kPagesToPrintToKey, 12}, {9, kEmitTPIFKey, 1},
    // clang-format on
};

class AdvancedPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        ops_ = panelOperations("GetAdvancedPanelInterface");
        ASSERT_TRUE(ops_.Prologue);
        ASSERT_EQ(ops_.Prologue(&context_, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
        ASSERT_EQ(ops_.Initialize(context_, nullptr, nullptr, pane_.get(), &session_), noErr);
        std::filesystem::create_directories(dir_);
    }
    void TearDown() override
    {
        ops_.Terminate(context_, noErr);
        std::filesystem::remove_all(dir_);
    }

    // The control's value as a ticket number: a popup's row value, a field's number, a box 0/1.
    // The bundle's controls are its own classes, so they are read through Qt's base classes.
    int32_t shown(int id)
    {
        QWidget* w = GetControlByID(pane_.get(), {kAdvn, id});
        if (auto* popup = qobject_cast<QComboBox*>(w))
            return popup->currentData(kItemReferenceRole).toInt();
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(w))
            return spin->text().remove(QRegularExpression("[^0-9]")).toInt();
        return qobject_cast<QCheckBox*>(w)->isChecked();
    }
    void show(int id, int32_t value) // popups and the check box
    {
        QWidget* w = GetControlByID(pane_.get(), {kAdvn, id});
        if (auto* popup = qobject_cast<QComboBox*>(w))
            popup->setCurrentIndex(popup->findData(value, kItemReferenceRole));
        else
            qobject_cast<QCheckBox*>(w)->setChecked(value != 0);
    }
    Ticket& ticket() { return session_.printSettings(); }
    QString write(const std::string& name, const std::string& text)
    {
        std::ofstream(dir_ + name) << text;
        return QString::fromStdString(dir_ + name);
    }

    // Answers the modal dialogs to come, one step each: the summary's button named so, or OK of
    // a message box (whose text is kept). The summary's text is kept too.
    void answer(std::vector<const char*> steps)
    {
        if (steps.empty())
            return;
        QTimer::singleShot(0, [this, steps] {
            QWidget* modal = QApplication::activeModalWidget();
            ASSERT_TRUE(modal);
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                messages_ << box->text();
                box->accept();
            } else {
                summary_ = modal->findChild<QPlainTextEdit*>("summary")->toPlainText();
                modal->findChild<QPushButton*>(steps.front())->click();
            }
            answer({steps.begin() + 1, steps.end()});
        });
    }

    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    std::unique_ptr<QWidget> pane_ = std::make_unique<QWidget>();
    PrintSession session_;
    const std::string dir_ = ::testing::TempDir() + "advanced-" + std::to_string(::getpid()) + "/";
    QStringList messages_;
    QString summary_;
};

TEST_F(AdvancedPanel, EveryControlTravelsBothWaysAndTheDefaultsRemoveTheirKeys)
{
    for (const ControlRow& row : kControls)
        ticket().set(row.key, pl::makeInt(row.value), "t");
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    for (const ControlRow& row : kControls)
        EXPECT_EQ(shown(row.id), row.value) << row.key;

    for (const ControlRow& row : kControls)
        ticket().remove(row.key);
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    for (const ControlRow& row : kControls) {
        EXPECT_TRUE(pl::equal(ticket().get(row.key), pl::makeInt(row.value))) << row.key;
        EXPECT_EQ(ticket().creatorOf(row.key), "com.talmo.printingmanager") << row.key;
    }

    for (int id : {1, 2, 3, 4, 5, 6, 9}) // popups to their first row, the box off
        show(id, id <= 5 ? kNotSet : 0);
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    for (const ControlRow& row : kControls) // the switch stays, off: missing would mean on
        EXPECT_EQ(ticket().contains(row.key), row.id == 9) << row.key;
    EXPECT_TRUE(pl::equal(ticket().get(kEmitTPIFKey), pl::makeInt(0)));
}

TEST_F(AdvancedPanel, OddTicketValuesReadAsSomethingTheControlsCanShow)
{
    struct {
        int32_t rotation, from, to, shownRotation, shownFrom, shownTo;
    } const rows[] = {
        {7, 9, 3, kNotSet, 9, 9},    // no such row; a range running backwards
        {1, -4, 100000, 1, 1, 9999}, // pages outside what can be printed
        {2, INT32_MAX, INT32_MIN, 2, 9999, 9999},
    };
    for (const auto& row : rows) {
        ticket().set(kAdvancedRotateImage180Key, pl::makeInt(row.rotation), "t");
        ticket().set(kPagesToPrintSelectedKey, pl::makeInt(1), "t");
        ticket().set(kPagesToPrintFromKey, pl::makeInt(row.from), "t");
        ticket().set(kPagesToPrintToKey, pl::makeInt(row.to), "t");
        ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
        EXPECT_EQ((std::array{shown(2), shown(7), shown(8)}),
                  (std::array{row.shownRotation, row.shownFrom, row.shownTo}));
    }
}

TEST_F(AdvancedPanel, SummaryNamesOnlyWhatIsSet)
{
    for (const ControlRow& row : kControls)
        if (row.id == 2 || (row.id >= 6 && row.id <= 8))
            ticket().set(row.key, pl::makeInt(row.value), "t");
    ticket().set(kEmitTPIFKey, pl::makeInt(0), "t");
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    pl::ArrayPtr titles, texts;
    ASSERT_EQ(ops_.GetSummaryText(context_, &titles, &texts), noErr);
    ASSERT_TRUE(titles && texts);
    std::vector<std::string> lines;
    for (size_t i = 0; i < titles->size() && i < texts->size(); ++i)
        lines.push_back(pl::as<pl::String>(titles->at(i))->text + ": " + pl::as<pl::String>(texts->at(i))->text);
    EXPECT_EQ(lines, (std::vector<std::string>{"Rotate Image 180°: On", "Pages to Print: 3 - 12"}));
}

TEST_F(AdvancedPanel, ImportAppliesTheFilesThatReadOnceTheUserConfirms)
{
    SetExtensionBundle(**bundle);
    const QString good = QString::fromStdString(kSource + "/tests/tpif/data/tpif-plain-job.tpif");
    const QString entity = write("entity.tpif", "<?xml version=\"1.0\"?>\n<!DOCTYPE tpif [<!ENTITY x \"y\">]>\n"
                                                "<tpif><job-name>&x;</job-name></tpif>\n");
    const QString garbage = write("garbage.tpif", std::string("\0\xff<tpif", 7));
    struct {
        QStringList paths;
        const char* button; // of the summary; null when none is shown
        OSStatus status;
    } const rows[] = {
        {{entity, garbage}, nullptr, kImportFileFailed},
        {{QString::fromStdString(dir_) + "missing.tpif"}, nullptr, kImportFileFailed},
        {{good}, "cancel", userCanceledErr},
    };
    ticket().set(kJobNotesJobNameKey, pl::makeString("Before"), "t");
    const pl::DictPtr before = pl::deepCopy(ticket().asDictionary());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.paths.back().toStdString());
        messages_.clear();
        answer(row.button ? std::vector<const char*>{row.button} : std::vector<const char*>(row.paths.size(), "OK"));
        EXPECT_EQ(advanced::RunModalTPIFImportDialog(**bundle, &session_, row.paths), row.status);
        EXPECT_EQ(messages_.size(), row.button ? 0 : row.paths.size());
        EXPECT_TRUE(pl::equal(ticket().asDictionary(), before));
    }

    // A damaged file among good ones is reported; the good ones still apply.
    messages_.clear();
    answer({"OK", "copyAll", "default"});
    EXPECT_EQ(advanced::RunModalTPIFImportDialog(**bundle, &session_, {entity, good}), noErr);
    EXPECT_EQ(messages_.size(), 1);
    EXPECT_TRUE(pl::equal(ticket().get(kJobNotesJobNameKey), pl::makeString("Annual report 2026")));
    EXPECT_TRUE(summary_.contains("Annual report 2026"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), summary_);
    SetExtensionBundle(std::nullopt);
}

TEST_F(AdvancedPanel, ExportWritesWhatTheWriterMakesOfTheTicket)
{
    auto example = pl::as<pl::Dictionary>(pl::readPlistFile(kSource + "/examples/tpif-plain-job.plist"));
    ASSERT_EQ(ticket().loadDictionary(example, "t"), noErr);
    const std::string path = dir_ + "out.tpif";

    answer({"cancel"});
    EXPECT_EQ(advanced::RunModalTPIFExportDialog(**bundle, &session_, QString::fromStdString(path)), userCanceledErr);
    EXPECT_FALSE(std::filesystem::exists(path));

    answer({"default"});
    ASSERT_EQ(advanced::RunModalTPIFExportDialog(**bundle, &session_, QString::fromStdString(path)), noErr);
    std::ifstream in(path);
    const std::string written{std::istreambuf_iterator<char>(in), {}};
    char* buffer = nullptr;
    size_t length = 0;
    FILE* stream = open_memstream(&buffer, &length);
    WriteTPIF(stream, TPIFExportItems(ticket().asDictionary()));
    std::fclose(stream);
    const std::string expected(buffer, length);
    std::free(buffer);
    EXPECT_GT(expected.size(), 100u);
    EXPECT_EQ(written, expected);

    answer({"default", "OK"}); // the summary, then the message about the failed write
    EXPECT_EQ(
        advanced::RunModalTPIFExportDialog(**bundle, &session_, QString::fromStdString(dir_ + "no/such/dir.tpif")),
        kTPIFExportIOErr);
    EXPECT_EQ(messages_.size(), 1);
}

// The picture links to the page a real IPP printer gives with its papers; the offline one has none.
TEST_F(AdvancedPanel, AboutPictureLinksToThePrintersOwnPage)
{
    test::IppEvePrinter printer;
    ASSERT_EQ(printer.start(kSource + "/resources/ppd/talmo-studio-press.conf"), "") << "no test printer";
    const std::string port = std::to_string(printer.port()), uri = "ipp://localhost:" + port + "/ipp/print";
    ASSERT_EQ(RetrievePrinterStockLibrary(uri), noErr);
    ASSERT_TRUE(LoadInstallableOptions(PPDOpenAsCurrent(kSource + "/resources/ppd/talmo-studio-press.ppd"),
                                       kTalmoInstalledFeatureMap));
    for (const std::string& deviceURI : {uri, std::string("file:///dev/null")}) {
        Printer p = DemoPrinter();
        p.deviceURI = deviceURI;
        session_.setPrinter(p);
        QString shown = "no picture";
        QTimer::singleShot(0, [&] {
            QWidget* modal = QApplication::activeModalWidget();
            if (QWidget* mimic = modal ? modal->findChild<QWidget*>("mimic") : nullptr)
                shown = mimic->inherits("QAbstractButton") ? "link to " + mimic->toolTip() : "picture";
            modal->close();
        });
        EXPECT_EQ(advanced::RunModalAboutDialog(**bundle, &session_), noErr);
        EXPECT_EQ(shown.toStdString(), deviceURI == uri ? "link to https://localhost:" + port + "/" : "picture");
    }
    UnloadInstallableOptions();
    PPDCloseCurrent();
}

} // namespace
