#include "clientharness.h"
#include "clientsignallog.h"
#include "testrecords.h"

#include <QtTest>

#include <memory>

using R = TestRecords;

// Multi-frame answers of the radar: assembled per message and routed to the value
// signals.
class tst_UdtResponses : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readParamRouting_data();
    void readParamRouting();
    void radarSetup_data();
    void radarSetup();
    void deviceInfo_data();
    void deviceInfo();
    void responsesSplitOverMessagesAreLost();
    void severalResponsesInOneMessage();
    void duplicateKeySpoilsTheMessage();

private:
    QByteArray udt(quint16 key, quint64 high = 0) const;
    QByteArray readParam(int group, int paramNo, int access, int status, qint32 value) const;
    QByteArray setup(quint64 setup0, quint64 setup1, quint64 setup2) const;
    QByteArray text(quint16 firstKey, const QByteArray& chars) const;

    std::unique_ptr<ClientHarness> m_h;
    std::unique_ptr<ClientSignalLog> m_log;
};

void tst_UdtResponses::init()
{
    m_h = std::make_unique<ClientHarness>(0);
    QVERIFY(m_h->connect());
    m_log = std::make_unique<ClientSignalLog>(m_h->client());
}

void tst_UdtResponses::cleanup()
{
    m_log.reset();
    m_h.reset();
}

QByteArray tst_UdtResponses::udt(quint16 key, quint64 high) const
{
    return R::frame(m_h->ids().udt, high | key);
}

QByteArray tst_UdtResponses::readParam(int group, int paramNo, int access, int status,
                                       qint32 value) const
{
    return udt(0x2B1B, 0xABCD0000)
           + udt(0x2B1C, quint64(paramNo) << 56 | quint64(access) << 48 | quint64(group) << 40
                             | quint64(status) << 32)
           + udt(0x2B1D, quint64(quint32(value)) << 32);
}

QByteArray tst_UdtResponses::setup(quint64 setup0, quint64 setup1, quint64 setup2) const
{
    return udt(0x80, setup0) + udt(0x90, setup1) + udt(0xA0, setup2);
}

