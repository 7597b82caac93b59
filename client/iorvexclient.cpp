#include "iorvexclient.h"

#include <QJsonDocument>
#include <QSignalBlocker>
#include <QTimer>
#include <QWebSocket>

namespace {

// JSON keys of the radar server's protocol.
const QLatin1String KeyCommand("command");
const QLatin1String KeyResult("result");
const QLatin1String KeyComment("comment");
const QLatin1String KeyServerState("server_state");
const QLatin1String KeyRspServerUrl("rsp_server_url");
const QLatin1String KeyPortName("port_name");
const QLatin1String KeyRadarProtocol("radar_protocol");

QTimer* makeTimer(QObject* parent, int intervalMs, bool singleShot)
{
    auto* timer = new QTimer(parent);
    timer->setInterval(intervalMs);
    timer->setSingleShot(singleShot);
    timer->setTimerType(Qt::PreciseTimer);
    return timer;
}

} // namespace

IOrvexClient::IOrvexClient(QObject* parent)
    : QObject(parent)
{
    // The timers live as long as the client; without a socket they simply stay idle,
    // so a command queued while unconnected still runs out its retries with -3.
    m_pingTimer = makeTimer(this, PingIntervalMs, false);
    m_radarOfflineTimer = makeTimer(this, RadarOfflineTimeoutMs, true);
    m_reconnectTimer = makeTimer(this, DefaultReconnectTimeoutMs, true);
    m_commandSendTimer = makeTimer(this, CommandSendDelayMs, true);
    m_commandTimeoutTimer = makeTimer(this, CommandTimeoutMs, true);
    connect(m_pingTimer, &QTimer::timeout, this, &IOrvexClient::doPingServer);
    connect(m_radarOfflineTimer, &QTimer::timeout, this, &IOrvexClient::doMarkRadarOffline);
    connect(m_reconnectTimer, &QTimer::timeout, this, &IOrvexClient::doOpenSocket);
    connect(m_commandSendTimer, &QTimer::timeout, this, &IOrvexClient::doSendNextRadarCommand);
    connect(m_commandTimeoutTimer, &QTimer::timeout, this,
            &IOrvexClient::doMarkRadarCommandTimedOut);
}

IOrvexClient::~IOrvexClient()
{
    // The derived protocol is already gone here: nobody may be called back.
    const QSignalBlocker blocker(this);
    disconnectFromServer();
}

int IOrvexClient::lastRadarCommand() const
{
    return m_commands.isEmpty() ? 0 : m_commands.first().command;
}

bool IOrvexClient::connectToServer(const QUrl& url, int reconnectTimeoutMs, int* error)
{
    if (m_socket) {
        if (error)
            *error = -2;
        return false;
    }
    if (!url.isValid()) {
        if (error)
            *error = -1;
        return false;
    }
    m_serverUrl = url;
    m_reconnectTimeoutMs = reconnectTimeoutMs;
    m_lastPingNumber = 0;
    m_lastPongNumber = 0;

    m_socket = new QWebSocket(QString(), QWebSocketProtocol::Version13, this);
    connect(m_socket, &QWebSocket::stateChanged, this, &IOrvexClient::onSocketStateChanged);
    connect(m_socket, &QWebSocket::pong, this, &IOrvexClient::onServerPongReceived);
    connect(m_socket, &QWebSocket::textMessageReceived, this, &IOrvexClient::onServerTextReceived);
    connect(m_socket, &QWebSocket::binaryMessageReceived, this,
            &IOrvexClient::onServerDataReceived);
    doOpenSocket();
    return true;
}

