#include "iorvexclient.h"
#include "objectcolor.h"
#include "objectshelper.h"

#include <QtTest>

// Display order of a frame's objects, and the learning of the average tracks.
class tst_ObjectsHelper : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void displayOrder_data();
    void displayOrder();
    void learningPullsTheNearestPoint_data();
    void learningPullsTheNearestPoint();
    void onlyFreshDetectionsWhileWorkingTeach();
    void emissionEveryTwentiethCycle();
    void emittedBinsAndGaps();
    void resetByRadarState_data();
    void resetByRadarState();
    void brokenRoadRectangles_data();
    void brokenRoadRectangles();
    void objectColours();

private:
    // A straight 100 m lane 1 at Y = 2 with a point every metre.
    void setUpRoad(double roadWidth = 100.0, double pointStep = 1.0);
    void frame(const QList<QPointF>& objects, quint64 cycle, bool fresh = true);
    QPolygonF lastTrack() const;

    std::unique_ptr<ObjectsHelper> m_helper;
    std::unique_ptr<QSignalSpy> m_tracks;
    QDateTime m_time;
};

void tst_ObjectsHelper::init()
{
    m_helper = std::make_unique<ObjectsHelper>();
    m_tracks = std::make_unique<QSignalSpy>(m_helper.get(), &ObjectsHelper::averageTracks);
    m_time = QDateTime(QDate(2026, 11, 21), QTime(9, 0), Qt::UTC);
}

void tst_ObjectsHelper::setUpRoad(double roadWidth, double pointStep)
{
    QPolygonF lane;
    for (double x = 0; x <= roadWidth + 1e-9; x += pointStep)
        lane.append(QPointF(x, 2.0));
    m_helper->startApplyingRoad(QRectF(0, -5, roadWidth, 10));
    m_helper->setLaneCenterLines({{1, lane}});
    m_helper->finishApplyingRoad();
}

void tst_ObjectsHelper::frame(const QList<QPointF>& objects, quint64 cycle, bool fresh)
{
    m_time = m_time.addMSecs(100);
    m_helper->startFilling();
    m_helper->setFrameDateTimeUtc(m_time);
    m_helper->setCycleNumber(cycle);
    quint8 id = 0;
    for (const QPointF& p : objects)
        m_helper->addObject(id++, 20, 0, p.x(), p.y(), 4.0, fresh ? m_time : m_time.addMSecs(-100));
    m_helper->finishFilling();
}

QPolygonF tst_ObjectsHelper::lastTrack() const
{
    return m_tracks->last().at(0).value<QMap<int, QPolygonF>>().value(1);
}

void tst_ObjectsHelper::displayOrder_data()
{
    QTest::addColumn<QList<QPointF>>("objects"); // (xSpeed, xRange), ids in arrival order
    QTest::addColumn<QVector<quint8>>("order");

    QTest::newRow("receding nearest first, then approaching farthest first")
        << QList<QPointF>{{5, 30}, {-5, 80}, {5, 90}, {-5, 20}, {5, 10}}
        << QVector<quint8>{3, 1, 2, 0, 4};
    QTest::newRow("equal ranges keep arrival order")
        << QList<QPointF>{{5, 50}, {5, 50}, {-5, 40}, {-5, 40}} << QVector<quint8>{2, 3, 0, 1};
    QTest::newRow("standing still counts as approaching")
        << QList<QPointF>{{0, 10}, {-0.1, 99}} << QVector<quint8>{1, 0};
    QTest::newRow("empty frame") << QList<QPointF>{} << QVector<quint8>{};
}

void tst_ObjectsHelper::displayOrder()
{
    QFETCH(QList<QPointF>, objects);
    QFETCH(QVector<quint8>, order);
    QSignalSpy sorted(m_helper.get(), &ObjectsHelper::sortingFinished);
    // A previous frame's objects must not leak into this one.
    m_helper->startFilling();
    m_helper->addObject(63, 1, 0, 1, 0, 4, m_time);
    m_helper->finishFilling();
    m_helper->startFilling();
    quint8 id = 0;
    for (const QPointF& o : objects)
        m_helper->addObject(id++, o.x(), 0, o.y(), 0, 4, m_time);
    m_helper->finishFilling();
    QCOMPARE(sorted.count(), 2);
    QCOMPARE(sorted.last().at(0).value<QVector<quint8>>(), order);
}

