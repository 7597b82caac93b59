#include "glyphtiles.h"

#include <QGlyphRun>
#include <QPaintEngine>
#include <QRawFont>

#include <algorithm>
#include <cstring>

namespace {
// Around a glyph's outline, room for the blank the rasterizer may leave.
constexpr int ProbeMargin = 4;
// A footprint that fits no window: such a glyph is always left to the painter.
const QRect Unknown(0, 0, 1 << 24, 1 << 24);
constexpr double MaxPosition = 1 << 20;

// A glyph at a fraction of a pixel, as one number.
inline quint64 placedGlyph(quint32 glyph, int fx, int fy)
{
    return quint64(glyph) << 12 | quint64(fx) << 6 | quint64(fy);
}
} // namespace

size_t GlyphTiles::KeyHash::operator()(const TileKey& key) const
{
    quint64 h = placedGlyph(key.glyph, key.fx, key.fy) ^ quint64(key.ink) * 0x9E3779B97F4A7C15ull
                ^ quint64(key.background) << 20;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    return size_t(h ^ (h >> 32));
}

void GlyphTiles::clear()
{
    m_footprints.clear();
    m_tiles.clear();
    m_recent.fill(Recent());
    m_broken = false;
}

GlyphTiles::Place GlyphTiles::place(const QPointF& devicePosition)
{
    // The painter takes positions in 64ths of a pixel, cut towards zero; a glyph goes
    // from the pixel left of its position and from the nearest pixel row.
    const int x = int(devicePosition.x() * 64);
    const int y = int(devicePosition.y() * 64);
    return Place{QPoint(x >> 6, (y + 32) >> 6), x & 63, y & 63};
}

const QRect& GlyphTiles::footprint(const QRawFont& font, quint32 glyph, int fx, int fy)
{
    const quint64 key = placedGlyph(glyph, fx, fy);
    auto it = m_footprints.find(key);
    if (it != m_footprints.end())
        return *it;
    // The glyph alone on transparent pixels: those it touches take some alpha.
    const QRect outline = font.boundingRect(glyph).toAlignedRect().adjusted(
        -ProbeMargin, -ProbeMargin, ProbeMargin, ProbeMargin);
    QImage probe(outline.size() + QSize(1, 1), QImage::Format_ARGB32_Premultiplied);
    probe.fill(Qt::transparent);
    const QPointF at(-outline.left() + fx / 64.0, -outline.top() + fy / 64.0);
    {
        QPainter painter(&probe);
        painter.setRenderHints(m_hints);
        painter.setPen(Qt::black);
        QGlyphRun one;
        one.setRawFont(font);
        one.setGlyphIndexes({glyph});
        one.setPositions({QPointF(0, 0)});
        painter.drawGlyphRun(at, one);
    }
    QRect touched;
    for (int y = 0; y < probe.height(); ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(probe.constScanLine(y));
        for (int x = 0; x < probe.width(); ++x) {
            if (qAlpha(line[x]) != 0)
                touched |= QRect(x, y, 1, 1);
        }
    }
    QRect found;
    if (!touched.isEmpty()) {
        // Touching the probe's edge, it may reach further: not known.
        found = touched.left() == 0 || touched.top() == 0 || touched.right() == probe.width() - 1
                        || touched.bottom() == probe.height() - 1
                    ? Unknown
                    : touched.translated(-place(at).anchor);
    }
    return *m_footprints.insert(key, found);
}

QImage* GlyphTiles::target(QPainter* painter) const
{
    // The painter's own pixels: a window's or a picture's, 32 bits a pixel, one to one.
    QPaintEngine* engine = painter->paintEngine();
    if (!engine || engine->type() != QPaintEngine::Raster || !engine->paintDevice()
        || engine->paintDevice()->devType() != QInternal::Image)
        return nullptr;
    QImage* image = static_cast<QImage*>(engine->paintDevice());
    if ((image->format() != QImage::Format_RGB32
         && image->format() != QImage::Format_ARGB32_Premultiplied)
        || image->devicePixelRatioF() != 1.0 || !image->isDetached())
        return nullptr;
    return image;
}

