#pragma once

#include "radarcommand.h"
#include "roadobject.h"
#include "timestampheader.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QObject>
#include <QUrl>

class QTimer;
class QWebSocket;

// The radar client: the one WebSocket link to the radar server, the server's JSON
// protocol, the keep-alive pings, the debounced radar state, the radar command queue
// and the store of road objects. How the radar's byte stream is decoded and how
// commands are encoded is left to the serial protocol clients derived from it.
class IOrvexClient : public QObject
{
    Q_OBJECT

public:
    enum RadarState {
        BadData = -1, // the decoder rejected a CAN frame of the last messages
        Offline = 0, // no CAN frames, or nothing received for two seconds
        Busy = 1, // frames arrive but the radar's cycle counter stood still
        Working = 2, // the cycle counter advanced within the message
    };
    Q_ENUM(RadarState)

    enum CommandState {
        None = 0, // dropped without a result
        Queued = 1, // waiting in the queue
        InProgress = 2, // sent, or to be sent again
        Received = 3, // the radar acknowledged with code 0
        Error = 4, // failed for good
    };
    Q_ENUM(CommandState)

    // Commands of the radar server's JSON protocol.
    enum RrspCommand {
        ServerStateReport = 1, // sent by the server on its own
        ChangeRadarProtocol = 2, // asks the server to switch the protocol variant
    };

    // What the command queue and radarCommandStateChanged carry. The parameter
    // families fold their indices into the upper bits (see RadarParamNumbering).
    enum RadarCommandId {
        CmdGetHardwareInfo = 1,
        CmdGetFirmwareInfo = 2,
        CmdSelfDiagnostics = 3,
        CmdSetImitatorMode = 4,
        CmdGetImitatorMode = 5,
        CmdSetFakeTargetsMode = 6,
        CmdGetFakeTargetsMode = 7,
        CmdSaveToFlash = 8,
        CmdRestart = 9,
        // Position values: reported only; even ids are writes, odd ids reads.
        CmdSetHeight = 10,
        CmdGetHeight = 11,
        CmdSetXOffset = 12,
        CmdGetXOffset = 13,
        CmdSetYOffset = 14,
        CmdGetYOffset = 15,
        CmdSetAzimuth = 16,
        CmdGetAzimuth = 17,
        CmdSetAltitude = 18,
        CmdGetAltitude = 19,
        CmdSetRoll = 20,
        CmdGetRoll = 21,
        CmdSetRadarSensitivity = 22,
        CmdGetRadarSensitivity = 23,
        CmdSetFrequencyIndex = 24,
        CmdGetFrequencyIndex = 25,
        CmdSetPolygonUsage = 26,
        CmdGetPolygonUsage = 27,
        CmdSetPolygonTreatParam = 28,
        CmdGetPolygonTreatParam = 29,
        CmdSetPolygonSpeedParam = 30,
        CmdGetPolygonSpeedParam = 31,
        CmdSetPolygonPointParam = 32,
        CmdGetPolygonPointParam = 33,
        CmdReinitPolygons = 34,
        CmdSetCalibrationCommand = 35,
        CmdGetCalibrationCommand = 36,
        CmdGetCalibrationState = 37,
        CmdSetCalibrationLastParam = 38,
        CmdGetCalibrationLastParam = 39,
        CmdGetCalibrationCurrParam = 40,
        CmdResetCalibrationParams = 41,
        CmdApplyCalibrationParams = 42,
        CmdDebugVariableValue = 43, // shared by the write and the read
        // Internal: the three frames of a position write and the position read.
        CmdSetPosition0 = 100,
        CmdSetPosition1 = 101,
        CmdSetPosition2 = 102,
        CmdGetPosition = 103,
    };
    Q_ENUM(RadarCommandId)

    static constexpr int DefaultReconnectTimeoutMs = 1000;
    static constexpr int PingIntervalMs = 2000;
    static constexpr int RadarOfflineTimeoutMs = 2000;
    static constexpr int CommandSendDelayMs = 100; // pause between two commands
    static constexpr int CommandTimeoutMs = 900; // wait for an acknowledgement
    static constexpr int CommandRetries = 5;
    static constexpr qint64 StaleObjectAgeMs = 500;
    static constexpr int TimeStampHeaderSize = TimeStampHeader::Size;

