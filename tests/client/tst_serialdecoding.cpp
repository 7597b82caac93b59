#include "clientharness.h"
#include "testrecords.h"

#include <QtTest>

#include <memory>

using R = TestRecords;

// Decoding the radar's stream on both protocol variants: which frames are accepted,
// what they decode to, in which order everything is emitted, and how road objects age.
class tst_SerialDecoding : public QObject
{
    Q_OBJECT

private slots:
    void roadObjectFields_data();
    void roadObjectFields();
    void acceptance_data();
    void acceptance();
    void uptime_data();
    void uptime();
    void emissionOrderOfOneMessage();
    void staleObjects();
    void sameIdTwiceInOneMessage();
    void objectsSilentUnlessOnline();
    void badFrameStopsTheMessage();
    void canStatistics();

private:
    static QVariantList objectArgs(const QList<QVariant>& signal);
};

namespace {
const QDateTime T0(QDate(2026, 11, 21), QTime(10, 0, 0, 0), Qt::UTC);
}

void tst_SerialDecoding::roadObjectFields_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<quint64>("payload");
    QTest::addColumn<int>("id");
    QTest::addColumn<double>("xSpeed");
    QTest::addColumn<double>("ySpeed");
    QTest::addColumn<double>("xRange");
    QTest::addColumn<double>("yRange");
    QTest::addColumn<double>("length");

    for (int variant : {0, 1}) {
        const char* v = variant == 0 ? "SerD" : "SerP";
        QTest::addRow("%s: all zero bits", v)
            << variant << quint64(0) << 0 << -102.4 << -102.4 << -524.288 << -524.288 << 0.0;
        QTest::addRow("%s: id 63, every other field raw 0", v)
            << variant << quint64(0xFC00000000000000) << 63 << -102.4 << -102.4 << -524.288
            << -524.288 << 0.0;
        QTest::addRow("%s: all one bits", v) << variant << quint64(0xFFFFFFFFFFFFFFFF) << 63
                                             << 102.3 << 102.3 << 524.224 << 524.224 << 51.0;
        // id 5, length 21 (4.2 m), ySpeed raw 1014 (-1.0), xSpeed raw 1302 (27.8),
        // yRange raw 8142 (-3.2), xRange raw 9754 (99.968).
        QTest::addRow("%s: a car approaching on the right", v)
            << variant << quint64(0x1455FB5167F3A61A) << 5 << 27.8 << -1.0 << 99.968 << -3.2 << 4.2;
    }
}

void tst_SerialDecoding::roadObjectFields()
{
    QFETCH(int, variant);
    QFETCH(quint64, payload);
    QFETCH(int, id);
    QFETCH(double, xSpeed);
    QFETCH(double, ySpeed);
    QFETCH(double, xRange);
    QFETCH(double, yRange);
    QFETCH(double, length);

    ClientHarness h(variant);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    const QByteArray message
        = R::header(T0) + h.syncFrame() + R::frame(quint16(h.ids().objectMin + id), payload);
    QVERIFY(h.deliver(message));

    QCOMPARE(objects.count(), 1);
    const QList<QVariant> o = objects.first();
    QCOMPARE(o.at(0).toInt(), id);
    const double eps = 1e-9;
    QVERIFY2(qAbs(o.at(1).toDouble() - xSpeed) < eps, qPrintable(o.at(1).toString()));
    QVERIFY2(qAbs(o.at(2).toDouble() - ySpeed) < eps, qPrintable(o.at(2).toString()));
    QVERIFY2(qAbs(o.at(3).toDouble() - xRange) < eps, qPrintable(o.at(3).toString()));
    QVERIFY2(qAbs(o.at(4).toDouble() - yRange) < eps, qPrintable(o.at(4).toString()));
    QVERIFY2(qAbs(o.at(5).toDouble() - length) < eps, qPrintable(o.at(5).toString()));
    QCOMPARE(o.at(6).toDateTime(), T0);
}

