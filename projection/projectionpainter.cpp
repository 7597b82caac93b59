#include "projectionpainter.h"

#include "cameramodel.h"
#include "fixedtext.h"
#include "labelpictures.h"
#include "objectcolor.h"
#include "opaquecover.h"
#include "projectionroad.h"
#include "projectiontracks.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const QColor Veil(255, 255, 255, 31);
const QColor FrameLine(255, 255, 0);
const QColor DistanceLine(0, 255, 0, 255);
const QColor LaneLine(0, 255, 0, 127);
const QColor AverageTrack(255, 0, 0, 255);
const QColor CheckpointFill(0, 0, 0);
const QColor CheckpointOutline(255, 255, 255);
const QColor SegmentLine(255, 255, 255);
constexpr int CrossHalf = 8;
constexpr int LabelPixelSize = 20;
constexpr int LabelCacheLimit = 512; // speed labels kept laid out (at most 64 a frame)
constexpr int AnimationAlphaStep = 32;

QPen linePen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    return QPen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
}

// The pixels of drawRect(box) with a one-pixel pen and a solid brush, both opaque: the
// outline on the box's edges and one past its right and bottom, the fill inside. Filled
// spans instead of a stroked outline: sixty-four label boxes a picture.
void drawFramedBox(QPainter& p, const QRect& box, const QColor& outline, const QColor& fill)
{
    const QRect outer(box.topLeft(), QSize(box.width() + 1, box.height() + 1));
    p.fillRect(outer.adjusted(1, 1, -1, -1), fill);
    p.fillRect(QRect(outer.left(), outer.top(), outer.width(), 1), outline);
    p.fillRect(QRect(outer.left(), outer.bottom(), outer.width(), 1), outline);
    p.fillRect(QRect(outer.left(), outer.top() + 1, 1, outer.height() - 2), outline);
    p.fillRect(QRect(outer.right(), outer.top() + 1, 1, outer.height() - 2), outline);
}

} // namespace

const std::array<QPoint, ProjectionPainter::AnimationCellCount>
    ProjectionPainter::AnimationTemplate{{
        {0, 1},  {1, 1},  {2, 1}, {2, 0}, {2, -1}, {1, -1}, {0, -1}, {-1, -1}, {-1, 0},  {-1, 1},
        {-1, 2}, {0, 2},  {1, 2}, {1, 1}, {1, 0},  {1, -1}, {0, -1}, {-1, -1}, {-2, -1}, {-2, 0},
        {-2, 1}, {-1, 1}, {0, 1}, {1, 1}, {1, 0},  {1, -1}, {1, -2}, {0, -2},  {-1, -2}, {-1, -1},
        {-1, 0}, {-1, 1}, {0, 1}, {1, 1}, {2, 1},  {2, 0},  {2, -1}, {1, -1},  {0, -1},  {-1, -1},
    }};

void ProjectionPainter::paint(QPainter& painter, const Scene& scene)
{
    if (scene.size.isEmpty() || !scene.model)
        return;
    const bool showRoad = scene.mode == Mode::Normal && scene.model->isValid() && scene.road
                          && scene.tracks && scene.frame;
    // The base and the tracks are drawn at the screen's density, sharp on a scaled display.
    const qreal ratio = painter.device() ? painter.device()->devicePixelRatioF() : 1.0;
    if (doUpdateBase(scene, showRoad, ratio)) {
        m_composed = m_base.copy();
        m_tracksRects.clear();
    } else if (!m_tracksRects.isEmpty()) {
        // Take last frame's tracks off again, within their boxes: a queue of standing
        // vehicles covers little of the picture. The boxes pile up where the lanes meet
        // the horizon, so each row is copied once, from its leftmost box to its
        // rightmost (between them the composed picture is the base anyway): seven
        // times fewer pixels than box by box with sixty vehicles.
        const int height = m_base.height();
        m_rowLeft.assign(size_t(height), std::numeric_limits<int>::max());
        m_rowRight.assign(size_t(height), -1);
        for (const QRect& box : qAsConst(m_tracksRects)) {
            const QRect r = box & m_base.rect();
            for (int y = r.top(); y <= r.bottom(); ++y) {
                m_rowLeft[size_t(y)] = std::min(m_rowLeft[size_t(y)], r.left());
                m_rowRight[size_t(y)] = std::max(m_rowRight[size_t(y)], r.right());
            }
        }
        const qsizetype stride = m_base.bytesPerLine();
        const uchar* from = m_base.constBits();
        uchar* to = m_composed.bits();
        for (int y = 0; y < height; ++y) {
            const int left = m_rowLeft[size_t(y)];
            if (left > m_rowRight[size_t(y)])
                continue;
            const qsizetype at = y * stride + qsizetype(left) * 4;
            std::copy_n(from + at, size_t(m_rowRight[size_t(y)] - left + 1) * 4, to + at);
        }
        m_tracksRects.clear();
    }
    if (showRoad && scene.options.showCurrentTracks)
        doDrawTracks(scene, ratio);

    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, m_composed);
    painter.restore();

    if (scene.mode == Mode::Computing)
        doDrawAnimation(painter, scene);
    if (showRoad)
        doDrawObjects(painter, scene);
    else if (scene.mode != Mode::Normal)
        doDrawCheckpoints(painter, scene);
}

