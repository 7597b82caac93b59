#include "roadbuilder.h"

#include "roadconfigkeys.h"
#include "roadconfigvalue.h"
#include "roadmetatypes.h"

#include <QtMath>

#include <cmath>

namespace K = RoadConfigKeys;

using RoadConfigValue::number;

RoadBuilder::RoadBuilder(QObject* parent)
    : QObject(parent)
{
    RoadMetaTypes::registerAll();
}

namespace {

// A number of the configuration within a sane bound; beyond it, the fallback.
double bounded(const QJsonValue& value, double bound)
{
    const double v = number(value);
    return std::fabs(v) <= bound ? v : 0.0;
}

} // namespace

void RoadBuilder::setRoadConfig(const QJsonObject& config)
{
    m_originOffset = bounded(config.value(K::OriginOffset), BrokenOriginOffset);
    doSetupParts(config.value(K::Parts).toObject());
    doBuildRoad(config.value(K::Sections).toArray());
    doApplyRoad();
}

void RoadBuilder::doSetupParts(const QJsonObject& parts)
{
    m_parts.clear();
    const double medianWidth
        = bounded(parts.value(QStringLiteral("0")).toObject().value(K::Width), BrokenPartWidth);
    RoadPart left(0, -medianWidth / 2.0, medianWidth, false);
    RoadPart right = left;
    m_parts.insert(0, left);

    // Parts are numbered outwards on both sides. A number missing on one side only is
    // passed over; the first number missing on both sides ends the cross-section.
    for (int n = 1; n <= MaxPartsPerSide; ++n) {
        const QJsonObject leftPart = parts.value(QString::number(n)).toObject();
        const QJsonObject rightPart = parts.value(QString::number(-n)).toObject();
        if (leftPart.isEmpty() && rightPart.isEmpty())
            break;
        if (!leftPart.isEmpty()) {
            left = RoadPart(n, left.maxCoord, bounded(leftPart.value(K::Width), BrokenPartWidth),
                            leftPart.value(K::IsLane).toBool(false));
            m_parts.insert(n, left);
        }
        if (!rightPart.isEmpty()) {
            right
                = RoadPart(-n, right.minCoord, -bounded(rightPart.value(K::Width), BrokenPartWidth),
                           rightPart.value(K::IsLane).toBool(false));
            m_parts.insert(-n, right);
        }
    }
}

void RoadBuilder::doBuildRoad(const QJsonArray& sections)
{
    m_borderPoints.clear();
    m_centerPoints.clear();
    m_tanAngles.clear();
    m_rect = QRectF(0, 0, 0, 0); // the start of the road is always inside

    QPointF point(-ExtensionLength, 0);
    double angle = 0.0;
    double distance = -ExtensionLength;
    doAddStraightSection(ExtensionLength, true, point, angle, distance, point, angle, distance);

    double laidLength = 0.0;
    for (const QJsonValue& value : sections) {
        const QJsonObject section = value.toObject();
        const double length = number(section.value(K::Length));
        // Counted both ways: a road that doubles back is laid over again.
        if (laidLength + std::fabs(length) > MaxRoadLength)
            continue;
        const double startDistance = distance;
        const double radius = number(section.value(K::Radius));
        if (section.value(K::IsCurved).toBool(false) && std::fabs(radius) <= MaxCurveRadius) {
            doAddCurvedSection(length, radius, false, point, angle, distance, point, angle,
                               distance);
        } else {
            doAddStraightSection(length, false, point, angle, distance, point, angle, distance);
        }
        laidLength += std::fabs(distance - startDistance); // a refused curve lays nothing
    }

    doAddStraightSection(ExtensionLength, true, point, angle, distance, point, angle, distance);
}

void RoadBuilder::doAddStraightSection(double length, bool isExtension, const QPointF& startPoint,
                                       double startAngle, double startDistance, QPointF& endPoint,
                                       double& endAngle, double& endDistance)
{
    const QPointF start = startPoint; // the outputs may alias the inputs
    const double angle = startAngle;
    const double distance = startDistance;
    const QPointF direction(std::cos(angle), std::sin(angle));

    int first = 0;
    int last = 0;
    doCalcLimitMarks(distance, distance + length, first, last);
    for (int mark = first; mark <= last; ++mark)
        doFillMarkPoints(mark, start + (mark - distance) * direction, angle, isExtension);

    endPoint = start + length * direction;
    endAngle = angle;
    endDistance = distance + length;
}

void RoadBuilder::doAddCurvedSection(double length, double radius, bool isExtension,
                                     const QPointF& startPoint, double startAngle,
                                     double startDistance, QPointF& endPoint, double& endAngle,
                                     double& endDistance)
{
    const QPointF start = startPoint;
    const double angle = startAngle;
    const double distance = startDistance;
    endPoint = start;
    endAngle = angle;
    endDistance = distance;

    // A refused curve leaves no trace: the next section starts where this one would have.
    if (std::fabs(radius) < MinCurveRadius)
        return;
    const double sweep = length / radius;
    if (std::fabs(sweep) > M_PI)
        return;

    const QPointF centre(start.x() - radius * std::sin(angle),
                         start.y() + radius * std::cos(angle));
    auto onArc = [&](double theta) {
        return QPointF(centre.x() + radius * std::sin(theta),
                       centre.y() - radius * std::cos(theta));
    };

    int first = 0;
    int last = 0;
    doCalcLimitMarks(distance, distance + length, first, last);
    for (int mark = first; mark <= last; ++mark) {
        const double theta = angle + (mark - distance) / radius;
        doFillMarkPoints(mark, onArc(theta), theta, isExtension);
    }

    endAngle = angle + sweep;
    endPoint = onArc(angle + sweep);
    endDistance = distance + length;
}

