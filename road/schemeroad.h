#pragma once

#include <QList>
#include <QMap>
#include <QPolygonF>
#include <QRectF>

// The road as the road builder lays it out, in metres in the road frame: what the
// traffic scheme receives between the start and the end of a road burst.
struct SchemeRoad
{
    QRectF rect;
    QPolygonF axis;
    QList<QPolygonF> laneBorders;
    QList<QPolygonF> roadBorders;
    QMap<int, QPolygonF> laneCenters;
    QMap<int, QPolygonF> distanceLines; // by distance mark in whole metres
    QMap<int, double> tanAngles; // the axis direction at each mark, radians
};
