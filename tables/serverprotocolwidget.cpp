#include "serverprotocolwidget.h"

ServerProtocolWidget::ServerProtocolWidget(QWidget* parent)
    : ServerReportLabel(parent)
{ }

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
