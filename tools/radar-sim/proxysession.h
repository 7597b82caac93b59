#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QUrl>
#include <QWebSocket>

class StreamRecorder;

// One application relayed to the real radar server over a connection of its own:
// every message passes unchanged in both directions and is handed to the recorder
// with the time it arrived. Each side answers the pings it is sent. When either side
// goes, the other is closed.
class ProxySession : public QObject
{
    Q_OBJECT

public:
    // Takes ownership of the application's socket.
    ProxySession(QWebSocket* client, const QUrl& server, StreamRecorder* recorder,
                 QObject* parent = nullptr);
    ~ProxySession() override;

    QWebSocket* client() const { return m_client; }
    QString peer() const;

signals:
    // Both sides are closed; the session may be deleted.
    void finished();
    void logLine(const QString& line);

private:
    void toServer(const QByteArray& message, bool binary);
    void toClient(const QByteArray& message, bool binary);
    void onServerConnected();
    void onServerGone();
    void onClientGone();

    QWebSocket* m_client;
    QWebSocket m_server;
    StreamRecorder* m_recorder;
    QList<QPair<QByteArray, bool>> m_waiting; // from the application before the server link
    bool m_serverConnected = false;
    bool m_serverGone = false;
    bool m_finished = false;
};
