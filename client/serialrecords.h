#pragma once

#include "ackmessage.h"
#include "canmessage.h"

#include <QList>
#include <QVarLengthArray>

// The records in the serial data of one binary message (time-stamp header removed),
// cut the way the radar strings them together: acknowledgements and CAN frames back
// to back, with no start byte and no checksum. Four bytes led by an acknowledgement
// id are always an acknowledgement. Cutting stops at the first bytes that form
// neither record; they are the message's unreadable tail.
class SerialRecords
{
public:
    void cut(const char* data, int size, const QList<quint16>& ackIds);

    int tailSize(int size) const { return size - consumed; }

    QVarLengthArray<AckMessage, 8> acks;
    QVarLengthArray<CanMessage, 80> frames;
    QVarLengthArray<int, 80> frameOffsets; // where each frame starts in the data
    int consumed = 0; // bytes that formed whole records
};
