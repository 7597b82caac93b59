#pragma once

#include "loopbackserver.h"
#include "variantids.h"

#include <QByteArray>
#include <QDateTime>

#include <memory>

// A protocol client of one variant, connected to its own loopback radar server.
class ClientHarness
{
public:
    explicit ClientHarness(int variant = 0);
    ~ClientHarness();

    IOrvexSerialConnectionClient* client() const { return m_client.get(); }
    LoopbackServer& server() { return *m_server; }
    const VariantIds& ids() const { return m_ids; }

    bool connect(int reconnectTimeoutMs = 1000);
    // Sends one binary message from the server and waits until the client finished it.
    bool deliver(const QByteArray& message);
    // Sends three messages that make the client publish Busy (sync frames only) or
    // Working (advancing cycle numbers).
    bool makeBusy();
    bool makeWorking();
    // Answers the command in flight with an acknowledgement carrying `code`.
    bool answer(quint8 code);
    // Waits until the server has received exactly `count` binary messages.
    bool waitForSent(int count, int timeoutMs = 3000);

    QByteArray syncFrame() const;
    QByteArray cycleFrame(quint32 cycle) const;
    // A message stamped with the given time; the payloads are road objects.
    QByteArray objectMessage(const QDateTime& time, const QList<quint64>& objects) const;

private:
    const VariantIds& m_ids;
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<IOrvexSerialConnectionClient> m_client;
    quint32 m_cycle = 1000;
};
