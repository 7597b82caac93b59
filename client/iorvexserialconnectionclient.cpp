#include "iorvexserialconnectionclient.h"

#include "ackmessage.h"
#include "canmessage.h"
#include "radarparamnumbering.h"

#include <cmath>

namespace {

using P = RadarParamNumbering;

// Road-object frame: id 6 bits, length 8 bits in 0.2 m, speeds 11 bits in 0.1 m/s
// offset by 1024, ranges 14 bits in 0.064 m offset by 8192.
constexpr double ObjectLengthStep = 0.2;
constexpr double ObjectSpeedStep = 0.1;
constexpr int ObjectSpeedOffset = 1024;
constexpr double ObjectRangeStep = 0.064;
constexpr int ObjectRangeOffset = 8192;

// The radar takes its mounting position in 0.01 m and 0.01 degree steps.
constexpr double PositionStep = 0.01;
constexpr quint64 PositionDistanceMask = 0x1FFFF; // 17-bit magnitude, sign apart
constexpr quint64 PositionAngleMask = 0xFFFF; // 0 to 360 degrees
constexpr int PositionReadBackHalfTurn = 18000; // above this the radar means negative
constexpr int PositionReadBackFullTurn = 36000;

quint64 positionDistance(double metres)
{
    return quint64(std::llround(std::fabs(metres) / PositionStep)) & PositionDistanceMask;
}

quint64 positionAngle(double degrees)
{
    if (degrees < 0)
        degrees += 360.0;
    return quint64(std::llround(degrees / PositionStep)) & PositionAngleMask;
}

double readBackDistance(bool negative, quint32 magnitude)
{
    const double metres = magnitude / 100.0;
    return negative ? -metres : metres;
}

double readBackAngle(quint16 raw)
{
    const int steps = raw > PositionReadBackHalfTurn ? raw - PositionReadBackFullTurn : raw;
    return steps / 100.0;
}

bool isPlainAccess(quint8 accessCode)
{
    return accessCode == 2 || accessCode == 4;
}

bool isScaledAccess(quint8 accessCode)
{
    return accessCode == 3 || accessCode == 5;
}

} // namespace

IOrvexSerialConnectionClient::IOrvexSerialConnectionClient(QObject* parent)
    : IOrvexClient(parent)
{ }

IOrvexSerialConnectionClient::~IOrvexSerialConnectionClient() = default;

// --- Receiving ----------------------------------------------------------------------

int IOrvexSerialConnectionClient::doHandleRadarDataMessage(const QDateTime& dateTimeUtc,
                                                           const QByteArray& data)
{
    SerialRecords records;
    records.cut(data.constData(), data.size(), ackMessageCanIds());
    return decodeRecords(dateTimeUtc, records);
}

int IOrvexSerialConnectionClient::decodeRecords(const QDateTime& dateTimeUtc,
                                                const SerialRecords& records, int* acceptedFrames)
{
    doUpdateObjects(dateTimeUtc);
    emit frameStarted();
    emit frameDateTimeUtc(dateTimeUtc);

    for (const AckMessage& ack : records.acks)
        doHandleAckMessage(ack, dateTimeUtc);

    int result = Offline;
    bool valid = true;
    int accepted = 0;
    if (!records.frames.isEmpty()) {
        const quint32 cycleBefore = m_currentCycleNumber;
        for (const CanMessage& frame : records.frames) {
            if (!doHandleCanMessage(frame, dateTimeUtc)) {
                valid = false;
                break;
            }
            doStatCanMessage(frame, dateTimeUtc);
            ++accepted;
        }
        if (!valid)
            result = BadData;
        else
            result = m_currentCycleNumber != cycleBefore ? Working : Busy;
    }
    if (valid)
        doStatValidFrame();

    doEmitObjects();
    doEmitFrameStats();
    doEmitCanStats();
    emit frameFinished();

    doHandleCachedUdtData();
    if (acceptedFrames)
        *acceptedFrames = accepted;
    return result;
}

