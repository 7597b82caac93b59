#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "iorvexclient.h"
#include "mainwindow.h"
#include "mainwindowfixture.h"
#include "orvexserialpakorprotocolclient.h"
#include "parstatelabel.h"
#include "questionanswerer.h"
#include "roadobjectswidget.h"
#include "sendcommandswidget.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "simulatorprocess.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using L = ParStateLabel;

// The radar boxes of the main window, end to end against one radar server simulator:
// what the position, limitations and tuning boxes write reads back and reaches the
// scheme, and a protocol switch re-wires the boxes without leaving a label hanging.
// The boxes' own rules are checked on the panels alone; here only their wiring.
class tst_MainWindowPosition : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void positionAreaAndTuningRoundTrip();
    void protocolSwitchWhileACommandIsInFlight();

private:
    // The window on one profile pointed at the simulator.
    bool openWindow() { return m_fx->open(m_sim->url()); }
    bool waitForWorking() const;
    void waitForLabels(const QStringList& names, int state) const;
    // The camera editor has offset boxes of the same names: look inside the two panels.
    QDoubleSpinBox* spin(const QString& name) const
    {
        auto* box = position()->findChild<QDoubleSpinBox*>(name + "Spin");
        return box ? box : limitations()->findChild<QDoubleSpinBox*>(name + "Spin");
    }
    QPushButton* button(const char* name) const
    {
        return m_fx->window->findChild<QPushButton*>(name);
    }
    void setSpins(const QStringList& names, const QList<double>& values) const;
    QList<double> spinValues(const QStringList& names) const;
    SetPositionWidget* position() const { return m_fx->window->findChild<SetPositionWidget*>(); }
    SetPolygonWidget* limitations() const { return m_fx->window->findChild<SetPolygonWidget*>(); }
    RoadObjectsWidget* scheme() const { return m_fx->window->findChild<RoadObjectsWidget*>(); }

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

void tst_MainWindowPosition::positionAreaAndTuningRoundTrip()
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
    const QStringList tuning{"frequencyId", "sensitivity"};
    waitForLabels(tuning, L::ReceivedFromRadar);

    // Written: the scheme shows the new position at once, before the radar confirms it.
    const QList<double> pose{7.25, 1.5, -8, 4.5, -2, 1};
    setSpins(Pose, pose);
    button("setPositionButton")->click();
    QCOMPARE(scheme()->radarPosition(), QPointF(1.5, -8));
    QCOMPARE(scheme()->radarAzimuth(), 4.5);
    waitForLabels(Pose, L::CommandReceived);
    setSpins(Pose, {1, 1, 1, 1, 1, 1});
    QTRY_VERIFY(position()->isEnabled());
    button("getPositionButton")->click();
    waitForLabels(Pose, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Pose), pose);

    // The area goes to the radar (in the order the panel's own suite checks), is read
    // back, and the scheme draws it.
    setSpins(Bounds, {2, 60, 0.5, 15, 10, 150, -6, 4});
    button("setPolygonButton")->click();
    waitForLabels(Bounds, L::CommandReceived);
    QTRY_VERIFY(limitations()->isEnabled());
    setSpins(Bounds, {0, 10, 0, 10, 0, 50, 0, 0});
    button("getPolygonButton")->click();
    waitForLabels(Bounds + QStringList{"pointCount"}, L::ReceivedFromRadar);
    QCOMPARE(spinValues(Bounds), (QList<double>{2, 60, 0.5, 15, 10, 150, -6, 4}));
    QCOMPARE(scheme()->roadLayer().limitation(), QRectF(QPointF(10, -6), QPointF(150, 4)));

    // Switched on, read back: the scheme fills the area.
    QPushButton* enable = button("enablePolygonButton");
    enable->click();
    QTRY_VERIFY(scheme()->roadLayer().isLimitationInUse());
    QCOMPARE(enable->text(), QString("Disable limitations"));
    QCOMPARE(limitations()->usageMask(), quint8(1));

    // The tuning box, written and read back.
    auto* frequency = m_fx->window->findChild<QSpinBox*>("frequencyIdSpin");
    frequency->setValue(13);
    button("setTuningParamsButton")->click();
    waitForLabels(tuning, L::CommandReceived);
    frequency->setValue(0);
    QTRY_VERIFY(button("getTuningParamsButton")->isEnabled());
    button("getTuningParamsButton")->click();
    waitForLabels(tuning, L::ReceivedFromRadar);
    QCOMPARE(frequency->value(), 13);
}

void tst_MainWindowPosition::protocolSwitchWhileACommandIsInFlight()
{
    // Last: the simulator speaks the other protocol afterwards.
    QuestionAnswerer answerer(QMessageBox::Ok);
    QVERIFY(openWindow());
    auto* commands = m_fx->window->findChild<SendCommandsWidget*>();
    QTRY_VERIFY_WITH_TIMEOUT(commands->isEnabled(), 20000);
    QPointer<IOrvexClient> old = m_fx->window->radarClient();
    auto* label = m_fx->window->findChild<QWidget*>("selfDiagnosticsStateWidget")
                      ->findChild<CmdStateLabel*>();

    button("selfDiagnosticsButton")->click();
    QVERIFY(!label->isHidden() && commands->cmdHandler()->isWaiting());
    m_fx->menuAction("&1. Serial, type P (SerP)")->trigger();
    QVERIFY(qobject_cast<OrvexSerialPakorProtocolClient*>(m_fx->window->radarClient()));
    QVERIFY(label->isHidden()); // dropped with the old client, not left in progress
    QVERIFY(!commands->isEnabled());
    QTRY_VERIFY(old.isNull());

    // The server is told to switch; the new client gets the radar working again, and the
    // old request opens no box.
    QTRY_VERIFY_WITH_TIMEOUT(commands->isEnabled(), 10000);
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));
    button("selfDiagnosticsButton")->click();
    QTRY_COMPARE(answerer.count, 1);
    QCOMPARE(answerer.title, QString("Radar self-diagnosis"));
    QTRY_COMPARE(label->text(), QString("command received"));
}

QTEST_MAIN(tst_MainWindowPosition)
#include "tst_mainwindowposition.moc"
