// The colour and image shift dialogs driven by their control ids from inside their event loops.
#include "panels/dialogs/full-color-dialog.h"
#include "panels/dialogs/image-shift-dialog.h"
#include "toolkit/toolkit-fixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTimer>

#include <functional>

using namespace talmo;
using DialogTest = talmo::test::ToolkitTest;

namespace {

constexpr uint32_t kColor = FourCC("FCol");
constexpr uint32_t kShift = FourCC("IShf");
enum Button { kRevert = 90, kCancel = 91, kOK = 92 };

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

template <class T> T* control(QDialog* d, uint32_t signature, int id) { return GetControlByID<T>(d, {signature, id}); }
SpinControl* shiftField(QDialog* d, int id) { return control<SpinControl>(d, kShift, id); }

void click(QDialog* d, uint32_t signature, Button b) { control<QPushButton>(d, signature, b)->click(); }

// Chooses the row with this ticket value the way a user's click does.
void choose(QComboBox* popup, int32_t value)
{
    const int index = popup->findData(value, kItemReferenceRole);
    ASSERT_GE(index, 0) << value;
    popup->setCurrentIndex(index);
    emit popup->activated(index);
}

} // namespace

TEST_F(DialogTest, ColourBoxesDecideBetweenDefaultAndSliderValue)
{
    FullColorOptions options;
    ASSERT_EQ(options.setLightness(30), noErr);
    ASSERT_EQ(options.setColorCast(10, kNotSet, 5), noErr); // a partial cast still shows its values
    ASSERT_EQ(options.setTrapping(2), noErr);
    ASSERT_EQ(options.setTrappingAdjustment(4, kNotSet), noErr);
    whenShown([](QDialog* d) {
        auto box = [d](int id) { return control<QCheckBox>(d, kColor, id); };
        auto slider = [d](int id) { return control<QSlider>(d, kColor, id); };
        EXPECT_FALSE(box(1)->isChecked()); // lightness set
        EXPECT_EQ(slider(2)->value(), 30);
        EXPECT_FALSE(slider(5)->isEnabled()); // contrast is the default
        EXPECT_EQ(slider(15)->value(), 5);
        EXPECT_FALSE(control<QWidget>(d, kColor, 22)->isEnabled()); // trapping off
        choose(control<QComboBox>(d, kColor, 20), 1);
        EXPECT_TRUE(control<QWidget>(d, kColor, 22)->isEnabled());
        EXPECT_FALSE(control<QWidget>(d, kColor, 24)->isEnabled()); // its own box is checked

        box(1)->setChecked(true);  // lightness back to default
        box(4)->setChecked(false); // contrast from its slider
        EXPECT_TRUE(slider(5)->isEnabled());
        slider(5)->setValue(-40);
        box(10)->setChecked(true); // the shared box clears the whole cast
        click(d, kColor, kOK);
    });
    ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Edit, kJobContextJob, options), noErr);
    FullColorOptions expected;
    expected.setContrast(-40);
    expected.setTrapping(1);
    expected.setTrappingAdjustment(4, kNotSet); // the width's own value survives
    EXPECT_TRUE(options == expected);
}

TEST_F(DialogTest, CustomProfileNeedsAValidNameAndACancelKeepsThePreviousRow)
{
    struct Case {
        int popupID;
        int32_t custom;
        std::vector<QString> typed; // each entered and confirmed in turn; empty ends with Cancel
        bool named;
    };
    const Case cases[] = {
        {30, kRGBProfileCustom, {"", QString(256, 'p'), "Press RGB"}, true},
        {34, 1, {QString(255, QChar(0x00e9))}, true}, // gray: 255 units is the most
        {36, kDestinationProfileCustom, {"", ""}, false},
    };
    for (const Case& c : cases) {
        FullColorOptions options;
        whenShown([&](QDialog* d) {
            whenShown([&](QDialog* prompt) {
                auto* field = control<QLineEdit>(prompt, kCustomValueSignature, kCustomValueFieldID);
                for (const QString& name : c.typed) {
                    EXPECT_TRUE(prompt->isVisible()) << "closed before a name of " << name.size();
                    field->setText(name);
                    control<QPushButton>(prompt, kCustomValueSignature, kCustomValueOKID)->click();
                }
                EXPECT_EQ(prompt->isVisible(), !c.named); // a refused name keeps the prompt open
            });
            choose(control<QComboBox>(d, kColor, c.popupID), c.custom);
            EXPECT_EQ(GetPopupButtonTicketValue(control<QComboBox>(d, kColor, c.popupID)) == c.custom, c.named);
            click(d, kColor, kOK);
        });
        ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Add, kJobContextExceptions, options), noErr);
        // Only the chosen profile differs from a default record, and only with a valid name.
        FullColorOptions expected;
        const std::string name = c.typed.back().toStdString();
        if (c.named && c.popupID == 34)
            expected.setGrayImagesProfile(name);
        else if (c.named)
            expected.setRGBImagesProfile(c.custom, name);
        EXPECT_TRUE(options == expected) << c.popupID;
    }
}

