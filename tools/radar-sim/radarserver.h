#pragma once

#include "clientlistener.h"
#include "recordedmessage.h"
#include "simoptions.h"

#include <QList>
#include <QObject>
#include <QUrl>
#include <QVector>

class QWebSocket;
class ServerSession;
class SimulatedRadar;
class StreamRecorder;

// The radar server's side of the WebSocket link: any number of clients, the JSON
// server commands, and the radar's messages relayed to every client. Replaying, the
// clients get a recording instead, and the radar only answers their commands.
class RadarServer : public QObject
{
    Q_OBJECT

public:
    RadarServer(const SimOptions& options, SimulatedRadar* radar, QObject* parent = nullptr);
    ~RadarServer() override;

    // Records the first client's session (the one recorded at a time).
    void setRecorder(StreamRecorder* recorder) { m_recorder = recorder; }
    // Serves these messages, the server's side of a recording in time order, to every
    // client that connects, each from the start.
    void setReplay(const QVector<RecordedMessage>* messages) { m_replay = messages; }

    bool listen(QString& error) { return m_listener.listen(error); }
    QUrl url() const { return m_listener.url(); }
    int sessionCount() const { return m_sessions.size(); }
    // Tells every client goodbye (close code 1001).
    void closeAll();

signals:
    void logLine(const QString& line);

private:
    void onClient(QWebSocket* socket);
    void record(ServerSession* session);
    void onText(ServerSession* session, const QString& text);

    SimOptions m_options;
    SimulatedRadar* m_radar;
    ClientListener m_listener;
    StreamRecorder* m_recorder = nullptr;
    const QVector<RecordedMessage>* m_replay = nullptr;
    QList<ServerSession*> m_sessions;
};
