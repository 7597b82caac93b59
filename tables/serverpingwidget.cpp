#include "serverpingwidget.h"

ServerPingWidget::ServerPingWidget(QWidget* parent)
    : StateLabel(parent)
{
    // Nothing to show before the first report.
    hide();
}

void ServerPingWidget::showPingLatency(quint64 milliseconds)
{
    setText(tr("[Ping timeout: %1 ms]").arg(milliseconds));
    show();
}

void ServerPingWidget::showConnecting()
{
    hide();
}

void ServerPingWidget::showConnected()
{
    hide();
}

void ServerPingWidget::showNotConnected()
{
    hide();
}

void ServerPingWidget::showDisconnected()
{
    hide();
}
