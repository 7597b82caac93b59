#include "cameramodel.h"
#include "opaquecover.h"
#include "projectionroad.h"
#include "projectiontracks.h"
#include "schemegeometry.h"
#include "schemetracks.h"
#include "tvmsconfig.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QtTest>

#include <cmath>
#include <random>

// The camera model's numbers, its two mappings as round trips over many poses, what a
// bad camera configuration does to it, and the tracks over the video.
class tst_CameraModel : public QObject
{
    Q_OBJECT

private slots:
    void workedExample();
    void visibleBand();
    void invalidGeometries_data();
    void invalidGeometries();
    void roundTrips_data();
    void roundTrips();
    void badConfiguration_data();
    void badConfiguration();
    void tracksKeepVisibleDetections();
    void averageTracksRedrawnWhenAPixelMoves_data();
    void averageTracksRedrawnWhenAPixelMoves();
    void uncoveredPartsAsRegionsSay_data();
    void uncoveredPartsAsRegionsSay();

private:
    // Radar 6 m up, looking along X 10 degrees down, a 60 degree lens on 640 x 480.
    static CameraModel model(double height = 6.0, double elevationDeg = 10.0,
                             double viewAngleDeg = 60.0, QSize size = QSize(640, 480),
                             double azimuthDeg = 0.0, double yOffset = 0.0)
    {
        CameraModel m;
        m.setConfig(TvmsConfig::fromJson({{"horizontal_view_angle", viewAngleDeg}}));
        m.setHalfHorizontalAngle(m.config().halfHorizontalAngle);
        m.setRadarPose({height, 0.0, yOffset, TvmsConfig::radians(azimuthDeg),
                        TvmsConfig::radians(elevationDeg)});
        m.rescale(size.width(), size.height());
        return m;
    }
};

void tst_CameraModel::workedExample()
{
    const CameraModel m = model();
    QVERIFY(m.isValid());
    QVERIFY(std::fabs(m.axisDistance() - 34.03) < 0.005);
    QVERIFY(std::fabs(m.axisPoint().x() - 34.03) < 0.005);
    bool ok = false;
    QCOMPARE(m.xyToScreen(m.axisPoint(), &ok), QPoint(320, 240));
    QVERIFY(ok);
    const QPointF back = m.xyFromScreen(QPoint(320, 240), &ok);
    QVERIFY(ok);
    QVERIFY(std::fabs(back.x() - m.axisDistance()) < 1e-9 && std::fabs(back.y()) < 1e-9);
    // Nearer points lie lower in the picture, points to the left (+Y) further left.
    QVERIFY(m.xyToScreen(20.0, 0.0, &ok).y() > 240);
    QVERIFY(m.xyToScreen(34.03, 3.0, &ok).x() < 320);
}

void tst_CameraModel::visibleBand()
{
    // At 5 degrees the picture's top looks above the horizon: the far edge is the ray
    // 0.001 rad below it.
    const CameraModel low = model(6.0, 5.0);
    QVERIFY(low.isValid());
    QVERIFY(std::fabs(low.axisDistance() - 68.58) < 0.005);
    QVERIFY(std::fabs(low.farLimit() - 5931.4) < 0.05);
    // A pixel above the horizon is no road point.
    bool ok = true;
    low.xyFromScreen(QPoint(320, 0), &ok);
    QVERIFY(!ok);
    // At 30 degrees the top edge itself bounds the view, well short of that.
    QVERIFY(model(6.0, 30.0).farLimit() < 100.0);
    // Points up to 5 m beyond the far edge and below the near edge still project;
    // 6 m away they do not.
    const CameraModel m = model(6.0, 20.0);
    for (double beyond : {5.0, 6.0}) {
        const bool inside = beyond == 5.0;
        for (double v : {m.farLimit() + beyond, m.nearLimit() - beyond}) {
            ok = !inside;
            m.xyToScreen(m.translatedBack(0.0, v), &ok);
            QCOMPARE(ok, inside);
        }
    }
}

