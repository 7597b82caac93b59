#include "historytablemodel.h"
#include "historytablewidget.h"
#include "iorvexclient.h"
#include "objectstablewidget.h"
#include "questionanswerer.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTableWidget>
#include <QTranslator>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {
const QDateTime SomeTime(QDate(2024, 1, 1), QTime(10, 15, 30, 45), Qt::UTC);
constexpr int Working = IOrvexClient::Working;
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

// The current objects table: its cells, their colours and how they are drawn, its rows
// per frame, and what a radar that stops working leaves of it. The history as the
// operator sees it: which rows a run of frames leaves in the table and where, what a
// saved file holds, and what a file that cannot be written leaves.
class tst_ObjectTables : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Times are shown in local time: make local time UTC+3.
        qputenv("TZ", "<+03>-3");
        tzset();
    }
    void init();
    void cleanup();

    void cellFormats_data();
    void cellFormats();
    void updateTimeAcrossClockChanges();
    void oneRowPerObjectInArrivalOrder();
    void idCellColours();
    // The cells are drawn by the table's own delegate: colours, text and selection.
    void cellsAsDrawn();
    void nonWorkingStateEmptiesAndDisables();
    void columnsFitTheirTexts_data();
    void columnsFitTheirTexts();
    void historyLog_data();
    void historyLog();
    void historyCapDropsTheOldestRows();
    void historySelectionStaysOnItsRow();
    void historyFramesRepaintTheRowsNotTheHeader();
    void historyKeptPictureLooksAsPainted_data();
    void historyKeptPictureLooksAsPainted();
    void historySavedToFile_data();
    void historySavedToFile();
    void historyUnwritableDirectory_data();
    void historyUnwritableDirectory();

private:
    void frame(const QList<quint8>& ids)
    {
        m_widget->startFilling();
        for (quint8 id : ids)
            m_widget->addObject(id, 1.0, 0.0, 10.0, 2.0, 4.5, SomeTime.addMSecs(id));
        m_widget->finishFilling();
    }
    QStringList rowTexts(int row) const
    {
        QStringList texts;
        for (int column = 0; column < m_table->columnCount(); ++column)
            texts << m_table->item(row, column)->text();
        return texts;
    }

    // A frame like the client sends it: "1 ~2 3" measures 1 and 3 and carries 2 over.
    void historyFrame(const QString& objects, double xSpeed = 10.0)
    {
        const QDateTime time = SomeTime.addMSecs(qint64(m_frame) * FrameMs);
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

    std::unique_ptr<QGroupBox> m_box;
    ObjectsTableWidget* m_widget = nullptr;
    QTableWidget* m_table = nullptr;
    std::unique_ptr<HistoryTableWidget> m_history;
    int m_frame = 0;
};

void tst_ObjectTables::init()
{
    m_box = std::make_unique<QGroupBox>();
    m_widget = new ObjectsTableWidget(m_box.get());
    (new QHBoxLayout(m_box.get()))->addWidget(m_widget);
    m_table = m_widget->findChild<QTableWidget*>("tableWidget");
    QVERIFY(m_table);
    m_widget->showRadarState(Working);
    removeExportPath();
    m_history = std::make_unique<HistoryTableWidget>(nullptr, Qt::Window);
    m_history->setEnabled(true);
    m_frame = 0;
}

void tst_ObjectTables::cleanup()
{
    m_box.reset();
    m_history.reset();
    removeExportPath();
}

void tst_ObjectTables::cellFormats_data()
{
    QTest::addColumn<QList<double>>("values"); // xSpeed, ySpeed, xRange, yRange, length
    QTest::addColumn<QString>("texts");

    QTest::newRow("speeds in km/h")
        << QList<double>{10, -2.5, 0, 0, 0} << "7|36.0|-9.0|0.00|0.00|0.0|13:15:30.045";
    QTest::newRow("ranges with two decimals, length with one")
        << QList<double>{0, 0, 3.14159, -7.5, 4.26} << "7|0.0|0.0|3.14|-7.50|4.3|13:15:30.045";
    QTest::newRow("no thousands separator") << QList<double>{1000, 0, 12345.678, 0, 1234.56}
                                            << "7|3600.0|0.0|12345.68|0.00|1234.6|13:15:30.045";
}

