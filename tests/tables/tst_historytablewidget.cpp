#include "historytablemodel.h"
#include "historytablewidget.h"
#include "questionanswerer.h"

#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTranslator>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {
const QDateTime T0(QDate(2024, 1, 1), QTime(10, 15, 30, 45), Qt::UTC);
constexpr int FrameMs = 100;

// Gives one header a German text with a letter outside ASCII.
class LengthInGerman : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* source, const char*, int) const override
    {
        return QByteArray(source) == "Length, m" ? QStringLiteral("Länge, m") : QString();
    }
};
} // namespace

// The history as the operator sees it: which rows a run of frames leaves in the table
// and where, what a saved file holds, and what a file that cannot be written leaves.
class tst_HistoryTableWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("TZ", "<+03>-3"); // rows show local time: make it UTC+3
        tzset();
    }
    void init()
    {
        removeExportPath();
        m_history = std::make_unique<HistoryTableWidget>(nullptr, Qt::Window);
        m_history->setEnabled(true);
        m_frame = 0;
    }
    void cleanup()
    {
        m_history.reset();
        removeExportPath();
    }

    void log_data();
    void log();
    void capDropsTheOldestRows();
    void selectionStaysOnItsRow();
    void saveToFile_data();
    void saveToFile();
    void unwritableDirectory_data();
    void unwritableDirectory();

private:
    // A frame like the client sends it: "1 ~2 3" measures 1 and 3 and carries 2 over.
    void frame(const QString& objects, double xSpeed = 10.0)
    {
        const QDateTime time = T0.addMSecs(qint64(m_frame) * FrameMs);
        m_history->startFilling();
        m_history->setFrameDateTimeUtc(time);
        for (QString object : objects.split(' ', Qt::SkipEmptyParts)) {
            const bool carriedOver = object.startsWith('~');
            m_history->addObject(quint8(object.remove('~').toUInt()), xSpeed, 0.0, m_frame, 1.5,
                                 4.2, carriedOver ? time.addMSecs(-FrameMs) : time);
        }
        m_history->finishFilling();
        ++m_frame;
    }
    // Row texts as "id@X range", where the X range is the number of the frame.
    QString row(int r) const
    {
        const HistoryTableModel* model = m_history->model();
        return model->text(r, 0) + '@' + QString::number(model->text(r, 3).toDouble());
    }
    QStringList rows() const
    {
        QStringList texts;
        for (int r = 0; r < m_history->model()->rowCount(); ++r)
            texts << row(r);
        return texts;
    }
    QPushButton* button(const char* name) const { return m_history->findChild<QPushButton*>(name); }
    // A link put in the way is removed, never followed.
    static void removeExportPath()
    {
        const QFileInfo info(HistoryTableWidget::exportDirectory());
        if (info.isSymLink() || info.isFile())
            QFile::remove(info.filePath());
        else if (info.isDir())
            QDir(info.filePath()).removeRecursively();
    }

    std::unique_ptr<HistoryTableWidget> m_history;
    int m_frame = 0;
};

void tst_HistoryTableWidget::log_data()
{
    // Steps: a frame ("1 ~2": object 2 carried over), or "pause", "continue", "clear",
    // "off" and "on" (the window disabled and enabled).
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("measured objects append in arrival order")
        << QStringList{"3 1 2"} << QStringList{"3@0", "1@0", "2@0"};
    QTest::newRow("each row goes under its object's previous row")
        << QStringList{"1 2", "1 2", "2 1"}
        << QStringList{"1@0", "1@1", "1@2", "2@0", "2@1", "2@2"};
    QTest::newRow("carried-over object adds no row and keeps its group")
        << QStringList{"1 2", "~1 2", "1 2"} << QStringList{"1@0", "1@2", "2@0", "2@1", "2@2"};
    QTest::newRow("object back after a gap starts a new group at the bottom")
        << QStringList{"1 2 3", "1 3", "1 2 3"}
        << QStringList{"1@0", "1@1", "1@2", "2@0", "3@0", "3@1", "3@2", "2@2"};
    QTest::newRow("the same id twice in a frame stays together")
        << QStringList{"4 7", "7 4 4"} << QStringList{"4@0", "4@1", "4@1", "7@0", "7@1"};
    QTest::newRow("nothing is taken while paused")
        << QStringList{"1", "pause", "1", "continue"} << QStringList{"1@0"};
    QTest::newRow("pause ends the grouping") << QStringList{"1 2", "pause", "continue", "1 2"}
                                             << QStringList{"1@0", "2@0", "1@1", "2@1"};
    QTest::newRow("clear empties the table and ends the grouping")
        << QStringList{"1 2", "clear", "2 1", "1 2"} << QStringList{"2@1", "2@2", "1@1", "1@2"};
    QTest::newRow("disabled drops the log, enabled starts afresh")
        << QStringList{"1 2", "off", "1", "on", "2 1"} << QStringList{"2@2", "1@2"};
    QTest::newRow("enabled with the pause button down, the log stays paused")
        << QStringList{"pause", "off", "on", "1"} << QStringList{};
}

void tst_HistoryTableWidget::log()
{
    QFETCH(QStringList, steps);

    QPushButton* pause = button("pauseWorkButton");
    for (const QString& step : steps) {
        if (step == "pause" || step == "continue")
            pause->click();
        else if (step == "clear")
            button("clearTableButton")->click();
        else if (step == "off" || step == "on")
            m_history->setEnabled(step == "on");
        else
            frame(step);
    }
    QTEST(rows(), "expected");
    QCOMPARE(pause->text(), pause->isChecked() ? QString("Continue") : QString("Pause"));
    QVERIFY(m_history->tableView()->viewport()->updatesEnabled());
}

