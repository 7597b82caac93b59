#include "radarserver.h"

#include "serversession.h"
#include "simulatedradar.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QWebSocket>

RadarServer::RadarServer(const SimOptions& options, SimulatedRadar* radar, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_radar(radar)
    , m_webSocketServer(QStringLiteral("orvex-radar-sim"), QWebSocketServer::NonSecureMode)
{
    // The TCP side is ours so that a connection can be stalled (see --ignore-pings);
    // the WebSocket server only does the handshake on the sockets it is handed.
    connect(&m_tcpServer, &QTcpServer::newConnection, this, &RadarServer::onTcpConnection);
    connect(&m_webSocketServer, &QWebSocketServer::newConnection, this,
            &RadarServer::onWebSocketConnection);
    connect(m_radar, &SimulatedRadar::radarMessage, this, [this](const QByteArray& message) {
        for (ServerSession* session : qAsConst(m_sessions))
            session->sendRadarMessage(message);
    });
}

RadarServer::~RadarServer() = default;

bool RadarServer::listen(QString& error)
{
    QHostAddress address(m_options.host);
    if (m_options.host == QLatin1String("localhost"))
        address = QHostAddress::LocalHost;
    if (address.isNull()) {
        error = QStringLiteral("\"%1\" is not an IP address").arg(m_options.host);
        return false;
    }
    if (!m_tcpServer.listen(address, m_options.port)) {
        error = m_tcpServer.errorString();
        return false;
    }
    return true;
}

QUrl RadarServer::url() const
{
    return QUrl(QStringLiteral("ws://%1:%2/").arg(m_options.host).arg(m_tcpServer.serverPort()));
}

void RadarServer::onTcpConnection()
{
    while (QTcpSocket* socket = m_tcpServer.nextPendingConnection()) {
        m_upgrading.append(socket);
        m_webSocketServer.handleConnection(socket);
    }
}

QTcpSocket* RadarServer::takeTcpSocket(const QWebSocket* socket)
{
    // The upgraded connection is the TCP socket with the same peer.
    m_upgrading.removeAll(nullptr);
    for (int i = 0; i < m_upgrading.size(); ++i) {
        QTcpSocket* tcp = m_upgrading.at(i);
        if (tcp->peerPort() == socket->peerPort() && tcp->peerAddress() == socket->peerAddress())
            return m_upgrading.takeAt(i);
    }
    return nullptr;
}

void RadarServer::onWebSocketConnection()
{
    while (QWebSocket* socket = m_webSocketServer.nextPendingConnection()) {
        auto* session = new ServerSession(socket, url().toString(), m_options.portName, this);
        m_sessions.append(session);
        emit logLine(QStringLiteral("client %1:%2 connected (%3 now)")
                         .arg(socket->peerAddress().toString())
                         .arg(socket->peerPort())
                         .arg(m_sessions.size()));

        connect(socket, &QWebSocket::textMessageReceived, session,
                [this, session](const QString& text) { onText(session, text); });
        connect(socket, &QWebSocket::binaryMessageReceived, m_radar, &SimulatedRadar::receive);
        connect(socket, &QWebSocket::disconnected, this, [this, session] {
            m_sessions.removeOne(session);
            session->deleteLater();
            emit logLine(QStringLiteral("client left (%1 now)").arg(m_sessions.size()));
        });

        QTcpSocket* tcp = takeTcpSocket(socket);
        if (m_options.ignorePings && tcp) {
            // Stall the connection: nothing the client sends is read any more, its pings
            // included, while the radar's data still goes out to it.
            QObject::disconnect(tcp, &QTcpSocket::readyRead, nullptr, nullptr);
        }
    }
}

void RadarServer::onText(ServerSession* session, const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isObject()) {
        session->sendJson(
            QJsonObject{{"command", -1},
                        {"result", 1},
                        {"comment", "Malformed message: a JSON object was expected"}});
        return;
    }
    const QJsonObject request = document.object();
    const QJsonValue command = request.value("command");
    if (!command.isDouble()) {
        session->sendJson(QJsonObject{
            {"command", -1}, {"result", 2}, {"comment", "The message has no command number"}});
        return;
    }
    if (command.toInt(-1) != 2) {
        session->sendJson(QJsonObject{
            {"command", command.toInt(-1)}, {"result", 4}, {"comment", "Unknown command"}});
        return;
    }
    const int protocol = request.value("radar_protocol").toInt(-1);
    if (protocol != 0 && protocol != 1) {
        session->sendJson(QJsonObject{{"command", 2},
                                      {"result", 3},
                                      {"comment", "Unsupported radar protocol"},
                                      {"radar_protocol", m_radar->variant()}});
        return;
    }
    m_radar->setVariant(protocol);
    session->sendJson(QJsonObject{{"command", 2}, {"result", 0}, {"radar_protocol", protocol}});
    emit logLine(
        QStringLiteral("radar protocol switched to %1").arg(protocol == 0 ? "SerD" : "SerP"));
}

void RadarServer::closeAll()
{
    m_tcpServer.close();
    for (ServerSession* session : qAsConst(m_sessions))
        session->socket()->close(QWebSocketProtocol::CloseCodeGoingAway);
}
