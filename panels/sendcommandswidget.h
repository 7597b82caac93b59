#pragma once

#include "groupedwidget.h"

class CmdHandler;
class QMenu;
class QPushButton;

namespace Ui {
class SendCommandsWidget;
}

// The service commands: device information, self-diagnosis, the imitator and the
// demo objects. The panel emits generic command requests, shows each command's
// progress beside its button, and follows the modes the radar reports.
class SendCommandsWidget : public GroupedWidget
{
    Q_OBJECT

public:
    explicit SendCommandsWidget(QWidget* parent = nullptr);
    ~SendCommandsWidget() override;

    CmdHandler* cmdHandler() const { return m_cmdHandler; }
    QMenu* deviceInfoMenu() const { return m_deviceInfoMenu; }
    QMenu* imitatorTypeMenu() const { return m_imitatorTypeMenu; }
    quint8 imitatorMode() const { return m_imitatorMode; }

signals:
    void commandWithNoArgs(int command);
    void switchCommand(int command, quint8 value);

public slots:
    void showRadarState(int state);
    void showCommandState(int command, int state, int error);
    void showImitatorMode(quint8 mode);
    void showFakeTargetsMode(bool enabled);

private slots:
    void onDeviceInfoClicked();
    void onSelfDiagnosticsClicked();
    void onImitatorModeClicked(bool checked);
    void onImitatorTypeChosen(QAction* action);
    void onFakeTargetsModeClicked(bool checked);
    void doUpdateCaptions();
    void doUpdateEnabled();

private:
    void doSendCommandWithNoArgs(int command);
    void doSendSwitchCommand(int command, quint8 value);
    void doPopUp(QPushButton* button, const QString& caption, QMenu* menu);

    Ui::SendCommandsWidget* m_ui = nullptr;
    CmdHandler* m_cmdHandler = nullptr;
    QMenu* m_deviceInfoMenu = nullptr;
    QMenu* m_imitatorTypeMenu = nullptr;
    quint8 m_imitatorMode = 0; // as last reported by the radar
    bool m_fakeTargetsMode = false; // as last reported by the radar
    bool m_radarWorking = false; // the panel's external enabled flag
};
