#include "simoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cmath>
#include <cstdio>

namespace {

bool toNumber(const QString& text, qint64 low, qint64 high, qint64& value)
{
    bool ok = false;
    value = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                ? text.mid(2).toLongLong(&ok, 16)
                : text.toLongLong(&ok, 10);
    return ok && value >= low && value <= high;
}

bool seconds(const QCommandLineParser& parser, const QString& name, double& value, QString& error)
{
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    value = parser.value(name).toDouble(&ok);
    if (!ok || !std::isfinite(value) || value < 0) {
        error = QStringLiteral("--%1 wants a number of seconds").arg(name);
        return false;
    }
    return true;
}

bool parseRecordReplay(const QCommandLineParser& parser, SimOptions& options, QString& error)
{
    options.recordFile = parser.value("record");
    options.replayFile = parser.value("replay");
    options.loop = parser.isSet("loop");
    if (parser.isSet("proxy")) {
        options.proxyUrl = QUrl(parser.value("proxy"), QUrl::StrictMode);
        const QString scheme = options.proxyUrl.scheme();
        if (!options.proxyUrl.isValid() || options.proxyUrl.host().isEmpty()
            || (scheme != QLatin1String("ws") && scheme != QLatin1String("wss"))) {
            error = QStringLiteral("--proxy wants a radar server URL such as ws://HOST:PORT/");
            return false;
        }
    }
    if (parser.isSet("replay") && (parser.isSet("proxy") || parser.isSet("record"))) {
        error = QStringLiteral("--replay serves a recording; it cannot also relay or record");
        return false;
    }
    for (const char* name : {"speed", "loop", "from", "to"}) {
        if (parser.isSet(name) && !parser.isSet("replay")) {
            error = QStringLiteral("--%1 goes with --replay").arg(QLatin1String(name));
            return false;
        }
    }
    bool ok = true;
    options.speed = parser.value("speed").toDouble(&ok);
    if (!ok || !(options.speed >= 0.1 && options.speed <= 100)) {
        error = QStringLiteral("--speed wants a factor from 0.1 to 100");
        return false;
    }
    if (!seconds(parser, "from", options.replayFrom, error)
        || !seconds(parser, "to", options.replayTo, error)) {
        return false;
    }
    if (parser.isSet("to") && options.replayTo <= options.replayFrom) {
        error = QStringLiteral("--to must lie after --from");
        return false;
    }
    return true;
}

} // namespace

