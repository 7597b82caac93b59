#pragma once

#include <QByteArray>
#include <QtGlobal>

// One command waiting in, or at the head of, the client's command queue.
struct RadarCommand
{
    int retriesLeft = 0; // sends still allowed after a failure
    int command = 0; // RadarCommandId, with parameter indices folded in
    QByteArray data; // one serialized CAN frame, sent as one binary message
    quint64 serial = 0; // tells a head apart from a later command with the same id
};
