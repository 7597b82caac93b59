#include "historytablemodel.h"
#include "historytablewidget.h"
#include "objectcolor.h"
#include "objectstablewidget.h"
#include "questionanswerer.h"

#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTableWidget>
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
    void initTestCase();
    void init();
    void cleanup();

    void log_data();
    void log();
    void rowsLookLikeTheObjectsTable_data();
    void rowsLookLikeTheObjectsTable();
    void capDropsTheOldestRows();
    void selectionStaysOnItsRow();
    void saveToFile_data();
    void saveToFile();
    void unwritableDirectory_data();
    void unwritableDirectory();

private:
    // A frame like the client sends it: "1 ~2 3" measures 1 and 3 and carries 2 over.
    void frame(const QString& objects, double xSpeed = 10.0);
    // Every row as "id@frame" (the X range carries the frame number), top to bottom.
    QStringList rows() const;
    QPushButton* button(const char* name) const { return m_history->findChild<QPushButton*>(name); }
    // Removes what a test left at the export path; a link is removed, never followed.
    static void removeExportPath();

    std::unique_ptr<HistoryTableWidget> m_history;
    int m_frame = 0;
};

void tst_HistoryTableWidget::initTestCase()
{
    // Rows show local time: make local time UTC+3.
    qputenv("TZ", "<+03>-3");
    tzset();
}

void tst_HistoryTableWidget::init()
{
    removeExportPath();
    m_history = std::make_unique<HistoryTableWidget>(nullptr, Qt::Window);
    m_history->setEnabled(true);
    m_frame = 0;
}

void tst_HistoryTableWidget::cleanup()
{
    m_history.reset();
    removeExportPath();
}

void tst_HistoryTableWidget::removeExportPath()
{
    const QString path = HistoryTableWidget::exportDirectory();
    const QFileInfo info(path);
    if (info.isSymLink() || info.isFile())
        QFile::remove(path);
    else if (info.isDir())
        QDir(path).removeRecursively();
}

void tst_HistoryTableWidget::frame(const QString& objects, double xSpeed)
{
    const QDateTime time = T0.addMSecs(qint64(m_frame) * FrameMs);
    m_history->startFilling();
    m_history->setFrameDateTimeUtc(time);
    for (QString object : objects.split(' ', Qt::SkipEmptyParts)) {
        const bool carriedOver = object.startsWith('~');
        const quint8 id = quint8(object.remove('~').toUInt());
        m_history->addObject(id, xSpeed, 0.0, m_frame, 1.5, 4.2,
                             carriedOver ? time.addMSecs(-FrameMs) : time);
    }
    m_history->finishFilling();
    ++m_frame;
}

QStringList tst_HistoryTableWidget::rows() const
{
    const HistoryTableModel* model = m_history->model();
    QStringList texts;
    for (int row = 0; row < model->rowCount(); ++row)
        texts << model->text(row, 0) + '@' + QString::number(model->text(row, 3).toDouble());
    return texts;
}

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
    QTest::newRow("enabled again, the log starts afresh")
        << QStringList{"1 2", "off", "on", "2 1"} << QStringList{"2@1", "1@1"};
    QTest::newRow("enabled again with the pause button down, the log stays paused")
        << QStringList{"pause", "off", "on", "1"} << QStringList{};
}

void tst_HistoryTableWidget::log()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, expected);

    for (const QString& step : steps) {
        if (step == "pause" || step == "continue")
            button("pauseWorkButton")->click();
        else if (step == "clear")
            button("clearTableButton")->click();
        else if (step == "off" || step == "on")
            m_history->setEnabled(step == "on");
        else
            frame(step);
    }
    QCOMPARE(rows(), expected);
    QCOMPARE(button("pauseWorkButton")->text(),
             button("pauseWorkButton")->isChecked() ? QString("Continue") : QString("Pause"));
    QVERIFY(m_history->updatesEnabled());
}

void tst_HistoryTableWidget::rowsLookLikeTheObjectsTable_data()
{
    QTest::addColumn<QList<double>>("values"); // xSpeed, ySpeed, xRange, yRange, length
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<bool>("paint");

    QTest::newRow("km/h, rounding, local time past midnight")
        << QList<double>{10, -2.5, 3.14159, -7.5, 4.26}
        << QDateTime(QDate(2024, 1, 1), QTime(22, 0, 0, 5), Qt::UTC) << false;
    QTest::newRow("no thousands separator, negative zero, painted")
        << QList<double>{1000, -0.001, 12345.678, -0.004, 1234.56} << T0 << true;
    QTest::newRow("a frame without a time shows none")
        << QList<double>{1, 1, 1, 1, 1} << QDateTime() << false;
}