void tst_SerialDecoding::acceptance_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("uptime"); // decoded as a sensor-control frame

    // Ids are written out as the radar documents them.
    QTest::newRow("SerP: 0x500 is sensor control") << 1 << R::frame(0x500, 0) << true << true;
    QTest::newRow("SerD: 0x500 is a UDT response") << 0 << R::frame(0x500, 0x1234) << true << false;
    QTest::newRow("SerD: 0x600 is sensor control") << 0 << R::frame(0x600, 0) << true << true;
    QTest::newRow("SerD: 0x64F is a road object") << 0 << R::frame(0x64f, 0) << true << false;
    QTest::newRow("SerD: 0x650 is nothing") << 0 << R::frame(0x650, 0) << false << false;
    QTest::newRow("SerD: 0x60F is nothing") << 0 << R::frame(0x60f, 0) << false << false;
    QTest::newRow("SerP: 0x510 is a road object") << 1 << R::frame(0x510, 0) << true << false;
    QTest::newRow("SerP: 0x610 is nothing") << 1 << R::frame(0x610, 0) << false << false;
    QTest::newRow("SerD: sync 0x3FF") << 0 << R::frame(0x3ff, 0) << true << false;
    QTest::newRow("SerP: sync 0x2FF") << 1 << R::frame(0x2ff, 0) << true << false;
    QTest::newRow("SerP: 0x3FF is nothing") << 1 << R::frame(0x3ff, 0) << false << false;
    QTest::newRow("SerD: radar-setup id incoming") << 0 << R::frame(0x4a0, 0) << false << false;
    QTest::newRow("SerD: command id incoming") << 0 << R::frame(0x4f2, 0) << false << false;
    QTest::newRow("SerP: command id incoming") << 1 << R::frame(0x3f2, 0) << false << false;
    QTest::newRow("SerD: sync of length 7")
        << 0 << R::hex("03ff0700000000000000") << false << false;
    QTest::newRow("SerD: road object of length 0") << 0 << R::hex("061000") << false << false;
    QTest::newRow("SerD: sensor control of length 4")
        << 0 << R::hex("06000400000001") << false << false;
    QTest::newRow("SerD: object control of length 8 with a short one after")
        << 0 << R::frame(0x601, 0) + R::hex("0601020000") << false << false;
}

void tst_SerialDecoding::acceptance()
{
    QFETCH(int, variant);
    QFETCH(QByteArray, frame);
    QFETCH(bool, accepted);
    QFETCH(bool, uptime);

    ClientHarness h(variant);
    QVERIFY(h.connect());
    h.client()->setEmitStatsEnabled(true);
    QSignalSpy stats(h.client(), &IOrvexClient::frameStats);
    QSignalSpy uptimes(h.client(), &IOrvexClient::uptimeInfo);
    QVERIFY(h.deliver(frame));
    QCOMPARE(stats.count(), 1);
    QCOMPARE(stats.first(), (QVariantList{quint64(1), quint64(accepted ? 1 : 0)}));
    QCOMPARE(uptimes.count(), uptime ? 1 : 0);

    // Three such messages publish the state they yield.
    QVERIFY(h.deliver(frame));
    QVERIFY(h.deliver(frame));
    QCOMPARE(h.client()->radarState(), int(accepted ? IOrvexClient::Busy : IOrvexClient::BadData));
}

void tst_SerialDecoding::uptime_data()
{
    QTest::addColumn<quint32>("ms");
    QTest::addColumn<QVariantList>("expected");
    QTest::newRow("zero") << quint32(0) << QVariantList{0, 0, 0, 0, 0};
    QTest::newRow("one of each") << quint32(90061001) << QVariantList{1, 1, 1, 1, 1};
    QTest::newRow("largest 32-bit value")
        << quint32(0xFFFFFFFF) << QVariantList{49, 17, 2, 47, 295};
    QTest::newRow("just below a day") << quint32(86399999) << QVariantList{0, 23, 59, 59, 999};
}

void tst_SerialDecoding::uptime()
{
    QFETCH(quint32, ms);
    QFETCH(QVariantList, expected);

    ClientHarness h(0);
    QVERIFY(h.connect());
    QSignalSpy uptimes(h.client(), &IOrvexClient::uptimeInfo);
    // The low 32 bits of the frame are not part of the uptime.
    QVERIFY(h.deliver(R::frame(h.ids().sensor, R::counter(ms) | 0xDEADBEEF)));
    QCOMPARE(uptimes.count(), 1);
    QCOMPARE(uptimes.first(), expected);
}

