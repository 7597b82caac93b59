#pragma once

#include <QByteArray>
#include <QList>
#include <QtGlobal>

// The radar's four-byte answer to a command: the acknowledgement id (high byte
// first), a byte the client carries without interpreting it, and the result code.
class AckMessage
{
public:
    static constexpr int Size = 4;

    // Result codes of the radar.
    static constexpr quint8 Accepted = 0;
    static constexpr quint8 Busy = 255; // 1 to 254 are error codes

    AckMessage() = default;
    AckMessage(quint16 id, quint8 byte2, quint8 resultCode);

    // Cuts one acknowledgement off the front of a buffer; null unless the first two
    // bytes are one of ackIds. The caller owns the result.
    static AckMessage* extract(const void* data, int size, const QList<quint16>& ackIds);
    static bool tryExtract(const void* data, int size, const QList<quint16>& ackIds,
                           AckMessage& out);

    QByteArray serialize() const;

    quint16 id = 0;
    quint8 byte2 = 0;
    quint8 resultCode = 0;
};