    // Error values carried by radarCommandStateChanged besides the radar's codes.
    static constexpr int ErrorNotConnected = -3;
    static constexpr int ErrorTimedOut = -7;
    static constexpr int ErrorDropped = 255;
    static constexpr int ErrorWrongServerMessage = -11;

    explicit IOrvexClient(QObject* parent = nullptr);
    ~IOrvexClient() override;

    static bool isOnline(int state) { return state == Busy || state == Working; }
    static bool isWorking(int state) { return state == Working; }

    // Command of the head of the queue, 0 when the queue is empty.
    int lastRadarCommand() const;

    QUrl serverUrl() const { return m_serverUrl; }
    bool isConnected() const { return m_connected; }
    int radarState() const { return m_radarState; }
    quint64 totalFrames() const { return m_totalFrames; }
    quint64 validFrames() const { return m_validFrames; }

public slots:
    bool connectToServer(const QUrl& url, int reconnectTimeoutMs = DefaultReconnectTimeoutMs,
                         int* error = nullptr);
    void disconnectFromServer();
    void forceServerToChangeProtocol(int protocol);
    void sendDataToRadar(const QByteArray& data);
    void sendJsonToServer(const QJsonObject& obj);

    virtual void resetStatistics();
    virtual void sendAnyCmdWithNoArgs(int command);
    virtual void sendAnySwitchCmd(int command, quint8 value);

    virtual void sendCmdGetHardwareInfo() = 0;
    virtual void sendCmdGetFirmwareInfo() = 0;
    virtual void sendCmdSelfDiagnostics() = 0;
    virtual void sendCmdSetImitatorMode(quint8 mode) = 0;
    virtual void sendCmdGetImitatorMode() = 0;
    virtual void sendCmdSetFakeTargetsMode(bool enabled) = 0;
    virtual void sendCmdGetFakeTargetsMode() = 0;
    virtual void sendCmdSaveToFlash() = 0;
    virtual void sendCmdRestart() = 0;
    virtual void sendCmdSetPosition(double height, double xOffset, double yOffset, double azimuth,
                                    double altitude, double roll)
        = 0;
    virtual void sendCmdGetPosition() = 0;
    virtual void sendCmdSetRadarSensitivity(int value) = 0;
    virtual void sendCmdGetRadarSensitivity() = 0;
    virtual void sendCmdSetFrequencyIndex(int value) = 0;
    virtual void sendCmdGetFrequencyIndex() = 0;
    virtual void sendCmdSetPolygonUsage(quint8 mask) = 0;
    virtual void sendCmdGetPolygonUsage() = 0;
    virtual void sendCmdSetPolygonTreatParam(quint8 polygon, quint8 param, quint8 value) = 0;
    virtual void sendCmdGetPolygonTreatParam(quint8 polygon, quint8 param) = 0;
    virtual void sendCmdSetPolygonSpeedParam(quint8 polygon, quint8 param, double value) = 0;
    virtual void sendCmdGetPolygonSpeedParam(quint8 polygon, quint8 param) = 0;
    virtual void sendCmdSetPolygonPointParam(quint8 polygon, quint8 param, double value) = 0;
    virtual void sendCmdGetPolygonPointParam(quint8 polygon, quint8 param) = 0;
    virtual void sendCmdReinitPolygons() = 0;
    virtual void sendCmdSetCalibrationCommand(int command) = 0;
    virtual void sendCmdGetCalibrationCommand() = 0;
    virtual void sendCmdGetCalibrationState() = 0;
    virtual void sendCmdSetCalibrationLastParam(quint8 param, int value) = 0;
    virtual void sendCmdGetCalibrationLastParam(quint8 param) = 0;
    virtual void sendCmdGetCalibrationCurrParam(quint8 param) = 0;
    virtual void sendCmdResetCalibrationParams() = 0;
    virtual void sendCmdApplyCalibrationParams() = 0;
    virtual void sendCmdSetDebugVariableValue(quint8 param, int value) = 0;
    virtual void sendCmdGetDebugVariableValue(quint8 param) = 0;

