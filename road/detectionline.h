#pragma once

#include <QJsonObject>
#include <QPointF>
#include <QVector>

// A virtual detection line laid across the road at a distance along its axis, as a
// traffic engineer lays an induction loop across the lanes: perpendicular to the axis
// there, from the outer edge of the outermost lane on one side to that on the other.
// Positions are given relative to the line: `along` is how far a point lies past it in
// the road's direction (the direction in which distances along the axis grow), `across`
// where it lies on the line, to the left of that direction.
class DetectionLine
{
public:
    static constexpr double DefaultDistance = 50.0; // metres along the axis
    // A vehicle's reported position strays from its lane a little; this far outside the
    // outer lanes' edges it is still taken for a vehicle in the outer lane.
    static constexpr double EdgeTolerance = 1.0;

    enum Problem {
        NoProblem,
        NoLanes, // the road configuration names no lane
        NoRoad, // its sections lay no road
        OutsideRoad, // the distance lies before the road's start or past its end
    };

    struct Lane
    {
        int id = 0; // the lane's part number
        double across = 0; // where its centre line meets the detection line
        double halfWidth = 0;
    };

    DetectionLine() = default;

    // Lays the line across the road of a road configuration ("road_config") at this
    // distance in metres from the road's start, measured along its axis.
    Problem setRoad(const QJsonObject& roadConfig, double distance);

    bool isValid() const { return !m_lanes.isEmpty(); }
    double distance() const { return m_distance; }
    // The road's length along its axis, in whole metres: the line may lie from 0 to here.
    // Known also when the distance was refused for lying outside.
    double roadLength() const { return m_roadLength; }
    QPointF origin() const { return {m_originX, m_originY}; } // on the road axis
    QPointF direction() const { return {m_directionX, m_directionY}; } // unit vector
    const QVector<Lane>& lanes() const { return m_lanes; } // ordered by `across`

    double along(double x, double y) const
    {
        return (x - m_originX) * m_directionX + (y - m_originY) * m_directionY;
    }
    double across(double x, double y) const
    {
        return (y - m_originY) * m_directionX - (x - m_originX) * m_directionY;
    }
    double alongSpeed(double xSpeed, double ySpeed) const
    {
        return xSpeed * m_directionX + ySpeed * m_directionY;
    }
    // The lane whose centre line is nearest to this point of the line; 0 (the median
    // strip's number, never a lane) when the point lies outside the lanes.
    int laneAt(double across) const;

private:
    double m_distance = 0;
    double m_roadLength = 0;
    double m_originX = 0, m_originY = 0;
    double m_directionX = 1, m_directionY = 0;
    QVector<Lane> m_lanes;
    double m_lowEdge = 0, m_highEdge = 0; // outer lane edges on the line, tolerance included
};
