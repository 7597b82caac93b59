#include "delayedframebuffer.h"

void DelayedFrameBuffer::startFrame()
{
    m_frames.append(DelayedFrame());
}

void DelayedFrameBuffer::setFrameTime(const QDateTime& time)
{
    if (!m_frames.isEmpty())
        m_frames.last().frameTime = time;
}

void DelayedFrameBuffer::addObject(const RoadObject& object)
{
    // A second report of the same id in one frame replaces the first.
    if (!m_frames.isEmpty())
        m_frames.last().objects.insert(object);
}

void DelayedFrameBuffer::appendSortedIds(const QVector<quint8>& ids)
{
    if (!m_frames.isEmpty())
        m_frames.last().sortedIds += ids;
}

QList<DelayedFrame> DelayedFrameBuffer::takeDue(const QDateTime& threshold)
{
    QList<DelayedFrame> due;
    while (!m_frames.isEmpty()) {
        const QDateTime& time = m_frames.first().frameTime;
        if (time.isValid() && time > threshold)
            break;
        due.append(m_frames.takeFirst());
    }
    return due;
}
