#include "inspectionreport.h"

#include "recordingreader.h"
#include "streaminspector.h"

#include <QDateTime>

namespace {

using S = StreamInspector;

QString seconds(qint64 us)
{
    return QString::number(us / 1e6, 'f', 3);
}

QString ms(double value)
{
    return QString::number(value, 'f', 1);
}

QString hexId(quint16 id)
{
    return QStringLiteral("0x%1").arg(id, 3, 16, QLatin1Char('0'));
}

QString variantName(const S& inspector)
{
    static const char* const sources[]
        = {"", "as given", "reported by the server", "fits the data best"};
    if (inspector.variant() < 0)
        return QStringLiteral("unknown (no radar data)");
    return QStringLiteral("%1 (%2)")
        .arg(inspector.variant() == 0 ? "SerD" : "SerP")
        .arg(QLatin1String(sources[inspector.variantSource()]));
}

double cyclesPerSecond(const S& inspector)
{
    const qint64 spanUs = inspector.lastCycleUs() - inspector.firstCycleUs();
    return inspector.cycles() > 1 && spanUs > 0 ? (inspector.cycles() - 1) * 1e6 / spanUs : 0.0;
}

double rate(const S& inspector, quint64 count)
{
    return inspector.radarDataUs() > 0 ? count * 1e6 / inspector.radarDataUs() : 0.0;
}

QString answerText(const S::Command& command)
{
    if (command.answer == S::NoAnswer)
        return QStringLiteral("no answer");
    const QString after
        = QStringLiteral(" after %1 ms").arg(ms((command.answerUs - command.timeUs) / 1000.0));
    if (command.json)
        return QStringLiteral("result %1").arg(command.answer) + after;
    const QString what = command.answer == 0     ? QStringLiteral("accepted")
                         : command.answer == 255 ? QStringLiteral("busy")
                                                 : QStringLiteral("error");
    return QStringLiteral("acknowledged %1 (%2)").arg(command.answer).arg(what) + after;
}

template<typename T, typename F> void writeList(QTextStream& out, const QVector<T>& list, F line)
{
    for (int i = 0; i < list.size() && i < InspectionReport::TextListLimit; ++i)
        out << "    " << line(list.at(i)) << '\n';
    if (list.size() > InspectionReport::TextListLimit)
        out << "    ... and " << list.size() - InspectionReport::TextListLimit
            << " more (--csv lists all)\n";
}

} // namespace

InspectionReport::InspectionReport(const QString& path, const RecordingReader& reader,
                                   const StreamInspector& inspector)
    : m_path(path)
    , m_reader(reader)
    , m_inspector(inspector)
{ }

void InspectionReport::writeText(QTextStream& out) const
{
    const S& in = m_inspector;
    const S::Traffic& down = in.traffic(RecordedMessage::FromServer);
    const S::Traffic& up = in.traffic(RecordedMessage::FromApp);
    out << "recording     " << m_path << ", started "
        << QDateTime::fromMSecsSinceEpoch(m_reader.startMsecsSinceEpoch(), Qt::UTC)
               .toString(Qt::ISODateWithMs)
        << '\n';
    out << "duration      " << seconds(qMax<qint64>(0, in.lastUs() - qMax<qint64>(0, in.firstUs())))
        << " s (entries from " << seconds(qMax<qint64>(0, in.firstUs())) << " s to "
        << seconds(in.lastUs()) << " s)\n";
    out << "server -> app " << down.messages << " messages, " << down.bytes << " bytes ("
        << down.textMessages << " text)\n";
    out << "app -> server " << up.messages << " messages, " << up.bytes << " bytes ("
        << up.textMessages << " text)\n";
    out << "clients       " << in.sessions().size() << '\n';
    writeList(out, in.sessions(), [](const S::Session& s) {
        return QStringLiteral("%1 from %2 s to %3")
            .arg(s.peer, seconds(s.connectedUs),
                 s.leftUs < 0 ? QStringLiteral("the end") : seconds(s.leftUs) + " s");
    });
    out << "protocol      " << variantName(in) << '\n';
    out << "radar cycles  " << in.cycles() << ", " << QString::number(cyclesPerSecond(in), 'f', 2)
        << " per second";
    if (in.cycleIntervals().count > 0) {
        out << "; interval min " << ms(in.cycleIntervals().minMs) << " ms, mean "
            << ms(in.cycleIntervals().meanMs) << " ms, max " << ms(in.cycleIntervals().maxMs)
            << " ms";
    }
    out << '\n';
    out << "gaps over " << S::GapUs / 1000 << " ms: " << in.gaps().size() << '\n';
    writeList(out, in.gaps(), [](const S::Gap& g) {
        return QStringLiteral("from %1 s, %2 s%3")
            .arg(seconds(g.startUs), seconds(g.lengthUs),
                 g.untilEnd ? QStringLiteral(" (to the end of the recording)") : QString());
    });

    out << "CAN ids       frames the decoder accepted, over " << seconds(in.radarDataUs())
        << " s of radar data\n";
    out << "    id       count    per s  mean ms  jitter ms\n";
    for (int id = 0; id < in.canIds().size(); ++id) {
        const S::CanIdFigures& f = in.canIds().at(id);
        if (f.count == 0)
            continue;
        out << "    " << hexId(quint16(id)) << qSetFieldWidth(11) << f.count << qSetFieldWidth(9)
            << QString::number(rate(in, f.count), 'f', 2) << ms(f.intervals.meanMs)
            << qSetFieldWidth(11) << ms(f.intervals.jitterMs()) << qSetFieldWidth(0) << '\n';
    }

    out << "rejected      " << in.rejects().size() << " records in " << in.badMessages()
        << " messages the decoder refused\n";
    writeList(out, in.rejects(), [](const S::Reject& r) {
        const QString where = QStringLiteral("at %1 s, message %2 (file offset %3), byte %4: ")
                                  .arg(seconds(r.timeUs))
                                  .arg(r.message)
                                  .arg(r.fileOffset)
                                  .arg(r.offset);
        if (r.tailBytes > 0)
            return where + QStringLiteral("%1 bytes that form no record").arg(r.tailBytes);
        return where
               + QStringLiteral("CAN id %1 length %2, %3 frames after it dropped")
                     .arg(hexId(r.canId))
                     .arg(r.length)
                     .arg(r.droppedFrames);
    });

    out << "commands      " << in.commands().size() << '\n';
    writeList(out, in.commands(), [](const S::Command& c) {
        return QStringLiteral("at %1 s %2 %3: %4")
            .arg(seconds(c.timeUs), c.json ? QStringLiteral("server") : QStringLiteral("radar"),
                 c.what, answerText(c));
    });
    if (in.unexpectedAcks() > 0)
        out << "acknowledgements without a command: " << in.unexpectedAcks() << '\n';
    if (m_reader.tailSize() > 0)
        out << "tail          " << m_reader.tailDescription() << '\n';
}

