#include "schemeroadlayer.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Cross lines stand every 10 m from 10 m on; every 20 m their notch is long and may
// carry the distance. The Y scale has a tick every metre, a long one every 5 m, which
// may carry the value.
constexpr int DistanceLineStep = 10;
constexpr int DistanceTextUnit = 20;
constexpr int LongNotch = 8;
constexpr int ShortNotch = 4;
constexpr int ScaleTextUnit = 5;
constexpr int TextGap = 2; // between a notch's end and its text
constexpr int TextSpacing = 2; // least room between two neighbouring texts
constexpr int MinTickSpacing = 2; // pixels between Y ticks; denser ticks are thinned

const QColor Background(0, 0, 0);
const QColor Grey(127, 127, 127);
const QColor White(255, 255, 255);
const QColor LimitationOutline(0, 0, 127);
const QColor LimitationFill(0, 0, 63);
const QColor LongExposureTrack(255, 255, 0, 15);

QPen linePen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    return QPen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
}

QPen dashedPen(const QColor& color, const QVector<qreal>& pattern)
{
    QPen pen = linePen(color, 1.0);
    pen.setDashPattern(pattern);
    return pen;
}

// The round numbers 1, 2, 5, 10, 20, 50 ...: the next one above n.
qint64 nextRoundNumber(qint64 n)
{
    qint64 decade = 1;
    while (decade * 10 <= n)
        decade *= 10;
    const qint64 mantissa = n / decade;
    return mantissa < 2 ? 2 * decade : mantissa < 5 ? 5 * decade : 10 * decade;
}

bool isMultiple(int value, qint64 step)
{
    return qint64(value) % step == 0;
}

} // namespace

void SchemeRoadLayer::setRoad(const SchemeRoad& road)
{
    m_road = road;
    doLayOut();
}

void SchemeRoadLayer::setGeometry(const SchemeGeometry& geometry, const QFont& font)
{
    m_geometry = geometry;
    m_font = font;
    doLayOut();
}

void SchemeRoadLayer::setLimitation(const QRectF& area, bool inUse)
{
    m_limitation = area;
    m_limitationInUse = inUse;
    doLayOut();
}

void SchemeRoadLayer::doLayOut()
{
    m_stale = true;
    m_axisPx.clear();
    m_laneBordersPx.clear();
    m_roadBordersPx.clear();
    m_distanceLinesPx.clear();
    m_notchesPx.clear();
    m_limitationPx.clear();
    m_distanceTexts.clear();
    m_scaleTexts.clear();
    const SchemeGeometry& g = m_geometry;
    if (!g.isValid())
        return;

    m_axisPx = g.toScreen(m_road.axis);
    for (const QPolygonF& line : qAsConst(m_road.laneBorders))
        m_laneBordersPx.append(g.toScreen(line));
    for (const QPolygonF& line : qAsConst(m_road.roadBorders))
        m_roadBordersPx.append(g.toScreen(line));
    m_xAxisPx = QLine(g.screenPos(0, 0), g.screenPos(g.alongPixels(), 0));
    const QRectF view = g.viewArea();
    m_yExtentPx = QLine(g.xyToScreen(0, view.top()), g.xyToScreen(0, view.bottom()));
    if (!m_limitation.isNull()) {
        const QRectF& a = m_limitation;
        m_limitationPx = g.toScreen(QPolygonF(
            QVector<QPointF>{a.topLeft(), a.topRight(), a.bottomRight(), a.bottomLeft()}));
    }
    doLayOutDistances();
    doLayOutScale();
}

void SchemeRoadLayer::doLayOutDistances()
{
    // A notch at the road's right-hand edge, across the road, every 10 m.
    const SchemeGeometry& g = m_geometry;
    QVector<TextPlace> places;
    for (auto it = m_road.distanceLines.cbegin(); it != m_road.distanceLines.cend(); ++it) {
        const int mark = it.key();
        if (mark <= 0 || mark % DistanceLineStep != 0 || it->isEmpty())
            continue;
        m_distanceLinesPx.append(g.toScreen(*it));
        const QPointF edge = QPointF(g.projected(it->first().x(), it->first().y()));
        const QPointF direction = g.notchDirection(m_road.tanAngles.value(mark));
        const bool long20 = mark % DistanceTextUnit == 0;
        const QPointF end = edge + direction * (long20 ? LongNotch : ShortNotch);
        m_notchesPx.append(QLine(g.screenOf(edge), g.screenOf(end)));
        if (long20)
            places.append({mark, g.screenOf(end + direction * TextGap), g.onScreen(direction)});
    }
    m_distanceTextStep = thinnedTexts(places, DistanceTextUnit, 1, m_distanceTexts);
}

