#include "proxyserver.h"

#include "proxysession.h"

ProxyServer::ProxyServer(const SimOptions& options, StreamRecorder* recorder, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_recorder(recorder)
    , m_listener(options)
{
    connect(&m_listener, &ClientListener::clientConnected, this, &ProxyServer::onClient);
}

ProxyServer::~ProxyServer() = default;

void ProxyServer::onClient(QWebSocket* socket)
{
    auto* session = new ProxySession(socket, m_options.proxyUrl, m_recorder, this);
    m_sessions.append(session);
    emit logLine(
        QStringLiteral("client %1 connected (%2 now)").arg(session->peer()).arg(m_sessions.size()));
    connect(session, &ProxySession::logLine, this, &ProxyServer::logLine);
    connect(session, &ProxySession::finished, this, [this, session] {
        m_sessions.removeOne(session);
        session->deleteLater();
        emit logLine(QStringLiteral("client left (%1 now)").arg(m_sessions.size()));
    });
}

void ProxyServer::closeAll()
{
    m_listener.close();
    for (ProxySession* session : qAsConst(m_sessions))
        session->client()->close(QWebSocketProtocol::CloseCodeGoingAway);
}
