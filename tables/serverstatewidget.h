#pragma once

#include "serverreportlabel.h"

// What the radar server reports it is doing with the radar's serial port, and, once
// the radar works, which radar it is.
class ServerStateWidget : public ServerReportLabel
{
    Q_OBJECT

public:
    explicit ServerStateWidget(QWidget* parent = nullptr);

public slots:
    void showServerState(int state, const QString& serverUrl, const QString& portName);
    void showRadarState(int state);
    void showRadarHardwareInfo(const QString& info);

signals:
    // Asks the radar which hardware it is; answered by showRadarHardwareInfo.
    void getRadarHardwareInfo();

private:
    void doUpdateText();

    QString m_template; // "%w" stands for what runs on the port
    QString m_hardwareInfo;
    bool m_working = false;
};
