#include "lanecounter.h"
#include "lanestatistics.h"
#include "roadobject.h"

#include <QJsonArray>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

// Two lanes each way (centres at Y = -6.75, -3.25, 3.25, 6.75) beside a 3 m median
// strip, 2.5 m roadsides, straight for 300 m; or curving left with a radius of 100 m.
QJsonObject road(bool curved = false, double originOffset = 0)
{
    const QJsonObject lane{{"width", 3.5}, {"is_lane", true}};
    const QJsonObject roadside{{"width", 2.5}, {"is_lane", false}};
    const QJsonObject section
        = curved ? QJsonObject{{"is_curved", true}, {"length", 150.0}, {"radius", 100.0}}
                 : QJsonObject{{"length", 300.0}};
    return QJsonObject{{"origin_offset", originOffset},
                       {"parts", QJsonObject{{"0", QJsonObject{{"width", 3.0}}},
                                             {"1", lane},
                                             {"2", lane},
                                             {"3", roadside},
                                             {"-1", lane},
                                             {"-2", lane},
                                             {"-3", roadside}}},
                       {"sections", QJsonArray{section}}};
}

const qint64 StartMs = QDateTime(QDate(2026, 3, 2), QTime(8, 0), Qt::UTC).toMSecsSinceEpoch();
constexpr qint64 FrameMs = 100;

// One vehicle as the radar reports it under one id: through key points (time in ms,
// X, Y, length), straight from one to the next; with stretches where its id is
// missing from the frames or where the client only repeats the last report. Two
// vehicles with one id follow each other: the radar handed the id on.
struct Vehicle
{
    struct Key
    {
        qint64 ms;
        double x, y, length;
    };
    quint8 id = 0;
    QVector<Key> keys;
    // "missing": the id is not in the frames; "stale": the client repeats the last
    // report; "broken": X is no number.
    QHash<QString, QPair<qint64, qint64>> stretches;

    // "ID: MS X Y [LENGTH], MS X Y [LENGTH] ...[; missing|stale|broken FROM-TO]..."
    static Vehicle parse(const QString& text)
    {
        Vehicle v;
        const QStringList parts = text.split(';');
        v.id = quint8(parts[0].section(':', 0, 0).toInt());
        for (const QString& key : parts[0].section(':', 1).split(',')) {
            const QStringList n = key.simplified().split(' ');
            v.keys.append({n[0].toLongLong(), n[1].toDouble(), n[2].toDouble(),
                           n.value(3, "4.5").toDouble()});
        }
        for (const QString& extra : parts.mid(1)) {
            const QStringList words = extra.simplified().split(QRegularExpression("[ -]"));
            v.stretches.insert(words[0], {words[1].toLongLong(), words[2].toLongLong()});
        }
        return v;
    }
    bool presentAt(qint64 ms) const
    {
        return ms >= keys.first().ms && ms <= keys.last().ms && !in("missing", ms);
    }
    bool in(const QString& stretch, qint64 ms) const
    {
        const QPair<qint64, qint64> range = stretches.value(stretch, {-1, -1});
        return ms >= range.first && ms <= range.second;
    }
    // Position, velocity and length at a time; the velocity of the stretch it starts.
    RoadObject at(qint64 ms) const
    {
        int i = 0;
        while (i + 2 < keys.size() && ms >= keys[i + 1].ms)
            ++i;
        const Key& a = keys[i];
        const Key& b = keys[i + 1];
        const double share = double(ms - a.ms) / double(b.ms - a.ms);
        const double seconds = (b.ms - a.ms) / 1000.0;
        RoadObject o;
        o.id = id;
        o.xRange = a.x + share * (b.x - a.x);
        o.yRange = a.y + share * (b.y - a.y);
        o.xSpeed = (b.x - a.x) / seconds;
        o.ySpeed = (b.y - a.y) / seconds;
        o.length = a.length + share * (b.length - a.length);
        o.lastDetected = QDateTime::fromMSecsSinceEpoch(StartMs + ms, Qt::UTC);
        return o;
    }
};

