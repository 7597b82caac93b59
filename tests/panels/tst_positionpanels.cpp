#include "inputdialoganswerer.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "presetbutton.h"
#include "radarparamnumbering.h"
#include "readbackmark.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"
#include "workprofilehandler.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QJsonDocument>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>
#include <QVBoxLayout>

#include <cmath>
#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The position and limitations panels on their own, each in a titled box: the exact
// requests their buttons and the radar's start of work produce, when they take input,
// what they make of the radar's answers, those beyond their ranges included, and their
// preset rows: which stored elements become buttons, what a button fills in, the
// operator's edits, and the list's round trip through the work profile.
class tst_PositionPanels : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requests();
    void autoGet();
    void positionReadBack_data();
    void positionReadBack();
    void limitationAnswers();
    void usageSwitch();
    void enabling();
    void storedPresets_data();
    void storedPresets();
    void presetFillsTheInputs_data();
    void presetFillsTheInputs();
    void presetEdits();
    void profileEchoIsNotTakenIn();

private:
    QDoubleSpinBox* spin(const QString& name) const
    {
        return m_window->findChild<QDoubleSpinBox*>(name + "Spin");
    }
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(name); }
    L* label(const QString& name) const { return m_window->findChild<L*>(name + "ResultLabel"); }
    void record(const QString& request, const QWidget* panel);
    void setWorking();
    // Outcomes of earlier commands on show, which a request must clear.
    void showOutcomes();
    QStringList takeRequests() { return std::exchange(m_requests, {}); }
    PresetedWidget* panel(const QString& name) const
    {
        return name == "position" ? static_cast<PresetedWidget*>(m_position) : m_limitations;
    }
    // The preset row's buttons in order, each knowing its own place; empty if one does not.
    static QList<PresetButton*> presetButtons(const PresetedWidget* panel);
    static QStringList presetNames(const PresetedWidget* panel);

    std::unique_ptr<QWidget> m_window;
    SetPositionWidget* m_position = nullptr;
    SetPolygonWidget* m_limitations = nullptr;
    QStringList m_requests;
    bool m_labelShownAtRequest = false;
};

namespace {

const QStringList Pose{"height", "xOffset", "yOffset", "azimuth", "altitude", "roll"};
const QStringList Bounds{"spdXmin", "spdXmax", "spdYmin", "spdYmax",
                         "posXmin", "posXmax", "posYmin", "posYmax"};
// A read of the whole area: speeds, vertex count, vertices 0, 2, 1, 3 with X before Y.
const QStringList AreaRead{"get speed 0",  "get speed 1", "get speed 2", "get speed 3",
                           "get treat 0",  "get point 0", "get point 8", "get point 2",
                           "get point 10", "get point 1", "get point 9", "get point 3",
                           "get point 11"};

QJsonArray array(const QByteArray& text)
{
    return QJsonDocument::fromJson("[" + text + "]").array();
}

// A stored position preset's values, and a limitations preset's.
const QByteArray Six = R"("height": 6, "x_offset": 1, "y_offset": 2, "azimuth": 3,
                          "altitude": 4, "roll": 5)";
const QByteArray Nine = R"("point_count": 4, "speed_x_min": 2, "speed_x_max": 90,
    "speed_y_min": 1, "speed_y_max": 20, "position_x_min": 10, "position_x_max": 150,
    "position_y_min": -5, "position_y_max": 5)";

} // namespace

