#include "readbackmark.h"

#include "commandstatecolor.h"

#include <QDoubleSpinBox>

#include <cmath>

namespace {
// Where the box keeps the radar's value while it is marked.
constexpr char ReportedProperty[] = "radarReportedValue";
} // namespace

void ReadBackMark::setValue(QDoubleSpinBox* spin, double value)
{
    if (!std::isfinite(value))
        return;
    spin->setValue(value);
    // The box rounds to its decimals; only a value beyond its ends is clamped.
    const double step = std::pow(10.0, -spin->decimals()) / 2;
    if (value >= spin->minimum() - step && value <= spin->maximum() + step) {
        clear(spin);
        return;
    }
    spin->setProperty(ReportedProperty, value);
    const QLocale locale = spin->locale();
    const int decimals = spin->decimals();
    spin->setToolTip(tr("The radar reports %1, outside the range %2 to %3")
                         .arg(locale.toString(value, 'f', decimals),
                              locale.toString(spin->minimum(), 'f', decimals),
                              locale.toString(spin->maximum(), 'f', decimals)));
    QPalette palette = spin->palette();
    palette.setColor(QPalette::Text, QColor(CommandStateColor::Failed));
    spin->setPalette(palette);
}

void ReadBackMark::clear(QDoubleSpinBox* spin)
{
    if (!spin->property(ReportedProperty).isValid())
        return;
    spin->setProperty(ReportedProperty, QVariant());
    spin->setToolTip(QString());
    spin->setPalette(QPalette());
}

QVariant ReadBackMark::reportedValue(const QDoubleSpinBox* spin)
{
    return spin->property(ReportedProperty);
}
