#include "setpolygonwidget.h"

#include "cmdhandler.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "profilekeys.h"
#include "radarparamnumbering.h"
#include "readbackmark.h"
#include "ui_setpolygonwidget.h"

using C = IOrvexClient;
using P = RadarParamNumbering;
namespace K = ProfileKeys::LimitationsPreset;

namespace {

// The rectangle's corners as the radar's vertices 0 to 3: (Xmin, Ymin), (Xmax, Ymin),
// (Xmax, Ymax), (Xmin, Ymax). Point params 0 to 3 are their X, 8 to 11 their Y.
constexpr quint8 PointX(int vertex)
{
    return quint8(P::PointX0 + vertex);
}
constexpr quint8 PointY(int vertex)
{
    return quint8(P::PointY0 + vertex);
}

// The order in which the vertices' coordinates are read and written: vertex 0, 2, 1,
// 3, X before Y, so the rectangle's two defining corners come first.
constexpr quint8 PointOrder[]
    = {PointX(0), PointY(0), PointX(2), PointY(2), PointX(1), PointY(1), PointX(3), PointY(3)};

int pointSlot(quint8 param)
{
    return param < P::PointY0 ? SetPolygonWidget::PointX0Slot + param
                              : SetPolygonWidget::PointY0Slot + param - P::PointY0;
}

} // namespace

SetPolygonWidget::SetPolygonWidget(QWidget* parent)
    : PresetedWidget(parent)
    , m_ui(new Ui::SetPolygonWidget)
    , m_parHandler(new ParHandler(this))
    , m_cmdHandler(new CmdHandler(this))
{
    m_ui->setupUi(this);
    setPresetButtonsLayout(m_ui->presetButtonsLayout);
    m_bounds = {{
        {m_ui->spdXminSpin, SpeedXMinSlot, K::SpeedXMin},
        {m_ui->spdXmaxSpin, SpeedXMaxSlot, K::SpeedXMax},
        {m_ui->spdYminSpin, SpeedYMinSlot, K::SpeedYMin},
        {m_ui->spdYmaxSpin, SpeedYMaxSlot, K::SpeedYMax},
        {m_ui->posXminSpin, pointSlot(PointX(0)), K::PositionXMin},
        {m_ui->posXmaxSpin, pointSlot(PointX(2)), K::PositionXMax},
        {m_ui->posYminSpin, pointSlot(PointY(1)), K::PositionYMin},
        {m_ui->posYmaxSpin, pointSlot(PointY(3)), K::PositionYMax},
    }};

    ParHandler* h = m_parHandler;
    const auto assign = [h](int slot, int setBase, int getBase, quint8 param) {
        h->assignSetCommand(P::fullPolygonCmdId(setBase, Polygon, param), slot);
        h->assignGetCommand(P::fullPolygonCmdId(getBase, Polygon, param), slot);
    };
    for (quint8 p = 0; p < P::SpeedParamCount; ++p)
        assign(SpeedXMinSlot + p, C::CmdSetPolygonSpeedParam, C::CmdGetPolygonSpeedParam, p);
    assign(VertexCountSlot, C::CmdSetPolygonTreatParam, C::CmdGetPolygonTreatParam,
           P::TreatVertexCount);
    for (quint8 param : PointOrder)
        assign(pointSlot(param), C::CmdSetPolygonPointParam, C::CmdGetPolygonPointParam, param);
    // Only the rectangle's bounds have labels; the other four coordinates follow them.
    h->assignStateLabel(SpeedXMinSlot, m_ui->spdXminResultLabel);
    h->assignStateLabel(SpeedXMaxSlot, m_ui->spdXmaxResultLabel);
    h->assignStateLabel(SpeedYMinSlot, m_ui->spdYminResultLabel);
    h->assignStateLabel(SpeedYMaxSlot, m_ui->spdYmaxResultLabel);
    h->assignStateLabel(VertexCountSlot, m_ui->pointCountResultLabel);
    h->assignStateLabel(pointSlot(PointX(0)), m_ui->posXminResultLabel);
    h->assignStateLabel(pointSlot(PointX(2)), m_ui->posXmaxResultLabel);
    h->assignStateLabel(pointSlot(PointY(1)), m_ui->posYminResultLabel);
    h->assignStateLabel(pointSlot(PointY(3)), m_ui->posYmaxResultLabel);
    m_cmdHandler->assignStateLabel(C::CmdReinitPolygons,
                                   m_cmdHandler->addStateLabel(m_ui->reinitStateWidget));
    m_cmdHandler->assignStateLabel(C::CmdSetPolygonUsage,
                                   m_cmdHandler->addStateLabel(m_ui->enablePolygonStateWidget));

    using S = SetPolygonWidget;
    using D = QDoubleSpinBox;
    const auto valueChanged = qOverload<double>(&D::valueChanged);
    connect(m_ui->getPolygonButton, &QPushButton::clicked, this, &S::on_getPolygonButton_clicked);
    connect(m_ui->setPolygonButton, &QPushButton::clicked, this, &S::on_setPolygonButton_clicked);
    connect(m_ui->enablePolygonButton, &QPushButton::clicked, this,
            &S::on_enablePolygonButton_clicked);
    connect(m_ui->enablePolygonButton, &QPushButton::toggled, this,
            &S::on_enablePolygonButton_toggled);
    connect(m_ui->addPresetButton, &QToolButton::clicked, this, &S::on_addPresetButton_clicked);
    connect(m_ui->spdXminSpin, valueChanged, this, &S::on_spdXminSpin_valueChanged);
    connect(m_ui->spdXmaxSpin, valueChanged, this, &S::on_spdXmaxSpin_valueChanged);
    connect(m_ui->spdYminSpin, valueChanged, this, &S::on_spdYminSpin_valueChanged);
    connect(m_ui->spdYmaxSpin, valueChanged, this, &S::on_spdYmaxSpin_valueChanged);
    connect(m_ui->pointCountSpin, qOverload<int>(&QSpinBox::valueChanged), this,
            &S::on_pointCountSpin_valueChanged);
    connect(m_ui->posXminSpin, valueChanged, this, &S::on_posXminSpin_valueChanged);
    connect(m_ui->posXmaxSpin, valueChanged, this, &S::on_posXmaxSpin_valueChanged);
    connect(m_ui->posYminSpin, valueChanged, this, &S::on_posYminSpin_valueChanged);
    connect(m_ui->posYmaxSpin, valueChanged, this, &S::on_posYmaxSpin_valueChanged);
    connect(m_parHandler, &ParHandler::updated, this, &S::doUpdateEnabled);
    connect(m_cmdHandler, &CmdHandler::updated, this, &S::doUpdateEnabled);

    on_enablePolygonButton_toggled(false);
    doUpdateEnabled();
}

