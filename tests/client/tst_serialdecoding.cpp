#include "clientharness.h"
#include "testrecords.h"

#include <QtTest>

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
    void objectsSilentUnlessOnline();
    void badFrameStopsTheMessageAndItsCount();
    // Crashes, leaks and bounds on bad input are the fuzz replay's; here the time.
    void hugeMessagesTakeLinearTime();
};

namespace {
const QDateTime T0(QDate(2026, 11, 21), QTime(10, 0, 0, 0), Qt::UTC);
}

void tst_SerialDecoding::roadObjectFields_data()
{
    // Both variants decode objects alike; which ids carry them is the acceptance table's.
    QTest::addColumn<quint64>("payload");
    QTest::addColumn<QList<double>>("fields"); // id, xSpeed, ySpeed, xRange, yRange, length

    QTest::newRow("all zero bits")
        << quint64(0) << QList<double>{0, -102.4, -102.4, -524.288, -524.288, 0};
    QTest::newRow("id 63, every other field raw 0")
        << quint64(0xFC00000000000000) << QList<double>{63, -102.4, -102.4, -524.288, -524.288, 0};
    QTest::newRow("all one bits") << quint64(0xFFFFFFFFFFFFFFFF)
                                  << QList<double>{63, 102.3, 102.3, 524.224, 524.224, 51};
    // id 5, length 21 (4.2 m), ySpeed raw 1014 (-1.0), xSpeed raw 1302 (27.8),
    // yRange raw 8142 (-3.2), xRange raw 9754 (99.968).
    QTest::newRow("a car approaching on the right")
        << quint64(0x1455FB5167F3A61A) << QList<double>{5, 27.8, -1, 99.968, -3.2, 4.2};
}

void tst_SerialDecoding::roadObjectFields()
{
    QFETCH(quint64, payload);
    QFETCH(QList<double>, fields);

    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    const quint16 id = quint16(h.ids().objectMin + fields[0]);
    QVERIFY(h.deliver(R::header(T0) + h.syncFrame() + R::frame(id, payload)));
    QCOMPARE(objects.count(), 1);
    for (int i = 0; i < fields.size(); ++i)
        QVERIFY2(qAbs(objects[0][i].toDouble() - fields[i]) < 1e-9, qPrintable(QString::number(i)));
    QCOMPARE(objects[0][6].toDateTime(), T0);
}

void tst_SerialDecoding::acceptance_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("state"); // what three such messages publish
    QTest::addColumn<bool>("uptime"); // decoded as a sensor-control frame

    // Ids are written out as the radar documents them.
    const int busy = IOrvexClient::Busy, bad = IOrvexClient::BadData, none = IOrvexClient::Offline;
    QTest::newRow("SerD: sync 0x3FF") << 0 << R::frame(0x3ff, 0) << busy << false;
    QTest::newRow("SerP: sync 0x2FF") << 1 << R::frame(0x2ff, 0) << busy << false;
    QTest::newRow("SerP: 0x3FF is nothing") << 1 << R::frame(0x3ff, 0) << bad << false;
    QTest::newRow("SerD: 0x600 is sensor control") << 0 << R::frame(0x600, 0) << busy << true;
    QTest::newRow("SerP: 0x500 is sensor control") << 1 << R::frame(0x500, 0) << busy << true;
    QTest::newRow("SerD: 0x500 is a UDT response") << 0 << R::frame(0x500, 0x1234) << busy << false;
    QTest::newRow("SerD: 0x60F is nothing") << 0 << R::frame(0x60f, 0) << bad << false;
    QTest::newRow("SerD: 0x64F is a road object") << 0 << R::frame(0x64f, 0) << busy << false;
    QTest::newRow("SerD: 0x650 is nothing") << 0 << R::frame(0x650, 0) << bad << false;
    QTest::newRow("SerP: 0x510 is a road object") << 1 << R::frame(0x510, 0) << busy << false;
    QTest::newRow("SerP: 0x610 is nothing") << 1 << R::frame(0x610, 0) << bad << false;
    QTest::newRow("SerD: radar-setup id incoming") << 0 << R::frame(0x4a0, 0) << bad << false;
    QTest::newRow("SerP: command id incoming") << 1 << R::frame(0x3f2, 0) << bad << false;
    QTest::newRow("SerD: sync of length 7") << 0 << R::hex("03ff0700000000000000") << bad << false;
    QTest::newRow("SerD: road object of length 0") << 0 << R::hex("061000") << bad << false;
    QTest::newRow("SerD: sensor control of length 4")
        << 0 << R::hex("06000400000001") << bad << false;
    QTest::newRow("SerD: object control of length 2 after a good one")
        << 0 << R::frame(0x601, 0) + R::hex("0601020000") << bad << false;
    // A record the cutter cannot take ends the message's frames without a word.
    QTest::newRow("SerD: length byte 9 is no frame")
        << 0 << R::hex("03ff09000000000000000000") << none << false;
    QTest::newRow("SerD: one byte short of length 8")
        << 0 << R::hex("03ff0800000000000000") << none << false;
    QTest::newRow("SerD: two bytes") << 0 << R::hex("03ff") << none << false;
}

