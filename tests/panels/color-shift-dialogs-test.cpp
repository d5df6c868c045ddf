// The colour and image shift dialogs driven as a user would: controls found by their ids,
// changed, and the dialog closed with OK, Cancel or Revert.
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
#include <QSpinBox>
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

template <class T> T* control(QDialog* d, uint32_t signature, int id)
{
    auto* c = GetControlByID<T>(d, {signature, id});
    EXPECT_TRUE(c) << "no control " << id;
    return c;
}

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
    bool accepted = false;
    whenShown([](QDialog* d) {
        auto box = [d](int id) { return control<QCheckBox>(d, kColor, id); };
        auto slider = [d](int id) { return control<QSlider>(d, kColor, id); };
        EXPECT_FALSE(box(1)->isChecked()); // lightness set
        EXPECT_EQ(slider(2)->value(), 30);
        EXPECT_TRUE(box(4)->isChecked()); // contrast default: slider off
        EXPECT_FALSE(slider(5)->isEnabled());
        EXPECT_FALSE(box(10)->isChecked());
        EXPECT_EQ(slider(15)->value(), 5);
        EXPECT_FALSE(control<QSpinBox>(d, kColor, 22)->isEnabled()); // trapping off
        choose(control<QComboBox>(d, kColor, 20), 1);
        EXPECT_TRUE(control<QSpinBox>(d, kColor, 22)->isEnabled());
        EXPECT_FALSE(control<QSpinBox>(d, kColor, 24)->isEnabled()); // its own box is checked

        box(1)->setChecked(true);  // lightness back to default
        box(4)->setChecked(false); // contrast from its slider
        EXPECT_TRUE(slider(5)->isEnabled());
        slider(5)->setValue(-40);
        EXPECT_EQ(control<QSpinBox>(d, kColor, 6)->value(), -40);
        box(10)->setChecked(true); // the shared box clears the whole cast
        click(d, kColor, kOK);
    });
    ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Edit, kJobContextJob, options, &accepted), noErr);
    EXPECT_TRUE(accepted);
    int32_t v[3];
    options.lightness(&v[0]);
    options.contrast(&v[1]);
    EXPECT_EQ(v[0], kNotSet);
    EXPECT_EQ(v[1], -40);
    options.colorCast(&v[0], &v[1], &v[2]);
    EXPECT_EQ(v[0], kNotSet);
    EXPECT_EQ(v[2], kNotSet);
    options.trappingAdjustment(&v[0], &v[1]);
    EXPECT_EQ(v[0], 4);
    EXPECT_EQ(v[1], kNotSet);
}

TEST_F(DialogTest, CustomProfileNeedsAValidNameAndKeepsItOnlyWhileChosen)
{
    struct Case {
        int popupID;
        int32_t custom;
        std::vector<QString> typed; // each entered and confirmed in turn; empty ends with Cancel
        bool named;
    };
    const Case cases[] = {
        {30, kRGBProfileCustom, {"", QString(256, 'p'), "Press RGB"}, true},
        {32, kCMYKProfileCustom, {"Ink"}, true},
        {34, 1, {QString(255, QChar(0x00e9))}, true}, // gray: 255 units is the most
        {36, kDestinationProfileCustom, {"", ""}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.popupID);
        FullColorOptions options;
        whenShown([&](QDialog* d) {
            whenShown([&](QDialog* prompt) {
                auto* field = control<QLineEdit>(prompt, kCustomValueSignature, kCustomValueFieldID);
                for (const QString& name : c.typed) {
                    field->setText(name);
                    control<QPushButton>(prompt, kCustomValueSignature, kCustomValueOKID)->click();
                }
                EXPECT_EQ(prompt->isVisible(), !c.named); // a refused name keeps the prompt open
            });
            choose(control<QComboBox>(d, kColor, c.popupID), c.custom);
            click(d, kColor, kOK);
        });
        ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Add, kJobContextExceptions, options), noErr);
        FullColorOptions::Name name;
        int32_t kind = kNotSet;
        if (c.popupID == 34)
            options.grayImagesProfile(&name);
        else if (c.popupID == 36)
            options.destinationProfile(&kind, &name);
        else
            (c.popupID == 30 ? options.rgbImagesProfile(&kind, &name) : options.cmykImagesProfile(&kind, &name));
        EXPECT_EQ(name.has_value(), c.named);
        if (c.named)
            EXPECT_EQ(QString::fromStdString(*name), c.typed.back());
        else
            EXPECT_EQ(kind, kNotSet) << "a cancelled name goes back to the previous row";
    }
}

