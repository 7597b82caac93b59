#include "clientsignallog.h"

#include "iorvexclient.h"

#include <QDeadlineTimer>
#include <QSignalSpy>

namespace {
QString text(double v)
{
    return QString::number(v, 'g', 10);
}
QString text(const QString& s)
{
    return '[' + s + ']';
}
template<typename T> QString text(T v)
{
    return QString::number(v); // integers, and bool as 0 or 1
}
} // namespace

template<typename... Args>
void ClientSignalLog::record(void (IOrvexClient::*signal)(Args...), const char* name)
{
    connect(m_client, signal, this, [this, name](Args... args) {
        lines.append(QStringList{QString::fromLatin1(name), text(args)...}.join(' '));
        emit lineAdded(lines.last());
    });
}

ClientSignalLog::ClientSignalLog(IOrvexClient* c, QObject* parent)
    : QObject(parent)
    , m_client(c)
{
    using C = IOrvexClient;
    record(&C::selfDiagnosticsResult, "selfDiagnostics");
    record(&C::imitatorModeChanged, "imitatorMode");
    record(&C::fakeTargetsModeChanged, "fakeTargets");
    record(&C::frequencyIndex, "frequencyIndex");
    record(&C::radarSensitivity, "sensitivity");
    record(&C::polygonUsage, "polygonUsage");
    record(&C::polygonTreatParam, "treat");
    record(&C::polygonSpeedParam, "speed");
    record(&C::polygonPointParam, "point");
    record(&C::calibrationCommand, "calibrationCommand");
    record(&C::calibrationState, "calibrationState");
    record(&C::calibrationLastParam, "calibrationLast");
    record(&C::calibrationCurrParam, "calibrationCurr");
    record(&C::debugVariableValue, "debug");
    record(&C::radarPosition, "position");
    record(&C::hardwareInfo, "hardware");
    record(&C::firmwareInfo, "firmware");
}

QString ClientSignalLog::waitFor(const QString& prefix, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    for (int seen = 0;;) {
        for (; seen < lines.size(); ++seen) {
            if (lines.at(seen).startsWith(prefix))
                return lines.at(seen);
        }
        if (deadline.hasExpired())
            return QString();
        QSignalSpy(this, &ClientSignalLog::lineAdded).wait(int(deadline.remainingTime()));
    }
}
