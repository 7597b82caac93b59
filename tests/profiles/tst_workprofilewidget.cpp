#include "questionanswerer.h"
#include "workprofilehandler.h"
#include "workprofilewidget.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

namespace { } // namespace

class tst_WorkProfileWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void listMarksCurrentProfile();
    void buttonRules_data();
    void buttonRules();
    // Answering No must restore the edited row without asking a second time.
    void switchRowAnsweredNo();
    void switchRowAnsweredYes();
    void applyAsksOnlyOnReselection();
    void appendCopiesSelectedProfile();
    void deleteSelectsSameRowOrLast();
    void saveRenames();
    void closeAsksAboutUnsavedEdit();

private:
    void openWith(const QStringList& names, int current);
    void editName(const QString& text);
    void click(const char* name,
               QDialogButtonBox::StandardButton which = QDialogButtonBox::NoButton);
    bool saveEnabled() const;
    QStringList rows() const;

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<WorkProfileWidget> m_widget;
    QListWidget* m_list = nullptr;
    QLineEdit* m_name = nullptr;
    QPushButton* m_delete = nullptr;
};

void tst_WorkProfileWidget::init()
{
    m_previousDir = QDir::currentPath();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir::setCurrent(m_dir->path()));
    m_widget = std::make_unique<WorkProfileWidget>();
    m_list = m_widget->findChild<QListWidget*>("allProfilesList");
    m_name = m_widget->findChild<QLineEdit*>("profileNameEdit");
    m_delete = m_widget->findChild<QPushButton*>("deleteProfileButton");
    QVERIFY(m_list && m_name && m_delete);
}

void tst_WorkProfileWidget::cleanup()
{
    m_widget.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

void tst_WorkProfileWidget::openWith(const QStringList& names, int current)
{
    WorkProfileHandler* handler = m_widget->profileHandler();
    if (names.isEmpty()) {
        handler->applyProfile(-1);
    } else {
        QStringList profiles;
        for (const QString& name : names)
            profiles << QString("{\"name\": \"%1\"}").arg(name);
        QFile file(WorkProfileHandler::SettingsFilePath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QString("{\"profiles\": [%1], \"current_id\": %2}")
                       .arg(profiles.join(','))
                       .arg(current)
                       .toUtf8());
        file.close();
        handler->loadProfiles(WorkProfileHandler::SettingsFilePath);
    }
    m_widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_widget.get()));
}

void tst_WorkProfileWidget::editName(const QString& text)
{
    m_name->selectAll();
    QTest::keyClick(m_name, Qt::Key_Backspace);
    QTest::keyClicks(m_name, text);
}

void tst_WorkProfileWidget::click(const char* name, QDialogButtonBox::StandardButton which)
{
    if (which == QDialogButtonBox::NoButton)
        m_widget->findChild<QPushButton*>(name)->click();
    else
        m_widget->findChild<QDialogButtonBox*>(name)->button(which)->click();
}

bool tst_WorkProfileWidget::saveEnabled() const
{
    return m_widget->findChild<QDialogButtonBox*>("saveProfileButtonBox")
        ->button(QDialogButtonBox::Save)
        ->isEnabled();
}

QStringList tst_WorkProfileWidget::rows() const
{
    QStringList texts;
    for (int row = 0; row < m_list->count(); ++row)
        texts << m_list->item(row)->text();
    return texts;
}

void tst_WorkProfileWidget::listMarksCurrentProfile()
{
    openWith({"Day", "Night", "Rain"}, 1);
    QCOMPARE(rows(), (QStringList{"Day", "Night [current]", "Rain"}));
    QCOMPARE(m_list->currentRow(), 1);
    QCOMPARE(m_name->text(), QString("Night"));
    QVERIFY(!saveEnabled());
}

void tst_WorkProfileWidget::buttonRules_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("selected"); // the current profile is always row 0
    QTest::addColumn<QString>("typed"); // null for no edit
    QTest::addColumn<bool>("deleteEnabled");
    QTest::addColumn<bool>("saveEnabled");

    const QStringList three{"A", "B", "C"};
    QTest::newRow("single profile cannot be deleted")
        << QStringList{"A"} << 0 << QString() << false << false;
    QTest::newRow("current profile cannot be deleted") << three << 0 << QString() << false << false;
    QTest::newRow("other profile can be deleted") << three << 2 << QString() << true << false;
    QTest::newRow("edited name can be saved") << three << 1 << "D" << true << true;
    QTest::newRow("empty name cannot be saved") << three << 1 << "" << true << false;
}

void tst_WorkProfileWidget::buttonRules()
{
    QFETCH(QStringList, names);
    QFETCH(int, selected);
    QFETCH(QString, typed);
    QFETCH(bool, deleteEnabled);
    QFETCH(bool, saveEnabled);

    openWith(names, 0);
    m_list->setCurrentRow(selected);
    if (!typed.isNull())
        editName(typed);
    QCOMPARE(m_delete->isEnabled(), deleteEnabled);
    QCOMPARE(this->saveEnabled(), saveEnabled);
}

