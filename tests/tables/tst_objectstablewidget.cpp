#include "iorvexclient.h"
#include "objectstablewidget.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QTableWidget>
#include <QTranslator>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {
const QDateTime SomeTime(QDate(2024, 1, 1), QTime(10, 15, 30, 45), Qt::UTC);
constexpr int Working = 2;
} // namespace

class tst_ObjectsTableWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
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

    std::unique_ptr<QGroupBox> m_box;
    ObjectsTableWidget* m_widget = nullptr;
    QTableWidget* m_table = nullptr;
};

void tst_ObjectsTableWidget::initTestCase()
{
    // The update time is shown in local time: make local time UTC+3.
    qputenv("TZ", "<+03>-3");
    tzset();
}

void tst_ObjectsTableWidget::init()
{
    m_box = std::make_unique<QGroupBox>();
    m_widget = new ObjectsTableWidget(m_box.get());
    (new QHBoxLayout(m_box.get()))->addWidget(m_widget);
    m_table = m_widget->findChild<QTableWidget*>("tableWidget");
    QVERIFY(m_table);
    m_widget->showRadarState(Working);
}

void tst_ObjectsTableWidget::cleanup()
{
    m_box.reset();
}

void tst_ObjectsTableWidget::cellFormats_data()
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

void tst_ObjectsTableWidget::cellFormats()
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

void tst_ObjectsTableWidget::updateTimeAcrossClockChanges()
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

void tst_ObjectsTableWidget::oneRowPerObjectInArrivalOrder()
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
    QStringList idsAndTimes;
    for (int row = 0; row < m_table->rowCount(); ++row)
        idsAndTimes << rowTexts(row)[0] + " " + rowTexts(row)[6];
    QCOMPARE(idsAndTimes, (QStringList{"5 13:15:30.050", "3 13:15:30.048", "5 13:15:30.050"}));
    frame({});
    QCOMPARE(m_table->rowCount(), 0);
}

void tst_ObjectsTableWidget::idCellColours()
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

void tst_ObjectsTableWidget::cellsAsDrawn()
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
    // Column 0 is wide enough for the widest id.
    QVERIFY(m_table->columnWidth(0)
            >= m_table->fontMetrics().horizontalAdvance(QStringLiteral("255")));
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

void tst_ObjectsTableWidget::nonWorkingStateEmptiesAndDisables()
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

void tst_ObjectsTableWidget::columnsFitTheirTexts_data()
{
    QTest::addColumn<QString>("catalogue"); // none: the program's own English
    QTest::addColumn<QString>("speedHeader");
    QTest::newRow("English") << QString() << "X speed, km/h";
    QTest::newRow("German") << "orvex-road-app-gui_de"
                            << "vX, km/h";
}

void tst_ObjectsTableWidget::columnsFitTheirTexts()
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

QTEST_MAIN(tst_ObjectsTableWidget)
#include "tst_objectstablewidget.moc"
