// Lane statistics with a busy radar (64 vehicles in every cycle on a four-lane road):
//   1. the counter's cost per object and frame, fed as the client feeds it;
//   2. orvex-radar-inspect --lanes summarising an hour recorded at 20 cycles a second,
//      through the real program.
//
// Usage: bench_lanestats [counted frames (200000)] [recorded minutes (60)]

#include "lanecounter.h"
#include "orvexserialdunvelprotocolclient.h"
#include "radarframeencoder.h"
#include "recordingformat.h"
#include "simroad.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <ctime>

namespace {

using Client = OrvexSerialDunvelProtocolClient;
constexpr int Vehicles = 64;
constexpr qint64 CycleMs = 50; // 20 cycles a second
constexpr double RadarRange = 250.0;

// Vehicles on the simulator's default road: lanes right of the axis drive away from the
// radar, the others towards it; one that leaves the radar's range is followed by a new
// one under the same id, at once, as a radar may hand ids on.
struct Traffic
{
    struct Vehicle
    {
        double x, y, speed, length;
    };
    QVector<Vehicle> vehicles;

    Traffic()
    {
        const double lanes[] = {-6.75, -3.25, 3.25, 6.75};
        for (int id = 0; id < Vehicles; ++id) {
            const double y = lanes[id % 4];
            const double speed = (y < 0 ? 1 : -1) * (15 + (id * 7) % 20);
            vehicles.append({std::fmod(id * 3.9, RadarRange), y, speed, 4.0 + id % 10});
        }
    }
    void step(double seconds)
    {
        for (Vehicle& v : vehicles) {
            v.x += v.speed * seconds;
            if (v.x > RadarRange)
                v.x -= RadarRange;
            else if (v.x < 0)
                v.x += RadarRange;
        }
    }
};

double cpuSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

void countingCost(int frames)
{
    DetectionLine line;
    line.setRoad(SimRoad::defaultConfig(), DetectionLine::DefaultDistance);
    Traffic traffic;
    const QDateTime start = QDateTime::currentDateTimeUtc();

    // As the application feeds it: the client's signals' arguments, with date-times.
    LaneCounter counter;
    counter.setDetectionLine(line);
    QElapsedTimer clock;
    clock.start();
    const double cpuStart = cpuSeconds();
    for (int f = 0; f < frames; ++f) {
        traffic.step(CycleMs / 1000.0);
        const QDateTime time = start.addMSecs(f * CycleMs);
        counter.startFilling();
        counter.setFrameDateTimeUtc(time);
        for (int id = 0; id < Vehicles; ++id) {
            const Traffic::Vehicle& v = traffic.vehicles[id];
            counter.addObject(quint8(id), v.speed, 0, v.x, v.y, v.length, time);
        }
        counter.finishFilling();
    }
    const double ns = clock.nsecsElapsed();
    const double cpu = cpuSeconds() - cpuStart;
    const double objects = double(frames) * Vehicles;
    std::printf("counting: %d frames of %d objects in %.3f s (CPU %.3f s): %.0f ns per object "
                "and frame, %d vehicles counted\n",
                frames, Vehicles, ns / 1e9, cpu, ns / objects,
                int(counter.statistics().crossings().size()));

    clock.restart();
    const QVector<LaneStatistics::Row> rows = counter.statistics().intervalRows();
    std::printf("  figures of %d intervals, lanes and directions: %.1f ms\n", int(rows.size()),
                clock.nsecsElapsed() / 1e6);
}

// One radar cycle with its time stamp.
QByteArray radarMessage(quint32 cycle, const QDateTime& time, const Traffic& traffic)
{
    QByteArray m = RadarFrameEncoder::timeStampHeader(time);
    m += RadarFrameEncoder::frame(Client::SynchronizationCanId, 0);
    m += RadarFrameEncoder::frame(Client::SensorControlCanId,
                                  RadarFrameEncoder::counterPayload(cycle * CycleMs));
    m += RadarFrameEncoder::frame(Client::ObjectControlCanId,
                                  RadarFrameEncoder::counterPayload(cycle));
    for (int id = 0; id < Vehicles; ++id) {
        const Traffic::Vehicle& v = traffic.vehicles[id];
        m += RadarFrameEncoder::frame(
            quint16(Client::RoadObjectCanIdMin + id),
            RadarFrameEncoder::roadObjectPayload(quint8(id), v.x, v.y, v.speed, 0.0, v.length));
    }
    return m;
}

// A recording as the relay writes it; returns the number of cycles.
int writeRecording(const QString& path, int minutes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 0;
    const QDateTime start = QDateTime::currentDateTimeUtc();
    QByteArray out = RecordingFormat::header(start.toMSecsSinceEpoch());
    auto add = [&out](qint64 us, RecordedMessage::Type type, const QByteArray& bytes) {
        RecordedMessage e;
        e.timeUs = us;
        e.type = type;
        e.data = bytes.constData();
        e.size = bytes.size();
        RecordingFormat::appendRecord(out, e);
    };
    add(0, RecordedMessage::ClientConnected, "127.0.0.1:50000");
    Traffic traffic;
    const int cycles = int(minutes * 60000 / CycleMs);
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        traffic.step(CycleMs / 1000.0);
        const qint64 ms = cycle * CycleMs;
        add(ms * 1000, RecordedMessage::Binary,
            radarMessage(quint32(cycle), start.addMSecs(ms), traffic));
        if (out.size() > (4 << 20)) {
            file.write(out);
            out.clear();
        }
    }
    file.write(out);
    return cycles;
}

void summariseRecording(int minutes)
{
    QTemporaryDir dir;
    const QString road = dir.filePath("road.json");
    QFile roadFile(road);
    if (!roadFile.open(QIODevice::WriteOnly))
        return;
    roadFile.write(QJsonDocument(SimRoad::defaultConfig()).toJson());
    roadFile.close();

    const QString path = dir.filePath("hour.orvrec");
    const int cycles = writeRecording(path, minutes);
    for (const bool csv : {false, true}) {
        QProcess inspect;
        QStringList arguments{path, "--lanes", road};
        if (csv)
            arguments << "--csv";
        QElapsedTimer clock;
        clock.start();
        inspect.start(QStringLiteral(ORVEX_RADAR_INSPECT), arguments);
        inspect.waitForFinished(-1);
        const double seconds = clock.elapsed() / 1e3;
        const QByteArray output = inspect.readAllStandardOutput();
        std::printf("inspector --lanes%s: %d minutes at 20 cycles/s of %d objects (%.1f MB, %d "
                    "cycles) in %.2f s, exit %d, %d lines of output\n",
                    csv ? " --csv" : "", minutes, Vehicles, QFileInfo(path).size() / 1e6, cycles,
                    seconds, inspect.exitCode(), int(output.count('\n')));
        if (!csv) {
            const int totals = output.indexOf("Whole time watched");
            std::printf("%s", output.mid(0, output.indexOf("\nIntervals", totals)).constData());
            std::printf("\n");
        }
    }
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int frames = argc > 1 ? QByteArray(argv[1]).toInt() : 200000;
    const int minutes = argc > 2 ? QByteArray(argv[2]).toInt() : 60;
    if (frames > 0)
        countingCost(frames);
    if (minutes > 0)
        summariseRecording(minutes);
    return 0;
}