bool IOrvexSerialConnectionClient::doHandleCanMessage(const CanMessage& message,
                                                      const QDateTime& dateTime)
{
    const quint16 id = message.id;
    if (id >= roadObjectCanIdMin() && id <= roadObjectCanIdMax())
        return doHandleRoadObjectMessage(message, dateTime);
    if (id == synchronizationCanId())
        return message.length == CanMessage::MaxLength;
    if (id == sensorControlCanId())
        return doHandleSensorControlMessage(message, dateTime);
    if (id == objectControlCanId())
        return doHandleObjectControlMessage(message, dateTime);
    if (id == udtResponseCanId())
        return doHandleUdtResponseMessage(message, dateTime);
    return false;
}

bool IOrvexSerialConnectionClient::doHandleSensorControlMessage(const CanMessage& message,
                                                                const QDateTime& dateTime)
{
    Q_UNUSED(dateTime)
    if (message.length != CanMessage::MaxLength)
        return false;
    const quint32 uptimeMs = quint32(message.payload() >> 32);
    emit uptimeInfo(int(uptimeMs / 86400000), int(uptimeMs / 3600000 % 24),
                    int(uptimeMs / 60000 % 60), int(uptimeMs / 1000 - (uptimeMs / 60000) * 60),
                    int(uptimeMs % 1000));
    return true;
}

bool IOrvexSerialConnectionClient::doHandleObjectControlMessage(const CanMessage& message,
                                                                const QDateTime& dateTime)
{
    Q_UNUSED(dateTime)
    if (message.length != CanMessage::MaxLength)
        return false;
    m_currentCycleNumber = quint32(message.payload() >> 32);
    emit cycleNumber(m_currentCycleNumber);
    return true;
}

bool IOrvexSerialConnectionClient::doHandleRoadObjectMessage(const CanMessage& message,
                                                             const QDateTime& dateTime)
{
    if (message.length != CanMessage::MaxLength)
        return false;
    const quint64 v = message.payload();
    const quint8 id = quint8(v >> 58);
    const double length = int((v >> 50) & 0xFF) * ObjectLengthStep;
    const double ySpeed = (int((v >> 39) & 0x7FF) - ObjectSpeedOffset) * ObjectSpeedStep;
    const double xSpeed = (int((v >> 28) & 0x7FF) - ObjectSpeedOffset) * ObjectSpeedStep;
    const double yRange = (int((v >> 14) & 0x3FFF) - ObjectRangeOffset) * ObjectRangeStep;
    const double xRange = (int(v & 0x3FFF) - ObjectRangeOffset) * ObjectRangeStep;
    doAddObject(id, xSpeed, ySpeed, xRange, yRange, length, dateTime);
    return true;
}

bool IOrvexSerialConnectionClient::doHandleUdtResponseMessage(const CanMessage& message,
                                                              const QDateTime& dateTime)
{
    Q_UNUSED(dateTime)
    if (message.length != CanMessage::MaxLength)
        return false;
    UdtPayload payload;
    payload.value = message.payload();
    if (m_udtCache.contains(payload.key()))
        return false;
    m_udtCache.insert(payload.key(), payload);
    return true;
}

bool IOrvexSerialConnectionClient::doHandleAckMessage(const AckMessage& message,
                                                      const QDateTime& dateTime)
{
    Q_UNUSED(dateTime)
    // The acknowledgement names no command: it answers the head of the queue.
    CommandState state = Error;
    if (message.resultCode == AckMessage::Accepted)
        state = Received;
    else if (message.resultCode == AckMessage::Busy)
        state = InProgress;
    doFinishRadarCommand(state, message.resultCode);
    return true;
}

void IOrvexSerialConnectionClient::doHandleRadarCommandState(int command, CommandState state,
                                                             int error)
{
    // The position travels in frames that each carry several values; the panels
    // follow every value by its own id.
    static const QMap<int, QVector<int>> positionValues = {
        {CmdSetPosition0, {CmdSetXOffset, CmdSetYOffset}},
        {CmdSetPosition1, {CmdSetHeight, CmdSetAzimuth, CmdSetAltitude}},
        {CmdSetPosition2, {CmdSetRoll}},
        {CmdGetPosition,
         {CmdGetXOffset, CmdGetYOffset, CmdGetHeight, CmdGetAzimuth, CmdGetAltitude, CmdGetRoll}},
    };
    const auto it = positionValues.constFind(command);
    if (it == positionValues.constEnd()) {
        emit radarCommandStateChanged(command, state, error);
        return;
    }
    for (int id : *it)
        emit radarCommandStateChanged(id, state, error);
}

