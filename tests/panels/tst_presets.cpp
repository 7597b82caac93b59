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
// buttons, what a button fills in, the operator's edits through the name dialog and
// the buttons' menus, and the list's round trip through the work profile.
class tst_Presets : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void(tst_Presets*)>;

private slots:
    void init();
    void cleanup();

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
    QList<PresetButton*> buttons(const PresetedWidget* panel) const;
    QStringList buttonNames(const PresetedWidget* panel) const;
    PresetButton* button(int index) const { return buttons(m_position).value(index); }
    QDoubleSpinBox* spin(const char* name) const
    {
        return m_window->findChild<QDoubleSpinBox*>(name);
    }
    void setPositionPresets(const QByteArray& json);

    std::unique_ptr<QWidget> m_window;
    SetPositionWidget* m_position = nullptr;
    SetPolygonWidget* m_limitations = nullptr;
    int m_requests = 0; // anything the panels asked of the radar
};
Q_DECLARE_METATYPE(tst_Presets::Action)

namespace {

QJsonArray jsonArray(const QByteArray& text)
{
    return QJsonDocument::fromJson(text).array();
}

template<typename Panel> Panel* inBox(QWidget* window)
{
    auto* box = new QGroupBox(window);
    window->layout()->addWidget(box);
    auto* panel = new Panel(box);
    (new QVBoxLayout(box))->addWidget(panel);
    return panel;
}

const QByteArray PositionPair = R"([
    {"name": "A", "height": 6, "x_offset": 1, "y_offset": -2, "azimuth": 3, "altitude": -4,
     "roll": 0.5},
    {"name": "B", "height": 7, "x_offset": 2, "y_offset": -3, "azimuth": 4, "altitude": -5,
     "roll": 1.5}])";

} // namespace

void tst_Presets::init()
{
    m_window = std::make_unique<QWidget>();
    new QVBoxLayout(m_window.get());
    m_position = inBox<SetPositionWidget>(m_window.get());
    m_limitations = inBox<SetPolygonWidget>(m_window.get());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    // The panels, their presets included, take input only while the radar works.
    m_position->showRadarState(2);
    m_limitations->showRadarState(2);
    m_requests = 0;
    const auto count = [this] { ++m_requests; };
    connect(m_position, &SetPositionWidget::setPosition, this, count);
    connect(m_position, &SetPositionWidget::getPosition, this, count);
    connect(m_limitations, &SetPolygonWidget::setPolygonSpeedParam, this, count);
    connect(m_limitations, &SetPolygonWidget::setPolygonPointParam, this, count);
    connect(m_limitations, &SetPolygonWidget::setPolygonTreatParam, this, count);
    connect(m_limitations, &SetPolygonWidget::reinitPolygons, this, count);
}

void tst_Presets::cleanup()
{
    m_window.reset();
}

QList<PresetButton*> tst_Presets::buttons(const PresetedWidget* panel) const
{
    // What the row shows, in its order; each button must know its own place.
    QList<PresetButton*> result;
    const QLayout* row = panel->findChild<QHBoxLayout*>("presetButtonsLayout");
    for (int i = 0; row && i < row->count(); ++i) {
        auto* b = qobject_cast<PresetButton*>(row->itemAt(i)->widget());
        if (!b || b->presetId() != i)
            return {};
        result << b;
    }
    return result;
}

QStringList tst_Presets::buttonNames(const PresetedWidget* panel) const
{
    QStringList names;
    for (const PresetButton* b : buttons(panel))
        names << b->text();
    return names;
}

void tst_Presets::setPositionPresets(const QByteArray& json)
{
    m_position->setPresets(jsonArray(json));
}

