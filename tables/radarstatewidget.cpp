#include "radarstatewidget.h"

#include "iorvexclient.h"
#include "statuscolor.h"

RadarStateWidget::RadarStateWidget(QWidget* parent)
    : StateLabel(parent)
{ }

void RadarStateWidget::showRadarState(int state)
{
    QString text;
    QRgb color = StatusColor::Bad;
    switch (state) {
    case IOrvexClient::BadData: text = tr("[Wrong messages. Check selected protocol]"); break;
    case IOrvexClient::Offline: text = tr("[No messages from radar]"); break;
    case IOrvexClient::Busy:
        text = tr("[Radar is busy now]");
        color = StatusColor::Pending;
        break;
    case IOrvexClient::Working:
        text = tr("[Radar is working]");
        color = StatusColor::Good;
        break;
    default: return;
    }
    // Text and colour change in one repaint.
    setUpdatesEnabled(false);
    setText(text);
    setTextColor(QColor(color));
    setUpdatesEnabled(true);
}
