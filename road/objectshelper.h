#pragma once

#include "roadobject.h"

#include <QDateTime>
#include <QMap>
#include <QObject>
#include <QPolygonF>
#include <QRectF>
#include <QVector>

#include <vector>

// Puts each radar frame's objects into display order (those moving towards lower X
// nearest first, then the others farthest first) and learns, per lane, the line along
// which vehicles really drive: the average tracks, starting from the lane centre lines
// and pulled sideways by every detected vehicle.
class ObjectsHelper : public QObject
{
    Q_OBJECT

public:
    static constexpr double LearnRadius = 3.0; // metres; farther track points do not learn
    static constexpr double LearnRate = 0.01; // share of the way to the object, at 0 m
    static constexpr int SearchBins = 3; // one-metre bins searched on either side
    static constexpr int EmitEveryCycles = 20;
    static constexpr double EmitBinLength = 5.0; // emitted tracks: one point per 5 m
    static constexpr int EmitMinPoints = 3;
    // Tracks learn in one-metre bins and are emitted in 5 m stretches up to the road's
    // far end. A road rectangle reaching farther (no road the builder lays does; a
    // broken one might) is cut here, so that the bins stay within memory.
    static constexpr double MaxTrackLength = 100000.0;

    explicit ObjectsHelper(QObject* parent = nullptr);

    static double calcDistance(const QPointF& a, const QPointF& b);

public slots:
    void startFilling();
    void setFrameDateTimeUtc(const QDateTime& dateTime);
    void setCycleNumber(quint64 cycle);
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling();
    void setRadarState(int state);
    void startApplyingRoad(const QRectF& rect);
    void setLaneCenterLines(const QMap<int, QPolygonF>& lines);
    void finishApplyingRoad();
    void resetAverageTracks();

signals:
    void sortingFinished(const QVector<quint8>& order);
    void averageTracks(const QMap<int, QPolygonF>& tracks);

private:
    // The road's far end in whole metres, rounded up or down, within +-MaxTrackLength; a
    // rectangle that is not finite counts as a road that ends behind the radar.
    int roadEndMetres(bool roundUp) const;
    void doUpdateAverageTracks();
    void doEmitAverageTracks();

    QRectF m_roadRect;
    QMap<int, QPolygonF> m_laneCenterLines;
    QMap<int, QPolygonF> m_averageTracks;
    // Bin b: the track points with X in [b, b + 1) metres. The pointers point into the
    // tracks' own storage, which stays in place until the next reset.
    std::vector<std::vector<QPointF*>> m_trackBins;
    QDateTime m_frameTime;
    quint64 m_cycleNumber = 0;
    bool m_online = false;
    bool m_working = false;
    // Contiguous, and kept allocated between frames: the radar reports up to 64 objects
    // a frame, many times a second.
    QVector<RoadObject> m_objects;
    QVector<RoadObject> m_receding; // xSpeed < 0, nearest first
    QVector<RoadObject> m_approaching; // xSpeed >= 0, farthest first
};
