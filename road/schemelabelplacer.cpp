#include "schemelabelplacer.h"

#include <algorithm>

namespace {

// The grid's cells: about a label's height, a third of its width.
constexpr int CellWidth = 32;
constexpr int CellHeight = 16;

// Pixels between a label and its object, and between two rings of places around it.
constexpr int Gap = 3;
constexpr int Rings = 5;
constexpr int PlacesPerRing = 8;

// The k-th place of a ring `distance` pixels around the glyph: right, left, above,
// below, then the four corners.
QRect placeAround(const QRect& glyph, const QSize& size, int distance, int k)
{
    const int w = size.width();
    const int h = size.height();
    const QPoint c = glyph.center();
    const int right = glyph.right() + 1 + distance;
    const int left = glyph.left() - distance - w;
    const int above = glyph.top() - distance - h;
    const int below = glyph.bottom() + 1 + distance;
    switch (k) {
    case 0: return QRect(right, c.y() - h / 2, w, h);
    case 1: return QRect(left, c.y() - h / 2, w, h);
    case 2: return QRect(c.x() - w / 2, above, w, h);
    case 3: return QRect(c.x() - w / 2, below, w, h);
    case 4: return QRect(right, above, w, h);
    case 5: return QRect(right, below, w, h);
    case 6: return QRect(left, above, w, h);
    default: return QRect(left, below, w, h);
    }
}

// QRect::intersects for boxes of at least one pixel (the only kind the placer keeps),
// inline: the placer asks it thousands of times a frame.
inline bool overlaps(const QRect& a, const QRect& b)
{
    return a.left() <= b.right() && b.left() <= a.right() && a.top() <= b.bottom()
           && b.top() <= a.bottom();
}

} // namespace

void SchemeLabelPlacer::Grid::reset(const QRect& view)
{
    m_origin = view.topLeft();
    m_lastHit = QRect();
    m_columns = std::max(1, (view.width() + CellWidth - 1) / CellWidth);
    m_rows = std::max(1, (view.height() + CellHeight - 1) / CellHeight);
    const size_t count = size_t(m_columns) * size_t(m_rows);
    if (m_cells.size() != count)
        m_cells.assign(count, {});
    else
        for (std::vector<QRect>& cell : m_cells)
            cell.clear();
}

void SchemeLabelPlacer::Grid::cellRange(const QRect& box, int* left, int* top, int* right,
                                        int* bottom) const
{
    const auto column = [this](int x) {
        return std::clamp((qint64(x) - m_origin.x()) / CellWidth, qint64(0), qint64(m_columns - 1));
    };
    const auto row = [this](int y) {
        return std::clamp((qint64(y) - m_origin.y()) / CellHeight, qint64(0), qint64(m_rows - 1));
    };
    *left = int(column(box.left()));
    *right = int(column(box.right()));
    *top = int(row(box.top()));
    *bottom = int(row(box.bottom()));
}

void SchemeLabelPlacer::Grid::add(const QRect& box)
{
    int left, top, right, bottom;
    cellRange(box, &left, &top, &right, &bottom);
    for (int r = top; r <= bottom; ++r)
        for (int c = left; c <= right; ++c)
            m_cells[size_t(r) * size_t(m_columns) + size_t(c)].push_back(box);
}

bool SchemeLabelPlacer::Grid::hits(const QRect& box) const
{
    if (!m_lastHit.isNull() && overlaps(m_lastHit, box))
        return true;
    int left, top, right, bottom;
    cellRange(box, &left, &top, &right, &bottom);
    for (int r = top; r <= bottom; ++r) {
        for (int c = left; c <= right; ++c) {
            for (const QRect& other : m_cells[size_t(r) * size_t(m_columns) + size_t(c)]) {
                if (overlaps(other, box)) {
                    m_lastHit = other;
                    return true;
                }
            }
        }
    }
    return false;
}

void SchemeLabelPlacer::reset(const QRect& view)
{
    m_view = view;
    m_glyphGrid.reset(view);
    m_labelGrid.reset(view);
}

void SchemeLabelPlacer::addGlyph(const QRect& glyph)
{
    if (glyph.isEmpty())
        return;
    m_glyphGrid.add(glyph);
}

SchemeLabelPlacer::Placement SchemeLabelPlacer::place(const Label& label)
{
    Placement placement;
    const QRect usual(
        QPoint(label.anchor.x() + label.clearance, label.anchor.y() - label.size.height() / 2),
        label.size);
    if (isFree(usual)) {
        placement.box = usual;
    } else if (findPlace(label, label.size, placement.box)) {
        placement.moved = true;
    } else {
        placement.shortened = true;
        const QRect usualShort(QPoint(label.anchor.x() + label.clearance,
                                      label.anchor.y() - label.shortSize.height() / 2),
                               label.shortSize);
        if (isFree(usualShort))
            placement.box = usualShort;
        else if (findPlace(label, label.shortSize, placement.box))
            placement.moved = true;
        else
            placement.box = usualShort; // over the others, the id still readable
    }
    if (!placement.box.isEmpty())
        m_labelGrid.add(placement.box);
    return placement;
}

bool SchemeLabelPlacer::findPlace(const Label& label, const QSize& size, QRect& box) const
{
    // The nearest place clear of labels and objects; failing that, the nearest clear of
    // labels.
    bool found = false;
    for (int ring = 0; ring < Rings; ++ring) {
        const int distance = Gap + ring * (size.height() + Gap);
        for (int k = 0; k < PlacesPerRing; ++k) {
            const QRect candidate = placeAround(label.glyph, size, distance, k);
            if (!isFree(candidate))
                continue;
            if (coversNoGlyph(candidate)) {
                box = candidate;
                return true;
            }
            if (!found) {
                box = candidate;
                found = true;
            }
        }
    }
    return found;
}

bool SchemeLabelPlacer::isFree(const QRect& box) const
{
    // QRect::contains, inline: most places tried are not free.
    return box.left() >= m_view.left() && box.right() <= m_view.right() && box.top() >= m_view.top()
           && box.bottom() <= m_view.bottom() && !m_labelGrid.hits(box);
}

bool SchemeLabelPlacer::coversNoGlyph(const QRect& box) const
{
    return !m_glyphGrid.hits(box);
}