SetPolygonWidget::~SetPolygonWidget()
{
    delete m_ui;
}

// --- Presets ------------------------------------------------------------------------

bool SetPolygonWidget::checkPreset(const QJsonObject& preset) const
{
    if (!preset.contains(K::PointCount))
        return false;
    for (const Bound& b : m_bounds) {
        if (!preset.contains(b.key))
            return false;
    }
    return true;
}

void SetPolygonWidget::applyPreset(const QJsonObject& preset)
{
    // Whatever vertex count a preset names, the area is a quadrilateral. A value that
    // is not a number reads as 0, which the spin box then brings within its range.
    m_ui->pointCountSpin->setValue(VertexCount);
    for (const Bound& b : m_bounds) {
        b.spin->setValue(preset.value(b.key).toDouble(0.0));
        ReadBackMark::clear(b.spin);
    }
}

QJsonObject SetPolygonWidget::currentPreset() const
{
    QJsonObject preset{{K::PointCount, VertexCount}};
    for (const Bound& b : m_bounds)
        preset.insert(b.key, b.spin->value());
    return preset;
}

// --- Requests -----------------------------------------------------------------------

void SetPolygonWidget::on_getPolygonButton_clicked()
{
    m_ui->reinitCheck->setChecked(false);
    doHideStates();
    for (quint8 p = P::SpeedXMin; p <= P::SpeedYMax; ++p)
        emit getPolygonSpeedParam(Polygon, p);
    emit getPolygonTreatParam(Polygon, P::TreatVertexCount);
    for (quint8 param : PointOrder)
        emit getPolygonPointParam(Polygon, param);
}

