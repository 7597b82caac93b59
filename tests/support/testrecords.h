#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QtGlobal>

// Builds the radar's records byte by byte, independently of the client's own
// encoder, so that the decoder is checked against the wire layout and not against
// itself.
class TestRecords
{
public:
    // An 8-byte CAN frame: id high, id low, 8, payload most significant byte first.
    static QByteArray frame(quint16 id, quint64 payload);
    static QByteArray ack(quint16 id, quint8 resultCode, quint8 byte2 = 0);
    // The server's 12-byte "#DT" UTC time stamp.
    static QByteArray header(const QDateTime& utc);

    // Road-object payload from physical values: metres and m/s.
    static quint64 roadObjectAt(quint8 id, double xRange, double yRange, double xSpeed = 0,
                                double ySpeed = 0, double length = 4.0);
    // Sensor-control (uptime) and object-control (cycle number) payloads.
    static quint64 counter(quint32 value) { return quint64(value) << 32; }

    static QByteArray hex(const char* text) { return QByteArray::fromHex(text); }
};
