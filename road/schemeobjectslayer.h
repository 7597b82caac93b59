#pragma once

#include "boxpictures.h"
#include "glyphtext.h"
#include "labelpictures.h"
#include "frameobjects.h"
#include "roadobject.h"
#include "schemelabelplacer.h"

#include <QBrush>
#include <QCoreApplication>
#include <QFont>
#include <QHash>
#include <QPen>
#include <QStaticText>
#include <QVector>

#include <array>

class QFontMetrics;
class QPainter;
class SchemeGeometry;

// The objects of the current frame on the traffic scheme: each a rectangle along its
// heading, in its own colour or in white, with its id inside when it is big enough,
// else with a side label of its id and speed. Side labels are placed so that none
// covers another.
class SchemeObjectsLayer
{
    Q_DECLARE_TR_FUNCTIONS(SchemeObjectsLayer)

public:
    static constexpr int MinLabelledSize = 16; // pixels an object needs to carry its id

    void setPaintObjects(bool paint) { m_paintObjects = paint; }
    // Paints the objects in display order, then their side labels over them.
    void paint(QPainter& painter, const SchemeGeometry& geometry, const QVector<quint8>& order,
               const FrameObjects& objects);

    // Where the last paint put the side labels, in display order.
    const QVector<SchemeLabelPlacer::Placement>& labels() const { return m_placements; }

private:
    struct SideLabel
    {
        quint8 id = 0;
        QPoint anchor;
        QString text;
        SchemeLabelPlacer::Label request;
    };

    // An object's colours as the painter takes them.
    struct Look
    {
        bool made = false;
        QPen outline; // the rectangle's, and the line to a moved label
        QBrush fill;
        QPen ink; // the text's
    };
    const Look& look(quint8 colorId);
    // An object's id, alone and as a short label.
    const QString& idText(quint8 id);
    const QString& shortText(quint8 id);

    // A label's text changes with every frame, its few characters do not: labels are
    // measured and drawn from the font's glyphs, else from each character's advance
    // and a laid-out text kept for the next frames.
    int textWidth(const QString& text, const QFontMetrics& metrics);
    void drawText(QPainter& painter, const QPoint& topLeft, const QString& text);
    const QStaticText& staticText(const QString& text, const QFont& font);

    SchemeLabelPlacer m_placer;
    QFont m_measuredFont;
    QHash<QChar, int> m_advances;
    GlyphText m_glyphs;
    QHash<QString, QStaticText> m_texts;
    LabelPictures m_labels; // by text and colour entry
    BoxPictures m_boxes; // by box, heading and colour entry
    std::array<Look, 256> m_looks;
    std::array<QString, 256> m_idTexts;
    std::array<QString, 256> m_shortTexts;
    std::array<int, 256> m_shortWidths{}; // of the short labels, 0 not measured yet
    QVector<SideLabel> m_sideLabels;
    QVector<SchemeLabelPlacer::Placement> m_placements;
    bool m_paintObjects = false;
};
