#include "questionanswerer.h"
#include "tvmsconfigwidget.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QJsonObject>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

// The camera configuration editor: the configuration a profile without one gets,
// stored values clamped by the controls, the question on closing over unapplied
// edits, and the echo of its own publication.
class tst_TvmsConfigWidget : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_editor = std::make_unique<TvmsConfigWidget>(); }
    void cleanup() { m_editor.reset(); }

    void storedAndApplied_data();
    void storedAndApplied();
    void closingOverEditsAsks_data();
    void closingOverEditsAsks();
    void showingAgainDropsUnappliedEdits();

private:
    QDoubleSpinBox* spin(const char* name) const
    {
        return m_editor->findChild<QDoubleSpinBox*>(name);
    }
    std::unique_ptr<TvmsConfigWidget> m_editor;
};

void tst_TvmsConfigWidget::storedAndApplied_data()
{
    QTest::addColumn<QJsonObject>("stored");
    QTest::addColumn<QJsonObject>("applied"); // empty: the stored configuration itself

    QTest::newRow("none stored: the defaults are published at once")
        << QJsonObject()
        << QJsonObject{{"x_offset", 0.0},
                       {"y_offset", 0.0},
                       {"z_offset", 0.1},
                       {"azimuth_misalignment", 0.0},
                       {"altitude_misalignment", 0.0},
                       {"horizontal_view_angle", 12.0},
                       {"video_delay", 0}};
    // Each value different and in range: it comes back under its own key.
    QTest::newRow("every value round trips") << QJsonObject{{"x_offset", 0.5},
                                                            {"y_offset", -0.25},
                                                            {"z_offset", 0.75},
                                                            {"azimuth_misalignment", 3.5},
                                                            {"altitude_misalignment", -4.5},
                                                            {"horizontal_view_angle", 48.0},
                                                            {"video_delay", 120}}
                                             << QJsonObject();
    QTest::newRow("view angle 120 shown as 90")
        << QJsonObject{{"horizontal_view_angle", 120}}
        << QJsonObject{{"x_offset", 0.0}, {"horizontal_view_angle", 90.0}, {"video_delay", 0}};
    QTest::newRow("negative and huge values clamped")
        << QJsonObject{{"horizontal_view_angle", -5}, {"x_offset", -1e300}, {"video_delay", 1e9}}
        << QJsonObject{{"x_offset", -1.0}, {"horizontal_view_angle", 1.0}, {"video_delay", 3000}};
    QTest::newRow("non-numeric values read as 0")
        << QJsonObject{{"horizontal_view_angle", "wide"},
                       {"x_offset", "x"},
                       {"video_delay", "late"}}
        << QJsonObject{{"x_offset", 0.0}, {"horizontal_view_angle", 1.0}, {"video_delay", 0}};
}

void tst_TvmsConfigWidget::storedAndApplied()
{
    QFETCH(QJsonObject, stored);
    QFETCH(QJsonObject, applied);
    QSignalSpy published(m_editor.get(), &TvmsConfigWidget::tvmsConfigChanged);
    // As in the main window, the published configuration comes straight back: ignored.
    connect(m_editor.get(), &TvmsConfigWidget::tvmsConfigChanged, m_editor.get(),
            &TvmsConfigWidget::setTvmsConfig);
    m_editor->setTvmsConfig(stored);
    if (stored.isEmpty()) {
        QCOMPARE(published.count(), 1);
        QCOMPARE(published.first().first().toJsonObject(), applied);
        return;
    }
    QVERIFY(published.isEmpty());
    m_editor->show();
    QVERIFY(!m_editor->isConfigChanged());
    m_editor->findChild<QDialogButtonBox*>("tvmsConfigButtonBox")
        ->button(QDialogButtonBox::Apply)
        ->click();
    QCOMPARE(published.count(), 1);
    const QJsonObject config = published.first().first().toJsonObject();
    if (applied.isEmpty())
        QCOMPARE(config, stored);
    for (auto it = applied.begin(); it != applied.end(); ++it)
        QVERIFY2(config.value(it.key()) == it.value(), qPrintable(it.key()));
}

void tst_TvmsConfigWidget::closingOverEditsAsks_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("No keeps the window and the edit") << int(QMessageBox::No);
    QTest::newRow("Yes closes") << int(QMessageBox::Yes);
}

void tst_TvmsConfigWidget::closingOverEditsAsks()
{
    QFETCH(int, answer);
    m_editor->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 30}});
    m_editor->show();
    spin("zOffsetSpin")->setValue(0.5);
    QVERIFY(m_editor->isConfigChanged());
    QuestionAnswerer answerer{QMessageBox::StandardButton(answer)};
    m_editor->close();
    QCOMPARE(answerer.count, 1);
    QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
    QCOMPARE(m_editor->isVisible(), answer == QMessageBox::No);
    if (answer == QMessageBox::No)
        QCOMPARE(spin("zOffsetSpin")->value(), 0.5);
}

void tst_TvmsConfigWidget::showingAgainDropsUnappliedEdits()
{
    m_editor->setTvmsConfig(QJsonObject{{"horizontal_view_angle", 30}, {"z_offset", -0.2}});
    m_editor->show();
    spin("horizontalViewAngleSpin")->setValue(45);
    m_editor->hide();
    m_editor->show();
    QCOMPARE(spin("horizontalViewAngleSpin")->value(), 30.0);
    QCOMPARE(spin("zOffsetSpin")->value(), -0.2);
    // Closing without an edit asks nothing.
    QuestionAnswerer answerer(QMessageBox::No);
    m_editor->close();
    QCOMPARE(answerer.count, 0);
    QVERIFY(!m_editor->isVisible());
}

QTEST_MAIN(tst_TvmsConfigWidget)
#include "tst_tvmsconfigwidget.moc"
