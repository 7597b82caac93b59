#include "loopbackserver.h"
#include "mainwindow.h"
#include "orvexcontrol.h"
#include "projectionpickup.h"
#include "projectionwidget.h"
#include "questionanswerer.h"
#include "setpositionwidget.h"
#include "tvmsconfigwidget.h"
#include "workprofilehandler.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QJsonDocument>
#include <QMenuBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// The projection window as control 13 of the main window: its menus, the camera
// editor, the pick-up actions and what reaches the work profile.
class tst_MainWindowProjection : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void menuShowsAndClosingHidesTheWindow();
    void pickupActionOpensTheWindow_data();
    void pickupActionOpensTheWindow();
    void videoMenuItemsWriteTheProfile_data();
    void videoMenuItemsWriteTheProfile();
    void cameraEditorReachesTheProjection();
    void positionBoxAndPickupMeet();

private:
    QJsonValue profileValue(const QString& path) const;
    QAction* menuAction(const QString& menu, const QString& text) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<MainWindow> m_window;
};

void tst_MainWindowProjection::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_previousDir = QDir::currentPath();
    QDir::setCurrent(m_dir->path());
    m_server = std::make_unique<LoopbackServer>();
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    QJsonObject connection = profile.value("connection").toObject();
    connection.insert("radar_server_url", m_server->url().toString());
    profile.insert("connection", connection);
    QFile file(WorkProfileHandler::SettingsFilePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
    file.close();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void tst_MainWindowProjection::cleanup()
{
    m_window.reset();
    m_server.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

QJsonValue tst_MainWindowProjection::profileValue(const QString& path) const
{
    WorkProfileHandler* handler = m_window->profileHandler();
    QJsonValue value = handler->profile(handler->currentProfileId());
    for (const QString& key : path.split('/'))
        value = value.toObject().value(key);
    return value;
}

QAction* tst_MainWindowProjection::menuAction(const QString& menu, const QString& text) const
{
    // The first item of that text under the top menu, submenus passed over.
    QList<QAction*> items;
    for (QAction* top : m_window->menuBar()->actions())
        if (top->text() == menu)
            items = top->menu()->actions();
    while (!items.isEmpty()) {
        QAction* action = items.takeFirst();
        if (action->menu())
            items += action->menu()->actions();
        else if (action->text() == text)
            return action;
    }
    return nullptr;
}

void tst_MainWindowProjection::menuShowsAndClosingHidesTheWindow()
{
    ProjectionWidget* video = m_window->projectionWidget();
    QVERIFY(!video->isVisible()); // hidden in the default profile
    QSignalSpy sightArea(m_window.get(), &MainWindow::showSightAreaChanged);
    // The item of "Visible controls" (the submenu of the same name is passed over).
    QAction* item = menuAction("&View", "Projecting to &video");
    QVERIFY(item && item->isCheckable());
    item->trigger();
    QVERIFY(video->isVisible());
    QVERIFY(video->isEnabled());
    QCOMPARE(video->windowTitle(), QString("Projecting to video — Default profile"));
    QCOMPARE(profileValue("view/controls/13/visible").toBool(), true);
    QCOMPARE(sightArea.last().first().toBool(), true);

    // The window's own close stores it hidden and unticks the item.
    video->close();
    QVERIFY(!video->isVisible());
    QVERIFY(!item->isChecked());
    QCOMPARE(profileValue("view/controls/13/visible").toBool(), false);
    QCOMPARE(sightArea.last().first().toBool(), false);
}

void tst_MainWindowProjection::pickupActionOpensTheWindow_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<int>("mode");
    QTest::newRow("radar position") << "Radar &position" << 1;
    QTest::newRow("and camera view angle") << "Radar position and camera view &angle" << 2;
}

void tst_MainWindowProjection::pickupActionOpensTheWindow()
{
    QFETCH(QString, item);
    QFETCH(int, mode);
    QAction* action = menuAction("&Data", item);
    QVERIFY(action);
    QuestionAnswerer answerer(QMessageBox::Ok);
    action->trigger();
    QCOMPARE(answerer.title, QString("Picking up parameters"));
    QCOMPARE(answerer.text.contains("Then mark additional line segment"), mode == 2);
    ProjectionWidget* video = m_window->projectionWidget();
    QVERIFY(video->isVisible());
    QCOMPARE(profileValue("view/controls/13/visible").toBool(), true);
    QVERIFY(video->pickup()->isPickingUp());
    QCOMPARE(video->pickup()->mode(), mode);
    // Hiding the window gives the marking up.
    m_window->profileHandler()->setControlVisible(ProjectionToVideoControl, false);
    QVERIFY(!video->pickup()->isPickingUp());
}

void tst_MainWindowProjection::videoMenuItemsWriteTheProfile_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("path");
    QTest::newRow("lane boundaries")
        << "Draw &lane boundaries" << "view/monitoring_system/show_lane_boundaries";
    QTest::newRow("distance lines")
        << "Draw &distance lines" << "view/monitoring_system/show_distance_lines";
    QTest::newRow("sight on the scheme")
        << "Draw camera's sight &line and area" << "view/traffic_scheme/show_sightline";
}

void tst_MainWindowProjection::videoMenuItemsWriteTheProfile()
{
    QFETCH(QString, item);
    QFETCH(QString, path);
    QAction* action = menuAction("&View", item);
    QVERIFY(action);
    QVERIFY(action->isChecked()); // true in the default profile
    action->trigger();
    QCOMPARE(profileValue(path).toBool(), false);
    QVERIFY(!action->isChecked());
}

void tst_MainWindowProjection::cameraEditorReachesTheProjection()
{
    // The default profile has no camera configuration: the editor's values fill it.
    QCOMPARE(profileValue("view/monitoring_system/tvms_config/horizontal_view_angle").toDouble(),
             12.0);
    QAction* customize = menuAction("&View", "Customize &projecting to video");
    QVERIFY(customize);
    customize->trigger();
    TvmsConfigWidget* editor = m_window->tvmsConfigWidget();
    QVERIFY(editor->isVisible());
    QCOMPARE(editor->windowTitle(), QString("Projecting to video customization — Default profile"));
    editor->findChild<QDoubleSpinBox*>("horizontalViewAngleSpin")->setValue(48.0);
    editor->findChild<QDialogButtonBox*>("tvmsConfigButtonBox")
        ->button(QDialogButtonBox::Apply)
        ->click();
    QCOMPARE(profileValue("view/monitoring_system/tvms_config/horizontal_view_angle").toDouble(),
             48.0);
    QVERIFY(std::fabs(m_window->projectionWidget()->halfViewAngleDegrees() - 24.0) < 1e-9);
}

void tst_MainWindowProjection::positionBoxAndPickupMeet()
{
    // A picked-up pose fills the position box (nothing is sent: the operator checks it
    // and writes it from there); a pose written from the box is drawn over the video at
    // once, before the radar confirms it.
    auto* box = m_window->findChild<SetPositionWidget*>();
    QVERIFY(box);
    ProjectionWidget* video = m_window->projectionWidget();
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

QTEST_MAIN(tst_MainWindowProjection)
#include "tst_mainwindowprojection.moc"
