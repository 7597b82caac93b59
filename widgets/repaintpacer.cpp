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
constexpr qint64 TimerSlackNs = 500000;
constexpr qint64 NsPerMs = 1000000;
} // namespace

RepaintPacer::RepaintPacer(QObject* parent)
    : QObject(parent)
{
    m_clock.start();
}

qint64 RepaintPacer::minimumIntervalNs(const QWidget* window)
{
    const QScreen* screen = window ? window->screen() : nullptr;
    double rate = screen ? screen->refreshRate() : 0.0;
    if (!std::isfinite(rate) || rate < MinRefreshRate)
        rate = DefaultRefreshRate;
    rate = std::min(rate, MaxRefreshRate);
    // A little under one refresh, so that a request held back for the timer's slight
    // lateness still makes the next refresh and not the one after it.
    return qint64(1e9 / rate) - TimerSlackNs;
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
        it->lastPaintNs = m_clock.nsecsElapsed();
        return false;
    }

    const qint64 now = m_clock.nsecsElapsed();
    const qint64 due = it->lastPaintNs + minimumIntervalNs(window);
    if (now >= due) {
        it->lastPaintNs = now;
        it->held = false;
        return false;
    }
    // Too soon after the last picture: the window keeps what is to be repainted (and
    // asks for nothing more meanwhile) until the held request is given back.
    if (!it->held) {
        it->held = true;
        QPointer<QWidget> guarded(window);
        const int waitMs = int((due - now + NsPerMs - 1) / NsPerMs);
        QTimer::singleShot(waitMs, Qt::PreciseTimer, this, [this, guarded] {
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
