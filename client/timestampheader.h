#pragma once

#include <QByteArray>
#include <QDateTime>

// The radar server's optional stamp in front of a binary message: '#', 'D', 'T', day,
// month, year (2 bytes), hour, minute, second, millisecond (2 bytes), multi-byte
// fields little-endian, the time in UTC.
class TimeStampHeader
{
public:
    static constexpr int Size = 12;

    // Whether a message is read as carrying the stamp. Any one of the three marker
    // characters is enough: the radar server is known to garble them.
    static bool isPresent(const char* message, int size);
    static bool isPresent(const QByteArray& message)
    {
        return isPresent(message.constData(), message.size());
    }

    // The stamp's time; invalid when its fields name no real moment.
    static QDateTime dateTime(const char* message);
};
