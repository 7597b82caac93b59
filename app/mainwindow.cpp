#include "mainwindow.h"

#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"

#include <QCloseEvent>
#include <QUrl>

const QString MainWindow::DefaultRadarServerUrl = QStringLiteral("ws://127.0.0.1:7578/");

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_baseTitle(tr("Dunvel Orvex Road App"))
{
    setWindowTitle(m_baseTitle);
    resize(1280, 800);
    QFont windowFont = font();
    windowFont.setFamily(QStringLiteral("Sans"));
    setFont(windowFont);

    doSetupRadarClient(0);
    doSetRadarServerUrl(DefaultRadarServerUrl);
}

MainWindow::~MainWindow() = default;

void MainWindow::doSetupRadarClient(int protocolVersion)
{
    doUnsetRadarClient();
    if (protocolVersion == 0)
        m_radarClient = new OrvexSerialDunvelProtocolClient(this);
    else if (protocolVersion == 1)
        m_radarClient = new OrvexSerialPakorProtocolClient(this);
}

void MainWindow::doUnsetRadarClient()
{
    if (!m_radarClient)
        return;
    // We may be inside one of the client's own signals: delete it later, never now.
    m_radarClient->disconnectFromServer();
    m_radarClient->deleteLater();
    m_radarClient = nullptr;
}

void MainWindow::doSetRadarServerUrl(const QString& url)
{
    if (!m_radarClient)
        return;
    m_radarClient->disconnectFromServer();
    m_radarClient->connectToServer(QUrl(url), ReconnectTimeoutMs);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    doUnsetRadarClient();
    event->accept();
}
