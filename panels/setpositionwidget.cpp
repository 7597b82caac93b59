#include "setpositionwidget.h"

#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "profilekeys.h"
#include "readbackmark.h"
#include "ui_setpositionwidget.h"

#include <cmath>

using C = IOrvexClient;
namespace K = ProfileKeys::PositionPreset;

SetPositionWidget::SetPositionWidget(QWidget* parent)
    : PresetedWidget(parent)
    , m_ui(new Ui::SetPositionWidget)
    , m_parHandler(new ParHandler(this))
{
    m_ui->setupUi(this);
    setPresetButtonsLayout(m_ui->presetButtonsLayout);
    m_fields = {{
        {m_ui->heightSpin, m_ui->heightResultLabel, HeightParameter, C::CmdSetHeight,
         C::CmdGetHeight, K::Height},
        {m_ui->xOffsetSpin, m_ui->xOffsetResultLabel, XOffsetParameter, C::CmdSetXOffset,
         C::CmdGetXOffset, K::XOffset},
        {m_ui->yOffsetSpin, m_ui->yOffsetResultLabel, YOffsetParameter, C::CmdSetYOffset,
         C::CmdGetYOffset, K::YOffset},
        {m_ui->azimuthSpin, m_ui->azimuthResultLabel, AzimuthParameter, C::CmdSetAzimuth,
         C::CmdGetAzimuth, K::Azimuth},
        {m_ui->altitudeSpin, m_ui->altitudeResultLabel, AltitudeParameter, C::CmdSetAltitude,
         C::CmdGetAltitude, K::Altitude},
        {m_ui->rollSpin, m_ui->rollResultLabel, RollParameter, C::CmdSetRoll, C::CmdGetRoll,
         K::Roll},
    }};
    ParHandler* h = m_parHandler;
    for (const Field& f : m_fields) {
        h->assignSetCommand(f.setCommand, f.parameter);
        h->assignGetCommand(f.getCommand, f.parameter);
        h->assignStateLabel(f.parameter, f.label);
        // An edit, a fill or a value from the radar marks the value changed first.
        QDoubleSpinBox* spin = f.spin;
        connect(spin, qOverload<double>(&QDoubleSpinBox::valueChanged), this,
                [h, spin, p = f.parameter] {
                    ReadBackMark::clear(spin);
                    h->setState(p, ParStateLabel::ValueChanged, true);
                });
    }

    connect(m_ui->getPositionButton, &QPushButton::clicked, this,
            &SetPositionWidget::on_getPositionButton_clicked);
    connect(m_ui->setPositionButton, &QPushButton::clicked, this,
            &SetPositionWidget::on_setPositionButton_clicked);
    connect(m_ui->addPresetButton, &QToolButton::clicked, this,
            &SetPositionWidget::on_addPresetButton_clicked);
    connect(h, &ParHandler::updated, this, &SetPositionWidget::doUpdateEnabled);

    showRadarState(C::Offline);
}

SetPositionWidget::~SetPositionWidget()
{
    delete m_ui;
}

bool SetPositionWidget::checkPreset(const QJsonObject& preset) const
{
    for (const Field& f : m_fields) {
        if (!preset.contains(f.key))
            return false;
    }
    return true;
}

void SetPositionWidget::applyPreset(const QJsonObject& preset)
{
    // Not a number reads as 0; the spin boxes keep every value within their ranges.
    Values values;
    for (size_t i = 0; i < m_fields.size(); ++i)
        values[i] = preset.value(m_fields[i].key).toDouble(0.0);
    doFill(values, false);
}

QJsonObject SetPositionWidget::currentPreset() const
{
    QJsonObject preset;
    for (const Field& f : m_fields)
        preset.insert(f.key, f.spin->value());
    return preset;
}

void SetPositionWidget::showPosition(double height, double xOffset, double yOffset, double azimuth,
                                     double altitude, double roll)
{
    doFill({height, xOffset, yOffset, azimuth, altitude, roll}, true);
    m_parHandler->extendDataTimeout();
    m_parHandler->extendHideTimeout();
    // All six arrived together: every one ends on received, changed or not.
    m_parHandler->setAllStatesExcept(ParStateLabel::ReceivedFromRadar, {});
    m_parHandler->updateDataTimer();
}

void SetPositionWidget::fillPosition(double height, double xOffset, double yOffset, double azimuth,
                                     double altitude, double roll)
{
    doFill({height, xOffset, yOffset, azimuth, altitude, roll}, false);
}

void SetPositionWidget::doFill(const Values& values, bool fromRadar)
{
    for (size_t i = 0; i < m_fields.size(); ++i) {
        QDoubleSpinBox* spin = m_fields[i].spin;
        if (fromRadar) {
            ReadBackMark::setValue(spin, values[i]);
        } else if (std::isfinite(values[i])) {
            spin->setValue(values[i]);
            ReadBackMark::clear(spin);
        }
    }
}

void SetPositionWidget::setAutoGetData(bool autoGet)
{
    m_autoGetData = autoGet;
}

void SetPositionWidget::showRadarState(int state)
{
    const bool wasWorking = m_radarWorking;
    m_radarWorking = C::isWorking(state);
    // Outcomes of a radar that stopped talking mean nothing; unsent edits stay marked.
    if (!C::isOnline(state))
        m_parHandler->hideStates(true);
    doUpdateEnabled();
    if (m_radarWorking && !wasWorking && m_autoGetData)
        on_getPositionButton_clicked();
}

void SetPositionWidget::showCommandState(int command, int state, int error)
{
    m_parHandler->showCommandState(command, state, error);
}

void SetPositionWidget::on_getPositionButton_clicked()
{
    m_parHandler->hideStates(false);
    emit getPosition();
}

void SetPositionWidget::on_setPositionButton_clicked()
{
    m_parHandler->hideStates(false);
    const auto v = [this](size_t i) { return m_fields[i].spin->value(); };
    emit setPosition(v(0), v(1), v(2), v(3), v(4), v(5));
}

void SetPositionWidget::on_addPresetButton_clicked()
{
    addPreset(currentPreset());
}

void SetPositionWidget::doUpdateEnabled()
{
    GroupedWidget::setEnabled(m_radarWorking && !m_parHandler->isWaiting());
}

void SetPositionWidget::resizeEvent(QResizeEvent* event)
{
    PresetedWidget::resizeEvent(event);
    doFitAddPresetButton(m_ui->addPresetButton, m_ui->getPositionButton);
}