void tst_CameraModel::invalidGeometries_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("elevation");
    QTest::addColumn<double>("viewAngle");
    QTest::addColumn<QSize>("size");
    QTest::newRow("level radar") << 6.0 << 0.0 << 60.0 << QSize(640, 480);
    QTest::newRow("radar looking up") << 6.0 << -5.0 << 60.0 << QSize(640, 480);
    QTest::newRow("camera 0.9 m up") << 0.9 << 10.0 << 60.0 << QSize(640, 480);
    QTest::newRow("no angle of view") << 6.0 << 10.0 << 0.0 << QSize(640, 480);
    QTest::newRow("63 pixels wide") << 6.0 << 10.0 << 60.0 << QSize(63, 480);
    QTest::newRow("63 pixels high") << 6.0 << 10.0 << 60.0 << QSize(640, 63);
    QTest::newRow("empty widget") << 6.0 << 10.0 << 60.0 << QSize(0, 0);
}

void tst_CameraModel::invalidGeometries()
{
    QFETCH(double, height);
    QFETCH(double, elevation);
    QFETCH(double, viewAngle);
    QFETCH(QSize, size);
    const CameraModel m = model(height, elevation, viewAngle, size);
    QVERIFY(!m.isValid());
    QVERIFY(m.fieldOfView().isEmpty());
    bool ok = true;
    m.xyToScreen(30.0, 0.0, &ok);
    QVERIFY(!ok);
    // The same camera on a drawable widget recovers.
    if (size.width() < 64 || size.height() < 64) {
        CameraModel grown = m;
        QVERIFY(grown.rescale(640, 480));
    }
}

void tst_CameraModel::roundTrips_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("elevation");
    QTest::addColumn<double>("azimuth");
    QTest::addColumn<double>("yOffset");
    QTest::addColumn<double>("viewAngle");
    for (double height : {1.5, 6.0, 15.0}) {
        for (double elevation : {2.0, 10.0, 35.0}) {
            for (double azimuth : {-40.0, 0.0, 170.0}) {
                const double yOffset = azimuth / 10.0;
                for (double viewAngle : {8.0, 60.0}) {
                    QTest::addRow("h %g, el %g, az %g, fov %g", height, elevation, azimuth,
                                  viewAngle)
                        << height << elevation << azimuth << yOffset << viewAngle;
                }
            }
        }
    }
}

void tst_CameraModel::roundTrips()
{
    QFETCH(double, height);
    QFETCH(double, elevation);
    QFETCH(double, azimuth);
    QFETCH(double, yOffset);
    QFETCH(double, viewAngle);
    const CameraModel m = model(height, elevation, viewAngle, QSize(800, 600), azimuth, yOffset);
    QVERIFY(m.isValid());
    int onRoad = 0;
    for (int x = 0; x < 800; x += 37) {
        for (int y = 0; y < 600; y += 29) {
            bool ok = false;
            const QPointF road = m.xyFromScreen(QPoint(x, y), &ok);
            if (!ok)
                continue; // at or above the horizon
            ++onRoad;
            // Ground frame there and back.
            const QPointF g = m.translated(road.x(), road.y());
            const QPointF again = m.translatedBack(g.x(), g.y());
            QVERIFY(std::fabs(again.x() - road.x()) < 1e-6
                    && std::fabs(again.y() - road.y()) < 1e-6);
            // A road point inside the picture lands on the pixel it came from.
            const QPoint pixel = m.xyToScreen(road, &ok);
            if (ok)
                QCOMPARE(pixel, QPoint(x, y));
        }
    }
    QVERIFY(onRoad > 0);
    // The field of view's corners are the picture's corners on the road.
    const QPolygonF fov = m.fieldOfView();
    QCOMPARE(fov.size(), 4);
}

