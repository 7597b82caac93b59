#include "clientharness.h"
#include "testrecords.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using R = TestRecords;
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
    void acknowledgementCodes_data();
    void acknowledgementCodes();
    void busyRadarIsAskedAgainWithoutLimit();
    void silentRadarTimesOut();
    void notConnectedGivesUpAfterFiveTries();
    void acknowledgementWithEmptyQueueIsIgnored();
    void positionCommandsReportTheirValues();
    void offlineDropsTheQueue();

private:
    using Step = QVariantList; // command, state, error
    static Step step(int command, int state, int error) { return {command, state, error}; }
    QList<Step> takeSteps();
    bool answer(quint8 code);
    bool waitForCommands(int count, int timeoutMs = 3000);

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

QList<tst_CommandQueue::Step> tst_CommandQueue::takeSteps()
{
    QList<Step> steps;
    for (const QList<QVariant>& s : *m_steps)
        steps.append(s);
    m_steps->clear();
    return steps;
}

bool tst_CommandQueue::answer(quint8 code)
{
    return m_h->deliver(R::ack(m_h->ids().ack, code));
}

bool tst_CommandQueue::waitForCommands(int count, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (m_h->server().binaryMessages.size() < count && clock.elapsed() < timeoutMs) {
        QSignalSpy received(&m_h->server(), &LoopbackServer::binaryReceived);
        received.wait(int(timeoutMs - clock.elapsed()));
    }
    return m_h->server().binaryMessages.size() == count;
}

void tst_CommandQueue::oneInFlightAndTheGapBetween()
{
    QVERIFY(m_h->connect());
    IOrvexClient* c = m_h->client();
    QCOMPARE(c->lastRadarCommand(), 0);

    c->sendCmdRestart();
    c->sendCmdSaveToFlash();
    c->sendCmdGetImitatorMode();
    QCOMPARE(takeSteps(),
             (QList<Step>{step(C::CmdRestart, C::Queued, 0), step(C::CmdRestart, C::InProgress, 0),
                          step(C::CmdSaveToFlash, C::Queued, 0),
                          step(C::CmdGetImitatorMode, C::Queued, 0)}));
    QCOMPARE(c->lastRadarCommand(), int(C::CmdRestart));
    QVERIFY(waitForCommands(1));

    QElapsedTimer clock;
    clock.start();
    QVERIFY(answer(0));
    QCOMPARE(takeSteps(), (QList<Step>{step(C::CmdRestart, C::Received, 0)}));
    QCOMPARE(c->lastRadarCommand(), int(C::CmdSaveToFlash));
    QCOMPARE(m_h->server().binaryMessages.size(), 1); // the next waits its 100 ms
    QVERIFY(waitForCommands(2));
    QVERIFY2(clock.elapsed() >= 95, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(takeSteps(), (QList<Step>{step(C::CmdSaveToFlash, C::InProgress, 0)}));

    QVERIFY(answer(0));
    QVERIFY(waitForCommands(3));
    QVERIFY(answer(0));
    QCOMPARE(c->lastRadarCommand(), 0);
    QCOMPARE(m_h->server().binaryMessages.at(0).toHex(), QByteArray("04f2080000000081000000"));
}

void tst_CommandQueue::acknowledgementCodes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("finalState");
    QTest::addColumn<int>("sends"); // how often the command went on the wire

    QTest::newRow("code 0 received at once") << 0 << int(C::Received) << 1;
    QTest::newRow("code 7 retried until the fifth failure") << 7 << int(C::Error) << 5;
    QTest::newRow("code 1 is an error") << 1 << int(C::Error) << 5;
    QTest::newRow("code 254 is an error") << 254 << int(C::Error) << 5;
}

