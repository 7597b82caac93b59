#include "roadobjectswidget.h"

#include <QtTest>

// The traffic scheme's geometry: view area, scales, the screen transform in both
// orientations, object glyphs, tracks and the display modes.
class tst_RoadObjectsWidget : public QObject
{
    Q_OBJECT

private slots:
    void viewAreaOfAnEmptyRoad();
    void screenTransform_data();
    void screenTransform();
    void objectSizes_data();
    void objectSizes();
    void headings_data();
    void headings();
    void tracksFollowFreshDetections();
    void longExposureStartsClean();

private:
    // A 100 m road 20 m wide, centred on the radar's line, in a widget of the given size.
    static void setRoad(RoadObjectsWidget& scheme, const QSize& size);
    static void frame(RoadObjectsWidget& scheme, const QDateTime& time,
                      const QList<QPair<quint8, QPointF>>& objects, bool fresh = true);
    static int yellowPixels(const QImage& image);
};

void tst_RoadObjectsWidget::setRoad(RoadObjectsWidget& scheme, const QSize& size)
{
    scheme.resize(size);
    scheme.show();  // a hidden widget hears of its size only when shown
    QVERIFY(QTest::qWaitForWindowExposed(&scheme));
    scheme.startApplyingRoad(QRectF(0, -10, 100, 20));
    scheme.finishApplyingRoad();
}

void tst_RoadObjectsWidget::frame(RoadObjectsWidget& scheme, const QDateTime& time,
                                  const QList<QPair<quint8, QPointF>>& objects, bool fresh)
{
    scheme.startFilling();
    scheme.setFrameDateTimeUtc(time);
    QVector<quint8> order;
    for (const auto& [id, p] : objects) {
        scheme.addObject(id, 10, 0, p.x(), p.y(), 4.0, fresh ? time : time.addMSecs(-100));
        order.append(id);
    }
    scheme.finishFilling(order);
}

void tst_RoadObjectsWidget::viewAreaOfAnEmptyRoad()
{
    RoadObjectsWidget scheme;
    scheme.resize(400, 300);
    scheme.show();
    QVERIFY(QTest::qWaitForWindowExposed(&scheme));
    QVERIFY(!scheme.isValid()); // no road yet
    scheme.startApplyingRoad(QRectF(0, 0, 0, 0));
    scheme.finishApplyingRoad();
    QCOMPARE(scheme.viewArea(), QRectF(0, -2, 5, 4));
    QVERIFY(scheme.isValid());

    // Too small to draw in.
    scheme.setMinimumSize(0, 0);
    scheme.resize(39, 300);
    QTRY_VERIFY(!scheme.isValid());
}

void tst_RoadObjectsWidget::screenTransform_data()
{
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<bool>("keep");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("scaleX");
    QTest::addColumn<double>("scaleY");
    QTest::addColumn<QPoint>("origin");
    QTest::addColumn<QPoint>("at10m2m"); // where the world point (10, 2) lands

    // 540 px along gives (540 - 40) / 100 = 5 px/m; 208 px across gives (208 - 8) / 20.
    QTest::newRow("horizontal, one scale")
        << false << true << QSize(540, 208) << 5.0 << 5.0 << QPoint(36, 103) << QPoint(86, 93);
    QTest::newRow("horizontal, scales apart")
        << false << false << QSize(540, 208) << 5.0 << 10.0 << QPoint(36, 103) << QPoint(86, 83);
    QTest::newRow("vertical, one scale")
        << true << true << QSize(208, 540) << 5.0 << 5.0 << QPoint(103, 504) << QPoint(93, 454);
    QTest::newRow("vertical, scales apart")
        << true << false << QSize(208, 540) << 5.0 << 10.0 << QPoint(103, 504) << QPoint(83, 454);
}

