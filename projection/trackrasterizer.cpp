#include "trackrasterizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

void TrackRasterizer::begin(QImage* image)
{
    m_image = image;
    m_bits = image->bits();
    m_stride = image->bytesPerLine();
    m_width = image->width();
    m_height = image->height();
    m_touched = QRect();
}

void TrackRasterizer::doBlock(int x, int y, int w, int h, QRgb color)
{
    const int left = std::max(x, 0);
    const int top = std::max(y, 0);
    const int right = std::min(x + w, m_width);
    const int bottom = std::min(y + h, m_height);
    if (left >= right || top >= bottom)
        return;
    for (int row = top; row < bottom; ++row) {
        auto* line = reinterpret_cast<QRgb*>(m_bits + row * m_stride);
        std::fill(line + left, line + right, color);
    }
    m_touched |= QRect(left, top, right - left, bottom - top);
}

void TrackRasterizer::drawSquares(const QPolygon& points, const QPoint& except, QRgb color)
{
    for (const QPoint& p : points) {
        if (p != except)
            doBlock(p.x() - 2, p.y() - 2, 3, 3, color);
    }
}

void TrackRasterizer::drawPolyline(const QPolygon& points, QRgb color)
{
    if (points.size() < 2)
        return;
    QPoint previous = points.first();
    for (int i = 1; i < points.size(); ++i) {
        const QPoint p = points.at(i);
        if (p == previous)
            continue;
        doLine(previous.x(), previous.y(), p.x(), p.y(), color);
        previous = p;
    }
}

void TrackRasterizer::doLine(double x0, double y0, double x1, double y1, QRgb color)
{
    // Cut the segment to the picture (with room for the line's width) first: points
    // far to the side of the view lie millions of pixels away.
    const double xMin = -2.0, yMin = -2.0, xMax = m_width + 1.0, yMax = m_height + 1.0;
    double t0 = 0.0, t1 = 1.0;
    const double dx = x1 - x0, dy = y1 - y0;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {x0 - xMin, xMax - x0, y0 - yMin, yMax - y0};
    for (int k = 0; k < 4; ++k) {
        if (p[k] == 0.0) {
            if (q[k] < 0.0)
                return;
            continue;
        }
        const double r = q[k] / p[k];
        if (p[k] < 0.0)
            t0 = std::max(t0, r);
        else
            t1 = std::min(t1, r);
        if (t0 > t1)
            return;
    }
    int ax = int(std::lround(x0 + t0 * dx));
    int ay = int(std::lround(y0 + t0 * dy));
    const int bx = int(std::lround(x0 + t1 * dx));
    const int by = int(std::lround(y0 + t1 * dy));
    // Bresenham; each step sets a 2 x 2 block, up and left of the point, as a 2-pixel
    // pen centred on the line covers.
    const int sx = ax < bx ? 1 : -1;
    const int sy = ay < by ? 1 : -1;
    const int ddx = std::abs(bx - ax);
    const int ddy = -std::abs(by - ay);
    int err = ddx + ddy;
    const int left = std::min(ax, bx) - 1, top = std::min(ay, by) - 1;
    const int right = std::max(ax, bx), bottom = std::max(ay, by);
    for (;;) {
        if (ax >= 1 && ay >= 1 && ax < m_width && ay < m_height) {
            auto* upper = reinterpret_cast<QRgb*>(m_bits + (ay - 1) * m_stride);
            auto* lower = reinterpret_cast<QRgb*>(m_bits + ay * m_stride);
            upper[ax - 1] = upper[ax] = lower[ax - 1] = lower[ax] = color;
        } else {
            doBlock(ax - 1, ay - 1, 2, 2, color);
        }
        if (ax == bx && ay == by)
            break;
        const int e2 = 2 * err;
        if (e2 >= ddy) {
            err += ddy;
            ax += sx;
        }
        if (e2 <= ddx) {
            err += ddx;
            ay += sy;
        }
    }
    m_touched |= QRect(QPoint(left, top), QPoint(right, bottom)).intersected(m_image->rect());
}
