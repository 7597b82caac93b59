#include "mainwindow.h"
#include "repaintpacer.h"
#include "translationloader.h"

#include <QApplication>
#include <QLocale>

int main(int argc, char* argv[])
{
    // Scale the whole user interface on high-density screens (or by QT_SCALE_FACTOR) and
    // draw icons and cached pictures at the screen's pixel density; both must be chosen
    // before the application object exists.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);

    QApplication app(argc, argv);
    TranslationLoader::install(&app, QLocale::system().name(), QApplication::applicationDirPath());

    // The views repaint once per radar frame; a replay faster than the radar is painted
    // no faster than the screen can show it.
    RepaintPacer pacer;
    app.installEventFilter(&pacer);

    MainWindow window;
    window.show();
    return app.exec();
}