void tst_Presets::storedList_data()
{
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QByteArray>("kept"); // as handed back to the profile

    const QByteArray six = R"("height": 6, "x_offset": 1, "y_offset": 2, "azimuth": 3,
                              "altitude": 4, "roll": 5)";
    const QByteArray nine = R"("point_count": 4, "speed_x_min": 2, "speed_x_max": 90,
        "speed_y_min": 1, "speed_y_max": 20, "position_x_min": 10, "position_x_max": 150,
        "position_y_min": -5, "position_y_max": 5)";
    const auto obj = [](const QByteArray& name, const QByteArray& body) {
        return "{" + (name.isNull() ? QByteArray() : "\"name\": " + name + ", ") + body + "}";
    };

    QTest::newRow("position: none stored, a default preset of the present values")
        << "position" << QByteArray("[]")
        << QByteArray(R"([{"name": "Default preset", "height": 5, "x_offset": 0,
            "y_offset": 0, "azimuth": 0, "altitude": 0, "roll": 0}])");
    QTest::newRow("limitations: none stored, a default preset of the present values")
        << "limitations" << QByteArray("[]")
        << QByteArray(R"([{"name": "Default preset", "point_count": 4, "speed_x_min": 1,
            "speed_x_max": 100, "speed_y_min": 0, "speed_y_max": 10, "position_x_min": 5,
            "position_x_max": 100, "position_y_min": -10, "position_y_max": 10}])");
    QTest::newRow("position: strings, nulls, numbers and arrays dropped")
        << "position" << "[\"A\", null, 3, true, [1, 2], " + obj("\"P\"", six) + "]"
        << "[" + obj("\"P\"", six) + "]";
    QTest::newRow("position: empty, missing and non-string names dropped")
        << "position"
        << "[" + obj("\"\"", six) + ", " + obj(QByteArray(), six) + ", " + obj("7", six) + ", "
               + obj("\"Q\"", six) + "]"
        << "[" + obj("\"Q\"", six) + "]";
    QTest::newRow("position: a preset lacking roll dropped")
        << "position"
        << "[" + obj("\"R\"", R"("height": 6, "x_offset": 1, "y_offset": 2, "azimuth": 3,
                                 "altitude": 4)") + ", " + obj("\"S\"", six) + "]"
        << "[" + obj("\"S\"", six) + "]";
    QTest::newRow("position: everything dropped, the default preset instead")
        << "position" << QByteArray(R"([{}, {"name": "only a name"}])")
        << QByteArray(R"([{"name": "Default preset", "height": 5, "x_offset": 0,
            "y_offset": 0, "azimuth": 0, "altitude": 0, "roll": 0}])");
    QTest::newRow("position: huge numbers, strings and extra keys kept as stored")
        << "position"
        << QByteArray(R"([{"name": "H", "height": 1e300, "x_offset": "far", "y_offset": null,
            "azimuth": -1e300, "altitude": 4, "roll": 5, "note": "kept"}])")
        << QByteArray(R"([{"name": "H", "height": 1e300, "x_offset": "far", "y_offset": null,
            "azimuth": -1e300, "altitude": 4, "roll": 5, "note": "kept"}])");
    QTest::newRow("position: order kept, a name may repeat")
        << "position" << "[" + obj("\"Z\"", six) + ", " + obj("\"Z\"", six) + "]"
        << "[" + obj("\"Z\"", six) + ", " + obj("\"Z\"", six) + "]";
    QTest::newRow("limitations: lacking point_count or position_y_max dropped")
        << "limitations"
        << "[" + obj("\"no count\"", nine).replace("\"point_count\": 4,", "") + ", "
               + obj("\"no y max\"", nine).replace(", \"position_y_max\": 5", "") + ", "
               + obj("\"T\"", nine) + "]"
        << "[" + obj("\"T\"", nine) + "]";
}

void tst_Presets::storedList()
{
    QFETCH(QString, panel);
    QFETCH(QByteArray, stored);
    QFETCH(QByteArray, kept);
    PresetedWidget* p = this->panel(panel);
    QSignalSpy spy(p, &PresetedWidget::presetsChanged);
    QVERIFY(spy.isValid());
    QVERIFY(!jsonArray(kept).isEmpty());

    p->setPresets(jsonArray(stored));
    QCOMPARE(spy.count(), 1); // the cleaned list goes back to the profile
    QCOMPARE(spy.at(0).at(0).toJsonArray(), jsonArray(kept));
    QCOMPARE(p->presets(), jsonArray(kept));
    QStringList names;
    for (const QJsonValue& preset : jsonArray(kept))
        names << preset.toObject().value("name").toString();
    QCOMPARE(buttonNames(p), names);
    QCOMPARE(m_requests, 0);
}

