// Labels from the bundle's "Localizable" table, with printf-style arguments ("(%d-%d)").
//
// The format comes from a file, so it is never handed to printf: FormatLocalized reads %d, %i,
// %u, %x, %X, %s, %@ and %% (with flags, width, length modifiers and "n$" positions) and
// takes its arguments from a typed list. A directive without a matching argument, or of a
// kind the list cannot give, is copied as it stands.
#pragma once

#include "platform/platform.h"

#include <QString>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <variant>

class QComboBox;
class QMenu;
class QWidget;

namespace talmo {

struct FormatArg {
    std::variant<int64_t, QString> value;
    template <class T>
    requires std::is_integral_v<T> FormatArg(T v) : value(int64_t(v)) { }
    FormatArg(const QString& s) : value(s) { }
    FormatArg(const char* s) : value(QString::fromUtf8(s)) { }
    FormatArg(const std::string& s) : value(QString::fromStdString(s)) { }
};
using FormatArgs = std::initializer_list<FormatArg>;

QString FormatLocalized(const QString& format, FormatArgs args);
// The localized text of `key` ("STRING NOT FOUND" when missing) with `args` filled in.
QString LocalizedText(const Bundle& bundle, std::string_view key, FormatArgs args = {});

// A label's text (QLabel and the static text control). -50 for a control that shows no text.
OSStatus SetLocalizedStaticText(const Bundle& bundle, std::string_view key, QWidget* control, FormatArgs args = {});
// A control's title: a button's text, a group box's title, a label's text. -50 otherwise.
OSStatus SetLocalizedControlTitle(const Bundle& bundle, std::string_view key, QWidget* control, FormatArgs args = {});
OSStatus SetLocalizedWindowTitle(const Bundle& bundle, std::string_view key, QWidget* window, FormatArgs args = {});
// Item 0 is the menu's own title; items count from 1. -50 for an item the menu does not have.
OSStatus SetLocalizedMenuTitle(const Bundle& bundle, std::string_view key, QMenu* menu, int32_t item,
                               FormatArgs args = {});
OSStatus SetLocalizedMenuTitle(const Bundle& bundle, std::string_view key, QComboBox* popup, int32_t item,
                               FormatArgs args = {});

} // namespace talmo
