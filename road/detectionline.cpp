#include "detectionline.h"

#include "roadbuilder.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// The road as the road builder lays it out.
struct LaidRoad
{
    QPolygonF axis; // one point per whole metre, from the first distance mark
    int firstMark = 0;
    QMap<int, double> tanAngles; // road marks only
    QMap<int, QPolygonF> laneCentres;
    QMap<int, RoadPart> parts;
};

LaidRoad layOut(const QJsonObject& config)
{
    LaidRoad road;
    RoadBuilder builder;
    QObject::connect(&builder, &RoadBuilder::roadAxisLine,
                     [&road](const QPolygonF& line) { road.axis = line; });
    QObject::connect(&builder, &RoadBuilder::distanceLines,
                     [&road](const QMap<int, QPolygonF>& lines) {
                         road.firstMark = lines.isEmpty() ? 0 : lines.firstKey();
                     });
    QObject::connect(&builder, &RoadBuilder::roadTanAngles,
                     [&road](const QMap<int, double>& angles) { road.tanAngles = angles; });
    QObject::connect(&builder, &RoadBuilder::laneCenterLines,
                     [&road](const QMap<int, QPolygonF>& lines) { road.laneCentres = lines; });
    builder.setRoadConfig(config);
    road.parts = builder.parts();
    return road;
}

} // namespace

DetectionLine::Problem DetectionLine::setRoad(const QJsonObject& roadConfig, double distance)
{
    *this = DetectionLine();
    const LaidRoad road = layOut(roadConfig);
    if (road.laneCentres.isEmpty())
        return NoLanes;
    if (road.tanAngles.isEmpty())
        return NoRoad;
    const int firstRoadMark = road.tanAngles.firstKey();
    const int lastRoadMark = road.tanAngles.lastKey();
    m_roadLength = lastRoadMark;
    if (!std::isfinite(distance) || distance < firstRoadMark || distance > lastRoadMark)
        return OutsideRoad;

    // The axis point and direction at the distance, between the two whole metres around it.
    const int mark = qMin(int(std::floor(distance)), lastRoadMark);
    const double share = distance - mark;
    const int index = mark - road.firstMark;
    if (index < 0 || index >= road.axis.size())
        return NoRoad;
    QPointF origin = road.axis.at(index);
    double angle = road.tanAngles.value(mark);
    if (share > 0 && index + 1 < road.axis.size() && road.tanAngles.contains(mark + 1)) {
        origin += (road.axis.at(index + 1) - origin) * share;
        // Angles are kept within -pi..pi: turn the short way round.
        double turn = road.tanAngles.value(mark + 1) - angle;
        turn = std::remainder(turn, 2 * M_PI);
        angle += turn * share;
    }
    m_distance = distance;
    m_originX = origin.x();
    m_originY = origin.y();
    m_directionX = std::cos(angle);
    m_directionY = std::sin(angle);

    // Where each lane's centre line meets the line; on a road that winds back, the
    // meeting nearest to the axis point.
    for (auto it = road.laneCentres.cbegin(); it != road.laneCentres.cend(); ++it) {
        const QPolygonF& centre = *it;
        double best = std::numeric_limits<double>::infinity();
        for (int i = 0; i + 1 < centre.size(); ++i) {
            const double a0 = along(centre[i].x(), centre[i].y());
            const double a1 = along(centre[i + 1].x(), centre[i + 1].y());
            if ((a0 > 0 && a1 > 0) || (a0 < 0 && a1 < 0) || a0 == a1)
                continue;
            const QPointF meeting = centre[i] + (centre[i + 1] - centre[i]) * (a0 / (a0 - a1));
            const double offset = across(meeting.x(), meeting.y());
            if (std::fabs(offset) < std::fabs(best))
                best = offset;
        }
        if (!std::isfinite(best))
            continue;
        const RoadPart part = road.parts.value(it.key());
        m_lanes.append({it.key(), best, (part.maxCoord - part.minCoord) / 2});
    }
    if (m_lanes.isEmpty()) {
        *this = DetectionLine();
        return NoLanes;
    }
    std::sort(m_lanes.begin(), m_lanes.end(),
              [](const Lane& a, const Lane& b) { return a.across < b.across; });
    m_lowEdge = m_lanes.first().across - m_lanes.first().halfWidth;
    m_highEdge = m_lanes.last().across + m_lanes.last().halfWidth;
    for (const Lane& lane : qAsConst(m_lanes)) {
        m_lowEdge = qMin(m_lowEdge, lane.across - lane.halfWidth);
        m_highEdge = qMax(m_highEdge, lane.across + lane.halfWidth);
    }
    m_lowEdge -= EdgeTolerance;
    m_highEdge += EdgeTolerance;
    return NoProblem;
}

int DetectionLine::laneAt(double across) const
{
    if (!(across >= m_lowEdge && across <= m_highEdge))
        return 0;
    int lane = 0;
    double nearest = std::numeric_limits<double>::infinity();
    for (const Lane& l : m_lanes) {
        const double d = std::fabs(across - l.across);
        if (d < nearest) {
            nearest = d;
            lane = l.id;
        }
    }
    return lane;
}
