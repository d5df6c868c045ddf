// Input limits of a numeric text field: which characters may be typed and how far.
//
// The two limits are the field's value range. The field takes at most as many characters as
// the wider limit has (CountDigits, plus the sign of a negative limit), refuses any character
// outside `allowed` and a "-" that does not lead or that the range has no use for, and refuses an edit that makes a positive number above the maximum or a
// negative one below the minimum (typing more digits could not bring it back). A number on
// the near side of zero ("25" of 60..300, "-1" of -20..-10) is let through while typing; the
// dialog checks the range on OK.
//
// The handler is the field's validator, so pasted, dropped and composed text is judged as a
// whole the same way as a typed key: an edit it refuses leaves the field as it was (a paste
// that is too long is refused, not cut).
#pragma once

#include "platform/platform.h"

#include <QString>
#include <QValidator>

class QLineEdit;

namespace talmo {

class LimitInputEventHandler : public QValidator {
    Q_OBJECT

public:
    LimitInputEventHandler(int32_t minimum, int32_t maximum, QString allowed, QObject* parent = nullptr);
    State validate(QString& input, int& position) const override;
    int maximumLength() const { return maximumLength_; }

private:
    int32_t minimum_;
    int32_t maximum_;
    QString allowed_;
    int maximumLength_;
};

// -50 for a null field or minimum > maximum (the field is left alone).
OSStatus LimitInputLengthAndCharacters(QLineEdit* field, int32_t minimum, int32_t maximum, const QString& allowed);

} // namespace talmo
