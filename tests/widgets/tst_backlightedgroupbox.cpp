#include "backlightedgroupbox.h"

#include <QtTest>

class tst_BacklightedGroupBox : public QObject
{
    Q_OBJECT

private slots:
    void lightsUpUnderTheMouse_data();
    void lightsUpUnderTheMouse();
    void noBacklightWhenOffOrWithoutParent();
};

namespace {
void sendEnter(QWidget* widget)
{
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(widget, &enter);
}

void sendLeave(QWidget* widget)
{
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(widget, &leave);
}
} // namespace

void tst_BacklightedGroupBox::lightsUpUnderTheMouse_data()
{
    QTest::addColumn<QColor>("window");
    QTest::addColumn<QColor>("button");
    QTest::addColumn<QColor>("litWindow");
    QTest::addColumn<QColor>("litButton");

    QTest::newRow("component 160 darkened by 32") << QColor(160, 160, 160) << QColor(160, 0, 255)
                                                  << QColor(128, 128, 128) << QColor(128, 32, 223);
    QTest::newRow("component 159 lightened to 191")
        << QColor(159, 10, 200) << QColor(159, 159, 159) << QColor(191, 42, 168)
        << QColor(191, 191, 191);
    QTest::newRow("translucent colours come out opaque")
        << QColor(0, 0, 0, 10) << QColor(255, 255, 255, 128) << QColor(32, 32, 32)
        << QColor(223, 223, 223);
}

void tst_BacklightedGroupBox::lightsUpUnderTheMouse()
{
    QFETCH(QColor, window);
    QFETCH(QColor, button);
    QFETCH(QColor, litWindow);
    QFETCH(QColor, litButton);

    QWidget parent;
    QPalette parentPalette = parent.palette();
    parentPalette.setColor(QPalette::Active, QPalette::Window, window);
    parentPalette.setColor(QPalette::Active, QPalette::Button, button);
    parent.setPalette(parentPalette);
    BacklightedGroupBox box(&parent);
    QVERIFY(box.isBacklighted());
    QVERIFY(box.autoFillBackground());

    sendEnter(&box);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Window), litWindow);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Button), litButton);
    // Only the active group lights up.
    QCOMPARE(box.palette().color(QPalette::Inactive, QPalette::Window),
             parentPalette.color(QPalette::Inactive, QPalette::Window));

    sendLeave(&box);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Window), window);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Button), button);
}

void tst_BacklightedGroupBox::noBacklightWhenOffOrWithoutParent()
{
    QWidget parent;
    BacklightedGroupBox off(&parent);
    off.setProperty("backlighted", false);
    QVERIFY(!off.isBacklighted());
    QVERIFY(!off.autoFillBackground());
    BacklightedGroupBox orphan;
    for (BacklightedGroupBox* box : {&off, &orphan}) {
        const QPalette before = box->palette();
        sendEnter(box);
        QCOMPARE(box->palette(), before);
        sendLeave(box);
        QCOMPARE(box->palette(), before);
    }
}

QTEST_MAIN(tst_BacklightedGroupBox)
#include "tst_backlightedgroupbox.moc"
