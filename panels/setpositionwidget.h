#pragma once

#include "presetedwidget.h"

#include <array>

class ParHandler;
class ParStateLabel;
class QDoubleSpinBox;

namespace Ui {
class SetPositionWidget;
}

// The radar's mounting position: height above the road, X and Y offsets, azimuth,
// elevation and roll. The operator reads it from the radar, edits it or fills it from
// a preset or from the video, and writes it to the radar; the scheme and the video show
// a written position at once, before the radar confirms it. Each value has a label that
// follows it to the radar and back.
class SetPositionWidget : public PresetedWidget
{
    Q_OBJECT

public:
    // The values as the panel's handler knows them.
    enum Parameter {
        XOffsetParameter = 1,
        YOffsetParameter = 2,
        HeightParameter = 3,
        AzimuthParameter = 4,
        AltitudeParameter = 5,
        RollParameter = 6,
    };
    static constexpr int ValueCount = 6;

    explicit SetPositionWidget(QWidget* parent = nullptr);
    ~SetPositionWidget() override;

    ParHandler* parHandler() const { return m_parHandler; }

    // Preset hooks: a preset holds all six values under their keys.
    using PresetedWidget::applyPreset;
    bool checkPreset(const QJsonObject& preset) const override;
    void applyPreset(const QJsonObject& preset) override;
    QJsonObject currentPreset() const override;

signals:
    // Height, X offset, Y offset, azimuth, elevation, roll: the radar's pose, in this
    // order wherever it travels.
    void setPosition(double height, double xOffset, double yOffset, double azimuth, double altitude,
                     double roll);
    void getPosition();

public slots:
    void showPosition(double height, double xOffset, double yOffset, double azimuth,
                      double altitude, double roll);
    // Picked up from the video: fills the inputs, sends nothing.
    void fillPosition(double height, double xOffset, double yOffset, double azimuth,
                      double altitude, double roll);
    void setAutoGetData(bool autoGet);
    void showRadarState(int state);
    void showCommandState(int command, int state, int error);

    void on_getPositionButton_clicked();
    void on_setPositionButton_clicked();
    void on_addPresetButton_clicked();
    void doUpdateEnabled();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    // One value of the pose: its input, its label and its handler and preset names.
    struct Field
    {
        QDoubleSpinBox* spin;
        ParStateLabel* label;
        int parameter;
        int setCommand;
        int getCommand;
        QLatin1String key;
    };
    using Values = std::array<double, ValueCount>;

    void doFill(const Values& values, bool fromRadar);

    Ui::SetPositionWidget* m_ui = nullptr;
    ParHandler* m_parHandler = nullptr;
    std::array<Field, ValueCount> m_fields; // in the pose's order
    bool m_autoGetData = false;
    bool m_radarWorking = false;
};
