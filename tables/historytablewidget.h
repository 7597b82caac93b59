#pragma once

#include "localtimeofday.h"
#include "standalonewidget.h"

#include <QDateTime>

#include <array>
#include <bitset>

class HistoryTableModel;
class QTableView;

namespace Ui {
class HistoryTableWidget;
}

// The objects history: a running log of what the radar measured, one row per object
// and frame, each object's rows kept together under one another, at most MaxRows rows
// (the oldest go first). Objects the radar only carried over from an earlier frame add
// no row. The operator pauses the log, clears it, and saves it as a text table in
// "history" beside the program. It is a window of its own, fed like the current objects
// table and repainted once per frame.
class HistoryTableWidget : public StandaloneWidget
{
    Q_OBJECT

public:
    static constexpr int MaxRows = 100000;

    explicit HistoryTableWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~HistoryTableWidget() override;

    QTableView* tableView() const;
    HistoryTableModel* model() const { return m_model; }
    bool isPaused() const { return m_paused; }

    // Where "Save to file" writes, and the name it gives a file saved at a local time.
    static QString exportDirectory();
    static QString exportFileName(const QDateTime& localTime);

public slots:
    // Enabling takes the log up again unless the pause button is down; disabling clears
    // the history and stops the intake.
    void setEnabled(bool enabled);
    void setPaintObjects(bool paintObjects);
    void startFilling();
    void setFrameDateTimeUtc(const QDateTime& frameTime);
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling();

private:
    static constexpr int NoRow = -1;
    static constexpr int IdCount = 256;

    void onPauseToggled(bool checked);
    void onScrolled(int value);
    void doClear();
    void doSaveToFile();
    void doEndGroups();
    qint32 frameTimeOfDay();

    Ui::HistoryTableWidget* m_ui = nullptr;
    HistoryTableModel* m_model = nullptr;
    bool m_paintObjects = false;
    bool m_paused = false;
    // Whether each frame ends on the newest row: set while the operator keeps the table
    // scrolled to its end.
    bool m_follow = false;
    QDateTime m_frameTime;
    // The frame time as the rows show it, worked out once per frame.
    bool m_hasFrameTimeOfDay = false;
    qint32 m_frameTimeOfDay = 0;
    LocalTimeOfDay m_localTime;
    // The row of each object's newest row, NoRow where the object has no group.
    std::array<int, IdCount> m_lastRowById;
    // The objects the radar still reports in this frame, measured or carried over.
    std::bitset<IdCount> m_seenIds;
};