void tst_ObjectTables::cellFormats()
{
    QFETCH(QList<double>, values);
    m_widget->startFilling();
    m_widget->addObject(7, values[0], values[1], values[2], values[3], values[4], SomeTime);
    m_widget->finishFilling();
    QCOMPARE(m_table->rowCount(), 1);
    QTEST(rowTexts(0).join('|'), "texts");
    for (int column = 0; column < 7; ++column) {
        const QTableWidgetItem* item = m_table->item(0, column);
        QVERIFY(!(item->flags() & Qt::ItemIsEditable));
        QCOMPARE(item->textAlignment(),
                 column == 0 ? int(Qt::AlignCenter) : int(Qt::AlignLeft | Qt::AlignVCenter));
    }
}

void tst_ObjectTables::updateTimeAcrossClockChanges()
{
    // Central European time; summer time begins on 29 March 2026 at 01:00 UTC. The date
    // is not shown; an invalid time shows nothing.
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    const struct
    {
        QDateTime utc;
        const char* shown;
    } stamps[] = {
        {QDateTime(QDate(2026, 3, 28), QTime(23, 30), Qt::UTC), "00:30:00.000"},
        {QDateTime(QDate(2026, 3, 29), QTime(0, 59, 59, 999), Qt::UTC), "01:59:59.999"},
        {QDateTime(QDate(2026, 3, 29), QTime(1, 0), Qt::UTC), "03:00:00.000"},
        {QDateTime(QDate(2026, 3, 29), QTime(1, 14, 59, 999), Qt::UTC), "03:14:59.999"},
        {QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 500), Qt::UTC), "00:59:59.500"},
        {QDateTime(), ""},
    };
    for (const auto& stamp : stamps) {
        m_widget->startFilling();
        m_widget->addObject(7, 0, 0, 0, 0, 0, stamp.utc);
        m_widget->finishFilling();
        QCOMPARE(m_table->item(0, ObjectsTableWidget::UpdatedColumn)->text(),
                 QString::fromLatin1(stamp.shown));
    }
    qputenv("TZ", "<+03>-3");
    tzset();
}

void tst_ObjectTables::oneRowPerObjectInArrivalOrder()
{
    frame({9, 200, 3, 8});
    // The rows are not drawn until the frame is complete, so that it is drawn once; the
    // last frame's rows are filled anew and its surplus rows go.
    QSignalSpy changed(m_table->model(), &QAbstractItemModel::dataChanged);
    m_widget->startFilling();
    QVERIFY(!m_table->viewport()->updatesEnabled());
    for (quint8 id : {5, 3, 5}) // the same id twice in one frame shows twice
        m_widget->addObject(id, 0, 0, 0, 0, 0, SomeTime.addMSecs(id));
    QVERIFY(!m_table->viewport()->updatesEnabled());
    m_widget->finishFilling();
    QVERIFY(m_table->viewport()->updatesEnabled());
    // The model tells its views of the whole frame's rows at once, of the id column only
    // when an id changed its row (the column is then sized to its contents again).
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toModelIndex(), m_table->model()->index(0, 0));
    QCOMPARE(changed[0][1].toModelIndex(), m_table->model()->index(2, 6));
    frame({5, 3, 5});
    QCOMPARE(changed.size(), 2);
    QCOMPARE(changed[1][0].toModelIndex(), m_table->model()->index(0, 1));
    // A cell set the usual way tells the views at once, and only of a change.
    for (int i = 0; i < 2; ++i)
        m_table->item(1, 3)->setText("x");
    QCOMPARE(changed.size(), 3);
    QCOMPARE(changed[2][0].toModelIndex(), m_table->model()->index(1, 3));
    QCOMPARE(m_table->item(1, 3)->text(), "x");
    QStringList idsAndTimes;
    for (int row = 0; row < m_table->rowCount(); ++row)
        idsAndTimes << rowTexts(row)[0] + " " + rowTexts(row)[6];
    QCOMPARE(idsAndTimes, (QStringList{"5 13:15:30.050", "3 13:15:30.048", "5 13:15:30.050"}));
    frame({});
    QCOMPARE(m_table->rowCount(), 0);
}

