#include "clientharness.h"
#include "testrecords.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using C = IOrvexClient;

// The radar takes one command at a time and answers with an acknowledgement that
// names no command; the queue keeps one command in flight, re-sends it on errors and
// time-outs, and reports every step.
class tst_CommandQueue : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void oneInFlightAndTheGapBetween();
    void acknowledgements_data();
    void acknowledgements();
    void notConnectedGivesUpAfterFiveTries();
    void positionCommandsReportTheirValues();
    void offlineDropsTheQueue();

private:
    using Step = QVariantList; // command, state, error
    static Step step(int command, int state, int error = 0) { return {command, state, error}; }
    QList<Step> takeSteps()
    {
        const QList<Step> steps = *m_steps;
        m_steps->clear();
        return steps;
    }

    std::unique_ptr<ClientHarness> m_h;
    std::unique_ptr<QSignalSpy> m_steps;
};

void tst_CommandQueue::init()
{
    m_h = std::make_unique<ClientHarness>(0);
    m_steps = std::make_unique<QSignalSpy>(m_h->client(), &C::radarCommandStateChanged);
    QVERIFY(m_steps->isValid());
}

void tst_CommandQueue::cleanup()
{
    m_steps.reset();
    m_h.reset();
}

void tst_CommandQueue::oneInFlightAndTheGapBetween()
{
    QVERIFY(m_h->connect());
    IOrvexClient* c = m_h->client();
    QVERIFY(m_h->answer(0) && m_h->answer(7)); // nothing in flight: ignored
    c->sendCmdRestart();
    c->sendCmdSaveToFlash();
    c->sendCmdGetImitatorMode();
    QCOMPARE(
        takeSteps(),
        (QList<Step>{step(C::CmdRestart, C::Queued), step(C::CmdRestart, C::InProgress),
                     step(C::CmdSaveToFlash, C::Queued), step(C::CmdGetImitatorMode, C::Queued)}));
    QCOMPARE(c->lastRadarCommand(), int(C::CmdRestart));
    QVERIFY(m_h->waitForSent(1));

    QElapsedTimer clock;
    clock.start();
    QVERIFY(m_h->answer(0));
    QCOMPARE(takeSteps(), QList<Step>{step(C::CmdRestart, C::Received)});
    QCOMPARE(c->lastRadarCommand(), int(C::CmdSaveToFlash));
    QCOMPARE(m_h->server().binaryMessages.size(), 1); // the next waits its 100 ms
    QVERIFY(m_h->waitForSent(2));
    QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(takeSteps(), QList<Step>{step(C::CmdSaveToFlash, C::InProgress)});
    QVERIFY(m_h->answer(0) && m_h->waitForSent(3) && m_h->answer(0));
    QCOMPARE(c->lastRadarCommand(), 0);
}

void tst_CommandQueue::acknowledgements_data()
{
    QTest::addColumn<QList<int>>("codes"); // the radar's answers to the sends, in order
    QTest::addColumn<int>("finalState");
    QTest::newRow("code 0 received at once") << QList<int>{0} << int(C::Received);
    QTest::newRow("code 254 retried until the fifth failure")
        << QList<int>{254, 254, 254, 254, 254} << int(C::Error);
    QTest::newRow("busy radar asked again without limit")
        << QList<int>{255, 255, 255, 255, 255, 255, 255, 255, 0} << int(C::Received);
    QTest::newRow("busy answers leave the retries")
        << QList<int>{7, 255, 7, 7, 255, 7, 7} << int(C::Error);
}

void tst_CommandQueue::acknowledgements()
{
    QFETCH(QList<int>, codes);
    QFETCH(int, finalState);

    QVERIFY(m_h->connect());
    m_h->client()->sendCmdSelfDiagnostics();
    const int cmd = C::CmdSelfDiagnostics;
    QList<Step> expected{step(cmd, C::Queued), step(cmd, C::InProgress)};
    for (int i = 0; i < codes.size(); ++i) {
        QVERIFY(m_h->waitForSent(i + 1));
        QVERIFY(m_h->answer(quint8(codes[i])));
        if (i + 1 < codes.size())
            expected << step(cmd, C::InProgress, codes[i]) << step(cmd, C::InProgress);
    }
    expected << step(cmd, finalState, codes.last());
    QCOMPARE(takeSteps(), expected);
    QCOMPARE(m_h->client()->lastRadarCommand(), 0);
    const QList<QByteArray>& sent = m_h->server().binaryMessages;
    QCOMPARE(sent.count(sent.first()), codes.size()); // every send the same frame
}

