#include "workprofilehandler.h"

#include "profilekeys.h"

#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

namespace K = ProfileKeys;

const QString WorkProfileHandler::SettingsFilePath
    = QStringLiteral("./.orvex-road-app-gui_config.json");
const QString WorkProfileHandler::DefaultRadarServerUrl = QStringLiteral("ws://127.0.0.1:7578/");

namespace {

// Which controls of the main window a new profile shows. Controls 10 and 11 have no
// widget but are stored all the same.
constexpr bool DefaultControlVisible[WorkProfileHandler::ControlCount] = {
    true, // 0 traffic scheme / imitator area
    true, // 1 traffic scheme box
    false, // 2 road objects table
    true, // 3 imitator speed box
    true, // 4 send commands
    true, // 5 configure limitations
    true, // 6 set radar position
    true, // 7 fine tuning
    true, // 8 save params and restart
    true, // 9 general info
    false, // 10
    false, // 11
    false, // 12 objects history window
    false, // 13 projection to video window
};

QString controlKey(int control)
{
    return QString::number(control);
}

// Returns object with the value stored at path, creating the objects on the way and
// keeping everything else.
QJsonObject replaced(QJsonObject object, const QStringList& path, int depth,
                     const QJsonValue& value)
{
    const QString& key = path.at(depth);
    if (depth == path.size() - 1) {
        object.insert(key, value);
    } else {
        const QJsonObject inner = object.value(key).toObject();
        object.insert(key, replaced(inner, path, depth + 1, value));
    }
    return object;
}

} // namespace

WorkProfileHandler::WorkProfileHandler(QObject* parent)
    : QObject(parent)
{ }

QStringList WorkProfileHandler::profileNames() const
{
    QStringList names;
    names.reserve(m_profiles.size());
    for (const QJsonValue& profile : m_profiles)
        names.append(profile.toObject().value(K::Name).toString());
    return names;
}

QJsonObject WorkProfileHandler::profile(int index) const
{
    if (index < 0 || index >= m_profiles.size())
        return {};
    return m_profiles.at(index).toObject();
}

QJsonObject WorkProfileHandler::defaultProfile()
{
    QJsonObject controls;
    for (int control = 0; control < ControlCount; ++control) {
        controls.insert(controlKey(control), QJsonObject{
                                                 {K::Visible, DefaultControlVisible[control]},
                                                 {K::Collapsed, false},
                                             });
    }
    const QJsonObject trafficScheme{
        {K::DrawVertical, true},        {K::KeepAspectRatio, true},    {K::ShowSightLine, true},
        {K::ShowCurrentTracks, true},   {K::ShowAverageTracks, false}, {K::TracksDisplayMode, 0},
        {K::RoadConfig, QJsonObject()},
    };
    const QJsonObject monitoringSystem{
        {K::ShowLaneBoundaries, true}, {K::ShowDistanceLines, true},   {K::ShowCurrentTracks, true},
        {K::ShowAverageTracks, false}, {K::TvmsConfig, QJsonObject()},
    };
    return QJsonObject{
        {K::Name, tr("Default profile")},
        {K::Connection,
         QJsonObject{
             {K::RadarProtocol, 0},
             {K::ProtocolForcing, true},
             {K::RadarServerUrl, DefaultRadarServerUrl},
         }},
        {K::View,
         QJsonObject{
             {K::Controls, controls},
             {K::TrafficScheme, trafficScheme},
             {K::MonitoringSystem, monitoringSystem},
             {K::PaintObjects, true},
             {K::AutoChangeView, true},
         }},
        {K::Data, QJsonObject{{K::AutoGetData, true}}},
        // The preset lists appear only once a panel stores presets.
        {K::Presets, QJsonObject()},
    };
}

bool WorkProfileHandler::checkIndex(int index)
{
    // Once anything is asked of the handler there is at least one profile.
    if (m_profiles.isEmpty())
        m_profiles.append(defaultProfile());
    return index >= 0 && index < m_profiles.size();
}