bool SimOptions::parse(const QStringList& arguments, SimOptions& options, QString& error,
                       bool& exitNow)
{
    exitNow = false;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Radar server simulator for the Orvex road radar.\n"
        "Speaks the radar server's WebSocket protocol (JSON server commands, binary CAN "
        "records with the radar's time-stamp header) and simulates a radar watching traffic "
        "on a multi-lane road, answering configuration and service commands as the radar "
        "does. Fault options make it misbehave in the ways a real installation can.\n"
        "\n"
        "It also records and replays the radar stream: with --proxy it relays a real radar "
        "server to the application unchanged, in both directions, and --record FILE writes "
        "every message of both directions with its receive time (without --proxy it records "
        "its own session); --replay FILE serves a recording with its original timing and "
        "answers the application's commands as the simulator does. orvex-radar-inspect FILE "
        "summarizes a recording."));
    parser.addHelpOption();
    parser.addVersionOption();

    const QCommandLineOption host("host", "Address to listen on (default 127.0.0.1).", "address",
                                  options.host);
    const QCommandLineOption port("port", "Port to listen on (default 7578; 0 picks a free one).",
                                  "port", QString::number(options.port));
    const QCommandLineOption rate("rate", "Radar cycles per second (default 10).", "hz", "10");
    const QCommandLineOption noHeader(
        "no-header", "Send the radar's records without the UTC time-stamp header.");
    const QCommandLineOption variant(
        "variant", "Protocol variant at start: 0 = SerD, 1 = SerP (default 0).", "n", "0");
    const QCommandLineOption vehicles("vehicles",
                                      "Vehicles on the road at once (default 8); each keeps to "
                                      "its lane at a speed of its own, slowing down only "
                                      "behind a slower one.",
                                      "n", "8");
    const QCommandLineOption road("road",
                                  "Road whose lanes the vehicles follow: a JSON file holding the "
                                  "application's \"road_config\" object, or the application's "
                                  "settings file (the current work profile's road is taken).",
                                  "file");
    const QCommandLineOption seed("seed", "Random seed, for a repeatable run.", "n");
    const QCommandLineOption timeScale(
        "time-scale",
        "Run the simulated time this many times as fast as the clock, 0.1 to 100 (default 1): "
        "cycles come that much more often and carry the simulated time in their time stamps.",
        "x", "1");
    const QCommandLineOption truth(
        "truth",
        "Write the ground truth of a traffic count into this file: one CSV line per vehicle "
        "as it passes the detection line (time, id, lane, direction, speed, length), and the "
        "counts per lane and direction to standard output at the end.",
        "file");
    const QCommandLineOption line("line",
                                  "With --truth: the detection line's distance along the road "
                                  "in metres (default 50).",
                                  "metres", "50");
    const QCommandLineOption selfTest(
        "selftest", "Self-diagnostics word the radar reports (default 0x3F: all units ok).", "word",
        "0x3F");
    const QCommandLineOption portName("port-name",
                                      "Serial port name the server reports (default /dev/ttySIM0).",
                                      "name", options.portName);
    const QCommandLineOption busyAcks("busy-acks",
                                      "Answer the next N commands with 255 (radar busy).", "n");
    const QCommandLineOption errorAck("error-ack",
                                      "Answer every command with this error code (1-254).", "code");
    const QCommandLineOption noAcks("no-acks", "Never acknowledge a command.");
    const QCommandLineOption garbage("garbage-every",
                                     "Put a malformed record into every N-th message.", "n");
    const QCommandLineOption silence("silence-after",
                                     "Stop sending radar data after this many seconds.", "seconds");
    const QCommandLineOption ignorePings(
        "ignore-pings", "Stall every connection, so that no pong ever reaches the client.");
    const QCommandLineOption quiet("quiet", "Print nothing but the listening address.");
    const QCommandLineOption proxy("proxy",
                                   "Relay the radar server at this URL (ws://HOST:PORT/) to the "
                                   "application instead of simulating one.",
                                   "url");
    const QCommandLineOption record("record",
                                    "Record every message of both directions into this new file "
                                    "(the session of the first client at a time).",
                                    "file");
    const QCommandLineOption replay("replay",
                                    "Serve this recording to every client with its original "
                                    "timing; commands are answered as the simulator does.",
                                    "file");
    const QCommandLineOption speed("speed", "Replay speed, 0.1 to 100 (default 1).", "x", "1");
    const QCommandLineOption loop("loop", "Replay the recording over and over.");
    const QCommandLineOption from("from", "Replay from this many seconds into the recording.",
                                  "seconds");
    const QCommandLineOption to("to", "Replay up to this many seconds into the recording.",
                                "seconds");
    parser.addOptions({host, port, rate, noHeader, variant, vehicles, road, seed, selfTest,
                       portName, busyAcks, errorAck, noAcks, garbage, silence, ignorePings, quiet});
    parser.addOptions({proxy, record, replay, speed, loop, from, to});
    parser.addOptions({timeScale, truth, line});

    if (!parser.parse(arguments)) {
        error = parser.errorText();
        return false;
    }
    if (parser.isSet("help")) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        exitNow = true;
        return true;
    }
    if (parser.isSet("version")) {
        std::printf("%s %s\n", qPrintable(QCoreApplication::applicationName()),
                    qPrintable(QCoreApplication::applicationVersion()));
        exitNow = true;
        return true;
    }
    if (!parser.positionalArguments().isEmpty()) {
        error = QStringLiteral("Unexpected argument: %1").arg(parser.positionalArguments().first());
        return false;
    }

    qint64 n = 0;
    auto number = [&](const QCommandLineOption& option, qint64 low, qint64 high, auto& target) {
        if (!parser.isSet(option))
            return true;
        if (!toNumber(parser.value(option), low, high, n)) {
            error = QStringLiteral("--%1 wants a number from %2 to %3, not \"%4\"")
                        .arg(option.names().first())
                        .arg(low)
                        .arg(high)
                        .arg(parser.value(option));
            return false;
        }
        target = decltype(target)(n);
        return true;
    };
    options.host = parser.value(host);
    options.portName = parser.value(portName);
    options.roadFile = parser.value(road);
    options.timeStampHeader = !parser.isSet(noHeader);
    options.noAcks = parser.isSet(noAcks);
    options.ignorePings = parser.isSet(ignorePings);
    options.quiet = parser.isSet(quiet);
    options.seedGiven = parser.isSet(seed);
    if (!number(port, 0, 65535, options.port) || !number(variant, 0, 1, options.variant)
        || !number(vehicles, 0, 60, options.vehicles) || !number(seed, 0, 0xFFFFFFFF, options.seed)
        || !number(selfTest, 0, 0xFFFF, options.selfTestWord)
        || !number(busyAcks, 0, 1000000, options.busyAcks)
        || !number(errorAck, 1, 254, options.errorAck)
        || !number(garbage, 0, 1000000, options.garbageEvery)) {
        return false;
    }
    bool ok = true;
    options.rate = parser.value(rate).toDouble(&ok);
    if (!ok || options.rate < 0.1 || options.rate > 200) {
        error = QStringLiteral("--rate wants cycles per second from 0.1 to 200");
        return false;
    }
    options.timeScale = parser.value(timeScale).toDouble(&ok);
    if (!ok || !(options.timeScale >= 0.1 && options.timeScale <= 100)) {
        error = QStringLiteral("--time-scale wants a factor from 0.1 to 100");
        return false;
    }
    options.truthFile = parser.value(truth);
    options.truthLine = parser.value(line).toDouble(&ok);
    if (!ok || !std::isfinite(options.truthLine)) {
        error = QStringLiteral("--line wants a distance in metres along the road");
        return false;
    }
    if (parser.isSet(line) && !parser.isSet(truth)) {
        error = QStringLiteral("--line goes with --truth");
        return false;
    }
    if ((parser.isSet(truth) || parser.isSet(timeScale))
        && (parser.isSet("replay") || parser.isSet("proxy"))) {
        error = QStringLiteral("--truth and --time-scale are for the simulated traffic, not "
                               "for --replay or --proxy");
        return false;
    }
    if (parser.isSet(silence)) {
        options.silenceAfter = parser.value(silence).toDouble(&ok);
        if (!ok || options.silenceAfter < 0) {
            error = QStringLiteral("--silence-after wants a number of seconds");
            return false;
        }
    }
    return parseRecordReplay(parser, options, error);
}
