#include "workprofilehandler.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using H = WorkProfileHandler;
const QString SettingsFile = QStringLiteral(".orvex-road-app-gui_config.json");

// The built-in default profile, spelled out key by key.
const QByteArray DefaultProfileJson = R"({
    "name": "Default profile",
    "connection": {"radar_protocol": 0, "protocol_forcing": true,
                   "radar_server_url": "ws://127.0.0.1:7578/"},
    "view": {
        "controls": {
            "0": {"visible": true, "collapsed": false}, "1": {"visible": true, "collapsed": false},
            "2": {"visible": false, "collapsed": false}, "3": {"visible": true, "collapsed": false},
            "4": {"visible": true, "collapsed": false}, "5": {"visible": true, "collapsed": false},
            "6": {"visible": true, "collapsed": false}, "7": {"visible": true, "collapsed": false},
            "8": {"visible": true, "collapsed": false}, "9": {"visible": true, "collapsed": false},
            "10": {"visible": false, "collapsed": false},
            "11": {"visible": false, "collapsed": false},
            "12": {"visible": false, "collapsed": false},
            "13": {"visible": false, "collapsed": false}
        },
        "traffic_scheme": {"draw_vertical": true, "keep_aspect_ratio": true,
                           "show_sightline": true, "show_current_tracks": true,
                           "show_average_tracks": false, "tracks_display_mode": 0,
                           "road_config": {}},
        "monitoring_system": {"show_lane_boundaries": true, "show_distance_lines": true,
                              "show_current_tracks": true, "show_average_tracks": false,
                              "tvms_config": {}},
        "paint_objects": true,
        "auto_change_view": true
    },
    "data": {"auto_get_data": true},
    "presets": {}
})";

QJsonObject parsed(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(data), qint64(data.size()));
}

QByteArray settingsFile(const QByteArray& profiles, int currentId)
{
    return "{\"profiles\": " + profiles + ", \"current_id\": " + QByteArray::number(currentId)
           + "}";
}

// Every leaf of a JSON object by its slash-joined path; empty objects are leaves.
QMap<QString, QJsonValue> leaves(const QJsonObject& object, const QString& prefix = QString())
{
    QMap<QString, QJsonValue> out;
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString path = prefix.isEmpty() ? it.key() : prefix + '/' + it.key();
        if (it.value().isObject() && !it.value().toObject().isEmpty())
            out.insert(leaves(it.value().toObject(), path));
        else
            out.insert(path, it.value());
    }
    return out;
}

// A signal argument as the log shows it: JSON compact, the rest as plain text.
QString text(const QJsonValue& value)
{
    if (value.isObject() || value.isArray())
        return QJsonDocument::fromVariant(value.toVariant()).toJson(QJsonDocument::Compact);
    return value.toVariant().toString();
}

// Writes every signal of the handler down as "name(arguments)", in emission order.
template<typename... Args>
void record(H* h, void (H::*signal)(Args...), const char* name, QStringList* log)
{
    QObject::connect(h, signal, h, [=](Args... args) {
        *log << QString("%1(%2)").arg(name, QStringList{text(args)...}.join(','));
    });
}

void recordAll(H* h, QStringList* log)
{
#define RECORD(signal) record(h, &H::signal, #signal, log)
    RECORD(applyingProfileStarted);
    RECORD(protocolVersionChanged);
    RECORD(protocolForcingChanged);
    RECORD(radarServerUrlChanged);
    RECORD(controlVisibleChanged);
    RECORD(controlCollapsedChanged);
    RECORD(drawVerticalChanged);
    RECORD(keepAspectRatioChanged);
    RECORD(showSightLineChanged);
    RECORD(showCurrentTracksOnSchemeChanged);
    RECORD(showAverageTracksOnSchemeChanged);
    RECORD(tracksDisplayModeChanged);
    RECORD(roadConfigChanged);
    RECORD(showLaneLinesOnVideoChanged);
    RECORD(showDistLinesOnVideoChanged);
    RECORD(showCurrentTracksOnVideoChanged);
    RECORD(showAverageTracksOnVideoChanged);
    RECORD(tvmsConfigChanged);
    RECORD(paintObjectsChanged);
    RECORD(autoChangeViewChanged);
    RECORD(autoGetDataChanged);
    RECORD(positionPresetsChanged);
    RECORD(limitationsPresetsChanged);
    RECORD(applyingProfileFinished);
#undef RECORD
}

