#include "imitatorobjectwidget.h"

#include "iorvexclient.h"
#include "roadobject.h"
#include "statelabel.h"

#include <QVBoxLayout>

namespace {
const QColor NoDataColor(191, 0, 0);
const QColor SpeedColor(0, 0, 0);
} // namespace

ImitatorObjectWidget::ImitatorObjectWidget(QWidget* parent)
    : GroupedWidget(parent)
    , m_label(new StateLabel(this))
{
    m_label->setObjectName(QStringLiteral("imitatorSpeedLabel"));
    m_label->setTextFormat(Qt::RichText);
    m_label->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_label);
}

QString ImitatorObjectWidget::text() const
{
    return m_label->text();
}

void ImitatorObjectWidget::startFilling()
{
    // A hidden display keeps the text it had; it shows again what it showed last.
    if (!isVisible())
        return;
    setUpdatesEnabled(false);
    m_label->clear();
}

void ImitatorObjectWidget::addObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                                     double yRange, double length, const QDateTime& lastDetected)
{
    // Only the first object of a frame counts: the imitator's target.
    if (!isVisible() || !m_label->text().isEmpty())
        return;
    m_firstObject = RoadObject{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected};
    m_label->setText(QString::number(RoadObject::kmh(xSpeed), 'f', 1)
                     + (m_twoLines ? QStringLiteral("<br>") : QStringLiteral(" "))
                     + QStringLiteral("<nobr>") + tr("km/h") + QStringLiteral("</nobr>"));
}

void ImitatorObjectWidget::finishFilling()
{
    if (!isVisible())
        return;
    if (m_label->text().isEmpty()) {
        QString noData = tr("no data");
        if (m_twoLines)
            noData.replace(QLatin1Char(' '), QStringLiteral("<br>"));
        m_label->setText(noData);
        m_label->setTextColor(NoDataColor);
        m_label->setFontPointSize(NoDataPointSize);
    } else {
        m_label->setTextColor(SpeedColor);
        m_label->setFontPointSize(SpeedPointSize);
    }
    setUpdatesEnabled(true);
}

void ImitatorObjectWidget::showRadarState(int state)
{
    const bool working = IOrvexClient::isWorking(state);
    if (!working) {
        startFilling();
        finishFilling();
    }
    GroupedWidget::setEnabled(working);
}

void ImitatorObjectWidget::clear()
{
    m_label->clear();
}
