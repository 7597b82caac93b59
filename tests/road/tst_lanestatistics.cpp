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
    VehicleCrossing c;
    c.timeMs = TenOClock + ms;
    c.lane = lane;
    c.direction = direction;
    c.speed = speed;
    c.length = length;
    return c;
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
    void totalsOverTheWholeTime();
    void gapsHoldNoHeadwayAndNoTime();
    void clockGoingBack();
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
    QTest::newRow("share 0 is the lowest") << QVector<double>{3, 1, 2} << 0.0 << 1.0;
    QTest::newRow("share 1 is the highest") << QVector<double>{3, 1, 2} << 1.0 << 3.0;
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
    if (std::isnan(expected))
        QVERIFY(std::isnan(value));
    else
        QVERIFY2(std::fabs(value - expected) < 1e-12, qPrintable(QString::number(value)));
}

void tst_LaneStatistics::percentileMatchesTheReference_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("step"); // values are whole multiples of it

    QTest::newRow("two vehicles") << 2 << 0.1;
    QTest::newRow("a quiet minute") << 7 << 0.1;
    QTest::newRow("a busy minute") << 40 << 0.1;
    QTest::newRow("an hour of one lane, many equal speeds") << 1801 << 0.1;
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
    QTest::newRow("the other direction of the same lane on its own")
        << 0 << -1 << A
        << "count 1, mean 15.00, v50 15.00, v85 15.00, v95 15.00, min 15.00, max 15.00, "
           "headways 0 mean - min -, long 0, observed 30.0";
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
    QTest::newRow("last minute watched for ten seconds")
        << 2 << 1 << A
        << "count 0, mean -, v50 -, v85 -, v95 -, min -, max -, headways 0 mean - min -, "
           "long 0, observed 10.0";
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

void tst_LaneStatistics::totalsOverTheWholeTime()
{
    LaneStatistics statistics({2}, 10000);
    frames(statistics, 0, 30000);
    statistics.addCrossing(crossing(1000, 2, R, 10, 4));
    statistics.addCrossing(crossing(15000, 2, R, 20, 14));
    statistics.addCrossing(crossing(29000, 2, R, 30, 4));
    const QVector<LaneStatistics::Row> totals = statistics.totalRows();
    QCOMPARE(totals.size(), 2);
    QCOMPARE(totals[0].startMs, TenOClock);
    QCOMPARE(describe(totals[0].figures),
             QString("count 3, mean 20.00, v50 20.00, v85 27.00, v95 29.00, min 10.00, "
                     "max 30.00, headways 2 mean 14.00 min 14.00, long 1, observed 30.0"));
    QCOMPARE(totals[1].figures.count, 0);
    QCOMPARE(statistics.intervalRows().size(), 3 * 2);
}

void tst_LaneStatistics::gapsHoldNoHeadwayAndNoTime()
{
    // Watched 0-10 s and 21-25 s: the radar was away for 11 s, longer than a gap.
    LaneStatistics statistics({1}, 5000);
    frames(statistics, 0, 10000);
    frames(statistics, 21000, 25000);
    statistics.addCrossing(crossing(5000, 1, R, 20, 4));
    statistics.addCrossing(crossing(22000, 1, R, 20, 4));
    statistics.addCrossing(crossing(23500, 1, R, 20, 4));

    QCOMPARE(statistics.gapCount(), 1);
    QCOMPARE(statistics.observedSeconds(), 14.0);
    const QVector<LaneStatistics::Row> rows = statistics.intervalRows();
    QVector<qint64> starts;
    for (const LaneStatistics::Row& row : rows) {
        if (row.direction == R)
            starts.append((row.startMs - TenOClock) / 1000);
    }
    // Intervals wholly in the gap are not there: nobody watched them.
    QCOMPARE(starts, (QVector<qint64>{0, 5, 20}));
    const LaneStatistics::Figures after = rows[2 * 2].figures;
    QCOMPARE(after.count, 2);
    QCOMPARE(after.headways, 1);
    QCOMPARE(after.minHeadway, 1.5);
    QCOMPARE(after.observedSeconds, 4.0);
}

void tst_LaneStatistics::clockGoingBack()
{
    // A radar whose clock is set back: the time before and after both count once.
    LaneStatistics statistics({1});
    frames(statistics, 10000, 20000);
    frames(statistics, 5000, 8000);
    statistics.addCrossing(crossing(15000, 1, R, 20, 4));
    statistics.addCrossing(crossing(6000, 1, R, 20, 4));
    QCOMPARE(statistics.gapCount(), 1);
    QCOMPARE(statistics.observedSeconds(), 13.0);
    QCOMPARE(statistics.firstFrameMs(), TenOClock + 5000);
    const QVector<LaneStatistics::Row> rows = statistics.intervalRows();
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows[0].figures.count, 2);
    QCOMPARE(rows[0].figures.headways, 0);
}

QTEST_GUILESS_MAIN(tst_LaneStatistics)
#include "tst_lanestatistics.moc"