// What one application of a profile must announce, in the order it must announce it.
struct Applied
{
    QString name, url;
    int protocol = 0, displayMode = 0;
    bool forcing = false;
    bool visible[H::ControlCount] = {}, collapsed[H::ControlCount] = {};
    bool vertical = false, aspect = false, sightLine = false, schemeCurrent = false,
         schemeAverage = false;
    QJsonObject road, tvms;
    bool laneLines = false, distLines = false, videoCurrent = false, videoAverage = false;
    bool paint = false, autoChange = false, autoGet = false;
    QJsonArray positions, limitations;

    QStringList log() const
    {
        QStringList l{"applyingProfileStarted(" + name + ")",
                      "protocolVersionChanged(" + text(protocol) + ")",
                      "protocolForcingChanged(" + text(forcing) + ")",
                      "radarServerUrlChanged(" + url + ")"};
        for (int c = 0; c < H::ControlCount; ++c) {
            l << QString("controlVisibleChanged(%1,%2)").arg(c).arg(text(visible[c]))
              << QString("controlCollapsedChanged(%1,%2)").arg(c).arg(text(collapsed[c]));
        }
        return l << "drawVerticalChanged(" + text(vertical) + ")"
                 << "keepAspectRatioChanged(" + text(aspect) + ")"
                 << "showSightLineChanged(" + text(sightLine) + ")"
                 << "showCurrentTracksOnSchemeChanged(" + text(schemeCurrent) + ")"
                 << "showAverageTracksOnSchemeChanged(" + text(schemeAverage) + ")"
                 << "tracksDisplayModeChanged(" + text(displayMode) + ")"
                 << "roadConfigChanged(" + text(road) + ")"
                 << "showLaneLinesOnVideoChanged(" + text(laneLines) + ")"
                 << "showDistLinesOnVideoChanged(" + text(distLines) + ")"
                 << "showCurrentTracksOnVideoChanged(" + text(videoCurrent) + ")"
                 << "showAverageTracksOnVideoChanged(" + text(videoAverage) + ")"
                 << "tvmsConfigChanged(" + text(tvms) + ")"
                 << "paintObjectsChanged(" + text(paint) + ")"
                 << "autoChangeViewChanged(" + text(autoChange) + ")"
                 << "autoGetDataChanged(" + text(autoGet) + ")"
                 << "positionPresetsChanged(" + text(positions) + ")"
                 << "limitationsPresetsChanged(" + text(limitations) + ")"
                 << "applyingProfileFinished()";
    }
};

Applied defaults()
{
    Applied v;
    v.name = "Default profile";
    v.url = "ws://127.0.0.1:7578/";
    for (int c : {0, 1, 3, 4, 5, 6, 7, 8, 9})
        v.visible[c] = true;
    v.forcing = v.vertical = v.aspect = v.sightLine = v.schemeCurrent = v.videoCurrent = true;
    v.laneLines = v.distLines = v.paint = v.autoChange = v.autoGet = true;
    return v;
}

} // namespace

Q_DECLARE_METATYPE(Applied)

class tst_WorkProfileHandler : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void defaultProfileOnDisk();
    void applyEmitsEveryValueInOrder_data();
    void applyEmitsEveryValueInOrder();
    void brokenFiles_data();
    void brokenFiles();
    void brokenFileKeepsLoadedProfiles();
    void settersWriteIntoCurrentProfile();
    void setterCreatesMissingObjects();
    void appendAndRename();
    void remove_data();
    void remove();
    // The file on disk is replaced whole, never rewritten in place.
    void saveReplacesFileByRename();
    // A write that fails half-way (here: the file size limit) leaves the old file.
    void failedSaveKeepsPreviousFile();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
};

void tst_WorkProfileHandler::init()
{
    m_previousDir = QDir::currentPath();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir::setCurrent(m_dir->path()));
}

