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

#include <cmath>
#include <functional>
#include <map>
#include <memory>

using C = IOrvexClient;
using Send = std::function<void(IOrvexClient*)>;
Q_DECLARE_METATYPE(Send)

// The client library against the radar server simulator, end to end over loopback.
// Every simulator is started at once, so that their waits (for silence, ignored pings
// and missing acknowledgements) overlap; the tests of the default simulator build on
// one another in the order they are declared.
class tst_RadarSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void reachesWorkingWithPlausibleTraffic();
    void valuesReadBack_data();
    void valuesReadBack();
    void imitatorAndDemoObjects();
    void badInputIsIgnored();
    void restartKeepsOnlyWhatWasSaved();
    void clientsAreToldGoodbye();

    void vehiclesFollowTheConfiguredRoad();
    void acknowledgementOptions_data();
    void acknowledgementOptions();
    void ignoredPingsMakeTheClientReconnect();

private:
    // One simulator and the clients connected to it, watched from the start.
    struct Run
    {
        std::unique_ptr<SimulatorProcess> sim;
        std::vector<std::unique_ptr<IOrvexSerialConnectionClient>> clients;
        std::unique_ptr<QSignalSpy> serverStates, connected, disconnected, latency;
        IOrvexSerialConnectionClient* client() const { return clients.front().get(); }
    };
    struct Frame
    {
        quint64 cycle = 0;
        QList<QVariantList> objects; // id, xSpeed, ySpeed, xRange, yRange, length
    };
    Run& run(const QString& name) { return *m_runs.at(name); }
    IOrvexSerialConnectionClient* connectClient(Run& run, int variant = 0);
    static QList<Frame> collectFrames(IOrvexClient* client, int count);
    // Waits until `command` reaches a final state and returns the (state, error) pairs
    // it went through.
    static QList<QPair<int, int>> commandSteps(QSignalSpy& spy, int command, int timeoutMs);

    QTemporaryDir m_dir;
    std::map<QString, std::unique_ptr<Run>> m_runs;
};

void tst_RadarSim::initTestCase()
{
    // Three lanes each way on a road that bends left and then right.
    QFile road(m_dir.filePath("road.json"));
    QVERIFY(road.open(QIODevice::WriteOnly));
    road.write(R"({
        "origin_offset": 4.0,
        "parts": {"0": {"width": 2}, "1": {"width": 3.5, "is_lane": true},
                  "2": {"width": 3.5, "is_lane": true}, "3": {"width": 3.5, "is_lane": true},
                  "-1": {"width": 3.5, "is_lane": true}, "-2": {"width": 3.5, "is_lane": true},
                  "-3": {"width": 3.5, "is_lane": true}, "4": {"width": 2}, "-4": {"width": 2}},
        "sections": [{"length": 60}, {"is_curved": true, "length": 80, "radius": 250},
                     {"is_curved": true, "length": 80, "radius": -250}, {"length": 100}]
    })");
    road.close();

    const std::map<QString, QStringList> arguments{
        {"default", {"--vehicles", "16", "--selftest", "0x2A", "--rate", "20"}},
        {"road", {"--road", road.fileName(), "--vehicles", "24"}},
        {"busy then error", {"--busy-acks", "3", "--error-ack", "9"}},
        {"no acks", {"--no-acks"}},
        {"ignore pings", {"--ignore-pings"}},
    };
    for (const auto& [name, args] : arguments) {
        auto r = std::make_unique<Run>();
        r->sim = std::make_unique<SimulatorProcess>(QStringList{"--seed", "11"} + args);
        QVERIFY2(r->sim->start(), qPrintable(name));
        IOrvexSerialConnectionClient* client = connectClient(*r);
        r->serverStates = std::make_unique<QSignalSpy>(client, &C::serverStateChanged);
        r->connected = std::make_unique<QSignalSpy>(client, &C::connected);
        r->disconnected = std::make_unique<QSignalSpy>(client, &C::disconnected);
        r->latency = std::make_unique<QSignalSpy>(client, &C::pingLatency);
        m_runs[name] = std::move(r);
    }
}

