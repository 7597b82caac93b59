#include "clientharness.h"
#include "clientsignallog.h"
#include "testrecords.h"

#include <QtTest>

using R = TestRecords;

namespace {
// Response frames on the UDT id of protocol variant 0. Every frame carries its key in
// bits 15 to 0.
QByteArray udt(quint16 key, quint64 high = 0)
{
    return R::frame(0x500, high | key);
}

// Read parameter: frame 0 only has to be present, frame 1 names the parameter and
// carries the status nibble, frame 2 holds the value.
QByteArray readParam(int group, int paramNo, int access, int status, qint32 value)
{
    return udt(0x2B1B, 0xABCD0000)
           + udt(0x2B1C, quint64(paramNo) << 56 | quint64(access) << 48 | quint64(group) << 40
                             | quint64(status) << 32)
           + udt(0x2B1D, quint64(quint32(value)) << 32);
}

QByteArray setup(quint64 setup0, quint64 setup1, quint64 setup2)
{
    return udt(0x80, setup0) + udt(0x90, setup1) + udt(0xA0, setup2);
}

// Device information: six characters per frame, the first in bits 23-16, four frames.
QByteArray text(quint16 firstKey, const QByteArray& chars)
{
    QByteArray frames;
    const QByteArray padded = chars.leftJustified(24, '\0', true);
    for (int f = 0; f < 4; ++f) {
        quint64 high = 0;
        for (int i = 0; i < 6; ++i)
            high |= quint64(quint8(padded.at(f * 6 + i))) << (16 + 8 * i);
        frames += udt(quint16(firstKey + f), high);
    }
    return frames;
}
} // namespace

// Multi-frame answers of the radar: assembled per message and routed to the value
// signals.
class tst_UdtResponses : public QObject
{
    Q_OBJECT

private slots:
    void responses_data();
    void responses();
};

