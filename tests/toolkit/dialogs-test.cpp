// The input limiter, the custom value dialog, the spin control and controls adopted from
// interface descriptions.
#include "toolkit-fixture.h"

#include <QClipboard>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <functional>

namespace talmo {
namespace {

using test::ScopedEnv;
using test::ToolkitTest;

TEST_F(ToolkitTest, InputLimiterRefusesTypedAndPastedTextBeyondItsLimits)
{
    struct Case {
        int32_t minimum, maximum;
        const char *typed, *pasted, *text; // typed key by key, then pasted whole at the end
    } cases[] = {
        {60, 300, "1a5x0", "", "150"},                               // letters refused, digits kept
        {60, 300, "3009", "", "300"},                                // 301 and up, and a fourth digit, refused
        {60, 300, "00150", "", "001"},                               // as many characters as the maximum has
        {60, 300, "", "999", ""},                                    // a paste above the maximum is refused whole
        {60, 300, "2", "5", "25"},                                   // below the minimum is still being typed
        {60, 300, "1", "2a", "1"},                                   // a paste with a character outside the set
        {0, 99999, "", "123456", ""},                                // a paste too long is refused, not cut
        {-50, 10, "-", "51", "-"},                                   // below a negative minimum
        {-50, 10, "-4", "9", "-49"},   {-20, -10, "-1", "5", "-15"}, // on the way to a negative range
        {-50, 10, "5-", "", "5"},      {60, 300, "-", "", ""},       // a sign only leads, where the range has one
    };
    for (const Case& c : cases) {
        QLineEdit field;
        ASSERT_EQ(LimitInputLengthAndCharacters(&field, c.minimum, c.maximum, "-0123456789"), noErr);
        QTest::keyClicks(&field, c.typed);
        QGuiApplication::clipboard()->setText(c.pasted);
        field.paste();
        EXPECT_EQ(field.text(), c.text) << c.typed << " + " << c.pasted;
    }
    QLineEdit field;
    EXPECT_EQ(LimitInputLengthAndCharacters(&field, 5, 4, "0123456789"), paramErr);
}

// Runs the custom value dialog while `user` acts on it; returns the dialog's status.
OSStatus RunCustomValue(const Bundle& bundle, int32_t minimum, int32_t maximum, QString& text, int16_t& value,
                        std::function<void(QDialog*, QLineEdit*)> user)
{
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        auto* field = GetControlByID<QLineEdit>(dialog, {kCustomValueSignature, kCustomValueFieldID});
        ASSERT_TRUE(field) << "no custom value dialog";
        user(dialog, field);
        if (dialog->isVisible())
            QTest::keyClick(dialog, Qt::Key_Escape);
    });
    return RunModalCustomValueDialog(bundle, minimum, maximum, &text, &value);
}

TEST_F(ToolkitTest, CustomValueDialogTakesOnlyANumberWithinItsLimits)
{
    struct Case {
        int32_t minimum, maximum;
        const char *start, *typed;
        OSStatus status;
        int16_t value;
    } cases[] = {
        {60, 300, "", "150", noErr, 150},
        {60, 300, "", "30", userCanceledErr, -1}, // OK refused below the minimum; Escape ends it
        {60, 300, "", "999", noErr, 99},          // the third 9 is refused
        {60, 300, "120", "", noErr, 120},         // the starting text is offered
        {60, 300, "abc", "70", noErr, 70},        // a starting text outside the limits is not
        {0, 100000, "", "40000", noErr, 4000},    // the limits narrowed to 16 bits
        {-20, -10, "", "-15", noErr, -15},
    };
    for (const Case& c : cases) {
        QString text = c.start;
        int16_t value = -1;
        QString range;
        const OSStatus status =
            RunCustomValue(bundle(), c.minimum, c.maximum, text, value, [&](QDialog* d, QLineEdit* f) {
                range = GetControlByID<QLabel>(d, {kCustomValueSignature, kCustomValueRangeID})->text();
                QTest::keyClicks(f, c.typed);
                QTest::keyClick(f, Qt::Key_Return); // the default button
            });
        EXPECT_EQ(status, c.status) << c.typed;
        EXPECT_EQ(value, c.value) << c.typed;
        EXPECT_EQ(text, c.status == noErr ? QString::number(c.value) : QString(c.start));
        EXPECT_EQ(range, QString("(%1-%2)").arg(std::max(c.minimum, -32768)).arg(std::min(c.maximum, 32767)));
    }
    QString text;
    int16_t value = 0;
    EXPECT_EQ(RunModalCustomValueDialog(bundle(), 1, 9, nullptr, &value), paramErr);
    EXPECT_EQ(RunModalCustomValueDialog(bundle(), 40000, 50000, &text, &value), paramErr);
}

