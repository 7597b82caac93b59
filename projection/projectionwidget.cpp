#include "projectionwidget.h"

#include "iorvexclient.h"
#include "projectionpickup.h"
#include "ui_projectionwidget.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {
constexpr int ToolTipDecimals = 2;
} // namespace

ProjectionWidget::ProjectionWidget(QWidget* parent, Qt::WindowFlags flags)
    : StandaloneWidget(parent, flags)
    , m_ui(new Ui::ProjectionWidget)
{
    m_ui->setupUi(this);
    m_pickup = new ProjectionPickup(this);
    m_ui->adjustmentWidget->hide();
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);

    m_adjustingTimer.setSingleShot(true);
    m_adjustingTimer.setInterval(AdjustingTimeoutMs);
    connect(&m_adjustingTimer, &QTimer::timeout, this, &ProjectionWidget::doHideAdjustingControls);
    m_animationTimer.setInterval(AnimationIntervalMs);
    connect(&m_animationTimer, &QTimer::timeout, this, &ProjectionWidget::doUpdateAnimation);
}

ProjectionWidget::~ProjectionWidget()
{
    delete m_ui;
}

QWidget* ProjectionWidget::adjustmentWidget() const
{
    return m_ui->adjustmentWidget;
}

CameraModel::RadarPose ProjectionWidget::radarPoseDegrees() const
{
    CameraModel::RadarPose pose = m_model.radarPose();
    pose.azimuth = pose.azimuth * 180.0 / TvmsConfig::Pi;
    pose.elevation = pose.elevation * 180.0 / TvmsConfig::Pi;
    return pose;
}

double ProjectionWidget::halfViewAngleDegrees() const
{
    return m_model.halfHorizontalAngle() * 180.0 / TvmsConfig::Pi;
}

// --- Model ------------------------------------------------------------------------------

void ProjectionWidget::setTvmsConfig(const QJsonObject& config)
{
    m_config = TvmsConfig::fromJson(config);
    m_model.setConfig(m_config);
    m_model.setHalfHorizontalAngle(m_config.halfHorizontalAngle);
    doRescale(width(), height(), true);
    doApplyRoad();
    update();
}

void ProjectionWidget::showPosition(double height, double xOffset, double yOffset, double azimuth,
                                    double altitude, double roll, bool apply)
{
    Q_UNUSED(roll) // the camera's picture does not follow the radar's roll
    CameraModel::RadarPose pose;
    pose.height = height;
    pose.xOffset = xOffset;
    pose.yOffset = yOffset;
    pose.azimuth = TvmsConfig::radians(azimuth);
    pose.elevation = TvmsConfig::radians(altitude);
    m_model.setRadarPose(pose);
    doRescale(width(), this->height(), apply);
    if (apply) {
        doApplyRoad();
        update();
    }
}

void ProjectionWidget::showRadarState(int state)
{
    if (!IOrvexClient::isOnline(state)) {
        // Without a radar there is no pose: the model falls back on the camera's own
        // offsets, which leaves it invalid, and nothing seen so far stays.
        m_model.setRadarPose(CameraModel::RadarPose());
        m_tracks.clear();
        m_currentFrame = DelayedFrame();
        doRescale(width(), height(), true);
        m_road.clearAverageTracks();
    }
    update();
}

void ProjectionWidget::setEnabled(bool enabled)
{
    if (!enabled) {
        m_tracks.clear();
        m_currentFrame = DelayedFrame();
    }
    m_intakeBlocked = !enabled;
    StandaloneWidget::setEnabled(enabled);
}

void ProjectionWidget::doRescale(int width, int height, bool apply)
{
    m_tracks.clearScreen();
    m_model.rescale(width, height);
    if (apply)
        emit sight(m_model.cameraPosition(), m_model.axisPoint(), m_model.fieldOfView());
}

void ProjectionWidget::doApplyRoad()
{
    if (!m_model.isValid())
        return;
    m_road.apply(m_model);
    doFitAverageTracks();
}

void ProjectionWidget::doFitAverageTracks()
{
    m_road.fitAverageTracks(m_model);
}

// --- Frames -------------------------------------------------------------------------------

void ProjectionWidget::startFilling()
{
    // Only the widget's state is checked here, not the model's: while the model is
    // invalid, empty frames pile up and all become current in turn once it is valid.
    if (m_intakeBlocked)
        return;
    m_frames.startFrame();
}

void ProjectionWidget::setFrameDateTimeUtc(const QDateTime& dateTime)
{
    if (m_intakeBlocked || !m_model.isValid())
        return;
    m_frames.setFrameTime(dateTime);
}

