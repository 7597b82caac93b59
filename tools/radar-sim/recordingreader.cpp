#include "recordingreader.h"

#include "recordingformat.h"

#include <sys/mman.h>

bool RecordingReader::open(const QString& path, QString& error)
{
    m_file.close(); // unmaps too
    m_copy.clear();
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, m_file.errorString());
        return false;
    }
    const qint64 size = m_file.size();
    uchar* mapped = size > 0 ? m_file.map(0, size) : nullptr;
    if (!mapped)
        return open(m_file.readAll(), path, error);
    ::madvise(mapped, size_t(size), MADV_SEQUENTIAL); // read front to back: read ahead well
    return start(reinterpret_cast<const char*>(mapped), size, path, error);
}

bool RecordingReader::open(const QByteArray& bytes, const QString& name, QString& error)
{
    m_copy = bytes;
    return start(m_copy.constData(), m_copy.size(), name, error);
}

bool RecordingReader::start(const char* data, qint64 size, const QString& name, QString& error)
{
    m_data = data;
    m_size = size;
    m_damaged = false;
    m_headerCutShort = false;
    int recordsOffset = 0;
    switch (RecordingFormat::readHeader(m_data, m_size, m_startMsecs, recordsOffset)) {
    case RecordingFormat::HeaderOk: m_recordsOffset = recordsOffset; break;
    case RecordingFormat::HeaderCutShort:
        // Cut off before its first entry: an empty recording with a tail.
        m_headerCutShort = true;
        m_recordsOffset = m_size;
        break;
    case RecordingFormat::NotARecording:
        error = QStringLiteral("%1 is not a radar recording").arg(name);
        return false;
    case RecordingFormat::NewerVersion:
        error
            = QStringLiteral("%1 was recorded in a newer format than this program reads").arg(name);
        return false;
    }
    m_offset = m_recordsOffset;
    return true;
}

bool RecordingReader::next(RecordedMessage& entry)
{
    qint64 next = 0;
    switch (RecordingFormat::readRecord(m_data, m_size, m_offset, entry, next)) {
    case RecordingFormat::RecordOk: m_offset = next; return true;
    case RecordingFormat::RecordDamaged: m_damaged = true; return false;
    case RecordingFormat::RecordCutShort: return false;
    }
    return false;
}

QString RecordingReader::tailDescription() const
{
    if (m_headerCutShort)
        return QStringLiteral("the file ends inside its header (%1 bytes)").arg(m_size);
    if (tailSize() <= 0)
        return QString();
    return QStringLiteral("%1 bytes from file offset %2 %3")
        .arg(tailSize())
        .arg(m_offset)
        .arg(m_damaged ? QStringLiteral("are damaged (checksum or layout wrong)")
                       : QStringLiteral("are an entry cut off"));
}
