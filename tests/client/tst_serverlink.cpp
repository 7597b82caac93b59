#include "clientharness.h"
#include "rawwebsocketserver.h"
#include "testrecords.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <memory>

using C = IOrvexClient;
using R = TestRecords;

// The link to the radar server: connection life cycle, keep-alive, the server's JSON
// messages, the time-stamp header and the debounced radar state.
class tst_ServerLink : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void connectionLifeCycle();
    void keepAlive_data();
    void keepAlive();
    void serverJson_data();
    void serverJson();
    void timeStampHeader_data();
    void timeStampHeader();
    void radarState();

private:
    IOrvexSerialConnectionClient* client() const { return m_h->client(); }
    bool deliver(const QByteArray& message) { return m_h->deliver(message); }
    bool deliverTimes(int times, const QByteArray& message)
    {
        for (int i = 0; i < times; ++i) {
            if (!deliver(message))
                return false;
        }
        return true;
    }

    std::unique_ptr<ClientHarness> m_h;
};

void tst_ServerLink::init()
{
    m_h = std::make_unique<ClientHarness>(0);
}

void tst_ServerLink::cleanup()
{
    m_h.reset();
}

void tst_ServerLink::connectionLifeCycle()
{
    QSignalSpy connecting(client(), &C::connecting);
    QSignalSpy connected(client(), &C::connected);
    QSignalSpy disconnected(client(), &C::disconnected);
    QSignalSpy notconnected(client(), &C::notconnected);
    const QUrl url = m_h->server().url();
    int error = 0;
    QVERIFY(!client()->connectToServer(QUrl(QStringLiteral("ws://[::1")), 1000, &error));
    QCOMPARE(error, -1);
    QVERIFY(m_h->connect(300));
    QVERIFY(!client()->connectToServer(url, 1000, &error));
    QCOMPARE(error, -2);
    QVERIFY(client()->isConnected());

    // A link the server closes opens again after the reconnect time-out.
    QElapsedTimer clock;
    clock.start();
    m_h->server().closeClient();
    QTRY_COMPARE(disconnected.count(), 1);
    QVERIFY(!client()->isConnected());
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 2, 5000);
    QVERIFY(clock.elapsed() >= 280);
    QCOMPARE(connecting.count(), 2);
    QCOMPARE(notconnected.count(), 0);

    // Disconnecting stops that: several reconnect periods pass without an attempt.
    client()->disconnectFromServer();
    QCOMPARE(disconnected.count(), 2);
    QVERIFY(!connecting.wait(1000));
    QCOMPARE(m_h->server().connectionCount, 2);

    // A refused connection is tried again and again, and never counts as a link.
    m_h->server().stopListening();
    QVERIFY(client()->connectToServer(url, 100));
    QTRY_VERIFY_WITH_TIMEOUT(notconnected.count() >= 3, 5000);
    QCOMPARE(disconnected.count(), 2);
}

void tst_ServerLink::keepAlive_data()
{
    using Mode = RawWebSocketServer::PongMode;
    QTest::addColumn<int>("mode");
    QTest::addColumn<QByteArray>("pongPayload");
    QTest::newRow("answered pings are numbered and timed") << int(Mode::Echo) << QByteArray();
    QTest::newRow("no pong at all") << int(Mode::Ignore) << QByteArray();
    QTest::newRow("pong with a 2-byte payload is ignored")
        << int(Mode::FixedPayload) << R::hex("0100");
    QTest::newRow("pong with the wrong number") << int(Mode::FixedPayload) << R::hex("07");
}

