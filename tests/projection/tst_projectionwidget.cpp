#include "iorvexclient.h"
#include "projectionpickup.h"
#include "projectionwidget.h"
#include "questionanswerer.h"
#include "tvmsconfigwidget.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

#include <cmath>
#include <functional>

namespace {

// Answers the pick-up's dialogs while it lives: each number dialog with the next of
// the given numbers (none left: cancel), each message box with OK. It keeps what the
// dialogs showed.
class DialogAnswerer : public QObject
{
public:
    explicit DialogAnswerer(QList<double> numbers)
        : m_numbers(std::move(numbers))
    {
        connect(&m_poll, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* input = qobject_cast<QInputDialog*>(modal)) {
                presets.append(input->doubleValue());
                if (m_numbers.isEmpty()) {
                    input->reject();
                    return;
                }
                input->setDoubleValue(m_numbers.takeFirst());
                input->accept();
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                titles.append(box->windowTitle());
                texts.append(box->text());
                details.append(box->detailedText());
                box->button(QMessageBox::Ok)->click();
            }
        });
        m_poll.start(5);
    }

    QList<double> presets;
    QStringList titles;
    QStringList texts;
    QStringList details;

private:
    QList<double> m_numbers;
    QTimer m_poll;
};

constexpr int Width = 800;
constexpr int Height = 600;

} // namespace

// The projection window: what it tells the traffic scheme, the video delay, what a
// radar going offline or a disabled window does, the adjustment buttons, the busy
// animation and the parameter pick-up with its dialogs, report and restored pose. The
// camera configuration editor: the configuration a profile without one gets, stored
// values clamped by the controls, the echo of its own publication, and the question on
// closing over unapplied edits.
class tst_ProjectionWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void shownFrameLagsByTheVideoDelay_data();
    void shownFrameLagsByTheVideoDelay();
    void framesFollowThePoseTheRadarAndTheWindow();
    void objectsDrawnInTheirColours_data();
    void objectsDrawnInTheirColours();
    void tracksDrawnFrameByFrameAsDrawnAtOnce();
    void tracksFarOutsideThePicturePaint_data();
    void tracksFarOutsideThePicturePaint();
    void adjustmentButtonsMoveOneEdge();
    void animationWrapsToItsNinthCell();
    void rightClickAbortsThePickup();
    void pickupFindsThePose_data();
    void pickupFindsThePose();
    void interruptedSearchRestoresThePose_data();
    void interruptedSearchRestoresThePose();
    void cameraConfigStoredAndApplied_data();
    void cameraConfigStoredAndApplied();
    void cameraConfigClosedOverEdits();

private:
    void placeRadar() { m_view->showPosition(6.0, 1.0, -2.0, 3.0, 10.0, 0.0, true); }
    // Marks the points, typing the given numbers, and waits for the search to end.
    void mark(const QVector<QPoint>& pixels, bool waitForSearch = true);
    void feedFrame(const QDateTime& time, quint8 id, double x);

    QDoubleSpinBox* editorSpin(const char* name) const
    {
        return m_editor->findChild<QDoubleSpinBox*>(name);
    }

    std::unique_ptr<ProjectionWidget> m_view;
    std::unique_ptr<TvmsConfigWidget> m_editor;
};

void tst_ProjectionWidget::init()
{
    m_view = std::make_unique<ProjectionWidget>();
    m_view->resize(Width, Height);
    m_view->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 40.0}});
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_view->showRadarState(IOrvexClient::Working);
    m_editor = std::make_unique<TvmsConfigWidget>();
}

void tst_ProjectionWidget::cleanup()
{
    m_view.reset();
    m_editor.reset();
}

void tst_ProjectionWidget::mark(const QVector<QPoint>& pixels, bool waitForSearch)
{
    for (const QPoint& pixel : pixels)
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, pixel);
    if (waitForSearch)
        QTRY_VERIFY_WITH_TIMEOUT(!m_view->pickup()->isComputing(), 240000);
}

void tst_ProjectionWidget::feedFrame(const QDateTime& time, quint8 id, double x)
{
    m_view->startFilling();
    m_view->setFrameDateTimeUtc(time);
    m_view->addObject(id, 10.0, 0.0, x, 0.0, 4.0, time);
    m_view->finishFilling({id});
}

