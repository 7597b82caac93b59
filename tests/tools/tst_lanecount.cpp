#include "roadobject.h"
#include "simroad.h"
#include "simulatorprocess.h"
#include "variantids.h"

#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using C = IOrvexClient;

namespace {

// Ten minutes of traffic, simulated ten times as fast as the clock runs.
constexpr double SimulatedSeconds = 600;
constexpr int TimeScale = 10;
constexpr double CountTolerance = 0.02;
// The counter takes its speeds between two reports of the radar, which gives them in
// 0.1 m/s steps; the simulator knows them exactly.
constexpr double MeanSpeedToleranceKmh = 1.0;

struct Cell
{
    int count = 0;
    double speedSum = 0;
};
using Cells = QMap<QPair<int, QString>, Cell>; // (lane, direction)

// The simulator's vehicles that passed the line between these times.
Cells truthBetween(const QString& path, qint64 fromMs, qint64 toMs)
{
    Cells cells;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return cells;
    file.readLine(); // the column names
    while (!file.atEnd()) {
        const QStringList f = QString::fromUtf8(file.readLine().trimmed()).split(',');
        if (f.size() < 6 || f[0].toLongLong() < fromMs || f[0].toLongLong() > toMs)
            continue;
        Cell& cell = cells[{f[2].toInt(), f[3]}];
        ++cell.count;
        cell.speedSum += RoadObject::kmh(f[4].toDouble());
    }
    return cells;
}

// The inspector's CSV rows summed over the intervals.
Cells inspectorTotals(const QByteArray& csv)
{
    Cells cells;
    const QList<QByteArray> lines = csv.split('\n');
    for (const QByteArray& line : lines.mid(1)) {
        const QStringList f = QString::fromUtf8(line).split(',');
        if (f.size() < 17)
            continue;
        Cell& cell = cells[{f[3].toInt(), f[4]}];
        const int count = f[5].toInt();
        cell.count += count;
        cell.speedSum += count * f[6].toDouble();
    }
    return cells;
}

QString compare(const Cells& counted, const Cells& truth)
{
    QStringList faults;
    QSet<QPair<int, QString>> keys;
    for (auto it = truth.cbegin(); it != truth.cend(); ++it)
        keys.insert(it.key());
    for (auto it = counted.cbegin(); it != counted.cend(); ++it) {
        if (it->count > 0)
            keys.insert(it.key());
    }
    for (const auto& key : qAsConst(keys)) {
        const Cell c = counted.value(key);
        const Cell t = truth.value(key);
        const QString where = QStringLiteral("lane %1 %2").arg(key.first).arg(key.second);
        if (std::abs(c.count - t.count) > CountTolerance * t.count) {
            faults
                << QStringLiteral("%1: %2 counted, %3 passed").arg(where).arg(c.count).arg(t.count);
            continue;
        }
        const double countedMean = c.speedSum / c.count;
        const double truthMean = t.speedSum / t.count;
        if (std::fabs(countedMean - truthMean) > MeanSpeedToleranceKmh) {
            faults << QStringLiteral("%1: mean %2 km/h, %3 km/h in truth")
                          .arg(where)
                          .arg(countedMean, 0, 'f', 2)
                          .arg(truthMean, 0, 'f', 2);
        }
    }
    return faults.join("; ");
}

} // namespace

// Counting the simulator's traffic per lane from a recording through the inspector,
// against the simulator's own ground truth; and the inspector's lane options. (The
// counter itself and the client that would feed it live have suites of their own.)
class tst_LaneCount : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void countsMatchTheGroundTruth();
    void refusedOptions_data();
    void refusedOptions();

private:
    QByteArray inspect(const QStringList& arguments, int* exitCode = nullptr,
                       QByteArray* errors = nullptr);

    QTemporaryDir m_dir;
    QString m_road;
    QString m_recording;
    QString m_truth;
};

QByteArray tst_LaneCount::inspect(const QStringList& arguments, int* exitCode, QByteArray* errors)
{
    QProcess inspector;
    inspector.start(QStringLiteral(ORVEX_RADAR_INSPECT), arguments);
    inspector.waitForFinished(60000);
    if (exitCode)
        *exitCode = inspector.exitCode();
    if (errors)
        *errors = inspector.readAllStandardError();
    return inspector.readAllStandardOutput();
}