// --- Sending ------------------------------------------------------------------------

void IOrvexSerialConnectionClient::doSendCommandMessage(int command, quint8 accessCode,
                                                        quint8 groupNo, quint8 paramNo, int value)
{
    // Stream bytes: value (4, most significant first), group, access code, param, 0.
    const quint64 payload = quint64(quint32(value)) << 32 | quint64(groupNo) << 24
                            | quint64(accessCode) << 16 | quint64(paramNo) << 8;
    doQueueRadarCommand(command, CanMessage::fromPayload(commandCanId(), payload).serialize(),
                        CommandRetries);
}

void IOrvexSerialConnectionClient::sendCmdGetHardwareInfo()
{
    doSendCommandMessage(CmdGetHardwareInfo, AccessRead, P::DeviceInfoGroup, P::DeviceInfoParam,
                         P::HardwareInfoSelector);
}

void IOrvexSerialConnectionClient::sendCmdGetFirmwareInfo()
{
    doSendCommandMessage(CmdGetFirmwareInfo, AccessRead, P::DeviceInfoGroup, P::DeviceInfoParam,
                         P::FirmwareInfoSelector);
}

void IOrvexSerialConnectionClient::sendCmdSelfDiagnostics()
{
    doSendCommandMessage(CmdSelfDiagnostics, AccessRead, P::SelfDiagnosticsGroup, 0, 1);
}

void IOrvexSerialConnectionClient::sendCmdSetImitatorMode(quint8 mode)
{
    doSendCommandMessage(CmdSetImitatorMode, AccessWrite8, P::ImitatorGroup, 0, mode);
}

