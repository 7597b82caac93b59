// Throughput of the client's receive path: time-stamp header, cutting, decoding,
// object store and re-broadcast to one connected receiver, for messages shaped like
// a busy radar cycle (synchronization, sensor control, object control, 64 objects).
//
// Usage: bench_clientreceive [messages]   (default 200000)

#include "orvexserialdunvelprotocolclient.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QMetaMethod>
#include <QtEndian>
#include <QTextStream>
#include <QWebSocket>
#include <QWebSocketServer>

#include <cmath>
#include <cstdio>

namespace {

using Client = OrvexSerialDunvelProtocolClient;
constexpr int ObjectsPerMessage = 64;

void appendFrame(QByteArray& out, quint16 id, quint64 payload)
{
    char bytes[11];
    bytes[0] = char(id >> 8);
    bytes[1] = char(id & 0xFF);
    bytes[2] = 8;
    qToBigEndian(payload, bytes + 3);
    out.append(bytes, sizeof bytes);
}

QByteArray header(const QDateTime& t)
{
    QByteArray h("#DT");
    const QDate d = t.date();
    const QTime c = t.time();
    h.append(char(d.day())).append(char(d.month()));
    h.append(char(d.year() & 0xFF)).append(char(d.year() >> 8));
    h.append(char(c.hour())).append(char(c.minute())).append(char(c.second()));
    h.append(char(c.msec() & 0xFF)).append(char(c.msec() >> 8));
    return h;
}

// One radar cycle: vehicles spread over 250 m of a four-lane road.
QByteArray radarMessage(quint32 cycle, const QDateTime& time)
{
    QByteArray m = header(time);
    appendFrame(m, Client::SynchronizationCanId, 0);
    appendFrame(m, Client::SensorControlCanId, quint64(cycle * 100u) << 32);
    appendFrame(m, Client::ObjectControlCanId, quint64(cycle) << 32);
    for (int id = 0; id < ObjectsPerMessage; ++id) {
        const double x = std::fmod(id * 3.9 + cycle * 2.5, 250.0);
        const double y = (id % 4 - 1.5) * 3.5;
        const quint64 payload = quint64(id) << 58 | quint64(20 + id % 40) << 50
                                | quint64(1024) << 39 | quint64(1024 + 250) << 28
                                | quint64(std::lround(y / 0.064) + 8192) << 14
                                | quint64(std::lround(x / 0.064) + 8192);
        appendFrame(m, quint16(Client::RoadObjectCanIdMin + id), payload);
    }
    return m;
}

// The one connected receiver: what a view does least, taking the values.
class Receiver : public QObject
{
public:
    void onObject(quint8 id, double xSpeed, double ySpeed, double xRange, double yRange,
                  double length, const QDateTime& lastDetected)
    {
        ++objects;
        checksum += id + xSpeed + ySpeed + xRange + yRange + length;
        lastTime = lastDetected;
    }
    quint64 objects = 0;
    double checksum = 0;
    QDateTime lastTime;
};

void report(const char* what, int messages, qint64 bytes, qint64 nsecs, quint64 objects)
{
    const double seconds = nsecs / 1e9;
    std::printf("%-34s %8d messages %7.1f MB  %8.3f s  %10.0f msg/s  %7.1f MB/s  %6.2f us/msg"
                "  (%llu objects out)\n",
                what, messages, bytes / 1e6, seconds, messages / seconds, bytes / 1e6 / seconds,
                nsecs / 1e3 / messages, static_cast<unsigned long long>(objects));
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : 200000;

    // Distinct message contents, cycled, so the decoder sees changing data.
    const QDateTime start(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    QVector<QByteArray> messages;
    for (int i = 0; i < 1000; ++i)
        messages.append(radarMessage(quint32(i + 1), start.addMSecs(100 * i)));
    const qint64 messageSize = messages.first().size();

    // 1. The receive path alone: the WebSocket's message handed straight to the slot.
    {
        Client client;
        Receiver receiver;
        QObject::connect(&client, &IOrvexClient::objectData, &receiver, &Receiver::onObject);
        const QMetaObject* meta = client.metaObject();
        const QMetaMethod receive = meta->method(meta->indexOfSlot(
            QMetaObject::normalizedSignature("onServerDataReceived(QByteArray)")));
        auto feed = [&](int n) {
            for (int i = 0; i < n; ++i)
                receive.invoke(&client, Qt::DirectConnection,
                               Q_ARG(QByteArray, messages.at(i % messages.size())));
        };
        feed(1000); // warm up and reach the Working state
        receiver.objects = 0;
        QElapsedTimer clock;
        clock.start();
        feed(count);
        const qint64 ns = clock.nsecsElapsed();
        report("receive path (direct)", count, messageSize * count, ns, receiver.objects);
        if (client.radarState() != IOrvexClient::Working)
            std::printf("warning: radar state %d, objects were not broadcast\n",
                        client.radarState());
    }

    // 2. End to end over loopback: a WebSocket server in this process sends, the
    // client receives (both sides share the one core).
    {
        QWebSocketServer server(QStringLiteral("bench"), QWebSocketServer::NonSecureMode);
        server.listen(QHostAddress::LocalHost, 0);
        Client client;
        Receiver receiver;
        QObject::connect(&client, &IOrvexClient::objectData, &receiver, &Receiver::onObject);
        QWebSocket* peer = nullptr;
        QObject::connect(&server, &QWebSocketServer::newConnection,
                         [&] { peer = server.nextPendingConnection(); });
        client.connectToServer(QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(server.serverPort())));
        while (!peer || !client.isConnected())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);

        const int n = count / 4;
        quint64 finished = 0;
        QObject::connect(&client, &IOrvexClient::frameFinished, [&] { ++finished; });
        QElapsedTimer clock;
        clock.start();
        int sent = 0;
        while (finished < quint64(n)) {
            // Keep a modest backlog in flight, as a serial link would.
            while (sent < n && sent - qint64(finished) < 64)
                peer->sendBinaryMessage(messages.at(sent++ % messages.size()));
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        const qint64 ns = clock.nsecsElapsed();
        report("loopback WebSocket (end to end)", n, messageSize * n, ns, receiver.objects);
    }
    std::printf("message size %lld bytes, %d objects per message\n",
                static_cast<long long>(messageSize), ObjectsPerMessage);
    return 0;
}
