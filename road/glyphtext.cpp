#include "glyphtext.h"

#include <QFontMetricsF>
#include <QPainter>

namespace {
// Control characters are not drawn as glyphs.
constexpr ushort FirstPrintable = 0x20;
} // namespace

void GlyphText::setFont(const QFont& font)
{
    m_font = font;
    m_hasFont = true;
    m_raw = QRawFont::fromFont(font);
    const QFontMetricsF metrics(font);
    m_ascent = metrics.ascent();
    m_height = metrics.height();
    m_glyphs.fill(m_raw.isValid() ? NotLookedUp : NoGlyph);
    m_advances.fill(0);
    m_tiles.clear();
}

bool GlyphText::glyphFor(ushort c)
{
    if (c >= CharCount || c < FirstPrintable)
        return false;
    if (m_glyphs[c] == NotLookedUp) {
        m_glyphs[c] = NoGlyph;
        const QVector<quint32> glyph = m_raw.glyphIndexesForString(QString(QChar(c)));
        // A font without the glyph gives glyph 0; such texts are shaped as usual (and
        // get the fallback font).
        if (glyph.size() == 1 && glyph.first() != 0) {
            const QVector<QPointF> advance = m_raw.advancesForGlyphIndexes(glyph);
            if (advance.size() == 1) {
                m_glyphs[c] = glyph.first();
                m_advances[c] = advance.first().x();
            }
        }
    }
    return m_glyphs[c] != NoGlyph;
}

bool GlyphText::layout(const QString& text)
{
    if (!m_hasFont)
        return false;
    const int n = text.size();
    m_indexes.resize(n);
    m_positions.resize(n);
    qreal x = 0;
    for (int i = 0; i < n; ++i) {
        const ushort c = text.at(i).unicode();
        if (!glyphFor(c))
            return false;
        m_indexes[i] = m_glyphs[c];
        m_positions[i] = QPointF(x, m_ascent);
        x += m_advances[c];
    }
    m_width = x;
    return true;
}

void GlyphText::draw(QPainter* painter, const QPointF& topLeft)
{
    if (m_indexes.isEmpty())
        return;
    m_run.setRawFont(m_raw);
    m_run.setRawData(m_indexes.constData(), m_positions.constData(), m_indexes.size());
    m_tiles.draw(painter, topLeft, m_run, m_indexes.constData(), m_positions.constData(),
                 m_indexes.size());
}
