// orvex-fuzz-seed-recorder: records what a radar server (the simulator) sends and writes
// it as seed inputs of the receive-path fuzz target, in ServerMessageStream's layout.
// A radar client connected alongside asks the radar everything it can answer, so the
// record holds acknowledgements and every kind of response besides the radar's cycles;
// the recorder's own socket asks the server to switch protocols, once properly and
// once with broken text, for the server's JSON answers.
//
// Usage: orvex-fuzz-seed-recorder URL VARIANT SECONDS OUTDIR [PREFIX]

#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "servermessagestream.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>
#include <QWebSocket>

#include <cstdio>
#include <memory>

namespace {

constexpr int MessagesPerSeed = 6; // enough for the radar state to settle

void askEverything(IOrvexSerialConnectionClient* c)
{
    c->sendCmdGetHardwareInfo();
    c->sendCmdGetFirmwareInfo();
    c->sendCmdSelfDiagnostics();
    c->sendCmdGetPosition();
    c->sendCmdSetPosition(5.5, -1.25, 3.0, -12.5, 4.0, 0.25);
    c->sendCmdGetImitatorMode();
    c->sendCmdGetFakeTargetsMode();
    c->sendCmdGetRadarSensitivity();
    c->sendCmdGetFrequencyIndex();
    c->sendCmdGetPolygonUsage();
    c->sendCmdGetPolygonTreatParam(1, 0);
    c->sendCmdGetPolygonSpeedParam(2, 1);
    c->sendCmdGetPolygonPointParam(0, 9);
    c->sendCmdGetCalibrationCommand();
    c->sendCmdGetCalibrationState();
    c->sendCmdGetCalibrationLastParam(2);
    c->sendCmdGetCalibrationCurrParam(3);
    c->sendCmdGetDebugVariableValue(5);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 5) {
        std::fprintf(stderr, "usage: %s URL VARIANT SECONDS OUTDIR [PREFIX]\n", argv[0]);
        return 2;
    }
    const QUrl url(args.at(1));
    const int variant = args.at(2).toInt();
    const int seconds = args.at(3).toInt();
    const QDir out(args.at(4));
    const QString prefix = args.size() > 5 ? args.at(5) : QStringLiteral("sim");

    QVector<ServerMessageStream::Message> recorded;
    QWebSocket socket;
    QObject::connect(&socket, &QWebSocket::binaryMessageReceived, [&](const QByteArray& m) {
        recorded.append({false, m});
    });
    QObject::connect(&socket, &QWebSocket::textMessageReceived, [&](const QString& m) {
        recorded.append({true, m.toUtf8()});
    });
    QObject::connect(&socket, &QWebSocket::connected, [&] {
        socket.sendTextMessage(
            QStringLiteral(R"({"command": 2, "radar_protocol": %1})").arg(variant));
        socket.sendTextMessage(QStringLiteral(R"({"command": 2, "radar_protocol": 7})"));
        socket.sendTextMessage(QStringLiteral("{broken"));
    });
    socket.open(url);

    std::unique_ptr<IOrvexSerialConnectionClient> client;
    if (variant == 1)
        client = std::make_unique<OrvexSerialPakorProtocolClient>();
    else
        client = std::make_unique<OrvexSerialDunvelProtocolClient>();
    QObject::connect(client.get(), &IOrvexClient::radarStateChanged, [&](int state) {
        if (IOrvexClient::isWorking(state))
            askEverything(client.get());
    });
    client->connectToServer(url);

    QTimer::singleShot(seconds * 1000, &app, &QCoreApplication::quit);
    app.exec();

    // Overlapping windows of consecutive messages, each with its own setup.
    int written = 0;
    for (int first = 0; first + MessagesPerSeed <= recorded.size(); first += MessagesPerSeed / 2) {
        const quint8 setup = quint8(variant == 1 ? ServerMessageStream::PakorVariant : 0)
                             | quint8(written % 2 ? ServerMessageStream::EmitStatistics : 0)
                             | quint8(written % 3 ? ServerMessageStream::QueuedCommands : 0);
        QFile file(out.filePath(
            QStringLiteral("%1-%2").arg(prefix).arg(written, 3, 10, QLatin1Char('0'))));
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(ServerMessageStream::encode(setup, recorded.mid(first, MessagesPerSeed)));
        ++written;
    }
    std::printf("%d messages recorded, %d seeds written\n", int(recorded.size()), written);
    return recorded.isEmpty() ? 1 : 0;
}
