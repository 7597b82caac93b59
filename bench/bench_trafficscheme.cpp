// Cost of one radar frame on the traffic scheme at 1280 x 800: the objects helper's
// sorting and learning, the scheme's track update and one (offscreen) paint, with 64
// objects whose current tracks hold 300 points each and the average tracks shown. The
// road picture itself is drawn once, not per frame; its cost is printed apart.
//
// Usage: bench_trafficscheme [frames]   (default 500)

#include "iorvexclient.h"
#include "objectshelper.h"
#include "roadbuilder.h"
#include "roadobjectswidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int ObjectsPerFrame = 64;
constexpr int TrackPoints = 300;
constexpr int FrameIntervalMs = 100;

// Four lanes with a median strip and roadsides, a straight and a gentle left curve.
const char* RoadJson = R"({"origin_offset": 0,
    "parts": {"-3": {"width": 4, "is_lane": false}, "-2": {"width": 3.5, "is_lane": true},
              "-1": {"width": 3.5, "is_lane": true}, "0": {"width": 3},
              "1": {"width": 3.5, "is_lane": true}, "2": {"width": 3.5, "is_lane": true},
              "3": {"width": 2.5, "is_lane": false}},
    "sections": [{"length": 60}, {"is_curved": true, "length": 140, "radius": 800},
                 {"length": 100}]})";

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 500;

    RoadBuilder builder;
    ObjectsHelper helper;
    RoadObjectsWidget scheme;
    using R = RoadObjectsWidget;
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &scheme, &R::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &helper,
                     &ObjectsHelper::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::roadAxisLine, &scheme, &R::setRoadAxisLine);
    QObject::connect(&builder, &RoadBuilder::laneBorderLines, &scheme, &R::setLaneBorderLines);
    QObject::connect(&builder, &RoadBuilder::roadBorderLines, &scheme, &R::setRoadBorderLines);
    QObject::connect(&builder, &RoadBuilder::laneCenterLines, &helper,
                     &ObjectsHelper::setLaneCenterLines);
    QObject::connect(&builder, &RoadBuilder::distanceLines, &scheme, &R::setDistanceLines);
    QObject::connect(&builder, &RoadBuilder::roadTanAngles, &scheme, &R::setRoadTanAngles);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &scheme, &R::finishApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &helper,
                     &ObjectsHelper::finishApplyingRoad);
    QObject::connect(&helper, &ObjectsHelper::sortingFinished, &scheme, &R::finishFilling);
    QObject::connect(&helper, &ObjectsHelper::averageTracks, &scheme, &R::setAverageTracks);

    scheme.resize(1280, 800);
    scheme.setShowCurrentTracks(true);
    scheme.setShowAverageTracks(true);
    scheme.setPaintObjects(true);
    scheme.show();
    QApplication::processEvents();
    builder.setRoadConfig(QJsonDocument::fromJson(RoadJson).object());
    helper.setRadarState(IOrvexClient::Working);
    scheme.showRadarState(IOrvexClient::Working);

    // Vehicles on the four lanes, half of them against X, moving 2.5 m a frame.
    const QDateTime start(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    auto runFrame = [&](int f) {
        const QDateTime time = start.addMSecs(qint64(f) * FrameIntervalMs);
        helper.startFilling();
        scheme.startFilling();
        helper.setFrameDateTimeUtc(time);
        scheme.setFrameDateTimeUtc(time);
        helper.setCycleNumber(quint64(f));
        for (int i = 0; i < ObjectsPerFrame; ++i) {
            const int lane = i % 4;
            const double direction = lane < 2 ? 1.0 : -1.0;
            const double x = std::fmod(i * 4.1 + direction * f * 0.25 + 400.0, 250.0);
            const double y = (lane - 1.5) * 3.5 + 0.2 * std::sin(f * 0.1 + i);
            const double speed = direction * 2.5;
            helper.addObject(quint8(i), speed, 0.1, x, y, 4.0 + i % 12, time);
            scheme.addObject(quint8(i), speed, 0.1, x, y, 4.0 + i % 12, time);
        }
        helper.finishFilling(); // sorts; the scheme finishes from its order
        scheme.repaint();
    };

    for (int f = 0; f < TrackPoints; ++f)
        runFrame(f); // builds tracks of 300 points and warms up

    std::vector<qint64> costs;
    costs.reserve(size_t(frames));
    for (int f = 0; f < frames; ++f) {
        QElapsedTimer clock;
        clock.start();
        runFrame(TrackPoints + f);
        costs.push_back(clock.nsecsElapsed());
    }
    std::sort(costs.begin(), costs.end());
    double sum = 0;
    for (qint64 c : costs)
        sum += double(c);

    // The static road picture, redrawn only when the road or the view changes.
    QElapsedTimer roadClock;
    roadClock.start();
    for (int i = 0; i < 20; ++i) {
        scheme.setKeepAspectRatio(i % 2 == 0);
        scheme.repaint();
    }
    const double roadUs = roadClock.nsecsElapsed() / 20 / 1000.0;

    std::printf("traffic scheme %dx%d, %d objects, tracks of %d points, %d tracks, average tracks shown\n",
                scheme.width(), scheme.height(), ObjectsPerFrame, TrackPoints,
                int(scheme.currentTrackCount()));
    std::printf("per frame (sort, tracks, paint): mean %.1f us, median %.1f us, p95 %.1f us "
                "over %d frames\n",
                sum / frames / 1000.0, costs[costs.size() / 2] / 1000.0,
                costs[costs.size() * 95 / 100] / 1000.0, frames);
    std::printf("road picture redrawn with a new geometry: %.1f us\n", roadUs);
    return 0;
}
