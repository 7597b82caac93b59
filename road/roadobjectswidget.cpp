#include "roadobjectswidget.h"

#include "iorvexclient.h"
#include "objectcolor.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

// The view always shows the radar's line X = 0, at least 5 m ahead and 2 m either side.
constexpr double MinViewAhead = 5.0;
constexpr double MinViewAside = 2.0;
// Cross lines stand every 10 m from 10 m on; every 20 m they carry their distance.
constexpr int DistanceLineStep = 10;
constexpr int DistanceTextStep = 20;
constexpr int LongNotch = 8;
constexpr int ShortNotch = 4;
constexpr int ScaleTextStep = 5; // the Y scale's values, in metres
constexpr int TextGap = 2;
constexpr int SidePixelSize = 12; // the scheme's font

const QColor Background(0, 0, 0);
const QColor Grey(127, 127, 127);
const QColor White(255, 255, 255);
const QColor LimitationOutline(0, 0, 127);
const QColor LimitationFill(0, 0, 63);
const QColor SightAreaFill(0, 255, 255, 63);
const QColor SightLine(0, 191, 191);
const QColor AverageTrack(255, 0, 0);
const QColor LongExposureTrack(255, 255, 0, 15);
const QColor RadarFill(255, 0, 255);

QPen linePen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
    return pen;
}

QPen dashedPen(const QColor& color, double width, const QVector<qreal>& pattern)
{
    QPen pen = linePen(color, width);
    pen.setDashPattern(pattern);
    return pen;
}

double degrees(double radians)
{
    return radians * 180.0 / M_PI;
}

double normalisedDegrees(double angle)
{
    while (angle > 180.0)
        angle -= 360.0;
    while (angle < -180.0)
        angle += 360.0;
    return angle;
}

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
    setMinimumSize(MinimumDrawableSize, MinimumDrawableSize);
}

// --- Coordinates ------------------------------------------------------------------------

QPoint RoadObjectsWidget::projected(double x, double y) const
{
    return QPoint(qRound(x * m_scaleX), qRound(y * m_scaleY));
}

QPoint RoadObjectsWidget::screenPos(int u, int v) const
{
    // Horizontally X grows to the right and Y upwards; vertically X grows upwards and
    // Y to the left.
    return m_drawVertical ? QPoint(m_ox - v, m_oy - u) : QPoint(m_ox + u, m_oy - v);
}

QPoint RoadObjectsWidget::xyToScreen(double x, double y) const
{
    const QPoint p = projected(x, y);
    return screenPos(p.x(), p.y());
}

QPolygon RoadObjectsWidget::toScreen(const QPolygonF& line) const
{
    QPolygon screen;
    screen.reserve(line.size());
    for (const QPointF& p : line)
        screen.append(xyToScreen(p.x(), p.y()));
    return screen;
}

QSize RoadObjectsWidget::objectPixelSize(double length) const
{
    // Vehicles of 2 m and longer are drawn 2 m wide, shorter ones 1 m.
    const double l = length > 0 ? length : 1.0;
    const double w = l < 2.0 ? 1.0 : 2.0;
    if (m_keepAspectRatio)
        return QSize(qRound(l * m_scaleX), qRound(w * m_scaleY));
    return QSize(qRound(FixedPixelsPerMetre * l), qRound(FixedPixelsPerMetre * w));
}

double RoadObjectsWidget::objectHeading(double xSpeed, double ySpeed) const
{
    double heading = 0.0;
    if (std::fabs(xSpeed) < 1e-6)
        heading = std::fabs(ySpeed) <= 1e-6 ? 0.0 : (ySpeed > 0 ? 90.0 : -90.0);
    else
        heading = degrees(std::atan(ySpeed / xSpeed));
    if (xSpeed < 0)
        heading += 180.0;
    heading = normalisedDegrees(heading);
    // With the scales apart the heading follows the distorted road; it then folds into
    // -90..90 degrees, so a vehicle going against X is drawn facing along it.
    if (!m_keepAspectRatio)
        heading = degrees(std::atan(std::tan(qDegreesToRadians(heading)) * m_aspect));
    return heading;
}

// --- Options ------------------------------------------------------------------------------

void RoadObjectsWidget::setDrawVertical(bool drawVertical)
{
    m_drawVertical = drawVertical;
    doRefitGeometry(true);
}