TEST_F(DialogTest, ImageShiftUnitSwitchRoundsEachField)
{
    // 1921 is 48.79 mm, 48.80 mm back in inches is held at the limit, 1921.
    const _IS_Options start{.duplex = 2, .option = kImageShiftIndependent, .x1 = 1921, .x2 = 1, .y1 = -50, .y2 = -1299};
    _IS_Options options = start;
    whenShown([](QDialog* d) {
        control<QRadioButton>(d, kShift, 3)->setChecked(true);
        const int32_t mm[] = {4879, -127, 3, -3299};
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(shiftField(d, 4 + i)->value(), mm[i]) << i;
        EXPECT_EQ(shiftField(d, 4)->decimals(), 1);
        shiftField(d, 4)->setValue(4880);
        control<QRadioButton>(d, kShift, 2)->setChecked(true);
        click(d, kShift, kOK);
    });
    ASSERT_EQ(RunModalImageShiftDialog(bundle(), DialogMode::Edit, kJobContextJob, options), noErr);
    EXPECT_TRUE(options == start);
}

TEST_F(DialogTest, ImageShiftModeDecidesSide2AndWhatIsEditable)
{
    struct Case {
        bool mini;
        int32_t duplex, mode;
        bool enabled[4]; // x1, y1, x2, y2
        int32_t x2, y2;  // after side 1 becomes 50, -20
    };
    const Case cases[] = {
        {false, 2, kNotSet, {false, false, false, false}, 7, 8},
        {true, 1, kImageShiftIndependent, {true, true, false, false}, 7, 8},
        {false, 2, kImageShiftIndependent, {true, true, true, true}, 7, 8},
        {true, 2, kImageShiftMirrorX, {true, true, false, true}, -50, 8},
        {false, 2, kImageShiftMirrorYTandemX, {true, true, false, false}, 50, 20},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "mode " << c.mode << " duplex " << c.duplex);
        _IS_Options options{.duplex = c.duplex, .x2 = 7, .y2 = 8};
        whenShown([&c](QDialog* d) {
            if (c.mode != kNotSet)
                choose(control<QComboBox>(d, kShift, 1), c.mode);
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(shiftField(d, 4 + i)->isEnabled(), c.enabled[i]) << i;
            shiftField(d, 4)->setValue(50);
            shiftField(d, 5)->setValue(-20);
            click(d, kShift, kOK);
        });
        ASSERT_EQ(c.mini ? RunModalMiniImageShiftDialog(bundle(), 0, options)
                         : RunModalImageShiftDialog(bundle(), DialogMode::Add, 0, options),
                  noErr);
        EXPECT_EQ(options.option, c.mode);
        EXPECT_EQ(options.x2, c.x2);
        EXPECT_EQ(options.y2, c.y2);
    }
}

TEST_F(DialogTest, RevertGivesDefaultsAndCancelKeepsTheRecord)
{
    FullColorOptions colour;
    ASSERT_EQ(colour.setSaturation(-7), noErr);
    ASSERT_EQ(colour.setGrayTextAndGraphicsProfile("Gray 2.2"), noErr);
    ASSERT_EQ(colour.setTextObjectRendering(4), noErr);
    const _IS_Options shift{.duplex = 1, .option = kImageShiftIndependent, .inches = 0, .x1 = 33};
    for (Button close : {kCancel, kOK}) {
        FullColorOptions editedColour = colour;
        _IS_Options editedShift = shift;
        bool accepted = false;
        whenShown([close](QDialog* d) {
            control<QSlider>(d, kColor, 8)->setValue(60);
            click(d, kColor, kRevert);
            EXPECT_TRUE(control<QCheckBox>(d, kColor, 7)->isChecked());
            EXPECT_FALSE(control<QSlider>(d, kColor, 8)->isEnabled());
            click(d, kColor, close);
        });
        ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Edit, kJobContextJob, editedColour, &accepted), noErr);
        EXPECT_EQ(accepted, close == kOK);
        EXPECT_TRUE(editedColour == (close == kOK ? FullColorOptions() : colour));
        whenShown([close](QDialog* d) {
            click(d, kShift, kRevert);
            EXPECT_TRUE(control<QRadioButton>(d, kShift, 2)->isChecked());
            click(d, kShift, close);
        });
        ASSERT_EQ(RunModalImageShiftDialog(bundle(), DialogMode::Edit, kJobContextExceptions, editedShift), noErr);
        _IS_Options expected = shift;
        if (close == kOK)
            DefaultImageShift(expected); // the job's duplex stays
        EXPECT_TRUE(editedShift == expected);
    }
}