void IOrvexSerialConnectionClient::sendCmdGetImitatorMode()
{
    doSendCommandMessage(CmdGetImitatorMode, AccessRead, P::ImitatorGroup, 0, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetFakeTargetsMode(bool enabled)
{
    doSendCommandMessage(CmdSetFakeTargetsMode, AccessWrite8, P::FakeTargetsGroup,
                         P::FakeTargetsParam, enabled ? 1 : 0);
}

void IOrvexSerialConnectionClient::sendCmdGetFakeTargetsMode()
{
    doSendCommandMessage(CmdGetFakeTargetsMode, AccessRead, P::FakeTargetsGroup,
                         P::FakeTargetsParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdSaveToFlash()
{
    doSendCommandMessage(CmdSaveToFlash, AccessWrite, P::SaveToFlashGroup, 0, 0);
}

void IOrvexSerialConnectionClient::sendCmdRestart()
{
    doSendCommandMessage(CmdRestart, AccessWrite, P::RestartGroup, 0, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetPosition(double height, double xOffset, double yOffset,
                                                      double azimuth, double altitude, double roll)
{
    // Three frames on the radar-setup id, told apart by their top byte. Distances are
    // magnitudes with a separate sign bit; negative angles are sent as 360 + angle.
    const quint64 offsets = quint64(yOffset < 0) << 55 | positionDistance(yOffset) << 32
                            | quint64(xOffset < 0) << 31 | positionDistance(xOffset) << 8;
    const quint64 heightAndAngles = quint64(0x10) << 56 | positionAngle(altitude) << 40
                                    | positionAngle(azimuth) << 24 | quint64(height < 0) << 23
                                    | positionDistance(height);
    const quint64 rollFrame = quint64(0x20) << 56 | quint64(0xFF) << 40 | positionAngle(roll);

    const quint16 id = radarSetupCanId();
    doQueueRadarCommand(CmdSetPosition0, CanMessage::fromPayload(id, offsets).serialize(),
                        CommandRetries);
    doQueueRadarCommand(CmdSetPosition1, CanMessage::fromPayload(id, heightAndAngles).serialize(),
                        CommandRetries);
    doQueueRadarCommand(CmdSetPosition2, CanMessage::fromPayload(id, rollFrame).serialize(),
                        CommandRetries);
}

void IOrvexSerialConnectionClient::sendCmdGetPosition()
{
    doSendCommandMessage(CmdGetPosition, AccessWrite, P::PositionReadGroup, P::PositionReadParam,
                         P::PositionReadSelector);
}

void IOrvexSerialConnectionClient::sendCmdSetRadarSensitivity(int value)
{
    doSendCommandMessage(CmdSetRadarSensitivity, AccessWrite, P::SensitivityGroup,
                         P::SensitivityParam, value);
}

void IOrvexSerialConnectionClient::sendCmdGetRadarSensitivity()
{
    doSendCommandMessage(CmdGetRadarSensitivity, AccessRead, P::SensitivityGroup,
                         P::SensitivityParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetFrequencyIndex(int value)
{
    doSendCommandMessage(CmdSetFrequencyIndex, AccessWrite, P::FrequencyGroup, P::FrequencyParam,
                         value);
}

void IOrvexSerialConnectionClient::sendCmdGetFrequencyIndex()
{
    doSendCommandMessage(CmdGetFrequencyIndex, AccessRead, P::FrequencyGroup, P::FrequencyParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetPolygonUsage(quint8 mask)
{
    doSendCommandMessage(CmdSetPolygonUsage, AccessWrite8, P::PolygonGroup, P::PolygonUsageParam,
                         mask);
}

void IOrvexSerialConnectionClient::sendCmdGetPolygonUsage()
{
    doSendCommandMessage(CmdGetPolygonUsage, AccessRead, P::PolygonGroup, P::PolygonUsageParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetPolygonTreatParam(quint8 polygon, quint8 param,
                                                               quint8 value)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdSetPolygonTreatParam, polygon, param), AccessWrite,
                         P::PolygonGroup,
                         quint8(P::polygonParamNo(P::PolygonTreatParam(param), polygon)), value);
}

void IOrvexSerialConnectionClient::sendCmdGetPolygonTreatParam(quint8 polygon, quint8 param)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdGetPolygonTreatParam, polygon, param), AccessRead,
                         P::PolygonGroup,
                         quint8(P::polygonParamNo(P::PolygonTreatParam(param), polygon)), 0);
}

void IOrvexSerialConnectionClient::sendCmdSetPolygonSpeedParam(quint8 polygon, quint8 param,
                                                               double value)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdSetPolygonSpeedParam, polygon, param),
                         AccessWriteScaled, P::PolygonGroup,
                         quint8(P::polygonParamNo(P::PolygonSpeedParam(param), polygon)),
                         P::doubleToProtocol(value));
}

void IOrvexSerialConnectionClient::sendCmdGetPolygonSpeedParam(quint8 polygon, quint8 param)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdGetPolygonSpeedParam, polygon, param),
                         AccessReadScaled, P::PolygonGroup,
                         quint8(P::polygonParamNo(P::PolygonSpeedParam(param), polygon)), 0);
}

void IOrvexSerialConnectionClient::sendCmdSetPolygonPointParam(quint8 polygon, quint8 param,
                                                               double value)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdSetPolygonPointParam, polygon, param),
                         AccessWriteScaled, P::PolygonPointGroup,
                         quint8(P::polygonParamNo(P::PolygonPointParam(param), polygon)),
                         P::doubleToProtocol(value));
}

void IOrvexSerialConnectionClient::sendCmdGetPolygonPointParam(quint8 polygon, quint8 param)
{
    doSendCommandMessage(P::fullPolygonCmdId(CmdGetPolygonPointParam, polygon, param),
                         AccessReadScaled, P::PolygonPointGroup,
                         quint8(P::polygonParamNo(P::PolygonPointParam(param), polygon)), 0);
}

void IOrvexSerialConnectionClient::sendCmdReinitPolygons()
{
    doSendCommandMessage(CmdReinitPolygons, AccessWrite, P::PolygonGroup, P::ReinitPolygonsParam,
                         1);
}

