#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "mainwindow.h"
#include "mainwindowfixture.h"
#include "orvexserialpakorprotocolclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "questionanswerer.h"
#include "radartuningwidget.h"
#include "sendcommandswidget.h"
#include "simulatorprocess.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The command panels in their boxes of the main window, end to end against the radar
// server simulator: what the operator sees when the radar answers, is busy, stays
// silent or restarts; requested results open their message boxes and others do not;
// a protocol switch re-wires everything without leaving a label hanging.
class tst_MainWindowPanels : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requestedResultsOpenTheirBoxes();
    void busyRadarStillAnswers();
    void tuningReadsBackAndOutlivesARestart();
    void silentRadarEndsInErrorAndClears();
    void protocolSwitchWhileACommandIsInFlight();

private:
    // The window on the default profile, pointed at a simulator started with the
    // arguments; true once the radar works and the service commands may be used.
    bool openWindow(const QStringList& simArguments, bool autoGetData = true);
    QPushButton* button(const char* name) const
    {
        return m_fx->window->findChild<QPushButton*>(name);
    }
    QSpinBox* spin(const char* name) const { return m_fx->window->findChild<QSpinBox*>(name); }
    // The label beside a button of the service or save/restart commands.
    CmdStateLabel* stateLabel(QString buttonName) const
    {
        const QString place = buttonName.replace("Button", "StateWidget");
        return m_fx->window->findChild<QWidget*>(place)->findChild<CmdStateLabel*>();
    }
    L* frequencyLabel() const { return m_fx->window->findChild<L*>("frequencyIdResultLabel"); }
    L* sensitivityLabel() const { return m_fx->window->findChild<L*>("sensitivityResultLabel"); }
    RadarTuningWidget* tuning() const { return m_fx->window->findChild<RadarTuningWidget*>(); }
    SendCommandsWidget* commands() const { return m_fx->window->findChild<SendCommandsWidget*>(); }
    QAction* menuAction(const QString& text) const { return m_fx->menuAction(text); }
    bool waitForRadarState(int state, int timeoutMs = 8000);
    // Clicks once the tuning panel takes input; true when both labels reached the state.
    bool tuningClick(const char* buttonName, int endState, int timeoutMs = 5000);

    std::unique_ptr<SimulatorProcess> m_sim;
    std::unique_ptr<MainWindowFixture> m_fx;
    std::unique_ptr<QSignalSpy> m_commandSteps; // of the first client
};

void tst_MainWindowPanels::init()
{
    m_fx = std::make_unique<MainWindowFixture>();
}

void tst_MainWindowPanels::cleanup()
{
    m_commandSteps.reset();
    m_fx.reset();
    m_sim.reset();
}

bool tst_MainWindowPanels::openWindow(const QStringList& simArguments, bool autoGetData)
{
    m_sim = std::make_unique<SimulatorProcess>(QStringList{"--quiet"} + simArguments);
    if (!m_sim->start()
        || !m_fx->open(m_sim->url(), {{"data", QJsonObject{{"auto_get_data", autoGetData}}}},
                       QSize()))
        return false;
    // The radar works, and the start-up commands are queued, only once events flow.
    m_commandSteps
        = std::make_unique<QSignalSpy>(m_fx->window->radarClient(), &C::radarCommandStateChanged);
    m_fx->window->show();
    // A silent radar keeps the start-up commands in the queue for a long while: 5 s each,
    // and the limitations box asks whether its area is used before these are asked.
    return QTest::qWaitForWindowExposed(m_fx->window.get())
           && QTest::qWaitFor([this] { return commands()->isEnabled(); }, 30000);
}

bool tst_MainWindowPanels::waitForRadarState(int state, int timeoutMs)
{
    return QTest::qWaitFor(
        [this, state] { return m_fx->window->radarClient()->radarState() == state; }, timeoutMs);
}