void tst_SerialDecoding::acceptance()
{
    QFETCH(int, variant);
    QFETCH(QByteArray, message);
    QFETCH(int, state);
    QFETCH(bool, uptime);

    ClientHarness h(variant);
    QVERIFY(h.connect());
    h.client()->setEmitStatsEnabled(true);
    QSignalSpy stats(h.client(), &IOrvexClient::frameStats);
    QSignalSpy uptimes(h.client(), &IOrvexClient::uptimeInfo);
    QVERIFY(h.deliver(message));
    QCOMPARE(stats.value(0),
             (QVariantList{quint64(1), quint64(state == IOrvexClient::BadData ? 0 : 1)}));
    QCOMPARE(uptimes.count(), uptime ? 1 : 0);
    QVERIFY(h.deliver(message) && h.deliver(message));
    QCOMPARE(h.client()->radarState(), state);
}

void tst_SerialDecoding::uptime_data()
{
    QTest::addColumn<quint32>("ms");
    QTest::addColumn<QVariantList>("expected"); // days, hours, minutes, seconds, ms
    QTest::newRow("one of each") << quint32(90061001) << QVariantList{1, 1, 1, 1, 1};
    QTest::newRow("just below a day") << quint32(86399999) << QVariantList{0, 23, 59, 59, 999};
    QTest::newRow("largest 32-bit value")
        << quint32(0xFFFFFFFF) << QVariantList{49, 17, 2, 47, 295};
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
    QCOMPARE(uptimes, QList<QVariantList>{expected});
}

void tst_SerialDecoding::emissionOrderOfOneMessage()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    IOrvexSerialConnectionClient* c = h.client();
    c->setEmitStatsEnabled(true);
    c->sendCmdRestart(); // in flight: the acknowledgement below answers it
    QVERIFY(h.waitForSent(1));

    using C = IOrvexClient;
    QStringList log;
    QObject ctx;
    connect(c, &C::frameStarted, &ctx, [&] { log << "frameStarted"; });
    connect(c, &C::frameDateTimeUtc, &ctx, [&] { log << "frameDateTimeUtc"; });
    connect(c, &C::radarCommandStateChanged, &ctx,
            [&](int cmd, int state) { log << QString("command %1 %2").arg(cmd).arg(state); });
    connect(c, &C::uptimeInfo, &ctx, [&] { log << "uptimeInfo"; });
    connect(c, &C::cycleNumber, &ctx, [&](quint64 n) { log << QString("cycle %1").arg(n); });
    connect(c, &C::objectData, &ctx, [&](quint8 id) { log << QString("object %1").arg(id); });
    connect(c, &C::frameStats, &ctx, [&] { log << "frameStats"; });
    connect(c, &IOrvexSerialConnectionClient::canMessageInfo, &ctx,
            [&](quint16 id) { log << QString("can %1").arg(id, 0, 16); });
    connect(c, &C::frameFinished, &ctx, [&] { log << "frameFinished"; });
    connect(c, &C::firmwareInfo, &ctx, [&](const QString& s) { log << "firmware " + s; });
    connect(c, &C::radarStateChanged, &ctx, [&](int s) { log << QString("state %1").arg(s); });

    // Firmware text "ABCDEF" in the first of four response frames, the rest empty.
    const quint64 text = quint64(0x464544434241) << 16;
    QByteArray message = R::header(T0) + R::frame(0x500, text | 0x33);
    message += R::frame(0x617, R::roadObjectAt(7, 50, 1));
    message += R::ack(0x4f0, 0); // acknowledgements are handled before any frame
    message += R::frame(0x600, R::counter(1000)) + R::frame(0x500, 0x34);
    message += R::frame(0x612, R::roadObjectAt(2, 60, -1)) + R::frame(0x601, R::counter(77));
    message += R::frame(0x500, 0x35) + R::frame(0x500, 0x36);
    QVERIFY(h.deliver(message));
    QCOMPARE(log, (QStringList{"frameStarted", "frameDateTimeUtc", "command 9 3", "uptimeInfo",
                               "cycle 77", "object 2", "object 7", "frameStats", "can 3ff",
                               "can 500", "can 600", "can 601", "can 612", "can 617",
                               "frameFinished", "firmware ABCDEF"}));

    // The cycle advanced: two more such messages publish Working after frameFinished.
    QVERIFY(h.deliver(R::frame(0x601, R::counter(78)))
            && h.deliver(R::frame(0x601, R::counter(79))));
    QCOMPARE(log.mid(log.size() - 2), (QStringList{"frameFinished", "state 2"}));
}