void tst_CommandQueue::acknowledgementCodes()
{
    QFETCH(int, code);
    QFETCH(int, finalState);
    QFETCH(int, sends);

    QVERIFY(m_h->connect());
    m_h->client()->sendCmdSelfDiagnostics();
    QList<Step> expected{step(C::CmdSelfDiagnostics, C::Queued, 0),
                         step(C::CmdSelfDiagnostics, C::InProgress, 0)};
    for (int i = 1; i <= sends; ++i) {
        QVERIFY(waitForCommands(i));
        QVERIFY(answer(quint8(code)));
        if (i < sends) {
            expected.append(step(C::CmdSelfDiagnostics, C::InProgress, code));
            QVERIFY(waitForCommands(i + 1));
            expected.append(step(C::CmdSelfDiagnostics, C::InProgress, 0));
        }
    }
    expected.append(step(C::CmdSelfDiagnostics, finalState, code));
    QCOMPARE(takeSteps(), expected);
    QCOMPARE(m_h->client()->lastRadarCommand(), 0);
    // All sends were the same frame.
    for (const QByteArray& sent : m_h->server().binaryMessages)
        QCOMPARE(sent, m_h->server().binaryMessages.first());
}

void tst_CommandQueue::busyRadarIsAskedAgainWithoutLimit()
{
    QVERIFY(m_h->connect());
    m_h->client()->sendCmdGetFrequencyIndex();
    for (int i = 1; i <= 8; ++i) {
        QVERIFY(waitForCommands(i));
        QVERIFY(answer(255));
    }
    QVERIFY(waitForCommands(9));
    QVERIFY(answer(0));
    const QList<Step> steps = takeSteps();
    QCOMPARE(steps.count(), 1 + 9 + 8 + 1);
    QCOMPARE(steps.at(2), step(C::CmdGetFrequencyIndex, C::InProgress, 255));
    QCOMPARE(steps.last(), step(C::CmdGetFrequencyIndex, C::Received, 0));
}