void tst_ObjectsHelper::learningPullsTheNearestPoint_data()
{
    QTest::addColumn<QPointF>("object");
    QTest::addColumn<double>("binAverage"); // emitted Y of the 5 m stretch 10..15 m

    // The stretch averages five track points; only the nearest one moves.
    QTest::newRow("1.5 m away: half the rate")
        << QPointF(10, 3.5) << (2.0 * 4 + (0.995 * 2 + 0.005 * 3.5)) / 5;
    QTest::newRow("just inside 3 m")
        << QPointF(12, 4.999) << (2.0 * 4 + 2 + 0.01 * (1 - 2.999 / 3) * 2.999) / 5;
    QTest::newRow("3.0 m away changes nothing") << QPointF(12, 5.0) << 2.0;
    QTest::newRow("between two points the nearer one learns")
        << QPointF(11.4, 1.0)
        << (2.0 * 4 + (2 - 0.01 * (1 - QLineF(11, 2, 11.4, 1).length() / 3))) / 5;
}

void tst_ObjectsHelper::learningPullsTheNearestPoint()
{
    QFETCH(QPointF, object);
    QFETCH(double, binAverage);
    setUpRoad();
    m_helper->setRadarState(IOrvexClient::Working);
    frame({object}, 20);
    const QPolygonF track = lastTrack();
    QCOMPARE(track.size(), 20);
    QCOMPARE(track.at(2).x(), 12.5);
    QVERIFY2(qAbs(track.at(2).y() - binAverage) < 1e-12,
             qPrintable(
                 QString("%1 != %2").arg(track.at(2).y(), 0, 'g', 15).arg(binAverage, 0, 'g', 15)));
    for (int i = 0; i < track.size(); ++i) {
        if (i != 2)
            QCOMPARE(track.at(i).y(), 2.0);
    }
}

void tst_ObjectsHelper::onlyFreshDetectionsWhileWorkingTeach()
{
    setUpRoad();
    m_helper->setRadarState(IOrvexClient::Working);
    frame({QPointF(30, 3)}, 20, false); // predicted only
    QCOMPARE(lastTrack().at(6).y(), 2.0);

    m_helper->setRadarState(IOrvexClient::Busy); // keeps tracks, does not learn
    frame({QPointF(30, 3)}, 40);
    QCOMPARE(lastTrack().at(6).y(), 2.0);

    m_helper->setRadarState(IOrvexClient::Working); // starts afresh and learns
    for (quint64 cycle = 41; cycle <= 60; ++cycle)
        frame({QPointF(30, 3), QPointF(-1, 2), QPointF(400, 2)}, cycle);
    QVERIFY(lastTrack().at(6).y() > 2.0);
}

void tst_ObjectsHelper::emissionEveryTwentiethCycle()
{
    setUpRoad();
    m_helper->setRadarState(IOrvexClient::Working);
    const int afterReset = m_tracks->count();
    QList<quint64> emitted;
    for (quint64 cycle : {0, 1, 19, 20, 21, 39, 40, 1000}) {
        const int before = m_tracks->count();
        frame({}, cycle);
        if (m_tracks->count() > before)
            emitted.append(cycle);
    }
    QCOMPARE(emitted, (QList<quint64>{0, 20, 40, 1000}));
    QCOMPARE(m_tracks->count(), afterReset + 4);
}

