#include "advancedcombobox.h"

#include <QtTest>

class tst_AdvancedComboBox : public QObject
{
    Q_OBJECT

private slots:
    void selectByData_data();
    void selectByData();
};

void tst_AdvancedComboBox::selectByData_data()
{
    QTest::addColumn<QVariant>("data");
    QTest::addColumn<int>("role");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("current");

    // Items: "a" 10, "b" 20, "c" 20, "d" 30; the current item is "d" before each call.
    QTest::newRow("unique data") << QVariant(10) << int(Qt::UserRole) << true << 0;
    QTest::newRow("equal data selects the lower index")
        << QVariant(20) << int(Qt::UserRole) << true << 1;
    QTest::newRow("no match keeps current") << QVariant(99) << int(Qt::UserRole) << false << 3;
    QTest::newRow("other role") << QVariant("c") << int(Qt::DisplayRole) << true << 2;
    QTest::newRow("data of another role does not match")
        << QVariant(10) << int(Qt::ToolTipRole) << false << 3;
}

void tst_AdvancedComboBox::selectByData()
{
    QFETCH(QVariant, data);
    QFETCH(int, role);
    QFETCH(bool, found);
    QFETCH(int, current);

    AdvancedComboBox combo;
    combo.addItem("a", 10);
    combo.addItem("b", 20);
    combo.addItem("c", 20);
    combo.addItem("d", 30);
    combo.setCurrentIndex(3);
    QCOMPARE(combo.setCurrentIndexByItemData(data, role), found);
    QCOMPARE(combo.currentIndex(), current);
}

QTEST_MAIN(tst_AdvancedComboBox)
#include "tst_advancedcombobox.moc"
