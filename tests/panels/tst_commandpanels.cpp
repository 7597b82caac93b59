#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "radartuningwidget.h"
#include "saveandrestartwidget.h"
#include "selfdiagnosticsmessagebox.h"
#include "sendcommandswidget.h"

#include <QGroupBox>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>
#include <QVBoxLayout>

#include <functional>
#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The three command panels on their own, each in a titled box as in the main window:
// the requests they emit, when they let the operator act, and what they show of
// the radar's answers.
class tst_CommandPanels : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void(tst_CommandPanels*)>;

private slots:
    void init();
    void cleanup();

    void requests_data();
    void requests();
    void enabling_data();
    void enabling();
    void tuningShowsTheRadarsValues();
    void workingRadarIsAskedByItself();
    void selfDiagnosisReport_data();
    void selfDiagnosisReport();

private:
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(name); }
    QSpinBox* spin(const char* name) const { return m_window->findChild<QSpinBox*>(name); }
    void record(const QString& request, QWidget* panel);

    std::unique_ptr<QWidget> m_window;
    SendCommandsWidget* m_commands = nullptr;
    RadarTuningWidget* m_tuning = nullptr;
    SaveAndRestartWidget* m_saveRestart = nullptr;
    QStringList m_requests;
    bool m_labelShownAtRequest = false;
};
Q_DECLARE_METATYPE(tst_CommandPanels::Action)

template<typename Panel> static Panel* inBox(QWidget* window)
{
    auto* box = new QGroupBox(window);
    window->layout()->addWidget(box);
    auto* panel = new Panel(box);
    (new QVBoxLayout(box))->addWidget(panel);
    return panel;
}

void tst_CommandPanels::init()
{
    m_window = std::make_unique<QWidget>();
    new QVBoxLayout(m_window.get());
    m_commands = inBox<SendCommandsWidget>(m_window.get());
    m_tuning = inBox<RadarTuningWidget>(m_window.get());
    m_saveRestart = inBox<SaveAndRestartWidget>(m_window.get());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));

    auto log = [this](const QString& name) { return [this, name] { record(name, m_tuning); }; };
    auto logInt = [this](const QString& name, QWidget* panel) {
        return [this, name, panel](int v) { record(name.arg(v), panel); };
    };
    connect(m_commands, &SendCommandsWidget::commandWithNoArgs, this,
            logInt("command %1", m_commands));
    connect(m_commands, &SendCommandsWidget::switchCommand, this,
            [this](int command, quint8 value) {
                record(QString("switch %1 %2").arg(command).arg(value), m_commands);
            });
    connect(m_saveRestart, &SaveAndRestartWidget::commandWithNoArgs, this,
            logInt("command %1", m_saveRestart));
    connect(m_tuning, &RadarTuningWidget::setFrequencyIndex, this,
            logInt("set frequency %1", m_tuning));
    connect(m_tuning, &RadarTuningWidget::setRadarSensitivity, this,
            logInt("set sensitivity %1", m_tuning));
    connect(m_tuning, &RadarTuningWidget::getFrequencyIndex, this, log("get frequency"));
    connect(m_tuning, &RadarTuningWidget::getRadarSensitivity, this, log("get sensitivity"));
}

void tst_CommandPanels::cleanup()
{
    m_window.reset();
    m_requests.clear();
    m_labelShownAtRequest = false;
}

void tst_CommandPanels::record(const QString& request, QWidget* panel)
{
    // Every request starts from cleared labels of its panel.
    for (CmdStateLabel* label : panel->findChildren<CmdStateLabel*>())
        m_labelShownAtRequest = m_labelShownAtRequest || !label->isHidden();
    for (ParStateLabel* label : panel->findChildren<ParStateLabel*>())
        m_labelShownAtRequest = m_labelShownAtRequest || label->state() != L::Cleared;
    m_requests << request;
}

