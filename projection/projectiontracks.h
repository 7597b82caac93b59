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
    // The pixel track of an object for drawing, without a copy, each run of equal
    // consecutive pixels as one point (the line through them and their squares are
    // the same): its point count, and its oldest point in `first`.
    int screenPath(quint8 id, const QPoint** first) const;

private:
    // A long track loses its oldest point with every frame. Moving the other 999 down
    // each time cost more than the rest of the update, so the dropped points stay at the
    // front of the storage, skipped, until they are as many as the track holds. In
    // pixels, a vehicle far down the road stays on one pixel for many frames: the pixel
    // track keeps each run of equal pixels once, with its length, which makes drawing
    // it several times cheaper.
    struct Track
    {
        QVector<QPointF> raw;
        int rawStart = 0;
        QPolygon runs; // the pixels, each run once
        QVector<int> runLengths;
        int runStart = 0;
        int screenCount = 0; // points in all runs from runStart on
    };
    template<typename Points> static void trim(Points& points, int& start);
    static void appendPixel(Track& track, const QPoint& pixel);
    static void trimScreen(Track& track);

    QMap<quint8, Track> m_tracks;
};
