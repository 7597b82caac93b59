#include "tvmsconfigwidget.h"

#include "tvmsconfigkeys.h"
#include "ui_tvmsconfigwidget.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>

namespace K = TvmsConfigKeys;

TvmsConfigWidget::TvmsConfigWidget(QWidget* parent, Qt::WindowFlags flags)
    : StandaloneWidget(parent, flags)
    , m_ui(new Ui::TvmsConfigWidget)
{
    m_ui->setupUi(this);
    // At least 480 x 320, and never less than the three groups need.
    setMinimumSize(minimumSize().expandedTo(layout()->minimumSize()));
    resize(size().expandedTo(sizeHint()));
    for (QDoubleSpinBox* spin : {m_ui->xOffsetSpin, m_ui->yOffsetSpin, m_ui->zOffsetSpin,
                                 m_ui->azimuthMisalignmentSpin, m_ui->altitudeMisalignmentSpin,
                                 m_ui->horizontalViewAngleSpin})
        connect(spin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &TvmsConfigWidget::onConfigChanged);
    connect(m_ui->videoDelaySpin, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &TvmsConfigWidget::onConfigChanged);
}

TvmsConfigWidget::~TvmsConfigWidget()
{
    delete m_ui;
}

QJsonObject TvmsConfigWidget::makeConfig() const
{
    return QJsonObject{
        {K::XOffset, m_ui->xOffsetSpin->value()},
        {K::YOffset, m_ui->yOffsetSpin->value()},
        {K::ZOffset, m_ui->zOffsetSpin->value()},
        {K::AzimuthMisalignment, m_ui->azimuthMisalignmentSpin->value()},
        {K::AltitudeMisalignment, m_ui->altitudeMisalignmentSpin->value()},
        {K::HorizontalViewAngle, m_ui->horizontalViewAngleSpin->value()},
        {K::VideoDelay, m_ui->videoDelaySpin->value()},
    };
}

void TvmsConfigWidget::setTvmsConfig(const QJsonObject& config)
{
    if (m_emittingConfig)
        return; // the echo of our own Apply
    if (config.isEmpty()) {
        // A profile without a camera configuration gets what the controls hold.
        doApply();
        return;
    }
    m_storedConfig = config;
}

void TvmsConfigWidget::onConfigChanged()
{
    m_configChanged = true;
    doUpdateButtons();
}

void TvmsConfigWidget::doLoadStoredConfig()
{
    // A key that is absent leaves its control as it is; the controls clamp the rest.
    const auto load = [this](QLatin1String key, QDoubleSpinBox* spin) {
        if (m_storedConfig.contains(key))
            spin->setValue(m_storedConfig.value(key).toDouble(0.0));
    };
    load(K::XOffset, m_ui->xOffsetSpin);
    load(K::YOffset, m_ui->yOffsetSpin);
    load(K::ZOffset, m_ui->zOffsetSpin);
    load(K::AzimuthMisalignment, m_ui->azimuthMisalignmentSpin);
    load(K::AltitudeMisalignment, m_ui->altitudeMisalignmentSpin);
    load(K::HorizontalViewAngle, m_ui->horizontalViewAngleSpin);
    if (m_storedConfig.contains(K::VideoDelay))
        m_ui->videoDelaySpin->setValue(m_storedConfig.value(K::VideoDelay).toInt(0));
    m_configChanged = false;
    doUpdateButtons();
}

void TvmsConfigWidget::doApply()
{
    m_storedConfig = makeConfig();
    m_emittingConfig = true;
    emit tvmsConfigChanged(m_storedConfig);
    m_emittingConfig = false;
    m_configChanged = false;
    doUpdateButtons();
}

void TvmsConfigWidget::doUpdateButtons()
{
    // Apply stays pressable with nothing pending: it then publishes the same values again.
    m_ui->tvmsConfigButtonBox->button(QDialogButtonBox::Apply)->setEnabled(true);
}

void TvmsConfigWidget::on_tvmsConfigButtonBox_clicked(QAbstractButton* button)
{
    switch (m_ui->tvmsConfigButtonBox->standardButton(button)) {
    case QDialogButtonBox::Apply: doApply(); break;
    case QDialogButtonBox::Close: close(); break;
    default: break;
    }
}

void TvmsConfigWidget::showEvent(QShowEvent* event)
{
    StandaloneWidget::showEvent(event);
    doLoadStoredConfig();
}

void TvmsConfigWidget::closeEvent(QCloseEvent* event)
{
    if (m_configChanged) {
        const auto answer = QMessageBox::question(this, tr("Warning"),
                                                  tr("All unsaved data will be lost. Continue?"),
                                                  QMessageBox::Yes | QMessageBox::No);
        if (answer != QMessageBox::Yes) {
            event->ignore();
            return;
        }
        m_configChanged = false;
    }
    StandaloneWidget::closeEvent(event);
}
