// orvex-radar-inspect: what a recording of the radar link holds, at a glance: traffic,
// the radar's cycles and gaps, CAN ids, rejected records and commands. See --help.

#include "inspectionreport.h"
#include "recordingreader.h"
#include "streaminspector.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

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
        "answers. A recording that was cut off is read up to its last whole message."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption csv("csv", "Write CSV for machine reading instead of text.");
    const QCommandLineOption variant("variant",
                                     "Decode as protocol variant 0 (SerD) or 1 (SerP) instead "
                                     "of following the server's reports.",
                                     "n");
    parser.addOptions({csv, variant});
    parser.addPositionalArgument("file", "The recording.");
    parser.process(app);

    if (parser.positionalArguments().size() != 1) {
        std::fprintf(stderr, "orvex-radar-inspect: give one recording file (see --help)\n");
        return 2;
    }
    int fixedVariant = -1;
    if (parser.isSet(variant)) {
        bool ok = false;
        fixedVariant = parser.value(variant).toInt(&ok);
        if (!ok || (fixedVariant != 0 && fixedVariant != 1)) {
            std::fprintf(stderr, "orvex-radar-inspect: --variant wants 0 or 1\n");
            return 2;
        }
    }

    const QString path = parser.positionalArguments().first();
    RecordingReader reader;
    QString error;
    if (!reader.open(path, error)) {
        std::fprintf(stderr, "orvex-radar-inspect: %s\n", qPrintable(error));
        return 1;
    }
    StreamInspector inspector(reader.startMsecsSinceEpoch(), fixedVariant);
    RecordedMessage entry;
    while (reader.next(entry))
        inspector.add(entry);
    inspector.finish();

    QTextStream out(stdout);
    const InspectionReport report(path, reader, inspector);
    if (parser.isSet(csv))
        report.writeCsv(out);
    else
        report.writeText(out);
    return 0;
}
