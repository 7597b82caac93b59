#include "clientharness.h"
#include "radarparamnumbering.h"
#include "testrecords.h"

#include <QtTest>

#include <functional>

using C = IOrvexClient;
using Send = std::function<void(IOrvexClient*)>;
Q_DECLARE_METATYPE(Send)

// Every radar command, byte for byte, on both protocol variants.
class tst_RadarCommands : public QObject
{
    Q_OBJECT

private slots:
    void frames_data();
    void frames();
    void noArgumentDispatch();
    void protocolScaling();
};

void tst_RadarCommands::frames_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<Send>("send");
    QTest::addColumn<int>("reportedId"); // 0: nothing is sent
    // Payloads that must go on the wire, in stream order (hex). Position writes are
    // three frames on the radar-setup id; everything else one frame on the command id.
    QTest::addColumn<QStringList>("payloads");

    auto row = [](int variant, const char* name, Send send, int id, QStringList payloads) {
        QTest::addRow("%s: %s", variant ? "SerP" : "SerD", name)
            << variant << send << id << payloads;
    };
    for (int v : {0, 1}) {
        row(v, "restart", [](C* c) { c->sendCmdRestart(); }, 9, {"0000000081000000"});
        // Height 5, X offset -1.5 (sign bit 31, 150 in bits 24-8), azimuth -90 (27000).
        row(v, "position: height 5, x -1.5, azimuth -90",
            [](C* c) { c->sendCmdSetPosition(5, -1.5, 0, -90, 0, 0); }, 12,
            {"0000000080009600", "10000069780001f4", "2000ff0000000000"});
    }
    // Negative Y offset and height, negative altitude (358.75), roll 359.99.
    row(0, "position: every field in use",
        [](C* c) { c->sendCmdSetPosition(-2.25, 12.34, -3.5, 12.5, -1.25, 359.99); }, 12,
        {"0080015e0004d200", "108c2304e28000e1", "2000ff0000008c9f"});
    row(0, "hardware info", [](C* c) { c->sendCmdGetHardwareInfo(); }, 1, {"0000200000022800"});
    row(0, "firmware info", [](C* c) { c->sendCmdGetFirmwareInfo(); }, 2, {"0000008000022800"});
    row(0, "self-diagnostics", [](C* c) { c->sendCmdSelfDiagnostics(); }, 3, {"0000000196020000"});
    row(0, "imitator mode 2", [](C* c) { c->sendCmdSetImitatorMode(2); }, 4, {"0000000297040000"});
    row(0, "get imitator mode", [](C* c) { c->sendCmdGetImitatorMode(); }, 5, {"0000000097020000"});
    row(0, "fake targets on", [](C* c) { c->sendCmdSetFakeTargetsMode(true); }, 6,
        {"0000000100044400"});
    row(0, "get fake targets", [](C* c) { c->sendCmdGetFakeTargetsMode(); }, 7,
        {"0000000000024400"});
    row(0, "save to flash", [](C* c) { c->sendCmdSaveToFlash(); }, 8, {"0000000088000000"});
    row(0, "sensitivity -3", [](C* c) { c->sendCmdSetRadarSensitivity(-3); }, 22,
        {"fffffffd94000400"});
    row(0, "get sensitivity", [](C* c) { c->sendCmdGetRadarSensitivity(); }, 23,
        {"0000000094020400"});
    row(0, "frequency index 5", [](C* c) { c->sendCmdSetFrequencyIndex(5); }, 24,
        {"0000000541002400"});
    row(0, "get frequency index", [](C* c) { c->sendCmdGetFrequencyIndex(); }, 25,
        {"0000000041022400"});
    row(0, "polygon usage 0x81", [](C* c) { c->sendCmdSetPolygonUsage(0x81); }, 26,
        {"0000008146040000"});
    row(0, "get polygon usage", [](C* c) { c->sendCmdGetPolygonUsage(); }, 27,
        {"0000000046020000"});
    row(0, "vertex count of polygon 0", [](C* c) { c->sendCmdSetPolygonTreatParam(0, 0, 4); }, 28,
        {"0000000446000200"});
    row(0, "treat param 1 of polygon 3", [](C* c) { c->sendCmdSetPolygonTreatParam(3, 1, 200); },
        0x0301001C, {"000000c846001500"});
    row(0, "get treat param 1 of polygon 7", [](C* c) { c->sendCmdGetPolygonTreatParam(7, 1); },
        0x0701001D, {"0000000046021900"});
    row(0, "speed param 2 of polygon 1 = -2.5",
        [](C* c) { c->sendCmdSetPolygonSpeedParam(1, 2, -2.5); }, 0x0102001E, {"ffd9da6046014300"});
    row(0, "get speed param 3 of polygon 0", [](C* c) { c->sendCmdGetPolygonSpeedParam(0, 3); },
        0x0003001F, {"0000000046035200"});
    row(0, "point param 9 of polygon 3 = 12.345678",
        [](C* c) { c->sendCmdSetPolygonPointParam(3, 9, 12.345678); }, 0x03090020,
        {"00bc614e47019900"});
    row(0, "point param 7 of polygon 3 = 1", [](C* c) { c->sendCmdSetPolygonPointParam(3, 7, 1); },
        0x03070020, {"000f424047011f00"});
    row(0, "get point param 8 of polygon 0", [](C* c) { c->sendCmdGetPolygonPointParam(0, 8); },
        0x00080021, {"0000000047038000"});
    row(0, "reinit polygons", [](C* c) { c->sendCmdReinitPolygons(); }, 34, {"0000000146000100"});
    row(0, "calibration command 3", [](C* c) { c->sendCmdSetCalibrationCommand(3); }, 35,
        {"00000003fe000000"});
    row(0, "get calibration command", [](C* c) { c->sendCmdGetCalibrationCommand(); }, 36,
        {"00000000fe020000"});
    row(0, "get calibration state", [](C* c) { c->sendCmdGetCalibrationState(); }, 37,
        {"00000000fe020100"});
    row(0, "calibration last param 2 = 1000",
        [](C* c) { c->sendCmdSetCalibrationLastParam(2, 1000); }, 0x00020026, {"000003e8fe000a00"});
    row(0, "get calibration last param 4", [](C* c) { c->sendCmdGetCalibrationLastParam(4); },
        0x00040027, {"00000000fe020c00"});
    row(0, "get calibration current param 1", [](C* c) { c->sendCmdGetCalibrationCurrParam(1); },
        0x00010028, {"00000000fe021100"});
    row(0, "reset calibration", [](C* c) { c->sendCmdResetCalibrationParams(); }, 41,
        {"00000000fe000700"});
    row(0, "apply calibration", [](C* c) { c->sendCmdApplyCalibrationParams(); }, 42,
        {"00000001fe000700"});
    // Writing and reading a debug variable deliberately share one id.
    row(0, "debug variable 5 = -1", [](C* c) { c->sendCmdSetDebugVariableValue(5, -1); },
        0x0500002B, {"ffffffffff000500"});
    row(0, "get debug variable 5", [](C* c) { c->sendCmdGetDebugVariableValue(5); }, 0x0500002B,
        {"00000000ff020500"});
    row(0, "get position", [](C* c) { c->sendCmdGetPosition(); }, 13, {"0000000200002a00"});
    row(0, "switch: imitator 1", [](C* c) { c->sendAnySwitchCmd(4, 1); }, 4, {"0000000197040000"});
    row(0, "switch: fake targets 7 means on", [](C* c) { c->sendAnySwitchCmd(6, 7); }, 6,
        {"0000000100044400"});
    row(0, "switch: fake targets 0 means off", [](C* c) { c->sendAnySwitchCmd(6, 0); }, 6,
        {"0000000000044400"});
    row(0, "switch: polygon usage 3", [](C* c) { c->sendAnySwitchCmd(26, 3); }, 26,
        {"0000000346040000"});
    row(0, "switch: restart is not a switch", [](C* c) { c->sendAnySwitchCmd(9, 1); }, 0, {});
    row(0, "switch: sensitivity is not a switch", [](C* c) { c->sendAnySwitchCmd(22, 1); }, 0, {});
}

