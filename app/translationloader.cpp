#include "translationloader.h"

#include <QCoreApplication>
#include <QTranslator>

const QString TranslationLoader::QtTranslationsDir = QStringLiteral("/usr/share/qt5/translations");

QStringList TranslationLoader::catalogueNames()
{
    return {QStringLiteral("qt"), QStringLiteral("orvex-widgets"),
            QStringLiteral("orvex-road-app-gui")};
}

QString TranslationLoader::catalogueDirectory(const QString& baseName, const QString& executableDir)
{
    if (baseName == QLatin1String("qt"))
        return QtTranslationsDir;
    return QStringLiteral("%1/translations").arg(executableDir);
}

QList<QTranslator*> TranslationLoader::install(QCoreApplication* app, const QString& localeName,
                                               const QString& executableDir)
{
    QList<QTranslator*> installed;
    for (const QString& baseName : catalogueNames()) {
        auto* translator = new QTranslator;
        // "_" as the only delimiter: de_DE falls back to de, then to the bare name.
        const QString fileName = QStringLiteral("%1_%2").arg(baseName, localeName);
        if (translator->load(fileName, catalogueDirectory(baseName, executableDir),
                             QStringLiteral("_"), QString())) {
            translator->setParent(app);
            app->installTranslator(translator);
            installed.append(translator);
        } else {
            delete translator;
        }
    }
    return installed;
}
