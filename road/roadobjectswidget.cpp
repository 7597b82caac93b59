#include "roadobjectswidget.h"

#include "iorvexclient.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int SchemePixelSize = 12; // the scheme's font
const QColor Background(0, 0, 0);
const QColor RadarFill(255, 0, 255);

bool samePoint(const QPointF& a, const QPointF& b)
{
    // Relative tolerance: the sight's points are far apart or the very same.
    const double scale = std::max({1.0, std::fabs(a.x()), std::fabs(a.y())});
    return std::fabs(a.x() - b.x()) <= 1e-12 * scale && std::fabs(a.y() - b.y()) <= 1e-12 * scale;
}

} // namespace

RoadObjectsWidget::RoadObjectsWidget(QWidget* parent)
    : GroupedWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(SchemeGeometry::MinimumDrawableSize, SchemeGeometry::MinimumDrawableSize);
}

// --- Options ------------------------------------------------------------------------------

void RoadObjectsWidget::setDrawVertical(bool drawVertical)
{
    m_drawVertical = drawVertical;
    doRescale();
}

void RoadObjectsWidget::setKeepAspectRatio(bool keep)
{
    m_keepAspectRatio = keep;
    doRescale();
}

void RoadObjectsWidget::setShowSightLine(bool show)
{
    m_showSightLine = show;
    doUpdateSight();
}

void RoadObjectsWidget::setShowSightArea(bool show)
{
    m_showSightArea = show;
    doUpdateSight();
}

void RoadObjectsWidget::setShowCurrentTracks(bool show)
{
    m_showCurrentTracks = show;
    doSetElementsDrawing();
}

void RoadObjectsWidget::setShowAverageTracks(bool show)
{
    m_sceneLayer.setShowAverageTracks(show);
    update();
}

void RoadObjectsWidget::setTracksDisplayMode(int mode)
{
    if (mode < 0 || mode > 2)
        return;
    m_tracksDisplayMode = mode;
    doSetElementsDrawing();
}

void RoadObjectsWidget::setPaintObjects(bool paint)
{
    m_sceneLayer.setPaintObjects(paint);
    m_objectsLayer.setPaintObjects(paint);
    update();
}

void RoadObjectsWidget::doSetElementsDrawing()
{
    // Normal: objects (and tracks if wanted) over the road. Statistical: the tracks
    // accumulate in the road picture itself, a long exposure. Mixed: both.
    const bool wasOnBase = m_drawTracksOnBase;
    m_drawObjectsNow = m_tracksDisplayMode != 1;
    m_drawTracksLive = m_tracksDisplayMode != 1 && m_showCurrentTracks;
    m_drawTracksOnBase = m_tracksDisplayMode != 0;
    if (m_drawTracksOnBase != wasOnBase)
        m_roadLayer.clearExposure(); // a long exposure starts from a clean road
    m_sceneLayer.setDrawTracksLive(m_drawTracksLive);
    update();
}

void RoadObjectsWidget::showPosition(double radarHeight, double xOffset, double yOffset,
                                     double azimuth, double altitude, double roll)
{
    // Only where the radar stands and where it looks are drawn.
    Q_UNUSED(radarHeight)
    Q_UNUSED(altitude)
    Q_UNUSED(roll)
    m_radarPosition = QPointF(xOffset, yOffset);
    m_radarAzimuth = azimuth;
    doUpdateRadar();
    update();
}

void RoadObjectsWidget::showRadarState(int state)
{
    // Without a radar nothing it saw is shown any longer.
    if (!IOrvexClient::isOnline(state)) {
        m_objects.clear();
        m_order.clear();
        m_tracks.clear();
        update();
    }
    GroupedWidget::setEnabled(IOrvexClient::isWorking(state));
}

void RoadObjectsWidget::showPolygonUsage(quint8 mask)
{
    m_polygonUsage = mask;
    doUpdateLimitation();
}

void RoadObjectsWidget::showPolygonPointParam(quint8 polygon, quint8 param, double value)
{
    // Only limitation area 0 is shown: X of vertices 0-3 in params 0-3, Y in 8-11.
    if (polygon != 0 || !((param <= 3) || (param >= 8 && param <= 11)))
        return;
    m_polygonPoints.insert(param, value);
    doUpdateLimitation();
}

// --- Road and geometry ----------------------------------------------------------------------

void RoadObjectsWidget::startApplyingRoad(const QRectF& rect)
{
    m_road = SchemeRoad();
    m_road.rect = rect;
    m_viewArea = SchemeGeometry::viewAreaFor(rect);
}

void RoadObjectsWidget::setRoadAxisLine(const QPolygonF& line)
{
    m_road.axis = line;
}

void RoadObjectsWidget::setLaneBorderLines(const QList<QPolygonF>& lines)
{
    m_road.laneBorders = lines;
}

void RoadObjectsWidget::setRoadBorderLines(const QList<QPolygonF>& lines)
{
    m_road.roadBorders = lines;
}

void RoadObjectsWidget::setLaneCenterLines(const QMap<int, QPolygonF>& lines)
{
    m_road.laneCenters = lines;
}

void RoadObjectsWidget::setDistanceLines(const QMap<int, QPolygonF>& lines)
{
    m_road.distanceLines = lines;
}