void tst_ProjectionWidget::shownFrameLagsByTheVideoDelay_data()
{
    QTest::addColumn<int>("delay");
    QTest::addColumn<int>("shown"); // of frames 0 to 9, 100 ms apart, the last stamped now
    QTest::addColumn<int>("waiting");
    QTest::newRow("no delay: the newest") << 0 << 9 << 0;
    QTest::newRow("500 ms: five frames behind") << 500 << 4 << 5;
}

void tst_ProjectionWidget::shownFrameLagsByTheVideoDelay()
{
    QFETCH(int, delay);
    QFETCH(int, shown);
    m_view->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 40.0}, {"video_delay", delay}});
    placeRadar();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int f = 0; f < 10; ++f)
        feedFrame(now.addMSecs(-100 * (9 - f)), quint8(f + 1), 20.0 + f);
    QCOMPARE(m_view->currentFrame().sortedIds, QVector<quint8>{quint8(shown + 1)});
    QTEST(m_view->bufferedFrames(), "waiting");
}

void tst_ProjectionWidget::framesFollowThePoseTheRadarAndTheWindow()
{
    // No radar pose yet: the frames started meanwhile wait, empty, and all become
    // current in turn once the model is valid.
    for (int f = 0; f < 3; ++f)
        feedFrame(QDateTime::currentDateTimeUtc(), 7, 20.0);
    QCOMPARE(m_view->bufferedFrames(), 3);
    // The scheme hears where the camera looks: the axis point and the picture's corners
    // on the road.
    QSignalSpy sight(m_view.get(), &ProjectionWidget::sight);
    placeRadar();
    QCOMPARE(sight.last().at(2).value<QPolygonF>().size(), 4);
    QCOMPARE(sight.last().at(1).toPointF(), m_view->model().axisPoint());
    for (int f = 0; f < 5; ++f)
        feedFrame(QDateTime::currentDateTimeUtc().addMSecs(-100 * (5 - f)), 3, 20.0 + f);
    QCOMPARE(m_view->bufferedFrames(), 0);
    QCOMPARE(m_view->tracks().rawTrack(3).size(), 5);

    // A disabled window drops what it shows and takes no frames.
    m_view->setEnabled(false);
    QVERIFY(m_view->tracks().isEmpty());
    feedFrame(QDateTime::currentDateTimeUtc(), 4, 21.0);
    QVERIFY(m_view->currentFrame().objects.isEmpty());
    QCOMPARE(m_view->bufferedFrames(), 0);
    m_view->setEnabled(true);
    feedFrame(QDateTime::currentDateTimeUtc(), 5, 22.0);
    QCOMPARE(m_view->currentFrame().sortedIds, QVector<quint8>{5});

    // A radar going offline takes the pose, the tracks and the frame with it.
    m_view->showRadarState(IOrvexClient::Offline);
    QVERIFY(m_view->tracks().isEmpty());
    QVERIFY(m_view->currentFrame().objects.isEmpty());
    QVERIFY(!m_view->model().isValid());
    QVERIFY(sight.last().at(2).value<QPolygonF>().isEmpty());
    m_view->repaint(); // nothing to draw, and no crash drawing it
}

void tst_ProjectionWidget::objectsDrawnInTheirColours_data()
{
    QTest::addColumn<bool>("own");
    QTest::addColumn<int>("id");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QColor>("ink");
    QTest::newRow("own colours, white ink") << true << 4 << QColor(Qt::red) << QColor(Qt::white);
    QTest::newRow("own colours, black ink") << true << 1 << QColor(Qt::yellow) << QColor(Qt::black);
    QTest::newRow("all alike") << false << 4 << QColor(Qt::white) << QColor(Qt::black);
}

void tst_ProjectionWidget::objectsDrawnInTheirColours()
{
    // The disc and the speed label beside it: both filled with the object's colour and
    // written in its ink, however often it is drawn.
    QFETCH(bool, own);
    QFETCH(int, id);
    QFETCH(QColor, fill);
    QFETCH(QColor, ink);
    placeRadar();
    m_view->setPaintObjects(own);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int f = 0; f < 3; ++f)
        feedFrame(now.addMSecs(-100 * (3 - f)), quint8(id), 20.0);
    bool ok = false;
    const QPoint at = m_view->model().xyToScreen(20.0, 0.0, &ok);
    QVERIFY(ok);
    for (int paint = 0; paint < 2; ++paint) {
        const QImage picture = m_view->grab().toImage();
        QCOMPARE(picture.pixelColor(at + QPoint(-9, -1)), fill); // beside the id
        int inked = 0, filled = 0;
        for (int y = at.y() - 8; y <= at.y() + 8; ++y) {
            for (int x = at.x() + 20; x < at.x() + 100; ++x) {
                inked += picture.pixelColor(x, y) == ink;
                filled += picture.pixelColor(x, y) == fill;
            }
        }
        QVERIFY2(inked > 10 && filled > 300, qPrintable(QString("%1 %2").arg(inked).arg(filled)));
    }
}

