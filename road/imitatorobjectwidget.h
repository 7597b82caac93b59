#pragma once

#include "groupedwidget.h"
#include "roadobject.h"

class StateLabel;

// The speed of the first object of every radar frame, in very large digits. While the
// radar's imitator runs, that object is the target it generates, so the operator reads
// the speed the radar measures for a known, simulated vehicle.
class ImitatorObjectWidget : public GroupedWidget
{
    Q_OBJECT

public:
    static constexpr int SpeedPointSize = 144;
    static constexpr int NoDataPointSize = 96;

    explicit ImitatorObjectWidget(QWidget* parent = nullptr);

    // Number and unit (and the two words of "no data") on separate lines, for a narrow box.
    void setTwoLines(bool twoLines) { m_twoLines = twoLines; }
    bool twoLines() const { return m_twoLines; }
    QString text() const;

public slots:
    // A vertical scheme leaves the display a narrow column: two lines then.
    void setDrawVertical(bool drawVertical) { setTwoLines(drawVertical); }
    void startFilling();
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling();
    void showRadarState(int state);
    void clear();

private:
    StateLabel* m_label = nullptr;
    bool m_twoLines = false;
    RoadObject m_firstObject;
};
