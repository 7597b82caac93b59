#include "clientsignallog.h"
#include "roadbuilder.h"
#include "simulatorprocess.h"
#include "variantids.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <QWebSocket>

#include <functional>
#include <memory>

using C = IOrvexClient;
Q_DECLARE_METATYPE(std::function<void(IOrvexClient*)>)

// The client library against the radar server simulator, end to end over loopback.
class tst_RadarSim : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void reachesWorkingWithPlausibleObjects();
    void positionWriteReadsBack_data();
    void positionWriteReadsBack();
    void parametersReadBack_data();
    void parametersReadBack();
    void deviceInformationAndSelfTest();
    void protocolSwitchMovesBothSides();
    void restartKeepsOnlyWhatWasSaved();
    void imitatorAndDemoObjects();
    void vehiclesFollowTheConfiguredRoad();
    void busyAcknowledgements();
    void errorAcknowledgements();
    void missingAcknowledgements();
    void silenceTakesTheRadarOffline();
    void garbageMakesBadData();
    void ignoredPingsMakeTheClientReconnect();
    void badInputIsIgnored();
    void clientsAreToldGoodbye();

private:
    struct Frame
    {
        quint64 cycle = 0;
        QList<QVariantList> objects; // id, xSpeed, ySpeed, xRange, yRange, length
    };
    bool startSim(const QStringList& arguments);
    IOrvexSerialConnectionClient* connectClient(int variant = 0);
    bool waitForState(IOrvexClient* client, int state, int timeoutMs = 8000);
    QList<Frame> collectFrames(IOrvexClient* client, int count);
    // Waits until `command` reaches a final state (received or error) and returns the
    // states it went through, as (state, error) pairs.
    static QList<QPair<int, int>> commandSteps(QSignalSpy& spy, int command, int timeoutMs);

    std::unique_ptr<SimulatorProcess> m_sim;
    std::vector<std::unique_ptr<IOrvexSerialConnectionClient>> m_clients;
};

void tst_RadarSim::cleanup()
{
    m_clients.clear();
    m_sim.reset();
}

bool tst_RadarSim::startSim(const QStringList& arguments)
{
    m_sim = std::make_unique<SimulatorProcess>(QStringList{"--seed", "11"} + arguments);
    return m_sim->start();
}

IOrvexSerialConnectionClient* tst_RadarSim::connectClient(int variant)
{
    m_clients.push_back(VariantIds::makeClient(variant));
    IOrvexSerialConnectionClient* client = m_clients.back().get();
    client->connectToServer(m_sim->url(), 500);
    return client;
}

bool tst_RadarSim::waitForState(IOrvexClient* client, int state, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (client->radarState() != state && clock.elapsed() < timeoutMs) {
        QSignalSpy changed(client, &C::radarStateChanged);
        changed.wait(int(qMax<qint64>(1, timeoutMs - clock.elapsed())));
    }
    return client->radarState() == state;
}

QList<tst_RadarSim::Frame> tst_RadarSim::collectFrames(IOrvexClient* client, int count)
{
    QList<Frame> frames;
    QObject ctx;
    bool open = false;
    connect(client, &C::frameStarted, &ctx, [&] {
        frames.append(Frame());
        open = true;
    });
    connect(client, &C::cycleNumber, &ctx, [&](quint64 n) {
        if (open)
            frames.last().cycle = n;
    });
    connect(client, &C::objectData, &ctx,
            [&](quint8 id, double vx, double vy, double x, double y, double length) {
                if (open)
                    frames.last().objects.append({int(id), vx, vy, x, y, length});
            });
    connect(client, &C::frameFinished, &ctx, [&] { open = false; });
    QElapsedTimer clock;
    clock.start();
    while ((frames.size() < count || open) && clock.elapsed() < 10000)
        QSignalSpy(client, &C::frameFinished).wait(1000);
    if (open)
        frames.removeLast();
    return frames;
}