void tst_ObjectsHelper::emittedBinsAndGaps()
{
    // A road 99.5 m long: 5 m stretches up to the one starting at 95 m.
    setUpRoad(99.5);
    QPolygonF track = lastTrack();
    QCOMPARE(track.size(), 20);
    QCOMPARE(track.first(), QPointF(2.5, 2.0));
    QCOMPARE(track.last(), QPointF(97.5, 2.0));

    // With a point every 2 m the stretches alternately hold three points and two; those
    // with two are left out, and so is the last one (100 m alone).
    setUpRoad(100, 2.0);
    track = lastTrack();
    QCOMPARE(track.size(), 10);
    for (int i = 0; i < track.size(); ++i)
        QCOMPARE(track.at(i).x(), 2.5 + 10 * i);
}

void tst_ObjectsHelper::resetByRadarState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("reset");
    QTest::newRow("working starts afresh") << int(IOrvexClient::Working) << true;
    QTest::newRow("busy keeps what was learnt") << int(IOrvexClient::Busy) << false;
    QTest::newRow("offline starts afresh") << int(IOrvexClient::Offline) << true;
    QTest::newRow("bad data starts afresh") << int(IOrvexClient::BadData) << true;
}

void tst_ObjectsHelper::resetByRadarState()
{
    QFETCH(int, state);
    QFETCH(bool, reset);
    setUpRoad();
    m_helper->setRadarState(IOrvexClient::Working);
    for (quint64 cycle = 1; cycle <= 40; ++cycle)
        frame({QPointF(50, 3)}, cycle);
    const double learnt = lastTrack().at(10).y();
    QVERIFY(learnt > 2.0);
    const int before = m_tracks->count();
    m_helper->setRadarState(state);
    QCOMPARE(m_tracks->count(), before + (reset ? 1 : 0));
    m_helper->resetAverageTracks(); // the menu's reset always starts afresh
    QCOMPARE(lastTrack().at(10).y(), 2.0);
}

void tst_ObjectsHelper::brokenRoadRectangles_data()
{
    // A rectangle no road laid by the builder has: the bins and 5 m stretches are
    // counted per metre of it, and once overflowed an int or took gigabytes.
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<int>("stretches"); // 5 m stretches of the emitted track

    QTest::newRow("1e308 m long: cut at the longest track")
        << QRectF(0, -5, 1e308, 10) << int(ObjectsHelper::MaxTrackLength / 5) + 1;
    QTest::newRow("not finite: a road ending at the radar") << QRectF(0, -5, qInf(), 10) << 1;
    QTest::newRow("not a number likewise") << QRectF(qQNaN(), -5, 100, 10) << 1;
}

void tst_ObjectsHelper::brokenRoadRectangles()
{
    QFETCH(QRectF, rect);
    QFETCH(int, stretches);
    // A lane centre point every metre for 1000 km.
    QPolygonF lane;
    for (double x = 0; x < 1e6; x += 1.0)
        lane.append(QPointF(x, 2.0));
    m_helper->startApplyingRoad(rect);
    m_helper->setLaneCenterLines({{1, lane}});
    m_helper->finishApplyingRoad();
    QCOMPARE(m_tracks->count(), 1);
    QCOMPARE(lastTrack().size(), stretches);
    // And it still learns where the road is usable.
    m_helper->setRadarState(IOrvexClient::Working);
    frame({{12, 3.0}}, 20);
    QCOMPARE(m_tracks->count(), 3);
}

void tst_ObjectsHelper::objectColours()
{
    QCOMPARE(ObjectColor::base(0), QColor(255, 255, 255));
    QCOMPARE(ObjectColor::text(0), QColor(0, 0, 0));
    QCOMPARE(ObjectColor::base(4), QColor(255, 0, 0));
    QCOMPARE(ObjectColor::text(4), QColor(255, 255, 255));
    QCOMPARE(ObjectColor::base(25), ObjectColor::base(0)); // ids wrap round the 25 pairs
    QCOMPARE(ObjectColor::base(63), ObjectColor::base(13));
    QCOMPARE(ObjectColor::text(255), ObjectColor::text(5));
}

QTEST_GUILESS_MAIN(tst_ObjectsHelper)
#include "tst_objectshelper.moc"