void tst_ObjectTables::idCellColours()
{
    // Only the id cell carries the object's colours, picked by id modulo 25; painting
    // switched on or off takes effect with the next frame.
    const QColor black(0, 0, 0), white(255, 255, 255), red(255, 0, 0);
    const auto colours = [this](quint8 id, const QColor& base, const QColor& text) {
        frame({id});
        QCOMPARE(m_table->item(0, 0)->background(), QBrush(base));
        QCOMPARE(m_table->item(0, 0)->foreground(), QBrush(text));
        for (int column = 1; column < 7; ++column) {
            QCOMPARE(m_table->item(0, column)->background().style(), Qt::NoBrush);
            QCOMPARE(m_table->item(0, column)->foreground().style(), Qt::NoBrush);
        }
    };
    colours(4, white, black); // painting off: entry 0 for every id
    m_widget->setPaintObjects(true);
    QCOMPARE(m_table->item(0, 0)->background().color(), white);
    colours(4, red, white);
    colours(19, QColor(159, 159, 159), black);
    colours(29, red, white); // entry 4 again
    colours(255, QColor(0, 255, 0), black); // entry 5
    m_widget->setPaintObjects(false);
    colours(255, white, black);
}

void tst_ObjectTables::cellsAsDrawn()
{
    m_box->resize(700, 300);
    m_box->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_box.get()));
    m_widget->setPaintObjects(true);
    m_widget->startFilling();
    m_widget->addObject(4, 10.0, 0.0, 3.0, 1.0, 4.0, SomeTime);
    m_widget->addObject(255, -10.0, 0.0, 3.0, 1.0, 4.0, SomeTime);
    m_widget->finishFilling();
    m_table->selectRow(1);

    const QImage image = m_table->viewport()->grab().toImage();
    auto colours = [&](int row, int column) {
        QMap<QRgb, int> count;
        const QRect cell
            = m_table->visualItemRect(m_table->item(row, column)).adjusted(2, 2, -2, -2);
        for (int y = cell.top(); y <= cell.bottom(); ++y) {
            for (int x = cell.left(); x <= cell.right(); ++x)
                ++count[image.pixel(x, y) | 0xff000000];
        }
        return count;
    };
    // The id cell is filled with the object's colour and carries text in another.
    const QMap<QRgb, int> idCell = colours(0, 0);
    QVERIFY(idCell.value(qRgb(255, 0, 0)) > idCell.size() && idCell.size() > 1);
    // The selected row shows the highlight with text on it; the other row does not.
    const QRgb highlight = m_table->palette().color(QPalette::Active, QPalette::Highlight).rgb();
    const QMap<QRgb, int> selected = colours(1, 1), plain = colours(0, 1);
    const QRgb highlightedText
        = m_table->palette().color(QPalette::Active, QPalette::HighlightedText).rgb();
    QVERIFY(selected.value(highlight) > 0 && selected.value(highlightedText) > 0);
    QVERIFY(plain.value(highlight) == 0 && plain.size() > 1);

    // A number's ink sits in the middle of its cell, neither above nor below it.
    const QRect cell = m_table->visualItemRect(m_table->item(0, 1));
    const QRgb base = image.pixel(cell.center().x(), cell.top() + 1);
    int top = cell.bottom(), bottom = cell.top();
    for (int y = cell.top(); y < cell.bottom(); ++y) {
        for (int x = cell.left(); x < cell.right(); ++x) {
            if (image.pixel(x, y) != base) {
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    QVERIFY(top <= bottom);
    QVERIFY(std::abs((top - cell.top()) - (cell.bottom() - bottom))
            <= m_table->fontMetrics().descent() + 2);
}

void tst_ObjectTables::nonWorkingStateEmptiesAndDisables()
{
    QVERIFY(!ObjectsTableWidget().isEnabled()); // nothing to show before the radar works
    // Inside its box the box's frame is margin enough.
    QCOMPARE(m_widget->layout()->contentsMargins(), QMargins());
    for (int state : {IOrvexClient::Busy, IOrvexClient::Offline, IOrvexClient::BadData}) {
        QVERIFY(m_box->isEnabled());
        frame({1, 2});
        // Even in the middle of a frame the table empties and is drawn again.
        m_widget->startFilling();
        m_widget->addObject(3, 0, 0, 0, 0, 0, SomeTime);
        m_widget->showRadarState(state);
        QCOMPARE(m_table->rowCount(), 0);
        QVERIFY(m_table->viewport()->updatesEnabled());
        QVERIFY(!m_box->isEnabled()); // the enclosing box greys out with the table
        m_widget->showRadarState(Working);
    }
}

void tst_ObjectTables::columnsFitTheirTexts_data()
{
    QTest::addColumn<QString>("catalogue"); // none: the program's own English
    QTest::addColumn<QString>("speedHeader");
    QTest::newRow("English") << QString() << "X speed, km/h";
    QTest::newRow("German") << "orvex-road-app-gui_de"
                            << "vX, km/h";
}

void tst_ObjectTables::columnsFitTheirTexts()
{
    // At its smallest, the table still shows every header and the widest values whole.
    QFETCH(QString, catalogue);
    QTranslator translator;
    if (!catalogue.isEmpty()) {
        QVERIFY(translator.load(catalogue, QStringLiteral(ORVEX_TRANSLATIONS_DIR)));
        QCoreApplication::installTranslator(&translator);
    }
    QGroupBox box;
    auto* widget = new ObjectsTableWidget(&box);
    (new QHBoxLayout(&box))->addWidget(widget);
    widget->showRadarState(Working);
    box.resize(box.minimumSizeHint());
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    widget->startFilling();
    widget->addObject(255, -188.8 / 3.6, -188.8 / 3.6, 250.0, -25.0, 25.5, SomeTime);
    widget->finishFilling();
    QCoreApplication::removeTranslator(&translator);

    QTableWidget* table = widget->tableWidget();
    QTEST(table->horizontalHeaderItem(1)->text(), "speedHeader");
    const QFontMetrics header = table->horizontalHeader()->fontMetrics();
    const QFontMetrics cells = table->fontMetrics();
    for (int column = 0; column < table->columnCount(); ++column) {
        const QString title = table->horizontalHeaderItem(column)->text();
        const QString value = table->item(0, column)->text();
        QVERIFY2(header.horizontalAdvance(title) < table->columnWidth(column), qPrintable(title));
        QVERIFY2(cells.horizontalAdvance(value) < table->columnWidth(column), qPrintable(value));
    }
}

void tst_ObjectTables::historyLog_data()
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

void tst_ObjectTables::historyLog()
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
            historyFrame(step);
    }
    QTEST(rows(), "expected");
    QCOMPARE(pause->text(), pause->isChecked() ? QString("Continue") : QString("Pause"));
    QVERIFY(m_history->tableView()->viewport()->updatesEnabled());
}

