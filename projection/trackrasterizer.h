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
// has drawn already is not drawn again.
class TrackRasterizer
{
public:
    // Works on the given picture (32-bit, premultiplied) until the next begin().
    void begin(QImage* image);
    // The line through the points (consecutive repeats skipped, square ends), then a
    // square from (x - 2, y - 2) to (x, y) on every point except those equal to the
    // last one.
    void drawTrack(const QPolygon& points, QRgb color);
    // Where pixels were written since begin(), one box per track, to restore the
    // picture beneath next time.
    const QVector<QRect>& touched() const { return m_touched; }

private:
    void doLine(int x0, int y0, int x1, int y1, QRgb color);
    void doClippedLine(double x0, double y0, double x1, double y1, QRgb color);
    void doSquare(int x, int y, QRgb color);
    void doBlock(int x, int y, int w, int h, QRgb color);
    QRgb* line(int y) const { return reinterpret_cast<QRgb*>(m_bits + y * m_stride); }

    QImage* m_image = nullptr;
    uchar* m_bits = nullptr;
    qsizetype m_stride = 0;
    int m_width = 0;
    int m_height = 0;
    QVector<QRect> m_touched;
    // The pixels of a track's box whose square is drawn already: a standing vehicle's
    // thousand points fall on a few dozen pixels.
    std::vector<quint8> m_marks;
};
