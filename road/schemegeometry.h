#pragma once

#include <QPoint>
#include <QPointF>
#include <QPolygon>
#include <QPolygonF>
#include <QRectF>
#include <QSize>

// How the traffic scheme maps the road frame (metres: X along the road, Y to the left
// of it) onto the widget (pixels). Drawn horizontally, X runs to the right and Y up;
// drawn vertically, X runs up and Y to the left. The view area around the road is
// scaled into the widget less a margin; the radar's line X = 0 stands 36 pixels from
// the widget's edge.
class SchemeGeometry
{
public:
    static constexpr int AlongMargin = 40; // pixels kept free along the road...
    static constexpr int AcrossMargin = 8; // ...and across it
    static constexpr int OriginInset = 36; // the radar's line X = 0 from the widget's edge
    static constexpr int MinimumDrawableSize = 40;
    static constexpr double FixedPixelsPerMetre = 16.0; // object sizes when zooming freely
    static constexpr double MinViewAhead = 5.0; // metres always shown ahead of the radar...
    static constexpr double MinViewAside = 2.0; // ...and either side of it

    // The view area for a road's bounding rectangle: it always holds the radar's line
    // X = 0, at least 5 m ahead and 2 m either side.
    static QRectF viewAreaFor(const QRectF& roadRect);

    // Fits the view area into a widget of the given size. Not valid (nothing is drawn)
    // for a widget under 40 x 40 pixels or without a view area.
    void rescale(const QRectF& viewArea, const QSize& size, bool vertical, bool keepAspectRatio);

    bool isValid() const { return m_valid; }
    QRectF viewArea() const { return m_viewArea; }
    QSize size() const { return m_size; }
    bool isVertical() const { return m_vertical; }
    bool keepsAspectRatio() const { return m_keepAspectRatio; }
    double scaleX() const { return m_scaleX; } // pixels per metre along the road
    double scaleY() const { return m_scaleY; } // and across it
    double aspect() const { return m_aspect; } // scaleY / scaleX
    QPoint origin() const { return QPoint(m_ox, m_oy); }
    int alongPixels() const; // the drawable length of the X axis

    // A road point in pixels relative to the origin, then placed on the screen.
    QPoint projected(double x, double y) const;
    QPoint screenPos(int u, int v) const;
    QPoint xyToScreen(double x, double y) const;
    QPoint xyToScreen(const QPointF& p) const { return xyToScreen(p.x(), p.y()); }
    QPolygon toScreen(const QPolygonF& line) const;
    // A projected point that is not on the pixel grid, and a projected direction, as
    // they lie on the screen.
    QPoint screenOf(const QPointF& projectedPoint) const;
    QPointF onScreen(const QPointF& projectedDirection) const;

    // An object's glyph: its length along its heading and width across, in pixels.
    QSize objectPixelSize(double length) const;
    // The heading of a speed vector on the screen, in degrees.
    double objectHeading(double xSpeed, double ySpeed) const;
    // A direction in the road frame (degrees) as the scales draw it.
    double screenAngle(double degrees) const;
    // The direction of a notch across the road at a tangent angle, in projected pixels.
    QPointF notchDirection(double tangentAngle) const;

private:
    QRectF m_viewArea;
    QSize m_size;
    bool m_vertical = false;
    bool m_keepAspectRatio = true;
    double m_scaleX = 0.0;
    double m_scaleY = 0.0;
    double m_aspect = 1.0;
    int m_ox = 0;
    int m_oy = 0;
    bool m_valid = false;
};
