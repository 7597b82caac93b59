#include "projectiontracks.h"

#include "cameramodel.h"

void ProjectionTracks::update(const DelayedFrame& frame, const CameraModel& model)
{
    // An object missing from the frame ends its track.
    for (auto it = m_rawTracks.begin(); it != m_rawTracks.end();) {
        if (!frame.objects.contains(it.key())) {
            m_screenTracks.remove(it.key());
            it = m_rawTracks.erase(it);
        } else {
            ++it;
        }
    }
    for (const RoadObject& o : frame.objects) {
        QVector<QPointF>& raw = m_rawTracks[o.id];
        QPolygon& screen = m_screenTracks[o.id];
        // Only a detection in this very frame adds a point; a carried-over report does not.
        bool ok = false;
        if (o.lastDetected == frame.frameTime) {
            model.xyToScreen(o.xRange, o.yRange, &ok);
            if (ok)
                raw.append(QPointF(o.xRange, o.yRange));
        }
        // Bring the pixel track up to the raw one; what the model does not show is gone.
        int i = screen.size();
        while (i < raw.size()) {
            const QPoint pixel = model.xyToScreen(raw.at(i), &ok);
            if (ok) {
                screen.append(pixel);
                ++i;
            } else {
                raw.remove(i);
            }
        }
        if (raw.size() > MaxTrackPoints)
            raw.remove(0, raw.size() - MaxTrackPoints);
        if (screen.size() > MaxTrackPoints)
            screen.remove(0, screen.size() - MaxTrackPoints);
    }
}

void ProjectionTracks::clearScreen()
{
    for (QPolygon& screen : m_screenTracks)
        screen.clear();
}

void ProjectionTracks::clear()
{
    m_rawTracks.clear();
    m_screenTracks.clear();
}
