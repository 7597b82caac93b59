#pragma once

#include <QWidget>

// A panel that sits in a titled group box, directly or inside one more container.
// Enabling or disabling the panel switches that group box, so its title greys out
// together with the panel.
class GroupedWidget : public QWidget
{
    Q_OBJECT

public:
    explicit GroupedWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

public slots:
    void setEnabled(bool enabled);
};
