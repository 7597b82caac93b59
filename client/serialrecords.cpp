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
        CanMessage frame;
        if (!CanMessage::tryExtract(data + offset, size - offset, frame))
            break;
        frames.append(frame);
        frameOffsets.append(offset);
        offset += frame.streamSize();
    }
    consumed = offset;
}
