#include "workprofilehandler.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

// The store of work profiles: the settings file's format, applying, editing, saving.
class tst_WorkProfileHandler : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void defaultProfileOnDisk();
    void applyAnnouncesEveryValueInOrder_data();
    void applyAnnouncesEveryValueInOrder();
    void settersWriteWhatApplyReads();
    void loading_data();
    void loading();
    void appendRenameRemove();
    // The file on disk is replaced whole, never rewritten in place; a write that fails
    // half-way (here: at the file size limit) leaves the old file.
    void saveIsAtomic();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
};

namespace {

using H = WorkProfileHandler;
const QString SettingsFile = QStringLiteral(".orvex-road-app-gui_config.json");

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

// What applying the "Night shift" profile below must announce, in this order. Every
// value differs from the default; on applying, the video's track flags follow the
// traffic scheme's.
QStringList nightShiftLog()
{
    QStringList log{"applyingProfileStarted(Night shift)", "protocolVersionChanged(1)",
                    "protocolForcingChanged(false)", "radarServerUrlChanged(ws://10.0.0.5:9000/)"};
    const QString visible = "00100000000010", collapsed = "00001000010000";
    for (int c = 0; c < H::ControlCount; ++c) {
        log << QString("controlVisibleChanged(%1,%2)")
                   .arg(c)
                   .arg(visible[c] == '1' ? "true" : "false")
            << QString("controlCollapsedChanged(%1,%2)")
                   .arg(c)
                   .arg(collapsed[c] == '1' ? "true" : "false");
    }
    return log << "drawVerticalChanged(false)"
               << "keepAspectRatioChanged(true)"
               << "showSightLineChanged(false)"
               << "showCurrentTracksOnSchemeChanged(false)"
               << "showAverageTracksOnSchemeChanged(true)"
               << "tracksDisplayModeChanged(2)"
               << R"(roadConfigChanged({"origin_offset":12.5}))"
               << "showLaneLinesOnVideoChanged(false)"
               << "showDistLinesOnVideoChanged(true)"
               << "showCurrentTracksOnVideoChanged(false)"
               << "showAverageTracksOnVideoChanged(true)"
               << R"(tvmsConfigChanged({"delay":40}))"
               << "paintObjectsChanged(false)"
               << "autoChangeViewChanged(true)"
               << "autoGetDataChanged(false)"
               << R"(positionPresetsChanged([{"name":"pole 3"}]))"
               << "limitationsPresetsChanged([1,2])"
               << "applyingProfileFinished()";
}

// The video's track flags are stored opposite to the scheme's so that the deliberate
// cross-read shows.
const QByteArray NightShiftJson = R"({
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
})";

} // namespace

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
    // Without a file the first application makes the default profile; it is saved
    // indented.
    H handler;
    QVERIFY(handler.profileNames().isEmpty());
    handler.applyProfile(handler.currentProfileId());
    handler.saveProfiles(H::SettingsFilePath);
    const QByteArray written = readAll(SettingsFile);
    QVERIFY(written.contains("\n    ")); // indented
    QCOMPARE(parsed(written),
             (QJsonObject{{"profiles", QJsonArray{H::defaultProfile()}}, {"current_id", 0}}));
}

void tst_WorkProfileHandler::applyAnnouncesEveryValueInOrder_data()
{
    QTest::addColumn<QByteArray>("profile");

    QTest::newRow("every value, video tracks follow the scheme") << NightShiftJson;
    // Missing keys and wrong types read as false, 0, "" and empty, never as defaults.
    QTest::newRow("empty profile gives fallbacks") << QByteArray("{}");
    QTest::newRow("profile that is no object gives fallbacks") << QByteArray("42");
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
    })");
    QTest::newRow("out-of-range integers give fallbacks") << QByteArray(R"({
        "connection": {"radar_protocol": 1e300},
        "view": {"traffic_scheme": {"tracks_display_mode": -9e18}}})");
}

