#pragma once

#include <QByteArray>
#include <QVector>

#include <cstddef>
#include <cstdint>

// The layout of one input of the receive-path fuzz target, shared with the seed
// recorder: a setup byte, then server messages, each a kind byte (odd: text, even:
// binary), a 16-bit little-endian length and that many bytes. A message cut short by
// the end of the input takes what is left.
class ServerMessageStream
{
public:
    enum Setup : quint8 {
        PakorVariant = 0x01, // the client of protocol variant 1 instead of 0
        EmitStatistics = 0x02, // frame and CAN statistics signals on
        QueuedCommands = 0x04, // commands wait in the queue for acknowledgements
    };

    struct Message
    {
        bool text = false;
        QByteArray bytes;
    };

    static quint8 setup(const uint8_t* data, size_t size);
    static QVector<Message> messages(const uint8_t* data, size_t size);
    static QByteArray encode(quint8 setup, const QVector<Message>& messages);
};
