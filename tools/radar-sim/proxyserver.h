#pragma once

#include "clientlistener.h"
#include "simoptions.h"

#include <QList>
#include <QObject>

class ProxySession;
class StreamRecorder;

// The relay: listens where the application expects the radar server and connects every
// application that comes to the real server given with --proxy.
class ProxyServer : public QObject
{
    Q_OBJECT

public:
    ProxyServer(const SimOptions& options, StreamRecorder* recorder, QObject* parent = nullptr);
    ~ProxyServer() override;

    bool listen(QString& error) { return m_listener.listen(error); }
    QUrl url() const { return m_listener.url(); }
    // Tells every client goodbye (close code 1001).
    void closeAll();

signals:
    void logLine(const QString& line);

private:
    void onClient(QWebSocket* socket);

    SimOptions m_options;
    StreamRecorder* m_recorder;
    ClientListener m_listener;
    QList<ProxySession*> m_sessions;
};
