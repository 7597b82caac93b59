#include "trackrasterizer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {
// A track whose box is larger has its points far apart: nothing worth marking.
constexpr qint64 MaxMarkedArea = 256 * 256;
} // namespace

void TrackRasterizer::begin(QImage* image)
{
    m_image = image;
    m_bits = image->bits();
    m_stride = image->bytesPerLine();
    m_width = image->width();
    m_height = image->height();
    m_touched = QRect();
}

void TrackRasterizer::doTouch(const QPolygon& points, int reachBefore, int reachAfter)
{
    if (points.isEmpty())
        return;
    int left = points.first().x(), right = left;
    int top = points.first().y(), bottom = top;
    for (const QPoint& p : points) {
        left = std::min(left, p.x());
        right = std::max(right, p.x());
        top = std::min(top, p.y());
        bottom = std::max(bottom, p.y());
    }
    m_touched |= QRect(QPoint(left - reachBefore, top - reachBefore),
                       QPoint(right + reachAfter, bottom + reachAfter))
                     .intersected(m_image->rect());
}

void TrackRasterizer::doBlock(int x, int y, int w, int h, QRgb color)
{
    const int left = std::max(x, 0);
    const int top = std::max(y, 0);
    const int right = std::min(x + w, m_width);
    const int bottom = std::min(y + h, m_height);
    if (left >= right || top >= bottom)
        return; // wholly outside the picture
    for (int row = top; row < bottom; ++row)
        std::fill(line(row) + left, line(row) + right, color);
}

void TrackRasterizer::drawSquares(const QPolygon& points, const QPoint& except, QRgb color)
{
    if (points.isEmpty())
        return;
    // The box of the points that have a square inside the picture.
    // Points whose square lies wholly inside the picture.
    const auto inPicture = [this](const QPoint& p) {
        return p.x() >= 2 && p.y() >= 2 && p.x() < m_width && p.y() < m_height;
    };
    int left = m_width, right = -1, top = m_height, bottom = -1;
    for (const QPoint& p : points) {
        if (inPicture(p)) {
            left = std::min(left, p.x());
            right = std::max(right, p.x());
            top = std::min(top, p.y());
            bottom = std::max(bottom, p.y());
        }
    }
    const qint64 boxWidth = right - left + 1;
    const qint64 area = right >= left ? boxWidth * (bottom - top + 1) : 0;
    const bool marking = area > 0 && area <= MaxMarkedArea;
    if (marking)
        m_marks.assign(size_t(area), 0);
    for (const QPoint& p : points) {
        if (p == except)
            continue;
        const int x = p.x(), y = p.y();
        if (!inPicture(p)) {
            doBlock(x - 2, y - 2, 3, 3, color);
            continue;
        }
        if (marking) {
            quint8& mark = m_marks[size_t((y - top) * boxWidth + (x - left))];
            if (mark)
                continue;
            mark = 1;
        }
        for (int row = y - 2; row <= y; ++row) {
            QRgb* l = line(row);
            l[x - 2] = l[x - 1] = l[x] = color;
        }
    }
    doTouch(points, 2, 0);
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
        const bool inside = std::min({previous.x(), previous.y(), p.x(), p.y()}) >= 1
                            && std::max(previous.x(), p.x()) < m_width
                            && std::max(previous.y(), p.y()) < m_height;
        if (inside)
            doLine(previous.x(), previous.y(), p.x(), p.y(), color);
        else
            doClippedLine(previous.x(), previous.y(), p.x(), p.y(), color);
        previous = p;
    }
    doTouch(points, 1, 0);
}

void TrackRasterizer::doLine(int ax, int ay, int bx, int by, QRgb color)
{
    // Bresenham; each step sets a 2 x 2 block, up and left of the point, as a 2-pixel
    // pen centred on the line covers. Both ends lie inside the picture.
    const int sx = ax < bx ? 1 : -1;
    const int sy = ay < by ? 1 : -1;
    const int dx = std::abs(bx - ax);
    const int dy = -std::abs(by - ay);
    int err = dx + dy;
    for (;;) {
        QRgb* upper = line(ay - 1);
        QRgb* lower = line(ay);
        upper[ax - 1] = upper[ax] = lower[ax - 1] = lower[ax] = color;
        if (ax == bx && ay == by)
            break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            ax += sx;
        }
        if (e2 <= dx) {
            err += dx;
            ay += sy;
        }
    }
}

void TrackRasterizer::doClippedLine(double x0, double y0, double x1, double y1, QRgb color)
{
    // Cut the segment to the picture first: points far to the side of the view lie
    // millions of pixels away. The cut ends are kept one pixel inside.
    const double xMin = 1.0, yMin = 1.0, xMax = m_width - 1.0, yMax = m_height - 1.0;
    if (xMax < xMin || yMax < yMin)
        return;
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
    const auto clampX = [xMin, xMax](double v) { return int(std::clamp(std::round(v), xMin, xMax)); };
    const auto clampY = [yMin, yMax](double v) { return int(std::clamp(std::round(v), yMin, yMax)); };
    doLine(clampX(x0 + t0 * dx), clampY(y0 + t0 * dy), clampX(x0 + t1 * dx), clampY(y0 + t1 * dy),
           color);
}