void tst_Presets::applying_data()
{
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QByteArray>("preset");
    QTest::addColumn<QStringList>("spins");
    QTest::addColumn<QList<double>>("values");

    const QStringList position{"heightSpin", "xOffsetSpin", "yOffsetSpin",
                               "azimuthSpin", "altitudeSpin", "rollSpin"};
    const QStringList limitations{"spdXminSpin", "spdXmaxSpin", "spdYminSpin", "spdYmaxSpin",
                                  "posXminSpin", "posXmaxSpin", "posYminSpin", "posYmaxSpin"};
    QTest::newRow("position: every value filled in")
        << "position"
        << QByteArray(R"({"name": "P", "height": 6.25, "x_offset": -1.5, "y_offset": 2,
            "azimuth": 12.34, "altitude": -3, "roll": 0.5})")
        << position << QList<double>{6.25, -1.5, 2, 12.34, -3, 0.5};
    QTest::newRow("position: height 30 as 20, huge values at the ends")
        << "position"
        << QByteArray(R"({"name": "P", "height": 30, "x_offset": 1e300, "y_offset": -1e300,
            "azimuth": 31, "altitude": -31, "roll": 1e-300})")
        << position << QList<double>{20, 25, -25, 30, -30, 0};
    QTest::newRow("position: what is not a number reads as 0")
        << "position"
        << QByteArray(R"({"name": "P", "height": "5", "x_offset": null, "y_offset": true,
            "azimuth": [1], "altitude": {"v": 1}, "roll": "x"})")
        << position << QList<double>{0, 0, 0, 0, 0, 0};
    QTest::newRow("limitations: vertex count 6 still applies as 4")
        << "limitations"
        << QByteArray(R"({"name": "L", "point_count": 6, "speed_x_min": 2.5,
            "speed_x_max": 80, "speed_y_min": 1, "speed_y_max": 15, "position_x_min": 20,
            "position_x_max": 120, "position_y_min": -8, "position_y_max": 3})")
        << limitations << QList<double>{2.5, 80, 1, 15, 20, 120, -8, 3};
    QTest::newRow("limitations: not a number reads as 0, then the box's range")
        << "limitations"
        << QByteArray(R"({"name": "L", "point_count": "four", "speed_x_min": "1",
            "speed_x_max": null, "speed_y_min": 1e300, "speed_y_max": 1e300,
            "position_x_min": -7, "position_x_max": "far", "position_y_min": true,
            "position_y_max": -1e300})")
        << limitations << QList<double>{0, 10, 10, 100, 0, 50, 0, -25};
}

void tst_Presets::applying()
{
    QFETCH(QString, panel);
    QFETCH(QByteArray, preset);
    QFETCH(QStringList, spins);
    QFETCH(QList<double>, values);
    PresetedWidget* p = this->panel(panel);
    p->setPresets(QJsonArray{QJsonDocument::fromJson(preset).object()});
    QCOMPARE(buttons(p).size(), 1);
    m_window->findChild<QSpinBox*>("pointCountSpin")->setValue(7);

    buttons(p).at(0)->click();
    for (int i = 0; i < spins.size(); ++i)
        QCOMPARE(spin(qPrintable(spins.at(i)))->value(), values.at(i));
    if (panel == "limitations")
        QCOMPARE(m_window->findChild<QSpinBox*>("pointCountSpin")->value(), 4);
    QCOMPARE(m_requests, 0); // the inputs only: nothing goes to the radar
}

