#include "roadpart.h"

#include <algorithm>

RoadPart::RoadPart(int id, double start, double width, bool isLane)
    : id(id)
    , minCoord(std::min(start, start + width))
    , maxCoord(std::max(start, start + width))
    , centerCoord((minCoord + maxCoord) / 2.0)
    , isLane(isLane)
{ }

double RoadPart::innCoord() const
{
    if (id == 0)
        return centerCoord;
    return centerCoord > 0 ? minCoord : maxCoord;
}

double RoadPart::outCoord() const
{
    if (id == 0)
        return centerCoord;
    return centerCoord < 0 ? minCoord : maxCoord;
}
