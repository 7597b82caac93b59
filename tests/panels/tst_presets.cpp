#include "inputdialoganswerer.h"
#include "presetbutton.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "workprofilehandler.h"

#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonDocument>
#include <QMenu>
#include <QToolButton>
#include <QtTest>
#include <QVBoxLayout>

#include <functional>
#include <memory>

// The preset row of the position and limitations panels: which stored elements become
// buttons, what a button fills in, the operator's edits through the name dialog and the
// buttons' menus, and the list's round trip through the work profile.
class tst_Presets : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void(tst_Presets*)>;

private slots:
    void init();
    void cleanup() { m_window.reset(); }

    void storedList_data();
    void storedList();
    void applying_data();
    void applying();
    void edits_data();
    void edits();
    void buttonMenu();
    void profileEchoIsNotTakenIn();

private:
    PresetedWidget* panel(const QString& name) const
    {
        return name == "position" ? static_cast<PresetedWidget*>(m_position) : m_limitations;
    }
    // The row's buttons in order, each knowing its own place; empty if one does not.
    QList<PresetButton*> buttons(const PresetedWidget* panel) const
    {
        QList<PresetButton*> result;
        const QLayout* row = panel->findChild<QHBoxLayout*>("presetButtonsLayout");
        for (int i = 0; i < row->count(); ++i) {
            auto* b = qobject_cast<PresetButton*>(row->itemAt(i)->widget());
            if (!b || b->presetId() != i)
                return {};
            result << b;
        }
        return result;
    }
    QStringList names(const PresetedWidget* panel) const
    {
        QStringList names;
        for (const PresetButton* b : buttons(panel))
            names << b->text();
        return names;
    }
    QDoubleSpinBox* spin(const QString& name) const
    {
        return m_window->findChild<QDoubleSpinBox*>(name);
    }

    std::unique_ptr<QWidget> m_window;
    SetPositionWidget* m_position = nullptr;
    SetPolygonWidget* m_limitations = nullptr;
    int m_requests = 0; // writes the panels asked of the radar
};
Q_DECLARE_METATYPE(tst_Presets::Action)

namespace {

QJsonArray array(const QByteArray& text)
{
    return QJsonDocument::fromJson("[" + text + "]").array();
}

const QByteArray Six = R"("height": 6, "x_offset": 1, "y_offset": 2, "azimuth": 3,
                          "altitude": 4, "roll": 5)";
const QByteArray Nine = R"("point_count": 4, "speed_x_min": 2, "speed_x_max": 90,
    "speed_y_min": 1, "speed_y_max": 20, "position_x_min": 10, "position_x_max": 150,
    "position_y_min": -5, "position_y_max": 5)";

} // namespace

void tst_Presets::init()
{
    m_window = std::make_unique<QWidget>();
    auto* layout = new QVBoxLayout(m_window.get());
    for (int i = 0; i < 2; ++i) {
        auto* box = new QGroupBox(m_window.get());
        layout->addWidget(box);
        QWidget* p = i == 0 ? static_cast<QWidget*>(m_position = new SetPositionWidget(box))
                            : (m_limitations = new SetPolygonWidget(box));
        (new QVBoxLayout(box))->addWidget(p);
    }
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    // The panels, their presets included, take input only while the radar works.
    m_position->showRadarState(2);
    m_limitations->showRadarState(2);
    m_requests = 0;
    const auto count = [this] { ++m_requests; };
    connect(m_position, &SetPositionWidget::setPosition, this, count);
    connect(m_limitations, &SetPolygonWidget::setPolygonPointParam, this, count);
}

