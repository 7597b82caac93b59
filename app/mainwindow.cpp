#include "mainwindow.h"

#include "collapsiblegroupbox.h"
#include "generalinfowidget.h"
#include "historytablewidget.h"
#include "imitatorobjectwidget.h"
#include "objectshelper.h"
#include "objectstablewidget.h"
#include "orvexcontrol.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "pickupsearch.h"
#include "projectionwidget.h"
#include "radarstatewidget.h"
#include "radartuningwidget.h"
#include "roadbuilder.h"
#include "roadconfigwidget.h"
#include "roadobjectswidget.h"
#include "saveandrestartwidget.h"
#include "selfdiagnosticsmessagebox.h"
#include "sendcommandswidget.h"
#include "serverconnectionwidget.h"
#include "serverpingwidget.h"
#include "serverprotocolwidget.h"
#include "serverstatewidget.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "tvmsconfigwidget.h"
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
#include <QVBoxLayout>

#include <array>

namespace {

// A column rearrangement waits this long, twice, for the geometry to settle.
constexpr int SettleDelayMs = 1;
// While the columns are rebuilt the scheme area must not hold the window's size.
constexpr int ShrunkAreaSize = 32;

// The boxes of each column, top to bottom, for one, two and three columns.
using ColumnBoxes = std::array<QVector<int>, 3>;
const ColumnBoxes OneColumn{{{GeneralInfoControl, SendCommandsControl, ConfigureLimitationsControl,
                              FineTuningControl, SetRadarPositionControl, SaveAndRestartControl},
                             {},
                             {}}};
const ColumnBoxes TwoColumns{
    {{GeneralInfoControl, SendCommandsControl, ConfigureLimitationsControl},
     {FineTuningControl, SetRadarPositionControl, SaveAndRestartControl},
     {}}};
const ColumnBoxes ThreeColumns{{{GeneralInfoControl, SendCommandsControl, FineTuningControl},
                                {ConfigureLimitationsControl},
                                {SetRadarPositionControl, SaveAndRestartControl}}};

// Ticks (or unticks) the first item of a group whose data is the value.
void checkActionWithData(const QActionGroup* group, int value, bool checked = true)
{
    for (QAction* action : group->actions()) {
        if (action->data().toInt() == value) {
            action->setChecked(checked);
            return;
        }
    }
}

// Checkable items, one per text, whose data is their place in the list; separators
// where the text is empty. They join a new group of the menu's parent.
QActionGroup* addActionGroup(QMenu* menu, const QList<QPair<QString, int>>& items, bool exclusive,
                             QObject* owner)
{
    auto* group = new QActionGroup(owner);
    group->setExclusive(exclusive);
    for (const auto& [text, data] : items) {
        if (text.isEmpty()) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(text);
        action->setCheckable(true);
        action->setData(data);
        group->addAction(action);
    }
    return group;
}

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
    , m_historyWidget(new HistoryTableWidget(this, Qt::Window))
    , m_tvmsConfigWidget(new TvmsConfigWidget(this, Qt::Window))
    , m_projectionWidget(new ProjectionWidget(this))
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
        {ObjectsHistoryControl, m_historyWidget},
        {ProjectionToVideoControl, m_projectionWidget},
    };
    for (QWidget* widget : qAsConst(m_controls)) {
        if (auto* box = qobject_cast<CollapsibleGroupBox*>(widget))
            connect(box, &CollapsibleGroupBox::clicked, this,
                    &MainWindow::onControlCollapsedChanged);
    }
    connect(m_historyWidget, &StandaloneWidget::aboutToClose, this,
            &MainWindow::onStandaloneWidgetClosed);
    connect(m_projectionWidget, &StandaloneWidget::aboutToClose, this,
            &MainWindow::onStandaloneWidgetClosed);

    // The reports of unbounded length, a server's address and a radar's hardware name,
    // are cut short rather than widen the window beyond the size the operator gave it.
    m_serverConnectionWidget->setElideMode(Qt::ElideMiddle);
    m_serverStateWidget->setElideMode(Qt::ElideMiddle);
    for (StateLabel* label : std::initializer_list<StateLabel*>{
             m_serverPingWidget, m_serverConnectionWidget, m_serverStateWidget,
             m_serverProtocolWidget, m_radarStateWidget})
        statusBar()->addPermanentWidget(label);

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
    doBuildFileMenu();
    doBuildProtocolMenu();
    doBuildViewMenu();
    QMenu* data = menuBar()->addMenu(tr("&Data"));
    addProfileToggle(data, tr("&Automatically get data when radar starts working"),
                     &WorkProfileHandler::setAutoGetData, &WorkProfileHandler::autoGetDataChanged);
    data->addSeparator();
    doBuildPickupMenu(data);
    connect(data->addAction(tr("&Reset average tracks")), &QAction::triggered, m_objectsHelper,
            &ObjectsHelper::resetAverageTracks);
    QMenu* server = menuBar()->addMenu(tr("&Server"));
    connect(server->addAction(tr("&Choose radar server")), &QAction::triggered, this,
            &MainWindow::onChooseRadarServerTriggered);
    QMenu* help = menuBar()->addMenu(tr("&Help"));
    connect(help->addAction(tr("&About this program")), &QAction::triggered, this,
            &MainWindow::onAboutProgramTriggered);
}

