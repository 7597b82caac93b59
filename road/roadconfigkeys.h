#pragma once

#include <QLatin1String>

// Keys of the road configuration object ("road_config" in a work profile).
namespace RoadConfigKeys {
inline const QLatin1String OriginOffset("origin_offset");
inline const QLatin1String Parts("parts");
inline const QLatin1String Sections("sections");
inline const QLatin1String Width("width");
inline const QLatin1String IsLane("is_lane");
inline const QLatin1String IsCurved("is_curved");
inline const QLatin1String Length("length");
inline const QLatin1String Radius("radius");
} // namespace RoadConfigKeys
