#include "radarframeencoder.h"

#include "udtpayload.h"

#include <QtEndian>

#include <cmath>

namespace {

quint64 field(double value, double step, int offset, int bits)
{
    const qint64 raw = std::llround(value / step) + offset;
    const qint64 top = (qint64(1) << bits) - 1;
    return quint64(qBound<qint64>(0, raw, top));
}

} // namespace

QByteArray RadarFrameEncoder::timeStampHeader(const QDateTime& utc)
{
    const QDate d = utc.date();
    const QTime t = utc.time();
    QByteArray header("#DT", 3);
    header.append(char(d.day())).append(char(d.month()));
    header.append(char(d.year() & 0xFF)).append(char(d.year() >> 8));
    header.append(char(t.hour())).append(char(t.minute())).append(char(t.second()));
    header.append(char(t.msec() & 0xFF)).append(char(t.msec() >> 8));
    return header;
}

QByteArray RadarFrameEncoder::frame(quint16 id, quint64 payload)
{
    return CanMessage::fromPayload(id, payload).serialize();
}

QByteArray RadarFrameEncoder::ack(quint16 id, quint8 resultCode)
{
    QByteArray bytes(4, Qt::Uninitialized);
    bytes[0] = char(id >> 8);
    bytes[1] = char(id & 0xFF);
    bytes[2] = 0;
    bytes[3] = char(resultCode);
    return bytes;
}

quint64 RadarFrameEncoder::roadObjectPayload(quint8 id, double xRange, double yRange, double xSpeed,
                                             double ySpeed, double length)
{
    // id 6 bits; length 0.2 m; speeds 0.1 m/s offset 1024; ranges 0.064 m offset 8192.
    return quint64(id & 0x3F) << 58 | field(length, 0.2, 0, 8) << 50
           | field(ySpeed, 0.1, 1024, 11) << 39 | field(xSpeed, 0.1, 1024, 11) << 28
           | field(yRange, 0.064, 8192, 14) << 14 | field(xRange, 0.064, 8192, 14);
}

RadarFrameEncoder::Command RadarFrameEncoder::decodeCommand(const CanMessage& message)
{
    const quint64 v = message.payload();
    Command command;
    command.value = qint32(quint32(v >> 32));
    command.groupNo = quint8(v >> 24);
    command.accessCode = quint8(v >> 16);
    command.paramNo = quint8(v >> 8);
    return command;
}

bool RadarFrameEncoder::applyPositionFrame(const CanMessage& message, Position& position)
{
    // Written as magnitudes of 17 bits with a separate sign bit, angles in 16 bits.
    const quint64 v = message.payload();
    auto signedMagnitude = [v](int signBit, int low) {
        const qint32 magnitude = qint32((v >> low) & 0x1FFFF);
        return (v >> signBit) & 1 ? -magnitude : magnitude;
    };
    switch (quint8(v >> 56)) {
    case 0x00:
        position.yOffset = signedMagnitude(55, 32);
        position.xOffset = signedMagnitude(31, 8);
        return true;
    case 0x10:
        position.altitude = quint16(v >> 40);
        position.azimuth = quint16(v >> 24);
        position.height = signedMagnitude(23, 0);
        return true;
    case 0x20: position.roll = quint16(v); return true;
    default: return false;
    }
}

QList<quint64> RadarFrameEncoder::readParamResponse(const Command& request, bool hasValue,
                                                    qint32 value)
{
    // Three frames: an opening one, the parameter's address with a status nibble
    // (0: no value follows), and the value.
    const quint64 address = quint64(request.paramNo) << 56 | quint64(request.accessCode) << 48
                            | quint64(request.groupNo) << 40 | quint64(hasValue ? 1 : 0) << 32;
    return {quint64(0x00000001) << 32 | ReadParam0UdtPayload::Key,
            address | ReadParam1UdtPayload::Key,
            quint64(quint32(hasValue ? value : 0)) << 32 | ReadParam2UdtPayload::Key};
}

QList<quint64> RadarFrameEncoder::deviceInfoResponse(quint16 firstKey, const QString& text)
{
    const QByteArray chars = text.toLatin1().left(24).leftJustified(24, '\0');
    QList<quint64> frames;
    for (int f = 0; f < RadarDevInfoUdtPayload::FrameCount; ++f) {
        quint64 payload = quint16(firstKey + f);
        for (int i = 0; i < RadarDevInfoUdtPayload::CharCount; ++i)
            payload |= quint64(quint8(chars.at(f * 6 + i))) << (16 + 8 * i);
        frames.append(payload);
    }
    return frames;
}

QList<quint64> RadarFrameEncoder::radarSetupResponse(const Position& position)
{
    // Read back in the radar's reporting layout: 18-bit offsets, angles 0 to 36000.
    auto magnitude = [](qint32 value, int bits) {
        return quint64(qMin<qint64>(std::abs(qint64(value)), (qint64(1) << bits) - 1));
    };
    const quint64 setup0 = quint64(position.yOffset < 0) << 62
                           | magnitude(position.yOffset, 18) << 44
                           | quint64(position.xOffset < 0) << 42
                           | magnitude(position.xOffset, 18) << 24 | RadarSetup0UdtPayload::Key;
    const quint64 setup1 = quint64(position.roll) << 48 | quint64(position.altitude) << 32
                           | quint64(position.azimuth) << 16 | RadarSetup1UdtPayload::Key;
    const quint64 setup2 = quint64(position.height < 0) << 33 | magnitude(position.height, 17) << 16
                           | RadarSetup2UdtPayload::Key;
    return {setup0, setup1, setup2};
}
