#include "radarstatewidget.h"
#include "serverconnectionwidget.h"
#include "serverpingwidget.h"
#include "serverprotocolwidget.h"
#include "serverstatewidget.h"

#include <QtTest>

namespace {
const QColor Pending(191, 0, 191);
const QColor Good(0, 191, 0);
const QColor Bad(191, 0, 0);
const QString Port = QStringLiteral("/dev/ttyUSB0");
const char* const ConnectionSlots[]
    = {"showConnecting", "showConnected", "showNotConnected", "showDisconnected"};

QColor textColor(const QLabel& label)
{
    return label.palette().color(QPalette::Active, QPalette::WindowText);
}
} // namespace

class tst_StatusLabels : public QObject
{
    Q_OBJECT

private slots:
    void radarState_data();
    void radarState();
    void serverConnection_data();
    void serverConnection();
    // Ping, protocol and server state show from a report until the next connection event.
    void reportsHiddenByConnectionEvents_data();
    void reportsHiddenByConnectionEvents();
    void protocol_data();
    void protocol();
    void serverState_data();
    void serverState();
    void hardwareInfoWhileWorking();
};

void tst_StatusLabels::radarState_data()
{
    QTest::addColumn<QList<int>>("states");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");

    QTest::newRow("-1 wrong messages")
        << QList<int>{-1} << "[Wrong messages. Check selected protocol]" << Bad;
    QTest::newRow("0 no messages") << QList<int>{0} << "[No messages from radar]" << Bad;
    QTest::newRow("1 busy") << QList<int>{1} << "[Radar is busy now]" << Pending;
    QTest::newRow("2 working") << QList<int>{2} << "[Radar is working]" << Good;
    QTest::newRow("unknown state changes nothing")
        << QList<int>{2, 3} << "[Radar is working]" << Good;
}

void tst_StatusLabels::radarState()
{
    QFETCH(QList<int>, states);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    RadarStateWidget label;
    for (int state : states)
        label.showRadarState(state);
    QCOMPARE(label.text(), text);
    QCOMPARE(textColor(label), color);
    QVERIFY(label.updatesEnabled());
}

void tst_StatusLabels::serverConnection_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");

    QTest::newRow("connecting") << "showConnecting"
                                << "[Connecting to ws://127.0.0.1:7578/]" << Pending;
    QTest::newRow("connected") << "showConnected"
                               << "[Connected to ws://127.0.0.1:7578/]" << Good;
    QTest::newRow("not connected") << "showNotConnected"
                                   << "[No connection to ws://127.0.0.1:7578/]" << Bad;
    QTest::newRow("disconnected") << "showDisconnected"
                                  << "[Disconnected from ws://127.0.0.1:7578/]" << Bad;
}

void tst_StatusLabels::serverConnection()
{
    QFETCH(QString, slot);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    ServerConnectionWidget label;
    label.setRadarServerUrl(QStringLiteral("ws://127.0.0.1:7578/"));
    QVERIFY(QMetaObject::invokeMethod(&label, qPrintable(slot)));
    QCOMPARE(label.text(), text);
    QCOMPARE(textColor(label), color);
}

void tst_StatusLabels::reportsHiddenByConnectionEvents_data()
{
    QTest::addColumn<QString>("slot");
    for (const char* slot : ConnectionSlots)
        QTest::newRow(slot) << QString(slot);
}

void tst_StatusLabels::reportsHiddenByConnectionEvents()
{
    QFETCH(QString, slot);
    QWidget bar;
    auto* ping = new ServerPingWidget(&bar);
    auto* protocol = new ServerProtocolWidget(&bar);
    auto* state = new ServerStateWidget(&bar);
    bar.show();
    const QList<QLabel*> labels{ping, protocol, state};
    for (QLabel* label : labels)
        QVERIFY(!label->isVisible());

    ping->showPingLatency(42);
    protocol->showServerProtocol(1);
    state->showServerState(5, QString(), Port);
    QCOMPARE(ping->text(), QString("[Ping timeout: 42 ms]"));
    for (QLabel* label : labels) {
        QVERIFY(label->isVisible());
        QVERIFY(QMetaObject::invokeMethod(label, qPrintable(slot)));
        QVERIFY(!label->isVisible());
    }
    // The next report brings the server state back with the kept template.
    state->showServerState(9, QString(), Port);
    QVERIFY(state->isVisible());
    QCOMPARE(state->text(), QString("[Working on /dev/ttyUSB0]"));
}

