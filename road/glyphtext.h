#pragma once

#include "glyphtiles.h"

#include <QFont>
#include <QGlyphRun>
#include <QRawFont>
#include <QVector>

#include <array>

class QPainter;

// Lays out and draws short one-line texts in Latin-1 (the numbers of the objects tables,
// the labels beside the vehicles) straight from the font's glyphs, one glyph per
// character. Every frame brings new numbers: shaping each of them (or keeping them all)
// would cost more than drawing them. Texts with other characters, or characters the
// font has no glyph for, are left to the caller.
class GlyphText
{
public:
    // Takes the glyphs of a font (each character's glyph is looked up on first use).
    void setFont(const QFont& font);
    bool isFor(const QFont& font) const { return m_hasFont && m_font == font; }

    // Lays a text out for `draw`; false when it holds a character not drawn this way.
    bool layout(const QString& text);
    // Width of the text last laid out and the height of a line, in pixels.
    qreal width() const { return m_width; }
    qreal height() const { return m_height; }
    // Draws the text last laid out with its line's top-left corner at the given point, in
    // the painter's pen colour.
    void draw(QPainter* painter, const QPointF& topLeft);

private:
    static constexpr int CharCount = 256;
    static constexpr quint32 NotLookedUp = 0xfffffffe;
    static constexpr quint32 NoGlyph = 0xffffffff;

    bool glyphFor(ushort c);

    QFont m_font;
    bool m_hasFont = false;
    QRawFont m_raw;
    qreal m_ascent = 0;
    qreal m_height = 0;
    std::array<quint32, CharCount> m_glyphs{};
    std::array<qreal, CharCount> m_advances{};

    QVector<quint32> m_indexes;
    QVector<QPointF> m_positions;
    qreal m_width = 0;
    QGlyphRun m_run;
    GlyphTiles m_tiles;
};
