#include "simoptions.h"
#include "simroad.h"
#include "simulatedtraffic.h"

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

// The simulator's own parts: its command line and the traffic it makes up.
class tst_SimulatedRadar : public QObject
{
    Q_OBJECT

private slots:
    void options_data();
    void options();
    void sameSeedSameTraffic();
    void idsAreUniqueAndReused();
    void roadFromFile_data();
    void roadFromFile();
    void groundTruthNotesEveryVehicleOnceAtTheLine();
};

void tst_SimulatedRadar::options_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("check"); // field=value after parsing; empty: refused

    QTest::newRow("defaults") << QStringList{} << "port=7578";
    QTest::newRow("hex self-test word") << QStringList{"--selftest", "0x2A"} << "selftest=42";
    QTest::newRow("header off") << QStringList{"--no-header"} << "header=0";
    QTest::newRow("seed above 2^31") << QStringList{"--seed", "4000000000"} << "seed=4000000000";
    QTest::newRow("variant 2 does not exist") << QStringList{"--variant", "2"} << "";
    QTest::newRow("error code 255 is busy, not an error")
        << QStringList{"--error-ack", "255"} << "";
    QTest::newRow("error code 0 is success") << QStringList{"--error-ack", "0"} << "";
    QTest::newRow("more vehicles than ids") << QStringList{"--vehicles", "61"} << "";
    QTest::newRow("unknown option") << QStringList{"--fast"} << "";
    QTest::newRow("stray argument") << QStringList{"extra"} << "";
    QTest::newRow("time ten times as fast") << QStringList{"--time-scale", "10"} << "timescale=10";
    QTest::newRow("time standing still") << QStringList{"--time-scale", "0"} << "";
    QTest::newRow("ground truth at a line of its own")
        << QStringList{"--truth", "t.csv", "--line", "120.5"} << "line=120.5";
    QTest::newRow("line without ground truth") << QStringList{"--line", "40"} << "";
    QTest::newRow("line not a number") << QStringList{"--truth", "t.csv", "--line", "far"} << "";
    QTest::newRow("ground truth of a replay")
        << QStringList{"--truth", "t.csv", "--replay", "r.orvrec"} << "";
    QTest::newRow("time scale of a relay")
        << QStringList{"--time-scale", "2", "--proxy", "ws://127.0.0.1:1/"} << "";
    QTest::newRow("replay speed below 0.1")
        << QStringList{"--replay", "r", "--speed", "0.05"} << "";
    QTest::newRow("replay to before from")
        << QStringList{"--replay", "r", "--from", "2", "--to", "1"} << "";
    QTest::newRow("loop without replay") << QStringList{"--loop"} << "";
    QTest::newRow("replay and relay at once")
        << QStringList{"--replay", "r", "--proxy", "ws://127.0.0.1:1/"} << "";
    QTest::newRow("relay to a web page") << QStringList{"--proxy", "http://127.0.0.1:1/"} << "";
}

void tst_SimulatedRadar::options()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, check);
    SimOptions options;
    QString error;
    bool exitNow = true;
    const bool ok
        = SimOptions::parse(QStringList{"orvex-radar-sim"} + arguments, options, error, exitNow);
    QCOMPARE(ok, !check.isEmpty());
    QCOMPARE(error.isEmpty(), ok);
    QVERIFY(!exitNow);
    const QMap<QString, QString> fields{{"port", QString::number(options.port)},
                                        {"selftest", QString::number(options.selfTestWord)},
                                        {"header", QString::number(options.timeStampHeader)},
                                        {"seed", QString::number(options.seed)},
                                        {"timescale", QString::number(options.timeScale)},
                                        {"line", QString::number(options.truthLine)}};
    if (ok)
        QCOMPARE(fields.value(check.section('=', 0, 0)), check.section('=', 1));
}

void tst_SimulatedRadar::sameSeedSameTraffic()
{
    const QMap<int, QPolygonF> lanes = SimRoad::laneCentres(SimRoad::defaultConfig());
    QCOMPARE(lanes.keys(), (QList<int>{-2, -1, 1, 2}));
    auto snapshot = [&lanes](quint32 seed) {
        SimulatedTraffic traffic(lanes, 8, seed);
        QString text;
        for (int i = 0; i < 50; ++i) {
            traffic.step(0.1);
            for (const SimulatedTraffic::Object& o : traffic.reportedObjects())
                text += QString("%1:%2,%3 ")
                            .arg(o.id)
                            .arg(o.xRange, 0, 'f', 3)
                            .arg(o.yRange, 0, 'f', 3);
            text += '\n';
        }
        return text;
    };
    const QString first = snapshot(5);
    QCOMPARE(snapshot(5), first);
    QVERIFY(snapshot(6) != first);
    QVERIFY(first.count(':') > 50 * 4);
}

