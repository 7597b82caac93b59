#pragma once

#include "presetedwidget.h"

#include <array>

class CmdHandler;
class ParHandler;
class QDoubleSpinBox;

namespace Ui {
class SetPolygonWidget;
}

// The radar's limitation area 0: a rectangle of the road plane (the radar takes it as
// a quadrilateral of four vertices) and bounds on the X and Y speeds of the objects
// it accepts, read from and written to the radar, and its use switched on and off.
// Every value has a label that follows it to the radar and back; answers about other
// limitation areas are none of this panel's business.
class SetPolygonWidget : public PresetedWidget
{
    Q_OBJECT

public:
    // The values as the panel's parameter handler knows them.
    enum Slot {
        SpeedXMinSlot = 1,
        SpeedXMaxSlot = 2,
        SpeedYMinSlot = 3,
        SpeedYMaxSlot = 4,
        VertexCountSlot = 5,
        // X of vertices 0 to 3, then Y of vertices 0 to 3.
        PointX0Slot = 6,
        PointY0Slot = 10,
        SlotCount = 13,
    };
    // The radar's limitation area is always a quadrilateral.
    static constexpr int VertexCount = 4;
    static constexpr quint8 Polygon = 0; // the only area edited and shown

    explicit SetPolygonWidget(QWidget* parent = nullptr);
    ~SetPolygonWidget() override;

    ParHandler* parHandler() const { return m_parHandler; }
    CmdHandler* cmdHandler() const { return m_cmdHandler; }
    quint8 usageMask() const { return m_usageMask; }

    // Preset hooks: a preset holds the eight bounds and the vertex count.
    using PresetedWidget::applyPreset;
    bool checkPreset(const QJsonObject& preset) const override;
    void applyPreset(const QJsonObject& preset) override;
    QJsonObject currentPreset() const override;

signals:
    void setPolygonUsage(quint8 mask);
    void getPolygonUsage();
    void setPolygonTreatParam(quint8 polygon, quint8 param, quint8 value);
    void getPolygonTreatParam(quint8 polygon, quint8 param);
    void setPolygonSpeedParam(quint8 polygon, quint8 param, double value);
    void getPolygonSpeedParam(quint8 polygon, quint8 param);
    void setPolygonPointParam(quint8 polygon, quint8 param, double value);
    void getPolygonPointParam(quint8 polygon, quint8 param);
    void reinitPolygons();

public slots:
    void setAutoGetData(bool autoGet);
    void showRadarState(int state);
    void showCommandState(int command, int state, int error);
    void showPolygonUsage(quint8 mask);
    void showPolygonTreatParam(quint8 polygon, quint8 param, quint8 value);
    void showPolygonSpeedParam(quint8 polygon, quint8 param, double value);
    void showPolygonPointParam(quint8 polygon, quint8 param, double value);

    void on_getPolygonButton_clicked();
    void on_setPolygonButton_clicked();
    void on_enablePolygonButton_clicked(bool checked);
    void on_enablePolygonButton_toggled(bool checked);
    void on_addPresetButton_clicked();
    void on_spdXminSpin_valueChanged(double value);
    void on_spdXmaxSpin_valueChanged(double value);
    void on_spdYminSpin_valueChanged(double value);
    void on_spdYmaxSpin_valueChanged(double value);
    void on_pointCountSpin_valueChanged(int value);
    void on_posXminSpin_valueChanged(double value);
    void on_posXmaxSpin_valueChanged(double value);
    void on_posYminSpin_valueChanged(double value);
    void on_posYmaxSpin_valueChanged(double value);
    void doUpdateEnabled();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    // One of the eight bounds: its input, its handler slot and its preset key.
    struct Bound
    {
        QDoubleSpinBox* spin;
        int slot;
        QLatin1String key;
    };

    void doHideStates();
    void doMarkChanged(int slot, QDoubleSpinBox* spin);
    void doShowReceived(int slot, QDoubleSpinBox* spin, double value);
    QDoubleSpinBox* pointSpin(quint8 param) const;

    Ui::SetPolygonWidget* m_ui = nullptr;
    ParHandler* m_parHandler = nullptr;
    CmdHandler* m_cmdHandler = nullptr;
    std::array<Bound, 8> m_bounds; // speeds X min, X max, Y min, Y max, then positions
    bool m_autoGetData = false;
    bool m_radarWorking = false;
    quint8 m_usageMask = 0; // as the radar last reported it
};