void IOrvexClient::disconnectFromServer()
{
    doMarkRadarOffline();
    doDeleteObjects();
    doDeleteRadarCommands();
    m_reconnectTimeoutMs = 0;
    m_reconnectTimer->stop();
    m_pingTimer->stop();
    m_radarOfflineTimer->stop();
    m_commandSendTimer->stop();
    m_commandTimeoutTimer->stop();
    if (!m_socket)
        return;

    // The closing socket must not report into a later connection's state.
    QWebSocket* socket = m_socket;
    m_socket = nullptr;
    socket->disconnect(this);
    if (socket->state() == QAbstractSocket::ConnectedState)
        socket->close();
    else
        socket->abort();
    socket->deleteLater();
    const bool wasConnected = m_sessionOpen;
    m_connected = false;
    m_sessionOpen = false;
    if (wasConnected)
        emit disconnected();
}

void IOrvexClient::doOpenSocket()
{
    if (m_socket)
        m_socket->open(m_serverUrl);
}

void IOrvexClient::onSocketStateChanged(QAbstractSocket::SocketState state)
{
    // A link that was up passes through the closing state on its way down; it still
    // counts as having been connected when it becomes unconnected.
    const bool wasConnected = m_sessionOpen;
    m_connected = state == QAbstractSocket::ConnectedState;
    if (m_connected)
        m_sessionOpen = true;
    else if (state == QAbstractSocket::UnconnectedState)
        m_sessionOpen = false;
    if (m_connected)
        m_pingTimer->start();
    else
        m_pingTimer->stop();

    switch (state) {
    case QAbstractSocket::ConnectingState: emit connecting(); break;
    case QAbstractSocket::ConnectedState: emit connected(); break;
    case QAbstractSocket::UnconnectedState:
        // No retry limit: a lost server is looked for again for as long as we exist.
        if (m_reconnectTimeoutMs > 0)
            m_reconnectTimer->start(m_reconnectTimeoutMs);
        if (wasConnected)
            emit disconnected();
        else
            emit notconnected();
        break;
    default: break;
    }
}

void IOrvexClient::doPingServer()
{
    if (!m_socket)
        return;
    if (m_lastPongNumber != m_lastPingNumber) {
        // The previous ping went unanswered for a whole period: the server or the
        // network is stuck. Close normally; the reconnect rule opens a fresh link.
        m_lastPongNumber = m_lastPingNumber;
        m_socket->close(QWebSocketProtocol::CloseCodeNormal);
        return;
    }
    ++m_lastPingNumber;
    m_socket->ping(QByteArray(1, char(m_lastPingNumber)));
}

void IOrvexClient::onServerPongReceived(quint64 elapsedTime, const QByteArray& payload)
{
    if (!m_connected || payload.size() != 1)
        return;
    m_lastPongNumber = quint8(payload[0]);
    if (m_lastPongNumber == m_lastPingNumber)
        emit pingLatency(elapsedTime);
}

void IOrvexClient::onServerTextReceived(const QString& message)
{
    const QJsonObject obj = QJsonDocument::fromJson(message.toUtf8()).object();
    if (!obj.contains(KeyCommand) || !obj.contains(KeyResult)) {
        emit serverCommandResult(-1, false, ErrorWrongServerMessage,
                                 QStringLiteral("Wrong response message received from Orvex "
                                                "server."));
        return;
    }
    const int command = obj.value(KeyCommand).toInt(-1);
    const int result = obj.value(KeyResult).toInt(0);
    emit serverCommandResult(command, result == 0, result, obj.value(KeyComment).toString());

    if (command == ServerStateReport) {
        emit serverStateChanged(obj.value(KeyServerState).toInt(-1),
                                obj.value(KeyRspServerUrl).toString(),
                                obj.value(KeyPortName).toString());
    } else if (command == ChangeRadarProtocol) {
        emit usedProtocolChanged(obj.value(KeyRadarProtocol).toInt(-1));
    }
}

void IOrvexClient::forceServerToChangeProtocol(int protocol)
{
    doSendCommandToServer(ChangeRadarProtocol, QJsonObject{{KeyRadarProtocol, protocol}});
}

void IOrvexClient::doSendCommandToServer(RrspCommand command, const QJsonObject& object)
{
    QJsonObject message = object;
    message.remove(KeyCommand);
    message.insert(KeyCommand, int(command));
    sendJsonToServer(message);
}

