#include "schemeobjectslayer.h"

#include "fixedtext.h"
#include "objectcolor.h"
#include "schemegeometry.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int LabelPadding = 2; // pixels either side of a side label's text
constexpr int LabelClearance = 3; // between the object's reach and its label's usual place
// Laid-out label texts kept; a full cache starts afresh. A frame shows at most 64 labels
// and most speeds change from frame to frame, so a few hundred hold every text worth
// keeping; each costs about 500 bytes, and a larger cache only grows the heap.
constexpr int MaxCachedLabels = 512;

} // namespace

void SchemeObjectsLayer::paint(QPainter& painter, const SchemeGeometry& g,
                               const QVector<quint8>& order, const FrameObjects& objects)
{
    const QFontMetrics metrics(painter.font());
    if (painter.font() != m_measuredFont) {
        m_measuredFont = painter.font();
        m_advances.clear();
        m_texts.clear();
        m_glyphs.setFont(m_measuredFont);
        m_labels.clear();
        m_shortWidths.fill(0);
    }
    const QRect view(QPoint(0, 0), g.size());
    m_placer.reset(view);
    m_sideLabels.clear();
    m_placements.clear();
    const QString speedFormat = tr("%1 km/h");
    // Boxes are copied from pictures within the view, where the painter allows it.
    const QRect boxView = BoxPictures::canCopy(painter) ? view : QRect();
    const int lineHeight = metrics.height();

    for (quint8 id : order) {
        const RoadObject* found = objects.find(id);
        if (!found)
            continue;
        const RoadObject& o = *found;
        const quint8 colorId = m_paintObjects ? o.id : 0;
        const Look& look = this->look(colorId);
        const QSize size = g.objectPixelSize(o.length);
        const int length = size.width();
        const int width = size.height();
        // The glyph starts at the reported point and extends along its heading.
        const QRect body
            = g.isVertical()
                  ? QRect(QPoint(-width / 2, -length), QPoint(width - width / 2 - 2, -2))
                  : QRect(QPoint(0, -width / 2), QPoint(length - 2, width - width / 2 - 2));
        const QPoint at = g.xyToScreen(o.xRange, o.yRange);

        QTransform transform;
        transform.translate(at.x(), at.y());
        transform.rotate(-g.objectHeading(o.xSpeed, o.ySpeed));
        m_boxes.draw(painter, boxView, transform, body, colorId, look.outline, look.fill);
        const QRect glyph = transform.mapRect(body).adjusted(0, 0, 1, 1);
        m_placer.addGlyph(glyph);
        if (length >= MinLabelledSize && width >= MinLabelledSize) {
            painter.setTransform(transform);
            painter.setPen(look.ink);
            painter.drawText(body, Qt::AlignCenter, idText(o.id));
            continue;
        }
        // Too small to carry its id: a label beside it, clear of the glyph whichever
        // way it points, placed once every glyph is known.
        SideLabel side;
        side.id = o.id;
        side.anchor = at;
        side.text = shortText(o.id);
        side.text += QLatin1Char(' ');
        side.text += speedFormat.arg(FixedText::number(RoadObject::kmh(o.xSpeed), 1));
        side.request.anchor = at;
        side.request.glyph = glyph;
        side.request.clearance = std::max(length, width) + LabelClearance;
        side.request.size = QSize(textWidth(side.text, metrics) + 2 * LabelPadding, lineHeight);
        int& shortWidth = m_shortWidths[o.id];
        if (shortWidth == 0)
            shortWidth = textWidth(shortText(o.id), metrics);
        side.request.shortSize = QSize(shortWidth + 2 * LabelPadding, lineHeight);
        m_sideLabels.append(side);
    }
    painter.resetTransform();
    painter.setBrush(Qt::NoBrush);

    for (const SideLabel& side : qAsConst(m_sideLabels)) {
        const SchemeLabelPlacer::Placement placement = m_placer.place(side.request);
        m_placements.append(placement);
        const quint8 colorId = m_paintObjects ? side.id : 0;
        const Look& look = this->look(colorId);
        if (placement.moved) {
            // A thin leader from the object to the nearest point of its label.
            const QRect& box = placement.box;
            const QPoint to(std::clamp(side.anchor.x(), box.left(), box.right()),
                            std::clamp(side.anchor.y(), box.top(), box.bottom()));
            painter.setPen(look.outline);
            painter.drawLine(side.anchor, to);
        }
        const QString& text = placement.shortened ? shortText(side.id) : side.text;
        m_labels.draw(painter, placement.box, text, colorId, [&](QPainter& p, const QPoint& at) {
            p.fillRect(QRect(at, placement.box.size()), look.fill);
            p.setPen(look.ink);
            drawText(p, QPoint(at.x() + LabelPadding, at.y()), text);
        });
    }
    m_labels.finishFrame();
    m_boxes.finishFrame();
}

const SchemeObjectsLayer::Look& SchemeObjectsLayer::look(quint8 colorId)
{
    // Pens and brushes made once: making them for every object and label of every frame
    // was a good part of drawing the small rectangles.
    Look& look = m_looks[colorId];
    if (!look.made) {
        const QColor& fill = ObjectColor::base(colorId);
        look.outline = QPen(fill, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
        look.fill = QBrush(fill);
        look.ink = QPen(ObjectColor::text(colorId));
        look.made = true;
    }
    return look;
}

const QString& SchemeObjectsLayer::idText(quint8 id)
{
    QString& text = m_idTexts[id];
    if (text.isEmpty())
        text = QString::number(id);
    return text;
}

const QString& SchemeObjectsLayer::shortText(quint8 id)
{
    QString& text = m_shortTexts[id];
    if (text.isEmpty())
        text = QStringLiteral("[%1]").arg(id);
    return text;
}

const QStaticText& SchemeObjectsLayer::staticText(const QString& text, const QFont& font)
{
    auto it = m_texts.find(text);
    if (it == m_texts.end()) {
        if (m_texts.size() >= MaxCachedLabels)
            m_texts.clear();
        QStaticText laidOut(text);
        laidOut.setTextFormat(Qt::PlainText);
        laidOut.prepare(QTransform(), font);
        it = m_texts.insert(text, laidOut);
    }
    return *it;
}

void SchemeObjectsLayer::drawText(QPainter& painter, const QPoint& topLeft, const QString& text)
{
    if (m_glyphs.layout(text))
        m_glyphs.draw(&painter, topLeft);
    else
        painter.drawStaticText(topLeft, staticText(text, painter.font()));
}

int SchemeObjectsLayer::textWidth(const QString& text, const QFontMetrics& metrics)
{
    if (m_glyphs.layout(text))
        return int(std::ceil(m_glyphs.width()));
    int width = 0;
    for (const QChar c : text) {
        auto it = m_advances.find(c);
        if (it == m_advances.end())
            it = m_advances.insert(c, metrics.horizontalAdvance(c));
        width += *it;
    }
    return width;
}
