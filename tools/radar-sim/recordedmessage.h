#pragma once

#include <QtGlobal>

// One entry of a recording: a message of either direction, or a client coming or going,
// with the time it was received in microseconds since the recording started. The bytes
// belong to whoever read the entry (a recording mapped into memory).
struct RecordedMessage
{
    enum Direction { FromServer = 0, FromApp = 1 };
    enum Type {
        Binary = 0, // the radar's serial data, or a CAN frame for it
        Text = 1, // a JSON server command or report, UTF-8
        ClientConnected = 2, // bytes: the client's address and port as text
        ClientLeft = 3, // no bytes
    };

    qint64 timeUs = 0;
    Direction direction = FromServer;
    Type type = Binary;
    const char* data = nullptr;
    int size = 0;
    qint64 fileOffset = 0; // where the entry starts in the file

    bool isMessage() const { return type == Binary || type == Text; }
};
