#include "clientharness.h"
#include "radarparamnumbering.h"
#include "testrecords.h"

#include <QtTest>

#include <functional>

using C = IOrvexClient;
using P = RadarParamNumbering;

namespace {

// One radar command: how to send it, the id it is reported under, and the payloads
// that must go on the wire, in stream order (hex). Position writes are three frames
// on the radar-setup id; everything else is one frame on the command id.
struct CommandCase
{
    const char* name;
    std::function<void(IOrvexClient*)> send;
    int reportedId;
    QList<QByteArray> payloads;
    bool onSetupId = false;
};

// clang-format off
const QList<CommandCase>& commandCases() {
    using Cl = IOrvexClient;
    static const QList<CommandCase> cases{
        {"hardware info", [](Cl* c) { c->sendCmdGetHardwareInfo(); }, 1, {"0000200000022800"}},
        {"firmware info", [](Cl* c) { c->sendCmdGetFirmwareInfo(); }, 2, {"0000008000022800"}},
        {"self-diagnostics", [](Cl* c) { c->sendCmdSelfDiagnostics(); }, 3, {"0000000196020000"}},
        {"imitator mode 2", [](Cl* c) { c->sendCmdSetImitatorMode(2); }, 4, {"0000000297040000"}},
        {"get imitator mode", [](Cl* c) { c->sendCmdGetImitatorMode(); }, 5, {"0000000097020000"}},
        {"fake targets on", [](Cl* c) { c->sendCmdSetFakeTargetsMode(true); },
         6, {"0000000100044400"}},
        {"fake targets off", [](Cl* c) { c->sendCmdSetFakeTargetsMode(false); },
         6, {"0000000000044400"}},
        {"get fake targets", [](Cl* c) { c->sendCmdGetFakeTargetsMode(); },
         7, {"0000000000024400"}},
        {"save to flash", [](Cl* c) { c->sendCmdSaveToFlash(); }, 8, {"0000000088000000"}},
        {"restart", [](Cl* c) { c->sendCmdRestart(); }, 9, {"0000000081000000"}},
        {"sensitivity -3", [](Cl* c) { c->sendCmdSetRadarSensitivity(-3); },
         22, {"fffffffd94000400"}},
        {"get sensitivity", [](Cl* c) { c->sendCmdGetRadarSensitivity(); },
         23, {"0000000094020400"}},
        {"frequency index 5", [](Cl* c) { c->sendCmdSetFrequencyIndex(5); },
         24, {"0000000541002400"}},
        {"get frequency index", [](Cl* c) { c->sendCmdGetFrequencyIndex(); },
         25, {"0000000041022400"}},
        {"polygon usage 0x81", [](Cl* c) { c->sendCmdSetPolygonUsage(0x81); },
         26, {"0000008146040000"}},
        {"get polygon usage", [](Cl* c) { c->sendCmdGetPolygonUsage(); }, 27, {"0000000046020000"}},
        {"vertex count of polygon 0", [](Cl* c) { c->sendCmdSetPolygonTreatParam(0, 0, 4); },
         28, {"0000000446000200"}},
        {"treat param 1 of polygon 3", [](Cl* c) { c->sendCmdSetPolygonTreatParam(3, 1, 200); },
         0x0301001C, {"000000c846001500"}},
        {"get treat param 1 of polygon 7", [](Cl* c) { c->sendCmdGetPolygonTreatParam(7, 1); },
         0x0701001D, {"0000000046021900"}},
        {"speed param 2 of polygon 1 = -2.5",
         [](Cl* c) { c->sendCmdSetPolygonSpeedParam(1, 2, -2.5); },
         0x0102001E, {"ffd9da6046014300"}},
        {"get speed param 3 of polygon 0", [](Cl* c) { c->sendCmdGetPolygonSpeedParam(0, 3); },
         0x0003001F, {"0000000046035200"}},
        {"point param 9 of polygon 3 = 12.345678",
         [](Cl* c) { c->sendCmdSetPolygonPointParam(3, 9, 12.345678); },
         0x03090020, {"00bc614e47019900"}},
        {"point param 0 of polygon 0 = -10",
         [](Cl* c) { c->sendCmdSetPolygonPointParam(0, 0, -10); }, 32, {"ff67698047010000"}},
        {"get point param 8 of polygon 0", [](Cl* c) { c->sendCmdGetPolygonPointParam(0, 8); },
         0x00080021, {"0000000047038000"}},
        {"reinit polygons", [](Cl* c) { c->sendCmdReinitPolygons(); }, 34, {"0000000146000100"}},
        {"calibration command 3", [](Cl* c) { c->sendCmdSetCalibrationCommand(3); },
         35, {"00000003fe000000"}},
        {"get calibration command", [](Cl* c) { c->sendCmdGetCalibrationCommand(); },
         36, {"00000000fe020000"}},
        {"get calibration state", [](Cl* c) { c->sendCmdGetCalibrationState(); },
         37, {"00000000fe020100"}},
        {"calibration last param 2 = 1000",
         [](Cl* c) { c->sendCmdSetCalibrationLastParam(2, 1000); },
         0x00020026, {"000003e8fe000a00"}},
        {"get calibration last param 4", [](Cl* c) { c->sendCmdGetCalibrationLastParam(4); },
         0x00040027, {"00000000fe020c00"}},
        {"get calibration current param 1", [](Cl* c) { c->sendCmdGetCalibrationCurrParam(1); },
         0x00010028, {"00000000fe021100"}},
        {"reset calibration", [](Cl* c) { c->sendCmdResetCalibrationParams(); },
         41, {"00000000fe000700"}},
        {"apply calibration", [](Cl* c) { c->sendCmdApplyCalibrationParams(); },
         42, {"00000001fe000700"}},
        {"debug variable 5 = -1", [](Cl* c) { c->sendCmdSetDebugVariableValue(5, -1); },
         0x0500002B, {"ffffffffff000500"}},
        {"get debug variable 5", [](Cl* c) { c->sendCmdGetDebugVariableValue(5); },
         0x0500002B, {"00000000ff020500"}},
        {"get position", [](Cl* c) { c->sendCmdGetPosition(); }, 13, {"0000000200002a00"}},
        // Height 5, X offset -1.5 (sign bit 31, 150 in bits 24-8), azimuth -90 (27000).
        {"position: height 5, x -1.5, azimuth -90",
         [](Cl* c) { c->sendCmdSetPosition(5, -1.5, 0, -90, 0, 0); },
         12, {"0000000080009600", "10000069780001f4", "2000ff0000000000"}, true},
        // Negative Y offset and height, negative altitude (358.75), roll 359.99.
        {"position: every field in use",
         [](Cl* c) { c->sendCmdSetPosition(-2.25, 12.34, -3.5, 12.5, -1.25, 359.99); },
         12, {"0080015e0004d200", "108c2304e28000e1", "2000ff0000008c9f"}, true},
    };
    return cases;
}
// clang-format on

} // namespace

