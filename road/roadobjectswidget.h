#pragma once

#include "groupedwidget.h"
#include "roadobject.h"

#include <QDateTime>
#include <QLine>
#include <QList>
#include <QMap>
#include <QPixmap>
#include <QPolygon>
#include <QPolygonF>
#include <QRectF>
#include <QVector>

// The bird's-eye traffic scheme: the road as the road builder lays it out, the radar,
// its limitation area, the camera's sight, and the vehicles of the current radar frame
// with their current tracks and the lanes' average tracks. The road runs to the right
// (X right, Y up) or, drawn vertically, upwards (X up, Y left). The static road is kept
// in a pixmap; a frame repaints only what moves.
class RoadObjectsWidget : public GroupedWidget
{
    Q_OBJECT

public:
    static constexpr int AlongMargin = 40; // pixels kept free along the road...
    static constexpr int AcrossMargin = 8; // ...and across it
    static constexpr int OriginInset = 36; // the radar's line X = 0 from the widget's edge
    static constexpr int MinimumDrawableSize = 40;
    static constexpr double FixedPixelsPerMetre = 16.0; // object sizes when zooming freely
    static constexpr int MaxTrackPoints = 3000; // five minutes at ten cycles a second
    static constexpr int TrackTrimPoints = 100; // dropped at once from a long track

    explicit RoadObjectsWidget(QWidget* parent = nullptr);

    // The view's geometry, for the tests and the projection's pick-up.
    bool isValid() const { return m_valid; }
    QRectF viewArea() const { return m_viewArea; }
    double scaleX() const { return m_scaleX; }
    double scaleY() const { return m_scaleY; }
    double aspect() const { return m_aspect; }
    QPoint screenOrigin() const { return QPoint(m_ox, m_oy); }
    QPoint projected(double x, double y) const;
    QPoint screenPos(int u, int v) const;
    QPoint xyToScreen(double x, double y) const;
    // An object's glyph: its size in pixels (length along its heading, width across)
    // and its heading on screen in degrees.
    QSize objectPixelSize(double length) const;
    double objectHeading(double xSpeed, double ySpeed) const;
    int currentTrackCount() const { return m_rawTracks.size(); }
    int tracksDisplayMode() const { return m_tracksDisplayMode; }
    bool drawsObjects() const { return m_drawObjectsNow; }
    bool drawsTracksLive() const { return m_drawTracksLive; }
    bool drawsTracksOnBase() const { return m_drawTracksOnBase; }

public slots:
    void setDrawVertical(bool drawVertical);
    void setKeepAspectRatio(bool keep);
    void setShowSightLine(bool show);
    void setShowSightArea(bool show);
    void setShowCurrentTracks(bool show);
    void setShowAverageTracks(bool show);
    void setTracksDisplayMode(int mode);
    void setPaintObjects(bool paint);
    void showPosition(double radarHeight, double xOffset, double yOffset, double azimuth,
                      double altitude, double roll);
    void showRadarState(int state);
    void showPolygonUsage(quint8 mask);
    void showPolygonPointParam(quint8 polygon, quint8 param, double value);

    void startApplyingRoad(const QRectF& rect);
    void setRoadAxisLine(const QPolygonF& line);
    void setLaneBorderLines(const QList<QPolygonF>& lines);
    void setRoadBorderLines(const QList<QPolygonF>& lines);
    void setLaneCenterLines(const QMap<int, QPolygonF>& lines);
    void setDistanceLines(const QMap<int, QPolygonF>& lines);
    void setRoadTanAngles(const QMap<int, double>& angles);
    void finishApplyingRoad();
    void setSight(const QPointF& from, const QPointF& to, const QPolygonF& area);

    void startFilling();
    void setFrameDateTimeUtc(const QDateTime& dateTime);
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling(const QVector<quint8>& order);
    void setAverageTracks(const QMap<int, QPolygonF>& tracks);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    struct Label
    {
        QPoint position; // just past the end of its notch
        QPointF direction; // the notch's direction on the screen
        QString text;
    };

