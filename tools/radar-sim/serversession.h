#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class QWebSocket;

// One client of the radar server. Once started, the client is told how the server gets
// hold of the radar: connecting (0), opening the port (1), testing it (3) and working
// (5). Radar data flows once the server reports it is working. A replayed session is
// never started: its reports come from the recording, sent as they are with send().
class ServerSession : public QObject
{
    Q_OBJECT

public:
    static constexpr int StateStepMs = 150;

    ServerSession(QWebSocket* socket, const QString& serverUrl, const QString& portName,
                  QObject* parent = nullptr);
    ~ServerSession() override;

    QWebSocket* socket() const { return m_socket; }
    void start();
    bool isWorking() const;
    void sendJson(const QJsonObject& object);
    void sendRadarMessage(const QByteArray& message);
    // Every message to the client goes out here; text arrives as UTF-8.
    void send(const QByteArray& message, bool binary);

signals:
    void messageSent(const QByteArray& message, bool binary);

private:
    void sendNextState();

    QWebSocket* m_socket;
    QString m_serverUrl;
    QString m_portName;
    int m_step = 0;
    QTimer m_stateTimer;
};
