// The Special Pages panel of the loaded bundle, driven through its record, its controls and its
// dialogs, as a user drives it.
#include "tests/plugin/loaded-bundle.h"
#include "tpif/tpif.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include <functional>

using namespace talmo;

namespace {

constexpr uint32_t kPanel = FourCC("SPgs");
constexpr const char* kRoundTripTicket = TALMO_RESOURCES_DIR "/../tests/plugin/data/special-pages-round-trip.plist";
enum { kList = 1, kCovers, kInserts, kExceptions, kEdit, kDelete, kDeleteAll, kUp, kDown, kUndo };

class SpecialPagesPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        ::setenv("XDG_CONFIG_HOME", (::testing::TempDir() + "specialpages-home").c_str(), 1);
        ops_ = panelOperations("GetSpecialPagesPanelInterface");
        ASSERT_TRUE(ops_.Prologue);
        ASSERT_EQ(ops_.Prologue(&context_, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
        pane_ = std::make_unique<QWidget>();
        ASSERT_EQ(ops_.Initialize(context_, nullptr, nullptr, pane_.get(), &session_), noErr);
    }
    void TearDown() override { ops_.Terminate(context_, noErr); }

    QPushButton* button(int id) { return GetControlByID<QPushButton>(pane_.get(), {kPanel, id}); }
    QTableView* list() { return GetControlByID<QTableView>(pane_.get(), {kPanel, kList}); }
    int rows() { return list()->model()->rowCount(); }
    QString cell(int row, int column) { return list()->model()->index(row, column).data().toString(); }
    std::vector<QString> column(int c)
    {
        std::vector<QString> out;
        for (int r = 0; r < rows(); ++r)
            out.push_back(cell(r, c));
        return out;
    }

    // Clicks the panel button and runs `fill` on the dialog it opens; `fill` presses a button.
    void inDialog(int id, const std::function<void(QDialog*)>& fill)
    {
        QTimer::singleShot(0, [fill] { fill(qobject_cast<QDialog*>(QApplication::activeModalWidget())); });
        button(id)->click();
        QCoreApplication::processEvents();
    }
    static QWidget* control(QDialog* d, uint32_t signature, int id) { return GetControlByID(d, {signature, id}); }
    static void press(QDialog* d, uint32_t sig, int id) { static_cast<QPushButton*>(control(d, sig, id))->click(); }
    static void choose(QComboBox* popup, const QString& text)
    {
        const int i = popup->findText(text);
        popup->setCurrentIndex(i);
        emit popup->activated(i);
    }
    // Types `text` into the page field and presses OK: "" when the dialog closed, else the alert's title.
    QString typePages(int buttonId, uint32_t signature, int fieldId, const QString& text)
    {
        QString alert;
        inDialog(buttonId, [&](QDialog* d) {
            auto* field = static_cast<QLineEdit*>(control(d, signature, fieldId));
            field->clear();
            field->insert(text); // through the field's filter, as typing is
            QTimer::singleShot(0, [&alert] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                    alert = box->windowTitle();
                    box->accept();
                }
            });
            press(d, signature, 92);
            if (d->isVisible())
                press(d, signature, 91);
        });
        return alert;
    }
    // Answers the delete confirmation with `yes`.
    void deleteWith(int id, bool yes)
    {
        QTimer::singleShot(0, [yes] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box);
            for (QAbstractButton* b : box->buttons())
                if (b->text() == (yes ? "Yes" : "No"))
                    b->click();
        });
        button(id)->click();
    }

    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    std::unique_ptr<QWidget> pane_;
    PrintSession session_;
};

constexpr uint32_t kInsertsDialog = FourCC("SPin"), kExceptionsDialog = FourCC("SPex"), kCoversDialog = FourCC("SPcv");

