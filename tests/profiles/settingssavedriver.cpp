// Saves the settings file in the working directory once, with the first profile named
// "B", from a process of its own: the saver of the read-only directory test, which may
// run under another user.

#include "workprofilehandler.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    WorkProfileHandler handler;
    handler.loadProfiles(WorkProfileHandler::SettingsFilePath);
    handler.renameProfile(0, QStringLiteral("B"));
    handler.saveProfiles(WorkProfileHandler::SettingsFilePath);
    return 0;
}
