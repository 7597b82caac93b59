#pragma once

#include <QImage>
#include <QPolygon>
#include <QRect>
#include <QRgb>
#include <QVector>

#include <vector>

// Draws current tracks straight into a picture's pixels: a 2-pixel line through the
// track points and a 3 x 3 square on each point. A thousand-point track of a standing
// vehicle is a knot of tiny segments that the general painter strokes as one huge
// self-crossing outline; written pixel by pixel the same lines cost microseconds.
// Colours are opaque, so a pixel written twice looks as written once: a square a track
// has drawn already is not drawn again. Every pixel depends only on the track itself,
// so a part of the picture drawn again through a clip comes out as it was drawn whole.
class TrackRasterizer
{
public:
    // Works on the given picture (32-bit, premultiplied or opaque) until the next begin(),
    // writing only inside the clip (the whole picture when none is given).
    void begin(QImage* image);
    void begin(QImage* image, const QRect& clip);
    // The line through the points (consecutive repeats skipped, square ends), then a
    // square from (x - 2, y - 2) to (x, y) on every point except those equal to the
    // last one.
    // Returns the box it may have written, within the clip (empty for none).
    QRect drawTrack(const QPolygon& points, QRgb color)
    {
        return drawTrack(points.constData(), points.size(), color);
    }
    // The same for the end of a track from `points` on: the last of the `count` points
    // is the track's last.
    QRect drawTrack(const QPoint* points, int count, QRgb color);
    // Where pixels were written since begin(), one box per track, to restore the
    // picture beneath next time.
    const QVector<QRect>& touched() const { return m_touched; }

    // The pixels that drawing these points may write: lines reach one pixel up and
    // left of their points, squares two.
    static QRect reach(const QPoint* points, int count);
    static QRect reach(const QPoint& point) { return QRect(point.x() - 2, point.y() - 2, 3, 3); }

private:
    // A segment whose ends lie inside the picture; checked, it is written only inside the clip.
    void doLine(int x0, int y0, int x1, int y1, QRgb color, bool checked);
    void doCheckedLine(int x0, int y0, int x1, int y1, QRgb color);
    void doClippedLine(double x0, double y0, double x1, double y1, QRgb color);
    void doSquare(int x, int y, QRgb color);
    void doBlock(int x, int y, int w, int h, QRgb color);
    QRgb* line(int y) const { return reinterpret_cast<QRgb*>(m_bits + y * m_stride); }

    QImage* m_image = nullptr;
    uchar* m_bits = nullptr;
    qsizetype m_stride = 0;
    int m_width = 0;
    int m_height = 0;
    QRect m_clip;
    bool m_clipped = false; // the clip is smaller than the picture
    QVector<QRect> m_touched;
    // The pixels of a track's box whose square is drawn already (those holding the
    // track's stamp): a standing vehicle's thousand points fall on a few dozen pixels.
    std::vector<quint32> m_marks;
    quint32 m_stamp = 0;
};
