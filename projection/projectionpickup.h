#pragma once

#include "pickupparams.h"

#include <QCoreApplication>
#include <QObject>
#include <QPoint>
#include <QVector>

class ProjectionWidget;

// The parameter pick-up of the projection view: the operator marks four checkpoints
// on the picture and types the Y of each (and, in the second mode, marks a segment
// along the X axis and types its length); the search then finds the radar pose (and
// the camera's view angle) that fits, reports it, hands the pose to the position
// panel, and the view returns to the pose it had before.
class ProjectionPickup : public QObject
{
    Q_OBJECT

public:
    static constexpr int SearchDelayMs = 5; // lets the view show the last mark first
    static constexpr int HintMs = 30000; // the next step's tool tip stays this long
    static constexpr double CheckpointRange = 100.0; // metres either side
    static constexpr double MaxSegmentLength = 100.0; // metres
    static constexpr int EntryDecimals = 2;

    explicit ProjectionPickup(ProjectionWidget* view);

    bool isPickingUp() const { return m_pickingUp; }
    bool isComputing() const { return m_computing; }
    int mode() const { return m_mode; }
    const QVector<PickupCheckpoint>& checkpoints() const { return m_checkpoints; }
    const PickupParams& savedParams() const { return m_savedParams; }
    const PickupParams& bestParams() const { return m_bestParams; }
    int requiredCount() const;

    // Mode 1: the radar position, with the view angle known; 2: both.
    void start(int mode);
    void mouseMoved(const QPoint& pos, const QPoint& globalPos);
    void addCheckpoint(const QPoint& pixel);
    // Gives up marking (right click, cancelled dialog): back to the saved pose.
    void abort();
    // The window went away: stops marking or searching without a report.
    void cancel();

signals:
    // The last search's counts, for the curious (benchmarks, tests).
    void searchFinished(bool success, qint64 scored, qint64 elapsedMs);

private:
    void doRunSearch();
    void doShowPickupResult(bool success);
    void doRestoreSavedParameters();
    bool askNumber(const QString& title, const QString& label, double minimum, double maximum,
                   double preset, double* value);

    ProjectionWidget* m_view;
    bool m_pickingUp = false;
    bool m_computing = false;
    bool m_cancelled = false;
    int m_mode = 0;
    QVector<PickupCheckpoint> m_checkpoints;
    PickupParams m_savedParams;
    PickupParams m_bestParams;
    QString m_details; // the fit's quality, for the report
};
