#pragma once

#include "serverreportlabel.h"

// The protocol variant the radar server reports it uses. Shown from a report until the
// next connection event.
class ServerProtocolWidget : public ServerReportLabel
{
    Q_OBJECT

public:
    explicit ServerProtocolWidget(QWidget* parent = nullptr);

public slots:
    void showServerProtocol(int protocol);
};
