#include "mainwindowfixture.h"

#include "mainwindow.h"
#include "workprofilehandler.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace {

QJsonValue valueAt(QJsonValue value, const QString& path)
{
    for (const QString& key : path.split('/'))
        value = value.toObject().value(key);
    return value;
}

} // namespace

MainWindowFixture::MainWindowFixture()
    : m_previousDir(QDir::currentPath())
{
    QDir::setCurrent(m_dir.path());
}

MainWindowFixture::~MainWindowFixture()
{
    window.reset();
    QDir::setCurrent(m_previousDir);
}

bool MainWindowFixture::open(const QUrl& url, const QJsonObject& changes, const QSize& size)
{
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    for (auto it = changes.begin(); it != changes.end(); ++it)
        profile.insert(it.key(), it.value());
    QJsonObject connection = profile.value("connection").toObject();
    connection.insert("radar_server_url", url.toString());
    profile.insert("connection", connection);
    QFile file(WorkProfileHandler::SettingsFilePath);
    if (!m_dir.isValid() || !file.open(QIODevice::WriteOnly))
        return false;
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
    file.close();
    return reopen(size);
}

bool MainWindowFixture::reopen(const QSize& size)
{
    window.reset();
    window = std::make_unique<MainWindow>();
    if (size.isEmpty())
        return true;
    window->resize(size);
    window->show();
    return QTest::qWaitForWindowExposed(window.get());
}

QJsonValue MainWindowFixture::profileValue(const QString& path) const
{
    WorkProfileHandler* handler = window->profileHandler();
    return valueAt(handler->profile(handler->currentProfileId()), path);
}

QJsonValue MainWindowFixture::savedValue(const QString& path) const
{
    QFile file(WorkProfileHandler::SettingsFilePath);
    if (!file.open(QIODevice::ReadOnly))
        return QJsonValue::Undefined;
    const QJsonObject top = QJsonDocument::fromJson(file.readAll()).object();
    return valueAt(top.value("profiles").toArray().at(0), path);
}

QAction* MainWindowFixture::menuAction(const QString& text) const
{
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}
