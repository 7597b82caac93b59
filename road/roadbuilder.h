#pragma once

#include "roadpart.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>

// Lays out the road described by a road configuration: the axis, the lines between
// lanes, the carriageway borders, the centre of every lane, a cross line and the axis
// direction at every whole metre, and the bounding rectangle. Everything is in metres
// in the road frame: X along the road's starting direction, Y to the left of it.
class RoadBuilder : public QObject
{
    Q_OBJECT

public:
    // Curves tighter than this, or sweeping more than half a circle, are refused.
    static constexpr double MinCurveRadius = 10.0;
    // A whole-metre mark this close outside a section still belongs to it.
    static constexpr double MarkTolerance = 0.01;
    // Straight run-in and run-out laid before and after the configured road.
    static constexpr double ExtensionLength = 2.0;
    // The configuration is typed by hand into the settings file; values no road has
    // are taken for broken settings, so that laying the road stays finite and quick
    // (a mark per metre and per part) and its geometry stays well inside a double.
    // All the sections together lay at most this length: a section that would take
    // the road beyond it is skipped like a refused curve.
    static constexpr double MaxRoadLength = 10000.0;
    // A part wider than this, either way, counts as one without a width (0 m).
    static constexpr double BrokenPartWidth = 100.0;
    // Parts farther out than this on one side are ignored, as those past a gap are.
    static constexpr int MaxPartsPerSide = 20;
    // A lateral shift larger than this counts as none.
    static constexpr double BrokenOriginOffset = 100000.0;
    // An arc flatter than this is laid as a straight: over the longest road it strays
    // less than 2 cm from one, and its centre would lie too far out for the precision
    // of a double.
    static constexpr double MaxCurveRadius = 1e9;

    explicit RoadBuilder(QObject* parent = nullptr);

    const QMap<int, RoadPart>& parts() const { return m_parts; }

public slots:
    void setRoadConfig(const QJsonObject& config);

signals:
    void applyingRoadStarted(const QRectF& rect, const QPointF& origin);
    void roadAxisLine(const QPolygonF& line);
    void laneBorderLines(const QList<QPolygonF>& lines);
    void roadBorderLines(const QList<QPolygonF>& lines);
    void laneCenterLines(const QMap<int, QPolygonF>& lines);
    void distanceLines(const QMap<int, QPolygonF>& lines);
    void roadTanAngles(const QMap<int, double>& angles);
    void applyingRoadFinished();

private:
    void doSetupParts(const QJsonObject& parts);
    void doBuildRoad(const QJsonArray& sections);
    void doAddStraightSection(double length, bool isExtension, const QPointF& startPoint,
                              double startAngle, double startDistance, QPointF& endPoint,
                              double& endAngle, double& endDistance);
    void doAddCurvedSection(double length, double radius, bool isExtension,
                            const QPointF& startPoint, double startAngle, double startDistance,
                            QPointF& endPoint, double& endAngle, double& endDistance);
    static void doCalcLimitMarks(double startDistance, double endDistance, int& firstMark,
                                 int& lastMark);
    void doFillMarkPoints(int mark, const QPointF& axisPoint, double angle, bool isExtension);
    static QPointF orthoPoint(const QPointF& point, double angle, double offset);
    void doExpandDimesionsByPoint(const QPointF& point);
    void doExpandDimesionsByRoadside(const QPointF& axisPoint, double angle);
    void doApplyRoad();

    double m_originOffset = 0.0;
    QMap<int, RoadPart> m_parts;
    QMap<int, QMap<int, QPointF>> m_borderPoints; // mark -> part -> inner edge point
    QMap<int, QMap<int, QPointF>> m_centerPoints; // mark -> part (0: axis) -> centre
    QMap<int, double> m_tanAngles;
    QRectF m_rect;
};
