#include "serverconnectionwidget.h"

#include "statuscolor.h"

ServerConnectionWidget::ServerConnectionWidget(QWidget* parent)
    : StateLabel(parent)
{ }

void ServerConnectionWidget::setRadarServerUrl(const QString& url)
{
    m_url = url;
}

void ServerConnectionWidget::showConnecting()
{
    setText(tr("[Connecting to %1]").arg(m_url));
    setTextColor(QColor(StatusColor::Pending));
}

void ServerConnectionWidget::showConnected()
{
    setText(tr("[Connected to %1]").arg(m_url));
    setTextColor(QColor(StatusColor::Good));
}

void ServerConnectionWidget::showNotConnected()
{
    setText(tr("[No connection to %1]").arg(m_url));
    setTextColor(QColor(StatusColor::Bad));
}

void ServerConnectionWidget::showDisconnected()
{
    setText(tr("[Disconnected from %1]").arg(m_url));
    setTextColor(QColor(StatusColor::Bad));
}