bool GlyphTiles::isPlain(const QImage& image, const QRect& box, QRgb color)
{
    for (int y = box.top(); y <= box.bottom(); ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(y)) + box.left();
        QRgb differs = 0;
        for (int x = 0; x < box.width(); ++x)
            differs |= line[x] ^ color;
        if (differs)
            return false;
    }
    return true;
}

const GlyphTiles::Tile* GlyphTiles::find(const TileKey& key)
{
    Recent& recent = m_recent[KeyHash()(key) % RecentCount];
    if (recent.tile && recent.key == key)
        return recent.tile;
    const auto it = m_tiles.find(key);
    if (it == m_tiles.end())
        return nullptr;
    recent = Recent{key, &it->second};
    return recent.tile;
}

bool GlyphTiles::liesApart(const QImage& image, QRgb background, int count) const
{
    for (int i = 0; i < count; ++i) {
        const QRect& box = m_boxes[i];
        if (box.isEmpty())
            continue;
        if (std::none_of(m_allowed.cbegin(), m_allowed.cend(),
                         [&box](const QRect& area) { return area.contains(box); }))
            return false;
        for (int j = 0; j < i; ++j) {
            if (m_boxes[j].intersects(box))
                return false;
        }
        if (!isPlain(image, box, background))
            return false;
    }
    return true;
}

void GlyphTiles::draw(QPainter* painter, const QPointF& topLeft, const QGlyphRun& run,
                      const quint32* glyphs, const QPointF* positions, int count)
{
    QImage* image = m_broken ? nullptr : target(painter);
    const QPen& pen = painter->pen();
    const QTransform& device = painter->deviceTransform();
    const QRegion systemClip = image ? painter->paintEngine()->systemClip() : QRegion();
    if (!image || count <= 0 || painter->hasClipping() || painter->opacity() != 1.0
        || painter->compositionMode() != QPainter::CompositionMode_SourceOver
        || device.type() > QTransform::TxTranslate || pen.style() == Qt::NoPen
        || pen.brush().style() != Qt::SolidPattern) {
        painter->drawGlyphRun(topLeft, run);
        return;
    }
    if (painter->renderHints() != m_hints || image->format() != m_format) {
        clear();
        m_hints = painter->renderHints();
        m_format = image->format();
    }
    // Where the painter may draw: the window, or the parts of it being repainted.
    m_allowed.clear();
    if (systemClip.isEmpty())
        m_allowed.append(image->rect());
    for (const QRect& area : systemClip)
        m_allowed.append(area & image->rect());

    // Where each glyph goes in the window. (Far off it, 64ths of a pixel would not fit
    // the painter's numbers.)
    m_places.resize(count);
    for (int i = 0; i < count; ++i) {
        const QPointF at = device.map(topLeft + positions[i]);
        if (!(at.x() >= 0 && at.y() >= 0 && at.x() < MaxPosition && at.y() < MaxPosition)) {
            painter->drawGlyphRun(topLeft, run);
            return;
        }
        m_places[i] = place(at);
    }
    // The colour the glyphs must lie on: that of the first one's anchor.
    const QPoint& anchor = m_places[0].anchor;
    if (!image->rect().contains(anchor)) {
        painter->drawGlyphRun(topLeft, run);
        return;
    }
    const QRgb background
        = reinterpret_cast<const QRgb*>(image->constScanLine(anchor.y()))[anchor.x()];
    const QRgba64 ink = pen.color().rgba64();

    m_boxes.resize(count);
    m_found.resize(count);
    bool known = true;
    for (int i = 0; i < count; ++i) {
        const Place& p = m_places[i];
        m_found[i] = find(TileKey{glyphs[i], p.fx, p.fy, ink, background});
        if (!m_found[i]) {
            known = false;
            break;
        }
        m_boxes[i] = m_found[i]->footprint.translated(p.anchor);
    }
    if (!known) {
        doDrawAndKeep(painter, topLeft, run, *image, background, ink, glyphs, count);
        return;
    }
    if (!liesApart(*image, background, count)) {
        painter->drawGlyphRun(topLeft, run);
        return;
    }
    uchar* bits = image->bits(); // detached: the painter's own pixels
    const qsizetype stride = image->bytesPerLine();
    for (int i = 0; i < count; ++i) {
        const QRect& box = m_boxes[i];
        if (box.isEmpty())
            continue;
        const QRgb* from = m_found[i]->pixels.constData();
        const size_t rowBytes = size_t(box.width()) * sizeof(QRgb);
        uchar* to = bits + box.top() * stride + qsizetype(box.left()) * qsizetype(sizeof(QRgb));
        for (int y = 0; y < box.height(); ++y, from += box.width(), to += stride)
            std::memcpy(to, from, rowBytes);
    }
}