void RoadObjectsWidget::setRoadTanAngles(const QMap<int, double>& angles)
{
    m_road.tanAngles = angles;
}

void RoadObjectsWidget::finishApplyingRoad()
{
    m_roadLayer.setRoad(m_road);
    doRescale();
}

void RoadObjectsWidget::setSight(const QPointF& from, const QPointF& to, const QPolygonF& area)
{
    m_sightFrom = from;
    m_sightTo = to;
    m_sightArea = area;
    doUpdateSight();
}

void RoadObjectsWidget::doRescale()
{
    m_geometry.rescale(m_viewArea, size(), m_drawVertical, m_keepAspectRatio);
    m_roadLayer.setGeometry(m_geometry, font());
    m_tracks.refit(m_geometry);
    doUpdateLimitation();
    doUpdateSight();
    doUpdateRadar();
    update();
}

void RoadObjectsWidget::doUpdateSight()
{
    SchemeSceneLayer::Sight sight;
    sight.showLine = m_showSightLine;
    sight.showArea = m_showSightArea;
    if (m_geometry.isValid()) {
        sight.hasLine = !samePoint(m_sightFrom, m_sightTo);
        if (sight.hasLine)
            sight.line
                = QLine(m_geometry.xyToScreen(m_sightFrom), m_geometry.xyToScreen(m_sightTo));
        sight.area = m_geometry.toScreen(m_sightArea);
    }
    m_sceneLayer.setSight(sight);
    update();
}

void RoadObjectsWidget::doUpdateLimitation()
{
    // The limitation area is drawn as the bounding rectangle of its four vertices.
    QRectF area;
    if (m_polygonPoints.size() == 8) {
        double xMin = m_polygonPoints.value(0), xMax = xMin;
        double yMin = m_polygonPoints.value(8), yMax = yMin;
        for (int v = 1; v < 4; ++v) {
            xMin = std::min(xMin, m_polygonPoints.value(v));
            xMax = std::max(xMax, m_polygonPoints.value(v));
            yMin = std::min(yMin, m_polygonPoints.value(v + 8));
            yMax = std::max(yMax, m_polygonPoints.value(v + 8));
        }
        area = QRectF(QPointF(xMin, yMin), QPointF(xMax, yMax));
    }
    m_roadLayer.setLimitation(area, m_polygonUsage & 1);
    update();
}

void RoadObjectsWidget::doUpdateRadar()
{
    m_radarScreen = m_geometry.xyToScreen(m_radarPosition);
    m_radarScreenAngle = m_geometry.screenAngle(m_radarAzimuth);
}

// --- Frames -----------------------------------------------------------------------------------

void RoadObjectsWidget::startFilling()
{
    m_objects.clear();
}

void RoadObjectsWidget::setFrameDateTimeUtc(const QDateTime& dateTime)
{
    m_frameTime = dateTime;
}

void RoadObjectsWidget::addObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                                  double yRange, double length, const QDateTime& lastDetected)
{
    m_objects.insert(RoadObject{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected});
}

void RoadObjectsWidget::finishFilling(const QVector<quint8>& order)
{
    m_order = order;
    m_sceneLayer.takeChanges(m_tracks.update(m_order, m_objects, m_frameTime, m_geometry));
    m_frameArrived = true;
    update();
}

void RoadObjectsWidget::setAverageTracks(const QMap<int, QPolygonF>& tracks)
{
    m_tracks.setAverageTracks(tracks, m_geometry);
    update();
}

// --- Painting ---------------------------------------------------------------------------------

void RoadObjectsWidget::resizeEvent(QResizeEvent* event)
{
    GroupedWidget::resizeEvent(event);
    doRescale();
}

void RoadObjectsWidget::showEvent(QShowEvent* event)
{
    QFont small = font();
    small.setPixelSize(SchemePixelSize);
    setFont(small);
    GroupedWidget::showEvent(event);
    // The texts of the road picture are measured in the scheme's font.
    m_roadLayer.setGeometry(m_geometry, font());
}

void RoadObjectsWidget::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QPainter p(this);
    if (!m_geometry.isValid()) {
        p.fillRect(rect(), Background);
        return;
    }
    m_roadLayer.setDevicePixelRatio(devicePixelRatioF());
    if (m_drawTracksOnBase && m_frameArrived)
        m_roadLayer.expose(m_tracks.screenTracks());
    m_frameArrived = false;
    p.drawImage(0, 0, m_sceneLayer.picture(m_roadLayer.picture(), m_tracks));
    if (m_drawObjectsNow)
        m_objectsLayer.paint(p, m_geometry, m_order, m_objects);
    doDrawRadar(p);
}

void RoadObjectsWidget::doDrawRadar(QPainter& painter) const
{
    // The antenna: a bar across the direction it looks in.
    painter.save();
    painter.translate(m_radarScreen);
    painter.rotate(-(m_drawVertical ? m_radarScreenAngle + 90.0 : m_radarScreenAngle));
    painter.setPen(QPen(RadarFill.darker(150), 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(RadarFill);
    painter.drawRect(QRect(-3, -7, 6, 14));
    painter.restore();
}