    void setEmitStatsEnabled(bool enabled) { m_emitStats = enabled; }
    void setEmitObjectsEnabled(bool enabled) { m_emitObjects = enabled; }

signals:
    void connecting();
    void connected();
    void notconnected();
    void disconnected();
    void pingLatency(quint64 elapsedTime);
    void radarStateChanged(int state);
    void frameStarted();
    void frameDateTimeUtc(const QDateTime& dateTime);
    void uptimeInfo(int days, int hours, int minutes, int seconds, int milliseconds);
    void cycleNumber(quint64 number);
    void objectData(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                    double length, const QDateTime& lastDetected);
    void frameStats(quint64 total, quint64 valid);
    void frameFinished();
    void radarCommandStateChanged(int command, int state, int error);
    void hardwareInfo(const QString& info);
    void firmwareInfo(const QString& info);
    void selfDiagnosticsResult(quint16 data);
    void imitatorModeChanged(quint8 mode);
    void fakeTargetsModeChanged(bool enabled);
    void radarPosition(double height, double xOffset, double yOffset, double azimuth,
                       double altitude, double roll);
    void frequencyIndex(int value);
    void radarSensitivity(int value);
    void polygonUsage(quint8 mask);
    void polygonTreatParam(quint8 polygon, quint8 param, quint8 value);
    void polygonSpeedParam(quint8 polygon, quint8 param, double value);
    void polygonPointParam(quint8 polygon, quint8 param, double value);
    void calibrationCommand(int command);
    void calibrationState(int state);
    void calibrationLastParam(quint8 param, int value);
    void calibrationCurrParam(quint8 param, int value);
    void debugVariableValue(quint8 param, int value);
    void serverCommandResult(int command, bool success, int result, const QString& comment);
    void usedProtocolChanged(int protocol);
    void serverStateChanged(int state, const QString& rspsUrl, const QString& portName);

protected:
    // Decodes the data of one binary message (time-stamp header removed) and returns
    // the RadarState it shows. The base knows no radar protocol and returns Offline.
    virtual int doHandleRadarDataMessage(const QDateTime& dateTimeUtc, const QByteArray& data);
    // Reports one step of a command's life; the base reports nothing.
    virtual void doHandleRadarCommandState(int command, CommandState state, int error);

    // Command queue.
    void doQueueRadarCommand(int command, const QByteArray& data, int retries);
    void doFinishRadarCommand(CommandState state, int error);
    void doDeleteRadarCommands();

    // Road objects and frame statistics.
    void doAddObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                     double length, const QDateTime& lastDetected);
    void doUpdateObjects(const QDateTime& dateTime);
    void doEmitObjects();
    void doDeleteObjects();
    void doStatValidFrame() { ++m_validFrames; }
    void doEmitFrameStats();
    bool emitStatsEnabled() const { return m_emitStats; }

    const QMap<quint8, RoadObject>& roadObjects() const { return m_roadObjects; }

private slots:
    void onSocketStateChanged(QAbstractSocket::SocketState state);
    void onServerPongReceived(quint64 elapsedTime, const QByteArray& payload);
    void onServerTextReceived(const QString& message);
    void onServerDataReceived(const QByteArray& message);
    void doOpenSocket();
    void doPingServer();
    void doMarkRadarOffline();
    void doSendNextRadarCommand();
    void doMarkRadarCommandTimedOut();

private:
    void doSendCommandToServer(RrspCommand command, const QJsonObject& object);
    void doPublishRadarState(int state);

    QUrl m_serverUrl;
    int m_reconnectTimeoutMs = DefaultReconnectTimeoutMs;
    bool m_emitStats = false;
    bool m_emitObjects = true;
    QWebSocket* m_socket = nullptr;
    bool m_connected = false;
    bool m_sessionOpen = false; // connected, and not yet back to unconnected
    QTimer* m_pingTimer = nullptr;
    quint8 m_lastPingNumber = 0;
    quint8 m_lastPongNumber = 0;
    QTimer* m_radarOfflineTimer = nullptr;
    QTimer* m_reconnectTimer = nullptr;
    int m_radarState = Offline;
    int m_candidateRadarState = Offline;
    int m_confirmationsLeft = 2;
    quint64 m_totalFrames = 0;
    quint64 m_validFrames = 0;
    QMap<quint8, RoadObject> m_roadObjects;
    QTimer* m_commandSendTimer = nullptr;
    QTimer* m_commandTimeoutTimer = nullptr;
    QList<RadarCommand> m_commands;
    quint64 m_nextCommandSerial = 0;
};
