#include "serverpingwidget.h"

ServerPingWidget::ServerPingWidget(QWidget* parent)
    : ServerReportLabel(parent)
{ }

void ServerPingWidget::showPingLatency(quint64 milliseconds)
{
    setText(tr("[Ping timeout: %1 ms]").arg(milliseconds));
    show();
}
