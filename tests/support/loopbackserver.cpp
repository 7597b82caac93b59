#include "loopbackserver.h"

#include <QHostAddress>
#include <QSignalSpy>
#include <QWebSocket>
#include <QWebSocketServer>

LoopbackServer::LoopbackServer(QObject* parent)
    : QObject(parent)
    , m_server(
          new QWebSocketServer(QStringLiteral("loopback"), QWebSocketServer::NonSecureMode, this))
{
    connect(m_server, &QWebSocketServer::newConnection, this, [this] {
        while (QWebSocket* socket = m_server->nextPendingConnection()) {
            socket->setParent(this);
            m_client = socket;
            ++connectionCount;
            connect(socket, &QWebSocket::binaryMessageReceived, this,
                    [this](const QByteArray& message) {
                        binaryMessages.append(message);
                        emit binaryReceived(message);
                    });
            connect(socket, &QWebSocket::textMessageReceived, this, [this](const QString& message) {
                textMessages.append(message);
                emit textReceived(message);
            });
            connect(socket, &QWebSocket::disconnected, this, [this, socket] {
                if (m_client == socket)
                    m_client = nullptr;
                socket->deleteLater();
            });
            emit clientConnected();
        }
    });
    m_server->listen(QHostAddress::LocalHost, 0);
}

LoopbackServer::~LoopbackServer() = default;

QUrl LoopbackServer::url() const
{
    return QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(m_server->serverPort()));
}

bool LoopbackServer::waitForClient(int timeoutMs)
{
    if (m_client)
        return true;
    QSignalSpy spy(this, &LoopbackServer::clientConnected);
    return spy.wait(timeoutMs);
}

void LoopbackServer::sendBinary(const QByteArray& message)
{
    if (m_client)
        m_client->sendBinaryMessage(message);
}

void LoopbackServer::sendText(const QString& message)
{
    if (m_client)
        m_client->sendTextMessage(message);
}

void LoopbackServer::closeClient()
{
    if (m_client)
        m_client->close();
}

void LoopbackServer::stopListening()
{
    m_server->close();
}
