#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "radartuningwidget.h"
#include "saveandrestartwidget.h"
#include "selfdiagnosticsmessagebox.h"
#include "sendcommandswidget.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>
#include <QVBoxLayout>

#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The labels that follow a command through the radar's queue: what each step shows,
// which timer it starts, and when the outcome is cleared. The three command panels
// built on them, each in a titled box as in the main window: the requests they emit,
// when they let the operator act, and what they show of the radar's answers.
class tst_CommandPanels : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void commandSteps_data();
    void commandSteps();
    void commandOutcomeStaysFiveSeconds();
    void parameterSteps_data();
    void parameterSteps();
    void requests();
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

void tst_CommandPanels::commandSteps_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("hideTimer");

    // Each row reports the step after the label showed "error occurred" in red.
    QTest::newRow("queued does not keep outcomes up")
        << int(C::Queued) << "queued" << QColor(0, 191, 191) << true << false;
    QTest::newRow("in progress") << int(C::InProgress) << "in progress" << QColor(191, 0, 191)
                                 << true << true;
    QTest::newRow("received") << int(C::Received) << "command received" << QColor(0, 191, 0) << true
                              << true;
    QTest::newRow("error") << int(C::Error) << "error occurred" << QColor(191, 0, 0) << true
                           << true;
    QTest::newRow("dropped hides")
        << int(C::None) << "error occurred" << QColor(191, 0, 0) << false << false;
    QTest::newRow("unknown state only shows")
        << 9 << "error occurred" << QColor(191, 0, 0) << true << true;
}

void tst_CommandPanels::commandSteps()
{
    QFETCH(int, state);
    QWidget panel;
    CmdHandler handler;
    QWidget* place = new QWidget(&panel);
    CmdStateLabel* label = handler.addStateLabel(place);
    QCOMPARE(label->parentWidget(), place);
    QVERIFY(label->isHidden());
    // Hardware and firmware information share one label.
    handler.assignStateLabel(C::CmdGetHardwareInfo, label);
    handler.assignStateLabel(C::CmdGetFirmwareInfo, label);
    QVERIFY(handler.setState(C::CmdGetFirmwareInfo, C::Error, false));
    QSignalSpy updated(&handler, &CmdHandler::updated);

    // A command no label is assigned to changes nothing.
    handler.showCommandState(C::CmdSelfDiagnostics, C::Received, 0);
    QCOMPARE(updated.count(), 0);
    QVERIFY(!handler.isHideTimerActive());

    handler.showCommandState(C::CmdGetHardwareInfo, state, 7);
    QCOMPARE(updated.count(), 1);
    QTEST(label->text(), "text");
    QTEST(label->palette().color(QPalette::WindowText), "color");
    QTEST(!label->isHidden(), "visible");
    QTEST(handler.isHideTimerActive(), "hideTimer");
    QCOMPARE(handler.isWaiting(), state == C::Queued || state == C::InProgress);
}

