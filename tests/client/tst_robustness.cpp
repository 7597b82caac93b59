#include "clientharness.h"
#include "testrecords.h"

#include <QRandomGenerator>
#include <QtTest>

#include <memory>

using R = TestRecords;

// Nothing the radar server sends may crash, hang or leak the client. Each scenario
// throws one kind of spoilt stream at a connected client and then checks that a good
// message is still decoded as it should be. (Bad JSON: see tst_serverlink.)
class tst_Robustness : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void badStreams_data();
    void badStreams();

private:
    std::unique_ptr<ClientHarness> m_h;
};

namespace {
// How a scenario spoils the radar's records; `good` is a valid message to start from.
enum Spoiling { RandomRecords, FlippedBytes, EveryTruncation, Huge };
} // namespace

void tst_Robustness::init()
{
    const int variant = QString(QTest::currentDataTag()).startsWith("SerP") ? 1 : 0;
    m_h = std::make_unique<ClientHarness>(variant);
    QVERIFY(m_h->connect());
}

void tst_Robustness::cleanup()
{
    m_h.reset();
}

void tst_Robustness::badStreams_data()
{
    QTest::addColumn<int>("spoiling");
    QTest::newRow("SerD: random records with random lengths") << int(RandomRecords);
    QTest::newRow("SerP: random records with random lengths") << int(RandomRecords);
    QTest::newRow("SerD: bytes flipped") << int(FlippedBytes);
    QTest::newRow("SerD: every truncation of a message") << int(EveryTruncation);
    // A million acknowledgements with nothing in flight, a million zero-length sync
    // frames, and nothing but header marks.
    QTest::newRow("SerD: 4 MiB messages") << int(Huge);
}

void tst_Robustness::badStreams()
{
    QFETCH(int, spoiling);
    QRandomGenerator rng(42 + spoiling);
    const VariantIds& ids = m_h->ids();
    QByteArray good
        = R::header(QDateTime::currentDateTimeUtc()) + m_h->syncFrame() + m_h->cycleFrame(1);
    for (int i = 0; i < 32; ++i)
        good += R::frame(quint16(ids.objectMin + i), R::roadObjectAt(quint8(i), i, 1));
    good += R::ack(ids.ack, 7) + R::frame(ids.udt, 0x2B1C) + R::frame(ids.sensor, 0);

    QList<QByteArray> messages;
    if (spoiling == Huge) {
        const int size = 4 * 1024 * 1024;
        messages << R::ack(ids.ack, 0).repeated(size / 4) << R::hex("03ff00").repeated(size / 3)
                 << QByteArray(size, '#');
    }
    for (int cut = 0; spoiling == EveryTruncation && cut <= good.size(); ++cut)
        messages << good.left(cut);
    const quint16 known[] = {ids.sync,      ids.sensor, ids.objectControl, ids.objectMin,
                             ids.objectMax, ids.udt,    ids.ack,           ids.setup};
    for (int m = 0; spoiling <= FlippedBytes && m < 300; ++m) {
        QByteArray message = good;
        switch (spoiling) {
        case RandomRecords:
            message = rng.bounded(3) ? QByteArray() : R::header(QDateTime::currentDateTimeUtc());
            for (int r = rng.bounded(12); r > 0; --r) {
                const quint16 id = known[rng.bounded(8)];
                const int length = rng.bounded(0, 11); // 9 and 10 are invalid
                message.append(char(id >> 8)).append(char(id & 0xFF)).append(char(length));
                for (int i = rng.bounded(2) ? qMin(length, 8) : rng.bounded(1, 9); i > 0; --i)
                    message.append(char(rng.bounded(256)));
            }
            break;
        case FlippedBytes:
            for (int k = 0; k < 1 + rng.bounded(4); ++k)
                message[rng.bounded(message.size())] = char(rng.bounded(256));
            break;
        }
        messages << message;
    }

    QSignalSpy finished(m_h->client(), &IOrvexClient::frameFinished);
    QSignalSpy steps(m_h->client(), &IOrvexClient::radarCommandStateChanged);
    for (const QByteArray& message : messages)
        m_h->server().sendBinary(message);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), messages.size(), 20000);
    QCOMPARE(steps.count(), 0); // acknowledgements with nothing in flight are ignored

    // Still connected, and a good message decodes as it should.
    QSignalSpy cycles(m_h->client(), &IOrvexClient::cycleNumber);
    QVERIFY(m_h->deliver(R::header(QDateTime::currentDateTimeUtc()) + m_h->cycleFrame(5000)));
    QVERIFY(m_h->client()->isConnected());
    QCOMPARE(cycles, QList<QVariantList>{{quint64(5000)}});
}

QTEST_GUILESS_MAIN(tst_Robustness)
#include "tst_robustness.moc"
