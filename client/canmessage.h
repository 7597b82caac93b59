#pragma once

#include <QByteArray>
#include <QtGlobal>

// One CAN frame as the radar server relays it in its serial stream: two id bytes
// (high first), a length byte and up to eight payload bytes, most significant first.
// The record keeps the payload reversed, so that reading `data` as one little-endian
// 64-bit integer gives the stream bytes read as one big-endian integer: bit 63 of
// payload() is the top bit of the first payload byte on the wire.
class CanMessage
{
public:
    static constexpr int HeaderSize = 3; // id high, id low, length
    static constexpr int MaxLength = 8;

    CanMessage() = default;
    CanMessage(quint16 id, quint8 length, const void* data, bool reverse);

    // Builds an 8-byte frame from the payload as one 64-bit value (bit 63 = first byte).
    static CanMessage fromPayload(quint16 id, quint64 payload);

    // Cuts one frame off the front of a buffer; null when the buffer does not start
    // with a complete frame. The caller owns the result.
    static CanMessage* extract(const void* data, int size);
    // The same test without a heap allocation, for the per-message decoding path.
    static bool tryExtract(const void* data, int size, CanMessage& out);

    static void doCopyData(void* dest, const void* src, quint8 length, bool reverse);

    QByteArray serialize() const;
    // Writes the stream form (streamSize() bytes) to dest.
    void serializeTo(char* dest) const;
    int streamSize() const { return HeaderSize + length; }

    quint64 payload() const;

    quint16 id = 0;
    quint8 length = 0;
    quint8 data[MaxLength] = {};
};