void GlyphTiles::doDrawAndKeep(QPainter* painter, const QPointF& topLeft, const QGlyphRun& run,
                               const QImage& image, QRgb background, const QRgba64& ink,
                               const quint32* glyphs, int count)
{
    const QRawFont font = run.rawFont();
    for (int i = 0; i < count; ++i) {
        const Place& p = m_places[i];
        const QRect& reach = footprint(font, glyphs[i], p.fx, p.fy);
        m_boxes[i] = reach.isEmpty() ? QRect() : reach.translated(p.anchor);
    }
    if (!liesApart(image, background, count)) {
        painter->drawGlyphRun(topLeft, run);
        return;
    }
    // The pixels just around each glyph's box, which its glyph must leave as they are.
    const auto around = [this, count](auto&& visit) {
        for (int i = 0; i < count; ++i) {
            if (m_boxes[i].isEmpty())
                continue;
            const QRect ring = m_boxes[i].adjusted(-1, -1, 1, 1);
            for (int y = ring.top(); y <= ring.bottom(); ++y) {
                const bool edge = y == ring.top() || y == ring.bottom();
                for (int x = ring.left(); x <= ring.right(); x += edge ? 1 : ring.width() - 1) {
                    const bool inside
                        = std::any_of(m_boxes.cbegin(), m_boxes.cbegin() + count,
                                      [x, y](const QRect& b) { return b.contains(x, y); });
                    if (!inside)
                        visit(x, y);
                }
            }
        }
    };
    const QRect area = image.rect();
    m_ring.clear();
    around([&](int x, int y) { m_ring.append(area.contains(x, y) ? image.pixel(x, y) : 0); });
    painter->drawGlyphRun(topLeft, run);
    int k = 0;
    bool stayed = true;
    around([&](int x, int y) {
        stayed = stayed && (!area.contains(x, y) || image.pixel(x, y) == m_ring.at(k));
        ++k;
    });
    if (!stayed) {
        // The window draws glyphs wider than the probe showed: copies would be wrong.
        clear();
        m_broken = true;
        return;
    }
    for (int i = 0; i < count; ++i) {
        const Place& p = m_places[i];
        const TileKey key{glyphs[i], p.fx, p.fy, ink, background};
        if (m_tiles.count(key))
            continue;
        if (int(m_tiles.size()) >= MaxTiles) {
            m_tiles.clear();
            m_recent.fill(Recent());
        }
        const QRect& box = m_boxes[i];
        Tile tile;
        tile.footprint = box.isEmpty() ? QRect() : box.translated(-p.anchor);
        tile.pixels.resize(box.width() * box.height());
        QRgb* to = tile.pixels.data();
        for (int y = box.top(); y <= box.bottom(); ++y, to += box.width()) {
            const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            std::copy_n(line + box.left(), box.width(), to);
        }
        m_tiles.emplace(key, std::move(tile));
    }
}