void tst_SerialDecoding::emissionOrderOfOneMessage()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    h.client()->setEmitStatsEnabled(true);
    h.client()->sendCmdRestart(); // in flight: the acknowledgement below answers it
    QTRY_COMPARE(h.server().binaryMessages.size(), 1);

    QStringList log;
    IOrvexClient* c = h.client();
    auto record = [&log](const QString& what) { log.append(what); };
    QObject ctx;
    connect(c, &IOrvexClient::frameStarted, &ctx, [&] { record("frameStarted"); });
    connect(c, &IOrvexClient::frameDateTimeUtc, &ctx, [&] { record("frameDateTimeUtc"); });
    connect(c, &IOrvexClient::radarCommandStateChanged, &ctx,
            [&](int cmd, int state) { record(QString("command %1 %2").arg(cmd).arg(state)); });
    connect(c, &IOrvexClient::uptimeInfo, &ctx, [&] { record("uptimeInfo"); });
    connect(c, &IOrvexClient::cycleNumber, &ctx,
            [&](quint64 n) { record(QString("cycle %1").arg(n)); });
    connect(c, &IOrvexClient::objectData, &ctx,
            [&](quint8 id) { record(QString("object %1").arg(id)); });
    connect(c, &IOrvexClient::frameStats, &ctx, [&] { record("frameStats"); });
    connect(static_cast<IOrvexSerialConnectionClient*>(c),
            &IOrvexSerialConnectionClient::canMessageInfo, &ctx,
            [&](quint16 id) { record(QString("can %1").arg(id, 0, 16)); });
    connect(c, &IOrvexClient::frameFinished, &ctx, [&] { record("frameFinished"); });
    connect(c, &IOrvexClient::firmwareInfo, &ctx,
            [&](const QString& s) { record("firmware " + s); });
    connect(c, &IOrvexClient::radarStateChanged, &ctx,
            [&](int s) { record(QString("state %1").arg(s)); });

    // Firmware text "ABCDEF" in the first of four response frames, the rest empty.
    const quint64 text = quint64('F') << 56 | quint64('E') << 48 | quint64('D') << 40
                         | quint64('C') << 32 | quint64('B') << 24 | quint64('A') << 16;
    QByteArray message = R::header(T0);
    message += R::frame(0x500, text | 0x33);
    message += R::frame(0x617, R::roadObjectAt(7, 50, 1));
    message += R::ack(0x4f0, 0); // acknowledgements are handled before any frame
    message += R::frame(0x600, R::counter(1000));
    message += R::frame(0x500, 0x34);
    message += R::frame(0x612, R::roadObjectAt(2, 60, -1));
    message += R::frame(0x601, R::counter(77));
    message += R::frame(0x500, 0x35);
    message += R::frame(0x500, 0x36);
    QVERIFY(h.deliver(message));

    const QStringList expected{
        "frameStarted", "frameDateTimeUtc", "command 9 3",   "uptimeInfo",
        "cycle 77",     "object 2",         "object 7",      "frameStats",
        "can 3ff",      "can 500",          "can 600",       "can 601",
        "can 612",      "can 617",          "frameFinished", "firmware ABCDEF"};
    QCOMPARE(log, expected);

    // The cycle advanced: two more such messages publish Working after frameFinished.
    log.clear();
    QVERIFY(h.deliver(R::header(T0) + R::frame(0x601, R::counter(78))));
    QVERIFY(h.deliver(R::header(T0) + R::frame(0x601, R::counter(79))));
    QCOMPARE(log.mid(log.size() - 2), (QStringList{"frameFinished", "state 2"}));
}

QVariantList tst_SerialDecoding::objectArgs(const QList<QVariant>& signal)
{
    return {signal.at(0).toInt(), signal.at(6).toDateTime()};
}

void tst_SerialDecoding::staleObjects()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    auto idsAndTimes = [&objects] {
        QList<QVariantList> list;
        for (const QList<QVariant>& o : objects)
            list.append(objectArgs(o));
        objects.clear();
        return list;
    };
    const QDateTime t500 = T0.addMSecs(500);

    QVERIFY(h.deliver(h.objectMessage(T0, {R::roadObjectAt(1, 10, 0), R::roadObjectAt(2, 20, 0)})));
    QCOMPARE(idsAndTimes(), (QList<QVariantList>{{1, T0}, {2, T0}}));

    // Exactly 500 ms later object 1 is still broadcast, with its old time.
    QVERIFY(h.deliver(h.objectMessage(t500, {R::roadObjectAt(2, 21, 0)})));
    QCOMPARE(idsAndTimes(), (QList<QVariantList>{{1, T0}, {2, t500}}));

    // 501 ms after its last report it is gone.
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(501), {})));
    QCOMPARE(idsAndTimes(), (QList<QVariantList>{{2, t500}}));

    // A message stamped earlier than an object's report keeps the object.
    QVERIFY(h.deliver(h.objectMessage(T0, {})));
    QCOMPARE(idsAndTimes(), (QList<QVariantList>{{2, t500}}));

    QVERIFY(h.deliver(h.objectMessage(t500.addMSecs(501), {})));
    QCOMPARE(idsAndTimes(), QList<QVariantList>{});
}

void tst_SerialDecoding::sameIdTwiceInOneMessage()
{
    ClientHarness h(1);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    QVERIFY(h.deliver(h.objectMessage(T0, {R::roadObjectAt(4, 10, 0), R::roadObjectAt(4, 30, 0)})));
    QCOMPARE(objects.count(), 1);
    QVERIFY(qAbs(objects.first().at(3).toDouble() - 30.016) < 1e-9); // 30 m in 0.064 m steps
}

