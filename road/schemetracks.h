#pragma once

#include "roadobject.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QPolygon>
#include <QPolygonF>
#include <QVector>

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

    // One frame in display order. Tracks only grow at their ends unless `reshaped()`
    // changed: drawing may then add just the new pieces.
    void update(const QVector<quint8>& order, const QMap<quint8, RoadObject>& objects,
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
    // Counts changes other than a track growing at its end: a track ended or was
    // shortened, a point came back onto an earlier one, the scale or the average
    // tracks changed.
    quint64 reshaped() const { return m_reshaped; }

private:
    QMap<quint8, QPolygonF> m_tracks;
    QMap<quint8, QPolygon> m_screenTracks;
    QMap<int, QPolygonF> m_averageTracks;
    QList<QPolygon> m_averageScreenTracks;
    quint64 m_reshaped = 0;
};
