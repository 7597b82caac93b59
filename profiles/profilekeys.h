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

} // namespace ProfileKeys