template<typename Setter, typename Changed>
QAction* MainWindow::addProfileToggle(QMenu* menu, const QString& text, Setter setter,
                                      Changed changed)
{
    // The tick follows the profile's value, whoever changed it.
    QAction* action = menu->addAction(text);
    action->setCheckable(true);
    connect(action, &QAction::triggered, profileHandler(), setter);
    connect(profileHandler(), changed, action, &QAction::setChecked);
    return action;
}

void MainWindow::doBuildFileMenu()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    connect(file->addAction(tr("&Switch work profile")), &QAction::triggered, this,
            &MainWindow::onSwitchProfileTriggered);
    file->addSeparator();
    connect(file->addAction(tr("&Exit")), &QAction::triggered, this, &MainWindow::close);
}

void MainWindow::doBuildProtocolMenu()
{
    using H = WorkProfileHandler;
    QMenu* protocol = menuBar()->addMenu(tr("&Protocol"));
    m_protocolGroup = addActionGroup(
        protocol, {{tr("&0. Serial, type D (SerD)"), 0}, {tr("&1. Serial, type P (SerP)"), 1}},
        true, this);
    connect(m_protocolGroup, &QActionGroup::triggered, this,
            &MainWindow::onProtocolVersionTriggered);
    protocol->addSeparator();
    addProfileToggle(protocol, tr("&Force server to change protocol"), &H::setProtocolForcing,
                     &H::protocolForcingChanged);
}

