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
    begin(image, image->rect());
}

void TrackRasterizer::begin(QImage* image, const QRect& clip)
{
    m_image = image;
    m_bits = image->bits();
    m_stride = image->bytesPerLine();
    m_width = image->width();
    m_height = image->height();
    m_clip = clip & image->rect();
    m_clipped = m_clip != image->rect();
    m_touched.clear();
}

QRect TrackRasterizer::reach(const QPoint* points, int count)
{
    if (count <= 0)
        return QRect();
    int left = points[0].x(), right = left;
    int top = points[0].y(), bottom = top;
    for (int i = 1; i < count; ++i) {
        left = std::min(left, points[i].x());
        right = std::max(right, points[i].x());
        top = std::min(top, points[i].y());
        bottom = std::max(bottom, points[i].y());
    }
    return QRect(QPoint(left - 2, top - 2), QPoint(right, bottom));
}

void TrackRasterizer::doBlock(int x, int y, int w, int h, QRgb color)
{
    const QRect block = QRect(x, y, w, h) & m_clip;
    if (block.isEmpty())
        return; // wholly outside what may be written
    for (int row = block.top(); row <= block.bottom(); ++row)
        std::fill(line(row) + block.left(), line(row) + block.right() + 1, color);
}

void TrackRasterizer::doSquare(int x, int y, QRgb color)
{
    QRgb* l = line(y - 2);
    const qsizetype next = m_stride / qsizetype(sizeof(QRgb));
    for (int row = 0; row < 3; ++row, l += next)
        l[x - 2] = l[x - 1] = l[x] = color;
}

QRect TrackRasterizer::drawTrack(const QPoint* points, int count, QRgb color)
{
    if (count < 2 || m_clip.isEmpty())
        return QRect();
    const QRect all = reach(points, count);
    const QRect box = all & m_clip;
    if (box.isEmpty())
        return QRect();
    m_touched.append(box);
    // Wholly inside: no point needs a look at the edges of the picture or the clip.
    const bool inside = m_clip.contains(all);

    const qsizetype next = m_stride / qsizetype(sizeof(QRgb));
    // The 2 x 2 block a line sets on a point, up and left of it.
    const auto block = [this, next, color](int x, int y) {
        QRgb* at = line(y - 1) + (x - 1);
        at[0] = at[1] = at[next] = at[next + 1] = color;
    };
    const QPoint last = points[count - 1];
    QPoint previous = points[0];
    for (int i = 1; i < count; ++i) {
        const QPoint p = points[i];
        if (p == previous)
            continue;
        const int ax = previous.x(), ay = previous.y(), bx = p.x(), by = p.y();
        const bool fromLast = previous == last;
        previous = p;
        const bool ends = inside
                          || (std::min({ax, ay, bx, by}) >= 1 && std::max(ax, bx) < m_width
                              && std::max(ay, by) < m_height);
        if (ends && (inside || !m_clipped) && std::abs(bx - ax) <= 1 && std::abs(by - ay) <= 1) {
            // Most steps of a track go to a neighbouring pixel: a line of one step sets
            // the blocks on its two ends. A point other than the last gets its square
            // below, which covers its block in the same colour (clipped alike): only the
            // last point's block is left to set.
            if (fromLast)
                block(ax, ay);
            if (p == last)
                block(bx, by);
        } else if (inside) {
            doLine(ax, ay, bx, by, color, false);
        } else if (ends) {
            doCheckedLine(ax, ay, bx, by, color);
        } else if (!(std::max(ax, bx) < 1 || std::max(ay, by) < 1 || std::min(ax, bx) >= m_width
                     || std::min(ay, by) >= m_height)) {
            // Cut to the picture, unless both ends lie beyond the same edge: then nothing
            // of the line is in it.
            doClippedLine(ax, ay, bx, by, color);
        }
    }

    const int left = all.left() + 2;
    const int top = all.top() + 2;
    const qint64 boxWidth = qint64(all.right()) - left + 1;
    const qint64 area = boxWidth * (qint64(all.bottom()) - top + 1);
    const bool marking = inside && area <= MaxMarkedArea;
    if (marking) {
        // A new stamp marks this track's squares: the marks of earlier tracks are
        // simply other stamps, so nothing needs clearing.
        if (m_marks.size() < size_t(area))
            m_marks.resize(size_t(area), 0);
        if (++m_stamp == 0) {
            std::fill(m_marks.begin(), m_marks.end(), 0);
            m_stamp = 1;
        }
    }
    for (int i = 0; i < count; ++i) {
        const QPoint& p = points[i];
        if (p == last)
            continue;
        const int x = p.x(), y = p.y();
        if (marking) {
            quint32& mark = m_marks[size_t((y - top) * boxWidth + (x - left))];
            if (mark == m_stamp)
                continue;
            mark = m_stamp;
            doSquare(x, y, color);
        } else if (inside
                   || (x - 2 >= m_clip.left() && x <= m_clip.right() && y - 2 >= m_clip.top()
                       && y <= m_clip.bottom())) {
            // A track wholly inside has every square inside; a long one across the
            // video is too large to mark.
            doSquare(x, y, color);
        } else if (x >= m_clip.left() && x - 2 <= m_clip.right() && y >= m_clip.top()
                   && y - 2 <= m_clip.bottom()) {
            // Partly inside.
            doBlock(x - 2, y - 2, 3, 3, color);
        }
    }
    return box;
}