QString describe(const VehicleCrossing& c)
{
    return QStringLiteral("%1 %2 %3ms %4km/h %5m")
        .arg(c.lane)
        .arg(c.direction == VehicleCrossing::Receding ? "receding" : "approaching")
        .arg(c.timeMs - StartMs)
        .arg(RoadObject::kmh(c.speed), 0, 'f', 1)
        .arg(c.length, 0, 'f', 1);
}

// Feeds the counter frame by frame, 10 a second, as the radar client does.
QStringList countVehicles(const QStringList& drives, double line = 50.0)
{
    QVector<Vehicle> vehicles;
    qint64 endMs = 0;
    for (const QString& drive : drives) {
        vehicles.append(Vehicle::parse(drive));
        endMs = qMax(endMs, vehicles.last().keys.last().ms);
    }
    std::stable_sort(vehicles.begin(), vehicles.end(),
                     [](const Vehicle& a, const Vehicle& b) { return a.id < b.id; });

    DetectionLine detectionLine;
    detectionLine.setRoad(road(), line);
    LaneCounter counter;
    counter.setDetectionLine(detectionLine);
    QStringList counted;
    QObject::connect(&counter, &LaneCounter::vehicleCounted,
                     [&counted](const VehicleCrossing& c) { counted << describe(c); });
    QHash<quint8, RoadObject> lastReport;
    for (qint64 ms = 0; ms <= endMs; ms += FrameMs) {
        counter.startFilling();
        counter.setFrameDateTimeUtc(QDateTime::fromMSecsSinceEpoch(StartMs + ms, Qt::UTC));
        for (const Vehicle& v : qAsConst(vehicles)) {
            if (!v.presentAt(ms))
                continue;
            const bool stale = v.in("stale", ms) && lastReport.contains(v.id);
            RoadObject o = stale ? lastReport.value(v.id) : v.at(ms);
            lastReport.insert(v.id, o);
            if (v.in("broken", ms))
                o.xRange = qInf();
            counter.addObject(o.id, o.xSpeed, o.ySpeed, o.xRange, o.yRange, o.length,
                              o.lastDetected);
        }
        counter.finishFilling();
    }
    // What was signalled is what the statistics hold.
    if (counter.statistics().crossings().size() != counted.size())
        counted << "statistics hold another number of vehicles";
    return counted;
}

QString number(double value, int decimals = 2)
{
    return std::isnan(value) ? QStringLiteral("-") : QString::number(value, 'f', decimals);
}

QString describe(const LaneStatistics::Figures& f)
{
    return QStringLiteral("count %1, mean %2, v50 %3, v85 %4, v95 %5, min %6, max %7, "
                          "headways %8 mean %9 min %10, long %11, observed %12")
        .arg(f.count)
        .arg(number(f.meanSpeed), number(f.v50), number(f.v85), number(f.v95), number(f.minSpeed),
             number(f.maxSpeed))
        .arg(f.headways)
        .arg(number(f.meanHeadway), number(f.minHeadway))
        .arg(f.longVehicles)
        .arg(number(f.observedSeconds, 1));
}

VehicleCrossing crossing(qint64 ms, int lane, int direction, double speed, double length)
{
    return {StartMs + ms, lane, direction, speed, length};
}

void frames(LaneStatistics& statistics, qint64 fromMs, qint64 toMs)
{
    for (qint64 ms = fromMs; ms <= toMs; ms += 100)
        statistics.addFrame(StartMs + ms);
}

// The rank-based definition: with the values in ascending order x(1) ... x(n), the
// value at rank r = 1 + share * (n - 1), linear between x(floor r) and x(floor r + 1).
double referencePercentile(QVector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    const double r = 1 + share * (values.size() - 1);
    const int k = int(r);
    if (k >= values.size())
        return values.last();
    return values[k - 1] + (r - k) * (values[k] - values[k - 1]);
}

