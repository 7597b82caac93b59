#pragma once

#include "pickupparams.h"

#include <QCoreApplication>
#include <QString>
#include <QVector>

class PickupSearch;

// How well a picked pose fits the operator's marks: for each checkpoint the typed Y
// and the Y the pose puts it at, in the second mode the segment's typed and fitted
// length, and the root-mean-square of all these misses. It lets the installer see a
// mistaken click before the pose is written to the radar.
class PickupFit
{
    Q_DECLARE_TR_FUNCTIONS(PickupFit)

public:
    struct Row
    {
        double entered = 0.0;
        double fitted = 0.0;
        bool onRoad = false; // false: the pose puts the mark at or above the horizon
    };

    static PickupFit evaluate(PickupSearch& search, const PickupParams& pose);

    QVector<Row> checkpoints;
    bool hasSegment = false;
    Row segment;
    double rmsError = 0.0;
    bool complete = false; // every mark lies on the road under the pose

    // The report's detailed text.
    QString detailsText() const;
};