void tst_CommandQueue::silentRadarTimesOut()
{
    QVERIFY(m_h->connect());
    QElapsedTimer clock;
    clock.start();
    m_h->client()->sendCmdGetRadarSensitivity();
    QTRY_COMPARE_WITH_TIMEOUT(m_h->client()->lastRadarCommand(), 0, 8000);
    // Five sends, each waited for 900 ms, with 100 ms between them.
    QVERIFY2(clock.elapsed() >= 4850, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(m_h->server().binaryMessages.size(), 5);
    const QList<Step> steps = takeSteps();
    QCOMPARE(steps.count(), 1 + 5 + 5);
    QCOMPARE(steps.at(2), step(C::CmdGetRadarSensitivity, C::InProgress, -7));
    QCOMPARE(steps.last(), step(C::CmdGetRadarSensitivity, C::Error, -7));
}

void tst_CommandQueue::notConnectedGivesUpAfterFiveTries()
{
    QElapsedTimer clock;
    clock.start();
    const int imitator = C::CmdSetImitatorMode;
    const int restart = C::CmdRestart;
    m_h->client()->sendCmdSetImitatorMode(1);
    m_h->client()->sendCmdRestart();
    QTRY_COMPARE(m_h->client()->lastRadarCommand(), 0);
    // Each gives up on its fifth failed attempt, 100 ms apart.
    QVERIFY2(clock.elapsed() >= 880, qPrintable(QString::number(clock.elapsed())));
    const QList<Step> expected{step(imitator, C::Queued, 0),      step(imitator, C::InProgress, -3),
                               step(restart, C::Queued, 0),       step(imitator, C::InProgress, -3),
                               step(imitator, C::InProgress, -3), step(imitator, C::InProgress, -3),
                               step(imitator, C::Error, -3),      step(restart, C::InProgress, -3),
                               step(restart, C::InProgress, -3),  step(restart, C::InProgress, -3),
                               step(restart, C::InProgress, -3),  step(restart, C::Error, -3)};
    QCOMPARE(takeSteps(), expected);
}

void tst_CommandQueue::acknowledgementWithEmptyQueueIsIgnored()
{
    QVERIFY(m_h->connect());
    QVERIFY(answer(0));
    QVERIFY(answer(7));
    QCOMPARE(m_steps->count(), 0);
    m_h->client()->sendCmdGetPolygonUsage();
    QVERIFY(waitForCommands(1));
    QVERIFY(answer(0));
    QCOMPARE(takeSteps().last(), step(C::CmdGetPolygonUsage, C::Received, 0));
}

void tst_CommandQueue::positionCommandsReportTheirValues()
{
    QVERIFY(m_h->connect());
    m_h->client()->sendCmdSetPosition(5, -1.5, 0, -90, 0, 0);
    QCOMPARE(takeSteps(), (QList<Step>{step(12, C::Queued, 0), step(14, C::Queued, 0),
                                       step(12, C::InProgress, 0), step(14, C::InProgress, 0),
                                       step(10, C::Queued, 0), step(16, C::Queued, 0),
                                       step(18, C::Queued, 0), step(20, C::Queued, 0)}));
    QCOMPARE(m_h->client()->lastRadarCommand(), int(C::CmdSetPosition0));
    QVERIFY(waitForCommands(1));
    QVERIFY(answer(0));
    QCOMPARE(takeSteps(), (QList<Step>{step(12, C::Received, 0), step(14, C::Received, 0)}));
    QVERIFY(waitForCommands(2));
    QVERIFY(answer(3));
    QCOMPARE(takeSteps(), (QList<Step>{step(10, C::InProgress, 0), step(16, C::InProgress, 0),
                                       step(18, C::InProgress, 0), step(10, C::InProgress, 3),
                                       step(16, C::InProgress, 3), step(18, C::InProgress, 3)}));
    QVERIFY(waitForCommands(3));
    QVERIFY(answer(0));
    QVERIFY(waitForCommands(4));
    QVERIFY(answer(0));
    QCOMPARE(takeSteps().last(), step(20, C::Received, 0));

    m_h->client()->sendCmdGetPosition();
    QVERIFY(waitForCommands(5));
    QVERIFY(answer(0));
    const QList<Step> steps = takeSteps();
    QCOMPARE(steps.mid(12), (QList<Step>{step(13, C::Received, 0), step(15, C::Received, 0),
                                         step(11, C::Received, 0), step(17, C::Received, 0),
                                         step(19, C::Received, 0), step(21, C::Received, 0)}));
}

void tst_CommandQueue::offlineDropsTheQueue()
{
    QVERIFY(m_h->connect());
    QVERIFY(m_h->makeBusy());
    m_h->client()->sendCmdGetHardwareInfo();
    m_h->client()->sendCmdGetFirmwareInfo();
    m_h->client()->sendCmdRestart();
    QVERIFY(waitForCommands(1));
    takeSteps();

    // An acknowledgement alone carries no CAN frame: with two empty messages right
    // behind it, the radar is confirmed offline before the next command's 100 ms pass.
    QSignalSpy finished(m_h->client(), &C::frameFinished);
    m_h->server().sendBinary(R::ack(m_h->ids().ack, 0));
    m_h->server().sendBinary(QByteArray());
    m_h->server().sendBinary(QByteArray());
    while (finished.count() < 3)
        QVERIFY(finished.wait(2000));
    QCOMPARE(takeSteps(), (QList<Step>{step(C::CmdGetHardwareInfo, C::Received, 0),
                                       step(C::CmdGetFirmwareInfo, C::None, 255),
                                       step(C::CmdRestart, C::None, 255)}));
    QCOMPARE(m_h->client()->lastRadarCommand(), 0);

    // The send tick started by that acknowledgement must not send a new head twice.
    m_h->client()->sendCmdSaveToFlash();
    QVERIFY(waitForCommands(2));
    QSignalSpy received(&m_h->server(), &LoopbackServer::binaryReceived);
    QVERIFY(!received.wait(300));
    QCOMPARE(m_h->server().binaryMessages.size(), 2);
}

QTEST_GUILESS_MAIN(tst_CommandQueue)
#include "tst_commandqueue.moc"
