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
    m_touched.clear();
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

void TrackRasterizer::doSquare(int x, int y, QRgb color)
{
    QRgb* l = line(y - 2);
    const qsizetype next = m_stride / qsizetype(sizeof(QRgb));
    for (int row = 0; row < 3; ++row, l += next)
        l[x - 2] = l[x - 1] = l[x] = color;
}

void TrackRasterizer::drawTrack(const QPolygon& points, QRgb color)
{
    if (points.size() < 2 || m_width <= 0 || m_height <= 0)
        return;
    int left = points.first().x(), right = left;
    int top = points.first().y(), bottom = top;
    for (const QPoint& p : points) {
        left = std::min(left, p.x());
        right = std::max(right, p.x());
        top = std::min(top, p.y());
        bottom = std::max(bottom, p.y());
    }
    // Lines reach one pixel up and left of their points, squares two.
    const QRect box = QRect(QPoint(left - 2, top - 2), QPoint(right, bottom)).intersected(m_image->rect());
    if (box.isEmpty())
        return;
    m_touched.append(box);
    // Wholly inside: no point needs a look at the picture's edges.
    const bool inside = left >= 2 && top >= 2 && right < m_width && bottom < m_height;

    QPoint previous = points.first();
    for (int i = 1; i < points.size(); ++i) {
        const QPoint p = points.at(i);
        if (p == previous)
            continue;
        const bool segmentInside = inside
                                   || (std::min({previous.x(), previous.y(), p.x(), p.y()}) >= 1
                                       && std::max(previous.x(), p.x()) < m_width
                                       && std::max(previous.y(), p.y()) < m_height);
        if (!segmentInside)
            doClippedLine(previous.x(), previous.y(), p.x(), p.y(), color);
        else
            doLine(previous.x(), previous.y(), p.x(), p.y(), color);
        previous = p;
    }

    const QPoint last = points.last();
    const qint64 boxWidth = qint64(right) - left + 1;
    const qint64 area = boxWidth * (qint64(bottom) - top + 1);
    const bool marking = inside && area <= MaxMarkedArea;
    if (marking)
        m_marks.assign(size_t(area), 0);
    for (const QPoint& p : points) {
        if (p == last)
            continue;
        const int x = p.x(), y = p.y();
        if (marking) {
            quint8& mark = m_marks[size_t((y - top) * boxWidth + (x - left))];
            if (mark)
                continue;
            mark = 1;
            doSquare(x, y, color);
        } else if (x >= 2 && y >= 2 && x < m_width && y < m_height) {
            doSquare(x, y, color);
        } else {
            doBlock(x - 2, y - 2, 3, 3, color);
        }
    }
}

void TrackRasterizer::doLine(int ax, int ay, int bx, int by, QRgb color)
{
    // Bresenham; each step sets a 2 x 2 block, up and left of the point, as a 2-pixel
    // pen centred on the line covers. Both ends lie inside the picture.
    const qsizetype next = m_stride / qsizetype(sizeof(QRgb));
    const int sx = ax < bx ? 1 : -1;
    const qsizetype sy = ay < by ? next : -next;
    const int dx = std::abs(bx - ax);
    const int dy = -std::abs(by - ay);
    int err = dx + dy;
    QRgb* at = line(ay - 1) + (ax - 1);
    for (int x = ax, y = ay;;) {
        at[0] = at[1] = at[next] = at[next + 1] = color;
        if (x == bx && y == by)
            break;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
            at += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += (sy > 0 ? 1 : -1);
            at += sy;
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
