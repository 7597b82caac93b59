#pragma once

#include "detectionline.h"
#include "lanestatistics.h"
#include "vehiclecrossing.h"

#include <QDateTime>
#include <QObject>

#include <array>

// Counts the vehicles whose tracks cross a detection line, frame by frame, as the radar
// client delivers its objects (startFilling, setFrameDateTimeUtc, addObject...,
// finishFilling), and keeps the lane statistics of what it counted.
//
// A track is what the radar reports under one id in consecutive frames: when an id is
// missing from a frame (the client dropped the object) its track has ended, and the id
// seen again later is a new vehicle. A vehicle whose report lands far from where its
// own speed would have taken it is another vehicle that got the id at once. Only fresh
// reports move a track; the client repeats an object's last report for a while when
// the radar missed it, and such repeats only keep the track alive.
//
// A track is counted once, at its first crossing: when its reports go from one side of
// the line to the other (a report exactly on the line belongs to neither side, so a
// vehicle that stops on the line is counted once it leaves it). Time, speed along the
// road and place on the line are interpolated between the two reports around the line;
// the lane is the one whose centre line is nearest there. A vehicle that turns back
// after crossing stays counted in its first direction; a track first seen past the line
// has not been seen crossing it and is not counted; crossings outside the lanes are not
// counted.
class LaneCounter : public QObject
{
    Q_OBJECT

public:
    // A report this far, in metres, along the road from where the track's last report
    // and speed put it, or this far across, is another vehicle under the same id.
    static constexpr double JumpAlong = 10.0;
    static constexpr double JumpAcross = 5.0;

    explicit LaneCounter(QObject* parent = nullptr);

    // Both start the counting afresh: no tracks, empty statistics.
    void setDetectionLine(const DetectionLine& line);
    void setIntervalMs(qint64 intervalMs);
    void reset();

    const DetectionLine& detectionLine() const { return m_line; }
    const LaneStatistics& statistics() const { return m_statistics; }

    // addObject with the time of detection in UTC milliseconds since 1970, for callers
    // that have it so.
    void addReport(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, qint64 detectedMs);

public slots:
    void startFilling();
    void setFrameDateTimeUtc(const QDateTime& dateTime);
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling();

signals:
    void vehicleCounted(const VehicleCrossing& crossing);

private:
    struct Track
    {
        quint64 lastFrame = 0; // the frame the id was last in; 0: never
        qint64 reportMs = 0; // time of the last fresh report
        double along = 0; // where that report put it, relative to the line
        double across = 0;
        double speed = 0; // along the road
        double length = 0; // the longest reported so far
        int side = 0; // -1 before the line, +1 past it, 0 not yet off the line
        bool counted = false;
    };

    void startTrack(Track& track, qint64 detectedMs, double along, double across, double speed,
                    double length);
    void count(quint8 id, Track& track, qint64 detectedMs, double along, double across,
               double speed);

    DetectionLine m_line;
    LaneStatistics m_statistics;
    qint64 m_intervalMs = LaneStatistics::DefaultIntervalMs;
    std::array<Track, 256> m_tracks;
    quint64 m_frame = 0; // number of the current frame, from 1
    bool m_frameTimeGiven = false;
    qint64 m_frameMs = 0; // the current frame's time, when given
    qint64 m_newestReportMs = -1;
};
