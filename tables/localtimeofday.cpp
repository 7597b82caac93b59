#include "localtimeofday.h"

#include <QDateTime>

namespace {
constexpr qint64 SlotMs = 15 * 60 * 1000;
constexpr qint64 DayMs = 24 * 60 * 60 * 1000;
constexpr int MsPerSecond = 1000;
constexpr int MsPerMinute = 60 * MsPerSecond;
constexpr int MsPerHour = 60 * MsPerMinute;

void appendDigits(QString& text, int value, int digits)
{
    for (int divisor = digits == 3 ? 100 : 10; divisor > 0; divisor /= 10)
        text += QLatin1Char(char('0' + value / divisor % 10));
}

qint64 floorDiv(qint64 a, qint64 b)
{
    return a / b - (a % b != 0 && (a < 0) != (b < 0) ? 1 : 0);
}
} // namespace

qint32 LocalTimeOfDay::msecs(const QDateTime& utc)
{
    if (!utc.isValid())
        return NoTime;
    const qint64 ms = utc.toMSecsSinceEpoch();
    const qint64 slot = floorDiv(ms, SlotMs);
    if (slot != m_slot) {
        m_slot = slot;
        m_offsetMs = qint64(utc.toLocalTime().offsetFromUtc()) * 1000;
    }
    const qint64 local = ms + m_offsetMs;
    return qint32(local - floorDiv(local, DayMs) * DayMs);
}

QString LocalTimeOfDay::text(qint32 msecsOfDay)
{
    if (msecsOfDay < 0)
        return QString();
    // Spelt out: saving a full history formats a hundred thousand of them.
    QString text;
    text.reserve(12);
    appendDigits(text, msecsOfDay / MsPerHour, 2);
    text += QLatin1Char(':');
    appendDigits(text, msecsOfDay / MsPerMinute % 60, 2);
    text += QLatin1Char(':');
    appendDigits(text, msecsOfDay / MsPerSecond % 60, 2);
    text += QLatin1Char('.');
    appendDigits(text, msecsOfDay % MsPerSecond, 3);
    return text;
}
