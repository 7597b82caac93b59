#include "lanestatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

LaneStatistics::LaneStatistics(const QVector<int>& lanes, qint64 intervalMs)
    : m_lanes(lanes)
    , m_intervalMs(qBound(MinIntervalMs, intervalMs, MaxIntervalMs))
{
    std::sort(m_lanes.begin(), m_lanes.end());
    m_lanes.erase(std::unique(m_lanes.begin(), m_lanes.end()), m_lanes.end());
}

qint64 LaneStatistics::intervalOf(qint64 timeMs) const
{
    // Whole intervals on the clock, also before 1970.
    return timeMs >= 0 ? timeMs / m_intervalMs : -((-timeMs - 1) / m_intervalMs) - 1;
}

void LaneStatistics::addFrame(qint64 timeMs)
{
    if (m_stretches.isEmpty()) {
        m_firstFrameMs = m_lastFrameMs = timeMs;
        m_stretches.append({timeMs, timeMs});
        return;
    }
    const qint64 previousMs = m_lastFrameMs;
    if (timeMs - previousMs > MaxFrameGapMs || timeMs < previousMs) {
        // The radar was not watching, or its clock went back: a new stretch starts.
        m_stretches.append({timeMs, timeMs});
    } else {
        observe(previousMs, timeMs);
        m_stretches.last().second = timeMs;
    }
    m_firstFrameMs = qMin(m_firstFrameMs, timeMs);
    m_lastFrameMs = timeMs;
}

void LaneStatistics::observe(qint64 fromMs, qint64 toMs)
{
    m_observedMs += toMs - fromMs;
    // The time between two messages may run into the next interval.
    while (fromMs < toMs) {
        const qint64 interval = intervalOf(fromMs);
        const qint64 endMs = qMin(toMs, (interval + 1) * m_intervalMs);
        m_observedPerInterval[interval] += endMs - fromMs;
        fromMs = endMs;
    }
}

void LaneStatistics::addCrossing(const VehicleCrossing& crossing)
{
    if (!std::binary_search(m_lanes.cbegin(), m_lanes.cend(), crossing.lane))
        m_lanes.insert(std::lower_bound(m_lanes.begin(), m_lanes.end(), crossing.lane),
                       crossing.lane);
    m_crossings.append(crossing);
}

double LaneStatistics::percentile(QVector<double>& values, double share)
{
    const int n = values.size();
    if (n == 0 || !std::isfinite(share))
        return NoValue;
    const double rank = qBound(0.0, share, 1.0) * (n - 1); // counted from 0
    const int below = int(std::floor(rank));
    const double fraction = rank - below;
    // Selecting the two ranks costs less than sorting, which counts for long intervals.
    std::nth_element(values.begin(), values.begin() + below, values.end());
    const double low = values[below];
    if (fraction == 0 || below + 1 >= n)
        return low;
    const double high = *std::min_element(values.begin() + below + 1, values.end());
    return low + fraction * (high - low);
}

QVector<double> LaneStatistics::headways() const
{
    QVector<int> order(m_crossings.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [this](int a, int b) {
        const VehicleCrossing& x = m_crossings[a];
        const VehicleCrossing& y = m_crossings[b];
        if (x.lane != y.lane)
            return x.lane < y.lane;
        if (x.direction != y.direction)
            return x.direction < y.direction;
        return x.timeMs < y.timeMs;
    });
    QVector<QPair<qint64, qint64>> stretches = m_stretches;
    std::sort(stretches.begin(), stretches.end());

    QVector<double> result(m_crossings.size(), NoValue);
    for (int i = 1; i < order.size(); ++i) {
        const VehicleCrossing& before = m_crossings[order[i - 1]];
        const VehicleCrossing& now = m_crossings[order[i]];
        if (before.lane != now.lane || before.direction != now.direction)
            continue;
        // Only within one stretch of watching: vehicles may have passed unseen between.
        auto stretch
            = std::upper_bound(stretches.cbegin(), stretches.cend(),
                               qMakePair(before.timeMs, std::numeric_limits<qint64>::max()));
        if (stretch == stretches.cbegin() || now.timeMs > (--stretch)->second)
            continue;
        result[order[i]] = (now.timeMs - before.timeMs) / 1000.0;
    }
    return result;
}

