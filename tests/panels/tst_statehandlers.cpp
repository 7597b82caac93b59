#include "cmdhandler.h"
#include "cmdstatelabel.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"

#include <QElapsedTimer>
#include <QtTest>

using C = IOrvexClient;
using L = ParStateLabel;

// The labels that follow a command through the radar's queue: what each step shows,
// which timer it starts, and when the outcome is cleared.
class tst_StateHandlers : public QObject
{
    Q_OBJECT

private slots:
    void commandSteps_data();
    void commandSteps();
    void commandOutcomeStaysFiveSeconds();
    void parameterSteps_data();
    void parameterSteps();
};

void tst_StateHandlers::commandSteps_data()
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

void tst_StateHandlers::commandSteps()
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

void tst_StateHandlers::commandOutcomeStaysFiveSeconds()
{
    CmdHandler handler;
    CmdStateLabel* label = handler.addStateLabel(nullptr);
    handler.assignStateLabel(C::CmdRestart, label);
    QSignalSpy updated(&handler, &CmdHandler::updated);
    QElapsedTimer clock;
    handler.showCommandState(C::CmdRestart, C::InProgress, 0);
    QTest::qWait(1000); // a further report one second later restarts the five seconds
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

void tst_StateHandlers::parameterSteps_data()
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

void tst_StateHandlers::parameterSteps()
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

QTEST_MAIN(tst_StateHandlers)
#include "tst_statehandlers.moc"
