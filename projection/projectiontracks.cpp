#include "projectiontracks.h"

#include "cameramodel.h"

#include <algorithm>

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

void ProjectionTracks::appendPixel(Track& track, const QPoint& pixel)
{
    if (track.runs.size() > track.runStart && track.runs.last() == pixel) {
        ++track.runLengths.last();
    } else {
        track.runs.append(pixel);
        track.runLengths.append(1);
    }
    ++track.screenCount;
}

void ProjectionTracks::trimScreen(Track& track)
{
    while (track.screenCount > MaxTrackPoints) {
        int& oldest = track.runLengths[track.runStart];
        const int dropped = std::min(oldest, track.screenCount - MaxTrackPoints);
        oldest -= dropped;
        track.screenCount -= dropped;
        if (oldest == 0)
            ++track.runStart;
    }
    if (track.runStart >= MaxTrackPoints) {
        track.runs.remove(0, track.runStart);
        track.runLengths.remove(0, track.runStart);
        track.runStart = 0;
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
        // Only a detection in this very frame adds a point; a carried-over report does not.
        bool ok = false;
        QPoint fresh;
        if (o.lastDetected == frame.frameTime) {
            fresh = model.xyToScreen(o.xRange, o.yRange, &ok);
            if (ok)
                raw.append(QPointF(o.xRange, o.yRange));
        }
        const bool hasFresh = ok; // the last raw point, in pixels already
        // Bring the pixel track up to the raw one; what the model does not show is gone.
        int i = track.rawStart + track.screenCount;
        while (i < raw.size()) {
            const bool isFresh = hasFresh && i == raw.size() - 1;
            const QPoint pixel = isFresh ? fresh : model.xyToScreen(raw.at(i), &ok);
            if (isFresh || ok) {
                appendPixel(track, pixel);
                ++i;
            } else {
                raw.remove(i);
            }
        }
        trim(raw, track.rawStart);
        trimScreen(track);
    }
}

void ProjectionTracks::clearScreen()
{
    for (Track& track : m_tracks) {
        track.runs.clear();
        track.runLengths.clear();
        track.runStart = 0;
        track.screenCount = 0;
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
    QPolygon points;
    const auto it = m_tracks.constFind(id);
    if (it == m_tracks.cend())
        return points;
    points.reserve(it->screenCount);
    for (int run = it->runStart; run < it->runs.size(); ++run)
        points.insert(points.size(), it->runLengths.at(run), it->runs.at(run));
    return points;
}

int ProjectionTracks::screenPath(quint8 id, const QPoint** first) const
{
    const auto it = m_tracks.constFind(id);
    if (it == m_tracks.cend()) {
        *first = nullptr;
        return 0;
    }
    *first = it->runs.constData() + it->runStart;
    return it->runs.size() - it->runStart;
}
