#include "pickupsearch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using P = PickupParams;

constexpr double WorstScore = std::numeric_limits<double>::max();
constexpr double HalfStep = 0.5;

// Start pose and steps of both searches (degrees and metres). The fine search starts
// from the coarse result.
constexpr double CoarseStartY = 0.0;
constexpr double CoarseStartHeight = 10.0;
constexpr double CoarseStartAzimuth = 0.0;
constexpr double CoarseStartElevation = 15.0;
constexpr double CoarseStartHalfAngle = 7.5;
constexpr double CoarseStepY = 20.0;
constexpr double CoarseStepHeight = 10.0;
constexpr double CoarseStepAzimuth = 30.0;
constexpr double CoarseStepElevation = 15.0;
constexpr double CoarseStepHalfAngle = 7.5;
constexpr double FineStepY = 4.0;
constexpr double FineStepHeight = 2.0;
constexpr double FineStepAzimuth = 6.0;
constexpr double FineStepElevation = 3.0;
constexpr double FineStepHalfAngle = 1.5;

QVector<P> offsetVectors(bool withAngle)
{
    // Every combination of -0.5, 0, +0.5 over Y, height, azimuth, elevation (and the
    // half view angle): 81 vectors, or 243.
    const int searched[] = {P::Y, P::Height, P::Azimuth, P::Elevation, P::HalfAngle};
    const int dims = withAngle ? 5 : 4;
    QVector<P> offsets;
    int total = 1;
    for (int d = 0; d < dims; ++d)
        total *= 3;
    for (int n = 0; n < total; ++n) {
        P offset;
        int rest = n;
        for (int d = 0; d < dims; ++d) {
            offset[searched[d]] = double(rest % 3 - 1) * HalfStep;
            rest /= 3;
        }
        offsets.append(offset);
    }
    return offsets;
}

} // namespace

PickupSearch::PickupSearch(const CameraModel& model, int mode,
                           const QVector<PickupCheckpoint>& checkpoints, const PickupParams& saved)
    : m_model(model)
    , m_mode(mode == RadarPositionAndViewAngle ? RadarPositionAndViewAngle : RadarPosition)
    , m_checkpoints(checkpoints)
    , m_saved(saved)
    , m_offsets(offsetVectors(m_mode == RadarPositionAndViewAngle))
{
}

bool PickupSearch::run()
{
    // Poses that leave a mark at or above the horizon score worst and sort last, but
    // they stay candidates: a search whose every pose does so still ends with one,
    // and the report's details then tell the operator that no mark lies on the road.
    return search(false) && search(true);
}

const CameraModel& PickupSearch::modelFor(const PickupParams& pose)
{
    CameraModel::RadarPose radar;
    radar.height = pose[P::Height];
    radar.xOffset = pose[P::X];
    radar.yOffset = pose[P::Y];
    radar.azimuth = TvmsConfig::radians(pose[P::Azimuth]);
    radar.elevation = TvmsConfig::radians(pose[P::Elevation]);
    m_model.setHalfHorizontalAngle(TvmsConfig::radians(pose[P::HalfAngle]));
    m_model.setRadarPose(radar);
    m_model.rescale(m_model.width(), m_model.height());
    return m_model;
}

double PickupSearch::score(const PickupParams& pose)
{
    modelFor(pose);
    return m_model.isValid() ? doScore() : WorstScore;
}

double PickupSearch::doScore() const
{
    const int needed = m_mode == RadarPositionAndViewAngle ? CheckpointCount + 2 : CheckpointCount;
    if (m_checkpoints.size() < needed)
        return WorstScore;
    double sum = 0.0;
    bool ok = false;
    for (int i = 0; i < CheckpointCount; ++i) {
        const PickupCheckpoint& c = m_checkpoints.at(i);
        const QPointF road = m_model.xyFromScreen(c.pixel, &ok);
        if (!ok)
            return WorstScore;
        const double miss = road.y() - c.value;
        sum += miss * miss;
    }
    if (m_mode == RadarPositionAndViewAngle) {
        const QPointF a = m_model.xyFromScreen(m_checkpoints.at(CheckpointCount).pixel, &ok);
        if (!ok)
            return WorstScore;
        const QPointF b = m_model.xyFromScreen(m_checkpoints.at(CheckpointCount + 1).pixel, &ok);
        if (!ok)
            return WorstScore;
        const double miss
            = std::hypot(b.x() - a.x(), b.y() - a.y()) - m_checkpoints.at(CheckpointCount + 1).value;
        sum += miss * miss;
    }
    return std::isfinite(sum) ? sum : WorstScore;
}

