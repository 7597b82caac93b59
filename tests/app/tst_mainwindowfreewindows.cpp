#include "historytablemodel.h"
#include "historytablewidget.h"
#include "loopbackserver.h"
#include "mainwindow.h"
#include "mainwindowfixture.h"
#include "objectcolor.h"
#include "orvexcontrol.h"
#include "projectionpickup.h"
#include "projectionwidget.h"
#include "questionanswerer.h"
#include "setpositionwidget.h"
#include "testrecords.h"
#include "tvmsconfigwidget.h"
#include "variantids.h"
#include "workprofilehandler.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

#include <memory>

// The main window's free windows against a loopback radar server: the objects history
// (control 12) fed by the radar client, and the projection to video (control 13) with
// its menus, the camera editor, the pick-up actions and what reaches the work profile.
class tst_MainWindowFreeWindows : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void menuShowsAndClosingHidesTheWindow_data();
    void menuShowsAndClosingHidesTheWindow();
    void measuredObjectsReachTheHistory();
    void pickupActionOpensTheWindow_data();
    void pickupActionOpensTheWindow();
    void videoMenuItemsWriteTheProfile_data();
    void videoMenuItemsWriteTheProfile();
    void cameraEditorReachesTheProjection();
    void positionBoxAndPickupMeet();

private:
    QJsonValue profileValue(const QString& path) const { return m_fx->profileValue(path); }
    QAction* menuAction(const QString& text) const { return m_fx->menuAction(text); }

    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<MainWindowFixture> m_fx;
};

void tst_MainWindowFreeWindows::init()
{
    m_server = std::make_unique<LoopbackServer>();
    m_fx = std::make_unique<MainWindowFixture>();
    QVERIFY(m_fx->open(m_server->url()));
}

void tst_MainWindowFreeWindows::cleanup()
{
    m_fx.reset();
    m_server.reset();
}

void tst_MainWindowFreeWindows::menuShowsAndClosingHidesTheWindow_data()
{
    QTest::addColumn<int>("control");
    QTest::addColumn<QString>("item"); // of "Visible controls" (its submenu is passed over)
    QTest::addColumn<QString>("title");
    QTest::newRow("objects history") << int(ObjectsHistoryControl) << "Objects &history"
                                     << "Objects history — Default profile";
    QTest::newRow("projection to video") << int(ProjectionToVideoControl) << "Projecting to &video"
                                         << "Projecting to video — Default profile";
}

void tst_MainWindowFreeWindows::menuShowsAndClosingHidesTheWindow()
{
    QFETCH(int, control);
    QFETCH(QString, item);
    MainWindow* window = m_fx->window.get();
    QWidget* free = control == ObjectsHistoryControl
                        ? static_cast<QWidget*>(window->historyWidget())
                        : window->projectionWidget();
    const QString visible = QString("view/controls/%1/visible").arg(control);
    // Hidden and idle in the default profile; only the projection shows the sight area.
    QVERIFY(!free->isVisible() && !free->isEnabled());
    QSignalSpy sightArea(window, &MainWindow::showSightAreaChanged);
    QAction* action = menuAction(item);
    QVERIFY(action && action->isCheckable() && !action->isChecked());
    action->trigger();
    QVERIFY(free->isVisible() && free->isEnabled() && free->isWindow());
    QCOMPARE(free->parentWidget(), window);
    QCOMPARE(free->windowModality(), Qt::NonModal);
    QTEST(free->windowTitle(), "title");
    QCOMPARE(profileValue(visible), QJsonValue(true));
    QCOMPARE(!sightArea.isEmpty() && sightArea.last().first().toBool(),
             control == ProjectionToVideoControl);

    // The window's own close stores it hidden, unticks the item and stops its feed.
    QVERIFY(free->close());
    QVERIFY(!free->isVisible() && !free->isEnabled());
    QVERIFY(!action->isChecked());
    QCOMPARE(profileValue(visible), QJsonValue(false));
    if (control == ProjectionToVideoControl)
        QCOMPARE(sightArea.last().first().toBool(), false);
    else
        QCOMPARE(sightArea.count(), 0);
}

void tst_MainWindowFreeWindows::measuredObjectsReachTheHistory()
{
    m_fx->window->profileHandler()->setPaintObjects(true);
    QVERIFY(m_server->waitForClient());
    QSignalSpy frames(m_fx->window->radarClient(), &IOrvexClient::frameFinished);
    const VariantIds& serD = VariantIds::of(0);
    auto send = [&](const QDateTime& time, const QList<quint8>& objects) {
        QByteArray message = TestRecords::header(time) + TestRecords::frame(serD.sync, 0);
        for (quint8 id : objects) {
            const quint64 payload = TestRecords::roadObjectAt(id, 20.0 + id, 1.5);
            message += TestRecords::frame(quint16(serD.objectMin + (payload >> 58)), payload);
        }
        m_server->sendBinary(message);
        return frames.wait();
    };
    // The client reports objects once the radar is online, after a few messages.
    const QDateTime t0 = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < 3; ++i)
        QVERIFY(send(t0.addMSecs(-1000 + i * 100), {}));
    // Hidden, the history and the projection take nothing in (hours of frames would
    // otherwise pile up unseen).
    const HistoryTableModel* model = m_fx->window->historyWidget()->model();
    QVERIFY(send(t0.addMSecs(-600), {3, 4}));
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(m_fx->window->projectionWidget()->bufferedFrames(), 0);

    m_fx->window->profileHandler()->setControlVisible(ObjectsHistoryControl, true);
    QVERIFY(send(t0, {1, 2}));
    // Object 2 is only carried over by the client in the second frame.
    QVERIFY(send(t0.addMSecs(100), {1}));

    // The view hears of a frame's rows at its end.
    QCOMPARE(m_fx->window->historyWidget()->tableView()->verticalHeader()->count(), 3);
    QCOMPARE((QStringList{model->text(0, 0), model->text(1, 0), model->text(2, 0)}),
             (QStringList{"1", "1", "2"}));
    QCOMPARE(model->index(2, 0).data(Qt::BackgroundRole).value<QBrush>().color(),
             ObjectColor::base(2));
}