void WorkProfileHandler::applyProfile(int index)
{
    if (index < 0)
        index = m_currentId;
    if (!checkIndex(index))
        index = 0;
    m_currentId = index;

    // Missing keys and values of another type read as false, 0, "" or empty: the
    // defaults of a new profile are deliberately not used here.
    const QJsonObject profile = m_profiles.at(index).toObject();
    const QJsonObject connection = profile.value(K::Connection).toObject();
    const QJsonObject view = profile.value(K::View).toObject();
    const QJsonObject controls = view.value(K::Controls).toObject();
    const QJsonObject scheme = view.value(K::TrafficScheme).toObject();
    const QJsonObject monitoring = view.value(K::MonitoringSystem).toObject();
    const QJsonObject data = profile.value(K::Data).toObject();
    const QJsonObject presets = profile.value(K::Presets).toObject();

    emit applyingProfileStarted(profile.value(K::Name).toString());

    emit protocolVersionChanged(connection.value(K::RadarProtocol).toInt());
    emit protocolForcingChanged(connection.value(K::ProtocolForcing).toBool());
    emit radarServerUrlChanged(connection.value(K::RadarServerUrl).toString());

    for (int control = 0; control < ControlCount; ++control) {
        const QJsonObject entry = controls.value(controlKey(control)).toObject();
        emit controlVisibleChanged(control, entry.value(K::Visible).toBool());
        emit controlCollapsedChanged(control, entry.value(K::Collapsed).toBool());
    }

    emit drawVerticalChanged(scheme.value(K::DrawVertical).toBool());
    emit keepAspectRatioChanged(scheme.value(K::KeepAspectRatio).toBool());
    emit showSightLineChanged(scheme.value(K::ShowSightLine).toBool());
    emit showCurrentTracksOnSchemeChanged(scheme.value(K::ShowCurrentTracks).toBool());
    emit showAverageTracksOnSchemeChanged(scheme.value(K::ShowAverageTracks).toBool());
    emit tracksDisplayModeChanged(scheme.value(K::TracksDisplayMode).toInt());
    emit roadConfigChanged(scheme.value(K::RoadConfig).toObject());

    emit showLaneLinesOnVideoChanged(monitoring.value(K::ShowLaneBoundaries).toBool());
    emit showDistLinesOnVideoChanged(monitoring.value(K::ShowDistanceLines).toBool());
    // Keep this cross-read: on applying, the video's track flags follow the traffic
    // scheme's, although their setters store them under "monitoring_system".
    emit showCurrentTracksOnVideoChanged(scheme.value(K::ShowCurrentTracks).toBool());
    emit showAverageTracksOnVideoChanged(scheme.value(K::ShowAverageTracks).toBool());
    emit tvmsConfigChanged(monitoring.value(K::TvmsConfig).toObject());

    emit paintObjectsChanged(view.value(K::PaintObjects).toBool());
    emit autoChangeViewChanged(view.value(K::AutoChangeView).toBool());

    emit autoGetDataChanged(data.value(K::AutoGetData).toBool());

    emit positionPresetsChanged(presets.value(K::PositionPresets).toArray());
    emit limitationsPresetsChanged(presets.value(K::LimitationsPresets).toArray());

    emit applyingProfileFinished();
}

int WorkProfileHandler::appendProfile(int sourceIndex)
{
    QJsonObject profile;
    if (checkIndex(sourceIndex)) {
        profile = m_profiles.at(sourceIndex).toObject();
        // Copies of copies keep adding the suffix.
        profile.insert(K::Name, profile.value(K::Name).toString() + tr(" (copy)"));
    } else {
        profile = defaultProfile();
    }
    m_profiles.append(profile);
    return m_profiles.size() - 1;
}

void WorkProfileHandler::renameProfile(int index, const QString& name)
{
    if (!checkIndex(index))
        return;
    QJsonObject profile = m_profiles.at(index).toObject();
    profile.insert(K::Name, name);
    m_profiles.replace(index, profile);
}

void WorkProfileHandler::removeProfile(int index)
{
    // The current profile stays; the request is dropped without a word.
    if (!checkIndex(index) || index == m_currentId)
        return;
    m_profiles.removeAt(index);
    if (index < m_currentId)
        --m_currentId;
}

void WorkProfileHandler::loadProfiles(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    file.close();
    // Unparsable, not an object, or "{}": as if there were no file.
    if (root.isEmpty())
        return;

    m_profiles = root.value(K::Profiles).toArray();
    int currentId = root.value(K::CurrentId).toInt();
    if (!checkIndex(currentId))
        currentId = 0;
    m_currentId = currentId;
}

void WorkProfileHandler::saveProfiles(const QString& path) const
{
    // Written beside the old file and renamed over it only when complete, so that a
    // crash or a full disk never leaves a truncated settings file. A failed save is
    // not reported: the settings of this session are then lost. Where the directory
    // allows no file beside it (a writable settings file in a read-only directory) the
    // file itself is written over: better a save without that guard than none.
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly))
        return;
    const QJsonObject root{
        {K::Profiles, m_profiles},
        {K::CurrentId, m_currentId},
    };
    const QByteArray json = QJsonDocument(root).toJson(QJsonDocument::Indented);
    // QSaveFile takes a short write (disk full, file size limit) for success and would
    // rename the truncated file into place; check every byte arrived first.
    if (file.write(json) != json.size() || !file.flush() || file.size() != json.size()) {
        file.cancelWriting();
        return;
    }
    file.commit();
}

void WorkProfileHandler::doWriteValue(const QStringList& path, const QJsonValue& value)
{
    if (path.isEmpty() || !checkIndex(m_currentId))
        return;
    const QJsonObject profile = m_profiles.at(m_currentId).toObject();
    m_profiles.replace(m_currentId, replaced(profile, path, 0, value));
}

