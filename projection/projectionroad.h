#pragma once

#include <QList>
#include <QMap>
#include <QPolygon>
#include <QPolygonF>

class CameraModel;

// The road lines the road builder laid out (road frame, metres) and the same lines as
// the camera sees them (widget pixels). A line that leaves the visible band and comes
// back is joined straight across the gap; a pixel line of a single point is dropped.
class ProjectionRoad
{
public:
    static constexpr int DistanceLineStep = 10; // metres between distance lines over the video

    void setRoadAxisLine(const QPolygonF& line) { m_axis = line; }
    void setRoadBorderLines(const QList<QPolygonF>& lines) { m_roadBorders = lines; }
    void setLaneBorderLines(const QList<QPolygonF>& lines) { m_laneBorders = lines; }
    void setDistanceLines(const QMap<int, QPolygonF>& lines) { m_distanceLines = lines; }
    void setAverageTracks(const QMap<int, QPolygonF>& tracks) { m_averageTracks = tracks; }
    void clearAverageTracks();

    // Projects the road lines (apply) and the average tracks (fitAverageTracks).
    void apply(const CameraModel& model);
    void fitAverageTracks(const CameraModel& model);

    const QPolygon& screenAxis() const { return m_screenAxis; }
    const QList<QPolygon>& screenRoadBorders() const { return m_screenRoadBorders; }
    const QList<QPolygon>& screenLaneBorders() const { return m_screenLaneBorders; }
    const QList<QPolygon>& screenDistanceLines() const { return m_screenDistanceLines; }
    const QMap<int, QPolygon>& screenAverageTracks() const { return m_screenAverageTracks; }
    // Count the changes of the road's pixel lines and of the average tracks' pixels, for
    // the pictures cached from them: the average tracks come every few cycles, the road
    // lines only with a new road or camera.
    quint64 linesVersion() const { return m_linesVersion; }
    quint64 averageTracksVersion() const { return m_averageVersion; }

    static QPolygon project(const QPolygonF& line, const CameraModel& model);

private:
    QPolygonF m_axis;
    QList<QPolygonF> m_roadBorders;
    QList<QPolygonF> m_laneBorders;
    QMap<int, QPolygonF> m_distanceLines;
    QMap<int, QPolygonF> m_averageTracks;

    QPolygon m_screenAxis;
    QList<QPolygon> m_screenRoadBorders;
    QList<QPolygon> m_screenLaneBorders;
    QList<QPolygon> m_screenDistanceLines;
    QMap<int, QPolygon> m_screenAverageTracks;
    quint64 m_linesVersion = 0;
    quint64 m_averageVersion = 0;
};
