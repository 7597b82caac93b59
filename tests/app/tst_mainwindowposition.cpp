#include "inputdialoganswerer.h"
#include "iorvexclient.h"
#include "mainwindow.h"
#include "mainwindowfixture.h"
#include "parstatelabel.h"
#include "presetbutton.h"
#include "radarparamnumbering.h"
#include "readbackmark.h"
#include "roadobjectswidget.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "simulatorprocess.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The position and limitations boxes of the main window, end to end against one radar
// server simulator: what is written reads back and reaches the scheme, values beyond
// the boxes' ranges show as the radar reports them, and the presets outlive the
// program through its settings file.
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

private:
    // The window on one profile pointed at the simulator.
    bool openWindow(bool autoGetData = true)
    {
        return m_fx->open(m_sim->url(), {{"data", QJsonObject{{"auto_get_data", autoGetData}}}});
    }
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
    SetPositionWidget* position() const { return m_fx->window->findChild<SetPositionWidget*>(); }
    SetPolygonWidget* limitations() const { return m_fx->window->findChild<SetPolygonWidget*>(); }
    RoadObjectsWidget* scheme() const { return m_fx->window->findChild<RoadObjectsWidget*>(); }
    QJsonObject savedPresets() const { return m_fx->savedValue("presets").toObject(); }

    std::unique_ptr<SimulatorProcess> m_sim;
    std::unique_ptr<MainWindowFixture> m_fx;
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
    m_fx = std::make_unique<MainWindowFixture>();
}

void tst_MainWindowPosition::cleanup()
{
    m_fx.reset();
}

bool tst_MainWindowPosition::waitForWorking() const
{
    return QTest::qWaitFor([this] { return position()->isEnabled() && limitations()->isEnabled(); },
                           20000);
}

void tst_MainWindowPosition::waitForLabels(const QStringList& names, int state) const
{
    for (const QString& name : names)
        QTRY_COMPARE_WITH_TIMEOUT(m_fx->window->findChild<L*>(name + "ResultLabel")->state(), state,
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

void tst_MainWindowPosition::positionAndAreaRoundTrip()
{
    QVERIFY(openWindow());
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
    m_fx->window->findChild<QPushButton*>("setPositionButton")->click();
    QCOMPARE(scheme()->radarPosition(), QPointF(1.5, -8));
    QCOMPARE(scheme()->radarAzimuth(), 4.5);
    waitForLabels(Pose, L::CommandReceived);
    setSpins(Pose, {1, 1, 1, 1, 1, 1});
    QTRY_VERIFY(position()->isEnabled());
    m_fx->window->findChild<QPushButton*>("getPositionButton")->click();
    waitForLabels(Pose, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Pose), pose);

    // The area goes to the radar field by field in the documented order, then is taken
    // into use; read back, the scheme draws it.
    QSignalSpy steps(m_fx->window->radarClient(), &C::radarCommandStateChanged);
    setSpins(Bounds, {2, 60, 0.5, 15, 10, 150, -6, 4});
    m_fx->window->findChild<QPushButton*>("setPolygonButton")->click();
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
    m_fx->window->findChild<QPushButton*>("getPolygonButton")->click();
    waitForLabels(Bounds + QStringList{"pointCount"}, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Bounds), (QList<double>{2, 60, 0.5, 15, 10, 150, -6, 4}));
    QCOMPARE(scheme()->roadLayer().limitation(), QRectF(QPointF(10, -6), QPointF(150, 4)));

    // Switched on, read back: the scheme fills the area.
    QPushButton* enable = m_fx->window->findChild<QPushButton*>("enablePolygonButton");
    enable->click();
    QTRY_VERIFY(scheme()->roadLayer().isLimitationInUse());
    QCOMPARE(enable->text(), QString("Disable limitations"));
    QCOMPARE(limitations()->usageMask(), quint8(1));
}

void tst_MainWindowPosition::readBackBeyondTheRanges()
{
    // Another program left the radar where these boxes cannot go.
    QVERIFY(openWindow(false));
    QVERIFY(waitForWorking());
    C* client = m_fx->window->radarClient();
    client->sendCmdSetPosition(30, 40, -26, 45, -90, 0.5);
    client->sendCmdSetPolygonPointParam(0, 2, 300);
    client->sendCmdSetPolygonSpeedParam(0, 1, 150);
    QTRY_COMPARE_WITH_TIMEOUT(client->lastRadarCommand(), 0, 10000);

    m_fx->window->findChild<QPushButton*>("getPositionButton")->click();
    m_fx->window->findChild<QPushButton*>("getPolygonButton")->click();
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
    QVERIFY(openWindow());
    QVERIFY(waitForWorking());
    QCOMPARE(presetNames("position"), QStringList{"Default preset"});
    waitForLabels(Pose, L::ReceivedFromRadar); // the radar's values, read at the start
    spin("height")->setValue(7);
    const double yOffset = spin("yOffset")->value();
    {
        InputDialogAnswerer answerer({"Mast 7 m"});
        m_fx->window->findChild<SetPositionWidget*>()
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
    m_fx->menuAction("&Automatically get data when radar starts working")->trigger();
    QVERIFY(m_fx->window->close());
    m_fx->window.reset();
    QCOMPARE(savedPresets().value("position_presets").toArray().size(), 2);

    QVERIFY(m_fx->reopen());
    QVERIFY(waitForWorking());
    QCOMPARE(presetNames("position"), (QStringList{"Default preset", "Mast 7 m"}));
    QCOMPARE(presetNames("limitations"), (QStringList{"Default preset", "Wide"}));
    QVERIFY(!QTest::qWaitFor([this] { return spin("height")->value() != 5.0; }, 500));
    QCOMPARE(m_fx->window->findChild<L*>("heightResultLabel")->state(), int(L::Cleared));
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

QTEST_MAIN(tst_MainWindowPosition)
#include "tst_mainwindowposition.moc"
