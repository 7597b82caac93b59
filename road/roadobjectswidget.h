#pragma once

#include "groupedwidget.h"
#include "frameobjects.h"
#include "roadobject.h"
#include "schemegeometry.h"
#include "schemeobjectslayer.h"
#include "schemeroad.h"
#include "schemeroadlayer.h"
#include "schemescenelayer.h"
#include "schemetracks.h"

#include <QDateTime>
#include <QMap>
#include <QPolygonF>
#include <QRectF>
#include <QVector>

// The bird's-eye traffic scheme: the road as the road builder lays it out, the radar,
// its limitation area, the camera's sight, and the vehicles of the current radar frame
// with their current tracks and the lanes' average tracks. The picture is built in
// layers: the static road (redrawn when the road, the scale or the limitation area
// changes), the scene of sight and tracks on it (extended by each frame's new track
// pieces), and the objects and the radar, painted every frame.
class RoadObjectsWidget : public GroupedWidget
{
    Q_OBJECT

public:
    explicit RoadObjectsWidget(QWidget* parent = nullptr);

    // The view's geometry and layers, for the tests and the projection's pick-up.
    const SchemeGeometry& geometry() const { return m_geometry; }
    bool isValid() const { return m_geometry.isValid(); }
    QRectF viewArea() const { return m_viewArea; }
    const SchemeTracks& tracks() const { return m_tracks; }
    const SchemeRoadLayer& roadLayer() const { return m_roadLayer; }
    const SchemeObjectsLayer& objectsLayer() const { return m_objectsLayer; }
    int currentTrackCount() const { return m_tracks.count(); }
    int tracksDisplayMode() const { return m_tracksDisplayMode; }
    bool drawsObjects() const { return m_drawObjectsNow; }
    bool drawsTracksLive() const { return m_drawTracksLive; }
    bool drawsTracksOnBase() const { return m_drawTracksOnBase; }
    // Where the radar is drawn (metres) and the direction it looks in (degrees).
    QPointF radarPosition() const { return m_radarPosition; }
    double radarAzimuth() const { return m_radarAzimuth; }

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
    // A new scale: everything drawn in pixels follows it, the tracks included.
    void doRescale();
    void doSetElementsDrawing();
    void doUpdateSight();
    void doUpdateLimitation();
    void doUpdateRadar();
    void doDrawRadar(QPainter& painter) const;

    // Options.
    bool m_drawVertical = false;
    bool m_keepAspectRatio = true;
    bool m_showSightLine = false;
    bool m_showSightArea = false;
    bool m_showCurrentTracks = false;
    int m_tracksDisplayMode = 0;
    bool m_drawObjectsNow = true;
    bool m_drawTracksLive = false;
    bool m_drawTracksOnBase = false;

    // The road and the view around it.
    SchemeRoad m_road;
    QRectF m_viewArea;
    SchemeGeometry m_geometry;

    // The radar and its limitation area (polygon 0: X of vertices 0-3 in params 0-3,
    // their Y in params 8-11).
    QPointF m_radarPosition;
    double m_radarAzimuth = 0.0; // degrees
    QPoint m_radarScreen;
    double m_radarScreenAngle = 0.0;
    quint8 m_polygonUsage = 0;
    QMap<int, double> m_polygonPoints;

    // The camera's sight.
    QPointF m_sightFrom;
    QPointF m_sightTo;
    QPolygonF m_sightArea;

    // The frame.
    QDateTime m_frameTime;
    FrameObjects m_objects;
    QVector<quint8> m_order;
    bool m_frameArrived = false;

    SchemeTracks m_tracks;
    SchemeRoadLayer m_roadLayer;
    SchemeSceneLayer m_sceneLayer;
    SchemeObjectsLayer m_objectsLayer;
};
