#include "toolkit/color-swatch.h"

#include "toolkit/control-replace.h"

#include <QColorDialog>
#include <QEvent>
#include <QPainter>

namespace talmo {

ColorSwatch::ColorSwatch(QWidget* parent) : QPushButton(parent)
{
    connect(this, &QAbstractButton::clicked, this, &ColorSwatch::choose);
    setAccessibleName(color_.name());
    updateSwatch();
}

ColorSwatch* ColorSwatch::adopt(QWidget* placeholder)
{
    auto* control = new ColorSwatch;
    if (auto* button = qobject_cast<QAbstractButton*>(placeholder))
        control->setText(button->text());
    control->updateSwatch();
    ReplaceControl(placeholder, control);
    return control;
}

void ColorSwatch::setColor(const QColor& color)
{
    if (!color.isValid() || color == color_)
        return;
    color_ = color;
    // A picture button gets a name a screen reader can say, unless the description gave one.
    if (accessibleName().isEmpty() || accessibleName().startsWith(u'#'))
        setAccessibleName(color_.name());
    updateSwatch();
}

void ColorSwatch::choose()
{
    const QColor chosen = QColorDialog::getColor(color_, this, chooserTitle_);
    if (!chosen.isValid() || chosen == color_)
        return;
    setColor(chosen);
    emit colorChanged(color_);
}

void ColorSwatch::changeEvent(QEvent* event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange || event->type() == QEvent::PaletteChange)
        updateSwatch();
}

// The colour is the button's icon, so the style lays it out beside any title; drawn at the
// screen's scale so that it stays crisp at 2x.
void ColorSwatch::updateSwatch()
{
    const QSize size = text().isEmpty() ? QSize(32, 14) : QSize(14, 14);
    const qreal scale = devicePixelRatioF();
    QPixmap pixmap(size * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.setBrush(isEnabled() ? color_ : color_.lighter(150));
    painter.drawRect(QRectF(0.5, 0.5, size.width() - 1, size.height() - 1));
    painter.end();
    setIconSize(size);
    setIcon(QIcon(pixmap));
}

} // namespace talmo
