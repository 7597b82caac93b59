#include "lanestatistics.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

const qint64 TenOClock = QDateTime(QDate(2026, 3, 2), QTime(10, 0), Qt::UTC).toMSecsSinceEpoch();

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
    return {TenOClock + ms, lane, direction, speed, length};
}

void frames(LaneStatistics& statistics, qint64 fromMs, qint64 toMs)
{
    for (qint64 ms = fromMs; ms <= toMs; ms += 100)
        statistics.addFrame(TenOClock + ms);
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

// The figures per lane, direction and interval, and the percentile they rest on.
class tst_LaneStatistics : public QObject
{
    Q_OBJECT

private slots:
    void percentile_data();
    void percentile();
    void percentileMatchesTheReference_data();
    void percentileMatchesTheReference();
    void figuresPerInterval_data();
    void figuresPerInterval();
    void watchedTime_data();
    void watchedTime();
};

void tst_LaneStatistics::percentile_data()
{
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<double>("share");
    QTest::addColumn<double>("expected");

    QTest::newRow("single value") << QVector<double>{42} << 0.85 << 42.0;
    QTest::newRow("median of an odd count") << QVector<double>{50, 15, 40, 20, 35} << 0.5 << 35.0;
    QTest::newRow("between two ranks") << QVector<double>{15, 20, 35, 40, 50} << 0.4 << 29.0;
    QTest::newRow("V85 of four values") << QVector<double>{4, 1, 3, 2} << 0.85 << 3.55;
    QTest::newRow("equal values") << QVector<double>{5, 5, 5, 5} << 0.95 << 5.0;
    QTest::newRow("share above 1 taken as 1") << QVector<double>{1, 2} << 1.5 << 2.0;
    QTest::newRow("no values") << QVector<double>{} << 0.5 << qQNaN();
}

void tst_LaneStatistics::percentile()
{
    QFETCH(QVector<double>, values);
    QFETCH(double, share);
    QFETCH(double, expected);
    const double value = LaneStatistics::percentile(values, share);
    QVERIFY2(std::isnan(expected) ? std::isnan(value) : std::fabs(value - expected) < 1e-12,
             qPrintable(QString::number(value)));
}

void tst_LaneStatistics::percentileMatchesTheReference_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("step"); // values are whole multiples of it

    QTest::newRow("two vehicles") << 2 << 0.1;
    QTest::newRow("a busy minute") << 40 << 0.1;
    QTest::newRow("speeds of any value") << 500 << 0.0;
}

void tst_LaneStatistics::percentileMatchesTheReference()
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
        for (double share : {0.5, 0.85, 0.95, randomShare}) {
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
}

void tst_LaneStatistics::figuresPerInterval_data()
{
    QTest::addColumn<int>("minute"); // after 10:00
    QTest::addColumn<int>("lane");
    QTest::addColumn<int>("direction");
    QTest::addColumn<QString>("figures");

    // Watched from 10:00:30 to 10:02:10; vehicles as set up in figuresPerInterval().
    QTest::newRow("three vehicles, headways within the minute")
        << 0 << -1 << R
        << "count 3, mean 25.00, v50 25.00, v85 28.50, v95 29.50, min 20.00, max 30.00, "
           "headways 2 mean 6.25 min 2.50, long 1, observed 30.0";
    QTest::newRow("no vehicle: a count of 0")
        << 0 << 1 << R
        << "count 0, mean -, v50 -, v85 -, v95 -, min -, max -, headways 0 mean - min -, "
           "long 0, observed 30.0";
    QTest::newRow("headway from the vehicle of the minute before")
        << 1 << -1 << R
        << "count 1, mean 22.00, v50 22.00, v85 22.00, v95 22.00, min 22.00, max 22.00, "
           "headways 1 mean 12.50 min 12.50, long 1, observed 60.0";
    QTest::newRow("exactly 6 m is not a long vehicle")
        << 1 << 1 << A
        << "count 2, mean 28.00, v50 28.00, v85 28.70, v95 28.90, min 27.00, max 29.00, "
           "headways 1 mean 4.00 min 4.00, long 0, observed 60.0";
}

void tst_LaneStatistics::figuresPerInterval()
{
    QFETCH(int, minute);
    QFETCH(int, lane);
    QFETCH(int, direction);
    QFETCH(QString, figures);

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
        QCOMPARE(rows[i].startMs, TenOClock + (i / 4) * 60000);
        QCOMPARE(rows[i].lane, i % 4 < 2 ? -1 : 1);
        QCOMPARE(rows[i].direction, i % 2 == 0 ? R : A);
    }
    const int index = minute * 4 + (lane == -1 ? 0 : 2) + (direction == R ? 0 : 1);
    QCOMPARE(describe(rows[index].figures), figures);
}

void tst_LaneStatistics::watchedTime_data()
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

void tst_LaneStatistics::watchedTime()
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
            starts << QString::number((row.startMs - TenOClock) / 1000);
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

QTEST_GUILESS_MAIN(tst_LaneStatistics)
#include "tst_lanestatistics.moc"