void tst_SerialDecoding::staleObjects()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    auto take = [&objects](const QByteArray& message, ClientHarness& h) {
        QStringList seen; // id, metres along the road, milliseconds after T0
        if (h.deliver(message)) {
            for (const QList<QVariant>& o : objects)
                seen << QString("%1:%2@%3")
                            .arg(o[0].toInt())
                            .arg(o[3].toDouble(), 0, 'f', 0)
                            .arg(T0.msecsTo(o[6].toDateTime()));
        }
        objects.clear();
        return seen.join(' ');
    };
    const QDateTime t500 = T0.addMSecs(500);
    // The same id twice in one message: the later report wins.
    QCOMPARE(take(h.objectMessage(T0, {R::roadObjectAt(1, 10, 0), R::roadObjectAt(2, 20, 0),
                                       R::roadObjectAt(2, 30, 0)}),
                  h),
             QString("1:10@0 2:30@0"));
    // Exactly 500 ms later object 1 is still broadcast, with its old time...
    QCOMPARE(take(h.objectMessage(t500, {R::roadObjectAt(2, 21, 0)}), h),
             QString("1:10@0 2:21@500"));
    // ...501 ms after its last report it is gone.
    QCOMPARE(take(h.objectMessage(T0.addMSecs(501), {}), h), QString("2:21@500"));
    // A message stamped earlier than an object's report keeps the object.
    QCOMPARE(take(h.objectMessage(T0, {}), h), QString("2:21@500"));
    QCOMPARE(take(h.objectMessage(t500.addMSecs(501), {}), h), QString());
}

void tst_SerialDecoding::objectsSilentUnlessOnline()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QSignalSpy objects(h.client(), &IOrvexClient::objectData);
    auto message = [&h](int ms, QList<quint64> objects = {}) {
        return h.deliver(h.objectMessage(T0.addMSecs(ms), objects));
    };
    // Offline: stored, not broadcast. The third message publishes Busy at its end; the
    // fourth broadcasts the object stored while offline.
    QVERIFY(message(0, {R::roadObjectAt(1, 10, 0)}) && message(100) && message(200));
    QCOMPARE(objects.count(), 0);
    QVERIFY(message(300));
    QCOMPARE(objects.count(), 1);

    // Switched off: still stored and aged, only the signals stop.
    h.client()->setEmitObjectsEnabled(false);
    QVERIFY(message(400, {R::roadObjectAt(3, 10, 0)}) && message(600)); // object 1 ages out
    h.client()->setEmitObjectsEnabled(true);
    objects.clear();
    QVERIFY(message(700));
    QCOMPARE(objects.count(), 1);
    QCOMPARE(objects[0][0].toInt(), 3);

    // BadData published: no broadcast either.
    const QByteArray bad = R::header(T0.addMSecs(800)) + R::frame(h.ids().setup, 0);
    QVERIFY(h.deliver(bad) && h.deliver(bad) && h.deliver(bad));
    QCOMPARE(h.client()->radarState(), int(IOrvexClient::BadData));
    objects.clear();
    QVERIFY(h.deliver(bad));
    QCOMPARE(objects.count(), 0);
}

