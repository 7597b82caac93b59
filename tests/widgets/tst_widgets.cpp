#include "advancedcombobox.h"
#include "collapsiblegroupbox.h"
#include "groupedwidget.h"
#include "repaintpacer.h"
#include "standalonewidget.h"
#include "statelabel.h"
#include "steadygroupbox.h"

#include <QHBoxLayout>
#include <QProxyStyle>
#include <QPushButton>
#include <QScreen>
#include <QtTest>

// The small widgets the panels are built from.
class tst_Widgets : public QObject
{
    Q_OBJECT

private slots:
    void comboSelectsByData();
    void backlight_data();
    void backlight();
    void groupBoxFrameKeptUntilItsLookChanges_data();
    void groupBoxFrameKeptUntilItsLookChanges();
    void collapseByClickOnTitle();
    // A box laid out in a form keeps its form contents, now inside the container, and
    // folds them away.
    void collapsibleTakesOverFormContents();
    void groupedSwitchesEnclosingBox_data();
    void groupedSwitchesEnclosingBox();
    void standaloneWindows_data();
    void standaloneWindows();
    void stateLabel();
    void repaintsPacedToTheScreen();
};

void tst_Widgets::comboSelectsByData()
{
    AdvancedComboBox combo;
    for (auto [text, data] : {std::pair{"a", 10}, {"b", 20}, {"c", 20}, {"d", 30}})
        combo.addItem(text, data);
    QVERIFY(combo.setCurrentIndexByItemData(30)); // the search reaches the last item
    QCOMPARE(combo.currentIndex(), 3);
    QVERIFY(combo.setCurrentIndexByItemData(20)); // equal data: the lower index
    QCOMPARE(combo.currentIndex(), 1);
    QVERIFY(combo.setCurrentIndexByItemData("c", Qt::DisplayRole));
    QCOMPARE(combo.currentIndex(), 2);
    QVERIFY(!combo.setCurrentIndexByItemData(99)); // no match keeps the current item
    QVERIFY(!combo.setCurrentIndexByItemData(10, Qt::ToolTipRole));
    QCOMPARE(combo.currentIndex(), 2);
}

void tst_Widgets::backlight_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<QColor>("window");
    QTest::addColumn<QColor>("button");
    QTest::addColumn<QColor>("litWindow");
    QTest::addColumn<QColor>("litButton");
    QTest::newRow("component 160 darkened by 32")
        << true << QColor(160, 160, 160) << QColor(160, 0, 255) << QColor(128, 128, 128)
        << QColor(128, 32, 223);
    QTest::newRow("component 159 lightened to 191")
        << true << QColor(159, 10, 200) << QColor(159, 159, 159) << QColor(191, 42, 168)
        << QColor(191, 191, 191);
    QTest::newRow("translucent colours come out opaque")
        << true << QColor(0, 0, 0, 10) << QColor(255, 255, 255, 128) << QColor(32, 32, 32)
        << QColor(223, 223, 223);
    QTest::newRow("switched off") << false << QColor(160, 160, 160) << QColor(0, 0, 0)
                                  << QColor(160, 160, 160) << QColor(0, 0, 0);
}

void tst_Widgets::backlight()
{
    QFETCH(bool, on);
    QFETCH(QColor, window);
    QFETCH(QColor, button);
    QWidget parent;
    QPalette palette = parent.palette();
    palette.setColor(QPalette::Active, QPalette::Window, window);
    palette.setColor(QPalette::Active, QPalette::Button, button);
    parent.setPalette(palette);
    BacklightedGroupBox box(&parent), orphan; // without a parent nothing lights up
    box.setProperty("backlighted", on);
    QCOMPARE(box.autoFillBackground(), on);
    const QPalette orphanPalette = orphan.palette();
    QEvent enter(QEvent::Enter), leave(QEvent::Leave);
    QApplication::sendEvent(&box, &enter);
    QApplication::sendEvent(&orphan, &enter);
    QTEST(box.palette().color(QPalette::Active, QPalette::Window), "litWindow");
    QTEST(box.palette().color(QPalette::Active, QPalette::Button), "litButton");
    QCOMPARE(box.palette().color(QPalette::Inactive, QPalette::Window), // only the active group
             palette.color(QPalette::Inactive, QPalette::Window));
    QCOMPARE(orphan.palette(), orphanPalette);
    QApplication::sendEvent(&box, &leave);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Window), window);
    QCOMPARE(box.palette().color(QPalette::Active, QPalette::Button), button);
}

