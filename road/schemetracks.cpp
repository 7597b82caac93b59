#include "schemetracks.h"

#include "schemegeometry.h"

#include <bitset>

void SchemeTracks::update(const QVector<quint8>& order, const QMap<quint8, RoadObject>& objects,
                          const QDateTime& frameTime, const SchemeGeometry& geometry)
{
    // A track ends as soon as its object misses one frame.
    std::bitset<256> inFrame;
    for (quint8 id : order)
        inFrame.set(id);
    for (auto it = m_tracks.begin(); it != m_tracks.end();) {
        if (!inFrame.test(it.key())) {
            m_screenTracks.remove(it.key());
            it = m_tracks.erase(it);
            ++m_reshaped;
        } else {
            ++it;
        }
    }

    for (const RoadObject& o : objects) {
        // Only fresh detections extend a track; a prediction adds no point.
        if (o.lastDetected != frameTime)
            continue;
        QPolygonF& track = m_tracks[o.id];
        track.append(QPointF(o.xRange, o.yRange));
        QPolygon& screen = m_screenTracks[o.id];
        if (track.size() > MaxTrackPoints + TrackTrimPoints) {
            // Shortened in steps, so that a long track is drawn anew only now and then.
            track.remove(0, TrackTrimPoints);
            screen.clear();
            ++m_reshaped;
        }
        if (!geometry.isValid())
            continue;
        if (screen.size() == track.size() - 1) {
            const QPoint point = geometry.xyToScreen(o.xRange, o.yRange);
            // Points equal to a track's last point carry no mark: one that went back to
            // an earlier point takes its mark away again.
            if (screen.contains(point))
                ++m_reshaped;
            screen.append(point);
        } else {
            screen = geometry.toScreen(track);
            ++m_reshaped;
        }
    }
}

void SchemeTracks::refit(const SchemeGeometry& geometry)
{
    ++m_reshaped;
    m_screenTracks.clear();
    m_averageScreenTracks.clear();
    if (!geometry.isValid())
        return;
    for (auto it = m_tracks.cbegin(); it != m_tracks.cend(); ++it)
        m_screenTracks.insert(it.key(), geometry.toScreen(*it));
    for (const QPolygonF& track : qAsConst(m_averageTracks))
        m_averageScreenTracks.append(geometry.toScreen(track));
}

void SchemeTracks::clear()
{
    m_tracks.clear();
    m_screenTracks.clear();
    ++m_reshaped;
}

void SchemeTracks::setAverageTracks(const QMap<int, QPolygonF>& tracks,
                                    const SchemeGeometry& geometry)
{
    m_averageTracks = tracks;
    m_averageScreenTracks.clear();
    ++m_reshaped;
    if (!geometry.isValid())
        return;
    for (const QPolygonF& track : tracks)
        m_averageScreenTracks.append(geometry.toScreen(track));
}
