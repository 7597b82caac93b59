#include "projectiontracks.h"

#include "cameramodel.h"

template<typename Points> void ProjectionTracks::trim(Points& points, int& start)
{
    const int count = points.size() - start;
    if (count > MaxTrackPoints)
        start += count - MaxTrackPoints;
    if (start >= MaxTrackPoints) {
        points.remove(0, start);
        start = 0;
    }
}

void ProjectionTracks::update(const DelayedFrame& frame, const CameraModel& model)
{
    // An object missing from the frame ends its track.
    for (auto it = m_tracks.begin(); it != m_tracks.end();) {
        if (!frame.objects.contains(it.key()))
            it = m_tracks.erase(it);
        else
            ++it;
    }
    for (const RoadObject& o : frame.objects) {
        Track& track = m_tracks[o.id];
        QVector<QPointF>& raw = track.raw;
        QPolygon& screen = track.screen;
        // Only a detection in this very frame adds a point; a carried-over report does not.
        bool ok = false;
        if (o.lastDetected == frame.frameTime) {
            model.xyToScreen(o.xRange, o.yRange, &ok);
            if (ok)
                raw.append(QPointF(o.xRange, o.yRange));
        }
        // Bring the pixel track up to the raw one; what the model does not show is gone.
        int i = track.rawStart + (screen.size() - track.screenStart);
        while (i < raw.size()) {
            const QPoint pixel = model.xyToScreen(raw.at(i), &ok);
            if (ok) {
                screen.append(pixel);
                ++i;
            } else {
                raw.remove(i);
            }
        }
        trim(raw, track.rawStart);
        trim(screen, track.screenStart);
    }
}

void ProjectionTracks::clearScreen()
{
    for (Track& track : m_tracks) {
        track.screen.clear();
        track.screenStart = 0;
    }
}

void ProjectionTracks::clear()
{
    m_tracks.clear();
}

QVector<QPointF> ProjectionTracks::rawTrack(quint8 id) const
{
    const auto it = m_tracks.constFind(id);
    return it == m_tracks.cend() ? QVector<QPointF>() : it->raw.mid(it->rawStart);
}

QPolygon ProjectionTracks::screenTrack(quint8 id) const
{
    const auto it = m_tracks.constFind(id);
    return it == m_tracks.cend() ? QPolygon() : QPolygon(it->screen.mid(it->screenStart));
}

int ProjectionTracks::screenPoints(quint8 id, const QPoint** first) const
{
    const auto it = m_tracks.constFind(id);
    if (it == m_tracks.cend()) {
        *first = nullptr;
        return 0;
    }
    *first = it->screen.constData() + it->screenStart;
    return it->screen.size() - it->screenStart;
}
