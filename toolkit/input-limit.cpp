#include "toolkit/input-limit.h"

#include "settings/settings.h"

#include <QLineEdit>

#include <algorithm>
#include <optional>

namespace talmo {

namespace {

int charactersFor(int32_t limit) { return CountDigits(limit) + (limit < 0 ? 1 : 0); }

// The value of "-?[0-9]+", or nothing for any other text.
std::optional<int64_t> integerValue(const QString& text)
{
    qsizetype i = text.startsWith(u'-') ? 1 : 0;
    if (i == text.size() || text.size() > 18)
        return std::nullopt;
    int64_t value = 0;
    for (; i < text.size(); ++i) {
        if (text[i] < u'0' || text[i] > u'9')
            return std::nullopt;
        value = value * 10 + (text[i].unicode() - u'0');
    }
    return text.startsWith(u'-') ? -value : value;
}

} // namespace

LimitInputEventHandler::LimitInputEventHandler(int32_t minimum, int32_t maximum, QString allowed, QObject* parent)
    : QValidator(parent), minimum_(minimum), maximum_(maximum), allowed_(std::move(allowed)),
      maximumLength_(std::max(charactersFor(minimum), charactersFor(maximum)))
{
}

QValidator::State LimitInputEventHandler::validate(QString& input, int&) const
{
    if (input.size() > maximumLength_)
        return Invalid;
    for (qsizetype i = 0; i < input.size(); ++i) {
        if (!allowed_.contains(input[i]))
            return Invalid;
        // A sign only leads, and only when the range has negative numbers.
        if (input[i] == u'-' && (i > 0 || minimum_ >= 0))
            return Invalid;
    }
    if (auto value = integerValue(input)) {
        // More digits move a number away from zero: a positive one past the maximum, or a
        // negative one past the minimum, can no longer be typed back into the range.
        if ((*value >= 0 && *value > maximum_) || (*value < 0 && *value < minimum_))
            return Invalid;
    }
    return Acceptable;
}

OSStatus LimitInputLengthAndCharacters(QLineEdit* field, int32_t minimum, int32_t maximum, const QString& allowed)
{
    if (!field || minimum > maximum)
        return paramErr;
    // A previous limit of ours goes with its replacement.
    if (auto* old = qobject_cast<LimitInputEventHandler*>(const_cast<QValidator*>(field->validator())))
        old->deleteLater();
    auto* handler = new LimitInputEventHandler(minimum, maximum, allowed, field);
    field->setValidator(handler);
    return noErr;
}

} // namespace talmo
