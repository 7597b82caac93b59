#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QRect>
#include <QVector>

#include <array>
#include <unordered_map>

class QGlyphRun;
class QRawFont;

// Copies of glyphs as the window shows them, to draw the tables' numbers without
// blending their glyphs again. Every frame redraws a hundred numbers of five glyphs,
// each blended pixel by pixel onto its cell, which cost a tenth of the frame; yet they
// are a dozen glyphs in a few colours on a few cell backgrounds.
//
// A glyph drawn on pixels of one colour comes out the same wherever it goes, as long as
// it lands on the same fraction of a pixel and no other glyph touches its pixels. So
// where a text's glyphs touch pixels apart from each other, all of one colour, each
// glyph is copied from the pixels it left the last time it was drawn so (in the same
// colour, on the same background). A glyph met for the first time is drawn by the
// painter and its pixels taken from the window right after. Wherever that cannot be
// known (a turned or clipped painter, a mixed background), the painter draws.
class GlyphTiles
{
public:
    static constexpr int MaxTiles = 4096; // a full set starts afresh

    // Forgets every glyph (the font changed).
    void clear();
    int size() const { return int(m_tiles.size()); }

    // Draws `count` glyphs of `run`'s font at `positions` from `topLeft`, as
    // painter->drawGlyphRun(topLeft, run) draws them in the painter's pen.
    void draw(QPainter* painter, const QPointF& topLeft, const QGlyphRun& run,
              const quint32* glyphs, const QPointF* positions, int count);

private:
    // Where a glyph falls: the pixel the painter places it from and the fraction of a
    // pixel it starts at, in 64ths as the painter counts positions.
    struct Place
    {
        QPoint anchor;
        int fx = 0;
        int fy = 0;
    };
    struct TileKey
    {
        quint32 glyph;
        int fx;
        int fy;
        QRgba64 ink;
        QRgb background;
        bool operator==(const TileKey& o) const
        {
            return glyph == o.glyph && fx == o.fx && fy == o.fy && ink == o.ink
                   && background == o.background;
        }
    };
    struct KeyHash
    {
        size_t operator()(const TileKey& key) const;
    };
    struct Tile
    {
        QRect footprint; // from the glyph's anchor; empty for a blank glyph
        QVector<QRgb> pixels; // row by row over the footprint
    };
    // The last tiles found, by their key's hash: most texts are a few digits.
    struct Recent
    {
        TileKey key{};
        const Tile* tile = nullptr;
    };
    static constexpr size_t RecentCount = 1024;

    static Place place(const QPointF& devicePosition);
    // The pixels a glyph can touch, from its anchor: those its coverage reaches.
    const QRect& footprint(const QRawFont& font, quint32 glyph, int fx, int fy);
    QImage* target(QPainter* painter) const;
    static bool isPlain(const QImage& image, const QRect& box, QRgb color);
    const Tile* find(const TileKey& key);
    // Whether the glyphs' boxes lie apart, each inside a part of the window the painter
    // may draw in, on pixels of the colour.
    bool liesApart(const QImage& image, QRgb background, int count) const;
    // Draws through the painter and keeps the pixels of the glyphs not kept yet.
    void doDrawAndKeep(QPainter* painter, const QPointF& topLeft, const QGlyphRun& run,
                       const QImage& image, QRgb background, const QRgba64& ink,
                       const quint32* glyphs, int count);

    QPainter::RenderHints m_hints;
    QImage::Format m_format = QImage::Format_Invalid;
    QHash<quint64, QRect> m_footprints; // by glyph and fractions
    std::unordered_map<TileKey, Tile, KeyHash> m_tiles; // kept in place: found by address
    std::array<Recent, RecentCount> m_recent{};
    // Set when the window's glyphs reached beyond the footprints found here (a display
    // that draws glyphs for coloured sub-pixels): the painter draws from then on.
    bool m_broken = false;

    QVector<QRect> m_allowed; // where the painter may draw
    // Per glyph of the text being drawn.
    QVector<Place> m_places;
    QVector<QRect> m_boxes; // footprints in the window, empty for a blank glyph
    QVector<const Tile*> m_found;
    QVector<QRgb> m_ring; // the pixels around them before a capture
};
