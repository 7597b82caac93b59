#include "workprofilehandler.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <csignal>
#include <unistd.h>
#include <thread>

// The settings file survives the program being killed while it saves: whenever the
// kill lands, the file afterwards parses and is one whole version, the old or the new.
// And a writable settings file is saved even where its directory takes no new files.
class tst_SettingsDurability : public QObject
{
    Q_OBJECT

private slots:
    void killedWhileSaving();
    void savedInAReadOnlyDirectory();

private:
    static QByteArray savedWithName(const QString& path, const QString& name);
};

// The file as the handler writes it with the first profile renamed.
QByteArray tst_SettingsDurability::savedWithName(const QString& path, const QString& name)
{
    WorkProfileHandler handler;
    handler.loadProfiles(path);
    handler.renameProfile(0, name);
    const QString out = path + QStringLiteral(".expected");
    handler.saveProfiles(out);
    QFile file(out);
    file.open(QIODevice::ReadOnly);
    const QByteArray bytes = file.readAll();
    file.remove();
    return bytes;
}

void tst_SettingsDurability::killedWhileSaving()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QFileInfo(WorkProfileHandler::SettingsFilePath).fileName());

    // A file of some size, so that a save takes long enough to be hit in the middle:
    // the demo profile with a road of many sections, copied into eight profiles (about 150 kB).
    QFile demo(QStringLiteral(ORVEX_SOURCE_DIR "/demo/demo-settings.json"));
    QVERIFY(demo.open(QIODevice::ReadOnly));
    QJsonObject root = QJsonDocument::fromJson(demo.readAll()).object();
    QJsonObject profile = root.value("profiles").toArray().at(0).toObject();
    QJsonArray sections;
    for (int i = 0; i < 200; ++i)
        sections.append(QJsonObject{{"is_curved", i % 2 == 1}, {"length", 25}, {"radius", 900}});
    QJsonObject view = profile.value("view").toObject();
    QJsonObject scheme = view.value("traffic_scheme").toObject();
    QJsonObject road = scheme.value("road_config").toObject();
    road.insert("sections", sections);
    scheme.insert("road_config", road);
    view.insert("traffic_scheme", scheme);
    profile.insert("view", view);
    QJsonArray profiles;
    for (int i = 0; i < 8; ++i)
        profiles.append(profile);
    root.insert("profiles", profiles);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QJsonDocument(root).toJson());
    }
    // How long a save takes here (a load and a save, so a little more), to spread the
    // kills over the first few saves whatever the build and the machine's load.
    QElapsedTimer clock;
    clock.start();
    const QByteArray versionA = savedWithName(path, "A");
    const QByteArray versionB = savedWithName(path, "B");
    const qint64 saveUs = qMax<qint64>(clock.nsecsElapsed() / 2000, 1000);
    QVERIFY(versionA.size() > 100000);
    {
        // The file starts as one of the two, so that "the old content" is always A or B.
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(versionA), versionA.size());
    }

    // A hundred kills, or as many as 90 s allow where a save is slow (the sanitizer
    // builds on a busy machine), but twenty at least.
    constexpr int Kills = 100;
    constexpr int MinKills = 20;
    constexpr qint64 KillingMs = 90000;
    QElapsedTimer killing;
    killing.start();
    int kill = 0;
    int killsMidSave = 0; // the file differs from the one before the run
    for (; kill < Kills && (kill < MinKills || killing.elapsed() < KillingMs); ++kill) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray before = file.readAll();
        file.close();

        QProcess driver;
        driver.setWorkingDirectory(dir.path());
        driver.start(QStringLiteral(ORVEX_SAVE_DRIVER), QStringList());
        QVERIFY(driver.waitForStarted());
        QTRY_VERIFY(driver.canReadLine() || driver.state() != QProcess::Running);
        QCOMPARE(driver.readLine(), QByteArray("saving\n"));
        // The kill's random moment: anywhere among the first three saves (deliberately
        // not a wait for something to settle).
        std::this_thread::sleep_for(std::chrono::microseconds(
            qint64(QRandomGenerator::global()->generateDouble() * 3 * saveUs)));
        ::kill(pid_t(driver.processId()), SIGKILL);
        QVERIFY(driver.waitForFinished());

        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray after = file.readAll();
        file.close();
        QJsonParseError error;
        QJsonDocument::fromJson(after, &error);
        QVERIFY2(error.error == QJsonParseError::NoError,
                 qPrintable(QString("kill %1: %2").arg(kill).arg(error.errorString())));
        QVERIFY2(
            after == versionA || after == versionB,
            qPrintable(QString("kill %1: neither version (%2 bytes)").arg(kill).arg(after.size())));
        if (after != before)
            ++killsMidSave;
    }
    // Saves did replace the file: the kills fell among them, not all into the first.
    QVERIFY(killsMidSave > 0);
    qInfo("%d kills, %d after the file had changed, %d files left beside it", kill, killsMidSave,
          int(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size()) - 1);
}

void tst_SettingsDurability::savedInAReadOnlyDirectory()
{
    // An operator's settings file, writable, in a directory the program may not add
    // files to (a shared install directory): the atomic save cannot make its temporary
    // file there and must write the file in place instead.
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QFileInfo(WorkProfileHandler::SettingsFilePath).fileName());
    {
        WorkProfileHandler handler;
        handler.saveProfiles(path);
    }
    const QByteArray expected = savedWithName(path, "B");
    QVERIFY(expected.contains("\"B\""));
    // The saver runs from the directory itself: the superuser is not held back by a
    // directory's permissions, so as root it runs as "nobody", who must reach it.
    const QString driver = dir.filePath("saver");
    QVERIFY(QFile::copy(QStringLiteral(ORVEX_SAVE_DRIVER), driver));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup
                                            | QFile::WriteGroup | QFile::ReadOther
                                            | QFile::WriteOther));
    const QFile::Permissions readOnly = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                        | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(dir.path(), readOnly));

    QProcess saver;
    saver.setWorkingDirectory(dir.path());
    if (::geteuid() == 0)
        saver.start(QStringLiteral("setpriv"), {"--reuid=65534", "--regid=65534", "--clear-groups",
                                                driver, "--once"});
    else
        saver.start(driver, {"--once"});
    const bool ran = saver.waitForFinished(30000);
    QFile::setPermissions(dir.path(), readOnly | QFile::WriteOwner);
    QVERIFY2(ran && saver.exitStatus() == QProcess::NormalExit && saver.exitCode() == 0,
             saver.readAllStandardError().constData());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), expected);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2); // file, saver
}

QTEST_GUILESS_MAIN(tst_SettingsDurability)
#include "tst_settingsdurability.moc"
