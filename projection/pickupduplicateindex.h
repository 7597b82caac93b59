#pragma once

#include "pickupparams.h"

#include <QVector>

#include <unordered_map>
#include <vector>

// The pick-up search skips a candidate when a pose already scored in the same pass
// lies within the tolerance of it in every parameter. Comparing with every scored pose
// costs the square of a pass's tens of thousands of candidates; this index answers the
// same question by looking only at the scored poses of one grid cell.
//
// Each scored pose is entered into every cell (of edge twice the tolerance, over the
// five searched parameters) that its tolerance box touches, widened by a rounding
// margin; a candidate then needs only the poses of its own cell, which are compared
// exactly as the plain check compares them. The answer is the plain check's, bit for
// bit: the cells only choose which poses are compared.
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
    struct Key
    {
        std::array<qint64, 5> cells{};
        bool operator==(const Key& o) const { return cells == o.cells; }
    };
    struct KeyHash
    {
        size_t operator()(const Key& k) const;
    };

    Key keyOf(const PickupParams& p) const;
    qint64 cellOf(double value) const;

    double m_tolerance = 0.0;
    double m_cellSize = 1.0;
    std::vector<PickupParams> m_poses;
    std::unordered_map<Key, std::vector<int>, KeyHash> m_cells;
};
