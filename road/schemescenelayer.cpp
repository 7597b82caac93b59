#include "schemescenelayer.h"

#include "objectcolor.h"

#include <QPainter>

#include <algorithm>
#include <cstring>

namespace {

const QColor SightAreaFill(0, 255, 255, 63);
const QColor SightLine(0, 191, 191);
const QColor AverageTrack(255, 0, 0);
// More boxes than this to draw anew in one picture are drawn as the box around them.
constexpr int MaxDamageBoxes = 32;

QPen linePen(const QColor& color, double width, Qt::PenStyle style = Qt::SolidLine)
{
    return QPen(color, width, style, Qt::SquareCap, Qt::BevelJoin);
}

// Copies a box of one picture into another of the same size and format.
void copyArea(const QImage& from, QImage& to, const QRect& area)
{
    const QRect box = area & from.rect();
    if (box.isEmpty())
        return;
    const size_t bytes = size_t(box.width()) * 4;
    for (int y = box.top(); y <= box.bottom(); ++y) {
        std::memcpy(to.scanLine(y) + size_t(box.left()) * 4,
                    from.constScanLine(y) + size_t(box.left()) * 4, bytes);
    }
}

} // namespace

void SchemeSceneLayer::setSight(const Sight& sight)
{
    if (sight == m_sight)
        return;
    m_sight = sight;
    m_baseStale = true;
}

void SchemeSceneLayer::setShowAverageTracks(bool show)
{
    m_baseStale = m_baseStale || show != m_showAverageTracks;
    m_showAverageTracks = show;
}

void SchemeSceneLayer::setDrawTracksLive(bool live)
{
    m_tracksStale = m_tracksStale || live != m_drawTracksLive;
    m_drawTracksLive = live;
}

void SchemeSceneLayer::setPaintObjects(bool paint)
{
    // The tracks take their objects' colours.
    m_tracksStale = m_tracksStale || paint != m_paintObjects;
    m_paintObjects = paint;
}

void SchemeSceneLayer::takeChanges(const SchemeTracks::Changes& changes)
{
    for (quint8 id : changes.ended)
        m_drawn[id] = DrawnTrack();
    for (const auto& trim : changes.trimmed) {
        int& points = m_drawn[trim.first].points;
        points = std::max(points - trim.second, 0);
    }
    m_damage += changes.damage;
    if (m_damage.size() > MaxDamageBoxes) {
        QRect all;
        for (const QRect& box : qAsConst(m_damage))
            all |= box;
        m_damage = {all};
    }
}

const QImage& SchemeSceneLayer::picture(const QPixmap& road, const SchemeTracks& tracks)
{
    if (m_baseStale || road.cacheKey() != m_roadKey || tracks.averageVersion() != m_averageVersion
        || m_base.size() != road.size()) {
        m_baseStale = false;
        m_roadKey = road.cacheKey();
        m_averageVersion = tracks.averageVersion();
        doDrawBase(road, tracks);
        m_tracksStale = true;
    }
    if (m_tracksStale || tracks.reshaped() != m_tracksReshaped) {
        m_tracksStale = false;
        m_tracksReshaped = tracks.reshaped();
        doDrawTracks(tracks);
    } else if (m_drawTracksLive) {
        doRepair(tracks);
        doDrawNewTrackPoints(tracks);
    }
    m_damage.clear();
    return m_picture;
}