bool ProjectionPainter::doUpdateBase(const Scene& scene, bool showRoad, qreal devicePixelRatio)
{
    const LinesKey linesKey{scene.size,
                            devicePixelRatio,
                            scene.road ? scene.road->linesVersion() : 0,
                            showRoad,
                            scene.options.showLaneLines,
                            scene.options.showDistLines};
    if (m_linesDrawn == 0 || !(linesKey == m_linesKey)) {
        m_linesKey = linesKey;
        ++m_linesDrawn;
        doDrawLines(scene, showRoad, devicePixelRatio);
    }
    const bool average = showRoad && scene.options.showAverageTracks;
    const BaseKey key{m_linesDrawn, average ? scene.road->averageTracksVersion() : 0, average};
    if (key == m_baseKey)
        return false;
    m_baseKey = key;
    if (average && !scene.road->screenAverageTracks().isEmpty()) {
        m_base = m_lines.copy();
        doDrawAverageTracks(scene);
    } else {
        m_base = m_lines;
    }
    return true;
}

void ProjectionPainter::doDrawLines(const Scene& scene, bool showRoad, qreal devicePixelRatio)
{
    const int w = scene.size.width();
    const int h = scene.size.height();
    m_lines = QImage((QSizeF(scene.size) * devicePixelRatio).toSize(),
                     QImage::Format_ARGB32_Premultiplied);
    m_lines.setDevicePixelRatio(devicePixelRatio);
    m_lines.fill(Veil);
    QPainter p(&m_lines);
    p.setPen(QPen(FrameLine, 1, Qt::DashLine));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRect(QPoint(0, 0), QPoint(w - 2, h - 2)));

    const QPoint c = scene.model->centre();
    const QLine across(c.x() - CrossHalf, c.y(), c.x() + CrossHalf, c.y());
    const QLine down(c.x(), c.y() - CrossHalf, c.x(), c.y() + CrossHalf);
    p.setPen(linePen(Qt::black, 4));
    p.drawLine(across);
    p.drawLine(down);
    p.setPen(linePen(Qt::white, 2));
    p.drawLine(across);
    p.drawLine(down);
    if (!showRoad)
        return;

    const ProjectionRoad& road = *scene.road;
    if (scene.options.showDistLines) {
        p.setPen(linePen(DistanceLine, 1, Qt::DotLine));
        for (const QPolygon& line : road.screenDistanceLines())
            p.drawPolyline(line);
    }
    if (scene.options.showLaneLines) {
        p.setPen(linePen(LaneLine, 4));
        for (const QPolygon& line : road.screenRoadBorders())
            p.drawPolyline(line);
        for (const QPolygon& line : road.screenLaneBorders())
            p.drawPolyline(line);
    }
}

void ProjectionPainter::doDrawAverageTracks(const Scene& scene)
{
    QPainter p(&m_base);
    p.setPen(linePen(AverageTrack, 2, Qt::DashLine));
    for (const QPolygon& track : scene.road->screenAverageTracks())
        p.drawPolyline(track);
}

