#pragma once

#include <QPoint>

#include <array>

// One candidate pose of the parameter pick-up: X offset, Y offset, height (metres),
// azimuth, elevation, roll (degrees, roll always 0) and the camera's half horizontal
// view angle (degrees), in this order.
struct PickupParams
{
    enum Index { X, Y, Height, Azimuth, Elevation, Roll, HalfAngle, Count };

    std::array<double, Count> values{};

    double& operator[](int i) { return values[size_t(i)]; }
    double operator[](int i) const { return values[size_t(i)]; }
};

// A point the operator marked on the picture (widget pixel) with the number typed for
// it: a checkpoint's Y (metres), or the length of the line segment at its second end.
struct PickupCheckpoint
{
    QPoint pixel;
    double value = 0.0;
};
