// The projection's two hot paths.
//
// 1. The parameter pick-up search on realistic marks: a radar 7 m up over a four-lane
//    road, the operator's four checkpoints on the lane borders 20 to 80 m ahead (and in
//    mode 2 a 20 m segment along the road), each clicked a pixel or two off. Prints
//    each search's time, its counts of candidates, duplicates skipped and candidates
//    scored, and the pose found. With "--literal" the same searches run again with the
//    plain duplicate check (each candidate compared with every pose scored in its
//    pass) and must give the very same counts and pose.
// 2. One overlay frame at 1280 x 720: 64 vehicles in a jam, each with a 1000-point
//    track, lanes, distance lines and average tracks shown, painted by the projection
//    window (offscreen) and by its painter into a picture.
//
// Usage: bench_projection [--literal | --paint-only] [frames]   (default 300 frames)

#include "pickupsearch.h"
#include "projectionwidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QJsonObject>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

qint64 threadCpuNs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
}

constexpr int Width = 1280;
constexpr int Height = 720;
constexpr int Objects = 64;

struct Clicks
{
    QVector<PickupCheckpoint> marks;
    PickupParams truth;
};

// The marks a real pose gives, each nudged as a hand on a mouse would.
Clicks makeClicks(int mode, const CameraModel& camera)
{
    Clicks c;
    c.truth[PickupParams::Height] = 7.0;
    c.truth[PickupParams::Y] = -8.5;
    c.truth[PickupParams::Azimuth] = 4.0;
    c.truth[PickupParams::Elevation] = 9.0;
    c.truth[PickupParams::HalfAngle] = 11.0;
    PickupSearch truth(camera, mode, {}, c.truth);
    const CameraModel& seen = truth.modelFor(c.truth);
    const QPointF points[] = {{25, -3.5}, {80, -3.5}, {30, 3.5}, {70, 3.5}, {40, 0}, {60, 0}};
    const QPoint nudges[] = {{1, 0}, {-1, 1}, {0, -1}, {2, 0}, {0, 1}, {-1, 0}};
    bool ok = false;
    for (int i = 0; i < (mode == 2 ? 6 : 4); ++i) {
        const QPoint pixel = seen.xyToScreen(points[i], &ok) + nudges[i];
        const double value = i < 4 ? points[i].y() : (i == 5 ? 20.0 : 0.0);
        c.marks.append(PickupCheckpoint{pixel, value});
    }
    return c;
}

void runSearch(int mode, PickupSearch::DuplicateCheck check)
{
    CameraModel camera;
    camera.rescale(Width, Height);
    const Clicks clicks = makeClicks(mode, camera);
    PickupParams saved = clicks.truth;
    saved[PickupParams::HalfAngle] = mode == 1 ? clicks.truth[PickupParams::HalfAngle] : 5.0;
    PickupSearch search(camera, mode, clicks.marks, saved);
    search.setDuplicateCheck(check);
    int yields = 0;
    search.setYield([&yields] {
        ++yields;
        return true;
    });
    QElapsedTimer clock;
    clock.start();
    const qint64 cpu = threadCpuNs();
    const bool found = search.run();
    const double ms = clock.nsecsElapsed() / 1e6;
    const double cpuMs = (threadCpuNs() - cpu) / 1e6;
    const PickupSearch::Stats& s = search.stats();
    const PickupParams& b = search.best();
    std::printf("pick-up mode %d, %s duplicate check: %s in %.1f ms (thread CPU time %.1f ms), "
                "%d passes, %lld candidates, %lld duplicates skipped, %lld invalid, %lld scored, "
                "%d event loop turns\n",
                mode, check == PickupSearch::DuplicateCheck::Indexed ? "indexed" : "plain",
                found ? "found" : "not found", ms, cpuMs, s.passes, s.candidates, s.duplicates, s.invalid,
                s.scored, yields);
    std::printf("  pose: height %.3f m, Y %.3f m, azimuth %.3f deg, elevation %.3f deg, half view "
                "angle %.3f deg (true: 7, -8.5, 4, 9, 11)\n",
                b[PickupParams::Height], b[PickupParams::Y], b[PickupParams::Azimuth],
                b[PickupParams::Elevation], b[PickupParams::HalfAngle]);
}

QPolygonF straight(double y, double from, double to, double step)
{
    QPolygonF line;
    for (double x = from; x <= to; x += step)
        line << QPointF(x, y);
    return line;
}

