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
class ServerSession;
class SimulatedRadar;

// The radar server's side of the WebSocket link: any number of clients, the JSON
// server commands, and the radar's messages relayed to every client.
class RadarServer : public QObject
{
    Q_OBJECT

public:
    RadarServer(const SimOptions& options, SimulatedRadar* radar, QObject* parent = nullptr);
    ~RadarServer() override;

    bool listen(QString& error);
    QUrl url() const;
    int sessionCount() const { return m_sessions.size(); }
    // Tells every client goodbye (close code 1001).
    void closeAll();

signals:
    void logLine(const QString& line);

private:
    void onTcpConnection();
    void onWebSocketConnection();
    void onText(ServerSession* session, const QString& text);
    QTcpSocket* takeTcpSocket(const QWebSocket* socket);

    SimOptions m_options;
    SimulatedRadar* m_radar;
    QTcpServer m_tcpServer;
    QWebSocketServer m_webSocketServer;
    QList<ServerSession*> m_sessions;
    QList<QPointer<QTcpSocket>> m_upgrading;  // handed to the handshake, not yet upgraded
};