void RoadObjectsWidget::setKeepAspectRatio(bool keep)
{
    m_keepAspectRatio = keep;
    doRefitGeometry(true);
}

void RoadObjectsWidget::setShowSightLine(bool show)
{
    m_showSightLine = show;
    m_sceneDirty = true;
    update();
}

void RoadObjectsWidget::setShowSightArea(bool show)
{
    m_showSightArea = show;
    m_sceneDirty = true;
    update();
}

void RoadObjectsWidget::setShowCurrentTracks(bool show)
{
    m_showCurrentTracks = show;
    doSetElementsDrawing();
}

void RoadObjectsWidget::setShowAverageTracks(bool show)
{
    m_showAverageTracks = show;
    m_sceneDirty = true;
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
    m_paintObjects = paint;
    m_sceneDirty = true; // the tracks take their objects' colours
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
        m_pixmapDirty = true; // a long exposure starts from a clean road
    m_sceneDirty = true;
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
    doRescale(width(), height());
    update();
}

void RoadObjectsWidget::showRadarState(int state)
{
    // Without a radar nothing it saw is shown any longer.
    if (!IOrvexClient::isOnline(state)) {
        m_objects.clear();
        m_order.clear();
        m_rawTracks.clear();
        m_screenTracks.clear();
        m_sceneDirty = true;
        update();
    }
    GroupedWidget::setEnabled(IOrvexClient::isWorking(state));
}

void RoadObjectsWidget::showPolygonUsage(quint8 mask)
{
    m_polygonUsage = mask;
    m_pixmapDirty = true;
    update();
}

void RoadObjectsWidget::showPolygonPointParam(quint8 polygon, quint8 param, double value)
{
    // Only limitation area 0 is shown: X of vertices 0-3 in params 0-3, Y in 8-11.
    if (polygon != 0 || !((param <= 3) || (param >= 8 && param <= 11)))
        return;
    m_polygonPoints.insert(param, value);
    doRescale(width(), height());
    m_pixmapDirty = true;
    update();
}

// --- Road ---------------------------------------------------------------------------------

void RoadObjectsWidget::startApplyingRoad(const QRectF& rect)
{
    m_roadRect = rect;
    const double x0 = rect.x() < 0 ? rect.x() : 0.0;
    const double x1 = std::max(rect.x() + rect.width(), MinViewAhead);
    const double y0 = std::min(rect.y(), -MinViewAside);
    const double y1 = std::max(rect.y() + rect.height(), MinViewAside);
    m_viewArea = QRectF(x0, y0, x1 - x0, y1 - y0);
    m_axis.clear();
    m_laneBorders.clear();
    m_roadBorders.clear();
    m_laneCenters.clear();
    m_distanceLines.clear();
    m_tanAngles.clear();
}

void RoadObjectsWidget::setRoadAxisLine(const QPolygonF& line)
{
    m_axis = line;
}

void RoadObjectsWidget::setLaneBorderLines(const QList<QPolygonF>& lines)
{
    m_laneBorders = lines;
}

void RoadObjectsWidget::setRoadBorderLines(const QList<QPolygonF>& lines)
{
    m_roadBorders = lines;
}

void RoadObjectsWidget::setLaneCenterLines(const QMap<int, QPolygonF>& lines)
{
    m_laneCenters = lines;
}

void RoadObjectsWidget::setDistanceLines(const QMap<int, QPolygonF>& lines)
{
    m_distanceLines = lines;
}

void RoadObjectsWidget::setRoadTanAngles(const QMap<int, double>& angles)
{
    m_tanAngles = angles;
}

void RoadObjectsWidget::finishApplyingRoad()
{
    // The average tracks of the new road follow from the objects helper.
    doRefitGeometry(false);
}

void RoadObjectsWidget::setSight(const QPointF& from, const QPointF& to, const QPolygonF& area)
{
    m_sightFrom = from;
    m_sightTo = to;
    m_sightArea = area;
    doRescale(width(), height());
    m_sceneDirty = true;
    update();
}

void RoadObjectsWidget::doRefitGeometry(bool refitAverageTracks)
{
    m_pixmapDirty = true;
    doRescale(width(), height());
    doApplyRoad();
    if (refitAverageTracks)
        setAverageTracks(m_averageTracks);
    for (auto it = m_rawTracks.cbegin(); it != m_rawTracks.cend(); ++it)
        m_screenTracks.insert(it.key(), doScaleTrack(*it));
    update();
}

