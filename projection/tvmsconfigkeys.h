#pragma once

#include <QLatin1String>

// Keys of the camera configuration object ("tvms_config" in a work profile).
namespace TvmsConfigKeys {
inline const QLatin1String XOffset("x_offset");
inline const QLatin1String YOffset("y_offset");
inline const QLatin1String ZOffset("z_offset");
inline const QLatin1String AzimuthMisalignment("azimuth_misalignment");
inline const QLatin1String AltitudeMisalignment("altitude_misalignment");
inline const QLatin1String HorizontalViewAngle("horizontal_view_angle");
inline const QLatin1String VideoDelay("video_delay");
} // namespace TvmsConfigKeys
