#include "toolkit/control-replace.h"

#include <QLabel>
#include <QLayout>
#include <QVariant>

namespace talmo {

QWidget* ReplaceControl(QWidget* placeholder, QWidget* control)
{
    if (!placeholder || !control || placeholder == control)
        return control;
    QWidget* parent = placeholder->parentWidget();
    control->setParent(parent);
    control->setObjectName(placeholder->objectName());
    for (const QByteArray& name : placeholder->dynamicPropertyNames())
        control->setProperty(name.constData(), placeholder->property(name.constData()));
    control->setToolTip(placeholder->toolTip());
    control->setStatusTip(placeholder->statusTip());
    control->setWhatsThis(placeholder->whatsThis());
    control->setAccessibleName(placeholder->accessibleName());
    control->setAccessibleDescription(placeholder->accessibleDescription());
    control->setSizePolicy(placeholder->sizePolicy());
    control->setMinimumSize(placeholder->minimumSize());
    control->setMaximumSize(placeholder->maximumSize());
    if (placeholder->testAttribute(Qt::WA_SetFont))
        control->setFont(placeholder->font());
    control->setEnabled(placeholder->isEnabled());

    bool inLayout = false;
    if (parent && parent->layout()) {
        if (QLayoutItem* old = parent->layout()->replaceWidget(placeholder, control)) {
            delete old;
            inLayout = true;
        }
    }
    if (!inLayout)
        control->setGeometry(placeholder->geometry());
    if (parent) {
        for (QLabel* label : parent->window()->findChildren<QLabel*>())
            if (label->buddy() == placeholder)
                label->setBuddy(control);
        // Right after the placeholder in the focus chain, which keeps the order once it goes.
        QWidget::setTabOrder(placeholder, control);
        control->setVisible(!placeholder->isHidden());
    }
    delete placeholder;
    return control;
}

} // namespace talmo