void tst_ServerLink::keepAlive()
{
    QFETCH(int, mode);
    QFETCH(QByteArray, pongPayload);

    RawWebSocketServer raw;
    raw.setPongMode(RawWebSocketServer::PongMode(mode), pongPayload);
    QSignalSpy pings(&raw, &RawWebSocketServer::pingReceived);
    QSignalSpy closes(&raw, &RawWebSocketServer::closeReceived);
    QSignalSpy latency(client(), &C::pingLatency);
    QSignalSpy disconnected(client(), &C::disconnected);
    QSignalSpy connected(client(), &C::connected);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(client()->connectToServer(raw.url(), 200));
    QVERIFY(pings.wait(3000));
    QVERIFY(clock.elapsed() >= 1900);
    QCOMPARE(pings.last()[0].toByteArray(), R::hex("01"));

    if (mode == int(RawWebSocketServer::PongMode::Echo)) {
        QTRY_COMPARE(latency.count(), 1);
        QVERIFY(latency.last()[0].toULongLong() < 1000);
        QVERIFY(pings.wait(3000));
        QCOMPARE(pings.last()[0].toByteArray(), R::hex("02"));
        QTRY_COMPARE(latency.count(), 2);
        QCOMPARE(raw.connectionCount(), 1);
        return;
    }
    // The next tick finds the ping unanswered and closes normally instead of pinging;
    // the reconnect rule opens a fresh link.
    QVERIFY(closes.wait(3000));
    QCOMPARE(closes.last()[0].toInt(), 1000);
    QCOMPARE(pings.count(), 1);
    QCOMPARE(latency.count(), 0);
    QTRY_COMPARE(disconnected.count(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 2, 3000);
    QCOMPARE(raw.connectionCount(), 2);
}

void tst_ServerLink::serverJson_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantList>("result"); // command, success, result, comment
    QTest::addColumn<QVariantList>("serverState"); // empty: no serverStateChanged
    QTest::addColumn<QVariantList>("usedProtocol"); // empty: no usedProtocolChanged

    const QVariantList none,
        wrong{-1, false, -11, "Wrong response message received from Orvex server."};
    QTest::newRow("state report with failure and nothing else")
        << "{\"command\": 1, \"result\": 5}" << QVariantList{1, false, 5, ""}
        << QVariantList{-1, "", ""} << none;
    QTest::newRow("full state report")
        << "{\"command\":1,\"result\":0,\"server_state\":5,\"rsp_server_url\":\"ws://h:1/\","
           "\"port_name\":\"/dev/ttyUSB0\",\"comment\":\"ok\"}"
        << QVariantList{1, true, 0, "ok"} << QVariantList{5, "ws://h:1/", "/dev/ttyUSB0"} << none;
    QTest::newRow("protocol in use") << "{\"command\":2,\"result\":0,\"radar_protocol\":1}"
                                     << QVariantList{2, true, 0, ""} << none << QVariantList{1};
    QTest::newRow("protocol refused still reports")
        << "{\"command\":2,\"result\":3}" << QVariantList{2, false, 3, ""} << none
        << QVariantList{-1};
    QTest::newRow("unknown command")
        << "{\"command\":9,\"result\":0}" << QVariantList{9, true, 0, ""} << none << none;
    QTest::newRow("values of the wrong types read as defaults")
        << "{\"command\":\"one\",\"result\":[1],\"comment\":7}" << QVariantList{-1, true, 0, ""}
        << none << none;
    QTest::newRow("fractional command is not 1")
        << "{\"command\":1.5,\"result\":0}" << QVariantList{-1, true, 0, ""} << none << none;
    QTest::newRow("missing result") << "{\"command\":1}" << wrong << none << none;
    QTest::newRow("not JSON") << "radar says hello" << wrong << none << none;
    QTest::newRow("numbers beyond int")
        << "{\"command\":1e300,\"result\":-1e300}" << QVariantList{-1, true, 0, ""} << none << none;
    const QString comment(1 << 20, 'x');
    QTest::newRow("1 MiB comment")
        << QString("{\"command\":9,\"result\":0,\"comment\":\"%1\"}").arg(comment)
        << QVariantList{9, true, 0, comment} << none << none;
}

void tst_ServerLink::serverJson()
{
    QFETCH(QString, text);
    QFETCH(QVariantList, result);
    QFETCH(QVariantList, serverState);
    QFETCH(QVariantList, usedProtocol);

    QVERIFY(m_h->connect());
    QSignalSpy results(client(), &C::serverCommandResult);
    QSignalSpy states(client(), &C::serverStateChanged);
    QSignalSpy protocols(client(), &C::usedProtocolChanged);
    m_h->server().sendText(text);
    QVERIFY(results.wait());
    auto all = [](const QSignalSpy& spy) { return QList<QVariantList>(spy); };
    auto expect = [](const QVariantList& v) {
        return v.isEmpty() ? QList<QVariantList>() : QList<QVariantList>{v};
    };
    QCOMPARE(all(results), expect(result));
    QCOMPARE(all(states), expect(serverState));
    QCOMPARE(all(protocols), expect(usedProtocol));
    QVERIFY(client()->isConnected()); // a bad message never costs the link
}

