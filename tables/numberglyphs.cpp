#include "numberglyphs.h"

#include <QFontMetricsF>
#include <QPainter>

namespace {
// Every character the tables' numbers and times are written with.
const char NumberCharacters[] = "0123456789.-+: ";
} // namespace

void NumberGlyphs::setFont(const QFont& font)
{
    m_font = font;
    m_hasFont = true;
    m_raw = QRawFont::fromFont(font);
    m_glyphs.fill(NoGlyph);
    m_advances.fill(0);
    m_usable = m_raw.isValid();
    const QFontMetricsF metrics(font);
    m_ascent = metrics.ascent();
    m_height = metrics.height();
    if (!m_usable)
        return;
    const QString characters = QString::fromLatin1(NumberCharacters);
    const QVector<quint32> glyphs = m_raw.glyphIndexesForString(characters);
    const QVector<QPointF> advances = m_raw.advancesForGlyphIndexes(glyphs);
    if (glyphs.size() != characters.size() || advances.size() != glyphs.size()) {
        m_usable = false;
        return;
    }
    for (int i = 0; i < characters.size(); ++i) {
        // A font without the glyph gives glyph 0; such texts are shaped as usual (and get
        // the fallback font).
        if (glyphs[i] == 0) {
            m_usable = false;
            return;
        }
        const int c = characters.at(i).unicode();
        m_glyphs[size_t(c)] = glyphs[i];
        m_advances[size_t(c)] = advances[i].x();
    }
}

bool NumberGlyphs::layout(const QString& text)
{
    if (!m_usable)
        return false;
    const int n = text.size();
    m_indexes.resize(n);
    m_positions.resize(n);
    qreal x = 0;
    for (int i = 0; i < n; ++i) {
        const ushort c = text.at(i).unicode();
        if (c >= CharCount || m_glyphs[c] == NoGlyph)
            return false;
        m_indexes[i] = m_glyphs[c];
        m_positions[i] = QPointF(x, m_ascent);
        x += m_advances[c];
    }
    m_width = x;
    return true;
}

void NumberGlyphs::draw(QPainter* painter, const QPointF& topLeft)
{
    if (m_indexes.isEmpty())
        return;
    m_run.setRawFont(m_raw);
    m_run.setRawData(m_indexes.constData(), m_positions.constData(), m_indexes.size());
    painter->drawGlyphRun(topLeft, m_run);
}