void runPaint(int frames)
{
    ProjectionWidget view;
    view.resize(Width, Height);
    view.setTvmsConfig(QJsonObject{{"horizontal_view_angle", 40.0}});
    view.setShowLaneLines(true);
    view.setShowDistLines(true);
    view.setShowCurrentTracks(true);
    view.setShowAverageTracks(true);
    view.setPaintObjects(true);
    view.show();
    QApplication::processEvents();
    view.showPosition(7.0, 0.0, 0.0, 0.0, 8.0, 0.0, true);
    QList<QPolygonF> borders, lanes;
    for (double y : {-7.0, 7.0})
        borders << straight(y, 0, 300, 5);
    for (double y : {-3.5, 0.0, 3.5})
        lanes << straight(y, 0, 300, 5);
    QMap<int, QPolygonF> distance, average;
    for (int m = 0; m <= 300; m += 5)
        distance.insert(m, QPolygonF(QVector<QPointF>{QPointF(m, -7), QPointF(m, 7)}));
    for (int lane = 0; lane < 4; ++lane)
        average.insert(lane, straight(-5.25 + 3.5 * lane, 0, 300, 5));
    view.setRoadBorderLines(borders);
    view.setLaneBorderLines(lanes);
    view.setDistanceLines(distance);
    view.finishApplyingRoad();
    view.setAverageTracks(average);

    // A jam: 64 vehicles on four lanes crawling 2 cm a frame, measured with 15 cm noise.
    const int warm = ProjectionTracks::MaxTrackPoints + 10;
    // Stamped in the past, as the radar's frames are by the time they are drawn.
    const QDateTime start = QDateTime::currentDateTimeUtc().addMSecs(-qint64(warm + frames) * 100);
    QVector<quint8> order;
    for (int i = 0; i < Objects; ++i)
        order << quint8(i);
    auto frame = [&](int f) {
        const QDateTime t = start.addMSecs(qint64(f) * 100);
        view.startFilling();
        view.setFrameDateTimeUtc(t);
        for (int i = 0; i < Objects; ++i) {
            const int lane = i % 4;
            const double x = 20.0 + (i / 4) * 7.0 + 0.02 * f + 0.15 * std::sin(f * 1.3 + i);
            const double y = -5.25 + 3.5 * lane + 0.15 * std::cos(f * 0.7 + i * 2);
            view.addObject(quint8(i), 0.2, 0.0, x, y, 4.5, t);
        }
        view.finishFilling(order);
    };
    for (int f = 0; f < warm; ++f)
        frame(f);
    int longest = 0;
    for (quint8 id : order)
        longest = std::max(longest, int(view.tracks().screenTrack(id).size()));

    // Wall time, and the CPU time of this thread alone (the machine may be shared).
    std::vector<qint64> costs, cpuCosts;
    for (int f = 0; f < frames; ++f) {
        frame(warm + f);
        QElapsedTimer clock;
        const qint64 cpu = threadCpuNs();
        clock.start();
        view.repaint();
        costs.push_back(clock.nsecsElapsed());
        cpuCosts.push_back(threadCpuNs() - cpu);
    }
    std::sort(costs.begin(), costs.end());
    std::sort(cpuCosts.begin(), cpuCosts.end());

    // The same frame painted by the overlay's painter into a picture of its own: the
    // overlay's work without the window system's.
    ProjectionPainter painter;
    ProjectionPainter::Scene scene;
    scene.size = view.size();
    scene.model = &view.model();
    scene.road = &view.road();
    scene.tracks = &view.tracks();
    scene.frame = &view.currentFrame();
    scene.options = {true, true, true, true, true};
    scene.font = view.font();
    QImage picture(view.size(), QImage::Format_ARGB32_Premultiplied);
    std::vector<qint64> pictureCosts;
    for (int f = 0; f < frames; ++f) {
        picture.fill(Qt::transparent);
        const qint64 cpu = threadCpuNs();
        QPainter p(&picture);
        painter.paint(p, scene);
        p.end();
        pictureCosts.push_back(threadCpuNs() - cpu);
    }
    std::sort(pictureCosts.begin(), pictureCosts.end());
    std::printf("overlay %dx%d, %d objects, tracks of %d points, lanes, distance lines and average "
                "tracks shown\n",
                Width, Height, Objects, longest);
    std::printf("  window repaint (offscreen): median %.3f ms, p95 %.3f ms over %d frames; "
                "thread CPU time least %.3f ms, median %.3f ms, p95 %.3f ms\n",
                costs[costs.size() / 2] / 1e6, costs[costs.size() * 95 / 100] / 1e6, frames,
                cpuCosts.front() / 1e6,
                cpuCosts[cpuCosts.size() / 2] / 1e6, cpuCosts[cpuCosts.size() * 95 / 100] / 1e6);
    std::printf("  overlay painter into a picture: thread CPU time least %.3f ms, median %.3f ms, "
                "p95 %.3f ms\n",
                pictureCosts.front() / 1e6, pictureCosts[pictureCosts.size() / 2] / 1e6,
                pictureCosts[pictureCosts.size() * 95 / 100] / 1e6);
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    bool literal = false;
    bool search = true;
    int frames = 300;
    for (int i = 1; i < argc; ++i) {
        if (QByteArray(argv[i]) == "--literal")
            literal = true;
        else if (QByteArray(argv[i]) == "--paint-only")
            search = false;
        else
            frames = std::max(1, QByteArray(argv[i]).toInt());
    }
    for (int mode : {1, 2}) {
        if (!search)
            break;
        runSearch(mode, PickupSearch::DuplicateCheck::Indexed);
        if (literal)
            runSearch(mode, PickupSearch::DuplicateCheck::Literal);
    }
    runPaint(frames);
    return 0;
}