constexpr int R = VehicleCrossing::Receding;
constexpr int A = VehicleCrossing::Approaching;

} // namespace

// Counting vehicles at a detection line from the radar's tracks, the line itself, and
// the figures per lane, direction and interval with the percentile they rest on.
class tst_LaneCounter : public QObject
{
    Q_OBJECT

private slots:
    void counting_data();
    void counting();
    void lineAcrossTheRoad_data();
    void lineAcrossTheRoad();
    void refusedLines();
    void percentile_data();
    void percentile();
    void figuresPerInterval();
    void watchedTime_data();
    void watchedTime();
};

void tst_LaneCounter::counting_data()
{
    QTest::addColumn<QStringList>("vehicles");
    QTest::addColumn<QStringList>("counted");

    QTest::newRow("crossing once, away from the radar")
        << QStringList{"1: 0 30 -3.25, 4000 70 -3.25"}
        << QStringList{"-1 receding 2000ms 36.0km/h 4.5m"};
    QTest::newRow("speed interpolated between the reports around the line")
        << QStringList{"4: 0 42.6 3.25, 1000 50.6 3.25, 2000 62.6 3.25"}
        << QStringList{"1 receding 925ms 32.4km/h 4.5m"};
    QTest::newRow("length: the longest reported up to the line")
        << QStringList{"5: 0 30 -3.25 4.0, 2000 50.2 -3.25 12.0, 3000 60.2 -3.25 5.0"}
        << QStringList{"-1 receding 1980ms 36.1km/h 12.0m"};
    QTest::newRow("stopping on the line: counted once when it moves on")
        << QStringList{"6: 0 45 -3.25, 1000 50 -3.25, 4000 50 -3.25, 5000 55 -3.25"}
        << QStringList{"-1 receding 4000ms 18.0km/h 4.5m"};
    QTest::newRow("standing on the line, reports jittering across it: counted once")
        << QStringList{"7: 0 45 -3.25, 1000 49.9 -3.25, 1100 50.1 -3.25, 1200 49.9 -3.25, "
                       "1300 50.1 -3.25, 1400 49.9 -3.25, 2400 59.9 -3.25"}
        << QStringList{"-1 receding 1050ms 0.0km/h 4.5m"};
    QTest::newRow("turning back before the line: not counted")
        << QStringList{"8: 0 40 -3.25, 1500 49 -3.25, 3000 40 -3.25"} << QStringList{};
    QTest::newRow("turning back after crossing: counted once, the way it first went")
        << QStringList{"9: 0 45 -3.25, 1000 55 -3.25, 2000 45 -3.25"}
        << QStringList{"-1 receding 500ms 36.0km/h 4.5m"};
    QTest::newRow("track that starts past the line and goes on: not counted")
        << QStringList{"10: 0 55 -3.25, 2000 75 -3.25"} << QStringList{};
    QTest::newRow("track that starts on the line: not seen crossing it")
        << QStringList{"12: 0 50 3.25, 2000 30 3.25"} << QStringList{};
    QTest::newRow("id reused after the track ended: two vehicles")
        << QStringList{"13: 0 40 -3.25, 3000 70 -3.25", "13: 4000 60 6.75, 6000 40 6.75"}
        << QStringList{"-1 receding 1000ms 36.0km/h 4.5m", "2 approaching 5000ms 36.0km/h 4.5m"};
    QTest::newRow("id reused at once by a vehicle past the line: not counted")
        << QStringList{"14: 0 40 -3.25, 900 49 -3.25", "14: 1000 62 -3.25, 2000 72 -3.25"}
        << QStringList{};
    QTest::newRow("id reused at once by a vehicle coming back over the line")
        << QStringList{"15: 0 40 -3.25, 900 49 -3.25", "15: 1000 62 6.75, 3000 42 6.75"}
        << QStringList{"2 approaching 2200ms 36.0km/h 4.5m"};
    QTest::newRow("radar misses the reports around the line: one vehicle, time kept")
        << QStringList{"16: 0 30 -6.75, 4000 70 -6.75; stale 1900-2200"}
        << QStringList{"-2 receding 2000ms 36.0km/h 4.5m"};
    QTest::newRow("id missing from a frame at the line: the track is lost, not counted")
        << QStringList{"17: 0 30 -6.75, 4000 70 -6.75; missing 2000-2000"} << QStringList{};
    QTest::newRow("report that is no number at the line: neither counted nor a break")
        << QStringList{"25: 0 30 -3.25, 4000 70 -3.25; broken 2000-2000"}
        << QStringList{"-1 receding 2000ms 36.0km/h 4.5m"};
    QTest::newRow("two vehicles in one frame: both counted")
        << QStringList{"18: 0 30 -3.25, 4000 70 -3.25", "19: 0 70 3.25, 2000 30 3.25"}
        << QStringList{"1 approaching 1000ms 72.0km/h 4.5m", "-1 receding 2000ms 36.0km/h 4.5m"};
    // Moving over from lane -1 to lane -2 (centres 3.5 m apart) while crossing at 1 s.
    QTest::newRow("lane change, just past the middle between the lanes: the new lane")
        << QStringList{"22: 0 40 -3.25, 2000 60 -6.95"}
        << QStringList{"-2 receding 1000ms 36.0km/h 4.5m"};
    QTest::newRow("lane change, just short of the middle: still the old lane")
        << QStringList{"23: 0 40 -3.25, 2000 60 -6.55"}
        << QStringList{"-1 receding 1000ms 36.0km/h 4.5m"};
    QTest::newRow("crossing on the roadside, off the lanes: not counted")
        << QStringList{"20: 0 30 -10, 4000 70 -10"} << QStringList{};
    QTest::newRow("crossing just outside the outer lane: taken for the outer lane")
        << QStringList{"21: 0 30 9.2, 4000 70 9.2"}
        << QStringList{"2 receding 2000ms 36.0km/h 4.5m"};
}