namespace {
// Counts the group box frames the style draws (titles drawn alone are not counted).
class FrameCountingStyle : public QProxyStyle
{
public:
    int frames = 0;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override
    {
        if (control == CC_GroupBox && (option->subControls & SC_GroupBoxFrame))
            ++const_cast<FrameCountingStyle*>(this)->frames;
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
};
} // namespace

using BoxChange = std::function<void(QGroupBox&)>;
Q_DECLARE_METATYPE(BoxChange)

void tst_Widgets::groupBoxFrameKeptUntilItsLookChanges_data()
{
    QTest::addColumn<BoxChange>("change");
    QTest::addColumn<bool>("drawnAgain");
    QTest::newRow("nothing") << BoxChange([](QGroupBox&) {}) << false;
    QTest::newRow("title") << BoxChange([](QGroupBox& b) { b.setTitle("Radar"); }) << true;
    QTest::newRow("size") << BoxChange([](QGroupBox& b) { b.resize(240, 90); }) << true;
    QTest::newRow("lit") << BoxChange([](QGroupBox& b) {
        QPalette lit = b.palette();
        lit.setColor(QPalette::Window, QColor(200, 220, 240));
        b.setPalette(lit);
    }) << true;
    QTest::newRow("font") << BoxChange([](QGroupBox& b) {
        QFont bold = b.font();
        bold.setBold(true);
        b.setFont(bold);
    }) << true;
    QTest::newRow("disabled") << BoxChange([](QGroupBox& b) { b.setEnabled(false); }) << true;
    QTest::newRow("background no longer filled")
        << BoxChange([](QGroupBox& b) { b.setAutoFillBackground(false); }) << false;
}

void tst_Widgets::groupBoxFrameKeptUntilItsLookChanges()
{
    QFETCH(BoxChange, change);
    QFETCH(bool, drawnAgain);
    // The box kept on a picture against one the style draws each time, each on a window
    // of a colour of its own; the box fills its background, as a backlighted box does.
    FrameCountingStyle style, referenceStyle;
    QWidget window, referenceWindow;
    QPalette dark = window.palette();
    dark.setColor(QPalette::Window, QColor(90, 40, 40));
    for (QWidget* w : {&window, &referenceWindow}) {
        w->setPalette(dark);
        w->resize(260, 160);
    }
    SteadyGroupBox box("Radar data", &window);
    QGroupBox reference("Radar data", &referenceWindow);
    box.setStyle(&style);
    reference.setStyle(&referenceStyle);
    for (QGroupBox* b : {static_cast<QGroupBox*>(&box), &reference}) {
        b->setAutoFillBackground(true);
        b->setGeometry(10, 10, 200, 120);
    }
    // Painted eight times with one look, the box keeps its frame from then on.
    const auto paintedOften = [&] {
        for (int paint = 1; paint < 8; ++paint)
            window.grab();
        return window.grab().toImage();
    };
    QCOMPARE(paintedOften(), referenceWindow.grab().toImage());
    QCOMPARE(style.frames, 8);
    QCOMPARE(window.grab().toImage(), referenceWindow.grab().toImage());
    QCOMPARE(style.frames, 8);
    change(box);
    change(reference);
    QCOMPARE(paintedOften(), referenceWindow.grab().toImage());
    QCOMPARE(style.frames, drawnAgain ? 16 : 8);
}

void tst_Widgets::collapseByClickOnTitle()
{
    QWidget window;
    window.resize(300, 200);
    auto* box = new CollapsibleGroupBox(QStringLiteral("Send commands  "), &window);
    box->setGeometry(0, 0, 300, 200);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QPoint title = box->titleArea().center(), body(150, 195);
    QVERIFY(!box->titleArea().contains(body));
    QSignalSpy clicked(box, &CollapsibleGroupBox::clicked);
    QSignalSpy toggled(box, &CollapsibleGroupBox::toggled);
    const auto click = [&](Qt::MouseButton button, QPoint press, QPoint release, bool toggles) {
        const bool collapsed = box->isCollapsed() != toggles;
        QTest::mousePress(box, button, {}, press);
        QTest::mouseRelease(box, button, {}, release);
        const QList<QVariantList> announced
            = toggles ? QList<QVariantList>{{collapsed}} : QList<QVariantList>{};
        QCOMPARE(clicked, announced);
        QCOMPARE(toggled, announced);
        QCOMPARE(box->isCollapsed(), collapsed);
        QCOMPARE(box->containerWidget()->isVisible(), !collapsed);
        // The marker in front of the title says what a click will do.
        QCOMPARE(static_cast<QGroupBox*>(box)->title(),
                 QString(collapsed ? " >  Send commands  " : " V  Send commands  "));
        QCOMPARE(box->title(), QString("Send commands  "));
        clicked.clear();
        toggled.clear();
    };
    click(Qt::RightButton, title, title, false);
    click(Qt::LeftButton, title, body, false); // released outside the title
    click(Qt::LeftButton, body, body, false);
    click(Qt::LeftButton, title, title, true);
    click(Qt::LeftButton, title, title, true);
    box->setEnabled(false); // a disabled box's title still folds it
    click(Qt::LeftButton, title, title, true);
    click(Qt::LeftButton, title, title, true);
}

void tst_Widgets::collapsibleTakesOverFormContents()
{
    // What a form's generated code does: a layout and widgets set straight on the box.
    QWidget window;
    auto* box = new CollapsibleGroupBox(&window);
    auto* formLayout = new QHBoxLayout(box);
    auto* button = new QPushButton(QStringLiteral("Restart"), box);
    formLayout->addWidget(button);
    auto* loose = new QLabel(QStringLiteral("free"), box);
    auto* hidden = new QLabel(QStringLiteral("hidden"), box);
    hidden->hide();
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QWidget* container = box->containerWidget();
    QCOMPARE(container->layout(), formLayout);
    for (QWidget* w : std::initializer_list<QWidget*>{button, loose, hidden})
        QCOMPARE(w->parentWidget(), container);
    QVERIFY(button->isVisible() && loose->isVisible() && hidden->isHidden());
    QVERIFY(!box->collapsedLabel()->isVisible());

    // Folded, it takes no more height than its title and hint need.
    QSignalSpy toggled(box, &CollapsibleGroupBox::toggled);
    box->setCollapsed(true);
    QVERIFY(!button->isVisible());
    QCOMPARE(box->collapsedLabel()->text(), QString("Click the title to expand"));
    QCOMPARE(box->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(box->sizePolicy().verticalPolicy(), QSizePolicy::Maximum);
    // The same value rewrites what is shown but is no change.
    box->collapsedLabel()->hide();
    box->setCollapsed(true);
    QVERIFY(box->collapsedLabel()->isVisible());
    QCOMPARE(box->sizePolicy().verticalPolicy(), QSizePolicy::Maximum);
    box->setCollapsed(false);
    QCOMPARE(toggled, (QList<QVariantList>{{true}, {false}}));
    QCOMPARE(box->sizePolicy().verticalPolicy(), QSizePolicy::MinimumExpanding);

    // A widget added to the box later is taken over too.
    auto* late = new QPushButton(QStringLiteral("late"), box);
    QCOMPARE(box->containerWidget(), container);
    QCOMPARE(late->parentWidget(), container);
}

void tst_Widgets::groupedSwitchesEnclosingBox_data()
{
    QTest::addColumn<QString>("tree"); // from the top down to the grouped widget
    QTest::addColumn<int>("switched"); // 0 = top, counted downwards
    QTest::newRow("parent is a group box") << "box/widget" << 0;
    QTest::newRow("grandparent is a group box") << "box/plain/widget" << 0;
    QTest::newRow("nearest group box wins") << "box/box/widget" << 1;
    QTest::newRow("group box too far up") << "box/plain/plain/widget" << 3;
    QTest::newRow("no group box") << "plain/plain/widget" << 2;
}

void tst_Widgets::groupedSwitchesEnclosingBox()
{
    QFETCH(QString, tree);
    QFETCH(int, switched);
    QList<QWidget*> chain;
    for (const QString& kind : tree.split('/')) {
        QWidget* parent = chain.isEmpty() ? nullptr : chain.last();
        chain << (kind == "box"     ? new QGroupBox(parent)
                  : kind == "plain" ? new QWidget(parent)
                                    : new GroupedWidget(parent));
    }
    std::unique_ptr<QWidget> top(chain.first());
    auto* widget = static_cast<GroupedWidget*>(chain.last());
    widget->setEnabled(false);
    for (int i = 0; i < chain.size(); ++i)
        QCOMPARE(chain[i]->isEnabled(), i < switched);
    widget->setEnabled(true);
    for (QWidget* w : chain)
        QVERIFY(w->isEnabled());
    // Disabled on its own inside an enabled box: asking for "disabled" again must not
    // disable the box.
    widget->QWidget::setEnabled(false);
    widget->setEnabled(false);
    QVERIFY(top->isEnabled());
}

void tst_Widgets::standaloneWindows_data()
{
    QTest::addColumn<bool>("asTool");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("overOwner"); // else centred on the screen
    QTest::newRow("free window") << false << QSize(200, 100) << false;
    QTest::newRow("tool smaller than the owner: over its centre")
        << true << QSize(200, 100) << true;
    QTest::newRow("tool wider than the owner: on the screen") << true << QSize(900, 50) << false;
    QTest::newRow("tool larger than the screen: corner kept on it")
        << true << QSize(9000, 9000) << false;
}

void tst_Widgets::standaloneWindows()
{
    QFETCH(bool, asTool);
    QFETCH(QSize, size);
    QFETCH(bool, overOwner);
    QWidget owner;
    owner.setGeometry(100, 80, 800, 600);
    owner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&owner));
    auto* widget = new StandaloneWidget(nullptr, Qt::Window);
    QSignalSpy aboutToClose(widget, &StandaloneWidget::aboutToClose);
    widget->resize(size);
    widget->showStandalone(asTool, &owner, QStringLiteral("Switch work profile"));
    QVERIFY(QTest::qWaitForWindowExposed(widget));
    QCOMPARE(widget->windowTitle(), QString("Switch work profile"));
    QCOMPARE(widget->parentWidget(), asTool ? &owner : nullptr);
    QCOMPARE(widget->windowModality(), asTool ? Qt::WindowModal : Qt::NonModal);
    if (asTool) {
        QCOMPARE(widget->windowType(), Qt::Tool);
        const QPoint centre = overOwner ? owner.mapToGlobal(QPoint(400, 300))
                                        : owner.screen()->availableGeometry().center();
        const QPoint expected(qMax(1, centre.x() - size.width() / 2),
                              qMax(1, centre.y() - size.height() / 2));
        QVERIFY2((widget->pos() - expected).manhattanLength() <= 2,
                 qPrintable(QString("at %1,%2").arg(widget->pos().x()).arg(widget->pos().y())));
    }
    QVERIFY(widget->close());
    QCOMPARE(aboutToClose.count(), 1);
    if (!asTool)
        delete widget;
}

