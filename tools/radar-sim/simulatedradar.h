#pragma once

#include "radarframeencoder.h"
#include "simcanids.h"
#include "simoptions.h"
#include "simparameterstore.h"
#include "simulatedtraffic.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

class CanMessage;
class GroundTruth;

// The radar itself: once per cycle it reports its uptime, its cycle number and the
// vehicles it sees; it takes commands one at a time, acknowledges them in its next
// cycle and answers reads with response frames; a restart keeps it silent for a while.
class SimulatedRadar : public QObject
{
    Q_OBJECT

public:
    static constexpr int RestartSilenceMs = 3000;
    static const QString HardwareInfo;
    static const QString FirmwareInfo;

    SimulatedRadar(const SimOptions& options, const QMap<int, QPolygonF>& laneCentres,
                   QObject* parent = nullptr);

    void start();
    // For a radar whose cycles come from elsewhere (a replayed recording): it answers
    // commands but sends nothing of its own; takeReplies() hands out the answers.
    void startAnswering();
    // The acknowledgements and response frames its next cycle would carry.
    QByteArray takeReplies();
    int variant() const { return m_variant; }
    void setVariant(int variant);
    const SimParameterStore& parameters() const { return m_params; }
    // Notes every vehicle that passes this detection line in the ground truth.
    void countAt(const DetectionLine& line, GroundTruth* truth);

public slots:
    // Bytes a client sent to the radar: CAN frames on the command and radar-setup ids.
    void receive(const QByteArray& data);

signals:
    void radarMessage(const QByteArray& message);
    void logLine(const QString& line);

private:
    void doCycle();
    bool isSilent() const;
    void handleFrame(const CanMessage& frame);
    bool acknowledge(const QString& what);
    void execute(const RadarFrameEncoder::Command& command);
    void respond(const QList<quint64>& frames) { m_pendingUdt += frames; }
    QVector<SimulatedTraffic::Object> objectsThisCycle();
    // The time of the cycle: the clock's, or with a time scale the simulated time.
    QDateTime cycleTime() const;

    SimOptions m_options;
    int m_variant = 0;
    SimCanIds m_ids;
    SimulatedTraffic m_traffic;
    SimParameterStore m_params;
    QTimer m_cycleTimer;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_uptime;
    quint32 m_cycle = 0;
    quint64 m_messages = 0;
    QByteArray m_pendingAcks;
    QList<quint64> m_pendingUdt;
    int m_busyAcksLeft = 0;
    bool m_restartPending = false;
    qint64 m_silentUntilMs = -1; // restart: no cycles until then (time since start)
    double m_time = 0;
    QDateTime m_startTime;
    GroundTruth* m_truth = nullptr;
};