void tst_WorkProfileHandler::cleanup()
{
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

void tst_WorkProfileHandler::defaultProfileOnDisk()
{
    H handler;
    QVERIFY(handler.profileNames().isEmpty());
    handler.applyProfile(handler.currentProfileId());
    QCOMPARE(handler.profileNames(), QStringList{"Default profile"});
    QCOMPARE(handler.currentProfileId(), 0);

    handler.saveProfiles(H::SettingsFilePath);
    const QByteArray written = readAll(SettingsFile);
    QVERIFY(written.contains("\n    ")); // indented
    QVERIFY(!parsed(DefaultProfileJson).isEmpty());
    const QJsonObject expected{{"profiles", QJsonArray{parsed(DefaultProfileJson)}},
                               {"current_id", 0}};
    QCOMPARE(parsed(written), expected);
}

void tst_WorkProfileHandler::applyEmitsEveryValueInOrder_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<Applied>("expected");

    QTest::newRow("default profile") << DefaultProfileJson << defaults();

    // Every value differs from the default; the video's track flags are stored opposite
    // to the scheme's so that the deliberate cross-read shows.
    Applied custom;
    custom.name = "Night shift";
    custom.protocol = 1;
    custom.url = "ws://10.0.0.5:9000/";
    custom.visible[2] = custom.visible[12] = custom.collapsed[4] = custom.collapsed[9] = true;
    custom.aspect = custom.schemeAverage = custom.distLines = custom.autoChange = true;
    custom.displayMode = 2;
    custom.road = QJsonObject{{"origin_offset", 12.5}};
    custom.videoCurrent = false; // the scheme's false, not monitoring_system's true
    custom.videoAverage = true; // the scheme's true, not monitoring_system's false
    custom.tvms = QJsonObject{{"delay", 40}};
    custom.positions = QJsonArray{QJsonObject{{"name", "pole 3"}}};
    custom.limitations = QJsonArray{1, 2};
    QTest::newRow("custom values, video tracks follow the scheme") << QByteArray(R"({
        "name": "Night shift",
        "connection": {"radar_protocol": 1, "protocol_forcing": false,
                       "radar_server_url": "ws://10.0.0.5:9000/"},
        "view": {
            "controls": {"2": {"visible": true}, "4": {"visible": false, "collapsed": true},
                         "9": {"collapsed": true}, "12": {"visible": true}},
            "traffic_scheme": {"draw_vertical": false, "keep_aspect_ratio": true,
                               "show_sightline": false, "show_current_tracks": false,
                               "show_average_tracks": true, "tracks_display_mode": 2,
                               "road_config": {"origin_offset": 12.5}},
            "monitoring_system": {"show_lane_boundaries": false, "show_distance_lines": true,
                                  "show_current_tracks": true, "show_average_tracks": false,
                                  "tvms_config": {"delay": 40}},
            "paint_objects": false, "auto_change_view": true
        },
        "data": {"auto_get_data": false},
        "presets": {"position_presets": [{"name": "pole 3"}], "limitations_presets": [1, 2]}
    })") << custom;

    // Missing keys and wrong types read as false, 0, "" and empty, never as defaults.
    QTest::newRow("empty profile gives fallbacks") << QByteArray("{}") << Applied();
    QTest::newRow("profile that is no object gives fallbacks") << QByteArray("42") << Applied();
    QTest::newRow("values of the wrong types give fallbacks") << QByteArray(R"({
        "name": 7,
        "connection": {"radar_protocol": "1", "protocol_forcing": 1, "radar_server_url": 5},
        "view": {
            "controls": {"0": {"visible": "true", "collapsed": 1}, "1": true, "2": []},
            "traffic_scheme": {"draw_vertical": null, "keep_aspect_ratio": "yes",
                               "show_sightline": [], "show_current_tracks": {},
                               "show_average_tracks": 1, "tracks_display_mode": 1.5,
                               "road_config": [1, 2]},
            "monitoring_system": "off", "paint_objects": 1, "auto_change_view": "true"
        },
        "data": [true],
        "presets": {"position_presets": {"a": 1}, "limitations_presets": "none"}
    })") << Applied();
    QTest::newRow("out-of-range integers give fallbacks") << QByteArray(R"({
        "connection": {"radar_protocol": 1e300},
        "view": {"traffic_scheme": {"tracks_display_mode": -9e18}}
    })") << Applied();

    Applied noUrl = defaults();
    noUrl.url.clear();
    QByteArray withoutUrl = DefaultProfileJson;
    withoutUrl.replace("\"radar_server_url\": \"ws://127.0.0.1:7578/\"", "\"other\": 1");
    QTest::newRow("missing server url applies an empty url") << withoutUrl << noUrl;

    Applied whole;
    whole.protocol = 1;
    QTest::newRow("whole number written as double")
        << QByteArray(R"({"connection": {"radar_protocol": 1.0}})") << whole;
}