void tst_ProjectionWidget::tracksDrawnFrameByFrameAsDrawnAtOnce()
{
    // Each repaint takes the last frame's tracks off the picture and draws the new ones,
    // and the lanes' average tracks move under them now and then over the road lines:
    // after many frames the window shows what a window painting them once shows.
    ProjectionWidget once;
    auto lane = [](double y) {
        return QPolygonF(QVector<QPointF>{QPointF(10, y), QPointF(60, y), QPointF(120, y)});
    };
    for (ProjectionWidget* view : {m_view.get(), &once}) {
        view->resize(Width, Height);
        view->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 40.0}});
        view->showRadarState(IOrvexClient::Working);
        view->showPosition(6.0, 1.0, -2.0, 3.0, 10.0, 0.0, true);
        view->setShowCurrentTracks(true);
        view->setShowLaneLines(true);
        view->setShowDistLines(true);
        view->setShowAverageTracks(true);
        view->setPaintObjects(true);
        view->startApplyingRoad(QRectF(0, -10, 150, 20));
        view->setLaneBorderLines({lane(-3.5), lane(0.0), lane(3.5)});
        view->setDistanceLines(
            {{20, QPolygonF(QVector<QPointF>{QPointF(20, -5), QPointF(20, 5)})},
             {40, QPolygonF(QVector<QPointF>{QPointF(40, -5), QPointF(40, 5)})}});
        view->finishApplyingRoad();
    }
    // The other window takes every frame but paints only at the end.
    once.setUpdatesEnabled(false);
    once.show();
    QVERIFY(QTest::qWaitForWindowExposed(&once));
    const QDateTime start = QDateTime::currentDateTimeUtc().addSecs(-10);
    for (int f = 0; f < 60; ++f) {
        const QDateTime t = start.addMSecs(100 * f);
        for (ProjectionWidget* view : {m_view.get(), &once}) {
            view->startFilling();
            view->setFrameDateTimeUtc(t);
            // Vehicles leaving and weaving across the lanes; a near one crossing the
            // road is gone for good midway.
            for (quint8 id = 1; id <= 5; ++id)
                view->addObject(id, 10.0, 0.0, 35.0 + id * 6.0 + f * (0.2 + id * 0.3),
                                std::sin(f * 0.2 + id) * 4.0, 4.0, t);
            if (f <= 30)
                view->addObject(6, 0.0, 5.0, 28.0, -8.0 + f * 0.5, 4.0, t);
            view->finishFilling(f <= 30 ? QVector<quint8>{1, 2, 3, 4, 5, 6}
                                        : QVector<quint8>{1, 2, 3, 4, 5});
            if (f % 10 == 0)
                view->setAverageTracks({{1, lane(-1.75 + f * 0.02)}, {2, lane(1.75 - f * 0.03)}});
        }
        m_view->repaint();
    }
    once.setUpdatesEnabled(true);
    QCOMPARE(m_view->grab().toImage(), once.grab().toImage());
}

void tst_ProjectionWidget::tracksFarOutsideThePicturePaint_data()
{
    QTest::addColumn<double>("y");
    QTest::newRow("far to the left") << 400.0;
    QTest::newRow("far to the right") << -400.0;
    QTest::newRow("just beside the picture") << 14.0;
}

void tst_ProjectionWidget::tracksFarOutsideThePicturePaint()
{
    // There is no clipping to the side: such points lie far outside the window, and
    // their tracks, squares and markers must be cut, not written beyond the picture.
    QFETCH(double, y);
    placeRadar();
    m_view->setShowCurrentTracks(true);
    m_view->setPaintObjects(true);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int f = 0; f < 6; ++f) {
        const QDateTime t = now.addMSecs(-100 * (6 - f));
        m_view->startFilling();
        m_view->setFrameDateTimeUtc(t);
        m_view->addObject(9, 1.0, 0.0, 30.0 + f, y + (f % 2) * 30.0, 4.0, t);
        m_view->addObject(10, 1.0, 0.0, 30.0 + f, (f % 2) ? y : 0.0, 4.0, t);
        m_view->finishFilling({9, 10});
        m_view->repaint();
    }
    QCOMPARE(m_view->tracks().screenTrack(9).size(), 6);
    QVERIFY(m_view->tracks().screenTrack(9).boundingRect().width() > 0);
}