void tst_PositionPanels::init()
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

    using S = SetPolygonWidget;
    connect(
        m_position, &SetPositionWidget::setPosition, this,
        [this](double h, double x, double y, double a, double e, double r) {
            record(
                QString("set position %1 %2 %3 %4 %5 %6").arg(h).arg(x).arg(y).arg(a).arg(e).arg(r),
                m_position);
        });
    connect(m_position, &SetPositionWidget::getPosition, this,
            [this] { record("get position", m_position); });
    // Every request of the limitations panel names polygon 0.
    const auto log = [this](const QString& what) {
        return [this, what](quint8 polygon, quint8 param, double value = qQNaN()) {
            QString text = QString("%1 %2").arg(what).arg(param);
            if (!std::isnan(value))
                text += QString(" %1").arg(value);
            record(polygon == 0 ? text : QString("polygon %1").arg(polygon), m_limitations);
        };
    };
    connect(m_limitations, &S::setPolygonSpeedParam, this, log("set speed"));
    connect(m_limitations, &S::setPolygonPointParam, this, log("set point"));
    connect(m_limitations, &S::setPolygonTreatParam, this,
            [log](quint8 polygon, quint8 param, quint8 value) {
                log("set treat")(polygon, param, value);
            });
    connect(m_limitations, &S::getPolygonSpeedParam, this, log("get speed"));
    connect(m_limitations, &S::getPolygonPointParam, this, log("get point"));
    connect(m_limitations, &S::getPolygonTreatParam, this, log("get treat"));
    connect(m_limitations, &S::reinitPolygons, this, [this] { record("reinit", m_limitations); });
    connect(m_limitations, &S::setPolygonUsage, this,
            [this](quint8 mask) { record(QString("set usage %1").arg(mask), m_limitations); });
    connect(m_limitations, &S::getPolygonUsage, this,
            [this] { record("get usage", m_limitations); });
}

void tst_PositionPanels::cleanup()
{
    m_window.reset();
    m_requests.clear();
    m_labelShownAtRequest = false;
}

void tst_PositionPanels::record(const QString& request, const QWidget* panel)
{
    // Every request starts from cleared labels of its panel.
    for (const L* l : panel->findChildren<L*>())
        m_labelShownAtRequest = m_labelShownAtRequest || l->state() != L::Cleared;
    m_requests << request;
}

void tst_PositionPanels::setWorking()
{
    m_position->showRadarState(C::Working);
    m_limitations->showRadarState(C::Working);
    m_requests.clear();
}

void tst_PositionPanels::showOutcomes()
{
    m_position->parHandler()->setState(SetPositionWidget::RollParameter, L::ErrorOccurred, true);
    m_limitations->parHandler()->setState(SetPolygonWidget::SpeedXMinSlot, L::ValueChanged, true);
}

QList<PresetButton*> tst_PositionPanels::presetButtons(const PresetedWidget* panel)
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

QStringList tst_PositionPanels::presetNames(const PresetedWidget* panel)
{
    QStringList names;
    for (const PresetButton* b : presetButtons(panel))
        names << b->text();
    return names;
}

void tst_PositionPanels::requests()
{
    setWorking();
    QCheckBox* reinit = m_window->findChild<QCheckBox*>("reinitCheck");
    // Position write: the six values in pose order.
    showOutcomes();
    const double pose[] = {6.5, -1.25, 3, 10, -2.5, 0.75};
    for (int i = 0; i < 6; ++i)
        spin(Pose.at(i))->setValue(pose[i]);
    button("setPositionButton")->click();
    QCOMPARE(takeRequests(), QStringList{"set position 6.5 -1.25 3 10 -2.5 0.75"});
    QVERIFY(!reinit->isChecked());

    // Limitation write: speeds, vertex count, vertices 0 2 1 3 with X before Y, then
    // the radar re-reads its areas.
    showOutcomes();
    const double bounds[] = {2.5, 55.5, 0.5, 12, 12, 180, -3.5, 7};
    for (int i = 0; i < 8; ++i)
        spin(Bounds.at(i))->setValue(bounds[i]);
    button("setPolygonButton")->click();
    QCOMPARE(takeRequests(),
             (QStringList{"set speed 0 2.5", "set speed 1 55.5", "set speed 2 0.5",
                          "set speed 3 12", "set treat 0 4", "set point 0 12", "set point 8 -3.5",
                          "set point 2 180", "set point 10 7", "set point 1 180",
                          "set point 9 -3.5", "set point 3 12", "set point 11 7", "reinit"}));
    QVERIFY(reinit->isChecked());

    // A read after the write clears the write's check box.
    showOutcomes();
    button("getPolygonButton")->click();
    QCOMPARE(takeRequests(), AreaRead);
    QVERIFY(!reinit->isChecked());

    showOutcomes();
    button("enablePolygonButton")->click();
    QCOMPARE(takeRequests(), QStringList{"set usage 1"});
    QVERIFY(!m_labelShownAtRequest);
}

