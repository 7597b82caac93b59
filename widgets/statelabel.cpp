#include "statelabel.h"

#include <QPalette>

StateLabel::StateLabel(QWidget* parent, Qt::WindowFlags flags)
    : QLabel(parent, flags)
{ }

StateLabel::StateLabel(const QString& text, QWidget* parent, Qt::WindowFlags flags)
    : QLabel(text, parent, flags)
{ }

void StateLabel::setTextColor(const QColor& color)
{
    QPalette textPalette = palette();
    bool same = true;
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Disabled, QPalette::Inactive}) {
        same = same && textPalette.color(group, QPalette::WindowText) == color
               && textPalette.color(group, QPalette::ButtonText) == color;
    }
    // A status label is recoloured on every report; skip the repolish when nothing changes.
    if (same)
        return;
    textPalette.setBrush(QPalette::WindowText, color);
    textPalette.setBrush(QPalette::ButtonText, color);
    setPalette(textPalette);
}

void StateLabel::setFontPointSize(int size)
{
    if (size <= 0 || font().pointSize() == size)
        return;
    QFont sized = font();
    sized.setPointSize(size);
    setFont(sized);
}

void StateLabel::setFontPixelSize(int size)
{
    if (size <= 0 || font().pixelSize() == size)
        return;
    QFont sized = font();
    sized.setPixelSize(size);
    setFont(sized);
}

void StateLabel::fixMinWidth()
{
    if (width() >= minimumWidth())
        setMinimumWidth(width() + 1);
}
