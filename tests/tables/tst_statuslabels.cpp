#include "radarstatewidget.h"
#include "serverconnectionwidget.h"
#include "serverpingwidget.h"
#include "serverprotocolwidget.h"
#include "serverstatewidget.h"

#include <QtTest>

namespace {
const QColor Pending(191, 0, 191), Good(0, 191, 0), Bad(191, 0, 0), Unchanged;
const QString Port = QStringLiteral("/dev/ttyUSB0");

QColor textColor(const QLabel& label)
{
    return label.palette().color(QPalette::Active, QPalette::WindowText);
}
} // namespace

// The status bar: what each label shows for each report, in which colour, and when it
// hides again.
class tst_StatusLabels : public QObject
{
    Q_OBJECT

private slots:
    void reports_data();
    void reports();
    void reportsHiddenByConnectionEvents_data();
    void reportsHiddenByConnectionEvents();
    void hardwareInfoWhileWorking();
};

void tst_StatusLabels::reports_data()
{
    // Steps: a slot of the label, optionally with an int argument: "showRadarState 2".
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("text"); // empty: hidden
    QTest::addColumn<QColor>("color");

    auto row = [](const char* name, const char* label, const char* steps, const char* text,
                  QColor color) {
        QTest::newRow(name) << QString(label) << QString(steps) << QString(text) << color;
    };
    row("radar -1 wrong messages", "radar", "-1", "[Wrong messages. Check selected protocol]", Bad);
    row("radar 0 no messages", "radar", "0", "[No messages from radar]", Bad);
    row("radar 1 busy", "radar", "1", "[Radar is busy now]", Pending);
    row("radar 2 working", "radar", "2", "[Radar is working]", Good);
    row("radar: unknown state changes nothing", "radar", "2 3", "[Radar is working]", Good);
    row("connecting", "connection", "showConnecting", "[Connecting to ws://127.0.0.1:7578/]",
        Pending);
    row("connected", "connection", "showConnected", "[Connected to ws://127.0.0.1:7578/]", Good);
    row("not connected", "connection", "showNotConnected",
        "[No connection to ws://127.0.0.1:7578/]", Bad);
    row("disconnected", "connection", "showDisconnected",
        "[Disconnected from ws://127.0.0.1:7578/]", Bad);
    row("ping latency", "ping", "42", "[Ping timeout: 42 ms]", Unchanged);
    row("protocol 0 is SerD", "protocol", "0", "[SerD]", Unchanged);
    row("protocol 1 is SerP", "protocol", "1", "[SerP]", Unchanged);
    row("protocol 2 leaves the label as it was", "protocol", "1 2", "[SerP]", Unchanged);
    row("protocol unknown first shows nothing", "protocol", "2", "", Unchanged);
    row("server 0 connecting to the port service", "server", "0", "[Connecting to RSPS]", Pending);
    row("server 1 opening", "server", "1", "[Opening /dev/ttyUSB0]", Pending);
    row("server 2 opening", "server", "2", "[Opening /dev/ttyUSB0]", Pending);
    row("server 3 testing", "server", "3", "[Testing /dev/ttyUSB0]", Pending);
    row("server 4 testing", "server", "4", "[Testing /dev/ttyUSB0]", Pending);
    row("server 5 working", "server", "5", "[Working on /dev/ttyUSB0]", Good);
    row("server unknown state first shows nothing", "server", "7", "", Unchanged);
    row("server 7 after 5 keeps the template in red", "server", "5 7", "[Working on /dev/ttyUSB0]",
        Bad);
    row("server -1 after 3 keeps the template in red", "server", "3 -1", "[Testing /dev/ttyUSB0]",
        Bad);
}

void tst_StatusLabels::reports()
{
    QFETCH(QString, label);
    QFETCH(QString, steps);
    QFETCH(QString, text);
    QFETCH(QColor, color);

    QWidget bar;
    RadarStateWidget radar(&bar);
    ServerConnectionWidget connection(&bar);
    ServerPingWidget ping(&bar);
    ServerProtocolWidget protocol(&bar);
    ServerStateWidget server(&bar);
    connection.setRadarServerUrl(QStringLiteral("ws://127.0.0.1:7578/"));
    bar.show();
    StateLabel* shown = QMap<QString, StateLabel*>{
        {"radar", &radar},
        {"connection", &connection},
        {"ping", &ping},
        {"protocol", &protocol},
        {"server", &server}}.value(label);
    const QColor initial = textColor(*shown);
    for (const QString& step : steps.split(' ')) {
        bool isNumber = false;
        const int value = step.toInt(&isNumber);
        if (!isNumber)
            QVERIFY(QMetaObject::invokeMethod(shown, qPrintable(step)));
        else if (label == "radar")
            radar.showRadarState(value);
        else if (label == "ping")
            ping.showPingLatency(quint64(value));
        else if (label == "protocol")
            protocol.showServerProtocol(value);
        else
            server.showServerState(value, QStringLiteral("ws://127.0.0.1:7578/"), Port);
    }
    QCOMPARE(shown->isVisible(), !text.isEmpty());
    QCOMPARE(shown->text(), text);
    QCOMPARE(textColor(*shown), color.isValid() ? color : initial);
}

void tst_StatusLabels::reportsHiddenByConnectionEvents_data()
{
    QTest::addColumn<QString>("slot");
    for (const char* slot :
         {"showConnecting", "showConnected", "showNotConnected", "showDisconnected"})
        QTest::newRow(slot) << QString(slot);
}

void tst_StatusLabels::reportsHiddenByConnectionEvents()
{
    // Ping, protocol and server state show from a report until the next connection event.
    QFETCH(QString, slot);
    QWidget bar;
    ServerPingWidget ping(&bar);
    ServerProtocolWidget protocol(&bar);
    ServerStateWidget state(&bar);
    bar.show();
    ping.showPingLatency(42);
    protocol.showServerProtocol(1);
    state.showServerState(5, QString(), Port);
    for (QLabel* label : std::initializer_list<QLabel*>{&ping, &protocol, &state}) {
        QVERIFY(label->isVisible());
        QVERIFY(QMetaObject::invokeMethod(label, qPrintable(slot)));
        QVERIFY(!label->isVisible());
    }
    // The next report brings the server state back with the kept template.
    state.showServerState(9, QString(), Port);
    QVERIFY(state.isVisible());
    QCOMPARE(state.text(), QString("[Working on /dev/ttyUSB0]"));
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
    // server state. An answer that arrives while the radar is busy is ignored.
    label.showRadarState(1);
    QCOMPARE(label.text(), QString("[ORX-24 rev. B on /dev/ttyUSB0]"));
    label.showRadarHardwareInfo(QStringLiteral("late answer"));
    label.showServerState(5, QString(), Port);
    QCOMPARE(label.text(), QString("[Working on /dev/ttyUSB0]"));
    // Working again: asked again.
    label.showRadarState(2);
    QCOMPARE(requests.count(), 2);
}

QTEST_MAIN(tst_StatusLabels)
#include "tst_statuslabels.moc"
