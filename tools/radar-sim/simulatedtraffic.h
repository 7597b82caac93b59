#pragma once

#include "detectionline.h"

#include <QMap>
#include <QPointF>
#include <QPolygonF>
#include <QRandomGenerator>
#include <QVector>

// Vehicles driving along the lanes of a road, in the road frame (metres, m/s).
// Lanes to the right of the road axis (negative part numbers) carry traffic along the
// axis, away from the radar; lanes to the left carry it towards the radar.
class SimulatedTraffic
{
public:
    struct Object
    {
        quint8 id = 0;
        double xRange = 0, yRange = 0, xSpeed = 0, ySpeed = 0, length = 0;
    };

    // A vehicle passing the detection line, as the traffic knows it.
    struct Passage
    {
        double time = 0; // seconds of traffic time, between two steps
        quint8 id = 0;
        int lane = 0;
        int direction = 1; // +1 towards greater distances along the road
        double speed = 0; // m/s
        double length = 0;
    };

    static constexpr double RadarRange = 250.0; // the radar sees 0 to 250 m ahead
    static constexpr int MaxTrafficId = 59; // ids 60-63 are kept for demo objects
    static constexpr double DropOutChance = 0.04;

    // laneCentres: lane part number -> centre line with a point every metre.
    SimulatedTraffic(const QMap<int, QPolygonF>& laneCentres, int vehicles, quint32 seed);

    // Vehicles passing this line are noted in every step from now on.
    void setDetectionLine(const DetectionLine& line) { m_line = line; }
    void step(double dt);
    // The vehicles that passed the detection line in the last step.
    const QVector<Passage>& passages() const { return m_passages; }
    double time() const { return m_time; } // seconds since the traffic started
    // The vehicles the radar sees this cycle: within range, less the occasional miss.
    QVector<Object> reportedObjects();

    int laneCount() const { return m_lanes.size(); }
    int vehicleCount() const { return m_vehicles.size(); }

private:
    struct Lane
    {
        int partId = 0;
        QPolygonF points;
        QVector<double> arc; // distance along the line at each point
        int direction = 1; // +1 along the line, -1 against it
    };
    struct Vehicle
    {
        quint8 id = 0;
        int lane = 0;
        double s = 0; // distance travelled along the lane, metres
        double speed = 0;
        double desiredSpeed = 0;
        double length = 0;
        double wanderAmplitude = 0, wanderFrequency = 0, wanderPhase = 0;
        double waiting = 0; // seconds until it enters the road again; 0: on the road
    };

    double laneLength(const Lane& lane) const { return lane.arc.isEmpty() ? 0 : lane.arc.last(); }
    // Point and travel direction (unit vector) at distance s along the lane.
    QPointF pointAt(const Lane& lane, double s, QPointF& direction) const;
    void newVehicle(Vehicle& vehicle);
    bool entryFree(const Vehicle& entering) const;
    double alongLine(const Vehicle& vehicle) const;
    quint8 nextFreeId();
    double uniform(double low, double high) { return low + m_rng.generateDouble() * (high - low); }

    QVector<Lane> m_lanes;
    QVector<Vehicle> m_vehicles;
    QRandomGenerator m_rng;
    double m_time = 0;
    int m_idCursor = 0;
    DetectionLine m_line;
    QVector<Passage> m_passages;
};
