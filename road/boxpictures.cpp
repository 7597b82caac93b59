#include "boxpictures.h"

#include "labelpictures.h"

#include <QBrush>
#include <QPainter>
#include <QPen>

#include <cstring>

namespace {
// Pixels around the turned rectangle's bounds that its outline may reach: half the pen
// and the square caps, rounded out.
constexpr int Reach = 2;
// Larger boxes (a long truck on a zoomed-in scheme) are drawn in place: they are few,
// and a picture of each heading would cost memory.
constexpr int MaxPicturePixels = 64 * 64;
} // namespace

uint qHash(const BoxPictures::Key& key, uint seed)
{
    uint hash = seed;
    for (quint64 part : {quint64(quint32(key.body.left())), quint64(quint32(key.body.top())),
                         quint64(quint32(key.body.width())), quint64(quint32(key.body.height())),
                         key.cos, key.sin, quint64(key.look)})
        hash = hash * 31 + ::qHash(part);
    return hash;
}

bool BoxPictures::canCopy(const QPainter& painter)
{
    return LabelPictures::drawsOneToOne(painter) && !painter.testRenderHint(QPainter::Antialiasing);
}

void BoxPictures::finishFrame()
{
    // Every half of the frames kept.
    if (++m_frame % (KeptFrames / 2) != 0)
        return;
    for (auto it = m_pictures.begin(); it != m_pictures.end();) {
        if (it->lastFrame + KeptFrames <= m_frame)
            it = m_pictures.erase(it);
        else
            ++it;
    }
}

void BoxPictures::draw(QPainter& painter, const QRect& view, const QTransform& placed,
                       const QRect& body, quint32 look, const QPen& outline, const QBrush& fill)
{
    const QPoint at(int(placed.dx()), int(placed.dy()));
    const QTransform turn(placed.m11(), placed.m12(), placed.m21(), placed.m22(), 0.0, 0.0);
    const QRect reach = turn.mapRect(body).adjusted(-Reach, -Reach, Reach, Reach);
    if (!view.contains(reach.translated(at))
        || qint64(reach.width()) * reach.height() > MaxPicturePixels) {
        painter.setTransform(placed);
        painter.setPen(outline);
        painter.setBrush(fill);
        painter.drawRect(body);
        painter.resetTransform();
        return;
    }
    Key key;
    key.body = body;
    const qreal cos = placed.m11();
    const qreal sin = placed.m12();
    std::memcpy(&key.cos, &cos, sizeof key.cos);
    std::memcpy(&key.sin, &sin, sizeof key.sin);
    key.look = look;
    auto it = m_pictures.find(key);
    if (it == m_pictures.end()) {
        if (m_pictures.size() >= Limit)
            m_pictures.clear();
        Picture picture;
        picture.image = QImage(reach.size(), QImage::Format_ARGB32_Premultiplied);
        picture.image.fill(Qt::transparent);
        picture.offset = reach.topLeft();
        {
            QPainter onPicture(&picture.image);
            onPicture.setRenderHints(painter.renderHints());
            onPicture.setTransform(QTransform(turn.m11(), turn.m12(), turn.m21(), turn.m22(),
                                              -reach.left(), -reach.top()));
            onPicture.setPen(outline);
            onPicture.setBrush(fill);
            onPicture.drawRect(body);
        }
        it = m_pictures.insert(key, picture);
    }
    it->lastFrame = m_frame;
    if (painter.worldTransform().type() != QTransform::TxNone)
        painter.resetTransform();
    painter.drawImage(at + it->offset, it->image);
}