bool tst_MainWindowPanels::tuningClick(const char* buttonName, int endState, int timeoutMs)
{
    if (!QTest::qWaitFor([this] { return tuning()->isEnabled(); }))
        return false;
    button(buttonName)->click();
    return QTest::qWaitFor(
        [this, endState] {
            return frequencyLabel()->state() == endState && sensitivityLabel()->state() == endState;
        },
        timeoutMs);
}

void tst_MainWindowPanels::requestedResultsOpenTheirBoxes()
{
    QuestionAnswerer answerer(QMessageBox::Ok);
    QVERIFY(openWindow({"--selftest", "0x0014"}));
    // The hardware information the status bar asked for by itself opened no box.
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));

    // Each request opens one box, once: the device information menu's two items, then
    // the self-diagnosis, units 2 and 4 sound.
    const struct
    {
        int menuItem; // of the device information menu, -1 for none
        QString buttonName, title, text;
    } requests[] = {
        {0, "getDeviceInfoButton", "Hardware info", "ORVEX RS-24 SIM rev.C"},
        {1, "getDeviceInfoButton", "Firmware info", "FW 2.14.3 build 512"},
        {-1, "selfDiagnosticsButton", "Radar self-diagnosis",
         "Self-diagnosis completed.\nRadar is functioning wrong.\n\n"
         "AMP1\tbad\nAMP2\tok\nPADC\tbad\nTRSC\tok\nPLLC\tbad"},
    };
    int boxes = 0;
    for (const auto& r : requests) {
        stateLabel(r.buttonName)->clear();
        QTRY_VERIFY(commands()->isEnabled());
        button(qPrintable(r.buttonName))->click();
        if (r.menuItem >= 0) {
            QMenu* menu = commands()->deviceInfoMenu();
            QTRY_VERIFY(menu->isVisible());
            menu->hide();
            menu->actions().at(r.menuItem)->trigger();
        }
        ++boxes;
        QTRY_COMPARE(answerer.count, boxes);
        QCOMPARE(answerer.title, r.title);
        QCOMPARE(answerer.text, r.text);
        QTRY_COMPARE(stateLabel(r.buttonName)->text(), QString("command received"));
    }
    QVERIFY(!QTest::qWaitFor([&] { return answerer.count > boxes; }, 300));
}