void tst_RadarCommands::frames()
{
    QFETCH(int, variant);
    QFETCH(Send, send);
    QFETCH(int, reportedId);
    QFETCH(QStringList, payloads);

    ClientHarness h(variant);
    QVERIFY(h.connect());
    QSignalSpy steps(h.client(), &C::radarCommandStateChanged);
    send(h.client());
    QCOMPARE(steps.value(0).value(0).toInt(), reportedId);
    const quint16 id = payloads.size() == 3 ? h.ids().setup : h.ids().command;
    for (int i = 0; i < payloads.size(); ++i) {
        QVERIFY(h.waitForSent(i + 1));
        const quint64 payload = payloads[i].toULongLong(nullptr, 16);
        QCOMPARE(h.server().binaryMessages[i].toHex(), TestRecords::frame(id, payload).toHex());
        QVERIFY(h.answer(0));
    }
    QCOMPARE(h.client()->lastRadarCommand(), 0);
}

void tst_RadarCommands::noArgumentDispatch()
{
    // Each command without arguments is reached by its own id, and no other id sends.
    const QList<int> noArgs{1, 2, 3, 5, 7, 8, 9, 23, 25, 27, 34, 36, 37, 41, 42};
    auto client = VariantIds::makeClient(0); // unconnected: the first try fails at once
    QSignalSpy steps(client.get(), &C::radarCommandStateChanged);
    for (int command = -1; command <= 110; ++command) {
        steps.clear();
        client->sendAnyCmdWithNoArgs(command);
        QCOMPARE(steps.value(0).value(0, 0).toInt(), noArgs.contains(command) ? command : 0);
    }
}

void tst_RadarCommands::protocolScaling()
{
    // Polygon speeds and coordinates in millionths, halves rounded away from zero.
    using P = RadarParamNumbering;
    QCOMPARE(P::doubleToProtocol(0.0000025), 3);
    QCOMPARE(P::doubleToProtocol(-0.0000025), -3);
}

QTEST_GUILESS_MAIN(tst_RadarCommands)
#include "tst_radarcommands.moc"
