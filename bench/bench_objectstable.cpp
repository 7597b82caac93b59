// Cost of one radar frame in the current objects table: the table is emptied, 64
// objects are added, and the event loop repaints the shown (offscreen) widget once, as
// it would in the main window. Two sizes: a table as big as it is in a 1280 x 800 main
// window, and one tall enough to show all 64 rows.
//
// Usage: bench_objectstable [frames]   (default 2000)

#include "objectstablewidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableWidget>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int ObjectsPerFrame = 64;
constexpr int WorkingState = 2;
constexpr int FrameIntervalMs = 100; // one radar cycle

struct Object
{
    quint8 id;
    double xSpeed, ySpeed, xRange, yRange, length;
};

// Vehicles spread over 250 m of a four-lane road, moving on from frame to frame.
std::vector<Object> frameObjects(int frame)
{
    std::vector<Object> objects;
    for (int i = 0; i < ObjectsPerFrame; ++i) {
        const double direction = i % 2 ? -1.0 : 1.0;
        objects.push_back({quint8(i), direction * (15.0 + i % 20 + frame % 7 * 0.1),
                           0.1 * (i % 3 - 1), std::fmod(i * 3.9 + frame * 2.5, 250.0),
                           (i % 4 - 1.5) * 3.5, 4.0 + i % 12});
    }
    return objects;
}

// Counts the paints of the table's cell area.
class PaintCounter : public QObject
{
public:
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

void run(const char* what, int width, int height, int frames)
{
    ObjectsTableWidget table;
    table.resize(width, height);
    table.setPaintObjects(true);
    table.show();
    table.showRadarState(WorkingState);
    QApplication::processEvents();
    PaintCounter counter;
    table.tableWidget()->viewport()->installEventFilter(&counter);

    std::vector<std::vector<Object>> input;
    for (int f = 0; f < 100; ++f)
        input.push_back(frameObjects(f));
    const QDateTime start = QDateTime::currentDateTimeUtc();

    auto runFrame = [&](int f) {
        const QDateTime time = start.addMSecs(qint64(f) * FrameIntervalMs);
        table.startFilling();
        for (const Object& o : input[size_t(f) % input.size()])
            table.addObject(o.id, o.xSpeed, o.ySpeed, o.xRange, o.yRange, o.length, time);
        table.finishFilling();
        // The layout of the new rows and the frame's one repaint.
        QApplication::processEvents();
    };

    for (int f = 0; f < 200; ++f)
        runFrame(f); // warm up: glyph caches, fonts, allocator

    counter.paints = 0;
    std::vector<qint64> costs;
    costs.reserve(size_t(frames));
    for (int f = 0; f < frames; ++f) {
        QElapsedTimer clock;
        clock.start();
        runFrame(f);
        costs.push_back(clock.nsecsElapsed());
    }
    const QTableWidget* cells = table.tableWidget();
    const int lastShown = cells->rowAt(cells->viewport()->height() - 1);
    const int visibleRows = (lastShown < 0 ? cells->rowCount() - 1 : lastShown) + 1;
    double sum = 0;
    for (qint64 c : costs)
        sum += c;
    std::sort(costs.begin(), costs.end());
    auto us = [](double ns) { return ns / 1000.0; };
    std::printf("%-28s %4dx%-4d %2d of %d rows on screen, %.2f repaints/frame: mean %7.1f us, "
                "median %7.1f us, p95 %7.1f us\n",
                what, width, height, visibleRows, cells->rowCount(),
                double(counter.paints) / frames, us(sum / frames),
                us(double(costs[costs.size() / 2])), us(double(costs[costs.size() * 95 / 100])));
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 2000;

    std::printf("objects table: startFilling, %d x addObject, finishFilling, one repaint; "
                "%d frames each\n",
                ObjectsPerFrame, frames);
    run("as in the main window", 640, 400, frames);
    run("all rows on screen", 900, 2200, frames);
    return 0;
}