void SchemeRoadLayer::doLayOutScale()
{
    // The scale of Y on the radar's line, ticks pointing back past the radar. A tick
    // every metre unless the metres lie closer than a couple of pixels; then every 2,
    // 5, 10 ... metres, so that a broken road of light-years draws a few ticks, not
    // billions.
    const SchemeGeometry& g = m_geometry;
    const QRectF view = g.viewArea();
    qint64 tickStep = 1;
    while (tickStep * g.scaleY() < MinTickSpacing && tickStep < (qint64(1) << 52))
        tickStep = nextRoundNumber(tickStep);
    const double first = std::ceil(view.top() / double(tickStep)) * double(tickStep);
    QVector<TextPlace> places;
    for (double y = first; y <= view.bottom(); y += double(tickStep)) {
        if (std::fabs(y) > double(std::numeric_limits<int>::max()))
            break;
        const int value = int(y);
        const QPointF at = QPointF(g.projected(0, value));
        const bool long5 = value % ScaleTextUnit == 0;
        const QPointF end = at + QPointF(-(long5 ? LongNotch : ShortNotch), 0);
        m_notchesPx.append(QLine(g.screenOf(at), g.screenOf(end)));
        if (long5)
            places.append(
                {value, g.screenOf(end + QPointF(-TextGap, 0)), g.onScreen(QPointF(-1, 0))});
    }
    m_scaleTextStep = thinnedTexts(places, 1, ScaleTextUnit, m_scaleTexts);
}

int SchemeRoadLayer::thinnedTexts(const QVector<TextPlace>& places, int unit, int firstRound,
                                  QVector<Text>& texts) const
{
    // Every value that is a multiple of the step; the step grows until no two touch or
    // a single value is left.
    for (qint64 round = firstRound;; round = nextRoundNumber(round)) {
        const qint64 step = round * unit;
        if (layOutTexts(places, step, texts) || texts.size() <= 1)
            return int(std::min<qint64>(step, std::numeric_limits<int>::max()));
    }
}

bool SchemeRoadLayer::layOutTexts(const QVector<TextPlace>& places, qint64 step,
                                  QVector<Text>& texts) const
{
    texts.clear();
    const QFontMetrics metrics(m_font);
    const QRect view(QPoint(0, 0), m_geometry.size());
    bool apart = true;
    for (const TextPlace& place : places) {
        if (!isMultiple(place.value, step))
            continue;
        const QString text = QString::number(place.value);
        QRect box(0, 0, metrics.horizontalAdvance(text), metrics.height());
        // The text's nearer edge starts just past the notch's end; a text at the view's
        // edge moves inside rather than be cut.
        const double reach = std::fabs(place.direction.x()) * box.width() / 2.0
                             + std::fabs(place.direction.y()) * box.height() / 2.0;
        box.moveCenter((QPointF(place.position) + place.direction * reach).toPoint());
        box.moveLeft(std::clamp(box.left(), 0, std::max(0, view.width() - box.width())));
        box.moveTop(std::clamp(box.top(), 0, std::max(0, view.height() - box.height())));
        if (!texts.isEmpty()
            && texts.last()
                   .box.adjusted(-TextSpacing, -TextSpacing, TextSpacing, TextSpacing)
                   .intersects(box))
            apart = false;
        texts.append({place.value, box});
    }
    return apart;
}

void SchemeRoadLayer::expose(const QMap<quint8, QPolygon>& tracks)
{
    picture(); // drawn first if stale: the exposure starts from the clean road
    QPainter p(&m_picture);
    p.setPen(linePen(LongExposureTrack, 2.0));
    for (const QPolygon& track : tracks) {
        if (track.size() >= 2)
            p.drawPolyline(track);
    }
}

void SchemeRoadLayer::setDevicePixelRatio(qreal ratio)
{
    m_stale = m_stale || ratio != m_devicePixelRatio;
    m_devicePixelRatio = ratio;
}

QSize SchemeRoadLayer::pixelSize() const
{
    return (QSizeF(m_geometry.size().expandedTo(QSize(1, 1))) * m_devicePixelRatio).toSize();
}

const QPixmap& SchemeRoadLayer::picture()
{
    if (m_stale || m_picture.size() != pixelSize()) {
        m_stale = false;
        doDraw();
    }
    return m_picture;
}

void SchemeRoadLayer::doDraw()
{
    m_picture = QPixmap(pixelSize());
    m_picture.setDevicePixelRatio(m_devicePixelRatio);
    m_picture.fill(Background);
    if (!m_geometry.isValid())
        return;
    QPainter p(&m_picture);
    p.setFont(m_font);

    if (m_limitationPx.size() == 4) {
        p.setPen(linePen(LimitationOutline, m_limitationInUse ? 1.0 : 3.0));
        p.setBrush(m_limitationInUse ? QBrush(LimitationFill) : Qt::NoBrush);
        p.drawPolygon(m_limitationPx);
        p.setBrush(Qt::NoBrush);
    }

    p.setPen(dashedPen(Grey, {7, 7}));
    p.drawPolyline(m_axisPx);
    p.drawLine(m_xAxisPx);
    p.drawLine(m_yExtentPx);

    p.setPen(linePen(Grey, 1.0, Qt::DotLine));
    for (const QPolygon& line : qAsConst(m_distanceLinesPx))
        p.drawPolyline(line);

    p.setPen(linePen(Grey, 1.0));
    p.drawLines(m_notchesPx);

    p.setPen(dashedPen(White, {6, 6}));
    for (const QPolygon& line : qAsConst(m_laneBordersPx))
        p.drawPolyline(line);
    p.setPen(linePen(White, 1.0));
    for (const QPolygon& line : qAsConst(m_roadBordersPx))
        p.drawPolyline(line);

    p.setPen(linePen(Grey, 1.0));
    for (const QVector<Text>* texts : {&m_distanceTexts, &m_scaleTexts}) {
        for (const Text& text : *texts)
            p.drawText(text.box, Qt::AlignCenter, QString::number(text.value));
    }
}