void tst_SimulatedRadar::idsAreUniqueAndReused()
{
    SimulatedTraffic traffic(SimRoad::laneCentres(SimRoad::defaultConfig()), 10, 3);
    QHash<int, double> lengthOfId;
    int reused = 0;
    // Ten simulated minutes: every vehicle crosses the 300 m road many times.
    for (int i = 0; i < 6000; ++i) {
        traffic.step(0.1);
        QSet<int> ids;
        for (const SimulatedTraffic::Object& o : traffic.reportedObjects()) {
            QVERIFY2(!ids.contains(o.id), "two vehicles with one id in one cycle");
            ids.insert(o.id);
            QVERIFY(o.id <= SimulatedTraffic::MaxTrafficId);
            QVERIFY(o.xRange >= 0 && o.xRange <= SimulatedTraffic::RadarRange);
            reused += lengthOfId.contains(o.id) && lengthOfId.value(o.id) != o.length;
            lengthOfId.insert(o.id, o.length);
        }
    }
    QCOMPARE(lengthOfId.size(), SimulatedTraffic::MaxTrafficId + 1); // all ids came round
    QVERIFY(reused > 50);
}

void tst_SimulatedRadar::roadFromFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("lanes"); // -1: refused

    const QByteArray road = R"({"parts": {"1": {"width": 3.5, "is_lane": true},
        "-1": {"width": 3.5, "is_lane": true}, "-2": {"width": 3.5, "is_lane": true}},
        "sections": [{"length": 100}]})";
    QTest::newRow("a road configuration") << road << 3;
    QTest::newRow("a settings file: the current profile's road")
        << R"({"current_id": 1, "profiles": [{}, {"view": {"traffic_scheme": {"road_config": )"
               + road + "}}}]}"
        << 3;
    QTest::newRow("a settings file without a road") << QByteArray(R"({"profiles": [{}]})") << 0;
    QTest::newRow("not JSON") << QByteArray("road: straight") << -1;
}

void tst_SimulatedRadar::roadFromFile()
{
    QFETCH(QByteArray, content);
    QFETCH(int, lanes);
    QTemporaryDir dir;
    QFile file(dir.filePath("road.json"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    QJsonObject config;
    QString error;
    QCOMPARE(SimRoad::load(file.fileName(), config, error), lanes >= 0);
    QCOMPARE(error.isEmpty(), lanes >= 0);
    QCOMPARE(SimRoad::laneCentres(config).size(), qMax(lanes, 0));
    QVERIFY(!SimRoad::load(dir.filePath("missing.json"), config, error));
    // A road without lanes has no traffic.
    SimulatedTraffic traffic(SimRoad::laneCentres(config), 8, 1);
    traffic.step(0.1);
    QCOMPARE(traffic.reportedObjects().isEmpty(), lanes <= 0);
}

void tst_SimulatedRadar::groundTruthNotesEveryVehicleOnceAtTheLine()
{
    const QJsonObject road = SimRoad::defaultConfig();
    DetectionLine line;
    QCOMPARE(line.setRoad(road, 50), DetectionLine::NoProblem);
    SimulatedTraffic traffic(SimRoad::laneCentres(road), 20, 9);
    traffic.setDetectionLine(line);
    QHash<int, double> lastPassage; // id -> time
    int passages = 0;
    // Five simulated minutes.
    for (int i = 0; i < 3000; ++i) {
        traffic.step(0.1);
        QHash<int, SimulatedTraffic::Object> reported;
        for (const SimulatedTraffic::Object& o : traffic.reportedObjects())
            reported.insert(o.id, o);
        for (const SimulatedTraffic::Passage& p : traffic.passages()) {
            ++passages;
            QVERIFY(p.time > traffic.time() - 0.1 - 1e-9 && p.time <= traffic.time() + 1e-9);
            // Lanes right of the axis carry traffic away from the radar.
            QCOMPARE(p.direction, p.lane < 0 ? 1 : -1);
            QVERIFY(p.speed > 0 && p.speed < 131 / 3.6);
            // A vehicle passes once; its id comes back only with a later vehicle.
            QVERIFY(!lastPassage.contains(p.id) || p.time - lastPassage.value(p.id) > 5);
            lastPassage.insert(p.id, p.time);
            // What the radar reports of it is past the line now, in its lane.
            if (reported.contains(p.id)) {
                const SimulatedTraffic::Object o = reported.value(p.id);
                QVERIFY(line.along(o.xRange, o.yRange) * p.direction >= 0);
                QCOMPARE(line.laneAt(line.across(o.xRange, o.yRange)), p.lane);
            }
        }
    }
    QVERIFY2(passages > 300, qPrintable(QString::number(passages)));
}

QTEST_GUILESS_MAIN(tst_SimulatedRadar)
#include "tst_simulatedradar.moc"
