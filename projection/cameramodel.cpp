#include "cameramodel.h"

#include <cmath>
#include <limits>

namespace {

double finiteOrZero(double value)
{
    return std::isfinite(value) ? value : 0.0;
}

// Nearest integer, halves away from zero; values beyond the int range (a point far to
// the side of a nearly horizontal view) are held at its ends.
int roundToPixel(double value)
{
    constexpr double Limit = double(std::numeric_limits<int>::max() / 2);
    if (!(value > -Limit))
        return -int(Limit);
    if (value > Limit)
        return int(Limit);
    return int(std::lround(value));
}

} // namespace

void CameraModel::setRadarPose(const RadarPose& pose)
{
    // The pose comes from the radar or the operator: anything not finite counts as 0.
    m_pose.height = finiteOrZero(pose.height);
    m_pose.xOffset = finiteOrZero(pose.xOffset);
    m_pose.yOffset = finiteOrZero(pose.yOffset);
    m_pose.azimuth = finiteOrZero(pose.azimuth);
    m_pose.elevation = finiteOrZero(pose.elevation);
}

bool CameraModel::rescale(int width, int height)
{
    m_valid = false;
    m_cameraX = m_pose.xOffset + m_config.xOffset;
    m_cameraY = m_pose.yOffset + m_config.yOffset;
    m_cameraHeight = m_pose.height + m_config.zOffset;
    m_cameraAzimuth = m_pose.azimuth + m_config.azimuthMisalignment;
    m_cameraTilt = m_pose.elevation + m_config.altitudeMisalignment;
    m_width = width;
    m_height = height;
    m_centreX = width / 2;
    m_centreY = height / 2;
    // What a failed rescale leaves: the axis point on the camera's foot point.
    m_axisPoint = QPointF(m_cameraX, m_cameraY);
    m_axisDistance = 0.0;
    m_nearLimit = m_farLimit = m_halfWidthAtAxis = m_halfWidthSlope = 0.0;
    m_nearHalfWidth = m_farHalfWidth = 0.0;
    m_valid = doRescale(width, height);
    return m_valid;
}

bool CameraModel::doRescale(int width, int height)
{
    const double sinTilt = std::sin(m_cameraTilt);
    if (m_cameraHeight < MinCameraHeight || m_cameraTilt < MinAngle || sinTilt < MinSine)
        return false;
    const double d0 = std::cos(m_cameraTilt) * (m_cameraHeight / sinTilt);
    m_axisDistance = d0;
    m_sinAzimuth = std::sin(m_cameraAzimuth);
    m_cosAzimuth = std::cos(m_cameraAzimuth);
    m_axisPoint = QPointF(m_cameraX + m_cosAzimuth * d0, m_cameraY + m_sinAzimuth * d0);

    if (m_halfHorizontalAngle < MinAngle || width < MinPictureSize || height < MinPictureSize)
        return false;
    m_halfVerticalAngle = std::atan((double(height) / double(width)) * std::tan(m_halfHorizontalAngle));

    // The picture's bottom edge.
    const double a1 = m_cameraTilt + m_halfVerticalAngle;
    const double sinA1 = std::sin(a1);
    if (sinA1 < MinSine)
        return false;
    m_nearLimit = std::cos(a1) * m_cameraHeight / sinA1 - d0;

    // The top edge, or the ray just below the horizon when the top looks above it.
    const double a2 = m_cameraTilt - m_halfVerticalAngle;
    double sinA2 = HorizonRaySin;
    double cosA2 = HorizonRayCos;
    double upperRayToAxis = m_cameraTilt - MinAngle;
    if (a2 >= MinAngle) {
        sinA2 = std::sin(a2);
        if (sinA2 < MinSine)
            return false;
        cosA2 = std::cos(a2);
        upperRayToAxis = m_halfVerticalAngle;
    }
    m_farLimit = cosA2 * m_cameraHeight / sinA2 - d0;

    const double t = std::tan(m_halfHorizontalAngle);
    m_nearHalfWidth = std::cos(m_halfVerticalAngle) * (m_cameraHeight / sinA1) * t;
    m_farHalfWidth = std::cos(upperRayToAxis) * (m_cameraHeight / sinA2) * t;
    m_halfWidthAtAxis = (m_cameraHeight / sinTilt) * t;
    m_halfWidthSlope = (m_farHalfWidth - m_nearHalfWidth) / (m_farLimit - m_nearLimit);
    m_tanHalfVertical = std::tan(m_halfVerticalAngle);
    return std::isfinite(m_halfWidthSlope) && std::isfinite(m_farLimit);
}