void ProjectionPainter::doDrawTracks(const Scene& scene, qreal devicePixelRatio)
{
    // The rasterizer writes the picture's own pixels.
    const QTransform toPixels = QTransform::fromScale(devicePixelRatio, devicePixelRatio);
    // In display order: later ids paint over earlier ones.
    m_rasterizer.begin(&m_composed);
    for (quint8 id : scene.frame->sortedIds) {
        const QPoint* points = nullptr;
        const int count = scene.tracks->screenPath(id, &points);
        if (count < 2)
            continue;
        const QRgb color = ObjectColor::base(scene.options.paintObjects ? id : 0).rgba();
        if (devicePixelRatio == 1.0)
            m_rasterizer.drawTrack(points, count, color);
        else
            m_rasterizer.drawTrack(toPixels.map(QPolygon(QVector<QPoint>(points, points + count))),
                                   color);
    }
    m_tracksRects = m_rasterizer.touched();
}

const QStaticText& ProjectionPainter::staticText(QHash<QString, QStaticText>& cache,
                                                 const QString& text, const QFont& font)
{
    auto it = cache.find(text);
    if (it == cache.end()) {
        if (cache.size() >= LabelCacheLimit)
            cache.clear();
        QStaticText laidOut(text);
        laidOut.setTextFormat(Qt::PlainText);
        laidOut.prepare(QTransform(), font);
        it = cache.insert(text, laidOut);
    }
    return *it;
}

void ProjectionPainter::doDrawObjects(QPainter& p, const Scene& scene)
{
    if (m_textFont != scene.font) {
        m_textFont = scene.font;
        m_labelFont = scene.font;
        m_labelFont.setPixelSize(LabelPixelSize);
        m_idTexts.clear();
        m_labelTexts.clear();
        m_labelBounds.clear();
        m_discs.clear();
        m_labels.clear();
    }
    const bool pictures = LabelPictures::drawsOneToOne(p);
    const QFontMetrics labelMetrics(m_labelFont);
    const CameraModel& model = *scene.model;
    const QString speedFormat = tr("%1 km/h");
    bool ok = false;
    // Each marker's place and label first: what a later label covers is left out.
    m_markers.clear();
    for (quint8 id : scene.frame->sortedIds) {
        const RoadObject* object = scene.frame->objects.find(id);
        if (!object)
            continue;
        Marker marker;
        marker.at = model.xyToScreen(object->xRange, object->yRange, &ok);
        if (!ok)
            continue;
        marker.id = id;
        marker.colourId = scene.options.paintObjects ? id : 0;
        marker.label = speedFormat.arg(FixedText::number(RoadObject::kmh(object->xSpeed), 1));
        const QPoint& at = marker.at;
        const QRect labelRect(QPoint(at.x() + 22, at.y() - 32), QPoint(at.x() + 149, at.y() + 31));
        auto bounds = m_labelBounds.find(marker.label);
        if (bounds == m_labelBounds.end()) {
            if (m_labelBounds.size() >= LabelCacheLimit)
                m_labelBounds.clear();
            bounds = m_labelBounds.insert(
                marker.label,
                labelMetrics.boundingRect(QRect(0, 0, labelRect.width(), labelRect.height()),
                                          Qt::AlignLeft | Qt::AlignVCenter, marker.label));
        }
        // The framed box reaches a pixel past its rectangle's right and bottom edges.
        marker.frame = bounds->translated(labelRect.topLeft()).adjusted(-4, -2, 5, 1);
        m_markers.append(marker);
    }
    if (pictures) {
        // A label covers its whole box: from the last one drawn back, each keeps the part
        // that no later label covers. (Discs are blended and small: drawn whole.)
        const QRect view
            = QRect(0, 0, p.device()->width(), p.device()->height())
                  .translated(-qRound(p.transform().dx()), -qRound(p.transform().dy()));
        m_cover.reset(view.size());
        for (int i = m_markers.size() - 1; i >= 0; --i) {
            const QRect frame = m_markers[i].frame.translated(-view.topLeft());
            m_markers[i].shownLabel = m_cover.uncovered(frame).translated(view.topLeft());
            m_cover.cover(frame);
        }
    }
    for (const Marker& marker : qAsConst(m_markers)) {
        const QColor& base = ObjectColor::base(marker.colourId);
        const QColor& text = ObjectColor::text(marker.colourId);
        if (pictures) {
            const DiscPicture& disc = discPicture(marker.id, marker.colourId, text, base);
            p.drawImage(marker.at + disc.offset, disc.image);
        } else {
            drawDisc(p, marker.at, marker.id, text, base);
        }
        if (pictures && marker.shownLabel.isEmpty())
            continue;
        const QRect& frame = marker.frame;
        m_labels.draw(
            p, frame, marker.label, marker.colourId,
            [&](QPainter& onto, const QPoint& at) {
                drawFramedBox(onto, QRect(at, frame.size() - QSize(1, 1)), text, base);
                onto.setPen(text);
                onto.setFont(m_labelFont);
                onto.drawStaticText(at + QPoint(4, 2),
                                    staticText(m_labelTexts, marker.label, m_labelFont));
            },
            pictures ? marker.shownLabel : frame);
    }
    p.setBrush(Qt::NoBrush);
    m_labels.finishFrame();
}