void tst_RoadObjectsWidget::screenTransform()
{
    QFETCH(bool, vertical);
    QFETCH(bool, keep);
    QFETCH(QSize, size);
    QFETCH(double, scaleX);
    QFETCH(double, scaleY);
    QFETCH(QPoint, origin);
    QFETCH(QPoint, at10m2m);

    RoadObjectsWidget scheme;
    scheme.setDrawVertical(vertical);
    scheme.setKeepAspectRatio(keep);
    setRoad(scheme, size);
    QVERIFY(scheme.isValid());
    QCOMPARE(scheme.scaleX(), scaleX);
    QCOMPARE(scheme.scaleY(), scaleY);
    QCOMPARE(scheme.aspect(), scaleY / scaleX);
    QCOMPARE(scheme.screenOrigin(), origin);
    QCOMPARE(scheme.xyToScreen(0, 0), origin);
    QCOMPARE(scheme.xyToScreen(10, 2), at10m2m);
    // X runs right (or up), Y up (or left).
    const QPoint ahead = scheme.xyToScreen(50, 0);
    const QPoint left = scheme.xyToScreen(0, 5);
    if (vertical) {
        QVERIFY(ahead.y() < origin.y() && ahead.x() == origin.x());
        QVERIFY(left.x() < origin.x() && left.y() == origin.y());
    } else {
        QVERIFY(ahead.x() > origin.x() && ahead.y() == origin.y());
        QVERIFY(left.y() < origin.y() && left.x() == origin.x());
    }
}

void tst_RoadObjectsWidget::objectSizes_data()
{
    QTest::addColumn<bool>("keep");
    QTest::addColumn<double>("length");
    QTest::addColumn<QSize>("pixels"); // along the heading, across it

    // At 5 px/m with one scale; 16 px/m fixed when zooming freely.
    QTest::newRow("car, one scale") << true << 4.0 << QSize(20, 10);
    QTest::newRow("length 0 drawn 1 m by 1 m") << true << 0.0 << QSize(5, 5);
    QTest::newRow("length 1.8 is 1 m wide") << true << 1.8 << QSize(9, 5);
    QTest::newRow("length 2.0 is 2 m wide") << true << 2.0 << QSize(10, 10);
    QTest::newRow("car, free zoom: 64 px whatever the scale") << false << 4.0 << QSize(64, 32);
    QTest::newRow("truck, free zoom") << false << 16.5 << QSize(264, 32);
}

void tst_RoadObjectsWidget::objectSizes()
{
    QFETCH(bool, keep);
    QFETCH(double, length);
    QFETCH(QSize, pixels);
    RoadObjectsWidget scheme;
    scheme.setKeepAspectRatio(keep);
    setRoad(scheme, QSize(540, 208));
    QCOMPARE(scheme.objectPixelSize(length), pixels);
    scheme.resize(1040, 416); // zooming changes only the kept-ratio sizes: 10 px/m
    QTRY_COMPARE(scheme.width(), 1040);
    QCOMPARE(scheme.objectPixelSize(length), keep ? pixels * 2 : pixels);
}

void tst_RoadObjectsWidget::headings_data()
{
    QTest::addColumn<bool>("keep");
    QTest::addColumn<double>("xSpeed");
    QTest::addColumn<double>("ySpeed");
    QTest::addColumn<double>("heading");

    QTest::newRow("along X") << true << 10.0 << 0.0 << 0.0;
    QTest::newRow("against X") << true << -10.0 << 0.0 << 180.0;
    QTest::newRow("diagonal") << true << 10.0 << 10.0 << 45.0;
    QTest::newRow("against X, drifting left") << true << -10.0 << 10.0 << 135.0;
    QTest::newRow("across only, to the left") << true << 0.0 << 5.0 << 90.0;
    QTest::newRow("across only, to the right") << true << 0.0 << -5.0 << -90.0;
    QTest::newRow("standing still") << true << 0.0 << 0.0 << 0.0;
    // Scales apart (aspect 2): the heading follows the distortion and folds into
    // -90..90, so a vehicle going against X faces along it.
    QTest::newRow("diagonal, scales apart") << false << 10.0 << 10.0 << 63.434948822922;
    QTest::newRow("against X, scales apart, folded") << false << -10.0 << 0.0 << 0.0;
    QTest::newRow("against X, drifting left, folded") << false << -10.0 << 10.0 << -63.434948822922;
}

