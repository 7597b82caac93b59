#include "statelabel.h"

#include <QtTest>

namespace {
// Counts the palette changes a widget goes through.
class PaletteChangeCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::PaletteChange;
        return false;
    }
};
} // namespace

class tst_StateLabel : public QObject
{
    Q_OBJECT

private slots:
    void textColourInEveryGroup();
    void fixMinWidth_data();
    void fixMinWidth();
};

void tst_StateLabel::textColourInEveryGroup()
{
    StateLabel label;
    const QColor bad(191, 0, 0);
    label.setTextColor(bad);
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(label.palette().color(group, QPalette::WindowText), bad);
        QCOMPARE(label.palette().color(group, QPalette::ButtonText), bad);
    }
    // The same colour again leaves the palette alone; another one changes it once.
    PaletteChangeCounter counter;
    label.installEventFilter(&counter);
    label.setTextColor(bad);
    QCOMPARE(counter.count, 0);
    label.setTextColor(QColor(0, 191, 0));
    QCOMPARE(counter.count, 1);
}

void tst_StateLabel::fixMinWidth_data()
{
    QTest::addColumn<int>("minimumWidth");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("expected");
    QTest::newRow("wider than minimum: minimum becomes width + 1") << 50 << 120 << 121;
    QTest::newRow("as wide as minimum: minimum becomes width + 1") << 80 << 80 << 81;
}

void tst_StateLabel::fixMinWidth()
{
    QFETCH(int, minimumWidth);
    QFETCH(int, width);
    QFETCH(int, expected);

    QWidget parent;
    StateLabel label(&parent);
    label.setMinimumWidth(minimumWidth);
    label.setGeometry(0, 0, width, 20);
    label.fixMinWidth();
    QCOMPARE(label.minimumWidth(), expected);
    // A shorter text no longer lets the label shrink.
    label.setText(QStringLiteral("x"));
    label.adjustSize();
    QVERIFY(label.width() >= expected);
}

QTEST_MAIN(tst_StateLabel)
#include "tst_statelabel.moc"
