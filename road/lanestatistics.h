#pragma once

#include "vehiclecrossing.h"

#include <QMap>
#include <QVector>

#include <limits>

// The traffic engineer's figures of the vehicles counted at a detection line, per lane,
// direction of travel and interval: count, mean speed, the speeds that 50, 85 and 95 %
// of the vehicles do not exceed (V50, V85, V95), the lowest and highest speed, the mean
// and shortest headway, and the share of long vehicles. Intervals are whole multiples
// of their length on the UTC clock (a minute from :00 to :59.999). Only the time the
// radar watched counts: an interval without any radar message gets no row, one with
// messages but no vehicle a row with a count of 0.
class LaneStatistics
{
public:
    static constexpr qint64 DefaultIntervalMs = 60000;
    static constexpr qint64 MinIntervalMs = 1000;
    static constexpr qint64 MaxIntervalMs = 86400000;
    // Longer than this without a radar message, the radar was not watching (the client
    // takes it for offline after as long): the time does not count, and no headway
    // spans it.
    static constexpr qint64 MaxFrameGapMs = 2000;
    static constexpr double LongVehicleLength = 6.0; // metres; longer ones are long vehicles

    static constexpr double NoValue = std::numeric_limits<double>::quiet_NaN();

    struct Figures
    {
        int count = 0;
        double meanSpeed = NoValue; // m/s, the mean of the spot speeds at the line
        double v50 = NoValue;
        double v85 = NoValue;
        double v95 = NoValue;
        double minSpeed = NoValue;
        double maxSpeed = NoValue;
        int headways = 0; // vehicles whose predecessor in the lane and direction was seen
        double meanHeadway = NoValue; // seconds from the predecessor's crossing
        double minHeadway = NoValue;
        int longVehicles = 0;
        double observedSeconds = 0; // how long the radar watched

        double longShare() const { return count > 0 ? double(longVehicles) / count : NoValue; }
    };
    struct Row
    {
        qint64 startMs = 0; // UTC milliseconds since 1970
        int lane = 0;
        int direction = VehicleCrossing::Receding;
        Figures figures;
    };

    // The interval is kept within MinIntervalMs and MaxIntervalMs.
    explicit LaneStatistics(const QVector<int>& lanes = {}, qint64 intervalMs = DefaultIntervalMs);

    // A radar message seen at this time: the radar watched since the previous one.
    void addFrame(qint64 timeMs);
    void addCrossing(const VehicleCrossing& crossing);

    qint64 intervalMs() const { return m_intervalMs; }
    const QVector<int>& lanes() const { return m_lanes; }
    qint64 firstFrameMs() const { return m_firstFrameMs; } // 0 before the first message
    qint64 lastFrameMs() const { return m_lastFrameMs; }
    int gapCount() const { return qMax(0, m_stretches.size() - 1); }
    double observedSeconds() const { return m_observedMs / 1000.0; }
    const QVector<VehicleCrossing>& crossings() const { return m_crossings; }

    // Per watched interval in time order, per lane in ascending part number, per
    // direction (receding first).
    QVector<Row> intervalRows() const;
    // Per lane and direction over all the time watched; startMs is the first message's.
    QVector<Row> totalRows() const;

    // The value below which the given share (0 to 1) of the values lies, interpolated
    // linearly between the two nearest ranks: at rank 1 + share * (n - 1) of the values
    // in ascending order (the method of spreadsheets' PERCENTILE.INC). Reorders the
    // values. NoValue for none.
    static double percentile(QVector<double>& values, double share);

private:
    qint64 intervalOf(qint64 timeMs) const;
    void observe(qint64 fromMs, qint64 toMs);
    // Per crossing, seconds since the one before it in its lane and direction.
    QVector<double> headways() const;
    Figures figuresOf(const QVector<int>& crossings, const QVector<double>& headways) const;
    QVector<Row> rows(bool perInterval) const;

    QVector<int> m_lanes;
    qint64 m_intervalMs;
    qint64 m_firstFrameMs = 0;
    qint64 m_lastFrameMs = 0;
    qint64 m_observedMs = 0;
    QMap<qint64, qint64> m_observedPerInterval; // interval number -> milliseconds watched
    // The stretches of time the radar watched without a gap: first and last message.
    QVector<QPair<qint64, qint64>> m_stretches;
    QVector<VehicleCrossing> m_crossings;
};