TEST_F(DialogTest, ColourRevertGivesDefaultsAndCancelKeepsTheRecord)
{
    FullColorOptions start;
    ASSERT_EQ(start.setSaturation(-7), noErr);
    ASSERT_EQ(start.setGrayTextAndGraphicsProfile("Gray 2.2"), noErr);
    ASSERT_EQ(start.setTextObjectRendering(4), noErr);
    for (Button close : {kCancel, kOK}) {
        FullColorOptions options = start;
        bool accepted = false;
        whenShown([close](QDialog* d) {
            control<QSlider>(d, kColor, 8)->setValue(60);
            click(d, kColor, kRevert);
            EXPECT_TRUE(control<QCheckBox>(d, kColor, 7)->isChecked());
            EXPECT_FALSE(control<QSlider>(d, kColor, 8)->isEnabled());
            EXPECT_TRUE(control<QCheckBox>(d, kColor, 43)->isChecked());
            click(d, kColor, close);
        });
        ASSERT_EQ(RunModalFullColorSetup(bundle(), DialogMode::Edit, kJobContextJob, options, &accepted), noErr);
        EXPECT_EQ(accepted, close == kOK);
        EXPECT_TRUE(options == (close == kOK ? FullColorOptions() : start));
    }
}

TEST_F(DialogTest, ImageShiftUnitSwitchRoundsEachField)
{
    _IS_Options options;
    options.duplex = 2;
    options.option = kImageShiftIndependent;
    options.x1 = 1921; // 48.79 mm
    options.y1 = -50;
    options.x2 = 1;
    options.y2 = -1299;
    whenShown([](QDialog* d) {
        auto field = [d](int id) { return qobject_cast<SpinControl*>(GetControlByID(d, {kShift, id})); };
        control<QRadioButton>(d, kShift, 3)->setChecked(true);
        const int32_t mm[] = {4879, -127, 3, -3299};
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(field(4 + i)->value(), mm[i]) << i;
        EXPECT_EQ(field(4)->decimals(), 1);
        EXPECT_EQ(field(5)->maximum(), 3300);
        field(4)->setValue(4880);
        control<QRadioButton>(d, kShift, 2)->setChecked(true);
        EXPECT_EQ(field(4)->value(), 1921); // 1921.26 held at the inch limit
        EXPECT_EQ(field(6)->value(), 1);
        click(d, kShift, kOK);
    });
    ASSERT_EQ(RunModalImageShiftDialog(bundle(), DialogMode::Edit, kJobContextJob, options), noErr);
    EXPECT_EQ(options.inches, 1);
    EXPECT_EQ(options.y1, -50);
    EXPECT_EQ(options.y2, -1299);
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
        _IS_Options options;
        options.duplex = c.duplex;
        options.x2 = 7;
        options.y2 = 8;
        bool accepted = false;
        whenShown([&c](QDialog* d) {
            auto field = [d](int id) { return qobject_cast<SpinControl*>(GetControlByID(d, {kShift, id})); };
            if (c.mode != kNotSet)
                choose(control<QComboBox>(d, kShift, 1), c.mode);
            for (int i = 0; i < 4; ++i)
                EXPECT_EQ(field(4 + i)->isEnabled(), c.enabled[i]) << i;
            field(4)->setValue(50);
            field(5)->setValue(-20);
            click(d, kShift, kOK);
        });
        const OSStatus status = c.mini ? RunModalMiniImageShiftDialog(bundle(), 0, options, &accepted)
                                       : RunModalImageShiftDialog(bundle(), DialogMode::Add, 0, options, &accepted);
        ASSERT_EQ(status, noErr);
        EXPECT_TRUE(accepted);
        EXPECT_EQ(options.option, c.mode);
        EXPECT_EQ(options.x2, c.x2);
        EXPECT_EQ(options.y2, c.y2);
    }
}

TEST_F(DialogTest, ImageShiftRevertKeepsDuplexAndCancelKeepsTheRecord)
{
    _IS_Options start;
    start.duplex = 1;
    start.option = kImageShiftIndependent;
    start.inches = 0;
    start.x1 = 33;
    for (Button close : {kCancel, kOK}) {
        _IS_Options options = start;
        whenShown([close](QDialog* d) {
            click(d, kShift, kRevert);
            EXPECT_TRUE(control<QRadioButton>(d, kShift, 2)->isChecked());
            click(d, kShift, close);
        });
        ASSERT_EQ(RunModalImageShiftDialog(bundle(), DialogMode::Edit, kJobContextExceptions, options), noErr);
        _IS_Options expected = start;
        if (close == kOK)
            DefaultImageShift(expected);
        EXPECT_TRUE(options == expected);
        EXPECT_EQ(options.duplex, 1);
    }
}