void IOrvexClient::sendDataToRadar(const QByteArray& data)
{
    if (m_connected && m_socket)
        m_socket->sendBinaryMessage(data);
}

void IOrvexClient::sendJsonToServer(const QJsonObject& obj)
{
    if (m_connected && m_socket)
        m_socket->sendTextMessage(
            QString::fromUtf8(QJsonDocument(obj).toJson(QJsonDocument::Compact)));
}

void IOrvexClient::onServerDataReceived(const QByteArray& message)
{
    QDateTime messageTime = QDateTime::currentDateTimeUtc();
    QByteArray data = message;
    if (TimeStampHeader::isPresent(message)) {
        const QDateTime headerTime = TimeStampHeader::dateTime(message.constData());
        if (headerTime.isValid())
            messageTime = headerTime;
        data = message.mid(TimeStampHeaderSize);
    }

    ++m_totalFrames;
    m_radarOfflineTimer->start();

    const int state = doHandleRadarDataMessage(messageTime, data);

    // A new state must be seen in three consecutive messages before it is published;
    // once confirmed, every further equal message passes.
    if (state != m_candidateRadarState) {
        m_candidateRadarState = state;
        m_confirmationsLeft = 2;
        return;
    }
    if (m_confirmationsLeft > 0) {
        const int before = m_confirmationsLeft--;
        if (before != 1)
            return;
    }
    doPublishRadarState(state);
}

void IOrvexClient::doPublishRadarState(int state)
{
    if (state == Offline) {
        doMarkRadarOffline();
        return;
    }
    if (state != m_radarState) {
        m_radarState = state;
        emit radarStateChanged(state);
    }
}

void IOrvexClient::doMarkRadarOffline()
{
    const bool wasOffline = m_radarState == Offline;
    m_radarState = Offline;
    m_candidateRadarState = Offline;
    m_confirmationsLeft = 2;
    m_radarOfflineTimer->stop();
    if (wasOffline)
        return;
    doDeleteObjects();
    doDeleteRadarCommands();
    emit radarStateChanged(Offline);
}

int IOrvexClient::doHandleRadarDataMessage(const QDateTime& dateTimeUtc, const QByteArray& data)
{
    Q_UNUSED(dateTimeUtc)
    Q_UNUSED(data)
    return Offline;
}

void IOrvexClient::doHandleRadarCommandState(int command, CommandState state, int error)
{
    Q_UNUSED(command)
    Q_UNUSED(state)
    Q_UNUSED(error)
}

// --- Command queue ---------------------------------------------------------------

void IOrvexClient::doQueueRadarCommand(int command, const QByteArray& data, int retries)
{
    const bool wasEmpty = m_commands.isEmpty();
    m_commands.append(RadarCommand{retries, command, data, ++m_nextCommandSerial});
    doHandleRadarCommandState(command, Queued, 0);
    if (wasEmpty)
        doSendNextRadarCommand();
}

void IOrvexClient::doSendNextRadarCommand()
{
    // A send tick left over from a dropped queue must not send the new head twice.
    m_commandSendTimer->stop();
    if (m_commands.isEmpty())
        return;
    if (!m_connected || !m_socket) {
        doFinishRadarCommand(Error, ErrorNotConnected);
        return;
    }
    const RadarCommand head = m_commands.first();
    m_commandTimeoutTimer->start();
    sendDataToRadar(head.data);
    doHandleRadarCommandState(head.command, InProgress, 0);
}

void IOrvexClient::doFinishRadarCommand(CommandState state, int error)
{
    m_commandTimeoutTimer->stop();
    if (m_commands.isEmpty())
        return;

    RadarCommand& head = m_commands.first();
    const int command = head.command;
    const quint64 serial = head.serial;
    if (state == Error && --head.retriesLeft >= 1)
        state = InProgress; // send the same command again

    doHandleRadarCommandState(command, state, error);

    // The report may have dropped or grown the queue; only the same head is finished.
    if ((state == Received || state == Error) && !m_commands.isEmpty()
        && m_commands.first().serial == serial) {
        m_commands.removeFirst();
    }
    if (!m_commands.isEmpty())
        m_commandSendTimer->start();
}

