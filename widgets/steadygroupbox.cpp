#include "steadygroupbox.h"

#include <QPainter>
#include <QPaintEvent>
#include <QStyle>

namespace {
// Paints of the same look after which a box keeps its frame: one painted only now and
// then (on a hover or a click) is not worth the memory.
constexpr int PaintsBeforeKeeping = 8;
} // namespace

SteadyGroupBox::SteadyGroupBox(QWidget* parent)
    : QGroupBox(parent)
{ }

SteadyGroupBox::SteadyGroupBox(const QString& title, QWidget* parent)
    : QGroupBox(title, parent)
{ }

bool SteadyGroupBox::hasLook(const QStyleOptionGroupBox& option, qreal devicePixelRatio) const
{
    const QStyleOptionGroupBox& kept = m_look;
    return m_lookStyle == style() && m_lookRatio == devicePixelRatio && m_lookFont == font()
           && kept.rect == option.rect && kept.state == option.state
           && kept.direction == option.direction && kept.palette == option.palette
           && kept.text == option.text && kept.textColor == option.textColor
           && kept.textAlignment == option.textAlignment && kept.features == option.features
           && kept.subControls == option.subControls
           && kept.activeSubControls == option.activeSubControls
           && kept.lineWidth == option.lineWidth && kept.midLineWidth == option.midLineWidth;
}

void SteadyGroupBox::paintEvent(QPaintEvent* event)
{
    // A box with a check box (which some styles animate) is drawn by the style every time.
    if (isCheckable()) {
        QGroupBox::paintEvent(event);
        return;
    }
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    const qreal ratio = devicePixelRatioF();
    if (!hasLook(option, ratio)) {
        m_look = option;
        m_lookStyle = style();
        m_lookFont = font();
        m_lookRatio = ratio;
        m_paintsAlike = 0;
        m_frame = QPixmap();
    }
    if (m_frame.isNull() && ++m_paintsAlike < PaintsBeforeKeeping) {
        QGroupBox::paintEvent(event);
        return;
    }
    if (m_frame.isNull()) {
        // The frame alone, to go over whatever is beneath the box as the style would draw
        // it there; not the title: text is smoothed for the surface it is drawn on, so the
        // title is drawn on the window itself.
        m_frame = QPixmap((QSizeF(size()) * ratio).toSize());
        m_frame.setDevicePixelRatio(ratio);
        m_frame.fill(Qt::transparent);
        QPainter framePainter(&m_frame);
        QStyleOptionGroupBox frameOnly = option;
        frameOnly.subControls &= ~QStyle::SC_GroupBoxLabel;
        style()->drawComplexControl(QStyle::CC_GroupBox, &frameOnly, &framePainter, this);
        m_titleRect
            = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    }
    QPainter p(this);
    p.drawPixmap(0, 0, m_frame);
    if ((option.subControls & QStyle::SC_GroupBoxLabel)
        && event->region().intersects(m_titleRect)) {
        QStyleOptionGroupBox titleOnly = option;
        titleOnly.subControls = QStyle::SC_GroupBoxLabel;
        style()->drawComplexControl(QStyle::CC_GroupBox, &titleOnly, &p, this);
    }
}
