#pragma once

#include "schemegeometry.h"
#include "schemeroad.h"

#include <QFont>
#include <QLine>
#include <QMap>
#include <QPixmap>
#include <QPolygon>
#include <QRect>
#include <QString>
#include <QVector>

// The static picture under the traffic scheme: the limitation area, the road's axis
// and the radar's axes, the cross lines every 10 m with their notches, the lane and
// road borders, the distances along the road and the scale of Y on the radar's line.
// It is drawn into a pixmap only when the road, the scale or the limitation area
// changes; in long-exposure mode the current tracks accumulate in that pixmap.
class SchemeRoadLayer
{
public:
    // A value written beside its notch.
    struct Text
    {
        int value = 0;
        QRect box;
    };

    void setRoad(const SchemeRoad& road);
    void setGeometry(const SchemeGeometry& geometry, const QFont& font);
    // The limitation area's bounding rectangle in metres (none when null), filled when
    // the radar uses it.
    void setLimitation(const QRectF& area, bool inUse);
    // Pixels of the screen per pixel of the scheme: the picture is drawn at the screen's
    // density so that it stays sharp on a scaled display.
    void setDevicePixelRatio(qreal ratio);
    const QRectF& limitation() const { return m_limitation; }
    bool isLimitationInUse() const { return m_limitationInUse; }
    // Starts the long exposure anew from the clean road.
    void clearExposure() { m_stale = true; }
    // Adds the current tracks to the long exposure.
    void expose(const QMap<quint8, QPolygon>& tracks);

    // The picture, drawn anew if anything it shows has changed.
    const QPixmap& picture();

    // The values written along the road and on the Y scale, and how many metres apart.
    const QVector<Text>& distanceTexts() const { return m_distanceTexts; }
    const QVector<Text>& scaleTexts() const { return m_scaleTexts; }
    int distanceTextStep() const { return m_distanceTextStep; }
    int scaleTextStep() const { return m_scaleTextStep; }

private:
    // A value that may be written past the end of its notch, in the notch's direction.
    struct TextPlace
    {
        int value = 0;
        QPoint position;
        QPointF direction;
    };

    void doLayOut();
    void doLayOutDistances();
    void doLayOutScale();
    // The values of every `step` metres, each box moved inside the view; false when
    // two neighbours would touch.
    bool layOutTexts(const QVector<TextPlace>& places, qint64 step, QVector<Text>& texts) const;
    // Writes the values every `unit` times a round number (1, 2, 5, 10, 20 ...) of
    // metres, from the first round number on, at the first step at which no two of them
    // touch: thinned regularly, never here and there. Returns that step.
    int thinnedTexts(const QVector<TextPlace>& places, int unit, int firstRound,
                     QVector<Text>& texts) const;
    void doDraw();
    QSize pixelSize() const;

    SchemeRoad m_road;
    SchemeGeometry m_geometry;
    QFont m_font;
    QRectF m_limitation;
    bool m_limitationInUse = false;

    QPolygon m_axisPx;
    QLine m_xAxisPx;
    QLine m_yExtentPx;
    QVector<QPolygon> m_laneBordersPx;
    QVector<QPolygon> m_roadBordersPx;
    QVector<QPolygon> m_distanceLinesPx;
    QVector<QLine> m_notchesPx;
    QPolygon m_limitationPx;
    QVector<Text> m_distanceTexts;
    QVector<Text> m_scaleTexts;
    int m_distanceTextStep = 0;
    int m_scaleTextStep = 0;

    QPixmap m_picture;
    qreal m_devicePixelRatio = 1.0;
    bool m_stale = true;
};
