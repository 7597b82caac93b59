// Cost of one radar frame in every view that repaints per frame, together: the traffic
// scheme, the current objects table, the objects history and the video projection, each
// at the size it has beside a 1600 x 1000 main window, fed as the main window feeds them
// (the objects helper orders the frame for the scheme and the projection) and repainted
// by the event loop, once per frame. 64 vehicles drive the demo road at 200 cycles a
// second: their tracks run to full length and are shortened, vehicles leave the road and
// new ones come, and the history is full and follows its newest row. Figures are CPU
// time of this thread, which leaves out what other work on a shared machine takes.
//
// Usage: bench_frame [frames]   (default 2000, after 3300 frames to fill tracks and history)

#include "historytablewidget.h"
#include "iorvexclient.h"
#include "objectshelper.h"
#include "objectstablewidget.h"
#include "projectionwidget.h"
#include "roadbuilder.h"
#include "roadobjectswidget.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

constexpr int Objects = 64;
constexpr int FrameIntervalMs = 5; // 200 cycles a second
constexpr int WarmFrames = 3300; // tracks beyond their 3000 points, the history full
constexpr int FollowFrom = 100; // the history has more rows than it shows
constexpr double RoadEnd = 300.0;
// The radar's steps.
constexpr double RangeStep = 0.064;
constexpr double SpeedStep = 0.1;
constexpr double LengthStep = 0.2;

// The demo road: four lanes with a median strip and roadsides, a gentle left curve.
const char* RoadJson = R"({"origin_offset": 0,
    "parts": {"-3": {"width": 4, "is_lane": false}, "-2": {"width": 3.5, "is_lane": true},
              "-1": {"width": 3.5, "is_lane": true}, "0": {"width": 3},
              "1": {"width": 3.5, "is_lane": true}, "2": {"width": 3.5, "is_lane": true},
              "3": {"width": 2.5, "is_lane": false}},
    "sections": [{"length": 60}, {"is_curved": true, "length": 140, "radius": 800},
                 {"length": 100}]})";

// A value in whole steps, as the client computes it from the record's integer field.
double radarStep(double value, double step)
{
    return std::round(value / step) * step;
}

qint64 threadCpuNs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
}

struct Figures
{
    double median = 0, p99 = 0, max = 0, mean = 0;
};

Figures figures(std::vector<qint64> costs)
{
    Figures f;
    if (costs.empty())
        return f;
    std::sort(costs.begin(), costs.end());
    double sum = 0;
    for (qint64 c : costs)
        sum += double(c);
    f.median = costs[costs.size() / 2] / 1e3;
    f.p99 = costs[std::min(costs.size() - 1, costs.size() * 99 / 100)] / 1e3;
    f.max = costs.back() / 1e3;
    f.mean = sum / double(costs.size()) / 1e3;
    return f;
}

