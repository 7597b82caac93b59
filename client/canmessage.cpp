#include "canmessage.h"

#include <QtEndian>

#include <cstring>

CanMessage::CanMessage(quint16 id, quint8 length, const void* data, bool reverse)
    : id(id)
    , length(qMin<quint8>(length, MaxLength))
{
    if (data && this->length > 0)
        doCopyData(this->data, data, this->length, reverse);
}

CanMessage CanMessage::fromPayload(quint16 id, quint64 payload)
{
    quint8 bytes[MaxLength];
    qToLittleEndian(payload, bytes);
    return CanMessage(id, MaxLength, bytes, false);
}

void CanMessage::doCopyData(void* dest, const void* src, quint8 length, bool reverse)
{
    auto* d = static_cast<quint8*>(dest);
    const auto* s = static_cast<const quint8*>(src);
    if (!reverse) {
        std::memcpy(d, s, length);
        return;
    }
    if (length == MaxLength) { // the common case: one byte swap
        qToLittleEndian(qFromBigEndian<quint64>(s), d);
        return;
    }
    for (int i = 0; i < length; ++i)
        d[i] = s[length - 1 - i];
}

bool CanMessage::tryExtract(const void* data, int size, CanMessage& out)
{
    if (!data || size < HeaderSize)
        return false;
    const auto* bytes = static_cast<const quint8*>(data);
    const quint8 len = bytes[2];
    if (len > MaxLength || size < len + HeaderSize)
        return false;
    // Filled in place: building a temporary and copying it costs the decoder a stall
    // per record (narrow stores read back wide).
    out.id = quint16(bytes[0] << 8 | bytes[1]);
    out.length = len;
    std::memset(out.data, 0, MaxLength);
    if (len > 0)
        doCopyData(out.data, bytes + HeaderSize, len, true);
    return true;
}

CanMessage* CanMessage::extract(const void* data, int size)
{
    CanMessage message;
    if (!tryExtract(data, size, message))
        return nullptr;
    return new CanMessage(message);
}

void CanMessage::serializeTo(char* dest) const
{
    dest[0] = char(id >> 8);
    dest[1] = char(id & 0xFF);
    dest[2] = char(length);
    doCopyData(dest + HeaderSize, data, length, true);
}

QByteArray CanMessage::serialize() const
{
    QByteArray bytes(streamSize(), Qt::Uninitialized);
    serializeTo(bytes.data());
    return bytes;
}

quint64 CanMessage::payload() const
{
    return qFromLittleEndian<quint64>(data);
}