void tst_WorkProfileHandler::applyEmitsEveryValueInOrder()
{
    QFETCH(QByteArray, profile);
    QFETCH(Applied, expected);
    writeAll(SettingsFile, settingsFile("[" + profile + "]", 0));

    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    QStringList log;
    recordAll(&handler, &log);
    handler.applyProfile(-1);
    QCOMPARE(log, expected.log());

    // The video's current-track flag set directly is not what the next apply announces.
    handler.setShowCurrentTracksOnVideo(!expected.videoCurrent);
    log.clear();
    handler.applyProfile(handler.currentProfileId());
    QCOMPARE(log, expected.log());
}

void tst_WorkProfileHandler::brokenFiles_data()
{
    QTest::addColumn<QByteArray>("content"); // "-" for no file at all
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("current");

    const QStringList none, fresh{"Default profile"}, two{"A", "B"};
    const QByteArray a = R"([{"name": "A"}, {"name": "B"}])";
    QTest::newRow("no file") << QByteArray("-") << none << 0;
    QTest::newRow("empty file") << QByteArray() << none << 0;
    QTest::newRow("invalid JSON") << QByteArray("{\"profiles\": [") << none << 0;
    QTest::newRow("top level array") << QByteArray("[]") << none << 0;
    QTest::newRow("empty object") << QByteArray("{}") << none << 0;
    QTest::newRow("current_id out of range") << settingsFile(a, 5) << two << 0;
    QTest::newRow("negative current_id") << settingsFile(a, -1) << two << 0;
    QTest::newRow("current_id kept") << settingsFile(a, 1) << two << 1;
    QTest::newRow("current_id as string")
        << QByteArray(R"({"profiles": [{"name": "A"}, {"name": "B"}], "current_id": "1"})") << two
        << 0;
    QTest::newRow("current_id fractional")
        << QByteArray(R"({"profiles": [{"name": "A"}, {"name": "B"}], "current_id": 1.5})") << two
        << 0;
    QTest::newRow("current_id huge")
        << QByteArray(R"({"profiles": [{"name": "A"}, {"name": "B"}], "current_id": 1e20})") << two
        << 0;
    QTest::newRow("profiles not an array")
        << QByteArray(R"({"profiles": {"name": "A"}, "current_id": 0})") << fresh << 0;
    QTest::newRow("profiles missing") << QByteArray(R"({"current_id": 3})") << fresh << 0;
    QTest::newRow("profile entries not objects")
        << settingsFile(R"([1, "x", null])", 2) << QStringList{"", "", ""} << 2;
}

void tst_WorkProfileHandler::brokenFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, names);
    QFETCH(int, current);
    if (content != "-")
        writeAll(SettingsFile, content);

    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    QCOMPARE(handler.profileNames(), names);
    QCOMPARE(handler.currentProfileId(), current);

    // Whatever was read, applying works and leaves a current profile.
    QSignalSpy started(&handler, &H::applyingProfileStarted);
    QSignalSpy finished(&handler, &H::applyingProfileFinished);
    handler.applyProfile(handler.currentProfileId());
    QCOMPARE(finished.count(), 1);
    const QStringList after = handler.profileNames();
    QCOMPARE(after, names.isEmpty() ? QStringList{"Default profile"} : names);
    QCOMPARE(started.first().first().toString(), after.at(handler.currentProfileId()));
}

