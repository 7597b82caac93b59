#include "simulatedradar.h"

#include "canmessage.h"
#include "groundtruth.h"
#include "radarparamnumbering.h"
#include "serialrecords.h"
#include "udtpayload.h"

#include <QDateTime>
#include <QtMath>

#include <cmath>

namespace {

using P = RadarParamNumbering;

// The imitator feeds the radar one synthetic target at a fixed speed.
constexpr double ImitatorRange = 40.0;
constexpr double ImitatorSpeed[] = {0.0, -15.0, 25.0}; // m/s for type 1 and 2: 54 and 90 km/h

bool isRead(quint8 accessCode)
{
    return accessCode == 2 || accessCode == 3;
}

} // namespace

const QString SimulatedRadar::HardwareInfo = QStringLiteral("ORVEX RS-24 SIM rev.C");
const QString SimulatedRadar::FirmwareInfo = QStringLiteral("FW 2.14.3 build 512");

SimulatedRadar::SimulatedRadar(const SimOptions& options, const QMap<int, QPolygonF>& laneCentres,
                               QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_variant(options.variant)
    , m_ids(SimCanIds::forVariant(options.variant))
    , m_traffic(laneCentres, options.vehicles, options.seed)
    , m_busyAcksLeft(options.busyAcks)
{
    m_cycleTimer.setTimerType(Qt::PreciseTimer);
    m_cycleTimer.setInterval(
        qMax(1, int(std::lround(1000.0 / (options.rate * options.timeScale)))));
    connect(&m_cycleTimer, &QTimer::timeout, this, &SimulatedRadar::doCycle);
}

void SimulatedRadar::start()
{
    startAnswering();
    m_cycleTimer.start();
}

void SimulatedRadar::countAt(const DetectionLine& line, GroundTruth* truth)
{
    m_traffic.setDetectionLine(line);
    m_truth = truth;
}

QDateTime SimulatedRadar::cycleTime() const
{
    if (m_options.timeScale == 1.0)
        return QDateTime::currentDateTimeUtc();
    return m_startTime.addMSecs(std::llround(m_time * 1000));
}

void SimulatedRadar::startAnswering()
{
    m_startTime = QDateTime::currentDateTimeUtc();
    m_sinceStart.start();
    m_uptime.start();
}

QByteArray SimulatedRadar::takeReplies()
{
    QByteArray replies = m_pendingAcks;
    for (quint64 payload : qAsConst(m_pendingUdt))
        replies += RadarFrameEncoder::frame(m_ids.udtResponse, payload);
    m_pendingAcks.clear();
    m_pendingUdt.clear();
    return replies;
}

void SimulatedRadar::setVariant(int variant)
{
    m_variant = variant;
    m_ids = SimCanIds::forVariant(variant);
}

bool SimulatedRadar::isSilent() const
{
    if (m_options.silenceAfter >= 0 && m_sinceStart.elapsed() >= m_options.silenceAfter * 1000)
        return true;
    return m_silentUntilMs >= 0 && m_sinceStart.elapsed() < m_silentUntilMs;
}

void SimulatedRadar::doCycle()
{
    if (isSilent())
        return;
    if (m_silentUntilMs >= 0) {
        // Back from a restart: a fresh uptime and cycle count, the settings from flash.
        m_silentUntilMs = -1;
        m_uptime.restart();
        m_cycle = 0;
        m_params.restoreFromFlash();
        emit logLine(QStringLiteral("radar running again after restart"));
    }

    const double dt = 1.0 / m_options.rate;
    m_time += dt;
    m_traffic.step(dt);
    ++m_cycle;
    ++m_messages;
    const QDateTime now = cycleTime();
    if (m_truth) {
        const qint64 nowMs = now.toMSecsSinceEpoch();
        for (const SimulatedTraffic::Passage& p : m_traffic.passages()) {
            VehicleCrossing vehicle;
            vehicle.timeMs = nowMs - std::llround((m_traffic.time() - p.time) * 1000);
            vehicle.id = p.id;
            vehicle.lane = p.lane;
            vehicle.direction = p.direction;
            vehicle.speed = p.speed;
            vehicle.length = p.length;
            m_truth->add(vehicle);
        }
    }

    QByteArray message;
    if (m_options.timeStampHeader)
        message += RadarFrameEncoder::timeStampHeader(now);
    message += m_pendingAcks;
    message += RadarFrameEncoder::frame(m_ids.synchronization, 0);
    const quint32 uptimeMs = quint32(m_uptime.elapsed() * m_options.timeScale);
    message += RadarFrameEncoder::frame(m_ids.sensorControl,
                                        RadarFrameEncoder::counterPayload(uptimeMs));
    message += RadarFrameEncoder::frame(m_ids.objectControl,
                                        RadarFrameEncoder::counterPayload(m_cycle));
    for (const SimulatedTraffic::Object& o : objectsThisCycle()) {
        message += RadarFrameEncoder::frame(
            quint16(m_ids.roadObjectMin + o.id),
            RadarFrameEncoder::roadObjectPayload(o.id, o.xRange, o.yRange, o.xSpeed, o.ySpeed,
                                                 o.length));
    }
    if (m_options.garbageEvery > 0 && m_messages % quint64(m_options.garbageEvery) == 0) {
        // A road-object record cut short on the bus: five bytes instead of eight.
        message += CanMessage(m_ids.roadObjectMin, 5, "\x01\x02\x03\x04\x05", true).serialize();
    }
    for (quint64 payload : qAsConst(m_pendingUdt))
        message += RadarFrameEncoder::frame(m_ids.udtResponse, payload);
    m_pendingAcks.clear();
    m_pendingUdt.clear();

    emit radarMessage(message);

    if (m_restartPending) {
        m_restartPending = false;
        m_silentUntilMs = m_sinceStart.elapsed() + RestartSilenceMs;
        emit logLine(QStringLiteral("radar restarting"));
    }
}

QVector<SimulatedTraffic::Object> SimulatedRadar::objectsThisCycle()
{
    QVector<SimulatedTraffic::Object> objects;
    const int imitator = m_params.value(P::ImitatorGroup, 0);
    if (imitator == 1 || imitator == 2) {
        // The imitator replaces what the antenna sees by its one generated target.
        objects.append({0, ImitatorRange, 0.0, ImitatorSpeed[imitator], 0.0, 4.4});
    } else {
        objects = m_traffic.reportedObjects();
    }
    if (m_params.value(P::FakeTargetsGroup, P::FakeTargetsParam) != 0) {
        // Demo objects: four targets circling slowly beside the road.
        for (int k = 0; k < 4; ++k) {
            const double angle = 0.3 * m_time + k * M_PI / 2;
            const QPointF centre(50 + 40 * k, k % 2 ? 14.0 : -14.0);
            const double radius = 6.0;
            objects.append({quint8(SimulatedTraffic::MaxTrafficId + 1 + k),
                            centre.x() + radius * std::cos(angle),
                            centre.y() + radius * std::sin(angle), -0.3 * radius * std::sin(angle),
                            0.3 * radius * std::cos(angle), 4.0});
        }
    }
    return objects;
}

void SimulatedRadar::receive(const QByteArray& data)
{
    // The radar reads CAN frames only; what does not form one is dropped.
    SerialRecords records;
    records.cut(data.constData(), data.size(), {});
    for (const CanMessage& frame : records.frames)
        handleFrame(frame);
}

void SimulatedRadar::handleFrame(const CanMessage& frame)
{
    if (isSilent() || frame.length != CanMessage::MaxLength)
        return;
    if (frame.id == m_ids.radarSetup) {
        RadarFrameEncoder::Position position = m_params.position();
        if (!RadarFrameEncoder::applyPositionFrame(frame, position))
            return;
        if (acknowledge(QStringLiteral("position frame %1")
                            .arg(frame.payload() >> 56, 2, 16, QLatin1Char('0'))))
            m_params.position() = position;
    } else if (frame.id == m_ids.command) {
        const RadarFrameEncoder::Command command = RadarFrameEncoder::decodeCommand(frame);
        if (acknowledge(QStringLiteral("command group %1 param %2 access %3 value %4")
                            .arg(command.groupNo)
                            .arg(command.paramNo)
                            .arg(command.accessCode)
                            .arg(command.value)))
            execute(command);
    }
}

bool SimulatedRadar::acknowledge(const QString& what)
{
    // Returns whether the radar accepted the command and carries it out.
    int code = 0;
    if (m_options.noAcks) {
        emit logLine(what + QStringLiteral(": not acknowledged"));
        return false;
    }
    if (m_busyAcksLeft > 0) {
        --m_busyAcksLeft;
        code = 255;
    } else if (m_options.errorAck > 0) {
        code = m_options.errorAck;
    }
    m_pendingAcks += RadarFrameEncoder::ack(m_ids.ack, quint8(code));
    emit logLine(what + QStringLiteral(": acknowledged with %1").arg(code));
    return code == 0;
}

void SimulatedRadar::execute(const RadarFrameEncoder::Command& c)
{
    if (isRead(c.accessCode)) {
        if (c.groupNo == P::DeviceInfoGroup && c.paramNo == P::DeviceInfoParam
            && c.value == P::HardwareInfoSelector) {
            respond(RadarFrameEncoder::deviceInfoResponse(
                RadarDevInfoUdtPayload::HardwareInfoFirstKey, HardwareInfo));
        } else if (c.groupNo == P::DeviceInfoGroup && c.paramNo == P::DeviceInfoParam
                   && c.value == P::FirmwareInfoSelector) {
            respond(RadarFrameEncoder::deviceInfoResponse(
                RadarDevInfoUdtPayload::FirmwareInfoFirstKey, FirmwareInfo));
        } else if (c.groupNo == P::SelfDiagnosticsGroup && c.paramNo == 0) {
            respond(RadarFrameEncoder::readParamResponse(c, true, m_options.selfTestWord));
        } else {
            respond(RadarFrameEncoder::readParamResponse(c, m_params.contains(c.groupNo, c.paramNo),
                                                         m_params.value(c.groupNo, c.paramNo)));
        }
        return;
    }

    if (c.groupNo == P::RestartGroup) {
        m_restartPending = true;
    } else if (c.groupNo == P::SaveToFlashGroup) {
        m_params.saveToFlash();
        emit logLine(QStringLiteral("parameters saved to flash"));
    } else if (c.groupNo == P::PositionReadGroup && c.paramNo == P::PositionReadParam) {
        respond(RadarFrameEncoder::radarSetupResponse(m_params.position()));
    } else if (c.groupNo == P::PolygonGroup && c.paramNo == 1) {
        emit logLine(QStringLiteral("limitation areas taken into use"));
    } else {
        // Access code 4 writes the low byte only.
        m_params.setValue(c.groupNo, c.paramNo, c.accessCode == 4 ? (c.value & 0xFF) : c.value);
    }
}
