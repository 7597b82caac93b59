#include "streamrecorder.h"

#include "recordingformat.h"

#include <QDateTime>

StreamRecorder::StreamRecorder(QObject* parent)
    : QObject(parent)
{ }

StreamRecorder::~StreamRecorder()
{
    // The program is stopping with a client still there: its session ends here.
    if (m_session)
        write(RecordedMessage::FromApp, RecordedMessage::ClientLeft, QByteArray());
}

bool StreamRecorder::open(const QString& path, QString& error)
{
    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    m_clock.start();
    return m_writer.open(path, RecordingFormat::header(start), error);
}

bool StreamRecorder::beginSession(const void* session, const QString& peer)
{
    if (m_session || !m_writer.isOpen())
        return false;
    m_session = session;
    write(RecordedMessage::FromApp, RecordedMessage::ClientConnected, peer.toUtf8());
    emit logLine(QStringLiteral("recording client %1").arg(peer));
    return true;
}

void StreamRecorder::endSession(const void* session)
{
    if (!session || session != m_session)
        return;
    write(RecordedMessage::FromApp, RecordedMessage::ClientLeft, QByteArray());
    m_session = nullptr;
}

void StreamRecorder::record(const void* session, RecordedMessage::Direction direction,
                            RecordedMessage::Type type, const QByteArray& bytes)
{
    if (session && session == m_session)
        write(direction, type, bytes);
}

void StreamRecorder::write(RecordedMessage::Direction direction, RecordedMessage::Type type,
                           const QByteArray& bytes)
{
    if (!m_writer.isOpen())
        return;
    RecordedMessage entry;
    entry.timeUs = m_clock.nsecsElapsed() / 1000;
    entry.direction = direction;
    entry.type = type;
    entry.data = bytes.constData();
    entry.size = bytes.size();
    m_record.clear();
    RecordingFormat::appendRecord(m_record, entry);
    if (!m_writer.append(m_record))
        emit logLine(QStringLiteral("recording stopped: %1").arg(m_writer.errorString()));
}