void tst_StatusLabels::protocol_data()
{
    QTest::addColumn<QList<int>>("protocols");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("visible");

    QTest::newRow("0 is SerD") << QList<int>{0} << "[SerD]" << true;
    QTest::newRow("1 is SerP") << QList<int>{1} << "[SerP]" << true;
    QTest::newRow("2 leaves the label as it was") << QList<int>{1, 2} << "[SerP]" << true;
    QTest::newRow("unknown first shows nothing") << QList<int>{2} << "" << false;
}

void tst_StatusLabels::protocol()
{
    QFETCH(QList<int>, protocols);
    QFETCH(QString, text);
    QFETCH(bool, visible);
    QWidget bar;
    auto* label = new ServerProtocolWidget(&bar);
    bar.show();
    for (int protocol : protocols)
        label->showServerProtocol(protocol);
    QCOMPARE(label->text(), text);
    QCOMPARE(label->isVisible(), visible);
}

void tst_StatusLabels::serverState_data()
{
    QTest::addColumn<QList<int>>("states");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("visible");

    QTest::newRow("0 connecting to the port service")
        << QList<int>{0} << "[Connecting to RSPS]" << Pending << true;
    QTest::newRow("1 opening") << QList<int>{1} << "[Opening /dev/ttyUSB0]" << Pending << true;
    QTest::newRow("2 opening") << QList<int>{2} << "[Opening /dev/ttyUSB0]" << Pending << true;
    QTest::newRow("3 testing") << QList<int>{3} << "[Testing /dev/ttyUSB0]" << Pending << true;
    QTest::newRow("4 testing") << QList<int>{4} << "[Testing /dev/ttyUSB0]" << Pending << true;
    QTest::newRow("5 working") << QList<int>{5} << "[Working on /dev/ttyUSB0]" << Good << true;
    QTest::newRow("unknown state first shows nothing") << QList<int>{7} << "" << QColor() << false;
    QTest::newRow("7 after 5 keeps the template in red")
        << QList<int>{5, 7} << "[Working on /dev/ttyUSB0]" << Bad << true;
    QTest::newRow("-1 after 3 keeps the template in red")
        << QList<int>{3, -1} << "[Testing /dev/ttyUSB0]" << Bad << true;
}

void tst_StatusLabels::serverState()
{
    QFETCH(QList<int>, states);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QFETCH(bool, visible);
    QWidget bar;
    auto* label = new ServerStateWidget(&bar);
    bar.show();
    const QColor initial = textColor(*label);
    for (int state : states)
        label->showServerState(state, QStringLiteral("ws://127.0.0.1:7578/"), Port);
    QCOMPARE(label->text(), text);
    QCOMPARE(textColor(*label), color.isValid() ? color : initial);
    QCOMPARE(label->isVisible(), visible);
}

void tst_StatusLabels::hardwareInfoWhileWorking()
{
    ServerStateWidget label;
    QSignalSpy requests(&label, &ServerStateWidget::getRadarHardwareInfo);
    QVERIFY(requests.isValid());
    label.showServerState(5, QString(), Port);

    // Asked once on entering the working state, not on every report of it.
    label.showRadarState(2);
    label.showRadarState(2);
    QCOMPARE(requests.count(), 1);
    label.showRadarHardwareInfo(QStringLiteral("ORX-24 rev. B"));
    QCOMPARE(label.text(), QString("[ORX-24 rev. B on /dev/ttyUSB0]"));

    // Leaving the working state forgets the information; the text stays until the next
    // server state.
    label.showRadarState(1);
    QCOMPARE(label.text(), QString("[ORX-24 rev. B on /dev/ttyUSB0]"));
    label.showServerState(5, QString(), Port);
    QCOMPARE(label.text(), QString("[Working on /dev/ttyUSB0]"));

    // An answer that arrives while the radar is busy is ignored.
    label.showRadarHardwareInfo(QStringLiteral("late answer"));
    QCOMPARE(label.text(), QString("[Working on /dev/ttyUSB0]"));
    label.showServerState(5, QString(), Port);
    QCOMPARE(label.text(), QString("[Working on /dev/ttyUSB0]"));

    // Working again: asked again.
    label.showRadarState(2);
    QCOMPARE(requests.count(), 2);
}

QTEST_MAIN(tst_StatusLabels)
#include "tst_statuslabels.moc"
