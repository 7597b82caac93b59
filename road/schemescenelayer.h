#pragma once

#include <QLine>
#include <QMap>
#include <QPixmap>
#include <QPolygon>

class SchemeTracks;

// The traffic scheme's picture under the moving objects: the road picture with the
// camera's sight, the lanes' average tracks and the current tracks on it. Tracks grow
// by a point a frame; only the new pieces are added, and the whole scene is drawn anew
// only when something else in it changed.
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

    // The scene over the given road picture, brought up to date.
    const QPixmap& picture(const QPixmap& road, const SchemeTracks& tracks);

private:
    void doDraw(const QPixmap& road, const SchemeTracks& tracks);
    void doDrawNewTrackPoints(const SchemeTracks& tracks);
    void doDrawTrack(QPainter& painter, quint8 id, const QPolygon& track, int from) const;

    Sight m_sight;
    bool m_showAverageTracks = true;
    bool m_drawTracksLive = false;
    bool m_paintObjects = false;

    QPixmap m_picture;
    bool m_stale = true;
    qint64 m_roadKey = 0; // the road picture the scene was drawn on
    quint64 m_tracksReshaped = 0; // and the tracks' shape then
    QMap<quint8, int> m_drawnTrackPoints; // points of each track already in the scene
};
