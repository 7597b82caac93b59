#include "mainwindow.h"
#include "translationloader.h"

#include <QApplication>
#include <QLocale>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    TranslationLoader::install(&app, QLocale::system().name(), QApplication::applicationDirPath());

    MainWindow window;
    window.show();
    return app.exec();
}