void tst_CommandQueue::notConnectedGivesUpAfterFiveTries()
{
    QElapsedTimer clock;
    clock.start();
    m_h->client()->sendCmdSetImitatorMode(1);
    m_h->client()->sendCmdRestart();
    QTRY_COMPARE(m_h->client()->lastRadarCommand(), 0);
    // Each gives up on its fifth failed attempt, 100 ms apart.
    QVERIFY2(clock.elapsed() >= 880, qPrintable(QString::number(clock.elapsed())));
    const int imitator = C::CmdSetImitatorMode, restart = C::CmdRestart, retry = C::InProgress;
    QCOMPARE(takeSteps(), (QList<Step>{step(imitator, C::Queued), step(imitator, retry, -3),
                                       step(restart, C::Queued), step(imitator, retry, -3),
                                       step(imitator, retry, -3), step(imitator, retry, -3),
                                       step(imitator, C::Error, -3), step(restart, retry, -3),
                                       step(restart, retry, -3), step(restart, retry, -3),
                                       step(restart, retry, -3), step(restart, C::Error, -3)}));
}

void tst_CommandQueue::positionCommandsReportTheirValues()
{
    // The three frames of a position write and the read report every value by its own
    // id, in a fixed order: X and Y offset; height, azimuth, altitude; roll.
    QVERIFY(m_h->connect());
    m_h->client()->sendCmdSetPosition(5, -1.5, 0, -90, 0, 0);
    QCOMPARE(takeSteps(),
             (QList<Step>{step(12, C::Queued), step(14, C::Queued), step(12, C::InProgress),
                          step(14, C::InProgress), step(10, C::Queued), step(16, C::Queued),
                          step(18, C::Queued), step(20, C::Queued)}));
    QCOMPARE(m_h->client()->lastRadarCommand(), int(C::CmdSetPosition0));
    QVERIFY(m_h->waitForSent(1) && m_h->answer(0));
    QCOMPARE(takeSteps(), (QList<Step>{step(12, C::Received), step(14, C::Received)}));
    QVERIFY(m_h->waitForSent(2) && m_h->answer(3));
    QCOMPARE(takeSteps(), (QList<Step>{step(10, C::InProgress), step(16, C::InProgress),
                                       step(18, C::InProgress), step(10, C::InProgress, 3),
                                       step(16, C::InProgress, 3), step(18, C::InProgress, 3)}));
    QVERIFY(m_h->waitForSent(3) && m_h->answer(0) && m_h->waitForSent(4) && m_h->answer(0));
    QCOMPARE(takeSteps().last(), step(20, C::Received));

    m_h->client()->sendCmdGetPosition();
    QVERIFY(m_h->waitForSent(5) && m_h->answer(0));
    QCOMPARE(takeSteps().mid(12),
             (QList<Step>{step(13, C::Received), step(15, C::Received), step(11, C::Received),
                          step(17, C::Received), step(19, C::Received), step(21, C::Received)}));
}

void tst_CommandQueue::offlineDropsTheQueue()
{
    QVERIFY(m_h->connect());
    QVERIFY(m_h->makeBusy());
    m_h->client()->sendCmdGetHardwareInfo();
    m_h->client()->sendCmdGetFirmwareInfo();
    m_h->client()->sendCmdRestart();
    QVERIFY(m_h->waitForSent(1));
    takeSteps();

    // An acknowledgement alone carries no CAN frame: with two empty messages right
    // behind it, the radar is confirmed offline before the next command's 100 ms pass.
    QSignalSpy finished(m_h->client(), &C::frameFinished);
    m_h->server().sendBinary(TestRecords::ack(m_h->ids().ack, 0));
    m_h->server().sendBinary(QByteArray());
    m_h->server().sendBinary(QByteArray());
    QTRY_COMPARE(finished.count(), 3);
    QCOMPARE(takeSteps(), (QList<Step>{step(C::CmdGetHardwareInfo, C::Received),
                                       step(C::CmdGetFirmwareInfo, C::None, 255),
                                       step(C::CmdRestart, C::None, 255)}));
    QCOMPARE(m_h->client()->lastRadarCommand(), 0);

    // The send tick started by that acknowledgement must not send a new head twice.
    m_h->client()->sendCmdSaveToFlash();
    QVERIFY(m_h->waitForSent(2));
    QVERIFY(!QSignalSpy(&m_h->server(), &LoopbackServer::binaryReceived).wait(300));
}

QTEST_GUILESS_MAIN(tst_CommandQueue)
#include "tst_commandqueue.moc"
