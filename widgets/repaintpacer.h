#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>

class QWidget;

// Paces the repaints of top-level windows to the screen's refresh rate. A radar cycles
// 10 to 20 times a second, but a recording replayed at ten times its speed delivers
// 200 frames a second, each ending in its one repaint request. A screen shows at most its
// refresh rate of pictures a second (60 on most), so a window that painted less than one
// refresh ago holds the next request back until the next refresh is due and then paints
// once, with the newest frame. Nothing is dropped: the views keep every frame's data (the
// tracks and the history take each frame in), only pictures nobody could see are not
// drawn. At the radar's own rate no request ever waits.
//
// Installed as an event filter on the application object.
class RepaintPacer : public QObject
{
    Q_OBJECT

public:
    explicit RepaintPacer(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

    // Shortest time between two repaints of one window, in nanoseconds.
    static qint64 minimumIntervalNs(const QWidget* window);

private:
    struct WindowPace
    {
        qint64 lastPaintNs = 0;
        bool held = false;
    };

    void release(QWidget* window);

    QElapsedTimer m_clock;
    QHash<QObject*, WindowPace> m_windows;
};
