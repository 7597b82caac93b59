#pragma once

#include "delayedframe.h"

#include <QList>

// The radar frames waiting for the video picture: the camera's picture arrives later
// than the radar's data, so a frame is shown only once it is as old as the video delay.
class DelayedFrameBuffer
{
public:
    // A new, empty frame at the end.
    void startFrame();
    // The following three fill the newest frame; without one they do nothing.
    void setFrameTime(const QDateTime& time);
    void addObject(const RoadObject& object);
    void appendSortedIds(const QVector<quint8>& ids);
    // Takes out, oldest first, every frame up to the first one stamped later than the
    // threshold. A frame never stamped counts as old enough.
    QList<DelayedFrame> takeDue(const QDateTime& threshold);

    int size() const { return m_frames.size(); }
    bool isEmpty() const { return m_frames.isEmpty(); }
    void clear() { m_frames.clear(); }

private:
    QList<DelayedFrame> m_frames;
};
