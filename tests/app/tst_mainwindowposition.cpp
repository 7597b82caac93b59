#include "inputdialoganswerer.h"
#include "iorvexclient.h"
#include "mainwindow.h"
#include "parstatelabel.h"
#include "presetbutton.h"
#include "radarparamnumbering.h"
#include "readbackmark.h"
#include "roadobjectswidget.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "simulatorprocess.h"
#include "workprofilehandler.h"

#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMenuBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The position and limitations boxes of the main window, end to end against one radar
// server simulator: what is written reads back and reaches the scheme, values beyond
// the boxes' ranges show as the radar reports them, and the presets outlive the
// program through its settings file, however badly that file holds them.
class tst_MainWindowPosition : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void positionAndAreaRoundTrip();
    void readBackBeyondTheRanges();
    void presetsOutliveTheProgram();
    void badPresetArraysLoad_data();
    void badPresetArraysLoad();

private:
    // The window on one profile pointed at the simulator, with these presets.
    void openWindow(const QJsonObject& presets = {}, bool autoGetData = true);
    bool waitForWorking() const;
    void waitForLabels(const QStringList& names, int state) const;
    // The camera editor has offset boxes of the same names: look inside the two panels.
    QDoubleSpinBox* spin(const QString& name) const
    {
        auto* box = position()->findChild<QDoubleSpinBox*>(name + "Spin");
        return box ? box : limitations()->findChild<QDoubleSpinBox*>(name + "Spin");
    }
    void setSpins(const QStringList& names, const QList<double>& values) const;
    QList<double> spinValues(const QStringList& names) const;
    QStringList presetNames(const QString& panel) const;
    SetPositionWidget* position() const { return m_window->findChild<SetPositionWidget*>(); }
    SetPolygonWidget* limitations() const { return m_window->findChild<SetPolygonWidget*>(); }
    RoadObjectsWidget* scheme() const { return m_window->findChild<RoadObjectsWidget*>(); }
    QJsonObject savedPresets() const;

    std::unique_ptr<SimulatorProcess> m_sim;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<MainWindow> m_window;
};

namespace {

const QStringList Pose{"height", "xOffset", "yOffset", "azimuth", "altitude", "roll"};
const QStringList Bounds{"spdXmin", "spdXmax", "spdYmin", "spdYmax",
                         "posXmin", "posXmax", "posYmin", "posYmax"};

} // namespace

void tst_MainWindowPosition::initTestCase()
{
    // One radar for the whole suite: what one test writes, the next one finds.
    m_sim = std::make_unique<SimulatorProcess>(QStringList{"--quiet"});
    QVERIFY(m_sim->start());
}

void tst_MainWindowPosition::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_previousDir = QDir::currentPath();
    QDir::setCurrent(m_dir->path());
}

