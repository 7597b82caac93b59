// Saves the settings file in the working directory over and over, alternating
// between two versions of it, until it is killed: the victim of the durability test.
// It loads the file that is there, prints "saving" once, then each save swaps the
// first profile's name between "A" and "B" and writes the whole file.

#include "workprofilehandler.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    WorkProfileHandler handler;
    handler.loadProfiles(WorkProfileHandler::SettingsFilePath);
    std::printf("saving\n");
    std::fflush(stdout);
    for (bool b = true;; b = !b) {
        handler.renameProfile(0, b ? QStringLiteral("B") : QStringLiteral("A"));
        handler.saveProfiles(WorkProfileHandler::SettingsFilePath);
    }
}