bool PickupSearch::search(bool fine)
{
    const bool withAngle = m_mode == RadarPositionAndViewAngle;
    const double tolerance = fine ? FineTolerance : CoarseTolerance;
    PickupParams start;
    PickupParams step;
    if (fine) {
        start = m_best;
        step[P::Y] = FineStepY;
        step[P::Height] = FineStepHeight;
        step[P::Azimuth] = FineStepAzimuth;
        step[P::Elevation] = FineStepElevation;
        step[P::HalfAngle] = withAngle ? FineStepHalfAngle : 0.0;
    } else {
        start[P::Y] = CoarseStartY;
        start[P::Height] = CoarseStartHeight;
        start[P::Azimuth] = CoarseStartAzimuth;
        start[P::Elevation] = CoarseStartElevation;
        start[P::HalfAngle] = withAngle ? CoarseStartHalfAngle : m_saved[P::HalfAngle];
        step[P::Y] = CoarseStepY;
        step[P::Height] = CoarseStepHeight;
        step[P::Azimuth] = CoarseStepAzimuth;
        step[P::Elevation] = CoarseStepElevation;
        step[P::HalfAngle] = withAngle ? CoarseStepHalfAngle : 0.0;
    }
    // Not searched: the X offset the pick-up started with, and no roll.
    start[P::X] = m_saved[P::X];
    start[P::Roll] = 0.0;
    if (!withAngle)
        start[P::HalfAngle] = m_saved[P::HalfAngle];

    const int capacity = m_offsets.size();
    QVector<PickupParams> beam{start};
    QVector<Scored> scored;
    QVector<PickupParams> scoredPoses; // for the plain duplicate check
    PickupDuplicateIndex index;
    int sinceYield = 0;
    m_stopped = false;

    while (step[P::Azimuth] > tolerance) {
        ++m_stats.passes;
        scored.clear();
        scoredPoses.clear();
        index.reset(tolerance);
        for (const PickupParams& pose : qAsConst(beam)) {
            for (const PickupParams& offset : qAsConst(m_offsets)) {
                PickupParams candidate;
                for (int i = 0; i < P::Count; ++i)
                    candidate[i] = pose[i] + step[i] * offset[i];
                ++m_stats.candidates;
                const bool duplicate = m_duplicateCheck == DuplicateCheck::Literal
                    ? PickupDuplicateIndex::containsLiterally(scoredPoses, candidate, tolerance)
                    : index.contains(candidate);
                if (duplicate) {
                    ++m_stats.duplicates;
                    continue;
                }
                const double s = score(candidate);
                if (!m_model.isValid()) {
                    ++m_stats.invalid;
                    continue;
                }
                ++m_stats.scored;
                scored.append(Scored{s, candidate});
                if (m_duplicateCheck == DuplicateCheck::Literal)
                    scoredPoses.append(candidate);
                else
                    index.insert(candidate);
                if (++sinceYield >= YieldEveryScored) {
                    sinceYield = 0;
                    if (m_yield && !m_yield()) {
                        m_stopped = true;
                        return false;
                    }
                }
            }
        }
        if (scored.isEmpty())
            return false;
        // Ascending score; of equal scores the one scored first stays first.
        std::stable_sort(scored.begin(), scored.end(),
                         [](const Scored& a, const Scored& b) { return a.score < b.score; });
        beam.clear();
        m_lastBeamScores.clear();
        for (int i = 0; i < std::min(capacity, int(scored.size())); ++i) {
            beam.append(scored.at(i).pose);
            m_lastBeamScores.append(scored.at(i).score);
        }
        for (int i = 0; i < P::Count; ++i)
            step[i] /= 2.0;
    }
    if (beam.isEmpty())
        return false;
    m_best = beam.first();
    return true;
}
