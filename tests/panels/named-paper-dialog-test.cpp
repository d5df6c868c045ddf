// The named paper library dialog driven through its controls inside its own event loop, with the
// built bundle, a private preferences home and, for the printer's list, a loopback printer.
#include "panels/dialogs/named-paper-dialog.h"
#include "panels/dialogs/named-paper-model_p.h"
#include "panels/dialogs/stock-popup.h"
#include "testing/loopback-servers/loopback-servers.h"
#include "toolkit/toolkit-fixture.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <functional>
#include <map>

using namespace talmo;
using NamedPaperDialogTest = talmo::test::ToolkitTest;

namespace {

constexpr uint32_t kLib = FourCC("NPap");
enum { kListPopup = 1, kMessage = 3, kTable = 4, kNew = 10, kAdd = 14, kUse = 15, kClose = 17 };

// Runs `user` once a modal window of type T (holding control `signature` 1, when given) is up:
// nested dialogs open from a click, so it waits for them. A library dialog left open is closed.
template <class T> void whenModal(uint32_t signature, std::function<void(T*)> user, int tries = 200)
{
    QTimer::singleShot(tries == 200 ? 0 : 10, [signature, user, tries] {
        auto* w = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!w || (signature && !GetControlByID(w, {signature, 1}))) {
            ASSERT_GT(tries, 0) << "no " << T::staticMetaObject.className();
            return whenModal<T>(signature, user, tries - 1);
        }
        user(w);
        if (w->isVisible() && GetControlByID(w, {kLib, kTable}))
            w->reject();
    });
}

template <class T> T* ctl(QWidget* d, uint32_t sig, int id) { return GetControlByID<T>(d, {sig, id}); }
QTableView* table(QDialog* d) { return ctl<QTableView>(d, kLib, kTable); }
NamedPaperTableModel* model(QDialog* d) { return dynamic_cast<NamedPaperTableModel*>(table(d)->model()); }
void click(QDialog* d, int id) { ctl<QPushButton>(d, kLib, id)->click(); }
void selectNamed(QDialog* d, const std::string& name)
{
    for (int row = 0; row < model(d)->rowCount(); ++row)
        if (model(d)->entry(row).stock().customName() == name)
            return table(d)->selectRow(row);
    ADD_FAILURE() << "no row " << name;
}
void showList(QDialog* d, int list)
{
    auto* popup = ctl<QComboBox>(d, kLib, kListPopup);
    popup->setCurrentIndex(list);
    emit popup->activated(list);
}

Stock paper(const std::string& name, int32_t weight)
{
    Stock s;
    s.setCustomName(name);
    s.setWeight(weight);
    return s;
}
void seed(std::initializer_list<Stock> papers)
{
    StockLibraryList list;
    for (const std::string& uuid : [&] {
             std::vector<std::string> keys;
             for (const auto& [k, v] : *list.stockList())
                 keys.push_back(k);
             return keys;
         }())
        list.remove(uuid);
    for (const Stock& s : papers) {
        StockLibrary e;
        e.setStock(s);
        e.setName(*s.customName());
        list.add(&e);
    }
}
// Name -> weight of every stored paper.
std::multimap<std::string, int32_t> stored()
{
    std::multimap<std::string, int32_t> out;
    StockLibraryList list;
    for (const auto& [k, v] : *list.stockList()) {
        const StockLibrary e(pl::as<pl::Dictionary>(v));
        out.emplace(e.stock().customName().value_or(""), e.stock().weight());
    }
    return out;
}

} // namespace

// "bond" stored beside "Bond" (names compare ignoring case): asked and replaced, asked and
// cancelled, or simply added when duplicates are allowed.
TEST_F(NamedPaperDialogTest, DuplicateNamesFollowThePolicy)
{
    struct Case {
        bool forceUnique;
        const char* answer; // the button pressed in the question, none when none is expected
        std::multimap<std::string, int32_t> after;
    } const cases[] = {{true, "Replace", {{"bond", 120}}}, // the entry keeps its key, takes the paper
                       {true, "Cancel", {{"Bond", 90}}},
                       {false, nullptr, {{"Bond", 90}, {"bond", 120}}}};
    for (const Case& c : cases) {
        seed({paper("Bond", 90)});
        NamedPaperPreferences prefs;
        prefs.forceUniqueNames = c.forceUnique;
        ASSERT_TRUE(WriteNamedPaperPreferences(prefs));
        bool asked = false;
        whenModal<QDialog>(kLib, [&](QDialog* d) {
            whenModal<QDialog>(FourCC("NPed"), [&](QDialog* editor) {
                ctl<QLineEdit>(editor, FourCC("NPed"), 1)->setText("bond");
                editor->findChild<StockPopup*>()->applyCommand(kStockCommandWeight, 120);
                if (c.answer)
                    whenModal<QMessageBox>(0, [&](QMessageBox* box) {
                        asked = box->text() == LocalizedText(bundle(), "Replace Named Paper Message");
                        for (QAbstractButton* b : box->buttons())
                            if (b->text() == LocalizedText(bundle(), c.answer))
                                b->click();
                    });
                ctl<QPushButton>(editor, FourCC("NPed"), 20)->click();
            });
            click(d, kNew);
            click(d, kClose);
        });
        EXPECT_FALSE(RunModalNamedPaperDialog(nullptr, bundle(), {}));
        EXPECT_EQ(asked, c.answer != nullptr) << c.forceUnique;
        EXPECT_EQ(stored(), c.after) << (c.answer ? c.answer : "allowed");
    }
}