void tst_ObjectTables::historyCapDropsTheOldestRows()
{
    // Object 1's one row is the oldest; object 2's group follows it and grows in every
    // frame, while object 1 is only carried over. A hundred objects a frame fill the
    // history to 100,005 rows.
    historyFrame("1 2");
    QString objects = "~1";
    for (int id = 2; id <= 101; ++id)
        objects += ' ' + QString::number(id);
    for (int f = 1; f < 1000; ++f)
        historyFrame(objects);
    historyFrame(objects + " 102 103 104");
    // Five rows went from the top: object 1's and object 2's four oldest.
    QCOMPARE(m_history->model()->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@4"));
    QCOMPARE(row(996), QString("2@1000"));

    // Object 2's next row lands under its newest, five rows higher than before the trim;
    // object 1, whose group is gone, starts anew at the bottom. Two more rows go.
    historyFrame("2 1");
    QCOMPARE(m_history->model()->rowCount(), HistoryTableWidget::MaxRows);
    QCOMPARE(row(0), QString("2@6"));
    QCOMPARE(row(995), QString("2@1001"));
    QCOMPARE(row(996), QString("3@1"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 2), QString("104@1000"));
    QCOMPARE(row(HistoryTableWidget::MaxRows - 1), QString("1@1001"));
}

void tst_ObjectTables::historySelectionStaysOnItsRow()
{
    m_history->resize(640, 400);
    m_history->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_history.get()));
    QTableView* view = m_history->tableView();
    historyFrame("1 2");
    view->selectRow(1);
    // Object 1's new rows go above the selected row of object 2.
    historyFrame("1 2");
    historyFrame("1");
    const QModelIndexList selected = view->selectionModel()->selectedRows();
    QCOMPARE(selected.size(), 1);
    QCOMPARE(row(selected.first().row()), QString("2@0"));

    // Scrolled to the end, the view follows the newest row.
    for (int f = 0; f < 40; ++f)
        historyFrame("1 2");
    QScrollBar* bar = view->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), 0);
    bar->setValue(bar->maximum());
    historyFrame("3");
    QCOMPARE(view->currentIndex().row(), m_history->model()->rowCount() - 1);
    QCOMPARE(bar->value(), bar->maximum());
    QCOMPARE(view->verticalHeader()->count(), m_history->model()->rowCount());
}

