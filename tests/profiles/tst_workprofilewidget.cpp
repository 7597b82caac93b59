#include "questionanswerer.h"
#include "workprofilehandler.h"
#include "workprofilewidget.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class tst_WorkProfileWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void buttonRules_data();
    void buttonRules();
    // Answering No must restore the edited row without asking a second time.
    void switchRowWithUnsavedEdit_data();
    void switchRowWithUnsavedEdit();
    void applyAsksOnlyOnReselection();
    void appendAndDelete();
    void closeAsksAboutUnsavedEdit();

private:
    void openWith(const QStringList& names, int current);
    void editName(const QString& text)
    {
        m_name->selectAll();
        QTest::keyClick(m_name, Qt::Key_Backspace);
        QTest::keyClicks(m_name, text);
    }
    void click(const char* box, QDialogButtonBox::StandardButton which)
    {
        m_widget->findChild<QDialogButtonBox*>(box)->button(which)->click();
    }
    bool saveEnabled() const
    {
        return m_widget->findChild<QDialogButtonBox*>("saveProfileButtonBox")
            ->button(QDialogButtonBox::Save)
            ->isEnabled();
    }
    QStringList rows() const
    {
        QStringList texts;
        for (int row = 0; row < m_list->count(); ++row)
            texts << m_list->item(row)->text();
        return texts;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<WorkProfileWidget> m_widget;
    QListWidget* m_list = nullptr;
    QLineEdit* m_name = nullptr;
    QPushButton* m_delete = nullptr;
    QPushButton* m_append = nullptr;
};

void tst_WorkProfileWidget::init()
{
    m_previousDir = QDir::currentPath();
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid() && QDir::setCurrent(m_dir->path()));
    m_widget = std::make_unique<WorkProfileWidget>();
    m_list = m_widget->findChild<QListWidget*>("allProfilesList");
    m_name = m_widget->findChild<QLineEdit*>("profileNameEdit");
    m_delete = m_widget->findChild<QPushButton*>("deleteProfileButton");
    m_append = m_widget->findChild<QPushButton*>("appendProfileButton");
    QVERIFY(m_list && m_name && m_delete && m_append);
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
    handler->applyProfile(-1);
    for (int i = 0; i < names.size(); ++i)
        handler->renameProfile(i == 0 ? 0 : handler->appendProfile(-1), names[i]);
    handler->applyProfile(current);
    m_widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_widget.get()));
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
    QCOMPARE(rows().value(0), names[0] + " [current]");
    m_list->setCurrentRow(selected);
    if (!typed.isNull())
        editName(typed);
    QCOMPARE(m_delete->isEnabled(), deleteEnabled);
    QCOMPARE(this->saveEnabled(), saveEnabled);
}

void tst_WorkProfileWidget::switchRowWithUnsavedEdit_data()
{
    QTest::addColumn<bool>("answerYes");
    QTest::newRow("answered No keeps the edit on its row") << false;
    QTest::newRow("answered Yes drops the edit") << true;
}

void tst_WorkProfileWidget::switchRowWithUnsavedEdit()
{
    QFETCH(bool, answerYes);
    openWith({"A", "B", "C"}, 0);
    m_list->setCurrentRow(2);
    editName("Renamed");

    QuestionAnswerer answerer(answerYes ? QMessageBox::Yes : QMessageBox::No);
    m_list->setCurrentRow(1);
    QCOMPARE(answerer.count, 1);
    QCOMPARE(answerer.title, QString("Warning"));
    QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
    QTRY_COMPARE(m_list->currentRow(), answerYes ? 1 : 2);
    QCOMPARE(m_name->text(), QString(answerYes ? "B" : "Renamed"));
    QCOMPARE(saveEnabled(), !answerYes);
    QCOMPARE(answerer.count, 1);

    // Saving renames the profile of the kept edit; after that nothing is asked.
    click("saveProfileButtonBox", QDialogButtonBox::Save);
    QCOMPARE(rows(), (QStringList{"A [current]", "B", answerYes ? "C" : "Renamed"}));
    QVERIFY(!saveEnabled());
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

void tst_WorkProfileWidget::appendAndDelete()
{
    openWith({"A", "B", "C"}, 0);
    m_widget->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_widget.get()));
    // "+" copies the selected profile and offers its name to be typed over.
    m_list->setCurrentRow(1);
    m_append->click();
    QCOMPARE(rows(), (QStringList{"A [current]", "B", "C", "B (copy)"}));
    QCOMPARE(m_list->currentRow(), 3);
    QCOMPARE(m_name->selectedText(), QString("B (copy)"));
    QTRY_VERIFY(m_name->hasFocus());
    QCOMPARE(m_widget->profileHandler()->currentProfileId(), 0);
    // With no row selected it adds a fresh default profile.
    m_list->setCurrentRow(-1);
    m_append->click();
    QCOMPARE(rows().last(), QString("Default profile"));

    // Deleting selects the row that moved up, or the new last row.
    m_list->setCurrentRow(1);
    m_delete->click();
    QCOMPARE(rows(), (QStringList{"A [current]", "C", "B (copy)", "Default profile"}));
    QCOMPARE(m_list->currentRow(), 1);
    QCOMPARE(m_name->text(), QString("C"));
    m_list->setCurrentRow(3);
    m_delete->click();
    QCOMPARE(rows(), (QStringList{"A [current]", "C", "B (copy)"}));
    QCOMPARE(m_list->currentRow(), 2);
}

void tst_WorkProfileWidget::closeAsksAboutUnsavedEdit()
{
    openWith({"A", "B"}, 0);
    editName("Edited");
    QSignalSpy aboutToClose(m_widget.get(), &StandaloneWidget::aboutToClose);
    for (bool answerYes : {false, true}) {
        QuestionAnswerer answerer(answerYes ? QMessageBox::Yes : QMessageBox::No);
        click("applyProfileButtonBox", QDialogButtonBox::Close);
        QCOMPARE(answerer.count, 1);
        QCOMPARE(m_widget->isVisible(), !answerYes);
        QCOMPARE(aboutToClose.count(), answerYes ? 1 : 0);
    }
}

QTEST_MAIN(tst_WorkProfileWidget)
#include "tst_workprofilewidget.moc"
