#include "schemegeometry.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

// Far beyond any screen, yet far inside an int: a point the scale throws out of sight
// (a radar position or a sight line hundreds of kilometres away) stays a valid pixel.
constexpr double PixelLimit = 1.0e7;

int pixel(double value)
{
    if (!std::isfinite(value))
        return 0;
    return qRound(std::clamp(value, -PixelLimit, PixelLimit));
}

double degrees(double radians)
{
    return radians * 180.0 / M_PI;
}

double normalisedDegrees(double angle)
{
    angle = std::fmod(angle, 360.0);
    if (angle > 180.0)
        angle -= 360.0;
    else if (angle < -180.0)
        angle += 360.0;
    return angle;
}

} // namespace

QRectF SchemeGeometry::viewAreaFor(const QRectF& roadRect)
{
    const double x0 = roadRect.x() < 0 ? roadRect.x() : 0.0;
    const double x1 = std::max(roadRect.x() + roadRect.width(), MinViewAhead);
    const double y0 = std::min(roadRect.y(), -MinViewAside);
    const double y1 = std::max(roadRect.y() + roadRect.height(), MinViewAside);
    return QRectF(x0, y0, x1 - x0, y1 - y0);
}

void SchemeGeometry::rescale(const QRectF& viewArea, const QSize& size, bool vertical,
                             bool keepAspectRatio)
{
    m_viewArea = viewArea;
    m_size = size;
    m_vertical = vertical;
    m_keepAspectRatio = keepAspectRatio;
    m_valid = false;
    const int width = size.width();
    const int height = size.height();
    if (width < MinimumDrawableSize || height < MinimumDrawableSize || viewArea.isNull())
        return;

    const int along = vertical ? height : width;
    const int across = vertical ? width : height;
    // Measured from X = 0: a view that starts behind the radar leaves its negative part
    // in the margin before the origin.
    m_scaleX = (along - AlongMargin) / (viewArea.x() + viewArea.width());
    m_scaleY = (across - AcrossMargin) / viewArea.height();
    if (keepAspectRatio)
        m_scaleX = m_scaleY = std::min(m_scaleX, m_scaleY);
    m_aspect = m_scaleX > 0.001 ? m_scaleY / m_scaleX : 1.0;

    const int top = pixel(std::fabs(viewArea.y()) * m_scaleY);
    const int bottom = pixel(std::fabs(viewArea.y() + viewArea.height()) * m_scaleY);
    const int margin = (across - AcrossMargin - top - bottom) / 2;
    const int base = bottom + margin;
    if (vertical) {
        m_ox = base + 3;
        m_oy = height - OriginInset;
    } else {
        m_ox = OriginInset;
        m_oy = base + 3;
    }
    m_valid = std::isfinite(m_scaleX) && std::isfinite(m_scaleY) && m_scaleX > 0 && m_scaleY > 0;
}

int SchemeGeometry::alongPixels() const
{
    return (m_vertical ? m_size.height() : m_size.width()) - AlongMargin;
}

QPoint SchemeGeometry::projected(double x, double y) const
{
    return QPoint(pixel(x * m_scaleX), pixel(y * m_scaleY));
}

QPoint SchemeGeometry::screenPos(int u, int v) const
{
    return m_vertical ? QPoint(m_ox - v, m_oy - u) : QPoint(m_ox + u, m_oy - v);
}

QPoint SchemeGeometry::xyToScreen(double x, double y) const
{
    const QPoint p = projected(x, y);
    return screenPos(p.x(), p.y());
}

QPolygon SchemeGeometry::toScreen(const QPolygonF& line) const
{
    QPolygon screen(line.size());
    for (int i = 0; i < line.size(); ++i)
        screen[i] = xyToScreen(line.at(i).x(), line.at(i).y());
    return screen;
}

QPoint SchemeGeometry::screenOf(const QPointF& projectedPoint) const
{
    return screenPos(pixel(projectedPoint.x()), pixel(projectedPoint.y()));
}

QPointF SchemeGeometry::onScreen(const QPointF& d) const
{
    return m_vertical ? QPointF(-d.y(), -d.x()) : QPointF(d.x(), -d.y());
}

QSize SchemeGeometry::objectPixelSize(double length) const
{
    // Vehicles of 2 m and longer are drawn 2 m wide, shorter ones 1 m.
    const double l = length > 0 ? length : 1.0;
    const double w = l < 2.0 ? 1.0 : 2.0;
    if (m_keepAspectRatio)
        return QSize(pixel(l * m_scaleX), pixel(w * m_scaleY));
    return QSize(pixel(FixedPixelsPerMetre * l), pixel(FixedPixelsPerMetre * w));
}

double SchemeGeometry::objectHeading(double xSpeed, double ySpeed) const
{
    double heading = 0.0;
    if (std::fabs(xSpeed) < 1e-6)
        heading = std::fabs(ySpeed) <= 1e-6 ? 0.0 : (ySpeed > 0 ? 90.0 : -90.0);
    else
        heading = degrees(std::atan(ySpeed / xSpeed));
    if (xSpeed < 0)
        heading += 180.0;
    // With the scales apart the heading follows the distorted road; it then folds into
    // -90..90 degrees, so a vehicle going against X is drawn facing along it.
    return screenAngle(normalisedDegrees(heading));
}

double SchemeGeometry::screenAngle(double angle) const
{
    if (m_keepAspectRatio)
        return angle;
    return degrees(std::atan(std::tan(qDegreesToRadians(angle)) * m_aspect));
}

QPointF SchemeGeometry::notchDirection(double tangentAngle) const
{
    const double b
        = m_keepAspectRatio ? tangentAngle : std::atan(std::tan(tangentAngle) / m_aspect);
    // Across the road, towards its right-hand side (-Y), in projected pixels.
    return QPointF(std::sin(b), -std::cos(b));
}
