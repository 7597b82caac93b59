#include "sendcommandswidget.h"

#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "iorvexclient.h"
#include "ui_sendcommandswidget.h"

#include <QCursor>
#include <QMenu>

namespace {

using C = IOrvexClient;

QMenu* makeMenu(QWidget* parent, const char* name, const QList<QPair<QString, int>>& items)
{
    auto* menu = new QMenu(parent);
    menu->setObjectName(QLatin1String(name));
    for (const auto& [text, data] : items)
        menu->addAction(text)->setData(data);
    return menu;
}

} // namespace

SendCommandsWidget::SendCommandsWidget(QWidget* parent)
    : GroupedWidget(parent)
    , m_ui(new Ui::SendCommandsWidget)
    , m_cmdHandler(new CmdHandler(this))
{
    m_ui->setupUi(this);
    CmdHandler* h = m_cmdHandler;
    // Hardware and firmware information share the device information button's label.
    CmdStateLabel* deviceInfoLabel = h->addStateLabel(m_ui->getDeviceInfoStateWidget);
    h->assignStateLabel(C::CmdGetHardwareInfo, deviceInfoLabel);
    h->assignStateLabel(C::CmdGetFirmwareInfo, deviceInfoLabel);
    h->assignStateLabel(C::CmdSelfDiagnostics, h->addStateLabel(m_ui->selfDiagnosticsStateWidget));
    h->assignStateLabel(C::CmdSetImitatorMode, h->addStateLabel(m_ui->imitatorModeStateWidget));
    h->assignStateLabel(C::CmdSetFakeTargetsMode,
                        h->addStateLabel(m_ui->fakeTargetsModeStateWidget));

    m_deviceInfoMenu = makeMenu(this, "deviceInfoMenu",
                                {{tr("Hardware info"), C::CmdGetHardwareInfo},
                                 {tr("Firmware info"), C::CmdGetFirmwareInfo}});
    m_imitatorTypeMenu = makeMenu(this, "imitatorTypeMenu",
                                  {{tr("Imitator, type 1"), 1}, {tr("Imitator, type 2"), 2}});

    connect(m_ui->getDeviceInfoButton, &QPushButton::clicked, this,
            &SendCommandsWidget::onDeviceInfoClicked);
    connect(m_ui->selfDiagnosticsButton, &QPushButton::clicked, this,
            &SendCommandsWidget::onSelfDiagnosticsClicked);
    connect(m_ui->imitatorModeButton, &QPushButton::clicked, this,
            &SendCommandsWidget::onImitatorModeClicked);
    connect(m_ui->fakeTargetsModeButton, &QPushButton::clicked, this,
            &SendCommandsWidget::onFakeTargetsModeClicked);
    connect(m_ui->imitatorModeButton, &QPushButton::toggled, this,
            &SendCommandsWidget::doUpdateCaptions);
    connect(m_ui->fakeTargetsModeButton, &QPushButton::toggled, this,
            &SendCommandsWidget::doUpdateCaptions);
    connect(m_deviceInfoMenu, &QMenu::triggered, this,
            [this](QAction* action) { doSendCommandWithNoArgs(action->data().toInt()); });
    connect(m_deviceInfoMenu, &QMenu::aboutToHide, this,
            [this] { m_ui->getDeviceInfoButton->setText(tr("Get device info")); });
    connect(m_imitatorTypeMenu, &QMenu::triggered, this, &SendCommandsWidget::onImitatorTypeChosen);
    // The menu hides before its chosen action is handled; a choice then checks the
    // button, and the caption follows.
    connect(m_imitatorTypeMenu, &QMenu::aboutToHide, this, &SendCommandsWidget::doUpdateCaptions);
    connect(m_cmdHandler, &CmdHandler::updated, this, &SendCommandsWidget::doUpdateEnabled);

    doUpdateCaptions();
    showRadarState(C::Offline);
}

SendCommandsWidget::~SendCommandsWidget()
{
    delete m_ui;
}