void tst_LaneCount::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // The simulator's own road, as the application's "road_config" object.
    m_road = m_dir.filePath("road.json");
    QFile road(m_road);
    QVERIFY(road.open(QIODevice::WriteOnly));
    road.write(QJsonDocument(SimRoad::defaultConfig()).toJson());
    road.close();
    m_recording = m_dir.filePath("traffic.orvrec");
    m_truth = m_dir.filePath("truth.csv");

    SimulatorProcess sim({"--seed", "18", "--vehicles", "40", "--time-scale",
                          QString::number(TimeScale), "--truth", m_truth, "--record", m_recording,
                          "--quiet"});
    QVERIFY(sim.start());

    // The simulator sends, and records, while a client is connected: ten simulated
    // minutes by the radar's own clock.
    const std::unique_ptr<IOrvexSerialConnectionClient> client = VariantIds::makeClient(0);
    QDateTime first, last;
    QObject ctx;
    connect(client.get(), &C::frameDateTimeUtc, &ctx, [&](const QDateTime& time) {
        first = first.isValid() ? first : time;
        last = time;
    });
    client->connectToServer(sim.url(), 500);
    QTRY_VERIFY_WITH_TIMEOUT(first.isValid() && first.secsTo(last) >= SimulatedSeconds,
                             int(SimulatedSeconds / TimeScale * 2000));
    client->disconnectFromServer();
    sim.process().terminate();
    QVERIFY(sim.process().waitForFinished(10000));
}

void tst_LaneCount::countsMatchTheGroundTruth()
{
    const QByteArray text = inspect({m_recording, "--lanes", m_road});
    QVERIFY2(!text.contains("gaps of over"), text.constData());
    const Cells counted = inspectorTotals(inspect({m_recording, "--lanes", m_road, "--csv"}));
    int total = 0;
    for (const Cell& cell : counted)
        total += cell.count;
    QVERIFY2(text.contains("vehicles counted: " + QByteArray::number(total)), text.constData());

    // The recording holds what the client was sent; a vehicle passing while it was still
    // connecting was never seen.
    const QRegularExpressionMatch watched
        = QRegularExpression("watched: (\\S+) to (\\S+),").match(QString::fromUtf8(text));
    QVERIFY2(watched.hasMatch(), text.constData());
    auto ms = [&watched](int n) {
        return QDateTime::fromString(watched.captured(n), Qt::ISODateWithMs).toMSecsSinceEpoch();
    };
    const Cells truth = truthBetween(m_truth, ms(1), ms(2));
    int vehicles = 0;
    for (const Cell& cell : truth)
        vehicles += cell.count;
    QVERIFY2(vehicles > 800, qPrintable(QString::number(vehicles)));
    QCOMPARE(truth.size(), 4); // the four lanes, each its own direction
    const QString faults = compare(counted, truth);
    QVERIFY2(faults.isEmpty(), qPrintable(faults));
}

void tst_LaneCount::refusedOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");

    const QString noLanes = m_dir.filePath("nolanes.json");
    QFile file(noLanes);
    if (file.open(QIODevice::WriteOnly))
        file.write(R"({"parts": {"1": {"width": 3.5}}, "sections": [{"length": 100}]})");
    file.close();

    QTest::newRow("--line without --lanes") << QStringList{"--line", "40"} << "go with --lanes";
    QTest::newRow("road without lanes") << QStringList{"--lanes", noLanes} << "has no lanes";
    QTest::newRow("line past the road's end")
        << QStringList{"--lanes", "ROAD", "--line", "300.5"} << "runs from 0 to 300 m";
    QTest::newRow("interval of no time")
        << QStringList{"--lanes", "ROAD", "--interval", "0"} << "--interval wants";
    QTest::newRow("settings file missing")
        << QStringList{"--lanes", "/nonexistent/settings.json"} << "cannot read";
}

void tst_LaneCount::refusedOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    arguments.replaceInStrings("ROAD", m_road);
    int exitCode = 0;
    QByteArray errors;
    const QByteArray out = inspect(QStringList{m_recording} + arguments, &exitCode, &errors);
    QCOMPARE(exitCode, 2);
    QVERIFY(out.isEmpty());
    QVERIFY2(errors.contains(reason.toUtf8()), errors.constData());
}

QTEST_GUILESS_MAIN(tst_LaneCount)
#include "tst_lanecount.moc"
