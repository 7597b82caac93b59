#pragma once

#include "recordedmessage.h"

#include <QByteArray>
#include <QFile>
#include <QString>

// Reads a recording entry by entry, straight from the file mapped into memory. A file
// that was cut off (a crash, a power loss, a copy in progress) reads up to its last
// whole entry; what follows is reported as its tail.
class RecordingReader
{
public:
    RecordingReader() = default;
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;

    // False, with the reason, when the file cannot be read or is no recording this
    // program understands.
    bool open(const QString& path, QString& error);
    // The same for a recording already in memory (`name` goes into the reason).
    bool open(const QByteArray& bytes, const QString& name, QString& error);

    qint64 startMsecsSinceEpoch() const { return m_startMsecs; }

    // The next entry, whose bytes stay valid as long as the reader; false at the end of
    // the file and at the first record that is incomplete or damaged.
    bool next(RecordedMessage& entry);

    // After next() returned false: where the unread tail starts, and what it is.
    qint64 tailOffset() const { return m_offset; }
    qint64 tailSize() const { return m_size - m_offset; }
    QString tailDescription() const;

private:
    bool start(const char* data, qint64 size, const QString& name, QString& error);

    QFile m_file;
    QByteArray m_copy; // the bytes when they are not mapped from the file
    const char* m_data = nullptr;
    qint64 m_size = 0;
    qint64 m_offset = 0;
    qint64 m_recordsOffset = 0;
    qint64 m_startMsecs = 0;
    bool m_damaged = false;
    bool m_headerCutShort = false;
};