// Every radar command, byte for byte, on both protocol variants.
class tst_RadarCommands : public QObject
{
    Q_OBJECT

private slots:
    void frames_data();
    void frames();
    void genericDispatch_data();
    void genericDispatch();
    void paramNumbering();
    void reverseParamNumbering_data();
    void reverseParamNumbering();
    void protocolScaling();
};

void tst_RadarCommands::frames_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<int>("index");
    for (int variant : {0, 1}) {
        for (int i = 0; i < commandCases().size(); ++i)
            QTest::addRow("%s: %s", variant ? "SerP" : "SerD", commandCases().at(i).name)
                << variant << i;
    }
}

void tst_RadarCommands::frames()
{
    QFETCH(int, variant);
    QFETCH(int, index);
    const CommandCase& cc = commandCases().at(index);

    ClientHarness h(variant);
    QVERIFY(h.connect());
    QSignalSpy steps(h.client(), &IOrvexClient::radarCommandStateChanged);
    cc.send(h.client());
    QVERIFY(!steps.isEmpty());
    QCOMPARE(steps.first().at(0).toInt(), cc.reportedId);

    const quint16 id = cc.onSetupId ? h.ids().setup : h.ids().command;
    for (int i = 0; i < cc.payloads.size(); ++i) {
        QTRY_COMPARE(h.server().binaryMessages.size(), i + 1);
        const QByteArray expected
            = QByteArray::number(id, 16).rightJustified(4, '0') + "08" + cc.payloads.at(i);
        QCOMPARE(h.server().binaryMessages.at(i).toHex(), expected);
        QVERIFY(h.deliver(TestRecords::ack(h.ids().ack, 0)));
    }
    QCOMPARE(h.client()->lastRadarCommand(), 0);
}