void tst_Presets::storedList_data()
{
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QByteArray>("kept"); // as handed back to the profile

    const QByteArray positionDefault = R"({"name": "Default preset", "height": 5,
        "x_offset": 0, "y_offset": 0, "azimuth": 0, "altitude": 0, "roll": 0})";
    QTest::newRow("position: none stored, a default preset of the present values")
        << "position" << QByteArray() << positionDefault;
    QTest::newRow("limitations: none stored, a default preset of the present values")
        << "limitations" << QByteArray()
        << QByteArray(R"({"name": "Default preset", "point_count": 4, "speed_x_min": 1,
            "speed_x_max": 100, "speed_y_min": 0, "speed_y_max": 10, "position_x_min": 5,
            "position_x_max": 100, "position_y_min": -10, "position_y_max": 10})");
    QTest::newRow("position: strings, nulls, numbers, arrays and empty objects dropped")
        << "position"
        << "\"A\", null, 3, true, [1], {}, {\"name\": \"P\", " + Six + "}"
        << "{\"name\": \"P\", " + Six + "}";
    QTest::newRow("position: empty, missing and non-string names dropped; a name repeats")
        << "position"
        << "{\"name\": \"\", " + Six + "}, {" + Six + "}, {\"name\": 7, " + Six
               + "}, {\"name\": \"Q\", " + Six + "}, {\"name\": \"Q\", " + Six + "}"
        << "{\"name\": \"Q\", " + Six + "}, {\"name\": \"Q\", " + Six + "}";
    QTest::newRow("position: a preset lacking roll dropped, none left: the default")
        << "position" << QByteArray(R"({"name": "R", "height": 6, "x_offset": 1,
            "y_offset": 2, "azimuth": 3, "altitude": 4})")
        << positionDefault;
    QTest::newRow("position: huge numbers, strings and extra keys kept as stored")
        << "position"
        << QByteArray(R"({"name": "H", "height": 1e300, "x_offset": "far", "y_offset": null,
            "azimuth": -1e300, "altitude": 4, "roll": 5, "note": "kept"})")
        << QByteArray(R"({"name": "H", "height": 1e300, "x_offset": "far", "y_offset": null,
            "azimuth": -1e300, "altitude": 4, "roll": 5, "note": "kept"})");
    QTest::newRow("limitations: lacking point_count or position_y_max dropped")
        << "limitations"
        << "{\"name\": \"no count\", " + QByteArray(Nine).replace("\"point_count\": 4,", "")
               + "}, {\"name\": \"no y max\", "
               + QByteArray(Nine).replace(", \"position_y_max\": 5", "") + "}, {\"name\": \"T\", "
               + Nine + "}"
        << "{\"name\": \"T\", " + Nine + "}";
}

void tst_Presets::storedList()
{
    QFETCH(QString, panel);
    QFETCH(QByteArray, stored);
    QFETCH(QByteArray, kept);
    PresetedWidget* p = this->panel(panel);
    QSignalSpy spy(p, &PresetedWidget::presetsChanged);
    QVERIFY(!array(kept).isEmpty());

    p->setPresets(array(stored));
    QCOMPARE(spy.count(), 1); // the cleaned list goes back to the profile
    QCOMPARE(spy.at(0).at(0).toJsonArray(), array(kept));
    QCOMPARE(p->presets(), array(kept));
    QStringList keptNames;
    for (const QJsonValue& preset : array(kept))
        keptNames << preset.toObject().value("name").toString();
    QCOMPARE(names(p), keptNames);
}

void tst_Presets::applying_data()
{
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QByteArray>("preset");
    QTest::addColumn<QStringList>("spins");
    QTest::addColumn<QList<double>>("values");

    const QStringList position{"heightSpin",  "xOffsetSpin",  "yOffsetSpin",
                               "azimuthSpin", "altitudeSpin", "rollSpin"};
    QTest::newRow("position: height 30 as 20, huge at the ends, not a number as 0")
        << "position"
        << QByteArray(R"({"name": "P", "height": 30, "x_offset": 1e300, "y_offset": -1e300,
            "azimuth": 12.34, "altitude": "-3", "roll": null})")
        << position << QList<double>{20, 25, -25, 12.34, 0, 0};
    QTest::newRow("limitations: vertex count 6 as 4, not a number as 0, then clamped")
        << "limitations" << QByteArray(R"({"name": "L", "point_count": 6, "speed_x_min": 2.5,
            "speed_x_max": null, "speed_y_min": 1e300, "speed_y_max": 15,
            "position_x_min": -7, "position_x_max": "far", "position_y_min": true,
            "position_y_max": 3})")
        << QStringList{"spdXminSpin", "spdXmaxSpin", "spdYminSpin", "spdYmaxSpin",
                       "posXminSpin", "posXmaxSpin", "posYminSpin", "posYmaxSpin"}
        << QList<double>{2.5, 10, 10, 15, 0, 50, 0, 3};
}

void tst_Presets::applying()
{
    QFETCH(QString, panel);
    QFETCH(QByteArray, preset);
    QFETCH(QStringList, spins);
    QFETCH(QList<double>, values);
    PresetedWidget* p = this->panel(panel);
    p->setPresets(array(preset));
    m_window->findChild<QSpinBox*>("pointCountSpin")->setValue(7);

    buttons(p).at(0)->click();
    for (int i = 0; i < spins.size(); ++i)
        QCOMPARE(spin(spins.at(i))->value(), values.at(i));
    if (panel == "limitations")
        QCOMPARE(m_window->findChild<QSpinBox*>("pointCountSpin")->value(), 4);
    QCOMPARE(m_requests, 0); // the inputs only: nothing goes to the radar
}

