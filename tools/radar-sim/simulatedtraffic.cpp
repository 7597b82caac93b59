#include "simulatedtraffic.h"

#include "roadobject.h"

#include <QLineF>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {
constexpr double MinGap = 8.0; // metres kept to the vehicle ahead, plus...
constexpr double HeadwaySeconds = 1.2; // ...this much time at the present speed
constexpr double Acceleration = 1.5; // m/s^2
constexpr double Deceleration = 4.0;
constexpr double EntryClearance = 30.0;
} // namespace

SimulatedTraffic::SimulatedTraffic(const QMap<int, QPolygonF>& laneCentres, int vehicles,
                                   quint32 seed)
    : m_rng(seed)
{
    for (auto it = laneCentres.cbegin(); it != laneCentres.cend(); ++it) {
        if (it->size() < 2)
            continue;
        Lane lane;
        lane.partId = it.key();
        lane.points = *it;
        lane.direction = it.key() < 0 ? 1 : -1;
        lane.arc.reserve(it->size());
        double total = 0;
        lane.arc.append(0);
        for (int i = 1; i < it->size(); ++i) {
            total += QLineF(it->at(i - 1), it->at(i)).length();
            lane.arc.append(total);
        }
        m_lanes.append(lane);
    }
    if (m_lanes.isEmpty())
        return;

    // Start with the road already in use: vehicles spread along the lanes.
    m_vehicles.resize(vehicles);
    for (Vehicle& v : m_vehicles) {
        newVehicle(v);
        v.waiting = 0;
        for (int attempt = 0; attempt < 20; ++attempt) {
            v.s = uniform(0, laneLength(m_lanes.at(v.lane)));
            const bool clear
                = std::none_of(m_vehicles.cbegin(), m_vehicles.cend(), [&v](const Vehicle& o) {
                      return &o != &v && o.lane == v.lane && o.length > 0
                             && std::fabs(o.s - v.s) < 40;
                  });
            if (clear)
                break;
        }
    }
}

quint8 SimulatedTraffic::nextFreeId()
{
    // Ids go round, so that a leaving vehicle's id is handed on to a later one.
    for (int tries = 0; tries <= MaxTrafficId; ++tries) {
        const quint8 id = quint8(m_idCursor);
        m_idCursor = (m_idCursor + 1) % (MaxTrafficId + 1);
        const bool used
            = std::any_of(m_vehicles.cbegin(), m_vehicles.cend(),
                          [id](const Vehicle& v) { return v.id == id && v.length > 0; });
        if (!used)
            return id;
    }
    return 0;
}

void SimulatedTraffic::newVehicle(Vehicle& v)
{
    v.length = 0; // not on the road while its id is chosen
    v.id = nextFreeId();
    v.lane = int(m_rng.bounded(m_lanes.size()));
    v.s = 0;
    const double kind = m_rng.generateDouble();
    if (kind < 0.72) { // car
        v.length = uniform(3.8, 5.2);
        v.desiredSpeed = uniform(60, 130) / RoadObject::KmhPerMps;
    } else if (kind < 0.85) { // van
        v.length = uniform(5.4, 7.5);
        v.desiredSpeed = uniform(50, 110) / RoadObject::KmhPerMps;
    } else { // truck
        v.length = uniform(12, 18);
        v.desiredSpeed = uniform(30, 90) / RoadObject::KmhPerMps;
    }
    v.speed = v.desiredSpeed;
    v.wanderAmplitude = uniform(0.05, 0.35);
    v.wanderFrequency = uniform(0.03, 0.2);
    v.wanderPhase = uniform(0, 2 * M_PI);
    v.waiting = uniform(0.3, 3.0);
}

bool SimulatedTraffic::entryFree(const Vehicle& entering) const
{
    return std::none_of(m_vehicles.cbegin(), m_vehicles.cend(), [&entering](const Vehicle& o) {
        return &o != &entering && o.waiting <= 0 && o.lane == entering.lane
               && o.s - o.length < EntryClearance;
    });
}