void tst_ProjectionWidget::adjustmentButtonsMoveOneEdge()
{
    QWidget* panel = m_view->adjustmentWidget();
    QVERIFY(!panel->isVisible());
    QTest::mouseClick(m_view.get(), Qt::RightButton, {}, QPoint(400, 300));
    QVERIFY(panel->isVisible());
    const QRect before = m_view->geometry();
    auto* topPlus = m_view->findChild<QPushButton*>("topPlusButton");
    QVERIFY(topPlus);
    for (int i = 0; i < 3; ++i)
        topPlus->click();
    QCOMPARE(m_view->geometry().top(), before.top() - 3);
    QCOMPARE(m_view->geometry().bottom(), before.bottom());
    m_view->findChild<QPushButton*>("rightMinusButton")->click();
    QCOMPARE(m_view->geometry().right(), before.right() - 1);
    QCOMPARE(m_view->model().width(), before.width() - 1); // the model follows the size
    // Five seconds after the last click the panel goes; so it does after a right click alone.
    QTRY_VERIFY_WITH_TIMEOUT(!panel->isVisible(), ProjectionWidget::AdjustingTimeoutMs + 2000);
    QTest::mouseClick(m_view.get(), Qt::RightButton, {}, QPoint(400, 300));
    QVERIFY(panel->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!panel->isVisible(), ProjectionWidget::AdjustingTimeoutMs + 2000);
}

void tst_ProjectionWidget::animationWrapsToItsNinthCell()
{
    QCOMPARE(m_view->animationIndex(), 0);
    for (int i = 1; i <= 45; ++i) {
        m_view->doUpdateAnimation();
        QCOMPARE(m_view->animationIndex(), i < 40 ? i : i - 32); // 39, then 8, 9, ...
    }
}

void tst_ProjectionWidget::rightClickAbortsThePickup()
{
    placeRadar();
    DialogAnswerer answerer({1.5, -2.0});
    for (int unknownMode : {0, 3}) // no pick-up, no dialog
        m_view->pickupParameters(unknownMode);
    QVERIFY(!m_view->pickup()->isPickingUp() && answerer.titles.isEmpty());
    m_view->pickupParameters(1);
    QVERIFY(m_view->pickup()->isPickingUp());
    QCOMPARE(answerer.titles, QStringList{"Picking up parameters"});
    QVERIFY(!m_view->model().isValid()); // the pose is zero while marking
    mark({QPoint(100, 500), QPoint(700, 500)}, false);
    QCOMPARE(m_view->pickup()->checkpoints().size(), 2);
    QCOMPARE(answerer.presets, (QList<double>{0.0, 1.5})); // the second preset is the first typed
    QTest::mouseClick(m_view.get(), Qt::RightButton, {}, QPoint(300, 300));
    QVERIFY(!m_view->pickup()->isPickingUp());
    QVERIFY(m_view->model().isValid());
    QCOMPARE(m_view->radarPoseDegrees().height, 6.0);
    QVERIFY(std::fabs(m_view->radarPoseDegrees().elevation - 10.0) < 1e-9);
}

void tst_ProjectionWidget::pickupFindsThePose_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<double>("halfAngle"); // the true one; mode 1 starts from it
    QTest::newRow("mode 1: the fourth click searches") << 1 << 20.0;
    QTest::newRow("mode 2: the sixth click searches") << 2 << 11.0;
}

