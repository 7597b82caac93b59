#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "radartuningwidget.h"
#include "saveandrestartwidget.h"
#include "simulatorprocess.h"
#include "variantids.h"

#include <QElapsedTimer>
#include <QGroupBox>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>
#include <QVBoxLayout>

#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The tuning and save/restart panels wired to a client as the main window wires them,
// against the radar server simulator: what the operator sees when the radar answers,
// stays silent, is busy, or restarts.
class tst_PanelsSimulator : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void tuningWrittenReadsBackEqual();
    void silentRadarEndsInErrorAndClears();
    void busyRadarStillTakesTheCommand();
    void restartBringsBackTheSavedValues();

private:
    bool start(const QStringList& arguments);
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(name); }
    QSpinBox* spin(const char* name) const { return m_window->findChild<QSpinBox*>(name); }
    L* frequencyLabel() const { return m_window->findChild<L*>("frequencyIdResultLabel"); }
    L* sensitivityLabel() const { return m_window->findChild<L*>("sensitivityResultLabel"); }
    // Sets both values and writes them; true once both writes were acknowledged.
    bool write(int frequency, int sensitivity);

    std::unique_ptr<SimulatorProcess> m_sim;
    std::unique_ptr<IOrvexSerialConnectionClient> m_client;
    std::unique_ptr<QWidget> m_window;
    RadarTuningWidget* m_tuning = nullptr;
    SaveAndRestartWidget* m_saveRestart = nullptr;
};

void tst_PanelsSimulator::cleanup()
{
    m_window.reset();
    m_client.reset();
    m_sim.reset();
}

bool tst_PanelsSimulator::start(const QStringList& arguments)
{
    m_sim = std::make_unique<SimulatorProcess>(QStringList{"--seed", "5", "--quiet"} + arguments);
    if (!m_sim->start())
        return false;
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    auto* tuningBox = new QGroupBox(m_window.get());
    auto* saveBox = new QGroupBox(m_window.get());
    layout->addWidget(tuningBox);
    layout->addWidget(saveBox);
    m_tuning = new RadarTuningWidget(tuningBox);
    m_saveRestart = new SaveAndRestartWidget(saveBox);
    (new QVBoxLayout(tuningBox))->addWidget(m_tuning);
    (new QVBoxLayout(saveBox))->addWidget(m_saveRestart);
    m_window->show();

    // The connections of these two panels, as the main window makes them.
    m_client = VariantIds::makeClient(0);
    C* c = m_client.get();
    using T = RadarTuningWidget;
    using S = SaveAndRestartWidget;
    connect(c, &C::radarStateChanged, m_saveRestart, &S::showRadarState);
    connect(c, &C::radarStateChanged, m_tuning, &T::showRadarState);
    connect(c, &C::radarCommandStateChanged, m_saveRestart, &S::showCommandState);
    connect(c, &C::radarCommandStateChanged, m_tuning, &T::showCommandState);
    connect(c, &C::frequencyIndex, m_tuning, &T::showFrequencyIndex);
    connect(c, &C::radarSensitivity, m_tuning, &T::showRadarSensitivity);
    connect(m_saveRestart, &S::commandWithNoArgs, c, &C::sendAnyCmdWithNoArgs);
    connect(m_tuning, &T::setFrequencyIndex, c, &C::sendCmdSetFrequencyIndex);
    connect(m_tuning, &T::getFrequencyIndex, c, &C::sendCmdGetFrequencyIndex);
    connect(m_tuning, &T::setRadarSensitivity, c, &C::sendCmdSetRadarSensitivity);
    connect(m_tuning, &T::getRadarSensitivity, c, &C::sendCmdGetRadarSensitivity);

    c->connectToServer(m_sim->url(), 500);
    return QTest::qWaitFor([c] { return c->radarState() == C::Working; }, 8000)
           && m_tuning->isEnabled();
}

bool tst_PanelsSimulator::write(int frequency, int sensitivity)
{
    spin("frequencyIdSpin")->setValue(frequency);
    spin("sensitivitySpin")->setValue(sensitivity);
    button("setTuningParamsButton")->click();
    return QTest::qWaitFor([this] {
        return frequencyLabel()->state() == L::CommandReceived
               && sensitivityLabel()->state() == L::CommandReceived;
    });
}

