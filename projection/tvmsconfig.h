#pragma once

#include <QJsonObject>

// The roadside camera's place and optics relative to the radar, as the model uses them:
// offsets in metres, angles in radians, the horizontal view angle already halved. Read
// from the "tvms_config" object of a work profile, where angles are in degrees.
struct TvmsConfig
{
    // The degree-to-radian factor the camera model is built with.
    static constexpr double Pi = 3.141592653589793;
    static constexpr double radians(double degrees) { return degrees * Pi / 180.0; }

    // What a hand-edited settings file may hold before a value stops making sense for
    // a camera bolted next to the radar; beyond these a value is clamped.
    static constexpr double MaxOffset = 100.0; // metres, each direction
    static constexpr double MaxMisalignment = 180.0; // degrees, each direction
    static constexpr double MaxViewAngle = 179.0; // degrees: a lens sees less than a half-plane
    static constexpr int MaxVideoDelayMs = 60000;

    double xOffset = 0.0;
    double yOffset = 0.0;
    double zOffset = 0.0;
    double azimuthMisalignment = 0.0; // camera azimuth minus radar azimuth
    double altitudeMisalignment = 0.0; // camera tilt minus radar elevation
    double halfHorizontalAngle = 0.0;
    int videoDelayMs = 0; // how late the video picture is behind the radar data

    // A missing, non-numeric or non-finite value reads as 0; a value out of the ranges
    // above is clamped into them.
    static TvmsConfig fromJson(const QJsonObject& config);
};
