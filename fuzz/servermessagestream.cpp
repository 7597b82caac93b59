#include "servermessagestream.h"

#include <algorithm>

namespace {
constexpr size_t RecordHeaderSize = 3; // kind, length low byte, length high byte
}

quint8 ServerMessageStream::setup(const uint8_t* data, size_t size)
{
    return size > 0 ? data[0] : 0;
}

QVector<ServerMessageStream::Message> ServerMessageStream::messages(const uint8_t* data,
                                                                    size_t size)
{
    QVector<Message> out;
    size_t at = 1;
    while (at + RecordHeaderSize <= size) {
        const bool text = data[at] & 1;
        const size_t length = size_t(data[at + 1]) | size_t(data[at + 2]) << 8;
        at += RecordHeaderSize;
        const size_t taken = std::min(length, size - at);
        out.append({text, QByteArray(reinterpret_cast<const char*>(data + at), int(taken))});
        at += taken;
    }
    return out;
}

QByteArray ServerMessageStream::encode(quint8 setup, const QVector<Message>& messages)
{
    QByteArray out(1, char(setup));
    for (const Message& m : messages) {
        const int length = std::min(m.bytes.size(), 0xFFFF);
        out.append(char(m.text ? 1 : 0)).append(char(length & 0xFF)).append(char(length >> 8));
        out.append(m.bytes.left(length));
    }
    return out;
}