void tst_PanelsSimulator::tuningWrittenReadsBackEqual()
{
    QVERIFY(start({}));
    // Every step each label shows, in order.
    QList<int> frequencySteps, sensitivitySteps;
    connect(m_tuning->parHandler(), &ParHandler::updated, this, [&] {
        for (auto [label, steps] : {qMakePair(frequencyLabel(), &frequencySteps),
                                    qMakePair(sensitivityLabel(), &sensitivitySteps)}) {
            if (steps->isEmpty() || steps->last() != label->state())
                steps->append(label->state());
        }
    });
    spin("frequencyIdSpin")->setValue(11);
    spin("sensitivitySpin")->setValue(321);
    frequencySteps.clear();
    sensitivitySteps.clear();
    button("setTuningParamsButton")->click();
    QVERIFY(!m_tuning->isEnabled()); // until the radar has answered
    QTRY_COMPARE(sensitivitySteps.last(), int(L::CommandReceived));
    const QList<int> written{L::Cleared, L::Queued, L::InProgress, L::CommandReceived};
    QCOMPARE(frequencySteps, written);
    QCOMPARE(sensitivitySteps, written);
    QVERIFY(m_tuning->isEnabled());

    spin("frequencyIdSpin")->setValue(0);
    spin("sensitivitySpin")->setValue(1);
    button("getTuningParamsButton")->click();
    QTRY_COMPARE(frequencyLabel()->text(), QString("received from radar"));
    QTRY_COMPARE(sensitivityLabel()->text(), QString("received from radar"));
    QCOMPARE(spin("frequencyIdSpin")->value(), 11);
    QCOMPARE(spin("sensitivitySpin")->value(), 321);
    QVERIFY(m_tuning->isEnabled());
}

void tst_PanelsSimulator::silentRadarEndsInErrorAndClears()
{
    QVERIFY(start({"--no-acks"}));
    button("getTuningParamsButton")->click();
    // Five unanswered tries of 900 ms each, one command after the other.
    QTRY_COMPARE_WITH_TIMEOUT(frequencyLabel()->text(), QString("error occurred"), 7000);
    QVERIFY(!m_tuning->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(sensitivityLabel()->text(), QString("error occurred"), 7000);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(m_tuning->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(sensitivityLabel()->state(), int(L::Cleared), 7000);
    QVERIFY2(clock.elapsed() >= ParHandler::HideTimeoutMs - 150,
             qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(frequencyLabel()->state(), int(L::Cleared));
}

void tst_PanelsSimulator::busyRadarStillTakesTheCommand()
{
    QVERIFY(start({"--busy-acks", "3"}));
    QSignalSpy steps(m_client.get(), &C::radarCommandStateChanged);
    QVERIFY(write(5, 60));
    const QVariantList busy{int(C::CmdSetFrequencyIndex), int(C::InProgress), 255};
    QCOMPARE(std::count(steps.begin(), steps.end(), busy), 3);
    button("getTuningParamsButton")->click();
    QTRY_COMPARE(sensitivityLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(frequencyLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(spin("frequencyIdSpin")->value(), 5);
    QCOMPARE(spin("sensitivitySpin")->value(), 60);
}

void tst_PanelsSimulator::restartBringsBackTheSavedValues()
{
    QVERIFY(start({}));
    m_tuning->setAutoGetData(true);
    auto* saveLabel = m_saveRestart->findChildren<CmdStateLabel*>().value(0);
    auto* restartLabel = m_saveRestart->findChildren<CmdStateLabel*>().value(1);
    QVERIFY(write(13, 222));
    button("saveToFlashButton")->click();
    QTRY_COMPARE(saveLabel->text(), QString("command received"));
    QVERIFY(write(3, 50)); // not saved

    // A read is queued behind the restart and meets the silence that follows it.
    button("restartRadarButton")->click();
    button("getTuningParamsButton")->click();
    QTRY_COMPARE(restartLabel->text(), QString("command received"));
    QTRY_COMPARE_WITH_TIMEOUT(m_client->radarState(), int(C::Offline), 5000);
    QVERIFY(!m_tuning->parHandler()->isWaiting());
    QCOMPARE(frequencyLabel()->state(), int(L::Cleared));
    QVERIFY(!m_tuning->isEnabled() && !m_saveRestart->isEnabled());

    QTRY_COMPARE_WITH_TIMEOUT(m_client->radarState(), int(C::Working), 8000);
    QTRY_COMPARE(sensitivityLabel()->state(), int(L::ReceivedFromRadar));
    QTRY_COMPARE(frequencyLabel()->state(), int(L::ReceivedFromRadar));
    QCOMPARE(spin("frequencyIdSpin")->value(), 13);
    QCOMPARE(spin("sensitivitySpin")->value(), 222);
    QVERIFY(m_tuning->isEnabled() && m_saveRestart->isEnabled());
}

QTEST_MAIN(tst_PanelsSimulator)
#include "tst_panelssimulator.moc"
