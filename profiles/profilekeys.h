#pragma once

#include <QLatin1String>

// Every key of the settings file and of a work profile. The file is read and written
// through these names only, so a key is spelled in exactly one place.
namespace ProfileKeys {

// Top level of the settings file.
constexpr QLatin1String Profiles("profiles");
constexpr QLatin1String CurrentId("current_id");

// One work profile.
constexpr QLatin1String Name("name");

constexpr QLatin1String Connection("connection");
constexpr QLatin1String RadarProtocol("radar_protocol");
constexpr QLatin1String ProtocolForcing("protocol_forcing");
constexpr QLatin1String RadarServerUrl("radar_server_url");

constexpr QLatin1String View("view");
constexpr QLatin1String Controls("controls"); // keyed by the control number in decimal
constexpr QLatin1String Visible("visible");
constexpr QLatin1String Collapsed("collapsed");

constexpr QLatin1String TrafficScheme("traffic_scheme");
constexpr QLatin1String DrawVertical("draw_vertical");
constexpr QLatin1String KeepAspectRatio("keep_aspect_ratio");
constexpr QLatin1String ShowSightLine("show_sightline");
constexpr QLatin1String ShowCurrentTracks("show_current_tracks"); // scheme and video
constexpr QLatin1String ShowAverageTracks("show_average_tracks"); // scheme and video
constexpr QLatin1String TracksDisplayMode("tracks_display_mode");
constexpr QLatin1String RoadConfig("road_config");

constexpr QLatin1String MonitoringSystem("monitoring_system");
constexpr QLatin1String ShowLaneBoundaries("show_lane_boundaries");
constexpr QLatin1String ShowDistanceLines("show_distance_lines");
constexpr QLatin1String TvmsConfig("tvms_config");

constexpr QLatin1String PaintObjects("paint_objects");
constexpr QLatin1String AutoChangeView("auto_change_view");

constexpr QLatin1String Data("data");
constexpr QLatin1String AutoGetData("auto_get_data");

constexpr QLatin1String Presets("presets");
constexpr QLatin1String PositionPresets("position_presets");
constexpr QLatin1String LimitationsPresets("limitations_presets");

// Inside one preset: its button's text ("name", as above) and the panel's values.
namespace PositionPreset {
constexpr QLatin1String Height("height");
constexpr QLatin1String XOffset("x_offset");
constexpr QLatin1String YOffset("y_offset");
constexpr QLatin1String Azimuth("azimuth");
constexpr QLatin1String Altitude("altitude"); // the elevation
constexpr QLatin1String Roll("roll");
} // namespace PositionPreset

namespace LimitationsPreset {
constexpr QLatin1String SpeedXMin("speed_x_min");
constexpr QLatin1String SpeedXMax("speed_x_max");
constexpr QLatin1String SpeedYMin("speed_y_min");
constexpr QLatin1String SpeedYMax("speed_y_max");
constexpr QLatin1String PointCount("point_count");
constexpr QLatin1String PositionXMin("position_x_min");
constexpr QLatin1String PositionXMax("position_x_max");
constexpr QLatin1String PositionYMin("position_y_min");
constexpr QLatin1String PositionYMax("position_y_max");
} // namespace LimitationsPreset

} // namespace ProfileKeys
