#pragma once

#include "recordedmessage.h"

#include <QByteArray>
#include <QtGlobal>

// The layout of a recording file (little-endian, described in the README): a file
// header, then one record per entry, each closed by a CRC-32, only ever appended to, so
// that a file cut off anywhere holds every entry before the cut.
class RecordingFormat
{
public:
    static constexpr char Magic[9] = "ORVEXREC"; // first 8 bytes of the file
    static constexpr quint16 Version = 1;
    static constexpr int HeaderSize = 24; // magic, version, header size, flags, start time
    static constexpr int MaxPayload = 64 * 1024 * 1024; // larger lengths mean damage
    static constexpr int CrcSize = 4;
    // Kind byte: bit 7 the direction, bits 0-1 the type; the rest must be 0.
    static constexpr quint8 DirectionBit = 0x80;
    static constexpr quint8 TypeMask = 0x03;

    static QByteArray header(qint64 startMsecsSinceEpoch);

    enum HeaderCheck { HeaderOk, NotARecording, NewerVersion, HeaderCutShort };
    // Checks a file's first bytes and returns where its records begin.
    static HeaderCheck readHeader(const char* data, qint64 size, qint64& startMsecsSinceEpoch,
                                  int& recordsOffset);

    // Appends one record: kind, time in microseconds and payload length as LEB128
    // varints, the payload, and the CRC-32 of all of it.
    static void appendRecord(QByteArray& out, const RecordedMessage& entry);

    enum RecordCheck { RecordOk, RecordCutShort, RecordDamaged };
    // Reads the record at `offset`; on success fills `entry` (its bytes point into
    // `data`) and returns the offset after it in `next`.
    static RecordCheck readRecord(const char* data, qint64 size, qint64 offset,
                                  RecordedMessage& entry, qint64& next);
};