void tst_MainWindowFreeWindows::pickupActionOpensTheWindow_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("mode");
    QTest::newRow("radar position") << "Radar &position" << 1;
    QTest::newRow("and camera view angle") << "Radar position and camera view &angle" << 2;
}

void tst_MainWindowFreeWindows::pickupActionOpensTheWindow()
{
    QFETCH(QString, item);
    QFETCH(int, mode);
    QAction* action = menuAction(item);
    QVERIFY(action);
    QuestionAnswerer answerer(QMessageBox::Ok);
    action->trigger();
    QCOMPARE(answerer.title, QString("Picking up parameters"));
    QCOMPARE(answerer.text.contains("Then mark additional line segment"), mode == 2);
    ProjectionWidget* video = m_fx->window->projectionWidget();
    QVERIFY(video->isVisible());
    QCOMPARE(profileValue("view/controls/13/visible").toBool(), true);
    QVERIFY(video->pickup()->isPickingUp());
    QCOMPARE(video->pickup()->mode(), mode);
    // Hiding the window gives the marking up.
    m_fx->window->profileHandler()->setControlVisible(ProjectionToVideoControl, false);
    QVERIFY(!video->pickup()->isPickingUp());
}

void tst_MainWindowFreeWindows::videoMenuItemsWriteTheProfile_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("path");
    QTest::newRow("lane boundaries") << "Draw &lane boundaries"
                                     << "view/monitoring_system/show_lane_boundaries";
    QTest::newRow("distance lines") << "Draw &distance lines"
                                    << "view/monitoring_system/show_distance_lines";
    QTest::newRow("sight on the scheme") << "Draw camera's sight &line and area"
                                         << "view/traffic_scheme/show_sightline";
}

void tst_MainWindowFreeWindows::videoMenuItemsWriteTheProfile()
{
    QFETCH(QString, item);
    QFETCH(QString, path);
    QAction* action = menuAction(item);
    QVERIFY(action);
    QVERIFY(action->isChecked()); // true in the default profile
    action->trigger();
    QCOMPARE(profileValue(path).toBool(), false);
    QVERIFY(!action->isChecked());
}

void tst_MainWindowFreeWindows::cameraEditorReachesTheProjection()
{
    // The default profile has no camera configuration: the editor's values fill it.
    QCOMPARE(profileValue("view/monitoring_system/tvms_config/horizontal_view_angle").toDouble(),
             12.0);
    QAction* customize = menuAction("Customize &projecting to video");
    QVERIFY(customize);
    customize->trigger();
    TvmsConfigWidget* editor = m_fx->window->tvmsConfigWidget();
    QVERIFY(editor->isVisible());
    QCOMPARE(editor->windowTitle(), QString("Projecting to video customization — Default profile"));
    editor->findChild<QDoubleSpinBox*>("horizontalViewAngleSpin")->setValue(48.0);
    editor->findChild<QDialogButtonBox*>("tvmsConfigButtonBox")
        ->button(QDialogButtonBox::Apply)
        ->click();
    QCOMPARE(profileValue("view/monitoring_system/tvms_config/horizontal_view_angle").toDouble(),
             48.0);
    QVERIFY(std::fabs(m_fx->window->projectionWidget()->halfViewAngleDegrees() - 24.0) < 1e-9);
}

void tst_MainWindowFreeWindows::positionBoxAndPickupMeet()
{
    // A picked-up pose fills the position box (nothing is sent: the operator checks it
    // and writes it from there); a pose written from the box is drawn over the video at
    // once, before the radar confirms it.
    auto* box = m_fx->window->findChild<SetPositionWidget*>();
    QVERIFY(box);
    ProjectionWidget* video = m_fx->window->projectionWidget();
    emit video->pickedRadarPosition(7.5, 1.25, -9.0, 3.5, -2.0, 0.0);
    const QStringList names{"height", "xOffset", "yOffset", "azimuth", "altitude"};
    const QList<double> picked{7.5, 1.25, -9.0, 3.5, -2.0};
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(box->findChild<QDoubleSpinBox*>(names.at(i) + "Spin")->value(), picked.at(i));

    emit box->setPosition(6.0, 0.5, -11.0, 2.0, -4.0, 0.0);
    const CameraModel::RadarPose pose = video->radarPoseDegrees();
    QCOMPARE(QList<double>({pose.height, pose.xOffset, pose.yOffset, pose.azimuth}),
             QList<double>({6.0, 0.5, -11.0, 2.0}));
}

QTEST_MAIN(tst_MainWindowFreeWindows)
#include "tst_mainwindowfreewindows.moc"
