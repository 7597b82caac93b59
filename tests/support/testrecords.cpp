#include "testrecords.h"

#include <cmath>

QByteArray TestRecords::frame(quint16 id, quint64 payload)
{
    QByteArray bytes;
    bytes.append(char(id >> 8));
    bytes.append(char(id & 0xFF));
    bytes.append(char(8));
    for (int shift = 56; shift >= 0; shift -= 8)
        bytes.append(char((payload >> shift) & 0xFF));
    return bytes;
}

QByteArray TestRecords::ack(quint16 id, quint8 resultCode, quint8 byte2)
{
    QByteArray bytes;
    bytes.append(char(id >> 8));
    bytes.append(char(id & 0xFF));
    bytes.append(char(byte2));
    bytes.append(char(resultCode));
    return bytes;
}

QByteArray TestRecords::header(const QDateTime& utc)
{
    const QDate d = utc.date();
    const QTime t = utc.time();
    QByteArray bytes("#DT");
    bytes.append(char(d.day()));
    bytes.append(char(d.month()));
    bytes.append(char(d.year() & 0xFF));
    bytes.append(char(d.year() >> 8));
    bytes.append(char(t.hour()));
    bytes.append(char(t.minute()));
    bytes.append(char(t.second()));
    bytes.append(char(t.msec() & 0xFF));
    bytes.append(char(t.msec() >> 8));
    return bytes;
}

quint64 TestRecords::roadObject(quint8 id, quint32 lengthRaw, quint32 ySpeedRaw, quint32 xSpeedRaw,
                                quint32 yRangeRaw, quint32 xRangeRaw)
{
    return quint64(id & 0x3F) << 58 | quint64(lengthRaw & 0xFF) << 50
           | quint64(ySpeedRaw & 0x7FF) << 39 | quint64(xSpeedRaw & 0x7FF) << 28
           | quint64(yRangeRaw & 0x3FFF) << 14 | quint64(xRangeRaw & 0x3FFF);
}

quint64 TestRecords::roadObjectAt(quint8 id, double xRange, double yRange, double xSpeed,
                                  double ySpeed, double length)
{
    return roadObject(
        id, quint32(std::lround(length / 0.2)), quint32(std::lround(ySpeed / 0.1) + 1024),
        quint32(std::lround(xSpeed / 0.1) + 1024), quint32(std::lround(yRange / 0.064) + 8192),
        quint32(std::lround(xRange / 0.064) + 8192));
}
