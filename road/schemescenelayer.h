#pragma once

#include "schemetracks.h"
#include "trackrasterizer.h"

#include <QImage>
#include <QLine>
#include <QMap>
#include <QPixmap>
#include <QPolygon>
#include <QRect>
#include <QVector>

#include <array>

// The traffic scheme's picture under the moving objects: the road picture with the
// camera's sight and the lanes' average tracks on it (the base, drawn when one of them
// changes), and the current tracks over that. Tracks grow by a point a frame; only the
// new pieces are added, what a frame took away (an ended track, a shortened one, a
// mark a point lost) is drawn anew from the base in its box, and the tracks are drawn
// whole only when the base or their scale changed.
class SchemeSceneLayer
{
public:
    struct Sight
    {
        QPolygon area;
        QLine line;
        bool hasLine = false;
        bool showLine = false;
        bool showArea = false;
        bool operator==(const Sight& o) const
        {
            return area == o.area && line == o.line && hasLine == o.hasLine
                   && showLine == o.showLine && showArea == o.showArea;
        }
    };

    void setSight(const Sight& sight);
    void setShowAverageTracks(bool show);
    void setDrawTracksLive(bool live);
    void setPaintObjects(bool paint);
    // What a frame took away from the drawn tracks; drawn anew by the next picture().
    void takeChanges(const SchemeTracks::Changes& changes);

    // The scene over the given road picture, brought up to date.
    const QImage& picture(const QPixmap& road, const SchemeTracks& tracks);

private:
    void doDrawBase(const QPixmap& road, const SchemeTracks& tracks);
    void doDrawTracks(const SchemeTracks& tracks);
    void doRepair(const SchemeTracks& tracks);
    void doDrawNewTrackPoints(const SchemeTracks& tracks);
    QRgb trackColor(quint8 id) const;

    Sight m_sight;
    bool m_showAverageTracks = true;
    bool m_drawTracksLive = false;
    bool m_paintObjects = false;

    // The road, the sight and the average tracks, and what they were drawn from.
    QImage m_base;
    bool m_baseStale = true;
    qint64 m_roadKey = 0;
    quint64 m_averageVersion = 0;

    // The base with the current tracks.
    QImage m_picture;
    bool m_tracksStale = true;
    quint64 m_tracksReshaped = 0; // the tracks' shape when drawn whole
    QVector<QRect> m_damage; // boxes to draw anew from the base
    // Per object id: the points of its track already in the picture, and a box around
    // all it has drawn there (it may have lost points since).
    struct DrawnTrack
    {
        int points = 0;
        QRect box;
    };
    std::array<DrawnTrack, 256> m_drawn;
    TrackRasterizer m_rasterizer;
};
