#include "generalinfowidget.h"

#include <QGroupBox>
#include <QLabel>
#include <QtTest>

#include <memory>

namespace {
constexpr int Offline = 0;
constexpr int Busy = 1;
constexpr int Working = 2;
const QDateTime Start(QDate(2026, 3, 1), QTime(8, 0), Qt::UTC);

// One cycle report: the frame's time stamp (ms after Start) and its cycle number.
struct Cycle
{
    qint64 atMs;
    quint64 number;
};
} // namespace

Q_DECLARE_METATYPE(QList<Cycle>)

class tst_GeneralInfoWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void cycleRate_data();
    void cycleRate();
    void offlineClearsValuesAndRate();
    void uptime_data();
    void uptime();
    void enabledOnlyWhileOnline();

private:
    void report(const Cycle& cycle);
    QString cycleText() const
    {
        return m_widget->findChild<QLabel*>("cycleNumberValueLabel")->text();
    }
    QString uptimeText() const { return m_widget->findChild<QLabel*>("uptimeValueLabel")->text(); }

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

void tst_GeneralInfoWidget::report(const Cycle& cycle)
{
    m_widget->startFilling();
    m_widget->setFrameDateTimeUtc(Start.addMSecs(cycle.atMs));
    m_widget->showCycleNumber(cycle.number);
    m_widget->finishFilling();
}

void tst_GeneralInfoWidget::cycleRate_data()
{
    QTest::addColumn<QList<Cycle>>("cycles");
    QTest::addColumn<QString>("shown");

    QTest::newRow("first sample only primes") << QList<Cycle>{{0, 1}} << "1";
    QTest::newRow("cycles 1 and 201 20 s apart give 10.0 c/s")
        << QList<Cycle>{{0, 1}, {20000, 201}} << "201 (10.0 c/s)";
    QTest::newRow("rate kept between samples")
        << QList<Cycle>{{0, 1}, {20000, 201}, {20100, 202}} << "202 (10.0 c/s)";
    QTest::newRow("rate updated at the next sample")
        << QList<Cycle>{{0, 1}, {20000, 201}, {25000, 300}, {36000, 401}} << "401 (12.5 c/s)";
    QTest::newRow("only cycle numbers with remainder 1 sample")
        << QList<Cycle>{{0, 200}, {20000, 400}, {21000, 402}} << "402";
    QTest::newRow("same frame time gives no rate") << QList<Cycle>{{0, 1}, {0, 201}} << "201";
    QTest::newRow("frame time going back gives no rate")
        << QList<Cycle>{{10000, 1}, {0, 201}} << "201";
}

void tst_GeneralInfoWidget::cycleRate()
{
    QFETCH(QList<Cycle>, cycles);
    QFETCH(QString, shown);
    m_widget->showRadarState(Working);
    for (const Cycle& cycle : cycles)
        report(cycle);
    QCOMPARE(cycleText(), shown);
}

void tst_GeneralInfoWidget::offlineClearsValuesAndRate()
{
    m_widget->showRadarState(Busy);
    m_widget->showUptimeInfo(0, 1, 2, 3, 4);
    report({0, 1});
    report({20000, 201});
    QCOMPARE(cycleText(), QString("201 (10.0 c/s)"));
    QVERIFY(!uptimeText().isEmpty());

    m_widget->showRadarState(Offline);
    QCOMPARE(cycleText(), QString());
    QCOMPARE(uptimeText(), QString());
    QCOMPARE(m_widget->cycleRate(), 0.0);

    // Back online the rate needs two fresh samples; the old sample time is gone.
    m_widget->showRadarState(Working);
    report({30000, 401});
    QCOMPARE(cycleText(), QString("401"));
    report({50000, 601});
    QCOMPARE(cycleText(), QString("601 (10.0 c/s)"));

    // Offline, a number is still shown but never with a rate, and no sample is taken.
    m_widget->showRadarState(Offline);
    report({60000, 801});
    QCOMPARE(cycleText(), QString("801"));
    m_widget->showRadarState(Working);
    report({70000, 1001});
    QCOMPARE(cycleText(), QString("1001"));
}

void tst_GeneralInfoWidget::uptime_data()
{
    QTest::addColumn<QList<int>>("parts"); // days, hours, minutes, seconds, milliseconds
    QTest::addColumn<QString>("shown");
    QTest::newRow("padded fields") << QList<int>{3, 4, 5, 6, 7} << "3 day(s) 04:05:06.007";
    QTest::newRow("zero") << QList<int>{0, 0, 0, 0, 0} << "0 day(s) 00:00:00.000";
    QTest::newRow("largest time of day")
        << QList<int>{1234, 23, 59, 59, 999} << "1234 day(s) 23:59:59.999";
}

void tst_GeneralInfoWidget::uptime()
{
    QFETCH(QList<int>, parts);
    QFETCH(QString, shown);
    m_widget->showRadarState(Working);
    m_widget->showUptimeInfo(parts[0], parts[1], parts[2], parts[3], parts[4]);
    QCOMPARE(uptimeText(), shown);
}

void tst_GeneralInfoWidget::enabledOnlyWhileOnline()
{
    // Starts offline: the enclosing box is greyed out.
    QVERIFY(!m_box->isEnabled());
    m_widget->showRadarState(Busy);
    QVERIFY(m_box->isEnabled());
    m_widget->showRadarState(-1);
    QVERIFY(!m_box->isEnabled());
    m_widget->showRadarState(Working);
    QVERIFY(m_box->isEnabled());
    QCOMPARE(m_box->findChild<QLabel*>("uptimeLabel")->text(), QString("Internal time (uptime)"));
    QCOMPARE(m_box->findChild<QLabel*>("cycleNumberLabel")->text(),
             QString("Measure cycle number"));
}

QTEST_MAIN(tst_GeneralInfoWidget)
#include "tst_generalinfowidget.moc"