const ProjectionPainter::DiscPicture& ProjectionPainter::discPicture(quint8 id, quint8 colourId,
                                                                     const QColor& outline,
                                                                     const QColor& fill)
{
    const quint16 key = quint16(id | colourId << 8);
    auto picture = m_discs.constFind(key);
    if (picture != m_discs.cend())
        return *picture;
    // The outline reaches a pixel past the disc's rectangle, a long id may reach past
    // the disc.
    const QSizeF idSize = staticText(m_idTexts, QString::number(id), m_textFont).size();
    const QRect reach
        = (QRect(QPoint(-12, -12), QPoint(11, 11))
           | QRectF(QPointF(-0.5 - idSize.width() / 2.0, -0.5 - idSize.height() / 2.0), idSize)
                 .toAlignedRect())
              .adjusted(-1, -1, 1, 1);
    DiscPicture made{QImage(reach.size(), QImage::Format_ARGB32_Premultiplied), reach.topLeft()};
    made.image.fill(Qt::transparent);
    QPainter onPicture(&made.image);
    drawDisc(onPicture, -reach.topLeft(), id, outline, fill);
    onPicture.end();
    return *m_discs.insert(key, made);
}

void ProjectionPainter::drawDisc(QPainter& p, const QPoint& at, quint8 id, const QColor& outline,
                                 const QColor& fill)
{
    const QRect disc(QPoint(at.x() - 12, at.y() - 12), QPoint(at.x() + 10, at.y() + 10));
    p.setPen(QPen(outline, 1));
    p.setBrush(fill);
    p.drawEllipse(disc);
    const QStaticText& idStatic = staticText(m_idTexts, QString::number(id), m_textFont);
    p.setFont(m_textFont);
    const QSizeF idSize = idStatic.size();
    p.drawStaticText(QPointF(disc.center().x() + 0.5 - idSize.width() / 2.0,
                             disc.center().y() + 0.5 - idSize.height() / 2.0),
                     idStatic);
}

void ProjectionPainter::doDrawCheckpoints(QPainter& p, const Scene& scene) const
{
    if (!scene.checkpoints)
        return;
    const QVector<PickupCheckpoint>& marks = *scene.checkpoints;
    if (marks.size() > 4) {
        p.setPen(linePen(SegmentLine, 2));
        p.drawLine(marks.at(4).pixel, marks.size() > 5 ? marks.at(5).pixel : scene.cursor);
    }
    p.setPen(QPen(CheckpointOutline, 1));
    p.setBrush(CheckpointFill);
    for (const PickupCheckpoint& mark : marks) {
        const QPoint& c = mark.pixel;
        p.drawEllipse(QRect(QPoint(c.x() - 4, c.y() - 4), QPoint(c.x() + 3, c.y() + 3)));
    }
    p.setBrush(Qt::NoBrush);
}

void ProjectionPainter::doDrawAnimation(QPainter& p, const Scene& scene) const
{
    p.setPen(Qt::NoPen);
    const int head = scene.animationIndex;
    for (int i = head, alpha = 255; i >= std::max(head - (AnimationTrail - 1), 0);
         --i, alpha -= AnimationAlphaStep) {
        if (i < scene.animationSquares.size())
            p.fillRect(scene.animationSquares.at(i), QColor(255, 255, 255, alpha));
    }
}
