// The Paper/Output panel of the loaded bundle, driven through its own record and controls.
#include "tests/plugin/loaded-bundle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

using namespace talmo;

namespace {

constexpr uint32_t kPanel = FourCC("POut");
constexpr uint32_t kMultiple = FourCC("POMu");

class PaperOutputPanel : public LoadedBundle {
protected:
    void SetUp() override
    {
        ops_ = panelOperations("GetPaperOutputPanelInterface");
        ASSERT_TRUE(ops_.Prologue);
        ASSERT_EQ(ops_.Prologue(&context_, nullptr, nullptr, nullptr, nullptr, nullptr), noErr);
        ASSERT_EQ(ops_.Initialize(context_, nullptr, nullptr, &pane_, &session_), noErr);
    }
    void TearDown() override { ops_.Terminate(context_, noErr); }

    template <class T = QWidget> T* control(int id) { return GetControlByID<T>(&pane_, {kPanel, id}); }
    QString summary() { return control<QLabel>(6)->text(); }
    void choose(int popup, int item)
    {
        control<QComboBox>(popup)->setCurrentIndex(item);
        emit control<QComboBox>(popup)->activated(item);
    }
    // Triggers the finishing menu's item with `command`; `answer` ends the dialog it opens.
    void finishing(const char* command, std::function<void(QDialog*)> answer = {})
    {
        for (QAction* action : control<QPushButton>(5)->menu()->actions())
            if (GetCommand(action) == FourCCFromText(command))
                action->trigger();
        if (answer) // the dialog opens from the queued call, before this timer fires
            QTimer::singleShot(0, [answer] { answer(qobject_cast<QDialog*>(QApplication::activeModalWidget())); });
        QCoreApplication::processEvents();
    }
    Ticket& ticket() { return session_.printSettings(); }

    PlugInIntfVTable ops_{};
    PMPDEContext context_ = nullptr;
    QWidget pane_;
    PrintSession session_;
};

TEST_F(PaperOutputPanel, RoundTripChangesOnlyWhatTheUserChanged)
{
    auto items = pl::makeDict(), jobType = pl::makeDict();
    for (auto [key, value] : {std::pair{kFinishingOptionsKey, 49},
                              {kFinishingStaple2ValueKey, 10},
                              {kFinishingHolePunchValueKey, 32},
                              {kFinishingOffsetKey, 4},
                              {kFinishingDuplexKey, 3},
                              {kGutterKey, 12},
                              {kFinishingOutputDestinationKey, 17}})
        items->setInt(key, value);
    items->setString(kFinishingCustomKey, "");
    items->setString(kFinishingFoldValueKey, "not a number");
    items->setBool(kBookletLayoutKey, false);
    jobType->setInt("JobType", 3);
    items->set(kJobTypeKey, jobType);
    ASSERT_EQ(ticket().loadDictionary(items, "imported"), noErr);
    ASSERT_EQ(ops_.Sync(context_, &session_, true), noErr);
    EXPECT_EQ(summary(), "2 Staples,\nHole Punch, Portrait Left or Landscape Top\nOffset: Each Subset");
    const pl::DictPtr before = ticket().asDictionary();
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    EXPECT_TRUE(pl::equal(before, ticket().asDictionary()));
    for (const auto& [key, value] : *items)
        EXPECT_EQ(ticket().creatorOf(key), "imported") << key;

    choose(9, 2);  // output colour: colour
    choose(10, 0); // destination: printer default
    ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
    EXPECT_EQ(ticket().creatorOf(kFinishingOutputColorKey), "com.talmo.printingmanager");
    before->remove(kFinishingOutputDestinationKey);
    before->setInt(kFinishingOutputColorKey, 2);
    EXPECT_TRUE(pl::equal(before, ticket().asDictionary()));
}

TEST_F(PaperOutputPanel, SetupFollowsTheJobType)
{
    auto* types = control<QComboBox>(13);
    ASSERT_EQ(types->count(), 8);
    for (int i = 0; i < types->count(); ++i) {
        choose(13, i);
        const int type = types->itemData(i).toInt();
        EXPECT_EQ(control(14)->isEnabled(), type >= 3 && type != 8) << type;
        ASSERT_EQ(ops_.Sync(context_, &session_, false), noErr);
        EXPECT_EQ(ticket().get(kJobTypeKey) ? pl::as<pl::Dictionary>(ticket().get(kJobTypeKey))->getInt("JobType") : 0,
                  type);
    }
}

TEST_F(PaperOutputPanel, FinishingMenuMarksAndBookletRules)
{
    finishing("None");
    finishing("Spsh");
    EXPECT_EQ(summary(), "None\nSlip Sheets\nOffset: Printer Default");
    std::vector<std::string> checked;
    for (QAction* action : control<QPushButton>(5)->menu()->actions())
        if (action->isChecked())
            checked.push_back(TextFromFourCC(GetCommand(action)).toStdString());
    EXPECT_EQ(checked, (std::vector<std::string>{"None", "Spsh"}));

    control<QCheckBox>(7)->setChecked(true);
    EXPECT_FALSE(control(3)->isEnabled()) << "a booklet is always two-sided";
    // Staple and hole punch exclude the booklet; the dialog keeps the pairs of the chosen edges.
    finishing("FMul", [](QDialog* d) {
        ASSERT_TRUE(d);
        auto radio = [d](int id) { return GetControlByID<QRadioButton>(d, {kMultiple, id}); };
        radio(12)->setChecked(true); // staples on the right edge: (7, 8), the first taken
        EXPECT_TRUE(radio(14)->isChecked());
        EXPECT_TRUE(GetControlByID(d, {kMultiple, 3})->isEnabled()) << "Z fold on a side edge";
        radio(25)->setChecked(true); // punch 33: edge 1 is the first holding it
        EXPECT_TRUE(radio(20)->isChecked());
        GetControlByID<QPushButton>(d, {kMultiple, 92})->click();
    });
    EXPECT_EQ(summary(),
              "1 Staple, Portrait Top Right or Landscape Bottom Right\nHole Punch, Portrait Top or Landscape "
              "Right\nSlip Sheets\nOffset: Printer Default");
    EXPECT_FALSE(control<QCheckBox>(7)->isChecked());
    EXPECT_TRUE(control(3)->isEnabled());
    EXPECT_EQ(control<QComboBox>(3)->currentText(), "2-Sided");
}

} // namespace
