#pragma once

#include "delayedframe.h"

#include <QMap>
#include <QPointF>
#include <QPolygon>
#include <QVector>

class CameraModel;

// The current tracks over the video: per object the road points where it was detected
// while visible, and the same points in pixels. A track ends when its object misses a
// frame; a point that a new model no longer shows is dropped for good.
class ProjectionTracks
{
public:
    static constexpr int MaxTrackPoints = 1000;

    // The frame that just became current, under a valid model.
    void update(const DelayedFrame& frame, const CameraModel& model);
    // A new model: the pixel tracks are projected anew at the next update.
    void clearScreen();
    void clear();

    const QMap<quint8, QVector<QPointF>>& rawTracks() const { return m_rawTracks; }
    const QMap<quint8, QPolygon>& screenTracks() const { return m_screenTracks; }

private:
    QMap<quint8, QVector<QPointF>> m_rawTracks;
    QMap<quint8, QPolygon> m_screenTracks;
};
