#include "backlightedgroupbox.h"

#include <QPalette>

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
    : SteadyGroupBox(parent)
{
    setBacklighted(true);
}

BacklightedGroupBox::BacklightedGroupBox(const QString& title, QWidget* parent)
    : SteadyGroupBox(title, parent)
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
