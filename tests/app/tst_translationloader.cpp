#include "translationloader.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

// Which catalogues the program installs for a locale, and from where.
class tst_TranslationLoader : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void directories();
    void languageFallback_data();
    void languageFallback();
    void missingCataloguesAreSkipped();

private:
    QString title() const
    {
        return QCoreApplication::translate("MainWindow", "Dunvel Orvex Road App");
    }
    QList<QTranslator*> m_installed;
};

void tst_TranslationLoader::cleanup()
{
    for (QTranslator* translator : qAsConst(m_installed)) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
    m_installed.clear();
}

void tst_TranslationLoader::directories()
{
    QCOMPARE(TranslationLoader::catalogueNames(),
             (QStringList{"qt", "orvex-widgets", "orvex-road-app-gui"}));
    // The toolkit's own catalogue only from the system, ours only beside the program.
    QCOMPARE(TranslationLoader::catalogueDirectory("qt", "/opt/orvex"),
             QString("/usr/share/qt5/translations"));
    QCOMPARE(TranslationLoader::catalogueDirectory("orvex-widgets", "/opt/orvex"),
             QString("/opt/orvex/translations"));
    QCOMPARE(TranslationLoader::catalogueDirectory("orvex-road-app-gui", "/opt/orvex"),
             QString("/opt/orvex/translations"));
}

void tst_TranslationLoader::languageFallback_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("german");
    QTest::newRow("de_DE falls back to the language catalogue") << "de_DE" << true;
    QTest::newRow("de_AT too") << "de_AT" << true;
    QTest::newRow("fr_FR has none") << "fr_FR" << false;
    QTest::newRow("C locale") << "C" << false;
}

void tst_TranslationLoader::languageFallback()
{
    QFETCH(QString, locale);
    QFETCH(bool, german);
    m_installed = TranslationLoader::install(QCoreApplication::instance(), locale, ORVEX_BIN_DIR);
    if (german)
        QCOMPARE(title(), QString::fromUtf8("Dunvel Orvex Straßen-App"));
    else
        QCOMPARE(title(), QString("Dunvel Orvex Road App"));
}

void tst_TranslationLoader::missingCataloguesAreSkipped()
{
    QTemporaryDir emptyInstall;
    QVERIFY(emptyInstall.isValid());
    m_installed
        = TranslationLoader::install(QCoreApplication::instance(), "de_DE", emptyInstall.path());
    for (QTranslator* translator : qAsConst(m_installed))
        QVERIFY(translator->filePath().startsWith("/usr/share/qt5/translations/"));
    QCOMPARE(title(), QString("Dunvel Orvex Road App"));
}

QTEST_GUILESS_MAIN(tst_TranslationLoader)
#include "tst_translationloader.moc"
