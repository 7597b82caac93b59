// Recording, replay and inspection with a busy radar (20 cycles a second, 64 objects
// in every cycle), through the real programs:
//   1. a minute recorded by the relay: the file's size, and what an hour comes to;
//   2. a ten-minute recording replayed at --speed 100: how well the timing holds;
//   3. orvex-radar-inspect reading a recording of 1 GB: how long it takes.
//
// Usage: bench_recording [recorded seconds (60)] [inspected MB (1024)] [keep the 1 GB as FILE]

#include "orvexserialdunvelprotocolclient.h"
#include "radarframeencoder.h"
#include "recordingformat.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QWebSocket>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

using Client = OrvexSerialDunvelProtocolClient;
constexpr int ObjectsPerCycle = 64;
constexpr qint64 CycleUs = 50000; // 20 cycles a second

// One radar cycle: vehicles spread over 250 m of a four-lane road.
QByteArray radarMessage(quint32 cycle, const QDateTime& time)
{
    QByteArray m = RadarFrameEncoder::timeStampHeader(time);
    m += RadarFrameEncoder::frame(Client::SynchronizationCanId, 0);
    m += RadarFrameEncoder::frame(Client::SensorControlCanId,
                                  RadarFrameEncoder::counterPayload(cycle * 50));
    m += RadarFrameEncoder::frame(Client::ObjectControlCanId,
                                  RadarFrameEncoder::counterPayload(cycle));
    for (int id = 0; id < ObjectsPerCycle; ++id) {
        const double x = std::fmod(id * 3.9 + cycle * 1.25, 250.0);
        m += RadarFrameEncoder::frame(
            quint16(Client::RoadObjectCanIdMin + id),
            RadarFrameEncoder::roadObjectPayload(quint8(id), x, (id % 4 - 1.5) * 3.5, 25.0, 0.0,
                                                 4.0 + id % 10));
    }
    return m;
}

// A recording as the relay would write it: the server's state report, then cycles.
// Returns the number of cycles.
int writeRecording(const QString& path, qint64 targetBytes)
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
    add(1000, RecordedMessage::Text,
        R"({"command":1,"port_name":"/dev/ttyS0","result":0,"rsp_server_url":"ws://127.0.0.1:7578/","server_state":5})");
    qint64 written = 0;
    quint32 cycle = 1;
    for (; written + out.size() < targetBytes; ++cycle) {
        const qint64 us = 2000 + cycle * CycleUs;
        add(us, RecordedMessage::Binary, radarMessage(cycle, start.addMSecs(us / 1000)));
        if (out.size() > (4 << 20)) {
            written += file.write(out);
            out.clear();
        }
    }
    file.write(out);
    return int(cycle - 1);
}

// A simulator process; returns the URL it listens on.
QUrl startSim(QProcess& process, const QStringList& arguments)
{
    process.setProgram(QStringLiteral(ORVEX_RADAR_SIM));
    process.setArguments(QStringList{"--port", "0", "--quiet"} + arguments);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start();
    const QRegularExpression listening(QStringLiteral("listening on (ws://\\S+)"));
    QByteArray output;
    while (process.waitForReadyRead(10000)) {
        output += process.readAllStandardOutput();
        const QRegularExpressionMatch match = listening.match(QString::fromUtf8(output));
        if (match.hasMatch())
            return QUrl(match.captured(1));
    }
    return QUrl();
}

void stop(QProcess& process)
{
    process.terminate();
    process.waitForFinished(10000);
}

