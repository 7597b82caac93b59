#include "standalonewidget.h"

#include <QScreen>
#include <QtTest>

class tst_StandaloneWidget : public QObject
{
    Q_OBJECT

private slots:
    void windowFont();
    void freeWindow();
    void toolWindowCentredOverOwner();
    void toolWindowTooBigCentredOnScreen();
    void closingAnnounces();
};

void tst_StandaloneWidget::windowFont()
{
    StandaloneWidget widget;
    QCOMPARE(widget.font().family(), QString("Sans"));
    QCOMPARE(widget.font().pointSize(), 10);
}

void tst_StandaloneWidget::freeWindow()
{
    QWidget owner;
    StandaloneWidget widget(nullptr, Qt::Window | Qt::WindowStaysOnTopHint);
    widget.showStandalone(false, &owner, QStringLiteral("Objects history — Default profile"));
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QCOMPARE(widget.windowTitle(), QString("Objects history — Default profile"));
    QVERIFY(widget.isWindow());
    QVERIFY(!widget.parentWidget());
    QCOMPARE(widget.windowModality(), Qt::NonModal);
    QVERIFY(widget.windowFlags() & Qt::WindowStaysOnTopHint);
}

void tst_StandaloneWidget::toolWindowCentredOverOwner()
{
    QWidget owner;
    owner.setGeometry(100, 80, 800, 600);
    owner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&owner));

    auto* widget = new StandaloneWidget;
    widget->resize(200, 100);
    widget->showStandalone(true, &owner, QStringLiteral("Switch work profile"));
    QVERIFY(QTest::qWaitForWindowExposed(widget));
    QCOMPARE(widget->parentWidget(), &owner);
    QCOMPARE(widget->windowType(), Qt::Tool);
    QCOMPARE(widget->windowModality(), Qt::WindowModal);
    QCOMPARE(widget->windowTitle(), QString("Switch work profile"));

    const QPoint ownerCentre = owner.mapToGlobal(QPoint(400, 300));
    const QPoint centre = widget->pos() + QPoint(100, 50);
    QVERIFY2((centre - ownerCentre).manhattanLength() <= 2,
             qPrintable(QString("centre %1,%2").arg(centre.x()).arg(centre.y())));
}

void tst_StandaloneWidget::toolWindowTooBigCentredOnScreen()
{
    QWidget owner;
    owner.setGeometry(10, 10, 100, 100);
    owner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&owner));

    auto* widget = new StandaloneWidget;
    widget->resize(300, 50); // wider than the owner
    widget->showStandalone(true, &owner, QString());
    const QRect available = owner.screen()->availableGeometry();
    const QPoint expected(qMax(1, available.center().x() - 150),
                          qMax(1, available.center().y() - 25));
    QCOMPARE(widget->pos(), expected);

    // A window larger than the screen still keeps its corner on the screen.
    auto* huge = new StandaloneWidget;
    huge->resize(available.width() * 3, available.height() * 3);
    huge->showStandalone(true, &owner, QString());
    QCOMPARE(huge->pos(), QPoint(1, 1));
}

void tst_StandaloneWidget::closingAnnounces()
{
    StandaloneWidget widget;
    QSignalSpy aboutToClose(&widget, &StandaloneWidget::aboutToClose);
    QVERIFY(aboutToClose.isValid());
    widget.showStandalone(false, nullptr, QString());
    QVERIFY(widget.close());
    QCOMPARE(aboutToClose.count(), 1);
    QVERIFY(!widget.isVisible());
}

QTEST_MAIN(tst_StandaloneWidget)
#include "tst_standalonewidget.moc"