void tst_CommandPanels::commandOutcomeStaysFiveSeconds()
{
    QWidget panel; // owns the label
    CmdHandler handler;
    CmdStateLabel* label = handler.addStateLabel(&panel);
    handler.assignStateLabel(C::CmdRestart, label);
    QSignalSpy updated(&handler, &CmdHandler::updated);
    auto* hideTimer = handler.findChild<QTimer*>();
    QVERIFY(hideTimer);
    handler.showCommandState(C::CmdRestart, C::InProgress, 0);
    // A further report a second later starts the five seconds again.
    QTRY_VERIFY(hideTimer->remainingTime() <= CmdHandler::HideTimeoutMs - 1000);
    QElapsedTimer clock;
    handler.showCommandState(C::CmdRestart, C::Received, 0);
    clock.start();
    QTRY_VERIFY_WITH_TIMEOUT(label->isHidden(), 7000);
    QVERIFY2(clock.elapsed() >= CmdHandler::HideTimeoutMs - 50,
             qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(label->state(), int(C::None));
    QCOMPARE(updated.count(), 3); // two reports and the clearing

    // A late acknowledgement shows again and is cleared after its own five seconds.
    handler.showCommandState(C::CmdRestart, C::Received, 0);
    QVERIFY(!label->isHidden());
    QVERIFY(handler.isHideTimerActive());
}

void tst_CommandPanels::parameterSteps_data()
{
    QTest::addColumn<bool>("read");
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("labelState");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("hideTimer");
    QTest::addColumn<bool>("dataTimer");

    const QColor cyan(0, 191, 191), magenta(191, 0, 191), green(0, 191, 0), red(191, 0, 0);
    QTest::newRow("write queued") << false << int(C::Queued) << int(L::Queued) << "queued" << cyan
                                  << false << false;
    QTest::newRow("read in progress") << true << int(C::InProgress) << int(L::InProgress)
                                      << "in progress" << magenta << true << false;
    QTest::newRow("write acknowledged") << false << int(C::Received) << int(L::CommandReceived)
                                        << "command received" << green << true << false;
    QTest::newRow("read acknowledged waits for its value")
        << true << int(C::Received) << int(L::WaitingForData) << "waiting for data" << magenta
        << true << true;
    QTest::newRow("read failed") << true << int(C::Error) << int(L::ErrorOccurred)
                                 << "error occurred" << red << true << false;
    QTest::newRow("write dropped clears")
        << false << int(C::None) << int(L::Cleared) << "" << QColor() << false << false;
    QTest::newRow("unknown state clears")
        << true << 8 << int(L::Cleared) << "" << QColor() << false << false;
}

void tst_CommandPanels::parameterSteps()
{
    QFETCH(bool, read);
    QFETCH(int, state);
    QFETCH(QColor, color);
    ParHandler handler;
    L label;
    L other;
    handler.assignSetCommand(C::CmdSetFrequencyIndex, 2);
    handler.assignGetCommand(C::CmdGetFrequencyIndex, 2);
    handler.assignStateLabel(2, &label);
    handler.assignStateLabel(1, &other);
    handler.setState(1, L::ValueChanged, false);
    QCOMPARE(other.text(), QString("value changed"));
    QCOMPARE(other.palette().color(QPalette::WindowText), QColor(0, 0, 127));
    QSignalSpy updated(&handler, &ParHandler::updated);

    handler.showCommandState(C::CmdGetRadarSensitivity, C::Received, 0); // not assigned
    QCOMPARE(updated.count(), 0);
    handler.showCommandState(read ? C::CmdGetFrequencyIndex : C::CmdSetFrequencyIndex, state, 0);
    QCOMPARE(updated.count(), 1);
    QTEST(label.state(), "labelState");
    QTEST(label.text(), "text");
    if (color.isValid())
        QCOMPARE(label.palette().color(QPalette::WindowText), color);
    QTEST(handler.isHideTimerActive(), "hideTimer");
    QTEST(handler.isDataTimerActive(), "dataTimer");
    QCOMPARE(other.state(), int(L::ValueChanged));
}

void tst_CommandPanels::requests()
{
    for (auto* panel : std::initializer_list<QWidget*>{m_commands, m_tuning, m_saveRestart})
        QMetaObject::invokeMethod(panel, "showRadarState", Q_ARG(int, C::Working));
    m_requests.clear();
    QPushButton* imitator = button("imitatorModeButton");
    const QString verification("Go to 'verification' mode");
    // Each step: outcomes of earlier commands on show, which the request must clear; a
    // button, or a button with a menu and its chosen item (-1: closed without a choice).
    const auto press = [this](const QStringList& expected, const char* name, QMenu* menu = nullptr,
                              int item = -1) {
        m_commands->cmdHandler()->setState(C::CmdSelfDiagnostics, C::Error, true);
        m_saveRestart->cmdHandler()->setState(C::CmdRestart, C::Received, true);
        m_tuning->parHandler()->setState(RadarTuningWidget::SensitivityParameter, L::ErrorOccurred,
                                         true);
        button(name)->click();
        if (menu) {
            QTRY_VERIFY(menu->isVisible());
            QVERIFY(m_requests.isEmpty()); // nothing is sent before the choice
            QVERIFY(!button(name)->isChecked());
            // While the menu is open the button asks for a choice.
            const bool info = menu == m_commands->deviceInfoMenu();
            QCOMPARE(button(name)->text(),
                     QString(info ? "Choose info type" : "Choose imitator type"));
            // As the toolkit does it: the menu hides, then the chosen action fires.
            menu->hide();
            if (item >= 0)
                menu->actions().at(item)->trigger();
        }
        QVERIFY(!m_labelShownAtRequest);
        QCOMPARE(std::exchange(m_requests, {}), expected);
    };
    QMenu* info = m_commands->deviceInfoMenu();
    press({"command 1"}, "getDeviceInfoButton", info, 0); // hardware
    press({"command 2"}, "getDeviceInfoButton", info, 1); // firmware
    press({"command 3"}, "selfDiagnosticsButton");
    press({}, "imitatorModeButton", m_commands->imitatorTypeMenu());
    QVERIFY(!imitator->isChecked());
    press({"switch 4 2"}, "imitatorModeButton", m_commands->imitatorTypeMenu(), 1);
    QVERIFY(imitator->isChecked());
    QCOMPARE(imitator->text(), QString("Go to 'regular' mode"));
    m_commands->showImitatorMode(1);
    press({"switch 4 0"}, "imitatorModeButton");
    QVERIFY(!imitator->isChecked());
    QCOMPARE(imitator->text(), verification);
    press({"switch 6 1"}, "fakeTargetsModeButton"); // demo objects on
    m_commands->showFakeTargetsMode(true);
    press({"switch 6 0"}, "fakeTargetsModeButton");
    // Tuning, frequency first: a read, and a write of the spin boxes' values.
    press({"get frequency", "get sensitivity"}, "getTuningParamsButton");
    spin("frequencyIdSpin")->setValue(16);
    spin("sensitivitySpin")->setValue(1);
    press({"set frequency 16", "set sensitivity 1"}, "setTuningParamsButton");
    press({"command 8"}, "saveToFlashButton");
    press({"command 9"}, "restartRadarButton");
    QCOMPARE(button("getDeviceInfoButton")->text(), QString("Get device info"));
}

void tst_CommandPanels::enabling()
{
    // Nothing works before the radar does; each panel, with its titled box, waits for
    // its own commands only.
    const auto enabled
        = [](QWidget* panel) { return panel->isEnabled() && panel->parentWidget()->isEnabled(); };
    QVERIFY(!enabled(m_commands) && !enabled(m_tuning) && !enabled(m_saveRestart));
    m_commands->showRadarState(C::Busy);
    QVERIFY(!enabled(m_commands));
    m_commands->showRadarState(C::Working);
    QVERIFY(enabled(m_commands));
    m_commands->showCommandState(C::CmdRestart, C::InProgress, 0); // another panel's
    QVERIFY(enabled(m_commands));
    m_commands->showCommandState(C::CmdSelfDiagnostics, C::Queued, 0);
    QVERIFY(!enabled(m_commands));

    m_tuning->showRadarState(C::BadData);
    QVERIFY(!enabled(m_tuning));
    m_tuning->showRadarState(C::Working);
    QVERIFY(enabled(m_tuning));
    m_tuning->showCommandState(C::CmdGetFrequencyIndex, C::Received, 0); // value awaited
    QVERIFY(!enabled(m_tuning));

    // A busy radar may only be restarted; a silent one not even that.
    QPushButton* save = button("saveToFlashButton");
    m_saveRestart->showRadarState(C::Busy);
    QVERIFY(enabled(m_saveRestart) && !save->isEnabledTo(m_saveRestart));
    m_saveRestart->showRadarState(C::Offline);
    QVERIFY(!enabled(m_saveRestart));
    m_saveRestart->showRadarState(C::Working);
    QVERIFY(enabled(m_saveRestart) && save->isEnabledTo(m_saveRestart));
    m_saveRestart->showCommandState(C::CmdRestart, C::InProgress, 0);
    QVERIFY(!enabled(m_saveRestart));
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
