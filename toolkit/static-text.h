// The static text control: a read-only label whose text can be selected and copied (the
// summaries beside the buttons that edit them). Its text is always plain, so a user's paper
// name never turns into markup.
#pragma once

#include <QLabel>

namespace talmo {

class StaticTextControl : public QLabel {
    Q_OBJECT

public:
    explicit StaticTextControl(QWidget* parent = nullptr);
    // Replaces a placeholder (see control-replace.h), taking a label's text, alignment and
    // word wrap.
    static StaticTextControl* adopt(QWidget* placeholder);
};

} // namespace talmo
