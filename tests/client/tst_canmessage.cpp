#include "ackmessage.h"
#include "canmessage.h"

#include <QtTest>

#include <memory>

// Cutting CAN frames and acknowledgements off the radar's byte stream, and writing
// them back.
class tst_CanMessage : public QObject
{
    Q_OBJECT

private slots:
    void extract_data();
    void extract();
    void serializeRoundTrip_data();
    void serializeRoundTrip();
    void constructorCopiesStraightOrReversed();
    void ackExtract_data();
    void ackExtract();
};

void tst_CanMessage::extract_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("length");
    QTest::addColumn<quint64>("payload"); // read as one big-endian value of `length` bytes

    QTest::newRow("length 0 in exactly 3 bytes")
        << QByteArray::fromHex("061000") << true << 0x610 << 0 << quint64(0);
    QTest::newRow("full frame, id high byte first")
        << QByteArray::fromHex("04f2080102030405060708") << true << 0x4f2 << 8
        << quint64(0x0102030405060708);
    QTest::newRow("trailing bytes are not consumed")
        << QByteArray::fromHex("0601080102030405060708ffff") << true << 0x601 << 8
        << quint64(0x0102030405060708);
    QTest::newRow("short payload")
        << QByteArray::fromHex("00010355aa01") << true << 1 << 3 << quint64(0x55aa01);
    QTest::newRow("length byte 9 rejected")
        << QByteArray::fromHex("061009010203040506070809") << false << 0 << 0 << quint64(0);
    QTest::newRow("length byte 255 rejected")
        << QByteArray::fromHex("0610ff0102") << false << 0 << 0 << quint64(0);
    QTest::newRow("one byte short of length 8")
        << QByteArray::fromHex("06100801020304050607") << false << 0 << 0 << quint64(0);
    QTest::newRow("two bytes") << QByteArray::fromHex("0610") << false << 0 << 0 << quint64(0);
    QTest::newRow("empty") << QByteArray() << false << 0 << 0 << quint64(0);
}

void tst_CanMessage::extract()
{
    QFETCH(QByteArray, stream);
    QFETCH(bool, ok);
    QFETCH(int, id);
    QFETCH(int, length);
    QFETCH(quint64, payload);

    std::unique_ptr<CanMessage> message(CanMessage::extract(stream.constData(), stream.size()));
    QCOMPARE(message != nullptr, ok);
    if (!ok)
        return;
    QCOMPARE(int(message->id), id);
    QCOMPARE(int(message->length), length);
    QCOMPARE(message->streamSize(), length + 3);
    // The record holds the payload reversed: its first `length` bytes, read
    // little-endian, are the stream bytes read big-endian.
    quint64 recordValue = 0;
    for (int i = length - 1; i >= 0; --i)
        recordValue = recordValue << 8 | message->data[i];
    QCOMPARE(recordValue, payload);
}

void tst_CanMessage::serializeRoundTrip_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::newRow("object frame") << QByteArray::fromHex("0610081122334455667788");
    QTest::newRow("zero length") << QByteArray::fromHex("03ff00");
    QTest::newRow("odd length") << QByteArray::fromHex("0500050102030405");
}

void tst_CanMessage::serializeRoundTrip()
{
    QFETCH(QByteArray, stream);
    std::unique_ptr<CanMessage> message(CanMessage::extract(stream.constData(), stream.size()));
    QVERIFY(message);
    QCOMPARE(message->serialize().toHex(), stream.toHex());
}

void tst_CanMessage::constructorCopiesStraightOrReversed()
{
    const QByteArray bytes = QByteArray::fromHex("0102030405060708");
    // Builders assemble the payload already in record order: the wire sees it reversed.
    const CanMessage straight(0x4f2, 8, bytes.constData(), false);
    QCOMPARE(straight.serialize().toHex(), QByteArray("04f2080807060504030201"));
    const CanMessage reversed(0x4f2, 8, bytes.constData(), true);
    QCOMPARE(reversed.serialize().toHex(), QByteArray("04f2080102030405060708"));
    QCOMPARE(reversed.payload(), quint64(0x0102030405060708));

    const CanMessage clamped(0x10, 12, QByteArray(12, '\x7f').constData(), true);
    QCOMPARE(int(clamped.length), 8);
    const CanMessage nullData(0x10, 8, nullptr, true);
    QCOMPARE(nullData.payload(), quint64(0));
    QCOMPARE(CanMessage::fromPayload(0x3a0, 0x2000ff0000000000).serialize().toHex(),
             QByteArray("03a0082000ff0000000000"));
}

void tst_CanMessage::ackExtract_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("byte2");
    QTest::addColumn<int>("code");

    QTest::newRow("accepted") << QByteArray::fromHex("04f00000") << true << 0 << 0;
    QTest::newRow("busy, byte 2 carried") << QByteArray::fromHex("04f008ff") << true << 8 << 255;
    QTest::newRow("error code with trailing data")
        << QByteArray::fromHex("04f0000706100800") << true << 0 << 7;
    QTest::newRow("id not in the list") << QByteArray::fromHex("03f00000") << false << 0 << 0;
    QTest::newRow("three bytes") << QByteArray::fromHex("04f000") << false << 0 << 0;
}

void tst_CanMessage::ackExtract()
{
    QFETCH(QByteArray, stream);
    QFETCH(bool, ok);
    QFETCH(int, byte2);
    QFETCH(int, code);

    const QList<quint16> ids{0x4f0};
    std::unique_ptr<AckMessage> ack(AckMessage::extract(stream.constData(), stream.size(), ids));
    QCOMPARE(ack != nullptr, ok);
    QVERIFY(!AckMessage::extract(stream.constData(), stream.size(), {})); // empty list: never
    if (!ok)
        return;
    QCOMPARE(int(ack->id), 0x4f0);
    QCOMPARE(int(ack->byte2), byte2);
    QCOMPARE(int(ack->resultCode), code);
    QCOMPARE(ack->serialize().toHex(), stream.left(4).toHex());
}

QTEST_APPLESS_MAIN(tst_CanMessage)
#include "tst_canmessage.moc"
