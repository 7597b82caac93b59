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

    bool isEmpty() const { return m_tracks.isEmpty(); }
    // An object's track in road points and in pixels, oldest first; empty without one.
    QVector<QPointF> rawTrack(quint8 id) const;
    QPolygon screenTrack(quint8 id) const;
    // The pixel track of an object for drawing, without a copy: its point count, and its
    // oldest point in `first`.
    int screenPoints(quint8 id, const QPoint** first) const;

private:
    // A long track loses its oldest point with every frame. Moving the other 999 down
    // each time cost more than the rest of the update, so the dropped points stay at the
    // front of the storage, skipped, until they are as many as the track holds.
    struct Track
    {
        QVector<QPointF> raw;
        QPolygon screen;
        int rawStart = 0;
        int screenStart = 0;
    };
    template<typename Points> static void trim(Points& points, int& start);

    QMap<quint8, Track> m_tracks;
};
