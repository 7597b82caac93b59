#pragma once

#include <QDateTime>
#include <QtGlobal>

// The latest report of one vehicle tracked by the radar, in the road frame:
// X along the road, Y across it (positive to the left of travel along +X).
struct RoadObject
{
    // Speeds travel in m/s everywhere and are shown in km/h.
    static constexpr double KmhPerMps = 3.6;
    static constexpr double kmh(double metresPerSecond) { return metresPerSecond * KmhPerMps; }

    quint8 id = 0;
    double xSpeed = 0.0; // m/s
    double ySpeed = 0.0; // m/s
    double xRange = 0.0; // m
    double yRange = 0.0; // m
    double length = 0.0; // m
    QDateTime lastDetected; // UTC time of the message that last reported the object
};