void MainWindow::doBuildViewMenu()
{
    using H = WorkProfileHandler;
    QMenu* view = menuBar()->addMenu(tr("&View"));
    QMenu* visible = view->addMenu(tr("Visible &controls"));
    m_controlsGroup = addActionGroup(
        visible,
        {{tr("Traffic &scheme / Speed generated with imitator"), TrafficSchemeAreaControl},
         {tr("Road &objects"), ObjectsTableControl},
         {QString(), 0},
         {tr("&General info"), GeneralInfoControl},
         {tr("Send &commands"), SendCommandsControl},
         {tr("Configure &limitations"), ConfigureLimitationsControl},
         {tr("Fine &tuning"), FineTuningControl},
         {tr("Set &radar position"), SetRadarPositionControl},
         {tr("Save &params and restart"), SaveAndRestartControl},
         {QString(), 0},
         {tr("Objects &history"), ObjectsHistoryControl},
         {tr("Projecting to &video"), ProjectionToVideoControl}},
        false, this);
    connect(m_controlsGroup, &QActionGroup::triggered, this,
            &MainWindow::onControlVisibleTriggered);

    QMenu* scheme = view->addMenu(tr("&Traffic scheme"));
    addProfileToggle(scheme, tr("Draw road &vertical"), &H::setDrawVertical,
                     &H::drawVerticalChanged);
    addProfileToggle(scheme, tr("&Keep aspect ratio and object sizes"), &H::setKeepAspectRatio,
                     &H::keepAspectRatioChanged);
    scheme->addSeparator();
    addProfileToggle(scheme, tr("Draw camera's sight &line and area"), &H::setShowSightLine,
                     &H::showSightLineChanged);
    scheme->addSeparator();
    addProfileToggle(scheme, tr("Draw &current tracks"), &H::setShowCurrentTracksOnScheme,
                     &H::showCurrentTracksOnSchemeChanged);
    addProfileToggle(scheme, tr("Draw &average tracks"), &H::setShowAverageTracksOnScheme,
                     &H::showAverageTracksOnSchemeChanged);
    scheme->addSeparator();
    m_displayModeGroup = addActionGroup(scheme,
                                        {{tr("&Normal mode"), 0},
                                         {tr("&Statistical (long exposure) mode"), 1},
                                         {tr("&Mixed mode"), 2}},
                                        true, this);
    connect(m_displayModeGroup, &QActionGroup::triggered, this,
            &MainWindow::onTracksDisplayModeTriggered);
    scheme->addSeparator();
    connect(scheme->addAction(tr("Customize &traffic scheme")), &QAction::triggered, this,
            &MainWindow::onConfigureRoadTriggered);
    doBuildProjectionMenu(view);

    view->addSeparator();
    addProfileToggle(view, tr("&Paint objects in different colors"), &H::setPaintObjects,
                     &H::paintObjectsChanged);
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
    connect(h, &H::paintObjectsChanged, m_historyWidget, &HistoryTableWidget::setPaintObjects);
    connect(h, &H::applyingProfileFinished, this, &MainWindow::doFinishApplyingProfile);
    SetPositionWidget* position = m_ui->setPositionWidget;
    SetPolygonWidget* limitations = m_ui->setPolygonWidget;
    connect(h, &H::autoGetDataChanged, position, &SetPositionWidget::setAutoGetData);
    connect(h, &H::autoGetDataChanged, m_ui->radarTuningWidget, &RadarTuningWidget::setAutoGetData);
    connect(h, &H::autoGetDataChanged, limitations, &SetPolygonWidget::setAutoGetData);
    connect(position, &SetPositionWidget::presetsChanged, h, &H::setPositionPresets);
    connect(h, &H::positionPresetsChanged, position, &SetPositionWidget::setPresets);
    connect(limitations, &SetPolygonWidget::presetsChanged, h, &H::setLimitationsPresets);
    connect(h, &H::limitationsPresetsChanged, limitations, &SetPolygonWidget::setPresets);
    // The entered position is previewed at once, before the radar confirms it.
    connect(position, &SetPositionWidget::setPosition, scheme, &R::showPosition);
    // Next to the client's own connection: an answer opens a message box only when the
    // operator asked for it here.
    connect(m_ui->sendCommandsWidget, &SendCommandsWidget::commandWithNoArgs, this,
            &MainWindow::onWindowedCommandRequested);

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
    doConnectProjection();
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
    m_ui->sendCommandsWidget->disconnect(client);
    m_ui->radarTuningWidget->disconnect(client);
    m_ui->saveAndRestartWidget->disconnect(client);
    m_ui->setPositionWidget->disconnect(client);
    m_ui->setPolygonWidget->disconnect(client);
    client->deleteLater();
}

void MainWindow::doConnectRadarClient()
{
    doConnectServerDisplays();
    doConnectRadarState();
    doConnectFrameFeed();
    doConnectRadarResults();
    doConnectRadarRequests();
    doConnectCommandPanels();
    doConnectProjectionFeed();
    doConnectPositionPanels();
}