void SchemeSceneLayer::doDrawBase(const QPixmap& road, const SchemeTracks& tracks)
{
    // In this order: the road, the sight area, the sight line and the average tracks.
    // The picture is drawn over in place when it has the road's size and format.
    QImage roadImage = road.toImage();
    if (roadImage.format() != QImage::Format_RGB32
        && roadImage.format() != QImage::Format_ARGB32_Premultiplied)
        roadImage = roadImage.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (m_base.size() != roadImage.size() || m_base.format() != roadImage.format())
        m_base = QImage(roadImage.size(), roadImage.format());
    copyArea(roadImage, m_base, m_base.rect());
    QPainter p(&m_base);
    if (m_sight.showLine && m_sight.showArea && m_sight.area.size() >= 3) {
        p.setPen(Qt::NoPen);
        p.setBrush(SightAreaFill);
        p.drawPolygon(m_sight.area);
        p.setBrush(Qt::NoBrush);
    }
    if (m_sight.showLine && m_sight.hasLine) {
        p.setPen(linePen(SightLine, 2.0));
        p.drawLine(m_sight.line);
        const QPoint end = m_sight.line.p2();
        p.fillRect(QRect(QPoint(end.x() - 3, end.y() - 3), QPoint(end.x() + 1, end.y() + 1)),
                   SightLine);
    }
    if (m_showAverageTracks) {
        p.setPen(linePen(AverageTrack, 2.0, Qt::DashLine));
        for (const QPolygon& track : tracks.averageScreenTracks())
            p.drawPolyline(track);
    }
}

QRgb SchemeSceneLayer::trackColor(quint8 id) const
{
    return ObjectColor::base(m_paintObjects ? id : 0).rgba();
}

void SchemeSceneLayer::doDrawTracks(const SchemeTracks& tracks)
{
    // Every track in full over the base, in the order of their ids.
    if (m_picture.size() != m_base.size() || m_picture.format() != m_base.format())
        m_picture = QImage(m_base.size(), m_base.format());
    copyArea(m_base, m_picture, m_picture.rect());
    m_damage.clear();
    m_drawn.fill(DrawnTrack());
    const QMap<quint8, QPolygon>& screenTracks = tracks.screenTracks();
    if (m_drawTracksLive)
        m_rasterizer.begin(&m_picture);
    for (auto it = screenTracks.cbegin(); it != screenTracks.cend(); ++it) {
        DrawnTrack& drawn = m_drawn[it.key()];
        if (m_drawTracksLive)
            drawn.box = m_rasterizer.drawTrack(*it, trackColor(it.key()));
        drawn.points = it->size();
    }
}

void SchemeSceneLayer::doRepair(const SchemeTracks& tracks)
{
    // The damaged boxes as a whole draw would leave them: the base, then every track
    // through them. Around them, drawing every track again in full order changes
    // nothing that a whole draw would not show, so one pass over the box around them
    // all does.
    QRect around;
    for (const QRect& box : qAsConst(m_damage)) {
        copyArea(m_base, m_picture, box);
        around |= box;
    }
    around &= m_picture.rect();
    if (around.isEmpty())
        return;
    // Most frames repair a few pixels: a track that never drew there is passed over
    // without a look at its points. One not drawn yet is drawn whole next.
    m_rasterizer.begin(&m_picture, around);
    const QMap<quint8, QPolygon>& screenTracks = tracks.screenTracks();
    for (auto it = screenTracks.cbegin(); it != screenTracks.cend(); ++it) {
        if (m_drawn[it.key()].box.intersects(around))
            m_rasterizer.drawTrack(*it, trackColor(it.key()));
    }
}

void SchemeSceneLayer::doDrawNewTrackPoints(const SchemeTracks& tracks)
{
    // From the last point drawn on: the line on to the new points, and the mark the
    // formerly last point now carries.
    m_rasterizer.begin(&m_picture);
    const QMap<quint8, QPolygon>& screenTracks = tracks.screenTracks();
    for (auto it = screenTracks.cbegin(); it != screenTracks.cend(); ++it) {
        DrawnTrack& drawn = m_drawn[it.key()];
        const int size = it->size();
        if (size > drawn.points) {
            const int first = std::max(drawn.points - 1, 0);
            drawn.box |= m_rasterizer.drawTrack(it->constData() + first, size - first,
                                                trackColor(it.key()));
        }
        drawn.points = size;
    }
}