void tst_Presets::edits_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("answers"); // to the name dialog; null cancels
    QTest::addColumn<QString>("offered"); // the dialog's pre-filled name
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("announced"); // lists handed to the profile
    QTest::addColumn<QList<double>>("heights"); // of the presets afterwards

    const auto add
        = [](tst_Presets* t) { t->m_window->findChild<QToolButton*>("addPresetButton")->click(); };
    const auto menuItem = [](int index, int item) {
        return [index, item](tst_Presets* t) {
            t->buttons(t->m_position).at(index)->menu()->actions().at(item)->trigger();
        };
    };
    QTest::newRow("add: the operator's name, the present values")
        << Action(add) << QStringList{"Kerb 9.5 m"} << "New preset"
        << QStringList{"A", "B", "Kerb 9.5 m"} << 1 << QList<double>{6, 7, 9.5};
    QTest::newRow("add cancelled: nothing") << Action(add) << QStringList{QString()} << "New preset"
                                            << QStringList{"A", "B"} << 0 << QList<double>{6, 7};
    QTest::newRow("add under a name that exists: a second button")
        << Action(add) << QStringList{"A"} << "New preset" << QStringList{"A", "B", "A"} << 1
        << QList<double>{6, 7, 9.5};
    QTest::newRow("rename: same place, same values")
        << Action(menuItem(0, 0)) << QStringList{"North"} << "A" << QStringList{"North", "B"} << 1
        << QList<double>{6, 7};
    QTest::newRow("update: the present values under the old name")
        << Action(menuItem(1, 1)) << QStringList{} << QString() << QStringList{"A", "B"} << 1
        << QList<double>{6, 9.5};
    QTest::newRow("delete: the others move up")
        << Action(menuItem(0, 3)) << QStringList{} << QString() << QStringList{"B"} << 1
        << QList<double>{7};
}

void tst_Presets::edits()
{
    QFETCH(Action, action);
    QFETCH(QStringList, answers);
    QFETCH(int, announced);
    QFETCH(QList<double>, heights);
    m_position->setPresets(array(R"({"name": "A", "height": 6, "x_offset": 1, "y_offset": 2,
        "azimuth": 3, "altitude": 4, "roll": 5}, {"name": "B", "height": 7, "x_offset": 1,
        "y_offset": 2, "azimuth": 3, "altitude": 4, "roll": 5})"));
    spin("heightSpin")->setValue(9.5);
    QSignalSpy spy(m_position, &PresetedWidget::presetsChanged);
    InputDialogAnswerer answerer(answers);

    action(this);
    QCOMPARE(answerer.count, answers.size());
    if (answerer.count > 0) {
        QCOMPARE(answerer.title, QString("Preset name"));
        QCOMPARE(answerer.label, QString("Enter new preset name"));
        QTEST(answerer.offered, "offered");
    }
    QTEST(names(m_position), "names");
    QCOMPARE(spy.count(), announced);
    if (announced > 0)
        QCOMPARE(spy.last().at(0).toJsonArray(), m_position->presets());
    QList<double> stored;
    for (const QJsonValue& preset : m_position->presets())
        stored << preset.toObject().value("height").toDouble();
    QCOMPARE(stored, heights);
    QCOMPARE(m_requests, 0);
}

void tst_Presets::buttonMenu()
{
    m_position->setPresets(array("{\"name\": \"A\", " + Six + "}"));
    PresetButton* b = buttons(m_position).at(0);
    QStringList items;
    for (const QAction* action : b->menu()->actions())
        items << (action->isSeparator() ? QString("-") : action->text());
    QCOMPARE(items, (QStringList{"&Rename preset", "&Update preset with current values", "-",
                                 "&Delete preset"}));
    emit b->customContextMenuRequested(QPoint(3, 3));
    QTRY_VERIFY(b->menu()->isVisible());
    QCOMPARE(b->menu()->pos(), b->mapToGlobal(QPoint(3, 3)));
    b->menu()->hide();
}

void tst_Presets::profileEchoIsNotTakenIn()
{
    // Wired as in the main window: the handler answers every list the panel announces
    // with its own change signal, which comes straight back.
    WorkProfileHandler handler;
    connect(m_position, &PresetedWidget::presetsChanged, &handler,
            &WorkProfileHandler::setPositionPresets);
    connect(&handler, &WorkProfileHandler::positionPresetsChanged, m_position,
            &PresetedWidget::setPresets);
    const auto stored = [&handler] {
        return handler.profile(0).value("presets").toObject().value("position_presets");
    };

    handler.applyProfile(0); // a new profile has no presets
    QCOMPARE(names(m_position), QStringList{"Default preset"});
    QCOMPARE(stored().toArray(), m_position->presets());

    // Deleting the last preset leaves none, in the panel and in the profile: the echo
    // of the empty list would bring the default preset back if it were taken in.
    buttons(m_position).at(0)->menu()->actions().at(3)->trigger();
    QVERIFY(names(m_position).isEmpty());
    QCOMPARE(stored().toArray(), QJsonArray());
    handler.applyProfile(0); // the next application brings it back
    QCOMPARE(names(m_position), QStringList{"Default preset"});
}

QTEST_MAIN(tst_Presets)
#include "tst_presets.moc"
