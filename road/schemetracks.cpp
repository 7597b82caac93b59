#include "schemetracks.h"

#include "schemegeometry.h"
#include "trackrasterizer.h"

#include <bitset>

namespace {

// Whether a point other than the track's last one lies where `point` does. A moving
// vehicle's new point lies outside the box of its track; otherwise recent points are
// the likely ones: the search runs backwards.
bool hasEarlier(const QPolygon& screen, const QRect& bounds, const QPoint& point)
{
    if (!bounds.contains(point))
        return false;
    for (int i = screen.size() - 2; i >= 0; --i) {
        if (screen.at(i) == point)
            return true;
    }
    return false;
}

} // namespace

SchemeTracks::Changes SchemeTracks::update(const QVector<quint8>& order,
                                           const FrameObjects& objects,
                                           const QDateTime& frameTime,
                                           const SchemeGeometry& geometry)
{
    Changes changes;
    // A track ends as soon as its object misses one frame.
    std::bitset<256> inFrame;
    for (quint8 id : order)
        inFrame.set(id);
    for (auto it = m_tracks.begin(); it != m_tracks.end();) {
        if (inFrame.test(it.key())) {
            ++it;
            continue;
        }
        const auto screen = m_screenTracks.find(it.key());
        if (screen != m_screenTracks.end()) {
            changes.damage.append(TrackRasterizer::reach(screen->constData(), screen->size()));
            m_screenTracks.erase(screen);
            m_screenBounds[it.key()] = QRect();
        }
        changes.ended.append(it.key());
        it = m_tracks.erase(it);
    }

    for (const RoadObject& o : objects) {
        // Only fresh detections extend a track; a prediction adds no point.
        if (o.lastDetected != frameTime)
            continue;
        QPolygonF& track = m_tracks[o.id];
        QPolygon& screen = m_screenTracks[o.id];
        const bool inStep = screen.size() == track.size();
        track.append(QPointF(o.xRange, o.yRange));
        if (geometry.isValid()) {
            if (inStep) {
                const QPoint point = geometry.xyToScreen(o.xRange, o.yRange);
                // Points equal to a track's last point carry no mark: one that went
                // back to an earlier point takes that point's mark away.
                QRect& bounds = m_screenBounds[o.id];
                if (!screen.isEmpty() && point != screen.last()
                    && hasEarlier(screen, bounds, point))
                    changes.damage.append(TrackRasterizer::reach(point));
                screen.append(point);
                bounds |= QRect(point, QSize(1, 1));
            } else {
                screen = geometry.toScreen(track);
                m_screenBounds[o.id] = screen.boundingRect();
                ++m_reshaped;
            }
        }
        if (track.size() > MaxTrackPoints + TrackTrimPoints) {
            // Shortened in steps; the piece up to the new first point goes.
            track.remove(0, TrackTrimPoints);
            if (screen.size() == track.size() + TrackTrimPoints) {
                changes.damage.append(
                    TrackRasterizer::reach(screen.constData(), TrackTrimPoints + 1));
                changes.trimmed.append(qMakePair(o.id, int(TrackTrimPoints)));
                screen.remove(0, TrackTrimPoints);
            } else {
                screen = geometry.isValid() ? geometry.toScreen(track) : QPolygon();
                ++m_reshaped;
            }
            m_screenBounds[o.id] = screen.boundingRect();
        }
    }
    return changes;
}

void SchemeTracks::refit(const SchemeGeometry& geometry)
{
    ++m_reshaped;
    ++m_averageVersion;
    m_screenTracks.clear();
    m_averageScreenTracks.clear();
    if (!geometry.isValid())
        return;
    m_screenBounds.fill(QRect());
    for (auto it = m_tracks.cbegin(); it != m_tracks.cend(); ++it) {
        const QPolygon screen = geometry.toScreen(*it);
        m_screenBounds[it.key()] = screen.boundingRect();
        m_screenTracks.insert(it.key(), screen);
    }
    for (const QPolygonF& track : qAsConst(m_averageTracks))
        m_averageScreenTracks.append(geometry.toScreen(track));
}

void SchemeTracks::clear()
{
    m_tracks.clear();
    m_screenTracks.clear();
    m_screenBounds.fill(QRect());
    ++m_reshaped;
}

void SchemeTracks::setAverageTracks(const QMap<int, QPolygonF>& tracks,
                                    const SchemeGeometry& geometry)
{
    m_averageTracks = tracks;
    // The helper sends its tracks every few cycles while they barely move: the picture
    // under the frames is drawn again only when a track moved by a pixel.
    QList<QPolygon> screen;
    if (geometry.isValid()) {
        for (const QPolygonF& track : tracks)
            screen.append(geometry.toScreen(track));
    }
    if (screen == m_averageScreenTracks)
        return;
    m_averageScreenTracks = screen;
    ++m_averageVersion;
}
