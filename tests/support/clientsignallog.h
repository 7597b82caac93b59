#pragma once

#include <QObject>
#include <QStringList>

class IOrvexClient;

// Records every value a client reports from the radar (read responses, position,
// device information) as one line of text each, e.g. "frequencyIndex 5" or
// "position 6.5 0 -8.5 0 -3 0", in arrival order.
class ClientSignalLog : public QObject
{
    Q_OBJECT

public:
    explicit ClientSignalLog(IOrvexClient* client, QObject* parent = nullptr);

    QStringList lines;
    // Waits until a line starting with `prefix` arrives; returns it or an empty string.
    QString waitFor(const QString& prefix, int timeoutMs = 5000);

signals:
    void lineAdded(const QString& line);

private:
    template<typename... Args> void record(void (IOrvexClient::*signal)(Args...), const char* name);

    IOrvexClient* m_client;
};
