#include "serversession.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QWebSocket>

namespace {
const int ServerStates[] = {0, 1, 3, 5};
constexpr int StateCount = int(sizeof ServerStates / sizeof *ServerStates);
} // namespace

ServerSession::ServerSession(QWebSocket* socket, const QString& serverUrl, const QString& portName,
                             QObject* parent)
    : QObject(parent)
    , m_socket(socket)
    , m_serverUrl(serverUrl)
    , m_portName(portName)
{
    m_socket->setParent(this);
    m_stateTimer.setInterval(StateStepMs);
    connect(&m_stateTimer, &QTimer::timeout, this, &ServerSession::sendNextState);
}

ServerSession::~ServerSession() = default;

void ServerSession::start()
{
    sendNextState();
    m_stateTimer.start();
}

bool ServerSession::isWorking() const
{
    return m_step >= StateCount;
}

void ServerSession::sendNextState()
{
    if (m_step >= StateCount) {
        m_stateTimer.stop();
        return;
    }
    sendJson(QJsonObject{{"command", 1},
                         {"result", 0},
                         {"server_state", ServerStates[m_step]},
                         {"rsp_server_url", m_serverUrl},
                         {"port_name", m_portName}});
    ++m_step;
}

void ServerSession::sendJson(const QJsonObject& object)
{
    send(QJsonDocument(object).toJson(QJsonDocument::Compact), false);
}

void ServerSession::sendRadarMessage(const QByteArray& message)
{
    if (isWorking())
        send(message, true);
}

void ServerSession::send(const QByteArray& message, bool binary)
{
    if (binary)
        m_socket->sendBinaryMessage(message);
    else
        m_socket->sendTextMessage(QString::fromUtf8(message));
    emit messageSent(message, binary);
}