void tst_SerialDecoding::badFrameStopsTheMessageAndItsCount()
{
    ClientHarness h(0);
    QVERIFY(h.connect());
    QVERIFY(h.makeBusy()); // three sync frames
    IOrvexSerialConnectionClient* c = h.client();
    QSignalSpy objects(c, &IOrvexClient::objectData);
    QSignalSpy cycles(c, &IOrvexClient::cycleNumber);
    QSignalSpy canInfo(c, &IOrvexSerialConnectionClient::canMessageInfo);
    QSignalSpy stats(c, &IOrvexClient::frameStats);

    // Counting goes on while emission is off; acknowledgements are not counted.
    QVERIFY(h.deliver(R::header(T0) + h.syncFrame() + R::ack(h.ids().ack, 0)));
    QCOMPARE(canInfo.count(), 0);
    c->setEmitStatsEnabled(true);

    // A frame that is not accepted drops the rest of the message: what came before it
    // is decoded and counted, nothing after it.
    const quint64 first = R::roadObjectAt(1, 10, 0);
    QByteArray message = R::header(T0) + h.syncFrame() + R::frame(h.ids().objectMin + 1, first);
    message += R::frame(h.ids().setup, 0);
    message += R::frame(h.ids().objectMin + 2, R::roadObjectAt(2, 20, 0)) + h.cycleFrame(5);
    QVERIFY(h.deliver(message));
    QCOMPARE(objects.count(), 1);
    QCOMPARE(objects[0][0].toInt(), 1);
    QCOMPARE(cycles.count(), 0);
    QCOMPARE(canInfo,
             (QList<QVariantList>{{quint16(0x3ff), quint64(5), R::frame(0x3ff, 0), T0},
                                  {quint16(0x611), quint64(1), R::frame(0x611, first), T0}}));

    // A truncated record at the end is ignored without spoiling the message. Of six
    // messages only the one with the bad frame was invalid.
    QVERIFY(h.deliver(h.syncFrame() + h.syncFrame().left(7)));
    QCOMPARE(stats.last(), (QVariantList{quint64(6), quint64(5)}));

    // After a reset only what came since is listed.
    c->resetStatistics();
    canInfo.clear();
    QVERIFY(h.deliver(R::header(T0) + h.cycleFrame(3)));
    QCOMPARE(canInfo.count(), 1);
    QCOMPARE(canInfo[0].mid(0, 2), (QVariantList{quint16(0x601), quint64(1)}));
    QCOMPARE(stats.last(), (QVariantList{quint64(1), quint64(1)}));
}

void tst_SerialDecoding::hugeMessagesTakeLinearTime()
{
    // A million acknowledgements with nothing in flight, a million zero-length sync
    // frames, and nothing but header marks: a cutter that moves the rest of the message
    // for every record would take hours.
    ClientHarness h(0);
    QVERIFY(h.connect());
    const int size = 4 * 1024 * 1024;
    const QList<QByteArray> messages{R::ack(h.ids().ack, 0).repeated(size / 4),
                                     R::hex("03ff00").repeated(size / 3), QByteArray(size, '#')};
    QSignalSpy finished(h.client(), &IOrvexClient::frameFinished);
    QSignalSpy steps(h.client(), &IOrvexClient::radarCommandStateChanged);
    for (const QByteArray& message : messages)
        h.server().sendBinary(message);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), messages.size(), 20000);
    QCOMPARE(steps.count(), 0);
    // Still connected, and a good message decodes as it should.
    QSignalSpy cycles(h.client(), &IOrvexClient::cycleNumber);
    QVERIFY(h.deliver(R::header(T0) + h.cycleFrame(5000)));
    QCOMPARE(cycles, QList<QVariantList>{{quint64(5000)}});
}

QTEST_GUILESS_MAIN(tst_SerialDecoding)
#include "tst_serialdecoding.moc"
