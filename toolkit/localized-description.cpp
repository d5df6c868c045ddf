#include "toolkit/localized-description.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QWidget>

namespace talmo {

namespace {

void localize(const Bundle& bundle, QWidget* w)
{
    auto text = [&](const char* property) {
        const QVariant key = w->property(property);
        return key.isValid() ? QString::fromStdString(bundle.localizedString(key.toString().toStdString())) : QString();
    };
    if (const QString t = text(kLocalizedTextProperty); !t.isNull()) {
        if (auto* label = qobject_cast<QLabel*>(w))
            label->setText(t);
        else if (auto* button = qobject_cast<QAbstractButton*>(w))
            button->setText(t);
        else if (auto* group = qobject_cast<QGroupBox*>(w))
            group->setTitle(t);
        else
            w->setWindowTitle(t);
    }
    if (const QString tip = text(kLocalizedToolTipProperty); !tip.isNull()) {
        w->setToolTip(tip);
        w->setAccessibleName(tip);
    }
}

} // namespace

void LocalizeDescription(const Bundle& bundle, QWidget* root)
{
    if (!root)
        return;
    localize(bundle, root);
    for (QWidget* w : root->findChildren<QWidget*>())
        localize(bundle, w);
}

} // namespace talmo