QPolygonF CameraModel::fieldOfView() const
{
    if (!m_valid)
        return QPolygonF();
    return QPolygonF({translatedBack(-m_nearHalfWidth, m_nearLimit),
                      translatedBack(-m_farHalfWidth, m_farLimit),
                      translatedBack(m_farHalfWidth, m_farLimit),
                      translatedBack(m_nearHalfWidth, m_nearLimit)});
}

QPointF CameraModel::translated(double x, double y) const
{
    const double dx = x - m_axisPoint.x();
    const double dy = y - m_axisPoint.y();
    return QPointF(m_sinAzimuth * dx - m_cosAzimuth * dy, m_cosAzimuth * dx + m_sinAzimuth * dy);
}

QPointF CameraModel::translatedBack(double u, double v) const
{
    return QPointF(m_sinAzimuth * u + m_cosAzimuth * v + m_axisPoint.x(),
                   m_sinAzimuth * v - m_cosAzimuth * u + m_axisPoint.y());
}

QPoint CameraModel::projected(double u, double v, bool* ok) const
{
    *ok = false;
    if (!m_valid || !(v >= m_nearLimit - EdgeMargin && v <= m_farLimit + EdgeMargin))
        return QPoint();
    // The point's depression below the horizon as seen from the camera.
    const double depression = std::atan(m_cameraHeight / (v + m_axisDistance));
    const double py = double(m_height) * (std::tan(m_cameraTilt - depression) / m_tanHalfVertical) * 0.5;
    const double px = double(m_width) * (u / (v * m_halfWidthSlope + m_halfWidthAtAxis)) * 0.5;
    *ok = true;
    return QPoint(roundToPixel(px), roundToPixel(py));
}

QPointF CameraModel::projectedBack(double px, double py, bool* ok) const
{
    *ok = false;
    if (!m_valid)
        return QPointF();
    const double angle = m_cameraTilt - std::atan((2.0 * py / double(m_height)) * m_tanHalfVertical);
    if (!(angle >= MinAngle))
        return QPointF(); // at or above the horizon
    const double v = m_cameraHeight / std::tan(angle) - m_axisDistance;
    const double u = (2.0 * px / double(m_width)) * (m_halfWidthSlope * v + m_halfWidthAtAxis);
    *ok = true;
    return QPointF(u, v);
}

QPoint CameraModel::screenPos(const QPoint& offset) const
{
    return QPoint(offset.x() + m_centreX, m_centreY - offset.y());
}

QPoint CameraModel::screenPosBack(const QPoint& pixel) const
{
    return QPoint(pixel.x() - m_centreX, m_centreY - pixel.y());
}

QPoint CameraModel::xyToScreen(double x, double y, bool* ok) const
{
    const QPointF ground = translated(x, y);
    const QPoint offset = projected(ground.x(), ground.y(), ok);
    return *ok ? screenPos(offset) : QPoint();
}

QPointF CameraModel::xyFromScreen(const QPoint& pixel, bool* ok) const
{
    const QPoint offset = screenPosBack(pixel);
    const QPointF ground = projectedBack(offset.x(), offset.y(), ok);
    return *ok ? translatedBack(ground.x(), ground.y()) : QPointF();
}
