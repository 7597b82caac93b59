#pragma once

#include <QProcess>
#include <QStringList>
#include <QUrl>

// The radar server simulator running as a separate process on a free loopback port.
class SimulatorProcess
{
public:
    explicit SimulatorProcess(const QStringList& arguments);
    ~SimulatorProcess();

    // Starts it and waits until it says where it listens.
    bool start(int timeoutMs = 10000);
    QUrl url() const { return m_url; }
    QProcess& process() { return m_process; }

private:
    QStringList m_arguments;
    QProcess m_process;
    QUrl m_url;
};
