#include "mainwindow.h"

#include "collapsiblegroupbox.h"
#include "generalinfowidget.h"
#include "imitatorobjectwidget.h"
#include "objectshelper.h"
#include "objectstablewidget.h"
#include "orvexcontrol.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "radarstatewidget.h"
#include "roadbuilder.h"
#include "roadconfigwidget.h"
#include "roadobjectswidget.h"
#include "serverconnectionwidget.h"
#include "serverpingwidget.h"
#include "serverprotocolwidget.h"
#include "serverstatewidget.h"
#include "ui_mainwindow.h"
#include "workprofilehandler.h"
#include "workprofilewidget.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDate>
#include <QInputDialog>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>

namespace {

// A column rearrangement waits this long, twice, for the geometry to settle.
constexpr int SettleDelayMs = 1;
// While the columns are rebuilt the scheme area must not hold the window's size.
constexpr int ShrunkAreaSize = 32;

QString buildDate()
{
    // The compiler's date reads "Nov 21 2026" (a blank before one-digit days).
    return QLocale::c()
        .toDate(QString::fromLatin1(__DATE__).simplified(), QStringLiteral("MMM d yyyy"))
        .toString(Qt::ISODate);
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_ui(new Ui::MainWindow)
    , m_baseTitle(tr("Dunvel Orvex Road App"))
    , m_roadBuilder(new RoadBuilder(this))
    , m_objectsHelper(new ObjectsHelper(this))
    , m_profileWidget(new WorkProfileWidget(this, Qt::Window))
    , m_roadConfigWidget(new RoadConfigWidget(this, Qt::Window))
    , m_serverPingWidget(new ServerPingWidget(this))
    , m_serverConnectionWidget(new ServerConnectionWidget(this))
    , m_serverStateWidget(new ServerStateWidget(this))
    , m_serverProtocolWidget(new ServerProtocolWidget(this))
    , m_radarStateWidget(new RadarStateWidget(this))
{
    m_ui->setupUi(this);
    setWindowTitle(m_baseTitle);
    QFont windowFont = font();
    windowFont.setFamily(QStringLiteral("Sans"));
    setFont(windowFont);

    doBuildMenus();

    m_ui->roadObjectsBox->setTitle(tr(" Traffic scheme  "));
    m_ui->objectsTableBox->setTitle(tr(" Road objects  "));
    m_ui->sendCommandsBox->setTitle(tr("Send commands  "));
    m_ui->setPolygonBox->setTitle(tr("Configure limitations  "));
    m_ui->setPositionBox->setTitle(tr("Set radar position  "));
    m_ui->radarTuningBox->setTitle(tr("Fine tuning  "));
    m_ui->saveAndRestartBox->setTitle(tr("Save params and restart  "));
    m_ui->generalInfoBox->setTitle(tr("General info  "));
    m_ui->generalInfoBox->setBacklighted(false);

    m_controls = {
        {TrafficSchemeAreaControl, m_ui->objectsMetaWidget},
        {TrafficSchemeControl, m_ui->roadObjectsBox},
        {ObjectsTableControl, m_ui->objectsTableBox},
        {ImitatorSpeedControl, m_ui->imitatorObjectBox},
        {SendCommandsControl, m_ui->sendCommandsBox},
        {ConfigureLimitationsControl, m_ui->setPolygonBox},
        {SetRadarPositionControl, m_ui->setPositionBox},
        {FineTuningControl, m_ui->radarTuningBox},
        {SaveAndRestartControl, m_ui->saveAndRestartBox},
        {GeneralInfoControl, m_ui->generalInfoBox},
    };
    for (auto it = m_controls.cbegin(); it != m_controls.cend(); ++it) {
        if (auto* box = qobject_cast<CollapsibleGroupBox*>(*it)) {
            const int control = it.key();
            connect(box, &CollapsibleGroupBox::clicked, this, [this, control](bool collapsed) {
                emit controlCollapsedChanged(control, collapsed);
            });
        }
    }

    statusBar()->addPermanentWidget(m_serverPingWidget);
    statusBar()->addPermanentWidget(m_serverConnectionWidget);
    statusBar()->addPermanentWidget(m_serverStateWidget);
    statusBar()->addPermanentWidget(m_serverProtocolWidget);
    statusBar()->addPermanentWidget(m_radarStateWidget);

    doMakeFixedConnections();

    // Start-up: no radar yet, then the settings. The profile is applied twice on
    // purpose: the second application lays out the window from the profile as
    // corrected in between, with the scheme and imitator boxes forced visible.
    onRadarStateChanged(IOrvexClient::Offline);
    WorkProfileHandler* handler = profileHandler();
    handler->loadProfiles(WorkProfileHandler::SettingsFilePath);
    handler->applyProfile(handler->currentProfileId());
    handler->setControlVisible(TrafficSchemeControl, true);
    handler->setControlVisible(ImitatorSpeedControl, true);
    handler->applyProfile(handler->currentProfileId());
}

MainWindow::~MainWindow()
{
    delete m_ui;
}

WorkProfileHandler* MainWindow::profileHandler() const
{
    return m_profileWidget->profileHandler();
}

QString MainWindow::windowTitleFor(const QString& name) const
{
    return QStringLiteral("%1 — %2").arg(name, m_profileName);
}

// --- Menus and fixed connections ------------------------------------------------------

void MainWindow::doBuildMenus()
{
    WorkProfileHandler* handler = profileHandler();
    QMenuBar* bar = menuBar();

    QMenu* file = bar->addMenu(tr("&File"));
    connect(file->addAction(tr("&Switch work profile")), &QAction::triggered, this,
            &MainWindow::onSwitchProfileTriggered);
    file->addSeparator();
    connect(file->addAction(tr("&Exit")), &QAction::triggered, this, &MainWindow::close);

    QMenu* protocol = bar->addMenu(tr("&Protocol"));
    m_protocolGroup = new QActionGroup(this);
    m_protocolGroup->setExclusive(true);
    const QStringList protocols{tr("&0. Serial, type D (SerD)"), tr("&1. Serial, type P (SerP)")};
    for (int version = 0; version < protocols.size(); ++version) {
        QAction* action = protocol->addAction(protocols.at(version));
        action->setCheckable(true);
        action->setData(version);
        m_protocolGroup->addAction(action);
    }
    connect(m_protocolGroup, &QActionGroup::triggered, this,
            &MainWindow::onProtocolVersionTriggered);
    protocol->addSeparator();
    QAction* forcing = protocol->addAction(tr("&Force server to change protocol"));
    forcing->setCheckable(true);
    connect(forcing, &QAction::triggered, handler, &WorkProfileHandler::setProtocolForcing);
    connect(handler, &WorkProfileHandler::protocolForcingChanged, forcing, &QAction::setChecked);

    QMenu* view = bar->addMenu(tr("&View"));
    QMenu* visible = view->addMenu(tr("Visible &controls"));
    m_controlsGroup = new QActionGroup(this);
    m_controlsGroup->setExclusive(false);
    const QList<QPair<QString, int>> controlItems{
        {tr("Traffic &scheme / Speed generated with imitator"), TrafficSchemeAreaControl},
        {tr("Road &objects"), ObjectsTableControl},
        {QString(), -1},
        {tr("&General info"), GeneralInfoControl},
        {tr("Send &commands"), SendCommandsControl},
        {tr("Configure &limitations"), ConfigureLimitationsControl},
        {tr("Fine &tuning"), FineTuningControl},
        {tr("Set &radar position"), SetRadarPositionControl},
        {tr("Save &params and restart"), SaveAndRestartControl},
    };
    for (const auto& [text, control] : controlItems) {
        if (control < 0) {
            visible->addSeparator();
            continue;
        }
        QAction* action = visible->addAction(text);
        action->setCheckable(true);
        action->setData(control);
        m_controlsGroup->addAction(action);
    }
    connect(m_controlsGroup, &QActionGroup::triggered, this,
            &MainWindow::onControlVisibleTriggered);

    // Each tick follows the profile's value, whoever changed it.
    auto profileToggle = [handler](QMenu* menu, const QString& text, auto setter, auto changed) {
        QAction* action = menu->addAction(text);
        action->setCheckable(true);
        connect(action, &QAction::triggered, handler, setter);
        connect(handler, changed, action, &QAction::setChecked);
        return action;
    };
    using H = WorkProfileHandler;
    QMenu* scheme = view->addMenu(tr("&Traffic scheme"));
    profileToggle(scheme, tr("Draw road &vertical"), &H::setDrawVertical, &H::drawVerticalChanged);
    profileToggle(scheme, tr("&Keep aspect ratio and object sizes"), &H::setKeepAspectRatio,
                  &H::keepAspectRatioChanged);
    scheme->addSeparator();
    profileToggle(scheme, tr("Draw &current tracks"), &H::setShowCurrentTracksOnScheme,
                  &H::showCurrentTracksOnSchemeChanged);
    profileToggle(scheme, tr("Draw &average tracks"), &H::setShowAverageTracksOnScheme,
                  &H::showAverageTracksOnSchemeChanged);
    scheme->addSeparator();
    m_displayModeGroup = new QActionGroup(this);
    m_displayModeGroup->setExclusive(true);
    const QStringList modes{tr("&Normal mode"), tr("&Statistical (long exposure) mode"),
                            tr("&Mixed mode")};
    for (int mode = 0; mode < modes.size(); ++mode) {
        QAction* action = scheme->addAction(modes.at(mode));
        action->setCheckable(true);
        action->setData(mode);
        m_displayModeGroup->addAction(action);
    }
    connect(m_displayModeGroup, &QActionGroup::triggered, this,
            &MainWindow::onTracksDisplayModeTriggered);
    scheme->addSeparator();
    connect(scheme->addAction(tr("Customize &traffic scheme")), &QAction::triggered, this,
            &MainWindow::onConfigureRoadTriggered);
    view->addSeparator();
    QAction* paint = view->addAction(tr("&Paint objects in different colors"));
    paint->setCheckable(true);
    connect(paint, &QAction::triggered, handler, &WorkProfileHandler::setPaintObjects);
    connect(handler, &WorkProfileHandler::paintObjectsChanged, paint, &QAction::setChecked);

    QMenu* data = bar->addMenu(tr("&Data"));
    connect(data->addAction(tr("&Reset average tracks")), &QAction::triggered, m_objectsHelper,
            &ObjectsHelper::resetAverageTracks);

    QMenu* server = bar->addMenu(tr("&Server"));
    connect(server->addAction(tr("&Choose radar server")), &QAction::triggered, this,
            &MainWindow::onChooseRadarServerTriggered);

    QMenu* help = bar->addMenu(tr("&Help"));
    connect(help->addAction(tr("&About this program")), &QAction::triggered, this,
            &MainWindow::onAboutProgramTriggered);
}

void MainWindow::doMakeFixedConnections()
{
    WorkProfileHandler* h = profileHandler();
    using H = WorkProfileHandler;

    connect(h, &H::applyingProfileStarted, this, &MainWindow::doStartApplyingProfile);
    connect(this, &MainWindow::protocolVersionChanged, h, &H::setProtocolVersion);
    connect(h, &H::protocolVersionChanged, this, &MainWindow::doSetProtocolVersion);
    connect(h, &H::protocolForcingChanged, this, &MainWindow::doSetProtocolForcing);
    connect(this, &MainWindow::radarServerUrlChanged, h, &H::setRadarServerUrl);
    connect(h, &H::radarServerUrlChanged, m_serverConnectionWidget,
            &ServerConnectionWidget::setRadarServerUrl);
    connect(h, &H::radarServerUrlChanged, this, &MainWindow::doSetRadarServerUrl);
    connect(this, &MainWindow::controlVisibleChanged, h, &H::setControlVisible);
    connect(this, &MainWindow::controlCollapsedChanged, h, &H::setControlCollapsed);
    connect(h, &H::controlVisibleChanged, this, &MainWindow::doSetControlVisible);
    connect(h, &H::controlCollapsedChanged, this, &MainWindow::doSetControlCollapsed);
    RoadObjectsWidget* scheme = m_ui->roadObjectsWidget;
    ImitatorObjectWidget* imitator = m_ui->imitatorObjectWidget;
    using R = RoadObjectsWidget;
    connect(this, &MainWindow::tracksDisplayModeChanged, h, &H::setTracksDisplayMode);
    connect(h, &H::tracksDisplayModeChanged, scheme, &R::setTracksDisplayMode);
    connect(h, &H::tracksDisplayModeChanged, this, &MainWindow::doSetTracksDisplayMode);
    connect(this, &MainWindow::showSightAreaChanged, scheme, &R::setShowSightArea);
    connect(h, &H::drawVerticalChanged, this, &MainWindow::doSetDrawVertical);
    connect(h, &H::drawVerticalChanged, scheme, &R::setDrawVertical);
    connect(h, &H::drawVerticalChanged, imitator, &ImitatorObjectWidget::setDrawVertical);
    connect(h, &H::keepAspectRatioChanged, scheme, &R::setKeepAspectRatio);
    connect(h, &H::showSightLineChanged, scheme, &R::setShowSightLine);
    connect(h, &H::showCurrentTracksOnSchemeChanged, scheme, &R::setShowCurrentTracks);
    connect(h, &H::showAverageTracksOnSchemeChanged, scheme, &R::setShowAverageTracks);
    connect(m_roadConfigWidget, &RoadConfigWidget::roadConfigChanged, h, &H::setRoadConfig);
    connect(h, &H::roadConfigChanged, m_roadBuilder, &RoadBuilder::setRoadConfig);
    connect(h, &H::roadConfigChanged, m_roadConfigWidget, &RoadConfigWidget::setRoadConfig);
    connect(h, &H::paintObjectsChanged, scheme, &R::setPaintObjects);
    connect(h, &H::paintObjectsChanged, m_ui->objectsTableWidget,
            &ObjectsTableWidget::setPaintObjects);
    connect(h, &H::applyingProfileFinished, this, &MainWindow::doFinishApplyingProfile);

    using B = RoadBuilder;
    connect(m_roadBuilder, &B::applyingRoadStarted, scheme, &R::startApplyingRoad);
    connect(m_roadBuilder, &B::applyingRoadStarted, m_objectsHelper,
            &ObjectsHelper::startApplyingRoad);
    connect(m_roadBuilder, &B::roadAxisLine, scheme, &R::setRoadAxisLine);
    connect(m_roadBuilder, &B::laneBorderLines, scheme, &R::setLaneBorderLines);
    connect(m_roadBuilder, &B::roadBorderLines, scheme, &R::setRoadBorderLines);
    connect(m_roadBuilder, &B::laneCenterLines, m_objectsHelper,
            &ObjectsHelper::setLaneCenterLines);
    connect(m_roadBuilder, &B::distanceLines, scheme, &R::setDistanceLines);
    connect(m_roadBuilder, &B::roadTanAngles, scheme, &R::setRoadTanAngles);
    // The view first: the helper's fresh average tracks then meet the new scale.
    connect(m_roadBuilder, &B::applyingRoadFinished, scheme, &R::finishApplyingRoad);
    connect(m_roadBuilder, &B::applyingRoadFinished, m_objectsHelper,
            &ObjectsHelper::finishApplyingRoad);
    connect(m_objectsHelper, &ObjectsHelper::sortingFinished, scheme, &R::finishFilling);
    connect(m_objectsHelper, &ObjectsHelper::averageTracks, scheme, &R::setAverageTracks);
}

// --- Radar client -----------------------------------------------------------------------

void MainWindow::doSetupRadarClient(int version)
{
    doUnsetRadarClient();
    if (version == 0)
        m_radarClient = new OrvexSerialDunvelProtocolClient(this);
    else if (version == 1)
        m_radarClient = new OrvexSerialPakorProtocolClient(this);
    else
        return; // an unknown variant leaves the window without a client
    doConnectRadarClient();
}

void MainWindow::doUnsetRadarClient()
{
    if (!m_radarClient)
        return;
    IOrvexClient* client = m_radarClient;
    m_radarClient = nullptr;
    // The displays still hear that the link went down; after that the old client is
    // cut off from everything. It is deleted later, never now: this may run inside
    // one of its own signals.
    client->disconnectFromServer();
    client->disconnect();
    disconnect(this, nullptr, client, nullptr);
    m_serverStateWidget->disconnect(client);
    client->deleteLater();
}

void MainWindow::doConnectRadarClient()
{
    IOrvexClient* c = m_radarClient;
    using C = IOrvexClient;
    auto* table = m_ui->objectsTableWidget;
    auto* info = m_ui->generalInfoWidget;
    auto* helper = m_objectsHelper;
    auto* scheme = m_ui->roadObjectsWidget;
    auto* imitator = m_ui->imitatorObjectWidget;
    using R = RoadObjectsWidget;
    using I = ImitatorObjectWidget;

    auto toServerWidgets = [&](auto signal, auto ping, auto connection, auto state, auto protocol) {
        connect(c, signal, m_serverPingWidget, ping);
        connect(c, signal, m_serverConnectionWidget, connection);
        connect(c, signal, m_serverStateWidget, state);
        connect(c, signal, m_serverProtocolWidget, protocol);
    };
    toServerWidgets(&C::connecting, &ServerPingWidget::showConnecting,
                    &ServerConnectionWidget::showConnecting, &ServerStateWidget::showConnecting,
                    &ServerProtocolWidget::showConnecting);
    connect(c, &C::connected, this, &MainWindow::onClientConnected);
    toServerWidgets(&C::connected, &ServerPingWidget::showConnected,
                    &ServerConnectionWidget::showConnected, &ServerStateWidget::showConnected,
                    &ServerProtocolWidget::showConnected);
    toServerWidgets(&C::notconnected, &ServerPingWidget::showNotConnected,
                    &ServerConnectionWidget::showNotConnected, &ServerStateWidget::showNotConnected,
                    &ServerProtocolWidget::showNotConnected);
    toServerWidgets(&C::disconnected, &ServerPingWidget::showDisconnected,
                    &ServerConnectionWidget::showDisconnected, &ServerStateWidget::showDisconnected,
                    &ServerProtocolWidget::showDisconnected);
    connect(c, &C::pingLatency, m_serverPingWidget, &ServerPingWidget::showPingLatency);

    connect(c, &C::radarStateChanged, this, &MainWindow::onRadarStateChanged);
    connect(c, &C::radarStateChanged, scheme, &R::showRadarState);
    connect(c, &C::radarStateChanged, table, &ObjectsTableWidget::showRadarState);
    connect(c, &C::radarStateChanged, imitator, &I::showRadarState);
    connect(c, &C::radarStateChanged, info, &GeneralInfoWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_serverStateWidget, &ServerStateWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_radarStateWidget, &RadarStateWidget::showRadarState);
    connect(c, &C::radarStateChanged, helper, &ObjectsHelper::setRadarState);

    connect(c, &C::frameStarted, scheme, &R::startFilling);
    connect(c, &C::frameStarted, table, &ObjectsTableWidget::startFilling);
    connect(c, &C::frameStarted, imitator, &I::startFilling);
    connect(c, &C::frameStarted, info, &GeneralInfoWidget::startFilling);
    connect(c, &C::frameStarted, helper, &ObjectsHelper::startFilling);
    connect(c, &C::frameDateTimeUtc, scheme, &R::setFrameDateTimeUtc);
    connect(c, &C::frameDateTimeUtc, info, &GeneralInfoWidget::setFrameDateTimeUtc);
    connect(c, &C::frameDateTimeUtc, helper, &ObjectsHelper::setFrameDateTimeUtc);
    connect(c, &C::uptimeInfo, info, &GeneralInfoWidget::showUptimeInfo);
    connect(c, &C::cycleNumber, info, &GeneralInfoWidget::showCycleNumber);
    connect(c, &C::cycleNumber, helper, &ObjectsHelper::setCycleNumber);
    connect(c, &C::objectData, scheme, &R::addObject);
    connect(c, &C::objectData, table, &ObjectsTableWidget::addObject);
    connect(c, &C::objectData, imitator, &I::addObject);
    connect(c, &C::objectData, helper, &ObjectsHelper::addObject);
    connect(c, &C::frameFinished, table, &ObjectsTableWidget::finishFilling);
    connect(c, &C::frameFinished, imitator, &I::finishFilling);
    connect(c, &C::frameFinished, info, &GeneralInfoWidget::finishFilling);
    connect(c, &C::frameFinished, helper, &ObjectsHelper::finishFilling);

    // Queued: the message boxes open after the client's handler has returned.
    connect(c, &C::hardwareInfo, this, &MainWindow::onHardwareInfoResult, Qt::QueuedConnection);
    connect(c, &C::hardwareInfo, m_serverStateWidget, &ServerStateWidget::showRadarHardwareInfo);
    connect(c, &C::firmwareInfo, this, &MainWindow::onFirmwareInfoResult, Qt::QueuedConnection);
    connect(c, &C::imitatorModeChanged, this, &MainWindow::onImitatorModeChanged);
    connect(c, &C::fakeTargetsModeChanged, this, &MainWindow::onFakeTargetsModeChanged);
    connect(c, &C::radarPosition, scheme, &R::showPosition);
    connect(c, &C::polygonUsage, scheme, &R::showPolygonUsage);
    connect(c, &C::polygonPointParam, scheme, &R::showPolygonPointParam);
    connect(c, &C::usedProtocolChanged, m_serverProtocolWidget,
            &ServerProtocolWidget::showServerProtocol);
    connect(c, &C::serverStateChanged, m_serverStateWidget, &ServerStateWidget::showServerState);

    connect(this, &MainWindow::forceServerToChangeProtocol, c, &C::forceServerToChangeProtocol);
    connect(this, &MainWindow::resetClientStatistics, c, &C::resetStatistics);
    connect(m_serverStateWidget, &ServerStateWidget::getRadarHardwareInfo, c,
            &C::sendCmdGetHardwareInfo);
}

void MainWindow::doSetProtocolVersion(int version)
{
    m_protocolVersion = version;
    for (QAction* action : m_protocolGroup->actions()) {
        if (action->data().toInt() == version) {
            action->setChecked(true);
            break;
        }
    }
    onRadarStateChanged(IOrvexClient::Offline);
    doSetupRadarClient(version);
    // While a profile is applied, its server address follows at once and connects.
    if (!m_applyingProfile)
        doSetRadarServerUrl(m_radarServerUrl);
}

void MainWindow::doSetProtocolForcing(bool forcing)
{
    m_protocolForcing = forcing;
}

void MainWindow::doSetRadarServerUrl(const QString& url)
{
    m_radarServerUrl = url;
    if (!m_radarClient)
        return;
    m_radarClient->disconnectFromServer();
    m_radarClient->connectToServer(QUrl(url), ReconnectTimeoutMs);
}

void MainWindow::onProtocolVersionTriggered(QAction* action)
{
    emit protocolVersionChanged(action->data().toInt());
}

void MainWindow::onClientConnected()
{
    if (m_protocolForcing)
        emit forceServerToChangeProtocol(m_protocolVersion);
}

void MainWindow::onRadarStateChanged(int state)
{
    if (!IOrvexClient::isWorking(state)) {
        m_hardwareInfoRequested = false;
        m_firmwareInfoRequested = false;
        m_selfDiagnosticsRequested = false;
    }
    if (!IOrvexClient::isOnline(state)) {
        onImitatorModeChanged(0);
        emit resetClientStatistics();
    }
}

void MainWindow::onWindowedCommandRequested(int command)
{
    // Only answers to what the operator asked for open a message box.
    switch (command) {
    case IOrvexClient::CmdGetHardwareInfo: m_hardwareInfoRequested = true; break;
    case IOrvexClient::CmdGetFirmwareInfo: m_firmwareInfoRequested = true; break;
    case IOrvexClient::CmdSelfDiagnostics: m_selfDiagnosticsRequested = true; break;
    default: break;
    }
}

void MainWindow::onHardwareInfoResult(const QString& info)
{
    if (!m_hardwareInfoRequested)
        return;
    m_hardwareInfoRequested = false;
    QMessageBox::information(this, tr("Hardware info"), info);
}

void MainWindow::onFirmwareInfoResult(const QString& info)
{
    if (!m_firmwareInfoRequested)
        return;
    m_firmwareInfoRequested = false;
    QMessageBox::information(this, tr("Firmware info"), info);
}

void MainWindow::onImitatorModeChanged(quint8 mode)
{
    m_imitatorMode = mode;
    QString title = tr(" Speed generated with imitator");
    if (mode == 1)
        title += tr(", type 1");
    else if (mode == 2)
        title += tr(", type 2");
    m_ui->imitatorObjectBox->setTitle(title + QStringLiteral("  "));
    // While the imitator runs its speed replaces the traffic scheme.
    m_ui->imitatorObjectBox->setVisible(mode != 0);
    m_ui->roadObjectsBox->setVisible(mode == 0);
}

void MainWindow::onFakeTargetsModeChanged(bool enabled)
{
    // Demo objects show on the scheme like any others; nothing to switch here.
    Q_UNUSED(enabled)
}

void MainWindow::onChooseRadarServerTriggered()
{
    bool ok = false;
    const QString url = QInputDialog::getText(this, windowTitleFor(tr("Radar server")),
                                              tr("Enter new server URL"), QLineEdit::Normal,
                                              m_radarServerUrl, &ok);
    // Confirming an empty field stores (and connects to) an empty address.
    if (ok || !url.isEmpty())
        emit radarServerUrlChanged(url);
}

void MainWindow::onAboutProgramTriggered()
{
    const QString text = QStringLiteral("%1\n%2\n%3 %4\n© 2022–%5 %6")
                             .arg(m_baseTitle, QStringLiteral("orvex-road-app-gui"),
                                  QStringLiteral(ORVEX_VERSION), buildDate())
                             .arg(QDate::currentDate().year())
                             .arg(QStringLiteral(ORVEX_MAKER));
    QMessageBox::information(this, tr("About this program"), text);
}

void MainWindow::onConfigureRoadTriggered()
{
    m_roadConfigWidget->showStandalone(true, this,
                                       windowTitleFor(tr("Traffic scheme customization")));
}

void MainWindow::onSwitchProfileTriggered()
{
    m_profileWidget->showStandalone(true, this, tr("Switch work profile"));
}

// --- Profile application and layout -----------------------------------------------------

void MainWindow::doStartApplyingProfile(const QString& name)
{
    m_profileName = name;
    m_applyingProfile = true;
    setWindowTitle(windowTitleFor(m_baseTitle));
}

void MainWindow::doFinishApplyingProfile()
{
    m_applyingProfile = false;
    onImitatorModeChanged(m_imitatorMode);
    // The one re-layout of a whole profile.
    doResetWindowLayout(TrafficSchemeAreaControl);
    doApplyWindowLayout(TrafficSchemeAreaControl);
}

void MainWindow::onTracksDisplayModeTriggered(QAction* action)
{
    emit tracksDisplayModeChanged(action->data().toInt());
}

void MainWindow::doSetTracksDisplayMode(int mode)
{
    for (QAction* action : m_displayModeGroup->actions()) {
        if (action->data().toInt() == mode) {
            action->setChecked(true);
            return;
        }
    }
}

void MainWindow::onControlVisibleTriggered(QAction* action)
{
    emit controlVisibleChanged(action->data().toInt(), action->isChecked());
}

void MainWindow::doSetControlVisible(int control, bool visible)
{
    QWidget* widget = m_controls.value(control);
    if (!widget)
        return;
    for (QAction* action : m_controlsGroup->actions()) {
        if (action->data().toInt() == control) {
            action->setChecked(visible);
            break;
        }
    }
    doResetWindowLayout(control);
    m_controlVisible[control] = visible;
    // The scheme area's visibility is the layout's to set.
    if (control != TrafficSchemeAreaControl)
        widget->setVisible(visible);
    doApplyWindowLayout(control);
}

void MainWindow::doSetControlCollapsed(int control, bool collapsed)
{
    auto* box = qobject_cast<CollapsibleGroupBox*>(m_controls.value(control));
    if (!box)
        return;
    doResetWindowLayout(control);
    box->setCollapsed(collapsed);
    doApplyWindowLayout(control);
}

void MainWindow::doSetDrawVertical(bool drawVertical)
{
    m_drawVertical = drawVertical;
    doResetWindowLayout(TrafficSchemeAreaControl);
    setUpdatesEnabled(false);
    QWidget* area = m_ui->objectsMetaWidget;
    QWidget* table = m_ui->objectsTableBox;
    m_ui->horzRoadLayout->removeWidget(area);
    m_ui->vertRoadLayout->removeWidget(area);
    m_ui->horzCtrlsLayout->removeWidget(table);
    m_ui->vertCtrlsLayout->removeWidget(table);
    // Vertical: the scheme to the left of everything, the table above the controls.
    // Horizontal: the scheme across the top, the table to the left of the controls.
    if (drawVertical) {
        m_ui->vertRoadLayout->insertWidget(0, area);
        m_ui->vertCtrlsLayout->insertWidget(0, table);
    } else {
        m_ui->horzRoadLayout->insertWidget(0, area);
        m_ui->horzCtrlsLayout->insertWidget(0, table);
    }
    setUpdatesEnabled(true);
    doApplyWindowLayout(TrafficSchemeAreaControl);
}

bool MainWindow::isLayoutFrozen(int control) const
{
    // A hidden window or a profile half applied is not laid out; the free-standing
    // windows take no part in the layout.
    return !isVisible() || m_applyingProfile || control == ObjectsHistoryControl
           || control == ProjectionToVideoControl;
}

void MainWindow::doResetWindowLayout(int control)
{
    if (isLayoutFrozen(control))
        return;
    m_ui->imitatorObjectWidget->clear();
    m_ui->objectsMetaWidget->hide();
    m_ui->objectsMetaWidget->setMaximumSize(ShrunkAreaSize, ShrunkAreaSize);
    doRearrangeColumns(ColumnsMode::Forced, m_drawVertical, isControlVisible(ObjectsTableControl));
}

void MainWindow::doApplyWindowLayout(int control)
{
    if (isLayoutFrozen(control))
        return;
    const bool vertical = m_drawVertical;
    const bool visible0 = isControlVisible(TrafficSchemeAreaControl);
    const bool visible2 = isControlVisible(ObjectsTableControl);
    doSetControlsSizePolicy(vertical, visible0, visible2);
    // Let the shrunk, hidden scheme area settle before the columns are chosen, and
    // the columns before the area may grow again.
    ++m_pendingLayouts;
    QTimer::singleShot(SettleDelayMs, Qt::PreciseTimer, this, [this, vertical, visible0, visible2] {
        doRearrangeColumns(ColumnsMode::Normal, vertical, visible2);
        m_ui->imitatorObjectWidget->clear();
        m_ui->objectsMetaWidget->setVisible(visible0);
        QTimer::singleShot(SettleDelayMs, Qt::PreciseTimer, this, [this] {
            m_ui->objectsMetaWidget->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
            --m_pendingLayouts;
        });
    });
}

void MainWindow::doSetControlsSizePolicy(bool vertical, bool visible0, bool visible2)
{
    QSizePolicy::Policy policy = QSizePolicy::Expanding;
    if (vertical)
        policy = visible2 ? QSizePolicy::Maximum : QSizePolicy::Expanding;
    else if (!visible2 && visible0)
        policy = QSizePolicy::Maximum;
    m_ui->controlsWidget->setSizePolicy(QSizePolicy::Maximum, policy);
    m_ui->spacer0Widget->setVisible((!vertical && !visible2)
                                    || (vertical && (!visible0 || visible2)));
}

void MainWindow::doRearrangeColumns(ColumnsMode mode, bool vertical, bool tableVisible)
{
    int columns = 3;
    if (mode == ColumnsMode::Forced) {
        columns = !vertical && !tableVisible ? 3 : 2;
    } else if (tableVisible) {
        columns = 2;
    } else if (vertical) {
        // Does column 2 fit below the boxes of column 1? The filler at the foot of
        // column 1 tells how much height is left there.
        int freeHeight = m_ui->spacer1Widget->height() - ColumnSpacerSlack;
        QLayout* column2 = m_ui->controls2Layout;
        if (column2->count() < 2) {
            columns = freeHeight >= 0 ? m_columnCount : 2;
        } else {
            for (int i = 0; i < column2->count(); ++i) {
                QWidget* widget = column2->itemAt(i)->widget();
                if (widget && widget->isVisible())
                    freeHeight -= widget->height() + column2->spacing();
            }
            columns = freeHeight < 1 ? m_columnCount : 1;
        }
    }

    setUpdatesEnabled(false);
    QWidget* general = m_ui->generalInfoBox;
    QWidget* send = m_ui->sendCommandsBox;
    QWidget* limits = m_ui->setPolygonBox;
    QWidget* tuning = m_ui->radarTuningBox;
    QWidget* position = m_ui->setPositionBox;
    QWidget* save = m_ui->saveAndRestartBox;
    QVBoxLayout* layouts[3] = {m_ui->controls1Layout, m_ui->controls2Layout, m_ui->controls3Layout};
    if (columns != m_columnCount) {
        m_columnCount = columns;
        QList<QWidget*> boxes[3];
        if (columns == 3) {
            boxes[0] = {general, send, tuning};
            boxes[1] = {limits};
            boxes[2] = {position, save};
        } else if (columns == 2) {
            boxes[0] = {general, send, limits};
            boxes[1] = {tuning, position, save};
        } else {
            boxes[0] = {general, send, limits, tuning, position, save};
        }
        for (QVBoxLayout* layout : layouts) {
            while (layout->count() > 0)
                delete layout->takeAt(0);
        }
        for (int c = 0; c < 3; ++c) {
            for (QWidget* box : boxes[c])
                layouts[c]->addWidget(box);
        }
    }

    // A column shows when any of its boxes is wanted; the controls area when any column is.
    QWidget* columnWidgets[3] = {m_ui->column1Widget, m_ui->column2Widget, m_ui->column3Widget};
    bool anyColumn = false;
    for (int c = 0; c < 3; ++c) {
        bool wanted = false;
        for (int i = 0; i < layouts[c]->count(); ++i) {
            const int control = m_controls.key(layouts[c]->itemAt(i)->widget(), -1);
            if (!m_controlVisible.contains(control))
                m_controlVisible.insert(control, false);
            wanted = wanted || m_controlVisible.value(control);
        }
        columnWidgets[c]->setVisible(wanted);
        anyColumn = anyColumn || wanted;
    }
    if (anyColumn) {
        m_ui->controlsWidget->show();
    } else {
        m_ui->controlsWidget->hide();
        m_ui->spacer0Widget->hide();
    }
    setUpdatesEnabled(true);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    doResetWindowLayout(TrafficSchemeAreaControl);
    doApplyWindowLayout(TrafficSchemeAreaControl);
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    // A vertical scheme leaves the boxes the window's height: they may move between
    // one and two columns as it changes.
    if (isVisible() && m_drawVertical)
        doRearrangeColumns(ColumnsMode::Normal, true, isControlVisible(ObjectsTableControl));
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    profileHandler()->saveProfiles(WorkProfileHandler::SettingsFilePath);
    doUnsetRadarClient();
    event->accept();
}