TEST_F(SpecialPagesPanel, PageListsTypedIntoTheDialogs)
{
    struct {
        bool inserts;
        const char* text;
        std::vector<QString> pages; // the list's pages column after OK
        QString alert;
    } const cases[] = {
        {true, "1-3, 7", {"1", "2", "3", "7"}, ""},
        {true, "a3", {"3"}, ""}, // the field drops the letter
        {true, "0", {"Before 1"}, ""},
        {true, "5-3", {}, "Invalid Page Range"},
        {false, "1-3, 7", {"1-3", "7"}, ""},
        {false, "0", {}, "Invalid Page Number"},
        {false, "1--3", {}, "Invalid Page List"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr); // an empty ticket empties the list
        const QString alert = c.inserts ? typePages(kInserts, kInsertsDialog, 3, c.text)
                                        : typePages(kExceptions, kExceptionsDialog, 1, c.text);
        EXPECT_EQ(alert, c.alert);
        EXPECT_EQ(column(1), c.pages);
    }
}

TEST_F(SpecialPagesPanel, UndoRestoresTheListAndIsThenDisabled)
{
    session_.printSettings().loadDictionary(pl::as<pl::Dictionary>(pl::readPlistFile(kRoundTripTicket)), "t");
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    const std::vector<QString> before = column(2);
    EXPECT_FALSE(button(kUndo)->isEnabled());
    EXPECT_EQ(typePages(kInserts, kInsertsDialog, 3, "5-"), "");
    EXPECT_EQ(rows(), int(before.size()) + 99995);
    list()->scrollToBottom();
    EXPECT_EQ(cell(rows() - 3, 1), "99999") << "inserts come before the exceptions";
    pl::ArrayPtr titles, texts; // the panel's summary names five inserts and counts the rest
    ASSERT_EQ(ops_.GetSummaryText(context_, &titles, &texts), noErr);
    EXPECT_TRUE(pl::as<pl::String>(texts->at(1))->text.ends_with(", and 99993 more"));
    EXPECT_TRUE(button(kUndo)->isEnabled());
    button(kUndo)->click();
    EXPECT_EQ(column(2), before);
    EXPECT_FALSE(button(kUndo)->isEnabled());
}

TEST_F(SpecialPagesPanel, ARefusedDeleteStillReplacesTheSnapshot)
{
    typePages(kInserts, kInsertsDialog, 3, "1-3");
    typePages(kInserts, kInsertsDialog, 3, "7");
    list()->selectRow(0);
    deleteWith(kDelete, false);
    EXPECT_EQ(rows(), 4);
    button(kUndo)->click(); // back to before the question, not before the "7"
    EXPECT_EQ(column(1), (std::vector<QString>{"1", "2", "3", "7"}));
    deleteWith(kDeleteAll, true);
    EXPECT_FALSE(button(kDeleteAll)->isEnabled());
}

TEST_F(SpecialPagesPanel, OnlyInsertsAfterTheSamePageMove)
{
    for (int more : {0, 1}) // one sheet, then two
        inDialog(kInserts, [more](QDialog* d) {
            static_cast<QLineEdit*>(control(d, kInsertsDialog, 3))->setText("4");
            static_cast<QAbstractSpinBox*>(control(d, kInsertsDialog, 4))->stepBy(more);
            press(d, kInsertsDialog, 92);
        });
    typePages(kInserts, kInsertsDialog, 3, "2");
    typePages(kExceptions, kExceptionsDialog, 1, "4");
    auto upDownUndo = [this] {
        return std::array{button(kUp)->isEnabled(), button(kDown)->isEnabled(), button(kUndo)->isEnabled()};
    };
    const std::array<bool, 3> expected[] = {
        {false, false, true}, {false, true, true}, {true, false, true}, {false, false, true}};
    for (int row = 0; row < 4; ++row) {
        list()->selectRow(row);
        EXPECT_EQ(upDownUndo(), expected[row]) << "row " << row;
    }
    list()->selectRow(2);
    button(kUp)->click(); // the second insert after page 4 moves up and stays selected
    EXPECT_EQ(cell(1, 2), "Sheets [2]");
    EXPECT_EQ(upDownUndo(), expected[1]);
}