void ProjectionWidget::addObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                                 double yRange, double length, const QDateTime& lastDetected)
{
    if (m_intakeBlocked || !m_model.isValid())
        return;
    m_frames.addObject(RoadObject{id, xSpeed, ySpeed, xRange, yRange, length, lastDetected});
}

void ProjectionWidget::finishFilling(const QVector<quint8>& sortedIds)
{
    if (m_intakeBlocked || !m_model.isValid())
        return;
    m_frames.appendSortedIds(sortedIds);
    // The picture shows the newest frame that is at least as old as the video delay.
    const QDateTime threshold
        = QDateTime::currentDateTimeUtc().addMSecs(-qint64(m_config.videoDelayMs));
    for (DelayedFrame& frame : m_frames.takeDue(threshold))
        doMakeCurrent(std::move(frame));
    update();
}

void ProjectionWidget::doMakeCurrent(DelayedFrame frame)
{
    m_currentFrame = std::move(frame);
    m_tracks.update(m_currentFrame, m_model);
}

// --- Road -----------------------------------------------------------------------------------

void ProjectionWidget::startApplyingRoad(const QRectF& rect)
{
    Q_UNUSED(rect) // the camera's view does not depend on the road's extent
}

void ProjectionWidget::setRoadAxisLine(const QPolygonF& line)
{
    m_road.setRoadAxisLine(line);
}

void ProjectionWidget::setRoadBorderLines(const QList<QPolygonF>& lines)
{
    m_road.setRoadBorderLines(lines);
}

void ProjectionWidget::setLaneBorderLines(const QList<QPolygonF>& lines)
{
    m_road.setLaneBorderLines(lines);
}

void ProjectionWidget::setDistanceLines(const QMap<int, QPolygonF>& lines)
{
    m_road.setDistanceLines(lines);
}

void ProjectionWidget::setAverageTracks(const QMap<int, QPolygonF>& tracks)
{
    m_road.setAverageTracks(tracks);
    doFitAverageTracks();
    update();
}

void ProjectionWidget::finishApplyingRoad()
{
    doApplyRoad();
    update();
}

// --- Options -------------------------------------------------------------------------------

void ProjectionWidget::setShowLaneLines(bool show)
{
    m_options.showLaneLines = show;
    update();
}

void ProjectionWidget::setShowDistLines(bool show)
{
    m_options.showDistLines = show;
    update();
}

void ProjectionWidget::setShowCurrentTracks(bool show)
{
    m_options.showCurrentTracks = show;
    update();
}

void ProjectionWidget::setShowAverageTracks(bool show)
{
    m_options.showAverageTracks = show;
    update();
}

void ProjectionWidget::setPaintObjects(bool paint)
{
    m_options.paintObjects = paint;
    update();
}

// --- Painting ---------------------------------------------------------------------------------

void ProjectionWidget::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    if (!isEnabled())
        return;
    ProjectionPainter::Scene scene;
    scene.size = size();
    scene.model = &m_model;
    scene.road = &m_road;
    scene.tracks = &m_tracks;
    scene.frame = &m_currentFrame;
    scene.options = m_options;
    scene.mode = m_pickup->isComputing() ? ProjectionPainter::Mode::Computing
                 : m_pickup->isPickingUp() ? ProjectionPainter::Mode::PickingUp
                                           : ProjectionPainter::Mode::Normal;
    scene.checkpoints = &m_pickup->checkpoints();
    scene.cursor = m_cursor;
    scene.animationSquares = m_animationSquares;
    scene.animationIndex = m_animationIndex;
    scene.font = font();
    QPainter p(this);
    m_painter.paint(p, scene);
}

void ProjectionWidget::doStartAnimation()
{
    m_animationSquares.clear();
    for (const QPoint& cell : ProjectionPainter::AnimationTemplate) {
        const QPoint c = m_model.screenPos(cell * ProjectionPainter::AnimationCellPixels);
        m_animationSquares.append(QRect(QPoint(c.x() - 15, c.y() - 15), QPoint(c.x() + 14, c.y() + 14)));
    }
    m_animationIndex = 0;
    m_animationTimer.start();
}

void ProjectionWidget::doStopAnimation()
{
    m_animationTimer.stop();
}

void ProjectionWidget::doUpdateAnimation()
{
    // The path's last eight cells are its first eight: going on from cell 8 is seamless.
    if (++m_animationIndex >= ProjectionPainter::AnimationCellCount)
        m_animationIndex = ProjectionPainter::AnimationRestart;
    update();
}

// --- Window -------------------------------------------------------------------------------------

void ProjectionWidget::resizeEvent(QResizeEvent* event)
{
    StandaloneWidget::resizeEvent(event);
    if (m_resizingWindow)
        return; // rescaled once the corner is let go
    doRescale(width(), height(), true);
    doApplyRoad();
    update();
}

