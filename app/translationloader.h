#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QCoreApplication;
class QTranslator;

// Installs the catalogues of the toolkit, of the widget toolkit and of the application
// for one locale. The toolkit's own catalogue comes from the system, the program's two
// from the "translations" directory beside the executable. A missing catalogue is
// skipped silently: the program then shows its English source texts.
class TranslationLoader
{
public:
    static const QString QtTranslationsDir;

    // Base names in the order they are installed.
    static QStringList catalogueNames();
    static QString catalogueDirectory(const QString& baseName, const QString& executableDir);

    // Returns the translators that were installed; they live as long as the application.
    static QList<QTranslator*> install(QCoreApplication* app, const QString& localeName,
                                       const QString& executableDir);
};
