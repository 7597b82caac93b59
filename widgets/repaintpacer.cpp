#include "repaintpacer.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {
// Screens that report no refresh rate (virtual displays do) are taken to refresh 60 times
// a second; a report beyond 240 Hz is not believed.
constexpr double DefaultRefreshRate = 60.0;
constexpr double MinRefreshRate = 24.0;
constexpr double MaxRefreshRate = 240.0;
} // namespace

RepaintPacer::RepaintPacer(QObject* parent)
    : QObject(parent)
{
    m_clock.start();
}

int RepaintPacer::minimumIntervalMs(const QWidget* window)
{
    const QScreen* screen = window ? window->screen() : nullptr;
    double rate = screen ? screen->refreshRate() : 0.0;
    if (!std::isfinite(rate) || rate < MinRefreshRate)
        rate = DefaultRefreshRate;
    rate = std::min(rate, MaxRefreshRate);
    // A little under one refresh, so that a request made right after a paint waits for
    // the next refresh and not for the one after it.
    return std::max(1, int(1000.0 / rate) - 1);
}

bool RepaintPacer::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest || !watched->isWidgetType())
        return false;
    auto* window = static_cast<QWidget*>(watched);
    if (!window->isWindow())
        return false;

    auto it = m_windows.find(watched);
    if (it == m_windows.end()) {
        it = m_windows.insert(watched, WindowPace{});
        connect(watched, &QObject::destroyed, this,
                [this](QObject* gone) { m_windows.remove(gone); });
        it->lastPaintMs = m_clock.elapsed();
        return false;
    }

    const qint64 now = m_clock.elapsed();
    const qint64 due = it->lastPaintMs + minimumIntervalMs(window);
    if (now >= due) {
        it->lastPaintMs = now;
        it->held = false;
        return false;
    }
    // Too soon after the last picture: the window keeps what is to be repainted (and
    // asks for nothing more meanwhile) until the held request is given back.
    if (!it->held) {
        it->held = true;
        QPointer<QWidget> guarded(window);
        QTimer::singleShot(int(due - now), Qt::PreciseTimer, this, [this, guarded] {
            if (guarded)
                release(guarded);
        });
    }
    return true;
}

void RepaintPacer::release(QWidget* window)
{
    auto it = m_windows.find(window);
    if (it == m_windows.end() || !it->held)
        return;
    it->held = false;
    QCoreApplication::postEvent(window, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
}
