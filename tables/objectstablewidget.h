#pragma once

#include "groupedwidget.h"
#include "localtimeofday.h"

#include <QDateTime>

class QTableWidget;

namespace Ui {
class ObjectsTableWidget;
}

// The road objects of the current radar frame, one row per object in the order the
// client reports them, refilled from scratch on every frame. The table repaints once
// per frame: screen updates stay off from the frame's start to its end.
class ObjectsTableWidget : public GroupedWidget
{
    Q_OBJECT

public:
    enum Column {
        IdColumn,
        XSpeedColumn,
        YSpeedColumn,
        XRangeColumn,
        YRangeColumn,
        LengthColumn,
        UpdatedColumn,
        ColumnCount
    };

    explicit ObjectsTableWidget(QWidget* parent = nullptr);
    ~ObjectsTableWidget() override;

    QTableWidget* tableWidget() const;

    // The text of a value cell (X speed to length) from the value in m/s or m.
    static QString valueText(int column, double value);
    // The translated header text of a column; the history table shows the same.
    static QString headerText(int column);
    // Fills one existing row of a table with these columns, creating the items of its
    // empty cells.
    static void fillObjectRow(QTableWidget* table, int row, bool paintObjects, quint8 id,
                              double xSpeed, double ySpeed, double xRange, double yRange,
                              double length, const QString& updateTime);

public slots:
    void setPaintObjects(bool paintObjects);
    void showRadarState(int state);
    void startFilling();
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling();

protected:
    void changeEvent(QEvent* event) override;

private:
    void doFitWidthToTexts();

    Ui::ObjectsTableWidget* m_ui = nullptr;
    bool m_paintObjects = false;
    // Rows filled in the current frame, and whether an id cell among them changed.
    int m_filledRows = 0;
    bool m_idsChanged = false;
    // The objects of one frame mostly share their update time; converting it to local
    // time once per frame instead of once per object saves most of the cost of a row.
    bool m_hasUpdateTimeText = false;
    QDateTime m_lastUpdateTime;
    QString m_lastUpdateTimeText;
    LocalTimeOfDay m_localTime;
};