void RoadObjectsWidget::doRescale(int width, int height)
{
    m_valid = false;
    m_screenTracks.clear();
    m_sceneDirty = true;
    if (width < MinimumDrawableSize || height < MinimumDrawableSize || m_viewArea.isNull())
        return;

    const int along = m_drawVertical ? height : width;
    const int across = m_drawVertical ? width : height;
    // Measured from X = 0: a view that starts behind the radar leaves its negative
    // part in the margin before the origin.
    m_scaleX = (along - AlongMargin) / (m_viewArea.x() + m_viewArea.width());
    m_scaleY = (across - AcrossMargin) / m_viewArea.height();
    if (m_keepAspectRatio)
        m_scaleX = m_scaleY = std::min(m_scaleX, m_scaleY);
    m_aspect = m_scaleX > 0.001 ? m_scaleY / m_scaleX : 1.0;

    const int top = qRound(std::fabs(m_viewArea.y()) * m_scaleY);
    const int bottom = qRound(std::fabs(m_viewArea.y() + m_viewArea.height()) * m_scaleY);
    const int margin = (across - AcrossMargin - top - bottom) / 2;
    const int base = bottom + margin;
    if (m_drawVertical) {
        m_ox = base + 3;
        m_oy = height - OriginInset;
    } else {
        m_ox = OriginInset;
        m_oy = base + 3;
    }

    m_hasSightLine = !samePoint(m_sightFrom, m_sightTo);
    if (m_hasSightLine)
        m_sightLinePx = QLine(xyToScreen(m_sightFrom.x(), m_sightFrom.y()),
                              xyToScreen(m_sightTo.x(), m_sightTo.y()));
    m_sightAreaPx = toScreen(m_sightArea);
    m_xAxisPx = QLine(screenPos(0, 0), screenPos(along - AlongMargin, 0));
    m_yExtentPx
        = QLine(xyToScreen(0, m_viewArea.y()), xyToScreen(0, m_viewArea.y() + m_viewArea.height()));
    m_radarScreen = xyToScreen(m_radarPosition.x(), m_radarPosition.y());
    double azimuth = m_radarAzimuth;
    if (!m_keepAspectRatio)
        azimuth = degrees(std::atan(std::tan(qDegreesToRadians(azimuth)) * m_aspect));
    m_radarScreenAngle = azimuth;

    m_limitationPx.clear();
    if (m_polygonPoints.size() == 8) {
        double xMin = 1e300, xMax = -1e300, yMin = 1e300, yMax = -1e300;
        for (int v = 0; v < 4; ++v) {
            xMin = std::min(xMin, m_polygonPoints.value(v));
            xMax = std::max(xMax, m_polygonPoints.value(v));
            yMin = std::min(yMin, m_polygonPoints.value(v + 8));
            yMax = std::max(yMax, m_polygonPoints.value(v + 8));
        }
        m_limitationPx = toScreen(
            QPolygonF(QVector<QPointF>{{xMin, yMin}, {xMax, yMin}, {xMax, yMax}, {xMin, yMax}}));
    }
    m_valid = true;
}

QPointF RoadObjectsWidget::notchDirection(double tangentAngle) const
{
    const double b
        = m_keepAspectRatio ? tangentAngle : std::atan(std::tan(tangentAngle) / m_aspect);
    // Across the road, towards its right-hand side (-Y), in projected pixels.
    return QPointF(std::sin(b), -std::cos(b));
}