void SetPolygonWidget::on_setPolygonButton_clicked()
{
    m_ui->reinitCheck->setChecked(true);
    doHideStates();
    emit setPolygonSpeedParam(Polygon, P::SpeedXMin, m_ui->spdXminSpin->value());
    emit setPolygonSpeedParam(Polygon, P::SpeedXMax, m_ui->spdXmaxSpin->value());
    emit setPolygonSpeedParam(Polygon, P::SpeedYMin, m_ui->spdYminSpin->value());
    emit setPolygonSpeedParam(Polygon, P::SpeedYMax, m_ui->spdYmaxSpin->value());
    emit setPolygonTreatParam(Polygon, P::TreatVertexCount, quint8(m_ui->pointCountSpin->value()));
    const double xMin = m_ui->posXminSpin->value(), xMax = m_ui->posXmaxSpin->value();
    const double yMin = m_ui->posYminSpin->value(), yMax = m_ui->posYmaxSpin->value();
    const double xs[VertexCount] = {xMin, xMax, xMax, xMin};
    const double ys[VertexCount] = {yMin, yMin, yMax, yMax};
    for (quint8 param : PointOrder) {
        const bool isX = param < P::PointY0;
        const int vertex = isX ? param - P::PointX0 : param - P::PointY0;
        emit setPolygonPointParam(Polygon, param, isX ? xs[vertex] : ys[vertex]);
    }
    // The radar takes the new area into use only when told to.
    emit reinitPolygons();
}

void SetPolygonWidget::on_enablePolygonButton_clicked(bool checked)
{
    doHideStates();
    emit setPolygonUsage(checked ? 1 : 0);
}

void SetPolygonWidget::on_enablePolygonButton_toggled(bool checked)
{
    QPushButton* button = m_ui->enablePolygonButton;
    button->setText(checked ? tr("Disable limitations") : tr("Enable limitations"));
    CmdHandler::fixButtonMinWidth(button);
}

void SetPolygonWidget::on_addPresetButton_clicked()
{
    addPreset(currentPreset());
}

void SetPolygonWidget::doHideStates()
{
    m_parHandler->hideStates(false);
    m_cmdHandler->hideStates();
}

// --- Edits --------------------------------------------------------------------------

void SetPolygonWidget::doMarkChanged(int slot, QDoubleSpinBox* spin)
{
    ReadBackMark::clear(spin);
    m_parHandler->setState(slot, ParStateLabel::ValueChanged, true);
}

void SetPolygonWidget::on_spdXminSpin_valueChanged(double)
{
    doMarkChanged(SpeedXMinSlot, m_ui->spdXminSpin);
}

void SetPolygonWidget::on_spdXmaxSpin_valueChanged(double)
{
    doMarkChanged(SpeedXMaxSlot, m_ui->spdXmaxSpin);
}

void SetPolygonWidget::on_spdYminSpin_valueChanged(double)
{
    doMarkChanged(SpeedYMinSlot, m_ui->spdYminSpin);
}

void SetPolygonWidget::on_spdYmaxSpin_valueChanged(double)
{
    doMarkChanged(SpeedYMaxSlot, m_ui->spdYmaxSpin);
}

void SetPolygonWidget::on_pointCountSpin_valueChanged(int)
{
    m_parHandler->setState(VertexCountSlot, ParStateLabel::ValueChanged, true);
}

void SetPolygonWidget::on_posXminSpin_valueChanged(double)
{
    doMarkChanged(pointSlot(PointX(0)), m_ui->posXminSpin);
}

void SetPolygonWidget::on_posXmaxSpin_valueChanged(double)
{
    doMarkChanged(pointSlot(PointX(2)), m_ui->posXmaxSpin);
}

void SetPolygonWidget::on_posYminSpin_valueChanged(double)
{
    doMarkChanged(pointSlot(PointY(1)), m_ui->posYminSpin);
}

void SetPolygonWidget::on_posYmaxSpin_valueChanged(double)
{
    doMarkChanged(pointSlot(PointY(3)), m_ui->posYmaxSpin);
}

