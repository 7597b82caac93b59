#pragma once

#include <QHash>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QTransform>

class QBrush;
class QPainter;
class QPen;

// Pictures of the traffic scheme's object boxes: a rectangle turned to its object's
// heading, filled and outlined in the object's colours. The painter fills and strokes a
// turned rectangle through its whole path machinery, some 12,000 instructions a box at
// every frame; yet the radar reports speeds in 0.1 m/s steps, so a vehicle keeps to a
// few headings, and to a few boxes, for seconds. Each box is drawn once into a picture
// (transparent around the box) and copied after that.
//
// Boxes are aliased and opaque, so a copied box has exactly the pixels of one drawn in
// place: the rasterizer's pixels do not change when the box is moved by whole pixels.
// A box that reaches past the view is drawn in place, as the clipped outline can differ
// from the whole one at the cut, and so are large boxes and every box where the painter
// does not draw one to one or smooths edges.
class BoxPictures
{
public:
    // Pictures kept at most; a full set starts afresh. A frame shows 64 boxes at most.
    static constexpr int Limit = 1024;
    // A picture not used in as many frames is dropped.
    static constexpr int KeptFrames = 32;

    // Forgets every picture.
    void clear() { m_pictures.clear(); }
    int size() const { return int(m_pictures.size()); }
    // A frame's boxes are drawn: those not used lately are dropped now and then.
    void finishFrame();

    // Whether boxes can be copied through this painter (checked with its world
    // transform reset): it draws one to one, whole pixels on whole pixels, aliased.
    static bool canCopy(const QPainter& painter);

    // Draws `body` as `drawRect(body)` would under `placed` (a turn about a whole-pixel
    // point), with the given outline and fill, which `look` stands for (equal looks,
    // equal pens and brushes), for a painter whose world transform is reset. A box not
    // wholly inside `view` (the area the painter draws on; empty where boxes cannot be
    // copied) is drawn in place. The world transform is left reset; pen and brush may be
    // left as given.
    void draw(QPainter& painter, const QRect& view, const QTransform& placed, const QRect& body,
              quint32 look, const QPen& outline, const QBrush& fill);

private:
    struct Key
    {
        QRect body;
        quint64 cos = 0; // the turn's bits: equal turns, equal boxes
        quint64 sin = 0;
        quint32 look = 0;
        bool operator==(const Key& other) const
        {
            return body == other.body && cos == other.cos && sin == other.sin && look == other.look;
        }
    };
    friend uint qHash(const Key& key, uint seed);
    struct Picture
    {
        QImage image;
        QPoint offset; // of the picture's top-left corner from the box's turning point
        quint64 lastFrame = 0;
    };

    QHash<Key, Picture> m_pictures;
    quint64 m_frame = 0;
};
