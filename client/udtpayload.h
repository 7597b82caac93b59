#pragma once

#include <QString>
#include <QtGlobal>

// Payloads of the frames in which the radar answers read requests. Every frame
// carries its key in bits 15 to 0; a response is the set of frames whose keys
// belong together. Bits are counted on the payload as one 64-bit value, bit 63
// being the top bit of the first byte on the wire.
struct UdtPayload
{
    quint64 value = 0;

    quint16 key() const { return quint16(value & 0xFFFF); }
    quint64 bits(int high, int low) const
    {
        return (value >> low) & (~quint64(0) >> (63 - (high - low)));
    }
    bool bit(int n) const { return (value >> n) & 1; }
};

// Radar setup (position read-back). Distances in 0.01 m and angles in 0.01 degree,
// unsigned magnitudes with separate sign bits. The layout differs from the one the
// radar takes for writing; both are the radar's own.
struct RadarSetup0UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0x80;
    bool yOffsetNegative() const { return bit(62); }
    quint32 yOffsetMagnitude() const { return quint32(bits(61, 44)); }
    bool xOffsetNegative() const { return bit(42); }
    quint32 xOffsetMagnitude() const { return quint32(bits(41, 24)); }
};

struct RadarSetup1UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0x90;
    quint16 roll() const { return quint16(bits(63, 48)); }
    quint16 altitude() const { return quint16(bits(47, 32)); }
    quint16 azimuth() const { return quint16(bits(31, 16)); }
};

struct RadarSetup2UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0xA0;
    bool heightNegative() const { return bit(33); }
    quint32 heightMagnitude() const { return quint32(bits(32, 16)); }
};

// Read parameter: frame 0 only has to be present, frame 1 names the parameter,
// frame 2 holds its value.
struct ReadParam0UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0x2B1B;
};

struct ReadParam1UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0x2B1C;
    quint8 paramNo() const { return quint8(bits(63, 56)); }
    quint8 accessCode() const { return quint8(bits(55, 48)); }
    quint8 groupNo() const { return quint8(bits(47, 40)); }
    quint8 status() const { return quint8(bits(35, 32)); } // 0: no value follows
};

struct ReadParam2UdtPayload : UdtPayload
{
    static constexpr quint16 Key = 0x2B1D;
    qint32 paramValue() const { return qint32(quint32(bits(63, 32))); }
};

// Device information: six ASCII characters per frame, the first in bits 23 to 16,
// the last in bits 63 to 56. Four frames make one text of up to 24 characters.
struct RadarDevInfoUdtPayload : UdtPayload
{
    static constexpr int CharCount = 6;
    static constexpr quint16 HardwareInfoFirstKey = 0x6A;
    static constexpr quint16 FirmwareInfoFirstKey = 0x33;
    static constexpr int FrameCount = 4;
    char character(int i) const { return char(bits(23 + 8 * i, 16 + 8 * i)); }
};
