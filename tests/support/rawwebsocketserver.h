#pragma once

#include <QByteArray>
#include <QObject>
#include <QUrl>

class QTcpServer;
class QTcpSocket;

// A minimal WebSocket server written on a plain TCP server, for what the WebSocket
// library will not do: leave a ping unanswered, or answer it with another payload.
// One client at a time; frames up to 64 KiB.
class RawWebSocketServer : public QObject
{
    Q_OBJECT

public:
    enum class PongMode { Echo, Ignore, FixedPayload };

    explicit RawWebSocketServer(QObject* parent = nullptr);
    ~RawWebSocketServer() override;

    QUrl url() const;

    void setPongMode(PongMode mode, const QByteArray& fixedPayload = {});

    int connectionCount() const { return m_connectionCount; }

signals:
    void clientConnected();
    void pingReceived(const QByteArray& payload);
    void closeReceived(quint16 code);

private:
    void onReadyRead();
    bool handleFrame();
    void sendFrame(quint8 opcode, const QByteArray& payload);

    QTcpServer* m_server = nullptr;
    QTcpSocket* m_socket = nullptr;
    QByteArray m_buffer;
    bool m_handshakeDone = false;
    PongMode m_pongMode = PongMode::Echo;
    QByteArray m_fixedPayload;
    int m_connectionCount = 0;
};
