#pragma once

#include "statelabel.h"

// The state of the link to the radar server, with the server's address.
class ServerConnectionWidget : public StateLabel
{
    Q_OBJECT

public:
    explicit ServerConnectionWidget(QWidget* parent = nullptr);

    QString radarServerUrl() const { return m_url; }

public slots:
    void setRadarServerUrl(const QString& url);
    void showConnecting();
    void showConnected();
    void showNotConnected();
    void showDisconnected();

private:
    QString m_url;
};
