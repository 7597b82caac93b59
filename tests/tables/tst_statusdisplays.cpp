#include "generalinfowidget.h"
#include "radarstatewidget.h"
#include "serverconnectionwidget.h"
#include "serverpingwidget.h"
#include "serverprotocolwidget.h"
#include "serverstatewidget.h"

#include <QGroupBox>
#include <QtTest>

namespace {
const QColor Pending(191, 0, 191), Good(0, 191, 0), Bad(191, 0, 0), Unchanged;
const QString Port = QStringLiteral("/dev/ttyUSB0");

QColor textColor(const QLabel& label)
{
    return label.palette().color(QPalette::Active, QPalette::WindowText);
}

QString text(const QWidget& parent, const char* label)
{
    return parent.findChild<QLabel*>(label)->text();
}
} // namespace

// The status displays: what each label of the status bar shows for each report, in
// which colour, and when it hides again; the radar's uptime and cycle number, with the
// cycle rate measured from the frames' own time stamps once every 200 cycles.
class tst_StatusDisplays : public QObject
{
    Q_OBJECT

private slots:
    void reports_data();
    void reports();
    void hardwareInfoWhileWorking();
    void generalInfo_data();
    void generalInfo();
    void newValuesNeedNoNewLayout();
};

void tst_StatusDisplays::reports_data()
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
    // Ping, protocol and server state show from a report until the next connection event.
    row("ping hidden when connecting", "ping", "42 showConnecting", "", Unchanged);
    row("protocol hidden when connected", "protocol", "1 showConnected", "", Unchanged);
    row("server state hidden when not connected", "server", "5 showNotConnected", "", Good);
    row("server state back after a disconnection, template kept", "server", "5 showDisconnected 9",
        "[Working on /dev/ttyUSB0]", Bad);
}

void tst_StatusDisplays::reports()
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
    if (shown->isVisible())
        QCOMPARE(shown->text(), text);
    QCOMPARE(textColor(*shown), color.isValid() ? color : initial);
}

void tst_StatusDisplays::hardwareInfoWhileWorking()
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

void tst_StatusDisplays::generalInfo_data()
{
    // Steps: "s<state>" shows a radar state, "<ms>:<cycle>" reports a frame's time stamp
    // (ms after an arbitrary start) and cycle number, "u<d>,<h>,<m>,<s>,<ms>" an uptime.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("cycle");
    QTest::addColumn<QString>("uptime");

    auto row = [](const char* name, const char* steps, const char* cycle, const char* uptime) {
        QTest::newRow(name) << QString(steps) << QString(cycle) << QString(uptime);
    };
    row("first sample only primes", "s2 0:1", "1", "");
    row("cycles 1 and 201 20 s apart give 10.0 c/s", "s2 0:1 20000:201", "201 (10.0 c/s)", "");
    row("rate kept between samples", "s2 0:1 20000:201 20100:202", "202 (10.0 c/s)", "");
    row("rate updated at the next sample", "s2 0:1 20000:201 25000:300 36000:401", "401 (12.5 c/s)",
        "");
    row("only cycle numbers with remainder 1 sample", "s2 0:200 20000:400 21000:402", "402", "");
    row("same frame time gives no rate", "s2 0:1 0:201", "201", "");
    row("frame time going back gives no rate", "s1 10000:1 0:201", "201", "");
    row("offline clears the values", "s2 0:1 20000:201 u3,4,5,6,7 s0", "", "");
    row("back online the rate needs two fresh samples", "s2 0:1 20000:201 s0 s2 30000:401", "401",
        "");
    row("two fresh samples after offline", "s2 0:1 20000:201 s0 s2 30000:401 50000:601",
        "601 (10.0 c/s)", "");
    row("offline: a number without rate, and no sample", "s2 0:1 s0 20000:201 s2 30000:401", "401",
        "");
    row("uptime in padded fields", "s2 u3,4,5,6,7", "", "3 day(s) 04:05:06.007");
    row("uptime at the largest time of day", "s1 u1234,23,59,59,999", "",
        "1234 day(s) 23:59:59.999");
    row("uptime cleared on bad data", "s2 u3,4,5,6,7 s-1", "", "");
}

void tst_StatusDisplays::generalInfo()
{
    QFETCH(QString, steps);
    QGroupBox box;
    auto* widget = new GeneralInfoWidget(&box);
    // Starts offline, the enclosing box greyed out; enabled only while online.
    QVERIFY(!box.isEnabled());
    const QDateTime start(QDate(2026, 3, 1), QTime(8, 0), Qt::UTC);
    int state = 0;
    for (const QString& step : steps.split(' ')) {
        const QStringList n = step.mid(1).split(',');
        if (step.startsWith('s')) {
            state = n[0].toInt();
            widget->showRadarState(state);
        } else if (step.startsWith('u')) {
            widget->showUptimeInfo(n[0].toInt(), n[1].toInt(), n[2].toInt(), n[3].toInt(),
                                   n[4].toInt());
        } else {
            widget->startFilling();
            widget->setFrameDateTimeUtc(start.addMSecs(step.section(':', 0, 0).toLongLong()));
            widget->showCycleNumber(step.section(':', 1).toULongLong());
            widget->finishFilling();
        }
    }
    QTEST(text(box, "cycleNumberValueLabel"), "cycle");
    QTEST(text(box, "uptimeValueLabel"), "uptime");
    QCOMPARE(box.isEnabled(), state == 1 || state == 2);
}

void tst_StatusDisplays::newValuesNeedNoNewLayout()
{
    // The values change with every frame; the window around them must not be laid out
    // anew each time, yet a longer value is shown whole.
    struct LayoutRequests : QObject
    {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::LayoutRequest;
            return false;
        }
    } requests;
    QGroupBox box;
    auto* widget = new GeneralInfoWidget(&box);
    box.show();
    widget->showRadarState(2);
    widget->showUptimeInfo(0, 1, 2, 3, 4);
    widget->showCycleNumber(100);
    QCoreApplication::processEvents();
    box.installEventFilter(&requests);
    widget->installEventFilter(&requests);
    for (int cycle = 101; cycle < 120; ++cycle) {
        widget->showUptimeInfo(0, 1, 2, 3, cycle);
        widget->showCycleNumber(quint64(cycle));
        QCoreApplication::processEvents();
    }
    QCOMPARE(requests.count, 0);
    widget->showCycleNumber(1234567890123ULL);
    const QLabel* value = box.findChild<QLabel*>("cycleNumberValueLabel");
    QVERIFY(value->width() >= value->fontMetrics().horizontalAdvance(value->text()));
}

QTEST_MAIN(tst_StatusDisplays)
#include "tst_statusdisplays.moc"
