#include "streaminspector.h"

#include "iorvexserialconnectionclient.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "radarframeencoder.h"
#include "serialrecords.h"
#include "timestampheader.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

// JSON of the radar server: the command number, its result, the variant in use.
const QLatin1String KeyCommand("command");
const QLatin1String KeyResult("result");
const QLatin1String KeyRadarProtocol("radar_protocol");
constexpr int ProtocolCommand = 2;
constexpr int IdCount = 0x10000;

std::unique_ptr<IOrvexSerialConnectionClient> makeClient(int variant)
{
    std::unique_ptr<IOrvexSerialConnectionClient> client;
    if (variant == 1)
        client = std::make_unique<OrvexSerialPakorProtocolClient>();
    else
        client = std::make_unique<OrvexSerialDunvelProtocolClient>();
    // Only the verdicts and the cycle count are wanted, not the objects.
    client->setEmitObjectsEnabled(false);
    return client;
}

QJsonObject jsonOf(const RecordedMessage& entry)
{
    return QJsonDocument::fromJson(QByteArray::fromRawData(entry.data, entry.size)).object();
}

QString describeFrame(const CanMessage& frame, const IOrvexSerialConnectionClient& ids)
{
    if (frame.id == ids.commandCanId() && frame.length == CanMessage::MaxLength) {
        static const char* const access[]
            = {"write", "write scaled", "read", "read scaled", "write 8-bit"};
        const RadarFrameEncoder::Command c = RadarFrameEncoder::decodeCommand(frame);
        const QString how = c.accessCode < 5 ? QLatin1String(access[c.accessCode])
                                             : QStringLiteral("access %1").arg(c.accessCode);
        return QStringLiteral("group %1 param %2 %3 %4")
            .arg(c.groupNo)
            .arg(c.paramNo)
            .arg(how)
            .arg(c.value);
    }
    if (frame.id == ids.radarSetupCanId() && frame.length == CanMessage::MaxLength)
        return QStringLiteral("position frame %1").arg(frame.payload() >> 56);
    return QStringLiteral("CAN id 0x%1 length %2").arg(frame.id, 0, 16).arg(frame.length);
}

} // namespace

StreamInspector::StreamInspector(qint64 startMsecsSinceEpoch, int variant)
    : m_startMsecs(startMsecsSinceEpoch)
    , m_variant(variant)
    , m_canIds(IdCount)
{
    if (variant == 0 || variant == 1)
        useVariant(variant, VariantGiven); // the server's reports no longer change it
}

StreamInspector::~StreamInspector() = default;

void StreamInspector::useVariant(int variant, VariantSource source)
{
    m_variant = variant;
    m_variantSource = source;
    m_client = makeClient(variant);
    QObject::connect(m_client.get(), &IOrvexClient::cycleNumber,
                     [this](quint64 number) { onCycleNumber(number); });
}

void StreamInspector::add(const RecordedMessage& entry)
{
    m_nowUs = entry.timeUs;
    if (m_firstUs < 0)
        m_firstUs = entry.timeUs;
    m_lastUs = qMax(m_lastUs, entry.timeUs);

    if (entry.type == RecordedMessage::ClientConnected) {
        m_sessions.append({entry.timeUs, -1, QString::fromUtf8(entry.data, entry.size)});
        return;
    }
    if (entry.type == RecordedMessage::ClientLeft) {
        if (!m_sessions.isEmpty() && m_sessions.last().leftUs < 0)
            m_sessions.last().leftUs = entry.timeUs;
        return;
    }

    Traffic& traffic = m_traffic[entry.direction];
    ++traffic.messages;
    traffic.bytes += quint64(entry.size);
    if (entry.type == RecordedMessage::Text)
        ++traffic.textMessages;

    const bool fromServer = entry.direction == RecordedMessage::FromServer;
    if (entry.type == RecordedMessage::Text)
        fromServer ? addServerText(entry) : addAppText(entry);
    else
        fromServer ? addRadarData(entry) : addAppData(entry);
}

int StreamInspector::guessVariant(const char* data, int size) const
{
    // The variant under which the client accepts more of the message's frames.
    int best = 0;
    int bestAccepted = -1;
    for (int variant : {0, 1}) {
        const auto client = makeClient(variant);
        SerialRecords records;
        records.cut(data, size, client->ackMessageCanIds());
        int accepted = 0;
        client->decodeRecords(QDateTime::currentDateTimeUtc(), records, &accepted);
        if (accepted > bestAccepted) {
            best = variant;
            bestAccepted = accepted;
        }
    }
    return best;
}