void RoadObjectsWidget::doApplyRoad()
{
    m_axisPx.clear();
    m_laneBordersPx.clear();
    m_roadBordersPx.clear();
    m_distanceLinesPx.clear();
    m_notchesPx.clear();
    m_notchTexts.clear();
    if (!m_valid)
        return;

    m_axisPx = toScreen(m_axis);
    for (const QPolygonF& line : qAsConst(m_laneBorders))
        m_laneBordersPx.append(toScreen(line));
    for (const QPolygonF& line : qAsConst(m_roadBorders))
        m_roadBordersPx.append(toScreen(line));

    auto screenOf = [this](const QPointF& projectedPoint) {
        return screenPos(qRound(projectedPoint.x()), qRound(projectedPoint.y()));
    };
    // A direction in projected pixels as it runs on the screen.
    auto onScreen = [this](const QPointF& d) {
        return m_drawVertical ? QPointF(-d.y(), -d.x()) : QPointF(d.x(), -d.y());
    };
    for (auto it = m_distanceLines.cbegin(); it != m_distanceLines.cend(); ++it) {
        const int mark = it.key();
        if (mark <= 0 || mark % DistanceLineStep != 0 || it->isEmpty())
            continue;
        m_distanceLinesPx.append(toScreen(*it));
        // A notch at the road's right-hand edge, across the road.
        const QPointF edge = QPointF(projected(it->first().x(), it->first().y()));
        const QPointF direction = notchDirection(m_tanAngles.value(mark));
        const bool long20 = mark % DistanceTextStep == 0;
        const QPointF end = edge + direction * (long20 ? LongNotch : ShortNotch);
        m_notchesPx.append(QLine(screenOf(edge), screenOf(end)));
        if (long20)
            m_notchTexts.append(
                {screenOf(end + direction * TextGap), onScreen(direction), QString::number(mark)});
    }

    // The scale of Y on the radar's line, ticks pointing back past the radar.
    for (int y = int(std::ceil(m_viewArea.y())); y <= int(std::floor(m_viewArea.bottom())); ++y) {
        const QPointF at = QPointF(projected(0, y));
        const bool long5 = y % ScaleTextStep == 0;
        const QPointF end = at + QPointF(-(long5 ? LongNotch : ShortNotch), 0);
        m_notchesPx.append(QLine(screenOf(at), screenOf(end)));
        if (long5)
            m_notchTexts.append({screenOf(end + QPointF(-TextGap, 0)), onScreen(QPointF(-1, 0)),
                                 QString::number(y)});
    }
}

// --- Frames and tracks ----------------------------------------------------------------------

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
    m_objects.insert(id, RoadObject{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected});
}

void RoadObjectsWidget::finishFilling(const QVector<quint8>& order)
{
    m_order = order;
    doUpdateTracks();
    m_frameArrived = true;
    update();
}

void RoadObjectsWidget::doUpdateTracks()
{
    // A track ends as soon as its object misses one frame.
    for (auto it = m_rawTracks.begin(); it != m_rawTracks.end();) {
        if (!m_order.contains(it.key())) {
            m_screenTracks.remove(it.key());
            it = m_rawTracks.erase(it);
            m_sceneDirty = true;
        } else {
            ++it;
        }
    }
    for (const RoadObject& o : qAsConst(m_objects)) {
        // Only fresh detections extend a track; a prediction adds no point.
        if (o.lastDetected != m_frameTime)
            continue;
        QPolygonF& track = m_rawTracks[o.id];
        track.append(QPointF(o.xRange, o.yRange));
        QPolygon& screen = m_screenTracks[o.id];
        if (track.size() > MaxTrackPoints + TrackTrimPoints) {
            // Shortened in steps, so that a long track costs a new scene only now and then.
            track.remove(0, TrackTrimPoints);
            screen.clear();
            m_sceneDirty = true;
        }
        if (!m_valid)
            continue;
        if (screen.size() == track.size() - 1) {
            const QPoint point = xyToScreen(o.xRange, o.yRange);
            // Points equal to a track's last point carry no mark: one that went back to
            // an earlier point takes its mark away again.
            if (screen.contains(point))
                m_sceneDirty = true;
            screen.append(point);
        } else {
            screen = doScaleTrack(track);
            m_sceneDirty = true;
        }
    }
}

QPolygon RoadObjectsWidget::doScaleTrack(const QPolygonF& track) const
{
    return toScreen(track);
}

void RoadObjectsWidget::setAverageTracks(const QMap<int, QPolygonF>& tracks)
{
    m_averageTracks = tracks;
    m_averageTracksPx.clear();
    m_sceneDirty = true;
    if (m_valid) {
        for (const QPolygonF& track : tracks)
            m_averageTracksPx.append(toScreen(track));
    }
    update();
}

// --- Painting ---------------------------------------------------------------------------------

void RoadObjectsWidget::resizeEvent(QResizeEvent* event)
{
    GroupedWidget::resizeEvent(event);
    doRefitGeometry(true);
}

void RoadObjectsWidget::showEvent(QShowEvent* event)
{
    QFont small = font();
    small.setPixelSize(SidePixelSize);
    setFont(small);
    GroupedWidget::showEvent(event);
}

