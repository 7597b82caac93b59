#pragma once

#include "standalonewidget.h"

#include <QJsonObject>
#include <QMap>

class AdvancedComboBox;
class QAbstractButton;
class QDoubleSpinBox;
class QFrame;
class QLabel;

namespace Ui {
class RoadConfigWidget;
}

// The window in which the operator describes the road the radar looks at: its
// cross-section, one row per strip from the left roadside over the left lanes, the
// median strip and the right lanes to the right roadside, and its course along the
// axis, one row per straight or curved section. Apply hands the finished road
// configuration on; the rows for the most lanes and sections the road can have exist
// from the start and are only shown or hidden, so a removed row keeps its values.
class RoadConfigWidget : public StandaloneWidget
{
    Q_OBJECT

public:
    enum PartType { MedianStrip = 0, Lane = 1, Roadside = 2 };
    enum SectionType { Straight = 0, LeftCurve = 1, RightCurve = 2 };

    static constexpr int MaxLaneCount = 10; // per side of the median strip
    static constexpr int MinSectionCount = 1;
    static constexpr int MaxSectionCount = 20;

    explicit RoadConfigWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~RoadConfigWidget() override;

    bool isConfigChanged() const { return m_configChanged; }

public slots:
    void setRoadConfig(const QJsonObject& config);
    void onConfigChanged();

signals:
    void roadConfigChanged(const QJsonObject& config);

private slots:
    void on_appendLeftLaneButton_clicked();
    void on_removeLeftLaneButton_clicked();
    void on_appendRightLaneButton_clicked();
    void on_removeRightLaneButton_clicked();
    void on_appendSectionButton_clicked();
    void on_removeSectionButton_clicked();
    void on_roadConfigButtonBox_clicked(QAbstractButton* button);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // One strip of the cross-section. Rows are keyed by slot: the lanes by their
    // distance from the median strip, positive on the left and negative on the right,
    // the median strip by 0 and the roadsides by ±RoadsideSlot.
    struct PartRow
    {
        PartType type = Lane;
        QLabel* caption = nullptr;
        QDoubleSpinBox* width = nullptr;
    };
    struct SectionRow
    {
        QLabel* caption = nullptr;
        AdvancedComboBox* kind = nullptr;
        QDoubleSpinBox* radius = nullptr;
        QDoubleSpinBox* length = nullptr;
    };
    static constexpr int RoadsideSlot = MaxLaneCount + 1;

    void doCreatePartRows();
    void doCreatePartRow(int slot, PartType type, const QString& objectName);
    QFrame* doCreateSeparator();
    void doCreateSectionRows();
    void doResetRows();
    int doLoadSide(const QList<QJsonObject>& outwardParts, int side);
    bool doChangeCount(int& count, int value, int minimum, int maximum);
    void doUpdateRows();
    void doUpdateButtons();
    void doApply();
    QJsonObject makeRoadConfig() const;

    Ui::RoadConfigWidget* m_ui = nullptr;
    QMap<int, PartRow> m_partRows; // by slot
    QMap<int, SectionRow> m_sectionRows; // by section number, from 1
    QFrame* m_leftLanesSeparator = nullptr; // between the left lanes and the median
    QFrame* m_rightLanesSeparator = nullptr; // between the median and the right lanes
    int m_leftLaneCount = 0;
    int m_rightLaneCount = 0;
    int m_sectionCount = MinSectionCount;
    bool m_configChanged = false;
    // What the rows showed when they last held nothing unapplied; closing over
    // unapplied edits brings it back.
    QJsonObject m_savedConfig;
};
