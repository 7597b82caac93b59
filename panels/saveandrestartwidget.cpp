#include "saveandrestartwidget.h"

#include "cmdhandler.h"
#include "iorvexclient.h"
#include "ui_saveandrestartwidget.h"

using C = IOrvexClient;

SaveAndRestartWidget::SaveAndRestartWidget(QWidget* parent)
    : GroupedWidget(parent)
    , m_ui(new Ui::SaveAndRestartWidget)
    , m_cmdHandler(new CmdHandler(this))
{
    m_ui->setupUi(this);
    CmdHandler* h = m_cmdHandler;
    h->assignStateLabel(C::CmdSaveToFlash, h->addStateLabel(m_ui->saveToFlashStateWidget));
    h->assignStateLabel(C::CmdRestart, h->addStateLabel(m_ui->restartRadarStateWidget));

    connect(m_ui->saveToFlashButton, &QPushButton::clicked, this,
            [this] { doSendCommandWithNoArgs(C::CmdSaveToFlash); });
    connect(m_ui->restartRadarButton, &QPushButton::clicked, this,
            [this] { doSendCommandWithNoArgs(C::CmdRestart); });
    connect(h, &CmdHandler::updated, this, &SaveAndRestartWidget::doUpdateEnabled);

    showRadarState(C::Offline);
}

SaveAndRestartWidget::~SaveAndRestartWidget()
{
    delete m_ui;
}

void SaveAndRestartWidget::showRadarState(int state)
{
    // The outcome stays up through the silence that a restart itself causes; the
    // hide timer clears it.
    m_radarOnline = C::isOnline(state);
    m_radarWorking = C::isWorking(state);
    doUpdateEnabled();
}

void SaveAndRestartWidget::showCommandState(int command, int state, int error)
{
    m_cmdHandler->showCommandState(command, state, error);
}

void SaveAndRestartWidget::doUpdateEnabled()
{
    GroupedWidget::setEnabled(m_radarOnline && !m_cmdHandler->isWaiting());
    m_ui->saveToFlashButton->setEnabled(m_radarWorking);
}

void SaveAndRestartWidget::doSendCommandWithNoArgs(int command)
{
    m_cmdHandler->hideStates();
    emit commandWithNoArgs(command);
}