void tst_CameraModel::badConfiguration_data()
{
    QTest::addColumn<QJsonObject>("config");
    QTest::addColumn<bool>("valid"); // for a radar 6 m up, 10 degrees down
    QTest::addColumn<int>("delay");
    QTest::newRow("all zero") << QJsonObject{{"x_offset", 0},
                                             {"horizontal_view_angle", 0},
                                             {"video_delay", 0}}
                              << false << 0;
    QTest::newRow("negative view angle and delay")
        << QJsonObject{{"horizontal_view_angle", -60}, {"video_delay", -500}} << false << 0;
    QTest::newRow("huge values clamped") << QJsonObject{{"x_offset", 1e300},
                                                        {"y_offset", -1e300},
                                                        {"z_offset", 1e300},
                                                        {"azimuth_misalignment", 1e300},
                                                        {"altitude_misalignment", 1e300},
                                                        {"horizontal_view_angle", 1e300},
                                                        {"video_delay", 1e12}}
                                         << false << 60000;
    QTest::newRow("huge view angle alone")
        << QJsonObject{{"horizontal_view_angle", 1e9}, {"video_delay", 500.6}} << true << 501;
    QTest::newRow("non-numeric values read as 0") << QJsonObject{{"x_offset", "1"},
                                                                 {"horizontal_view_angle", "60"},
                                                                 {"z_offset", true},
                                                                 {"video_delay", QJsonArray{1}}}
                                                  << false << 0;
    QTest::newRow("missing keys") << QJsonObject() << false << 0;
}

void tst_CameraModel::badConfiguration()
{
    QFETCH(QJsonObject, config);
    const TvmsConfig c = TvmsConfig::fromJson(config);
    QTEST(c.videoDelayMs, "delay");
    for (double v : {c.xOffset, c.yOffset, c.zOffset, c.azimuthMisalignment, c.altitudeMisalignment,
                     c.halfHorizontalAngle})
        QVERIFY(std::isfinite(v));
    CameraModel m;
    m.setConfig(c);
    m.setHalfHorizontalAngle(c.halfHorizontalAngle);
    m.setRadarPose({6.0, 0.0, 0.0, 0.0, TvmsConfig::radians(10.0)});
    QTEST(m.rescale(640, 480), "valid");
    // Whatever the configuration, every pixel maps to something finite or to nothing.
    for (int x = 0; x <= 640; x += 64) {
        bool ok = false;
        const QPointF road = m.xyFromScreen(QPoint(x, 479), &ok);
        QVERIFY(!ok || (std::isfinite(road.x()) && std::isfinite(road.y())));
    }
}

void tst_CameraModel::tracksKeepVisibleDetections()
{
    const CameraModel m = model(6.0, 20.0);
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    ProjectionTracks tracks;
    // Long enough for the dropped points to be let go of once.
    for (int f = 0; f < 2 * ProjectionTracks::MaxTrackPoints + 20; ++f) {
        DelayedFrame frame;
        frame.frameTime = t0.addMSecs(100 * f);
        // Object 1 detected in the view; object 2 only predicted; object 3 far behind.
        frame.objects.insert(RoadObject{1, 0, 0, 15.0 + 0.001 * f, 0, 4, frame.frameTime});
        frame.objects.insert(RoadObject{2, 0, 0, 15.0, 1, 4, t0.addSecs(-1)});
        frame.objects.insert(RoadObject{3, 0, 0, -50.0, 0, 4, frame.frameTime});
        tracks.update(frame, m);
    }
    QCOMPARE(tracks.rawTrack(1).size(), ProjectionTracks::MaxTrackPoints);
    QCOMPARE(tracks.screenTrack(1).size(), ProjectionTracks::MaxTrackPoints);
    // The oldest fell off; pixels and road points stay paired, though a millimetre a
    // frame keeps the vehicle on one pixel for many frames.
    QCOMPARE(tracks.rawTrack(1).first().x(),
             15.0 + 0.001 * (ProjectionTracks::MaxTrackPoints + 20));
    bool ok = false;
    const QVector<QPointF> raw = tracks.rawTrack(1);
    const QPolygon screen = tracks.screenTrack(1);
    for (int i = 0; i < raw.size(); ++i)
        QCOMPARE(screen.at(i), m.xyToScreen(raw.at(i), &ok));
    // Drawn, each run of one pixel is a single point.
    const QPoint* path = nullptr;
    const int pathLength = tracks.screenPath(1, &path);
    QVERIFY(pathLength < screen.size() / 10);
    QCOMPARE(path[0], screen.first());
    QCOMPARE(path[pathLength - 1], screen.last());
    for (int i = 1; i < pathLength; ++i)
        QVERIFY(path[i] != path[i - 1]);
    QVERIFY(tracks.rawTrack(2).isEmpty());
    QVERIFY(tracks.rawTrack(3).isEmpty());
    // A model that no longer sees the track's points drops them for good.
    tracks.clearScreen();
    DelayedFrame last;
    last.objects.insert(RoadObject{1, 0, 0, 15, 0, 4, QDateTime()});
    last.frameTime = t0;
    tracks.update(last, model(6.0, 2.0, 8.0)); // a narrow lens looking far away
    QVERIFY(tracks.rawTrack(1).isEmpty());
    // An object missing from a frame ends its track.
    tracks.update(DelayedFrame(), m);
    QVERIFY(tracks.isEmpty());
}

