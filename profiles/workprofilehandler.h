#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QStringList>

// The store of all user settings: a list of named work profiles, one of them current,
// kept as JSON objects exactly as they are written to the settings file. Setters write
// one value into the current profile and announce it; applying a profile announces all
// of its values in a fixed order. The handler knows nothing of the widgets that listen.
class WorkProfileHandler : public QObject
{
    Q_OBJECT

public:
    // Relative on purpose: the settings live in the directory the program is started in.
    static const QString SettingsFilePath;
    static const QString DefaultRadarServerUrl;
    // The main window's controls 0 to 13; every profile stores all of them.
    static constexpr int ControlCount = 14;

    explicit WorkProfileHandler(QObject* parent = nullptr);

    int currentProfileId() const { return m_currentId; }
    QStringList profileNames() const;
    // A copy of the stored profile, or an empty object for an index out of range.
    QJsonObject profile(int index) const;

    void applyProfile(int index);
    int appendProfile(int sourceIndex);
    void renameProfile(int index, const QString& name);
    void removeProfile(int index);

    void loadProfiles(const QString& path);
    void saveProfiles(const QString& path) const;

    // What a new profile holds.
    static QJsonObject defaultProfile();

public slots:
    void setProtocolVersion(int version);
    void setProtocolForcing(bool forcing);
    void setRadarServerUrl(const QString& url);
    void setControlVisible(int control, bool visible);
    void setControlCollapsed(int control, bool collapsed);
    void setDrawVertical(bool drawVertical);
    void setKeepAspectRatio(bool keep);
    void setShowSightLine(bool show);
    void setShowCurrentTracksOnScheme(bool show);
    void setShowAverageTracksOnScheme(bool show);
    void setTracksDisplayMode(int mode);
    void setRoadConfig(const QJsonObject& config);
    void setShowLaneLinesOnVideo(bool show);
    void setShowDistLinesOnVideo(bool show);
    void setShowCurrentTracksOnVideo(bool show);
    void setShowAverageTracksOnVideo(bool show);
    void setTvmsConfig(const QJsonObject& config);
    void setPaintObjects(bool paint);
    void setAutoChangeView(bool autoChange);
    void setAutoGetData(bool autoGet);
    void setPositionPresets(const QJsonArray& presets);
    void setLimitationsPresets(const QJsonArray& presets);

signals:
    void applyingProfileStarted(const QString& name);
    void protocolVersionChanged(int version);
    void protocolForcingChanged(bool forcing);
    void radarServerUrlChanged(const QString& url);
    void controlVisibleChanged(int control, bool visible);
    void controlCollapsedChanged(int control, bool collapsed);
    void drawVerticalChanged(bool drawVertical);
    void keepAspectRatioChanged(bool keep);
    void showSightLineChanged(bool show);
    void showCurrentTracksOnSchemeChanged(bool show);
    void showAverageTracksOnSchemeChanged(bool show);
    void tracksDisplayModeChanged(int mode);
    void roadConfigChanged(const QJsonObject& config);
    void showLaneLinesOnVideoChanged(bool show);
    void showDistLinesOnVideoChanged(bool show);
    void showCurrentTracksOnVideoChanged(bool show);
    void showAverageTracksOnVideoChanged(bool show);
    void tvmsConfigChanged(const QJsonObject& config);
    void paintObjectsChanged(bool paint);
    void autoChangeViewChanged(bool autoChange);
    void autoGetDataChanged(bool autoGet);
    void positionPresetsChanged(const QJsonArray& presets);
    void limitationsPresetsChanged(const QJsonArray& presets);
    void applyingProfileFinished();

private:
    bool checkIndex(int index);
    void doWriteValue(const QStringList& path, const QJsonValue& value);

    QJsonArray m_profiles;
    int m_currentId = 0;
};