void tst_RadarSim::cleanupTestCase()
{
    m_runs.clear();
}

IOrvexSerialConnectionClient* tst_RadarSim::connectClient(Run& run, int variant)
{
    run.clients.push_back(VariantIds::makeClient(variant));
    run.clients.back()->connectToServer(run.sim->url(), 500);
    return run.clients.back().get();
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
    for (int seen = 0;; spy.wait(int(qMax<qint64>(1, timeoutMs - clock.elapsed())))) {
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
    }
}

void tst_RadarSim::reachesWorkingWithPlausibleTraffic()
{
    Run& r = run("default");
    IOrvexSerialConnectionClient* client = r.client();
    QTRY_COMPARE_WITH_TIMEOUT(client->radarState(), int(C::Working), 8000);
    // The server reported its way to the radar, ending with "working".
    QVERIFY(r.serverStates->count() >= 4);
    QCOMPARE(r.serverStates->last(), (QVariantList{5, r.sim->url().toString(), "/dev/ttySIM0"}));

    // Consecutive cycles, each with traffic; what the traffic looks like, see the road
    // below.
    const QList<Frame> frames = collectFrames(client, 30);
    QCOMPARE(frames.size(), 30);
    int objectsSeen = 0;
    for (int f = 0; f < frames.size(); ++f) {
        if (f > 0)
            QCOMPARE(frames[f].cycle, frames[f - 1].cycle + 1);
        objectsSeen += frames[f].objects.size();
    }
    QVERIFY2(objectsSeen > 30 * 5, qPrintable(QString::number(objectsSeen)));
}

void tst_RadarSim::valuesReadBack_data()
{
    QTest::addColumn<Send>("write");
    QTest::addColumn<Send>("read");
    QTest::addColumn<QString>("expected");

    auto row = [](const char* name, Send write, Send read, const char* expected) {
        QTest::newRow(name) << write << read << QString(expected);
    };
    row(
        "self-diagnostics word", [](C*) {}, [](C* c) { c->sendCmdSelfDiagnostics(); },
        "selfDiagnostics 42");
    row(
        "frequency index", [](C* c) { c->sendCmdSetFrequencyIndex(5); },
        [](C* c) { c->sendCmdGetFrequencyIndex(); }, "frequencyIndex 5");
    row(
        "speed bound", [](C* c) { c->sendCmdSetPolygonSpeedParam(0, 1, 55.5); },
        [](C* c) { c->sendCmdGetPolygonSpeedParam(0, 1); }, "speed 0 1 55.5");
    row(
        "calibration parameter", [](C* c) { c->sendCmdSetCalibrationLastParam(2, 1234); },
        [](C* c) { c->sendCmdGetCalibrationLastParam(2); }, "calibrationLast 2 1234");
    row(
        "device information", [](C*) {}, [](C* c) { c->sendCmdGetHardwareInfo(); },
        "hardware [ORVEX RS-24 SIM rev.C]");
}

void tst_RadarSim::valuesReadBack()
{
    QFETCH(Send, write);
    QFETCH(Send, read);
    QFETCH(QString, expected);
    IOrvexSerialConnectionClient* client = run("default").client();
    ClientSignalLog log(client);
    write(client);
    read(client);
    QCOMPARE(log.waitFor(expected.section(' ', 0, 0)), expected);
}

void tst_RadarSim::imitatorAndDemoObjects()
{
    IOrvexSerialConnectionClient* client = run("default").client();
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    client->sendCmdSetImitatorMode(1);
    QCOMPARE(commandSteps(steps, C::CmdSetImitatorMode, 5000).last(),
             qMakePair(int(C::Received), 0));
    // Skip the frames that may still hold vehicles seen before the switch: the client
    // keeps an object for 500 ms, ten cycles at 20 Hz.
    collectFrames(client, 14);
    for (const Frame& frame : collectFrames(client, 5)) {
        QCOMPARE(frame.objects.size(), 1);
        QCOMPARE(frame.objects[0][1].toDouble(), -15.0); // 54 km/h towards the radar
    }
    client->sendCmdSetImitatorMode(0);
    client->sendCmdSetFakeTargetsMode(true);
    QCOMPARE(commandSteps(steps, C::CmdSetFakeTargetsMode, 5000).last(),
             qMakePair(int(C::Received), 0));
    collectFrames(client, 2);
    QSet<int> ids;
    for (const Frame& frame : collectFrames(client, 5)) {
        for (const QVariantList& o : frame.objects)
            ids.insert(o[0].toInt());
    }
    QVERIFY(ids.contains(60) && ids.contains(63));
    QVERIFY(ids.size() > 6); // the traffic is back as well
}