void tst_RadarCommands::genericDispatch_data()
{
    QTest::addColumn<bool>("switchCmd");
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("payload"); // empty: ignored

    struct Row
    {
        int command;
        const char* payload;
    };
    const Row noArgs[] = {
        {1, "0000200000022800"},
        {2, "0000008000022800"},
        {3, "0000000196020000"},
        {5, "0000000097020000"},
        {7, "0000000000024400"},
        {8, "0000000088000000"},
        {9, "0000000081000000"},
        {23, "0000000094020400"},
        {25, "0000000041022400"},
        {27, "0000000046020000"},
        {34, "0000000146000100"},
        {36, "00000000fe020000"},
        {37, "00000000fe020100"},
        {41, "00000000fe000700"},
        {42, "00000001fe000700"},
        {0, ""},
        {4, ""},
        {6, ""},
        {10, ""},
        {22, ""},
        {26, ""},
        {35, ""},
        {43, ""},
        {100, ""},
        {103, ""},
        {-1, ""},
    };
    for (const Row& row : noArgs)
        QTest::addRow("no args: %d", row.command)
            << false << row.command << 0 << QByteArray(row.payload);
    QTest::newRow("switch: imitator 1") << true << 4 << 1 << QByteArray("0000000197040000");
    QTest::newRow("switch: fake targets 7 means on")
        << true << 6 << 7 << QByteArray("0000000100044400");
    QTest::newRow("switch: fake targets 0") << true << 6 << 0 << QByteArray("0000000000044400");
    QTest::newRow("switch: polygon usage 3") << true << 26 << 3 << QByteArray("0000000346040000");
    QTest::newRow("switch: restart is not a switch") << true << 9 << 1 << QByteArray();
    QTest::newRow("switch: sensitivity is not a switch") << true << 22 << 1 << QByteArray();
}

void tst_RadarCommands::genericDispatch()
{
    QFETCH(bool, switchCmd);
    QFETCH(int, command);
    QFETCH(int, value);
    QFETCH(QByteArray, payload);

    ClientHarness h(0);
    QVERIFY(h.connect());
    QSignalSpy steps(h.client(), &IOrvexClient::radarCommandStateChanged);
    if (switchCmd)
        h.client()->sendAnySwitchCmd(command, quint8(value));
    else
        h.client()->sendAnyCmdWithNoArgs(command);

    if (payload.isEmpty()) {
        QCOMPARE(steps.count(), 0);
        QCOMPARE(h.client()->lastRadarCommand(), 0);
        return;
    }
    QCOMPARE(steps.first().at(0).toInt(), command);
    QTRY_COMPARE(h.server().binaryMessages.size(), 1);
    QCOMPARE(h.server().binaryMessages.first().toHex(), "04f208" + payload);
}

