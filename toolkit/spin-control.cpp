#include "toolkit/spin-control.h"

#include "toolkit/control-replace.h"

#include "settings/settings.h"

#include <QLineEdit>
#include <QSpinBox>
#include <QStyleOptionSpinBox>

#include <algorithm>

namespace talmo {

namespace {

// Separators of the current locale, learnt from the formatter itself so that reading and
// showing can never disagree: the decimal separator of "0.1", every non-digit of "1,234,567".
struct Separators {
    QString decimal;
    QString grouping;
};

Separators currentSeparators()
{
    Separators s;
    if (auto tenth = CreateLocalizedCFStringFromNumberWithDecimals(1, 1)) {
        const QString t = QString::fromStdString(*tenth);
        for (QChar c : t)
            if (!c.isDigit())
                s.decimal += c;
    }
    if (auto big = CreateLocalizedCFStringFromNumberWithDecimals(1234567, 0))
        for (QChar c : QString::fromStdString(*big))
            if (!c.isDigit() && !s.grouping.contains(c))
                s.grouping += c;
    if (s.decimal.isEmpty())
        s.decimal = QStringLiteral(".");
    return s;
}

bool isMinus(QChar c) { return c == u'-' || c == QChar(0x2212); }

} // namespace

SpinControl::SpinControl(QWidget* parent) : QAbstractSpinBox(parent)
{
    setAccelerated(true);
    connect(this, &QAbstractSpinBox::editingFinished, this, &SpinControl::commitText);
    lineEdit()->setText(textFromValue(value_));
}

SpinControl* SpinControl::adopt(QWidget* placeholder)
{
    auto* control = new SpinControl;
    if (auto* box = qobject_cast<QSpinBox*>(placeholder)) {
        control->setRange(box->minimum(), box->maximum());
        control->setSingleStep(box->singleStep());
        control->setValue(box->value());
    }
    ReplaceControl(placeholder, control);
    return control;
}

void SpinControl::setValue(int32_t value)
{
    value = std::clamp(value, minimum_, maximum_);
    const bool changed = value != value_;
    value_ = value;
    lineEdit()->setText(textFromValue(value_));
    if (changed)
        emit valueChanged(value_);
}

void SpinControl::setRange(int32_t minimum, int32_t maximum)
{
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    setValue(value_);
    updateGeometry();
}

void SpinControl::setSingleStep(int32_t step) { step_ = std::max(step, 1); }

void SpinControl::setDecimals(int32_t decimals)
{
    decimals_ = std::clamp(decimals, 0, kMaxDecimals);
    setValue(value_);
    updateGeometry();
}

QString SpinControl::textFromValue(int32_t value) const
{
    if (auto text = CreateLocalizedCFStringFromNumberWithDecimals(value, decimals_))
        return QString::fromStdString(*text);
    return QString::number(value);
}

std::optional<int64_t> SpinControl::valueFromText(const QString& text) const
{
    const Separators sep = currentSeparators();
    bool negative = false;
    bool inFraction = false;
    bool anyDigit = false;
    int64_t whole = 0;
    int64_t fraction = 0;
    int32_t fractionDigits = 0;
    const QString trimmed = text.trimmed();
    for (qsizetype i = 0; i < trimmed.size(); ++i) {
        const QChar c = trimmed[i];
        if (c.isDigit()) {
            anyDigit = true;
            const int digit = c.digitValue();
            if (inFraction) {
                if (++fractionDigits > decimals_)
                    return std::nullopt;
                fraction = fraction * 10 + digit;
            } else {
                // Eleven whole digits are beyond every 32-bit value; stop before int64 can overflow.
                if (whole > 99'999'999'999)
                    return std::nullopt;
                whole = whole * 10 + digit;
            }
        } else if (i == 0 && isMinus(c)) {
            negative = true;
        } else if (!inFraction && decimals_ > 0 && QStringView(trimmed).mid(i).startsWith(sep.decimal)) {
            inFraction = true;
            i += sep.decimal.size() - 1;
        } else if (!inFraction && sep.grouping.contains(c)) {
            continue;
        } else if (c.category() == QChar::Other_Format) {
            continue; // direction marks some locales put around numbers
        } else {
            return std::nullopt;
        }
    }
    if (!anyDigit)
        return std::nullopt;
    int64_t scale = 1;
    for (int32_t i = 0; i < decimals_; ++i)
        scale *= 10;
    for (int32_t i = fractionDigits; i < decimals_; ++i)
        fraction *= 10;
    const int64_t value = whole * scale + fraction;
    return negative ? -value : value;
}

QValidator::State SpinControl::validate(QString& input, int&) const
{
    const QString trimmed = input.trimmed();
    if (trimmed.isEmpty() || (trimmed.size() == 1 && isMinus(trimmed[0])))
        return QValidator::Intermediate;
    const auto value = valueFromText(input);
    if (!value) {
        // A number still being typed ("12," before the decimals).
        const Separators sep = currentSeparators();
        if (decimals_ > 0 && trimmed.endsWith(sep.decimal) && valueFromText(trimmed.chopped(sep.decimal.size())))
            return QValidator::Intermediate;
        return QValidator::Invalid;
    }
    return *value >= minimum_ && *value <= maximum_ ? QValidator::Acceptable : QValidator::Intermediate;
}

void SpinControl::fixup(QString& input) const
{
    if (auto value = valueFromText(input))
        input = textFromValue(int32_t(std::clamp<int64_t>(*value, minimum_, maximum_)));
}

void SpinControl::commitText()
{
    if (auto value = valueFromText(lineEdit()->text()))
        setValue(int32_t(std::clamp<int64_t>(*value, minimum_, maximum_)));
    else
        setValue(value_);
}

void SpinControl::stepBy(int steps)
{
    // Typed text counts as the value the arrows start from.
    int64_t base = value_;
    if (auto typed = valueFromText(lineEdit()->text()))
        base = std::clamp<int64_t>(*typed, minimum_, maximum_);
    const int64_t next = base + int64_t(steps) * step_;
    setValue(int32_t(std::clamp<int64_t>(next, minimum_, maximum_)));
    lineEdit()->selectAll();
}

QAbstractSpinBox::StepEnabled SpinControl::stepEnabled() const
{
    if (isReadOnly())
        return StepNone;
    StepEnabled enabled = StepNone;
    if (value_ < maximum_)
        enabled |= StepUpEnabled;
    if (value_ > minimum_)
        enabled |= StepDownEnabled;
    return enabled;
}

QSize SpinControl::sizeHint() const
{
    ensurePolished();
    const QFontMetrics metrics = fontMetrics();
    const int width = std::max(metrics.horizontalAdvance(textFromValue(minimum_)),
                               metrics.horizontalAdvance(textFromValue(maximum_)));
    const QSize text(width + 2 + metrics.horizontalAdvance(u'0'), lineEdit()->sizeHint().height());
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_SpinBox, &option, text, this);
}

} // namespace talmo