void tst_CommandPanels::requests_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("imitatorChecked");
    QTest::addColumn<QString>("imitatorCaption");

    auto choose = [](const char* buttonName, QMenu* (SendCommandsWidget::*menu)() const, int item,
                     const QString& caption) {
        return [=](tst_CommandPanels* t) {
            QPushButton* b = t->button(buttonName);
            b->click();
            QMenu* m = (t->m_commands->*menu)();
            QTRY_VERIFY(m->isVisible());
            QCOMPARE(b->text(), caption); // nothing is sent before the choice
            QVERIFY(!b->isChecked());
            QVERIFY(t->m_requests.isEmpty());
            // As the toolkit does it: the menu hides, then the chosen action fires.
            m->hide();
            if (item >= 0)
                m->actions().at(item)->trigger();
        };
    };
    const QString verification("Go to 'verification' mode");
    const QString info("Choose info type"), type("Choose imitator type");
    QTest::newRow("hardware info from the menu")
        << Action(choose("getDeviceInfoButton", &SendCommandsWidget::deviceInfoMenu, 0, info))
        << QStringList{"command 1"} << false << verification;
    QTest::newRow("firmware info from the menu")
        << Action(choose("getDeviceInfoButton", &SendCommandsWidget::deviceInfoMenu, 1, info))
        << QStringList{"command 2"} << false << verification;
    QTest::newRow("self-diagnosis")
        << Action([](tst_CommandPanels* t) { t->button("selfDiagnosticsButton")->click(); })
        << QStringList{"command 3"} << false << verification;
    QTest::newRow("imitator of type 2")
        << Action(choose("imitatorModeButton", &SendCommandsWidget::imitatorTypeMenu, 1, type))
        << QStringList{"switch 4 2"} << true << "Go to 'regular' mode";
    QTest::newRow("imitator menu closed without a choice")
        << Action(choose("imitatorModeButton", &SendCommandsWidget::imitatorTypeMenu, -1, type))
        << QStringList{} << false << verification;
    QTest::newRow("imitator switched off") << Action([](tst_CommandPanels* t) {
        t->m_commands->showImitatorMode(1);
        t->button("imitatorModeButton")->click();
    }) << QStringList{"switch 4 0"} << false
                                           << verification;
    QTest::newRow("demo objects on")
        << Action([](tst_CommandPanels* t) { t->button("fakeTargetsModeButton")->click(); })
        << QStringList{"switch 6 1"} << false << verification;
    QTest::newRow("demo objects off") << Action([](tst_CommandPanels* t) {
        t->m_commands->showFakeTargetsMode(true);
        t->button("fakeTargetsModeButton")->click();
    }) << QStringList{"switch 6 0"} << false
                                      << verification;
    QTest::newRow("tuning read: frequency first")
        << Action([](tst_CommandPanels* t) { t->button("getTuningParamsButton")->click(); })
        << QStringList{"get frequency", "get sensitivity"} << false << verification;
    QTest::newRow("tuning write: the spin boxes' values, frequency first")
        << Action([](tst_CommandPanels* t) {
               t->spin("frequencyIdSpin")->setValue(16);
               t->spin("sensitivitySpin")->setValue(1);
               t->button("setTuningParamsButton")->click();
           })
        << QStringList{"set frequency 16", "set sensitivity 1"} << false << verification;
    QTest::newRow("save to flash")
        << Action([](tst_CommandPanels* t) { t->button("saveToFlashButton")->click(); })
        << QStringList{"command 8"} << false << verification;
    QTest::newRow("restart") << Action(
        [](tst_CommandPanels* t) { t->button("restartRadarButton")->click(); })
                             << QStringList{"command 9"} << false << verification;
}

void tst_CommandPanels::requests()
{
    QFETCH(Action, action);
    for (auto* panel : std::initializer_list<QWidget*>{m_commands, m_tuning, m_saveRestart})
        QMetaObject::invokeMethod(panel, "showRadarState", Q_ARG(int, C::Working));
    // Outcomes of earlier commands are on show.
    m_commands->cmdHandler()->setState(C::CmdSelfDiagnostics, C::Error, true);
    m_saveRestart->cmdHandler()->setState(C::CmdRestart, C::Received, true);
    m_tuning->parHandler()->setState(RadarTuningWidget::SensitivityParameter, L::ErrorOccurred,
                                     true);
    m_requests.clear();
    m_labelShownAtRequest = false;

    action(this);
    QTEST(m_requests, "expected");
    QVERIFY(!m_labelShownAtRequest);
    QTEST(button("imitatorModeButton")->isChecked(), "imitatorChecked");
    QTEST(button("imitatorModeButton")->text(), "imitatorCaption");
    QCOMPARE(button("getDeviceInfoButton")->text(), QString("Get device info"));
}

void tst_CommandPanels::enabling_data()
{
    QTest::addColumn<int>("panel"); // 0 commands, 1 tuning, 2 save and restart
    QTest::addColumn<int>("radarState");
    QTest::addColumn<int>("command"); // reported after the radar state, 0 for none
    QTest::addColumn<int>("commandState");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("saveEnabled");

    QTest::newRow("commands: working radar") << 0 << 2 << 0 << 0 << true << true;
    QTest::newRow("commands: busy radar") << 0 << 1 << 0 << 0 << false << true;
    QTest::newRow("commands: a command queued")
        << 0 << 2 << int(C::CmdSelfDiagnostics) << int(C::Queued) << false << true;
    QTest::newRow("commands: another panel's command")
        << 0 << 2 << int(C::CmdRestart) << int(C::InProgress) << true << true;
    QTest::newRow("tuning: working radar") << 1 << 2 << 0 << 0 << true << true;
    QTest::newRow("tuning: wrong data") << 1 << -1 << 0 << 0 << false << true;
    QTest::newRow("tuning: read acknowledged, value awaited")
        << 1 << 2 << int(C::CmdGetFrequencyIndex) << int(C::Received) << false << true;
    QTest::newRow("save/restart: busy radar may only be restarted")
        << 2 << 1 << 0 << 0 << true << false;
    QTest::newRow("save/restart: silent radar") << 2 << 0 << 0 << 0 << false << false;
    QTest::newRow("save/restart: restart in progress")
        << 2 << 2 << int(C::CmdRestart) << int(C::InProgress) << false << true;
}