void tst_HistoryTableWidget::rowsLookLikeTheObjectsTable()
{
    QFETCH(QList<double>, values);
    QFETCH(QDateTime, time);
    QFETCH(bool, paint);
    const quint8 id = 31;

    ObjectsTableWidget table;
    table.showRadarState(2);
    table.setPaintObjects(paint);
    table.startFilling();
    table.addObject(id, values[0], values[1], values[2], values[3], values[4], time);
    table.finishFilling();
    m_history->setPaintObjects(paint);
    m_history->startFilling();
    m_history->setFrameDateTimeUtc(time);
    m_history->addObject(id, values[0], values[1], values[2], values[3], values[4], time);
    m_history->finishFilling();

    const HistoryTableModel* model = m_history->model();
    QCOMPARE(model->rowCount(), 1);
    for (int column = 0; column < ObjectsTableWidget::ColumnCount; ++column) {
        const QTableWidgetItem* item = table.tableWidget()->item(0, column);
        const QModelIndex cell = model->index(0, column);
        QCOMPARE(cell.data().toString(), item->text());
        QCOMPARE(cell.data(Qt::TextAlignmentRole).toInt(), item->textAlignment());
        QCOMPARE(cell.data(Qt::BackgroundRole).value<QBrush>(), item->background());
        QCOMPARE(cell.data(Qt::ForegroundRole).value<QBrush>(), item->foreground());
        QVERIFY(!(cell.flags() & Qt::ItemIsEditable));
        QCOMPARE(model->headerData(column, Qt::Horizontal).toString(),
                 table.tableWidget()->horizontalHeaderItem(column)->text());
    }
    // Painting switched on later leaves a row's colours alone.
    m_history->setPaintObjects(!paint);
    QCOMPARE(model->index(0, 0).data(Qt::BackgroundRole).value<QBrush>().color(),
             ObjectColor::base(paint ? id : 0));
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
    QCOMPARE(m_history->model()->rowCount(), 2 + 999 * 100);
    frame(objects + " 102 103 104");

    const HistoryTableModel* model = m_history->model();
    auto row = [model](int r) { return model->text(r, 0) + '@' + model->text(r, 3); };
    // Five rows went from the top: object 1's and object 2's four oldest.
    QCOMPARE(model->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@4.00"));
    QCOMPARE(row(996), QString("2@1000.00"));

    // Object 2's next row lands under its newest, five rows higher than before the trim;
    // object 1, whose group is gone, starts anew at the bottom. Two more rows go.
    frame("2 1");
    QCOMPARE(model->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@6.00"));
    QCOMPARE(row(995), QString("2@1001.00"));
    QCOMPARE(row(996), QString("3@1.00"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 2), QString("104@1000.00"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 1), QString("1@1001.00"));
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
    QCOMPARE(rows().at(selected.first().row()), QString("2@0"));

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
    QVERIFY(view->visualRect(view->currentIndex()).bottom() <= view->viewport()->height());
}

void tst_HistoryTableWidget::saveToFile_data()
{
    QTest::addColumn<bool>("german");
    QTest::addColumn<double>("xSpeed");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray header = "| id |  X speed, km/h |  Y speed, km/h |     X range, m |     "
                              "Y range, m |      Length, m |        Updated |\n";
    // Object 7's second row goes under its first, above object 42.
    const QByteArray rows = "|  7 |           36.0 |            0.0 |           0.00 |           "
                            "1.50 |            4.2 |   13:15:30.045 |\n"
                            "|  7 |           36.0 |            0.0 |           1.00 |           "
                            "1.50 |            4.2 |   13:15:30.145 |\n"
                            "| 42 |           36.0 |            0.0 |           0.00 |           "
                            "1.50 |            4.2 |   13:15:30.045 |\n";
    QTest::newRow("cells right-aligned in fields of 2 and 14") << false << 10.0 << header + rows;
    QByteArray uncut = header + rows;
    uncut.replace("           36.0", " 3600000000000.0");
    QTest::newRow("longer texts are not cut") << false << 1.0e12 << uncut;
    QByteArray german = header + rows;
    german.replace("      Length, m", "       L\xC3\xA4nge, m");
    QTest::newRow("a translated header in UTF-8, padded by characters") << true << 10.0 << german;
}

void tst_HistoryTableWidget::saveToFile()
{
    QFETCH(bool, german);
    QFETCH(double, xSpeed);
    QFETCH(QByteArray, expected);
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
    QCOMPARE(file.readAll(), expected);
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
