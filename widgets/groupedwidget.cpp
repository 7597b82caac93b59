#include "groupedwidget.h"

#include <QGroupBox>

GroupedWidget::GroupedWidget(QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags)
{ }

void GroupedWidget::setEnabled(bool enabled)
{
    if (isEnabled() == enabled)
        return;
    QWidget* parent = parentWidget();
    if (auto* box = qobject_cast<QGroupBox*>(parent)) {
        box->setEnabled(enabled);
        return;
    }
    if (parent) {
        if (auto* box = qobject_cast<QGroupBox*>(parent->parentWidget())) {
            box->setEnabled(enabled);
            return;
        }
    }
    QWidget::setEnabled(enabled);
}
