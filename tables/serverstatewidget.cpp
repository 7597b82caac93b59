#include "serverstatewidget.h"

#include "iorvexclient.h"
#include "statuscolor.h"

namespace {
// Stands in the template of a working port for the radar that works on it.
const QString WorkerMarker = QStringLiteral("%w");
} // namespace

ServerStateWidget::ServerStateWidget(QWidget* parent)
    : ServerReportLabel(parent)
{ }

void ServerStateWidget::showServerState(int state, const QString& serverUrl,
                                        const QString& portName)
{
    Q_UNUSED(serverUrl)
    QRgb color = StatusColor::Pending;
    // The server's states: 0 looking for the port service, 1 and 2 opening the port,
    // 3 and 4 testing it, 5 the radar works on it.
    switch (state) {
    case 0: m_template = tr("[Connecting to RSPS]"); break;
    case 1:
    case 2: m_template = tr("[Opening %1]").arg(portName); break;
    case 3:
    case 4: m_template = tr("[Testing %1]").arg(portName); break;
    case 5:
        m_template = tr("[%w %1]").arg(portName);
        color = StatusColor::Good;
        break;
    default:
        // Something went wrong with what was last reported.
        color = StatusColor::Bad;
        break;
    }
    if (m_template.isEmpty())
        return;
    doUpdateText();
    setTextColor(QColor(color));
    show();
}

void ServerStateWidget::showRadarState(int state)
{
    const bool working = IOrvexClient::isWorking(state);
    const bool started = working && !m_working;
    m_working = working;
    if (!working)
        m_hardwareInfo.clear();
    if (started)
        emit getRadarHardwareInfo();
}

void ServerStateWidget::showRadarHardwareInfo(const QString& info)
{
    // Only an answer for the radar that works now counts.
    if (!m_working)
        return;
    m_hardwareInfo = info;
    doUpdateText();
}

void ServerStateWidget::doUpdateText()
{
    const QString worker
        = m_hardwareInfo.isEmpty() ? tr("Working on") : tr("%1 on").arg(m_hardwareInfo);
    setText(QString(m_template).replace(WorkerMarker, worker));
}
