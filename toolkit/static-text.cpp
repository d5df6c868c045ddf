#include "toolkit/static-text.h"

#include "toolkit/control-replace.h"

namespace talmo {

StaticTextControl::StaticTextControl(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFocusPolicy(Qt::ClickFocus);
}

StaticTextControl* StaticTextControl::adopt(QWidget* placeholder)
{
    auto* control = new StaticTextControl;
    if (auto* label = qobject_cast<QLabel*>(placeholder)) {
        control->setText(label->text());
        control->setAlignment(label->alignment());
        control->setWordWrap(label->wordWrap());
    }
    ReplaceControl(placeholder, control);
    return control;
}

} // namespace talmo