void IOrvexClient::doMarkRadarCommandTimedOut()
{
    doFinishRadarCommand(Error, ErrorTimedOut);
}

void IOrvexClient::doDeleteRadarCommands()
{
    const QList<RadarCommand> dropped = std::exchange(m_commands, {});
    for (const RadarCommand& command : dropped)
        doHandleRadarCommandState(command.command, None, ErrorDropped);
}

void IOrvexClient::sendAnyCmdWithNoArgs(int command)
{
    switch (command) {
    case CmdGetHardwareInfo: sendCmdGetHardwareInfo(); break;
    case CmdGetFirmwareInfo: sendCmdGetFirmwareInfo(); break;
    case CmdSelfDiagnostics: sendCmdSelfDiagnostics(); break;
    case CmdGetImitatorMode: sendCmdGetImitatorMode(); break;
    case CmdGetFakeTargetsMode: sendCmdGetFakeTargetsMode(); break;
    case CmdSaveToFlash: sendCmdSaveToFlash(); break;
    case CmdRestart: sendCmdRestart(); break;
    case CmdGetRadarSensitivity: sendCmdGetRadarSensitivity(); break;
    case CmdGetFrequencyIndex: sendCmdGetFrequencyIndex(); break;
    case CmdGetPolygonUsage: sendCmdGetPolygonUsage(); break;
    case CmdReinitPolygons: sendCmdReinitPolygons(); break;
    case CmdGetCalibrationCommand: sendCmdGetCalibrationCommand(); break;
    case CmdGetCalibrationState: sendCmdGetCalibrationState(); break;
    case CmdResetCalibrationParams: sendCmdResetCalibrationParams(); break;
    case CmdApplyCalibrationParams: sendCmdApplyCalibrationParams(); break;
    default: break;
    }
}

void IOrvexClient::sendAnySwitchCmd(int command, quint8 value)
{
    switch (command) {
    case CmdSetImitatorMode: sendCmdSetImitatorMode(value); break;
    case CmdSetFakeTargetsMode: sendCmdSetFakeTargetsMode(value != 0); break;
    case CmdSetPolygonUsage: sendCmdSetPolygonUsage(value); break;
    default: break;
    }
}

// --- Road objects and statistics ---------------------------------------------------

void IOrvexClient::doAddObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                               double yRange, double length, const QDateTime& lastDetected)
{
    m_roadObjects.insert(id, RoadObject{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected});
}

void IOrvexClient::doUpdateObjects(const QDateTime& dateTime)
{
    // Exactly 500 ms old is still current; a report from the future is kept.
    for (auto it = m_roadObjects.begin(); it != m_roadObjects.end();) {
        if (it->lastDetected.msecsTo(dateTime) > StaleObjectAgeMs)
            it = m_roadObjects.erase(it);
        else
            ++it;
    }
}

void IOrvexClient::doEmitObjects()
{
    if (!m_emitObjects || !isOnline(m_radarState))
        return;
    // A receiver may disconnect us mid-way; iterate over a (shared, unmodified) copy.
    const QMap<quint8, RoadObject> objects = m_roadObjects;
    for (const RoadObject& o : objects)
        emit objectData(o.id, o.xSpeed, o.ySpeed, o.xRange, o.yRange, o.length, o.lastDetected);
}

void IOrvexClient::doDeleteObjects()
{
    m_roadObjects.clear();
}

void IOrvexClient::doEmitFrameStats()
{
    if (m_emitStats)
        emit frameStats(m_totalFrames, m_validFrames);
}

void IOrvexClient::resetStatistics()
{
    m_totalFrames = 0;
    m_validFrames = 0;
}