void tst_WorkProfileWidget::switchRowAnsweredNo()
{
    openWith({"A", "B", "C"}, 0);
    m_list->setCurrentRow(2);
    editName("Renamed");

    QuestionAnswerer answerer(QMessageBox::No);
    m_list->setCurrentRow(1);
    QCOMPARE(answerer.count, 1);
    QCOMPARE(answerer.title, QString("Warning"));
    QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
    QTRY_COMPARE(m_list->currentRow(), 2);
    QCOMPARE(m_name->text(), QString("Renamed"));
    QVERIFY(saveEnabled());
    QCOMPARE(answerer.count, 1);

    // The kept edit still belongs to the edited row: saving renames that profile.
    click("saveProfileButtonBox", QDialogButtonBox::Save);
    QCOMPARE(m_widget->profileHandler()->profileNames(), (QStringList{"A", "B", "Renamed"}));
}

void tst_WorkProfileWidget::switchRowAnsweredYes()
{
    openWith({"A", "B", "C"}, 0);
    m_list->setCurrentRow(2);
    editName("Renamed");

    QuestionAnswerer answerer(QMessageBox::Yes);
    m_list->setCurrentRow(1);
    QCOMPARE(answerer.count, 1);
    QCOMPARE(m_list->currentRow(), 1);
    QCOMPARE(m_name->text(), QString("B"));
    QVERIFY(!saveEnabled());
    QCOMPARE(m_widget->profileHandler()->profileNames(), (QStringList{"A", "B", "C"}));

    // The edit is gone: the next row change asks nothing.
    m_list->setCurrentRow(0);
    QCOMPARE(answerer.count, 1);
}

void tst_WorkProfileWidget::applyAsksOnlyOnReselection()
{
    openWith({"A", "B", "C"}, 0);
    m_list->setCurrentRow(2);
    editName("Renamed");

    QStringList events;
    connect(m_widget->profileHandler(), &WorkProfileHandler::applyingProfileStarted, this,
            [&](const QString& name) { events << "applied " + name; });
    QuestionAnswerer answerer(QMessageBox::Yes, [&] { events << QStringLiteral("asked"); });
    click("applyProfileButtonBox", QDialogButtonBox::Apply);

    QCOMPARE(events, (QStringList{"applied C", "asked"}));
    QCOMPARE(rows(), (QStringList{"A", "B", "C [current]"}));
    QCOMPARE(m_list->currentRow(), 2);
    QCOMPARE(m_name->text(), QString("C"));
    QVERIFY(!m_delete->isEnabled());
}

void tst_WorkProfileWidget::appendCopiesSelectedProfile()
{
    openWith({}, 0);
    m_widget->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_widget.get()));
    QCOMPARE(m_list->currentRow(), 0);

    click("appendProfileButton");
    QCOMPARE(rows(), (QStringList{"Default profile [current]", "Default profile (copy)"}));
    QCOMPARE(m_list->currentRow(), 1);
    QCOMPARE(m_name->text(), QString("Default profile (copy)"));
    QCOMPARE(m_name->selectedText(), m_name->text());
    QTRY_VERIFY(m_name->hasFocus());
    QCOMPARE(m_widget->profileHandler()->currentProfileId(), 0);

    // With no row selected, "+" adds a fresh default profile.
    m_list->setCurrentRow(-1);
    click("appendProfileButton");
    QCOMPARE(m_widget->profileHandler()->profileNames().last(), QString("Default profile"));
}

void tst_WorkProfileWidget::deleteSelectsSameRowOrLast()
{
    openWith({"A", "B", "C", "D"}, 0);
    m_list->setCurrentRow(1);
    click("deleteProfileButton");
    QCOMPARE(rows(), (QStringList{"A [current]", "C", "D"}));
    QCOMPARE(m_list->currentRow(), 1); // the next one moved up
    QCOMPARE(m_name->text(), QString("C"));

    m_list->setCurrentRow(2);
    click("deleteProfileButton");
    QCOMPARE(rows(), (QStringList{"A [current]", "C"}));
    QCOMPARE(m_list->currentRow(), 1); // the new last row
}

void tst_WorkProfileWidget::saveRenames()
{
    openWith({"A", "B"}, 1);
    editName("Night");
    click("saveProfileButtonBox", QDialogButtonBox::Save);
    QCOMPARE(rows(), (QStringList{"A", "Night [current]"}));
    QCOMPARE(m_list->currentRow(), 1);
    QVERIFY(!saveEnabled());

    // Saved: changing rows asks nothing.
    QuestionAnswerer answerer(QMessageBox::No);
    m_list->setCurrentRow(0);
    QCOMPARE(answerer.count, 0);
    QCOMPARE(m_list->currentRow(), 0);
}

void tst_WorkProfileWidget::closeAsksAboutUnsavedEdit()
{
    openWith({"A", "B"}, 0);
    editName("Edited");
    QSignalSpy aboutToClose(m_widget.get(), &StandaloneWidget::aboutToClose);
    {
        QuestionAnswerer answerer(QMessageBox::No);
        click("applyProfileButtonBox", QDialogButtonBox::Close);
        QCOMPARE(answerer.count, 1);
        QVERIFY(m_widget->isVisible());
    }
    QCOMPARE(aboutToClose.count(), 0);
    QuestionAnswerer answerer(QMessageBox::Yes);
    click("applyProfileButtonBox", QDialogButtonBox::Close);
    QCOMPARE(answerer.count, 1);
    QVERIFY(!m_widget->isVisible());
    QCOMPARE(aboutToClose.count(), 1);
}

QTEST_MAIN(tst_WorkProfileWidget)
#include "tst_workprofilewidget.moc"
