#pragma once

#include "tvmsconfig.h"

#include <QPoint>
#include <QPointF>
#include <QPolygonF>

// The roadside camera looking at the road plane (z = 0 of the radar frame): where the
// camera stands and looks, derived from the radar's pose plus the camera's own offsets
// and misalignments, and the mapping between road points (metres) and picture pixels.
//
// Between the road frame and the picture lies the camera-aligned ground frame: its
// origin is the axis point, where the optical axis meets the road; v runs along the
// axis away from the camera and u to the right of it as the picture shows it. The
// visible ground is the trapezoid between the picture's bottom edge (nearLimit, behind
// the axis point) and its top edge (farLimit), or the horizon when the top of the
// picture looks above it.
class CameraModel
{
public:
    static constexpr double MinCameraHeight = 1.0; // metres above the road
    static constexpr double MinAngle = 0.001; // radians of tilt, of half view angle, above the horizon
    static constexpr double MinSine = 1e-6;
    static constexpr int MinPictureSize = 64; // pixels in either direction
    // Points this far beyond the picture's top or bottom edge are still projected, so
    // that a line crossing the edge stays continuous (the painter clips it).
    static constexpr double EdgeMargin = 5.5; // metres
    // The sine and cosine of the ray 0.001 rad below the horizon, which stands in for
    // the top edge of a picture that looks above the horizon.
    static constexpr double HorizonRaySin = 0.0009999998333333417;
    static constexpr double HorizonRayCos = 0.9999995000000417;

    // The radar's pose as reported: height and offsets in metres, angles in radians.
    // Its roll plays no part in the projection.
    struct RadarPose
    {
        double height = 0.0;
        double xOffset = 0.0;
        double yOffset = 0.0;
        double azimuth = 0.0;
        double elevation = 0.0; // positive = pointing down
    };

    void setConfig(const TvmsConfig& config) { m_config = config; }
    const TvmsConfig& config() const { return m_config; }
    // The half horizontal view angle in use (radians): the configured one, or a
    // candidate's while the parameters are picked up.
    void setHalfHorizontalAngle(double radians) { m_halfHorizontalAngle = radians; }
    double halfHorizontalAngle() const { return m_halfHorizontalAngle; }
    void setRadarPose(const RadarPose& pose);
    const RadarPose& radarPose() const { return m_pose; }

    // Rebuilds the model for a picture of the given size; false (and the model
    // invalid) for a geometry the camera cannot have.
    bool rescale(int width, int height);
    bool isValid() const { return m_valid; }
    // Makes the model invalid without touching its inputs.
    void invalidate() { m_valid = false; }

    QPointF cameraPosition() const { return QPointF(m_cameraX, m_cameraY); }
    QPointF axisPoint() const { return m_axisPoint; }
    double cameraHeight() const { return m_cameraHeight; }
    double cameraTilt() const { return m_cameraTilt; }
    double cameraAzimuth() const { return m_cameraAzimuth; }
    double axisDistance() const { return m_axisDistance; }
    double nearLimit() const { return m_nearLimit; }
    double farLimit() const { return m_farLimit; }
    double halfWidthAtAxis() const { return m_halfWidthAtAxis; }
    double halfWidthSlope() const { return m_halfWidthSlope; }
    double halfVerticalAngle() const { return m_halfVerticalAngle; }
    int width() const { return m_width; }
    int height() const { return m_height; }
    QPoint centre() const { return QPoint(m_centreX, m_centreY); }
    // The visible ground trapezoid's corners in the road frame; empty when invalid.
    QPolygonF fieldOfView() const;

    // Road frame <-> camera-aligned ground frame (u, v).
    QPointF translated(double x, double y) const;
    QPointF translatedBack(double u, double v) const;
    // Ground frame <-> pixel offset from the picture centre, y up. Points beyond the
    // visible band, and pixels at or above the horizon, give ok false.
    QPoint projected(double u, double v, bool* ok) const;
    QPointF projectedBack(double px, double py, bool* ok) const;
    // Pixel offset from the centre (y up) <-> widget pixel (y down).
    QPoint screenPos(const QPoint& offset) const;
    QPoint screenPosBack(const QPoint& pixel) const;
    // Road frame <-> widget pixel.
    QPoint xyToScreen(double x, double y, bool* ok) const;
    QPoint xyToScreen(const QPointF& p, bool* ok) const { return xyToScreen(p.x(), p.y(), ok); }
    QPointF xyFromScreen(const QPoint& pixel, bool* ok) const;

private:
    bool doRescale(int width, int height);

    TvmsConfig m_config;
    RadarPose m_pose;
    double m_halfHorizontalAngle = 0.0;

    double m_cameraX = 0.0;
    double m_cameraY = 0.0;
    double m_cameraHeight = 0.0;
    double m_cameraAzimuth = 0.0;
    double m_cameraTilt = 0.0;
    double m_halfVerticalAngle = 0.0;
    double m_tanHalfVertical = 0.0;
    double m_sinAzimuth = 0.0;
    double m_cosAzimuth = 1.0;
    double m_axisDistance = 0.0; // d0: camera's foot point to the axis point
    QPointF m_axisPoint;
    double m_nearLimit = 0.0;
    double m_farLimit = 0.0;
    double m_nearHalfWidth = 0.0;
    double m_farHalfWidth = 0.0;
    double m_halfWidthAtAxis = 0.0;
    double m_halfWidthSlope = 0.0;
    int m_width = 0;
    int m_height = 0;
    int m_centreX = 0;
    int m_centreY = 0;
    bool m_valid = false;
};
