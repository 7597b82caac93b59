#include "serverreportlabel.h"

ServerReportLabel::ServerReportLabel(QWidget* parent)
    : StateLabel(parent)
{
    // Nothing to show before the first report.
    hide();
}

void ServerReportLabel::showConnecting()
{
    hide();
}

void ServerReportLabel::showConnected()
{
    hide();
}

void ServerReportLabel::showNotConnected()
{
    hide();
}

void ServerReportLabel::showDisconnected()
{
    hide();
}
