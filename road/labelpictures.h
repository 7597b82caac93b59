#pragma once

#include <QImage>
#include <QPainter>
#include <QPoint>
#include <QRect>
#include <QString>

#include <array>
#include <utility>
#include <vector>

// Pictures of labels that cover their box (a filled box with a short text on it), each
// drawn once and then copied. The traffic scheme and the video overlay label all their
// vehicles every frame, and blending a label's glyphs costs several times a copy of its
// pixels. A vehicle's label changes only when its speed reading does, and the radar
// reads speeds in 0.1 m/s steps: a vehicle keeps to a few labels for seconds. A picture
// is used only where the painter draws one to one, whole pixels on whole pixels: there
// it is the label drawn in place, pixel for pixel. Elsewhere the label is drawn as usual.
//
// Some hundred labels are looked up every frame among hundreds kept: the keys live in
// one open table, text included, so that a look-up reads one place in memory rather
// than a chain of them. Most labels are seen for a few frames only, while a speed
// reading holds, so the pictures follow the frames: those not used in the last 32
// go, which keeps memory to a few frames' worth of labels however long the traffic runs.
class LabelPictures
{
public:
    // Pictures kept at most; a full set starts afresh. A frame shows 64 labels at most.
    static constexpr int DefaultLimit = 1024;
    // A picture not used in as many frames is dropped: a vehicle whose speed reading
    // swings back and forth keeps its few labels.
    static constexpr int KeptFrames = 32;
    // Longer labels are always drawn in place.
    static constexpr int MaxTextLength = 24;

    explicit LabelPictures(int limit = DefaultLimit);

    // Forgets every picture: their look (a font, a colour scheme) changed.
    void clear();
    // Pictures kept.
    int size() const { return m_used; }
    // A frame's labels are drawn: those not used lately are dropped now and then.
    void finishFrame();

    // Draws the label `text` of look `tag` into `box`. `drawLabel(QPainter&, QPoint)` draws
    // it with its box's top-left corner at the given point, covering the whole box, from
    // the painter's font and hints; it is called only for a label not yet kept (or when
    // the painter does not draw one to one). Texts and tags that look alike must have
    // the same pixels. Where pictures are copied, only the part `shown` of the box is
    // (the rest is to be covered by later drawing).
    template<typename DrawLabel>
    void draw(QPainter& painter, const QRect& box, const QString& text, quint64 tag,
              DrawLabel&& drawLabel)
    {
        draw(painter, box, text, tag, std::forward<DrawLabel>(drawLabel), box);
    }
    template<typename DrawLabel>
    void draw(QPainter& painter, const QRect& box, const QString& text, quint64 tag,
              DrawLabel&& drawLabel, const QRect& shown)
    {
        if (box.isEmpty())
            return;
        if (!drawsOneToOne(painter) || text.size() > MaxTextLength) {
            drawLabel(painter, box.topLeft());
            return;
        }
        Slot& slot = find(text, tag, box.size());
        if (slot.picture.isNull()) {
            QImage picture = newPicture(*painter.device(), box.size());
            {
                QPainter onPicture(&picture);
                copyLook(painter, onPicture);
                drawLabel(onPicture, QPoint(0, 0));
            }
            slot.picture = picture;
        }
        painter.drawImage(shown.topLeft(),
                          shown == box ? slot.picture
                                       : partOf(slot.picture, shown.translated(-box.topLeft())));
    }

    // A part of a picture, sharing its pixels. The painter copies a whole picture
    // straight, but a part through its general path, which took several times as long.
    static QImage partOf(const QImage& picture, const QRect& part);

    // Whether pictures drawn pixel for pixel can be copied through the painter as they
    // are: it draws one to one, moves by whole pixels only, and lays them over what is
    // there, fully opaque.
    static bool drawsOneToOne(const QPainter& painter);

private:
    struct Slot
    {
        quint64 hash = 0; // 0 for a free slot
        quint64 tag = 0;
        int width = 0;
        int height = 0;
        int length = 0;
        std::array<ushort, MaxTextLength> text{};
        quint64 lastFrame = 0; // the frame that last used it
        QImage picture;
    };

    // The label's slot; a free one taken for it when it has none.
    Slot& find(const QString& text, quint64 tag, const QSize& size);
    // Drops the pictures not used lately.
    void sweep();
    QImage newPicture(const QPaintDevice& device, const QSize& size);
    static void copyLook(const QPainter& from, QPainter& to);

    int m_limit;
    std::vector<Slot> m_slots; // twice the limit: probe runs stay short
    int m_used = 0; // slots taken, each with its picture
    quint64 m_frame = 0; // frames finished so far
};
