#pragma once

#include "statelabel.h"

// A status-bar label that shows the latest report of the radar server. Every event of
// the link (connecting, connected, not connected, disconnected) makes the report stale,
// so the label hides until the next report shows it again.
class ServerReportLabel : public StateLabel
{
    Q_OBJECT

public:
    explicit ServerReportLabel(QWidget* parent = nullptr);

public slots:
    void showConnecting();
    void showConnected();
    void showNotConnected();
    void showDisconnected();
};