void tst_CommandPanels::enabling()
{
    QFETCH(int, panel);
    QFETCH(int, radarState);
    QFETCH(int, command);
    QFETCH(int, commandState);
    QWidget* panels[] = {m_commands, m_tuning, m_saveRestart};
    QWidget* p = panels[panel];
    QVERIFY(!p->isEnabled()); // nothing works before the radar does
    QMetaObject::invokeMethod(p, "showRadarState", Q_ARG(int, radarState));
    if (command)
        QMetaObject::invokeMethod(p, "showCommandState", Q_ARG(int, command),
                                  Q_ARG(int, commandState), Q_ARG(int, 0));
    QTEST(p->isEnabled(), "enabled");
    QTEST(p->parentWidget()->isEnabled(), "enabled"); // the whole titled box
    if (panel == 2)
        QTEST(button("saveToFlashButton")->isEnabledTo(p), "saveEnabled");
}

void tst_CommandPanels::tuningShowsTheRadarsValues()
{
    m_tuning->showRadarState(C::Working);
    auto* frequencyLabel = m_window->findChild<L*>("frequencyIdResultLabel");
    auto* sensitivityLabel = m_window->findChild<L*>("sensitivityResultLabel");
    spin("sensitivitySpin")->setValue(42);
    QCOMPARE(sensitivityLabel->text(), QString("value changed"));

    // Read, acknowledged, and the value arrives only after the data time-out.
    m_tuning->showCommandState(C::CmdGetFrequencyIndex, C::Received, 0);
    QCOMPARE(frequencyLabel->text(), QString("waiting for data"));
    QTRY_COMPARE_WITH_TIMEOUT(frequencyLabel->state(), int(L::ErrorOccurred), 3000);
    QVERIFY(m_tuning->isEnabled());
    m_tuning->showFrequencyIndex(12);
    QCOMPARE(spin("frequencyIdSpin")->value(), 12);
    QCOMPARE(frequencyLabel->text(), QString("received from radar"));
    QCOMPARE(sensitivityLabel->state(), int(L::ValueChanged)); // the edit is still unsent

    // A value nobody asked for, outside the radar's range, still shows, clamped.
    m_tuning->showRadarSensitivity(9000);
    QCOMPARE(spin("sensitivitySpin")->value(), 500);
    QCOMPARE(sensitivityLabel->state(), int(L::ReceivedFromRadar));
    QVERIFY(m_tuning->parHandler()->isHideTimerActive());
    QVERIFY(!m_tuning->parHandler()->isDataTimerActive());
}

void tst_CommandPanels::workingRadarIsAskedByItself()
{
    m_tuning->setAutoGetData(true);
    m_commands->showRadarState(C::Busy);
    m_tuning->showRadarState(C::Busy);
    QVERIFY(m_requests.isEmpty());
    m_commands->showRadarState(C::Working);
    m_tuning->showRadarState(C::Working);
    m_tuning->showRadarState(C::Working); // no second read while it stays working
    QCOMPARE(m_requests,
             (QStringList{"command 5", "command 7", "get frequency", "get sensitivity"}));

    // A switch the radar took is read back; one it refused puts the button back.
    m_requests.clear();
    m_commands->showCommandState(C::CmdSetFakeTargetsMode, C::Received, 0);
    QCOMPARE(m_requests, QStringList{"command 7"});
    button("imitatorModeButton")->setChecked(true);
    m_commands->showCommandState(C::CmdSetImitatorMode, C::Error, 7);
    QVERIFY(!button("imitatorModeButton")->isChecked());
}

void tst_CommandPanels::selfDiagnosisReport_data()
{
    QTest::addColumn<int>("word");
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("text");

    const QString head("Self-diagnosis completed.\nRadar is functioning ");
    QTest::newRow("0x003F all well")
        << 0x003F << int(QMessageBox::Information) << head + "normally.\n";
    QTest::newRow("0x003E every unit ok, radar wrong")
        << 0x003E << int(QMessageBox::Warning)
        << head + "wrong.\n\nAMP1\tok\nAMP2\tok\nPADC\tok\nTRSC\tok\nPLLC\tok";
    QTest::newRow("0xFFC0 every unit bad, higher bits not shown")
        << 0xFFC0 << int(QMessageBox::Warning)
        << head + "wrong.\n\nAMP1\tbad\nAMP2\tbad\nPADC\tbad\nTRSC\tbad\nPLLC\tbad";
}

void tst_CommandPanels::selfDiagnosisReport()
{
    QFETCH(int, word);
    SelfDiagnosticsMessageBox box(quint16(word), m_window.get());
    QCOMPARE(box.windowTitle(), QString("Radar self-diagnosis"));
    QTEST(int(box.icon()), "icon");
    QTEST(box.text(), "text");
    QCOMPARE(box.standardButtons(), QMessageBox::Ok);
}

QTEST_MAIN(tst_CommandPanels)
#include "tst_commandpanels.moc"
