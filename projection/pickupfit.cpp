#include "pickupfit.h"

#include "pickupsearch.h"

#include <cmath>

namespace {
constexpr int Decimals = 2;
QString metres(double value)
{
    // A miss that rounds to nothing reads 0.00, not -0.00.
    const double rounded = std::round(value * 100.0) / 100.0;
    return QString::number(rounded == 0.0 ? 0.0 : rounded, 'f', Decimals);
}
} // namespace

PickupFit PickupFit::evaluate(PickupSearch& search, const PickupParams& pose)
{
    PickupFit fit;
    const CameraModel& model = search.modelFor(pose);
    const QVector<PickupCheckpoint>& marks = search.checkpoints();
    double sum = 0.0;
    int misses = 0;
    fit.complete = model.isValid();
    bool ok = false;
    for (int i = 0; i < PickupSearch::CheckpointCount && i < marks.size(); ++i) {
        Row row;
        row.entered = marks.at(i).value;
        const QPointF road = model.isValid() ? model.xyFromScreen(marks.at(i).pixel, &ok) : QPointF();
        row.onRoad = model.isValid() && ok;
        row.fitted = road.y();
        if (row.onRoad) {
            sum += (row.fitted - row.entered) * (row.fitted - row.entered);
            ++misses;
        }
        fit.complete = fit.complete && row.onRoad;
        fit.checkpoints.append(row);
    }
    if (search.mode() == PickupSearch::RadarPositionAndViewAngle
        && marks.size() >= PickupSearch::CheckpointCount + 2) {
        fit.hasSegment = true;
        const PickupCheckpoint& a = marks.at(PickupSearch::CheckpointCount);
        const PickupCheckpoint& b = marks.at(PickupSearch::CheckpointCount + 1);
        fit.segment.entered = b.value;
        bool okA = false, okB = false;
        const QPointF pa = model.isValid() ? model.xyFromScreen(a.pixel, &okA) : QPointF();
        const QPointF pb = model.isValid() ? model.xyFromScreen(b.pixel, &okB) : QPointF();
        fit.segment.onRoad = model.isValid() && okA && okB;
        fit.segment.fitted = std::hypot(pb.x() - pa.x(), pb.y() - pa.y());
        if (fit.segment.onRoad) {
            sum += (fit.segment.fitted - fit.segment.entered)
                   * (fit.segment.fitted - fit.segment.entered);
            ++misses;
        }
        fit.complete = fit.complete && fit.segment.onRoad;
    }
    fit.rmsError = misses > 0 ? std::sqrt(sum / misses) : 0.0;
    return fit;
}

QString PickupFit::detailsText() const
{
    QStringList lines;
    for (int i = 0; i < checkpoints.size(); ++i) {
        const Row& row = checkpoints.at(i);
        if (row.onRoad)
            lines << tr("Checkpoint #%1: entered Y %2 m, picked Y %3 m, difference %4 m")
                         .arg(i + 1)
                         .arg(metres(row.entered), metres(row.fitted),
                              metres(row.fitted - row.entered));
        else
            lines << tr("Checkpoint #%1: entered Y %2 m, not on the road under the picked position")
                         .arg(i + 1)
                         .arg(metres(row.entered));
    }
    if (hasSegment) {
        if (segment.onRoad)
            lines << tr("Line segment: entered length %1 m, fitted length %2 m, difference %3 m")
                         .arg(metres(segment.entered), metres(segment.fitted),
                              metres(segment.fitted - segment.entered));
        else
            lines << tr("Line segment: entered length %1 m, not on the road under the picked "
                        "position")
                         .arg(metres(segment.entered));
    }
    lines << tr("Root-mean-square error: %1 m").arg(QString::number(rmsError, 'f', 3));
    return lines.join(QLatin1Char('\n'));
}