void TrackRasterizer::doCheckedLine(int ax, int ay, int bx, int by, QRgb color)
{
    // The segment's blocks reach one pixel up and left of its ends.
    const int left = std::min(ax, bx) - 1, right = std::max(ax, bx);
    const int top = std::min(ay, by) - 1, bottom = std::max(ay, by);
    if (!m_clipped
        || (left >= m_clip.left() && right <= m_clip.right() && top >= m_clip.top()
            && bottom <= m_clip.bottom()))
        doLine(ax, ay, bx, by, color, false);
    else if (left <= m_clip.right() && right >= m_clip.left() && top <= m_clip.bottom()
             && bottom >= m_clip.top())
        doLine(ax, ay, bx, by, color, true);
}

void TrackRasterizer::doLine(int ax, int ay, int bx, int by, QRgb color, bool checked)
{
    // Bresenham; each step sets a 2 x 2 block, up and left of the point, as a 2-pixel
    // pen centred on the line covers. Both ends lie inside the picture; when checked,
    // the blocks are written pixel by pixel inside the clip only.
    const qsizetype next = m_stride / qsizetype(sizeof(QRgb));
    const int sx = ax < bx ? 1 : -1;
    const qsizetype sy = ay < by ? next : -next;
    const int dx = std::abs(bx - ax);
    const int dy = -std::abs(by - ay);
    int err = dx + dy;
    QRgb* at = line(ay - 1) + (ax - 1);
    for (int x = ax, y = ay;;) {
        if (!checked) {
            at[0] = at[1] = at[next] = at[next + 1] = color;
        } else {
            for (int row = 0; row < 2; ++row) {
                const int py = y - 1 + row;
                if (py < m_clip.top() || py > m_clip.bottom())
                    continue;
                for (int column = 0; column < 2; ++column) {
                    const int px = x - 1 + column;
                    if (px >= m_clip.left() && px <= m_clip.right())
                        at[row * next + column] = color;
                }
            }
        }
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
    const auto clampX
        = [xMin, xMax](double v) { return int(std::clamp(std::round(v), xMin, xMax)); };
    const auto clampY
        = [yMin, yMax](double v) { return int(std::clamp(std::round(v), yMin, yMax)); };
    doCheckedLine(clampX(x0 + t0 * dx), clampY(y0 + t0 * dy), clampX(x0 + t1 * dx),
                  clampY(y0 + t1 * dy), color);
}
