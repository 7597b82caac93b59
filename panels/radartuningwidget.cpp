#include "radartuningwidget.h"

#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "ui_radartuningwidget.h"

using C = IOrvexClient;

RadarTuningWidget::RadarTuningWidget(QWidget* parent)
    : GroupedWidget(parent)
    , m_ui(new Ui::RadarTuningWidget)
    , m_parHandler(new ParHandler(this))
{
    m_ui->setupUi(this);
    ParHandler* h = m_parHandler;
    h->assignSetCommand(C::CmdSetRadarSensitivity, SensitivityParameter);
    h->assignGetCommand(C::CmdGetRadarSensitivity, SensitivityParameter);
    h->assignSetCommand(C::CmdSetFrequencyIndex, FrequencyIndexParameter);
    h->assignGetCommand(C::CmdGetFrequencyIndex, FrequencyIndexParameter);
    h->assignStateLabel(SensitivityParameter, m_ui->sensitivityResultLabel);
    h->assignStateLabel(FrequencyIndexParameter, m_ui->frequencyIdResultLabel);

    connect(m_ui->getTuningParamsButton, &QPushButton::clicked, this,
            &RadarTuningWidget::onGetClicked);
    connect(m_ui->setTuningParamsButton, &QPushButton::clicked, this,
            &RadarTuningWidget::onSetClicked);
    // An edit, or a value from the radar that differs, marks the value changed.
    connect(m_ui->frequencyIdSpin, qOverload<int>(&QSpinBox::valueChanged), this,
            [h] { h->setState(FrequencyIndexParameter, ParStateLabel::ValueChanged, true); });
    connect(m_ui->sensitivitySpin, qOverload<int>(&QSpinBox::valueChanged), this,
            [h] { h->setState(SensitivityParameter, ParStateLabel::ValueChanged, true); });
    connect(h, &ParHandler::updated, this, &RadarTuningWidget::doUpdateEnabled);

    showRadarState(C::Offline);
}

RadarTuningWidget::~RadarTuningWidget()
{
    delete m_ui;
}

void RadarTuningWidget::setAutoGetData(bool autoGet)
{
    m_autoGetData = autoGet;
}

void RadarTuningWidget::showRadarState(int state)
{
    const bool wasWorking = m_radarWorking;
    m_radarWorking = C::isWorking(state);
    // Outcomes of a radar that stopped talking mean nothing; unsent edits stay marked.
    if (!C::isOnline(state))
        m_parHandler->hideStates(true);
    doUpdateEnabled();
    if (m_radarWorking && !wasWorking && m_autoGetData)
        onGetClicked();
}

void RadarTuningWidget::showCommandState(int command, int state, int error)
{
    m_parHandler->showCommandState(command, state, error);
}

void RadarTuningWidget::showFrequencyIndex(int value)
{
    // The spin box keeps the value within the radar's range.
    m_ui->frequencyIdSpin->setValue(value);
    doShowReceived(FrequencyIndexParameter);
}

void RadarTuningWidget::showRadarSensitivity(int value)
{
    m_ui->sensitivitySpin->setValue(value);
    doShowReceived(SensitivityParameter);
}

void RadarTuningWidget::doShowReceived(int parameter)
{
    m_parHandler->setState(parameter, ParStateLabel::ReceivedFromRadar, true);
    m_parHandler->updateDataTimer();
    m_parHandler->extendHideTimeout();
}

void RadarTuningWidget::onGetClicked()
{
    m_parHandler->hideStates(false);
    emit getFrequencyIndex();
    emit getRadarSensitivity();
}

void RadarTuningWidget::onSetClicked()
{
    m_parHandler->hideStates(false);
    emit setFrequencyIndex(m_ui->frequencyIdSpin->value());
    emit setRadarSensitivity(m_ui->sensitivitySpin->value());
}

void RadarTuningWidget::doUpdateEnabled()
{
    GroupedWidget::setEnabled(m_radarWorking && !m_parHandler->isWaiting());
}
