#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "mainwindow.h"
#include "orvexserialpakorprotocolclient.h"
#include "parstatelabel.h"
#include "questionanswerer.h"
#include "radartuningwidget.h"
#include "sendcommandswidget.h"
#include "simulatorprocess.h"
#include "workprofilehandler.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using C = IOrvexClient;

// The command panels in their boxes of the main window, wired to the client, against
// the radar server simulator: requested results open their message boxes, others do
// not, and a protocol switch re-wires everything without leaving a label hanging.
class tst_MainWindowPanels : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requestedResultsOpenTheirBoxes_data();
    void requestedResultsOpenTheirBoxes();
    void tuningFollowsTheRadar();
    void protocolSwitchWhileACommandIsInFlight();

private:
    // The window on the default profile, pointed at the simulator, with a working radar.
    bool openWindow();
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(name); }
    // The label beside a button of the service commands.
    CmdStateLabel* stateLabel(QString buttonName) const
    {
        const QString place = buttonName.replace("Button", "StateWidget");
        return m_window->findChild<QWidget*>(place)->findChild<CmdStateLabel*>();
    }
    SendCommandsWidget* commands() const { return m_window->findChild<SendCommandsWidget*>(); }
    QAction* protocolAction(int variant) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<SimulatorProcess> m_sim;
    std::unique_ptr<MainWindow> m_window;
};

void tst_MainWindowPanels::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_previousDir = QDir::currentPath();
    QDir::setCurrent(m_dir->path());
    // Units 2 and 4 sound, the rest and the radar as a whole not.
    m_sim = std::make_unique<SimulatorProcess>(QStringList{"--quiet", "--selftest", "0x0014"});
    QVERIFY(m_sim->start());
}

void tst_MainWindowPanels::cleanup()
{
    m_window.reset();
    m_sim.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

bool tst_MainWindowPanels::openWindow()
{
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    QJsonObject connection = profile.value("connection").toObject();
    connection.insert("radar_server_url", m_sim->url().toString());
    profile.insert("connection", connection);
    QFile file(WorkProfileHandler::SettingsFilePath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
    file.close();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    // Working, and what the window asks of a radar by itself answered.
    return QTest::qWaitForWindowExposed(m_window.get())
           && QTest::qWaitFor([this] { return commands()->isEnabled(); }, 10000);
}

QAction* tst_MainWindowPanels::protocolAction(int variant) const
{
    for (QAction* top : m_window->menuBar()->actions()) {
        if (top->text() != "&Protocol")
            continue;
        for (QAction* action : top->menu()->actions()) {
            if (action->isCheckable() && action->data() == variant)
                return action;
        }
    }
    return nullptr;
}

void tst_MainWindowPanels::requestedResultsOpenTheirBoxes_data()
{
    QTest::addColumn<int>("menuItem"); // of the device information menu, -1 for none
    QTest::addColumn<QString>("buttonName");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");

    QTest::newRow("hardware info") << 0 << "getDeviceInfoButton"
                                   << "Hardware info"
                                   << "ORVEX RS-24 SIM rev.C";
    QTest::newRow("firmware info") << 1 << "getDeviceInfoButton"
                                   << "Firmware info"
                                   << "FW 2.14.3 build 512";
    QTest::newRow("self-diagnosis") << -1 << "selfDiagnosticsButton"
                                    << "Radar self-diagnosis"
                                    << "Self-diagnosis completed.\nRadar is functioning wrong.\n\n"
                                       "AMP1\tbad\nAMP2\tok\nPADC\tbad\nTRSC\tok\nPLLC\tbad";
}

void tst_MainWindowPanels::requestedResultsOpenTheirBoxes()
{
    QFETCH(int, menuItem);
    QFETCH(QString, buttonName);
    QuestionAnswerer answerer(QMessageBox::Ok);
    QVERIFY(openWindow());
    // The hardware information the status bar asked for by itself opened no box.
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));

    QPushButton* b = button(qPrintable(buttonName));
    b->click();
    if (menuItem >= 0) {
        QMenu* menu = commands()->deviceInfoMenu();
        QTRY_VERIFY(menu->isVisible());
        menu->hide();
        menu->actions().at(menuItem)->trigger();
    }
    QTRY_COMPARE(answerer.count, 1);
    QTEST(answerer.title, "title");
    QTEST(answerer.text, "text");
    QTRY_COMPARE(stateLabel(buttonName)->text(), QString("command received"));
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 1; }, 300));
}

void tst_MainWindowPanels::tuningFollowsTheRadar()
{
    QVERIFY(openWindow());
    // Data read when the radar started working, as the profile asks.
    auto* frequency = m_window->findChild<QSpinBox*>("frequencyIdSpin");
    auto* frequencyLabel = m_window->findChild<ParStateLabel*>("frequencyIdResultLabel");
    QTRY_COMPARE(frequencyLabel->state(), int(ParStateLabel::ReceivedFromRadar));
    QCOMPARE(frequency->value(), 2);

    auto* tuning = m_window->findChild<RadarTuningWidget*>();
    QTRY_VERIFY(tuning->isEnabled()); // the sensitivity has come too
    frequency->setValue(14);
    button("setTuningParamsButton")->click();
    QTRY_COMPARE(frequencyLabel->text(), QString("command received"));
    frequency->setValue(0);
    QTRY_VERIFY(tuning->isEnabled());
    button("getTuningParamsButton")->click();
    QTRY_COMPARE(frequencyLabel->text(), QString("received from radar"));
    QCOMPARE(frequency->value(), 14);

    // Switched off from the menu, a radar back from a restart is not read: the edit
    // stays the operator's.
    QAction* autoGet = nullptr;
    for (QAction* top : m_window->menuBar()->actions()) {
        for (QAction* action : top->menu()->actions())
            autoGet = action->text() == "&Automatically get data when radar starts working"
                          ? action
                          : autoGet;
    }
    QVERIFY(autoGet && autoGet->isChecked());
    autoGet->trigger();
    frequency->setValue(3);
    button("restartRadarButton")->click();
    QTRY_COMPARE_WITH_TIMEOUT(m_window->radarClient()->radarState(), int(C::Offline), 5000);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->radarClient()->radarState(), int(C::Working), 8000);
    QVERIFY(!QTest::qWaitFor([frequency] { return frequency->value() != 3; }, 500));
    QCOMPARE(frequencyLabel->state(), int(ParStateLabel::ValueChanged));
}

void tst_MainWindowPanels::protocolSwitchWhileACommandIsInFlight()
{
    QuestionAnswerer answerer(QMessageBox::Ok);
    QVERIFY(openWindow());
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));
    QPointer<IOrvexClient> old = m_window->radarClient();
    CmdStateLabel* label = stateLabel("selfDiagnosticsButton");

    button("selfDiagnosticsButton")->click();
    QVERIFY(!label->isHidden() && commands()->cmdHandler()->isWaiting());
    protocolAction(1)->trigger();
    QVERIFY(qobject_cast<OrvexSerialPakorProtocolClient*>(m_window->radarClient()));
    QVERIFY(label->isHidden()); // dropped with the old client, not left in progress
    QVERIFY(!commands()->isEnabled());
    QTRY_VERIFY(old.isNull());

    // The server is told to switch; the new client gets the radar working again.
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