void tst_UdtResponses::responses_data()
{
    QTest::addColumn<QList<QByteArray>>("messages");
    QTest::addColumn<QStringList>("expected"); // the values reported, in order

    auto read = [](const char* name, QList<int> r, QStringList expected) {
        QTest::newRow(name) << QList<QByteArray>{readParam(r[0], r[1], r[2], r[3], r[4])}
                            << expected;
    };
    // group, paramNo, access code, status, value
    read("self-diagnostics keeps 16 bits", {150, 0, 2, 1, 0x1234003F}, {"selfDiagnostics 63"});
    read("self-diagnostics scaled is ignored", {150, 0, 3, 1, 1}, {});
    read("imitator mode, access 4", {151, 0, 4, 1, 0x102}, {"imitatorMode 2"});
    read("fake targets on", {0, 68, 2, 1, 5}, {"fakeTargets 1"});
    read("fake targets off", {0, 68, 2, 1, 0}, {"fakeTargets 0"});
    read("group 0 other param", {0, 40, 2, 1, 5}, {});
    read("frequency index", {65, 36, 2, 1, -7}, {"frequencyIndex -7"});
    read("sensitivity", {148, 4, 4, 1, 12}, {"sensitivity 12"});
    read("polygon usage keeps 8 bits", {70, 0, 2, 1, 0x1FF}, {"polygonUsage 255"});
    read("speed param 0 of polygon 2", {70, 36, 3, 1, -2500000}, {"speed 2 0 -2.5"});
    read("speed param, access 5", {70, 89, 5, 1, 1500000}, {"speed 7 3 1.5"});
    read("paramNo 36 plain is no treat number", {70, 36, 2, 1, 1}, {});
    read("vertex count of polygon 0", {70, 2, 2, 1, 0x104}, {"treat 0 0 4"});
    read("treat param 1 of polygon 7", {70, 25, 2, 1, 9}, {"treat 7 1 9"});
    read("treat number scaled is ignored", {70, 2, 3, 1, 4}, {});
    read("point param 9 of polygon 3", {71, 153, 3, 1, 12345678}, {"point 3 9 12.345678"});
    read("point param 191 is the last", {71, 191, 3, 1, 0}, {"point 7 15 0"});
    read("point param plain is ignored", {71, 153, 2, 1, 1}, {});
    read("calibration command", {254, 0, 2, 1, 3}, {"calibrationCommand 3"});
    read("calibration state", {254, 1, 4, 1, 9}, {"calibrationState 9"});
    read("calibration last param 2", {254, 10, 2, 1, 100}, {"calibrationLast 2 100"});
    read("calibration current param 4", {254, 20, 2, 1, -5}, {"calibrationCurr 4 -5"});
    read("calibration param 13 is nothing", {254, 13, 2, 1, 1}, {});
    read("calibration scaled is ignored", {254, 0, 3, 1, 1}, {});
    read("debug variable, any accepted access", {255, 77, 3, 1, 42}, {"debug 77 42"});
    read("access 1 is no read", {255, 1, 1, 1, 1}, {});
    read("access 6 is no read", {255, 1, 6, 1, 1}, {});
    read("status 0: no value follows", {65, 36, 2, 0, 5}, {});
    read("status is the low nibble only", {65, 36, 2, 0xF0, 5}, {});
    read("status nibble 15", {65, 36, 2, 0x0F, 5}, {"frequencyIndex 5"});
    read("unknown group", {12, 0, 2, 1, 5}, {});

    // Position: Y sign bit 62 and 18 bits at 61-44, X sign bit 42 and 18 bits at 41-24,
    // height sign bit 33 and 17 bits at 32-16; roll 63-48, altitude 47-32, azimuth
    // 31-16, above 180 degrees meaning negative.
    auto position = [](const char* name, quint64 s0, quint64 s1, quint64 s2, const char* expected) {
        QTest::newRow(name) << QList<QByteArray>{setup(s0, s1, s2)} << QStringList{expected};
    };
    position("offsets with signs", quint64(1) << 62 | quint64(350) << 44 | quint64(1234) << 24, 0,
             quint64(1) << 33 | quint64(650) << 16, "position -6.5 12.34 -3.5 0 0 0");
    position("18-bit offsets", quint64(0x3FFFF) << 44 | quint64(1) << 42 | quint64(0x3FFFF) << 24,
             0, quint64(0x1FFFF) << 16, "position 1310.71 -2621.43 2621.43 0 0 0");
    position("azimuth 18001 is -179.99", 0, quint64(18001) << 16, 0, "position 0 0 0 -179.99 0 0");
    position("azimuth 18000 is 180", 0, quint64(18000) << 16, 0, "position 0 0 0 180 0 0");
    position("roll 35000 and altitude 500", 0,
             quint64(35000) << 48 | quint64(500) << 32 | quint64(27000) << 16, 0,
             "position 0 0 0 -90 5 -10");
    position("bits beside the fields are not read",
             quint64(1) << 63 | quint64(1) << 43 | quint64(0xFF) << 16, 0,
             quint64(0x3) << 34 | quint64(0xFF) << 40, "position 0 0 0 0 0 0");

    QTest::newRow("hardware, 24 characters have no end mark")
        << QList<QByteArray>{text(0x6A, "ABCDEFGHIJKLMNOPQRSTUVWX")}
        << QStringList{"hardware [ABCDEFGHIJKLMNOPQRSTUVWX]"};
    QTest::newRow("firmware ends at the first zero")
        << QList<QByteArray>{text(0x33, QByteArray("fw 2.14\0garbage", 15))}
        << QStringList{"firmware [fw 2.14]"};
    QTest::newRow("firmware, empty")
        << QList<QByteArray>{text(0x33, "")} << QStringList{"firmware []"};

    // Each message starts with an empty cache: a response split over two is lost, and
    // the same keys in the next message are welcome.
    const QByteArray frequency = readParam(65, 36, 2, 1, 5), hardware = text(0x6A, "split");
    QTest::newRow("responses split over messages are lost") << QList<QByteArray>{
        udt(0x80) + udt(0x90), udt(0xA0),        frequency.left(22), frequency.mid(22),
        hardware.left(33),     hardware.mid(33), frequency} << QStringList{"frequencyIndex 5"};
    // Interleaved with other frames and in any order; decoded in a fixed order after
    // the message: position, parameter, hardware, firmware.
    QTest::newRow("several responses in one message")
        << QList<QByteArray>{text(0x33, "FW1") + R::frame(0x3ff, 0) + readParam(148, 4, 2, 1, 3)
                             + text(0x6A, "HW1") + R::frame(0x601, 7)
                             + udt(0xA0, quint64(500) << 16) + udt(0x90) + udt(0x80)}
        << QStringList{"position 5 0 0 0 0 0", "sensitivity 3", "hardware [HW1]", "firmware [FW1]"};
    // The second 0x80 is not accepted: the message is bad and the frames after it are
    // dropped, but the complete response cached before it is still decoded.
    QTest::newRow("a key twice spoils the rest of the message")
        << QList<QByteArray>{setup(0, 0, quint64(100) << 16) + udt(0x80) + frequency}
        << QStringList{"position 1 0 0 0 0 0"};
}

void tst_UdtResponses::responses()
{
    QFETCH(QList<QByteArray>, messages);
    QFETCH(QStringList, expected);
    ClientHarness h(0);
    QVERIFY(h.connect());
    ClientSignalLog log(h.client());
    for (const QByteArray& message : messages)
        QVERIFY(h.deliver(message));
    QCOMPARE(log.lines, expected);
}

QTEST_GUILESS_MAIN(tst_UdtResponses)
#include "tst_udtresponses.moc"
