#include "recordingformat.h"

#include <QtEndian>

#include <cstring>
#include <limits>
#include <zlib.h>

namespace {

constexpr int VersionOffset = 8;
constexpr int HeaderSizeOffset = 10;
constexpr int FlagsOffset = 12; // reserved, written as 0
constexpr int StartTimeOffset = 16;
constexpr int MaxVarintBytes = 10;

void appendVarint(QByteArray& out, quint64 value)
{
    char bytes[MaxVarintBytes];
    int n = 0;
    do {
        bytes[n] = char(value & 0x7F);
        value >>= 7;
        if (value)
            bytes[n] = char(bytes[n] | 0x80);
        ++n;
    } while (value);
    out.append(bytes, n);
}

// False when the varint runs past the end (`cutShort`) or past 64 bits.
bool readVarint(const uchar* data, qint64 size, qint64& offset, quint64& value, bool& cutShort)
{
    value = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        if (offset >= size) {
            cutShort = true;
            return false;
        }
        const uchar byte = data[offset++];
        value |= quint64(byte & 0x7F) << shift;
        if (!(byte & 0x80))
            return true;
    }
    return false;
}

quint32 crcOf(const char* data, qint64 size)
{
    return quint32(crc32(crc32(0, nullptr, 0), reinterpret_cast<const Bytef*>(data), uInt(size)));
}

} // namespace

QByteArray RecordingFormat::header(qint64 startMsecsSinceEpoch)
{
    QByteArray bytes(HeaderSize, '\0');
    char* b = bytes.data();
    std::memcpy(b, Magic, 8);
    qToLittleEndian<quint16>(Version, b + VersionOffset);
    qToLittleEndian<quint16>(HeaderSize, b + HeaderSizeOffset);
    qToLittleEndian<quint32>(0, b + FlagsOffset);
    qToLittleEndian<qint64>(startMsecsSinceEpoch, b + StartTimeOffset);
    return bytes;
}

RecordingFormat::HeaderCheck RecordingFormat::readHeader(const char* data, qint64 size,
                                                         qint64& startMsecsSinceEpoch,
                                                         int& recordsOffset)
{
    if (size < qint64(sizeof Magic - 1))
        return std::memcmp(data, Magic, size_t(size)) == 0 ? HeaderCutShort : NotARecording;
    if (std::memcmp(data, Magic, 8) != 0)
        return NotARecording;
    if (size < HeaderSize)
        return HeaderCutShort;
    // A later version may only lengthen the header; it must then say so in its number.
    const quint16 version = qFromLittleEndian<quint16>(data + VersionOffset);
    const quint16 headerSize = qFromLittleEndian<quint16>(data + HeaderSizeOffset);
    if (version > Version)
        return NewerVersion;
    if (version == 0 || headerSize < HeaderSize)
        return NotARecording;
    if (size < headerSize)
        return HeaderCutShort;
    startMsecsSinceEpoch = qFromLittleEndian<qint64>(data + StartTimeOffset);
    recordsOffset = headerSize;
    return HeaderOk;
}

void RecordingFormat::appendRecord(QByteArray& out, const RecordedMessage& entry)
{
    const int start = out.size();
    const quint8 kind = quint8((entry.direction == RecordedMessage::FromApp ? DirectionBit : 0)
                               | (entry.type & TypeMask));
    out.append(char(kind));
    appendVarint(out, quint64(qMax<qint64>(0, entry.timeUs)));
    appendVarint(out, quint64(entry.size));
    out.append(entry.data, entry.size);
    char crc[CrcSize];
    qToLittleEndian<quint32>(crcOf(out.constData() + start, out.size() - start), crc);
    out.append(crc, CrcSize);
}

RecordingFormat::RecordCheck RecordingFormat::readRecord(const char* data, qint64 size,
                                                         qint64 offset, RecordedMessage& entry,
                                                         qint64& next)
{
    const auto* bytes = reinterpret_cast<const uchar*>(data);
    const qint64 start = offset;
    if (offset >= size)
        return RecordCutShort;
    const quint8 kind = bytes[offset++];
    if (kind & ~(DirectionBit | TypeMask))
        return RecordDamaged;
    quint64 timeUs = 0;
    quint64 length = 0;
    bool cutShort = false;
    if (!readVarint(bytes, size, offset, timeUs, cutShort)
        || !readVarint(bytes, size, offset, length, cutShort)) {
        return cutShort ? RecordCutShort : RecordDamaged;
    }
    if (length > quint64(MaxPayload) || timeUs > quint64(std::numeric_limits<qint64>::max()))
        return RecordDamaged;
    const qint64 payloadOffset = offset;
    const qint64 end = payloadOffset + qint64(length) + CrcSize;
    if (end > size)
        return RecordCutShort;
    const quint32 stored = qFromLittleEndian<quint32>(bytes + end - CrcSize);
    if (crcOf(data + start, end - CrcSize - start) != stored)
        return RecordDamaged;

    entry.timeUs = qint64(timeUs);
    entry.direction = kind & DirectionBit ? RecordedMessage::FromApp : RecordedMessage::FromServer;
    entry.type = RecordedMessage::Type(kind & TypeMask);
    entry.data = data + payloadOffset;
    entry.size = int(length);
    entry.fileOffset = start;
    next = end;
    return RecordOk;
}