void IOrvexSerialConnectionClient::sendCmdSetCalibrationCommand(int command)
{
    doSendCommandMessage(CmdSetCalibrationCommand, AccessWrite, P::CalibrationGroup,
                         P::CalibrationCommandParam, command);
}

void IOrvexSerialConnectionClient::sendCmdGetCalibrationCommand()
{
    doSendCommandMessage(CmdGetCalibrationCommand, AccessRead, P::CalibrationGroup,
                         P::CalibrationCommandParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdGetCalibrationState()
{
    doSendCommandMessage(CmdGetCalibrationState, AccessRead, P::CalibrationGroup,
                         P::CalibrationStateParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdSetCalibrationLastParam(quint8 param, int value)
{
    doSendCommandMessage(P::fullCalibrationCmdId(CmdSetCalibrationLastParam, param), AccessWrite,
                         P::CalibrationGroup, quint8(P::calibrationLastParamNo(param)), value);
}

void IOrvexSerialConnectionClient::sendCmdGetCalibrationLastParam(quint8 param)
{
    doSendCommandMessage(P::fullCalibrationCmdId(CmdGetCalibrationLastParam, param), AccessRead,
                         P::CalibrationGroup, quint8(P::calibrationLastParamNo(param)), 0);
}

void IOrvexSerialConnectionClient::sendCmdGetCalibrationCurrParam(quint8 param)
{
    doSendCommandMessage(P::fullCalibrationCmdId(CmdGetCalibrationCurrParam, param), AccessRead,
                         P::CalibrationGroup, quint8(P::calibrationCurrParamNo(param)), 0);
}

void IOrvexSerialConnectionClient::sendCmdResetCalibrationParams()
{
    doSendCommandMessage(CmdResetCalibrationParams, AccessWrite, P::CalibrationGroup,
                         P::CalibrationApplyParam, 0);
}

void IOrvexSerialConnectionClient::sendCmdApplyCalibrationParams()
{
    doSendCommandMessage(CmdApplyCalibrationParams, AccessWrite, P::CalibrationGroup,
                         P::CalibrationApplyParam, 1);
}

void IOrvexSerialConnectionClient::sendCmdSetDebugVariableValue(quint8 param, int value)
{
    // Writing and reading a debug variable deliberately share one id.
    doSendCommandMessage(P::fullDebugVariableCmdId(CmdDebugVariableValue, param), AccessWrite,
                         P::DebugVariableGroup, param, value);
}

void IOrvexSerialConnectionClient::sendCmdGetDebugVariableValue(quint8 param)
{
    doSendCommandMessage(P::fullDebugVariableCmdId(CmdDebugVariableValue, param), AccessRead,
                         P::DebugVariableGroup, param, 0);
}

// --- Responses ----------------------------------------------------------------------

template<typename Payload>
bool IOrvexSerialConnectionClient::takeCachedPayload(Payload& payload) const
{
    const auto it = m_udtCache.constFind(Payload::Key);
    if (it == m_udtCache.constEnd())
        return false;
    payload.value = it->value;
    return true;
}

void IOrvexSerialConnectionClient::doHandleCachedUdtData()
{
    if (m_udtCache.isEmpty())
        return;

    RadarSetup0UdtPayload setup0;
    RadarSetup1UdtPayload setup1;
    RadarSetup2UdtPayload setup2;
    if (takeCachedPayload(setup0) && takeCachedPayload(setup1) && takeCachedPayload(setup2))
        doHandleRadarSetupResponse(setup0, setup1, setup2);

    ReadParam0UdtPayload read0;
    ReadParam1UdtPayload read1;
    ReadParam2UdtPayload read2;
    if (takeCachedPayload(read0) && takeCachedPayload(read1) && takeCachedPayload(read2))
        doHandleReadParamResponse(read0, read1, read2);

    for (const auto& [firstKey, type] :
         {std::pair{RadarDevInfoUdtPayload::HardwareInfoFirstKey, HardwareInfo},
          std::pair{RadarDevInfoUdtPayload::FirmwareInfoFirstKey, FirmwareInfo}}) {
        QList<RadarDevInfoUdtPayload> payloads;
        for (int i = 0; i < RadarDevInfoUdtPayload::FrameCount; ++i) {
            const auto it = m_udtCache.constFind(quint16(firstKey + i));
            if (it == m_udtCache.constEnd())
                break;
            RadarDevInfoUdtPayload payload;
            payload.value = it->value;
            payloads.append(payload);
        }
        if (payloads.size() == RadarDevInfoUdtPayload::FrameCount)
            doHandleDeviceInfoResponse(payloads, type);
    }

    // A response whose frames did not all come in this message is lost.
    m_udtCache.clear();
}

void IOrvexSerialConnectionClient::doHandleRadarSetupResponse(const RadarSetup0UdtPayload& setup0,
                                                              const RadarSetup1UdtPayload& setup1,
                                                              const RadarSetup2UdtPayload& setup2)
{
    emit radarPosition(readBackDistance(setup2.heightNegative(), setup2.heightMagnitude()),
                       readBackDistance(setup0.xOffsetNegative(), setup0.xOffsetMagnitude()),
                       readBackDistance(setup0.yOffsetNegative(), setup0.yOffsetMagnitude()),
                       readBackAngle(setup1.azimuth()), readBackAngle(setup1.altitude()),
                       readBackAngle(setup1.roll()));
}

void IOrvexSerialConnectionClient::doHandleReadParamResponse(const ReadParam0UdtPayload& read0,
                                                             const ReadParam1UdtPayload& read1,
                                                             const ReadParam2UdtPayload& read2)
{
    Q_UNUSED(read0)
    const quint8 access = read1.accessCode();
    const bool plain = isPlainAccess(access);
    const bool scaled = isScaledAccess(access);
    if ((!plain && !scaled) || read1.status() == 0)
        return;

    const quint8 paramNo = read1.paramNo();
    const int value = read2.paramValue();
    quint8 polygon = 0;
    quint8 param = 0;
    switch (read1.groupNo()) {
    case P::SelfDiagnosticsGroup:
        if (paramNo == 0 && plain)
            doHandleSelfDiagnosticsValue(value);
        break;
    case P::ImitatorGroup:
        if (paramNo == 0 && plain)
            doHandleImitatatorModeValue(value);
        break;
    case P::FakeTargetsGroup:
        if (paramNo == P::FakeTargetsParam && plain)
            doHandleFakeTargetsModeValue(value);
        break;
    case P::FrequencyGroup:
        if (paramNo == P::FrequencyParam && plain)
            doHandleFrequencyIdValue(value);
        break;
    case P::SensitivityGroup:
        if (paramNo == P::SensitivityParam && plain)
            doHandleSensitivityValue(value);
        break;
    case P::PolygonGroup:
        if (paramNo == P::PolygonUsageParam && plain)
            doHandlePolygonUsageValue(value);
        else if (scaled && P::getPolygonSpeedParam(paramNo, polygon, param))
            doHandlePolygonSpeedParamValue(polygon, param, value);
        else if (plain && P::getPolygonTreatParam(paramNo, polygon, param))
            doHandlePolygonTreatParamValue(polygon, param, value);
        break;
    case P::PolygonPointGroup:
        if (scaled && P::getPolygonPointParam(paramNo, polygon, param))
            doHandlePolygonPointParamValue(polygon, param, value);
        break;
    case P::CalibrationGroup:
        if (!plain)
            break;
        if (paramNo == P::CalibrationCommandParam)
            doHandleCalibrationCommandValue(value);
        else if (paramNo == P::CalibrationStateParam)
            doHandleCalibrationStateValue(value);
        else if (P::getCalibrationLastParam(paramNo, param))
            doHandleCalibrationLastParamValue(param, value);
        else if (P::getCalibrationCurrParam(paramNo, param))
            doHandleCalibrationCurrParamValue(param, value);
        break;
    case P::DebugVariableGroup: doHandleDebugVariableValue(paramNo, value); break;
    default: break;
    }
}

void IOrvexSerialConnectionClient::doHandleDeviceInfoResponse(
    const QList<RadarDevInfoUdtPayload>& payloads, DeviceInfoType type)
{
    QByteArray text;
    for (const RadarDevInfoUdtPayload& payload : payloads) {
        for (int i = 0; i < RadarDevInfoUdtPayload::CharCount; ++i)
            text.append(payload.character(i));
    }
    const int end = text.indexOf('\0');
    if (end >= 0)
        text.truncate(end);
    const QString info = QString::fromLatin1(text);
    if (type == HardwareInfo)
        emit hardwareInfo(info);
    else
        emit firmwareInfo(info);
}

void IOrvexSerialConnectionClient::doHandleSelfDiagnosticsValue(int value)
{
    emit selfDiagnosticsResult(quint16(value & 0xFFFF));
}

void IOrvexSerialConnectionClient::doHandleImitatatorModeValue(int value)
{
    emit imitatorModeChanged(quint8(value & 0xFF));
}

void IOrvexSerialConnectionClient::doHandleFakeTargetsModeValue(int value)
{
    emit fakeTargetsModeChanged(value != 0);
}

void IOrvexSerialConnectionClient::doHandleFrequencyIdValue(int value)
{
    emit frequencyIndex(value);
}

void IOrvexSerialConnectionClient::doHandleSensitivityValue(int value)
{
    emit radarSensitivity(value);
}

void IOrvexSerialConnectionClient::doHandlePolygonUsageValue(int value)
{
    emit polygonUsage(quint8(value & 0xFF));
}

void IOrvexSerialConnectionClient::doHandlePolygonTreatParamValue(quint8 polygon, quint8 param,
                                                                  int value)
{
    emit polygonTreatParam(polygon, param, quint8(value & 0xFF));
}

void IOrvexSerialConnectionClient::doHandlePolygonSpeedParamValue(quint8 polygon, quint8 param,
                                                                  int value)
{
    emit polygonSpeedParam(polygon, param, P::protocolToDouble(value));
}

void IOrvexSerialConnectionClient::doHandlePolygonPointParamValue(quint8 polygon, quint8 param,
                                                                  int value)
{
    emit polygonPointParam(polygon, param, P::protocolToDouble(value));
}

void IOrvexSerialConnectionClient::doHandleCalibrationCommandValue(int value)
{
    emit calibrationCommand(value);
}

void IOrvexSerialConnectionClient::doHandleCalibrationStateValue(int value)
{
    emit calibrationState(value);
}

void IOrvexSerialConnectionClient::doHandleCalibrationLastParamValue(quint8 param, int value)
{
    emit calibrationLastParam(param, value);
}

void IOrvexSerialConnectionClient::doHandleCalibrationCurrParamValue(quint8 param, int value)
{
    emit calibrationCurrParam(param, value);
}

void IOrvexSerialConnectionClient::doHandleDebugVariableValue(quint8 param, int value)
{
    emit debugVariableValue(param, value);
}

// --- CAN statistics -----------------------------------------------------------------

void IOrvexSerialConnectionClient::doStatCanMessage(const CanMessage& message,
                                                    const QDateTime& dateTime)
{
    auto it = m_canStats.find(message.id);
    if (it == m_canStats.end())
        it = m_canStats.insert(message.id, CanMsgInfo{0, {}, QDateTime::currentDateTime()});
    ++it->count;
    // Overwrite in place: no allocation per frame unless a receiver kept a copy.
    it->serialized.resize(message.streamSize());
    message.serializeTo(it->serialized.data());
    it->dateTime = dateTime;
}

void IOrvexSerialConnectionClient::doEmitCanStats()
{
    if (!emitStatsEnabled())
        return;
    const QMap<quint16, CanMsgInfo> stats = m_canStats;
    for (auto it = stats.constBegin(); it != stats.constEnd(); ++it)
        emit canMessageInfo(it.key(), it->count, it->serialized, it->dateTime);
}

void IOrvexSerialConnectionClient::resetStatistics()
{
    IOrvexClient::resetStatistics();
    m_canStats.clear();
}
