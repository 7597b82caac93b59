#include "imitatorobjectwidget.h"
#include "iorvexclient.h"
#include "statelabel.h"

#include <QtTest>

// The imitator's speed display: the first object of a frame, or "no data".
class tst_ImitatorObjectWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void frames_data();
    void frames();
    void hiddenDisplayKeepsItsText();
    void radarStateEmptiesAndDisables();

private:
    void frame(const QList<double>& speeds);
    QLabel* label() const { return m_widget->findChild<QLabel*>("imitatorSpeedLabel"); }

    std::unique_ptr<ImitatorObjectWidget> m_widget;
};

void tst_ImitatorObjectWidget::init()
{
    m_widget = std::make_unique<ImitatorObjectWidget>();
    m_widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_widget.get()));
}

void tst_ImitatorObjectWidget::cleanup()
{
    m_widget.reset();
}

void tst_ImitatorObjectWidget::frame(const QList<double>& speeds)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    m_widget->startFilling();
    quint8 id = 0;
    for (double speed : speeds)
        m_widget->addObject(id++, speed, 0, 40, 0, 4.4, now);
    m_widget->finishFilling();
}

void tst_ImitatorObjectWidget::frames_data()
{
    QTest::addColumn<bool>("twoLines");
    QTest::addColumn<QList<double>>("speeds");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("pointSize");

    const QColor black(0, 0, 0);
    const QColor red(191, 0, 0);
    QTest::newRow("the first of three objects")
        << false << QList<double>{-15.0, 25.0, 3.0} << "-54.0 <nobr>km/h</nobr>" << black << 144;
    QTest::newRow("-12.5 m/s") << false << QList<double>{-12.5} << "-45.0 <nobr>km/h</nobr>"
                               << black << 144;
    QTest::newRow("two lines") << true << QList<double>{25.0} << "90.0<br><nobr>km/h</nobr>"
                               << black << 144;
    QTest::newRow("no objects") << false << QList<double>{} << "no data" << red << 96;
    QTest::newRow("no objects, two lines") << true << QList<double>{} << "no<br>data" << red << 96;
}

void tst_ImitatorObjectWidget::frames()
{
    QFETCH(bool, twoLines);
    QFETCH(QList<double>, speeds);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QFETCH(int, pointSize);

    m_widget->setTwoLines(twoLines);
    frame({1.0}); // a previous frame's text must go
    frame(speeds);
    QCOMPARE(m_widget->text(), text);
    QCOMPARE(label()->palette().color(QPalette::Active, QPalette::WindowText), color);
    QCOMPARE(label()->font().pointSize(), pointSize);
    QVERIFY(m_widget->updatesEnabled());
}

void tst_ImitatorObjectWidget::hiddenDisplayKeepsItsText()
{
    frame({10.0});
    m_widget->hide();
    frame({20.0});
    frame({});
    m_widget->show();
    QCOMPARE(m_widget->text(), QString("36.0 <nobr>km/h</nobr>"));
}

void tst_ImitatorObjectWidget::radarStateEmptiesAndDisables()
{
    m_widget->showRadarState(IOrvexClient::Working);
    frame({10.0});
    QVERIFY(m_widget->isEnabled());
    m_widget->showRadarState(IOrvexClient::Busy);
    QCOMPARE(m_widget->text(), QString("no data"));
    QVERIFY(!m_widget->isEnabled());
}

QTEST_MAIN(tst_ImitatorObjectWidget)
#include "tst_imitatorobjectwidget.moc"
