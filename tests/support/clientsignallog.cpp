#include "clientsignallog.h"

#include "iorvexclient.h"

#include <QElapsedTimer>
#include <QSignalSpy>

ClientSignalLog::ClientSignalLog(IOrvexClient* c, QObject* parent)
    : QObject(parent)
{
    auto num = [](double v) { return QString::number(v, 'g', 10); };
    using C = IOrvexClient;
    connect(c, &C::selfDiagnosticsResult, this,
            [this](quint16 v) { add(QString("selfDiagnostics %1").arg(v)); });
    connect(c, &C::imitatorModeChanged, this,
            [this](quint8 v) { add(QString("imitatorMode %1").arg(v)); });
    connect(c, &C::fakeTargetsModeChanged, this,
            [this](bool v) { add(QString("fakeTargets %1").arg(v)); });
    connect(c, &C::frequencyIndex, this,
            [this](int v) { add(QString("frequencyIndex %1").arg(v)); });
    connect(c, &C::radarSensitivity, this,
            [this](int v) { add(QString("sensitivity %1").arg(v)); });
    connect(c, &C::polygonUsage, this,
            [this](quint8 v) { add(QString("polygonUsage %1").arg(v)); });
    connect(c, &C::polygonTreatParam, this, [this](quint8 p, quint8 k, quint8 v) {
        add(QString("treat %1 %2 %3").arg(p).arg(k).arg(v));
    });
    connect(c, &C::polygonSpeedParam, this, [this, num](quint8 p, quint8 k, double v) {
        add(QString("speed %1 %2 %3").arg(p).arg(k).arg(num(v)));
    });
    connect(c, &C::polygonPointParam, this, [this, num](quint8 p, quint8 k, double v) {
        add(QString("point %1 %2 %3").arg(p).arg(k).arg(num(v)));
    });
    connect(c, &C::calibrationCommand, this,
            [this](int v) { add(QString("calibrationCommand %1").arg(v)); });
    connect(c, &C::calibrationState, this,
            [this](int v) { add(QString("calibrationState %1").arg(v)); });
    connect(c, &C::calibrationLastParam, this,
            [this](quint8 k, int v) { add(QString("calibrationLast %1 %2").arg(k).arg(v)); });
    connect(c, &C::calibrationCurrParam, this,
            [this](quint8 k, int v) { add(QString("calibrationCurr %1 %2").arg(k).arg(v)); });
    connect(c, &C::debugVariableValue, this,
            [this](quint8 k, int v) { add(QString("debug %1 %2").arg(k).arg(v)); });
    connect(c, &C::radarPosition, this,
            [this, num](double h, double x, double y, double az, double alt, double roll) {
                add(QString("position %1 %2 %3 %4 %5 %6")
                        .arg(num(h), num(x), num(y), num(az), num(alt), num(roll)));
            });
    connect(c, &C::hardwareInfo, this,
            [this](const QString& s) { add(QString("hardware [%1]").arg(s)); });
    connect(c, &C::firmwareInfo, this,
            [this](const QString& s) { add(QString("firmware [%1]").arg(s)); });
}

void ClientSignalLog::add(const QString& line)
{
    lines.append(line);
    emit lineAdded(line);
}

QString ClientSignalLog::waitFor(const QString& prefix, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    int seen = 0;
    for (;;) {
        for (; seen < lines.size(); ++seen) {
            if (lines.at(seen).startsWith(prefix))
                return lines.at(seen);
        }
        const qint64 left = timeoutMs - clock.elapsed();
        if (left <= 0)
            return QString();
        QSignalSpy added(this, &ClientSignalLog::lineAdded);
        added.wait(int(left));
    }
}
