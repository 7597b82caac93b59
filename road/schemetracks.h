#pragma once

#include "frameobjects.h"
#include "roadobject.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QPolygon>
#include <QPolygonF>
#include <QRect>
#include <QVector>

#include <array>

class SchemeGeometry;

// The tracks the traffic scheme draws: the current track of every object, in metres
// as the radar reported it and in pixels as the scale shows it, and the lanes' average
// tracks. A current track grows by one point a frame in which its object was detected
// (a prediction adds none) and ends as soon as its object misses a frame. A change of
// scale projects every track anew: no track is lost by a rescale.
class SchemeTracks
{
public:
    static constexpr int MaxTrackPoints = 3000; // five minutes at ten cycles a second
    static constexpr int TrackTrimPoints = 100; // dropped at once from a long track

    // What a frame took away from the tracks as drawn, in pixels. Everything else a
    // frame does is growth at the tracks' ends.
    struct Changes
    {
        QVector<QRect> damage; // where drawn pieces are gone or lost their marks
        QVector<quint8> ended; // tracks whose object missed the frame
        QVector<QPair<quint8, int>> trimmed; // tracks that lost this many oldest points
    };

    // One frame in display order. Unless `reshaped()` changed, drawing may add just the
    // new pieces and draw anew what the returned changes name.
    Changes update(const QVector<quint8>& order, const FrameObjects& objects,
                   const QDateTime& frameTime, const SchemeGeometry& geometry);
    // Projects every track with a new scale.
    void refit(const SchemeGeometry& geometry);
    // Forgets every current track (the radar went offline).
    void clear();
    void setAverageTracks(const QMap<int, QPolygonF>& tracks, const SchemeGeometry& geometry);

    int count() const { return m_tracks.size(); }
    const QMap<quint8, QPolygonF>& tracks() const { return m_tracks; }
    const QMap<quint8, QPolygon>& screenTracks() const { return m_screenTracks; }
    const QList<QPolygon>& averageScreenTracks() const { return m_averageScreenTracks; }
    // Counts changes of the current tracks in pixels that `update` does not describe:
    // a new scale, the tracks forgotten, a track projected anew.
    quint64 reshaped() const { return m_reshaped; }
    // Counts changes of the average tracks in pixels.
    quint64 averageVersion() const { return m_averageVersion; }

private:
    QMap<quint8, QPolygonF> m_tracks;
    QMap<quint8, QPolygon> m_screenTracks;
    // Holds the box of each track in pixels (or a larger one).
    std::array<QRect, 256> m_screenBounds{};
    QMap<int, QPolygonF> m_averageTracks;
    QList<QPolygon> m_averageScreenTracks;
    quint64 m_reshaped = 0;
    quint64 m_averageVersion = 0;
};
