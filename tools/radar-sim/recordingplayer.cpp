#include "recordingplayer.h"

#include "radarframeencoder.h"
#include "recordingreader.h"
#include "timestampheader.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <limits>

namespace {

constexpr int MaxMessagesPerWake = 64; // then let the sockets write
constexpr qint64 MaxWaitMs = 3600 * 1000; // a longer pause is waited for in steps
constexpr int ServerStateCommand = 1; // the server's report of how it holds the radar

QByteArray bytesOf(const RecordedMessage& entry)
{
    return QByteArray::fromRawData(entry.data, entry.size);
}

bool isServerStateReport(const RecordedMessage& entry)
{
    if (entry.type != RecordedMessage::Text)
        return false;
    const QJsonObject object = QJsonDocument::fromJson(bytesOf(entry)).object();
    return object.value(QLatin1String("command")).toInt(-1) == ServerStateCommand;
}

} // namespace

QVector<RecordedMessage> RecordingPlayer::serverMessages(RecordingReader& reader)
{
    QVector<RecordedMessage> messages;
    RecordedMessage entry;
    while (reader.next(entry)) {
        if (entry.direction == RecordedMessage::FromServer && entry.isMessage())
            messages.append(entry);
    }
    return messages;
}

RecordingPlayer::RecordingPlayer(const QVector<RecordedMessage>& messages,
                                 const SimOptions& options, QObject* parent)
    : QObject(parent)
    , m_messages(messages)
    , m_options(options)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RecordingPlayer::playDue);
    m_replyTimer.setSingleShot(true);
    m_replyTimer.setInterval(qMax(1, int(std::lround(1000.0 / options.rate))));
    connect(&m_replyTimer, &QTimer::timeout, this, &RecordingPlayer::sendRepliesAlone);
}

bool RecordingPlayer::start()
{
    const qint64 fromUs = qint64(m_options.replayFrom * 1e6);
    const qint64 toUs = m_options.replayTo < 0 ? std::numeric_limits<qint64>::max()
                                               : qint64(m_options.replayTo * 1e6);
    m_first = 0;
    while (m_first < m_messages.size() && m_messages.at(m_first).timeUs < fromUs)
        ++m_first;
    m_end = m_first;
    while (m_end < m_messages.size() && m_messages.at(m_end).timeUs <= toUs)
        ++m_end;
    if (m_first == m_end)
        return false;
    for (int i = m_first - 1; i >= 0 && m_prelude < 0; --i) {
        if (isServerStateReport(m_messages.at(i)))
            m_prelude = i;
    }

    // A loop goes on after the last message by the mean interval of the range.
    const qint64 spanUs = m_messages.at(m_end - 1).timeUs - m_messages.at(m_first).timeUs;
    const int count = m_end - m_first;
    const qint64 gapUs = count > 1 ? spanUs / (count - 1) : qint64(1e6 / m_options.rate);
    m_periodUs = qMax<qint64>(1000, spanUs + gapUs);

    m_clock.start();
    if (m_prelude >= 0)
        play(m_messages.at(m_prelude));
    m_next = m_first;
    playDue();
    return true;
}

qint64 RecordingPlayer::dueUs(int index) const
{
    // Playing starts with the first message of the range, without the quiet before it.
    const double recordedUs = double(m_messages.at(index).timeUs - m_messages.at(m_first).timeUs)
                              + double(m_loop) * m_periodUs;
    return qint64(recordedUs / m_options.speed);
}

void RecordingPlayer::playDue()
{
    const qint64 nowUs = m_clock.nsecsElapsed() / 1000;
    for (int played = 0; m_next < m_end; ++played) {
        const qint64 waitUs = dueUs(m_next) - nowUs;
        if (waitUs > 0 || played == MaxMessagesPerWake) {
            m_timer.start(int(qBound<qint64>(0, (waitUs + 999) / 1000, MaxWaitMs)));
            return;
        }
        play(m_messages.at(m_next));
        if (++m_next == m_end && m_options.loop) {
            m_next = m_first;
            ++m_loop;
        }
    }
    emit finished();
}

void RecordingPlayer::play(const RecordedMessage& entry)
{
    const bool binary = entry.type == RecordedMessage::Binary;
    if (!binary || m_replies.isEmpty()) {
        emit message(bytesOf(entry), binary);
        return;
    }
    // The answers go behind the time stamp, where records start.
    const int at = TimeStampHeader::isPresent(entry.data, entry.size) ? TimeStampHeader::Size : 0;
    QByteArray merged = bytesOf(entry);
    merged.insert(at, m_replies);
    m_replies.clear();
    m_replyTimer.stop();
    emit message(merged, true);
}

void RecordingPlayer::addReplies(const QByteArray& records)
{
    if (records.isEmpty())
        return;
    m_replies += records;
    if (!m_replyTimer.isActive())
        m_replyTimer.start();
}

void RecordingPlayer::sendRepliesAlone()
{
    QByteArray bytes;
    if (m_options.timeStampHeader)
        bytes = RadarFrameEncoder::timeStampHeader(QDateTime::currentDateTimeUtc());
    bytes += m_replies;
    m_replies.clear();
    emit message(bytes, true);
}
