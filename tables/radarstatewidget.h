#pragma once

#include "statelabel.h"

// The radar's state in the status bar: wrong data, silent, busy or working.
class RadarStateWidget : public StateLabel
{
    Q_OBJECT

public:
    explicit RadarStateWidget(QWidget* parent = nullptr);

public slots:
    void showRadarState(int state);
};
