// The settings file: whatever a person may have left in it, loaded by the real profile
// handler of a real main window (offscreen) and its current profile applied the way
// the start-up applies it, so that every receiver of a profile takes its values: the
// road builder, the objects helper, the traffic scheme, the tables, the status widgets
// and the window's own layout. Nothing is painted: painting a road is the road target's
// work, and here it would take most of the time.

#include "mainwindow.h"
#include "profilekeys.h"
#include "workprofilehandler.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace K = ProfileKeys;

namespace {

struct Harness
{
    std::unique_ptr<QApplication> app; // first made, last gone
    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<MainWindow> window;
    QString baselinePath;
    QString inputPath;
};

// Never destroyed at exit, where Qt's own globals may already be gone; the replay
// driver takes it down in order (orvexFuzzTearDown).
Harness& harness()
{
    static Harness* h = new Harness;
    return *h;
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "settings: cannot write %s\n", qPrintable(path));
        std::abort();
    }
}

// A profile's server address would make the window connect wherever it points. The
// fuzzer must not reach out beyond this process, so every address is replaced by an
// empty one, which the client refuses without opening a socket. Text that does not
// parse is left as it is: the handler ignores it just the same.
QByteArray withoutServerAddresses(const QByteArray& input)
{
    QJsonDocument document = QJsonDocument::fromJson(input);
    if (!document.isObject())
        return input;
    QJsonObject root = document.object();
    QJsonArray profiles = root.value(K::Profiles).toArray();
    for (int i = 0; i < profiles.size(); ++i) {
        QJsonObject profile = profiles.at(i).toObject();
        QJsonObject connection = profile.value(K::Connection).toObject();
        if (!profile.value(K::Connection).isObject() || !connection.contains(K::RadarServerUrl))
            continue;
        connection.insert(K::RadarServerUrl, QString());
        profile.insert(K::Connection, connection);
        profiles.replace(i, profile);
    }
    if (root.contains(K::Profiles))
        root.insert(K::Profiles, profiles);
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Qt's warnings about odd values are expected here and would drown the fuzzer's own.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Harness& h = harness();
    h.app = std::make_unique<QApplication>(*argc, *argv);
    h.dir = std::make_unique<QTemporaryDir>();
    h.baselinePath = h.dir->filePath(QStringLiteral("baseline.json"));
    h.inputPath = h.dir->filePath(QStringLiteral("input.json"));
    // The window reads its settings from the working directory when it is made: let
    // it find none there (the fuzzer's own paths stay relative to where it started).
    const QString started = QDir::currentPath();
    QDir::setCurrent(h.dir->path());
    h.window = std::make_unique<MainWindow>();
    QDir::setCurrent(started);
    // Shown once, so that every box has its size, then hidden: a hidden window still
    // lays itself out on every profile, but does not repaint itself each time.
    h.window->resize(800, 600);
    h.window->show();
    QCoreApplication::processEvents();
    h.window->hide();
    // Every input starts from the same profiles: a file that does not load leaves
    // what was there before.
    WorkProfileHandler fresh;
    fresh.applyProfile(-1);
    fresh.saveProfiles(h.baselinePath);
    return 0;
}

// For the replay driver: Qt torn down in order before exit, so that the sanitizers'
// leak check at exit sees what the inputs left, not Qt's caches of a half-gone
// application (libFuzzer itself just exits).
extern "C" void orvexFuzzTearDown()
{
    Harness& h = harness();
    h.window.reset();
    h.dir.reset();
    h.app.reset();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Harness& h = harness();
    writeFile(h.inputPath,
              withoutServerAddresses(QByteArray(reinterpret_cast<const char*>(data), int(size))));
    WorkProfileHandler* handler = h.window->profileHandler();
    handler->loadProfiles(h.baselinePath);
    handler->loadProfiles(h.inputPath);
    handler->applyProfile(handler->currentProfileId());

    // The layout's delayed steps and the old radar client's deferred deletion.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}
