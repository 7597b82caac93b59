// Saves the settings file in the working directory over and over, alternating
// between two versions of it, until it is killed (or, left alone, for 20 seconds):
// the victim of the durability test.
// It loads the file that is there, prints "saving" once, then each save swaps the
// first profile's name between "A" and "B" and writes the whole file.
// With "--once" it saves the file once with the first profile named "B" and ends.

#include "workprofilehandler.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    WorkProfileHandler handler;
    handler.loadProfiles(WorkProfileHandler::SettingsFilePath);
    if (app.arguments().contains(QStringLiteral("--once"))) {
        handler.renameProfile(0, QStringLiteral("B"));
        handler.saveProfiles(WorkProfileHandler::SettingsFilePath);
        return 0;
    }
    std::printf("saving\n");
    std::fflush(stdout);
    QElapsedTimer running;
    running.start();
    for (bool b = true; running.elapsed() < 20000; b = !b) {
        handler.renameProfile(0, b ? QStringLiteral("B") : QStringLiteral("A"));
        handler.saveProfiles(WorkProfileHandler::SettingsFilePath);
    }
    return 0;
}