void tst_LaneCounter::counting()
{
    QFETCH(QStringList, vehicles);
    QTEST(countVehicles(vehicles), "counted");
}

void tst_LaneCounter::lineAcrossTheRoad_data()
{
    QTest::addColumn<bool>("curved");
    QTest::addColumn<double>("originOffset");
    QTest::addColumn<double>("distance");
    QTest::addColumn<QPointF>("origin");
    QTest::addColumn<double>("angle"); // of the road's direction at the line, degrees

    QTest::newRow("road moved sideways") << false << 4.0 << 120.5 << QPointF(120.5, 4) << 0.0;
    QTest::newRow("at the road's end") << false << 0.0 << 300.0 << QPointF(300, 0) << 0.0;
    // A left curve of radius 100 m around (0, 100): after s metres at angle s / 100.
    QTest::newRow("left curve, between two metres")
        << true << 0.0 << 78.6 << QPointF(100 * std::sin(0.786), 100 - 100 * std::cos(0.786))
        << qRadiansToDegrees(0.786);
}

void tst_LaneCounter::lineAcrossTheRoad()
{
    QFETCH(bool, curved);
    QFETCH(double, originOffset);
    QFETCH(double, distance);
    QFETCH(QPointF, origin);
    QFETCH(double, angle);

    DetectionLine line;
    QCOMPARE(line.setRoad(road(curved, originOffset), distance), DetectionLine::NoProblem);
    QVERIFY(std::hypot(line.origin().x() - origin.x(), line.origin().y() - origin.y()) < 0.01);
    QVERIFY(
        std::fabs(qRadiansToDegrees(std::atan2(line.direction().y(), line.direction().x())) - angle)
        < 0.05);
    // The lane centre lines meet the line where the lanes' middles are.
    const QVector<double> expected{-6.75, -3.25, 3.25, 6.75};
    QCOMPARE(line.lanes().size(), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QVERIFY2(std::fabs(line.lanes()[i].across - expected[i]) < 0.01,
                 qPrintable(QString::number(line.lanes()[i].across)));
    // A point 1.5 m left of lane 1's centre, 2 m past the line.
    const QPointF d = line.direction();
    const QPointF left(-d.y(), d.x());
    const QPointF p = line.origin() + left * 4.75 + d * 2.0;
    QVERIFY(std::fabs(line.along(p.x(), p.y()) - 2.0) < 1e-9);
    QCOMPARE(line.laneAt(line.across(p.x(), p.y())), 1);
}

void tst_LaneCounter::refusedLines()
{
    DetectionLine line;
    QJsonObject noLanes = road();
    noLanes["parts"] = QJsonObject{{"1", QJsonObject{{"width", 3.5}}}};
    QCOMPARE(line.setRoad(noLanes, 50.0), DetectionLine::NoLanes);
    QVERIFY(!line.isValid());
    QJsonObject noSections = road(); // lanes, but no road laid
    noSections.remove("sections");
    QCOMPARE(line.setRoad(noSections, 0.0), DetectionLine::NoRoad);
    QVERIFY(!line.isValid());
    for (double pastTheEnd : {300.5, qQNaN()}) {
        QCOMPARE(line.setRoad(road(), pastTheEnd), DetectionLine::OutsideRoad);
        QVERIFY(!line.isValid());
    }
}

void tst_LaneCounter::percentile_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("step"); // values are whole multiples of it

    QTest::newRow("a single vehicle") << 1 << 0.1;
    QTest::newRow("two vehicles") << 2 << 0.1;
    QTest::newRow("a busy minute, many equal speeds") << 40 << 0.5;
    QTest::newRow("speeds of any value") << 500 << 0.0;
}