void tst_RadarSim::badInputIsIgnored()
{
    Run& r = run("default");
    QWebSocket raw;
    QSignalSpy rawConnected(&raw, &QWebSocket::connected);
    QSignalSpy replies(&raw, &QWebSocket::textMessageReceived);
    raw.open(r.sim->url());
    QVERIFY(rawConnected.wait());
    QByteArray noise(64 * 1024, Qt::Uninitialized);
    for (int i = 0; i < noise.size(); ++i)
        noise[i] = char((i * 7919) >> 3);
    for (const QByteArray& bytes : {noise, QByteArray(), QByteArray(8 << 20, '\x04'),
                                    QByteArray::fromHex("04f20901020304050607080910"), // length 9
                                    QByteArray::fromHex("04f208000000")}) // cut short
        raw.sendBinaryMessage(bytes);
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
        const QJsonObject obj = QJsonDocument::fromJson(reply[0].toString().toUtf8()).object();
        QVERIFY(obj.contains("command") && obj.contains("result"));
        if (obj["result"].toInt() != 0) {
            QVERIFY(!obj["comment"].toString().isEmpty());
            ++refusals;
        }
    }
    QCOMPARE(refusals, texts.size());

    // The radar carries on and still answers. A write of 8 bits (access code 4), which
    // the client sends for 8-bit values only, keeps the low byte of any value.
    QSignalSpy rawMessages(&raw, &QWebSocket::binaryMessageReceived);
    raw.sendBinaryMessage(QByteArray::fromHex("04f208000001ff41042400")); // frequency 0x1FF
    QTRY_VERIFY(rawMessages.count() >= 2); // a radar cycle later the write is done
    ClientSignalLog log(r.client());
    r.client()->sendCmdGetFrequencyIndex();
    QCOMPARE(log.waitFor("frequencyIndex"), QString("frequencyIndex 255"));
    QCOMPARE(r.client()->radarState(), int(C::Working));
}

void tst_RadarSim::restartKeepsOnlyWhatWasSaved()
{
    IOrvexSerialConnectionClient* client = run("default").client();
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    QSignalSpy cycles(client, &C::cycleNumber);
    client->sendCmdSetFrequencyIndex(9);
    client->sendCmdSetRadarSensitivity(4);
    client->sendCmdSaveToFlash();
    client->sendCmdSetRadarSensitivity(11); // not saved
    client->sendCmdRestart();
    QCOMPARE(commandSteps(steps, C::CmdRestart, 5000).last(), qMakePair(int(C::Received), 0));
    const quint64 cycleBefore = cycles.last()[0].toULongLong();

    // Silent for three seconds: offline after two, working again after.
    QTRY_COMPARE_WITH_TIMEOUT(client->radarState(), int(C::Offline), 4000);
    QTRY_COMPARE_WITH_TIMEOUT(client->radarState(), int(C::Working), 6000);
    QVERIFY(cycles.last()[0].toULongLong() < cycleBefore);
    ClientSignalLog log(client);
    client->sendCmdGetFrequencyIndex();
    client->sendCmdGetRadarSensitivity();
    QCOMPARE(log.waitFor("frequencyIndex"), QString("frequencyIndex 9"));
    QCOMPARE(log.waitFor("sensitivity"), QString("sensitivity 4"));
}

