#include "collapsiblegroupbox.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include <memory>

class tst_CollapsibleGroupBox : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void titleMarker();
    void mouseOnTitle_data();
    void mouseOnTitle();
    void setCollapsedSameValueEmitsNothing();
    void sizePolicyRestoredOnExpanding();
    // A box laid out in a form keeps its form contents, now inside the container.
    void takesOverFormContents();

private:
    QPoint inTitle() const { return m_box->titleArea().center(); }
    QPoint inBody() const { return QPoint(m_box->width() / 2, m_box->height() - 5); }

    std::unique_ptr<QWidget> m_window;
    CollapsibleGroupBox* m_box = nullptr;
};

void tst_CollapsibleGroupBox::init()
{
    m_window = std::make_unique<QWidget>();
    m_box = new CollapsibleGroupBox(QStringLiteral("Send commands  "), m_window.get());
    m_box->setGeometry(0, 0, 300, 200);
    m_window->resize(300, 200);
}

void tst_CollapsibleGroupBox::cleanup()
{
    m_window.reset();
}

void tst_CollapsibleGroupBox::titleMarker()
{
    const QGroupBox* plain = m_box;
    QCOMPARE(m_box->title(), QString("Send commands  "));
    QCOMPARE(plain->title(), QString(" V  Send commands  "));
    m_box->setCollapsed(true);
    QCOMPARE(plain->title(), QString(" >  Send commands  "));
    m_box->setTitle(QStringLiteral("Fine tuning  "));
    QCOMPARE(plain->title(), QString(" >  Fine tuning  "));
    QCOMPARE(m_box->title(), QString("Fine tuning  "));
}

void tst_CollapsibleGroupBox::mouseOnTitle_data()
{
    QTest::addColumn<int>("buttonValue");
    QTest::addColumn<bool>("pressOnTitle");
    QTest::addColumn<bool>("releaseOnTitle");
    QTest::addColumn<bool>("toggles");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("left click on title toggles")
        << int(Qt::LeftButton) << true << true << true << true;
    QTest::newRow("left click on a disabled box's title toggles")
        << int(Qt::LeftButton) << true << true << true << false;
    QTest::newRow("right click on title ignored")
        << int(Qt::RightButton) << true << true << false << true;
    QTest::newRow("left press on title released outside ignored")
        << int(Qt::LeftButton) << true << false << false << true;
    QTest::newRow("left click in body ignored")
        << int(Qt::LeftButton) << false << false << false << true;
}

void tst_CollapsibleGroupBox::mouseOnTitle()
{
    QFETCH(int, buttonValue);
    const auto button = Qt::MouseButton(buttonValue);
    QFETCH(bool, pressOnTitle);
    QFETCH(bool, releaseOnTitle);
    QFETCH(bool, toggles);
    QFETCH(bool, enabled);

    m_box->setEnabled(enabled);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QVERIFY(!m_box->titleArea().contains(inBody()));
    QSignalSpy clicked(m_box, &CollapsibleGroupBox::clicked);
    QSignalSpy toggled(m_box, &CollapsibleGroupBox::toggled);
    QVERIFY(clicked.isValid() && toggled.isValid());

    for (bool expectCollapsed : {true, false}) {
        QTest::mousePress(m_box, button, {}, pressOnTitle ? inTitle() : inBody());
        QTest::mouseRelease(m_box, button, {}, releaseOnTitle ? inTitle() : inBody());
        if (!toggles) {
            QCOMPARE(clicked.count(), 0);
            QCOMPARE(toggled.count(), 0);
            QVERIFY(!m_box->isCollapsed());
            return;
        }
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(clicked.takeFirst().at(0).toBool(), expectCollapsed);
        QCOMPARE(toggled.count(), 1);
        QCOMPARE(toggled.takeFirst().at(0).toBool(), expectCollapsed);
        QCOMPARE(m_box->isCollapsed(), expectCollapsed);
        QCOMPARE(m_box->collapsedLabel()->isVisible(), expectCollapsed);
        QCOMPARE(m_box->containerWidget()->isVisible(), !expectCollapsed);
    }
}

void tst_CollapsibleGroupBox::setCollapsedSameValueEmitsNothing()
{
    m_window->show();
    QSignalSpy toggled(m_box, &CollapsibleGroupBox::toggled);
    m_box->setCollapsed(true);
    QCOMPARE(toggled.count(), 1);
    m_box->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    m_box->collapsedLabel()->hide();

    // The same value rewrites what is shown but is no change.
    m_box->setCollapsed(true);
    QCOMPARE(toggled.count(), 1);
    QVERIFY(m_box->collapsedLabel()->isVisible());
    QCOMPARE(m_box->sizePolicy().verticalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(m_box->layout()->contentsMargins(), QMargins(2, 2, 2, 2));
}

void tst_CollapsibleGroupBox::sizePolicyRestoredOnExpanding()
{
    m_box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    m_box->setCollapsed(true);
    QCOMPARE(m_box->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(m_box->sizePolicy().verticalPolicy(), QSizePolicy::Maximum);
    m_box->setCollapsed(false);
    QCOMPARE(m_box->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(m_box->sizePolicy().verticalPolicy(), QSizePolicy::MinimumExpanding);
}

void tst_CollapsibleGroupBox::takesOverFormContents()
{
    // What a form's generated code does: a layout and widgets set straight on the box.
    auto* formLayout = new QHBoxLayout(m_box);
    auto* button = new QPushButton(QStringLiteral("Restart"), m_box);
    formLayout->addWidget(button);
    auto* loose = new QLabel(QStringLiteral("free"), m_box);
    auto* hidden = new QLabel(QStringLiteral("hidden"), m_box);
    hidden->hide();
    QCOMPARE(m_box->layout(), formLayout);

    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QWidget* container = m_box->containerWidget();
    QCOMPARE(container->layout(), formLayout);
    QVERIFY(m_box->layout() != formLayout);
    QCOMPARE(button->parentWidget(), container);
    QCOMPARE(loose->parentWidget(), container);
    QCOMPARE(hidden->parentWidget(), container);
    QVERIFY(button->isVisible());
    QVERIFY(loose->isVisible());
    QVERIFY(hidden->isHidden());
    QVERIFY(!m_box->collapsedLabel()->isVisible());

    m_box->setCollapsed(true);
    QVERIFY(!button->isVisible());
    QVERIFY(m_box->collapsedLabel()->isVisible());
    QCOMPARE(m_box->collapsedLabel()->text(), QString("Click the title to expand"));
    QCOMPARE(m_box->collapsedLabel()->alignment(), Qt::AlignCenter);

    // A widget added to the box later is taken over too.
    auto* late = new QPushButton(QStringLiteral("late"), m_box);
    QCOMPARE(m_box->containerWidget(), container);
    QCOMPARE(late->parentWidget(), container);
}

QTEST_MAIN(tst_CollapsibleGroupBox)
#include "tst_collapsiblegroupbox.moc"