void tst_MainWindowPanels::busyRadarStillAnswers()
{
    // The first command of the start-up, the position box's read, is answered "busy"
    // three times and asked again until the radar takes it; the tuning reads follow.
    QVERIFY(openWindow({"--busy-acks", "3"}));
    QTRY_COMPARE(sensitivityLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(frequencyLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(spin("frequencyIdSpin")->value(), 2);
    const QVariantList busy{int(C::CmdGetHeight), int(C::InProgress), 255};
    QCOMPARE(std::count(m_commandSteps->begin(), m_commandSteps->end(), busy), 3);
    QVERIFY(tuningClick("setTuningParamsButton", L::CommandReceived));
}

void tst_MainWindowPanels::tuningReadsBackAndOutlivesARestart()
{
    QVERIFY(openWindow({}));
    // Every step the frequency label shows, in order.
    QList<int> steps;
    connect(tuning()->parHandler(), &ParHandler::updated, this, [this, &steps] {
        if (steps.isEmpty() || steps.last() != frequencyLabel()->state())
            steps.append(frequencyLabel()->state());
    });
    spin("frequencyIdSpin")->setValue(13);
    spin("sensitivitySpin")->setValue(222);
    steps.clear();
    QVERIFY(tuningClick("setTuningParamsButton", L::CommandReceived));
    QCOMPARE(steps, (QList<int>{L::Cleared, L::Queued, L::InProgress, L::CommandReceived}));
    spin("frequencyIdSpin")->setValue(0);
    QVERIFY(tuningClick("getTuningParamsButton", L::ReceivedFromRadar));
    QCOMPARE(spin("frequencyIdSpin")->value(), 13);
    button("saveToFlashButton")->click();
    QTRY_COMPARE(stateLabel("saveToFlashButton")->text(), QString("command received"));
    spin("frequencyIdSpin")->setValue(3);
    QVERIFY(tuningClick("setTuningParamsButton", L::CommandReceived)); // not saved

    // A read queued behind the restart meets the silence that follows it.
    button("restartRadarButton")->click();
    button("getTuningParamsButton")->click();
    QTRY_COMPARE(stateLabel("restartRadarButton")->text(), QString("command received"));
    QVERIFY(waitForRadarState(C::Offline, 5000));
    QVERIFY(!tuning()->parHandler()->isWaiting());
    QCOMPARE(frequencyLabel()->state(), int(L::Cleared));
    // Working again, the radar is read as the profile asks: the saved values are back.
    QVERIFY(waitForRadarState(C::Working));
    QTRY_COMPARE(frequencyLabel()->state(), int(L::ReceivedFromRadar));
    QTRY_COMPARE(sensitivityLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(spin("frequencyIdSpin")->value(), 13);
    QCOMPARE(spin("sensitivitySpin")->value(), 222);

    // Switched off from the menu, the next start is not read: the edit stays.
    QAction* autoGet = menuAction("&Automatically get data when radar starts working");
    QVERIFY(autoGet && autoGet->isChecked());
    autoGet->trigger();
    spin("frequencyIdSpin")->setValue(4);
    // Behind the reads of the start of work the restart would come too late to be seen.
    QTRY_COMPARE_WITH_TIMEOUT(m_fx->window->radarClient()->lastRadarCommand(), 0, 10000);
    QTRY_VERIFY(m_fx->window->findChild<QWidget*>("saveAndRestartWidget")->isEnabled());
    button("restartRadarButton")->click();
    QVERIFY(waitForRadarState(C::Offline, 5000));
    QVERIFY(waitForRadarState(C::Working));
    QVERIFY(!QTest::qWaitFor([this] { return spin("frequencyIdSpin")->value() != 4; }, 500));
    QCOMPARE(frequencyLabel()->state(), int(L::ValueChanged));
}

void tst_MainWindowPanels::silentRadarEndsInErrorAndClears()
{
    // Every command costs five unanswered tries of 900 ms, those of the start-up too.
    QVERIFY(openWindow({"--no-acks"}, false));
    QVERIFY(tuningClick("getTuningParamsButton", L::ErrorOccurred, 12000));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(tuning()->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(sensitivityLabel()->state(), int(L::Cleared), 7000);
    QVERIFY2(clock.elapsed() >= ParHandler::HideTimeoutMs - 150,
             qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(frequencyLabel()->state(), int(L::Cleared));
}

void tst_MainWindowPanels::protocolSwitchWhileACommandIsInFlight()
{
    QuestionAnswerer answerer(QMessageBox::Ok);
    QVERIFY(openWindow({}));
    QPointer<IOrvexClient> old = m_fx->window->radarClient();
    CmdStateLabel* label = stateLabel("selfDiagnosticsButton");

    button("selfDiagnosticsButton")->click();
    QVERIFY(!label->isHidden() && commands()->cmdHandler()->isWaiting());
    menuAction("&1. Serial, type P (SerP)")->trigger();
    QVERIFY(qobject_cast<OrvexSerialPakorProtocolClient*>(m_fx->window->radarClient()));
    QVERIFY(label->isHidden()); // dropped with the old client, not left in progress
    QVERIFY(!commands()->isEnabled());
    QTRY_VERIFY(old.isNull());

    // The server is told to switch; the new client gets the radar working again, and the
    // old request opens no box.
    QTRY_VERIFY_WITH_TIMEOUT(commands()->isEnabled(), 10000);
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));
    button("selfDiagnosticsButton")->click();
    QTRY_COMPARE(answerer.count, 1);
    QCOMPARE(answerer.title, QString("Radar self-diagnosis"));
    QTRY_COMPARE(label->text(), QString("command received"));
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 1; }, 300));
}

QTEST_MAIN(tst_MainWindowPanels)
#include "tst_mainwindowpanels.moc"
