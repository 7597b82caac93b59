// orvex-radar-sim: a radar server with a simulated radar behind it, for demonstrations,
// tests and operator training without hardware; also a recording relay in front of a
// real radar server, and the replay of such recordings. See --help.

#include "groundtruth.h"
#include "proxyserver.h"
#include "radarserver.h"
#include "recordingplayer.h"
#include "recordingreader.h"
#include "simoptions.h"
#include "simroad.h"
#include "simulatedradar.h"
#include "streamrecorder.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onUnixSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

void printLine(const QString& line)
{
    std::fprintf(stderr, "%s\n", qPrintable(line));
}

// Stop cleanly on Ctrl+C and on kill: tell the clients goodbye first.
void stopOnSignals(QCoreApplication& app, const std::function<void()>& closeAll)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [closeAll] {
        char byte;
        [[maybe_unused]] const ssize_t read = ::read(signalPipe[0], &byte, 1);
        closeAll();
        QCoreApplication::quit();
    });
    std::signal(SIGINT, onUnixSignal);
    std::signal(SIGTERM, onUnixSignal);
}

bool loadRoad(const SimOptions& options, QJsonObject& road, QMap<int, QPolygonF>& lanes,
              QString& error)
{
    road = SimRoad::defaultConfig();
    if (!options.roadFile.isEmpty() && !SimRoad::load(options.roadFile, road, error))
        return false;
    lanes = SimRoad::laneCentres(road);
    if (lanes.isEmpty()) {
        printLine(
            QStringLiteral("orvex-radar-sim: the road in %1 has no lanes; vehicles drive on the "
                           "default road")
                .arg(options.roadFile));
        road = SimRoad::defaultConfig();
        lanes = SimRoad::laneCentres(road);
    }
    return true;
}

// The detection line of --truth across the road the vehicles drive on.
bool truthLine(const SimOptions& options, const QJsonObject& road, DetectionLine& line,
               QString& error)
{
    switch (line.setRoad(road, options.truthLine)) {
    case DetectionLine::NoProblem: return true;
    case DetectionLine::OutsideRoad:
        error = QStringLiteral("--line %1 lies outside the road, which runs from 0 to %2 m")
                    .arg(options.truthLine)
                    .arg(line.roadLength());
        return false;
    case DetectionLine::NoLanes:
    case DetectionLine::NoRoad: break;
    }
    error = QStringLiteral("the road has no stretch to lay a detection line across");
    return false;
}

bool loadReplay(const SimOptions& options, RecordingReader& reader,
                QVector<RecordedMessage>& messages, QString& error)
{
    if (!reader.open(options.replayFile, error))
        return false;
    messages = RecordingPlayer::serverMessages(reader);
    if (reader.tailSize() > 0 && !options.quiet)
        printLine(QStringLiteral("%1: replayed up to its last whole message; %2")
                      .arg(options.replayFile, reader.tailDescription()));
    const qint64 fromUs = qint64(options.replayFrom * 1e6);
    const qint64 toUs = options.replayTo < 0 ? std::numeric_limits<qint64>::max()
                                             : qint64(options.replayTo * 1e6);
    if (std::none_of(messages.cbegin(), messages.cend(), [&](const RecordedMessage& m) {
            return m.timeUs >= fromUs && m.timeUs <= toUs;
        })) {
        error = QStringLiteral("%1 holds no message of the server between %2 s and %3")
                    .arg(options.replayFile)
                    .arg(options.replayFrom)
                    .arg(options.replayTo < 0 ? QStringLiteral("its end")
                                              : QStringLiteral("%1 s").arg(options.replayTo));
        return false;
    }
    if (!options.quiet) {
        printLine(QStringLiteral("replaying %1: %2 messages of the server over %3 s, speed %4%5")
                      .arg(options.replayFile)
                      .arg(messages.size())
                      .arg((messages.last().timeUs - messages.first().timeUs) / 1e6, 0, 'f', 3)
                      .arg(options.speed)
                      .arg(options.loop ? QStringLiteral(", looping") : QString()));
    }
    return true;
}

