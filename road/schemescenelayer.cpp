#include "schemescenelayer.h"

#include "objectcolor.h"
#include "schemetracks.h"

#include <QPainter>

#include <algorithm>

namespace {

const QColor SightAreaFill(0, 255, 255, 63);
const QColor SightLine(0, 191, 191);
const QColor AverageTrack(255, 0, 0);

QPen linePen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    return QPen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
}

} // namespace

void SchemeSceneLayer::setSight(const Sight& sight)
{
    if (sight == m_sight)
        return;
    m_sight = sight;
    m_stale = true;
}

void SchemeSceneLayer::setShowAverageTracks(bool show)
{
    m_stale = m_stale || show != m_showAverageTracks;
    m_showAverageTracks = show;
}

void SchemeSceneLayer::setDrawTracksLive(bool live)
{
    m_stale = m_stale || live != m_drawTracksLive;
    m_drawTracksLive = live;
}

void SchemeSceneLayer::setPaintObjects(bool paint)
{
    // The tracks take their objects' colours.
    m_stale = m_stale || paint != m_paintObjects;
    m_paintObjects = paint;
}

const QPixmap& SchemeSceneLayer::picture(const QPixmap& road, const SchemeTracks& tracks)
{
    if (m_stale || road.cacheKey() != m_roadKey || tracks.reshaped() != m_tracksReshaped
        || m_picture.size() != road.size()) {
        m_stale = false;
        m_roadKey = road.cacheKey();
        m_tracksReshaped = tracks.reshaped();
        doDraw(road, tracks);
    } else if (m_drawTracksLive) {
        doDrawNewTrackPoints(tracks);
    }
    return m_picture;
}

void SchemeSceneLayer::doDraw(const QPixmap& road, const SchemeTracks& tracks)
{
    // In this order: the road, the sight area, the sight line, the average tracks and
    // the current tracks.
    m_picture = road.copy();
    QPainter p(&m_picture);
    if (m_sight.showLine && m_sight.showArea && m_sight.area.size() >= 3) {
        p.setPen(Qt::NoPen);
        p.setBrush(SightAreaFill);
        p.drawPolygon(m_sight.area);
        p.setBrush(Qt::NoBrush);
    }
    if (m_sight.showLine && m_sight.hasLine) {
        p.setPen(linePen(SightLine, 2.0));
        p.drawLine(m_sight.line);
        const QPoint end = m_sight.line.p2();
        p.fillRect(QRect(QPoint(end.x() - 3, end.y() - 3), QPoint(end.x() + 1, end.y() + 1)),
                   SightLine);
    }
    if (m_showAverageTracks) {
        p.setPen(linePen(AverageTrack, 2.0, Qt::DashLine));
        for (const QPolygon& track : tracks.averageScreenTracks())
            p.drawPolyline(track);
    }
    m_drawnTrackPoints.clear();
    const QMap<quint8, QPolygon>& screenTracks = tracks.screenTracks();
    for (auto it = screenTracks.cbegin(); it != screenTracks.cend(); ++it) {
        if (m_drawTracksLive)
            doDrawTrack(p, it.key(), *it, 0);
        m_drawnTrackPoints.insert(it.key(), it->size());
    }
}

void SchemeSceneLayer::doDrawNewTrackPoints(const SchemeTracks& tracks)
{
    QPainter p(&m_picture);
    const QMap<quint8, QPolygon>& screenTracks = tracks.screenTracks();
    for (auto it = screenTracks.cbegin(); it != screenTracks.cend(); ++it) {
        int& drawn = m_drawnTrackPoints[it.key()];
        if (it->size() > drawn)
            doDrawTrack(p, it.key(), *it, drawn);
        drawn = it->size();
    }
}

void SchemeSceneLayer::doDrawTrack(QPainter& painter, quint8 id, const QPolygon& track,
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
