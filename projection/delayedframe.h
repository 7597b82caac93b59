#pragma once

#include "frameobjects.h"
#include "roadobject.h"

#include <QDateTime>
#include <QVector>

// One radar measuring frame as the projection keeps it until the video catches up.
struct DelayedFrame
{
    FrameObjects objects;
    QVector<quint8> sortedIds; // display order
    QDateTime frameTime; // UTC; null until the client reports it
};