// Arrival times (us) of the binary messages a client gets, until `count` have come.
QVector<qint64> receive(const QUrl& url, int count, int timeoutMs, quint64* objects = nullptr)
{
    Client client;
    quint64 seen = 0;
    QObject::connect(&client, &IOrvexClient::objectData, [&seen] { ++seen; });
    client.connectToServer(url, 500);
    QVector<qint64> times;
    QElapsedTimer clock;
    clock.start();
    QObject::connect(client.findChild<QWebSocket*>(), &QWebSocket::binaryMessageReceived,
                     [&] { times.append(clock.nsecsElapsed() / 1000); });
    while (times.size() < count && clock.elapsed() < timeoutMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    if (objects)
        *objects = seen;
    return times;
}

void recordedMinute(const QTemporaryDir& dir, int seconds)
{
    const QString source = dir.filePath("source.orvrec");
    const QString minute = dir.filePath("minute.orvrec");
    writeRecording(source, qint64(seconds + 10) * 20 * 760);
    QProcess replay;
    QProcess relay;
    const QUrl replayUrl = startSim(replay, {"--replay", source});
    const QUrl relayUrl = startSim(relay, {"--proxy", replayUrl.toString(), "--record", minute});
    const QVector<qint64> times = receive(relayUrl, seconds * 20 + 1, (seconds + 20) * 1000);
    stop(relay);
    stop(replay);
    const qint64 size = QFileInfo(minute).size();
    const double span = times.size() > 1 ? (times.last() - times.first()) / 1e6 : 0;
    std::printf("recorded by the relay: %lld bytes for %d cycles over %.1f s, %.1f bytes per "
                "cycle of %d objects\n",
                static_cast<long long>(size), int(times.size()), span,
                double(size) / qMax(1, times.size()), ObjectsPerCycle);
    std::printf("  one hour at 20 Hz: %.1f MB\n", size / span * 3600 / 1e6);
}

void replayAtSpeed100(const QTemporaryDir& dir)
{
    const int cycles = 10 * 60 * 20;
    const QString path = dir.filePath("tenminutes.orvrec");
    writeRecording(path, qint64(cycles) * 760);
    QProcess replay;
    const QUrl url = startSim(replay, {"--replay", path, "--speed", "100"});
    quint64 objects = 0;
    const QVector<qint64> times = receive(url, cycles - 10, 60000, &objects);
    stop(replay);
    if (times.size() < 2) {
        std::printf("replay at speed 100: nothing arrived\n");
        return;
    }
    // Lateness against the recorded timing, after the best constant shift.
    QVector<double> offMs;
    for (int i = 0; i < times.size(); ++i)
        offMs.append((times[i] - times[0] - i * CycleUs / 100.0) / 1000);
    QVector<double> sorted = offMs;
    std::sort(sorted.begin(), sorted.end());
    const double median = sorted.at(sorted.size() / 2);
    for (double& o : sorted)
        o = std::abs(o - median);
    std::sort(sorted.begin(), sorted.end());
    const double span = (times.last() - times.first()) / 1e6;
    const double expected = (times.size() - 1) * CycleUs / 100.0 / 1e6;
    std::printf("replay at speed 100: %d messages of %d objects in %.3f s (recorded %.1f s, "
                "due %.3f s): %.0f messages/s\n",
                int(times.size()), ObjectsPerCycle, span, expected * 100, expected,
                times.size() / span);
    std::printf("  deviation from the recorded timing: median %.2f ms, 99%% %.2f ms, "
                "max %.2f ms; %llu objects decoded by the client\n",
                sorted.at(sorted.size() / 2), sorted.at(sorted.size() * 99 / 100), sorted.last(),
                static_cast<unsigned long long>(objects));
}

void inspectLarge(const QString& path, int megabytes)
{
    QElapsedTimer clock;
    clock.start();
    const int cycles = writeRecording(path, qint64(megabytes) << 20);
    const qint64 size = QFileInfo(path).size();
    std::printf("inspector: wrote %.0f MB in %.1f s\n", size / 1e6, clock.elapsed() / 1e3);
    QProcess inspect;
    inspect.setStandardOutputFile(QProcess::nullDevice());
    clock.restart();
    inspect.start(QStringLiteral(ORVEX_RADAR_INSPECT), {path});
    inspect.waitForFinished(-1);
    const double seconds = clock.elapsed() / 1e3;
    std::printf("inspector: read %.0f MB (%.2f million messages) in %.2f s: %.0f MB/s, exit %d\n",
                size / 1e6, cycles / 1e6, seconds, size / 1e6 / seconds, inspect.exitCode());
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 60;
    const int megabytes = argc > 2 ? QByteArray(argv[2]).toInt() : 1024;
    QTemporaryDir dir;
    if (seconds > 0)
        recordedMinute(dir, seconds);
    replayAtSpeed100(dir);
    if (megabytes > 0)
        inspectLarge(argc > 3 ? QString::fromLocal8Bit(argv[3]) : dir.filePath("large.orvrec"),
                     megabytes);
    return 0;
}