TEST_F(ToolkitTest, SpinControlShowsAndReadsImpliedDecimalsInTheLocale)
{
    struct Case {
        const char* locale;
        int32_t decimals, value;
        const char *shown, *typed;
        std::optional<int64_t> read;
    } cases[] = {
        {"en_US.UTF-8", 2, 1250, "12.50", "1,234.5", 123450},
        {"de_DE.UTF-8", 2, 1250, "12,50", "1.234,5", 123450},
        {"de_DE.UTF-8", 1, -5, "-0,5", "12,34", std::nullopt}, // too many decimals
        {"en_US.UTF-8", 0, 7, "7", "7.5", std::nullopt},
        {"en_US.UTF-8", 2, 3, "0.03", "99999999999999", std::nullopt},
    };
    for (const Case& c : cases) {
        ScopedEnv locale("LC_ALL", c.locale);
        SpinControl spin;
        spin.setRange(-100000, 100000);
        spin.setDecimals(c.decimals);
        spin.setValue(c.value);
        EXPECT_EQ(spin.text(), c.shown) << c.locale;
        EXPECT_EQ(spin.valueFromText(c.typed), c.read) << c.typed;
    }
    SpinControl spin;
    spin.setRange(10, 50);
    spin.setSingleStep(15);
    EXPECT_EQ(spin.value(), 10);
    spin.stepBy(3);
    EXPECT_EQ(spin.value(), 50); // clamped at the maximum
    spin.findChild<QLineEdit*>()->setText("20");
    spin.stepBy(1); // the arrows start from the typed value
    EXPECT_EQ(spin.value(), 35);
}

TEST_F(ToolkitTest, AdoptedControlTakesThePlaceholdersPlace)
{
    QWidget window;
    auto* form = new QFormLayout(&window);
    auto* label = new QLabel("Quantity:");
    auto* first = new QLineEdit;
    auto* placeholder = new QSpinBox;
    auto* last = new QLineEdit;
    placeholder->setRange(1, 250);
    placeholder->setValue(3);
    SetControlID(placeholder, {FourCC("Qnty"), 7});
    label->setBuddy(placeholder);
    form->addRow("First:", first);
    form->addRow(label, placeholder);
    form->addRow("Last:", last);

    auto* spin = AdoptControl<SpinControl>(&window, {FourCC("Qnty"), 7});
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(GetControlByID(&window, {FourCC("Qnty"), 7}), spin);
    EXPECT_EQ(AdoptControl<SpinControl>(&window, {FourCC("Qnty"), 7}), spin);
    EXPECT_EQ(AdoptControl<SpinControl>(&window, {FourCC("Qnty"), 8}), nullptr);
    EXPECT_EQ(std::tuple(spin->minimum(), spin->maximum(), spin->value()), std::tuple(1, 250, 3));
    EXPECT_EQ(label->buddy(), spin);
    EXPECT_EQ(form->itemAt(1, QFormLayout::FieldRole)->widget(), spin);
    auto nextTabStop = [](QWidget* from) { // past the control's own parts
        QWidget* w = from->nextInFocusChain();
        while (!(w->focusPolicy() & Qt::TabFocus) || from->isAncestorOf(w))
            w = w->nextInFocusChain();
        return w;
    };
    EXPECT_EQ(nextTabStop(first), spin);
    EXPECT_EQ(nextTabStop(spin), last);
}

TEST_F(ToolkitTest, PrivateBundleIsFoundOnlyInsideTheResources)
{
    std::optional<Bundle> found;
    ASSERT_EQ(LoadPrivateBundle(bundle(), "ppd", &found), noErr);
    EXPECT_EQ(found->path(), bundle().path() + "/Resources/ppd");
    for (const char* name : {"", "/tmp", "../Resources", "ppd/../.."})
        EXPECT_EQ(LoadPrivateBundle(bundle(), name, &found), paramErr) << name;
    EXPECT_EQ(LoadPrivateBundle(bundle(), "Missing.bundle", &found), fnfErr);
    EXPECT_EQ(LoadPrivateBundle(bundle(), "ppd", nullptr), paramErr);
}

} // namespace
} // namespace talmo