LaneStatistics::Figures LaneStatistics::figuresOf(const QVector<int>& crossings,
                                                  const QVector<double>& headways) const
{
    Figures f;
    f.count = crossings.size();
    if (crossings.isEmpty())
        return f;
    QVector<double> speeds;
    speeds.reserve(crossings.size());
    double headwaySum = 0;
    for (int i : crossings) {
        const VehicleCrossing& c = m_crossings[i];
        speeds.append(c.speed);
        if (c.length > LongVehicleLength)
            ++f.longVehicles;
        if (std::isnan(headways[i]))
            continue;
        ++f.headways;
        headwaySum += headways[i];
        f.minHeadway = f.headways == 1 ? headways[i] : qMin(f.minHeadway, headways[i]);
    }
    if (f.headways > 0)
        f.meanHeadway = headwaySum / f.headways;
    f.meanSpeed = std::accumulate(speeds.cbegin(), speeds.cend(), 0.0) / speeds.size();
    const auto [slowest, fastest] = std::minmax_element(speeds.cbegin(), speeds.cend());
    f.minSpeed = *slowest;
    f.maxSpeed = *fastest;
    f.v50 = percentile(speeds, 0.50);
    f.v85 = percentile(speeds, 0.85);
    f.v95 = percentile(speeds, 0.95);
    return f;
}

QVector<LaneStatistics::Row> LaneStatistics::rows(bool perInterval) const
{
    QVector<Row> result;
    if (m_stretches.isEmpty() && m_crossings.isEmpty())
        return result;
    const QVector<double> headway = headways();
    const int directions = 2; // receding, approaching
    auto cellOf = [this](const VehicleCrossing& c) {
        const int lane
            = int(std::lower_bound(m_lanes.cbegin(), m_lanes.cend(), c.lane) - m_lanes.cbegin());
        return lane * 2 + (c.direction == VehicleCrossing::Receding ? 0 : 1);
    };
    const int cells = m_lanes.size() * directions;

    // Interval number -> the crossings of every lane and direction in it.
    QMap<qint64, QVector<QVector<int>>> groups;
    if (perInterval) {
        for (auto it = m_observedPerInterval.cbegin(); it != m_observedPerInterval.cend(); ++it)
            groups[it.key()].resize(cells);
    } else {
        groups[0].resize(cells);
    }
    for (int i = 0; i < m_crossings.size(); ++i) {
        const qint64 key = perInterval ? intervalOf(m_crossings[i].timeMs) : 0;
        QVector<QVector<int>>& group = groups[key];
        group.resize(cells);
        group[cellOf(m_crossings[i])].append(i);
    }

    result.reserve(groups.size() * cells);
    for (auto it = groups.cbegin(); it != groups.cend(); ++it) {
        const qint64 startMs = perInterval ? it.key() * m_intervalMs : m_firstFrameMs;
        const double observed
            = (perInterval ? m_observedPerInterval.value(it.key()) : m_observedMs) / 1000.0;
        for (int cell = 0; cell < cells; ++cell) {
            Row row;
            row.startMs = startMs;
            row.lane = m_lanes[cell / 2];
            row.direction
                = cell % 2 == 0 ? VehicleCrossing::Receding : VehicleCrossing::Approaching;
            row.figures = figuresOf(it.value()[cell], headway);
            row.figures.observedSeconds = observed;
            result.append(row);
        }
    }
    return result;
}

QVector<LaneStatistics::Row> LaneStatistics::intervalRows() const
{
    return rows(true);
}

QVector<LaneStatistics::Row> LaneStatistics::totalRows() const
{
    return rows(false);
}