void tst_LaneCounter::percentile()
{
    QFETCH(int, count);
    QFETCH(double, step);
    QRandomGenerator random{quint32(count)};
    for (int round = 0; round < 50; ++round) {
        QVector<double> speeds;
        for (int i = 0; i < count; ++i) {
            const double speed = 8 + random.generateDouble() * 30;
            speeds.append(step > 0 ? std::round(speed / step) * step : speed);
        }
        const double randomShare = random.generateDouble();
        for (double share : {0.0, 0.4, 0.5, 0.85, 0.95, 1.0, randomShare}) {
            QVector<double> values = speeds;
            const double value = LaneStatistics::percentile(values, share);
            const double reference = referencePercentile(speeds, share);
            QVERIFY2(std::fabs(value - reference) < 1e-9,
                     qPrintable(QStringLiteral("share %1: %2 instead of %3")
                                    .arg(share)
                                    .arg(value)
                                    .arg(reference)));
        }
    }
    // A share above 1 is taken as 1; no values have no percentile.
    QVector<double> two{2, 1};
    QCOMPARE(LaneStatistics::percentile(two, 1.5), 2.0);
    QVector<double> none;
    QVERIFY(std::isnan(LaneStatistics::percentile(none, 0.5)));
}

void tst_LaneCounter::figuresPerInterval()
{
    // Watched from 08:00:30 to 08:02:10.
    LaneStatistics statistics({1, -1});
    frames(statistics, 30000, 130000);
    statistics.addCrossing(crossing(40000, -1, R, 20, 4.5));
    statistics.addCrossing(crossing(45000, -1, A, 15, 4.0));
    statistics.addCrossing(crossing(50000, -1, R, 25, 7.0));
    statistics.addCrossing(crossing(52500, -1, R, 30, 4.0));
    statistics.addCrossing(crossing(65000, -1, R, 22, 12.0));
    statistics.addCrossing(crossing(70000, 1, A, 27, 5.0));
    statistics.addCrossing(crossing(74000, 1, A, 29, 6.0));

    const QVector<LaneStatistics::Row> rows = statistics.intervalRows();
    // Three minutes, two lanes in ascending number, receding before approaching.
    QCOMPARE(rows.size(), 3 * 2 * 2);
    for (int i = 0; i < rows.size(); ++i) {
        QCOMPARE(rows[i].startMs, StartMs + (i / 4) * 60000);
        QCOMPARE(rows[i].lane, i % 4 < 2 ? -1 : 1);
        QCOMPARE(rows[i].direction, i % 2 == 0 ? R : A);
    }
    // The first minute in lane -1, receding: three vehicles, headways within the minute.
    QCOMPARE(describe(rows[0].figures),
             QString("count 3, mean 25.00, v50 25.00, v85 28.50, v95 29.50, min 20.00, max 30.00, "
                     "headways 2 mean 6.25 min 2.50, long 1, observed 30.0"));
    // In lane 1, receding, no vehicle: a count of 0.
    QCOMPARE(describe(rows[2].figures),
             QString("count 0, mean -, v50 -, v85 -, v95 -, min -, max -, headways 0 mean - min -, "
                     "long 0, observed 30.0"));
    // The second minute in lane -1: a headway from the vehicle of the minute before.
    QCOMPARE(describe(rows[4].figures),
             QString("count 1, mean 22.00, v50 22.00, v85 22.00, v95 22.00, min 22.00, max 22.00, "
                     "headways 1 mean 12.50 min 12.50, long 1, observed 60.0"));
    // In lane 1, approaching: exactly 6 m is not a long vehicle.
    QCOMPARE(describe(rows[7].figures),
             QString("count 2, mean 28.00, v50 28.00, v85 28.70, v95 28.90, min 27.00, max 29.00, "
                     "headways 1 mean 4.00 min 4.00, long 0, observed 60.0"));
}