double SimulatedTraffic::alongLine(const Vehicle& vehicle) const
{
    QPointF direction;
    const QPointF p = pointAt(m_lanes.at(vehicle.lane), vehicle.s, direction);
    return m_line.along(p.x(), p.y());
}

void SimulatedTraffic::step(double dt)
{
    m_time += dt;
    m_passages.clear();
    for (int i = 0; i < m_vehicles.size(); ++i) {
        Vehicle& v = m_vehicles[i];
        if (v.waiting > 0) {
            v.waiting -= dt;
            if (v.waiting <= 0 && !entryFree(v))
                v.waiting = 0.2; // the lane's entry is busy: try again shortly
            continue;
        }

        // Keep a safe distance to the nearest vehicle ahead in the same lane.
        double target = v.desiredSpeed;
        const Vehicle* leader = nullptr;
        for (const Vehicle& o : qAsConst(m_vehicles)) {
            if (&o != &v && o.waiting <= 0 && o.lane == v.lane && o.s > v.s
                && (!leader || o.s < leader->s))
                leader = &o;
        }
        if (leader) {
            const double gap = leader->s - leader->length - v.s;
            if (gap < MinGap + HeadwaySeconds * v.speed)
                target = std::min(target, leader->speed * (gap > MinGap ? 1.0 : 0.9));
        }
        if (v.speed < target)
            v.speed = std::min(target, v.speed + Acceleration * dt);
        else
            v.speed = std::max(target, v.speed - Deceleration * dt);
        const double before = m_line.isValid() ? alongLine(v) : 0;
        v.s += v.speed * dt;
        if (m_line.isValid()) {
            // The point the radar reports passing the line during this step.
            const double after = alongLine(v);
            if ((before < 0) != (after < 0)) {
                const double share = before / (before - after);
                m_passages.append({m_time - dt + share * dt, v.id, m_lanes.at(v.lane).partId,
                                   after > before ? 1 : -1, v.speed, v.length});
            }
        }

        if (v.s - v.length > laneLength(m_lanes.at(v.lane)))
            newVehicle(v); // gone past the end of the road; another one will come
    }
}

QPointF SimulatedTraffic::pointAt(const Lane& lane, double s, QPointF& direction) const
{
    const double length = laneLength(lane);
    const double along = lane.direction > 0 ? s : length - s;
    const double a = qBound(0.0, along, length);
    int i = int(std::upper_bound(lane.arc.cbegin(), lane.arc.cend(), a) - lane.arc.cbegin()) - 1;
    i = qBound(0, i, lane.points.size() - 2);
    const QPointF p0 = lane.points.at(i);
    const QPointF p1 = lane.points.at(i + 1);
    const double segment = lane.arc.at(i + 1) - lane.arc.at(i);
    const QPointF unit = segment > 0 ? (p1 - p0) / segment : QPointF(1, 0);
    direction = unit * lane.direction;
    // Beyond either end the vehicle goes on straight.
    return p0 + unit * (along - lane.arc.at(i));
}

QVector<SimulatedTraffic::Object> SimulatedTraffic::reportedObjects()
{
    QVector<Object> objects;
    for (const Vehicle& v : qAsConst(m_vehicles)) {
        if (v.waiting > 0)
            continue;
        QPointF direction;
        const QPointF centre = pointAt(m_lanes.at(v.lane), v.s, direction);
        // A driver never keeps exactly to the middle of the lane.
        const double phase = 2 * M_PI * v.wanderFrequency * m_time + v.wanderPhase;
        const double offset = v.wanderAmplitude * std::sin(phase);
        const double offsetRate
            = v.wanderAmplitude * 2 * M_PI * v.wanderFrequency * std::cos(phase);
        const QPointF normal(-direction.y(), direction.x());
        const QPointF position = centre + normal * offset;
        const QPointF velocity = direction * v.speed + normal * offsetRate;
        if (position.x() < 0 || position.x() > RadarRange)
            continue;
        if (m_rng.generateDouble() < DropOutChance)
            continue;
        objects.append({v.id, position.x(), position.y(), velocity.x(), velocity.y(), v.length});
    }
    return objects;
}