void tst_Widgets::stateLabel()
{
    // The status colour holds in every state of the window, the label's disabled one too.
    QWidget parent;
    StateLabel label(&parent);
    const QColor bad(191, 0, 0);
    label.setTextColor(bad);
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(label.palette().color(group, QPalette::WindowText), bad);
        QCOMPARE(label.palette().color(group, QPalette::ButtonText), bad);
    }
}

void tst_Widgets::repaintsPacedToTheScreen()
{
    // A window that asks for a repaint on every turn of the event loop, as a replay far
    // faster than the radar does.
    class Counting : public QWidget
    {
    public:
        int paints = 0;
        int asked = 0;
        int shown = -1;

    protected:
        void paintEvent(QPaintEvent*) override
        {
            ++paints;
            shown = asked;
        }
    } window;
    RepaintPacer pacer;
    qApp->installEventFilter(&pacer);
    window.resize(100, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    const double interval = RepaintPacer::minimumIntervalNs(&window) / 1e6;
    QVERIFY(interval >= 3.5 && interval <= 41.7);
    window.paints = 0;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 20 * interval) {
        ++window.asked;
        window.update();
        QCoreApplication::processEvents();
    }
    const qint64 elapsed = clock.elapsed();
    // Never more than one picture per refresh, yet pictures all along ...
    QVERIFY2(window.paints <= elapsed / interval + 2 && window.paints >= 5,
             qPrintable(QStringLiteral("%1 paints in %2 ms").arg(window.paints).arg(elapsed)));
    QVERIFY(window.asked > 4 * window.paints);
    // ... and the request held back last is painted too.
    QTRY_COMPARE(window.shown, window.asked);
}

QTEST_MAIN(tst_Widgets)
#include "tst_widgets.moc"