void tst_MainWindowPosition::cleanup()
{
    m_window.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

void tst_MainWindowPosition::openWindow(const QJsonObject& presets, bool autoGetData)
{
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    QJsonObject connection = profile.value("connection").toObject();
    connection.insert("radar_server_url", m_sim->url().toString());
    profile.insert("connection", connection);
    profile.insert("data", QJsonObject{{"auto_get_data", autoGetData}});
    if (!presets.isEmpty())
        profile.insert("presets", presets.value("presets"));
    QFile file(WorkProfileHandler::SettingsFilePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
    file.close();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

bool tst_MainWindowPosition::waitForWorking() const
{
    return QTest::qWaitFor([this] { return position()->isEnabled() && limitations()->isEnabled(); },
                           20000);
}

void tst_MainWindowPosition::waitForLabels(const QStringList& names, int state) const
{
    for (const QString& name : names)
        QTRY_COMPARE_WITH_TIMEOUT(m_window->findChild<L*>(name + "ResultLabel")->state(), state,
                                  10000);
}

void tst_MainWindowPosition::setSpins(const QStringList& names, const QList<double>& values) const
{
    for (int i = 0; i < names.size(); ++i)
        spin(names.at(i))->setValue(values.at(i));
}

QList<double> tst_MainWindowPosition::spinValues(const QStringList& names) const
{
    QList<double> values;
    for (const QString& name : names)
        values << spin(name)->value();
    return values;
}

QStringList tst_MainWindowPosition::presetNames(const QString& panel) const
{
    QStringList names;
    const QWidget* p = panel == "position" ? static_cast<QWidget*>(position()) : limitations();
    const QLayout* row = p->findChild<QHBoxLayout*>("presetButtonsLayout");
    for (int i = 0; i < row->count(); ++i)
        names << qobject_cast<PresetButton*>(row->itemAt(i)->widget())->text();
    return names;
}

QJsonObject tst_MainWindowPosition::savedPresets() const
{
    QFile file(WorkProfileHandler::SettingsFilePath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject top = QJsonDocument::fromJson(file.readAll()).object();
    return top.value("profiles").toArray().at(0).toObject().value("presets").toObject();
}

void tst_MainWindowPosition::positionAndAreaRoundTrip()
{
    openWindow();
    QVERIFY(waitForWorking());
    // The radar was read as it started working: the simulator's factory position and area.
    waitForLabels(Pose, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Pose), (QList<double>{6.5, 0, -12, 0, -3, 0}));
    waitForLabels(Bounds, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Bounds), (QList<double>{1, 100, 0, 10, 5, 100, -10, 10}));
    QTRY_COMPARE(scheme()->roadLayer().limitation(), QRectF(QPointF(5, -10), QPointF(100, 10)));
    QVERIFY(!scheme()->roadLayer().isLimitationInUse());

    // Written: the scheme shows the new position at once, before the radar confirms it.
    const QList<double> pose{7.25, 1.5, -8, 4.5, -2, 1};
    setSpins(Pose, pose);
    m_window->findChild<QPushButton*>("setPositionButton")->click();
    QCOMPARE(scheme()->radarPosition(), QPointF(1.5, -8));
    QCOMPARE(scheme()->radarAzimuth(), 4.5);
    waitForLabels(Pose, L::CommandReceived);
    setSpins(Pose, {1, 1, 1, 1, 1, 1});
    QTRY_VERIFY(position()->isEnabled());
    m_window->findChild<QPushButton*>("getPositionButton")->click();
    waitForLabels(Pose, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Pose), pose);

    // The area goes to the radar field by field in the documented order, then is taken
    // into use; read back, the scheme draws it.
    QSignalSpy steps(m_window->radarClient(), &C::radarCommandStateChanged);
    setSpins(Bounds, {2, 60, 0.5, 15, 10, 150, -6, 4});
    m_window->findChild<QPushButton*>("setPolygonButton")->click();
    using P = RadarParamNumbering;
    QList<int> expected;
    for (int p : {0, 1, 2, 3})
        expected << P::fullPolygonCmdId(C::CmdSetPolygonSpeedParam, 0, quint8(p));
    expected << P::fullPolygonCmdId(C::CmdSetPolygonTreatParam, 0, 0);
    for (int p : {0, 8, 2, 10, 1, 9, 3, 11})
        expected << P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 0, quint8(p));
    expected << C::CmdReinitPolygons;
    QList<int> queued;
    for (const QList<QVariant>& step : steps) {
        if (step.at(1).toInt() == C::Queued)
            queued << step.at(0).toInt();
    }
    QCOMPARE(queued, expected);
    waitForLabels(Bounds, L::CommandReceived);
    QTRY_VERIFY(limitations()->isEnabled());
    setSpins(Bounds, {0, 10, 0, 10, 0, 50, 0, 0});
    m_window->findChild<QPushButton*>("getPolygonButton")->click();
    waitForLabels(Bounds + QStringList{"pointCount"}, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Bounds), (QList<double>{2, 60, 0.5, 15, 10, 150, -6, 4}));
    QCOMPARE(scheme()->roadLayer().limitation(), QRectF(QPointF(10, -6), QPointF(150, 4)));

    // Switched on, read back: the scheme fills the area.
    QPushButton* enable = m_window->findChild<QPushButton*>("enablePolygonButton");
    enable->click();
    QTRY_VERIFY(scheme()->roadLayer().isLimitationInUse());
    QCOMPARE(enable->text(), QString("Disable limitations"));
    QCOMPARE(limitations()->usageMask(), quint8(1));
}

void tst_MainWindowPosition::readBackBeyondTheRanges()
{
    // Another program left the radar where these boxes cannot go.
    openWindow({}, false);
    QVERIFY(waitForWorking());
    C* client = m_window->radarClient();
    client->sendCmdSetPosition(30, 40, -26, 45, -90, 0.5);
    client->sendCmdSetPolygonPointParam(0, 2, 300);
    client->sendCmdSetPolygonSpeedParam(0, 1, 150);
    QTRY_COMPARE_WITH_TIMEOUT(client->lastRadarCommand(), 0, 10000);

    m_window->findChild<QPushButton*>("getPositionButton")->click();
    m_window->findChild<QPushButton*>("getPolygonButton")->click();
    waitForLabels(Pose + Bounds, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Pose), (QList<double>{20, 25, -25, 30, -30, 0.5}));
    QCOMPARE(ReadBackMark::reportedValue(spin("height")), QVariant(30.0));
    QCOMPARE(ReadBackMark::reportedValue(spin("altitude")), QVariant(-90.0));
    QVERIFY(ReadBackMark::reportedValue(spin("roll")).isNull());
    QCOMPARE(spin("posXmax")->value(), 250.0);
    QCOMPARE(ReadBackMark::reportedValue(spin("posXmax")), QVariant(300.0));
    QCOMPARE(ReadBackMark::reportedValue(spin("spdXmax")), QVariant(150.0));
    // The scheme hears the radar itself, unclamped.
    QCOMPARE(scheme()->radarPosition(), QPointF(40, -26));
    QCOMPARE(scheme()->roadLayer().limitation().right(), 300.0);
}

