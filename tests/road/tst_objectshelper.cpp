#include "iorvexclient.h"
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
    void learning_data();
    void learning();
    void resetByRadarState();
    void emittedStretches();
    void brokenRoadRectangles_data();
    void brokenRoadRectangles();

private:
    // A straight lane 1 at Y = 2 with a point every `step` metres.
    void setUpRoad(double length = 100.0, double step = 1.0);
    void frame(const QList<QPointF>& objects, quint64 cycle, bool fresh = true);
    QPolygonF lastTrack() const { return m_tracks->last().at(0).value<QMap<int, QPolygonF>>()[1]; }

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

void tst_ObjectsHelper::setUpRoad(double length, double step)
{
    QPolygonF lane;
    for (double x = 0; x <= length + 1e-9; x += step)
        lane.append(QPointF(x, 2.0));
    m_helper->startApplyingRoad(QRectF(0, -5, length, 10));
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
    QSignalSpy sorted(m_helper.get(), &ObjectsHelper::sortingFinished);
    frame({{1, 0}}, 1); // a previous frame's object must not leak into this one
    m_helper->startFilling();
    quint8 id = 0;
    for (const QPointF& o : objects)
        m_helper->addObject(id++, o.x(), 0, o.y(), 0, 4, m_time);
    m_helper->finishFilling();
    QCOMPARE(sorted.count(), 2);
    QTEST(sorted.last().at(0).value<QVector<quint8>>(), "order");
}

void tst_ObjectsHelper::learning_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("fresh");
    QTest::addColumn<QPointF>("object");
    QTest::addColumn<double>("stretchY"); // emitted Y of the 5 m stretch 10..15 m

    // The stretch averages five track points; only the nearest one moves, by 1 % of the
    // way at 0 m falling to nothing at 3 m.
    const int working = IOrvexClient::Working;
    QTest::newRow("1.5 m away: half the rate")
        << working << true << QPointF(10, 3.5) << (2.0 * 4 + (0.995 * 2 + 0.005 * 3.5)) / 5;
    QTest::newRow("just inside 3 m") << working << true << QPointF(12, 4.999)
                                     << (2.0 * 4 + 2 + 0.01 * (1 - 2.999 / 3) * 2.999) / 5;
    QTest::newRow("3.0 m away changes nothing") << working << true << QPointF(12, 5.0) << 2.0;
    QTest::newRow("between two points the nearer one learns")
        << working << true << QPointF(11.4, 1.0)
        << (2.0 * 4 + (2 - 0.01 * (1 - QLineF(11, 2, 11.4, 1).length() / 3))) / 5;
    QTest::newRow("a prediction teaches nothing") << working << false << QPointF(12, 3.0) << 2.0;
    QTest::newRow("a busy radar teaches nothing")
        << int(IOrvexClient::Busy) << true << QPointF(12, 3.0) << 2.0;
}

void tst_ObjectsHelper::learning()
{
    QFETCH(int, state);
    QFETCH(bool, fresh);
    QFETCH(QPointF, object);
    QFETCH(double, stretchY);
    setUpRoad();
    m_helper->setRadarState(state);
    // Objects off the road's ends are passed over.
    frame({object, QPointF(-4, 2), QPointF(400, 2)}, 20, fresh);
    const QPolygonF track = lastTrack();
    QCOMPARE(track.size(), 20);
    for (int i = 0; i < track.size(); ++i) {
        QCOMPARE(track.at(i).x(), 2.5 + 5 * i);
        const double y = i == 2 ? stretchY : 2.0;
        QVERIFY2(qAbs(track.at(i).y() - y) < 1e-12, qPrintable(QString::number(i)));
    }
}

void tst_ObjectsHelper::resetByRadarState()
{
    setUpRoad();
    const auto learn = [this] {
        m_helper->setRadarState(IOrvexClient::Working);
        for (quint64 cycle = 1; cycle <= 40; ++cycle)
            frame({QPointF(50, 3)}, cycle);
        QVERIFY(lastTrack().at(10).y() > 2.0);
    };
    // A busy radar keeps what was learnt; working, offline and bad data start afresh,
    // and so does the menu's reset.
    learn();
    const int emitted = m_tracks->count();
    m_helper->setRadarState(IOrvexClient::Busy); // no fresh start goes out
    QCOMPARE(m_tracks->count(), emitted);
    for (int state : {IOrvexClient::Working, IOrvexClient::Offline, IOrvexClient::BadData}) {
        learn();
        m_helper->setRadarState(state);
        QCOMPARE(lastTrack().at(10).y(), 2.0);
    }
    learn();
    m_helper->resetAverageTracks();
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
    // A lane centre point every metre for 1000 km.
    QPolygonF lane;
    for (double x = 0; x < 1e6; x += 1.0)
        lane.append(QPointF(x, 2.0));
    m_helper->startApplyingRoad(rect);
    m_helper->setLaneCenterLines({{1, lane}});
    m_helper->finishApplyingRoad();
    QCOMPARE(m_tracks->count(), 1);
    QTEST(lastTrack().size(), "stretches");
    // And it still learns where the road is usable.
    m_helper->setRadarState(IOrvexClient::Working);
    frame({{12, 3.0}}, 20);
    QCOMPARE(m_tracks->count(), 3);
}

void tst_ObjectsHelper::emittedStretches()
{
    // A road 99.5 m long: 5 m stretches up to the one starting at 95 m.
    setUpRoad(99.5);
    QCOMPARE(lastTrack().size(), 20);
    QCOMPARE(lastTrack().last(), QPointF(97.5, 2.0));
    // With a point every 2 m the stretches alternately hold three points and two; those
    // with two are left out, and so is the last one (100 m alone).
    setUpRoad(100, 2.0);
    const QPolygonF track = lastTrack();
    QCOMPARE(track.size(), 10);
    for (int i = 0; i < track.size(); ++i)
        QCOMPARE(track.at(i).x(), 2.5 + 10 * i);
    // Learnt tracks go out every twentieth cycle.
    m_helper->setRadarState(IOrvexClient::Working);
    QList<quint64> emitted;
    for (quint64 cycle : {0, 1, 19, 20, 21, 39, 40, 1000}) {
        const int before = m_tracks->count();
        frame({}, cycle);
        if (m_tracks->count() > before)
            emitted.append(cycle);
    }
    QCOMPARE(emitted, (QList<quint64>{0, 20, 40, 1000}));
}

QTEST_GUILESS_MAIN(tst_ObjectsHelper)
#include "tst_objectshelper.moc"
