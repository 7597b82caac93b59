#include "proxysession.h"

#include "streamrecorder.h"

ProxySession::ProxySession(QWebSocket* client, const QUrl& server, StreamRecorder* recorder,
                           QObject* parent)
    : QObject(parent)
    , m_client(client)
    , m_recorder(recorder)
{
    m_client->setParent(this);
    if (m_recorder)
        m_recorder->beginSession(this, peer());

    connect(m_client, &QWebSocket::textMessageReceived, this,
            [this](const QString& text) { toServer(text.toUtf8(), false); });
    connect(m_client, &QWebSocket::binaryMessageReceived, this,
            [this](const QByteArray& data) { toServer(data, true); });
    connect(m_client, &QWebSocket::disconnected, this, &ProxySession::onClientGone);

    connect(&m_server, &QWebSocket::textMessageReceived, this,
            [this](const QString& text) { toClient(text.toUtf8(), false); });
    connect(&m_server, &QWebSocket::binaryMessageReceived, this,
            [this](const QByteArray& data) { toClient(data, true); });
    connect(&m_server, &QWebSocket::connected, this, &ProxySession::onServerConnected);
    // A refused connection and a closed one both end in the unconnected state.
    connect(&m_server, &QWebSocket::stateChanged, this, [this](QAbstractSocket::SocketState state) {
        if (state == QAbstractSocket::UnconnectedState)
            onServerGone();
    });
    m_server.open(server);
}

ProxySession::~ProxySession()
{
    m_server.disconnect(this);
    m_client->disconnect(this);
    if (m_recorder)
        m_recorder->endSession(this);
}

QString ProxySession::peer() const
{
    return QStringLiteral("%1:%2")
        .arg(m_client->peerAddress().toString())
        .arg(m_client->peerPort());
}

void ProxySession::toServer(const QByteArray& message, bool binary)
{
    if (m_recorder) {
        m_recorder->record(this, RecordedMessage::FromApp,
                           binary ? RecordedMessage::Binary : RecordedMessage::Text, message);
    }
    if (!m_serverConnected) {
        m_waiting.append({message, binary});
        return;
    }
    if (binary)
        m_server.sendBinaryMessage(message);
    else
        m_server.sendTextMessage(QString::fromUtf8(message));
}

void ProxySession::toClient(const QByteArray& message, bool binary)
{
    if (m_recorder) {
        m_recorder->record(this, RecordedMessage::FromServer,
                           binary ? RecordedMessage::Binary : RecordedMessage::Text, message);
    }
    if (binary)
        m_client->sendBinaryMessage(message);
    else
        m_client->sendTextMessage(QString::fromUtf8(message));
}

void ProxySession::onServerConnected()
{
    m_serverConnected = true;
    emit logLine(
        QStringLiteral("client %1 relayed to %2").arg(peer(), m_server.requestUrl().toString()));
    const QList<QPair<QByteArray, bool>> waiting = m_waiting;
    m_waiting.clear();
    for (const auto& message : waiting) {
        if (message.second)
            m_server.sendBinaryMessage(message.first);
        else
            m_server.sendTextMessage(QString::fromUtf8(message.first));
    }
}

void ProxySession::onServerGone()
{
    if (m_serverGone)
        return;
    m_serverGone = true;
    if (!m_serverConnected) {
        emit logLine(QStringLiteral("radar server %1 not reachable: %2")
                         .arg(m_server.requestUrl().toString(), m_server.errorString()));
    } else {
        emit logLine(
            QStringLiteral("radar server closed the link (%1)").arg(int(m_server.closeCode())));
    }
    m_serverConnected = false;
    // Without a server to relay, the application is told the server went away.
    if (m_client->state() == QAbstractSocket::ConnectedState)
        m_client->close(QWebSocketProtocol::CloseCodeGoingAway, m_server.closeReason());
    else
        onClientGone();
}

void ProxySession::onClientGone()
{
    if (!m_serverGone) {
        m_server.close();
        return; // finished once the server side is down too
    }
    if (!m_finished) {
        m_finished = true;
        emit finished();
    }
}
