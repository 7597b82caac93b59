#pragma once

#include "cameramodel.h"
#include "delayedframebuffer.h"
#include "projectionpainter.h"
#include "projectionroad.h"
#include "projectiontracks.h"
#include "standalonewidget.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QPolygonF>
#include <QTimer>
#include <QVector>

class ProjectionPickup;

namespace Ui {
class ProjectionWidget;
}

// The see-through window the operator lays over the roadside camera's video window and
// stretches until it covers the picture: it draws the road lines, the vehicles and
// their tracks where the camera sees them, from the radar's pose and the camera's
// configuration, delayed as late as the video is. Ten small buttons nudge its edges;
// the parameter pick-up finds the radar pose (and the camera's view angle) from
// points the operator marks on the picture.
class ProjectionWidget : public StandaloneWidget
{
    Q_OBJECT

public:
    static constexpr int AdjustingTimeoutMs = 5000; // the adjustment panel hides after this
    static constexpr int AnimationIntervalMs = 100;
    static constexpr int ToolTipMs = 5000; // the cursor's road position stays this long
    static constexpr int FontPixelSize = 14;

    explicit ProjectionWidget(QWidget* parent = nullptr,
                              Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint);
    ~ProjectionWidget() override;

    // For the pick-up, the tests and the benchmarks.
    const CameraModel& model() const { return m_model; }
    const ProjectionRoad& road() const { return m_road; }
    const ProjectionTracks& tracks() const { return m_tracks; }
    const DelayedFrame& currentFrame() const { return m_currentFrame; }
    int bufferedFrames() const { return m_frames.size(); }
    int videoDelayMs() const { return m_config.videoDelayMs; }
    ProjectionPickup* pickup() const { return m_pickup; }
    QWidget* adjustmentWidget() const;
    bool isResizingWindow() const { return m_resizingWindow; }
    int animationIndex() const { return m_animationIndex; }
    bool isAnimating() const { return m_animationTimer.isActive(); }
    // The radar pose in force, in degrees, and the half view angle in degrees.
    CameraModel::RadarPose radarPoseDegrees() const;
    double halfViewAngleDegrees() const;

public slots:
    void setTvmsConfig(const QJsonObject& config);
    void showPosition(double height, double xOffset, double yOffset, double azimuth,
                      double altitude, double roll, bool apply);
    void showRadarState(int state);
    void setEnabled(bool enabled);

    void startFilling();
    void setFrameDateTimeUtc(const QDateTime& dateTime);
    void addObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                   double length, const QDateTime& lastDetected);
    void finishFilling(const QVector<quint8>& sortedIds);

    void startApplyingRoad(const QRectF& rect);
    void setRoadAxisLine(const QPolygonF& line);
    void setRoadBorderLines(const QList<QPolygonF>& lines);
    void setLaneBorderLines(const QList<QPolygonF>& lines);
    void setDistanceLines(const QMap<int, QPolygonF>& lines);
    void setAverageTracks(const QMap<int, QPolygonF>& tracks);
    void finishApplyingRoad();

    void setShowLaneLines(bool show);
    void setShowDistLines(bool show);
    void setShowCurrentTracks(bool show);
    void setShowAverageTracks(bool show);
    void setPaintObjects(bool paint);

    void pickupParameters(int mode);
    void doHideAdjustingControls();
    void doUpdateAnimation();
    void doFinishResizingWindow();

signals:
    void sight(const QPointF& camera, const QPointF& axisPoint, const QPolygonF& fieldOfView);
    void pickedRadarPosition(double height, double xOffset, double yOffset, double azimuth,
                             double altitude, double roll);

private slots:
    void on_topPlusButton_clicked();
    void on_topMinusButton_clicked();
    void on_bottomPlusButton_clicked();
    void on_bottomMinusButton_clicked();
    void on_leftPlusButton_clicked();
    void on_leftMinusButton_clicked();
    void on_rightPlusButton_clicked();
    void on_rightMinusButton_clicked();
    void on_topLeftButton_clicked();
    void on_bottomRightButton_clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    friend class ProjectionPickup;

    void doRescale(int width, int height, bool apply);
    void doApplyRoad();
    void doFitAverageTracks();
    void doMakeCurrent(DelayedFrame frame);
    void doStartAnimation();
    void doStopAnimation();
    void doNudge(int dx, int dy, int dw, int dh);
    void doStartResizingWindow(int mode);
    bool isMouseBlocked() const;

    Ui::ProjectionWidget* m_ui = nullptr;
    ProjectionPickup* m_pickup = nullptr;

    TvmsConfig m_config;
    CameraModel m_model;
    ProjectionRoad m_road;
    ProjectionTracks m_tracks;
    DelayedFrameBuffer m_frames;
    DelayedFrame m_currentFrame;
    bool m_intakeBlocked = false;
    ProjectionPainter m_painter;
    ProjectionPainter::Options m_options;

    QTimer m_adjustingTimer;
    QTimer m_animationTimer;
    int m_animationIndex = 0;
    QVector<QRect> m_animationSquares;

    bool m_resizingWindow = false;
    int m_resizeMode = 0; // 1: the top-left corner moves, 2: the bottom-right one
    QSize m_resizeStartSize;
    QPoint m_resizeStartPos;
    QPoint m_resizeStartCursor;
    int m_pressedButton = 0;
    QPoint m_cursor;
};
