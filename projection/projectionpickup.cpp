#include "projectionpickup.h"

#include "pickupfit.h"
#include "pickupsearch.h"
#include "projectionwidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTextEdit>
#include <QTimer>
#include <QToolTip>

namespace {
using P = PickupParams;
constexpr int ReportMinimumWidth = 620; // pixels
} // namespace

ProjectionPickup::ProjectionPickup(ProjectionWidget* view)
    : QObject(view)
    , m_view(view)
{
}

int ProjectionPickup::requiredCount() const
{
    return m_mode == PickupSearch::RadarPositionAndViewAngle ? PickupSearch::CheckpointCount + 2
                                                             : PickupSearch::CheckpointCount;
}

void ProjectionPickup::start(int mode)
{
    if (mode != PickupSearch::RadarPosition && mode != PickupSearch::RadarPositionAndViewAngle)
        return;
    if (m_pickingUp || m_computing)
        return;
    const QString modeName = mode == PickupSearch::RadarPosition
        ? tr("radar position, camera view angle is known")
        : tr("radar position and camera view angle");
    const QString segment = mode == PickupSearch::RadarPositionAndViewAngle
        ? tr("Then mark additional line segment along the X axis.")
        : QString();
    QPointer<ProjectionWidget> view(m_view);
    QMessageBox::information(m_view, tr("Picking up parameters"),
                             QStringLiteral("%1 %2.\n%3\n%4")
                                 .arg(tr("Selected mode: picking up"), modeName,
                                      tr("Mark four checkpoints on the projection as far apart "
                                         "as possible."),
                                      segment),
                             QMessageBox::Ok);
    if (!view || m_pickingUp || m_computing)
        return;

    m_checkpoints.clear();
    m_pickingUp = true;
    m_cancelled = false;
    m_mode = mode;
    const CameraModel::RadarPose pose = m_view->radarPoseDegrees();
    m_savedParams = P();
    m_savedParams[P::X] = pose.xOffset;
    m_savedParams[P::Y] = pose.yOffset;
    m_savedParams[P::Height] = pose.height;
    m_savedParams[P::Azimuth] = pose.azimuth;
    m_savedParams[P::Elevation] = pose.elevation;
    m_savedParams[P::HalfAngle] = m_view->halfViewAngleDegrees();
    // While marking, the overlay shows only the frame, the cross and the marks.
    m_view->showPosition(0, 0, 0, 0, 0, 0, true);
}

