#pragma once

#include "delayedframe.h"
#include "labelpictures.h"
#include "opaquecover.h"
#include "pickupparams.h"
#include "trackrasterizer.h"

#include <QCoreApplication>
#include <QFont>
#include <QHash>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QStaticText>
#include <QVector>

#include <array>
#include <vector>

class CameraModel;
class ProjectionRoad;
class ProjectionTracks;
class QPainter;

// Paints the overlay laid over the camera picture: a faint veil with a dashed frame
// and the centre cross; over a valid model the distance lines, lane lines, average
// and current tracks and the objects with their speeds; while the parameters are
// picked up the marked points, and while the search runs a busy animation.
//
// The veil, the frame, the cross and the road lines change only with the road, the
// model or the options: they are kept as a picture and copied each frame, and the
// current tracks are written into a copy of it.
class ProjectionPainter
{
    Q_DECLARE_TR_FUNCTIONS(ProjectionPainter)

public:
    enum class Mode { Normal, PickingUp, Computing };

    static constexpr int AnimationCellCount = 40;
    static constexpr int AnimationRestart = 8; // the last eight cells repeat the first eight
    static constexpr int AnimationTrail = 8; // squares drawn, the head included
    static constexpr int AnimationCellPixels = 32;
    // The busy animation's path, in cells of 32 pixels from the centre, y up.
    static const std::array<QPoint, AnimationCellCount> AnimationTemplate;

    struct Options
    {
        bool showLaneLines = false;
        bool showDistLines = false;
        bool showCurrentTracks = false;
        bool showAverageTracks = false;
        bool paintObjects = false;
    };

    struct Scene
    {
        QSize size;
        const CameraModel* model = nullptr;
        const ProjectionRoad* road = nullptr;
        const ProjectionTracks* tracks = nullptr;
        const DelayedFrame* frame = nullptr;
        Options options;
        Mode mode = Mode::Normal;
        const QVector<PickupCheckpoint>* checkpoints = nullptr;
        QPoint cursor; // where the segment's free end follows the mouse
        QVector<QRect> animationSquares; // the busy animation's squares by cell
        int animationIndex = 0;
        QFont font; // for the ids; the speed labels use 20 pixels of it
    };

    void paint(QPainter& painter, const Scene& scene);

private:
    // What the picture of the veil, frame, cross and road lines is drawn from.
    struct LinesKey
    {
        QSize size;
        qreal devicePixelRatio = 1.0; // screen pixels per pixel of the view
        quint64 linesVersion = 0;
        bool showRoad = false;
        bool showLaneLines = false;
        bool showDistLines = false;
        bool operator==(const LinesKey& o) const
        {
            return size == o.size && devicePixelRatio == o.devicePixelRatio
                   && linesVersion == o.linesVersion && showRoad == o.showRoad
                   && showLaneLines == o.showLaneLines && showDistLines == o.showDistLines;
        }
    };
    // What the base (those lines with the average tracks) is drawn from.
    struct BaseKey
    {
        quint64 lines = 0; // the lines picture it lies on, by count (0 before any)
        quint64 averageTracksVersion = 0;
        bool showAverageTracks = false;
        bool operator==(const BaseKey& o) const
        {
            return lines == o.lines && averageTracksVersion == o.averageTracksVersion
                   && showAverageTracks == o.showAverageTracks;
        }
    };

    // Brings the base up to date; true when it was drawn anew.
    bool doUpdateBase(const Scene& scene, bool showRoad, qreal devicePixelRatio);
    void doDrawLines(const Scene& scene, bool showRoad, qreal devicePixelRatio);
    void doDrawAverageTracks(const Scene& scene);
    void doDrawTracks(const Scene& scene, qreal devicePixelRatio);
    void doDrawObjects(QPainter& p, const Scene& scene);
    void doDrawCheckpoints(QPainter& p, const Scene& scene) const;
    void doDrawAnimation(QPainter& p, const Scene& scene) const;
    const QStaticText& staticText(QHash<QString, QStaticText>& cache, const QString& text,
                                  const QFont& font);
    struct DiscPicture
    {
        QImage image;
        QPoint offset;
    };
    // An object's disc with its id as a picture, made on first use.
    const DiscPicture& discPicture(quint8 id, quint8 colourId, const QColor& outline,
                                   const QColor& fill);
    // An object's disc with its id, centred on `at`.
    void drawDisc(QPainter& p, const QPoint& at, quint8 id, const QColor& outline,
                  const QColor& fill);

    // The average tracks come ten times a second at two hundred cycles and move by a
    // pixel now and then; the road lines under them only with a new road or camera,
    // and stroking those wide and dotted lines took most of a base's drawing.
    LinesKey m_linesKey;
    quint64 m_linesDrawn = 0; // lines pictures drawn so far
    QImage m_lines; // veil, frame, cross and road lines
    BaseKey m_baseKey;
    QImage m_base; // the lines with the average tracks
    QImage m_composed; // the base with the current tracks
    QVector<QRect> m_tracksRects; // where the composed picture differs from the base
    std::vector<int> m_rowLeft; // the span of each row to restore
    std::vector<int> m_rowRight;
    TrackRasterizer m_rasterizer;
    QFont m_textFont;
    QFont m_labelFont;
    QHash<QString, QStaticText> m_idTexts;
    QHash<QString, QStaticText> m_labelTexts;
    QHash<QString, QRect> m_labelBounds;
    // Each object's disc, drawn once with its id on a transparent ground and then copied:
    // by id and colour entry, with the corner's offset from the disc's centre.
    QHash<quint16, DiscPicture> m_discs;
    LabelPictures m_labels; // speed labels by text and colour entry
    // The frame's markers in drawing order, with the part of each label that stays in
    // view (where pictures are copied).
    struct Marker
    {
        QPoint at;
        quint8 id = 0;
        quint8 colourId = 0;
        QString label;
        QRect frame; // the label's box
        QRect shownLabel;
    };
    QVector<Marker> m_markers;
    OpaqueCover m_cover;
};
