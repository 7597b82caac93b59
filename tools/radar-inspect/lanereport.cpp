#include "lanereport.h"

#include "lanecounter.h"
#include "roadobject.h"

#include <QDateTime>
#include <QStringList>

#include <cmath>

namespace {

using Row = LaneStatistics::Row;
using Figures = LaneStatistics::Figures;

// Empty for a figure that has no value (no vehicle, no headway).
QString figure(double value, int decimals, int width = 0)
{
    return QStringLiteral("%1").arg(
        std::isnan(value) ? QString() : QString::number(value, 'f', decimals), width);
}

QString kmh(double metresPerSecond, int width = 0)
{
    return figure(RoadObject::kmh(metresPerSecond), 1, width);
}

QString directionName(int direction)
{
    return direction == VehicleCrossing::Receding ? QStringLiteral("receding")
                                                  : QStringLiteral("approaching");
}

QDateTime utc(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
}

QString textLine(const QString& head, const Row& row)
{
    const Figures& f = row.figures;
    return QStringLiteral("  %1%2  %3 %4 %5 %6 %7 %8 %9 %10  %11 %12  %13\n")
        .arg(head)
        .arg(row.lane, 4)
        .arg(directionName(row.direction), -11)
        .arg(f.count, 8)
        .arg(kmh(f.meanSpeed, 6), kmh(f.v50, 6), kmh(f.v85, 6), kmh(f.v95, 6), kmh(f.minSpeed, 6),
             kmh(f.maxSpeed, 6))
        .arg(figure(f.meanHeadway, 2, 8), figure(f.minHeadway, 2, 7),
             figure(100 * f.longShare(), 1, 6));
}

QString textHeader(const QString& head)
{
    return QStringLiteral("  %1lane  direction   vehicles   mean    V50    V85    V95    min    "
                          "max  headway   min  long %\n"
                          "  %2                               (speeds in km/h)"
                          "                  (seconds)\n")
        .arg(head, QString(head.size(), QLatin1Char(' ')));
}

} // namespace

LaneReport::LaneReport(const QString& path, const LaneCounter& counter)
    : m_path(path)
    , m_counter(counter)
{ }

void LaneReport::writeText(QTextStream& out) const
{
    const LaneStatistics& statistics = m_counter.statistics();
    const DetectionLine& line = m_counter.detectionLine();
    QStringList lanes;
    for (const DetectionLine::Lane& lane : line.lanes())
        lanes << QString::number(lane.id);
    out << "Lane statistics of " << m_path << '\n';
    out << "  detection line: " << QString::number(line.distance(), 'f', 1)
        << " m along the road, across lanes " << lanes.join(QStringLiteral(", ")) << '\n';
    if (statistics.observedSeconds() <= 0) {
        out << "  the recording holds no stretch of radar data to count in\n";
        return;
    }
    out << "  watched: " << utc(statistics.firstFrameMs()).toString(Qt::ISODateWithMs) << " to "
        << utc(statistics.lastFrameMs()).toString(Qt::ISODateWithMs) << ", "
        << QString::number(statistics.observedSeconds(), 'f', 1) << " s";
    if (statistics.gapCount() > 0)
        out << " (" << statistics.gapCount() << " gaps of over "
            << LaneStatistics::MaxFrameGapMs / 1000 << " s left out)";
    out << "\n  vehicles counted: " << statistics.crossings().size() << "\n\n";

    out << "Whole time watched\n" << textHeader(QString());
    for (const Row& row : statistics.totalRows())
        out << textLine(QString(), row);

    out << "\nIntervals of " << statistics.intervalMs() / 1000.0
        << " s (start in UTC; lanes and directions without vehicles left out)\n"
        << textHeader(QStringLiteral("start     "));
    for (const Row& row : statistics.intervalRows()) {
        if (row.figures.count > 0)
            out << textLine(utc(row.startMs).toString(QStringLiteral("HH:mm:ss  ")), row);
    }
}

void LaneReport::writeCsv(QTextStream& out) const
{
    out << "interval_start_utc,interval_s,observed_s,lane,direction,vehicles,mean_kmh,v50_kmh,"
           "v85_kmh,v95_kmh,min_kmh,max_kmh,headways,mean_headway_s,min_headway_s,"
           "long_vehicles,long_share_pct\n";
    const LaneStatistics& statistics = m_counter.statistics();
    const QString interval = QString::number(statistics.intervalMs() / 1000.0);
    for (const Row& row : statistics.intervalRows()) {
        const Figures& f = row.figures;
        out << utc(row.startMs).toString(Qt::ISODate) << ',' << interval << ','
            << figure(f.observedSeconds, 1) << ',' << row.lane << ','
            << directionName(row.direction) << ',' << f.count << ',' << kmh(f.meanSpeed) << ','
            << kmh(f.v50) << ',' << kmh(f.v85) << ',' << kmh(f.v95) << ',' << kmh(f.minSpeed) << ','
            << kmh(f.maxSpeed) << ',' << f.headways << ',' << figure(f.meanHeadway, 2) << ','
            << figure(f.minHeadway, 2) << ',' << f.longVehicles << ','
            << figure(100 * f.longShare(), 1) << '\n';
    }
}
