// orvex-radar-sim: a radar server with a simulated radar behind it, for demonstrations,
// tests and operator training without hardware. See --help.

#include "radarserver.h"
#include "simoptions.h"
#include "simroad.h"
#include "simulatedradar.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onUnixSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
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
    if (!SimOptions::parse(QCoreApplication::arguments(), options, error, exitNow)) {
        std::fprintf(stderr, "orvex-radar-sim: %s\n(see --help)\n", qPrintable(error));
        return 2;
    }
    if (exitNow)
        return 0;
    if (!options.seedGiven)
        options.seed = QRandomGenerator::global()->generate();

    QJsonObject road = SimRoad::defaultConfig();
    if (!options.roadFile.isEmpty() && !SimRoad::load(options.roadFile, road, error)) {
        std::fprintf(stderr, "orvex-radar-sim: %s\n", qPrintable(error));
        return 2;
    }
    QMap<int, QPolygonF> lanes = SimRoad::laneCentres(road);
    if (lanes.isEmpty()) {
        std::fprintf(stderr,
                     "orvex-radar-sim: the road in %s has no lanes; vehicles drive on "
                     "the default road\n",
                     qPrintable(options.roadFile));
        lanes = SimRoad::laneCentres(SimRoad::defaultConfig());
    }

    SimulatedRadar radar(options, lanes);
    RadarServer server(options, &radar);
    if (!options.quiet) {
        auto log = [](const QString& line) { std::fprintf(stderr, "%s\n", qPrintable(line)); };
        QObject::connect(&radar, &SimulatedRadar::logLine, log);
        QObject::connect(&server, &RadarServer::logLine, log);
    }
    if (!server.listen(error)) {
        std::fprintf(stderr, "orvex-radar-sim: cannot listen on %s:%u: %s\n",
                     qPrintable(options.host), options.port, qPrintable(error));
        return 1;
    }

    // Stop cleanly on Ctrl+C and on kill: tell the clients goodbye first.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) == 0) {
        auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
        QObject::connect(notifier, &QSocketNotifier::activated, &app, [&server] {
            char byte;
            [[maybe_unused]] const ssize_t read = ::read(signalPipe[0], &byte, 1);
            server.closeAll();
            QCoreApplication::quit();
        });
        std::signal(SIGINT, onUnixSignal);
        std::signal(SIGTERM, onUnixSignal);
    }

    std::printf("orvex-radar-sim: listening on %s\n", qPrintable(server.url().toString()));
    std::fflush(stdout);
    if (!options.quiet) {
        std::fprintf(stderr, "variant %s, %.1f cycles/s, %d vehicles on %d lanes, seed %u%s\n",
                     options.variant == 0 ? "SerD" : "SerP", options.rate, options.vehicles,
                     int(lanes.size()), options.seed,
                     options.timeStampHeader ? "" : ", no time-stamp header");
    }
    radar.start();
    return app.exec();
}
