#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QSize>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

class MainWindow;
class QAction;

// The main window on one profile, in a temporary directory of its own that is the
// current directory while the fixture lives: the window reads its settings file from
// there and saves it there.
class MainWindowFixture
{
public:
    MainWindowFixture();
    ~MainWindowFixture();

    // Writes a settings file with the default profile, its top-level keys replaced by
    // those of `changes` and its server address set to `url`, then opens the window:
    // shown at this size, or left hidden when the size is empty.
    bool open(const QUrl& url, const QJsonObject& changes = {},
              const QSize& size = QSize(1200, 800));
    // A window on the settings file as it is now.
    bool reopen(const QSize& size = QSize(1200, 800));

    // A value of the window's current profile, and of the first profile on disk, by
    // slash-separated path.
    QJsonValue profileValue(const QString& path) const;
    QJsonValue savedValue(const QString& path) const;
    // The first of the window's actions with this text, submenus included.
    QAction* menuAction(const QString& text) const;

    std::unique_ptr<MainWindow> window;

private:
    QTemporaryDir m_dir;
    QString m_previousDir;
};
