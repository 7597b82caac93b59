#include "clientharness.h"
#include "testrecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QtTest>

#include <memory>

using R = TestRecords;

// Nothing the radar server sends may crash, hang or leak the client. Each scenario
// throws one kind of bad input at a connected client and then checks that a good
// message is still decoded as it should be.
class tst_Robustness : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Random bytes: the cutter must stop at the first record it cannot take.
    void randomGarbage_data();
    void randomGarbage();
    // Valid messages with bytes flipped, cut short or glued together.
    void mutatedMessages();
    // Very large messages: a 4 MiB run of acknowledgements and of zero-length frames.
    void hugeMessages();
    // Records that claim more than they carry, at every possible cut.
    void everyTruncation();
    // Text that is not JSON, JSON of every shape, values of the wrong types.
    void hostileJson();

private:
    bool stillDecodes();

    std::unique_ptr<ClientHarness> m_h;
    quint32 m_cycle = 0;
};

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

bool tst_Robustness::stillDecodes()
{
    QSignalSpy cycles(m_h->client(), &IOrvexClient::cycleNumber);
    m_h->client()->setEmitStatsEnabled(true);
    QSignalSpy stats(m_h->client(), &IOrvexClient::frameStats);
    const quint32 cycle = ++m_cycle + 5000;
    if (!m_h->deliver(R::header(QDateTime::currentDateTimeUtc()) + m_h->cycleFrame(cycle)))
        return false;
    return m_h->client()->isConnected() && cycles.count() == 1
           && cycles.first().at(0).toULongLong() == cycle && stats.count() == 1;
}

void tst_Robustness::randomGarbage_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::newRow("SerD seed 1") << 1u;
    QTest::newRow("SerD seed 2") << 2u;
    QTest::newRow("SerP seed 3") << 3u;
}

void tst_Robustness::randomGarbage()
{
    QFETCH(quint32, seed);
    QRandomGenerator rng(seed);
    const VariantIds& ids = m_h->ids();
    const quint16 known[] = {ids.sync,      ids.sensor, ids.objectControl, ids.objectMin,
                             ids.objectMax, ids.udt,    ids.ack,           ids.setup};
    QSignalSpy finished(m_h->client(), &IOrvexClient::frameFinished);
    const int messages = 400;
    for (int m = 0; m < messages; ++m) {
        QByteArray message;
        const int records = rng.bounded(0, 12);
        for (int r = 0; r < records; ++r) {
            // Mostly plausible records with random lengths and payloads, some noise.
            if (rng.bounded(6) == 0) {
                QByteArray noise(rng.bounded(1, 9), Qt::Uninitialized);
                for (char& b : noise)
                    b = char(rng.bounded(256));
                message += noise;
                continue;
            }
            const quint16 id = known[rng.bounded(int(sizeof known / sizeof *known))];
            const int length = rng.bounded(0, 11); // 9 and 10 are invalid
            message.append(char(id >> 8)).append(char(id & 0xFF)).append(char(length));
            for (int i = 0; i < qMin(length, 8); ++i)
                message.append(char(rng.bounded(256)));
        }
        if (rng.bounded(3) == 0)
            message.prepend(R::header(QDateTime::currentDateTimeUtc()));
        m_h->server().sendBinary(message);
    }
    while (finished.count() < messages)
        QVERIFY(finished.wait(5000));
    QVERIFY(stillDecodes());
}

void tst_Robustness::mutatedMessages()
{
    QRandomGenerator rng(42);
    QByteArray good = R::header(QDateTime::currentDateTimeUtc()) + m_h->syncFrame()
                      + m_h->cycleFrame(1) + R::frame(m_h->ids().sensor, 0);
    for (int i = 0; i < 32; ++i)
        good += R::frame(quint16(m_h->ids().objectMin + i), R::roadObjectAt(quint8(i), i, 1));
    good += R::ack(m_h->ids().ack, 7) + R::frame(m_h->ids().udt, 0x2B1C);

    QSignalSpy finished(m_h->client(), &IOrvexClient::frameFinished);
    int sent = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray message = good;
        switch (round % 3) {
        case 0: // flip a few bytes
            for (int k = 0; k < 1 + rng.bounded(4); ++k)
                message[rng.bounded(message.size())] = char(rng.bounded(256));
            break;
        case 1: // cut anywhere
            message.truncate(rng.bounded(message.size()));
            break;
        case 2: // glue a cut message to a fresh one
            message = message.left(rng.bounded(message.size())) + good.mid(12);
            break;
        }
        m_h->server().sendBinary(message);
        ++sent;
    }
    while (finished.count() < sent)
        QVERIFY(finished.wait(5000));
    QVERIFY(stillDecodes());
}

void tst_Robustness::hugeMessages()
{
    QSignalSpy finished(m_h->client(), &IOrvexClient::frameFinished);
    QSignalSpy steps(m_h->client(), &IOrvexClient::radarCommandStateChanged);
    const int size = 4 * 1024 * 1024;
    // A million acknowledgements with nothing in flight: each is ignored.
    m_h->server().sendBinary(R::ack(m_h->ids().ack, 0).repeated(size / 4));
    // A million zero-length sync frames: every one is rejected at the first.
    m_h->server().sendBinary(QByteArray::fromHex("03ff00").repeated(size / 3));
    // Nothing but header marks.
    m_h->server().sendBinary(QByteArray(size, '#'));
    while (finished.count() < 3)
        QVERIFY(finished.wait(20000));
    QCOMPARE(steps.count(), 0);
    QVERIFY(stillDecodes());
}

void tst_Robustness::everyTruncation()
{
    QByteArray full = m_h->syncFrame() + m_h->cycleFrame(9) + R::ack(m_h->ids().ack, 0)
                      + R::frame(m_h->ids().udt, 0x80);
    QSignalSpy finished(m_h->client(), &IOrvexClient::frameFinished);
    for (int cut = 0; cut <= full.size(); ++cut)
        m_h->server().sendBinary(full.left(cut));
    while (finished.count() < full.size() + 1)
        QVERIFY(finished.wait(5000));
    QVERIFY(stillDecodes());
}

void tst_Robustness::hostileJson()
{
    QSignalSpy results(m_h->client(), &IOrvexClient::serverCommandResult);
    QStringList texts{
        QString(),
        QStringLiteral("{"),
        QStringLiteral("null"),
        QStringLiteral("\"text\""),
        QStringLiteral("{\"command\":null,\"result\":null}"),
        QStringLiteral("{\"command\":1e300,\"result\":-1e300,\"server_state\":\"5\"}"),
        QStringLiteral("{\"command\":2,\"result\":0,\"radar_protocol\":{\"a\":1}}"),
        QStringLiteral("{\"command\":1,\"result\":0,\"rsp_server_url\":[1,2],\"port_name\":7}"),
        QString::fromUtf8("{\"command\":1,\"result\":0,\"port_name\":\"\xE2\x9C\x93\"}"),
        QString(200000, QLatin1Char('[')),
        QStringLiteral("{\"command\":1,\"result\":0,\"comment\":\"%1\"}")
            .arg(QString(1 << 20, QLatin1Char('x'))),
    };
    for (const QString& text : texts)
        m_h->server().sendText(text);
    while (results.count() < texts.size())
        QVERIFY(results.wait(5000));
    // Every message got exactly one result; the link survived them all.
    QCOMPARE(results.count(), texts.size());
    QVERIFY(stillDecodes());
}

QTEST_GUILESS_MAIN(tst_Robustness)
#include "tst_robustness.moc"
