#include "toolkit/localized-labels.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>

namespace talmo {

namespace {

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

// Reads a run of digits, capped so that a hostile width cannot overflow or allocate much.
int readNumber(const QString& s, qsizetype& i)
{
    int n = 0;
    while (i < s.size() && isDigit(s[i])) {
        n = std::min(n * 10 + (s[i].unicode() - u'0'), 1000);
        ++i;
    }
    return n;
}

} // namespace

QString FormatLocalized(const QString& format, FormatArgs args)
{
    const FormatArg* list = args.begin();
    const size_t count = args.size();
    size_t next = 0;
    QString out;
    qsizetype i = 0;
    while (i < format.size()) {
        if (format[i] != u'%') {
            out += format[i++];
            continue;
        }
        const qsizetype start = i++;
        if (i < format.size() && format[i] == u'%') {
            out += u'%';
            ++i;
            continue;
        }
        // Position "n$", flags, width, precision, length.
        size_t position = 0;
        qsizetype save = i;
        if (int n = readNumber(format, i); i < format.size() && format[i] == u'$' && n > 0) {
            position = size_t(n);
            ++i;
        } else {
            i = save;
        }
        bool left = false, zero = false;
        while (i < format.size() && QStringView(u"-+ #0").contains(format[i])) {
            left |= format[i] == u'-';
            zero |= format[i] == u'0';
            ++i;
        }
        const int width = readNumber(format, i);
        if (i < format.size() && format[i] == u'.') {
            ++i;
            readNumber(format, i);
        }
        while (i < format.size() && QStringView(u"hlqLjzt").contains(format[i]))
            ++i;
        if (i >= format.size()) {
            out += format.mid(start);
            break;
        }
        const QChar conversion = format[i++];
        const size_t index = position ? position - 1 : next;
        const FormatArg* arg = index < count ? &list[index] : nullptr;
        QString text;
        bool done = false;
        if (arg && QStringView(u"diuxX").contains(conversion)) {
            if (const int64_t* v = std::get_if<int64_t>(&arg->value)) {
                if (conversion == u'x' || conversion == u'X') {
                    // As printf shows a 32-bit int: -1 is "ffffffff".
                    const bool narrow = *v >= INT32_MIN && *v <= INT32_MAX;
                    text = QString::number(narrow ? uint64_t(uint32_t(*v)) : uint64_t(*v), 16);
                    if (conversion == u'X')
                        text = text.toUpper();
                } else {
                    text = QString::number(*v);
                }
                done = true;
            }
        } else if (arg && (conversion == u's' || conversion == u'@')) {
            if (const QString* s = std::get_if<QString>(&arg->value)) {
                text = *s;
                done = true;
            }
        }
        if (!done) {
            out += format.mid(start, i - start);
            continue;
        }
        if (!position)
            ++next;
        if (text.size() < width) {
            const qsizetype pad = width - text.size();
            if (left)
                text += QString(pad, u' ');
            else if (zero && conversion != u's' && conversion != u'@' && text.startsWith(u'-'))
                text.insert(1, QString(pad, u'0'));
            else
                text.prepend(QString(pad, zero && conversion != u's' && conversion != u'@' ? u'0' : u' '));
        }
        out += text;
    }
    return out;
}

QString LocalizedText(const Bundle& bundle, std::string_view key, FormatArgs args)
{
    const QString format = QString::fromStdString(bundle.localizedString(key));
    return args.size() ? FormatLocalized(format, args) : format;
}

OSStatus SetLocalizedStaticText(const Bundle& bundle, std::string_view key, QWidget* control, FormatArgs args)
{
    auto* label = qobject_cast<QLabel*>(control);
    if (!label)
        return paramErr;
    label->setText(LocalizedText(bundle, key, args));
    return noErr;
}

OSStatus SetLocalizedControlTitle(const Bundle& bundle, std::string_view key, QWidget* control, FormatArgs args)
{
    if (auto* button = qobject_cast<QAbstractButton*>(control))
        button->setText(LocalizedText(bundle, key, args));
    else if (auto* group = qobject_cast<QGroupBox*>(control))
        group->setTitle(LocalizedText(bundle, key, args));
    else if (auto* label = qobject_cast<QLabel*>(control))
        label->setText(LocalizedText(bundle, key, args));
    else
        return paramErr;
    return noErr;
}

OSStatus SetLocalizedWindowTitle(const Bundle& bundle, std::string_view key, QWidget* window, FormatArgs args)
{
    if (!window)
        return paramErr;
    window->setWindowTitle(LocalizedText(bundle, key, args));
    return noErr;
}

OSStatus SetLocalizedMenuTitle(const Bundle& bundle, std::string_view key, QMenu* menu, int32_t item, FormatArgs args)
{
    if (!menu || item < 0 || item > menu->actions().size())
        return paramErr;
    const QString text = LocalizedText(bundle, key, args);
    if (item == 0)
        menu->setTitle(text);
    else
        menu->actions().at(item - 1)->setText(text);
    return noErr;
}

OSStatus SetLocalizedMenuTitle(const Bundle& bundle, std::string_view key, QComboBox* popup, int32_t item,
                               FormatArgs args)
{
    if (!popup || item < 1 || item > popup->count())
        return paramErr;
    popup->setItemText(item - 1, LocalizedText(bundle, key, args));
    return noErr;
}

} // namespace talmo