void ProjectionWidget::showEvent(QShowEvent* event)
{
    QFont f = font();
    f.setPixelSize(FontPixelSize);
    setFont(f);
    StandaloneWidget::showEvent(event);
    doRescale(width(), height(), true);
    doApplyRoad();
}

void ProjectionWidget::hideEvent(QHideEvent* event)
{
    m_pickup->cancel();
    StandaloneWidget::hideEvent(event);
}

void ProjectionWidget::closeEvent(QCloseEvent* event)
{
    m_pickup->cancel();
    StandaloneWidget::closeEvent(event);
}

void ProjectionWidget::doHideAdjustingControls()
{
    m_ui->adjustmentWidget->hide();
}

void ProjectionWidget::doNudge(int dx, int dy, int dw, int dh)
{
    m_adjustingTimer.start();
    const QRect g = geometry();
    setGeometry(g.x() + dx, g.y() + dy, g.width() + dw, g.height() + dh);
}

void ProjectionWidget::on_topPlusButton_clicked() { doNudge(0, -1, 0, 1); }
void ProjectionWidget::on_topMinusButton_clicked() { doNudge(0, 1, 0, -1); }
void ProjectionWidget::on_bottomPlusButton_clicked() { doNudge(0, 0, 0, 1); }
void ProjectionWidget::on_bottomMinusButton_clicked() { doNudge(0, 0, 0, -1); }
void ProjectionWidget::on_leftPlusButton_clicked() { doNudge(-1, 0, 1, 0); }
void ProjectionWidget::on_leftMinusButton_clicked() { doNudge(1, 0, -1, 0); }
void ProjectionWidget::on_rightPlusButton_clicked() { doNudge(0, 0, 1, 0); }
void ProjectionWidget::on_rightMinusButton_clicked() { doNudge(0, 0, -1, 0); }
void ProjectionWidget::on_topLeftButton_clicked() { doStartResizingWindow(1); }
void ProjectionWidget::on_bottomRightButton_clicked() { doStartResizingWindow(2); }

void ProjectionWidget::doStartResizingWindow(int mode)
{
    m_resizeStartSize = size();
    m_resizeStartPos = geometry().topLeft();
    m_resizeStartCursor = QCursor::pos();
    m_resizeMode = mode;
    m_resizingWindow = true;
    doHideAdjustingControls();
}

void ProjectionWidget::doFinishResizingWindow()
{
    m_resizingWindow = false;
    doRescale(width(), height(), true);
    doApplyRoad();
    update();
}

bool ProjectionWidget::isMouseBlocked() const
{
    return m_pickup->isComputing() || !isEnabled();
}

void ProjectionWidget::mousePressEvent(QMouseEvent* event)
{
    if (isMouseBlocked())
        return;
    m_pressedButton = int(event->button());
}

void ProjectionWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (isMouseBlocked())
        return;
    m_cursor = event->pos();
    if (m_resizingWindow) {
        const QPoint d = event->globalPos() - m_resizeStartCursor;
        if (m_resizeMode == 1)
            setGeometry(QRect(m_resizeStartPos + d, m_resizeStartSize - QSize(d.x(), d.y())));
        else
            resize(m_resizeStartSize + QSize(d.x(), d.y()));
        return;
    }
    if (m_pickup->isPickingUp()) {
        m_pickup->mouseMoved(event->pos(), event->globalPos());
        return;
    }
    QToolTip::hideText();
    if (!m_model.isValid())
        return;
    bool ok = false;
    const QPointF road = m_model.xyFromScreen(event->pos(), &ok);
    if (!ok)
        return; // at or above the horizon
    QToolTip::showText(event->globalPos(),
                       tr("(%1; %2)")
                           .arg(road.x(), 0, 'f', ToolTipDecimals)
                           .arg(road.y(), 0, 'f', ToolTipDecimals),
                       this, QRect(), ToolTipMs);
}

void ProjectionWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (isMouseBlocked())
        return;
    if (m_resizingWindow) {
        if (event->button() == Qt::LeftButton)
            doFinishResizingWindow();
        return;
    }
    if (m_pickup->isPickingUp()) {
        if (event->button() == Qt::RightButton)
            m_pickup->abort();
        else if (event->button() == Qt::LeftButton)
            m_pickup->addCheckpoint(event->pos());
        return;
    }
    if (event->button() == Qt::RightButton) {
        m_ui->adjustmentWidget->show();
        m_adjustingTimer.start();
    }
}

void ProjectionWidget::pickupParameters(int mode)
{
    m_pickup->start(mode);
}
