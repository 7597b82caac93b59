#include "simulatorprocess.h"

#include <QElapsedTimer>
#include <QRegularExpression>

SimulatorProcess::SimulatorProcess(const QStringList& arguments)
    : m_arguments(arguments)
{
    m_process.setProgram(QStringLiteral(ORVEX_RADAR_SIM));
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

SimulatorProcess::~SimulatorProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished(5000);
    }
}

bool SimulatorProcess::start(int timeoutMs)
{
    m_process.setArguments(QStringList{"--port", "0"} + m_arguments);
    m_process.start();
    if (!m_process.waitForStarted(timeoutMs))
        return false;
    const QRegularExpression listening(QStringLiteral("listening on (ws://\\S+)"));
    QElapsedTimer clock;
    clock.start();
    QByteArray output;
    while (clock.elapsed() < timeoutMs) {
        if (!m_process.waitForReadyRead(int(timeoutMs - clock.elapsed())))
            return false;
        output += m_process.readAllStandardOutput();
        const QRegularExpressionMatch match = listening.match(QString::fromUtf8(output));
        if (match.hasMatch()) {
            m_url = QUrl(match.captured(1));
            return true;
        }
    }
    return false;
}
