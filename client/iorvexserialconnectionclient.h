#pragma once

#include "canmsginfo.h"
#include "iorvexclient.h"
#include "serialrecords.h"
#include "udtpayload.h"

#include <QList>
#include <QMap>

// The radar's CAN-over-serial protocol: cuts the server's binary messages into CAN
// frames and acknowledgements, decodes status, road-object and response frames,
// encodes every radar command, and counts frames per CAN id. The two radar models
// differ only in their CAN ids, which the variant classes supply.
class IOrvexSerialConnectionClient : public IOrvexClient
{
    Q_OBJECT

public:
    enum DeviceInfoType { HardwareInfo = 0, FirmwareInfo = 1 };

    // Fields of the common command frame (byte 5 of its payload).
    enum AccessCode : quint8 {
        AccessWrite = 0, // a 32-bit value, or run an action
        AccessWriteScaled = 1, // a value in millionths
        AccessRead = 2,
        AccessReadScaled = 3,
        AccessWrite8 = 4, // an 8-bit value
    };

    explicit IOrvexSerialConnectionClient(QObject* parent = nullptr);
    ~IOrvexSerialConnectionClient() override;

    virtual quint16 synchronizationCanId() const = 0;
    virtual quint16 sensorControlCanId() const = 0;
    virtual quint16 objectControlCanId() const = 0;
    virtual quint16 roadObjectCanIdMin() const = 0;
    virtual quint16 roadObjectCanIdMax() const = 0;
    virtual quint16 udtResponseCanId() const = 0;
    virtual quint16 radarSetupCanId() const = 0;
    virtual quint16 commandCanId() const = 0;
    virtual const QList<quint16>& ackMessageCanIds() const = 0;

    const QMap<quint16, CanMsgInfo>& canStatistics() const { return m_canStats; }

    // Decodes the records of one message's data as the link does, for tools that read
    // recorded traffic without a socket: dispatches them, emits the frame's signals and
    // returns the RadarState the message shows. The decoder stops at the first frame it
    // rejects; `acceptedFrames` receives how many it took before that.
    int decodeRecords(const QDateTime& dateTimeUtc, const SerialRecords& records,
                      int* acceptedFrames = nullptr);
    // The road objects held after the last message decoded, for the same tools: what
    // the link would broadcast once the radar's state is confirmed.
    const QMap<quint8, RoadObject>& currentObjects() const { return roadObjects(); }

public slots:
    void resetStatistics() override;

    void sendCmdGetHardwareInfo() override;
    void sendCmdGetFirmwareInfo() override;
    void sendCmdSelfDiagnostics() override;
    void sendCmdSetImitatorMode(quint8 mode) override;
    void sendCmdGetImitatorMode() override;
    void sendCmdSetFakeTargetsMode(bool enabled) override;
    void sendCmdGetFakeTargetsMode() override;
    void sendCmdSaveToFlash() override;
    void sendCmdRestart() override;
    void sendCmdSetPosition(double height, double xOffset, double yOffset, double azimuth,
                            double altitude, double roll) override;
    void sendCmdGetPosition() override;
    void sendCmdSetRadarSensitivity(int value) override;
    void sendCmdGetRadarSensitivity() override;
    void sendCmdSetFrequencyIndex(int value) override;
    void sendCmdGetFrequencyIndex() override;
    void sendCmdSetPolygonUsage(quint8 mask) override;
    void sendCmdGetPolygonUsage() override;
    void sendCmdSetPolygonTreatParam(quint8 polygon, quint8 param, quint8 value) override;
    void sendCmdGetPolygonTreatParam(quint8 polygon, quint8 param) override;
    void sendCmdSetPolygonSpeedParam(quint8 polygon, quint8 param, double value) override;
    void sendCmdGetPolygonSpeedParam(quint8 polygon, quint8 param) override;
    void sendCmdSetPolygonPointParam(quint8 polygon, quint8 param, double value) override;
    void sendCmdGetPolygonPointParam(quint8 polygon, quint8 param) override;
    void sendCmdReinitPolygons() override;
    void sendCmdSetCalibrationCommand(int command) override;
    void sendCmdGetCalibrationCommand() override;
    void sendCmdGetCalibrationState() override;
    void sendCmdSetCalibrationLastParam(quint8 param, int value) override;
    void sendCmdGetCalibrationLastParam(quint8 param) override;
    void sendCmdGetCalibrationCurrParam(quint8 param) override;
    void sendCmdResetCalibrationParams() override;
    void sendCmdApplyCalibrationParams() override;
    void sendCmdSetDebugVariableValue(quint8 param, int value) override;
    void sendCmdGetDebugVariableValue(quint8 param) override;

signals:
    void canMessageInfo(quint16 canId, quint64 count, const QByteArray& serialized,
                        const QDateTime& dateTime);

protected:
    int doHandleRadarDataMessage(const QDateTime& dateTimeUtc, const QByteArray& data) override;
    void doHandleRadarCommandState(int command, CommandState state, int error) override;

    // Receiving.
    bool doHandleCanMessage(const CanMessage& message, const QDateTime& dateTime);
    bool doHandleSensorControlMessage(const CanMessage& message, const QDateTime& dateTime);
    bool doHandleObjectControlMessage(const CanMessage& message, const QDateTime& dateTime);
    bool doHandleRoadObjectMessage(const CanMessage& message, const QDateTime& dateTime);
    bool doHandleUdtResponseMessage(const CanMessage& message, const QDateTime& dateTime);
    bool doHandleAckMessage(const AckMessage& message, const QDateTime& dateTime);

    // Sending.
    void doSendCommandMessage(int command, quint8 accessCode, quint8 groupNo, quint8 paramNo,
                              int value);

    // Responses.
    void doHandleCachedUdtData();
    void doHandleRadarSetupResponse(const RadarSetup0UdtPayload& setup0,
                                    const RadarSetup1UdtPayload& setup1,
                                    const RadarSetup2UdtPayload& setup2);
    void doHandleReadParamResponse(const ReadParam0UdtPayload& read0,
                                   const ReadParam1UdtPayload& read1,
                                   const ReadParam2UdtPayload& read2);
    void doHandleDeviceInfoResponse(const QList<RadarDevInfoUdtPayload>& payloads,
                                    DeviceInfoType type);

    void doHandleSelfDiagnosticsValue(int value);
    void doHandleImitatatorModeValue(int value);
    void doHandleFakeTargetsModeValue(int value);
    void doHandleFrequencyIdValue(int value);
    void doHandleSensitivityValue(int value);
    void doHandlePolygonUsageValue(int value);
    void doHandlePolygonTreatParamValue(quint8 polygon, quint8 param, int value);
    void doHandlePolygonSpeedParamValue(quint8 polygon, quint8 param, int value);
    void doHandlePolygonPointParamValue(quint8 polygon, quint8 param, int value);
    void doHandleCalibrationCommandValue(int value);
    void doHandleCalibrationStateValue(int value);
    void doHandleCalibrationLastParamValue(quint8 param, int value);
    void doHandleCalibrationCurrParamValue(quint8 param, int value);
    void doHandleDebugVariableValue(quint8 param, int value);

    // CAN statistics.
    void doStatCanMessage(const CanMessage& message, const QDateTime& dateTime);
    void doEmitCanStats();

private:
    template<typename Payload> bool takeCachedPayload(Payload& payload) const;

    quint32 m_currentCycleNumber = 0;
    QMap<quint16, UdtPayload> m_udtCache;
    QMap<quint16, CanMsgInfo> m_canStats;
};