void tst_ObjectTables::historyFramesRepaintTheRowsNotTheHeader()
{
    // Every frame moves rows; the column header stays as it is and is not drawn again.
    struct PaintCount : QObject
    {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
    } headerPaints, rowPaints;
    QTableView* view = m_history->tableView();
    m_history->resize(640, 400);
    m_history->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_history.get()));
    // Following its end, the log selects its newest row at every frame.
    for (int f = 0; f < 30; ++f)
        historyFrame("1 2");
    QScrollBar* bar = view->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    bar->setValue(bar->maximum());
    historyFrame("1 2");
    QTRY_VERIFY(!view->viewport()->visibleRegion().isEmpty());
    QCOMPARE(view->currentIndex().row(), m_history->model()->rowCount() - 1);
    view->horizontalHeader()->viewport()->installEventFilter(&headerPaints);
    view->viewport()->installEventFilter(&rowPaints);
    for (int f = 0; f < 3; ++f) {
        const int before = rowPaints.count;
        historyFrame("2 1 3");
        // The header would be drawn in the same window update as the rows.
        QTRY_VERIFY(rowPaints.count > before);
    }
    QCOMPARE(headerPaints.count, 0);
}

void tst_ObjectTables::historyKeptPictureLooksAsPainted_data()
{
    // Frames as historyFrame() takes them, one per entry; "scroll N" scrolls the log to
    // its row N, "end" to its end, "select N" selects row N.
    QTest::addColumn<QStringList>("steps");

    QStringList follow;
    for (int f = 0; f < 12; ++f)
        follow << "1 2 3";
    follow << "end";
    for (int f = 0; f < 24; ++f)
        follow << "1 2 3";
    QTest::newRow("at its end, rows move up under new ones") << follow;

    QStringList groups;
    for (int f = 0; f < 16; ++f)
        groups << "1 2";
    groups << "end";
    for (int f = 0; f < 24; ++f) // object 3 comes and goes: new groups at the bottom
        groups << (f % 6 < 3 ? "1 2 3" : "1 2");
    QTest::newRow("at its end, groups start and end") << groups;

    QStringList above;
    for (int f = 0; f < 12; ++f)
        above << "1 2 3 4";
    above << "scroll 20";
    for (int f = 0; f < 12; ++f) // rows go in above the shown ones: these move down
        above << "1 2 3 4";
    QTest::newRow("scrolled up, rows move down") << above;

    QStringList paused{"1 2", "1 2", "1 2", "select 2", "~1 ~2", "select 4", "~1 ~2"};
    for (int f = 0; f < 12; ++f)
        paused << "1 2";
    // Scrolled down by a row, the row cut by the bottom edge comes wholly into view.
    paused << "scroll 3"
           << "scroll 4"
           << "scroll 2"
           << "scroll 3"
           << "scroll 4";
    QTest::newRow("selection changes and scrolling") << paused;
}

