#include "serialrecords.h"

void SerialRecords::cut(const char* data, int size, const QList<quint16>& ackIds)
{
    acks.clear();
    frames.clear();
    frameOffsets.clear();
    int offset = 0;
    for (;;) {
        AckMessage ack;
        while (AckMessage::tryExtract(data + offset, size - offset, ackIds, ack)) {
            acks.append(ack);
            offset += AckMessage::Size;
        }
        // Cut straight into place; most messages are mostly frames.
        frames.append(CanMessage());
        if (!CanMessage::tryExtract(data + offset, size - offset, frames.last())) {
            frames.removeLast();
            break;
        }
        frameOffsets.append(offset);
        offset += frames.last().streamSize();
    }
    consumed = offset;
}
