#pragma once

#include "canmessage.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QtGlobal>

// What the radar writes on its CAN bus, as 64-bit payloads (bit 63 = top bit of the
// first byte on the wire), and how it reads the commands it is sent.
class RadarFrameEncoder
{
public:
    // A command frame: value (4 bytes), group, access code, parameter number, 0.
    struct Command
    {
        qint32 value = 0;
        quint8 groupNo = 0;
        quint8 accessCode = 0;
        quint8 paramNo = 0;
    };

    // The radar's mounting position in its own steps: 0.01 m and 0.01 degree.
    struct Position
    {
        qint32 height = 0;
        qint32 xOffset = 0;
        qint32 yOffset = 0;
        quint16 azimuth = 0; // 0 to 35999, negative angles as 360 + angle
        quint16 altitude = 0;
        quint16 roll = 0;
    };

    static QByteArray timeStampHeader(const QDateTime& utc);
    static QByteArray frame(quint16 id, quint64 payload);
    static QByteArray ack(quint16 id, quint8 resultCode);

    static quint64 counterPayload(quint32 value) { return quint64(value) << 32; }
    // Values outside what the frame can carry are clamped to its limits.
    static quint64 roadObjectPayload(quint8 id, double xRange, double yRange, double xSpeed,
                                     double ySpeed, double length);

    static Command decodeCommand(const CanMessage& message);
    // Applies one of the three position frames (told apart by their top byte) to a
    // position; false when the frame is none of them.
    static bool applyPositionFrame(const CanMessage& message, Position& position);

    // Response frames for the UDT response id, in the order the radar sends them.
    static QList<quint64> readParamResponse(const Command& request, bool hasValue, qint32 value);
    static QList<quint64> deviceInfoResponse(quint16 firstKey, const QString& text);
    static QList<quint64> radarSetupResponse(const Position& position);
};
