#include "imitatorobjectwidget.h"
#include "iorvexclient.h"

#include <QLabel>
#include <QtTest>

// The imitator's speed display: the first object of a frame, or "no data".
class tst_ImitatorObjectWidget : public QObject
{
    Q_OBJECT

private slots:
    void frames_data();
    void frames();
    void hiddenKeepsItsTextStoppedRadarEmpties();

private:
    static void frame(ImitatorObjectWidget& widget, const QList<double>& speeds)
    {
        widget.startFilling();
        quint8 id = 0;
        for (double speed : speeds)
            widget.addObject(id++, speed, 0, 40, 0, 4.4, QDateTime::currentDateTimeUtc());
        widget.finishFilling();
    }
};

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
        << false << QList<double>{-12.5, 25.0, 3.0} << "-45.0 <nobr>km/h</nobr>" << black << 144;
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

    ImitatorObjectWidget widget;
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    widget.setTwoLines(twoLines);
    frame(widget, {1.0}); // a previous frame's text must go
    frame(widget, speeds);
    const QLabel* label = widget.findChild<QLabel*>("imitatorSpeedLabel");
    QCOMPARE(widget.text(), text);
    QCOMPARE(label->palette().color(QPalette::Active, QPalette::WindowText), color);
    QCOMPARE(label->font().pointSize(), pointSize);
    QVERIFY(widget.updatesEnabled());
}

void tst_ImitatorObjectWidget::hiddenKeepsItsTextStoppedRadarEmpties()
{
    ImitatorObjectWidget widget;
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    widget.showRadarState(IOrvexClient::Working);
    frame(widget, {10.0});
    widget.hide();
    frame(widget, {20.0});
    frame(widget, {});
    widget.show();
    QCOMPARE(widget.text(), QString("36.0 <nobr>km/h</nobr>"));
    QVERIFY(widget.isEnabled());
    widget.showRadarState(IOrvexClient::Busy);
    QCOMPARE(widget.text(), QString("no data"));
    QVERIFY(!widget.isEnabled());
}

QTEST_MAIN(tst_ImitatorObjectWidget)
#include "tst_imitatorobjectwidget.moc"