void MainWindow::doConnectServerDisplays()
{
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    connect(c, &C::connected, this, &MainWindow::onClientConnected);
    // The connection label always shows the link; the other three show a report of the
    // server, which every event of the link makes stale.
    using S = ServerConnectionWidget;
    connect(c, &C::connecting, m_serverConnectionWidget, &S::showConnecting);
    connect(c, &C::connected, m_serverConnectionWidget, &S::showConnected);
    connect(c, &C::notconnected, m_serverConnectionWidget, &S::showNotConnected);
    connect(c, &C::disconnected, m_serverConnectionWidget, &S::showDisconnected);
    using L = ServerReportLabel;
    for (ServerReportLabel* label :
         {static_cast<L*>(m_serverPingWidget), static_cast<L*>(m_serverStateWidget),
          static_cast<L*>(m_serverProtocolWidget)}) {
        connect(c, &C::connecting, label, &L::showConnecting);
        connect(c, &C::connected, label, &L::showConnected);
        connect(c, &C::notconnected, label, &L::showNotConnected);
        connect(c, &C::disconnected, label, &L::showDisconnected);
    }
    connect(c, &C::pingLatency, m_serverPingWidget, &ServerPingWidget::showPingLatency);
    connect(c, &C::usedProtocolChanged, m_serverProtocolWidget,
            &ServerProtocolWidget::showServerProtocol);
    connect(c, &C::serverStateChanged, m_serverStateWidget, &ServerStateWidget::showServerState);
    connect(this, &MainWindow::forceServerToChangeProtocol, c, &C::forceServerToChangeProtocol);
}

void MainWindow::doConnectRadarState()
{
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    connect(c, &C::radarStateChanged, this, &MainWindow::onRadarStateChanged);
    connect(c, &C::radarStateChanged, m_ui->roadObjectsWidget, &RoadObjectsWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->objectsTableWidget,
            &ObjectsTableWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->imitatorObjectWidget,
            &ImitatorObjectWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->generalInfoWidget, &GeneralInfoWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->saveAndRestartWidget,
            &SaveAndRestartWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->setPositionWidget, &SetPositionWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->radarTuningWidget, &RadarTuningWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->setPolygonWidget, &SetPolygonWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_ui->sendCommandsWidget,
            &SendCommandsWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_serverStateWidget, &ServerStateWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_radarStateWidget, &RadarStateWidget::showRadarState);
    connect(c, &C::radarStateChanged, m_objectsHelper, &ObjectsHelper::setRadarState);
    connect(this, &MainWindow::resetClientStatistics, c, &C::resetStatistics);
}

void MainWindow::doConnectFrameFeed()
{
    // Every per-frame display collects a frame's objects between its start and its end
    // and repaints once. The scheme finishes from the objects helper's display order.
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    auto* scheme = m_ui->roadObjectsWidget;
    auto* table = m_ui->objectsTableWidget;
    auto* imitator = m_ui->imitatorObjectWidget;
    auto* info = m_ui->generalInfoWidget;
    auto* helper = m_objectsHelper;
    auto* history = m_historyWidget;
    using R = RoadObjectsWidget;
    using T = ObjectsTableWidget;
    using H = HistoryTableWidget;
    using I = ImitatorObjectWidget;
    using G = GeneralInfoWidget;
    using O = ObjectsHelper;

    connect(c, &C::frameStarted, scheme, &R::startFilling);
    connect(c, &C::frameStarted, table, &T::startFilling);
    connect(c, &C::frameStarted, imitator, &I::startFilling);
    connect(c, &C::frameStarted, info, &G::startFilling);
    connect(c, &C::frameStarted, history, &H::startFilling);
    connect(c, &C::frameStarted, helper, &O::startFilling);
    connect(c, &C::frameDateTimeUtc, scheme, &R::setFrameDateTimeUtc);
    connect(c, &C::frameDateTimeUtc, info, &G::setFrameDateTimeUtc);
    connect(c, &C::frameDateTimeUtc, history, &H::setFrameDateTimeUtc);
    connect(c, &C::frameDateTimeUtc, helper, &O::setFrameDateTimeUtc);
    connect(c, &C::uptimeInfo, info, &G::showUptimeInfo);
    connect(c, &C::cycleNumber, info, &G::showCycleNumber);
    connect(c, &C::cycleNumber, helper, &O::setCycleNumber);
    connect(c, &C::objectData, scheme, &R::addObject);
    connect(c, &C::objectData, table, &T::addObject);
    connect(c, &C::objectData, imitator, &I::addObject);
    connect(c, &C::objectData, history, &H::addObject);
    connect(c, &C::objectData, helper, &O::addObject);
    connect(c, &C::frameFinished, table, &T::finishFilling);
    connect(c, &C::frameFinished, imitator, &I::finishFilling);
    connect(c, &C::frameFinished, info, &G::finishFilling);
    connect(c, &C::frameFinished, history, &H::finishFilling);
    connect(c, &C::frameFinished, helper, &O::finishFilling);
}