void tst_PositionPanels::autoGet()
{
    const QStringList start = QStringList{"get position"} + AreaRead + QStringList{"get usage"};
    const auto show = [this](int state) {
        m_position->showRadarState(state);
        m_limitations->showRadarState(state);
        return takeRequests();
    };
    m_position->setAutoGetData(true);
    m_limitations->setAutoGetData(true);
    // Busy, bad data and offline ask nothing; working reads position, area, then usage,
    // once, and again after a stop.
    for (int state : {C::Busy, C::BadData, C::Offline})
        QCOMPARE(show(state), QStringList());
    QCOMPARE(show(C::Working), start);
    QCOMPARE(show(C::Working), QStringList());
    QCOMPARE(show(C::Busy), QStringList());
    QCOMPARE(show(C::Working), start);
    // Switched off, working only asks whether the area is used.
    m_position->setAutoGetData(false);
    m_limitations->setAutoGetData(false);
    show(C::Offline);
    QCOMPARE(show(C::Working), QStringList{"get usage"});
}

void tst_PositionPanels::positionReadBack_data()
{
    QTest::addColumn<QList<double>>("reported");
    QTest::addColumn<QList<double>>("shown");
    QTest::addColumn<QVariantList>("marks"); // the radar's value, for a clamped box

    const QVariantList none{QVariant(), QVariant(), QVariant(), QVariant(), QVariant(), QVariant()};
    QTest::newRow("beyond the ends: clamped and marked")
        << QList<double>{30, 40, -26, 45, -90, 180} << QList<double>{20, 25, -25, 30, -30, 30}
        << QVariantList{30.0, 40.0, -26.0, 45.0, -90.0, 180.0};
    QTest::newRow("at the ends and rounded onto them: not marked")
        << QList<double>{20, -25, 25, 30, -30, 29.999} << QList<double>{20, -25, 25, 30, -30, 30}
        << none;
    QTest::newRow("not a number leaves its box")
        << QList<double>{std::nan(""), 1, 2, 3, 4, 5} << QList<double>{5, 1, 2, 3, 4, 5} << none;
}

void tst_PositionPanels::positionReadBack()
{
    QFETCH(QList<double>, reported);
    QFETCH(QList<double>, shown);
    QFETCH(QVariantList, marks);
    setWorking();
    m_position->showCommandState(C::CmdGetHeight, C::Received, 0);
    QVERIFY(!m_position->isEnabled()); // the value is awaited

    const auto r = [&reported](int i) { return reported.at(i); };
    m_position->showPosition(r(0), r(1), r(2), r(3), r(4), r(5));
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(spin(Pose.at(i))->value(), shown.at(i));
        QCOMPARE(ReadBackMark::reportedValue(spin(Pose.at(i))), marks.at(i));
        QCOMPARE(label(Pose.at(i))->state(), int(L::ReceivedFromRadar));
    }
    QVERIFY(!m_position->parHandler()->isDataTimerActive());
    QVERIFY(m_position->parHandler()->isHideTimerActive());
    QVERIFY(m_position->isEnabled());

    // The operator's next value clears the mark.
    spin("roll")->setValue(1);
    QVERIFY(ReadBackMark::reportedValue(spin("roll")).isNull());
    QVERIFY(spin("roll")->toolTip().isEmpty());
    QCOMPARE(label("roll")->state(), int(L::ValueChanged));
}

