#include "ackmessage.h"

AckMessage::AckMessage(quint16 id, quint8 byte2, quint8 resultCode)
    : id(id)
    , byte2(byte2)
    , resultCode(resultCode)
{ }

bool AckMessage::tryExtract(const void* data, int size, const QList<quint16>& ackIds,
                            AckMessage& out)
{
    if (!data || size < Size)
        return false;
    const auto* bytes = static_cast<const quint8*>(data);
    const quint16 id = quint16(bytes[0] << 8 | bytes[1]);
    if (!ackIds.contains(id))
        return false;
    out = AckMessage(id, bytes[2], bytes[3]);
    return true;
}

AckMessage* AckMessage::extract(const void* data, int size, const QList<quint16>& ackIds)
{
    AckMessage ack;
    if (!tryExtract(data, size, ackIds, ack))
        return nullptr;
    return new AckMessage(ack);
}

QByteArray AckMessage::serialize() const
{
    QByteArray bytes(Size, Qt::Uninitialized);
    bytes[0] = char(id >> 8);
    bytes[1] = char(id & 0xFF);
    bytes[2] = char(byte2);
    bytes[3] = char(resultCode);
    return bytes;
}
