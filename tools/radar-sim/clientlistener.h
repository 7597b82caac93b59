#pragma once

#include "simoptions.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QUrl>
#include <QWebSocketServer>

class QTcpSocket;
class QWebSocket;

// Where the application connects: listens on the configured address and port, does
// the WebSocket handshake and hands over every client that completed it.
class ClientListener : public QObject
{
    Q_OBJECT

public:
    explicit ClientListener(const SimOptions& options, QObject* parent = nullptr);

    bool listen(QString& error);
    QUrl url() const;
    void close() { m_tcpServer.close(); }

signals:
    // The receiver takes ownership of the socket.
    void clientConnected(QWebSocket* socket);

private:
    void onTcpConnection();
    void onWebSocketConnection();
    QTcpSocket* takeTcpSocket(const QWebSocket* socket);

    SimOptions m_options;
    QTcpServer m_tcpServer;
    QWebSocketServer m_webSocketServer;
    QList<QPointer<QTcpSocket>> m_upgrading; // handed to the handshake, not yet upgraded
};