void tst_SerialDecoding::objectsSilentUnlessOnline()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);

    // Offline: stored, not broadcast. The message itself yields Busy, which is not yet
    // confirmed.
    QVERIFY(h.deliver(h.objectMessage(T0, {R::roadObjectAt(1, 10, 0)})));
    QCOMPARE(objects.count(), 0);
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(100), {})));
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(200), {})));
    // Busy was published at the end of the last message; the next one broadcasts
    // the object that was stored while offline.
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(300), {})));
    QCOMPARE(objects.count(), 1);

    // Switched off: still stored and aged, only the signals stop.
    h.client()->setEmitObjectsEnabled(false);
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(400), {R::roadObjectAt(3, 10, 0)})));
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(600), {}))); // object 1 ages out
    h.client()->setEmitObjectsEnabled(true);
    objects.clear();
    QVERIFY(h.deliver(h.objectMessage(T0.addMSecs(700), {})));
    QCOMPARE(objects.count(), 1);
    QCOMPARE(objects.first().at(0).toInt(), 3);

    // BadData published: no broadcast either.
    for (int i = 0; i < 3; ++i)
        QVERIFY(h.deliver(R::header(T0.addMSecs(800)) + R::frame(h.ids().setup, 0)));
    QCOMPARE(h.client()->radarState(), int(IOrvexClient::BadData));
    objects.clear();
    QVERIFY(h.deliver(R::header(T0.addMSecs(850)) + R::frame(h.ids().setup, 0)));
    QCOMPARE(objects.count(), 0);
}

void tst_SerialDecoding::badFrameStopsTheMessage()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    h.client()->setEmitStatsEnabled(true);
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    QSignalSpy cycles(h.client(), &IOrvexClient::cycleNumber);
    QSignalSpy canInfo(h.client(), &IOrvexSerialConnectionClient::canMessageInfo);

    QByteArray message = R::header(T0) + h.syncFrame();
    message += R::frame(h.ids().objectMin + 1, R::roadObjectAt(1, 10, 0));
    message += R::frame(h.ids().setup, 0); // not accepted: the rest is dropped
    message += R::frame(h.ids().objectMin + 2, R::roadObjectAt(2, 20, 0));
    message += h.cycleFrame(5);
    QVERIFY(h.deliver(message));
    QCOMPARE(objects.count(), 1); // only the object before the bad frame
    QCOMPARE(objects.first().at(0).toInt(), 1);
    QCOMPARE(cycles.count(), 0);
    QStringList counted;
    for (const QList<QVariant>& info : canInfo)
        counted.append(QString::number(info.at(0).toUInt(), 16));
    QVERIFY2(!counted.contains("4a0") && !counted.contains("612") && !counted.contains("601"),
             qPrintable(counted.join(' ')));

    // A truncated record at the end is ignored without spoiling the message.
    QSignalSpy stats(h.client(), &IOrvexClient::frameStats);
    QVERIFY(h.deliver(h.syncFrame() + h.syncFrame().left(7)));
    // Five messages so far; only the one with the bad frame was invalid.
    QCOMPARE(stats.last(), (QVariantList{quint64(5), quint64(4)}));
}

void tst_SerialDecoding::canStatistics()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    IOrvexSerialConnectionClient* c = h.client();
    QSignalSpy canInfo(c, &IOrvexSerialConnectionClient::canMessageInfo);

    // Counting goes on while emission is off.
    QVERIFY(h.deliver(R::header(T0) + h.syncFrame() + h.cycleFrame(1)));
    QVERIFY(h.deliver(R::header(T0.addMSecs(100)) + h.syncFrame() + R::ack(h.ids().ack, 0)));
    QCOMPARE(canInfo.count(), 0);

    c->setEmitStatsEnabled(true);
    const QDateTime t2 = T0.addMSecs(200);
    QVERIFY(h.deliver(R::header(t2) + h.syncFrame() + h.cycleFrame(2)));
    QCOMPARE(canInfo.count(), 2);
    QCOMPARE(canInfo.at(0), (QVariantList{quint16(0x3ff), quint64(3), R::frame(0x3ff, 0), t2}));
    QCOMPARE(canInfo.at(1),
             (QVariantList{quint16(0x601), quint64(2), R::frame(0x601, R::counter(2)), t2}));

    // After a reset only what came since is listed.
    c->resetStatistics();
    QSignalSpy stats(c, &IOrvexClient::frameStats);
    canInfo.clear();
    QVERIFY(h.deliver(R::header(t2) + h.cycleFrame(3)));
    QCOMPARE(canInfo.count(), 1);
    QCOMPARE(canInfo.first().at(0).toUInt(), 0x601u);
    QCOMPARE(canInfo.first().at(1).toULongLong(), quint64(1));
    QCOMPARE(stats.first(), (QVariantList{quint64(1), quint64(1)}));
}

QTEST_GUILESS_MAIN(tst_SerialDecoding)
#include "tst_serialdecoding.moc"
