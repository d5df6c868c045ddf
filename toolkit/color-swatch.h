// The colour swatch: a button that shows a colour and, when clicked, lets the user choose
// another in the colour chooser. It emits colorChanged when the user picks a different
// colour; setColor from code does not.
#pragma once

#include <QColor>
#include <QPushButton>

namespace talmo {

class ColorSwatch : public QPushButton {
    Q_OBJECT

public:
    explicit ColorSwatch(QWidget* parent = nullptr);
    // Replaces a placeholder (see control-replace.h), taking a button's text.
    static ColorSwatch* adopt(QWidget* placeholder);

    QColor color() const { return color_; }
    void setColor(const QColor& color);
    // The chooser's window title (a localized text).
    void setChooserTitle(const QString& title) { chooserTitle_ = title; }

signals:
    void colorChanged(const QColor& color);

protected:
    void changeEvent(QEvent* event) override;

private:
    void choose();
    void updateSwatch();

    QColor color_ = Qt::white;
    QString chooserTitle_;
};

} // namespace talmo
