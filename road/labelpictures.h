#pragma once

#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPoint>
#include <QRect>
#include <QString>

// Pictures of labels that cover their box (a filled box with a short text on it), each
// drawn once and then copied. The traffic scheme and the video overlay label all their
// vehicles every frame, and blending a label's glyphs costs several times a copy of its
// pixels. A vehicle's label changes only when its speed reading does, and the radar
// reads speeds in 0.1 m/s steps: a vehicle keeps to a few labels for seconds. A picture
// is used only where the painter draws one to one, whole pixels on whole pixels: there
// it is the label drawn in place, pixel for pixel. Elsewhere the label is drawn as usual.
class LabelPictures
{
public:
    // Pictures kept at most; a full set starts afresh. A frame shows 64 labels at most.
    static constexpr int DefaultLimit = 1024;

    explicit LabelPictures(int limit = DefaultLimit);

    // Forgets every picture: their look (a font, a colour scheme) changed.
    void clear();
    int size() const { return int(m_pictures.size()); }

    // Draws the label `text` of look `tag` into `box`. `drawLabel(QPainter&, QPoint)` draws
    // it with its box's top-left corner at the given point, covering the whole box, from
    // the painter's font and hints; it is called only for a label not yet kept (or when
    // the painter does not draw one to one). Texts and tags that look alike must have
    // the same pixels.
    template <typename DrawLabel>
    void draw(QPainter& painter, const QRect& box, const QString& text, quint16 tag,
              DrawLabel&& drawLabel)
    {
        if (box.isEmpty())
            return;
        if (!drawsOneToOne(painter)) {
            drawLabel(painter, box.topLeft());
            return;
        }
        const Key key{text, tag, box.width(), box.height()};
        auto it = m_pictures.constFind(key);
        if (it == m_pictures.cend()) {
            QImage picture = newPicture(*painter.device(), box.size());
            {
                QPainter onPicture(&picture);
                copyLook(painter, onPicture);
                drawLabel(onPicture, QPoint(0, 0));
            }
            it = m_pictures.insert(key, picture);
        }
        painter.drawImage(box.topLeft(), *it);
    }

    // Whether pictures drawn pixel for pixel can be copied through the painter as they
    // are: it draws one to one, moves by whole pixels only, and lays them over what is
    // there, fully opaque.
    static bool drawsOneToOne(const QPainter& painter);

private:
    struct Key
    {
        QString text;
        quint16 tag = 0;
        int width = 0;
        int height = 0;
        bool operator==(const Key& o) const
        {
            return tag == o.tag && width == o.width && height == o.height && text == o.text;
        }
    };
    friend uint qHash(const Key& key, uint seed) { return qHash(key.text, seed ^ key.tag); }

    QImage newPicture(const QPaintDevice& device, const QSize& size);
    static void copyLook(const QPainter& from, QPainter& to);

    int m_limit;
    QHash<Key, QImage> m_pictures;
};