QList<QPair<int, int>> tst_RadarSim::commandSteps(QSignalSpy& spy, int command, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    QList<QPair<int, int>> steps;
    int seen = 0;
    for (;;) {
        for (; seen < spy.size(); ++seen) {
            if (spy.at(seen).at(0).toInt() != command)
                continue;
            const int state = spy.at(seen).at(1).toInt();
            steps.append({state, spy.at(seen).at(2).toInt()});
            if (state == C::Received || state == C::Error || state == C::None)
                return steps;
        }
        if (clock.elapsed() >= timeoutMs)
            return steps;
        spy.wait(int(timeoutMs - clock.elapsed()));
    }
}

void tst_RadarSim::reachesWorkingWithPlausibleObjects()
{
    QVERIFY(startSim({"--vehicles", "16"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QSignalSpy serverStates(client, &C::serverStateChanged);
    QVERIFY(waitForState(client, C::Working));

    // The server reported its way to the radar, ending with "working".
    QVERIFY(serverStates.count() >= 4);
    QCOMPARE(serverStates.last(),
             (QVariantList{5, m_sim->url().toString(), QString("/dev/ttySIM0")}));

    const QList<Frame> frames = collectFrames(client, 30);
    QCOMPARE(frames.size(), 30);
    int objectsSeen = 0;
    for (int f = 0; f < frames.size(); ++f) {
        const Frame& frame = frames.at(f);
        if (f > 0)
            QCOMPARE(frame.cycle, frames.at(f - 1).cycle + 1);
        int previousId = -1;
        for (const QVariantList& o : frame.objects) {
            const int id = o.at(0).toInt();
            const double vx = o.at(1).toDouble(), x = o.at(3).toDouble(), y = o.at(4).toDouble();
            const double length = o.at(5).toDouble();
            QVERIFY2(id > previousId, "objects come in ascending id order");
            previousId = id;
            QVERIFY2(x >= -0.1 && x <= 250.1, qPrintable(QString::number(x)));
            QVERIFY2(qAbs(y) < 8.0, qPrintable(QString::number(y))); // on the four lanes
            QVERIFY2(qAbs(vx) >= 7.0 && qAbs(vx) <= 36.2, qPrintable(QString::number(vx)));
            // Right-hand traffic: away from the radar on the right, towards it on the left.
            QVERIFY2((y < 0) == (vx > 0), qPrintable(QString("y %1 vx %2").arg(y).arg(vx)));
            QVERIFY2(length >= 3.7 && length <= 18.1, qPrintable(QString::number(length)));
            ++objectsSeen;
        }
    }
    QVERIFY2(objectsSeen > 30 * 5, qPrintable(QString::number(objectsSeen)));
}

void tst_RadarSim::positionWriteReadsBack_data()
{
    QTest::addColumn<QList<double>>("position"); // height, x, y, azimuth, altitude, roll
    QTest::newRow("roadside mounting") << QList<double>{6.5, 0, -8.5, 0, -3, 0};
    QTest::newRow("every value negative") << QList<double>{-1.25, -12.34, -3.5, -12.5, -1.25, -0.5};
    QTest::newRow("angles around a half turn")
        << QList<double>{12.01, 300, 0.01, 179.99, -179.99, 90};
}

void tst_RadarSim::positionWriteReadsBack()
{
    QFETCH(QList<double>, position);
    QVERIFY(startSim({}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    ClientSignalLog log(client);

    client->sendCmdSetPosition(position[0], position[1], position[2], position[3], position[4],
                               position[5]);
    for (int id : {C::CmdSetXOffset, C::CmdSetYOffset, C::CmdSetHeight, C::CmdSetAzimuth,
                   C::CmdSetAltitude, C::CmdSetRoll})
        QCOMPARE(commandSteps(steps, id, 5000).last(), qMakePair(int(C::Received), 0));
    client->sendCmdGetPosition();
    const QString line = log.waitFor("position");
    QVERIFY(!line.isEmpty());
    const QStringList values = line.split(' ').mid(1);
    QCOMPARE(values.size(), 6);
    for (int i = 0; i < 6; ++i)
        QVERIFY2(qAbs(values.at(i).toDouble() - position.at(i)) < 0.005, qPrintable(line));
}

void tst_RadarSim::parametersReadBack_data()
{
    using Send = std::function<void(IOrvexClient*)>;
    QTest::addColumn<Send>("write");
    QTest::addColumn<Send>("read");
    QTest::addColumn<QString>("expected");

    QTest::newRow("frequency index")
        << Send([](C* c) { c->sendCmdSetFrequencyIndex(5); })
        << Send([](C* c) { c->sendCmdGetFrequencyIndex(); }) << "frequencyIndex 5";
    QTest::newRow("sensitivity") << Send([](C* c) { c->sendCmdSetRadarSensitivity(-3); })
                                 << Send([](C* c) { c->sendCmdGetRadarSensitivity(); })
                                 << "sensitivity -3";
    QTest::newRow("polygon usage")
        << Send([](C* c) { c->sendCmdSetPolygonUsage(1); })
        << Send([](C* c) { c->sendCmdGetPolygonUsage(); }) << "polygonUsage 1";
    QTest::newRow("vertex count") << Send([](C* c) { c->sendCmdSetPolygonTreatParam(0, 0, 4); })
                                  << Send([](C* c) { c->sendCmdGetPolygonTreatParam(0, 0); })
                                  << "treat 0 0 4";
    QTest::newRow("speed bound") << Send([](C* c) { c->sendCmdSetPolygonSpeedParam(0, 1, 55.5); })
                                 << Send([](C* c) { c->sendCmdGetPolygonSpeedParam(0, 1); })
                                 << "speed 0 1 55.5";
    QTest::newRow("vertex Y") << Send([](C* c) { c->sendCmdSetPolygonPointParam(0, 9, -12.25); })
                              << Send([](C* c) { c->sendCmdGetPolygonPointParam(0, 9); })
                              << "point 0 9 -12.25";
    QTest::newRow("imitator mode")
        << Send([](C* c) { c->sendCmdSetImitatorMode(2); })
        << Send([](C* c) { c->sendCmdGetImitatorMode(); }) << "imitatorMode 2";
    QTest::newRow("demo objects") << Send([](C* c) { c->sendCmdSetFakeTargetsMode(true); })
                                  << Send([](C* c) { c->sendCmdGetFakeTargetsMode(); })
                                  << "fakeTargets 1";
    QTest::newRow("calibration command")
        << Send([](C* c) { c->sendCmdSetCalibrationCommand(3); })
        << Send([](C* c) { c->sendCmdGetCalibrationCommand(); }) << "calibrationCommand 3";
    QTest::newRow("calibration parameter")
        << Send([](C* c) { c->sendCmdSetCalibrationLastParam(2, 1234); })
        << Send([](C* c) { c->sendCmdGetCalibrationLastParam(2); }) << "calibrationLast 2 1234";
    QTest::newRow("debug variable")
        << Send([](C* c) { c->sendCmdSetDebugVariableValue(5, -77); })
        << Send([](C* c) { c->sendCmdGetDebugVariableValue(5); }) << "debug 5 -77";
}

void tst_RadarSim::parametersReadBack()
{
    using Send = std::function<void(IOrvexClient*)>;
    QFETCH(Send, write);
    QFETCH(Send, read);
    QFETCH(QString, expected);

    QVERIFY(startSim({}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    ClientSignalLog log(client);
    write(client);
    read(client);
    const QString prefix = expected.section(' ', 0, 0);
    QCOMPARE(log.waitFor(prefix), expected);
}

void tst_RadarSim::deviceInformationAndSelfTest()
{
    QVERIFY(startSim({"--selftest", "0x2A"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    ClientSignalLog log(client);
    client->sendCmdGetHardwareInfo();
    client->sendCmdGetFirmwareInfo();
    client->sendCmdSelfDiagnostics();
    const QRegularExpression printable("^\\[[ -~]{3,24}\\]$");
    QVERIFY(printable.match(log.waitFor("hardware").section(' ', 1)).hasMatch());
    QVERIFY(printable.match(log.waitFor("firmware").section(' ', 1)).hasMatch());
    QCOMPARE(log.waitFor("selfDiagnostics"), QString("selfDiagnostics 42"));
}

void tst_RadarSim::protocolSwitchMovesBothSides()
{
    QVERIFY(startSim({}));
    IOrvexSerialConnectionClient* serD = connectClient(0);
    QVERIFY(waitForState(serD, C::Working));
    QSignalSpy used(serD, &C::usedProtocolChanged);
    QSignalSpy results(serD, &C::serverCommandResult);

    serD->forceServerToChangeProtocol(7); // refused, and the protocol in use is named
    QVERIFY(used.wait());
    QCOMPARE(results.last().mid(0, 3), (QVariantList{2, false, 3}));
    QCOMPARE(used.last().at(0).toInt(), 0);

    serD->forceServerToChangeProtocol(1);
    QVERIFY(used.wait());
    QCOMPARE(results.last().mid(0, 3), (QVariantList{2, true, 0}));
    QCOMPARE(used.last().at(0).toInt(), 1);
    // The radar now speaks on the other ids: a SerD client cannot read it any more...
    QVERIFY(waitForState(serD, C::BadData));
    // ...a SerP client can, and its commands are answered.
    IOrvexSerialConnectionClient* serP = connectClient(1);
    QVERIFY(waitForState(serP, C::Working));
    ClientSignalLog log(serP);
    serP->sendCmdGetFrequencyIndex();
    QCOMPARE(log.waitFor("frequencyIndex"), QString("frequencyIndex 2"));
}

void tst_RadarSim::restartKeepsOnlyWhatWasSaved()
{
    QVERIFY(startSim({"--rate", "20"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    QSignalSpy cycles(client, &C::cycleNumber);

    client->sendCmdSetFrequencyIndex(9);
    client->sendCmdSaveToFlash();
    client->sendCmdSetRadarSensitivity(11); // not saved
    client->sendCmdRestart();
    QCOMPARE(commandSteps(steps, C::CmdRestart, 5000).last(), qMakePair(int(C::Received), 0));
    const quint64 cycleBefore = cycles.last().at(0).toULongLong();

    // Silent for three seconds: offline after two, working again after.
    QVERIFY(waitForState(client, C::Offline, 4000));
    QVERIFY(waitForState(client, C::Working, 6000));
    QVERIFY(cycles.last().at(0).toULongLong() < cycleBefore);

    ClientSignalLog log(client);
    client->sendCmdGetFrequencyIndex();
    client->sendCmdGetRadarSensitivity();
    QCOMPARE(log.waitFor("frequencyIndex"), QString("frequencyIndex 9"));
    QCOMPARE(log.waitFor("sensitivity"), QString("sensitivity 7"));
}

void tst_RadarSim::imitatorAndDemoObjects()
{
    QVERIFY(startSim({"--vehicles", "12"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);

    client->sendCmdSetImitatorMode(1);
    QCOMPARE(commandSteps(steps, C::CmdSetImitatorMode, 5000).last(),
             qMakePair(int(C::Received), 0));
    // Skip the frames that may still hold vehicles that were seen before the switch.
    collectFrames(client, 8);
    for (const Frame& frame : collectFrames(client, 5)) {
        QCOMPARE(frame.objects.size(), 1);
        QCOMPARE(frame.objects.first().at(1).toDouble(), -15.0); // 54 km/h towards the radar
    }

    client->sendCmdSetImitatorMode(0);
    client->sendCmdSetFakeTargetsMode(true);
    QCOMPARE(commandSteps(steps, C::CmdSetFakeTargetsMode, 5000).last(),
             qMakePair(int(C::Received), 0));
    collectFrames(client, 2);
    QSet<int> ids;
    for (const Frame& frame : collectFrames(client, 5)) {
        for (const QVariantList& o : frame.objects)
            ids.insert(o.at(0).toInt());
    }
    QVERIFY(ids.contains(60) && ids.contains(63));
    QVERIFY(ids.size() > 6); // the traffic is back as well
}

void tst_RadarSim::vehiclesFollowTheConfiguredRoad()
{
    // Three lanes each way on a road that bends left and then right.
    const QJsonObject road = QJsonDocument::fromJson(R"({
        "origin_offset": 4.0,
        "parts": {"0": {"width": 2}, "1": {"width": 3.5, "is_lane": true},
                  "2": {"width": 3.5, "is_lane": true}, "3": {"width": 3.5, "is_lane": true},
                  "-1": {"width": 3.5, "is_lane": true}, "-2": {"width": 3.5, "is_lane": true},
                  "-3": {"width": 3.5, "is_lane": true}, "4": {"width": 2}, "-4": {"width": 2}},
        "sections": [{"length": 60}, {"is_curved": true, "length": 80, "radius": 250},
                     {"is_curved": true, "length": 80, "radius": -250}, {"length": 100}]
    })")
                                 .object();
    QVERIFY(!road.isEmpty());
    QTemporaryDir dir;
    QFile file(dir.filePath("road.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(road).toJson());
    file.close();

    QMap<int, QPolygonF> lanes;
    RoadBuilder builder;
    connect(&builder, &RoadBuilder::laneCenterLines, this,
            [&lanes](const QMap<int, QPolygonF>& l) { lanes = l; });
    builder.setRoadConfig(road);
    QCOMPARE(lanes.size(), 6);

    QVERIFY(startSim({"--road", file.fileName(), "--vehicles", "24"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    int checked = 0;
    for (const Frame& frame : collectFrames(client, 20)) {
        for (const QVariantList& o : frame.objects) {
            const QPointF p(o.at(3).toDouble(), o.at(4).toDouble());
            double nearest = 1e9;
            for (const QPolygonF& lane : qAsConst(lanes)) {
                for (const QPointF& q : lane)
                    nearest = qMin(nearest, QLineF(p, q).length());
            }
            // Lane points lie a metre apart; a driver wanders up to 0.35 m.
            QVERIFY2(
                nearest < 0.9,
                qPrintable(
                    QString("(%1, %2) is %3 m off every lane").arg(p.x()).arg(p.y()).arg(nearest)));
            ++checked;
        }
    }
    QVERIFY(checked > 100);
}

void tst_RadarSim::busyAcknowledgements()
{
    QVERIFY(startSim({"--busy-acks", "3"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    ClientSignalLog log(client);
    client->sendCmdGetFrequencyIndex();
    const QList<QPair<int, int>> seen = commandSteps(steps, C::CmdGetFrequencyIndex, 5000);
    const QPair<int, int> busy(C::InProgress, 255);
    QCOMPARE(seen.count(busy), 3); // asked again, without using up the retries
    QCOMPARE(seen.last(), qMakePair(int(C::Received), 0));
    QCOMPARE(log.waitFor("frequencyIndex"), QString("frequencyIndex 2"));
}

void tst_RadarSim::errorAcknowledgements()
{
    QVERIFY(startSim({"--error-ack", "9"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    client->sendCmdSetFrequencyIndex(4);
    const QList<QPair<int, int>> seen = commandSteps(steps, C::CmdSetFrequencyIndex, 5000);
    QCOMPARE(seen.count(qMakePair(int(C::InProgress), 9)), 4);
    QCOMPARE(seen.last(), qMakePair(int(C::Error), 9));
}

void tst_RadarSim::missingAcknowledgements()
{
    QVERIFY(startSim({"--no-acks"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    QElapsedTimer clock;
    clock.start();
    client->sendCmdGetRadarSensitivity();
    const QList<QPair<int, int>> seen = commandSteps(steps, C::CmdGetRadarSensitivity, 8000);
    QCOMPARE(seen.count(qMakePair(int(C::InProgress), -7)), 4);
    QCOMPARE(seen.last(), qMakePair(int(C::Error), -7));
    QVERIFY(clock.elapsed() >= 4800);
}

void tst_RadarSim::silenceTakesTheRadarOffline()
{
    QVERIFY(startSim({"--silence-after", "1.5"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));
    QElapsedTimer sinceLastMessage;
    connect(client, &C::frameFinished, this, [&sinceLastMessage] { sinceLastMessage.start(); });
    QVERIFY(waitForState(client, C::Offline, 6000));
    QVERIFY2(sinceLastMessage.elapsed() >= 1900,
             qPrintable(QString::number(sinceLastMessage.elapsed())));
    QVERIFY(client->isConnected()); // the server is still there, only the radar is not
}

void tst_RadarSim::garbageMakesBadData()
{
    QVERIFY(startSim({"--garbage-every", "1"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QSignalSpy states(client, &C::radarStateChanged);
    QVERIFY(waitForState(client, C::BadData));
    QCOMPARE(states.first().at(0).toInt(), int(C::BadData)); // never working before
}

void tst_RadarSim::ignoredPingsMakeTheClientReconnect()
{
    QVERIFY(startSim({"--ignore-pings"}));
    IOrvexSerialConnectionClient* client = connectClient();
    QSignalSpy connected(client, &C::connected);
    QSignalSpy disconnected(client, &C::disconnected);
    QSignalSpy latency(client, &C::pingLatency);
    QVERIFY(connected.wait());
    // First ping after 2 s goes unanswered; the next tick closes; 500 ms later it reopens.
    QVERIFY(disconnected.wait(6000));
    QTRY_COMPARE_WITH_TIMEOUT(connected.count(), 2, 3000);
    QCOMPARE(latency.count(), 0);
}

void tst_RadarSim::badInputIsIgnored()
{
    QVERIFY(startSim({}));
    IOrvexSerialConnectionClient* client = connectClient();
    QVERIFY(waitForState(client, C::Working));

    QWebSocket raw;
    QSignalSpy rawConnected(&raw, &QWebSocket::connected);
    QSignalSpy replies(&raw, &QWebSocket::textMessageReceived);
    raw.open(m_sim->url());
    QVERIFY(rawConnected.wait());
    QByteArray noise(64 * 1024, Qt::Uninitialized);
    for (int i = 0; i < noise.size(); ++i)
        noise[i] = char((i * 7919) >> 3);
    raw.sendBinaryMessage(noise);
    raw.sendBinaryMessage(QByteArray());
    raw.sendBinaryMessage(QByteArray(8 << 20, '\x04'));
    raw.sendBinaryMessage(QByteArray::fromHex("04f20901020304050607080910")); // length 9
    raw.sendBinaryMessage(QByteArray::fromHex("04f208000000")); // cut short
    const QStringList texts{"",
                            "not json",
                            "[1,2]",
                            "{\"radar_protocol\":1}",
                            "{\"command\":99}",
                            "{\"command\":2,\"radar_protocol\":\"one\"}"};
    for (const QString& text : texts)
        raw.sendTextMessage(text);

    // Every text gets an answer with a result code and a reason; the server state
    // reports of the new connection come on top.
    QTRY_VERIFY_WITH_TIMEOUT(replies.count() >= texts.size() + 4, 5000);
    int refusals = 0;
    for (const QList<QVariant>& reply : replies) {
        const QJsonObject obj = QJsonDocument::fromJson(reply.at(0).toString().toUtf8()).object();
        QVERIFY(obj.contains("command") && obj.contains("result"));
        if (obj.value("result").toInt() != 0) {
            QVERIFY(!obj.value("comment").toString().isEmpty());
            ++refusals;
        }
    }
    QCOMPARE(refusals, texts.size());

    // The radar carries on and still answers.
    QVERIFY(m_sim->process().state() == QProcess::Running);
    ClientSignalLog log(client);
    client->sendCmdGetRadarSensitivity();
    QCOMPARE(log.waitFor("sensitivity"), QString("sensitivity 7"));
    QCOMPARE(client->radarState(), int(C::Working));
}

void tst_RadarSim::clientsAreToldGoodbye()
{
    QVERIFY(startSim({}));
    IOrvexSerialConnectionClient* first = connectClient();
    IOrvexSerialConnectionClient* second = connectClient();
    QVERIFY(waitForState(first, C::Working));
    QVERIFY(waitForState(second, C::Working));
    QSignalSpy firstGone(first, &C::disconnected);
    QSignalSpy secondGone(second, &C::disconnected);
    m_sim->process().terminate();
    QVERIFY(m_sim->process().waitForFinished(5000));
    QCOMPARE(m_sim->process().exitCode(), 0);
    QTRY_COMPARE(firstGone.count(), 1);
    QTRY_COMPARE(secondGone.count(), 1);
}

QTEST_GUILESS_MAIN(tst_RadarSim)
#include "tst_radarsim.moc"
