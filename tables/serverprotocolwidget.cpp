#include "serverprotocolwidget.h"

ServerProtocolWidget::ServerProtocolWidget(QWidget* parent)
    : StateLabel(parent)
{
    // Nothing to show before the first report.
    hide();
}

void ServerProtocolWidget::showServerProtocol(int protocol)
{
    switch (protocol) {
    case 0: setText(tr("[SerD]")); break;
    case 1: setText(tr("[SerP]")); break;
    default:
        // A variant this program does not know: leave the label as it is.
        return;
    }
    show();
}

void ServerProtocolWidget::showConnecting()
{
    hide();
}

void ServerProtocolWidget::showConnected()
{
    hide();
}

void ServerProtocolWidget::showNotConnected()
{
    hide();
}

void ServerProtocolWidget::showDisconnected()
{
    hide();
}