void tst_RadarSim::clientsAreToldGoodbye()
{
    Run& r = run("default");
    connectClient(r, 1);
    QSignalSpy firstGone(r.clients[0].get(), &C::disconnected);
    QSignalSpy secondGone(r.clients[1].get(), &C::disconnected);
    QTRY_VERIFY(r.clients[1]->isConnected());
    r.sim->process().terminate();
    QVERIFY(r.sim->process().waitForFinished(5000));
    QCOMPARE(r.sim->process().exitCode(), 0);
    QTRY_COMPARE(firstGone.count(), 1);
    QTRY_COMPARE(secondGone.count(), 1);
}

void tst_RadarSim::vehiclesFollowTheConfiguredRoad()
{
    QMap<int, QPolygonF> lanes;
    RoadBuilder builder;
    connect(&builder, &RoadBuilder::laneCenterLines, this,
            [&lanes](const QMap<int, QPolygonF>& l) { lanes = l; });
    QFile road(m_dir.filePath("road.json"));
    QVERIFY(road.open(QIODevice::ReadOnly));
    builder.setRoadConfig(QJsonDocument::fromJson(road.readAll()).object());
    QCOMPARE(lanes.size(), 6);

    IOrvexSerialConnectionClient* client = run("road").client();
    QTRY_COMPARE_WITH_TIMEOUT(client->radarState(), int(C::Working), 8000);
    int checked = 0;
    for (const Frame& frame : collectFrames(client, 20)) {
        for (const QVariantList& o : frame.objects) {
            const double vx = o[1].toDouble(), vy = o[2].toDouble();
            const QPointF p(o[3].toDouble(), o[4].toDouble());
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
            // Along the road (it turns by 18 degrees at most), at 25 to 130 km/h.
            const QString what = QVariant(o).toStringList().join(' '); // id vx vy x y length
            QVERIFY2(qAbs(vx) > 2 * qAbs(vy), qPrintable(what));
            QVERIFY2(std::hypot(vx, vy) >= 7.0 && std::hypot(vx, vy) <= 36.2, qPrintable(what));
            QVERIFY2(o[5].toDouble() >= 3.7 && o[5].toDouble() <= 18.1, qPrintable(what));
            ++checked;
        }
    }
    QVERIFY(checked > 100);
}

void tst_RadarSim::acknowledgementOptions_data()
{
    QTest::addColumn<QString>("simulator");
    QTest::addColumn<int>("busy"); // answers 255, asked again without using up a try
    QTest::addColumn<int>("error"); // of each of the five tries

    QTest::newRow("three busy answers, then an error code") << "busy then error" << 3 << 9;
    // No answer: each try times out after 900 ms.
    QTest::newRow("no acknowledgements") << "no acks" << 0 << -7;
}

void tst_RadarSim::acknowledgementOptions()
{
    QFETCH(QString, simulator);
    QFETCH(int, busy);
    QFETCH(int, error);
    IOrvexSerialConnectionClient* client = run(simulator).client();
    QTRY_COMPARE_WITH_TIMEOUT(client->radarState(), int(C::Working), 8000);
    QSignalSpy steps(client, &C::radarCommandStateChanged);
    QElapsedTimer clock;
    clock.start();
    client->sendCmdGetFrequencyIndex();
    const QList<QPair<int, int>> seen = commandSteps(steps, C::CmdGetFrequencyIndex, 8000);
    QCOMPARE(seen.count(qMakePair(int(C::InProgress), 255)), busy);
    QCOMPARE(seen.count(qMakePair(int(C::InProgress), error)), 4);
    QCOMPARE(seen.last(), qMakePair(int(C::Error), error));
    QVERIFY(error != C::ErrorTimedOut || clock.elapsed() >= 4800);
}

void tst_RadarSim::ignoredPingsMakeTheClientReconnect()
{
    // The first ping after 2 s goes unanswered; the next tick closes; 500 ms later the
    // client connects again, to be stalled again.
    Run& r = run("ignore pings");
    QTRY_VERIFY_WITH_TIMEOUT(r.disconnected->count() >= 1, 8000);
    QTRY_VERIFY_WITH_TIMEOUT(r.connected->count() >= 2, 3000);
    QCOMPARE(r.latency->count(), 0);
}

QTEST_GUILESS_MAIN(tst_RadarSim)
#include "tst_radarsim.moc"