void tst_ObjectTables::historyKeptPictureLooksAsPainted()
{
    // The history keeps a picture of its rows and moves it with them: after any frame,
    // what the window shows must be what the table paints from scratch.
    QFETCH(QStringList, steps);
    m_history->resize(560, 300);
    m_history->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_history.get()));
    QTableView* view = m_history->tableView();
    QScrollBar* bar = view->verticalScrollBar();
    QCOMPARE(view->viewport()->palette().color(view->viewport()->backgroundRole()).alpha(), 255);

    int compared = 0;
    for (int step = 0; step < steps.size(); ++step) {
        const QStringList words = steps[step].split(' ');
        if (words.first() == "end") {
            QTRY_VERIFY(bar->maximum() > 0);
            bar->setValue(bar->maximum());
        } else if (words.first() == "scroll") {
            view->scrollTo(m_history->model()->index(words[1].toInt(), 0),
                           QAbstractItemView::PositionAtTop);
        } else if (words.first() == "select") {
            view->selectRow(words[1].toInt());
        } else {
            historyFrame(steps[step]);
        }
        // The window's repaint brings the picture up to date and shows it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QCoreApplication::sendPostedEvents(m_history.get(), QEvent::UpdateRequest);
        if (step % 5 != 4 && step != steps.size() - 1)
            continue;
        const QImage shown = view->viewport()->grab().toImage();
        // A palette change starts the picture afresh: the table paints every row.
        QEvent paletteChange(QEvent::PaletteChange);
        QCoreApplication::sendEvent(view, &paletteChange);
        const QImage painted = view->viewport()->grab().toImage();
        QVERIFY2(shown == painted, qPrintable(QString("step %1").arg(step)));
        ++compared;
    }
    QVERIFY(compared >= 3);
}

void tst_ObjectTables::historySavedToFile_data()
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

void tst_ObjectTables::historySavedToFile()
{
    QFETCH(bool, german);
    QFETCH(double, xSpeed);
    LengthInGerman translator;
    if (german)
        QCoreApplication::installTranslator(&translator);

    // Saved twice within one second: the second file replaces the first.
    QTRY_VERIFY(QTime::currentTime().msec() < 500);
    const QDateTime before = QDateTime::currentDateTime();
    historyFrame("7 42", xSpeed);
    button("saveToFileButton")->click();
    historyFrame("7", xSpeed);
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

void tst_ObjectTables::historyUnwritableDirectory_data()
{
    QTest::addColumn<QString>("obstacle");
    // Both stop root too, which ignores permission bits.
    QTest::newRow("a file where the directory should be") << "file";
    QTest::newRow("a directory that takes no files") << "/proc";
}

void tst_ObjectTables::historyUnwritableDirectory()
{
    QFETCH(QString, obstacle);
    const QString path = HistoryTableWidget::exportDirectory();
    if (obstacle == "file") {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    } else {
        QVERIFY(QFile::link(obstacle, path));
    }
    historyFrame("1 2");
    historyFrame("2 1");
    const QStringList before = rows();

    QuestionAnswerer answerer(QMessageBox::Ok);
    button("saveToFileButton")->click();
    // Nothing written, nothing said, nothing lost; the log goes on.
    QCOMPARE(answerer.count, 0);
    QCOMPARE(QFileInfo(path).isFile(), obstacle == "file");
    QCOMPARE(rows(), before);
    historyFrame("1");
    QCOMPARE(rows().size(), before.size() + 1);
}

QTEST_MAIN(tst_ObjectTables)
#include "tst_objecttables.moc"
