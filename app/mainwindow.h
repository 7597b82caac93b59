#pragma once

#include <QMainWindow>
#include <QMap>
#include <QString>
#include <QVector>

#include <array>

class HistoryTableWidget;
class IOrvexClient;
class ObjectsHelper;
class ProjectionWidget;
class QAction;
class QActionGroup;
class QMenu;
class RadarStateWidget;
class RoadBuilder;
class RoadConfigWidget;
class ServerConnectionWidget;
class ServerPingWidget;
class ServerProtocolWidget;
class ServerStateWidget;
class StandaloneWidget;
class TvmsConfigWidget;
class WorkProfileHandler;
class WorkProfileWidget;

namespace Ui {
class MainWindow;
}

// The operator's main window: the traffic scheme, the objects table and the control
// boxes in one to three columns, the menus and the status bar. It owns the radar
// client and wires it to every display. Every visible setting goes through the
// current work profile: a user action asks the profile handler, and the handler's
// change signal drives the window.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int ReconnectTimeoutMs = 2000;
    static constexpr int ColumnSpacerSlack = 8; // pixels a column keeps free below its boxes

    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    IOrvexClient* radarClient() const { return m_radarClient; }
    WorkProfileHandler* profileHandler() const;
    WorkProfileWidget* profileWidget() const { return m_profileWidget; }
    RoadConfigWidget* roadConfigWidget() const { return m_roadConfigWidget; }
    HistoryTableWidget* historyWidget() const { return m_historyWidget; }
    ProjectionWidget* projectionWidget() const { return m_projectionWidget; }
    TvmsConfigWidget* tvmsConfigWidget() const { return m_tvmsConfigWidget; }
    // The widget that shows a control, or null for a number without one.
    QWidget* controlWidget(int control) const { return m_controls.value(control); }
    int columnCount() const { return m_columnCount; }
    // Whether a re-layout still has steps to take (they follow each other 1 ms apart).
    bool isLayoutPending() const { return m_pendingLayouts > 0; }

signals:
    void protocolVersionChanged(int version);
    void radarServerUrlChanged(const QString& url);
    void controlVisibleChanged(int control, bool visible);
    void controlCollapsedChanged(int control, bool collapsed);
    void tracksDisplayModeChanged(int mode);
    void showSightAreaChanged(bool show);
    void forceServerToChangeProtocol(int protocol);
    void resetClientStatistics();

public slots:
    // Driven by the profile handler.
    void doStartApplyingProfile(const QString& name);
    void doFinishApplyingProfile();
    void doSetControlVisible(int control, bool visible);
    void doSetControlCollapsed(int control, bool collapsed);
    void doSetDrawVertical(bool drawVertical);
    void doSetTracksDisplayMode(int mode);
    void doSetProtocolVersion(int version);
    void doSetProtocolForcing(bool forcing);
    void doSetRadarServerUrl(const QString& url);

    // User actions and client results.
    void onProtocolVersionTriggered(QAction* action);
    void onControlVisibleTriggered(QAction* action);
    void onControlCollapsedChanged(bool collapsed);
    void onStandaloneWidgetClosed();
    void onTracksDisplayModeTriggered(QAction* action);
    void onClientConnected();
    void onRadarStateChanged(int state);
    void onHardwareInfoResult(const QString& info);
    void onFirmwareInfoResult(const QString& info);
    void onSelfDiagnosticsResult(quint16 data);
    void onImitatorModeChanged(quint8 mode);
    void onFakeTargetsModeChanged(bool enabled);
    void onWindowedCommandRequested(int command);
    void onChooseRadarServerTriggered();
    void onAboutProgramTriggered();
    void onSwitchProfileTriggered();
    void onConfigureRoadTriggered();
    void onConfigureTvmsTriggered();
    void onPickupRadarPosTriggered();
    void onPickupRadarPosAndCameraViewAngleTriggered();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    enum class ColumnsMode { Forced, Normal };

    void doBuildMenus();
    void doBuildFileMenu();
    void doBuildProtocolMenu();
    void doBuildViewMenu();
    void doBuildProjectionMenu(QMenu* view);
    void doBuildPickupMenu(QMenu* data);
    // A checkable menu item that sets a profile value and whose tick follows it.
    template<typename Setter, typename Changed>
    QAction* addProfileToggle(QMenu* menu, const QString& text, Setter setter, Changed changed);
    void doMakeFixedConnections();
    void doConnectProjection();
    void doSetupRadarClient(int version);
    void doUnsetRadarClient();
    void doConnectRadarClient();
    void doConnectServerDisplays();
    void doConnectRadarState();
    void doConnectFrameFeed();
    void doConnectRadarResults();
    void doConnectRadarRequests();
    void doConnectCommandPanels();
    void doConnectProjectionFeed();
    // Shows a free-standing window (titled after the profile) and lets it work, or
    // stops and hides it. The window's own setEnabled starts and stops its intake, so
    // it is called on the window's class, not on a base.
    template<typename Window>
    void doShowFreeWindow(Window* window, const QString& name, bool visible);
    void doStartPickup(int mode);
    void doConnectPositionPanels();
    void doResetWindowLayout(int control);
    void doApplyWindowLayout(int control);
    void doSetControlsSizePolicy(bool vertical, bool visible0, bool visible2);
    void doRearrangeColumns(ColumnsMode mode, bool vertical, bool tableVisible);
    int columnCountFor(ColumnsMode mode, bool vertical, bool tableVisible) const;
    // Puts the six boxes into the three columns, top to bottom as listed.
    void doPlaceBoxes(const std::array<QVector<int>, 3>& columns);
    void doShowWantedColumns();
    bool isLayoutFrozen(int control) const;
    bool isControlVisible(int control) const { return m_controlVisible.value(control, false); }
    QString windowTitleFor(const QString& name) const;

    Ui::MainWindow* m_ui = nullptr;
    QString m_baseTitle;
    QString m_profileName;
    bool m_applyingProfile = false;
    bool m_drawVertical = false;
    QMap<int, QWidget*> m_controls;
    QMap<int, bool> m_controlVisible; // the last requested visibility of each control
    int m_columnCount = 0;
    int m_pendingLayouts = 0;

    RoadBuilder* m_roadBuilder = nullptr;
    ObjectsHelper* m_objectsHelper = nullptr;
    WorkProfileWidget* m_profileWidget = nullptr;
    RoadConfigWidget* m_roadConfigWidget = nullptr;
    HistoryTableWidget* m_historyWidget = nullptr;
    TvmsConfigWidget* m_tvmsConfigWidget = nullptr;
    ProjectionWidget* m_projectionWidget = nullptr;
    ServerPingWidget* m_serverPingWidget = nullptr;
    ServerConnectionWidget* m_serverConnectionWidget = nullptr;
    ServerStateWidget* m_serverStateWidget = nullptr;
    ServerProtocolWidget* m_serverProtocolWidget = nullptr;
    RadarStateWidget* m_radarStateWidget = nullptr;

    IOrvexClient* m_radarClient = nullptr;
    int m_protocolVersion = 0;
    bool m_protocolForcing = false;
    QString m_radarServerUrl;
    bool m_hardwareInfoRequested = false;
    bool m_firmwareInfoRequested = false;
    bool m_selfDiagnosticsRequested = false;
    quint8 m_imitatorMode = 0;

    QActionGroup* m_protocolGroup = nullptr;
    QActionGroup* m_controlsGroup = nullptr;
    QActionGroup* m_displayModeGroup = nullptr;
};
