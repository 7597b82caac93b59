#pragma once

#include "vehiclecrossing.h"

#include <QFile>
#include <QMap>
#include <QPair>
#include <QString>

// The simulator's own count of the traffic at a detection line: every vehicle as it
// passes, with the lane it keeps to and its speed, written at once to a CSV file so
// that a counter working from the radar's reports can be held against it. The file's
// first line names the columns: time_ms (UTC milliseconds since 1970, in the radar's
// time stamps' clock), id, lane, direction ("receding" or "approaching"), speed_mps,
// length_m.
class GroundTruth
{
public:
    // Starts the file afresh.
    bool open(const QString& path, double lineDistance, QString& error);
    void add(const VehicleCrossing& vehicle);
    // The counts and mean speeds per lane and direction, one line each.
    QString summary() const;

private:
    struct Tally
    {
        int count = 0;
        double speedSum = 0;
    };

    QFile m_file;
    double m_lineDistance = 0;
    QMap<QPair<int, int>, Tally> m_tallies; // (lane, direction)
};