void tst_RadarCommands::paramNumbering()
{
    QCOMPARE(P::polygonParamNo(P::PolygonTreatParam(1), 7), 25);
    QCOMPARE(P::polygonParamNo(P::PolygonSpeedParam(2), 1), 67);
    QCOMPARE(P::polygonParamNo(P::PolygonPointParam(9), 3), 153);
    QCOMPARE(P::polygonParamNo(P::PolygonPointParam(7), 3), 31);
    QCOMPARE(P::fullPolygonCmdId(30, 1, 2), (1 << 24) + (2 << 16) + 30);
    QCOMPARE(P::fullCalibrationCmdId(39, 4), (4 << 16) + 39);
    // Writing and reading a debug variable carry the same id.
    QCOMPARE(P::fullDebugVariableCmdId(43, 5), 5 * (1 << 24) + 43);
}

void tst_RadarCommands::reverseParamNumbering_data()
{
    QTest::addColumn<int>("kind"); // 0 treat, 1 speed, 2 point, 3 calibration last, 4 current
    QTest::addColumn<int>("paramNo");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("polygon");
    QTest::addColumn<int>("param");

    QTest::newRow("treat 2 is vertex count of polygon 0") << 0 << 2 << true << 0 << 0;
    QTest::newRow("treat 25 is param 1 of polygon 7") << 0 << 25 << true << 7 << 1;
    QTest::newRow("treat 36 is no treat number") << 0 << 36 << false << 0 << 0;
    QTest::newRow("speed 36 is param 0 of polygon 2") << 1 << 36 << true << 2 << 0;
    QTest::newRow("speed 89 is param 3 of polygon 7") << 1 << 89 << true << 7 << 3;
    QTest::newRow("speed 42 is no speed number") << 1 << 42 << false << 0 << 0;
    QTest::newRow("point 0") << 2 << 0 << true << 0 << 0;
    QTest::newRow("point 153 is Y of vertex 1 of polygon 3") << 2 << 153 << true << 3 << 9;
    QTest::newRow("point 191 is the last") << 2 << 191 << true << 7 << 15;
    QTest::newRow("point 100 is nothing") << 2 << 100 << false << 0 << 0;
    QTest::newRow("calibration last 12") << 3 << 12 << true << 0 << 4;
    QTest::newRow("calibration last 13 is beyond") << 3 << 13 << false << 0 << 0;
    QTest::newRow("calibration current 16") << 4 << 16 << true << 0 << 0;
    QTest::newRow("calibration current 8 is a last param") << 4 << 8 << false << 0 << 0;
}

void tst_RadarCommands::reverseParamNumbering()
{
    QFETCH(int, kind);
    QFETCH(int, paramNo);
    QFETCH(bool, found);
    QFETCH(int, polygon);
    QFETCH(int, param);

    quint8 p = 0xAA;
    quint8 k = 0xAA;
    bool ok = false;
    switch (kind) {
    case 0: ok = P::getPolygonTreatParam(quint8(paramNo), p, k); break;
    case 1: ok = P::getPolygonSpeedParam(quint8(paramNo), p, k); break;
    case 2: ok = P::getPolygonPointParam(quint8(paramNo), p, k); break;
    case 3:
        ok = P::getCalibrationLastParam(quint8(paramNo), k);
        p = 0;
        break;
    case 4:
        ok = P::getCalibrationCurrParam(quint8(paramNo), k);
        p = 0;
        break;
    }
    QCOMPARE(ok, found);
    if (found) {
        QCOMPARE(int(p), polygon);
        QCOMPARE(int(k), param);
    }
}

void tst_RadarCommands::protocolScaling()
{
    QCOMPARE(P::doubleToProtocol(-2.5), -2500000);
    QCOMPARE(P::doubleToProtocol(0.0000025), 3); // halves away from zero
    QCOMPARE(P::doubleToProtocol(-0.0000025), -3);
    QCOMPARE(P::doubleToProtocol(12.345678), 12345678);
    QCOMPARE(P::protocolToDouble(-2500000), -2.5);
    QCOMPARE(P::protocolToDouble(1), 0.000001);
}

QTEST_GUILESS_MAIN(tst_RadarCommands)
#include "tst_radarcommands.moc"
