#include "labelpictures.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double InchesPerMetre = 1.0 / 0.0254;

// FNV-1a over the key's parts.
constexpr quint64 HashStart = 14695981039346656037ull;
constexpr quint64 HashPrime = 1099511628211ull;
inline quint64 mix(quint64 hash, quint64 value)
{
    return (hash ^ value) * HashPrime;
}
} // namespace

LabelPictures::LabelPictures(int limit)
    : m_limit(std::max(1, limit))
{
    // A power of two at least twice the limit.
    size_t count = 2;
    while (count < size_t(m_limit) * 2)
        count *= 2;
    m_slots.resize(count);
}

void LabelPictures::clear()
{
    if (m_used == 0)
        return;
    for (Slot& slot : m_slots) {
        slot.hash = 0;
        slot.picture = QImage();
    }
    m_used = 0;
}

LabelPictures::Slot& LabelPictures::find(const QString& text, quint64 tag, const QSize& size)
{
    const int length = int(text.size());
    const ushort* chars = text.utf16();
    quint64 hash = mix(mix(mix(HashStart, tag), quint64(size.width())), quint64(size.height()));
    for (int i = 0; i < length; ++i)
        hash = mix(hash, chars[i]);
    hash |= 1; // never the mark of a free slot

    const size_t mask = m_slots.size() - 1;
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t at = size_t(hash) & mask;; at = (at + 1) & mask) {
            Slot& slot = m_slots[at];
            if (slot.hash == 0) {
                if (m_used >= m_limit)
                    break; // full
                slot.hash = hash;
                slot.tag = tag;
                slot.width = size.width();
                slot.height = size.height();
                slot.length = length;
                std::copy(chars, chars + length, slot.text.begin());
                slot.lastFrame = m_frame;
                ++m_used;
                return slot;
            }
            if (slot.hash == hash && slot.tag == tag && slot.width == size.width()
                && slot.height == size.height() && slot.length == length
                && std::equal(chars, chars + length, slot.text.begin())) {
                slot.lastFrame = m_frame;
                return slot;
            }
        }
        sweep();
        if (m_used >= m_limit)
            clear();
    }
    Q_UNREACHABLE(); // an empty table always has a free slot
}

void LabelPictures::finishFrame()
{
    // Every half of the frames kept: a picture lives at most one and a half times as
    // many frames past its last use.
    if (++m_frame % (KeptFrames / 2) == 0)
        sweep();
}

void LabelPictures::sweep()
{
    auto isRecent = [this](const Slot& slot) {
        return slot.hash != 0 && slot.lastFrame + KeptFrames > m_frame;
    };
    if (std::count_if(m_slots.cbegin(), m_slots.cend(), isRecent) == m_used)
        return; // nothing to drop
    std::vector<Slot> recent;
    for (Slot& slot : m_slots) {
        if (isRecent(slot))
            recent.push_back(std::move(slot));
    }
    clear();
    const size_t mask = m_slots.size() - 1;
    for (Slot& slot : recent) {
        size_t at = size_t(slot.hash) & mask;
        while (m_slots[at].hash != 0)
            at = (at + 1) & mask;
        m_slots[at] = std::move(slot);
        ++m_used;
    }
}

QImage LabelPictures::partOf(const QImage& picture, const QRect& part)
{
    const QRect area = part & picture.rect();
    if (area.isEmpty())
        return QImage();
    const int bytesPerPixel = picture.depth() / 8;
    QImage shared(picture.constScanLine(area.top()) + area.left() * bytesPerPixel, area.width(),
                  area.height(), picture.bytesPerLine(), picture.format());
    shared.setDevicePixelRatio(picture.devicePixelRatio());
    return shared;
}

bool LabelPictures::drawsOneToOne(const QPainter& painter)
{
    const QTransform& device = painter.deviceTransform();
    return painter.device() && painter.device()->devicePixelRatioF() == 1.0
           && painter.opacity() == 1.0
           && painter.compositionMode() == QPainter::CompositionMode_SourceOver
           && device.type() <= QTransform::TxTranslate && device.dx() == std::floor(device.dx())
           && device.dy() == std::floor(device.dy());
}

QImage LabelPictures::newPicture(const QPaintDevice& device, const QSize& size)
{
    // The label covers its box, so its picture is opaque: glyphs are drawn on it as on
    // an opaque window, and it is copied without blending. Fonts sized in points take
    // the window's resolution.
    QImage picture(size, QImage::Format_RGB32);
    picture.setDotsPerMeterX(qRound(device.logicalDpiX() * InchesPerMetre));
    picture.setDotsPerMeterY(qRound(device.logicalDpiY() * InchesPerMetre));
    picture.fill(Qt::black);
    return picture;
}

void LabelPictures::copyLook(const QPainter& from, QPainter& to)
{
    to.setFont(from.font());
    to.setRenderHints(from.renderHints());
}