void MainWindow::doConnectRadarResults()
{
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    auto* scheme = m_ui->roadObjectsWidget;
    using R = RoadObjectsWidget;
    // Queued: the message boxes open after the client's handler has returned.
    connect(c, &C::hardwareInfo, this, &MainWindow::onHardwareInfoResult, Qt::QueuedConnection);
    connect(c, &C::hardwareInfo, m_serverStateWidget, &ServerStateWidget::showRadarHardwareInfo);
    connect(c, &C::firmwareInfo, this, &MainWindow::onFirmwareInfoResult, Qt::QueuedConnection);
    connect(c, &C::selfDiagnosticsResult, this, &MainWindow::onSelfDiagnosticsResult,
            Qt::QueuedConnection);
    connect(c, &C::imitatorModeChanged, this, &MainWindow::onImitatorModeChanged);
    connect(c, &C::fakeTargetsModeChanged, this, &MainWindow::onFakeTargetsModeChanged);
    connect(c, &C::radarPosition, scheme, &R::showPosition);
    connect(c, &C::polygonUsage, scheme, &R::showPolygonUsage);
    connect(c, &C::polygonPointParam, scheme, &R::showPolygonPointParam);
}

void MainWindow::doConnectRadarRequests()
{
    using C = IOrvexClient;
    connect(m_serverStateWidget, &ServerStateWidget::getRadarHardwareInfo, m_radarClient,
            &C::sendCmdGetHardwareInfo);
}

void MainWindow::doConnectCommandPanels()
{
    // The service, tuning and save/restart panels: their requests go to the client;
    // every command's progress and the values read back come to them (the radar's state
    // comes with the other displays').
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    SendCommandsWidget* commands = m_ui->sendCommandsWidget;
    RadarTuningWidget* tuning = m_ui->radarTuningWidget;
    SaveAndRestartWidget* saveRestart = m_ui->saveAndRestartWidget;
    using S = SendCommandsWidget;
    using T = RadarTuningWidget;
    using R = SaveAndRestartWidget;

    connect(c, &C::radarCommandStateChanged, saveRestart, &R::showCommandState);
    connect(c, &C::radarCommandStateChanged, tuning, &T::showCommandState);
    connect(c, &C::radarCommandStateChanged, commands, &S::showCommandState);
    connect(c, &C::imitatorModeChanged, commands, &S::showImitatorMode);
    connect(c, &C::fakeTargetsModeChanged, commands, &S::showFakeTargetsMode);
    connect(c, &C::frequencyIndex, tuning, &T::showFrequencyIndex);
    connect(c, &C::radarSensitivity, tuning, &T::showRadarSensitivity);

    connect(saveRestart, &R::commandWithNoArgs, c, &C::sendAnyCmdWithNoArgs);
    connect(commands, &S::commandWithNoArgs, c, &C::sendAnyCmdWithNoArgs);
    connect(commands, &S::switchCommand, c, &C::sendAnySwitchCmd);
    connect(tuning, &T::setFrequencyIndex, c, &C::sendCmdSetFrequencyIndex);
    connect(tuning, &T::getFrequencyIndex, c, &C::sendCmdGetFrequencyIndex);
    connect(tuning, &T::setRadarSensitivity, c, &C::sendCmdSetRadarSensitivity);
    connect(tuning, &T::getRadarSensitivity, c, &C::sendCmdGetRadarSensitivity);
}