void tst_WorkProfileHandler::applyAnnouncesEveryValueInOrder()
{
    QFETCH(QByteArray, profile);
    writeAll(SettingsFile, settingsFile("[" + profile + "]", 0));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    QStringList log;
    recordAll(&handler, &log);
    handler.applyProfile(-1);
    if (profile == NightShiftJson) {
        QCOMPARE(log, nightShiftLog());
        return;
    }
    // The same signals in the same order, each with its fallback value.
    const QRegularExpression fallback(R"(^(\w+)\((\d+,)?(false|0|\{\}|\[\]|)\)$)");
    QStringList names, expectedNames;
    for (const QString& line : log) {
        QVERIFY2(fallback.match(line).hasMatch(), qPrintable(line));
        names << line.section('(', 0, 0);
    }
    for (const QString& line : nightShiftLog())
        expectedNames << line.section('(', 0, 0);
    QCOMPARE(names, expectedNames);
}

void tst_WorkProfileHandler::settersWriteWhatApplyReads()
{
    // On an empty list the first setter creates the default profile, then writes.
    H handler;
    handler.setProtocolVersion(1);
    QCOMPARE(handler.profileNames(), QStringList{"Default profile"});
    handler.renameProfile(0, "Night shift");
    handler.setProtocolForcing(false);
    handler.setRadarServerUrl("ws://10.0.0.5:9000/");
    for (int c = 0; c < H::ControlCount; ++c) {
        handler.setControlVisible(c, c == 2 || c == 12);
        handler.setControlCollapsed(c, c == 4 || c == 9);
    }
    handler.setDrawVertical(false);
    handler.setKeepAspectRatio(true);
    handler.setShowSightLine(false);
    handler.setShowCurrentTracksOnScheme(false);
    handler.setShowAverageTracksOnScheme(true);
    handler.setTracksDisplayMode(2);
    handler.setRoadConfig({{"origin_offset", 12.5}});
    handler.setShowLaneLinesOnVideo(false);
    handler.setShowDistLinesOnVideo(true);
    handler.setShowCurrentTracksOnVideo(true);
    handler.setShowAverageTracksOnVideo(false);
    handler.setTvmsConfig({{"delay", 40}});
    handler.setPaintObjects(false);
    handler.setAutoChangeView(true);
    handler.setAutoGetData(false);
    handler.setPositionPresets({QJsonObject{{"name", "pole 3"}}});
    handler.setLimitationsPresets({1, 2});
    QStringList log;
    recordAll(&handler, &log);
    handler.applyProfile(-1);
    QCOMPARE(log, nightShiftLog());
    // Apply does not read the video's own track flags back: they are in the file.
    const QJsonObject video = handler.profile(0)["view"].toObject()["monitoring_system"].toObject();
    QCOMPARE(video["show_current_tracks"], QJsonValue(true));
    QCOMPARE(video["show_average_tracks"], QJsonValue(false));

    // A value of the wrong type on the way is replaced by an object; the rest stays.
    writeAll(SettingsFile,
             settingsFile(R"([{"name": "A", "view": 5, "connection": {"x": 1}}])", 0));
    handler.loadProfiles(H::SettingsFilePath);
    handler.setControlVisible(12, true);
    handler.setProtocolVersion(1);
    QCOMPARE(handler.profile(0),
             parsed(R"({"name": "A", "view": {"controls": {"12": {"visible": true}}},
                                           "connection": {"x": 1, "radar_protocol": 1}})"));
}