int fail(const QString& message, int code)
{
    std::fprintf(stderr, "orvex-radar-sim: %s\n", qPrintable(message));
    return code;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvex-radar-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));

    SimOptions options;
    QString error;
    bool exitNow = false;
    if (!SimOptions::parse(QCoreApplication::arguments(), options, error, exitNow))
        return fail(error + QStringLiteral("\n(see --help)"), 2);
    if (exitNow)
        return 0;
    if (!options.seedGiven)
        options.seed = QRandomGenerator::global()->generate();

    // Declared first so that it outlives the servers that record into it.
    // It opens its file only once listening succeeded.
    std::unique_ptr<StreamRecorder> recorder;
    if (!options.recordFile.isEmpty()) {
        recorder = std::make_unique<StreamRecorder>();
        if (!options.quiet)
            QObject::connect(recorder.get(), &StreamRecorder::logLine, printLine);
    }
    GroundTruth truth; // outlives the radar that counts into it
    RecordingReader replay; // the replayed messages point into it
    QVector<RecordedMessage> replayMessages;
    if (!options.replayFile.isEmpty() && !loadReplay(options, replay, replayMessages, error))
        return fail(error, 2);

    std::unique_ptr<ProxyServer> proxy;
    std::unique_ptr<SimulatedRadar> radar;
    std::unique_ptr<RadarServer> server;
    QUrl url;
    int laneCount = 0;
    if (options.proxyUrl.isValid()) {
        proxy = std::make_unique<ProxyServer>(options, recorder.get());
        if (!options.quiet)
            QObject::connect(proxy.get(), &ProxyServer::logLine, printLine);
        if (!proxy->listen(error))
            return fail(QStringLiteral("cannot listen on %1:%2: %3")
                            .arg(options.host)
                            .arg(options.port)
                            .arg(error),
                        1);
        url = proxy->url();
        stopOnSignals(app, [&proxy] { proxy->closeAll(); });
    } else {
        QJsonObject road;
        QMap<int, QPolygonF> lanes;
        if (!loadRoad(options, road, lanes, error))
            return fail(error, 2);
        laneCount = lanes.size();
        radar = std::make_unique<SimulatedRadar>(options, lanes);
        if (!options.truthFile.isEmpty()) {
            DetectionLine line;
            if (!truthLine(options, road, line, error)
                || !truth.open(options.truthFile, options.truthLine, error))
                return fail(error, 2);
            radar->countAt(line, &truth);
        }
        server = std::make_unique<RadarServer>(options, radar.get());
        server->setRecorder(recorder.get());
        if (!replayMessages.isEmpty())
            server->setReplay(&replayMessages);
        if (!options.quiet) {
            QObject::connect(radar.get(), &SimulatedRadar::logLine, printLine);
            QObject::connect(server.get(), &RadarServer::logLine, printLine);
        }
        if (!server->listen(error))
            return fail(QStringLiteral("cannot listen on %1:%2: %3")
                            .arg(options.host)
                            .arg(options.port)
                            .arg(error),
                        1);
        url = server->url();
        stopOnSignals(app, [&server] { server->closeAll(); });
    }

    if (recorder && !recorder->open(options.recordFile, error))
        return fail(error, 2);
    std::printf("orvex-radar-sim: listening on %s\n", qPrintable(url.toString()));
    std::fflush(stdout);
    if (proxy) {
        if (!options.quiet)
            printLine(QStringLiteral("relaying %1").arg(options.proxyUrl.toString()));
    } else if (!replayMessages.isEmpty()) {
        radar->startAnswering();
    } else {
        if (!options.quiet) {
            std::fprintf(stderr, "variant %s, %.1f cycles/s, %d vehicles on %d lanes, seed %u%s\n",
                         options.variant == 0 ? "SerD" : "SerP", options.rate, options.vehicles,
                         laneCount, options.seed,
                         options.timeStampHeader ? "" : ", no time-stamp header");
            if (options.timeScale != 1.0)
                std::fprintf(stderr, "simulated time runs %g times as fast\n", options.timeScale);
        }
        radar->start();
    }
    const int code = app.exec();
    if (!options.truthFile.isEmpty() && !options.proxyUrl.isValid())
        std::printf("%s\n", qPrintable(truth.summary()));
    return code;
}