// --- The radar's answers ------------------------------------------------------------

void SetPolygonWidget::setAutoGetData(bool autoGet)
{
    m_autoGetData = autoGet;
}

void SetPolygonWidget::showRadarState(int state)
{
    const bool wasWorking = m_radarWorking;
    m_radarWorking = C::isWorking(state);
    if (!m_radarWorking) {
        m_usageMask = 0;
        m_ui->enablePolygonButton->setChecked(false);
    }
    if (!C::isOnline(state))
        doHideStates();
    doUpdateEnabled();
    // Once the radar starts working: its area if the profile asks for it, and always
    // whether the area is in use.
    if (m_radarWorking && !wasWorking) {
        if (m_autoGetData)
            on_getPolygonButton_clicked();
        emit getPolygonUsage();
    }
}

void SetPolygonWidget::showCommandState(int command, int state, int error)
{
    if (!m_radarWorking)
        return;
    m_parHandler->showCommandState(command, state, error);
    m_cmdHandler->showCommandState(command, state, error);
    if (command != C::CmdSetPolygonUsage)
        return;
    // A switch the radar took is read back, so that the scheme hears of it too; one it
    // refused puts the button back as the radar last reported.
    if (state == C::Received)
        emit getPolygonUsage();
    else if (state == C::Error)
        m_ui->enablePolygonButton->setChecked(m_usageMask & 1);
}

void SetPolygonWidget::showPolygonUsage(quint8 mask)
{
    m_usageMask = mask;
    m_ui->enablePolygonButton->setChecked(mask & 1);
    m_cmdHandler->extendHideTimeout();
}

void SetPolygonWidget::showPolygonTreatParam(quint8 polygon, quint8 param, quint8 value)
{
    if (polygon != Polygon || param != P::TreatVertexCount)
        return;
    // Shown as reported for a moment, then back to the quadrilateral it always is.
    m_ui->pointCountSpin->setValue(value);
    m_ui->pointCountSpin->setValue(VertexCount);
    doShowReceived(VertexCountSlot, nullptr, 0.0);
}

void SetPolygonWidget::showPolygonSpeedParam(quint8 polygon, quint8 param, double value)
{
    if (polygon != Polygon || param > P::SpeedYMax)
        return;
    const Bound& b = m_bounds.at(param);
    doShowReceived(b.slot, b.spin, value);
}

void SetPolygonWidget::showPolygonPointParam(quint8 polygon, quint8 param, double value)
{
    // The rectangle reads back from vertex 0's X, vertex 2's X, vertex 1's Y and vertex
    // 3's Y; the other four coordinates are not shown.
    QDoubleSpinBox* spin = pointSpin(param);
    if (polygon != Polygon || !spin)
        return;
    doShowReceived(pointSlot(param), spin, value);
}

QDoubleSpinBox* SetPolygonWidget::pointSpin(quint8 param) const
{
    switch (param) {
    case PointX(0): return m_ui->posXminSpin;
    case PointX(2): return m_ui->posXmaxSpin;
    case PointY(1): return m_ui->posYminSpin;
    case PointY(3): return m_ui->posYmaxSpin;
    default: return nullptr;
    }
}

void SetPolygonWidget::doShowReceived(int slot, QDoubleSpinBox* spin, double value)
{
    if (spin)
        ReadBackMark::setValue(spin, value);
    m_parHandler->setState(slot, ParStateLabel::ReceivedFromRadar, true);
    m_parHandler->extendDataTimeout();
    m_parHandler->extendHideTimeout();
    m_parHandler->updateDataTimer();
}

void SetPolygonWidget::doUpdateEnabled()
{
    if (m_parHandler->isWaiting() || m_cmdHandler->isWaiting())
        GroupedWidget::setEnabled(false);
    else
        GroupedWidget::setEnabled(m_radarWorking);
}

void SetPolygonWidget::resizeEvent(QResizeEvent* event)
{
    PresetedWidget::resizeEvent(event);
    doFitAddPresetButton(m_ui->addPresetButton, m_ui->getPolygonButton);
}
