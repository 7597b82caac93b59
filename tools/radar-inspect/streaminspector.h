#pragma once

#include "intervalstats.h"
#include "recordedmessage.h"
#include "roadobject.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

class IOrvexSerialConnectionClient;

// Goes through a recording entry by entry and gathers the figures of the link: the
// traffic of each direction, the radar's cycles and the gaps between them, every CAN id
// with its rate and jitter, the records the client's decoder rejects, and the commands
// sent with their answers. The radar's data is decoded by the client library itself,
// for the protocol variant the server reports (or that the data fits best).
class StreamInspector
{
public:
    static constexpr qint64 GapUs = 500000; // a pause between cycles longer than this is a gap
    static constexpr int NoAnswer = -1000;

    struct Traffic
    {
        quint64 messages = 0;
        quint64 bytes = 0;
        quint64 textMessages = 0;
    };
    struct CanIdFigures
    {
        quint64 count = 0;
        qint64 lastUs = -1;
        IntervalStats intervals;
    };
    struct Gap
    {
        qint64 startUs = 0;
        qint64 lengthUs = 0;
        bool untilEnd = false; // the radar never came back within the recording
    };
    // A CAN frame the decoder refused (the rest of its message is then dropped), or a
    // tail of bytes that forms no record.
    struct Reject
    {
        qint64 timeUs = 0;
        qint64 fileOffset = 0; // of the message's entry
        quint64 message = 0; // number of the server's binary message, from 1
        int offset = 0; // of the record in the message, time-stamp header included
        quint16 canId = 0;
        int length = 0;
        int droppedFrames = 0; // frames after it that the decoder never looked at
        int tailBytes = 0; // > 0: no record but an unreadable tail of this many bytes
    };
    struct Command
    {
        qint64 timeUs = 0;
        bool json = false; // a server command; otherwise a CAN frame for the radar
        int serverCommand = -1; // of a server command: its "command" number
        QString what;
        int answer = NoAnswer; // result code of the acknowledgement or of the server
        qint64 answerUs = -1;
    };
    struct Session
    {
        qint64 connectedUs = 0;
        qint64 leftUs = -1;
        QString peer;
    };

    // variant: 0 or 1 to decode as that protocol variant throughout, -1 to follow the
    // server's reports.
    explicit StreamInspector(qint64 startMsecsSinceEpoch, int variant = -1);
    ~StreamInspector();

    // Receives, after every message of the radar that carried CAN frames, its time (the
    // radar server's stamp, or the arrival) and the road objects the client then holds.
    using ObjectFeed
        = std::function<void(const QDateTime& time, const QMap<quint8, RoadObject>& objects)>;
    void setObjectFeed(const ObjectFeed& feed) { m_objectFeed = feed; }

    void add(const RecordedMessage& entry);
    // After the last entry: a silence that lasts to the end becomes a gap.
    void finish();

    qint64 firstUs() const { return m_firstUs; }
    qint64 lastUs() const { return m_lastUs; }
    const Traffic& traffic(RecordedMessage::Direction direction) const
    {
        return m_traffic[direction];
    }
    enum VariantSource { VariantUnknown, VariantGiven, VariantReported, VariantGuessed };
    int variant() const { return m_variant; }
    VariantSource variantSource() const { return m_variantSource; }
    quint64 cycles() const { return m_cycles; }
    qint64 firstCycleUs() const { return m_firstCycleUs; }
    qint64 lastCycleUs() const { return m_lastCycleUs; }
    const IntervalStats& cycleIntervals() const { return m_cycleIntervals; }
    const QVector<Gap>& gaps() const { return m_gaps; }
    quint64 badMessages() const { return m_badMessages; }
    const QVector<CanIdFigures>& canIds() const { return m_canIds; } // indexed by id
    // How long the radar's data lasted: from the first message to one interval past
    // the last, so that N messages at a steady rate give a rate of N per that time.
    qint64 radarDataUs() const;
    const QVector<Reject>& rejects() const { return m_rejects; }
    const QVector<Command>& commands() const { return m_commands; }
    quint64 unexpectedAcks() const { return m_unexpectedAcks; }
    const QVector<Session>& sessions() const { return m_sessions; }

private:
    void addRadarData(const RecordedMessage& entry);
    void addServerText(const RecordedMessage& entry);
    void addAppText(const RecordedMessage& entry);
    void addAppData(const RecordedMessage& entry);
    void onCycleNumber(quint64 number);
    void useVariant(int variant, VariantSource source);
    int guessVariant(const char* data, int size) const;

    qint64 m_startMsecs;
    int m_variant;
    VariantSource m_variantSource = VariantUnknown;
    std::unique_ptr<IOrvexSerialConnectionClient> m_client;
    qint64 m_firstUs = -1;
    qint64 m_lastUs = 0;
    qint64 m_nowUs = 0; // time of the entry being added
    Traffic m_traffic[2];
    quint64 m_dataMessages = 0;
    qint64 m_firstDataUs = 0;
    qint64 m_lastDataUs = 0;
    quint64 m_badMessages = 0;
    quint64 m_cycles = 0;
    quint64 m_lastCycleNumber = 0;
    qint64 m_firstCycleUs = -1;
    qint64 m_lastCycleUs = -1;
    IntervalStats m_cycleIntervals;
    QVector<Gap> m_gaps;
    QVector<CanIdFigures> m_canIds;
    QVector<Reject> m_rejects;
    QVector<Command> m_commands;
    QList<int> m_awaitingAck; // CAN commands without acknowledgement, oldest first
    quint64 m_unexpectedAcks = 0;
    QVector<Session> m_sessions;
    ObjectFeed m_objectFeed;
};
