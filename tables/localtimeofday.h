#pragma once

#include <QString>
#include <QtGlobal>

#include <limits>

class QDateTime;

// The local time of day of radar time stamps (which are UTC), and its "hh:mm:ss.zzz"
// text. Asking the system for the local time re-reads the time zone every time, which
// costs more than the rest of a table row; the offset from UTC is therefore asked once
// per quarter of an hour of UTC time (every time zone changes its offset only on a
// quarter-hour boundary) and reused for every stamp in it.
class LocalTimeOfDay
{
public:
    // Milliseconds since local midnight; NoTime for an invalid stamp.
    qint32 msecs(const QDateTime& utc);

    // "hh:mm:ss.zzz" for a time of day in milliseconds; empty for NoTime.
    static QString text(qint32 msecsOfDay);

    static constexpr qint32 NoTime = -1;

private:
    qint64 m_slot = std::numeric_limits<qint64>::min(); // no offset asked yet
    qint64 m_offsetMs = 0;
};
