// orvex-radar-inspect: what a recording of the radar link holds, at a glance: traffic,
// the radar's cycles and gaps, CAN ids, rejected records and commands; or the traffic
// itself, counted per lane at a detection line. See --help.

#include "inspectionreport.h"
#include "lanecounter.h"
#include "lanereport.h"
#include "recordingreader.h"
#include "simroad.h"
#include "streaminspector.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cmath>
#include <cstdio>

namespace {

int fail(const QString& message, int code)
{
    std::fprintf(stderr, "orvex-radar-inspect: %s\n", qPrintable(message));
    return code;
}

// The detection line of --lanes, --line and --interval; an empty text when all is well.
QString setUpCounter(const QCommandLineParser& parser, LaneCounter& counter)
{
    const QString roadFile = parser.value(QStringLiteral("lanes"));
    QJsonObject road;
    QString error;
    if (!SimRoad::load(roadFile, road, error))
        return error;
    bool ok = true;
    const double distance = parser.value(QStringLiteral("line")).toDouble(&ok);
    if (!ok || !std::isfinite(distance))
        return QStringLiteral("--line wants a distance in metres along the road");
    const double seconds = parser.value(QStringLiteral("interval")).toDouble(&ok);
    if (!ok
        || !(seconds * 1000 >= LaneStatistics::MinIntervalMs
             && seconds * 1000 <= LaneStatistics::MaxIntervalMs)) {
        return QStringLiteral("--interval wants %1 to %2 seconds")
            .arg(LaneStatistics::MinIntervalMs / 1000)
            .arg(LaneStatistics::MaxIntervalMs / 1000);
    }
    DetectionLine line;
    switch (line.setRoad(road, distance)) {
    case DetectionLine::NoProblem: break;
    case DetectionLine::NoLanes: return QStringLiteral("the road in %1 has no lanes").arg(roadFile);
    case DetectionLine::NoRoad:
        return QStringLiteral("the road in %1 has no sections to lay it along").arg(roadFile);
    case DetectionLine::OutsideRoad:
        return QStringLiteral("--line %1 lies outside the road in %2, which runs from 0 to %3 m")
            .arg(parser.value(QStringLiteral("line")), roadFile)
            .arg(line.roadLength());
    }
    counter.setDetectionLine(line);
    counter.setIntervalMs(std::llround(seconds * 1000));
    return QString();
}

// Hands every radar message's objects to the counter, as the client hands them out.
void feedCounter(StreamInspector& inspector, LaneCounter& counter)
{
    inspector.setObjectFeed(
        [&counter](const QDateTime& time, const QMap<quint8, RoadObject>& objects) {
            counter.startFilling();
            counter.setFrameDateTimeUtc(time);
            for (const RoadObject& o : objects) {
                counter.addReport(o.id, o.xSpeed, o.ySpeed, o.xRange, o.yRange, o.length,
                                  o.lastDetected.toMSecsSinceEpoch());
            }
            counter.finishFilling();
        });
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvex-radar-inspect"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Summarizes a recording of the radar link made by orvex-radar-sim --record: duration, "
        "messages and bytes per direction, radar cycles per second with their intervals and "
        "the gaps over 500 ms, every CAN id with its count, rate and jitter, the records the "
        "client's decoder rejects (with their offsets), and the commands sent with their "
        "answers. A recording that was cut off is read up to its last whole message.\n"
        "\n"
        "With --lanes it counts the traffic instead: every vehicle whose track crosses a "
        "detection line across the road, once, in its lane (the lane whose centre line is "
        "nearest where it crossed) and direction, with its speed there; and prints per lane, "
        "direction and interval the vehicles, mean speed, V50, V85 and V95 (the speeds that "
        "50, 85 and 95 % of the vehicles do not exceed), the lowest and highest speed, the "
        "mean and shortest headway and the share of vehicles longer than 6 m."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption csv("csv", "Write CSV for machine reading instead of text.");
    const QCommandLineOption variant("variant",
                                     "Decode as protocol variant 0 (SerD) or 1 (SerP) instead "
                                     "of following the server's reports.",
                                     "n");
    const QCommandLineOption lanes(
        "lanes",
        "Count the vehicles per lane on the road of this file: the application's settings "
        "file (the current work profile's road) or a JSON file holding a \"road_config\" "
        "object.",
        "settings");
    const QCommandLineOption lineOption(
        "line", "With --lanes: the detection line's distance along the road (default 50).",
        "metres", QString::number(DetectionLine::DefaultDistance));
    const QCommandLineOption interval(
        "interval", "With --lanes: the length of the intervals (default 60).", "seconds",
        QString::number(LaneStatistics::DefaultIntervalMs / 1000));
    parser.addOptions({csv, variant, lanes, lineOption, interval});
    parser.addPositionalArgument("file", "The recording.");
    parser.process(app);

    if (parser.positionalArguments().size() != 1) {
        return fail(QStringLiteral("give one recording file (see --help)"), 2);
    }
    int fixedVariant = -1;
    if (parser.isSet(variant)) {
        bool ok = false;
        fixedVariant = parser.value(variant).toInt(&ok);
        if (!ok || (fixedVariant != 0 && fixedVariant != 1)) {
            return fail(QStringLiteral("--variant wants 0 or 1"), 2);
        }
    }

    if ((parser.isSet(lineOption) || parser.isSet(interval)) && !parser.isSet(lanes))
        return fail(QStringLiteral("--line and --interval go with --lanes"), 2);
    LaneCounter counter;
    if (parser.isSet(lanes)) {
        const QString error = setUpCounter(parser, counter);
        if (!error.isEmpty())
            return fail(error, 2);
    }

    const QString path = parser.positionalArguments().first();
    RecordingReader reader;
    QString error;
    if (!reader.open(path, error))
        return fail(error, 1);
    StreamInspector inspector(reader.startMsecsSinceEpoch(), fixedVariant);
    if (parser.isSet(lanes))
        feedCounter(inspector, counter);
    RecordedMessage entry;
    while (reader.next(entry))
        inspector.add(entry);
    inspector.finish();

    QTextStream out(stdout);
    if (parser.isSet(lanes)) {
        const LaneReport report(path, counter);
        parser.isSet(csv) ? report.writeCsv(out) : report.writeText(out);
        return 0;
    }
    const InspectionReport report(path, reader, inspector);
    if (parser.isSet(csv))
        report.writeCsv(out);
    else
        report.writeText(out);
    return 0;
}
