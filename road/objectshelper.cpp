#include "objectshelper.h"

#include "iorvexclient.h"
#include "roadmetatypes.h"

#include <algorithm>
#include <cmath>

ObjectsHelper::ObjectsHelper(QObject* parent)
    : QObject(parent)
{
    RoadMetaTypes::registerAll();
}

double ObjectsHelper::calcDistance(const QPointF& a, const QPointF& b)
{
    // Road coordinates are bounded where they enter, so the plain root cannot overflow;
    // hypot's care for that costs several times as much, for every object against every
    // nearby track point.
    const double dx = b.x() - a.x();
    const double dy = b.y() - a.y();
    return std::sqrt(dx * dx + dy * dy);
}

void ObjectsHelper::startFilling()
{
    m_objects.clear();
    m_receding.clear();
    m_approaching.clear();
}

void ObjectsHelper::setFrameDateTimeUtc(const QDateTime& dateTime)
{
    m_frameTime = dateTime;
}

void ObjectsHelper::setCycleNumber(quint64 cycle)
{
    m_cycleNumber = cycle;
}

void ObjectsHelper::addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                              double length, const QDateTime& lastDetected)
{
    const RoadObject object{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected};
    m_objects.append(object);
    // Equal ranges keep their arrival order.
    if (xSpeed >= 0) {
        const auto at = std::find_if(m_approaching.begin(), m_approaching.end(),
                                     [xRange](const RoadObject& o) { return o.xRange < xRange; });
        m_approaching.insert(at, object);
    } else {
        const auto at = std::find_if(m_receding.begin(), m_receding.end(),
                                     [xRange](const RoadObject& o) { return o.xRange > xRange; });
        m_receding.insert(at, object);
    }
}

void ObjectsHelper::finishFilling()
{
    QVector<quint8> order;
    order.reserve(m_receding.size() + m_approaching.size());
    for (const RoadObject& o : qAsConst(m_receding))
        order.append(o.id);
    for (const RoadObject& o : qAsConst(m_approaching))
        order.append(o.id);
    emit sortingFinished(order);
    if (m_working)
        doUpdateAverageTracks();
}

void ObjectsHelper::setRadarState(int state)
{
    m_online = IOrvexClient::isOnline(state);
    m_working = IOrvexClient::isWorking(state);
    // A busy radar keeps what was learnt; starting to work or losing the radar starts afresh.
    if (!m_online || m_working)
        resetAverageTracks();
}

void ObjectsHelper::startApplyingRoad(const QRectF& rect)
{
    m_roadRect = rect;
}

void ObjectsHelper::setLaneCenterLines(const QMap<int, QPolygonF>& lines)
{
    m_laneCenterLines = lines;
}

void ObjectsHelper::finishApplyingRoad()
{
    resetAverageTracks();
}

void ObjectsHelper::resetAverageTracks()
{
    m_trackBins.clear();
    m_averageTracks = m_laneCenterLines;
    const int bins = std::max(roadEndMetres(true) + 1, 0);
    m_trackBins.resize(size_t(bins));
    for (auto it = m_averageTracks.begin(); it != m_averageTracks.end(); ++it) {
        QPointF* points = it->data(); // own storage from here on
        for (int i = 0; i < it->size(); ++i) {
            const double b = std::floor(points[i].x());
            if (b >= 0 && b < bins)
                m_trackBins[size_t(b)].push_back(points + i);
        }
    }
    doEmitAverageTracks();
}

int ObjectsHelper::roadEndMetres(bool roundUp) const
{
    const double end = m_roadRect.x() + m_roadRect.width();
    const double farEnd = roundUp ? std::ceil(end) : std::floor(end);
    if (!std::isfinite(farEnd))
        return -1;
    return int(qBound(-MaxTrackLength, farEnd, MaxTrackLength));
}

void ObjectsHelper::doUpdateAverageTracks()
{
    const int bins = int(m_trackBins.size());
    for (const RoadObject& o : qAsConst(m_objects)) {
        // Only a fresh detection teaches; a prediction repeats an old one.
        if (o.lastDetected != m_frameTime || !std::isfinite(o.xRange) || !std::isfinite(o.yRange))
            continue;
        const double b = std::floor(o.xRange);
        if (b + SearchBins < 0 || b - SearchBins >= bins)
            continue;
        const int first = std::max(int(b) - SearchBins, 0);
        const int last = std::min(int(b) + SearchBins, bins - 1);
        const QPointF position(o.xRange, o.yRange);
        QPointF* nearest = nullptr;
        double nearestDistance = LearnRadius;
        for (int bin = first; bin <= last; ++bin) {
            for (QPointF* point : m_trackBins[size_t(bin)]) {
                const double d = calcDistance(*point, position);
                if (d < nearestDistance) {
                    nearestDistance = d;
                    nearest = point;
                }
            }
        }
        if (!nearest)
            continue;
        const double weight = LearnRate * (1.0 - nearestDistance / LearnRadius);
        nearest->setY((1.0 - weight) * nearest->y() + weight * o.yRange);
    }
    if (m_cycleNumber % EmitEveryCycles == 0)
        doEmitAverageTracks();
}

void ObjectsHelper::doEmitAverageTracks()
{
    // The floor here where the reset takes the ceiling: the last, partial 5 m stretch
    // of a road that does not end on a whole metre is left out.
    const int binCount = roadEndMetres(false) / 5 + 1;
    QMap<int, QPolygonF> emitted;
    for (auto it = m_averageTracks.cbegin(); it != m_averageTracks.cend(); ++it) {
        std::vector<double> sums(size_t(std::max(binCount, 0)), 0.0);
        std::vector<int> counts(sums.size(), 0);
        for (const QPointF& p : *it) {
            const double k = std::floor(p.x());
            if (k < -4 || k >= 5.0 * binCount)
                continue;
            const int bin = int(k) / 5; // -4 .. 4 all land in bin 0
            if (bin >= binCount)
                continue;
            sums[size_t(bin)] += p.y();
            ++counts[size_t(bin)];
        }
        QPolygonF line;
        for (size_t i = 0; i < sums.size(); ++i) {
            if (counts[i] >= EmitMinPoints)
                line.append(QPointF((i + 0.5) * EmitBinLength, sums[i] / counts[i]));
        }
        emitted.insert(it.key(), line);
    }
    emit averageTracks(emitted);
}
