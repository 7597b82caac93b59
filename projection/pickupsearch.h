#pragma once

#include "cameramodel.h"
#include "pickupduplicateindex.h"
#include "pickupparams.h"

#include <QVector>

#include <functional>

// The search for the radar pose (and, in the second mode, the camera's view angle)
// under which the operator's marked points land where the operator says they are:
// four checkpoints of known Y, and in the second mode a segment along X of known
// length. A beam of the best poses is widened in every searched parameter by half a
// step either way, scored, and cut back to its width; the steps halve each pass until
// the azimuth step falls below the tolerance. A coarse search from a fixed start finds
// the region, a fine search from its result the pose. The radar's X offset is not
// searched (the marks carry Y only) and roll stays 0.
//
// The search works on its own copy of the camera model: the view keeps showing (and
// the radar keeps feeding) its own model meanwhile.
class PickupSearch
{
public:
    enum Mode { RadarPosition = 1, RadarPositionAndViewAngle = 2 };
    enum class DuplicateCheck { Indexed, Literal };

    static constexpr double CoarseTolerance = 0.5;
    static constexpr double FineTolerance = 0.005;
    static constexpr int YieldEveryScored = 100; // scored candidates between event loop turns
    static constexpr int CheckpointCount = 4;

    // Counts of one search (coarse and fine together).
    struct Stats
    {
        qint64 candidates = 0; // every pose + step x offset formed
        qint64 duplicates = 0; // skipped as within the tolerance of a scored one
        qint64 invalid = 0; // leaving the camera model invalid
        qint64 scored = 0;
        int passes = 0;
    };

    // model: the camera configuration and picture size the marks were made on.
    // saved: the pose in force when the pick-up started (its X offset and half view
    // angle are kept).
    PickupSearch(const CameraModel& model, int mode, const QVector<PickupCheckpoint>& checkpoints,
                 const PickupParams& saved);

    void setDuplicateCheck(DuplicateCheck check) { m_duplicateCheck = check; }
    // Called after every 100 scored candidates; returning false stops the search.
    void setYield(std::function<bool()> yield) { m_yield = std::move(yield); }

    // Coarse then fine search; true with best() set when both found a pose.
    bool run();
    // One search, coarse (fine false) from the fixed start or fine from best().
    bool search(bool fine);
    bool wasStopped() const { return m_stopped; }

    const PickupParams& best() const { return m_best; }
    const Stats& stats() const { return m_stats; }
    // The scores in the order of the last pass's beam, for comparing two searches.
    const QVector<double>& lastBeamScores() const { return m_lastBeamScores; }

    // The sum of squared misses of a pose: each checkpoint's Y against the typed one,
    // in the second mode the segment's length too. A mark the pose puts at or above
    // the horizon gives the largest finite double.
    double score(const PickupParams& pose);
    // The camera model of a pose (valid or not).
    const CameraModel& modelFor(const PickupParams& pose);

    int mode() const { return m_mode; }
    const QVector<PickupCheckpoint>& checkpoints() const { return m_checkpoints; }

private:
    struct Scored
    {
        double score;
        PickupParams pose;
    };

    double doScore() const;

    CameraModel m_model;
    int m_mode = RadarPosition;
    QVector<PickupCheckpoint> m_checkpoints;
    PickupParams m_saved;
    PickupParams m_best;
    DuplicateCheck m_duplicateCheck = DuplicateCheck::Indexed;
    std::function<bool()> m_yield;
    bool m_stopped = false;
    Stats m_stats;
    QVector<double> m_lastBeamScores;
    QVector<PickupParams> m_offsets; // multiples of the steps, -0.5, 0 or +0.5 each
};