void WorkProfileHandler::setProtocolVersion(int version)
{
    doWriteValue({K::Connection, K::RadarProtocol}, version);
    emit protocolVersionChanged(version);
}

void WorkProfileHandler::setProtocolForcing(bool forcing)
{
    doWriteValue({K::Connection, K::ProtocolForcing}, forcing);
    emit protocolForcingChanged(forcing);
}

void WorkProfileHandler::setRadarServerUrl(const QString& url)
{
    doWriteValue({K::Connection, K::RadarServerUrl}, url);
    emit radarServerUrlChanged(url);
}

void WorkProfileHandler::setControlVisible(int control, bool visible)
{
    doWriteValue({K::View, K::Controls, controlKey(control), K::Visible}, visible);
    emit controlVisibleChanged(control, visible);
}

void WorkProfileHandler::setControlCollapsed(int control, bool collapsed)
{
    doWriteValue({K::View, K::Controls, controlKey(control), K::Collapsed}, collapsed);
    emit controlCollapsedChanged(control, collapsed);
}

void WorkProfileHandler::setDrawVertical(bool drawVertical)
{
    doWriteValue({K::View, K::TrafficScheme, K::DrawVertical}, drawVertical);
    emit drawVerticalChanged(drawVertical);
}

void WorkProfileHandler::setKeepAspectRatio(bool keep)
{
    doWriteValue({K::View, K::TrafficScheme, K::KeepAspectRatio}, keep);
    emit keepAspectRatioChanged(keep);
}

void WorkProfileHandler::setShowSightLine(bool show)
{
    doWriteValue({K::View, K::TrafficScheme, K::ShowSightLine}, show);
    emit showSightLineChanged(show);
}

void WorkProfileHandler::setShowCurrentTracksOnScheme(bool show)
{
    doWriteValue({K::View, K::TrafficScheme, K::ShowCurrentTracks}, show);
    emit showCurrentTracksOnSchemeChanged(show);
}

void WorkProfileHandler::setShowAverageTracksOnScheme(bool show)
{
    doWriteValue({K::View, K::TrafficScheme, K::ShowAverageTracks}, show);
    emit showAverageTracksOnSchemeChanged(show);
}

void WorkProfileHandler::setTracksDisplayMode(int mode)
{
    doWriteValue({K::View, K::TrafficScheme, K::TracksDisplayMode}, mode);
    emit tracksDisplayModeChanged(mode);
}

void WorkProfileHandler::setRoadConfig(const QJsonObject& config)
{
    doWriteValue({K::View, K::TrafficScheme, K::RoadConfig}, config);
    emit roadConfigChanged(config);
}

void WorkProfileHandler::setShowLaneLinesOnVideo(bool show)
{
    doWriteValue({K::View, K::MonitoringSystem, K::ShowLaneBoundaries}, show);
    emit showLaneLinesOnVideoChanged(show);
}

void WorkProfileHandler::setShowDistLinesOnVideo(bool show)
{
    doWriteValue({K::View, K::MonitoringSystem, K::ShowDistanceLines}, show);
    emit showDistLinesOnVideoChanged(show);
}

void WorkProfileHandler::setShowCurrentTracksOnVideo(bool show)
{
    doWriteValue({K::View, K::MonitoringSystem, K::ShowCurrentTracks}, show);
    emit showCurrentTracksOnVideoChanged(show);
}

void WorkProfileHandler::setShowAverageTracksOnVideo(bool show)
{
    doWriteValue({K::View, K::MonitoringSystem, K::ShowAverageTracks}, show);
    emit showAverageTracksOnVideoChanged(show);
}

void WorkProfileHandler::setTvmsConfig(const QJsonObject& config)
{
    doWriteValue({K::View, K::MonitoringSystem, K::TvmsConfig}, config);
    emit tvmsConfigChanged(config);
}

void WorkProfileHandler::setPaintObjects(bool paint)
{
    doWriteValue({K::View, K::PaintObjects}, paint);
    emit paintObjectsChanged(paint);
}

void WorkProfileHandler::setAutoChangeView(bool autoChange)
{
    doWriteValue({K::View, K::AutoChangeView}, autoChange);
    emit autoChangeViewChanged(autoChange);
}

void WorkProfileHandler::setAutoGetData(bool autoGet)
{
    doWriteValue({K::Data, K::AutoGetData}, autoGet);
    emit autoGetDataChanged(autoGet);
}

void WorkProfileHandler::setPositionPresets(const QJsonArray& presets)
{
    doWriteValue({K::Presets, K::PositionPresets}, presets);
    emit positionPresetsChanged(presets);
}

void WorkProfileHandler::setLimitationsPresets(const QJsonArray& presets)
{
    doWriteValue({K::Presets, K::LimitationsPresets}, presets);
    emit limitationsPresetsChanged(presets);
}
