#include "clientharness.h"

#include "testrecords.h"

#include <QDeadlineTimer>
#include <QSignalSpy>

ClientHarness::ClientHarness(int variant)
    : m_ids(VariantIds::of(variant))
    , m_server(std::make_unique<LoopbackServer>())
    , m_client(VariantIds::makeClient(variant))
{ }

ClientHarness::~ClientHarness()
{
    m_client.reset();
    m_server.reset();
}

bool ClientHarness::connect(int reconnectTimeoutMs)
{
    QSignalSpy connected(m_client.get(), &IOrvexClient::connected);
    if (!m_client->connectToServer(m_server->url(), reconnectTimeoutMs))
        return false;
    return (connected.count() > 0 || connected.wait(5000)) && m_server->waitForClient();
}

bool ClientHarness::deliver(const QByteArray& message)
{
    QSignalSpy finished(m_client.get(), &IOrvexClient::frameFinished);
    m_server->sendBinary(message);
    return finished.wait(5000);
}

bool ClientHarness::makeBusy()
{
    for (int i = 0; i < 3; ++i) {
        if (!deliver(syncFrame()))
            return false;
    }
    return m_client->radarState() == IOrvexClient::Busy;
}

bool ClientHarness::makeWorking()
{
    for (int i = 0; i < 3; ++i) {
        if (!deliver(cycleFrame(++m_cycle)))
            return false;
    }
    return m_client->radarState() == IOrvexClient::Working;
}

bool ClientHarness::answer(quint8 code)
{
    return deliver(TestRecords::ack(m_ids.ack, code));
}

bool ClientHarness::waitForSent(int count, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (m_server->binaryMessages.size() < count && !deadline.hasExpired())
        QSignalSpy(m_server.get(), &LoopbackServer::binaryReceived)
            .wait(int(deadline.remainingTime()));
    return m_server->binaryMessages.size() == count;
}

QByteArray ClientHarness::syncFrame() const
{
    return TestRecords::frame(m_ids.sync, 0);
}

QByteArray ClientHarness::cycleFrame(quint32 cycle) const
{
    return TestRecords::frame(m_ids.objectControl, TestRecords::counter(cycle));
}

QByteArray ClientHarness::objectMessage(const QDateTime& time, const QList<quint64>& objects) const
{
    QByteArray message = TestRecords::header(time) + syncFrame();
    for (quint64 payload : objects)
        message += TestRecords::frame(quint16(m_ids.objectMin + (payload >> 58)), payload);
    return message;
}