void tst_PositionPanels::limitationAnswers()
{
    setWorking();
    const int R = L::ReceivedFromRadar;
    const auto check = [this](const QList<double>& shown, const QList<int>& labels) {
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(spin(Bounds.at(i))->value(), shown.at(i));
            QCOMPARE(label(Bounds.at(i))->state(), labels.at(i));
        }
        QCOMPARE(m_window->findChild<QSpinBox*>("pointCountSpin")->value(), 4);
        QCOMPARE(label("pointCount")->state(), labels.at(8));
    };
    // The other vertices' coordinates and other areas are not shown.
    auto* p = m_limitations;
    for (quint8 param : {1, 3, 8, 10, 4, 15})
        p->showPolygonPointParam(0, param, 44);
    p->showPolygonPointParam(1, 0, 33);
    p->showPolygonSpeedParam(1, 0, 5);
    p->showPolygonSpeedParam(0, 4, 5);
    p->showPolygonTreatParam(1, 0, 6);
    p->showPolygonTreatParam(0, 1, 6);
    const QList<double> initial{1, 100, 0, 10, 5, 100, -10, 10};
    check(initial, {0, 0, 0, 0, 0, 0, 0, 0, 0});
    // A vertex count of 6 shows as 4, received.
    p->showPolygonTreatParam(0, 0, 6);
    check(initial, {0, 0, 0, 0, 0, 0, 0, 0, R});
    // Speeds and the rectangle's corners; beyond the ends clamped and marked.
    p->showPolygonSpeedParam(0, 0, 20);
    p->showPolygonSpeedParam(0, 3, 12);
    p->showPolygonPointParam(0, 0, 7);
    p->showPolygonPointParam(0, 2, 300);
    p->showPolygonPointParam(0, 9, -4);
    p->showPolygonPointParam(0, 11, 6);
    check({10, 100, 0, 12, 7, 250, -4, 6}, {R, 0, 0, R, R, R, R, R, R});
    QCOMPARE(ReadBackMark::reportedValue(spin("spdXmin")), QVariant(20.0));
    QVERIFY(spin("posXmax")->toolTip().contains("300"));
    QVERIFY(ReadBackMark::reportedValue(spin("posXmin")).isNull());
    QVERIFY(m_requests.isEmpty());
}

void tst_PositionPanels::usageSwitch()
{
    QPushButton* enable = button("enablePolygonButton");
    QCOMPARE(enable->text(), QString("Enable limitations"));
    setWorking();
    m_limitations->showPolygonUsage(1);
    QCOMPARE(enable->text(), QString("Disable limitations"));

    // Refused: back to what the radar last reported. Taken: read back for the scheme.
    enable->click();
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Error, 5);
    QVERIFY(enable->isChecked());
    enable->click();
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Received, 0);
    QCOMPARE(m_requests, (QStringList{"set usage 0", "set usage 0", "get usage"}));

    // A radar that stops working has no area in use; nothing is sent.
    m_limitations->showPolygonUsage(1);
    m_requests.clear();
    m_limitations->showRadarState(C::Busy);
    QCOMPARE(enable->text(), QString("Enable limitations"));
    QCOMPARE(m_limitations->usageMask(), quint8(0));
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Error, 5);
    QVERIFY(!enable->isChecked());
    QVERIFY(m_requests.isEmpty());
}

