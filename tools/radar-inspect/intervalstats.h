#pragma once

#include <QtGlobal>

#include <cmath>
#include <limits>

// Minimum, maximum, mean and spread (standard deviation, the jitter) of a series of
// intervals, kept as they come without storing them.
struct IntervalStats
{
    quint64 count = 0;
    double minMs = std::numeric_limits<double>::infinity();
    double maxMs = 0;
    double meanMs = 0;
    double m2 = 0; // sum of squared deviations from the running mean

    void add(double ms)
    {
        ++count;
        minMs = qMin(minMs, ms);
        maxMs = qMax(maxMs, ms);
        const double delta = ms - meanMs;
        meanMs += delta / double(count);
        m2 += delta * (ms - meanMs);
    }
    double jitterMs() const { return count > 1 ? std::sqrt(m2 / double(count - 1)) : 0.0; }
};
