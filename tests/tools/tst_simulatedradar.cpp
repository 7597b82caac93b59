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
    void roadWithoutLanesHasNoTraffic();
    void groundTruthNotesEveryVehicleOnceAtTheLine();
    void roadFromFile_data();
    void roadFromFile();
};

void tst_SimulatedRadar::options_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("check"); // field=value after parsing

    QTest::newRow("defaults") << QStringList{} << true << "port=7578";
    QTest::newRow("hex self-test word")
        << QStringList{"--selftest", "0x2A"} << true << "selftest=42";
    QTest::newRow("port 0 picks a free one") << QStringList{"--port", "0"} << true << "port=0";
    QTest::newRow("variant 2 does not exist") << QStringList{"--variant", "2"} << false << "";
    QTest::newRow("error code 255 is busy, not an error")
        << QStringList{"--error-ack", "255"} << false << "";
    QTest::newRow("error code 0 is success") << QStringList{"--error-ack", "0"} << false << "";
    QTest::newRow("rate of zero") << QStringList{"--rate", "0"} << false << "";
    QTest::newRow("negative silence") << QStringList{"--silence-after", "-1"} << false << "";
    QTest::newRow("more vehicles than ids") << QStringList{"--vehicles", "61"} << false << "";
    QTest::newRow("port out of range") << QStringList{"--port", "70000"} << false << "";
    QTest::newRow("unknown option") << QStringList{"--fast"} << false << "";
    QTest::newRow("stray argument") << QStringList{"extra"} << false << "";
    QTest::newRow("header off") << QStringList{"--no-header"} << true << "header=0";
    QTest::newRow("seed given") << QStringList{"--seed", "4000000000"} << true << "seed=4000000000";
    QTest::newRow("time ten times as fast")
        << QStringList{"--time-scale", "10"} << true << "timescale=10";
    QTest::newRow("time standing still") << QStringList{"--time-scale", "0"} << false << "";
    QTest::newRow("ground truth at a line of its own")
        << QStringList{"--truth", "t.csv", "--line", "120.5"} << true << "line=120.5";
    QTest::newRow("line without ground truth") << QStringList{"--line", "40"} << false << "";
    QTest::newRow("line not a number")
        << QStringList{"--truth", "t.csv", "--line", "far"} << false << "";
    QTest::newRow("ground truth of a replay")
        << QStringList{"--truth", "t.csv", "--replay", "r.orvrec"} << false << "";
    QTest::newRow("time scale of a relay")
        << QStringList{"--time-scale", "2", "--proxy", "ws://127.0.0.1:1/"} << false << "";
}

void tst_SimulatedRadar::options()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, ok);
    QFETCH(QString, check);

    SimOptions options;
    QString error;
    bool exitNow = true;
    QCOMPARE(SimOptions::parse(QStringList{"orvex-radar-sim"} + arguments, options, error, exitNow),
             ok);
    QCOMPARE(error.isEmpty(), ok);
    QVERIFY(!exitNow);
    if (!ok)
        return;
    const QMap<QString, QString> fields{{"port", QString::number(options.port)},
                                        {"selftest", QString::number(options.selfTestWord)},
                                        {"header", QString::number(options.timeStampHeader)},
                                        {"seed", QString::number(options.seed)},
                                        {"timescale", QString::number(options.timeScale)},
                                        {"line", QString::number(options.truthLine)}};
    QCOMPARE(fields.value(check.section('=', 0, 0)), check.section('=', 1));
}

static QString snapshot(SimulatedTraffic& traffic, int steps)
{
    QString text;
    for (int i = 0; i < steps; ++i) {
        traffic.step(0.1);
        for (const SimulatedTraffic::Object& o : traffic.reportedObjects())
            text
                += QString("%1:%2,%3 ").arg(o.id).arg(o.xRange, 0, 'f', 3).arg(o.yRange, 0, 'f', 3);
        text += '\n';
    }
    return text;
}

void tst_SimulatedRadar::sameSeedSameTraffic()
{
    const QMap<int, QPolygonF> lanes = SimRoad::laneCentres(SimRoad::defaultConfig());
    QCOMPARE(lanes.keys(), (QList<int>{-2, -1, 1, 2}));
    SimulatedTraffic a(lanes, 8, 5);
    SimulatedTraffic b(lanes, 8, 5);
    SimulatedTraffic c(lanes, 8, 6);
    const QString first = snapshot(a, 50);
    QCOMPARE(snapshot(b, 50), first);
    QVERIFY(snapshot(c, 50) != first);
    QVERIFY(first.count(':') > 50 * 4);
}

void tst_SimulatedRadar::idsAreUniqueAndReused()
{
    const QMap<int, QPolygonF> lanes = SimRoad::laneCentres(SimRoad::defaultConfig());
    SimulatedTraffic traffic(lanes, 10, 3);
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
            if (lengthOfId.contains(o.id) && lengthOfId.value(o.id) != o.length)
                ++reused;
            lengthOfId.insert(o.id, o.length);
        }
    }
    QCOMPARE(lengthOfId.size(), SimulatedTraffic::MaxTrafficId + 1); // all ids came round
    QVERIFY(reused > 50);
    QCOMPARE(traffic.vehicleCount(), 10);
}

void tst_SimulatedRadar::roadWithoutLanesHasNoTraffic()
{
    SimulatedTraffic traffic(SimRoad::laneCentres(QJsonObject()), 8, 1);
    traffic.step(0.1);
    QCOMPARE(traffic.laneCount(), 0);
    QVERIFY(traffic.reportedObjects().isEmpty());
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

void tst_SimulatedRadar::roadFromFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("lanes");

    const QByteArray road = R"({"parts": {"1": {"width": 3.5, "is_lane": true},
        "-1": {"width": 3.5, "is_lane": true}, "-2": {"width": 3.5, "is_lane": true}},
        "sections": [{"length": 100}]})";
    QTest::newRow("a road configuration") << road << true << 3;
    QTest::newRow("a settings file: the current profile's road")
        << QByteArray(
               R"({"current_id": 1, "profiles": [{}, {"view": {"traffic_scheme": {"road_config": )")
               + road + "}}}]}"
        << true << 3;
    QTest::newRow("a settings file without a road")
        << QByteArray(R"({"profiles": [{}]})") << true << 0;
    QTest::newRow("not JSON") << QByteArray("road: straight") << false << 0;
}

void tst_SimulatedRadar::roadFromFile()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, ok);
    QFETCH(int, lanes);
    QTemporaryDir dir;
    QFile file(dir.filePath("road.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();

    QJsonObject config;
    QString error;
    QCOMPARE(SimRoad::load(file.fileName(), config, error), ok);
    QCOMPARE(error.isEmpty(), ok);
    QCOMPARE(SimRoad::laneCentres(config).size(), lanes);
    QVERIFY(!SimRoad::load(dir.filePath("missing.json"), config, error));
}

QTEST_GUILESS_MAIN(tst_SimulatedRadar)
#include "tst_simulatedradar.moc"