void RoadObjectsWidget::doDrawRoadPixmap()
{
    m_roadPixmap = QPixmap(size());
    m_roadPixmap.fill(Background);
    QPainter p(&m_roadPixmap);
    p.setFont(font());

    if (m_limitationPx.size() == 4) {
        const bool inUse = m_polygonUsage & 1;
        p.setPen(linePen(LimitationOutline, inUse ? 1.0 : 3.0));
        p.setBrush(inUse ? QBrush(LimitationFill) : Qt::NoBrush);
        p.drawPolygon(m_limitationPx);
        p.setBrush(Qt::NoBrush);
    }

    p.setPen(dashedPen(Grey, 1.0, {7, 7}));
    p.drawPolyline(m_axisPx);
    p.drawLine(m_xAxisPx);
    p.drawLine(m_yExtentPx);

    p.setPen(linePen(Grey, 1.0, Qt::DotLine));
    for (const QPolygon& line : qAsConst(m_distanceLinesPx))
        p.drawPolyline(line);

    p.setPen(linePen(Grey, 1.0));
    p.drawLines(m_notchesPx);

    p.setPen(dashedPen(White, 1.0, {6, 6}));
    for (const QPolygon& line : qAsConst(m_laneBordersPx))
        p.drawPolyline(line);
    p.setPen(linePen(White, 1.0));
    for (const QPolygon& line : qAsConst(m_roadBordersPx))
        p.drawPolyline(line);

    // Distance and scale values beyond their notches: the text's nearer edge starts
    // just past the notch's end.
    p.setPen(linePen(Grey, 1.0));
    const QFontMetrics metrics(font());
    QRect lastBox;
    for (const Label& label : qAsConst(m_notchTexts)) {
        QRect box = metrics.boundingRect(label.text);
        const double reach = std::fabs(label.direction.x()) * box.width() / 2.0
                             + std::fabs(label.direction.y()) * box.height() / 2.0;
        const QPointF centre = QPointF(label.position) + label.direction * reach;
        box.moveCenter(centre.toPoint());
        // On a small scale the values would run into one another: every second (or
        // third...) one is left out instead.
        if (box.intersects(lastBox.adjusted(-2, -2, 2, 2)))
            continue;
        p.drawText(box, Qt::AlignCenter, label.text);
        lastBox = box;
    }
}

void RoadObjectsWidget::doDrawTracksOnBase()
{
    QPainter p(&m_roadPixmap);
    p.setPen(linePen(LongExposureTrack, 2.0));
    for (const QPolygon& track : qAsConst(m_screenTracks)) {
        if (track.size() >= 2)
            p.drawPolyline(track);
    }
}

void RoadObjectsWidget::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QPainter p(this);
    if (!m_valid) {
        p.fillRect(rect(), Background);
        return;
    }
    if (m_pixmapDirty || m_roadPixmap.size() != size()) {
        m_pixmapDirty = false;
        doDrawRoadPixmap();
        m_sceneDirty = true;
    }
    if (m_drawTracksOnBase && m_frameArrived) {
        m_frameArrived = false;
        doDrawTracksOnBase();
        m_sceneDirty = true;
    }
    if (m_sceneDirty || m_scenePixmap.size() != size()) {
        m_sceneDirty = false;
        doDrawScene();
    } else if (m_drawTracksLive) {
        doDrawNewTrackPoints();
    }
    p.drawPixmap(0, 0, m_scenePixmap);

    if (m_drawObjectsNow) {
        for (quint8 id : qAsConst(m_order)) {
            const auto it = m_objects.constFind(id);
            if (it != m_objects.constEnd())
                doDrawObject(p, *it);
        }
    }
    doDrawRadar(p);
}

void RoadObjectsWidget::doDrawScene()
{
    // In this order: the road, the sight area, the sight line, the average tracks and
    // the current tracks.
    m_scenePixmap = m_roadPixmap.copy();
    QPainter p(&m_scenePixmap);
    if (m_showSightLine && m_showSightArea && m_sightAreaPx.size() >= 3) {
        p.setPen(Qt::NoPen);
        p.setBrush(SightAreaFill);
        p.drawPolygon(m_sightAreaPx);
        p.setBrush(Qt::NoBrush);
    }
    if (m_showSightLine && m_hasSightLine) {
        p.setPen(linePen(SightLine, 2.0));
        p.drawLine(m_sightLinePx);
        const QPoint end = m_sightLinePx.p2();
        p.fillRect(QRect(QPoint(end.x() - 3, end.y() - 3), QPoint(end.x() + 1, end.y() + 1)),
                   SightLine);
    }
    if (m_showAverageTracks) {
        p.setPen(linePen(AverageTrack, 2.0, Qt::DashLine));
        for (const QPolygon& track : qAsConst(m_averageTracksPx))
            p.drawPolyline(track);
    }
    m_drawnTrackPoints.clear();
    for (auto it = m_screenTracks.cbegin(); it != m_screenTracks.cend(); ++it) {
        if (m_drawTracksLive)
            doDrawTrack(p, it.key(), *it, 0);
        m_drawnTrackPoints.insert(it.key(), it->size());
    }
}

