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

quint64 TestRecords::roadObjectAt(quint8 id, double xRange, double yRange, double xSpeed,
                                  double ySpeed, double length)
{
    // id 6 bits, length 8 bits in 0.2 m, speeds 11 bits in 0.1 m/s offset by 1024,
    // ranges 14 bits in 0.064 m offset by 8192.
    auto raw = [](double value, double step, int offset, int bits) {
        return quint64(std::lround(value / step) + offset) & ((quint64(1) << bits) - 1);
    };
    return quint64(id & 0x3F) << 58 | raw(length, 0.2, 0, 8) << 50
           | raw(ySpeed, 0.1, 1024, 11) << 39 | raw(xSpeed, 0.1, 1024, 11) << 28
           | raw(yRange, 0.064, 8192, 14) << 14 | raw(xRange, 0.064, 8192, 14);
}
