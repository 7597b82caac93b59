#include "generalinfowidget.h"

#include "iorvexclient.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>

namespace {
constexpr int RateDecimals = 1;

// The value labels grow by this many characters' widths at a time.
constexpr int ValueWidthStep = 4;

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}
} // namespace

GeneralInfoWidget::GeneralInfoWidget(QWidget* parent)
    : GroupedWidget(parent)
{
    setObjectName(QStringLiteral("GeneralInfoWidget"));
    auto* layout = new QGridLayout(this);
    layout->setObjectName(QStringLiteral("generalInfoWidgetLayout"));
    if (parent)
        layout->setContentsMargins(0, 0, 0, 0);

    auto* uptimeLabel = new QLabel(tr("Internal time (uptime)"), this);
    uptimeLabel->setObjectName(QStringLiteral("uptimeLabel"));
    m_uptimeValueLabel = new QLabel(this);
    m_uptimeValueLabel->setObjectName(QStringLiteral("uptimeValueLabel"));
    auto* cycleNumberLabel = new QLabel(tr("Measure cycle number"), this);
    cycleNumberLabel->setObjectName(QStringLiteral("cycleNumberLabel"));
    m_cycleNumberValueLabel = new QLabel(this);
    m_cycleNumberValueLabel->setObjectName(QStringLiteral("cycleNumberValueLabel"));

    layout->addWidget(uptimeLabel, 0, 0);
    layout->addWidget(m_uptimeValueLabel, 0, 1);
    layout->addWidget(cycleNumberLabel, 1, 0);
    layout->addWidget(m_cycleNumberValueLabel, 1, 1);
    layout->setColumnStretch(1, 1);

    showRadarState(IOrvexClient::Offline);
}

void GeneralInfoWidget::changeEvent(QEvent* event)
{
    GroupedWidget::changeEvent(event);
    // Another font or language: the next values are measured again.
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LanguageChange) {
        m_uptimeFittedLength = 0;
        m_cycleNumberFittedLength = 0;
    }
}

void GeneralInfoWidget::showRadarState(int state)
{
    m_online = IOrvexClient::isOnline(state);
    if (!m_online) {
        // The next rate needs two fresh samples.
        m_lastSampleTime = QDateTime();
        m_cycleRate = 0.0;
        m_uptimeValueLabel->clear();
        m_cycleNumberValueLabel->clear();
    }
    GroupedWidget::setEnabled(m_online);
}

void GeneralInfoWidget::startFilling()
{
    // Only the two values change with a frame; their captions are not drawn again.
    m_uptimeValueLabel->setUpdatesEnabled(false);
    m_cycleNumberValueLabel->setUpdatesEnabled(false);
}

void GeneralInfoWidget::finishFilling()
{
    m_uptimeValueLabel->setUpdatesEnabled(true);
    m_cycleNumberValueLabel->setUpdatesEnabled(true);
}

void GeneralInfoWidget::setFrameDateTimeUtc(const QDateTime& dateTime)
{
    m_frameTime = dateTime;
}

void GeneralInfoWidget::showUptimeInfo(int days, int hours, int minutes, int seconds,
                                       int milliseconds)
{
    // Built from the numbers as they come, so that odd values still show.
    const QString timeOfDay = QStringLiteral("%1:%2:%3.%4")
                                  .arg(twoDigits(hours), twoDigits(minutes), twoDigits(seconds))
                                  .arg(milliseconds, 3, 10, QLatin1Char('0'));
    doShowValue(m_uptimeValueLabel, m_uptimeFittedLength,
                tr("%1 day(s) %2").arg(days).arg(timeOfDay));
}

void GeneralInfoWidget::showCycleNumber(quint64 number)
{
    if (m_online && number % RateSampleCycles == 1) {
        const qint64 elapsedMs
            = m_lastSampleTime.isValid() ? m_lastSampleTime.msecsTo(m_frameTime) : 0;
        // Two samples with the same frame time give no rate rather than an infinite one.
        m_cycleRate = elapsedMs > 0 ? RateSampleCycles * 1000.0 / double(elapsedMs) : 0.0;
        m_lastSampleTime = m_frameTime;
    }
    QString text = QString::number(number);
    if (m_online && m_cycleRate > 0.0)
        text += tr(" (%1 c/s)").arg(m_cycleRate, 0, 'f', RateDecimals);
    doShowValue(m_cycleNumberValueLabel, m_cycleNumberFittedLength, text);
}

void GeneralInfoWidget::doShowValue(QLabel* label, int& fittedLength, const QString& text)
{
    // Both values change with every radar frame. A label whose size is fixed changes its
    // text without asking the whole window for a new layout; it only grows (by a few
    // characters at a time) when a text is wider than it. Texts no longer than one that
    // fitted are not even measured: their digits change, not their width.
    const bool fixed = label->minimumWidth() == label->maximumWidth();
    if (text.size() > fittedLength || !fixed) {
        const QFontMetrics metrics = label->fontMetrics();
        const int width = metrics.horizontalAdvance(text);
        if (width > label->maximumWidth() || !fixed) {
            const int step = ValueWidthStep * metrics.averageCharWidth();
            label->setFixedSize((width / step + 1) * step, metrics.height());
        }
        fittedLength = text.size();
    }
    label->setText(text);
}
