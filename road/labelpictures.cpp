#include "labelpictures.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {
constexpr double InchesPerMetre = 1.0 / 0.0254;
} // namespace

LabelPictures::LabelPictures(int limit)
    : m_limit(std::max(1, limit))
{
}

void LabelPictures::clear()
{
    m_pictures.clear();
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
    if (m_pictures.size() >= m_limit)
        m_pictures.clear();
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
