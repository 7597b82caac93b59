#pragma once

#include <QLatin1String>

// Every key of the settings file and of a work profile. The file is read and written
// through these names only, so a key is spelled in exactly one place.
namespace ProfileKeys {

// Top level of the settings file.
inline const QLatin1String Profiles("profiles");
inline const QLatin1String CurrentId("current_id");

// One work profile.
inline const QLatin1String Name("name");

inline const QLatin1String Connection("connection");
inline const QLatin1String RadarProtocol("radar_protocol");
inline const QLatin1String ProtocolForcing("protocol_forcing");
inline const QLatin1String RadarServerUrl("radar_server_url");

inline const QLatin1String View("view");
inline const QLatin1String Controls("controls"); // keyed by the control number in decimal
inline const QLatin1String Visible("visible");
inline const QLatin1String Collapsed("collapsed");

inline const QLatin1String TrafficScheme("traffic_scheme");
inline const QLatin1String DrawVertical("draw_vertical");
inline const QLatin1String KeepAspectRatio("keep_aspect_ratio");
inline const QLatin1String ShowSightLine("show_sightline");
inline const QLatin1String ShowCurrentTracks("show_current_tracks"); // scheme and video
inline const QLatin1String ShowAverageTracks("show_average_tracks"); // scheme and video
inline const QLatin1String TracksDisplayMode("tracks_display_mode");
inline const QLatin1String RoadConfig("road_config");

inline const QLatin1String MonitoringSystem("monitoring_system");
inline const QLatin1String ShowLaneBoundaries("show_lane_boundaries");
inline const QLatin1String ShowDistanceLines("show_distance_lines");
inline const QLatin1String TvmsConfig("tvms_config");

inline const QLatin1String PaintObjects("paint_objects");
inline const QLatin1String AutoChangeView("auto_change_view");

inline const QLatin1String Data("data");
inline const QLatin1String AutoGetData("auto_get_data");

inline const QLatin1String Presets("presets");
inline const QLatin1String PositionPresets("position_presets");
inline const QLatin1String LimitationsPresets("limitations_presets");

// Inside one preset: its button's text ("name", as above) and the panel's values.
namespace PositionPreset {
inline const QLatin1String Height("height");
inline const QLatin1String XOffset("x_offset");
inline const QLatin1String YOffset("y_offset");
inline const QLatin1String Azimuth("azimuth");
inline const QLatin1String Altitude("altitude"); // the elevation
inline const QLatin1String Roll("roll");
} // namespace PositionPreset

namespace LimitationsPreset {
inline const QLatin1String SpeedXMin("speed_x_min");
inline const QLatin1String SpeedXMax("speed_x_max");
inline const QLatin1String SpeedYMin("speed_y_min");
inline const QLatin1String SpeedYMax("speed_y_max");
inline const QLatin1String PointCount("point_count");
inline const QLatin1String PositionXMin("position_x_min");
inline const QLatin1String PositionXMax("position_x_max");
inline const QLatin1String PositionYMin("position_y_min");
inline const QLatin1String PositionYMax("position_y_max");
} // namespace LimitationsPreset

} // namespace ProfileKeys