void RoadObjectsWidget::doDrawTrack(QPainter& painter, quint8 id, const QPolygon& track,
                                    int from) const
{
    // From point `from` on: the line in the object's colour, 2 px wide, and a 3 x 3 mark
    // at every point but the last (and any equal to it).
    if (track.size() < 2)
        return;
    const QColor& color = ObjectColor::base(m_paintObjects ? id : 0);
    const int first = std::max(from - 1, 0);
    painter.setPen(linePen(color, 2.0));
    painter.drawPolyline(track.constData() + first, track.size() - first);
    const QPoint last = track.last();
    for (int i = first; i < track.size() - 1; ++i) {
        const QPoint& point = track.at(i);
        if (point != last)
            painter.fillRect(QRect(point.x() - 2, point.y() - 2, 3, 3), color);
    }
}

void RoadObjectsWidget::doDrawNewTrackPoints()
{
    QPainter p(&m_scenePixmap);
    for (auto it = m_screenTracks.cbegin(); it != m_screenTracks.cend(); ++it) {
        const int drawn = m_drawnTrackPoints.value(it.key(), 0);
        if (it->size() > drawn)
            doDrawTrack(p, it.key(), *it, drawn);
        m_drawnTrackPoints.insert(it.key(), it->size());
    }
}

void RoadObjectsWidget::doDrawObject(QPainter& painter, const RoadObject& o) const
{
    const quint8 colorId = m_paintObjects ? o.id : 0;
    const QColor& fill = ObjectColor::base(colorId);
    const QColor& text = ObjectColor::text(colorId);
    const QSize size = objectPixelSize(o.length);
    const int length = size.width();
    const int width = size.height();
    // The glyph starts at the reported point and extends along its heading.
    const QRect body
        = m_drawVertical ? QRect(QPoint(-width / 2, -length), QPoint(width - width / 2 - 2, -2))
                         : QRect(QPoint(0, -width / 2), QPoint(length - 2, width - width / 2 - 2));
    const QPoint at = xyToScreen(o.xRange, o.yRange);

    painter.save();
    painter.translate(at);
    painter.rotate(-objectHeading(o.xSpeed, o.ySpeed));
    painter.setPen(linePen(fill, 1.0));
    painter.setBrush(fill);
    painter.drawRect(body);
    const bool labelInside = length >= 16 && width >= 16;
    if (labelInside) {
        painter.setPen(text);
        painter.drawText(body, Qt::AlignCenter, QString::number(o.id));
    }
    painter.restore();
    if (labelInside)
        return;

    // Too small to carry its id: a label beside it, clear of the glyph whichever way
    // it points.
    const QString label
        = QStringLiteral("[%1] ").arg(o.id) + tr("%1 km/h").arg(o.xSpeed * 3.6, 0, 'f', 1);
    const QFontMetrics metrics(painter.font());
    QRect box = metrics.boundingRect(label).adjusted(-2, 0, 2, 0);
    const int clearance = std::max(length, width) + 3;
    box.moveTopLeft(QPoint(at.x() + clearance, at.y() - box.height() / 2));
    painter.fillRect(box, fill);
    painter.setPen(text);
    painter.drawText(box, Qt::AlignCenter, label);
}

void RoadObjectsWidget::doDrawRadar(QPainter& painter) const
{
    // The antenna: a bar across the direction it looks in.
    painter.save();
    painter.translate(m_radarScreen);
    painter.rotate(-(m_drawVertical ? m_radarScreenAngle + 90.0 : m_radarScreenAngle));
    painter.setPen(linePen(RadarFill.darker(150), 1.0));
    painter.setBrush(RadarFill);
    painter.drawRect(QRect(-3, -7, 6, 14));
    painter.restore();
}
