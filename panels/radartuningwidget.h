#pragma once

#include "groupedwidget.h"

class ParHandler;

namespace Ui {
class RadarTuningWidget;
}

// Fine tuning: the radar's frequency index and sensitivity threshold, read from and
// written to the radar, each with a label that follows its value.
class RadarTuningWidget : public GroupedWidget
{
    Q_OBJECT

public:
    // The parameters as the panel's handler knows them.
    enum Parameter {
        SensitivityParameter = 1,
        FrequencyIndexParameter = 2,
    };

    explicit RadarTuningWidget(QWidget* parent = nullptr);
    ~RadarTuningWidget() override;

    ParHandler* parHandler() const { return m_parHandler; }

signals:
    void setFrequencyIndex(int value);
    void getFrequencyIndex();
    void setRadarSensitivity(int value);
    void getRadarSensitivity();

public slots:
    void setAutoGetData(bool autoGet);
    void showRadarState(int state);
    void showCommandState(int command, int state, int error);
    void showFrequencyIndex(int value);
    void showRadarSensitivity(int value);

private slots:
    void onGetClicked();
    void onSetClicked();
    void doUpdateEnabled();

private:
    void doShowReceived(int parameter);

    Ui::RadarTuningWidget* m_ui = nullptr;
    ParHandler* m_parHandler = nullptr;
    bool m_autoGetData = false;
    bool m_radarWorking = false; // the panel's enabled flag
};
