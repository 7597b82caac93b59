// orvex-radar-observer: connects to a radar server the way the application does and
// prints what its radar client sees, one line per event, for scripts that watch a
// radar link (the soak test). Each line: milliseconds since the epoch, an event name
// and its values:
//   <ms> connected | disconnected | notconnected
//   <ms> receiving    (the third radar message on this connection has been decoded:
//                      the state printed last is now current, changed or not)
//   <ms> state <radar state: -1 bad data, 0 offline, 1 busy, 2 working>
//   <ms> command <command> <command state> <error>
// See --help.

#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

void print(const QString& event)
{
    std::printf("%lld %s\n", static_cast<long long>(QDateTime::currentMSecsSinceEpoch()),
                qPrintable(event));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvex-radar-observer"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Watches a radar server's link with the application's radar client and prints its "
        "events with time stamps."));
    parser.addHelpOption();
    const QCommandLineOption url("url", "Radar server (default ws://127.0.0.1:7578/).", "url",
                                 QStringLiteral("ws://127.0.0.1:7578/"));
    const QCommandLineOption variant("variant", "Protocol variant: 0 = SerD, 1 = SerP.", "n",
                                     QStringLiteral("0"));
    const QCommandLineOption reconnect(
        "reconnect-ms", "Delay before reconnecting (default 2000, as the application).", "ms",
        QStringLiteral("2000"));
    const QCommandLineOption poll("poll-ms",
                                  "Ask the radar's position this often while it works (0: never).",
                                  "ms", QStringLiteral("0"));
    parser.addOptions({url, variant, reconnect, poll});
    parser.process(app);

    std::unique_ptr<IOrvexSerialConnectionClient> client;
    if (parser.value(variant) == QLatin1String("1"))
        client = std::make_unique<OrvexSerialPakorProtocolClient>();
    else
        client = std::make_unique<OrvexSerialDunvelProtocolClient>();

    using C = IOrvexClient;
    int messagesOnLink = 0;
    QObject::connect(client.get(), &C::connected, [&messagesOnLink] {
        messagesOnLink = 0;
        print(QStringLiteral("connected"));
    });
    // The radar state needs three equal messages to change; a state that stays the same
    // across a reconnection prints nothing, so say when it has had its chance.
    QObject::connect(client.get(), &C::frameFinished, [&messagesOnLink] {
        if (++messagesOnLink == 3)
            print(QStringLiteral("receiving"));
    });
    QObject::connect(client.get(), &C::disconnected, [] { print(QStringLiteral("disconnected")); });
    QObject::connect(client.get(), &C::notconnected, [] { print(QStringLiteral("notconnected")); });
    QObject::connect(client.get(), &C::radarStateChanged,
                     [](int state) { print(QStringLiteral("state %1").arg(state)); });
    QObject::connect(
        client.get(), &C::radarCommandStateChanged, [](int command, int state, int error) {
            print(QStringLiteral("command %1 %2 %3").arg(command).arg(state).arg(error));
        });

    QTimer pollTimer;
    const int pollMs = parser.value(poll).toInt();
    if (pollMs > 0) {
        QObject::connect(&pollTimer, &QTimer::timeout, client.get(), [&client] {
            if (C::isWorking(client->radarState()) && client->lastRadarCommand() == 0)
                client->sendCmdGetPosition();
        });
        pollTimer.start(pollMs);
    }

    int error = 0;
    if (!client->connectToServer(QUrl(parser.value(url)), parser.value(reconnect).toInt(),
                                 &error)) {
        std::fprintf(stderr, "orvex-radar-observer: cannot connect to %s (%d)\n",
                     qPrintable(parser.value(url)), error);
        return 1;
    }
    return app.exec();
}