void tst_WorkProfileHandler::brokenFileKeepsLoadedProfiles()
{
    writeAll(SettingsFile, settingsFile(R"([{"name": "A"}, {"name": "B"}])", 1));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    for (const QByteArray& broken : {QByteArray("{}"), QByteArray("[]"), QByteArray("{oops")}) {
        writeAll(SettingsFile, broken);
        handler.loadProfiles(H::SettingsFilePath);
        QCOMPARE(handler.profileNames(), (QStringList{"A", "B"}));
        QCOMPARE(handler.currentProfileId(), 1);
    }
}

void tst_WorkProfileHandler::settersWriteIntoCurrentProfile()
{
    // On an empty list the first setter creates the default profile, then writes.
    H handler;
    QStringList log;
    recordAll(&handler, &log);
    handler.setProtocolVersion(1);
    QCOMPARE(handler.profileNames(), QStringList{"Default profile"});
    handler.setProtocolForcing(false);
    handler.setRadarServerUrl("ws://radar:1/");
    handler.setControlVisible(13, true);
    handler.setControlCollapsed(5, true);
    handler.setDrawVertical(false);
    handler.setKeepAspectRatio(false);
    handler.setShowSightLine(false);
    handler.setShowCurrentTracksOnScheme(false);
    handler.setShowAverageTracksOnScheme(true);
    handler.setTracksDisplayMode(2);
    handler.setRoadConfig({{"k", 1}});
    handler.setShowLaneLinesOnVideo(false);
    handler.setShowDistLinesOnVideo(false);
    handler.setShowCurrentTracksOnVideo(false);
    handler.setShowAverageTracksOnVideo(true);
    handler.setTvmsConfig({{"k", 2}});
    handler.setPaintObjects(false);
    handler.setAutoChangeView(false);
    handler.setAutoGetData(false);
    handler.setPositionPresets({3});
    handler.setLimitationsPresets({4});
    QCOMPARE(log.size(), 22);

    // Each value at its path, every other value of the default kept.
    QMap<QString, QJsonValue> changed = leaves(handler.profile(0));
    const QMap<QString, QJsonValue> defaults = leaves(parsed(DefaultProfileJson));
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        if (changed.value(it.key()) == it.value())
            changed.remove(it.key());
    }
    const QMap<QString, QJsonValue> expected{
        {"connection/radar_protocol", 1},
        {"connection/protocol_forcing", false},
        {"connection/radar_server_url", "ws://radar:1/"},
        {"view/controls/13/visible", true},
        {"view/controls/5/collapsed", true},
        {"view/traffic_scheme/draw_vertical", false},
        {"view/traffic_scheme/keep_aspect_ratio", false},
        {"view/traffic_scheme/show_sightline", false},
        {"view/traffic_scheme/show_current_tracks", false},
        {"view/traffic_scheme/show_average_tracks", true},
        {"view/traffic_scheme/tracks_display_mode", 2},
        {"view/traffic_scheme/road_config/k", 1},
        {"view/monitoring_system/show_lane_boundaries", false},
        {"view/monitoring_system/show_distance_lines", false},
        {"view/monitoring_system/show_current_tracks", false},
        {"view/monitoring_system/show_average_tracks", true},
        {"view/monitoring_system/tvms_config/k", 2},
        {"view/paint_objects", false},
        {"view/auto_change_view", false},
        {"data/auto_get_data", false},
        {"presets/position_presets", QJsonArray{3}},
        {"presets/limitations_presets", QJsonArray{4}},
    };
    QCOMPARE(changed, expected);
    // Nothing was lost: the empty "presets" object became its two lists.
    QCOMPARE(leaves(handler.profile(0)).size(), defaults.size() + 1);

    // The same value again is written and announced again.
    handler.setPaintObjects(false);
    QCOMPARE(log.size(), 23);
    QCOMPARE(log.last(), QString("paintObjectsChanged(false)"));
}

void tst_WorkProfileHandler::setterCreatesMissingObjects()
{
    writeAll(SettingsFile,
             settingsFile(R"([{"name": "A", "view": 5, "connection": {"x": 1}}])", 0));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    handler.setControlVisible(12, true);
    handler.setProtocolVersion(1);
    QCOMPARE(handler.profile(0), parsed(R"({"name": "A",
        "view": {"controls": {"12": {"visible": true}}},
        "connection": {"x": 1, "radar_protocol": 1}})"));
}

