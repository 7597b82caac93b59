#include "generalinfowidget.h"

#include <QGroupBox>
#include <QLabel>
#include <QtTest>

#include <memory>

// The cycle rate is measured with the frames' own time stamps, once every 200 cycles.
class tst_GeneralInfoWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void cycleRate_data();
    void cycleRate();
    void uptime_data();
    void uptime();
    void newValuesNeedNoNewLayout();

private:
    QString text(const char* label) const { return m_box->findChild<QLabel*>(label)->text(); }

    std::unique_ptr<QGroupBox> m_box;
    GeneralInfoWidget* m_widget = nullptr;
};

void tst_GeneralInfoWidget::init()
{
    m_box = std::make_unique<QGroupBox>();
    m_widget = new GeneralInfoWidget(m_box.get());
}

void tst_GeneralInfoWidget::cleanup()
{
    m_box.reset();
}

void tst_GeneralInfoWidget::cycleRate_data()
{
    // Steps: "s<state>" shows a radar state, "<ms>:<cycle>" reports a frame's time stamp
    // (ms after an arbitrary start) and cycle number.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("shown");

    QTest::newRow("first sample only primes") << "s2 0:1"
                                              << "1";
    QTest::newRow("cycles 1 and 201 20 s apart give 10.0 c/s") << "s2 0:1 20000:201"
                                                               << "201 (10.0 c/s)";
    QTest::newRow("rate kept between samples") << "s2 0:1 20000:201 20100:202"
                                               << "202 (10.0 c/s)";
    QTest::newRow("rate updated at the next sample") << "s2 0:1 20000:201 25000:300 36000:401"
                                                     << "401 (12.5 c/s)";
    QTest::newRow("only cycle numbers with remainder 1 sample") << "s2 0:200 20000:400 21000:402"
                                                                << "402";
    QTest::newRow("same frame time gives no rate") << "s2 0:1 0:201"
                                                   << "201";
    QTest::newRow("frame time going back gives no rate") << "s1 10000:1 0:201"
                                                         << "201";
    QTest::newRow("offline clears the value") << "s2 0:1 20000:201 s0"
                                              << "";
    QTest::newRow("back online the rate needs two fresh samples")
        << "s2 0:1 20000:201 s0 s2 30000:401"
        << "401";
    QTest::newRow("two fresh samples after offline") << "s2 0:1 20000:201 s0 s2 30000:401 50000:601"
                                                     << "601 (10.0 c/s)";
    QTest::newRow("offline: a number without rate, and no sample")
        << "s2 0:1 s0 20000:201 s2 30000:401"
        << "401";
}

void tst_GeneralInfoWidget::cycleRate()
{
    QFETCH(QString, steps);
    QFETCH(QString, shown);
    const QDateTime start(QDate(2026, 3, 1), QTime(8, 0), Qt::UTC);
    for (const QString& step : steps.split(' ')) {
        if (step.startsWith('s')) {
            m_widget->showRadarState(step.mid(1).toInt());
            continue;
        }
        m_widget->startFilling();
        m_widget->setFrameDateTimeUtc(start.addMSecs(step.section(':', 0, 0).toLongLong()));
        m_widget->showCycleNumber(step.section(':', 1).toULongLong());
        m_widget->finishFilling();
    }
    QCOMPARE(text("cycleNumberValueLabel"), shown);
}

void tst_GeneralInfoWidget::uptime_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QList<int>>("parts"); // days, hours, minutes, seconds, milliseconds
    QTest::addColumn<QString>("shown");
    QTest::newRow("padded fields") << 2 << QList<int>{3, 4, 5, 6, 7} << "3 day(s) 04:05:06.007";
    QTest::newRow("largest time of day")
        << 1 << QList<int>{1234, 23, 59, 59, 999} << "1234 day(s) 23:59:59.999";
    QTest::newRow("cleared when offline") << 0 << QList<int>{3, 4, 5, 6, 7} << "";
    QTest::newRow("cleared on bad data") << -1 << QList<int>{3, 4, 5, 6, 7} << "";
}

void tst_GeneralInfoWidget::uptime()
{
    QFETCH(int, state);
    QFETCH(QList<int>, parts);
    QFETCH(QString, shown);
    // Starts offline, the enclosing box greyed out; enabled only while online.
    QVERIFY(!m_box->isEnabled());
    m_widget->showRadarState(2);
    m_widget->showUptimeInfo(parts[0], parts[1], parts[2], parts[3], parts[4]);
    m_widget->showRadarState(state);
    QCOMPARE(text("uptimeValueLabel"), shown);
    QCOMPARE(m_box->isEnabled(), !shown.isEmpty());
    QCOMPARE(text("uptimeLabel"), QString("Internal time (uptime)"));
    QCOMPARE(text("cycleNumberLabel"), QString("Measure cycle number"));
}

void tst_GeneralInfoWidget::newValuesNeedNoNewLayout()
{
    // The values change with every frame; the window around them must not be laid out
    // anew each time, yet a longer value is shown whole.
    struct LayoutRequests : QObject
    {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            count += event->type() == QEvent::LayoutRequest;
            return false;
        }
    } requests;
    m_box->show();
    m_widget->showRadarState(2);
    m_widget->showUptimeInfo(0, 1, 2, 3, 4);
    m_widget->showCycleNumber(100);
    QCoreApplication::processEvents();
    m_box->installEventFilter(&requests);
    m_widget->installEventFilter(&requests);
    for (int cycle = 101; cycle < 120; ++cycle) {
        m_widget->showUptimeInfo(0, 1, 2, 3, cycle);
        m_widget->showCycleNumber(quint64(cycle));
        QCoreApplication::processEvents();
    }
    QCOMPARE(requests.count, 0);
    m_widget->showCycleNumber(1234567890123ULL);
    const QLabel* value = m_box->findChild<QLabel*>("cycleNumberValueLabel");
    QVERIFY(value->width() >= value->fontMetrics().horizontalAdvance(value->text()));
}

QTEST_MAIN(tst_GeneralInfoWidget)
#include "tst_generalinfowidget.moc"