void tst_CameraModel::uncoveredPartsAsRegionsSay_data()
{
    QTest::addColumn<int>("largest"); // box sides up to this many pixels
    QTest::newRow("label-sized boxes") << 40;
    QTest::newRow("boxes across the view and past its edges") << 200;
}

void tst_CameraModel::uncoveredPartsAsRegionsSay()
{
    // Boxes covered one after another in a view whose rows end inside a word of bits:
    // what is left of each box is what region arithmetic leaves.
    QFETCH(int, largest);
    const QRect view(0, 0, 150, 90);
    std::mt19937 random(5);
    OpaqueCover cover;
    for (int round = 0; round < 20; ++round) {
        cover.reset(view.size());
        QRegion covered;
        for (int i = 0; i < 40; ++i) {
            const QRect box(int(random() % 190) - 20, int(random() % 120) - 15,
                            1 + int(random() % largest), 1 + int(random() % 30));
            const QRect expected = (QRegion(box & view) - covered).boundingRect();
            QCOMPARE(cover.uncovered(box), expected);
            cover.cover(box);
            covered += box & view;
        }
    }
}

QTEST_APPLESS_MAIN(tst_CameraModel)
#include "tst_cameramodel.moc"

void tst_CameraModel::averageTracksRedrawnWhenAPixelMoves_data()
{
    // The helper sends its average tracks every few cycles while they barely move; the
    // road's version (which redraws the picture under the frames) moves only with a
    // pixel, on the overlay as on the traffic scheme.
    QTest::addColumn<double>("shift"); // metres across, the tracks sent a second time
    QTest::addColumn<bool>("redrawn");
    QTest::newRow("the same tracks") << 0.0 << false;
    QTest::newRow("a millimetre across") << 0.001 << false;
    QTest::newRow("a metre across") << 1.0 << true;
}

void tst_CameraModel::averageTracksRedrawnWhenAPixelMoves()
{
    QFETCH(double, shift);
    QFETCH(bool, redrawn);
    const CameraModel m = model();
    auto tracks = [](double y) {
        QMap<int, QPolygonF> lanes;
        lanes.insert(1, QPolygonF(QVector<QPointF>{QPointF(40, y), QPointF(80, y)}));
        lanes.insert(2, QPolygonF(QVector<QPointF>{QPointF(40, y + 3.5), QPointF(80, y + 3.5)}));
        return lanes;
    };
    ProjectionRoad road;
    road.setAverageTracks(tracks(-1.75));
    road.fitAverageTracks(m);
    QCOMPARE(road.screenAverageTracks().size(), 2);
    const quint64 before = road.averageTracksVersion();
    road.setAverageTracks(tracks(-1.75 + shift));
    road.fitAverageTracks(m);
    QCOMPARE(road.averageTracksVersion() != before, redrawn);

    SchemeGeometry g;
    g.rescale(QRectF(0, -10, 100, 20), QSize(540, 208), false, true);
    SchemeTracks scheme;
    scheme.setAverageTracks(tracks(-1.75), g);
    const quint64 schemeBefore = scheme.averageVersion();
    scheme.setAverageTracks(tracks(-1.75 + shift), g);
    QCOMPARE(scheme.averageVersion() != schemeBefore, redrawn);
}
