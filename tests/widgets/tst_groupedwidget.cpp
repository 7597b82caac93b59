#include "groupedwidget.h"

#include <QGroupBox>
#include <QtTest>

class tst_GroupedWidget : public QObject
{
    Q_OBJECT

private slots:
    void switchesEnclosingGroupBox_data();
    void switchesEnclosingGroupBox();
    void sameStateDoesNothing();
};

void tst_GroupedWidget::switchesEnclosingGroupBox_data()
{
    QTest::addColumn<QString>("tree"); // from the top down to the grouped widget
    QTest::addColumn<int>("switched"); // 0 = top, counted downwards

    QTest::newRow("parent is a group box") << "box/widget" << 0;
    QTest::newRow("grandparent is a group box") << "box/plain/widget" << 0;
    QTest::newRow("nearest group box wins") << "box/box/widget" << 1;
    QTest::newRow("group box too far up") << "box/plain/plain/widget" << 3;
    QTest::newRow("no group box") << "plain/plain/widget" << 2;
    QTest::newRow("no parent") << "widget" << 0;
}

void tst_GroupedWidget::switchesEnclosingGroupBox()
{
    QFETCH(QString, tree);
    QFETCH(int, switched);

    QList<QWidget*> chain;
    const QStringList kinds = tree.split('/');
    for (const QString& kind : kinds) {
        QWidget* parent = chain.isEmpty() ? nullptr : chain.last();
        if (kind == "box")
            chain << new QGroupBox(parent);
        else if (kind == "plain")
            chain << new QWidget(parent);
        else
            chain << new GroupedWidget(parent);
    }
    std::unique_ptr<QWidget> top(chain.first());
    auto* widget = static_cast<GroupedWidget*>(chain.last());

    widget->setEnabled(false);
    for (int i = 0; i < chain.size(); ++i)
        QCOMPARE(chain.at(i)->isEnabled(), i < switched);
    QVERIFY(!widget->isEnabled());

    widget->setEnabled(true);
    for (QWidget* w : chain)
        QVERIFY(w->isEnabled());
}

void tst_GroupedWidget::sameStateDoesNothing()
{
    QGroupBox box;
    auto* widget = new GroupedWidget(&box);
    // Disabled on its own, inside an enabled box: enabling the box would not help, and
    // asking for "disabled" again must not disable the box either.
    widget->QWidget::setEnabled(false);
    widget->setEnabled(false);
    QVERIFY(box.isEnabled());
}

QTEST_MAIN(tst_GroupedWidget)
#include "tst_groupedwidget.moc"
