#pragma once

// One strip of the road's cross-section: a lane, a roadside or the median strip.
// Offsets are lateral, in metres from the road axis, positive to the left of travel
// along the axis.
class RoadPart
{
public:
    RoadPart() = default;
    // `width` is signed: parts on the right of the axis are laid outwards, to -Y.
    RoadPart(int id, double start, double width, bool isLane);

    // The edge nearer to the axis and the edge farther from it.
    double innCoord() const;
    double outCoord() const;

    int id = 0; // 0 median strip, 1, 2, ... to the left, -1, -2, ... to the right
    double minCoord = 0.0;
    double maxCoord = 0.0;
    double centerCoord = 0.0;
    bool isLane = false;
};
