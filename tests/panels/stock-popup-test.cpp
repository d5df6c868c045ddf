// The stock pop-up and its dialogs, driven through the menu and the dialogs' control ids.
#include "panels/dialogs/stock-dialogs.h"
#include "panels/dialogs/stock-popup.h"
#include "paperlib/library.h"
#include "toolkit/toolkit-fixture.h"

#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

using namespace talmo;
using StockPopupTest = talmo::test::ToolkitTest;

namespace {

constexpr uint32_t kSig = FourCC("StkD");

template <class T> T* control(QDialog* d, int id) { return GetControlByID<T>(d, {kSig, id}); }

// Types each value into its field and presses OK; returns whether the dialog stayed open.
bool enter(QDialog* d, std::initializer_list<std::pair<int, QString>> values)
{
    for (const auto& [id, text] : values)
        control<QLineEdit>(d, id)->setText(text);
    control<QPushButton>(d, 92)->click();
    return d->isVisible();
}

// Runs `user` inside the next modal dialog's event loop; a dialog it leaves open is cancelled.
void whenShown(std::function<void(QDialog*)> user)
{
    QTimer::singleShot(0, [user] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog) << "no dialog";
        user(dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
}

Stock named(const char* name, int32_t size)
{
    Stock s;
    s.setSize(size);
    s.setCustomName(name);
    return s;
}

} // namespace

TEST_F(StockPopupTest, AnAttributeChoiceDetachesTheNamedPaper)
{
    StockPopup popup(nullptr, bundle(), kJobContextJob);
    popup.setStock(named("Gloss 150", 4));
    EXPECT_TRUE(popup.shortName().contains("Gloss 150"));
    QSignalSpy changed(&popup, &StockPopup::stockChanged);
    popup.findAction(kStockCommandColor, 2)->trigger();
    EXPECT_EQ(changed.count(), 1);
    Stock expected = named("", 4);
    expected.setColor(2);
    EXPECT_TRUE(popup.stock() == expected);
    EXPECT_FALSE(popup.shortName().contains("Gloss 150"));
    EXPECT_TRUE(popup.findAction(kStockCommandColor, 2)->isChecked() &&
                !popup.findAction(kStockCommandColor, kNotSet)->isChecked());
    EXPECT_FALSE(popup.findAction(kStockCommandLibrary, 0)->isEnabled()); // no library dialog given
}

TEST_F(StockPopupTest, ChoosingARecentPaperLoadsItAndMovesItFirst)
{
    StockLibraryList library;
    StockLibraryOrderList order;
    for (const char* name : {"C", "B", "A"}) {
        StockLibrary entry;
        entry.setName(name);
        entry.setStock(named(name, 5));
        order.updateOrderList(library.add(&entry));
    }
    const auto names = [](const StockPopup& p) {
        QStringList shown;
        std::ranges::transform(p.recentActions(), std::back_inserter(shown), &QAction::text);
        return shown.join(",");
    };
    StockPopup popup(nullptr, bundle(), kJobContextCovers);
    EXPECT_EQ(names(popup), "A,B,C");
    popup.recentActions().last()->trigger();
    EXPECT_TRUE(popup.stock() == named("C", 5));
    emit popup.menu()->aboutToShow();
    EXPECT_EQ(names(popup), "C,A,B");
    EXPECT_TRUE(popup.recentActions().first()->isChecked());
}

TEST_F(StockPopupTest, CustomSizeRefusesValuesOutsideThePrinterLimits)
{
    const MediaLimits limits{432, 432, 864, 864}; // 6 x 6 to 12 x 12 in
    StockPopup popup(nullptr, bundle(), kJobContextJob);
    popup.setDialogs(MakeStockCommandDialogs(&popup, bundle(), &limits));
    const std::tuple<bool, QString, QString, bool> cases[] = {
        {false, "150", "200", true}, {false, "200", "300", false}, {true, "12.01", "8", true},
        {true, "8.5", "11", false},  {false, "abc", "200", true},  {false, "304.8", "152.4", false}};
    for (const auto& [inches, width, length, refused] : cases) {
        whenShown([&](QDialog* d) {
            control<QAbstractButton>(d, inches ? 3 : 4)->setChecked(true);
            EXPECT_EQ(enter(d, {{1, width}, {2, length}}), refused) << width.toStdString();
            EXPECT_EQ(control<QWidget>(d, 7)->isVisibleTo(d), refused);
        });
        popup.setStock(Stock());
        popup.applyCommand(kStockCommandSize, kStockSizeCustom);
        EXPECT_EQ(popup.stock().size() == kStockSizeCustom, !refused);
        if (refused)
            continue;
        const double unit = inches ? 2540 : 100; // stored in hundredths of a millimetre
        EXPECT_EQ(popup.stock().width(), qRound(width.toDouble() * unit));
        EXPECT_EQ(popup.stock().length(), qRound(length.toDouble() * unit));
    }
}

TEST_F(StockPopupTest, OrderedStockNeedsANameAndACountInRange)
{
    StockPopup popup(nullptr, bundle(), kJobContextInserts);
    popup.setDialogs(MakeStockCommandDialogs(&popup, bundle(), nullptr));
    whenShown([](QDialog* d) {
        EXPECT_TRUE(enter(d, {{2, "  "}, {4, "5"}}));   // blank name
        EXPECT_TRUE(enter(d, {{2, "Tabs"}, {4, "0"}})); // count below 1
        EXPECT_FALSE(enter(d, {{2, " Tabs A "}, {4, "12"}}));
    });
    EXPECT_EQ(popup.applyCommand(kStockCommandType, kStockTypeOrdered), StockCommandResult::Applied);
    const Stock& s = popup.stock();
    EXPECT_EQ(std::tuple(s.type(), *s.customType(), s.modulus()), std::tuple(kStockTypeOrdered, "Tabs A", 12));
    EXPECT_TRUE(popup.findAction(kStockCommandType, kStockTypeOrdered)->isChecked());
}