void SendCommandsWidget::showRadarState(int state)
{
    const bool wasWorking = m_radarWorking;
    m_radarWorking = C::isWorking(state);
    if (!C::isOnline(state)) {
        // Nothing is known of a radar that does not talk.
        m_cmdHandler->hideStates();
        showImitatorMode(0);
        showFakeTargetsMode(false);
    }
    doUpdateEnabled();
    // Learn the radar's modes, so that the buttons offer the way back out of them.
    if (m_radarWorking && !wasWorking) {
        emit commandWithNoArgs(C::CmdGetImitatorMode);
        emit commandWithNoArgs(C::CmdGetFakeTargetsMode);
    }
}

void SendCommandsWidget::showCommandState(int command, int state, int error)
{
    m_cmdHandler->showCommandState(command, state, error);
    // A switch the radar took is read back, so that the rest of the window hears of the
    // new mode; one it refused leaves the button as the radar last reported.
    if (command == C::CmdSetImitatorMode && state == C::Received)
        emit commandWithNoArgs(C::CmdGetImitatorMode);
    else if (command == C::CmdSetFakeTargetsMode && state == C::Received)
        emit commandWithNoArgs(C::CmdGetFakeTargetsMode);
    else if (command == C::CmdSetImitatorMode && state == C::Error)
        m_ui->imitatorModeButton->setChecked(m_imitatorMode != 0);
    else if (command == C::CmdSetFakeTargetsMode && state == C::Error)
        m_ui->fakeTargetsModeButton->setChecked(m_fakeTargetsMode);
}

void SendCommandsWidget::showImitatorMode(quint8 mode)
{
    m_imitatorMode = mode;
    m_ui->imitatorModeButton->setChecked(mode != 0);
}

void SendCommandsWidget::showFakeTargetsMode(bool enabled)
{
    m_fakeTargetsMode = enabled;
    m_ui->fakeTargetsModeButton->setChecked(enabled);
}

void SendCommandsWidget::onDeviceInfoClicked()
{
    doPopUp(m_ui->getDeviceInfoButton, tr("Choose info type"), m_deviceInfoMenu);
}

void SendCommandsWidget::onSelfDiagnosticsClicked()
{
    doSendCommandWithNoArgs(C::CmdSelfDiagnostics);
}

void SendCommandsWidget::onImitatorModeClicked(bool checked)
{
    if (!checked) {
        doSendSwitchCommand(C::CmdSetImitatorMode, 0);
        return;
    }
    // Switching on needs the imitator's type first: nothing is sent until it is chosen.
    m_ui->imitatorModeButton->setChecked(false);
    doPopUp(m_ui->imitatorModeButton, tr("Choose imitator type"), m_imitatorTypeMenu);
}

void SendCommandsWidget::onImitatorTypeChosen(QAction* action)
{
    m_ui->imitatorModeButton->setChecked(true);
    doSendSwitchCommand(C::CmdSetImitatorMode, quint8(action->data().toInt()));
}

void SendCommandsWidget::onFakeTargetsModeClicked(bool checked)
{
    doSendSwitchCommand(C::CmdSetFakeTargetsMode, checked ? 1 : 0);
}

void SendCommandsWidget::doPopUp(QPushButton* button, const QString& caption, QMenu* menu)
{
    button->setText(caption);
    CmdHandler::fixButtonMinWidth(button);
    menu->popup(QCursor::pos());
}

void SendCommandsWidget::doUpdateCaptions()
{
    QPushButton* imitator = m_ui->imitatorModeButton;
    imitator->setText(imitator->isChecked() ? tr("Go to 'regular' mode")
                                            : tr("Go to 'verification' mode"));
    QPushButton* fakeTargets = m_ui->fakeTargetsModeButton;
    fakeTargets->setText(fakeTargets->isChecked() ? tr("Go to 'real objects' mode")
                                                  : tr("Go to 'demo objects' mode"));
    CmdHandler::fixButtonMinWidth(imitator);
    CmdHandler::fixButtonMinWidth(fakeTargets);
}

void SendCommandsWidget::doUpdateEnabled()
{
    GroupedWidget::setEnabled(m_radarWorking && !m_cmdHandler->isWaiting());
}

void SendCommandsWidget::doSendCommandWithNoArgs(int command)
{
    m_cmdHandler->hideStates();
    emit commandWithNoArgs(command);
}

void SendCommandsWidget::doSendSwitchCommand(int command, quint8 value)
{
    m_cmdHandler->hideStates();
    emit switchCommand(command, value);
}