void ProjectionPickup::mouseMoved(const QPoint& pos, const QPoint& globalPos)
{
    Q_UNUSED(pos)
    QString hint;
    const int count = m_checkpoints.size();
    if (count < PickupSearch::CheckpointCount) {
        hint = tr("Mark checkpoint #%1").arg(count + 1);
    } else if (m_mode == PickupSearch::RadarPositionAndViewAngle) {
        hint = tr("Mark line segment along the X axis");
        if (count == PickupSearch::CheckpointCount + 1)
            m_view->update(); // the segment follows the cursor
    }
    if (hint.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(globalPos, hint, m_view, m_view->rect(), HintMs);
}

bool ProjectionPickup::askNumber(const QString& title, const QString& label, double minimum,
                                 double maximum, double preset, double* value)
{
    bool ok = false;
    *value = QInputDialog::getDouble(m_view, title, label, preset, minimum, maximum, EntryDecimals,
                                     &ok);
    return ok;
}

void ProjectionPickup::addCheckpoint(const QPoint& pixel)
{
    if (!m_pickingUp)
        return;
    QPointer<ProjectionWidget> view(m_view);
    const int count = m_checkpoints.size();
    double value = 0.0;
    bool ok = true;
    if (count < PickupSearch::CheckpointCount) {
        const double preset = count > 0 ? m_checkpoints.last().value : 0.0;
        ok = askNumber(tr("Checkpoint position"),
                       tr("Enter Y coordinate of the checkpoint #%1, m").arg(count + 1),
                       -CheckpointRange, CheckpointRange, preset, &value);
    } else if (count == PickupSearch::CheckpointCount + 1) {
        ok = askNumber(tr("Line segment length"), tr("Enter line segment length, m"), 0.0,
                       MaxSegmentLength, 0.0, &value);
    } // the segment's first end needs no number
    if (!view || !m_pickingUp)
        return; // the window went away while the dialog was open
    if (!ok) {
        abort();
        return;
    }
    m_checkpoints.append(PickupCheckpoint{pixel, value});
    m_view->update();
    if (m_checkpoints.size() < requiredCount())
        return;
    m_pickingUp = false;
    m_computing = true;
    QToolTip::hideText();
    m_view->update();
    QTimer::singleShot(SearchDelayMs, this, &ProjectionPickup::doRunSearch);
}

void ProjectionPickup::abort()
{
    if (!m_pickingUp)
        return;
    m_checkpoints.clear();
    m_pickingUp = false;
    doRestoreSavedParameters();
}

void ProjectionPickup::cancel()
{
    if (m_computing) {
        m_cancelled = true; // the search stops at its next look at the event loop
        return;
    }
    abort();
}

void ProjectionPickup::doRunSearch()
{
    if (!m_computing)
        return;
    QPointer<ProjectionWidget> view(m_view);
    m_view->doStartAnimation();
    // The marks were made on the picture as it is now, under the camera's own
    // configuration; only the pose (and in mode 2 the view angle) is searched.
    PickupSearch search(m_view->model(), m_mode, m_checkpoints, m_savedParams);
    search.setYield([this, view] {
        QCoreApplication::processEvents();
        return view && !m_cancelled;
    });
    QElapsedTimer clock;
    clock.start();
    const bool success = search.run();
    if (!view)
        return;
    m_view->doStopAnimation();
    m_computing = false;
    if (success) {
        m_bestParams = search.best();
        m_details = PickupFit::evaluate(search, m_bestParams).detailsText();
    }
    m_view->m_model.invalidate();
    m_view->update();
    emit searchFinished(success, search.stats().scored, clock.elapsed());
    if (!m_cancelled)
        doShowPickupResult(success);
    if (!view)
        return;
    m_checkpoints.clear();
    doRestoreSavedParameters();
}

void ProjectionPickup::doShowPickupResult(bool success)
{
    if (!success) {
        QMessageBox::warning(m_view, tr("Picked parameters"), tr("Unable to pick up parameters."),
                             QMessageBox::Ok);
        return;
    }
    const P& best = m_bestParams;
    emit m_view->pickedRadarPosition(best[P::Height], best[P::X], best[P::Y], best[P::Azimuth],
                                     best[P::Elevation], 0.0);
    const QString angle = m_mode == PickupSearch::RadarPositionAndViewAngle
        ? tr("Camera horizontal view angle is %1 deg.").arg(2.0 * best[P::HalfAngle], 0, 'f', 2)
        : QString();
    QMessageBox box(QMessageBox::Information, tr("Picked parameters"),
                    QStringLiteral("%1\n%2").arg(
                        tr("Picked radar position is written into the 'Set radar position' "
                           "control."),
                        angle),
                    QMessageBox::Ok, m_view);
    box.setDetailedText(m_details);
    // Wide enough for a line of the details each.
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout()))
        grid->addItem(new QSpacerItem(ReportMinimumWidth, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                      grid->rowCount(), 0, 1, grid->columnCount());
    // And tall enough for all of them.
    if (auto* details = box.findChild<QTextEdit*>()) {
        const int lines = m_details.count(QLatin1Char('\n')) + 2;
        details->setMinimumHeight(details->fontMetrics().lineSpacing() * lines
                                  + 2 * details->frameWidth() + 8);
    }
    box.exec();
}

void ProjectionPickup::doRestoreSavedParameters()
{
    const P& saved = m_savedParams;
    m_view->m_model.setHalfHorizontalAngle(TvmsConfig::radians(saved[P::HalfAngle]));
    m_view->showPosition(saved[P::Height], saved[P::X], saved[P::Y], saved[P::Azimuth],
                         saved[P::Elevation], 0.0, true);
}
