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
    sendNextState();
    m_stateTimer.start();
}

ServerSession::~ServerSession() = default;

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
    m_socket->sendTextMessage(
        QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

void ServerSession::sendRadarMessage(const QByteArray& message)
{
    if (isWorking())
        m_socket->sendBinaryMessage(message);
}