void tst_RoadObjectsWidget::headings()
{
    QFETCH(bool, keep);
    QFETCH(double, xSpeed);
    QFETCH(double, ySpeed);
    QFETCH(double, heading);
    RoadObjectsWidget scheme;
    scheme.setKeepAspectRatio(keep);
    setRoad(scheme, QSize(540, 208));
    QVERIFY2(qAbs(scheme.objectHeading(xSpeed, ySpeed) - heading) < 1e-6,
             qPrintable(QString::number(scheme.objectHeading(xSpeed, ySpeed), 'g', 12)));
}

void tst_RoadObjectsWidget::tracksFollowFreshDetections()
{
    RoadObjectsWidget scheme;
    setRoad(scheme, QSize(540, 208));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    frame(scheme, t0, {{1, {10, 0}}, {2, {20, 0}}});
    frame(scheme, t0.addMSecs(100), {{1, {11, 0}}, {2, {21, 0}}});
    QCOMPARE(scheme.currentTrackCount(), 2);
    // Object 2 predicted only: its track keeps going but gains no point; object 1
    // missing from one frame: its track ends.
    scheme.startFilling();
    const QDateTime t2 = t0.addMSecs(200);
    scheme.setFrameDateTimeUtc(t2);
    scheme.addObject(2, 10, 0, 22, 0, 4.0, t0.addMSecs(100));
    scheme.finishFilling({2});
    QCOMPARE(scheme.currentTrackCount(), 1);
    frame(scheme, t0.addMSecs(300), {{1, {13, 0}}, {2, {23, 0}}});
    QCOMPARE(scheme.currentTrackCount(), 2);
}

int tst_RoadObjectsWidget::yellowPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.red() > 0 && c.green() > 0 && c.blue() == 0 && c.red() == c.green())
                ++count;
        }
    }
    return count;
}

void tst_RoadObjectsWidget::longExposureStartsClean()
{
    RoadObjectsWidget scheme;
    setRoad(scheme, QSize(540, 208));
    scheme.show();
    QVERIFY(QTest::qWaitForWindowExposed(&scheme));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    auto drive = [&](int frames) {
        for (int f = 0; f < frames; ++f) {
            frame(scheme, t0.addMSecs(100 * f), {{3, {5.0 + f, -3}}});
            scheme.repaint();
        }
    };

    scheme.setTracksDisplayMode(1);
    QVERIFY(!scheme.drawsObjects() && !scheme.drawsTracksLive() && scheme.drawsTracksOnBase());
    drive(40);
    const int exposed = yellowPixels(scheme.grab().toImage());
    QVERIFY(exposed > 50);

    // Statistical to mixed keeps the picture; objects come back on top.
    scheme.setTracksDisplayMode(2);
    QVERIFY(scheme.drawsObjects() && scheme.drawsTracksOnBase());
    scheme.repaint();
    // (The object now drawn over its track hides a few of the exposed pixels.)
    QVERIFY(yellowPixels(scheme.grab().toImage()) > exposed / 2);

    // Back to normal and into statistical again: a clean road.
    scheme.setTracksDisplayMode(0);
    QVERIFY(scheme.drawsObjects() && !scheme.drawsTracksOnBase());
    scheme.setTracksDisplayMode(1);
    scheme.startFilling();
    scheme.finishFilling({}); // the track ends: nothing left to expose
    scheme.repaint();
    QCOMPARE(yellowPixels(scheme.grab().toImage()), 0);

    scheme.setTracksDisplayMode(7); // not a mode: nothing changes
    QCOMPARE(scheme.tracksDisplayMode(), 1);
}

QTEST_MAIN(tst_RoadObjectsWidget)
#include "tst_roadobjectswidget.moc"