void InspectionReport::writeCsv(QTextStream& out) const
{
    const S& in = m_inspector;
    const S::Traffic& down = in.traffic(RecordedMessage::FromServer);
    const S::Traffic& up = in.traffic(RecordedMessage::FromApp);
    const IntervalStats& cycle = in.cycleIntervals();
    auto summary = [&out](const char* name, const QString& value) {
        out << "summary," << name << ',' << value << '\n';
    };
    out << "#summary,name,value\n";
    summary("start_utc", QDateTime::fromMSecsSinceEpoch(m_reader.startMsecsSinceEpoch(), Qt::UTC)
                             .toString(Qt::ISODateWithMs));
    summary("duration_s", seconds(qMax<qint64>(0, in.lastUs() - qMax<qint64>(0, in.firstUs()))));
    summary("server_messages", QString::number(down.messages));
    summary("server_bytes", QString::number(down.bytes));
    summary("server_text_messages", QString::number(down.textMessages));
    summary("app_messages", QString::number(up.messages));
    summary("app_bytes", QString::number(up.bytes));
    summary("app_text_messages", QString::number(up.textMessages));
    summary("clients", QString::number(in.sessions().size()));
    summary("variant", QString::number(in.variant()));
    summary("cycles", QString::number(in.cycles()));
    summary("cycles_per_s", QString::number(cyclesPerSecond(in), 'f', 3));
    summary("first_cycle_s", seconds(qMax<qint64>(0, in.firstCycleUs())));
    summary("last_cycle_s", seconds(qMax<qint64>(0, in.lastCycleUs())));
    summary("cycle_interval_min_ms", ms(cycle.count ? cycle.minMs : 0));
    summary("cycle_interval_mean_ms", ms(cycle.meanMs));
    summary("cycle_interval_max_ms", ms(cycle.maxMs));
    summary("gaps", QString::number(in.gaps().size()));
    summary("bad_messages", QString::number(in.badMessages()));
    summary("rejects", QString::number(in.rejects().size()));
    summary("commands", QString::number(in.commands().size()));
    summary("acks_without_command", QString::number(in.unexpectedAcks()));
    summary("tail_bytes", QString::number(m_reader.tailSize()));

    out << "#gap,start_s,length_s,until_end\n";
    for (const S::Gap& g : in.gaps())
        out << "gap," << seconds(g.startUs) << ',' << seconds(g.lengthUs) << ',' << int(g.untilEnd)
            << '\n';
    out << "#canid,id,count,per_s,mean_interval_ms,jitter_ms\n";
    for (int id = 0; id < in.canIds().size(); ++id) {
        const S::CanIdFigures& f = in.canIds().at(id);
        if (f.count > 0) {
            out << "canid," << hexId(quint16(id)) << ',' << f.count << ','
                << QString::number(rate(in, f.count), 'f', 3) << ',' << ms(f.intervals.meanMs)
                << ',' << QString::number(f.intervals.jitterMs(), 'f', 2) << '\n';
        }
    }
    out << "#reject,time_s,message,file_offset,byte,can_id,length,dropped_frames,tail_bytes\n";
    for (const S::Reject& r : in.rejects()) {
        out << "reject," << seconds(r.timeUs) << ',' << r.message << ',' << r.fileOffset << ','
            << r.offset << ',' << (r.tailBytes > 0 ? QString() : hexId(r.canId)) << ',' << r.length
            << ',' << r.droppedFrames << ',' << r.tailBytes << '\n';
    }
    out << "#command,time_s,to,what,answer,answer_after_ms\n";
    for (const S::Command& c : in.commands()) {
        QString what = c.what;
        what.replace('"', QLatin1String("\"\"")).replace('\n', ' ');
        out << "command," << seconds(c.timeUs) << ',' << (c.json ? "server" : "radar") << ",\""
            << what << "\"," << (c.answer == S::NoAnswer ? QString() : QString::number(c.answer))
            << ',' << (c.answerUs < 0 ? QString() : ms((c.answerUs - c.timeUs) / 1000.0)) << '\n';
    }
    if (m_reader.tailSize() > 0)
        out << "#tail,file_offset,bytes\ntail," << m_reader.tailOffset() << ','
            << m_reader.tailSize() << '\n';
}
