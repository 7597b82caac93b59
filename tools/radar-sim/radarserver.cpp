#include "radarserver.h"

#include "recordingplayer.h"
#include "serversession.h"
#include "simulatedradar.h"
#include "streamrecorder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QWebSocket>

RadarServer::RadarServer(const SimOptions& options, SimulatedRadar* radar, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_radar(radar)
    , m_listener(options)
{
    connect(&m_listener, &ClientListener::clientConnected, this, &RadarServer::onClient);
    connect(m_radar, &SimulatedRadar::radarMessage, this, [this](const QByteArray& message) {
        for (ServerSession* session : qAsConst(m_sessions))
            session->sendRadarMessage(message);
    });
}

RadarServer::~RadarServer() = default;

void RadarServer::onClient(QWebSocket* socket)
{
    auto* session = new ServerSession(socket, url().toString(), m_options.portName, this);
    m_sessions.append(session);
    const QString peer
        = QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
    emit logLine(QStringLiteral("client %1 connected (%2 now)").arg(peer).arg(m_sessions.size()));

    // Recorded first, so that a request is written before the answer it gets.
    if (m_recorder && m_recorder->beginSession(session, peer))
        record(session);

    // Replaying, the radar's answers to this client ride in its stream of the recording.
    RecordingPlayer* player
        = m_replay ? new RecordingPlayer(*m_replay, m_options, session) : nullptr;
    connect(socket, &QWebSocket::textMessageReceived, session,
            [this, session](const QString& text) { onText(session, text); });
    connect(socket, &QWebSocket::binaryMessageReceived, session,
            [this, player](const QByteArray& data) {
                m_radar->receive(data);
                if (player)
                    player->addReplies(m_radar->takeReplies());
            });
    connect(socket, &QWebSocket::disconnected, this, [this, session] {
        if (m_recorder)
            m_recorder->endSession(session);
        m_sessions.removeOne(session);
        session->deleteLater();
        emit logLine(QStringLiteral("client left (%1 now)").arg(m_sessions.size()));
    });

    if (!player) {
        session->start();
        return;
    }
    connect(player, &RecordingPlayer::message, session, &ServerSession::send);
    connect(player, &RecordingPlayer::finished, this,
            [this, peer] { emit logLine(QStringLiteral("replay finished for %1").arg(peer)); });
    if (!player->start())
        emit logLine(QStringLiteral("nothing to replay between --from and --to"));
}

void RadarServer::record(ServerSession* session)
{
    QWebSocket* socket = session->socket();
    connect(socket, &QWebSocket::textMessageReceived, m_recorder,
            [this, session](const QString& text) {
                m_recorder->record(session, RecordedMessage::FromApp, RecordedMessage::Text,
                                   text.toUtf8());
            });
    connect(socket, &QWebSocket::binaryMessageReceived, m_recorder,
            [this, session](const QByteArray& data) {
                m_recorder->record(session, RecordedMessage::FromApp, RecordedMessage::Binary,
                                   data);
            });
    connect(session, &ServerSession::messageSent, m_recorder,
            [this, session](const QByteArray& message, bool binary) {
                m_recorder->record(session, RecordedMessage::FromServer,
                                   binary ? RecordedMessage::Binary : RecordedMessage::Text,
                                   message);
            });
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
    m_listener.close();
    for (ServerSession* session : qAsConst(m_sessions))
        session->socket()->close(QWebSocketProtocol::CloseCodeGoingAway);
}
