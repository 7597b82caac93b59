#include "timestampheader.h"

#include <QtEndian>

bool TimeStampHeader::isPresent(const char* message, int size)
{
    // A message of exactly the stamp's size carries no data and is taken as data.
    return size > Size && (message[0] == '#' || message[1] == 'D' || message[2] == 'T');
}

QDateTime TimeStampHeader::dateTime(const char* message)
{
    const auto* b = reinterpret_cast<const uchar*>(message);
    const QDate date(qFromLittleEndian<quint16>(b + 5), b[4], b[3]);
    const QTime time(b[7], b[8], b[9], qFromLittleEndian<quint16>(b + 10));
    // QDateTime would take a broken time for midnight; a stamp is all valid or unused.
    if (!date.isValid() || !time.isValid())
        return QDateTime();
    return QDateTime(date, time, Qt::UTC);
}
