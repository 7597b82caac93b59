#pragma once

#include "statelabel.h"

// The latest keep-alive round trip to the radar server. Shown from a latency report
// until the next connection event.
class ServerPingWidget : public StateLabel
{
    Q_OBJECT

public:
    explicit ServerPingWidget(QWidget* parent = nullptr);

public slots:
    void showPingLatency(quint64 milliseconds);
    void showConnecting();
    void showConnected();
    void showNotConnected();
    void showDisconnected();
};
