// The spin control with arrows: a numeric field with up and down arrows, a range, a step, and
// optional implied decimals (a value of 1250 with 2 decimals shows "12.50" in en_US and
// "12,50" in de_DE, formatted and read in the current ICU locale).
#pragma once

#include <QAbstractSpinBox>

#include <cstdint>
#include <optional>

namespace talmo {

class SpinControl : public QAbstractSpinBox {
    Q_OBJECT

public:
    static constexpr int32_t kMaxDecimals = 9;

    explicit SpinControl(QWidget* parent = nullptr);
    // Replaces a placeholder (see control-replace.h), taking a QSpinBox's range, step and value.
    static SpinControl* adopt(QWidget* placeholder);

    int32_t value() const { return value_; }
    // Clamped to the range; the field shows the value again even when it did not change.
    void setValue(int32_t value);
    int32_t minimum() const { return minimum_; }
    int32_t maximum() const { return maximum_; }
    // A maximum below the minimum is raised to it; the value is clamped into the new range.
    void setRange(int32_t minimum, int32_t maximum);
    int32_t singleStep() const { return step_; }
    void setSingleStep(int32_t step); // at least 1
    int32_t decimals() const { return decimals_; }
    void setDecimals(int32_t decimals); // clamped to 0..kMaxDecimals

    // The value as the field shows it; the plain integer when the locale gives no formatter.
    QString textFromValue(int32_t value) const;
    // A text of the current locale (grouping separators allowed, at most `decimals` fraction
    // digits) as the integer it means; nullopt when it is not a number of that form. The
    // result may lie outside the range (and outside 32 bits).
    std::optional<int64_t> valueFromText(const QString& text) const;

    void stepBy(int steps) override;
    QValidator::State validate(QString& input, int& position) const override;
    void fixup(QString& input) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

signals:
    void valueChanged(int32_t value);

protected:
    StepEnabled stepEnabled() const override;

private:
    void commitText();

    int32_t value_ = 0;
    int32_t minimum_ = 0;
    int32_t maximum_ = 99;
    int32_t step_ = 1;
    int32_t decimals_ = 0;
};

} // namespace talmo