void tst_Presets::edits_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("answers"); // to the name dialog; null cancels
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("announced"); // lists handed to the profile
    QTest::addColumn<QString>("offered"); // pre-filled name, when asked
    QTest::addColumn<QList<double>>("heights"); // of the presets afterwards

    const auto add = [](tst_Presets* t) {
        t->spin("heightSpin")->setValue(9.5);
        t->m_window->findChild<QToolButton*>("addPresetButton")->click();
    };
    const auto menuItem = [](int index, int item) {
        return [index, item](tst_Presets* t) {
            t->spin("heightSpin")->setValue(12);
            t->button(index)->menu()->actions().at(item)->trigger();
        };
    };
    const QString none;
    QTest::newRow("add: the operator's name, the present values")
        << Action(add) << QStringList{"Kerb 9.5 m"} << QStringList{"A", "B", "Kerb 9.5 m"} << 1
        << "New preset" << QList<double>{6, 7, 9.5};
    QTest::newRow("add cancelled: nothing") << Action(add) << QStringList{none}
                                            << QStringList{"A", "B"} << 0 << "New preset"
                                            << QList<double>{6, 7};
    QTest::newRow("add with an empty name: nothing")
        << Action(add) << QStringList{""} << QStringList{"A", "B"} << 0 << "New preset"
        << QList<double>{6, 7};
    QTest::newRow("add under a name that exists: a second button")
        << Action(add) << QStringList{"A"} << QStringList{"A", "B", "A"} << 1 << "New preset"
        << QList<double>{6, 7, 9.5};
    QTest::newRow("rename: same place, same values")
        << Action(menuItem(0, 0)) << QStringList{"North"} << QStringList{"North", "B"} << 1
        << "A" << QList<double>{6, 7};
    QTest::newRow("rename cancelled: the name stays")
        << Action(menuItem(1, 0)) << QStringList{none} << QStringList{"A", "B"} << 1 << "B"
        << QList<double>{6, 7};
    QTest::newRow("update: the present values under the old name")
        << Action(menuItem(1, 1)) << QStringList{} << QStringList{"A", "B"} << 1 << QString()
        << QList<double>{6, 12};
    QTest::newRow("delete: the others move up")
        << Action(menuItem(0, 3)) << QStringList{} << QStringList{"B"} << 1 << QString()
        << QList<double>{7};
    QTest::newRow("delete both: no buttons left")
        << Action([](tst_Presets* t) {
               t->button(1)->menu()->actions().at(3)->trigger();
               t->button(0)->menu()->actions().at(3)->trigger();
           })
        << QStringList{} << QStringList{} << 2 << QString() << QList<double>{};
}

void tst_Presets::edits()
{
    QFETCH(Action, action);
    QFETCH(QStringList, answers);
    QFETCH(int, announced);
    QFETCH(QList<double>, heights);
    setPositionPresets(PositionPair);
    QSignalSpy spy(m_position, &PresetedWidget::presetsChanged);
    InputDialogAnswerer answerer(answers);

    action(this);
    QCOMPARE(answerer.count, answers.size());
    if (answerer.count > 0) {
        QCOMPARE(answerer.title, QString("Preset name"));
        QCOMPARE(answerer.label, QString("Enter new preset name"));
        QTEST(answerer.offered, "offered");
    }
    QTEST(buttonNames(m_position), "names");
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
    setPositionPresets(PositionPair);
    PresetButton* b = button(1);
    QStringList items;
    for (const QAction* action : b->menu()->actions())
        items << (action->isSeparator() ? QString("-") : action->text());
    QCOMPARE(items, (QStringList{"&Rename preset", "&Update preset with current values", "-",
                                 "&Delete preset"}));
    QCOMPARE(b->toolTip(), QString("B"));
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
    QSignalSpy announced(m_position, &PresetedWidget::presetsChanged);
    const auto stored = [&handler] {
        return handler.profile(0).value("presets").toObject().value("position_presets");
    };

    handler.applyProfile(0); // a new profile has no presets
    QCOMPARE(announced.count(), 1);
    QCOMPARE(buttonNames(m_position), QStringList{"Default preset"});
    QCOMPARE(stored().toArray(), m_position->presets());

    // Deleting the last preset leaves none, in the panel and in the profile: the echo
    // of the empty list would bring the default preset back if it were taken in.
    button(0)->menu()->actions().at(3)->trigger();
    QCOMPARE(announced.count(), 2);
    QVERIFY(buttonNames(m_position).isEmpty());
    QCOMPARE(stored().toArray(), QJsonArray());

    handler.applyProfile(0); // the next application brings it back
    QCOMPARE(buttonNames(m_position), QStringList{"Default preset"});
    QCOMPARE(stored().toArray().size(), 1);
}

QTEST_MAIN(tst_Presets)
#include "tst_presets.moc"