void tst_LaneCounter::watchedTime_data()
{
    QTest::addColumn<QVector<qint64>>("stretches"); // first and last message, seconds
    QTest::addColumn<QVector<qint64>>("vehicles"); // crossings in lane 1, receding, ms
    QTest::addColumn<QString>("expected"); // gaps, seconds watched, interval starts, headways

    QTest::newRow("radar away longer than a gap: no headway across it, no row for it")
        << QVector<qint64>{0, 10, 21, 25} << QVector<qint64>{5000, 22000, 23500}
        << "gaps 1, watched 14.0, intervals 0 5 20, headways 1";
    QTest::newRow("clock set back: both stretches count once, no headway between")
        << QVector<qint64>{10, 20, 5, 8} << QVector<qint64>{15000, 6000}
        << "gaps 1, watched 13.0, intervals 5 10 15, headways 0";
}

void tst_LaneCounter::watchedTime()
{
    QFETCH(QVector<qint64>, stretches);
    QFETCH(QVector<qint64>, vehicles);
    QFETCH(QString, expected);

    LaneStatistics statistics({1}, 5000);
    for (int i = 0; i + 1 < stretches.size(); i += 2)
        frames(statistics, stretches[i] * 1000, stretches[i + 1] * 1000);
    for (qint64 ms : vehicles)
        statistics.addCrossing(crossing(ms, 1, R, 20, 4));

    QStringList starts;
    int headways = 0;
    for (const LaneStatistics::Row& row : statistics.intervalRows()) {
        if (row.direction == R) {
            starts << QString::number((row.startMs - StartMs) / 1000);
            headways += row.figures.headways;
        }
    }
    QCOMPARE(QStringLiteral("gaps %1, watched %2, intervals %3, headways %4")
                 .arg(statistics.gapCount())
                 .arg(statistics.observedSeconds(), 0, 'f', 1)
                 .arg(starts.join(' '))
                 .arg(headways),
             expected);
}

QTEST_GUILESS_MAIN(tst_LaneCounter)
#include "tst_lanecounter.moc"