void tst_PositionPanels::enabling()
{
    // Nothing works before the radar does; a panel, with its titled box, waits for the
    // answers to its own commands only.
    using P = RadarParamNumbering;
    const auto enabled
        = [](QWidget* panel) { return panel->isEnabled() && panel->parentWidget()->isEnabled(); };
    QVERIFY(!m_position->parentWidget()->isEnabled()
            && !m_limitations->parentWidget()->isEnabled());
    m_position->showRadarState(C::Busy);
    QVERIFY(!enabled(m_position));
    setWorking();
    QVERIFY(enabled(m_position) && enabled(m_limitations));
    m_position->showCommandState(C::CmdSetRoll, C::Received, 0); // a write acknowledged
    QVERIFY(enabled(m_position));
    m_limitations->showCommandState(P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 1, 11),
                                    C::InProgress, 0); // another area's command
    QVERIFY(enabled(m_limitations));
    m_limitations->showCommandState(P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 0, 11),
                                    C::InProgress, 0); // Ymax of vertex 3
    QVERIFY(!enabled(m_limitations));
    m_limitations->showCommandState(P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 0, 11),
                                    C::Received, 0);
    QVERIFY(enabled(m_limitations));
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Queued, 0);
    QVERIFY(!enabled(m_limitations));
    m_limitations->showRadarState(C::BadData);
    QVERIFY(!enabled(m_limitations));
}

void tst_PositionPanels::storedPresets_data()
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
    const QByteArray odd = R"({"name": "H", "height": 1e300, "x_offset": "far", "y_offset": null,
        "azimuth": -1e300, "altitude": 4, "roll": 5, "note": "kept"})";
    QTest::newRow("position: huge numbers, strings and extra keys kept as stored")
        << "position" << odd << odd;
    QTest::newRow("limitations: lacking point_count or position_y_max dropped")
        << "limitations"
        << "{\"name\": \"no count\", " + QByteArray(Nine).replace("\"point_count\": 4,", "")
               + "}, {\"name\": \"no y max\", "
               + QByteArray(Nine).replace(", \"position_y_max\": 5", "") + "}, {\"name\": \"T\", "
               + Nine + "}"
        << "{\"name\": \"T\", " + Nine + "}";
}

void tst_PositionPanels::storedPresets()
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
    QCOMPARE(presetNames(p), keptNames);
}

void tst_PositionPanels::presetFillsTheInputs_data()
{
    QTest::addColumn<QString>("panel");
    QTest::addColumn<QByteArray>("preset");
    QTest::addColumn<QList<double>>("values");

    QTest::newRow("position: height 30 as 20, huge at the ends, not a number as 0")
        << "position"
        << QByteArray(R"({"name": "P", "height": 30, "x_offset": 1e300, "y_offset": -1e300,
            "azimuth": 12.34, "altitude": "-3", "roll": null})")
        << QList<double>{20, 25, -25, 12.34, 0, 0};
    QTest::newRow("limitations: vertex count 6 as 4, not a number as 0, then clamped")
        << "limitations" << QByteArray(R"({"name": "L", "point_count": 6, "speed_x_min": 2.5,
            "speed_x_max": null, "speed_y_min": 1e300, "speed_y_max": 15,
            "position_x_min": -7, "position_x_max": "far", "position_y_min": true,
            "position_y_max": 3})")
        << QList<double>{2.5, 10, 10, 15, 0, 50, 0, 3};
}

void tst_PositionPanels::presetFillsTheInputs()
{
    QFETCH(QString, panel);
    QFETCH(QByteArray, preset);
    QFETCH(QList<double>, values);
    setWorking(); // the panels, their presets included, take input only while the radar works
    PresetedWidget* p = this->panel(panel);
    p->setPresets(array(preset));
    auto* pointCount = m_window->findChild<QSpinBox*>("pointCountSpin");
    pointCount->setValue(7);

    presetButtons(p).at(0)->click();
    const QStringList& spins = panel == "position" ? Pose : Bounds;
    for (int i = 0; i < spins.size(); ++i)
        QCOMPARE(spin(spins.at(i))->value(), values.at(i));
    QCOMPARE(pointCount->value(), panel == "limitations" ? 4 : 7);
    QVERIFY(m_requests.isEmpty()); // the inputs only: nothing goes to the radar
}

