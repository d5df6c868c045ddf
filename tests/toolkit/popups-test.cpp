// Popups and menus from setting maps, the combo box with input history, localized labels.
#include "toolkit-fixture.h"

#include <QComboBox>
#include <QDialog>
#include <QMenu>

// fontconfig keeps Qt's font configuration for the life of the process by design; not ours.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

namespace talmo {
namespace {

using test::ToolkitTest;

// One row needs an installed option, one its absence, and one is a separator.
const SettingMap kTrays[] = {{"PrinterDefault", kNotSet, 0, nullptr, false},
                             {"Auto", 1, 0, nullptr, false},
                             {"-", -5, 0, nullptr, false},
                             {"StackerTray1", 5, FourCC("Stk1"), "Stacker", true},
                             {"TopTray", 2, 0, "Stacker", false},
                             {}};
const SettingMap kNames[] = {{"Auto", 1, 0, nullptr, false}, {"TopTray", 2, 0, nullptr, false}, {}};

QStringList Labels(const QComboBox& box)
{
    QStringList labels;
    for (int i = 0; i < box.count(); ++i)
        labels << (box.itemData(i, Qt::AccessibleDescriptionRole).toString() == "separator" ? "-" : box.itemText(i));
    return labels;
}

void WriteHistory() // newest first: h1, h2
{
    AddToInputHistory("TestHistory", "h2", 0);
    AddToInputHistory("TestHistory", "h1", 0);
}

TEST_F(ToolkitTest, PopupCountsEveryRowButShowsOnlyOfferedOnes)
{
    struct Case {
        bool stackerInstalled;
        JobContext context;
        QStringList labels;
    } const cases[] = {
        {false, kJobContextJob, {"Printer Default", "Automatic", "-", "Top Tray"}},
        {true, kJobContextExceptions, {"Use Job Setting", "Automatic", "-", "Stacker Tray 1"}},
    };
    for (const Case& c : cases) {
        SetInstalledFeatureHook([&](const std::string&) { return c.stackerInstalled; });
        QComboBox popup;
        popup.addItem("stale");
        EXPECT_EQ(PopulatePopupButtonFromMap(bundle(), &popup, kTrays, c.context, 0), 5);
        EXPECT_EQ(GetPopupButtonMaximum(&popup), 5);
        EXPECT_EQ(GetPopupMap(&popup), kTrays);
        EXPECT_EQ(Labels(popup), c.labels);
        // A ticket value selects its item; an unknown one keeps the selection.
        const int32_t shown = c.stackerInstalled ? 5 : 2;
        EXPECT_TRUE(SetPopupButtonToTicketValue(&popup, shown));
        EXPECT_EQ(popup.currentIndex(), 3);
        EXPECT_EQ(GetPopupButtonTicketValue(&popup), shown);
        EXPECT_FALSE(SetPopupButtonToTicketValue(&popup, c.stackerInstalled ? 2 : 5));
        EXPECT_EQ(popup.currentIndex(), 3);
    }
}

TEST_F(ToolkitTest, PopupSelectsOnlyTheValueAskedForAndMenusCarryCommands)
{
    // An unknown description falls back to "Custom..." (value 0) in the map search only.
    QComboBox popup;
    ASSERT_EQ(PopulatePopupButtonFromMap(bundle(), &popup, _StockDescriptionMap, kJobContextJob, 0), 2);
    EXPECT_FALSE(SetPopupButtonToTicketValue(&popup, 7));
    EXPECT_TRUE(
        SetPopupButtonToTicketValue(&popup, UIToTicket(_StockDescriptionMap, TicketToUI(_StockDescriptionMap, 7))));
    EXPECT_EQ(std::pair(popup.currentText(), GetPopupButtonTicketValue(&popup)), std::pair(QString("Custom..."), 0));

    QWidget window;
    auto* menu = new QMenu(&window);
    EXPECT_EQ(PopulateMenuFromMap(bundle(), menu, _StockLibraryMap, kJobContextJob, 0), 4);
    ASSERT_EQ(menu->actions().size(), 4);
    EXPECT_TRUE(menu->actions()[2]->isSeparator());
    EXPECT_EQ(std::pair(GetCommand(menu->actions()[3]), menu->actions()[3]->data().toInt()),
              std::pair(FourCC("SlCl"), 5));
    EXPECT_EQ(PopulateMenuFromMap(bundle(), menu, _StockLibraryMap, kJobContextJob, FourCC("Tmpl")), 4);
    EXPECT_EQ(GetCommand(menu->actions()[5]), FourCC("Tmpl")); // appended, with the command given
}

TEST_F(ToolkitTest, HistoryGoesAfterTheInsertPosition)
{
    WriteHistory();
    struct Case {
        int32_t position;
        QStringList labels;
    } cases[] = {
        {0, {"h1", "h2", "Automatic", "Top Tray"}},
        {1, {"Automatic", "h1", "h2", "Top Tray"}},
        {9, {"Automatic", "Top Tray", "h1", "h2"}},
    };
    for (const Case& c : cases) {
        HistoryComboBox box;
        EXPECT_EQ(box.populate(bundle(), kNames, kJobContextJob, "TestHistory", 0, c.position), 4);
        EXPECT_EQ(Labels(box), c.labels);
    }
}

TEST_F(ToolkitTest, AcceptedDialogAddsTypedTextToTheFrontWithinTheLimit)
{
    WriteHistory();
    struct Case {
        QString text;
        int index; // item to pick instead of typing, or -1
        std::vector<std::string> history;
    } cases[] = {
        {"new", -1, {"new", "h1"}}, {"", 1, {"new", "h1"}}, // picked "h1": already known
        {"", 2, {"new", "h1"}},                             // the map row is not a text
        {"", -1, {"new", "h1"}},    {"newer", -1, {"newer", "new"}},
    };
    for (const Case& c : cases) {
        QDialog dialog;
        auto* box = new HistoryComboBox(&dialog);
        box->populate(bundle(), kNames, kJobContextJob, "TestHistory", 2);
        if (c.index >= 0)
            box->setCurrentIndex(c.index);
        else
            box->setText(c.text);
        EXPECT_TRUE(c.index != 2 || box->value() == HistoryComboBox::Value(int32_t(1))); // the row's value
        dialog.accept();
        EXPECT_EQ(ReadInputHistory("TestHistory"), c.history) << c.text.toStdString();
    }
    QDialog cancelled;
    auto* box = new HistoryComboBox(&cancelled);
    box->populate(bundle(), kNames, kJobContextJob, "TestHistory", 2);
    box->setText("dropped");
    cancelled.reject();
    EXPECT_EQ(ReadInputHistory("TestHistory"), (std::vector<std::string>{"newer", "new"}));
}

TEST_F(ToolkitTest, FormatFillsArgumentsAndLeavesUnmatchedDirectives)
{
    const std::pair<QString, QString> cases[] = {{"(%d-%d)", "(2-999999)"},         {"%2$d of %1$d", "999999 of 2"},
                                                 {"[%5d|%-4d]", "[    2|999999]"},  {"%03d%%", "002%"},
                                                 {"%s %d %d %d", "%s 2 999999 %d"}, {"%ld-%x", "2-f423f"},
                                                 {"trailing %", "trailing %"}};
    for (const auto& [format, out] : cases)
        EXPECT_EQ(FormatLocalized(format, {2, 999999}), out) << format.toStdString();
    EXPECT_EQ(FormatLocalized("%@: %s", {"Paper", std::string("A4")}), "Paper: A4");
}

TEST_F(ToolkitTest, LabelHelpersLocalizeEveryKindOfTitle)
{
    QMenu menu;
    menu.addAction("x");
    EXPECT_EQ(SetLocalizedMenuTitle(bundle(), "CustomValue Range", &menu, 0, {1, 2}), noErr);
    EXPECT_EQ(SetLocalizedMenuTitle(bundle(), "No Such Key", &menu, 1), noErr);
    EXPECT_EQ(SetLocalizedMenuTitle(bundle(), "OK", &menu, 2), paramErr);
    EXPECT_EQ(std::pair(menu.title(), menu.actions()[0]->text()),
              std::pair(QString("(1-2)"), QString("STRING NOT FOUND")));
}

} // namespace
} // namespace talmo