    void doRescale(int width, int height);
    void doApplyRoad();
    void doRefitGeometry(bool refitAverageTracks);
    void doUpdateTracks();
    QPolygon doScaleTrack(const QPolygonF& track) const;
    void doSetElementsDrawing();
    void doDrawRoadPixmap();
    void doDrawTracksOnBase();
    void doDrawScene();
    void doDrawTrack(QPainter& painter, quint8 id, const QPolygon& track, int from) const;
    void doDrawNewTrackPoints();
    void doDrawObject(QPainter& painter, const RoadObject& object) const;
    void doDrawRadar(QPainter& painter) const;
    QPolygon toScreen(const QPolygonF& line) const;
    // The notch direction for a road tangent angle, in projected pixels.
    QPointF notchDirection(double tangentAngle) const;

    // Options.
    bool m_drawVertical = false;
    bool m_keepAspectRatio = true;
    bool m_showSightLine = false;
    bool m_showSightArea = false;
    bool m_showCurrentTracks = false;
    bool m_showAverageTracks = true;
    int m_tracksDisplayMode = 0;
    bool m_paintObjects = false;
    bool m_drawObjectsNow = true;
    bool m_drawTracksLive = false;
    bool m_drawTracksOnBase = false;

    // Geometry.
    QRectF m_viewArea;
    double m_scaleX = 0.0;
    double m_scaleY = 0.0;
    double m_aspect = 1.0;
    int m_ox = 0;
    int m_oy = 0;
    bool m_valid = false;

    // The radar and its limitation area (polygon 0: X of vertices 0-3 in params 0-3,
    // their Y in params 8-11).
    QPointF m_radarPosition;
    double m_radarAzimuth = 0.0; // degrees
    QPoint m_radarScreen;
    double m_radarScreenAngle = 0.0;
    quint8 m_polygonUsage = 0;
    QMap<int, double> m_polygonPoints;
    QPolygon m_limitationPx;

    // The road as received, and in pixels.
    QRectF m_roadRect;
    QPolygonF m_axis;
    QList<QPolygonF> m_laneBorders;
    QList<QPolygonF> m_roadBorders;
    QMap<int, QPolygonF> m_laneCenters;
    QMap<int, QPolygonF> m_distanceLines;
    QMap<int, double> m_tanAngles;
    QPolygon m_axisPx;
    QLine m_xAxisPx;
    QLine m_yExtentPx;
    QList<QPolygon> m_laneBordersPx;
    QList<QPolygon> m_roadBordersPx;
    QList<QPolygon> m_distanceLinesPx;
    QVector<QLine> m_notchesPx;
    QList<Label> m_notchTexts;

    // The camera's sight.
    QPointF m_sightFrom;
    QPointF m_sightTo;
    QPolygonF m_sightArea;
    bool m_hasSightLine = false;
    QLine m_sightLinePx;
    QPolygon m_sightAreaPx;

    // The frame and the tracks.
    QDateTime m_frameTime;
    QMap<quint8, RoadObject> m_objects;
    QVector<quint8> m_order;
    QMap<quint8, QPolygonF> m_rawTracks;
    QMap<quint8, QPolygon> m_screenTracks;
    QMap<int, QPolygonF> m_averageTracks;
    QList<QPolygon> m_averageTracksPx;
    bool m_frameArrived = false;

    // The road picture, and the scene: the road with the sight, the average tracks and
    // the current tracks on it. Tracks grow by a point a frame; only the new pieces are
    // added to the scene, which is drawn anew when anything else in it changes.
    QPixmap m_roadPixmap;
    bool m_pixmapDirty = true;
    QPixmap m_scenePixmap;
    bool m_sceneDirty = true;
    QMap<quint8, int> m_drawnTrackPoints; // points of each track already in the scene
};
