#include "groundtruth.h"

#include "roadobject.h"

#include <QStringList>

namespace {

QString directionName(int direction)
{
    return direction == VehicleCrossing::Receding ? QStringLiteral("receding")
                                                  : QStringLiteral("approaching");
}

} // namespace

bool GroundTruth::open(const QString& path, double lineDistance, QString& error)
{
    m_lineDistance = lineDistance;
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        error = QStringLiteral("cannot write %1: %2").arg(path, m_file.errorString());
        return false;
    }
    m_file.write("time_ms,id,lane,direction,speed_mps,length_m\n");
    m_file.flush();
    return true;
}

void GroundTruth::add(const VehicleCrossing& vehicle)
{
    Tally& tally = m_tallies[qMakePair(vehicle.lane, vehicle.direction)];
    ++tally.count;
    tally.speedSum += vehicle.speed;
    if (!m_file.isOpen())
        return;
    // Written through at once: the simulator usually ends by being killed.
    m_file.write(QStringLiteral("%1,%2,%3,%4,%5,%6\n")
                     .arg(vehicle.timeMs)
                     .arg(vehicle.id)
                     .arg(vehicle.lane)
                     .arg(directionName(vehicle.direction))
                     .arg(vehicle.speed, 0, 'f', 3)
                     .arg(vehicle.length, 0, 'f', 2)
                     .toUtf8());
    m_file.flush();
}

QString GroundTruth::summary() const
{
    QStringList lines;
    for (auto it = m_tallies.cbegin(); it != m_tallies.cend(); ++it) {
        lines << QStringLiteral("ground truth at %1 m: lane %2 %3: %4 vehicles, mean %5 km/h")
                     .arg(m_lineDistance)
                     .arg(it.key().first)
                     .arg(directionName(it.key().second))
                     .arg(it->count)
                     .arg(RoadObject::kmh(it->speedSum / it->count), 0, 'f', 1);
    }
    if (lines.isEmpty())
        lines << QStringLiteral("ground truth at %1 m: no vehicle passed").arg(m_lineDistance);
    return lines.join(QLatin1Char('\n'));
}