QByteArray tst_UdtResponses::text(quint16 firstKey, const QByteArray& chars) const
{
    // Six characters per frame: the first in bits 23-16, the sixth in bits 63-56.
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

void tst_UdtResponses::readParamRouting_data()
{
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("paramNo");
    QTest::addColumn<int>("access");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("expected"); // empty: ignored

    QTest::newRow("self-diagnostics keeps 16 bits")
        << 150 << 0 << 2 << 1 << 0x1234003F << "selfDiagnostics 63";
    QTest::newRow("self-diagnostics scaled is ignored") << 150 << 0 << 3 << 1 << 1 << "";
    QTest::newRow("imitator mode, access 4") << 151 << 0 << 4 << 1 << 0x102 << "imitatorMode 2";
    QTest::newRow("fake targets on") << 0 << 68 << 2 << 1 << 5 << "fakeTargets 1";
    QTest::newRow("fake targets off") << 0 << 68 << 2 << 1 << 0 << "fakeTargets 0";
    QTest::newRow("group 0 other param") << 0 << 40 << 2 << 1 << 5 << "";
    QTest::newRow("frequency index") << 65 << 36 << 2 << 1 << -7 << "frequencyIndex -7";
    QTest::newRow("sensitivity") << 148 << 4 << 4 << 1 << 12 << "sensitivity 12";
    QTest::newRow("polygon usage keeps 8 bits") << 70 << 0 << 2 << 1 << 0x1FF << "polygonUsage 255";
    QTest::newRow("speed param 0 of polygon 2")
        << 70 << 36 << 3 << 1 << -2500000 << "speed 2 0 -2.5";
    QTest::newRow("speed param, access 5") << 70 << 89 << 5 << 1 << 1500000 << "speed 7 3 1.5";
    QTest::newRow("paramNo 36 plain is no treat number") << 70 << 36 << 2 << 1 << 1 << "";
    QTest::newRow("vertex count of polygon 0") << 70 << 2 << 2 << 1 << 0x104 << "treat 0 0 4";
    QTest::newRow("treat number scaled is ignored") << 70 << 2 << 3 << 1 << 4 << "";
    QTest::newRow("point param 9 of polygon 3")
        << 71 << 153 << 3 << 1 << 12345678 << "point 3 9 12.345678";
    QTest::newRow("point param plain is ignored") << 71 << 153 << 2 << 1 << 1 << "";
    QTest::newRow("calibration command") << 254 << 0 << 2 << 1 << 3 << "calibrationCommand 3";
    QTest::newRow("calibration state") << 254 << 1 << 4 << 1 << 9 << "calibrationState 9";
    QTest::newRow("calibration last param 2")
        << 254 << 10 << 2 << 1 << 100 << "calibrationLast 2 100";
    QTest::newRow("calibration current param 4")
        << 254 << 20 << 2 << 1 << -5 << "calibrationCurr 4 -5";
    QTest::newRow("calibration param 13 is nothing") << 254 << 13 << 2 << 1 << 1 << "";
    QTest::newRow("calibration scaled is ignored") << 254 << 0 << 3 << 1 << 1 << "";
    QTest::newRow("debug variable, any accepted access")
        << 255 << 77 << 3 << 1 << 42 << "debug 77 42";
    QTest::newRow("debug variable, access 4") << 255 << 0 << 4 << 1 << -1 << "debug 0 -1";
    QTest::newRow("access 1 is no read") << 255 << 1 << 1 << 1 << 1 << "";
    QTest::newRow("access 6 is no read") << 255 << 1 << 6 << 1 << 1 << "";
    QTest::newRow("status 0: no value follows") << 65 << 36 << 2 << 0 << 5 << "";
    QTest::newRow("status is the low nibble only") << 65 << 36 << 2 << 0xF0 << 5 << "";
    QTest::newRow("status nibble 15") << 65 << 36 << 2 << 0x0F << 5 << "frequencyIndex 5";
    QTest::newRow("unknown group") << 12 << 0 << 2 << 1 << 5 << "";
}

void tst_UdtResponses::readParamRouting()
{
    QFETCH(int, group);
    QFETCH(int, paramNo);
    QFETCH(int, access);
    QFETCH(int, status);
    QFETCH(int, value);
    QFETCH(QString, expected);

    QVERIFY(m_h->deliver(readParam(group, paramNo, access, status, value)));
    QCOMPARE(m_log->lines, expected.isEmpty() ? QStringList() : QStringList{expected});
}

void tst_UdtResponses::radarSetup_data()
{
    QTest::addColumn<quint64>("setup0");
    QTest::addColumn<quint64>("setup1");
    QTest::addColumn<quint64>("setup2");
    QTest::addColumn<QString>("expected"); // height, x, y, azimuth, altitude, roll

    QTest::newRow("zero") << quint64(0) << quint64(0) << quint64(0) << "position 0 0 0 0 0 0";
    // Y: sign bit 62, 18 bits at 61-44; X: sign bit 42, 18 bits at 41-24.
    QTest::newRow("offsets with signs")
        << (quint64(1) << 62 | quint64(350) << 44 | quint64(1234) << 24) << quint64(0)
        << (quint64(1) << 33 | quint64(650) << 16) << "position -6.5 12.34 -3.5 0 0 0";
    QTest::newRow("18-bit offsets")
        << (quint64(0x3FFFF) << 44 | quint64(1) << 42 | quint64(0x3FFFF) << 24) << quint64(0)
        << (quint64(0x1FFFF) << 16) << "position 1310.71 -2621.43 2621.43 0 0 0";
    // Roll 63-48, altitude 47-32, azimuth 31-16; above 180 degrees means negative.
    QTest::newRow("azimuth 18001 is -179.99")
        << quint64(0) << (quint64(18001) << 16) << quint64(0) << "position 0 0 0 -179.99 0 0";
    QTest::newRow("azimuth 18000 is 180")
        << quint64(0) << (quint64(18000) << 16) << quint64(0) << "position 0 0 0 180 0 0";
    QTest::newRow("roll 35000 and altitude 500")
        << quint64(0) << (quint64(35000) << 48 | quint64(500) << 32 | quint64(27000) << 16)
        << quint64(0) << "position 0 0 0 -90 5 -10";
    QTest::newRow("bits beside the fields are not read")
        << (quint64(1) << 63 | quint64(1) << 43 | quint64(0xFF) << 16) << quint64(0)
        << (quint64(0x3) << 34 | quint64(0xFF) << 40) << "position 0 0 0 0 0 0";
}

void tst_UdtResponses::radarSetup()
{
    QFETCH(quint64, setup0);
    QFETCH(quint64, setup1);
    QFETCH(quint64, setup2);
    QFETCH(QString, expected);

    QVERIFY(m_h->deliver(setup(setup0, setup1, setup2)));
    QCOMPARE(m_log->lines, QStringList{expected});
}

void tst_UdtResponses::deviceInfo_data()
{
    QTest::addColumn<int>("firstKey");
    QTest::addColumn<QByteArray>("chars");
    QTest::addColumn<QString>("expected");

    QTest::newRow("hardware, short text")
        << 0x6A << QByteArray("ORVEX-R4 rev.B") << "hardware [ORVEX-R4 rev.B]";
    QTest::newRow("hardware, exactly 24 characters has no end mark")
        << 0x6A << QByteArray("ABCDEFGHIJKLMNOPQRSTUVWX") << "hardware [ABCDEFGHIJKLMNOPQRSTUVWX]";
    QTest::newRow("firmware ends at the first zero")
        << 0x33 << QByteArray("fw 2.14\0garbage", 15) << "firmware [fw 2.14]";
    QTest::newRow("firmware, empty") << 0x33 << QByteArray() << "firmware []";
}

void tst_UdtResponses::deviceInfo()
{
    QFETCH(int, firstKey);
    QFETCH(QByteArray, chars);
    QFETCH(QString, expected);
    QVERIFY(m_h->deliver(text(quint16(firstKey), chars)));
    QCOMPARE(m_log->lines, QStringList{expected});
}

void tst_UdtResponses::responsesSplitOverMessagesAreLost()
{
    QVERIFY(m_h->deliver(udt(0x80) + udt(0x90)));
    QVERIFY(m_h->deliver(udt(0xA0)));
    const QByteArray read = readParam(65, 36, 2, 1, 5);
    QVERIFY(m_h->deliver(read.left(22)));
    QVERIFY(m_h->deliver(read.mid(22)));
    const QByteArray hw = text(0x6A, "split");
    QVERIFY(m_h->deliver(hw.left(33)));
    QVERIFY(m_h->deliver(hw.mid(33)));
    QCOMPARE(m_log->lines, QStringList());

    // Each message starts with an empty cache: the same keys again are welcome.
    QVERIFY(m_h->deliver(read));
    QCOMPARE(m_log->lines, QStringList{"frequencyIndex 5"});
}

void tst_UdtResponses::severalResponsesInOneMessage()
{
    // Interleaved with other frames and in any order; decoded in a fixed order after
    // the message: position, parameter, hardware, firmware.
    QByteArray message = text(0x33, "FW1") + m_h->syncFrame() + readParam(148, 4, 2, 1, 3);
    message += text(0x6A, "HW1") + m_h->cycleFrame(7);
    message += udt(0xA0, quint64(500) << 16) + udt(0x90) + udt(0x80);
    QVERIFY(m_h->deliver(message));
    QCOMPARE(m_log->lines, (QStringList{"position 5 0 0 0 0 0", "sensitivity 3", "hardware [HW1]",
                                        "firmware [FW1]"}));
}

void tst_UdtResponses::duplicateKeySpoilsTheMessage()
{
    m_h->client()->setEmitStatsEnabled(true);
    QSignalSpy stats(m_h->client(), &IOrvexClient::frameStats);
    // The second 0x80 is not accepted: the message is bad and the frames after it are
    // dropped, but the complete response cached before it is still decoded.
    QVERIFY(m_h->deliver(setup(0, 0, quint64(100) << 16) + udt(0x80) + readParam(65, 36, 2, 1, 5)));
    QCOMPARE(m_log->lines, QStringList{"position 1 0 0 0 0 0"});
    QCOMPARE(stats.last(), (QVariantList{quint64(1), quint64(0)}));
}

QTEST_GUILESS_MAIN(tst_UdtResponses)
#include "tst_udtresponses.moc"