void tst_MainWindowPosition::presetsOutliveTheProgram()
{
    openWindow();
    QVERIFY(waitForWorking());
    QCOMPARE(presetNames("position"), QStringList{"Default preset"});
    waitForLabels(Pose, L::ReceivedFromRadar); // the radar's values, read at the start
    spin("height")->setValue(7);
    const double yOffset = spin("yOffset")->value();
    {
        InputDialogAnswerer answerer({"Mast 7 m"});
        m_window->findChild<SetPositionWidget*>()
            ->findChild<QToolButton*>("addPresetButton")
            ->click();
        QCOMPARE(answerer.count, 1);
    }
    spin("posYmin")->setValue(-20);
    {
        InputDialogAnswerer answerer({"Wide"});
        limitations()->findChild<QToolButton*>("addPresetButton")->click();
        QCOMPARE(answerer.count, 1);
    }
    // Automatic reading switched off from the menu: the next start leaves the boxes alone.
    for (QAction* action : m_window->menuBar()->findChildren<QAction*>()) {
        if (action->text() == "&Automatically get data when radar starts working")
            action->trigger();
    }
    QVERIFY(m_window->close());
    m_window.reset();
    QCOMPARE(savedPresets().value("position_presets").toArray().size(), 2);

    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QVERIFY(waitForWorking());
    QCOMPARE(presetNames("position"), (QStringList{"Default preset", "Mast 7 m"}));
    QCOMPARE(presetNames("limitations"), (QStringList{"Default preset", "Wide"}));
    QVERIFY(!QTest::qWaitFor([this] { return spin("height")->value() != 5.0; }, 500));
    QCOMPARE(m_window->findChild<L*>("heightResultLabel")->state(), int(L::Cleared));
    qobject_cast<PresetButton*>(
        position()->findChild<QHBoxLayout*>("presetButtonsLayout")->itemAt(1)->widget())
        ->click();
    QCOMPARE(spin("height")->value(), 7.0);
    QCOMPARE(spin("yOffset")->value(), yOffset); // as read back when the preset was added
    qobject_cast<PresetButton*>(
        limitations()->findChild<QHBoxLayout*>("presetButtonsLayout")->itemAt(1)->widget())
        ->click();
    QCOMPARE(spin("posYmin")->value(), -20.0);
}

void tst_MainWindowPosition::badPresetArraysLoad_data()
{
    QTest::addColumn<QByteArray>("presets"); // the profile's "presets" value
    QTest::addColumn<QStringList>("positionNames");
    QTest::addColumn<QStringList>("limitationNames");

    const QStringList none{"Default preset"};
    QTest::newRow("strings, nulls, numbers, odd names, huge and missing values")
        << QByteArray(R"({"position_presets": ["A", null, 7, [], {},
              {"name": null, "height": 5, "x_offset": 0, "y_offset": 0, "azimuth": 0,
               "altitude": 0, "roll": 0},
              {"name": "Far — 🚗", "height": 1e308, "x_offset": -1e308, "y_offset": "x",
               "azimuth": 9e99, "altitude": null, "roll": 0},
              {"name": "No roll", "height": 5, "x_offset": 0, "y_offset": 0, "azimuth": 0,
               "altitude": 0}],
            "limitations_presets": [null, "B", false,
              {"name": "Huge", "point_count": 1e308, "speed_x_min": -1e308,
               "speed_x_max": 1e308, "speed_y_min": 0, "speed_y_max": 10,
               "position_x_min": 5, "position_x_max": 100, "position_y_min": -10,
               "position_y_max": 10},
              {"name": "No count", "speed_x_min": 1, "speed_x_max": 100, "speed_y_min": 0,
               "speed_y_max": 10, "position_x_min": 5, "position_x_max": 100,
               "position_y_min": -10, "position_y_max": 10}]})")
        << QStringList{"Far — 🚗"} << QStringList{"Huge"};
    QTest::newRow("arrays of another type")
        << QByteArray(R"({"position_presets": "all of them", "limitations_presets": {"a": 1}})")
        << none << none;
    QTest::newRow("presets not an object") << QByteArray(R"([1, 2, 3])") << none << none;
}

void tst_MainWindowPosition::badPresetArraysLoad()
{
    QFETCH(QByteArray, presets);
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson("{\"presets\": " + presets + "}", &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    openWindow(doc.object());
    QTEST(presetNames("position"), "positionNames");
    QTEST(presetNames("limitations"), "limitationNames");
    position()->applyPreset(0);
    QCOMPARE(spin("height")->value(), presets.contains("Far") ? 20.0 : 5.0);
    // What was kept is what the settings file holds after the program closes.
    const QJsonArray positionList = position()->presets();
    const QJsonArray limitationList = limitations()->presets();
    QVERIFY(m_window->close());
    QCOMPARE(savedPresets().value("position_presets").toArray(), positionList);
    QCOMPARE(savedPresets().value("limitations_presets").toArray(), limitationList);
}

QTEST_MAIN(tst_MainWindowPosition)
#include "tst_mainwindowposition.moc"