// The job's paper is marked in use, a 400 gsm paper as unsupported (with its help text), and
// "Use In Job" hands back that paper repaired: weight reset and the library name dropped.
TEST_F(NamedPaperDialogTest, UseInJobReturnsTheRepairedPaper)
{
    seed({paper("Heavy", 400), paper("Plain", 90)});
    NamedPaperDialogSources sources;
    const Stock job = paper("Plain", 90);
    sources.jobStock = &job;
    whenModal<QDialog>(kLib, [&](QDialog* d) {
        std::map<std::string, std::pair<int32_t, QString>> status; // name -> status, tool tip
        for (int row = 0; row < model(d)->rowCount(); ++row)
            status[*model(d)->entry(row).stock().customName()] = {
                model(d)->entry(row).status(), model(d)->index(row, 0).data(Qt::ToolTipRole).toString()};
        EXPECT_EQ(status["Plain"].first, kStockEntryInUse);
        EXPECT_EQ(status["Heavy"], std::make_pair(kStockEntryUnsupportedValues, QString("Unsupported Values")));
        EXPECT_EQ(model(d)->index(0, 5).data().toString(), QString::fromUtf8("400 g/m²")); // sorted by name
        selectNamed(d, "Heavy");
        click(d, kUse);
    });
    Stock chosen = job; // as the stock pop-up's "Named Paper..." runs it
    ASSERT_TRUE(MakeNamedPaperLibraryCommand(nullptr, bundle(), [&] { return sources; })(chosen));
    EXPECT_EQ(chosen.weight(), kNotSet);
    EXPECT_EQ(chosen.customName(), "");
}

// A real printer's 31 papers (and the printer-default row) arrive while the dialog is open;
// one of them goes into the user's list.
TEST_F(NamedPaperDialogTest, PrinterListArrivesWhileOpen)
{
    test::IppEvePrinter printer;
    ASSERT_EQ(printer.start(TALMO_SOURCE_DIR "/tests/paperlib/data/papers-30.conf"), "") << "no test printer";
    ResetPrinterStockList();
    NamedPaperDialogSources sources;
    PrinterPaperFetcher::attach(std::make_shared<PrinterPaperFetcher>(printer.address()), sources);
    whenModal<QDialog>(kLib, [&](QDialog* d) {
        showList(d, 1);
        EXPECT_FALSE(ctl<QPushButton>(d, kLib, kAdd)->isEnabled());
        ASSERT_TRUE(QTest::qWaitFor([d] { return model(d)->rowCount() == 32; }, 20000));
        EXPECT_TRUE(ctl<QLabel>(d, kLib, kMessage)->isHidden());
        table(d)->selectRow(0);
        const std::string name = *model(d)->entry(0).stock().customName();
        click(d, kAdd);
        EXPECT_EQ(stored().count(name), 1u) << name;
        EXPECT_EQ(ctl<QComboBox>(d, kLib, kListPopup)->currentIndex(), 0); // shows where it went
    });
    RunModalNamedPaperDialog(nullptr, bundle(), sources);
    ResetPrinterStockList();
}

// Nothing listens on the port: the dialog stays usable and says why the list is missing.
TEST_F(NamedPaperDialogTest, RefusedConnectionIsReportedInTheDialog)
{
    NamedPaperDialogSources sources;
    const std::string address = "127.0.0.1:" + std::to_string(test::FreeLoopbackPort());
    PrinterPaperFetcher::attach(std::make_shared<PrinterPaperFetcher>(address), sources);
    whenModal<QDialog>(kLib, [&](QDialog* d) {
        showList(d, 1);
        auto* message = ctl<QLabel>(d, kLib, kMessage);
        const QString error = LocalizedText(bundle(), "NamedPaperCommError");
        ASSERT_TRUE(QTest::qWaitFor([&] { return message->text() == error; }, 10000)) << message->text().toStdString();
        EXPECT_TRUE(message->isVisible());
        EXPECT_TRUE(ctl<QWidget>(d, kLib, 2)->isEnabled()); // refresh may be tried again
        EXPECT_EQ(model(d)->rowCount(), 1);                 // only the printer default
    });
    RunModalNamedPaperDialog(nullptr, bundle(), sources);
}

// A column's width and the selected paper come back the next time the dialog opens.
TEST_F(NamedPaperDialogTest, ColumnWidthsAndSelectedRowAreRemembered)
{
    seed({paper("A", 90), paper("B", 120), paper("C", 140)});
    whenModal<QDialog>(kLib, [](QDialog* d) {
        table(d)->setColumnWidth(5, 222);
        selectNamed(d, "B");
    });
    RunModalNamedPaperDialog(nullptr, bundle(), {});
    whenModal<QDialog>(kLib, [](QDialog* d) {
        EXPECT_EQ(table(d)->columnWidth(5), 222);
        const QModelIndexList rows = table(d)->selectionModel()->selectedRows();
        ASSERT_EQ(rows.size(), 1);
        EXPECT_EQ(model(d)->entry(rows[0].row()).stock().customName(), "B");
    });
    RunModalNamedPaperDialog(nullptr, bundle(), {});
}
