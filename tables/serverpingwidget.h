#pragma once

#include "serverreportlabel.h"

// The latest keep-alive round trip to the radar server. Shown from a latency report
// until the next connection event.
class ServerPingWidget : public ServerReportLabel
{
    Q_OBJECT

public:
    explicit ServerPingWidget(QWidget* parent = nullptr);

public slots:
    void showPingLatency(quint64 milliseconds);
};
