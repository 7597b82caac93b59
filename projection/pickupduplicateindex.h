#pragma once

#include "pickupparams.h"

#include <QVector>

#include <vector>

// The pick-up search skips a candidate when a pose already scored in the same pass
// lies within the tolerance of it in every parameter. Comparing with every scored pose
// costs the square of a pass's tens of thousands of candidates; this index answers the
// same question by looking only at the scored poses of one grid cell.
//
// Each scored pose is entered into every cell (of edge eight times the tolerance, over
// the five searched parameters) that its tolerance box touches, widened by a rounding
// margin: one or two cells per parameter. A candidate then needs only the poses of its
// own cell, which are compared exactly as the plain check compares them. The answer is
// the plain check's, bit for bit: the cells only choose which poses are compared.
class PickupDuplicateIndex
{
public:
    // The plain check: is any of the scored poses within the tolerance of the candidate?
    static bool isNear(const PickupParams& a, const PickupParams& b, double tolerance);
    static bool containsLiterally(const QVector<PickupParams>& scored, const PickupParams& candidate,
                                  double tolerance);

    void reset(double tolerance);
    bool contains(const PickupParams& candidate) const;
    void insert(const PickupParams& scored);
    int size() const { return int(m_poses.size()); }

private:
    using Key = std::array<qint64, 5>;
    struct Entry
    {
        int pose;
        int next; // the bucket's next entry, or -1
        quint32 hash;
    };

    Key keyOf(const PickupParams& p) const;
    qint64 cellOf(double value) const;
    static quint32 hashOf(const Key& key);
    void doLink(int entry);
    void doGrow();

    double m_tolerance = 0.0;
    double m_cellSize = 1.0;
    double m_inverseCellSize = 1.0;
    std::vector<PickupParams> m_poses;
    // Cells hashed into buckets; cells sharing a bucket share its chain, which only
    // means a few more poses compared.
    std::vector<int> m_buckets; // first entry of each bucket, or -1
    std::vector<Entry> m_entries;
};