void MainWindow::doConnectPositionPanels()
{
    // The position and limitations panels: their reads and writes go to the client;
    // every command's progress and the values read back come to them (the radar's
    // state comes with the other displays', the scheme hears the same values itself).
    using C = IOrvexClient;
    IOrvexClient* c = m_radarClient;
    SetPositionWidget* position = m_ui->setPositionWidget;
    SetPolygonWidget* limitations = m_ui->setPolygonWidget;
    using P = SetPositionWidget;
    using L = SetPolygonWidget;

    connect(c, &C::radarCommandStateChanged, position, &P::showCommandState);
    connect(c, &C::radarCommandStateChanged, limitations, &L::showCommandState);
    connect(c, &C::radarPosition, position, &P::showPosition);
    connect(c, &C::polygonUsage, limitations, &L::showPolygonUsage);
    connect(c, &C::polygonTreatParam, limitations, &L::showPolygonTreatParam);
    connect(c, &C::polygonSpeedParam, limitations, &L::showPolygonSpeedParam);
    connect(c, &C::polygonPointParam, limitations, &L::showPolygonPointParam);

    connect(position, &P::setPosition, c, &C::sendCmdSetPosition);
    connect(position, &P::getPosition, c, &C::sendCmdGetPosition);
    connect(limitations, &L::setPolygonUsage, c, &C::sendCmdSetPolygonUsage);
    connect(limitations, &L::getPolygonUsage, c, &C::sendCmdGetPolygonUsage);
    connect(limitations, &L::setPolygonTreatParam, c, &C::sendCmdSetPolygonTreatParam);
    connect(limitations, &L::getPolygonTreatParam, c, &C::sendCmdGetPolygonTreatParam);
    connect(limitations, &L::setPolygonSpeedParam, c, &C::sendCmdSetPolygonSpeedParam);
    connect(limitations, &L::getPolygonSpeedParam, c, &C::sendCmdGetPolygonSpeedParam);
    connect(limitations, &L::setPolygonPointParam, c, &C::sendCmdSetPolygonPointParam);
    connect(limitations, &L::getPolygonPointParam, c, &C::sendCmdGetPolygonPointParam);
    connect(limitations, &L::reinitPolygons, c, &C::sendCmdReinitPolygons);
}