TEST_F(SpecialPagesPanel, CoverOptionsDecideWhichCoversExist)
{
    struct {
        const char* option;
        std::vector<QString> pages;
        bool backEnabled;
    } const cases[] = {
        {"Front Cover Only", {"Front"}, false},
        {"Back Cover Only", {"Back"}, true},
        {"Same Front and Back Covers", {"Front", "Back"}, false},
        {"Different Front and Back Covers", {"Front", "Back"}, true},
        {"No Covers", {}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.option);
        bool backEnabled = !c.backEnabled;
        inDialog(kCovers, [&](QDialog* d) {
            EXPECT_EQ(d->windowTitle(), "Add Covers");
            choose(static_cast<QComboBox*>(control(d, kCoversDialog, 1)), c.option);
            choose(static_cast<QComboBox*>(control(d, kCoversDialog, 2)), "Print on Both Sides");
            backEnabled = control(d, kCoversDialog, 5)->isEnabled();
            press(d, kCoversDialog, 92);
        });
        EXPECT_EQ(backEnabled, c.backEnabled);
        EXPECT_EQ(column(1), c.pages);
        if (c.option[0] == 'S') { // the back, blank until now, prints as the front does
            EXPECT_EQ(cell(1, 2), cell(0, 2));
        }
    }
}

std::string tpif(const pl::DictPtr& ticket)
{
    std::string out;
    const writeData sink{&out,
                         [](void* to, const char* text, size_t n) { static_cast<std::string*>(to)->append(text, n); }};
    WriteTPIFToSink(&sink, ticket);
    return out;
}

TEST_F(SpecialPagesPanel, ATicketGoesThroughThePanelAndItsDialogsUnchanged)
{
    const auto original = pl::as<pl::Dictionary>(pl::readPlistFile(kRoundTripTicket));
    ASSERT_EQ(session_.printSettings().loadDictionary(original, "t"), noErr);
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    ASSERT_EQ(rows(), 7);
    const std::vector<QString> details = {
        "Paper: Card 250; Print on Side 1; A4 (210 x 297 mm), Blue, 250",
        "Print on Both Sides; Post-Print Inserter",
        "Sheets [2]; Letter (8.5 x 11\"), Yellow, Pre-Cut Tab (5)",
        "Sheets [3]; Custom, Sand, Kraft, Description: Recycled kraft",
        "Sheets [1]; Hole punched: Pre-Punched, 90",
        "2-Sided; Pre-Printed, Coating: Matte - One Sided, Short, Smooth; Image shift:Side 1: X:0.10 in, Y:-0.20 in "
        "Side 2: X:0.00 in, Y:0.05 in; Grayscale; Halftone screen: Stochastic; Anti-aliasing: On; TRC: Warm Curve; "
        "Lightness: 10, Destination Profile: System Specified, Images Rendering: Perceptual",
        "Paper: Bond; 1-Sided",
    };
    EXPECT_EQ(column(2), details);
    // Edit and OK on every record; an edited insert goes last of its page, so row 3 is edited twice.
    for (int row : {0, 2, 3, 3, 5, 6}) {
        list()->selectRow(row);
        inDialog(kEdit, [](QDialog* d) {
            EXPECT_TRUE(d->windowTitle().startsWith("Edit")) << d->windowTitle().toStdString();
            d->findChild<QPushButton*>("ok")->click();
        });
    }
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    const pl::DictPtr saved = session_.printSettings().asDictionary();
    for (const char* key : {kSpecialPagesFrontCoverKey, kSpecialPagesBackCoverKey, kSpecialPagesInsertListKey,
                            kSpecialPagesExceptionListKey})
        EXPECT_TRUE(pl::equal(saved->get(key), original->get(key))) << key;
    EXPECT_EQ(tpif(saved), tpif(original));
    EXPECT_NE(tpif(original).find("Warm Curve"), std::string::npos);
}

} // namespace