void print(const char* what, const Figures& f)
{
    std::printf("  %-34s median %7.1f us, p99 %7.1f us, max %8.1f us, mean %7.1f us\n", what,
                f.median, f.p99, f.max, f.mean);
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 2000;

    RoadBuilder builder;
    ObjectsHelper helper;
    RoadObjectsWidget scheme;
    ObjectsTableWidget table;
    HistoryTableWidget history;
    ProjectionWidget projection;

    using R = RoadObjectsWidget;
    using P = ProjectionWidget;
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &scheme, &R::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &projection,
                     &P::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &helper,
                     &ObjectsHelper::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::roadAxisLine, &scheme, &R::setRoadAxisLine);
    QObject::connect(&builder, &RoadBuilder::roadAxisLine, &projection, &P::setRoadAxisLine);
    QObject::connect(&builder, &RoadBuilder::laneBorderLines, &scheme, &R::setLaneBorderLines);
    QObject::connect(&builder, &RoadBuilder::laneBorderLines, &projection, &P::setLaneBorderLines);
    QObject::connect(&builder, &RoadBuilder::roadBorderLines, &scheme, &R::setRoadBorderLines);
    QObject::connect(&builder, &RoadBuilder::roadBorderLines, &projection, &P::setRoadBorderLines);
    QObject::connect(&builder, &RoadBuilder::laneCenterLines, &helper,
                     &ObjectsHelper::setLaneCenterLines);
    QObject::connect(&builder, &RoadBuilder::distanceLines, &scheme, &R::setDistanceLines);
    QObject::connect(&builder, &RoadBuilder::distanceLines, &projection, &P::setDistanceLines);
    QObject::connect(&builder, &RoadBuilder::roadTanAngles, &scheme, &R::setRoadTanAngles);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &scheme, &R::finishApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &projection,
                     &P::finishApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &helper,
                     &ObjectsHelper::finishApplyingRoad);
    QObject::connect(&helper, &ObjectsHelper::sortingFinished, &scheme, &R::finishFilling);
    QObject::connect(&helper, &ObjectsHelper::sortingFinished, &projection, &P::finishFilling);
    QObject::connect(&helper, &ObjectsHelper::averageTracks, &scheme, &R::setAverageTracks);
    QObject::connect(&helper, &ObjectsHelper::averageTracks, &projection, &P::setAverageTracks);
    QObject::connect(&projection, &P::sight, &scheme, &R::setSight);

    // The demo settings: tracks, average tracks, sight and own colours everywhere.
    scheme.setShowCurrentTracks(true);
    scheme.setShowAverageTracks(true);
    scheme.setShowSightLine(true);
    scheme.setPaintObjects(true);
    table.setPaintObjects(true);
    history.setPaintObjects(true);
    projection.setShowLaneLines(true);
    projection.setShowDistLines(true);
    projection.setShowCurrentTracks(true);
    projection.setShowAverageTracks(true);
    projection.setPaintObjects(true);
    // A camera 6.5 m up on the right roadside, tilted 3 degrees down, 60 degrees wide.
    projection.setTvmsConfig(QJsonObject{{"z_offset", 6.5},
                                         {"y_offset", -12.0},
                                         {"altitude_misalignment", 3.0},
                                         {"horizontal_view_angle", 60.0}});

    // The sizes the views have beside a 1600 x 1000 main window.
    scheme.resize(778, 420);
    table.resize(772, 357);
    history.resize(800, 600);
    projection.resize(640, 480);
    for (QWidget* w : {static_cast<QWidget*>(&scheme), static_cast<QWidget*>(&table),
                       static_cast<QWidget*>(&history), static_cast<QWidget*>(&projection)})
        w->show();
    QApplication::processEvents();
    builder.setRoadConfig(QJsonDocument::fromJson(RoadJson).object());
    helper.setRadarState(IOrvexClient::Working);
    scheme.showRadarState(IOrvexClient::Working);
    table.showRadarState(IOrvexClient::Working);
    projection.showRadarState(IOrvexClient::Working);
    history.setEnabled(true);
    QApplication::processEvents();

    // Vehicles on the four lanes, half of them against X, 40 to 90 km/h; one that
    // reaches the road's end leaves for a frame and comes back at the other end as a new
    // vehicle. Every twentieth object is only predicted in a frame now and then.
    std::vector<double> x(Objects), speed(Objects);
    for (int i = 0; i < Objects; ++i) {
        speed[i] = (11.0 + (i * 7) % 14) * (i % 4 < 2 ? 1.0 : -1.0);
        x[i] = std::fmod(i * 4.7, RoadEnd);
    }
    const QDateTime start
        = QDateTime::currentDateTimeUtc().addMSecs(-qint64(WarmFrames + frames) * FrameIntervalMs);
    auto feed = [&](int f) {
        const QDateTime time = start.addMSecs(qint64(f) * FrameIntervalMs);
        const QDateTime older = time.addMSecs(-FrameIntervalMs);
        // The client's order: frame start and time to all, objects by id, frame end.
        helper.startFilling();
        scheme.startFilling();
        table.startFilling();
        history.startFilling();
        projection.startFilling();
        helper.setFrameDateTimeUtc(time);
        scheme.setFrameDateTimeUtc(time);
        history.setFrameDateTimeUtc(time);
        projection.setFrameDateTimeUtc(time);
        helper.setCycleNumber(quint64(f));
        for (int i = 0; i < Objects; ++i) {
            x[i] += speed[i] * FrameIntervalMs / 1000.0;
            if (x[i] > RoadEnd || x[i] < 0.0) {
                x[i] = x[i] > RoadEnd ? 0.0 : RoadEnd;
                continue; // gone for a frame
            }
            const int lane = i % 4;
            const double y = (lane - 1.5) * 3.5 + x[i] * x[i] / 8000.0 * (x[i] > 60 ? 1 : 0)
                             + 0.1 * std::sin(f * 0.05 + i);
            const QDateTime detected = (i % 20 == 0 && f % 7 == 0) ? older : time;
            // Values as the client decodes them from the radar's records: ranges in
            // 0.064 m, speeds in 0.1 m/s and lengths in 0.2 m steps. Measured speeds
            // wander by a step from frame to frame.
            const double xRange = radarStep(x[i], RangeStep);
            const double yRange = radarStep(y, RangeStep);
            const double length = radarStep(4.0 + i % 12, LengthStep);
            const double v = radarStep(speed[i] + 0.1 * std::sin(f * 0.3 + i), SpeedStep);
            const double vy = SpeedStep;
            helper.addObject(quint8(i), v, vy, xRange, yRange, length, detected);
            scheme.addObject(quint8(i), v, vy, xRange, yRange, length, detected);
            table.addObject(quint8(i), v, vy, xRange, yRange, length, detected);
            history.addObject(quint8(i), v, vy, xRange, yRange, length, detected);
            projection.addObject(quint8(i), v, vy, xRange, yRange, length, detected);
        }
        table.finishFilling();
        history.finishFilling();
        helper.finishFilling(); // orders the frame; the scheme and the projection finish
    };

    // The history follows its newest row, as an operator watching the log keeps it.
    QAbstractItemView* historyView = history.findChild<QAbstractItemView*>();
    for (int f = 0; f < WarmFrames; ++f) {
        feed(f);
        QApplication::processEvents();
        if (f == FollowFrom && historyView)
            historyView->scrollToBottom();
    }

    std::vector<qint64> total, wall, intake, schemePaint, tablePaint, historyPaint, projectionPaint,
        rest;
    QElapsedTimer clock;
    // Each reading of the thread's CPU time is a system call: one reading ends a part
    // and starts the next.
    qint64 mark = 0;
    auto paint = [&mark](QWidget& w, std::vector<qint64>& costs) {
        QCoreApplication::sendPostedEvents(&w, QEvent::UpdateRequest);
        const qint64 now = threadCpuNs();
        costs.push_back(now - mark);
        mark = now;
    };
    for (int f = WarmFrames; f < WarmFrames + frames; ++f) {
        clock.start();
        const qint64 t0 = threadCpuNs();
        feed(f);
        const qint64 t1 = threadCpuNs();
        intake.push_back(t1 - t0);
        // Layouts first (the tables' new rows), then each window's one repaint.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
        mark = threadCpuNs();
        const qint64 layouts = mark - t1;
        paint(scheme, schemePaint);
        paint(table, tablePaint);
        paint(history, historyPaint);
        paint(projection, projectionPaint);
        QApplication::processEvents();
        const qint64 t2 = threadCpuNs();
        total.push_back(t2 - t0);
        rest.push_back(layouts + (t2 - mark));
        wall.push_back(clock.nsecsElapsed());
    }

    std::printf("every per-frame view: scheme %dx%d, objects table %dx%d, history %dx%d (%d "
                "rows), projection %dx%d; %d objects, %d ms frames, %d frames\n",
                scheme.width(), scheme.height(), table.width(), table.height(), history.width(),
                history.height(),
                history.findChild<QAbstractItemView*>()
                    ? history.findChild<QAbstractItemView*>()->model()->rowCount()
                    : 0,
                projection.width(), projection.height(), Objects, FrameIntervalMs, frames);
    print("one frame, all views (CPU)", figures(total));
    print("  intake (helper and five feeds)", figures(intake));
    print("  traffic scheme repaint", figures(schemePaint));
    print("  objects table repaint", figures(tablePaint));
    print("  history repaint", figures(historyPaint));
    print("  projection repaint", figures(projectionPaint));
    print("  layouts and other events", figures(rest));
    print("one frame, all views (wall)", figures(wall));
    return 0;
}
