#include "workprofilehandler.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

// A writable settings file is saved even where its directory takes no new files. (That
// a save replaces the file whole, never in place, is checked with the handler's tests.)
class tst_SettingsDurability : public QObject
{
    Q_OBJECT

private slots:
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
                                                driver});
    else
        saver.start(driver, QStringList());
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
