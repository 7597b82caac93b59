#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

class QWebSocket;
class QWebSocketServer;

// A real radar server stand-in on 127.0.0.1 with an ephemeral port: accepts clients,
// records what they send and sends what the test tells it to.
class LoopbackServer : public QObject
{
    Q_OBJECT

public:
    explicit LoopbackServer(QObject* parent = nullptr);
    ~LoopbackServer() override;

    QUrl url() const;

    // The most recent connection, or null.
    QWebSocket* client() const { return m_client; }
    bool waitForClient(int timeoutMs = 5000);

    void sendBinary(const QByteArray& message);
    void sendText(const QString& message);
    // Closes the connection from the server's side.
    void closeClient();
    void stopListening();

    QList<QByteArray> binaryMessages;
    QStringList textMessages;
    int connectionCount = 0;

signals:
    void clientConnected();
    void binaryReceived(const QByteArray& message);
    void textReceived(const QString& message);

private:
    QWebSocketServer* m_server = nullptr;
    QWebSocket* m_client = nullptr;
};