void tst_ProjectionWidget::pickupFindsThePose()
{
    QFETCH(int, mode);
    QFETCH(double, halfAngle);
    // The operator's clicks where a radar 7 m up, 2 m left, 4 degrees to the left and
    // 12 degrees down sees four points of the lane borders (and a 20 m segment).
    m_view->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 2 * halfAngle}});
    CameraModel truth = m_view->model();
    truth.setRadarPose({7.0, 1.0, 2.0, TvmsConfig::radians(4.0), TvmsConfig::radians(12.0)});
    QVERIFY(truth.rescale(Width, Height));
    const QPointF a = truth.axisPoint();
    QVector<QPoint> clicks;
    bool ok = false;
    const double yLeft = -1.5, yRight = 5.5; // as typed: two decimals
    for (const QPointF& p :
         {QPointF(a.x() - 8, yLeft), QPointF(a.x() + 12, yLeft), QPointF(a.x() - 8, yRight),
          QPointF(a.x() + 12, yRight), QPointF(a.x() - 5, 2.0), QPointF(a.x() + 15, 2.0)}) {
        clicks.append(truth.xyToScreen(p, &ok));
        QVERIFY(ok);
    }
    if (mode == 1)
        clicks.resize(4);

    m_view->showPosition(6.0, 1.0, -2.0, 3.0, 10.0, 0.0, true); // the pose before
    QSignalSpy picked(m_view.get(), &ProjectionWidget::pickedRadarPosition);
    DialogAnswerer answerer({yLeft, yLeft, yRight, yRight, 20.0});
    m_view->pickupParameters(mode);
    mark(clicks);
    QCOMPARE(answerer.presets.mid(0, 3), (QList<double>{0.0, yLeft, yLeft}));
    QCOMPARE(picked.count(), 1);
    // Height, X (not searched), Y, azimuth, elevation, roll (always 0).
    const double truthPose[] = {7.0, 1.0, 2.0, 4.0, 12.0, 0.0};
    const double play[] = {0.3, 0.0, 0.3, 0.5, 0.3, 0.0};
    for (int i = 0; i < 6; ++i)
        QVERIFY2(std::fabs(picked.first().at(i).toDouble() - truthPose[i]) <= play[i],
                 qPrintable(picked.first().at(i).toString()));
    QCOMPARE(answerer.titles.last(), QString("Picked parameters"));
    QVERIFY(answerer.texts.last().startsWith(
        "Picked radar position is written into the 'Set radar position' control.\n"));
    QCOMPARE(answerer.texts.last().contains("Camera horizontal view angle is"), mode == 2);
    QVERIFY(answerer.details.last().contains("Checkpoint #4"));
    QCOMPARE(answerer.details.last().contains("Line segment"), mode == 2);
    // The view returns to the pose it had; the picked one comes back through the radar.
    QCOMPARE(m_view->radarPoseDegrees().height, 6.0);
    QVERIFY(std::fabs(m_view->halfViewAngleDegrees() - halfAngle) < 1e-9);
    QVERIFY(m_view->model().isValid());
}

void tst_ProjectionWidget::interruptedSearchRestoresThePose_data()
{
    QTest::addColumn<bool>("closeWindow");
    QTest::newRow("radar goes offline") << false;
    QTest::newRow("window closes") << true;
}

void tst_ProjectionWidget::interruptedSearchRestoresThePose()
{
    QFETCH(bool, closeWindow);
    placeRadar();
    DialogAnswerer answerer({-3.0, -3.0, 3.0, 3.0, 20.0});
    QSignalSpy finished(m_view->pickup(), &ProjectionPickup::searchFinished);
    // Once the search runs, the radar drops out or the operator closes the window.
    QTimer interrupt;
    connect(&interrupt, &QTimer::timeout, this, [&] {
        if (!m_view->isAnimating())
            return;
        interrupt.stop();
        if (closeWindow)
            m_view->close();
        else
            m_view->showRadarState(IOrvexClient::Offline);
    });
    interrupt.start(1);
    m_view->pickupParameters(2);
    mark({{100, 550}, {300, 400}, {700, 550}, {500, 400}, {400, 580}, {400, 350}});
    QCOMPARE(finished.count(), 1);
    QVERIFY(!interrupt.isActive());
    const int reports = answerer.titles.count("Picked parameters");
    QCOMPARE(reports, closeWindow ? 0 : 1); // a closed window reports nothing
    QCOMPARE(m_view->radarPoseDegrees().height, 6.0);
    QVERIFY(!m_view->pickup()->isPickingUp());
}