void tst_WorkProfileHandler::appendAndRename()
{
    writeAll(SettingsFile, settingsFile(R"([{"name": "A", "data": {"k": 1}}])", 0));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    QCOMPARE(handler.appendProfile(0), 1);
    QCOMPARE(handler.appendProfile(1), 2);
    QCOMPARE(handler.profileNames(), (QStringList{"A", "A (copy)", "A (copy) (copy)"}));
    QCOMPARE(handler.profile(2).value("data").toObject(), QJsonObject({{"k", 1}}));

    // An invalid source gives a fresh default profile, not a copy.
    QCOMPARE(handler.appendProfile(7), 3);
    QCOMPARE(handler.appendProfile(-1), 4);
    QCOMPARE(handler.profile(3), parsed(DefaultProfileJson));
    QCOMPARE(handler.profile(4), parsed(DefaultProfileJson));
    QCOMPARE(handler.currentProfileId(), 0);

    // Names need not be unique; invalid indices are ignored.
    handler.renameProfile(1, "A");
    handler.renameProfile(5, "Nowhere");
    handler.renameProfile(-1, "Nowhere");
    QCOMPARE(handler.profileNames().mid(0, 2), (QStringList{"A", "A"}));
    QVERIFY(!handler.profileNames().contains("Nowhere"));
}

void tst_WorkProfileHandler::remove_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("currentAfter");

    QTest::newRow("current profile is kept") << 1 << 1 << QStringList{"A", "B", "C"} << 1;
    QTest::newRow("before current shifts current") << 2 << 0 << QStringList{"B", "C"} << 1;
    QTest::newRow("after current leaves current") << 0 << 2 << QStringList{"A", "B"} << 0;
    QTest::newRow("index too large ignored") << 0 << 3 << QStringList{"A", "B", "C"} << 0;
    QTest::newRow("negative index ignored") << 0 << -1 << QStringList{"A", "B", "C"} << 0;
}

void tst_WorkProfileHandler::remove()
{
    QFETCH(int, current);
    QFETCH(int, index);
    QFETCH(QStringList, names);
    QFETCH(int, currentAfter);
    writeAll(SettingsFile,
             settingsFile(R"([{"name": "A"}, {"name": "B"}, {"name": "C"}])", current));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    handler.removeProfile(index);
    QCOMPARE(handler.profileNames(), names);
    QCOMPARE(handler.currentProfileId(), currentAfter);
}

void tst_WorkProfileHandler::saveReplacesFileByRename()
{
    const QByteArray old = settingsFile(R"([{"name": "Old"}])", 0);
    writeAll(SettingsFile, old);
    // A second name for the old file's contents: an in-place rewrite would show in it.
    QCOMPARE(::link(qPrintable(SettingsFile), "previous.json"), 0);

    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    handler.renameProfile(0, "New");
    handler.saveProfiles(H::SettingsFilePath);

    QCOMPARE(readAll("previous.json"), old);
    H reloaded;
    reloaded.loadProfiles(H::SettingsFilePath);
    QCOMPARE(reloaded.profile(0), handler.profile(0));
    // No temporary file is left behind.
    QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden, QDir::Name),
             (QStringList{SettingsFile, "previous.json"}));
}

void tst_WorkProfileHandler::failedSaveKeepsPreviousFile()
{
    const QByteArray old = settingsFile(R"([{"name": "Old"}])", 0);
    writeAll(SettingsFile, old);
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    for (int i = 0; i < 20; ++i)
        handler.appendProfile(-1); // far more than the limit below

    // Writes beyond 256 bytes fail with EFBIG, even for root, instead of raising a signal.
    rlimit saved{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 256;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    handler.saveProfiles(H::SettingsFilePath);
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    QCOMPARE(readAll(SettingsFile), old);
    QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList{SettingsFile});

    // A file that cannot be created at all is no error either.
    handler.saveProfiles("no/such/directory/settings.json");

    // With the limit lifted the same save goes through.
    handler.saveProfiles(H::SettingsFilePath);
    H reloaded;
    reloaded.loadProfiles(H::SettingsFilePath);
    QCOMPARE(reloaded.profileNames().size(), 21);
}

QTEST_GUILESS_MAIN(tst_WorkProfileHandler)
#include "tst_workprofilehandler.moc"