void StreamInspector::addRadarData(const RecordedMessage& entry)
{
    ++m_dataMessages;
    if (m_dataMessages == 1)
        m_firstDataUs = entry.timeUs;
    m_lastDataUs = entry.timeUs;

    const int headerSize
        = TimeStampHeader::isPresent(entry.data, entry.size) ? TimeStampHeader::Size : 0;
    const char* data = entry.data + headerSize;
    const int size = entry.size - headerSize;
    if (!m_client)
        useVariant(guessVariant(data, size), VariantGuessed);

    SerialRecords records;
    records.cut(data, size, m_client->ackMessageCanIds());
    int accepted = 0;
    // The time only ages the client's objects; unless they are looked at, the time of
    // arrival is cheaper to make than the radar's stamp, which the link would use.
    QDateTime time = QDateTime::fromMSecsSinceEpoch(m_startMsecs + entry.timeUs / 1000, Qt::UTC);
    if (m_objectFeed && headerSize > 0) {
        const QDateTime stamp = TimeStampHeader::dateTime(entry.data);
        if (stamp.isValid())
            time = stamp;
    }
    const int state = m_client->decodeRecords(time, records, &accepted);
    if (state == IOrvexClient::BadData)
        ++m_badMessages;
    if (m_objectFeed && !records.frames.isEmpty())
        m_objectFeed(time, m_client->currentObjects());

    for (int i = 0; i < accepted; ++i) {
        CanIdFigures& id = m_canIds[records.frames[i].id];
        ++id.count;
        if (id.lastUs >= 0)
            id.intervals.add((entry.timeUs - id.lastUs) / 1000.0);
        id.lastUs = entry.timeUs;
    }
    if (accepted < records.frames.size()) {
        const CanMessage& frame = records.frames[accepted];
        m_rejects.append({entry.timeUs, entry.fileOffset, m_dataMessages,
                          headerSize + records.frameOffsets[accepted], frame.id, frame.length,
                          int(records.frames.size()) - accepted - 1, 0});
    }
    if (records.tailSize(size) > 0) {
        m_rejects.append({entry.timeUs, entry.fileOffset, m_dataMessages,
                          headerSize + records.consumed, 0, 0, 0, records.tailSize(size)});
    }

    for (const AckMessage& ack : records.acks) {
        if (m_awaitingAck.isEmpty()) {
            ++m_unexpectedAcks;
            continue;
        }
        Command& command = m_commands[m_awaitingAck.takeFirst()];
        command.answer = ack.resultCode;
        command.answerUs = entry.timeUs;
    }
}

void StreamInspector::onCycleNumber(quint64 number)
{
    // A cycle is a message whose cycle number moved on.
    if (m_cycles > 0 && number == m_lastCycleNumber)
        return;
    ++m_cycles;
    m_lastCycleNumber = number;
    if (m_lastCycleUs >= 0) {
        const qint64 intervalUs = m_nowUs - m_lastCycleUs;
        m_cycleIntervals.add(intervalUs / 1000.0);
        if (intervalUs > GapUs)
            m_gaps.append({m_lastCycleUs, intervalUs, false});
    } else {
        m_firstCycleUs = m_nowUs;
    }
    m_lastCycleUs = m_nowUs;
}

void StreamInspector::addServerText(const RecordedMessage& entry)
{
    const QJsonObject object = jsonOf(entry);
    const int command = object.value(KeyCommand).toInt(-1);
    for (Command& pending : m_commands) {
        if (pending.json && pending.answer == NoAnswer && pending.serverCommand == command) {
            pending.answer = object.value(KeyResult).toInt(NoAnswer);
            pending.answerUs = entry.timeUs;
            break;
        }
    }
    if (command == ProtocolCommand && object.value(KeyResult).toInt(-1) == 0
        && m_variantSource != VariantGiven) {
        const int variant = object.value(KeyRadarProtocol).toInt(-1);
        if (variant == 0 || variant == 1) {
            if (variant != m_variant || !m_client)
                useVariant(variant, VariantReported);
            m_variantSource = VariantReported;
        }
    }
}

void StreamInspector::addAppText(const RecordedMessage& entry)
{
    Command command;
    command.timeUs = entry.timeUs;
    command.json = true;
    command.serverCommand = jsonOf(entry).value(KeyCommand).toInt(-1);
    command.what = QString::fromUtf8(entry.data, entry.size);
    m_commands.append(command);
}

void StreamInspector::addAppData(const RecordedMessage& entry)
{
    // The application sends one CAN frame per message; the radar reads frames only.
    std::unique_ptr<IOrvexSerialConnectionClient> ids;
    if (!m_client)
        ids = makeClient(qMax(0, m_variant));
    const IOrvexSerialConnectionClient& variantIds = m_client ? *m_client : *ids;
    SerialRecords records;
    records.cut(entry.data, entry.size, {});
    for (const CanMessage& frame : records.frames) {
        Command command;
        command.timeUs = entry.timeUs;
        command.what = describeFrame(frame, variantIds);
        m_awaitingAck.append(m_commands.size());
        m_commands.append(command);
    }
}

qint64 StreamInspector::radarDataUs() const
{
    if (m_dataMessages < 2)
        return 0;
    const qint64 spanUs = m_lastDataUs - m_firstDataUs;
    return spanUs + spanUs / qint64(m_dataMessages - 1);
}

void StreamInspector::finish()
{
    if (m_lastCycleUs >= 0 && m_lastUs - m_lastCycleUs > GapUs)
        m_gaps.append({m_lastCycleUs, m_lastUs - m_lastCycleUs, true});
}