void tst_ProjectionWidget::cameraConfigStoredAndApplied_data()
{
    QTest::addColumn<QJsonObject>("stored");
    QTest::addColumn<QJsonObject>("applied"); // empty: the stored configuration itself

    QTest::newRow("none stored: the defaults are published at once")
        << QJsonObject()
        << QJsonObject{{"x_offset", 0.0},
                       {"y_offset", 0.0},
                       {"z_offset", 0.1},
                       {"azimuth_misalignment", 0.0},
                       {"altitude_misalignment", 0.0},
                       {"horizontal_view_angle", 12.0},
                       {"video_delay", 0}};
    // Each value different and in range: it comes back under its own key.
    QTest::newRow("every value round trips") << QJsonObject{{"x_offset", 0.5},
                                                            {"y_offset", -0.25},
                                                            {"z_offset", 0.75},
                                                            {"azimuth_misalignment", 3.5},
                                                            {"altitude_misalignment", -4.5},
                                                            {"horizontal_view_angle", 48.0},
                                                            {"video_delay", 120}}
                                             << QJsonObject();
    QTest::newRow("view angle 120 shown as 90")
        << QJsonObject{{"horizontal_view_angle", 120}}
        << QJsonObject{{"x_offset", 0.0}, {"horizontal_view_angle", 90.0}, {"video_delay", 0}};
    QTest::newRow("negative and huge values clamped")
        << QJsonObject{{"horizontal_view_angle", -5}, {"x_offset", -1e300}, {"video_delay", 1e9}}
        << QJsonObject{{"x_offset", -1.0}, {"horizontal_view_angle", 1.0}, {"video_delay", 3000}};
    QTest::newRow("non-numeric values read as 0")
        << QJsonObject{{"horizontal_view_angle", "wide"},
                       {"x_offset", "x"},
                       {"video_delay", "late"}}
        << QJsonObject{{"x_offset", 0.0}, {"horizontal_view_angle", 1.0}, {"video_delay", 0}};
}

void tst_ProjectionWidget::cameraConfigStoredAndApplied()
{
    QFETCH(QJsonObject, stored);
    QFETCH(QJsonObject, applied);
    QSignalSpy published(m_editor.get(), &TvmsConfigWidget::tvmsConfigChanged);
    // As in the main window, the published configuration comes straight back: ignored.
    connect(m_editor.get(), &TvmsConfigWidget::tvmsConfigChanged, m_editor.get(),
            &TvmsConfigWidget::setTvmsConfig);
    m_editor->setTvmsConfig(stored);
    if (stored.isEmpty()) {
        QCOMPARE(published.count(), 1);
        QCOMPARE(published.first().first().toJsonObject(), applied);
        return;
    }
    QVERIFY(published.isEmpty());
    m_editor->show();
    QVERIFY(!m_editor->isConfigChanged());
    m_editor->findChild<QDialogButtonBox*>("tvmsConfigButtonBox")
        ->button(QDialogButtonBox::Apply)
        ->click();
    QCOMPARE(published.count(), 1);
    const QJsonObject config = published.first().first().toJsonObject();
    if (applied.isEmpty())
        QCOMPARE(config, stored);
    for (auto it = applied.begin(); it != applied.end(); ++it)
        QVERIFY2(config.value(it.key()) == it.value(), qPrintable(it.key()));
}

void tst_ProjectionWidget::cameraConfigClosedOverEdits()
{
    m_editor->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 30}, {"z_offset", -0.2}});
    m_editor->show();
    // Shown again, the editor drops what was not applied.
    editorSpin("horizontalViewAngleSpin")->setValue(45);
    m_editor->hide();
    m_editor->show();
    QCOMPARE(editorSpin("horizontalViewAngleSpin")->value(), 30.0);
    QCOMPARE(editorSpin("zOffsetSpin")->value(), -0.2);
    // Closing over an edit asks: No keeps the window and the edit, Yes closes.
    editorSpin("zOffsetSpin")->setValue(0.5);
    QVERIFY(m_editor->isConfigChanged());
    for (auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        QuestionAnswerer answerer(answer);
        m_editor->close();
        QCOMPARE(answerer.count, 1);
        QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
        QCOMPARE(m_editor->isVisible(), answer == QMessageBox::No);
        if (answer == QMessageBox::No)
            QCOMPARE(editorSpin("zOffsetSpin")->value(), 0.5);
    }
    // Shown again without an edit, nothing is asked.
    m_editor->show();
    QuestionAnswerer answerer(QMessageBox::No);
    m_editor->close();
    QCOMPARE(answerer.count, 0);
    QVERIFY(!m_editor->isVisible());
}

QTEST_MAIN(tst_ProjectionWidget)
#include "tst_projectionwidget.moc"