void tst_ServerLink::timeStampHeader_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("headerTime"); // false: the client's own receive time
    QTest::addColumn<int>("cycles"); // cycle numbers decoded after the cut

    const QDateTime stamp(QDate(2026, 11, 21), QTime(10, 0, 0, 123), Qt::UTC);
    const QByteArray header = R::header(stamp);
    const QByteArray cycle = R::frame(VariantIds::of(0).objectControl, R::counter(5));
    auto patched = [&header](int at, const QByteArray& hex) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        return QByteArray(header).replace(at, bytes.size(), bytes);
    };
    QTest::newRow("header then frames") << header + cycle << true << 1;
    QTest::newRow("exactly 12 bytes is not a header") << header << false << 0;
    QTest::newRow("no marks: the whole message is data")
        << cycle + R::frame(VariantIds::of(0).sync, 0) << false << 1;
    QTest::newRow("byte 1 alone marks a header") << patched(0, "784478") + cycle << true << 1;
    QTest::newRow("byte 2 alone marks a header") << patched(0, "787854") + cycle << true << 1;
    QTest::newRow("impossible date still cut") << patched(4, "0d") + cycle << false << 1;
    QTest::newRow("millisecond 1000 still cut") << patched(10, "e803") + cycle << false << 1;
    // A road object on id 0x644 has 'D' as its second byte: the loose test takes it
    // for a header and the message loses its first 12 bytes. The radar server never
    // sends a message without a header to such a radar, so this is harmless there.
    QTest::newRow("object id 0x644 is taken for a header")
        << R::frame(0x644, 0) + cycle + cycle << false << 0;
}

void tst_ServerLink::timeStampHeader()
{
    QFETCH(QByteArray, message);
    QFETCH(bool, headerTime);
    QFETCH(int, cycles);

    QVERIFY(m_h->connect());
    QSignalSpy times(client(), &C::frameDateTimeUtc);
    QSignalSpy cycleNumbers(client(), &C::cycleNumber);
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QVERIFY(deliver(message));
    const QDateTime time = times.value(0).value(0).toDateTime();
    QCOMPARE(time.timeSpec(), Qt::UTC);
    if (headerTime)
        QCOMPARE(time, QDateTime(QDate(2026, 11, 21), QTime(10, 0, 0, 123), Qt::UTC));
    else
        QVERIFY(time >= before && time <= QDateTime::currentDateTimeUtc());
    QCOMPARE(cycleNumbers.count(), cycles);
    if (cycles)
        QCOMPARE(cycleNumbers[0][0].toULongLong(), quint64(5));
}

void tst_ServerLink::radarState()
{
    QVERIFY(m_h->connect());
    QSignalSpy states(client(), &C::radarStateChanged);
    QSignalSpy commandStates(client(), &C::radarCommandStateChanged);
    auto published = [&states] {
        QList<int> list;
        for (const QList<QVariant>& s : states)
            list << s[0].toInt();
        return list;
    };
    // A new state is published when three messages in a row show it; once confirmed,
    // further equal messages change nothing, and an interruption restarts the count.
    const QByteArray bad = R::frame(VariantIds::of(0).setup, 0);
    QVERIFY(deliverTimes(2, m_h->syncFrame()));
    QCOMPARE(published(), QList<int>{});
    QVERIFY(deliver(m_h->syncFrame()));
    QCOMPARE(published(), QList<int>{C::Busy});
    QVERIFY(m_h->makeWorking() && deliver(m_h->cycleFrame(5000)));
    QVERIFY(deliver(bad) && deliver(m_h->cycleFrame(5001)) && deliverTimes(2, bad));
    QCOMPARE(published(), (QList<int>{C::Busy, C::Working}));
    QVERIFY(deliver(bad));
    // Messages without CAN frames confirm Offline.
    QVERIFY(deliverTimes(3, R::ack(VariantIds::of(0).ack, 0)));
    QCOMPARE(published(), (QList<int>{C::Busy, C::Working, C::BadData, C::Offline}));

    // Silence: two seconds after the last message the radar is offline, and a command
    // still waiting for its answer is dropped.
    QVERIFY(m_h->makeBusy());
    client()->sendCmdRestart();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(states.wait(3000));
    QVERIFY(clock.elapsed() >= 1900);
    QCOMPARE(states.last()[0].toInt(), int(C::Offline));
    QCOMPARE(commandStates.last(), (QVariantList{int(C::CmdRestart), int(C::None), 255}));
    QCOMPARE(client()->lastRadarCommand(), 0);
}

QTEST_GUILESS_MAIN(tst_ServerLink)
#include "tst_serverlink.moc"
