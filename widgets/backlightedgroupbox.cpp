#include "backlightedgroupbox.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QStyle>

namespace {
// Components below this are lightened, the others darkened, by BacklightShift.
constexpr int BacklightThreshold = 160;
constexpr int BacklightShift = 32;

int shifted(int component)
{
    return component < BacklightThreshold ? component + BacklightShift : component - BacklightShift;
}
} // namespace

BacklightedGroupBox::BacklightedGroupBox(QWidget* parent)
    : QGroupBox(parent)
{
    setBacklighted(true);
}

BacklightedGroupBox::BacklightedGroupBox(const QString& title, QWidget* parent)
    : QGroupBox(title, parent)
{
    setBacklighted(true);
}

void BacklightedGroupBox::setBacklighted(bool backlighted)
{
    m_backlighted = backlighted;
    // The highlight is the box's own window colour, which shows only when the box
    // fills its background itself.
    setAutoFillBackground(backlighted);
}

QColor BacklightedGroupBox::backlightColor(const QColor& color)
{
    return QColor(shifted(color.red()), shifted(color.green()), shifted(color.blue()), 255);
}

void BacklightedGroupBox::enterEvent(QEvent* event)
{
    if (m_backlighted && parentWidget()) {
        QPalette lit = parentWidget()->palette();
        const QColor window = lit.color(QPalette::Active, QPalette::Window);
        const QColor button = lit.color(QPalette::Active, QPalette::Button);
        lit.setBrush(QPalette::Active, QPalette::Window, backlightColor(window));
        lit.setBrush(QPalette::Active, QPalette::Button, backlightColor(button));
        setPalette(lit);
    }
    QGroupBox::enterEvent(event);
}

void BacklightedGroupBox::leaveEvent(QEvent* event)
{
    if (m_backlighted && parentWidget())
        setPalette(parentWidget()->palette());
    QGroupBox::leaveEvent(event);
}

bool BacklightedGroupBox::isFrameFor(const QStyleOptionGroupBox& option,
                                     qreal devicePixelRatio) const
{
    const QStyleOptionGroupBox& kept = m_frameOption;
    return !m_frame.isNull() && m_frameStyle == style()
           && m_frame.devicePixelRatio() == devicePixelRatio && m_frameFont == font()
           && kept.rect == option.rect && kept.state == option.state
           && kept.direction == option.direction && kept.palette == option.palette
           && kept.text == option.text && kept.textColor == option.textColor
           && kept.textAlignment == option.textAlignment && kept.features == option.features
           && kept.subControls == option.subControls
           && kept.activeSubControls == option.activeSubControls
           && kept.lineWidth == option.lineWidth && kept.midLineWidth == option.midLineWidth;
}

void BacklightedGroupBox::paintEvent(QPaintEvent* event)
{
    // A box that does not fill its own background, or has a check box (which some styles
    // animate), is drawn by the style every time.
    if (!autoFillBackground() || isCheckable()) {
        QGroupBox::paintEvent(event);
        return;
    }
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    QPainter p(this);
    const qreal ratio = devicePixelRatioF();
    if (!isFrameFor(option, ratio)) {
        // The box's background and frame, without the title: text is smoothed for the
        // surface it is drawn on, so the title is drawn on the window itself.
        m_frame = QPixmap((QSizeF(size()) * ratio).toSize());
        m_frame.setDevicePixelRatio(ratio);
        m_frame.fill(Qt::transparent);
        QPainter framePainter(&m_frame);
        framePainter.fillRect(rect(), palette().brush(backgroundRole()));
        QStyleOptionGroupBox frameOnly = option;
        frameOnly.subControls &= ~QStyle::SC_GroupBoxLabel;
        style()->drawComplexControl(QStyle::CC_GroupBox, &frameOnly, &framePainter, this);
        m_frameOption = option;
        m_frameStyle = style();
        m_frameFont = font();
        m_titleRect
            = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    }
    p.drawPixmap(0, 0, m_frame);
    if ((option.subControls & QStyle::SC_GroupBoxLabel) && event->region().intersects(m_titleRect)) {
        QStyleOptionGroupBox titleOnly = option;
        titleOnly.subControls = QStyle::SC_GroupBoxLabel;
        style()->drawComplexControl(QStyle::CC_GroupBox, &titleOnly, &p, this);
    }
}