void tst_PositionPanels::presetEdits()
{
    // The operator's edits through the add button, the name dialog and the buttons'
    // menus; each change of the list goes to the profile, nothing to the radar.
    setWorking();
    m_position->setPresets(array("{\"name\": \"A\", " + Six + "}, {\"name\": \"B\", "
                                 + QByteArray(Six).replace("\"height\": 6", "\"height\": 7")
                                 + "}"));
    spin("height")->setValue(9.5);
    QSignalSpy announced(m_position, &PresetedWidget::presetsChanged);
    const auto heights = [this] {
        QList<double> heights;
        for (const QJsonValue& preset : m_position->presets())
            heights << preset.toObject().value("height").toDouble();
        return heights;
    };
    const auto add = [this](const QString& answer) {
        InputDialogAnswerer answerer({answer});
        m_window->findChild<QToolButton*>("addPresetButton")->click();
        QCOMPARE(answerer.count, 1);
        QCOMPARE(answerer.title, QString("Preset name"));
        QCOMPARE(answerer.label, QString("Enter new preset name"));
        QCOMPARE(answerer.offered, QString("New preset"));
    };
    // A menu item of a preset button; a rename answers the name dialog, which offers
    // the old name.
    const auto menuItem = [this](int index, int item, const QString& offered = QString(),
                                 const QString& answer = QString()) {
        InputDialogAnswerer answerer(offered.isNull() ? QStringList() : QStringList{answer});
        presetButtons(m_position).at(index)->menu()->actions().at(item)->trigger();
        QCOMPARE(answerer.count, offered.isNull() ? 0 : 1);
        QCOMPARE(answerer.offered, offered);
    };

    add(QString()); // cancelled: nothing
    QCOMPARE(presetNames(m_position), (QStringList{"A", "B"}));
    QVERIFY(announced.isEmpty());
    add("Kerb 9.5 m"); // the operator's name, the present values
    add("A"); // a name that exists: a second button
    QCOMPARE(presetNames(m_position), (QStringList{"A", "B", "Kerb 9.5 m", "A"}));
    QCOMPARE(heights(), (QList<double>{6, 7, 9.5, 9.5}));
    menuItem(0, 0, "A", "North"); // rename: same place, same values
    QCOMPARE(presetNames(m_position), (QStringList{"North", "B", "Kerb 9.5 m", "A"}));
    // Update: the present values under the old name.
    spin("height")->setValue(8);
    menuItem(1, 1);
    QCOMPARE(heights(), (QList<double>{6, 8, 9.5, 9.5}));
    // Delete: the others move up.
    menuItem(0, 3);
    QCOMPARE(presetNames(m_position), (QStringList{"B", "Kerb 9.5 m", "A"}));
    QCOMPARE(announced.count(), 5);
    QCOMPARE(announced.last().at(0).toJsonArray(), m_position->presets());
    QVERIFY(m_requests.isEmpty());
}

void tst_PositionPanels::profileEchoIsNotTakenIn()
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
    setWorking();
    handler.applyProfile(0); // a new profile has no presets
    QCOMPARE(presetNames(m_position), QStringList{"Default preset"});
    QCOMPARE(stored().toArray(), m_position->presets());

    // A button's menu opens where it was asked for.
    PresetButton* b = presetButtons(m_position).at(0);
    emit b->customContextMenuRequested(QPoint(3, 3));
    QTRY_VERIFY(b->menu()->isVisible());
    QCOMPARE(b->menu()->pos(), b->mapToGlobal(QPoint(3, 3)));
    b->menu()->hide();

    // Deleting the last preset leaves none, in the panel and in the profile: the echo
    // of the empty list would bring the default preset back if it were taken in.
    b->menu()->actions().at(3)->trigger();
    QVERIFY(presetNames(m_position).isEmpty());
    QCOMPARE(stored().toArray(), QJsonArray());
    handler.applyProfile(0); // the next application brings it back
    QCOMPARE(presetNames(m_position), QStringList{"Default preset"});
}

QTEST_MAIN(tst_PositionPanels)
#include "tst_positionpanels.moc"
