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
// A cell eight tolerances wide: a tolerance box (two tolerances wide) touches one of
// them per parameter, or two.
constexpr double CellPerTolerance = 4.0;
constexpr size_t InitialBuckets = size_t(1) << 12; // a power of two

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

quint32 PickupDuplicateIndex::hashOf(const Key& key)
{
    // Neighbouring cells differ in their low bits only: spread them with odd
    // multipliers, then mix every bit into the high ones that pick the bucket.
    quint64 h = quint64(key[0]) * 0x9e3779b97f4a7c15ull + quint64(key[1]) * 0xbf58476d1ce4e5b9ull
                + quint64(key[2]) * 0x94d049bb133111ebull + quint64(key[3]) * 0xd6e8feb86659fd93ull
                + quint64(key[4]) * 0xa0761d6478bd642full;
    h ^= h >> 32;
    h *= 0xe7037ed1a0b428dbull;
    return quint32(h >> 32);
}

void PickupDuplicateIndex::reset(double tolerance)
{
    m_tolerance = tolerance;
    m_cellSize = tolerance > 0.0 ? CellPerTolerance * tolerance : 1.0;
    m_inverseCellSize = 1.0 / m_cellSize;
    m_poses.clear();
    m_entries.clear();
    m_buckets.assign(InitialBuckets, -1);
}

qint64 PickupDuplicateIndex::cellOf(double value) const
{
    // Multiplying by the inverse keeps the order of values, which is all the cells need.
    const double cell = std::floor(value * m_inverseCellSize);
    return qint64(std::clamp(cell, -CellLimit, CellLimit));
}

PickupDuplicateIndex::Key PickupDuplicateIndex::keyOf(const PickupParams& p) const
{
    Key key;
    for (size_t d = 0; d < Searched.size(); ++d)
        key[d] = cellOf(p[Searched[d]]);
    return key;
}

void PickupDuplicateIndex::doLink(int entry)
{
    Entry& e = m_entries[size_t(entry)];
    int& head = m_buckets[e.hash & (m_buckets.size() - 1)];
    e.next = head;
    head = entry;
}

void PickupDuplicateIndex::doGrow()
{
    m_buckets.assign(m_buckets.size() * 2, -1);
    for (int e = 0; e < int(m_entries.size()); ++e)
        doLink(e);
}

bool PickupDuplicateIndex::contains(const PickupParams& candidate) const
{
    if (m_buckets.empty())
        return false;
    const quint32 hash = hashOf(keyOf(candidate));
    for (int e = m_buckets[hash & (m_buckets.size() - 1)]; e >= 0; e = m_entries[size_t(e)].next) {
        const Entry& entry = m_entries[size_t(e)];
        if (entry.hash == hash && isNear(m_poses[size_t(entry.pose)], candidate, m_tolerance))
            return true;
    }
    return false;
}

void PickupDuplicateIndex::insert(const PickupParams& scored)
{
    if (m_buckets.empty())
        reset(m_tolerance);
    const int index = int(m_poses.size());
    m_poses.push_back(scored);
    // The cells the tolerance box touches, per searched parameter (one or two), then
    // every combination of them.
    std::array<std::array<qint64, 2>, 5> ranges{};
    std::array<int, 5> counts{};
    for (size_t d = 0; d < Searched.size(); ++d) {
        const double value = scored[Searched[d]];
        const double reach = m_tolerance + RoundingMargin * (1.0 + std::fabs(value));
        const qint64 first = cellOf(value - reach);
        const qint64 last = cellOf(value + reach);
        ranges[d] = {first, last};
        counts[d] = last > first ? 2 : 1;
    }
    std::array<int, 5> at{};
    for (;;) {
        Key key;
        for (size_t d = 0; d < Searched.size(); ++d)
            key[d] = ranges[d][size_t(at[d])];
        m_entries.push_back(Entry{index, -1, hashOf(key)});
        doLink(int(m_entries.size()) - 1);
        size_t d = 0;
        while (d < Searched.size() && ++at[d] == counts[d]) {
            at[d] = 0;
            ++d;
        }
        if (d == Searched.size())
            break;
    }
    if (m_entries.size() > 2 * m_buckets.size())
        doGrow();
}