void MainWindow::doSetProtocolVersion(int version)
{
    m_protocolVersion = version;
    checkActionWithData(m_protocolGroup, version);
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

void MainWindow::onSelfDiagnosticsResult(quint16 data)
{
    if (!m_selfDiagnosticsRequested)
        return;
    m_selfDiagnosticsRequested = false;
    SelfDiagnosticsMessageBox::showResult(this, data);
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
    checkActionWithData(m_displayModeGroup, mode);
}

void MainWindow::onControlVisibleTriggered(QAction* action)
{
    emit controlVisibleChanged(action->data().toInt(), action->isChecked());
}

void MainWindow::onControlCollapsedChanged(bool collapsed)
{
    // Every collapsible box reports here; the box that was clicked names the control.
    emit controlCollapsedChanged(
        m_controls.key(qobject_cast<QWidget*>(sender()), TrafficSchemeAreaControl), collapsed);
}

template<typename Window>
void MainWindow::doShowFreeWindow(Window* window, const QString& name, bool visible)
{
    if (visible) {
        window->showStandalone(false, this, windowTitleFor(name));
        window->setEnabled(true);
    } else {
        window->setEnabled(false);
        window->hide();
    }
}

void MainWindow::doSetControlVisible(int control, bool visible)
{
    QWidget* widget = m_controls.value(control);
    if (!widget)
        return;
    checkActionWithData(m_controlsGroup, control, visible);
    doResetWindowLayout(control);
    m_controlVisible[control] = visible;
    if (control == ObjectsHistoryControl) {
        // The history logs only while its window is open; closing it drops the log.
        doShowFreeWindow(m_historyWidget, tr("Objects history"), visible);
    } else if (control == ProjectionToVideoControl) {
        doShowFreeWindow(m_projectionWidget, tr("Projecting to video"), visible);
        // The scheme shows the camera's sight area only while the projection is shown.
        emit showSightAreaChanged(visible);
    } else if (control != TrafficSchemeAreaControl) {
        // The scheme area's visibility is the layout's to set.
        widget->setVisible(visible);
    }
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
    setUpdatesEnabled(false);
    const int columns = columnCountFor(mode, vertical, tableVisible);
    if (columns != m_columnCount) {
        m_columnCount = columns;
        doPlaceBoxes(columns == 3 ? ThreeColumns : columns == 2 ? TwoColumns : OneColumn);
    }
    doShowWantedColumns();
    setUpdatesEnabled(true);
}

int MainWindow::columnCountFor(ColumnsMode mode, bool vertical, bool tableVisible) const
{
    if (mode == ColumnsMode::Forced)
        return !vertical && !tableVisible ? 3 : 2;
    if (tableVisible)
        return 2;
    if (!vertical)
        return 3;
    // Beside a vertical scheme the boxes have the window's height: does column 2 fit
    // below the boxes of column 1? Column 1's filler tells how much height is left.
    int freeHeight = m_ui->spacer1Widget->height() - ColumnSpacerSlack;
    const QLayout* column2 = m_ui->controls2Layout;
    if (column2->count() < 2)
        return freeHeight >= 0 ? m_columnCount : 2;
    for (int i = 0; i < column2->count(); ++i) {
        const QWidget* box = column2->itemAt(i)->widget();
        if (box && box->isVisible())
            freeHeight -= box->height() + column2->spacing();
    }
    return freeHeight < 1 ? m_columnCount : 1;
}

void MainWindow::doPlaceBoxes(const ColumnBoxes& columns)
{
    QVBoxLayout* layouts[3] = {m_ui->controls1Layout, m_ui->controls2Layout, m_ui->controls3Layout};
    for (QVBoxLayout* layout : layouts) {
        while (layout->count() > 0)
            delete layout->takeAt(0);
    }
    for (int c = 0; c < 3; ++c) {
        for (int control : columns.at(size_t(c)))
            layouts[c]->addWidget(m_controls.value(control));
    }
}

void MainWindow::doShowWantedColumns()
{
    // A column shows when any of its boxes is wanted, the controls area when any column
    // is. A box never asked for counts as hidden, and is recorded so.
    const QLayout* layouts[3]
        = {m_ui->controls1Layout, m_ui->controls2Layout, m_ui->controls3Layout};
    QWidget* columnWidgets[3] = {m_ui->column1Widget, m_ui->column2Widget, m_ui->column3Widget};
    bool anyColumn = false;
    for (int c = 0; c < 3; ++c) {
        bool wanted = false;
        for (int i = 0; i < layouts[c]->count(); ++i) {
            const int control = m_controls.key(layouts[c]->itemAt(i)->widget(), -1);
            wanted = m_controlVisible.insert(control, isControlVisible(control)).value() || wanted;
        }
        columnWidgets[c]->setVisible(wanted);
        anyColumn = anyColumn || wanted;
    }
    m_ui->controlsWidget->setVisible(anyColumn);
    if (!anyColumn)
        m_ui->spacer0Widget->hide();
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
    m_historyWidget->close();
    m_projectionWidget->close();
    event->accept();
}

// --- Video projection ---------------------------------------------------------------------

void MainWindow::doBuildProjectionMenu(QMenu* view)
{
    using H = WorkProfileHandler;
    QMenu* video = view->addMenu(tr("Projecting to &video"));
    addProfileToggle(video, tr("Draw &lane boundaries"), &H::setShowLaneLinesOnVideo,
                     &H::showLaneLinesOnVideoChanged);
    addProfileToggle(video, tr("Draw &distance lines"), &H::setShowDistLinesOnVideo,
                     &H::showDistLinesOnVideoChanged);
    addProfileToggle(video, tr("Draw &current tracks"), &H::setShowCurrentTracksOnVideo,
                     &H::showCurrentTracksOnVideoChanged);
    addProfileToggle(video, tr("Draw &average tracks"), &H::setShowAverageTracksOnVideo,
                     &H::showAverageTracksOnVideoChanged);
    video->addSeparator();
    connect(video->addAction(tr("Customize &projecting to video")), &QAction::triggered, this,
            &MainWindow::onConfigureTvmsTriggered);
}

void MainWindow::doBuildPickupMenu(QMenu* data)
{
    QMenu* pickup = data->addMenu(tr("&Pick up parameters"));
    connect(pickup->addAction(tr("Radar &position")), &QAction::triggered, this,
            &MainWindow::onPickupRadarPosTriggered);
    connect(pickup->addAction(tr("Radar position and camera view &angle")), &QAction::triggered,
            this, &MainWindow::onPickupRadarPosAndCameraViewAngleTriggered);
    data->addSeparator();
}

void MainWindow::doConnectProjection()
{
    WorkProfileHandler* h = profileHandler();
    using H = WorkProfileHandler;
    using P = ProjectionWidget;
    ProjectionWidget* video = m_projectionWidget;
    connect(h, &H::showLaneLinesOnVideoChanged, video, &P::setShowLaneLines);
    connect(h, &H::showDistLinesOnVideoChanged, video, &P::setShowDistLines);
    connect(h, &H::showCurrentTracksOnVideoChanged, video, &P::setShowCurrentTracks);
    connect(h, &H::showAverageTracksOnVideoChanged, video, &P::setShowAverageTracks);
    connect(m_tvmsConfigWidget, &TvmsConfigWidget::tvmsConfigChanged, h, &H::setTvmsConfig);
    connect(h, &H::tvmsConfigChanged, video, &P::setTvmsConfig);
    connect(h, &H::tvmsConfigChanged, m_tvmsConfigWidget, &TvmsConfigWidget::setTvmsConfig);
    connect(h, &H::paintObjectsChanged, video, &P::setPaintObjects);

    using B = RoadBuilder;
    connect(m_roadBuilder, &B::applyingRoadStarted, video, &P::startApplyingRoad);
    connect(m_roadBuilder, &B::roadAxisLine, video, &P::setRoadAxisLine);
    connect(m_roadBuilder, &B::laneBorderLines, video, &P::setLaneBorderLines);
    connect(m_roadBuilder, &B::roadBorderLines, video, &P::setRoadBorderLines);
    connect(m_roadBuilder, &B::distanceLines, video, &P::setDistanceLines);
    connect(m_roadBuilder, &B::applyingRoadFinished, video, &P::finishApplyingRoad);
    connect(m_objectsHelper, &ObjectsHelper::sortingFinished, video, &P::finishFilling);
    connect(m_objectsHelper, &ObjectsHelper::averageTracks, video, &P::setAverageTracks);
    connect(video, &P::sight, m_ui->roadObjectsWidget, &RoadObjectsWidget::setSight);

    // A position entered in its box is previewed over the video too, before the radar
    // confirms it; a picked-up pose fills that box for the operator to check and write.
    SetPositionWidget* position = m_ui->setPositionWidget;
    connect(position, &SetPositionWidget::setPosition, video,
            [video](double height, double x, double y, double azimuth, double altitude,
                    double roll) { video->showPosition(height, x, y, azimuth, altitude, roll, true); });
    connect(video, &P::pickedRadarPosition, position, &SetPositionWidget::fillPosition);
}

void MainWindow::doConnectProjectionFeed()
{
    using C = IOrvexClient;
    using P = ProjectionWidget;
    IOrvexClient* c = m_radarClient;
    ProjectionWidget* video = m_projectionWidget;
    connect(c, &C::radarStateChanged, video, &P::showRadarState);
    connect(c, &C::frameStarted, video, &P::startFilling);
    connect(c, &C::frameDateTimeUtc, video, &P::setFrameDateTimeUtc);
    connect(c, &C::objectData, video, &P::addObject);
    // The radar's own pose is shown at once.
    connect(c, &C::radarPosition, video,
            [video](double height, double x, double y, double azimuth, double altitude,
                    double roll) { video->showPosition(height, x, y, azimuth, altitude, roll, true); });
}


void MainWindow::onConfigureTvmsTriggered()
{
    m_tvmsConfigWidget->showStandalone(true, this,
                                       windowTitleFor(tr("Projecting to video customization")));
}

void MainWindow::doStartPickup(int mode)
{
    if (!isControlVisible(ProjectionToVideoControl))
        emit controlVisibleChanged(ProjectionToVideoControl, true);
    m_projectionWidget->pickupParameters(mode);
}

void MainWindow::onPickupRadarPosTriggered()
{
    doStartPickup(PickupSearch::RadarPosition);
}

void MainWindow::onPickupRadarPosAndCameraViewAngleTriggered()
{
    doStartPickup(PickupSearch::RadarPositionAndViewAngle);
}

void MainWindow::onStandaloneWidgetClosed()
{
    // The free-standing window that closes names its control.
    const int control = m_controls.key(qobject_cast<QWidget*>(sender()), -1);
    if (control >= 0)
        emit controlVisibleChanged(control, false);
}
