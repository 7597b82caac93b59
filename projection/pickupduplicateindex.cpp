#include "pickupduplicateindex.h"

#include <algorithm>
#include <cmath>

namespace {

// The parameters a search varies; X offset and roll stay put, yet are compared.
constexpr std::array<int, 5> Searched{PickupParams::Y, PickupParams::Height,
                                      PickupParams::Azimuth, PickupParams::Elevation,
                                      PickupParams::HalfAngle};
// Far more than the rounding of a subtraction: a cell too many costs nothing but a look.
constexpr double RoundingMargin = 1e-9;
constexpr double CellLimit = 4e18;

} // namespace

bool PickupDuplicateIndex::isNear(const PickupParams& a, const PickupParams& b, double tolerance)
{
    for (int i = 0; i < PickupParams::Count; ++i) {
        if (!(std::fabs(a[i] - b[i]) <= tolerance))
            return false;
    }
    return true;
}

bool PickupDuplicateIndex::containsLiterally(const QVector<PickupParams>& scored,
                                             const PickupParams& candidate, double tolerance)
{
    return std::any_of(scored.cbegin(), scored.cend(), [&](const PickupParams& s) {
        return isNear(s, candidate, tolerance);
    });
}

size_t PickupDuplicateIndex::KeyHash::operator()(const Key& k) const
{
    size_t h = 1469598103934665603ull;
    for (qint64 c : k.cells)
        h = (h ^ size_t(c)) * 1099511628211ull;
    return h;
}

void PickupDuplicateIndex::reset(double tolerance)
{
    m_tolerance = tolerance;
    m_cellSize = tolerance > 0.0 ? 2.0 * tolerance : 1.0;
    m_poses.clear();
    m_cells.clear();
}

qint64 PickupDuplicateIndex::cellOf(double value) const
{
    const double cell = std::floor(value / m_cellSize);
    return qint64(std::clamp(cell, -CellLimit, CellLimit));
}

PickupDuplicateIndex::Key PickupDuplicateIndex::keyOf(const PickupParams& p) const
{
    Key key;
    for (size_t d = 0; d < Searched.size(); ++d)
        key.cells[d] = cellOf(p[Searched[d]]);
    return key;
}

bool PickupDuplicateIndex::contains(const PickupParams& candidate) const
{
    const auto it = m_cells.find(keyOf(candidate));
    if (it == m_cells.end())
        return false;
    for (int index : it->second) {
        if (isNear(m_poses[size_t(index)], candidate, m_tolerance))
            return true;
    }
    return false;
}

void PickupDuplicateIndex::insert(const PickupParams& scored)
{
    const int index = int(m_poses.size());
    m_poses.push_back(scored);
    // The cells the tolerance box touches, per searched parameter (one or two, rarely
    // three with the margin), then every combination of them.
    std::array<std::array<qint64, 3>, 5> ranges{};
    std::array<int, 5> counts{};
    for (size_t d = 0; d < Searched.size(); ++d) {
        const double value = scored[Searched[d]];
        const double reach = m_tolerance + RoundingMargin * (1.0 + std::fabs(value));
        const qint64 first = cellOf(value - reach);
        const qint64 last = cellOf(value + reach);
        int n = 0;
        for (qint64 c = first; c <= last && n < 3; ++c)
            ranges[d][size_t(n++)] = c;
        counts[d] = n;
    }
    std::array<int, 5> at{};
    for (;;) {
        Key key;
        for (size_t d = 0; d < Searched.size(); ++d)
            key.cells[d] = ranges[d][size_t(at[d])];
        m_cells[key].push_back(index);
        size_t d = 0;
        while (d < Searched.size() && ++at[d] == counts[d]) {
            at[d] = 0;
            ++d;
        }
        if (d == Searched.size())
            break;
    }
}