void tst_WorkProfileHandler::loading_data()
{
    QTest::addColumn<QByteArray>("content"); // "-" for no file at all
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("current");

    // Before each row the profiles A and B, B current, were loaded.
    const QStringList kept{"A", "B"}, fresh{"Default profile"};
    const QByteArray xyz = R"([{"name": "X"}, {"name": "Y"}, {"name": "Z"}])";
    QTest::newRow("no file keeps what was loaded") << QByteArray("-") << kept << 1;
    QTest::newRow("invalid JSON keeps it") << QByteArray("{\"profiles\": [") << kept << 1;
    QTest::newRow("empty object keeps it") << QByteArray("{}") << kept << 1;
    QTest::newRow("current_id kept") << settingsFile(xyz, 2) << QStringList{"X", "Y", "Z"} << 2;
    QTest::newRow("current_id out of range")
        << settingsFile(xyz, 3) << QStringList{"X", "Y", "Z"} << 0;
    QTest::newRow("negative current_id")
        << settingsFile(xyz, -1) << QStringList{"X", "Y", "Z"} << 0;
    QTest::newRow("current_id as string")
        << QByteArray(R"({"profiles": [{"name": "X"}, {"name": "Y"}], "current_id": "1"})")
        << QStringList{"X", "Y"} << 0;
    QTest::newRow("profiles not an array")
        << QByteArray(R"({"profiles": {"name": "X"}, "current_id": 0})") << fresh << 0;
    QTest::newRow("profiles missing") << QByteArray(R"({"current_id": 3})") << fresh << 0;
    QTest::newRow("profile entries not objects")
        << settingsFile(R"([1, "x", null])", 2) << QStringList{"", "", ""} << 2;
}

void tst_WorkProfileHandler::loading()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, names);
    QFETCH(int, current);
    writeAll(SettingsFile, settingsFile(R"([{"name": "A"}, {"name": "B"}])", 1));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    if (content == "-")
        QVERIFY(QFile::remove(SettingsFile));
    else
        writeAll(SettingsFile, content);
    handler.loadProfiles(H::SettingsFilePath);
    QCOMPARE(handler.profileNames(), names);
    QCOMPARE(handler.currentProfileId(), current);

    // Whatever was read, applying works and announces the current profile.
    QSignalSpy started(&handler, &H::applyingProfileStarted);
    handler.applyProfile(handler.currentProfileId());
    QCOMPARE(started.value(0).value(0).toString(), names.value(current));
}

void tst_WorkProfileHandler::appendRenameRemove()
{
    writeAll(SettingsFile, settingsFile(R"([{"name": "A", "data": {"k": 1}}, {"name": "B"}])", 1));
    H handler;
    handler.loadProfiles(H::SettingsFilePath);
    // Copies of copies keep adding the suffix; an invalid source gives a default profile.
    for (int source : {0, 2, 7, -1}) {
        const int index = handler.appendProfile(source);
        QCOMPARE(index, handler.profileNames().size() - 1);
    }
    QCOMPARE(handler.profile(3)["data"], QJsonValue(QJsonObject{{"k", 1}}));
    QCOMPARE(handler.profile(4), H::defaultProfile());
    QCOMPARE(handler.profile(5), H::defaultProfile());
    // Names need not be unique; invalid indices are ignored.
    for (int index : {4, 9, -1})
        handler.renameProfile(index, "B");
    // The current profile stays; removing one before it shifts the current index.
    for (int index : {1, 0, 9, -1})
        handler.removeProfile(index);
    QCOMPARE(handler.profileNames(),
             (QStringList{"B", "A (copy)", "A (copy) (copy)", "B", "Default profile"}));
    QCOMPARE(handler.currentProfileId(), 0);
}

void tst_WorkProfileHandler::saveIsAtomic()
{
    const QByteArray old = settingsFile(R"([{"name": "Old"}])", 0);
    writeAll(SettingsFile, old);
    // A second name for the old file's contents: an in-place rewrite would show in it.
    QCOMPARE(::link(qPrintable(SettingsFile), "previous.json"), 0);
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

    handler.saveProfiles("no/such/directory/settings.json"); // no error either
    handler.saveProfiles(H::SettingsFilePath);
    QCOMPARE(readAll("previous.json"), old);
    H reloaded;
    reloaded.loadProfiles(H::SettingsFilePath);
    QCOMPARE(reloaded.profileNames().size(), 21);
    // No temporary file is left behind.
    QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden, QDir::Name),
             (QStringList{SettingsFile, "previous.json"}));
}

QTEST_GUILESS_MAIN(tst_WorkProfileHandler)
#include "tst_workprofilehandler.moc"