void RoadBuilder::doCalcLimitMarks(double startDistance, double endDistance, int& firstMark,
                                   int& lastMark)
{
    firstMark = int(std::floor(startDistance));
    if (std::fabs(firstMark - startDistance) > MarkTolerance)
        ++firstMark;
    lastMark = int(std::ceil(endDistance));
    if (std::fabs(lastMark - endDistance) > MarkTolerance)
        --lastMark;
}

QPointF RoadBuilder::orthoPoint(const QPointF& point, double angle, double offset)
{
    return QPointF(point.x() - offset * std::sin(angle), point.y() + offset * std::cos(angle));
}

void RoadBuilder::doFillMarkPoints(int mark, const QPointF& axisPoint, double angle,
                                   bool isExtension)
{
    QMap<int, QPointF>& border = m_borderPoints[mark];
    QMap<int, QPointF>& centre = m_centerPoints[mark];
    centre[0] = axisPoint;
    // The run-in and run-out carry their axis point only.
    if (isExtension)
        return;

    for (const RoadPart& part : qAsConst(m_parts)) {
        if (part.id == 0)
            continue;
        border[part.id] = orthoPoint(axisPoint, angle, part.innCoord());
        centre[part.id] = orthoPoint(axisPoint, angle, part.centerCoord);
    }
    doExpandDimesionsByRoadside(axisPoint, angle);

    double normalised = angle;
    while (normalised < -M_PI)
        normalised += 2 * M_PI;
    while (normalised > M_PI)
        normalised -= 2 * M_PI;
    m_tanAngles[mark] = normalised;
}

void RoadBuilder::doExpandDimesionsByPoint(const QPointF& point)
{
    double x = m_rect.x();
    double y = m_rect.y();
    double w = m_rect.width();
    double h = m_rect.height();
    if (point.x() < x) {
        w += x - point.x();
        x = point.x();
    }
    if (point.x() > x + w)
        w = point.x() - x;
    if (point.y() < y) {
        h += y - point.y();
        y = point.y();
    }
    if (point.y() > y + h)
        h = point.y() - y;
    m_rect = QRectF(x, y, w, h);
}

void RoadBuilder::doExpandDimesionsByRoadside(const QPointF& axisPoint, double angle)
{
    doExpandDimesionsByPoint(orthoPoint(axisPoint, angle, m_parts.first().outCoord()));
    doExpandDimesionsByPoint(orthoPoint(axisPoint, angle, m_parts.last().outCoord()));
}

void RoadBuilder::doApplyRoad()
{
    const QPointF shift(0, m_originOffset);
    const int smallest = m_parts.firstKey();
    const int largest = m_parts.lastKey();
    auto isRoadBorder
        = [&](int id) { return id == -1 || id == 1 || id == smallest || id == largest; };

    // One polyline per part along its inner edge, and one cross line per mark.
    QMap<int, QPolygonF> borders;
    for (const RoadPart& part : qAsConst(m_parts)) {
        if (part.id != 0)
            borders.insert(part.id, QPolygonF());
    }
    QMap<int, QPolygonF> distance;
    for (auto mark = m_borderPoints.cbegin(); mark != m_borderPoints.cend(); ++mark) {
        QPolygonF& cross = distance[mark.key()];
        for (auto p = mark->cbegin(); p != mark->cend(); ++p) {
            borders[p.key()].append(*p + shift);
            cross.append(*p + shift);
        }
    }

    QPolygonF axis;
    QMap<int, QPolygonF> laneCentres;
    for (const RoadPart& part : qAsConst(m_parts)) {
        if (part.id != 0 && part.isLane)
            laneCentres.insert(part.id, QPolygonF());
    }
    for (const QMap<int, QPointF>& mark : qAsConst(m_centerPoints)) {
        for (auto p = mark.cbegin(); p != mark.cend(); ++p) {
            if (p.key() == 0)
                axis.append(*p + shift);
            else if (laneCentres.contains(p.key()))
                laneCentres[p.key()].append(*p + shift);
        }
    }

    QList<QPolygonF> laneBorders;
    QList<QPolygonF> roadBorders;
    for (auto it = borders.cbegin(); it != borders.cend(); ++it)
        (isRoadBorder(it.key()) ? roadBorders : laneBorders).append(*it);

    emit applyingRoadStarted(m_rect.translated(shift), shift);
    emit roadAxisLine(axis);
    emit laneBorderLines(laneBorders);
    emit roadBorderLines(roadBorders);
    emit laneCenterLines(laneCentres);
    emit distanceLines(distance);
    emit roadTanAngles(m_tanAngles);
    emit applyingRoadFinished();
}
