#pragma once

#include <QFont>
#include <QGlyphRun>
#include <QRawFont>
#include <QVector>

#include <array>

class QPainter;

// Lays out and draws the number texts of the objects tables (digits, sign, point, colon
// and blank: "-188.8", "12:30:05.250") straight from the font's glyphs. Such a text needs
// no shaping, and every frame brings new numbers: shaping each of them (or keeping them
// all) would cost more than drawing them. Other texts are left to the caller.
class NumberGlyphs
{
public:
    // Takes the glyphs of a font; texts are not laid out when it lacks any of them.
    void setFont(const QFont& font);
    bool isFor(const QFont& font) const { return m_hasFont && m_font == font; }

    // Lays a text out for `draw`; false when it holds any other character.
    bool layout(const QString& text);
    // Width of the text last laid out and the height of a line, in pixels.
    qreal width() const { return m_width; }
    qreal height() const { return m_height; }
    // Draws the text last laid out with its line's top-left corner at the given point, in
    // the painter's pen colour.
    void draw(QPainter* painter, const QPointF& topLeft);

private:
    static constexpr int CharCount = 128;
    static constexpr quint32 NoGlyph = 0xffffffff;

    QFont m_font;
    bool m_hasFont = false;
    QRawFont m_raw;
    bool m_usable = false;
    qreal m_ascent = 0;
    qreal m_height = 0;
    std::array<quint32, CharCount> m_glyphs{};
    std::array<qreal, CharCount> m_advances{};

    QVector<quint32> m_indexes;
    QVector<QPointF> m_positions;
    qreal m_width = 0;
    QGlyphRun m_run;
};