void tst_HistoryTableWidget::capDropsTheOldestRows()
{
    // Object 1's one row is the oldest; object 2's group follows it and grows in every
    // frame, while object 1 is only carried over. A hundred objects a frame fill the
    // history to 100,005 rows.
    frame("1 2");
    QString objects = "~1";
    for (int id = 2; id <= 101; ++id)
        objects += ' ' + QString::number(id);
    for (int f = 1; f < 1000; ++f)
        frame(objects);
    frame(objects + " 102 103 104");
    // Five rows went from the top: object 1's and object 2's four oldest.
    QCOMPARE(m_history->model()->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@4"));
    QCOMPARE(row(996), QString("2@1000"));

    // Object 2's next row lands under its newest, five rows higher than before the trim;
    // object 1, whose group is gone, starts anew at the bottom. Two more rows go.
    frame("2 1");
    QCOMPARE(m_history->model()->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@6"));
    QCOMPARE(row(995), QString("2@1001"));
    QCOMPARE(row(996), QString("3@1"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 2), QString("104@1000"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 1), QString("1@1001"));
}

void tst_HistoryTableWidget::selectionStaysOnItsRow()
{
    m_history->resize(640, 400);
    m_history->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_history.get()));
    QTableView* view = m_history->tableView();
    frame("1 2");
    view->selectRow(1);
    // Object 1's new rows go above the selected row of object 2.
    frame("1 2");
    frame("1");
    const QModelIndexList selected = view->selectionModel()->selectedRows();
    QCOMPARE(selected.size(), 1);
    QCOMPARE(row(selected.first().row()), QString("2@0"));

    // Scrolled to the end, the view follows the newest row.
    for (int f = 0; f < 40; ++f)
        frame("1 2");
    QScrollBar* bar = view->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), 0);
    bar->setValue(bar->maximum());
    frame("3");
    QCOMPARE(view->currentIndex().row(), m_history->model()->rowCount() - 1);
    QCOMPARE(bar->value(), bar->maximum());
    QCOMPARE(view->verticalHeader()->count(), m_history->model()->rowCount());
}

void tst_HistoryTableWidget::saveToFile_data()
{
    QTest::addColumn<bool>("german");
    QTest::addColumn<double>("xSpeed");
    QTest::addColumn<QByteArray>("expected");

    // Object 7's second row goes under its first, above object 42.
    const QByteArray text = "| id |  X speed, km/h |  Y speed, km/h |     X range, m |     "
                            "Y range, m |      Length, m |        Updated |\n"
                            "|  7 |           36.0 |            0.0 |           0.00 |           "
                            "1.50 |            4.2 |   13:15:30.045 |\n"
                            "|  7 |           36.0 |            0.0 |           1.00 |           "
                            "1.50 |            4.2 |   13:15:30.145 |\n"
                            "| 42 |           36.0 |            0.0 |           0.00 |           "
                            "1.50 |            4.2 |   13:15:30.045 |\n";
    QTest::newRow("cells right-aligned in fields of 2 and 14") << false << 10.0 << text;
    QTest::newRow("longer texts are not cut")
        << false << 1.0e12 << QByteArray(text).replace("           36.0", " 3600000000000.0");
    QTest::newRow("a translated header in UTF-8, padded by characters")
        << true << 10.0 << QByteArray(text).replace("      Length, m", "       L\xC3\xA4nge, m");
}

void tst_HistoryTableWidget::saveToFile()
{
    QFETCH(bool, german);
    QFETCH(double, xSpeed);
    LengthInGerman translator;
    if (german)
        QCoreApplication::installTranslator(&translator);

    // Saved twice within one second: the second file replaces the first.
    QTRY_VERIFY(QTime::currentTime().msec() < 500);
    const QDateTime before = QDateTime::currentDateTime();
    frame("7 42", xSpeed);
    button("saveToFileButton")->click();
    frame("7", xSpeed);
    button("saveToFileButton")->click();
    const QDateTime after = QDateTime::currentDateTime();
    QCoreApplication::removeTranslator(&translator);

    const QDir directory(HistoryTableWidget::exportDirectory());
    const QStringList files = directory.entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    const QString format = "yyyy-MM-dd_hh-mm-ss'.txt'";
    QVERIFY2(files.first() == before.toString(format) || files.first() == after.toString(format),
             qPrintable(files.first()));
    QFile file(directory.filePath(files.first()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QTEST(file.readAll(), "expected");
    QCOMPARE(m_history->model()->rowCount(), 3); // saving leaves the history as it is
}

void tst_HistoryTableWidget::unwritableDirectory_data()
{
    QTest::addColumn<QString>("obstacle");
    // Both stop root too, which ignores permission bits.
    QTest::newRow("a file where the directory should be") << "file";
    QTest::newRow("a directory that takes no files") << "/proc";
}

void tst_HistoryTableWidget::unwritableDirectory()
{
    QFETCH(QString, obstacle);
    const QString path = HistoryTableWidget::exportDirectory();
    if (obstacle == "file") {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    } else {
        QVERIFY(QFile::link(obstacle, path));
    }
    frame("1 2");
    frame("2 1");
    const QStringList before = rows();

    QuestionAnswerer answerer(QMessageBox::Ok);
    button("saveToFileButton")->click();
    // Nothing written, nothing said, nothing lost; the log goes on.
    QCOMPARE(answerer.count, 0);
    QCOMPARE(QFileInfo(path).isFile(), obstacle == "file");
    QCOMPARE(rows(), before);
    frame("1");
    QCOMPARE(rows().size(), before.size() + 1);
}

QTEST_MAIN(tst_HistoryTableWidget)
#include "tst_historytablewidget.moc"
