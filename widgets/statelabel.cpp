#include "statelabel.h"

#include <QPainter>
#include <QPalette>
#include <QStyle>

#include <algorithm>

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

void StateLabel::setElideMode(Qt::TextElideMode mode)
{
    if (m_elideMode == mode)
        return;
    m_elideMode = mode;
    updateGeometry();
    update();
}

QSize StateLabel::minimumSizeHint() const
{
    const QSize hint = QLabel::minimumSizeHint();
    if (m_elideMode == Qt::ElideNone)
        return hint;
    // Room for the ellipsis and a letter or two either side of it.
    const int least = fontMetrics().horizontalAdvance(QStringLiteral("[W\u2026]"));
    return QSize(std::min(hint.width(), least + 2 * margin() + 2 * frameWidth()), hint.height());
}

void StateLabel::paintEvent(QPaintEvent* event)
{
    const QRect room = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    if (m_elideMode == Qt::ElideNone || textFormat() == Qt::RichText
        || fontMetrics().horizontalAdvance(text()) <= room.width()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), m_elideMode, room.width());
    style()->drawItemText(&painter, room, int(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}
