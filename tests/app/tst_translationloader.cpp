#include "translationloader.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

// Which catalogues the program installs for a locale, and from where: the toolkit's
// own from the system, the program's two from beside the executable.
class tst_TranslationLoader : public QObject
{
    Q_OBJECT

private slots:
    void install_data();
    void install();
};

void tst_TranslationLoader::install_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("besideProgram"); // the program's catalogues are there
    QTest::addColumn<QStringList>("texts"); // the application's, the widgets', the toolkit's

    const QStringList english{"Dunvel Orvex Road App", "Click the title to expand", "Cancel"};
    const QStringList german{QString::fromUtf8("Dunvel Orvex Straßen-App"),
                             "Zum Aufklappen auf den Titel klicken", "Abbrechen"};
    QTest::newRow("de_DE falls back to the language catalogues") << "de_DE" << true << german;
    QTest::newRow("fr_FR: the toolkit's only")
        << "fr_FR" << true << QStringList{english[0], english[1], "Annuler"};
    QTest::newRow("C locale: none") << "C" << true << english;
    QTest::newRow("missing beside the program: the toolkit's still")
        << "de_DE" << false << QStringList{english[0], english[1], "Abbrechen"};
}

void tst_TranslationLoader::install()
{
    QFETCH(QString, locale);
    QFETCH(bool, besideProgram);
    QFETCH(QStringList, texts);
    QTemporaryDir emptyInstall;
    const QList<QTranslator*> installed = TranslationLoader::install(
        QCoreApplication::instance(), locale, besideProgram ? ORVEX_BIN_DIR : emptyInstall.path());
    const QStringList translated{
        QCoreApplication::translate("MainWindow", "Dunvel Orvex Road App"),
        QCoreApplication::translate("CollapsibleGroupBox", "Click the title to expand"),
        QCoreApplication::translate("QPlatformTheme", "Cancel")};
    for (QTranslator* translator : installed) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
    QCOMPARE(translated, texts);
}

QTEST_GUILESS_MAIN(tst_TranslationLoader)
#include "tst_translationloader.moc"
