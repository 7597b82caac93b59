#pragma once

#include <QMetaType>
#include <QtGlobal>

// One vehicle counted at a detection line: when and where its track crossed the line,
// which way, and how fast it went there.
struct VehicleCrossing
{
    // Directions of travel along the road: towards greater distances along its axis
    // (away from the radar at the road's start) or back.
    enum Direction { Receding = 1, Approaching = -1 };

    qint64 timeMs = 0; // UTC milliseconds since 1970, between the two reports around the line
    int lane = 0; // part number of the lane whose centre line is nearest
    int direction = Receding;
    double speed = 0; // m/s along the road at the line, never negative
    double length = 0; // m, the longest the radar reported the vehicle up to the line
    double across = 0; // m, where on the line it crossed
    quint8 id = 0; // the radar's track id
};
Q_DECLARE_METATYPE(VehicleCrossing)
