#pragma once

#include <QGlyphRun>
#include <QRawFont>
#include <QString>
#include <QVector>

// A line of text as a glyph run from its font's own glyphs and advances, one glyph per
// character, the line's top at 0: what the tables' numbers are drawn from.
inline QGlyphRun glyphRunOf(const QRawFont& raw, const QString& text, qreal ascent)
{
    const QVector<quint32> glyphs = raw.glyphIndexesForString(text);
    QVector<QPointF> positions;
    qreal x = 0;
    for (const QPointF& advance : raw.advancesForGlyphIndexes(glyphs)) {
        positions << QPointF(x, ascent);
        x += advance.x();
    }
    QGlyphRun run;
    run.setRawFont(raw);
    run.setGlyphIndexes(glyphs);
    run.setPositions(positions);
    return run;
}
