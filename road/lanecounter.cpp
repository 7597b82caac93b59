#include "lanecounter.h"

#include <cmath>

LaneCounter::LaneCounter(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<VehicleCrossing>();
}

void LaneCounter::setDetectionLine(const DetectionLine& line)
{
    m_line = line;
    reset();
}

void LaneCounter::setIntervalMs(qint64 intervalMs)
{
    m_intervalMs = intervalMs;
    reset();
}

void LaneCounter::reset()
{
    QVector<int> lanes;
    for (const DetectionLine::Lane& lane : m_line.lanes())
        lanes.append(lane.id);
    m_statistics = LaneStatistics(lanes, m_intervalMs);
    m_tracks.fill(Track());
    m_frame = 0;
    m_frameTimeGiven = false;
    m_newestReportMs = -1;
}

void LaneCounter::startFilling()
{
    ++m_frame;
    m_frameTimeGiven = false;
    m_newestReportMs = -1;
}

void LaneCounter::setFrameDateTimeUtc(const QDateTime& dateTime)
{
    m_frameTimeGiven = dateTime.isValid();
    if (m_frameTimeGiven)
        m_frameMs = dateTime.toMSecsSinceEpoch();
}

void LaneCounter::addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                            double length, const QDateTime& lastDetected)
{
    if (lastDetected.isValid())
        addReport(id, xSpeed, ySpeed, xRange, yRange, length, lastDetected.toMSecsSinceEpoch());
    else if (m_frameTimeGiven)
        addReport(id, xSpeed, ySpeed, xRange, yRange, length, m_frameMs);
}

void LaneCounter::finishFilling()
{
    if (m_frameTimeGiven)
        m_statistics.addFrame(m_frameMs);
    else if (m_newestReportMs >= 0)
        m_statistics.addFrame(m_newestReportMs);
}

void LaneCounter::startTrack(Track& track, qint64 detectedMs, double along, double across,
                             double speed, double length)
{
    track.reportMs = detectedMs;
    track.along = along;
    track.across = across;
    track.speed = speed;
    track.length = length;
    track.side = along > 0 ? 1 : along < 0 ? -1 : 0;
    track.counted = false;
}

void LaneCounter::addReport(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                            double length, qint64 detectedMs)
{
    if (!m_line.isValid())
        return;
    if (m_frame == 0)
        m_frame = 1; // reports before any frame was started belong to a first one
    Track& track = m_tracks[id];
    // Present in the frame before (or already in this one): the same track goes on.
    const bool goesOn = track.lastFrame != 0 && track.lastFrame + 1 >= m_frame;
    if (!std::isfinite(xSpeed) || !std::isfinite(ySpeed) || !std::isfinite(xRange)
        || !std::isfinite(yRange) || !std::isfinite(length)) {
        // A report without a place: the vehicle is still there, but it cannot start a track.
        if (goesOn)
            track.lastFrame = m_frame;
        return;
    }
    track.lastFrame = m_frame;
    m_newestReportMs = qMax(m_newestReportMs, detectedMs);

    const double along = m_line.along(xRange, yRange);
    const double across = m_line.across(xRange, yRange);
    const double speed = m_line.alongSpeed(xSpeed, ySpeed);
    if (!goesOn || detectedMs < track.reportMs) {
        startTrack(track, detectedMs, along, across, speed, length);
        return;
    }
    if (detectedMs == track.reportMs)
        return; // the client repeating a report the radar did not renew

    const double seconds = (detectedMs - track.reportMs) / 1000.0;
    if (std::fabs(along - (track.along + track.speed * seconds)) > JumpAlong
        || std::fabs(across - track.across) > JumpAcross) {
        startTrack(track, detectedMs, along, across, speed, length);
        return;
    }

    track.length = qMax(track.length, length);
    const int side = along > 0 ? 1 : along < 0 ? -1 : 0;
    if (!track.counted && side != 0 && track.side != 0 && side != track.side)
        count(id, track, detectedMs, along, across, speed);
    if (side != 0)
        track.side = side;
    track.reportMs = detectedMs;
    track.along = along;
    track.across = across;
    track.speed = speed;
}

void LaneCounter::count(quint8 id, Track& track, qint64 detectedMs, double along, double across,
                        double speed)
{
    track.counted = true;
    // Between the report before the line (or the last one on it) and the one past it.
    const double share = track.along / (track.along - along);
    const double acrossAt = track.across + share * (across - track.across);
    const int lane = m_line.laneAt(acrossAt);
    if (lane == 0)
        return; // beside the lanes: no vehicle of the road's traffic

    VehicleCrossing crossing;
    crossing.timeMs = track.reportMs + qint64(std::llround(share * (detectedMs - track.reportMs)));
    crossing.lane = lane;
    crossing.direction = along > 0 ? VehicleCrossing::Receding : VehicleCrossing::Approaching;
    crossing.speed = std::fabs(track.speed + share * (speed - track.speed));
    crossing.length = track.length;
    crossing.across = acrossAt;
    crossing.id = id;
    m_statistics.addCrossing(crossing);
    emit vehicleCounted(crossing);
}
