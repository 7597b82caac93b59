#include "clientlistener.h"

#include <QTcpSocket>
#include <QWebSocket>

ClientListener::ClientListener(const SimOptions& options, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_webSocketServer(QStringLiteral("orvex-radar-sim"), QWebSocketServer::NonSecureMode)
{
    // The TCP side is ours so that a connection can be stalled (see --ignore-pings);
    // the WebSocket server only does the handshake on the sockets it is handed.
    connect(&m_tcpServer, &QTcpServer::newConnection, this, &ClientListener::onTcpConnection);
    connect(&m_webSocketServer, &QWebSocketServer::newConnection, this,
            &ClientListener::onWebSocketConnection);
}

bool ClientListener::listen(QString& error)
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

QUrl ClientListener::url() const
{
    return QUrl(QStringLiteral("ws://%1:%2/").arg(m_options.host).arg(m_tcpServer.serverPort()));
}

void ClientListener::onTcpConnection()
{
    while (QTcpSocket* socket = m_tcpServer.nextPendingConnection()) {
        // Radar data is due when it is sent: no waiting to fill TCP segments (Nagle),
        // which with delayed acknowledgements holds fast streams up by 40 ms at a time.
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        m_upgrading.append(socket);
        m_webSocketServer.handleConnection(socket);
    }
}

QTcpSocket* ClientListener::takeTcpSocket(const QWebSocket* socket)
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

void ClientListener::onWebSocketConnection()
{
    while (QWebSocket* socket = m_webSocketServer.nextPendingConnection()) {
        QTcpSocket* tcp = takeTcpSocket(socket);
        if (m_options.ignorePings && tcp) {
            // Stall the connection: nothing the client sends is read any more, its pings
            // included, while the radar's data still goes out to it.
            QObject::disconnect(tcp, &QTcpSocket::readyRead, nullptr, nullptr);
        }
        emit clientConnected(socket);
    }
}
