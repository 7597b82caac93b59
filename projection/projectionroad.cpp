#include "projectionroad.h"

#include "cameramodel.h"

namespace {

void projectLines(const QList<QPolygonF>& lines, const CameraModel& model, QList<QPolygon>& out)
{
    out.clear();
    for (const QPolygonF& line : lines) {
        QPolygon pixels = ProjectionRoad::project(line, model);
        if (pixels.size() > 1)
            out.append(pixels);
    }
}

} // namespace

QPolygon ProjectionRoad::project(const QPolygonF& line, const CameraModel& model)
{
    QPolygon pixels;
    pixels.reserve(line.size());
    bool ok = false;
    for (const QPointF& point : line) {
        const QPoint pixel = model.xyToScreen(point, &ok);
        if (ok)
            pixels.append(pixel);
    }
    return pixels;
}

void ProjectionRoad::clearAverageTracks()
{
    m_averageTracks.clear();
    m_screenAverageTracks.clear();
    ++m_averageVersion;
}

void ProjectionRoad::apply(const CameraModel& model)
{
    ++m_linesVersion;
    if (!model.isValid())
        return;
    m_screenAxis = project(m_axis, model); // kept even when short; it is not painted
    projectLines(m_roadBorders, model, m_screenRoadBorders);
    projectLines(m_laneBorders, model, m_screenLaneBorders);
    m_screenDistanceLines.clear();
    for (auto it = m_distanceLines.cbegin(); it != m_distanceLines.cend(); ++it) {
        if (it.key() % DistanceLineStep != 0)
            continue;
        QPolygon pixels = project(it.value(), model);
        if (pixels.size() > 1)
            m_screenDistanceLines.append(pixels);
    }
}

void ProjectionRoad::fitAverageTracks(const CameraModel& model)
{
    // The tracks come every few cycles while they barely move: the version, which
    // redraws the picture under the frames, moves only when a track moved by a pixel.
    QMap<int, QPolygon> screen;
    if (model.isValid()) {
        for (auto it = m_averageTracks.cbegin(); it != m_averageTracks.cend(); ++it) {
            QPolygon pixels = project(it.value(), model);
            if (pixels.size() > 1)
                screen.insert(it.key(), pixels);
        }
    }
    if (screen == m_screenAverageTracks)
        return;
    m_screenAverageTracks = screen;
    ++m_averageVersion;
}
