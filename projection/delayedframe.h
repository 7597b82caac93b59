#pragma once

#include "roadobject.h"

#include <QDateTime>
#include <QMap>
#include <QVector>

// One radar measuring frame as the projection keeps it until the video catches up.
struct DelayedFrame
{
    QMap<quint8, RoadObject> objects; // by ascending id
    QVector<quint8> sortedIds; // display order
    QDateTime frameTime; // UTC; null until the client reports it
};
