#pragma once

#include "groupedwidget.h"

#include <QDateTime>

class QLabel;

// The radar's uptime and its measuring-cycle counter with the cycle rate. The rate is
// the mean over the last 200 cycles, measured with the radar's own frame time stamps.
class GeneralInfoWidget : public GroupedWidget
{
    Q_OBJECT

public:
    // The rate is sampled once per this many cycles.
    static constexpr quint64 RateSampleCycles = 200;

    explicit GeneralInfoWidget(QWidget* parent = nullptr);

    double cycleRate() const { return m_cycleRate; }

public slots:
    void showRadarState(int state);
    void startFilling();
    void finishFilling();
    void setFrameDateTimeUtc(const QDateTime& dateTime);
    void showUptimeInfo(int days, int hours, int minutes, int seconds, int milliseconds);
    void showCycleNumber(quint64 number);

protected:
    void changeEvent(QEvent* event) override;

private:
    static void doShowValue(QLabel* label, int& fittedLength, const QString& text);

    QLabel* m_uptimeValueLabel = nullptr;
    QLabel* m_cycleNumberValueLabel = nullptr;
    // The longest texts the value labels were last measured and sized for.
    int m_uptimeFittedLength = 0;
    int m_cycleNumberFittedLength = 0;
    QDateTime m_frameTime;
    QDateTime m_lastSampleTime;
    double m_cycleRate = 0.0; // cycles per second
    bool m_online = false;
};
